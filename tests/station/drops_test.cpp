#include <algorithm>
#include <fstream>

#include <gmock/gmock.h>

#include "station/drag_source.h"
#include "station/listener.h"
#include "station/station.h"

// What other programs drag onto the window.

namespace station {

using ::testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

constexpr Colour kFrame{0, 0, 255};
constexpr const char* kEntered = "[MyDragDropView draggingEntered:]";
constexpr const char* kExited = "[MyDragDropView draggingExited:]";
constexpr const char* kEnded = "[MyDragDropView draggingEnded:]";

// The page tells the server of every drag that it hears of.
const std::string kListening =
    "<script>for (const name of ['dragenter', 'dragover', 'dragleave', 'drop'])"
    " addEventListener(name, () => fetch('/page-drag?' + name))</script>";

}  // namespace

class DropsTest : public StationTest {
 protected:
  void SetUp() override {
    StationTest::SetUp();
    server.set("/home", HttpAnswer{page(kRed, kListening)});
    server.set("/next", HttpAnswer{page(kGreen)});
    server.set("/page-drag", HttpAnswer{"ok"});
  }

  fs::path file(const std::string& name, const std::string& content) {
    fs::path path = station.folder() / "home" / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }
  // A JPEG of one colour and exactly that size.
  fs::path photo(const std::string& name, const std::string& colour, std::uintmax_t size) {
    fs::path path = station.folder() / "home" / name;
    EXPECT_EQ(station.use({"convert", "-size", "800x800", "xc:" + colour, "-quality", "60", path}),
              "exit status 0")
        << station.said();
    EXPECT_LE(fs::file_size(path), size);
    fs::resize_file(path, size);
    return path;
  }
  int timesLogged(const std::string& line) const {
    const std::string log = station.log();
    int count = 0;
    for (auto at = log.find(line); at != std::string::npos; at = log.find(line, at + 1)) {
      ++count;
    }
    return count;
  }
  // The page's place on the screen.
  Area pageArea() {
    const auto view = station.control("group", "Page");
    const Area frame = station.screen().frame(station.window());
    const Area area = view ? view->extents() : Area{};
    EXPECT_GT(area.width, 0);
    return {frame.x + area.x, frame.y + area.y, area.width, area.height};
  }
  // Drags over the page what the kiosk does not take.
  bool dragOverPage(DragSource& source) {
    const Area area = pageArea();
    int steps = 0;
    return source.pickUp() &&
           source.moveTo(area.x + area.width / 2, area.y + area.height / 2, [&] { return ++steps > 6; });
  }
  // Drags it over the page and waits for the kiosk to know.
  bool hover(DragSource& source) {
    const int before = timesLogged(kEntered);
    const Area area = pageArea();
    return source.pickUp() && source.moveTo(area.x + area.width / 2, area.y + area.height / 2,
                                            [&] { return timesLogged(kEntered) > before; });
  }
  // All of it: what the kiosk has done with it stands in the log then.
  void drop(const std::vector<std::string>& arguments) {
    const int before = timesLogged(kEnded);
    DragSource source(station, arguments);
    ASSERT_TRUE(hover(source)) << source.said();
    source.letGo();
    ASSERT_TRUE(waitUntil([&] { return timesLogged(kEnded) > before; })) << source.said();
    ASSERT_TRUE(waitUntil([&] { return source.says("ended"); })) << source.said();
    EXPECT_FALSE(source.says("cancelled"));
  }
  // How many points of the frame's place are blue: 1 for all.
  double frameShown() {
    const Area area = pageArea();
    int blue = 0;
    int all = 0;
    for (int depth = 0; depth < 5; ++depth) {
      for (int step = 0; step <= 20; ++step) {
        const int x = area.x + depth + (area.width - 1 - 2 * depth) * step / 20;
        const int y = area.y + depth + (area.height - 1 - 2 * depth) * step / 20;
        for (const auto& [left, top] :
             {std::pair(x, area.y + depth), std::pair(x, area.y + area.height - 1 - depth),
              std::pair(area.x + depth, y), std::pair(area.x + area.width - 1 - depth, y)}) {
          blue += station.screen().at(left, top) == kFrame ? 1 : 0;
          ++all;
        }
      }
    }
    return static_cast<double>(blue) / all;
  }
  // For people who want to look at it.
  void keepPicture(const std::string& name) {
    const fs::path folder = fs::path(LUMO_BUILD_DIR) / "station/pictures";
    fs::create_directories(folder);
    EXPECT_EQ(station.use({"import", "-silent", "-window", "root", folder / name}), "exit status 0");
  }
  // The green of a picture that was compressed.
  bool showsGreenPicture() {
    const Area area = pageArea();
    const Colour middle = station.screen().at(area.x + area.width / 2, area.y + area.height / 2);
    return middle.red < 10 && middle.green > 140 && middle.green < 160 && middle.blue < 10;
  }
  // The kiosk goes on, the toolkit has complained of nothing, and the page has heard of no drag.
  void expectQuiet() {
    EXPECT_EQ(station.kiosk().end(std::chrono::milliseconds(1)), "still running");
    const std::string log = station.log() + station.output();
    for (const char* complaint : {"CRITICAL", "Gtk-WARNING", "Gdk-WARNING", "GLib-GObject-WARNING"}) {
      EXPECT_EQ(log.find(complaint), std::string::npos) << complaint;
    }
    EXPECT_EQ(server.count("/page-drag"), 0);
  }
};

