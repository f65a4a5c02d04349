#include "support/ExifBlock.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "platform/format.h"
#include "platform/strings.h"

namespace lumo {

using platform::PropertyList;

namespace {

constexpr std::uint32_t kExifPointer = 0x8769;
constexpr std::uint32_t kUserComment = 0x9286;
constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kPointerPosition = 4;
constexpr std::size_t kCountSize = 2;
constexpr std::size_t kEntrySize = 12;
constexpr std::size_t kNextSize = 4;
// Inside an entry.
constexpr std::size_t kKindPosition = 2;
constexpr std::size_t kNumberPosition = 4;
constexpr std::size_t kValuePosition = 8;
constexpr std::size_t kInlineSize = 4;
// A value that is longer is told by its size.
constexpr std::size_t kReadableSize = 64;

// Bytes of one value of a kind; 0 for kinds that the standard does not know.
std::size_t sizeOf(std::uint32_t kind) {
  constexpr std::array<std::size_t, 13> kSizes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
  return kind < kSizes.size() ? kSizes.at(kind) : 0;
}

constexpr std::array<std::pair<std::uint32_t, const char*>, 32> kNames{{
    {0x829A, "ExposureTime"},
    {0x829D, "FNumber"},
    {0x8822, "ExposureProgram"},
    {0x8827, "ISOSpeedRatings"},
    {0x9000, "ExifVersion"},
    {0x9003, "DateTimeOriginal"},
    {0x9004, "DateTimeDigitized"},
    {0x9010, "OffsetTime"},
    {0x9011, "OffsetTimeOriginal"},
    {0x9101, "ComponentsConfiguration"},
    {0x9201, "ShutterSpeedValue"},
    {0x9202, "ApertureValue"},
    {0x9204, "ExposureBiasValue"},
    {0x9205, "MaxApertureValue"},
    {0x9207, "MeteringMode"},
    {0x9208, "LightSource"},
    {0x9209, "Flash"},
    {0x920A, "FocalLength"},
    {0x927C, "MakerNote"},
    {kUserComment, "UserComment"},
    {0x9290, "SubsecTime"},
    {0x9291, "SubsecTimeOriginal"},
    {0xA000, "FlashPixVersion"},
    {0xA001, "ColorSpace"},
    {0xA002, "PixelXDimension"},
    {0xA003, "PixelYDimension"},
    {0xA402, "ExposureMode"},
    {0xA403, "WhiteBalance"},
    {0xA405, "FocalLenIn35mmFilm"},
    {0xA420, "ImageUniqueID"},
    {0xA433, "LensMake"},
    {0xA434, "LensModel"},
}};

std::string nameOf(std::uint32_t tag) {
  const auto* const found =
      std::find_if(kNames.begin(), kNames.end(), [tag](const auto& name) { return name.first == tag; });
  return found != kNames.end() ? found->second : platform::stringWithFormat("0x%04x", tag);
}

bool isText(std::string_view bytes) {
  return platform::isValidUtf8(bytes) && std::all_of(bytes.begin(), bytes.end(), [](char c) {
           return static_cast<unsigned char>(c) >= ' ' && c != '\x7F';
         });
}

}  // namespace

std::optional<ExifBlock> ExifBlock::read(std::string_view tiff) {
  const bool isLittle = tiff.starts_with(std::string_view("II*\0", 4));
  const bool isBig = tiff.starts_with(std::string_view("MM\0*", 4));
  if (tiff.size() < kHeaderSize || tiff.size() > std::numeric_limits<std::uint32_t>::max() ||
      (!isLittle && !isBig)) {
    return std::nullopt;
  }
  ExifBlock block(tiff, isBig);
  return block.findDirectories() ? std::optional(std::move(block)) : std::nullopt;
}

bool ExifBlock::findDirectories() {
  const auto main = directoryAt(number(kPointerPosition, 4));
  if (!main) {
    return false;
  }
  main_ = *main;
  exif_.reset();
  if (const auto pointer = entry(main_, kExifPointer)) {
    exif_ = directoryAt(number(*pointer + kValuePosition, 4));
    return exif_.has_value();
  }
  return true;
}

std::uint32_t ExifBlock::number(std::size_t position, std::size_t size) const {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t next = position + (isBigEndian_ ? i : size - 1 - i);
    value = value << 8 | static_cast<std::uint8_t>(bytes_[next]);
  }
  return value;
}

