#include "options.h"

#include <optional>

#include <arpa/inet.h>
#include <netinet/in.h>

#include "text.h"

namespace juniva {
namespace {

bool isAddress(const std::string& text) {
  in6_addr storage{};
  return inet_pton(AF_INET, text.c_str(), &storage) == 1 || inet_pton(AF_INET6, text.c_str(), &storage) == 1;
}

}  // namespace

std::variant<Options, OptionError> parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    const std::string& argument = arguments[at];
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const bool hasValue = equals != std::string::npos;
    if (name == "--port" || name == "--listen") {
      if (!hasValue && at + 1 == arguments.size()) return OptionError{name + " needs a value"};
      const std::string value = hasValue ? argument.substr(equals + 1) : arguments[++at];
      if (name == "--port") {
        const std::optional<int> port = parseWholeNumber(value, 0, 65535);
        if (!port) return OptionError{"--port needs a number from 0 to 65535, not '" + value + "'"};
        options.port = *port;
      } else {
        options.address = value == "localhost" ? "127.0.0.1" : value;
        if (!isAddress(options.address)) {
          return OptionError{"--listen needs an IPv4 or IPv6 address, not '" + value + "'"};
        }
      }
    } else if (name == "--act" || name == "--help" || name == "--version") {
      if (hasValue) return OptionError{name + " takes no value"};
      if (name == "--act") options.act = true;
      if (name == "--help") options.help = true;
      if (name == "--version") options.version = true;
    } else {
      return OptionError{"unknown option '" + argument + "'"};
    }
  }
  return options;
}

std::string hostForUrl(std::string_view address) {
  const std::string text(address);
  return address.find(':') == std::string_view::npos ? text : "[" + text + "]";
}

std::string_view helpText() {
  return R"(Usage: juniva-demo [OPTION]...
A small photo server with an order application, for trying and testing.

  --port N          listen on port N (default 9090; 0 takes a free one)
  --listen ADDRESS  listen on ADDRESS (default 127.0.0.1, which only this computer reaches)
  --act             let the pages act as the customer, to the end of the order
  --help            show this text and exit
  --version         show the version and exit

The first line on standard output tells the address of the order application; then follows one line for each
request: time, method, path with query, status, the Glimmerpad-Scan header and the user agent.
)";
}

}  // namespace juniva
