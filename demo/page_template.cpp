#include "page_template.h"

#include "text.h"

namespace juniva {
namespace {

// A gap's name has small letters and dashes only, so that no brace of a style sheet or script is mistaken for
// one.
bool isGapName(std::string_view name) {
  return !name.empty() && name.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") == std::string_view::npos;
}

}  // namespace

std::string fillTemplate(std::string_view page, const Values& values) {
  std::string out;
  out.reserve(page.size() * 2);
  while (true) {
    const std::size_t begin = page.find("{{");
    if (begin == std::string_view::npos) return out += page;
    out += page.substr(0, begin);
    page.remove_prefix(begin);
    const bool raw = page.substr(0, 3) == "{{{";
    const std::string_view opening = raw ? "{{{" : "{{";
    const std::string_view closing = raw ? "}}}" : "}}";
    const std::size_t end = page.find(closing, opening.size());
    const std::string_view name = end == std::string_view::npos
                                      ? std::string_view()
                                      : page.substr(opening.size(), end - opening.size());
    if (!isGapName(name)) {
      out += page[0];
      page.remove_prefix(1);
      continue;
    }
    const auto value = values.find(name);
    if (value != values.end()) out += raw ? value->second : htmlEscape(value->second);
    page.remove_prefix(end + closing.size());
  }
}

}  // namespace juniva
