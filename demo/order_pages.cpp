#include "order_pages.h"

#include <array>

#include "code39.h"
#include "embedded_pages.h"
#include "text.h"
#include "trial_routes.h"

namespace juniva {
namespace {

// The pictures never change, and painting one takes longer than the rest of a page.
const std::string& pictureOf(int photoId) {
  static const std::array<std::string, kPhotoCount> pictures = [] {
    std::array<std::string, kPhotoCount> painted;
    for (const Photo& photo : catalogue()) painted[static_cast<std::size_t>(photo.id - 1)] = photo.artwork();
    return painted;
  }();
  return pictures[static_cast<std::size_t>(photoId - 1)];
}

std::string countText(const Selection& selection) {
  const int count = selection.totalCopies();
  if (count == 0) return "Nothing chosen yet";
  return count == 1 ? "1 print" : std::to_string(count) + " prints";
}

std::string steps(int step) {
  constexpr std::array<std::string_view, 4> kNames = {"Pictures", "Details", "Check", "Done"};
  if (step == 0) return {};
  std::string list = "<ol class=\"steps\">";
  for (int number = 1; number <= 4; ++number) {
    list += number < step ? "<li class=\"is-done\">" : "<li>";
    if (number == step) list.replace(list.size() - 4, 4, "<li class=\"is-now\" aria-current=\"step\">");
    list += "<i>" + std::string(number < step ? "✓" : std::to_string(number)) + "</i><span>" +
            std::string(kNames[static_cast<std::size_t>(number - 1)]) + "</span></li>";
  }
  return list + "</ol>";
}

Values photoValues(const Photo& photo, const Selection& selection) {
  const int copies = selection.copies(photo.id);
  return {{"id", std::to_string(photo.id)},
          {"title", std::string(photo.title)},
          {"description", std::string(photo.description)},
          {"format", std::string(photo.format)},
          {"price", formatPrice(photo.price)},
          {"cents", std::to_string(photo.price)},
          {"copies", std::to_string(copies)},
          {"chosen", copies > 0 ? "is-chosen" : ""},
          {"pressed", copies > 0 ? "true" : "false"},
          {"amount", formatPrice(selection.linePrice(photo))},
          {"picture", pictureOf(photo.id)}};
}

// One filled template for each photo, or for those only of which prints are wanted.
std::string forEachPhoto(std::string_view page, const Selection& selection, bool chosenOnly) {
  std::string out;
  for (const Photo& photo : catalogue()) {
    if (chosenOnly && selection.copies(photo.id) == 0) continue;
    out += fillTemplate(embeddedPage(page), photoValues(photo, selection));
  }
  return out;
}

std::string hiddenSelection(const Selection& selection) {
  std::string out;
  for (const Photo& photo : catalogue()) {
    if (selection.copies(photo.id) == 0) continue;
    out += "<input type=\"hidden\" name=\"p" + std::to_string(photo.id) + "\" value=\"" +
           std::to_string(selection.copies(photo.id)) + "\">";
  }
  return out;
}

Values orderValues(const Selection& selection, const Customer& customer) {
  return {{"count", countText(selection)}, {"total", formatPrice(selection.totalPrice())},
          {"query", selection.toQuery()},  {"hidden", hiddenSelection(selection)},
          {"name", customer.name},         {"email", customer.email},
          {"phone", customer.phone}};
}

std::string stateOf(const std::string& problem) {
  return problem.empty() ? "" : "has-problem";
}

constexpr std::string_view kEmptyFrame =
    R"(<rect x="6" y="10" width="108" height="76" rx="8"/><path d="m8 74 30-30 22 22 14-14 38 30"/><circle cx="84" cy="32" r="8"/>)";
constexpr std::string_view kBrokenFrame =
    R"(<path d="M52 86H14a8 8 0 0 1-8-8V18a8 8 0 0 1 8-8h44l-8 22 12 14-14 18zM68 10h38a8 8 0 0 1 8 8v60a8 8 0 0 1-8 8H62l10-20 14-18-12-14z"/><circle cx="92" cy="32" r="7"/>)";

}  // namespace

std::string OrderPages::layout(std::string_view name, std::string_view title, int step,
                               std::string content) const {
  std::string script(name == "photos" ? embeddedPage("order.js") : std::string_view());
  if (mAct) script += embeddedPage("act.js");
  return fillTemplate(embeddedPage("layout.html"), {{"page", std::string(name)},
                                                    {"title", std::string(title)},
                                                    {"style", std::string(embeddedPage("style.css"))},
                                                    {"steps", steps(step)},
                                                    {"content", std::move(content)},
                                                    {"script", std::move(script)}});
}

std::string OrderPages::landing() const {
  return layout("landing", "Welcome", 0,
                fillTemplate(embeddedPage("landing.html"), {{"picture-one", pictureOf(1)},
                                                            {"picture-two", pictureOf(4)},
                                                            {"picture-three", pictureOf(2)}}));
}

std::string OrderPages::photos(const Selection& selection, std::string_view notice) const {
  Values values = orderValues(selection, {});
  values["tiles"] = forEachPhoto("tile.html", selection, false);
  if (!notice.empty()) {
    values["notice"] = "<p class=\"notice\" id=\"notice\" role=\"alert\">" + htmlEscape(notice) + "</p>";
  }
  return layout("photos", "Your pictures", 1, fillTemplate(embeddedPage("photos.html"), values));
}

std::string OrderPages::details(const Selection& selection, const Customer& customer,
                                const CustomerProblems& problems) const {
  Values values = orderValues(selection, customer);
  values["thumbs"] = forEachPhoto("thumb.html", selection, true);
  values["name-problem"] = problems.name;
  values["name-state"] = stateOf(problems.name);
  values["email-problem"] = problems.email;
  values["email-state"] = stateOf(problems.email);
  values["phone-problem"] = problems.phone;
  values["phone-state"] = stateOf(problems.phone);
  return layout("details", "Your details", 2, fillTemplate(embeddedPage("details.html"), values));
}

std::string OrderPages::review(const Selection& selection, const Customer& customer,
                               std::string_view ticket) const {
  Values values = orderValues(selection, customer);
  values["lines"] = forEachPhoto("review_line.html", selection, true);
  values["ticket"] = std::string(ticket);
  values["email-shown"] = customer.email.empty() ? "–" : customer.email;
  values["phone-shown"] = customer.phone.empty() ? "–" : customer.phone;
  return layout("review", "Check your order", 3, fillTemplate(embeddedPage("review.html"), values));
}

std::string OrderPages::confirmation(const Order& order) const {
  Values values = orderValues(order.selection, order.customer);
  values["code"] = order.code;
  return layout("confirmation", "Order " + order.code, 4,
                fillTemplate(embeddedPage("confirmation.html"), values));
}

std::string OrderPages::receipt(const Order& order) const {
  Values values = orderValues(order.selection, order.customer);
  values["code"] = order.code;
  values["placed-at"] = order.placedAt;
  values["lines"] = forEachPhoto("receipt_line.html", order.selection, true);
  values["bars"] = code39Svg(order.code, 60);
  return fillTemplate(embeddedPage("receipt.html"), values);
}

std::string OrderPages::message(const Message& message) const {
  Values values = {{"kind", message.isError ? "error" : ""},
                   {"drawing", std::string(message.isError ? kBrokenFrame : kEmptyFrame)},
                   {"label", message.label},
                   {"title", message.title},
                   {"text", message.text},
                   {"link", message.link},
                   {"link-text", message.linkText}};
  if (!message.detail.empty()) values["detail"] = "<code>" + htmlEscape(message.detail) + "</code>";
  return layout("message", message.title, 0, fillTemplate(embeddedPage("message.html"), values));
}

std::string OrderPages::trial(const Order& order) const {
  Values values = {{"code", order.code}};
  std::string& releases = values["releases"];
  for (const std::string_view path : kReleasePaths) {
    releases += "<a class=\"button quiet\" href=\"" + std::string(path) +
                "?code=" + percentEncode(order.code) + "\">" + std::string(path) + "</a>";
  }
  return layout("trial", "Try the kiosk", 0, fillTemplate(embeddedPage("try.html"), values));
}

std::string OrderPages::dialogs() const {
  return layout("dialogs", "Dialogs", 0, std::string(embeddedPage("dialogs.html")));
}

std::string OrderPages::login() const {
  return layout("login", "Log in", 0, std::string(embeddedPage("login.html")));
}

}  // namespace juniva
