// The arguments of another program's open request on the bus, one address a line.

#include <algorithm>
#include <string>
#include <vector>

#include "app/StartUrl.h"
#include "platform/linux/file_url.h"
#include "platform/linux/open_request.h"
#include "tests/fuzz/fuzzing.h"
#include "tools/lumoctl/open_plan.h"

using fuzzing::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> addresses;
  for (fuzzing::Lines lines(data, size); !lines.atEnd();) {
    addresses.push_back(lines.next());
  }

  std::size_t items = 0;
  for (const platform::OpenRequest& request : platform::openRequests(addresses)) {
    items += request.items.size();
    for (const std::string& item : request.items) {
      if (request.kind == platform::OpenRequest::Kind::Files) {
        require(item.starts_with('/') && item.find('\0') == std::string::npos, "a file is an absolute path");
        const auto back = platform::pathFromFileUrl(lumoctl::fileAddress(item));
        require(back == item, "a path comes back from its address");
      } else {
        require(!platform::isFileUrl(item), "a file's address is no other address");
        lumo::resolveStartUrl(item, "http://10.0.0.5:9090/", std::nullopt);
      }
    }
  }
  require(items <= addresses.size(), "no address is made up");

  for (const std::string& address : addresses) {
    const std::string restored = platform::withPlaceholderBrackets(address);
    require(platform::withPlaceholderBrackets(restored) == restored, "brackets are put back once");
  }
  const lumoctl::ServerAddresses servers{"http://10.0.0.5:9090/", std::nullopt};
  const auto plan = lumoctl::planOpen(addresses, "/home/kiosk", servers, [](const auto&) { return true; });
  require(plan.addresses.empty() || !plan.refusal, "what is refused is not sent");
  return 0;
}
