#include <algorithm>

#include <gtest/gtest.h>

#include "demo/access_log.h"

namespace juniva {
namespace {

TEST(DemoAccessLine, HasAFixedFormat) {
  EXPECT_EQ(
      accessLine({"2026-11-21T02:00:24.123", "GET", "/registrationorders?a=1", 200, "Lumo", "curl/7.88 (x)"}),
      "2026-11-21T02:00:24.123 GET /registrationorders?a=1 200 scan=Lumo agent=\"curl/7.88 (x)\"");
  EXPECT_EQ(accessLine({"t", "", "", 0, "", ""}), "t - - - scan=- agent=\"-\"");
}

TEST(DemoAccessLine, CannotBeBrokenFromOutside) {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) everyByte += static_cast<char>(byte);
  const std::string line = accessLine({"t", everyByte, everyByte, 404, everyByte, everyByte});
  EXPECT_TRUE(std::all_of(line.begin(), line.end(),
                          [](char character) { return character >= 0x20 && character < 0x7F; }));
  const std::string beforeAgent = line.substr(0, line.find(" agent="));
  EXPECT_EQ(std::count(beforeAgent.begin(), beforeAgent.end(), ' '), 4);
  const std::string agent = line.substr(line.find(" agent=\"") + 8);
  for (std::size_t at = 0; at + 1 < agent.size(); ++at) {
    if (agent[at] == '"') {
      EXPECT_EQ(agent[at - 1], '\\');
    }
  }
  EXPECT_EQ(agent.back(), '"');
}

TEST(DemoAccessLine, StaysOfBoundedLength) {
  const std::string huge(1000000, 'a');
  EXPECT_LT(accessLine({"t", huge, huge, 200, huge, huge}).size(), 7000u);
}

}  // namespace
}  // namespace juniva
