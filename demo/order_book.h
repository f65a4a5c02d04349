// The orders that were placed, kept in memory only.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "order.h"

namespace juniva {

// "A-1042" for 0, counting up to "A-9999", then "B-1000" and so on; after "Z-9999" it begins again at
// "A-1000".
std::string orderCode(unsigned number);

// Not for use by several threads. It remembers the newest kCapacity orders and forgets older ones.
class OrderBook {
 public:
  static constexpr std::size_t kCapacity = 1000;

  // Enters the order under a new code, which it returns. A ticket that was used before, and is not empty,
  // gives the code of that earlier order: pressing a button twice orders once.
  std::string place(Order order, std::string_view ticket);

  // The order with this code, in any case of its letter; nullptr when there is none. Valid until the next
  // place().
  const Order* find(std::string_view code) const;

  std::size_t size() const { return mOrders.size(); }

 private:
  struct Entry {
    Order order;
    std::string ticket;
  };

  std::deque<Entry> mOrders;
  std::unordered_map<std::string, std::string> mCodeOfTicket;
  unsigned mNextNumber = 0;
};

}  // namespace juniva
