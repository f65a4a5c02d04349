#include "order_book.h"

#include <algorithm>

#include "text.h"

namespace juniva {
namespace {

constexpr unsigned kFirst = 1042;
constexpr unsigned kLowest = 1000;
constexpr unsigned kCodesOfALetter = 9000;
constexpr unsigned kLetters = 26;

}  // namespace

std::string orderCode(unsigned number) {
  const unsigned place = (kFirst - kLowest + number) % (kCodesOfALetter * kLetters);
  const char letter = static_cast<char>('A' + place / kCodesOfALetter);
  return std::string(1, letter) + "-" + std::to_string(kLowest + place % kCodesOfALetter);
}

std::string OrderBook::place(Order order, std::string_view ticket) {
  if (!ticket.empty()) {
    const auto earlier = mCodeOfTicket.find(std::string(ticket));
    if (earlier != mCodeOfTicket.end()) return earlier->second;
  }
  order.code = orderCode(mNextNumber++);
  mOrders.push_back({std::move(order), std::string(ticket)});
  const Entry& entry = mOrders.back();
  std::string code = entry.order.code;
  if (!entry.ticket.empty()) mCodeOfTicket[entry.ticket] = code;
  if (mOrders.size() > kCapacity) {
    mCodeOfTicket.erase(mOrders.front().ticket);
    mOrders.pop_front();
  }
  return code;
}

const Order* OrderBook::find(std::string_view code) const {
  std::string wanted(trimmed(code));
  if (!wanted.empty() && wanted[0] >= 'a' && wanted[0] <= 'z') wanted[0] = static_cast<char>(wanted[0] - 32);
  const auto found = std::find_if(mOrders.begin(), mOrders.end(),
                                  [&](const Entry& entry) { return entry.order.code == wanted; });
  return found == mOrders.end() ? nullptr : &found->order;
}

}  // namespace juniva
