// The bar code on a receipt, which a scanner at the counter reads back as the order's code.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace juniva {

// The bars of a text in Code 39, start and stop character included: for each character nine letters, bar and
// gap in turn, 'n' for narrow and 'w' for wide; between characters a narrow gap. Nothing for a text with
// anything but capital letters, digits and '-'.
std::optional<std::string> code39Elements(std::string_view text);

// The same as an SVG element, `height` units high, with a quiet zone on both sides; empty for such a text.
std::string code39Svg(std::string_view text, int height);

}  // namespace juniva
