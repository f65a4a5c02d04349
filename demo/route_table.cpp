#include "route_table.h"

#include <algorithm>
#include <exception>

namespace juniva {
namespace {

char lowered(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + 32) : character;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return lowered(a) == lowered(b); });
}

bool hasHeader(const Response& response, std::string_view name) {
  return std::any_of(response.headers.begin(), response.headers.end(),
                     [&](const Header& header) { return equalIgnoringCase(header.name, name); });
}

void addMissingHeader(Response& response, const Header& header) {
  if (!hasHeader(response, header.name)) response.headers.push_back(header);
}

std::string_view withoutSlashesAtEnd(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  return path;
}

bool contains(const std::vector<std::string>& methods, std::string_view method) {
  return std::find(methods.begin(), methods.end(), method) != methods.end();
}

void appendMethod(std::string& allow, std::string_view method) {
  if (!allow.empty()) allow += ", ";
  allow += method;
}

}  // namespace

std::string_view headerValue(const Response& response, std::string_view name) {
  for (const Header& header : response.headers) {
    if (equalIgnoringCase(header.name, name)) return header.value;
  }
  return {};
}

RouteTable::RouteTable(std::vector<Route> routes, Fallbacks fallbacks)
    : mRoutes(std::move(routes)), mFallbacks(std::move(fallbacks)) {}

RouteTable::Match RouteTable::find(std::string_view method, std::string_view path) const {
  const std::string_view wanted = withoutSlashesAtEnd(path);
  std::string allow;
  for (const Route& route : mRoutes) {
    if (withoutSlashesAtEnd(route.path) != wanted) continue;
    const bool answersHead = contains(route.methods, "GET") && method == "HEAD";
    if (contains(route.methods, method) || answersHead) return {Outcome::Found, &route, {}};
    for (const std::string& known : route.methods) {
      appendMethod(allow, known);
      if (known == "GET") appendMethod(allow, "HEAD");
    }
  }
  if (allow.empty()) return {Outcome::NotFound, nullptr, {}};
  return {Outcome::MethodNotAllowed, nullptr, allow};
}

Response RouteTable::answer(const Request& request) const {
  Response response;
  try {
    const Match match = find(request.method, request.path);
    if (match.outcome == Outcome::Found) {
      response = match.route->handler(request);
      if (response.status >= 200 && response.status < 300) {
        for (const Header& header : match.route->extraHeaders) addMissingHeader(response, header);
      }
    } else if (match.outcome == Outcome::MethodNotAllowed) {
      response = mFallbacks.methodNotAllowed(request);
      response.headers.push_back({"Allow", match.allow});
    } else {
      response = mFallbacks.notFound(request);
    }
  } catch (const std::exception&) {
    response = Response();
    response.status = 500;
    response.contentType = "text/plain; charset=utf-8";
    response.body = "The photo server could not answer this request.\n";
  }
  addMissingHeader(response, {"Cache-Control", "no-store"});
  return response;
}

}  // namespace juniva
