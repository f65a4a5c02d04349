// What the network tells the search for photo servers. Lines: this computer's address, a Wi-Fi name, a port,
// then answers, each an address and a name of the server behind a blank; the rest is also a table of routes.

#include <string>

#include "discovery/LocalNetwork.h"
#include "discovery/ServerScan.h"
#include "platform/http_client.h"
#include "tests/fuzz/fuzzing.h"

using fuzzing::require;

namespace {

void lookAtNetwork(const std::string& output, const std::optional<std::string>& ssid) {
  const lumo::LocalNetwork network{[&output](const std::string&) { return output; },
                                   [&ssid] { return ssid; }};
  const std::string address = lumo::localIPAddress(network);
  const auto wifi = lumo::wifiName(network);
  lumo::networkSummary(address, wifi);
  lumo::nothingFoundText(address, wifi.has_value());
  const lumo::ScanRange range = lumo::scanRange(address);
  for (const std::int64_t number : {std::int64_t{0}, std::int64_t{255}, range.maximum}) {
    lumo::scanAddress(range, number);
  }
  lumo::interfaceAddressCommand(output);
  lumo::mainInterface({output, "lo"}, output);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  lumo::defaultRouteInterface(std::string(reinterpret_cast<const char*>(data), size));
  fuzzing::Lines lines(data, size);
  const std::string local = lines.next();
  lookAtNetwork(local, lines.nextOrAbsent());
  const std::string port = lines.next();

  lumo::Answers answers;
  std::vector<std::string> addresses;
  for (int i = 0; i < 256 && !lines.atEnd(); ++i) {
    const std::string line = lines.next();
    const std::size_t blank = line.find(' ');
    const std::string address = line.substr(0, blank);
    platform::HttpResult result;
    result.statusCode = 200;
    if (blank != std::string::npos) {
      result.headers = {{"Content-Type", "text/html"}, {"seRver", line.substr(blank + 1)}};
    }
    answers.insert_or_assign(address, lumo::answerRecord(lumo::photoServerName(result)));
    addresses.push_back(address);
  }
  const lumo::AddressOrder before;
  for (std::size_t i = 0; i + 2 < addresses.size() && i < 16; ++i) {
    const auto& a = addresses[i];
    const auto& b = addresses[i + 1];
    const auto& c = addresses[i + 2];
    require(!before(a, a) && !(before(a, b) && before(b, a)), "an address is before another or behind it");
    require(!(before(a, b) && before(b, c)) || before(a, c), "the order goes on");
  }
  const platform::Array servers = lumo::foundServers(answers, port);
  require(servers.size() <= answers.size(), "no server is made up");
  for (const auto& server : servers) {
    const auto* record = server.as<platform::Dictionary>();
    require(record != nullptr && record->contains("urlstring"), "a server has an address");
    lumo::choiceTitle(*record, local);
  }
  const auto tag = static_cast<std::int64_t>(size);
  for (const std::int64_t each : {tag, -tag, tag + 70000}) {
    lumo::chosenRecord(servers, lumo::choiceIndex(each));
  }
  return 0;
}
