#pragma once

#include <optional>
#include <string>

#include "platform/web_view.h"

namespace lumo {

// Whether a navigation to this address fails because its answer was cancelled on purpose: the end of an
// order. Such a failure stays silent. An order's other addresses, and an absent one, are never expected to
// fail.
bool isExpectedFailure(const std::optional<platform::Url>& failing);

// The address that failed; absent when there was none or it is no address.
std::optional<platform::Url> failingUrl(const platform::WebError& error);

// The page that takes the site's place after a failure. Texts from outside show as they are.
std::string errorPage(const platform::WebError& error);

// The document that shows a text of the system's own, as HTML, to a person who stands before the counter:
// in large letters, with room around it, light or dark as the desktop is.
std::string readablePage(const std::string& text);

}  // namespace lumo
