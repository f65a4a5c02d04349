#include "support/ZELKOR_NSDateAdditions.h"

#include <chrono>

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include "platform/log.h"
#include "platform/strings.h"

namespace lumo::ZELKOR_NSDateAdditions {

std::optional<std::string> stringWithUTSFormat(platform::Date date, const std::string& format) {
  UErrorCode status = U_ZERO_ERROR;
  const auto pattern = icu::UnicodeString::fromUTF8(platform::validUtf8(format));
  icu::SimpleDateFormat formatter(pattern, status);
  icu::UnicodeString formatted;
  if (U_SUCCESS(status)) {
    // Asked for each time: the library's own default is that of its first use.
    formatter.adoptTimeZone(icu::TimeZone::detectHostTimeZone());
    const std::chrono::duration<double, std::milli> milliseconds =
        std::chrono::floor<std::chrono::milliseconds>(date.time_since_epoch());
    formatter.format(milliseconds.count(), formatted, nullptr, status);
  }
  if (U_FAILURE(status)) {
    platform::NSLog("No date can be written in the format \"%@\": %s", format, u_errorName(status));
    return std::nullopt;
  }
  std::string text;
  return formatted.toUTF8String(text);
}

}  // namespace lumo::ZELKOR_NSDateAdditions
