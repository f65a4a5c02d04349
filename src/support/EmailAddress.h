#pragma once

#include <string_view>

namespace lumo {

// The widely published expression for addresses of RFC 5322, as it stands everywhere: its slip near the end
// (overlapping ranges) belongs to it. It knows lower-case letters only.
extern const std::string_view kEmailExpression;

// Whether the whole text is such an address. The time grows with the length alone, and no stack is used up,
// whatever the text. Any thread.
bool matchesEmailExpression(std::string_view text);

}  // namespace lumo
