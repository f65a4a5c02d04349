// Every page of the order application as HTML, from the texts under pages/.
#pragma once

#include <string>
#include <string_view>

#include "order.h"
#include "page_template.h"

namespace juniva {

// A page with one thing to say. Everything is plain text and is escaped where it is put; an empty `detail` is
// left out. `link` is the path that the page's button leads to.
struct Message {
  std::string label;
  std::string title;
  std::string text;
  std::string detail = {};
  std::string link = "/registrationorders";
  std::string linkText = "To the start";
  bool isError = false;
};

class OrderPages {
 public:
  // With `act` the pages carry the script that acts as the customer.
  explicit OrderPages(bool act) : mAct(act) {}

  std::string landing() const;
  // `notice` is shown above the pictures unless it is empty.
  std::string photos(const Selection& selection, std::string_view notice) const;
  std::string details(const Selection& selection, const Customer& customer,
                      const CustomerProblems& problems) const;
  // `ticket` travels with the form, so that placing the order twice counts once.
  std::string review(const Selection& selection, const Customer& customer, std::string_view ticket) const;
  std::string confirmation(const Order& order) const;
  std::string receipt(const Order& order) const;
  std::string message(const Message& message) const;
  // The way to everything that can be tried; `order` is the one that the pages are about.
  std::string trial(const Order& order) const;
  // Asks for an alert, a confirmation and a text.
  std::string dialogs() const;
  std::string login() const;

 private:
  // `name` tells the scripts which page it is; `step` from 1 to 4 shows where the customer is, 0 shows
  // nothing.
  std::string layout(std::string_view name, std::string_view title, int step, std::string content) const;

  bool mAct;
};

}  // namespace juniva