TEST_F(DropsTest, ATextIsResolvedLikeAnyAddressAndLoaded) {
  startAtHome();
  drop({"--text", " [junivaserver]/next\n"});
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_THAT(station.log(), HasSubstr("handleDragDropNotification:....userInfo = {\n    mystrings = "
                                       "\"[junivaserver]/next\";\n}"));
  EXPECT_EQ(station.storedText("prefRunningUrlString"), server.url("/next"));
  EXPECT_EQ(server.count("/next"), 1);
  expectQuiet();
}

TEST_F(DropsTest, ATextThatLeadsToTheEndOfAnOrderIsHeardByOtherPrograms) {
  server.set("/registration/save", HttpAnswer{page(kGreen)});
  Listener listener(station.busAddress());
  startAtHome();
  drop({"--text", server.url("/registration/save")});
  EXPECT_EQ(station.kiosk().end(), "exit status 0");
  ASSERT_EQ(listener.heardToTheEnd().size(), 1U);
  EXPECT_EQ(listener.heard()[0].name, "lumoXNotification");
}

TEST_F(DropsTest, AFrameShowsWhileATextHoversAndGoesWithIt) {
  startAtHome();
  EXPECT_EQ(frameShown(), 0);
  DragSource source(station, {"--text", server.url("/next")});
  ASSERT_TRUE(hover(source)) << source.said();
  EXPECT_TRUE(waitUntil([this] { return frameShown() == 1; })) << frameShown();
  const Area area = pageArea();
  EXPECT_EQ(station.screen().at(area.x + 6, area.y + area.height / 2), kRed);
  EXPECT_TRUE(station.logs("[MyDragDropView drawRect:] isHighlighted = YES"));
  keepPicture("drop-frame.png");
  ASSERT_TRUE(
      source.moveTo(100, station.screen().area().height - 20, [this] { return timesLogged(kExited) == 1; }));
  EXPECT_TRUE(waitUntil([this] { return frameShown() == 0; }));
  source.letGo();
  ASSERT_TRUE(waitUntil([&] { return source.says("ended"); })) << source.said();
  EXPECT_EQ(timesLogged(kEnded), 0);
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(server.count("/next"), 0);
}

TEST_F(DropsTest, ADragThatIsCalledOffHandsNothingOver) {
  startAtHome();
  DragSource source(station, {"--text", server.url("/next")});
  ASSERT_TRUE(hover(source)) << source.said();
  ASSERT_TRUE(waitUntil([this] { return frameShown() == 1; }));
  station.key("Escape");
  EXPECT_TRUE(waitUntil([&] { return source.says("cancelled"); })) << source.said();
  EXPECT_TRUE(waitUntil([this] { return timesLogged(kExited) == 1; }));
  EXPECT_TRUE(waitUntil([this] { return frameShown() == 0; }));
  source.letGo();
  // The next drag is one like any other.
  drop({"--text", server.url("/next")});
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(timesLogged(kEnded), 1);
  EXPECT_EQ(server.count("/next"), 1);
  expectQuiet();
}

TEST_F(DropsTest, TheFrameGoesWhenTheSourceCrashes) {
  startAtHome();
  DragSource source(station, {"--text", server.url("/next")});
  ASSERT_TRUE(hover(source)) << source.said();
  ASSERT_TRUE(waitUntil([this] { return frameShown() == 1; }));
  source.crash();
  source.letGo();
  const Area area = pageArea();
  EXPECT_TRUE(source.moveTo(area.x + area.width / 2, area.y + area.height / 3,
                            [this] { return timesLogged(kExited) == 1; }));
  EXPECT_TRUE(waitUntil([this] { return frameShown() == 0; }));
  drop({"--text", server.url("/next")});
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(timesLogged(kEnded), 1);
  expectQuiet();
}

