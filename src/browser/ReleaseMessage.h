#pragma once

#include <optional>
#include <string>

#include "platform/message_bus.h"
#include "platform/web_view.h"

namespace lumo {

// How a session ended, as the release message says it.
enum class ReleaseStatus { ClosedWindow, Registered, CancelledRegistered };

// The message that tells the station's other programs of the end. `running` is the running address, absent
// when none is stored: the message then has no "urlstring". `order`, null for none, are the header fields of
// the page that released the order: fields whose name begins with "lumo-reg-" in any case are passed on under
// their upper-case names (every '+' of "lumo-reg-ordertext" as a blank), those that begin with
// "respurlstring" under their own.
platform::DistributedNotification releaseMessage(ReleaseStatus status,
                                                 const std::optional<std::string>& running,
                                                 const platform::HeaderFields* order = nullptr);

// The value under `key`, absent when the message has none.
std::optional<std::string> messageValue(const platform::DistributedNotification& message,
                                        const std::string& key);

// Where a failed confirm-save sends the browser: the station's order list on the server of `failingUrl`.
// Absent when that makes no address (a server address without a port does not).
std::optional<platform::Url> photoStationListUrl(const platform::Url& failingUrl);

}  // namespace lumo