void ExifBlock::put(std::size_t position, std::size_t size, std::uint32_t value) {
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t next = position + (isBigEndian_ ? size - 1 - i : i);
    bytes_[next] = static_cast<char>(value & 0xFF);
    value >>= 8;
  }
}

std::optional<ExifBlock::Directory> ExifBlock::directoryAt(std::size_t position) const {
  if (position < kHeaderSize || position > bytes_.size() || bytes_.size() - position < kCountSize) {
    return std::nullopt;
  }
  const std::size_t count = number(position, kCountSize);
  if (count * kEntrySize > bytes_.size() - position - kCountSize) {
    return std::nullopt;
  }
  return Directory{position, count};
}

std::optional<std::size_t> ExifBlock::entry(const Directory& directory, std::uint32_t tag) const {
  for (std::size_t i = 0; i < directory.count; ++i) {
    const std::size_t position = directory.position + kCountSize + i * kEntrySize;
    if (number(position, 2) == tag) {
      return position;
    }
  }
  return std::nullopt;
}

std::optional<ExifBlock::Value> ExifBlock::value(std::size_t entry) const {
  const std::uint32_t kind = number(entry + kKindPosition, 2);
  const std::size_t size = sizeOf(kind) * number(entry + kNumberPosition, 4);
  const std::size_t position =
      size <= kInlineSize ? entry + kValuePosition : number(entry + kValuePosition, 4);
  if (sizeOf(kind) == 0 || position > bytes_.size() || size > bytes_.size() - position) {
    return std::nullopt;
  }
  return Value{static_cast<Kind>(kind), std::string_view(bytes_).substr(position, size)};
}

std::optional<ExifBlock::Value> ExifBlock::userComment() const {
  const auto found = exif_ ? entry(*exif_, kUserComment) : std::nullopt;
  return found ? value(*found) : std::nullopt;
}

void ExifBlock::appendPadding() {
  bytes_.append(bytes_.size() % 2, '\0');
}

std::optional<std::size_t> ExifBlock::insert(Directory& directory, std::uint32_t tag) {
  if (directory.count >= std::numeric_limits<std::uint16_t>::max()) {
    return std::nullopt;
  }
  const std::size_t first = directory.position + kCountSize;
  const std::size_t end = first + directory.count * kEntrySize;
  // The entries stand in the order of their tags.
  std::size_t place = first;
  while (place < end && number(place, 2) < tag) {
    place += kEntrySize;
  }
  const std::string before = bytes_.substr(first, place - first);
  const std::string after = bytes_.substr(place, end - place);
  // A few writers leave out the link to the next directory at the very end.
  std::string next = end + kNextSize <= bytes_.size() ? bytes_.substr(end, kNextSize) : "";
  next.resize(kNextSize, '\0');
  appendPadding();
  directory.position = bytes_.size();
  ++directory.count;
  bytes_.append(kCountSize, '\0');
  put(directory.position, kCountSize, static_cast<std::uint32_t>(directory.count));
  bytes_ += before;
  const std::size_t result = bytes_.size();
  bytes_.append(kEntrySize, '\0').append(after).append(next);
  put(result, 2, tag);
  return result;
}

std::size_t ExifBlock::placeFor(std::size_t entry, std::size_t size) {
  if (const auto old = value(entry); old && old->bytes.size() > kInlineSize) {
    const std::size_t position = number(entry + kValuePosition, 4);
    // Two bytes of patience: some writers pad to a word.
    if (position > entry && position + old->bytes.size() + 2 >= bytes_.size()) {
      bytes_.resize(position);
    } else if (size <= old->bytes.size() && position > entry) {
      return position;
    }
  }
  appendPadding();
  const std::size_t position = bytes_.size();
  bytes_.append(size, '\0');
  return position;
}