TEST_F(DropsTest, APhotoOfTwelveThousandBytesIsWarnedOfAndShown) {
  const fs::path picture = photo("a photo.jpg", "rgb(0,150,0)", 12000);
  startAtHome();
  drop({"--files", picture});
  EXPECT_TRUE(station.logs("FileSize 12000 is way too large??? [" + picture.string() + "]"));
  EXPECT_TRUE(station.logs("validitems = (\n    \"file://" + picture.string() + "\"\n)"));
  EXPECT_TRUE(station.logs("[AppDelegate application:openURLs:] (\n    \"lumobrowser://file://" +
                           station.folder().string() + "/home/a%20photo.jpg\"\n)"));
  EXPECT_TRUE(waitUntil([this] { return showsGreenPicture(); }));
  EXPECT_EQ(station.storedText("prefRunningUrlString"),
            "file://" + station.folder().string() + "/home/a%20photo.jpg");
  EXPECT_EQ(timesLogged("handleDragDropNotification"), 0) << "the file's name was taken for a text";
  expectQuiet();
}

TEST_F(DropsTest, OfSeveralFilesAllArePassedOnAndTheFirstIsShown) {
  const fs::path first = file("first.html", page(kGreen));
  const fs::path second = file("second.html", page(kBlue));
  const fs::path third = file("notes", "#!/bin/sh\nexit 0\n");
  startAtHome();
  drop({"--files", first, second, third});
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_THAT(station.log(),
              HasSubstr("validitems = (\n    \"file://" + first.string() + "\",\n    \"file://" +
                        second.string() + "\",\n    \"file://" + third.string() + "\"\n)"));
  EXPECT_EQ(station.storedText("prefRunningUrlString"), "file://" + first.string());
  EXPECT_EQ(timesLogged("application:openURLs:]"), 1);
  expectQuiet();
}

TEST_F(DropsTest, AFolderAnEmptyFileAndAnArchiveAreLeftOut) {
  const fs::path folder = station.folder() / "home/Photos.jpg";
  fs::create_directories(folder);
  const std::vector<std::string> arguments{"--files", folder, file("empty.txt", ""),
                                           file("a.zip", "PK\x03\x04")};
  startAtHome();
  drop(arguments);
  EXPECT_THAT(station.log(), HasSubstr("found utiType = inode/directory"));
  EXPECT_THAT(station.log(), HasSubstr("found utiType = application/zip"));
  EXPECT_THAT(station.log(), HasSubstr("validitems = (\n)"));
  EXPECT_EQ(timesLogged("application:openURLs:]"), 0);
  EXPECT_EQ(station.stop(), "exit status 0");
  EXPECT_EQ(server.count("/home"), 1);
}

TEST_F(DropsTest, AMovieGetsNoFrameAndIsPassedOn) {
  const fs::path movie = file("a.mp4", std::string("\0\0\0\x18"
                                                   "ftypmp42\0\0\0\0mp42isom",
                                                   24) +
                                           "x");
  startAtHome();
  {
    DragSource source(station, {"--files", movie});
    ASSERT_TRUE(hover(source)) << source.said();
    EXPECT_TRUE(station.logs("found utiType = video/mp4"));
    EXPECT_EQ(frameShown(), 0);
    source.letGo();
    ASSERT_TRUE(waitUntil([this] { return timesLogged(kEnded) == 1; }));
  }
  EXPECT_TRUE(station.logs("validitems = (\n    \"file://" + movie.string() + "\"\n)"));
  EXPECT_TRUE(station.logs("prefRunningUrlString will be set with: [file://" + movie.string() + "]"));
  EXPECT_EQ(timesLogged("[MyDragDropView drawRect:] isHighlighted = YES"), 0);
  expectQuiet();
}

TEST_F(DropsTest, ALinkOfAnotherBrowserIsATextAndNoFile) {
  const std::string address = server.url("/next");
  startAtHome();
  drop({"--as", "text/uri-list", address + "\r\n", "--as", "text/plain;charset=utf-8", address, "--as",
        "text/html", "<a href='" + address + "'>Next</a>"});
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_THAT(station.log(), HasSubstr("pboad types = (\n    NSStringPboardType\n)"));
  EXPECT_EQ(server.count("/next"), 1);
  expectQuiet();
}

TEST_F(DropsTest, AStringThatComesWithAFileIsPassedOnToo) {
  const fs::path green = file("green.html", page(kGreen));
  server.set("/next", HttpAnswer{page(kBlue)});
  startAtHome();
  drop({"--as", "text/uri-list", "file://" + green.string() + "\r\n", "--as", "text/plain;charset=utf-8",
        server.url("/next")});
  EXPECT_TRUE(station.logs("mystrings = \"" + server.url("/next") + "\""));
  EXPECT_TRUE(
      waitUntil([&] { return station.storedText("prefRunningUrlString") == "file://" + green.string(); }));
  EXPECT_TRUE(station.shows(kGreen));
  const std::string log = station.log();
  EXPECT_LT(log.find("handleDragDropNotification"), log.find("validitems"));
  expectQuiet();
}

