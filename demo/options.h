// The command line of juniva-demo.
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace juniva {

inline constexpr std::string_view kVersion = "1.0.0";

// `address` is an IPv4 or IPv6 address in its usual text form. Port 0 lets the system choose one.
struct Options {
  std::string address = "127.0.0.1";
  int port = 9090;
  bool act = false;
  bool help = false;
  bool version = false;
};

// What is wrong with a command line, as one sentence for the person who typed it.
struct OptionError {
  std::string message;
};

// Reads the arguments after the program's name. A value may follow its option or an '='. The last one of a
// repeated option counts. "localhost" as address stands for 127.0.0.1.
std::variant<Options, OptionError> parseOptions(const std::vector<std::string>& arguments);

// The address as it stands in a URL: an IPv6 address in brackets.
std::string hostForUrl(std::string_view address);

std::string_view helpText();

}  // namespace juniva
