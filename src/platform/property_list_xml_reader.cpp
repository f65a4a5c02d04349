#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/property_list_file.h"
#include "platform/property_list_text.h"
#include "platform/property_list_xml.h"
#include "platform/strings.h"

namespace platform {
namespace {

using property_list_text::blanks;
using property_list_text::withoutBlanks;

// Dictionaries are searched entry by entry. A list whose insertions would compare more keys than this is
// refused, so that no input takes more than a moment.
constexpr std::size_t keyComparisonLimit = std::size_t{1} << 28;

// One tag as it stands between '<' and '>'.
struct Tag {
  std::string_view name;
  bool closing = false;
  bool empty = false;
};

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  std::optional<PropertyList> read() {
    if (text_.starts_with("\xEF\xBB\xBF")) {
      text_.remove_prefix(3);
    }
    auto tag = nextTag();
    if (!tag || tag->closing) {
      return std::nullopt;
    }
    const bool wrapped = tag->name == "plist";
    if (wrapped) {
      if (tag->empty) {
        return std::nullopt;
      }
      tag = nextTag();
    }
    auto value = tag ? readValue(*tag, 1) : std::nullopt;
    if (value && wrapped) {
      tag = nextTag();
      if (!tag || !tag->closing || tag->name != "plist") {
        return std::nullopt;
      }
    }
    if (!value || !skipMisc() || !text_.empty()) {
      return std::nullopt;
    }
    return value;
  }

 private:
  // Removes everything up to and with `end`; false when it does not come.
  bool skipPast(std::string_view end) {
    const auto position = text_.find(end);
    if (position == std::string_view::npos) {
      return false;
    }
    text_.remove_prefix(position + end.size());
    return true;
  }

  // Removes a DOCTYPE up to its '>', which may hold quoted texts and a bracketed part.
  bool skipDocumentType() {
    int brackets = 0;
    for (std::size_t i = 0; i < text_.size(); ++i) {
      const char c = text_[i];
      if (c == '"' || c == '\'') {
        i = text_.find(c, i + 1);
        if (i == std::string_view::npos) {
          return false;
        }
      } else if (c == '[') {
        ++brackets;
      } else if (c == ']') {
        --brackets;
      } else if (c == '>' && brackets <= 0) {
        text_.remove_prefix(i + 1);
        return true;
      }
    }
    return false;
  }

  // Removes blanks, comments, processing instructions and the DOCTYPE; false when one of them has no end.
  bool skipMisc() {
    while (true) {
      text_.remove_prefix(std::min(text_.find_first_not_of(blanks), text_.size()));
      if (text_.starts_with("<!--")) {
        text_.remove_prefix(4);
        if (!skipPast("-->")) {
          return false;
        }
      } else if (text_.starts_with("<?")) {
        if (!skipPast("?>")) {
          return false;
        }
      } else if (text_.starts_with("<!DOCTYPE")) {
        if (!skipDocumentType()) {
          return false;
        }
      } else {
        return true;
      }
    }
  }

  std::optional<Tag> nextTag() {
    if (!skipMisc() || !text_.starts_with('<')) {
      return std::nullopt;
    }
    return takeTag();
  }

  // The tag at the front. Attributes are skipped: none has a meaning in a property list.
  std::optional<Tag> takeTag() {
    std::size_t end = 1;
    while (end < text_.size() && text_[end] != '>') {
      if (text_[end] == '"' || text_[end] == '\'') {
        end = text_.find(text_[end], end + 1);
        if (end == std::string_view::npos) {
          return std::nullopt;
        }
      } else if (text_[end] == '<') {
        return std::nullopt;
      }
      ++end;
    }
    if (end >= text_.size()) {
      return std::nullopt;
    }
    auto inside = text_.substr(1, end - 1);
    text_.remove_prefix(end + 1);
    Tag tag;
    if (inside.starts_with('/')) {
      tag.closing = true;
      inside.remove_prefix(1);
    }
    if (inside.ends_with('/')) {
      tag.empty = true;
      inside.remove_suffix(1);
    }
    tag.name = inside.substr(0, inside.find_first_of(blanks));
    if (tag.name.empty() || (tag.closing && tag.empty)) {
      return std::nullopt;
    }
    return tag;
  }

