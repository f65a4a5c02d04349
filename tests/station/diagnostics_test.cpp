#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>

#include "station/station.h"

// Whatever the program and its helpers have to say lands in the log file.

namespace station {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;

class DiagnosticsTest : public StationTest {};

TEST_F(DiagnosticsTest, OfTheToolkitAreInTheLog) {
  const auto folder = station.configurationFolder() / "gtk-4.0";
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "gtk.css") << "window { no-such-property: 1; }\n";
  startAtHome();
  EXPECT_TRUE(station.logs("no-such-property"));
  EXPECT_THAT(station.log(), HasSubstr("gtk.css"));
  EXPECT_EQ(station.output().find("no-such-property"), std::string::npos);
}

TEST_F(DiagnosticsTest, OfTheEnginesProcessesAreInTheLog) {
  // Makes each program tell on standard error what it is made of. The kiosk itself does so before it has a
  // log.
  station.environment["LD_DEBUG"] = "libs";
  startAtHome();
  for (const char* program : {"WebKitNetworkProcess", "WebKitWebProcess"}) {
    EXPECT_TRUE(waitUntil([&] {
      return ::testing::Value(station.log(),
                              ContainsRegex(std::string("initialize program: [^\n]*/") + program + "\n"));
    })) << program;
  }
}

}  // namespace station
