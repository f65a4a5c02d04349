#include <stdexcept>

#include <gtest/gtest.h>

#include "demo/route_table.h"

namespace juniva {
namespace {

Handler answering(int status, const std::vector<Header>& headers = {}) {
  return [=](const Request&) { return Response{.status = status, .headers = headers}; };
}

RouteTable makeTable() {
  std::vector<Route> routes = {
      {"/", {"GET"}, answering(302)},
      {"/orders", {"GET"}, answering(200), {{"X-Extra", "yes"}}},
      {"/form", {"GET"}, answering(200)},
      {"/form", {"POST"}, answering(303)},
      {"/late", {"POST"}, answering(422), {{"X-Extra", "yes"}}},
      {"/cached",
       {"GET"},
       answering(200, {{"x-own", "mine"}}),
       {{"Cache-Control", "max-age=3600"}, {"X-Own", "table"}}},
      {"/throws", {"GET"}, [](const Request&) -> Response { throw std::runtime_error("no paper"); }},
  };
  return RouteTable(std::move(routes), {.notFound = answering(404), .methodNotAllowed = answering(405)});
}

TEST(DemoRouteTable, FindsByPathAndMethod) {
  using Outcome = RouteTable::Outcome;
  const struct {
    std::string_view method;
    std::string_view path;
    Outcome outcome;
    std::string_view found;
    std::string_view allow;
  } rows[] = {
      {"GET", "/", Outcome::Found, "/", ""},
      {"GET", "/orders", Outcome::Found, "/orders", ""},
      {"GET", "/orders/", Outcome::Found, "/orders", ""},
      {"HEAD", "/orders", Outcome::Found, "/orders", ""},
      {"POST", "/form", Outcome::Found, "/form", ""},
      {"POST", "/orders", Outcome::MethodNotAllowed, "", "GET, HEAD"},
      {"DELETE", "/form", Outcome::MethodNotAllowed, "", "GET, HEAD, POST"},
      {"HEAD", "/late", Outcome::MethodNotAllowed, "", "POST"},
      {"get", "/orders", Outcome::MethodNotAllowed, "", "GET, HEAD"},
      {"GET", "/Orders", Outcome::NotFound, "", ""},
      {"GET", "/orders/x", Outcome::NotFound, "", ""},
      {"GET", "", Outcome::NotFound, "", ""},
  };
  const RouteTable table = makeTable();
  for (const auto& row : rows) {
    const RouteTable::Match match = table.find(row.method, row.path);
    EXPECT_EQ(match.outcome, row.outcome) << row.method << " " << row.path;
    EXPECT_EQ(match.allow, row.allow) << row.method << " " << row.path;
    EXPECT_EQ(match.route == nullptr ? "" : match.route->path, row.found);
  }
}

TEST(DemoRouteTable, AddsTheHeadersOfARoute) {
  const RouteTable table = makeTable();
  const Response orders = table.answer({.method = "GET", .path = "/orders"});
  EXPECT_EQ(headerValue(orders, "x-extra"), "yes");
  EXPECT_EQ(headerValue(orders, "Cache-Control"), "no-store");
  const Response cached = table.answer({.method = "GET", .path = "/cached"});
  EXPECT_EQ(headerValue(cached, "Cache-Control"), "max-age=3600");
  EXPECT_EQ(headerValue(cached, "X-Own"), "mine");
}

TEST(DemoRouteTable, KeepsThemFromAnswersThatAreNoSuccess) {
  const Response late = makeTable().answer({.method = "POST", .path = "/late"});
  EXPECT_EQ(late.status, 422);
  EXPECT_EQ(headerValue(late, "X-Extra"), "");
}

TEST(DemoRouteTable, AnswersWithTheFallbacks) {
  const RouteTable table = makeTable();
  EXPECT_EQ(table.answer({.method = "GET", .path = "/nowhere"}).status, 404);
  const Response wrongMethod = table.answer({.method = "PUT", .path = "/form"});
  EXPECT_EQ(wrongMethod.status, 405);
  EXPECT_EQ(headerValue(wrongMethod, "Allow"), "GET, HEAD, POST");
}

TEST(DemoRouteTable, TurnsAnExceptionIntoAnAnswer) {
  const Response response = makeTable().answer({.method = "GET", .path = "/throws"});
  EXPECT_EQ(response.status, 500);
  EXPECT_EQ(response.body.find("no paper"), std::string::npos);
  EXPECT_FALSE(response.body.empty());
}

}  // namespace
}  // namespace juniva
