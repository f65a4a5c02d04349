#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <variant>

#include "platform/property_list_text.h"
#include "platform/property_list_xml.h"
#include "platform/strings.h"

namespace platform {
namespace {

class Writer {
 public:
  std::string write(const PropertyList& value) {
    text_ =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
        "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n";
    writeValue(value, 0);
    text_ += "</plist>\n";
    return std::move(text_);
  }

  bool droppedCharacters() const { return droppedCharacters_; }

 private:
  void writeValue(const PropertyList& value, std::size_t depth) {
    std::visit([this, depth](const auto& held) { write(held, depth); }, value.value());
  }

  void indent(std::size_t depth) { text_.append(depth, '\t'); }

  void element(std::string_view name, std::string_view content, std::size_t depth) {
    indent(depth);
    text_.append("<").append(name).append(">").append(content).append("</").append(name).append(">\n");
  }

  void write(bool value, std::size_t depth) {
    indent(depth);
    text_ += value ? "<true/>\n" : "<false/>\n";
  }
  void write(std::int64_t value, std::size_t depth) { element("integer", std::to_string(value), depth); }
  void write(double value, std::size_t depth) {
    element("real", property_list_text::writeReal(value), depth);
  }
  void write(const std::string& value, std::size_t depth) {
    element("string", escaped(readable(value)), depth);
  }

  void write(Date value, std::size_t depth) { element("date", property_list_text::writeDate(value), depth); }

  void write(const Data& value, std::size_t depth) {
    indent(depth);
    text_ += "<data>\n";
    for (std::size_t start = 0; start < value.size(); start += bytesPerLine) {
      indent(depth);
      text_ += property_list_text::writeData(value, start, std::min(value.size(), start + bytesPerLine));
      text_ += '\n';
    }
    indent(depth);
    text_ += "</data>\n";
  }

  void write(const Array& value, std::size_t depth) {
    indent(depth);
    if (value.empty()) {
      text_ += "<array/>\n";
      return;
    }
    text_ += "<array>\n";
    for (const auto& element : value) {
      writeValue(element, depth + 1);
    }
    indent(depth);
    text_ += "</array>\n";
  }

  void write(const Dictionary& value, std::size_t depth) {
    indent(depth);
    if (value.empty()) {
      text_ += "<dict/>\n";
      return;
    }
    text_ += "<dict>\n";
    std::unordered_set<std::string> changed;
    for (const auto& [key, entry] : value) {
      const std::string written = readable(key);
      // A key that lost characters takes no other key's place: readers would drop one of the two.
      if (written != key && (value.contains(written) || !changed.insert(written).second)) {
        droppedCharacters_ = true;
        continue;
      }
      element("key", escaped(written), depth + 1);
      writeValue(entry, depth + 1);
    }
    indent(depth);
    text_ += "</dict>\n";
  }

  // Valid UTF-8 without the characters that are none of XML: control characters, U+FFFE and U+FFFF.
  std::string readable(const std::string& text) {
    const auto valid = validUtf8(text);
    std::string result;
    result.reserve(valid.size());
    for (std::size_t i = 0; i < valid.size(); ++i) {
      const char c = valid[i];
      if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') {
        droppedCharacters_ = true;
      } else if (valid.compare(i, 3, "\xEF\xBF\xBE") == 0 || valid.compare(i, 3, "\xEF\xBF\xBF") == 0) {
        droppedCharacters_ = true;
        i += 2;
      } else {
        result += c;
      }
    }
    return result;
  }

  // The characters that have a meaning in XML escaped. A carriage return too: other readers take a plain one
  // for a line feed.
  static std::string escaped(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
      if (c == '&') {
        result += "&amp;";
      } else if (c == '<') {
        result += "&lt;";
      } else if (c == '>') {
        result += "&gt;";
      } else if (c == '\r') {
        result += "&#13;";
      } else {
        result += c;
      }
    }
    return result;
  }

  static constexpr std::size_t bytesPerLine = 51;

  std::string text_;
  bool droppedCharacters_ = false;
};

}  // namespace

std::string xmlFromPropertyList(const PropertyList& value, bool& droppedCharacters) {
  Writer writer;
  auto text = writer.write(value);
  droppedCharacters = writer.droppedCharacters();
  return text;
}

}  // namespace platform
