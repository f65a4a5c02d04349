#pragma once

#include <optional>
#include <string>

#include "platform/property_list.h"

// The preferences' decisions about server addresses: values in, values out. Any thread.
namespace lumo {

// What a test of the connection asks.
struct TestAddress {
  std::string address;
  // Whether the address was made here and takes the place of the stored one.
  bool isRewritten = false;
};

// The address to test: the server's, else the default one. An address of the scheme http or file is tested as
// it is; any other, also one with https, gets "http://" in front. Absent when neither is set; the empty text
// counts as not set.
std::optional<TestAddress> addressToTest(const std::optional<std::string>& serverAddress,
                                         const std::optional<std::string>& defaultServerAddress);

// The address of a server that was found: "urlstring" of its record with "localhost" in place of this
// computer's own address, wherever that stands in it, and the path at the end ("registrationorders" without
// one). `localAddress` counts only with four parts between dots. A record without an address, or none at all,
// gives the platform's text for a missing object. Absent when what comes out is no address.
std::optional<std::string> chosenServerAddress(const std::optional<platform::Dictionary>& record,
                                               const std::string& localAddress,
                                               const std::optional<platform::PropertyList>& path);

}  // namespace lumo