bool ExifBlock::placeUserComment(std::string_view field) {
  if (!exif_) {
    const auto pointer = insert(main_, kExifPointer);
    if (!pointer) {
      return false;
    }
    put(kPointerPosition, 4, static_cast<std::uint32_t>(main_.position));
    // An empty directory to begin with.
    exif_ = Directory{bytes_.size(), 0};
    bytes_.append(kCountSize + kNextSize, '\0');
    put(*pointer + kKindPosition, 2, static_cast<std::uint32_t>(Kind::Long));
    put(*pointer + kNumberPosition, 4, 1);
  }
  auto comment = entry(*exif_, kUserComment);
  if (!comment) {
    comment = insert(*exif_, kUserComment);
    if (!comment) {
      return false;
    }
    put(*entry(main_, kExifPointer) + kValuePosition, 4, static_cast<std::uint32_t>(exif_->position));
  }
  const std::size_t position = placeFor(*comment, field.size());
  put(*comment + kKindPosition, 2, static_cast<std::uint32_t>(Kind::Undefined));
  put(*comment + kNumberPosition, 4, static_cast<std::uint32_t>(field.size()));
  put(*comment + kValuePosition, 4, static_cast<std::uint32_t>(position));
  bytes_.replace(position, field.size(), field);
  return true;
}

bool ExifBlock::setUserComment(std::string_view field, std::size_t limit) {
  ExifBlock changed = *this;
  if (field.size() <= kInlineSize || field.size() > limit || !changed.placeUserComment(field) ||
      changed.bytes_.size() > limit) {
    return false;
  }
  // In a broken structure one thing may lie upon another, and the comment upon a directory.
  if (!changed.findDirectories() || !changed.exif_ || changed.exif_->count < (exif_ ? exif_->count : 0) ||
      changed.main_.count < main_.count) {
    return false;
  }
  const auto written = changed.userComment();
  if (!written || written->bytes != field) {
    return false;
  }
  *this = std::move(changed);
  return true;
}

std::optional<PropertyList> ExifBlock::numberAt(std::size_t position, Kind kind) const {
  switch (kind) {
    case Kind::Short:
      return std::int64_t{number(position, 2)};
    case Kind::Long:
      return std::int64_t{number(position, 4)};
    case Kind::SignedShort:
      return std::int64_t{static_cast<std::int16_t>(number(position, 2))};
    case Kind::SignedLong:
      return std::int64_t{static_cast<std::int32_t>(number(position, 4))};
    case Kind::Rational:
      return double{1} * number(position, 4) / number(position + 4, 4);
    case Kind::SignedRational:
      return double{1} * static_cast<std::int32_t>(number(position, 4)) /
             static_cast<std::int32_t>(number(position + 4, 4));
    default:
      return std::nullopt;
  }
}

PropertyList ExifBlock::propertyList(const Value& value) const {
  if (value.kind == Kind::Ascii) {
    return value.bytes.substr(0, value.bytes.find('\0'));
  }
  const auto start = static_cast<std::size_t>(value.bytes.data() - bytes_.data());
  platform::Array numbers;
  for (std::size_t i = 0; i < value.bytes.size(); i += sizeOf(static_cast<std::uint32_t>(value.kind))) {
    auto each = numberAt(start + i, value.kind);
    if (!each) {
      const auto* const bytes = reinterpret_cast<const std::byte*>(value.bytes.data());
      return platform::Data(bytes, bytes + value.bytes.size());
    }
    numbers.push_back(std::move(*each));
  }
  return numbers.size() == 1 ? numbers.front() : PropertyList(std::move(numbers));
}

platform::Dictionary ExifBlock::dictionary() const {
  platform::Dictionary result;
  for (std::size_t i = 0; exif_ && i < exif_->count; ++i) {
    const std::size_t position = exif_->position + kCountSize + i * kEntrySize;
    const auto found = value(position);
    const std::string name = nameOf(number(position, 2));
    if (!found) {
      result.set(name, "(damaged)");
    } else if (found->bytes.size() > kReadableSize) {
      result.set(name, platform::stringWithFormat("(%lu bytes)", found->bytes.size()));
    } else if (found->kind == Kind::Byte || found->kind == Kind::Undefined) {
      result.set(name, isText(found->bytes) ? PropertyList(found->bytes)
                                            : platform::stringWithFormat("(%lu bytes)", found->bytes.size()));
    } else {
      const PropertyList shown = propertyList(*found);
      const auto* const text = shown.as<std::string>();
      result.set(name, text != nullptr ? PropertyList(platform::validUtf8(*text)) : shown);
    }
  }
  return result;
}

}  // namespace lumo
