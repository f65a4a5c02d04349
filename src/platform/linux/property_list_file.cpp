#include "platform/property_list_file.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <system_error>
#include <vector>

#include <plist/plist.h>

#include "platform/file_io.h"
#include "platform/log.h"
#include "platform/property_list_xml.h"

// Only the binary form is libplist's. Its XML reader takes a file that was cut off after a scalar for a whole
// one, reads "0.5" by the locale and "010" as octal, needs quadratic time for entities and keeps dates in 32
// bits. So a binary list is first checked here, then libplist turns it into XML, and one reader reads both
// forms.

namespace platform {
namespace {

constexpr std::string_view binaryMagic = "bplist00";

// A walk over the object table of a binary list before libplist sees it. libplist 2.2 follows references
// without a bound on depth or number, so that a few hundred bytes of shared arrays can ask for more nodes
// than there is memory.
class BinaryCheck {
 public:
  explicit BinaryCheck(std::string_view bytes) : bytes_(bytes) {}

  bool passes() {
    if (bytes_.size() < binaryMagic.size() + trailerSize) {
      return false;
    }
    const auto trailer = bytes_.size() - trailerSize;
    offsetSize_ = byteAt(trailer + 6);
    referenceSize_ = byteAt(trailer + 7);
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) {
      return false;
    }
    const auto count = number(trailer + 8, 8);
    const auto root = number(trailer + 16, 8);
    table_ = number(trailer + 24, 8);
    if (table_ < binaryMagic.size() || table_ >= trailer || count == 0 ||
        count > (trailer - table_) / offsetSize_ || root >= count) {
      return false;
    }
    seen_.resize(count);
    if (!visit(root, 1)) {
      return false;
    }
    // Each line of the XML form starts with a tab for every level, and an element that is closed has two
    // lines.
    const auto& whole = seen_[root];
    return whole.weight + whole.nodes * 2 * whole.height <= propertyListSizeLimit;
  }

 private:
  static constexpr std::size_t trailerSize = 32;

  // What an object stands for when every reference is followed.
  struct Extent {
    enum class Step { New, Open, Done } step = Step::New;
    std::uint64_t nodes = 1;
    // Levels of containers.
    std::size_t height = 0;
    // No less than the bytes of its XML form without indentation.
    std::uint64_t weight = 0;
  };

  std::uint8_t byteAt(std::size_t position) const { return static_cast<std::uint8_t>(bytes_[position]); }

