#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "platform/http_client.h"
#include "platform/property_list.h"
#include "platform/queue.h"

// The decisions of the search for photo servers: values in, values out. Any thread.
namespace lumo {

// The statuses in an answer record.
inline constexpr const char* kServerAvailable = "NSStatusAvailable";
inline constexpr const char* kServerUnavailable = "NSStatusUnavailable";

// Texts in the order of the addresses that they are; those that are none come last, in the order of texts.
struct AddressOrder {
  bool operator()(const std::string& a, const std::string& b) const;
};
// What each address has answered: "status", and for a server "server", its name as received.
using Answers = std::map<std::string, platform::Dictionary, AddressOrder>;

// The addresses that a scan goes through, and the number of answers that makes it complete.
struct ScanRange {
  // An address with "[xval]" in place of its last part; without it there is one address.
  std::string addressTemplate;
  // Answers needed, and for a subnet also the last part of the last address.
  std::int64_t maximum = 0;
  bool isSubnet = false;
};
// The /24 network of this computer, or "localhost" when that is the computer's address.
ScanRange scanRange(const std::string& localAddress);
// The address of the range whose last part is `number`.
std::string scanAddress(const ScanRange& range, std::int64_t number);

// How long to wait before the probe with that number, that long after the first one, number 0. Probes are 2
// ms apart. Each timer comes a little late, which 256 of them would add up, so a late one shortens the next
// pause, to 1 ms at least.
platform::Millis pauseBeforeProbe(std::int64_t number, platform::Millis sinceFirst);

// What the final header of a reply calls the photo server; absent when it is none. Status and body do not
// matter.
std::optional<std::string> photoServerName(const platform::HttpResult& result);
// The record of one answer: a server's when it has a name.
platform::Dictionary answerRecord(const std::optional<std::string>& serverName);
// The records of the servers among the answers, in the order of their addresses, each with "urlstring" and
// "ipaddress".
platform::Array foundServers(const Answers& answers, const std::string& port);

// What the status line says when a complete scan has found nothing.
std::string nothingFoundText(const std::string& localAddress, bool hasWifi);
// The title of the button with which a record is chosen; the computer's own address stands in words.
std::string choiceTitle(const platform::Dictionary& record, const std::string& localAddress);
// The place in the list that a control with this tag stands for; negative for none.
std::int16_t choiceIndex(std::int64_t tag);
// The record at that place, the first one where the list is shorter; absent for a negative place or an empty
// list.
std::optional<platform::PropertyList> chosenRecord(const platform::Array& servers, std::int16_t index);

}  // namespace lumo
