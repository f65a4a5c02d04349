// Which handler answers which path and method, and what every answer of a route carries besides.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "http.h"

namespace juniva {

using Handler = std::function<Response(const Request&)>;

// One row of the table. A row with GET answers HEAD too. `extraHeaders` go with every answer of status 200 to
// 299; a header that the handler has already set under the same name stays as the handler set it.
struct Route {
  std::string path;
  std::vector<std::string> methods;
  Handler handler;
  std::vector<Header> extraHeaders = {};
};

class RouteTable {
 public:
  // How a request fared. `route` is set for Found only, `allow` (the value of an Allow header) for
  // MethodNotAllowed.
  enum class Outcome { Found, NotFound, MethodNotAllowed };
  struct Match {
    Outcome outcome;
    const Route* route;
    std::string allow;
  };

  // Answers for a path that no row has, and for a row that does not know the method.
  struct Fallbacks {
    std::function<Response(const Request&)> notFound;
    std::function<Response(const Request&)> methodNotAllowed;
  };

  RouteTable(std::vector<Route> routes, Fallbacks fallbacks);

  // Paths are compared exactly, but a slash at the end makes no difference. Methods are compared exactly.
  // Several rows may share a path when their methods differ.
  Match find(std::string_view method, std::string_view path) const;

  // The whole answer: the row's handler or a fallback, its extra headers, Allow where the method is wrong,
  // and "Cache-Control: no-store" unless something else was said. A handler that throws gives a plain 500.
  Response answer(const Request& request) const;

 private:
  std::vector<Route> mRoutes;
  Fallbacks mFallbacks;
};

}  // namespace juniva
