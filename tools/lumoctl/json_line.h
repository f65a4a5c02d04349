#pragma once

#include <string>
#include <string_view>

#include "platform/message_bus.h"

namespace lumoctl {

// `text` as a JSON string with its quotes (RFC 8259): quotes, backslashes, U+0000 to U+001F and U+007F are
// escaped; bytes that are no UTF-8 become U+FFFD. U+2028 and U+2029 are escaped too, since some readers of
// lines break there.
std::string jsonString(std::string_view text);

// The notification as {"name":…,"object":…,"userInfo":{…}}, without a line break; null for no object.
std::string jsonLine(const platform::DistributedNotification& notification);

}  // namespace lumoctl
