#include <cerrno>

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include "platform/log.h"
#include "platform/strings.h"
#include "support/EmailAddress.h"
#include "support/SystemSources.h"
#include "support/ZELKOR_Log.h"

namespace lumo {

std::optional<platform::Dictionary> ZELKOR_Log::vmStats() {
  return currentMemory(true);
}

std::string ZELKOR_Log::systemVersionInfo() {
  return systemVersionText(currentFacts(vmStats()), true);
}

std::string ZELKOR_Log::startupInfo() {
  return startupText(program_invocation_short_name, systemVersionInfo());
}

bool ZELKOR_Log::validateEmailAddress(const std::string& emailAddress) {
  auto address = icu::UnicodeString::fromUTF8(platform::validUtf8(emailAddress));
  // The length counts as the platform does, in units of UTF-16.
  platform::NSLog("Passed emailAddress=[%@] with length=[%lu]...", emailAddress, address.length());
  std::string lowercase;
  return matchesEmailExpression(address.toLower(icu::Locale::getRoot()).toUTF8String(lowercase));
}

}  // namespace lumo
