#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/task.h"
#include "tests/fakes/captured_log.h"
#include "tests/unit/platform/child_process.h"
#include "tests/unit/platform/temporary_folder.h"
#include "tests/unit/support/movie_files.h"

// The script of the bundle, with the installed ffmpeg.

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::StartsWith;

class BoomerangTest : public testing::Test {
 protected:
  // The exit status.
  static int run(const std::vector<std::string>& arguments) {
    const auto result = platform::Task::run(LUMO_SOURCE_DIR "/resources/bundle/lumoBoomerang.sh", arguments);
    EXPECT_TRUE(result);
    // What it has to say it says on standard error.
    EXPECT_EQ(result ? result->standardOutput : "", "");
    return result ? result->status : -1;
  }
  std::string file(const std::string& name) const { return (folder / name).string(); }
  // Nothing but these files is left in the folder.
  std::vector<std::string> names() const {
    std::vector<std::string> found = folder.names();
    std::sort(found.begin(), found.end());
    return found;
  }

  const TemporaryFolder folder;
  const fakes::CapturedLog log;
};

TEST_F(BoomerangTest, TheClipRunsForwardAndBack) {
  movies::makeMovie(file("movie.avi"), "ffv1");
  ASSERT_EQ(run({file("movie.avi"), file("clip.mp4")}), 0) << log.text();
  const std::vector<int> light = movies::brightness(file("clip.mp4"));
  // Neither the turn nor the beginning of the next round shows a picture twice.
  ASSERT_EQ(light.size(), 38U);
  for (std::size_t i = 1; i < light.size(); ++i) {
    EXPECT_EQ(light[i] > light[i - 1], i < 20) << i;
  }
  for (std::size_t i = 1; i < 20; ++i) {
    EXPECT_NEAR(light[i], light[light.size() - i], 3) << i;
  }
  EXPECT_EQ(movies::codec(file("clip.mp4")), "h264");
  EXPECT_EQ(movies::streamValue(file("clip.mp4"), "pix_fmt"), "yuv420p");
  EXPECT_THAT(log.lines(), ElementsAre());
  EXPECT_THAT(names(), ElementsAre("clip.mp4", "movie.avi"));
}

TEST_F(BoomerangTest, TakesTheFirstSecondsOnly) {
  movies::makeMovie(file("movie.avi"), "mpeg4", "testsrc=size=64x48:rate=10:duration=6");
  ASSERT_EQ(run({file("movie.avi"), file("three.mp4")}), 0) << log.text();
  EXPECT_EQ(movies::streamValue(file("three.mp4"), "nb_read_packets"), "58");
  ASSERT_EQ(run({file("movie.avi"), file("one.mp4"), "1"}), 0) << log.text();
  EXPECT_EQ(movies::streamValue(file("one.mp4"), "nb_read_packets"), "18");
}

TEST_F(BoomerangTest, KeepsTheShapeOfALargeMovieAndItsPicturesWithinBounds) {
  movies::makeMovie(file("movie.mp4"), "libx264", "testsrc=size=1080x1920:rate=60:duration=0.3");
  ASSERT_EQ(run({file("movie.mp4"), file("clip.mp4")}), 0) << log.text();
  EXPECT_EQ(movies::streamValue(file("clip.mp4"), "width,height"), "720,1280");
  EXPECT_EQ(movies::streamValue(file("clip.mp4"), "r_frame_rate"), "30/1");
}

TEST_F(BoomerangTest, LeavesTheSoundOut) {
  movies::outputOf("/usr/bin/ffmpeg",
                   {"-nostdin", "-v", "error", "-f", "lavfi", "-i", "testsrc=size=64x48:duration=1", "-f",
                    "lavfi", "-i", "sine=duration=1", "-c:v", "mpeg4", file("movie.avi")});
  ASSERT_EQ(run({file("movie.avi"), file("clip.mp4"), "1"}), 0) << log.text();
  EXPECT_EQ(movies::outputOf("/usr/bin/ffprobe", {"-v", "error", "-show_entries", "stream=codec_type", "-of",
                                                  "csv=p=0", file("clip.mp4")}),
            "video\n");
}

TEST_F(BoomerangTest, ReplacesAnOlderClipAndTakesAnyName) {
  movies::makeMovie(file("-i a 'movie'.avi"), "mpeg4");
  writeFile(folder / "a clip.mp4", "older");
  ASSERT_EQ(run({file("-i a 'movie'.avi"), file("a clip.mp4"), "1"}), 0) << log.text();
  EXPECT_EQ(movies::codec(file("a clip.mp4")), "h264");
}

