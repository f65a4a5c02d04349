// The table of everything that the photo server answers.
#pragma once

#include <functional>
#include <string>

#include "order_book.h"
#include "order_pages.h"
#include "route_table.h"

namespace juniva {

// What the routes share: the pages, the orders, and two sources from outside that a test can script. Not for
// use by several threads; it outlives every table made over it.
struct Shop {
  OrderPages pages;
  OrderBook orders = {};
  int cacheableAnswers = 0;
  std::function<std::string()> localTime;  // for the receipt
  std::function<std::string()> newTicket;  // different at every call, and not to be guessed
};

// One row a path. A new route is one more row, with the headers that go with its answers.
RouteTable makeOrderRoutes(Shop& shop);

// The answer to a body of more than kMaximumBodyBytes.
Response bodyTooLarge(const Shop& shop);

}  // namespace juniva
