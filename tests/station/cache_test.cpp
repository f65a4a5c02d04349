#include <filesystem>

#include <gmock/gmock.h>

#include "station/station.h"

// What is kept from one run to the next.

namespace station {

class CacheTest : public StationTest {
 protected:
  void SetUp() override {
    StationTest::SetUp();
    // A page with a picture that may be kept for a day, which counts its visits in the storage of the browser
    // and in a cookie.
    server.set(
        "/home",
        HttpAnswer{page(kRed,
                        "<img src='/picture.svg' onload='seen()'><script>function seen() {"
                        "const visits = Number(localStorage.visits || 0) + 1; localStorage.visits = visits;"
                        "fetch('/seen?' + visits)}</script>"),
                   {{"Set-Cookie", "station=7; Max-Age=86400"}}});
    server.set("/picture.svg", HttpAnswer{"<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>",
                                          {{"Cache-Control", "max-age=86400"}},
                                          200,
                                          "image/svg+xml"});
    server.set("/seen", HttpAnswer{"ok"});
  }

  // Starts the kiosk and waits until the page has its picture.
  void visit(int number) {
    startAtHome();
    ASSERT_TRUE(waitUntil([&] { return server.count("/seen") == number; }));
  }
  // The engine writes what it keeps a while after it has begun.
  bool hasPictureOnDisk() const {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(station.folder() / "cache")) {
      if (entry.is_regular_file() && entry.path().string().find("/Records/") != std::string::npos) {
        return true;
      }
    }
    return false;
  }
};

TEST_F(CacheTest, IsLeftEmptyWhenAskedTo) {
  visit(1);
  ASSERT_TRUE(waitUntil([this] { return hasPictureOnDisk(); }));
  ASSERT_EQ(station.stop(), "exit status 0");
  visit(2);
  ASSERT_EQ(station.stop(), "exit status 0");
  ASSERT_EQ(server.count("/picture.svg"), 1) << "the engine has no cache to clear";

  station.prefer("prefClearCacheAtLaunch", true);
  visit(3);
  EXPECT_EQ(server.count("/picture.svg"), 2);
  ASSERT_TRUE(station.press("Go"));
  ASSERT_TRUE(waitUntil([this] { return server.count("/seen") == 4; }));
  EXPECT_EQ(server.count("/picture.svg"), 3);
  ASSERT_EQ(station.stop(), "exit status 0");
  visit(5);
  EXPECT_EQ(server.count("/picture.svg"), 4);
  // What is no cache stays.
  EXPECT_EQ(server.requests("/seen").back().target, "/seen?5");
}

}  // namespace station
