#include "dropview/MyDragDropView.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>

#include <gmock/gmock.h>

#include "platform/notification_center.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/fake_drop_view.h"
#include "tests/fakes/test_platform.h"
#include "tests/unit/platform/temporary_folder.h"

namespace lumo {
namespace {

namespace fs = std::filesystem;

using platform::kFilenamesPboardType;
using platform::kStringPboardType;
using platform::Notification;
using platform::Pasteboard;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// As file tools write them: the first bytes tell the type.
const std::string kJpegBegin("\xFF\xD8\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 20);
const std::string kMovieBegin(
    "\x00\x00\x00\x18"
    "ftypmp42\x00\x00\x00\x00mp42isom",
    24);

Pasteboard text(std::optional<std::string> string) {
  return {{kStringPboardType}, std::nullopt, std::move(string)};
}

Pasteboard files(std::vector<std::string> paths) {
  return {{kFilenamesPboardType}, std::move(paths), std::nullopt};
}

// The view above a browser window, with someone who hears its notifications.
class DragDropViewTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"LumoNotificationAddFromString", "LumoNotificationAddFromFile"}) {
      machine.notifications.addObserver(name, [this](const Notification& note) {
        machine.journal.add("posted " + note.name);
        posted.push_back(note);
      });
    }
    view.awakeFromNib();
    log.clear();
    machine.journal.clear();
  }

  std::string file(const std::string& name, const std::string& content) {
    const fs::path path = folder.path() / name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }
  std::string jpeg(const std::string& name, std::size_t size) {
    return file(name, kJpegBegin + std::string(size - kJpegBegin.size(), 'x'));
  }
  // The items of the one notification about files.
  std::vector<std::string> postedFiles() {
    std::vector<std::string> items;
    for (const Notification& note : posted) {
      if (note.name != "LumoNotificationAddFromFile") {
        continue;
      }
      EXPECT_TRUE(items.empty()) << "posted twice";
      EXPECT_TRUE(note.userInfo.empty());
      EXPECT_TRUE(note.object);
      for (const platform::PropertyList& item : *note.object->as<platform::Array>()) {
        items.push_back(*item.as<std::string>());
      }
    }
    return items;
  }
  std::vector<std::string> postedNames() {
    std::vector<std::string> names;
    for (const Notification& note : posted) {
      names.push_back(note.name);
    }
    return names;
  }
  std::vector<std::string> opened() { return machine.journal.startingWith("application openURL "); }
  void drop(Pasteboard content) {
    place.drag(std::move(content));
    EXPECT_TRUE(place.drop());
  }

  fakes::CapturedLog log;
  TemporaryFolder folder;
  fakes::TestPlatform machine;
  platform::Platform platform = machine.platform();
  std::unique_ptr<platform::Window> window = machine.windows.loadWindow("MyWebViewWindowController");
  fakes::FakeDropView& place = machine.window()->view<fakes::FakeDropView>("ibDragDropView");
  MyDragDropView view{platform, place};
  std::vector<Notification> posted;
};

TEST_F(DragDropViewTest, RegistersForFilesAndStringsAndTakesTheWindowsFrameAsItStands) {
  place.setFrame({0, 0, 1, 1});
  view.awakeFromNib();
  EXPECT_TRUE(log.contains("[MyDragDropView awakeFromNib]"));
  EXPECT_THAT(place.registeredTypes(), ElementsAre("NSFilenamesPboardType", "NSStringPboardType"));
  EXPECT_EQ(view.frame(), window->frame());
  EXPECT_EQ(view.frame(), (platform::Rect{100, 80, 1024, 768}));
}

TEST_F(DragDropViewTest, WithoutAWindowItsFrameIsEmpty) {
  fakes::FakeDropView alone({machine.dispatch, machine.journal}, "alone");
  MyDragDropView other(platform, alone);
  other.setFrame({1, 2, 3, 4});
  other.awakeFromNib();
  EXPECT_EQ(other.frame(), platform::Rect{});
}

TEST_F(DragDropViewTest, AStringThatHoversIsHighlightedWhateverItSays) {
  place.drag(text("anything"));
  EXPECT_TRUE(view.isHighlighted());
  EXPECT_THAT(log.lines(), ElementsAre("[MyDragDropView draggingEntered:]", "found NSStringPboardType ...",
                                       "copiedItems = (", "    anything", ")"));
  EXPECT_TRUE(machine.journal.contains("ibDragDropView setNeedsDisplay"));
}

