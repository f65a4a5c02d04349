#include "platform/property_list.h"

#include <algorithm>
#include <ctime>
#include <functional>

#include <fmt/format.h>

#include "platform/strings.h"

namespace platform {

namespace {

// Below this a walk over the entries is as quick as a table.
constexpr std::size_t kLargestWithoutTable = 16;

constexpr std::size_t kNotFound = static_cast<std::size_t>(-1);

bool standsWithoutQuotes(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("_$./-").find(c) != std::string_view::npos;
}

// A text as it stands inside an array or a dictionary.
std::string quotedWhereNeeded(std::string_view text) {
  if (!text.empty() && std::all_of(text.begin(), text.end(), standsWithoutQuotes)) {
    return std::string(text);
  }
  std::string quoted = "\"";
  for (const char c : text) {
    switch (c) {
      case '"':
        quoted += "\\\"";
        break;
      case '\\':
        quoted += "\\\\";
        break;
      case '\n':
        quoted += "\\n";
        break;
      case '\r':
        quoted += "\\r";
        break;
      case '\t':
        quoted += "\\t";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
          quoted += fmt::format("\\U{:04x}", static_cast<unsigned>(c));
        } else {
          quoted += c;
        }
    }
  }
  return quoted + '"';
}

std::string descriptionOf(const Date& date) {
  // Not through the clock's own conversion, which overflows at the start of its range.
  const std::time_t seconds = std::chrono::floor<std::chrono::seconds>(date.time_since_epoch()).count();
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02} +0000", utc.tm_year + 1900, utc.tm_mon + 1,
                     utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
}

std::string descriptionOf(const Data& data) {
  std::string text = "<";
  for (std::size_t index = 0; index < data.size(); ++index) {
    if (index > 0 && index % 4 == 0) {
      text += ' ';
    }
    text += fmt::format("{:02x}", std::to_integer<unsigned>(data[index]));
  }
  return text + ">";
}

// Writes one value and what is in it to the end of a text.
class Describer {
 public:
  std::string take() { return std::move(text_); }

  void describe(const PropertyList& value, bool isNested) {
    std::visit([&](const auto& content) { add(content, isNested); }, value.value());
  }

  void add(const Array& array, bool) {
    text_ += "(\n";
    ++level_;
    for (std::size_t index = 0; index < array.size(); ++index) {
      indent();
      describe(array[index], true);
      text_ += index + 1 < array.size() ? ",\n" : "\n";
    }
    --level_;
    indent();
    text_ += ')';
  }

  void add(const Dictionary& dictionary, bool) {
    text_ += "{\n";
    ++level_;
    for (const auto& [key, value] : dictionary) {
      indent();
      text_ += quotedWhereNeeded(key);
      text_ += " = ";
      describe(value, true);
      text_ += ";\n";
    }
    --level_;
    indent();
    text_ += '}';
  }

 private:
  void add(bool flag, bool) { text_ += flag ? '1' : '0'; }
  void add(std::int64_t number, bool) { text_ += fmt::to_string(number); }
  void add(double number, bool isNested) { addText(fmt::format("{}", number), isNested); }
  void add(const std::string& text, bool isNested) { addText(text, isNested); }
  void add(const Date& date, bool isNested) { addText(descriptionOf(date), isNested); }
  void add(const Data& data, bool) { text_ += descriptionOf(data); }

  void addText(const std::string& text, bool isNested) { text_ += isNested ? quotedWhereNeeded(text) : text; }
  void indent() { text_.append(4 * level_, ' '); }

  std::string text_;
  std::size_t level_ = 0;
};

}  // namespace

Dictionary::Dictionary(std::initializer_list<Entry> entries) {
  for (const Entry& entry : entries) {
    set(entry.first, entry.second);
  }
}

std::size_t Dictionary::slot(std::string_view key) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = std::hash<std::string_view>()(key) & mask;
  while (slots_[slot] != 0 && entries_[slots_[slot] - 1].first != key) {
    slot = (slot + 1) & mask;
  }
  return slot;
}

std::size_t Dictionary::position(std::string_view key) const {
  if (!slots_.empty()) {
    const std::size_t found = slots_[slot(key)];
    return found == 0 ? kNotFound : found - 1;
  }
  const auto found =
      std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.first == key; });
  return found == entries_.end() ? kNotFound : static_cast<std::size_t>(found - entries_.begin());
}

void Dictionary::buildSlots() {
  slots_.clear();
  if (entries_.size() <= kLargestWithoutTable) {
    return;
  }
  // A power of two, at most a quarter full: set() fills it to the half.
  std::size_t count = 4 * kLargestWithoutTable;
  while (count < 4 * entries_.size()) {
    count *= 2;
  }
  slots_.resize(count, 0);
  for (std::size_t index = 0; index < entries_.size(); ++index) {
    slots_[slot(entries_[index].first)] = static_cast<std::uint32_t>(index + 1);
  }
}

const PropertyList* Dictionary::find(std::string_view key) const {
  const std::size_t found = position(key);
  return found == kNotFound ? nullptr : &entries_[found].second;
}

void Dictionary::set(std::string_view key, PropertyList value) {
  const std::size_t found = position(key);
  if (found != kNotFound) {
    entries_[found].second = std::move(value);
    return;
  }
  entries_.emplace_back(std::string(key), std::move(value));
  if (2 * entries_.size() > slots_.size()) {
    buildSlots();
  } else {
    slots_[slot(entries_.back().first)] = static_cast<std::uint32_t>(entries_.size());
  }
}

void Dictionary::remove(std::string_view key) {
  const std::size_t found = position(key);
  if (found != kNotFound) {
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(found));
    buildSlots();
  }
}

bool Dictionary::operator==(const Dictionary& other) const {
  return size() == other.size() && std::all_of(begin(), end(), [&](const Entry& entry) {
           const PropertyList* value = other.find(entry.first);
           return value != nullptr && *value == entry.second;
         });
}

std::optional<bool> boolValue(const PropertyList& value) {
  if (const auto* flag = value.as<bool>()) {
    return *flag;
  }
  if (const auto* number = value.as<std::int64_t>()) {
    return *number != 0;
  }
  if (const auto* number = value.as<double>()) {
    return *number != 0;
  }
  const auto* text = value.as<std::string>();
  if (text != nullptr &&
      (equalIgnoringCase(*text, "YES") || equalIgnoringCase(*text, "true") || *text == "1")) {
    return true;
  }
  return std::nullopt;
}

std::optional<std::string> stringValue(const PropertyList& value) {
  if (value.as<std::string>() != nullptr || value.as<std::int64_t>() != nullptr ||
      value.as<double>() != nullptr) {
    return description(value);
  }
  return std::nullopt;
}

std::string description(const PropertyList& value) {
  Describer describer;
  describer.describe(value, false);
  return describer.take();
}

std::string description(const Array& value) {
  Describer describer;
  describer.add(value, false);
  return describer.take();
}

std::string description(const Dictionary& value) {
  Describer describer;
  describer.add(value, false);
  return describer.take();
}

std::string componentsJoinedByString(const Array& array, std::string_view separator) {
  std::string joined;
  for (std::size_t index = 0; index < array.size(); ++index) {
    if (index > 0) {
      joined += separator;
    }
    joined += description(array[index]);
  }
  return joined;
}

}  // namespace platform
