// What a customer has chosen and who the customer is, as it travels from page to page in the fields of the
// forms.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue.h"
#include "form_data.h"

namespace juniva {

inline constexpr int kMaximumCopies = 99;

// How many prints of each photo are wanted. Photo ids run from 1.
class Selection {
 public:
  // Reads the fields "p1" to "p9"; an absent or empty one counts as 0. Nothing when one is no whole number
  // from 0 to kMaximumCopies.
  static std::optional<Selection> fromForm(const FormData& form);

  int copies(int photoId) const { return mCopies[static_cast<std::size_t>(photoId - 1)]; }
  void setCopies(int photoId, int copies);

  bool isEmpty() const { return totalCopies() == 0; }
  int totalCopies() const;
  Cents linePrice(const Photo& photo) const { return copies(photo.id) * photo.price; }
  Cents totalPrice() const;

  // "p1=2&p5=1": only the photos that are wanted; empty for an empty selection.
  std::string toQuery() const;

 private:
  std::array<int, kPhotoCount> mCopies{};
};

// Applies the button that was pressed on the photo page: one of the fields "plus", "minus" and "toggle" with
// a photo's id as its value. False, and nothing is changed, when the value is no photo's id.
bool applyPressedButton(const FormData& form, Selection& selection);

struct Customer {
  std::string name;
  std::string email;
  std::string phone;

  // Reads the fields "name", "email" and "phone", without the blanks around them.
  static Customer fromForm(const FormData& form);
};

// What the customer has to mend: a sentence for each field that is not right, empty for the others.
struct CustomerProblems {
  std::string name;
  std::string email;
  std::string phone;

  bool any() const { return !name.empty() || !email.empty() || !phone.empty(); }
};

// A name is needed, and one of e-mail and phone; what is given has to look right.
CustomerProblems checkCustomer(const Customer& customer);

struct Order {
  std::string code;
  Customer customer;
  Selection selection;
  std::string placedAt;  // local time, as it is shown on the receipt
};

// One line about the whole order: "2 x Clara 13 × 18 cm, 1 x Blue hour 20 × 30 cm, total €12.70".
std::string orderText(const Order& order);

}  // namespace juniva