  std::uint64_t number(std::size_t position, std::size_t size) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
      value = value << 8 | byteAt(position + i);
    }
    return value;
  }

  // True when object `index`, at nesting level `depth`, lies inside the list, is free of cycles and small
  // enough.
  bool visit(std::uint64_t index, std::size_t depth) {
    auto& extent = seen_[index];
    if (extent.step == Extent::Step::Open) {
      return false;
    }
    if (extent.step == Extent::Step::Done) {
      return depth + extent.height <= propertyListDepthLimit + 1;
    }
    extent.step = Extent::Step::Open;
    if (!measure(index, depth)) {
      return false;
    }
    extent.step = Extent::Step::Done;
    return extent.weight <= propertyListSizeLimit;
  }

  bool measure(std::uint64_t index, std::size_t depth) {
    auto position = number(table_ + index * offsetSize_, offsetSize_);
    if (position < binaryMagic.size() || position >= table_) {
      return false;
    }
    const unsigned marker = byteAt(position++);
    const unsigned kind = marker >> 4;
    std::uint64_t count = marker & 0x0F;
    const bool counted = (kind >= 0x4 && kind <= 0x6) || kind >= 0xA;
    if (counted && count == 0x0F) {
      if (position >= table_ || byteAt(position) >> 4 != 0x1 || (byteAt(position) & 0x0F) > 3) {
        return false;
      }
      const std::size_t size = std::size_t{1} << (byteAt(position++) & 0x0F);
      if (size > table_ - position) {
        return false;
      }
      count = number(position, size);
      position += size;
    }
    // No object can have more units than the list has bytes; this keeps the products below small.
    if (count > bytes_.size()) {
      return false;
    }
    auto& extent = seen_[index];
    extent.weight = 64;
    const auto fits = [this, position](std::uint64_t size) { return size <= table_ - position; };
    switch (kind) {
      case 0x0:
        return marker == 0x08 || marker == 0x09;
      case 0x1:
        return count <= 4 && fits(std::uint64_t{1} << count);
      case 0x2:
        return (count == 2 || count == 3) && fits(std::uint64_t{1} << count);
      case 0x3:
        return count == 3 && fits(8);
      case 0x8:
        extent.weight += 64;
        return fits(count + 1);
      case 0x4:
      case 0x5:
        // An escaped character takes five bytes, a line of Base64 less than twice its data.
        extent.weight += 5 * count;
        return fits(count);
      case 0x6:
        // libplist takes an empty text in this form for an error, and so does this check.
        extent.weight += 5 * count;
        return count > 0 && fits(2 * count);
      case 0xA:
      case 0xC:
        return fits(count * referenceSize_) && measureParts(index, position, count, depth);
      case 0xD:
        return fits(2 * count * referenceSize_) && measureParts(index, position, 2 * count, depth);
      default:
        return false;
    }
  }

  bool measureParts(std::uint64_t index, std::size_t position, std::uint64_t count, std::size_t depth) {
    if (depth > propertyListDepthLimit) {
      return false;
    }
    std::size_t height = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
      const auto part = number(position + i * referenceSize_, referenceSize_);
      if (part >= seen_.size() || !visit(part, depth + 1)) {
        return false;
      }
      height = std::max(height, seen_[part].height);
      seen_[index].nodes += seen_[part].nodes;
      seen_[index].weight += seen_[part].weight;
      if (seen_[index].weight > propertyListSizeLimit) {
        return false;
      }
    }
    seen_[index].height = height + 1;
    return true;
  }

  std::string_view bytes_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::uint64_t table_ = 0;
  std::vector<Extent> seen_;
};

// libplist 2.3 renamed the call that frees its texts.
template <class Text>
void freeText(Text* text) {
  if constexpr (requires { plist_mem_free(text); }) {
    plist_mem_free(text);
  } else {
    plist_to_xml_free(text);
  }
}

std::optional<PropertyList> propertyListFromBinary(std::string_view bytes) {
  if (!BinaryCheck(bytes).passes()) {
    return std::nullopt;
  }
  plist_t parsed = nullptr;
  plist_from_bin(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &parsed);
  if (parsed == nullptr) {
    return std::nullopt;
  }
  const auto node = std::unique_ptr<void, decltype(&plist_free)>(parsed, plist_free);
  char* text = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(node.get(), &text, &length);
  if (text == nullptr) {
    return std::nullopt;
  }
  const auto xml = std::unique_ptr<char, decltype(&freeText<char>)>(text, freeText<char>);
  return propertyListFromXml(std::string_view(xml.get(), length));
}

}  // namespace

std::optional<PropertyList> propertyListFromData(std::string_view bytes) {
  if (bytes.size() > propertyListSizeLimit) {
    return std::nullopt;
  }
  return bytes.starts_with(binaryMagic) ? propertyListFromBinary(bytes) : propertyListFromXml(bytes);
}

std::string xmlDataFromPropertyList(const PropertyList& value) {
  bool droppedCharacters = false;
  auto text = xmlFromPropertyList(value, droppedCharacters);
  if (droppedCharacters) {
    NSLog("A property list held control characters, which its XML form cannot carry; they are left out");
  }
  return text;
}

std::optional<PropertyList> propertyListFromFile(const std::filesystem::path& path) {
  std::error_code error;
  const auto contents = fileContents(path, propertyListSizeLimit, error);
  if (!contents) {
    return std::nullopt;
  }
  return propertyListFromData(contents->bytes);
}

}  // namespace platform
