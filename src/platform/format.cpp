#include "platform/format.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>
#include <fmt/printf.h>

namespace platform {

namespace {

using Value = FormatArgument::Value;

// A width or precision from outside must not cost gigabytes. Beyond 766 decimals fmt 9 drops one.
constexpr int kWidestField = 512;

// Hands out the arguments one after the other; past the last one they are absent.
class Arguments {
 public:
  explicit Arguments(const std::vector<FormatArgument>& all) : all_(all) {}

  const Value& next() {
    static const Value absent = nullptr;
    return next_ < all_.size() ? all_[next_++].value() : absent;
  }

 private:
  const std::vector<FormatArgument>& all_;
  std::size_t next_ = 0;
};

// A width or a precision: a number of the format or the next argument ('*').
struct Field {
  enum class Source { None, Format, Argument } source = Source::None;
  int number = 0;
};

// One conversion of a format, such as "%-08.3lx".
struct Conversion {
  std::string flags;
  Field width;
  Field precision;
  bool isWide = false;
  char kind = 0;
};

bool isOneOf(char c, std::string_view set) {
  return set.find(c) != std::string_view::npos;
}

// The text between '%' and the end of the format, read from the front.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  // The conversion, or nothing when the text begins none.
  std::optional<Conversion> conversion() {
    Conversion conversion;
    conversion.flags = takeAll("-+ #0");
    conversion.width = field();
    if (startsWith('.')) {
      rest_.remove_prefix(1);
      conversion.precision = field();
      if (conversion.precision.source == Field::Source::None) {
        conversion.precision.source = Field::Source::Format;
      }
    }
    conversion.isWide = takeAll("hlqjztL").find_first_of("lqjzt") != std::string::npos;
    if (rest_.empty() || !isOneOf(rest_.front(), "@diuxXofFeEgGaAscp%")) {
      return std::nullopt;
    }
    conversion.kind = rest_.front();
    rest_.remove_prefix(1);
    return conversion;
  }

  std::string_view rest() const { return rest_; }

 private:
  bool startsWith(char c) const { return !rest_.empty() && rest_.front() == c; }

  std::string takeAll(std::string_view set) {
    const std::size_t end = std::min(rest_.find_first_not_of(set), rest_.size());
    std::string taken(rest_.substr(0, end));
    rest_.remove_prefix(end);
    return taken;
  }

  Field field() {
    if (startsWith('*')) {
      rest_.remove_prefix(1);
      return {Field::Source::Argument};
    }
    Field field;
    for (const char digit : takeAll("0123456789")) {
      field.source = Field::Source::Format;
      field.number = std::min(field.number * 10 + (digit - '0'), kWidestField);
    }
    return field;
  }