TEST_F(BoomerangTest, BadInputIsToldInOneLineAndLeavesAnOlderClipAlone) {
  writeFile(folder / "text", "no movie");
  writeFile(folder / "empty", "");
  writeFile(folder / "clip.mp4", "older");
  movies::makeMovie(file("movie.mp4"), "libx264");
  writeFile(folder / "cut", readFile(folder / "movie.mp4").substr(0, 900));
  movies::makeMovie(file("photo.jpg"), "mjpeg", "color=red:size=64x48:rate=1:duration=1,format=yuvj420p");
  movies::outputOf("/usr/bin/ffmpeg",
                   {"-nostdin", "-v", "error", "-f", "lavfi", "-i", "sine=duration=1", file("sound.wav")});
  struct Row {
    std::string movie;
    std::string beginning;
  };
  const std::vector<Row> rows = {
      {"text", "cannot be made into a clip: "},
      {"empty", "cannot be made into a clip: "},
      {"cut", "cannot be made into a clip: "},
      {"sound.wav", "cannot be made into a clip: there are no pictures in it"},
      {"photo.jpg", "is too short for a clip"},
  };
  const auto before = names();
  for (const Row& row : rows) {
    fakes::CapturedLog said;
    EXPECT_EQ(run({file(row.movie), file("clip.mp4")}), 1) << row.movie;
    EXPECT_THAT(said.lines(),
                ElementsAre(StartsWith("lumoBoomerang: " + file(row.movie) + " " + row.beginning)));
    EXPECT_EQ(readFile(folder / "clip.mp4"), "older");
  }
  EXPECT_EQ(names(), before);
}

TEST_F(BoomerangTest, AMovieOrAFolderThatIsNotThereIsToldInOneLine) {
  movies::makeMovie(file("movie.avi"), "mpeg4");
  EXPECT_EQ(run({file("none"), file("clip.mp4")}), 1);
  EXPECT_EQ(run({file("movie.avi"), file("none/clip.mp4")}), 1);
  EXPECT_EQ(run({folder.path().string(), file("clip.mp4")}), 1);
  EXPECT_EQ(run({file("movie.avi"), folder.path().string()}), 1);
  EXPECT_THAT(log.lines(), ElementsAre("lumoBoomerang: there is no movie " + file("none"),
                                       "lumoBoomerang: the folder " + file("none/") + " cannot be written to",
                                       "lumoBoomerang: there is no movie " + folder.path().string(),
                                       "lumoBoomerang: " + folder.path().string() + " is a folder"));
  EXPECT_THAT(names(), ElementsAre("movie.avi"));
}

TEST_F(BoomerangTest, AWrongCallIsToldHowToCallIt) {
  const std::vector<std::vector<std::string>> calls = {{},
                                                       {"movie"},
                                                       {"", "clip"},
                                                       {"movie", ""},
                                                       {"movie", "clip", "0"},
                                                       {"movie", "clip", "11"},
                                                       {"movie", "clip", "2.5"},
                                                       {"movie", "clip", ""},
                                                       {"movie", "clip", "3", "more"}};
  for (const auto& arguments : calls) {
    const fakes::CapturedLog said;
    EXPECT_EQ(run(arguments), 2);
    EXPECT_THAT(said.lines(), ElementsAre("Usage: lumoBoomerang.sh MOVIE CLIP.mp4 [SECONDS]"));
  }
}

TEST_F(BoomerangTest, AMissingConverterIsToldByName) {
  fs::create_directories(folder / "bin");
  const ScopedEnvironment path("PATH", file("bin").c_str());
  EXPECT_EQ(run({file("movie"), file("clip.mp4")}), 1);
  EXPECT_THAT(log.lines(), ElementsAre("lumoBoomerang: ffmpeg is missing; install ffmpeg"));
}

// A playlist names other files, and could name addresses.
TEST_F(BoomerangTest, APlaylistReachesNoServer) {
  writeFile(folder / "list.m3u8", "#EXTM3U\n#EXTINF:1,\nhttp://127.0.0.1:1/movie.ts\n#EXT-X-ENDLIST\n");
  EXPECT_EQ(run({file("list.m3u8"), file("clip.mp4")}), 1);
  EXPECT_THAT(log.lines(),
              ElementsAre(StartsWith("lumoBoomerang: " + file("list.m3u8") + " cannot be made")));
}

}  // namespace
