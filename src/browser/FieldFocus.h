#pragma once

#include <optional>
#include <string>
#include <string_view>

// Which pages get a field focused, and how. Pure decisions; any thread.

namespace lumo {

// Whether `list`, page paths with commas between them, has the path. Blanks around an item, case and up to
// two leading slashes on either side do not count. An absent path or list never matches, nor does an empty
// item.
bool isFocusPath(const std::optional<std::string>& path, const std::optional<std::string>& list);

// The script that focuses the first input field of that identifier. The identifier stands in it as it is; an
// absent one is looked for as "(null)".
std::string focusScript(const std::optional<std::string>& identifier);

}  // namespace lumo