  // The text up to the closing tag `name`, entities resolved.
  std::optional<std::string> readText(const Tag& opening) {
    std::string result;
    if (opening.empty) {
      return result;
    }
    while (true) {
      const auto position = text_.find_first_of("<&");
      if (position == std::string_view::npos) {
        return std::nullopt;
      }
      result.append(text_.substr(0, position));
      text_.remove_prefix(position);
      if (text_.front() == '&') {
        if (!readEntity(result)) {
          return std::nullopt;
        }
      } else if (text_.starts_with("<!--")) {
        text_.remove_prefix(4);
        if (!skipPast("-->")) {
          return std::nullopt;
        }
      } else if (text_.starts_with("<![CDATA[")) {
        text_.remove_prefix(9);
        const auto end = text_.find("]]>");
        if (end == std::string_view::npos) {
          return std::nullopt;
        }
        result.append(text_.substr(0, end));
        text_.remove_prefix(end + 3);
      } else {
        const auto tag = takeTag();
        if (!tag || !tag->closing || tag->name != opening.name) {
          return std::nullopt;
        }
        return validUtf8(result);
      }
    }
  }

  bool readEntity(std::string& result) {
    const auto end = text_.substr(0, 12).find(';');
    if (end == std::string_view::npos) {
      return false;
    }
    const auto name = text_.substr(1, end - 1);
    text_.remove_prefix(end + 1);
    static constexpr std::array<std::pair<std::string_view, char>, 5> named{
        {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};
    for (const auto& [entity, character] : named) {
      if (name == entity) {
        result += character;
        return true;
      }
    }
    const auto character =
        name.starts_with('#') ? property_list_text::readCharacterReference(name.substr(1)) : std::nullopt;
    result.append(character.value_or(""));
    return character.has_value();
  }

  // The value whose opening tag has been taken; it stands at nesting level `depth`.
  std::optional<PropertyList> readValue(const Tag& tag, std::size_t depth) {
    if (tag.closing) {
      return std::nullopt;
    }
    if (tag.name == "dict" || tag.name == "array") {
      if (depth > propertyListDepthLimit) {
        return std::nullopt;
      }
      return tag.name == "dict" ? readDictionary(tag, depth) : readArray(tag, depth);
    }
    auto text = readText(tag);
    if (!text) {
      return std::nullopt;
    }
    if (tag.name == "string") {
      return PropertyList(std::move(*text));
    }
    if (tag.name == "integer") {
      return property_list_text::readInteger(*text);
    }
    if (tag.name == "real") {
      return property_list_text::readReal(*text);
    }
    if (tag.name == "date") {
      return property_list_text::readDate(*text);
    }
    if (tag.name == "data") {
      return property_list_text::readData(*text);
    }
    if ((tag.name == "true" || tag.name == "false") && withoutBlanks(*text).empty()) {
      return PropertyList(tag.name == "true");
    }
    return std::nullopt;
  }

  std::optional<PropertyList> readArray(const Tag& opening, std::size_t depth) {
    Array array;
    if (opening.empty) {
      return PropertyList(std::move(array));
    }
    while (const auto tag = nextTag()) {
      if (tag->closing) {
        return tag->name == opening.name ? std::optional<PropertyList>(std::move(array)) : std::nullopt;
      }
      auto value = readValue(*tag, depth + 1);
      if (!value) {
        return std::nullopt;
      }
      array.push_back(std::move(*value));
    }
    return std::nullopt;
  }

  std::optional<PropertyList> readDictionary(const Tag& opening, std::size_t depth) {
    Dictionary dictionary;
    if (opening.empty) {
      return PropertyList(std::move(dictionary));
    }
    while (const auto tag = nextTag()) {
      if (tag->closing) {
        return tag->name == opening.name ? std::optional<PropertyList>(std::move(dictionary)) : std::nullopt;
      }
      keyComparisons_ += dictionary.size();
      if (tag->name != "key" || keyComparisons_ > keyComparisonLimit) {
        return std::nullopt;
      }
      const auto key = readText(*tag);
      const auto valueTag = key ? nextTag() : std::nullopt;
      auto value = valueTag ? readValue(*valueTag, depth + 1) : std::nullopt;
      if (!value) {
        return std::nullopt;
      }
      dictionary.set(*key, std::move(*value));
    }
    return std::nullopt;
  }

  std::string_view text_;
  std::size_t keyComparisons_ = 0;
};

}  // namespace

std::optional<PropertyList> propertyListFromXml(std::string_view text) {
  if (text.size() > propertyListSizeLimit) {
    return std::nullopt;
  }
  return Reader(text).read();
}

}  // namespace platform
