#include "order_routes.h"

#include <algorithm>
#include <iterator>
#include <optional>

#include "text.h"
#include "trial_routes.h"

namespace juniva {
namespace {

constexpr int kLongestDelay = 30;
constexpr int kUsualDelay = 5;
constexpr std::chrono::seconds kSilence{60};

Response page(std::string body, int status = 200) {
  Response response;
  response.status = status;
  response.body = std::move(body);
  return response;
}

Response redirect(int status, std::string location) {
  Response response;
  response.status = status;
  response.contentType = "text/plain; charset=utf-8";
  response.body = "See " + location + "\n";
  response.headers.push_back({"Location", std::move(location)});
  return response;
}

Response errorPage(const Shop& shop, int status, Message message) {
  message.isError = true;
  message.label = "Error " + std::to_string(status);
  return page(shop.pages.message(message), status);
}

Response badRequest(const Shop& shop, std::string text) {
  return errorPage(shop, 400, {.title = "This request cannot be read", .text = std::move(text)});
}

Response badForm(const Shop& shop) {
  return badRequest(shop, "The form is malformed. Please begin again.");
}

Response notFound(const Shop& shop, const Request& request) {
  return errorPage(shop, 404,
                   {.title = "There is no such page",
                    .text = "The photo server knows nothing under this address:",
                    .detail = request.path});
}

Response methodNotAllowed(const Shop& shop, const Request& request) {
  return errorPage(shop, 405,
                   {.title = "This cannot be done here",
                    .text = "The page exists, but not for this kind of request:",
                    .detail = request.method + " " + request.path});
}

// What the order's forms carry: the pictures chosen, and the customer as far as known.
struct Draft {
  FormData form;
  Selection selection;
  Customer customer;
};

std::optional<Draft> draftOf(const Request& request) {
  std::optional<FormData> form = formOfRequest(request);
  if (!form) return std::nullopt;
  const std::optional<Selection> selection = Selection::fromForm(*form);
  if (!selection) return std::nullopt;
  Customer customer = Customer::fromForm(*form);
  return Draft{std::move(*form), *selection, std::move(customer)};
}

Response nothingChosen(const Shop& shop) {
  return page(shop.pages.photos({}, "Please choose at least one picture."), 422);
}

Response photos(const Shop& shop, const Request& request) {
  std::optional<Draft> draft = draftOf(request);
  if (!draft || !applyPressedButton(draft->form, draft->selection)) return badForm(shop);
  return page(shop.pages.photos(draft->selection, {}));
}

Response details(const Shop& shop, const Request& request) {
  const std::optional<Draft> draft = draftOf(request);
  if (!draft) return badForm(shop);
  if (draft->selection.isEmpty()) return nothingChosen(shop);
  return page(shop.pages.details(draft->selection, draft->customer, {}));
}

Response review(const Shop& shop, const Request& request) {
  const std::optional<Draft> draft = draftOf(request);
  if (!draft) return badForm(shop);
  if (draft->selection.isEmpty()) return nothingChosen(shop);
  const CustomerProblems problems = checkCustomer(draft->customer);
  if (problems.any()) return page(shop.pages.details(draft->selection, draft->customer, problems), 422);
  return page(shop.pages.review(draft->selection, draft->customer, shop.newTicket()));
}

// The redirection keeps a reload of the confirmation from ordering again.
Response placeOrder(Shop& shop, const Request& request) {
  const std::optional<Draft> draft = draftOf(request);
  if (!draft) return badForm(shop);
  if (draft->selection.isEmpty()) return nothingChosen(shop);
  const CustomerProblems problems = checkCustomer(draft->customer);
  if (problems.any()) return page(shop.pages.details(draft->selection, draft->customer, problems), 422);
  Order order;
  order.customer = draft->customer;
  order.selection = draft->selection;
  order.placedAt = shop.localTime();
  const std::string code = shop.orders.place(std::move(order), draft->form.text("ticket"));
  return redirect(303, "/registrationorders/confirmation?code=" + percentEncode(code));
}

// Answers with what `show` makes of the order that the query or the form names.
template <typename Show>
Response withOrder(const Shop& shop, const Request& request, Show show) {
  const std::optional<FormData> form =
      request.method == "POST" ? formOfRequest(request) : FormData::parse(request.query);
  if (!form) return badForm(shop);
  const std::string code = form->text("code");
  if (code.empty()) return badRequest(shop, "An order code is missing, as in ?code=A-1042.");
  const Order* order = code == sampleOrder().code ? &sampleOrder() : shop.orders.find(code);
  if (order == nullptr) {
    return errorPage(shop, 404,
                     {.title = "There is no such order",
                      .text = "The photo server has no order with this code:",
                      .detail = code});
  }
  return show(*order);
}

Response confirmation(const Shop& shop, const Request& request) {
  return withOrder(shop, request, [&](const Order& order) { return page(shop.pages.confirmation(order)); });
}

Response receipt(const Shop& shop, const Request& request) {
  return withOrder(shop, request, [&](const Order& order) { return page(shop.pages.receipt(order)); });
}

// Hands an order over to the photo station, in the headers. A browser that shows the page instead goes on to
// the end of the order.
Response photoStationData(const Shop& shop, const Request& request) {
  return withOrder(shop, request, [&](const Order& order) {
    Response response = page(shop.pages.message({.label = "Order " + order.code,
                                                 .title = "Your order is with the photo station",
                                                 .text = "This is what it was told:",
                                                 .detail = orderText(order),
                                                 .link = "/registration/save",
                                                 .linkText = "End the order"}));
    response.headers.push_back({"lumo-reg-code", headerText(order.code)});
    response.headers.push_back({"lumo-reg-name", headerText(order.customer.name)});
    response.headers.push_back({"lumo-reg-ordertext", plusForBlanks(orderText(order))});
    return response;
  });
}

Response registrationSave(const Shop& shop) {
  return page(shop.pages.message({.label = "Saved",
                                  .title = "All done, see you soon",
                                  .text = "The order is saved. The next customer can begin.",
                                  .linkText = "Next customer"}));
}

// Where a counter is left for the day: no part of an order.
Response goodbye(const Shop& shop) {
  return page(shop.pages.message({.label = "Counter closed",
                                  .title = "Thank you for your visit",
                                  .text = "This counter rests for now. We are happy to help you at the desk.",
                                  .linkText = "Open it again"}));
}

// Only a body that is really served counts, which the answer to HEAD is not.
Response cacheable(Shop& shop, const Request& request) {
  if (request.method != "HEAD") ++shop.cacheableAnswers;
  const std::string count = std::to_string(shop.cacheableAnswers);
  return page(shop.pages.message({.label = "Cacheable for one hour",
                                  .title = "Served " + count + (count == "1" ? " time" : " times"),
                                  .text = "The number rises only when the request really reaches the server.",
                                  .link = "/registrationorders/cacheable",
                                  .linkText = "Load again"}));
}

Response slow(const Shop& shop, const Request& request) {
  const std::optional<FormData> query = FormData::parse(request.query);
  if (!query) return badForm(shop);
  const std::string text = query->text("seconds");
  const std::optional<int> seconds = text.empty() ? kUsualDelay : parseWholeNumber(text, 0, 1000000);
  if (!seconds) return badRequest(shop, "The seconds have to be a whole number, as in ?seconds=5.");
  const int delay = std::min(*seconds, kLongestDelay);
  Response response = page(shop.pages.message(
      {.label = "Slow page",
       .title = "Good things take time",
       .text = "This answer waited for " + std::to_string(delay) + (delay == 1 ? " second." : " seconds.")}));
  response.delay = std::chrono::seconds(delay);
  return response;
}

Response silence() {
  Response response;
  response.silent = true;
  response.delay = kSilence;
  return response;
}

}  // namespace

RouteTable makeOrderRoutes(Shop& shop) {
  const std::string start = "/registrationorders";
  std::vector<Route> routes = {
      {"/", {"GET"}, [start](const Request&) { return redirect(302, start); }},
      {start, {"GET"}, [&shop](const Request&) { return page(shop.pages.landing()); }},
      {start + "/photos", {"GET"}, [&shop](const Request& request) { return photos(shop, request); }},
      {start + "/details",
       {"GET", "POST"},
       [&shop](const Request& request) { return details(shop, request); }},
      {start + "/review", {"POST"}, [&shop](const Request& request) { return review(shop, request); }},
      {start + "/confirmation",
       {"GET"},
       [&shop](const Request& request) { return confirmation(shop, request); }},
      {start + "/confirmation",
       {"POST"},
       [&shop](const Request& request) { return placeOrder(shop, request); }},
      {start + "/receipt",
       {"GET"},
       [&shop](const Request& request) { return receipt(shop, request); },
       {{"Glimmerpad-Plus-Print", "Receipt"}, {"Scan-Return", "registrationorders"}}},
      {"/registration/save", {"GET"}, [&shop](const Request&) { return registrationSave(shop); }},
      {"/goodbye", {"GET"}, [&shop](const Request&) { return goodbye(shop); }},
      {start + "/cacheable",
       {"GET"},
       [&shop](const Request& request) { return cacheable(shop, request); },
       {{"Cache-Control", "max-age=3600"}}},
      {start + "/slow", {"GET"}, [&shop](const Request& request) { return slow(shop, request); }},
      {start + "/silent", {"GET"}, [](const Request&) { return silence(); }},
  };
  for (const std::string_view path : kReleasePaths) {
    routes.push_back({std::string(path), {"GET", "POST"}, [&shop](const Request& request) {
                        return photoStationData(shop, request);
                      }});
  }
  std::vector<Route> trials = trialRoutes(shop.pages);
  std::move(trials.begin(), trials.end(), std::back_inserter(routes));
  return RouteTable(
      std::move(routes),
      {.notFound = [&shop](const Request& request) { return notFound(shop, request); },
       .methodNotAllowed = [&shop](const Request& request) { return methodNotAllowed(shop, request); }});
}

Response bodyTooLarge(const Shop& shop) {
  Response response = errorPage(
      shop, 413,
      {.title = "This is too much at once", .text = "The photo server reads at most 1 MB in one request."});
  response.headers.push_back({"Cache-Control", "no-store"});
  return response;
}

}  // namespace juniva