TEST_F(DropsTest, ATextThatIsTooLargeIsRefusedInOneLine) {
  startAtHome();
  {
    DragSource source(station, {"--text", "http://h/" + std::string(70000, 'x')});
    ASSERT_TRUE(dragOverPage(source));
    source.letGo();
    ASSERT_TRUE(station.logs("What is dragged is larger than 65536 bytes, it is not taken"));
    ASSERT_TRUE(waitUntil([&] { return source.says("ended"); })) << source.said();
  }
  drop({"--text", server.url("/next")});
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(timesLogged("What is dragged is larger"), 1);
  EXPECT_EQ(timesLogged(kEntered), 1);
  expectQuiet();
}

TEST_F(DropsTest, WhatIsNeitherTextNorFilesIsRefusedAndThePageDoesNotGetIt) {
  startAtHome();
  {
    DragSource source(station, {"--as", "image/png", "no picture"});
    ASSERT_TRUE(dragOverPage(source));
    source.letGo();
    ASSERT_TRUE(waitUntil([&] { return source.says("cancelled"); })) << source.said();
  }
  // Whatever the page might have heard would have come before this.
  drop({"--text", server.url("/next")});
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(timesLogged(kEntered), 1);
  expectQuiet();
}

TEST_F(DropsTest, ASourceThatWouldLoseWhatItHasIsRefused) {
  startAtHome();
  {
    DragSource source(station, {"--move", "--text", server.url("/home?moved")});
    ASSERT_TRUE(dragOverPage(source));
    source.letGo();
    ASSERT_TRUE(waitUntil([&] { return source.says("ended"); })) << source.said();
    EXPECT_TRUE(source.says("cancelled"));
    EXPECT_FALSE(source.says("deletes"));
  }
  // Whatever could have come of it would have come before this.
  drop({"--text", server.url("/next")});
  EXPECT_TRUE(station.shows(kGreen));
  EXPECT_EQ(timesLogged(kEntered), 1);
  EXPECT_EQ(server.count("/home"), 1);
  expectQuiet();
}

TEST_F(DropsTest, ADragThatBeginsInThePageStaysWithThePage) {
  server.set("/dropped", HttpAnswer{"ok"});
  server.set("/home",
             HttpAnswer{page(kRed,
                             "<div draggable=true style='position:fixed;left:0;top:0;width:300px;height:100%'"
                             " ondragstart=\"event.dataTransfer.setData('text/plain', 'a "
                             "word');event.dataTransfer.effectAllowed='copy'\"></div>"
                             "<div style='position:fixed;right:0;top:0;width:300px;height:100%'"
                             " ondragover='event.preventDefault()' ondrop=\"event.preventDefault();"
                             "fetch('/dropped?' + event.dataTransfer.getData('text/plain'))\"></div>")});
  startAtHome();
  // Also after drags of other programs have been there: one that left, one that was dropped, one that broke
  // off.
  {
    DragSource source(station, {"--text", "x"});
    ASSERT_TRUE(hover(source)) << source.said();
    station.key("Escape");
    ASSERT_TRUE(waitUntil([this] { return timesLogged(kExited) == 1; }));
    source.letGo();
  }
  drop({"--text", server.url("/home?again")});
  ASSERT_TRUE(
      waitUntil([this] { return timesLogged("didFinishNavigation:...webView.URL.query = again") == 1; }));
  {
    DragSource source(station, {"--text", "x"});
    ASSERT_TRUE(hover(source)) << source.said();
    source.crash();
    source.letGo();
  }
  const Area area = pageArea();
  const int middle = area.y + area.height / 2;
  const auto mouse = [&](std::vector<std::string> commands) {
    commands.insert(commands.begin(), "xdotool");
    EXPECT_EQ(station.use(commands), "exit status 0") << station.said();
  };
  mouse({"mousemove", std::to_string(area.x + 100), std::to_string(middle), "mousedown", "1"});
  int step = 0;
  EXPECT_TRUE(waitUntil([&] {
    mouse({"mousemove", std::to_string(area.x + 100 + 40 * std::min(step, 5)), std::to_string(middle)});
    return ++step > 6;
  }));
  step = 0;
  EXPECT_TRUE(waitUntil([&] {
    mouse({"mousemove", std::to_string(area.x + area.width - 100 - step % 2), std::to_string(middle)});
    return ++step > 6;
  }));
  mouse({"mouseup", "1"});
  EXPECT_TRUE(waitUntil([this] { return server.count("/dropped") == 1; }));
  EXPECT_EQ(server.requests("/dropped")[0].target, "/dropped?a%20word");
  EXPECT_EQ(timesLogged(kEntered), 3);
  EXPECT_EQ(timesLogged(kEnded), 1);
  expectQuiet();
}

}  // namespace station
