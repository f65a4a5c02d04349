// The nine pictures that a customer can order prints of.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace juniva {

// An amount of money in cents.
using Cents = std::int64_t;

struct Photo {
  int id;
  std::string_view title;
  std::string_view description;  // what a person who cannot see the picture is told
  std::string_view format;       // the size of a print
  Cents price;                   // of one print
  std::string (*artwork)();      // the picture as an SVG element of 600 x 400 units, without outside assets
};

inline constexpr int kPhotoCount = 9;

// All photos, in the order of their ids, which run from 1 to kPhotoCount.
const std::array<Photo, kPhotoCount>& catalogue();

// "€12.40"
std::string formatPrice(Cents amount);

}  // namespace juniva
