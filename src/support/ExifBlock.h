#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/property_list.h"

namespace lumo {

// The EXIF data of an image: a TIFF structure, read and changed in place. Whatever is not the user comment
// keeps its bytes and its position. That matters: the notes of camera makers and thumbnails are found by
// positions that only their maker's own format tells, and they are lost when the structure is written anew.
// Safe with any bytes. One thread at a time.
class ExifBlock {
 public:
  // How the standard numbers the kinds of values.
  enum class Kind : std::uint16_t {
    Byte = 1,
    Ascii = 2,
    Short = 3,
    Long = 4,
    Rational = 5,
    Undefined = 7,
    SignedShort = 8,
    SignedLong = 9,
    SignedRational = 10,
  };

  struct Value {
    Kind kind = Kind::Undefined;
    std::string_view bytes;
  };

  // `tiff` is the payload of an EXIF segment without its signature. Absent when it is no such structure, or
  // its directories do not lie inside it.
  static std::optional<ExifBlock> read(std::string_view tiff);

  bool isBigEndian() const { return isBigEndian_; }
  const std::string& bytes() const { return bytes_; }

  // The user comment as it stands, good until the next change; absent where there is none or its value does
  // not lie inside.
  std::optional<Value> userComment() const;
  // Puts `field` (with its character code) into the place of the user comment, which is made where there is
  // none. What a former comment took at the end is used again. False, with nothing changed, when the whole
  // would be larger than `limit` bytes or the structure is too broken for it.
  bool setUserComment(std::string_view field, std::size_t limit);

  // A number, an array of numbers or a text, as the kind says; data for what is none of these.
  platform::PropertyList propertyList(const Value& value) const;
  // The entries of the EXIF directory for people to read, by their names where those are well known. What is
  // long or no text is told by its size.
  platform::Dictionary dictionary() const;

 private:
  struct Directory {
    std::size_t position = 0;
    std::size_t count = 0;
  };

  explicit ExifBlock(std::string_view tiff, bool isBigEndian) : bytes_(tiff), isBigEndian_(isBigEndian) {}

  std::uint32_t number(std::size_t position, std::size_t size) const;
  void put(std::size_t position, std::size_t size, std::uint32_t value);
  std::optional<Directory> directoryAt(std::size_t position) const;
  // The position of the entry `tag`.
  std::optional<std::size_t> entry(const Directory& directory, std::uint32_t tag) const;
  // The value of the entry at this position; absent when it does not lie inside.
  std::optional<Value> value(std::size_t entry) const;
  // Absent for a kind that is no number.
  std::optional<platform::PropertyList> numberAt(std::size_t position, Kind kind) const;
  bool findDirectories();
  // Writes the directory again at the end, with room for an entry `tag`, and answers that entry's position;
  // absent when the directory is full.
  std::optional<std::size_t> insert(Directory& directory, std::uint32_t tag);
  bool placeUserComment(std::string_view field);
  // The position of a place for `size` bytes, at the end or where the value of `entry` was.
  std::size_t placeFor(std::size_t entry, std::size_t size);
  void appendPadding();

  std::string bytes_;
  bool isBigEndian_ = false;
  Directory main_;
  // Absent where the image has no EXIF directory yet.
  std::optional<Directory> exif_;
};

}  // namespace lumo
