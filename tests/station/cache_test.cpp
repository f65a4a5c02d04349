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

  // One run of the kiosk until the page has its picture.
  void visit(int number) {
    startAtHome();
    ASSERT_TRUE(waitUntil([&] { return server.count("/seen") == number; }));
    ASSERT_EQ(station.stop(), "exit status 0");
  }
};

TEST_F(CacheTest, KeepsPicturesForTheNextRun) {
  visit(1);
  visit(2);
  EXPECT_EQ(server.count("/picture.svg"), 1);
  std::cerr << "COOKIE " << server.requests("/home")[1].header("Cookie").value_or("none") << " "
            << server.requests("/seen")[1].target << "\n";
}

TEST_F(CacheTest, StartsWithoutPicturesWhenAskedTo) {
  visit(1);
  station.prefer("prefClearCacheAtLaunch", true);
  visit(2);
  EXPECT_EQ(server.count("/picture.svg"), 2);
  // And keeps none.
  visit(3);
  EXPECT_EQ(server.count("/picture.svg"), 3);
  // What is no cache stays.
  EXPECT_EQ(server.requests("/seen").back().target, "/seen?3");
}

}  // namespace station
