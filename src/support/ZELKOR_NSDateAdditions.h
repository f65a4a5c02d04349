#pragma once

#include <optional>
#include <string>

#include "platform/property_list.h"

// Any thread.
namespace lumo::ZELKOR_NSDateAdditions {

// `date` in the format of Unicode's Technical Standard 35 ("yyyy-MM-dd HH:mm:ss"), with the names of the
// user's language (LC_ALL, LC_MESSAGES, LANG, as the program found them) in this machine's time zone. Absent,
// with a line in the log, for a format with a letter that means nothing.
std::optional<std::string> stringWithUTSFormat(platform::Date date, const std::string& format);

}  // namespace lumo::ZELKOR_NSDateAdditions