TEST_F(DragDropViewTest, AStringThatCannotBeReadIsHighlightedToo) {
  place.drag(text(std::nullopt));
  EXPECT_TRUE(view.isHighlighted());
  EXPECT_TRUE(log.contains("copiedItems = ("));
}

TEST_F(DragDropViewTest, TheFirstAcceptableFileEndsTheHighlightTest) {
  place.drag(files({file("a.zip", "PK\x03\x04"), jpeg("b.jpg", 100), file("c.txt", "c")}));
  EXPECT_TRUE(view.isHighlighted());
  EXPECT_THAT(log.lines(), ElementsAre("[MyDragDropView draggingEntered:]", "found utiType = application/zip",
                                       "found utiType = image/jpeg"));
  EXPECT_EQ(machine.journal.count("ibDragDropView setNeedsDisplay"), 1U);
}

TEST_F(DragDropViewTest, TextImagesAndPdfsAreHighlighted) {
  for (const std::string& path :
       {file("a.txt", "a"), file("a.svg", "<svg xmlns='http://www.w3.org/2000/svg'/>"),
        file("run", "#!/bin/sh\necho\n"), file("a.pdf", "%PDF-1.4\n"), file("empty.txt", "")}) {
    place.drag(files({path}));
    EXPECT_TRUE(view.isHighlighted()) << path;
    place.leave();
    EXPECT_FALSE(view.isHighlighted()) << path;
  }
}

TEST_F(DragDropViewTest, AMovieIsNotHighlightedButPassedOn) {
  const std::string movie = file("a.mp4", kMovieBegin);
  place.drag(files({movie}));
  EXPECT_FALSE(view.isHighlighted());
  EXPECT_EQ(machine.journal.count("ibDragDropView setNeedsDisplay"), 0U);
  EXPECT_TRUE(place.drop());
  EXPECT_THAT(postedFiles(), ElementsAre("file://" + movie));
  EXPECT_THAT(opened(), ElementsAre("application openURL lumobrowser://file://" + movie));
}

TEST_F(DragDropViewTest, FilesThatAreNotAcceptableClearTheHighlightWithoutARedraw) {
  view.setIsHighlighted(true);
  place.drag(files({folder.path()}));
  EXPECT_FALSE(view.isHighlighted());
  EXPECT_EQ(machine.journal.count("ibDragDropView setNeedsDisplay"), 0U);
  EXPECT_TRUE(log.contains("found utiType = inode/directory"));
}

TEST_F(DragDropViewTest, AFileThatIsNotThereHasNoTypeAndIsLeftOut) {
  const std::string gone = folder.path() / "gone.txt";
  place.drag(files({gone}));
  EXPECT_FALSE(view.isHighlighted());
  EXPECT_TRUE(place.drop());
  EXPECT_EQ(log.count("found utiType = (null)"), 2U);
  EXPECT_THAT(postedNames(), ElementsAre("LumoNotificationAddFromFile"));
  EXPECT_THAT(postedFiles(), IsEmpty());
}

TEST_F(DragDropViewTest, ADragOfNeitherStringsNorFilesChangesNothing) {
  const platform::DraggingInfo other{{{"image/png"}, std::nullopt, std::nullopt}};
  EXPECT_EQ(view.draggingEntered(other), platform::kDragOperationEvery);
  EXPECT_FALSE(view.isHighlighted());
  view.draggingEnded(other);
  EXPECT_THAT(posted, IsEmpty());
  EXPECT_THAT(opened(), IsEmpty());
}

TEST_F(DragDropViewTest, EveryOperationIsOfferedInEveryCase) {
  EXPECT_EQ(view.draggingEntered({text("x")}), ~0U);
  EXPECT_EQ(view.draggingEntered({files({folder.path()})}), ~0U);
  EXPECT_EQ(view.draggingEntered({files({})}), ~0U);
}

TEST_F(DragDropViewTest, ADragThatLeavesHandsNothingOver) {
  place.drag(text("http://h/x"));
  machine.journal.clear();
  log.clear();
  place.leave();
  EXPECT_FALSE(view.isHighlighted());
  EXPECT_THAT(log.lines(), ElementsAre("[MyDragDropView draggingExited:]"));
  EXPECT_TRUE(machine.journal.contains("ibDragDropView setNeedsDisplay"));
  EXPECT_THAT(posted, IsEmpty());
}

