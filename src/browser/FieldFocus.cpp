#include "browser/FieldFocus.h"

#include <algorithm>

#include "platform/format.h"
#include "platform/strings.h"

namespace lumo {

namespace {

std::string_view withoutLeadingSlashes(std::string_view path) {
  for (int i = 0; i < 2 && path.starts_with('/'); ++i) {
    path.remove_prefix(1);
  }
  return path;
}

}  // namespace

bool isFocusPath(const std::optional<std::string>& path, const std::optional<std::string>& list) {
  if (!path || !list) {
    return false;
  }
  const std::string_view wanted = withoutLeadingSlashes(*path);
  const std::vector<std::string> items = platform::componentsSeparatedBy(*list, ",");
  return std::any_of(items.begin(), items.end(), [wanted](const std::string& item) {
    const std::string plain = platform::trimmed(item);
    const std::string_view candidate = withoutLeadingSlashes(plain);
    return !candidate.empty() && platform::equalIgnoringCase(candidate, wanted);
  });
}

std::string focusScript(const std::optional<std::string>& identifier) {
  // From the last to the first, so that the first one keeps the focus.
  return platform::stringWithFormat(
      "var inputFields = document.querySelectorAll(\"input[id='%@']\");"
      "                                     "
      "for (var i = inputFields.length >>> 0; i--;) { inputFields[i].focus();}",
      identifier);
}

}  // namespace lumo
