#include "order.h"

#include <algorithm>
#include <utility>

#include "text.h"

namespace juniva {
namespace {

constexpr std::size_t kMaximumNameLength = 80;
constexpr std::size_t kMaximumEmailLength = 254;

std::string fieldName(int photoId) {
  return "p" + std::to_string(photoId);
}

// One '@' with something before it, and a domain with a dot inside after it. Whether it is a real address,
// only a mail to it would tell.
bool looksLikeEmail(std::string_view text) {
  const std::size_t at = text.find('@');
  if (at == std::string_view::npos || at == 0 || text.find('@', at + 1) != std::string_view::npos)
    return false;
  if (text.size() > kMaximumEmailLength || text.find(' ') != std::string_view::npos) return false;
  const std::string_view domain = text.substr(at + 1);
  const std::size_t dot = domain.rfind('.');
  return dot != std::string_view::npos && dot > 0 && dot + 1 < domain.size() && domain.front() != '.' &&
         domain.find("..") == std::string_view::npos;
}

bool looksLikePhone(std::string_view text) {
  std::size_t digits = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] >= '0' && text[at] <= '9') {
      ++digits;
    } else if (std::string_view(" -/().").find(text[at]) == std::string_view::npos &&
               !(text[at] == '+' && at == 0)) {
      return false;
    }
  }
  return digits >= 5 && digits <= 15 && text.size() <= 40;
}

}  // namespace

std::optional<Selection> Selection::fromForm(const FormData& form) {
  Selection selection;
  for (const Photo& photo : catalogue()) {
    const std::string text = form.text(fieldName(photo.id));
    if (text.empty()) continue;
    const std::optional<int> copies = parseWholeNumber(text, 0, kMaximumCopies);
    if (!copies) return std::nullopt;
    selection.setCopies(photo.id, *copies);
  }
  return selection;
}

void Selection::setCopies(int photoId, int copies) {
  mCopies[static_cast<std::size_t>(photoId - 1)] = std::clamp(copies, 0, kMaximumCopies);
}

int Selection::totalCopies() const {
  int total = 0;
  for (int copies : mCopies) total += copies;
  return total;
}

Cents Selection::totalPrice() const {
  Cents total = 0;
  for (const Photo& photo : catalogue()) total += linePrice(photo);
  return total;
}

std::string Selection::toQuery() const {
  std::string query;
  for (const Photo& photo : catalogue()) {
    if (copies(photo.id) == 0) continue;
    if (!query.empty()) query += '&';
    query += fieldName(photo.id) + "=" + std::to_string(copies(photo.id));
  }
  return query;
}

bool applyPressedButton(const FormData& form, Selection& selection) {
  for (const std::string_view button : {"plus", "minus", "toggle"}) {
    const std::optional<std::string> value = form.value(button);
    if (!value) continue;
    const std::optional<int> id = parseWholeNumber(*value, 1, kPhotoCount);
    if (!id) return false;
    const int copies = selection.copies(*id);
    if (button == "plus") selection.setCopies(*id, copies + 1);
    if (button == "minus") selection.setCopies(*id, copies - 1);
    if (button == "toggle") selection.setCopies(*id, copies == 0 ? 1 : 0);
    return true;
  }
  return true;
}

Customer Customer::fromForm(const FormData& form) {
  Customer customer;
  customer.name = trimmed(form.text("name"));
  customer.email = trimmed(form.text("email"));
  customer.phone = trimmed(form.text("phone"));
  return customer;
}

CustomerProblems checkCustomer(const Customer& customer) {
  CustomerProblems problems;
  if (customer.name.empty()) {
    problems.name = "Please tell us your name.";
  } else if (utf8Length(customer.name) > kMaximumNameLength || hasControlCharacter(customer.name)) {
    problems.name = "Please write your name in at most 80 letters, on one line.";
  }
  if (!customer.email.empty() && (!looksLikeEmail(customer.email) || hasControlCharacter(customer.email))) {
    problems.email = "Please check this address. It should look like clara@example.com.";
  }
  if (!customer.phone.empty() && !looksLikePhone(customer.phone)) {
    problems.phone = "Please write the phone number with digits only, such as +49 40 123456.";
  }
  if (customer.email.empty() && customer.phone.empty()) {
    problems.email = "Please give an e-mail address or a phone number, so that we can reach you.";
  }
  return problems;
}

std::string orderText(const Order& order) {
  std::string text;
  for (const Photo& photo : catalogue()) {
    const int copies = order.selection.copies(photo.id);
    if (copies == 0) continue;
    text +=
        std::to_string(copies) + " x " + std::string(photo.title) + " " + std::string(photo.format) + ", ";
  }
  return text + "total " + formatPrice(order.selection.totalPrice());
}

}  // namespace juniva
