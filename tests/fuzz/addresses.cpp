// An address that a person, a page or another program gave: what is loaded for it. Lines: the address, the
// server's, the factory's server, a path component.

#include "app/StartUrl.h"
#include "browser/GoAddress.h"
#include "platform/strings.h"
#include "platform/url.h"
#include "tests/fuzz/fuzzing.h"

namespace {

using fuzzing::require;
using platform::Url;

void lookAt(const Url& url, const std::optional<std::string>& component) {
  require(url.path().has_value() || !url.parameterString(), "an opaque address has no parameters");
  require(!url.port() || (*url.port() >= 0 && *url.port() <= 65535), "a port is a number up to 65535");
  url.lastPathComponent();
  const Url standard = url.standardized();
  require(standard.standardized() == standard, "resolving a second time changes nothing");
  const Url longer = url.byAppendingPathComponent(component);
  require(Url::parse(longer.absoluteString()).has_value(), "an address stays one with a component more");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzzing::Lines lines(data, size);
  const auto text = lines.nextOrAbsent();
  const auto server = lines.nextOrAbsent();
  const auto defaultServer = lines.nextOrAbsent();
  const auto component = lines.nextOrAbsent();

  const lumo::StartUrl start = lumo::resolveStartUrl(text, server, defaultServer);
  require(!start.address || !start.address->empty(), "no empty address is stored");
  const lumo::GoPlan plan = lumo::planGo(start.address, text, server);
  require((plan.kind == lumo::GoPlan::Kind::Load) == plan.url.has_value(), "what is loaded has an address");
  if (plan.kind == lumo::GoPlan::Kind::InvalidAddress) {
    lumo::invalidAddressPage(plan.invalidAddress);
  }
  lumo::planGo(text, server, defaultServer);

  if (const auto url = Url::parse(text)) {
    require(url->absoluteString() == *text, "an address keeps its text");
    lookAt(*url, component);
  }
  if (const auto url = Url::parseEngineText(text.value_or(""))) {
    lookAt(*url, component);
  }
  const std::string escaped = platform::stringByAddingPercentEscapes(text.value_or(""));
  const auto again = platform::stringByRemovingPercentEscapes(escaped);
  require(again.has_value() == platform::isValidUtf8(text.value_or("")),
          "only UTF-8 comes back from escapes");
  require(!again || *again == text.value_or(""), "escapes can be taken off again");
  require(platform::htmlEscaped(text.value_or("")).find_first_of("<>\"'") == std::string::npos,
          "escaped text means nothing to a page");
  return 0;
}