TEST_F(DragDropViewTest, ADroppedStringIsPostedTrimmed) {
  place.drag(text(" \n[junivaserver]/x\t "));
  log.clear();
  EXPECT_TRUE(place.drop());
  EXPECT_FALSE(view.isHighlighted());
  ASSERT_THAT(postedNames(), ElementsAre("LumoNotificationAddFromString"));
  EXPECT_FALSE(posted[0].object);
  EXPECT_EQ(posted[0].userInfo, (platform::Dictionary{{"mystrings", "[junivaserver]/x"}}));
  EXPECT_THAT(log.lines(),
              ElementsAre("[MyDragDropView performDragOperation:]", "[MyDragDropView draggingEnded:]",
                          "pboad types = (", "    NSStringPboardType", ")"));
  EXPECT_THAT(opened(), IsEmpty());
}

TEST_F(DragDropViewTest, AStringOfBlanksIsPostedEmpty) {
  drop(text(" \t\r\n "));
  ASSERT_THAT(postedNames(), ElementsAre("LumoNotificationAddFromString"));
  EXPECT_EQ(posted[0].userInfo, (platform::Dictionary{{"mystrings", ""}}));
}

TEST_F(DragDropViewTest, AnEmptyOrMissingStringIsLoggedAndNotPosted) {
  drop(text(""));
  EXPECT_TRUE(log.contains("pboard info string is invalid = []"));
  drop(text(std::nullopt));
  EXPECT_TRUE(log.contains("pboard info string is invalid = [(null)]"));
  EXPECT_THAT(posted, IsEmpty());
}

TEST_F(DragDropViewTest, ALargePhotoIsWarnedOfAndPassedOn) {
  const std::string photo = jpeg("photo.jpg", 12000);
  drop(files({photo}));
  EXPECT_TRUE(log.contains("File size: 12000 bytes"));
  EXPECT_TRUE(log.contains("FileSize 12000 is way too large??? [" + photo + "]"));
  EXPECT_THAT(log.text(), HasSubstr("validitems = (\n    \"file://" + photo + "\"\n)"));
  EXPECT_THAT(opened(), ElementsAre("application openURL lumobrowser://file://" + photo));
  EXPECT_THAT(postedFiles(), ElementsAre("file://" + photo));
}

TEST_F(DragDropViewTest, TheWarningBeginsAtFiveThousandBytes) {
  drop(files({jpeg("small.jpg", 4999)}));
  EXPECT_THAT(log.text(), HasSubstr("File size: 4999 bytes\n"));
  EXPECT_THAT(log.text(), Not(HasSubstr("way too large")));
  posted.clear();
  drop(files({jpeg("large.jpg", 5000)}));
  EXPECT_THAT(log.text(), HasSubstr("FileSize 5000 is way too large???"));
  EXPECT_EQ(postedFiles().size(), 1U);
}

TEST_F(DragDropViewTest, AnEmptyFileIsSkippedEntirely) {
  drop(files({file("empty.txt", "")}));
  EXPECT_THAT(log.text(), Not(HasSubstr("File size")));
  EXPECT_THAT(log.text(), HasSubstr("validitems = (\n)"));
  EXPECT_THAT(opened(), IsEmpty());
  EXPECT_THAT(postedNames(), ElementsAre("LumoNotificationAddFromFile"));
  EXPECT_THAT(postedFiles(), IsEmpty());
}

TEST_F(DragDropViewTest, OfThreeFilesAllArePostedAndTheFirstIsOpened) {
  const std::string first = file("1.txt", "1");
  const std::string second = jpeg("2.jpg", 100);
  const std::string third = file("3.pdf", "%PDF-1.4\n");
  drop(files({first, second, third}));
  EXPECT_THAT(postedFiles(), ElementsAre("file://" + first, "file://" + second, "file://" + third));
  EXPECT_THAT(opened(), ElementsAre("application openURL lumobrowser://file://" + first));
}

TEST_F(DragDropViewTest, TheFirstAcceptedFileIsOpenedNotTheFirstFile) {
  const std::string photo = jpeg("photo.jpg", 100);
  drop(files({file("a.zip", "PK\x03\x04"), file("empty.txt", ""), photo}));
  EXPECT_THAT(postedFiles(), ElementsAre("file://" + photo));
  EXPECT_THAT(opened(), ElementsAre("application openURL lumobrowser://file://" + photo));
}

