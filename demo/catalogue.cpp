#include "catalogue.h"

#include <array>

#include "artwork.h"

namespace juniva {

const std::array<Photo, kPhotoCount>& catalogue() {
  static const std::array<Photo, kPhotoCount> photos = {{
      {1, "First light", "Sunrise over rows of hazy mountains", "13 × 18 cm", 290, artwork::firstLight},
      {2, "Clara", "Portrait of a young woman in a mustard jumper", "13 × 18 cm", 290, artwork::clara},
      {3, "Evening sail", "A sailing boat before the setting sun", "20 × 30 cm", 690, artwork::eveningSail},
      {4, "Up and away", "Hot-air balloons over green hills", "13 × 18 cm", 290, artwork::upAndAway},
      {5, "October lane", "A lane between trees in autumn colours", "20 × 30 cm", 690, artwork::octoberLane},
      {6, "Grandpa Emil", "Portrait of a bearded man with glasses and a cap", "13 × 18 cm", 290,
       artwork::grandpaEmil},
      {7, "Blue hour", "City lights on the water after sunset", "20 × 30 cm", 690, artwork::blueHour},
      {8, "Northern night", "Northern lights over a lake in the woods", "30 × 45 cm", 1190,
       artwork::northernNight},
      {9, "Lavender rows", "A field of lavender and a lone tree", "13 × 18 cm", 290, artwork::lavenderRows},
  }};
  return photos;
}

std::string formatPrice(Cents amount) {
  const Cents magnitude = amount < 0 ? -amount : amount;
  const std::string cents = std::to_string(magnitude % 100);
  return (amount < 0 ? "−€" : "€") + std::to_string(magnitude / 100) + (cents.size() < 2 ? ".0" : ".") +
         cents;
}

}  // namespace juniva
