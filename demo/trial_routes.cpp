#include "trial_routes.h"

#include "text.h"

namespace juniva {
namespace {

Response page(std::string body) {
  Response response;
  response.body = std::move(body);
  return response;
}

Response scan(const OrderPages& pages) {
  return page(
      pages.message({.label = "Scanner",
                     .title = "Please show your code",
                     .text = "The station's scan program has the word now. This is where it returns to:",
                     .detail = "registrationorders"}));
}

Response redirect(std::string location) {
  Response response;
  response.status = 303;
  response.headers.push_back({"Location", std::move(location)});
  return response;
}

}  // namespace

const Order& sampleOrder() {
  static const Order order = [] {
    Order sample;
    sample.code = "DEMO-1";
    sample.customer = {.name = "Zoë Müller-Ørsted", .email = "zoe@example.com"};
    sample.selection.setCopies(1, 2);
    sample.selection.setCopies(4, 1);
    sample.placedAt = "01.01.2026 09:00";
    return sample;
  }();
  return order;
}

std::vector<Route> trialRoutes(const OrderPages& pages) {
  return {
      {"/try", {"GET"}, [&pages](const Request&) { return page(pages.trial(sampleOrder())); }},
      {"/try/dialogs", {"GET"}, [&pages](const Request&) { return page(pages.dialogs()); }},
      {"/login", {"GET"}, [&pages](const Request&) { return page(pages.login()); }},
      // A login that is not kept: whatever is entered leads on to the order.
      {"/login", {"POST"}, [](const Request&) { return redirect("/registrationorders"); }},
      {"/try/released",
       {"GET"},
       [](const Request&) {
         return redirect(std::string(kReleasePaths[0]) + "?code=" + percentEncode(sampleOrder().code));
       }},
      {"/try/scan",
       {"GET"},
       [&pages](const Request&) { return scan(pages); },
       {{"Glimmerpad-Plus-Scanner", "start"}, {"Scan-Return", "registrationorders"}}},
      {"/try/close",
       {"GET"},
       [&pages](const Request&) {
         return page(pages.message({.label = "Close",
                                    .title = "This page asks to be closed",
                                    .text = "Only the old page view follows this wish."}));
       },
       {{"Glimmerpad-Plus-Scanner", "close"}}},
  };
}

}  // namespace juniva