  std::string_view rest_;
};

// The value of a field as "%*d" takes it: absent when there is none or its argument is no whole number.
std::optional<int> number(const Field& field, Arguments& arguments) {
  if (field.source == Field::Source::None) {
    return std::nullopt;
  }
  if (field.source == Field::Source::Format) {
    return field.number;
  }
  const Value& value = arguments.next();
  if (const auto* whole = std::get_if<std::int64_t>(&value)) {
    return static_cast<int>(std::clamp<std::int64_t>(*whole, -kWidestField, kWidestField));
  }
  if (const auto* whole = std::get_if<std::uint64_t>(&value)) {
    return static_cast<int>(std::min<std::uint64_t>(*whole, kWidestField));
  }
  return std::nullopt;
}

std::string textOf(const Value& value) {
  struct Printer {
    std::string operator()(std::int64_t number) const { return fmt::to_string(number); }
    std::string operator()(std::uint64_t number) const { return fmt::to_string(number); }
    std::string operator()(double number) const { return fmt::format("{}", number); }
    std::string operator()(const void* pointer) const { return fmt::format("{}", pointer); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(std::nullptr_t) const { return "(null)"; }
  };
  return std::visit(Printer{}, value);
}

// UTF-8 of a code point; U+FFFD for a number that is none.
std::string characterOf(std::uint64_t number) {
  if (number > 0x10FFFF || (number >= 0xD800 && number <= 0xDFFF)) {
    number = 0xFFFD;
  }
  const auto point = static_cast<std::uint32_t>(number);
  const auto trail = [point](unsigned shift) { return static_cast<char>(0x80 | ((point >> shift) & 0x3F)); };
  if (point < 0x80) {
    return {static_cast<char>(point)};
  }
  if (point < 0x800) {
    return {static_cast<char>(0xC0 | (point >> 6)), trail(0)};
  }
  if (point < 0x10000) {
    return {static_cast<char>(0xE0 | (point >> 12)), trail(6), trail(0)};
  }
  return {static_cast<char>(0xF0 | (point >> 18)), trail(12), trail(6), trail(0)};
}

// A conversion whose fields are known, printed by fmt with the type that the conversion asks for.
class Printer {
 public:
  Printer(const Conversion& conversion, std::optional<int> width, std::optional<int> precision)
      : conversion_(conversion), flags_(conversion.flags), width_(width), precision_(precision) {
    if (width_ && *width_ < 0) {
      flags_ += '-';
      width_ = -*width_;
    }
    if (precision_ && *precision_ < 0) {
      precision_.reset();
    }
  }

  std::string print(const Value& value) const {
    const char kind = conversion_.kind;
    const auto* whole = std::get_if<std::int64_t>(&value);
    const auto* natural = std::get_if<std::uint64_t>(&value);
    if (isOneOf(kind, "di")) {
      if (whole != nullptr) {
        return number('d', *whole);
      }
      if (natural != nullptr && *natural <= std::numeric_limits<std::int64_t>::max()) {
        return number('d', static_cast<std::int64_t>(*natural));
      }
    } else if (isOneOf(kind, "uxXo")) {
      if (whole != nullptr) {
        return number(kind, withoutSign(*whole));
      }
      if (natural != nullptr) {
        return number(kind, *natural);
      }
    } else if (isOneOf(kind, "fFeEgGaA")) {
      if (const auto* real = std::get_if<double>(&value)) {
        return number(kind, *real);
      }
      if (whole != nullptr) {
        return number(kind, static_cast<double>(*whole));
      }
      if (natural != nullptr) {
        return number(kind, static_cast<double>(*natural));
      }
    } else if (kind == 'c') {
      if (whole != nullptr) {
        return text(characterOf(static_cast<std::uint64_t>(*whole)), std::nullopt);
      }
      if (natural != nullptr) {
        return text(characterOf(*natural), std::nullopt);
      }
    } else if (kind == 'p') {
      if (whole != nullptr) {
        return text(fmt::format("{:#x}", static_cast<std::uint64_t>(*whole)), std::nullopt);
      }
      if (natural != nullptr) {
        return text(fmt::format("{:#x}", *natural), std::nullopt);
      }
      if (std::holds_alternative<std::nullptr_t>(value)) {
        return text("0x0", std::nullopt);
      }
    }
    // A precision cuts texts only where the format expects one, never a number in a text's place.
    return text(textOf(value), isOneOf(kind, "@s") ? precision_ : std::nullopt);
  }

 private:
  std::uint64_t withoutSign(std::int64_t number) const {
    if (!conversion_.isWide && number < 0 && number >= std::numeric_limits<std::int32_t>::min()) {
      return static_cast<std::uint32_t>(number);
    }
    return static_cast<std::uint64_t>(number);
  }

  template <class Number>
  std::string number(char kind, Number value) const {
    return fmt::sprintf(format(flags_, precision_, kind), value);
  }

  std::string text(std::string value, std::optional<int> precision) const {
    if (!width_ && !precision) {
      return value;
    }
    return fmt::sprintf(format(flags_.find('-') == std::string::npos ? "" : "-", precision, 's'), value);
  }

  std::string format(const std::string& flags, std::optional<int> precision, char kind) const {
    std::string format = "%" + flags;
    if (width_) {
      format += fmt::to_string(*width_);
    }
    if (precision) {
      format += "." + fmt::to_string(*precision);
    }
    return format + kind;
  }

  const Conversion& conversion_;
  std::string flags_;
  std::optional<int> width_;
  std::optional<int> precision_;
};

}  // namespace

std::string description(const std::vector<std::string>& texts) {
  return description(Array(texts.begin(), texts.end()));
}

std::string description(const std::vector<std::pair<std::string, std::string>>& texts) {
  Dictionary dictionary;
  for (const auto& [name, text] : texts) {
    dictionary.set(name, text);
  }
  return description(dictionary);
}

std::string vformat(std::string_view format, const std::vector<FormatArgument>& arguments) {
  Arguments left(arguments);
  std::string result;
  while (true) {
    const std::size_t percent = std::min(format.find('%'), format.size());
    result += format.substr(0, percent);
    if (percent == format.size()) {
      return result;
    }
    format.remove_prefix(percent + 1);
    Reader reader(format);
    const std::optional<Conversion> conversion = reader.conversion();
    if (!conversion) {
      result += '%';
      continue;
    }
    format = reader.rest();
    if (conversion->kind == '%') {
      result += '%';
      continue;
    }
    // One after the other: each may take an argument.
    const std::optional<int> width = number(conversion->width, left);
    const std::optional<int> precision = number(conversion->precision, left);
    result += Printer(*conversion, width, precision).print(left.next());
  }
}

}  // namespace platform