TEST_F(DragDropViewTest, AFolderOrAFileOfAnotherKindIsPostedAsAnEmptyListAndNothingIsOpened) {
  fs::create_directory(folder.path() / "photos.jpg");
  for (const std::string& path : {(folder.path() / "photos.jpg").string(), file("a.zip", "PK\x03\x04"),
                                  file("a.mp3", "ID3\x03"), file("data", std::string("\x00\x01\x02", 3))}) {
    posted.clear();
    drop(files({path}));
    EXPECT_THAT(postedNames(), ElementsAre("LumoNotificationAddFromFile")) << path;
    EXPECT_THAT(postedFiles(), IsEmpty()) << path;
  }
  EXPECT_THAT(opened(), IsEmpty());
}

TEST_F(DragDropViewTest, FilesWithoutNamesArePostedAsAnEmptyList) {
  drop({{kFilenamesPboardType}, std::nullopt, std::nullopt});
  EXPECT_THAT(postedNames(), ElementsAre("LumoNotificationAddFromFile"));
  EXPECT_THAT(postedFiles(), IsEmpty());
}

TEST_F(DragDropViewTest, APathIsPostedAsItStandsAndOpenedWithItsOwnEscapesUndone) {
  const std::string path = file("a%41 b.txt", "a");
  drop(files({path}));
  EXPECT_THAT(postedFiles(), ElementsAre("file://" + path));
  EXPECT_THAT(opened(), ElementsAre("application openURL lumobrowser://file://" +
                                    (folder.path() / "aA%20b.txt").string()));
}

TEST_F(DragDropViewTest, AFileWhoseNameIsNoUtf8IsPostedAndNotOpened) {
  drop(files({file("a\xFF.txt", "a")}));
  EXPECT_EQ(postedFiles().size(), 1U);
  EXPECT_THAT(opened(), IsEmpty());
  EXPECT_THAT(log.text(), HasSubstr("the name of a dropped file is no UTF-8: file://"));
}

TEST_F(DragDropViewTest, AStringAndFilesAreBothPostedTheStringFirst) {
  const std::string path = file("a.txt", "a");
  drop({{kFilenamesPboardType, kStringPboardType}, std::vector{path}, "http://h/x"});
  EXPECT_THAT(postedNames(), ElementsAre("LumoNotificationAddFromString", "LumoNotificationAddFromFile"));
  EXPECT_TRUE(machine.journal.isBefore("application openURL lumobrowser://file://" + path,
                                       "posted LumoNotificationAddFromFile"));
  EXPECT_EQ(log.count("found utiType = text/plain"), 1U) << "a string decides the highlight alone";
}

TEST_F(DragDropViewTest, ObserversHaveBeenCalledWhenTheHandOverReturns) {
  view.draggingEnded({text("x")});
  EXPECT_EQ(posted.size(), 1U);
}

TEST_F(DragDropViewTest, TheFrameIsBlueFivePointsWideAndDrawnWhileHighlighted) {
  view.setFrame({0, 0, 800, 600});
  place.drag(text("x"));
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(place.drawn(),
              ElementsAre("line width 5", "color 1 1 1 1", "color 0 0 1 1", "stroke {{0, 0}, {800, 600}}"));
  EXPECT_TRUE(log.contains("[MyDragDropView drawRect:] isHighlighted = YES"));
  log.clear();
  place.leave();
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(place.drawn(), IsEmpty());
  EXPECT_FALSE(log.contains("[MyDragDropView drawRect:] isHighlighted = YES"));
}

TEST_F(DragDropViewTest, OnlyTheAreaThatIsRedrawnIsFramed) {
  fakes::RecordingCanvas canvas;
  view.setIsHighlighted(true);
  view.drawRect({10, 20, 30, 40}, canvas);
  EXPECT_EQ(canvas.drawn().back(), "stroke {{10, 20}, {30, 40}}");
}

TEST_F(DragDropViewTest, NothingIsKeptFromOneDragToTheNext) {
  drop(text("one"));
  drop(files({file("a.txt", "a")}));
  drop(text("two"));
  EXPECT_THAT(postedNames(), ElementsAre("LumoNotificationAddFromString", "LumoNotificationAddFromFile",
                                         "LumoNotificationAddFromString"));
  EXPECT_EQ(posted[2].userInfo, (platform::Dictionary{{"mystrings", "two"}}));
}

}  // namespace
}  // namespace lumo
