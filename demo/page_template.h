// Pages with gaps: the texts under pages/ name what is to be put where.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace juniva {

// The values for the gaps of one page, by name.
using Values = std::map<std::string, std::string, std::less<>>;

// Fills `{{name}}` with the value as text, escaped for HTML, and `{{{name}}}` with the value as it stands,
// which has to be HTML already. A gap without a value becomes nothing. Braces that are no gap stay.
std::string fillTemplate(std::string_view page, const Values& values);

}  // namespace juniva
