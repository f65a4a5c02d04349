#include "discovery/ServerScan.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

#include "platform/format.h"
#include "platform/strings.h"

namespace lumo {

namespace {

constexpr const char* kLocalhost = "localhost";
constexpr const char* kPlace = "[xval]";
constexpr int kFirstChoiceTag = 5000;
constexpr platform::Millis kBetweenProbes{2};
constexpr platform::Millis kShortestPause{1};

// The four numbers of an address, absent for any other text.
std::optional<std::array<unsigned, 4>> numbersOf(const std::string& address) {
  const auto parts = platform::componentsSeparatedBy(address, ".");
  std::array<unsigned, 4> numbers = {};
  if (parts.size() != numbers.size()) {
    return std::nullopt;
  }
  for (std::size_t index = 0; index < parts.size(); ++index) {
    const char* end = parts[index].data() + parts[index].size();
    const auto read = std::from_chars(parts[index].data(), end, numbers[index]);
    if (read.ec != std::errc() || read.ptr != end) {
      return std::nullopt;
    }
  }
  return numbers;
}

std::string textFor(const platform::Dictionary& record, const char* key) {
  const platform::PropertyList* value = record.find(key);
  return value == nullptr ? "" : platform::stringValue(*value).value_or("");
}

}  // namespace

bool AddressOrder::operator()(const std::string& a, const std::string& b) const {
  const auto left = numbersOf(a);
  const auto right = numbersOf(b);
  if (left && right && *left != *right) {
    return *left < *right;
  }
  return left.has_value() == right.has_value() ? a < b : left.has_value();
}

ScanRange scanRange(const std::string& localAddress) {
  if (platform::equalIgnoringCase(localAddress, kLocalhost)) {
    return {kLocalhost, 1, false};
  }
  const auto lastDot = localAddress.rfind('.');
  const std::string network = lastDot == std::string::npos ? "" : localAddress.substr(0, lastDot);
  return {platform::stringWithFormat("%@.[xval]", network), 255, true};
}

std::string scanAddress(const ScanRange& range, std::int64_t number) {
  return platform::replacingOccurrences(range.addressTemplate, kPlace,
                                        platform::stringWithFormat("%i", number));
}

platform::Millis pauseBeforeProbe(std::int64_t number, platform::Millis sinceFirst) {
  return std::clamp(number * kBetweenProbes - sinceFirst, kShortestPause, kBetweenProbes);
}

std::optional<std::string> photoServerName(const platform::HttpResult& result) {
  if (result.error || result.statusCode == 0) {
    return std::nullopt;
  }
  for (const auto& [name, value] : result.headers) {
    if (platform::equalIgnoringCase(name, "Server") &&
        platform::lowercase(value).find("lumo-juniva") != std::string::npos) {
      return value;
    }
  }
  return std::nullopt;
}

platform::Dictionary answerRecord(const std::optional<std::string>& serverName) {
  if (!serverName) {
    return {{"status", kServerUnavailable}};
  }
  return {{"status", kServerAvailable}, {"server", *serverName}};
}

platform::Array foundServers(const Answers& answers, const std::string& port) {
  platform::Array found;
  for (const auto& [address, record] : answers) {
    if (!platform::equalIgnoringCase(textFor(record, "status"), kServerAvailable)) {
      continue;
    }
    platform::Dictionary server = record;
    server.set("urlstring", platform::stringWithFormat("http://%@:%@", address, port));
    server.set("ipaddress", address);
    found.emplace_back(std::move(server));
  }
  return found;
}

std::string nothingFoundText(const std::string& localAddress, bool hasWifi) {
  if (hasWifi || !platform::equalIgnoringCase(localAddress, kLocalhost)) {
    return "\n\n!!  NO Juniva Server Found  !!\n\nPlease make sure juniva server is running your network...";
  }
  return "\n\n!!  Juniva Server is NOT running on this mac !!";
}

std::string choiceTitle(const platform::Dictionary& record, const std::string& localAddress) {
  const std::string title =
      platform::stringWithFormat("Select [%@ - %@]", textFor(record, "ipaddress"), textFor(record, "server"));
  return platform::replacingOccurrences(title, localAddress, "localhost (This Computer)");
}

std::int16_t choiceIndex(std::int64_t tag) {
  return static_cast<std::int16_t>(tag - kFirstChoiceTag);
}

std::optional<platform::PropertyList> chosenRecord(const platform::Array& servers, std::int16_t index) {
  if (index < 0 || servers.empty()) {
    return std::nullopt;
  }
  const auto place = static_cast<std::size_t>(index);
  return servers[place < servers.size() ? place : 0];
}

}  // namespace lumo
