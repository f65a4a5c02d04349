#include <algorithm>
#include <cstddef>

#include "platform/format.h"
#include "support/ZELKOR_Log.h"

namespace lumo {

using platform::stringWithFormat;

std::string ZELKOR_Log::asciiHexForData(const platform::Data& data) {
  std::string text;
  for (const std::byte byte : data) {
    text += stringWithFormat("%.2x ", std::to_integer<unsigned>(byte));
  }
  return text;
}

void ZELKOR_Log::logData(const platform::Data& data) {
  hexDumpOfData_usingBlock(data, [](std::string_view text) { debug(text); });
}

void ZELKOR_Log::hexDumpOfData_usingBlock(const platform::Data& data,
                                          const std::function<void(std::string_view)>& block) {
  constexpr std::size_t kBytesInLine = 16;
  std::string text;
  for (std::size_t start = 0; start < data.size(); start += kBytesInLine) {
    const std::size_t count = std::min(kBytesInLine, data.size() - start);
    text += stringWithFormat("%.8lx  ", start);
    for (std::size_t column = 0; column < kBytesInLine; ++column) {
      text += column < count ? stringWithFormat("%.2x ", std::to_integer<unsigned>(data[start + column]))
                             : std::string("   ");
      text += column == 7 ? " " : "";
    }
    text += " |";
    for (std::size_t column = 0; column < count; ++column) {
      const char character = std::to_integer<char>(data[start + column]);
      if (character == '%') {
        text += "%%";
      } else {
        text += character >= ' ' && character <= '~' ? character : '.';
      }
    }
    text += "|";
    block(text);
  }
}

}  // namespace lumo
