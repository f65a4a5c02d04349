#include <filesystem>
#include <optional>

#include "app/PreferenceKeys.h"
#include "platform/property_list_file.h"
#include "tests/unit/support/movie_files.h"
#include "tests/unit/support/task_fixture.h"

// Movies are converted by the installed ffmpeg.

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class TranscodeTest : public tasktest::TaskTest {
 protected:
  TranscodeTest() {
    machine.defaults.setObject(platform::PropertyList("/usr/bin/ffmpeg"), "LumoAV_ffmpegLaunchPath");
  }

  // Notes each answer, and on which queue it came.
  Task::CompletionHandler noting() {
    return [this](bool success) {
      answers.push_back(std::string(success ? "YES" : "NO") +
                        (machine.dispatch.global().isCurrent() ? " on a global queue" : " at once"));
    };
  }
  std::string file(const std::string& name) const { return (folder / name).string(); }
  // A conversion that succeeds and leaves nothing behind.
  static Strings briefArguments() {
    return {"-nostdin", "-v",   "error", "-f", "lavfi", "-i", "color=size=32x32:duration=0.1",
            "-f",       "null", "-"};
  }

  std::vector<std::string> answers;
};

TEST_F(TranscodeTest, ConvertsAMovieWithTheUsualOptions) {
  movies::makeMovie(file("in.avi"), "mpeg4");
  Task::transcodeMovieAtSourcePath_toDestination_withOptions_completionHandler(
      platform, file("in.avi"), file("out.mp4"), std::nullopt, noting());
  EXPECT_THAT(answers, ElementsAre());
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("YES on a global queue")) << log.text();
  EXPECT_EQ(movies::codec(file("out.mp4")), "h264");
  EXPECT_TRUE(log.contains("starting task /usr/bin/ffmpeg -i " + file("in.avi") +
                           " -vcodec libx264 -crf 26 " + file("out.mp4")));
  EXPECT_TRUE(log.contains(
      "Inside ZELKOR_Task => transcodeMovieAtSourcePath:toDestination:withOptions:completionHandler:... TASK "
      "DONE...TASK DONE...TASK DONE..."));
}

TEST_F(TranscodeTest, OptionsThatAreGivenTakeThePlaceOfTheUsual) {
  movies::makeMovie(file("in.mp4"), "libx264");
  Task::transcodeMovieAtSourcePath_toDestination_withOptions_completionHandler(
      platform, file("in.mp4"), file("out.avi"), Strings{"-vcodec", "mpeg4"}, noting());
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("YES on a global queue")) << log.text();
  EXPECT_EQ(movies::codec(file("out.avi")), "mpeg4");
  answers.clear();
  // A list without options is a list.
  Task::transcodeMovieAtSourcePath_toDestination_withOptions_completionHandler(
      platform, file("in.mp4"), file("plain.mp4"), Strings{}, noting());
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("YES on a global queue")) << log.text();
  EXPECT_TRUE(log.contains("starting task /usr/bin/ffmpeg -i " + file("in.mp4") + " " + file("plain.mp4")));
}

TEST_F(TranscodeTest, AMovieThatCannotBeReadIsAFailure) {
  writeFile(folder / "in.mp4", "no movie");
  Task::transcodeMovieAtSourcePath_toDestination_withOptions_completionHandler(
      platform, file("in.mp4"), file("out.mp4"), std::nullopt, noting());
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("NO on a global queue"));
  EXPECT_FALSE(fs::exists(file("out.mp4")));
}

TEST_F(TranscodeTest, WithoutASourceNothingStartsAndNobodyIsCalled) {
  Task::transcodeMovieAtSourcePath_toDestination_withOptions_completionHandler(
      platform, std::nullopt, file("out.mp4"), std::nullopt, noting());
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre());
  EXPECT_THAT(
      log.lines(),
      ElementsAre(
          "Inside ZELKOR_Task => transcodeMovieAtSourcePath:toDestination:withOptions:completionHandler:... "
          "srcPath CANNOT BE NIL??????"));
}

TEST_F(TranscodeTest, RunsExactlyTheArgumentsThatAreGiven) {
  Task::transcodeMovieWithOptions_completionHandler(
      platform,
      {"-nostdin", "-v", "error", "-f", "lavfi", "-i", "color=red:size=32x32:duration=0.2", file("out.avi")},
      noting());
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("YES on a global queue")) << log.text();
  EXPECT_TRUE(fs::exists(file("out.avi")));
  EXPECT_TRUE(
      log.contains("starting task /usr/bin/ffmpeg -nostdin -v error -f lavfi -i "
                   "color=red:size=32x32:duration=0.2 " +
                   file("out.avi")));
  EXPECT_TRUE(log.contains(
      "Inside ZELKOR_Task => transcodeMovieWithOptions:completionHandler:... TASK DONE...TASK DONE...TASK "
      "DONE..."));
}

TEST_F(TranscodeTest, AnUnknownOptionIsAFailure) {
  Task::transcodeMovieWithOptions_completionHandler(platform, {"-no-such-option"}, noting());
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(answers, ElementsAre("NO on a global queue"));
}

TEST_F(TranscodeTest, NobodyNeedListen) {
  Task::transcodeMovieWithOptions_completionHandler(platform, briefArguments(), nullptr);
  Task::transcodeMovieWithOptionsJBL_completionHandler(platform, {}, nullptr);
  EXPECT_NO_THROW(machine.dispatch.runUntilIdle());
}

TEST_F(TranscodeTest, AConverterThatCannotBeStartedIsAFailure) {
  machine.defaults.setObject(platform::PropertyList(folder.path().string()), "LumoAV_ffmpegLaunchPath");
  Task::transcodeMovieWithOptions_completionHandler(platform, {}, noting());
  EXPECT_THAT(answers, ElementsAre("NO at once"));
}

TEST_F(TranscodeTest, TheConverterIsTheOneOfTheFactoryFileAndWithoutAValueTheUsualOne) {
  const auto factory =
      platform::propertyListFromFile(LUMO_SOURCE_DIR "/resources/bundle/FactoryDefaults.plist");
  ASSERT_TRUE(factory);
  machine.defaults.removeObject("LumoAV_ffmpegLaunchPath");
  machine.defaults.registerDefaults(*factory->as<platform::Dictionary>());
  Task::transcodeMovieWithOptions_completionHandler(platform, briefArguments(), noting());
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(hasLine("starting task /usr/bin/ffmpeg -nostdin")) << log.text();
  EXPECT_THAT(answers, ElementsAre("YES on a global queue"));
  EXPECT_STREQ(lumo::preferenceKey(lumo::LumoAV_ffmpegLaunchPath)->codeDefault, "/usr/local/bin/ffmpeg");
}

TEST_F(TranscodeTest, AMissingConverterIsToldToAPersonAndAnswersNothing) {
  machine.defaults.setObject(platform::PropertyList("/no/such/ffmpeg"), "LumoAV_ffmpegLaunchPath");
  machine.dispatch.main().async([this] {
    machine.dispatch.main().async([this] { machine.windows.pressAlertButton("Quit and Fix Problem"); });
  });
  EXPECT_THROW(Task::transcodeMovieWithOptions_completionHandler(platform, {}, noting()), fakes::ProcessExit);
  EXPECT_THAT(answers, ElementsAre());
}

class BoomerangScriptTest : public TranscodeTest {
 protected:
  static void makeExecutable(const fs::path& path) { fs::permissions(path, fs::perms::owner_all); }
  // Says which of the scripts it is.
  static std::string script(const std::string& name, int status = 0) {
    return "#!/bin/sh\necho \"" + name + ": $*\" >&2\nexit " + std::to_string(status) + "\n";
  }
  void run(const Strings& arguments) {
    Task::transcodeMovieWithOptionsJBL_completionHandler(platform, arguments, noting());
    machine.dispatch.runUntilIdle();
  }
};

TEST_F(BoomerangScriptTest, IsTheOneOfTheResources) {
  makeExecutable(machine.bundle.addResource("lumoBoomerang.sh", script("resource")));
  run({"in", "out"});
  EXPECT_THAT(answers, ElementsAre("YES on a global queue")) << log.text();
  EXPECT_TRUE(log.contains("resource: in out"));
  EXPECT_TRUE(log.contains(
      "Inside ZELKOR_Task => transcodeMovieWithOptionsJBL:completionHandler:... TASK DONE...TASK "
      "DONE...TASK DONE..."));
}

TEST_F(BoomerangScriptTest, OneBesideTheExecutableGoesBefore) {
  makeExecutable(machine.bundle.addResource("lumoBoomerang.sh", script("resource")));
  const fs::path beside = machine.bundle.bundle().path() / "lumoBoomerang.sh";
  writeFile(beside, script("beside"));
  makeExecutable(beside);
  run({"in"});
  EXPECT_TRUE(log.contains("beside: in")) << log.text();
  EXPECT_FALSE(log.contains("resource: in"));
}

TEST_F(BoomerangScriptTest, ItsFailureIsAFailure) {
  makeExecutable(machine.bundle.addResource("lumoBoomerang.sh", script("resource", 1)));
  run({});
  EXPECT_THAT(answers, ElementsAre("NO on a global queue"));
}

TEST_F(BoomerangScriptTest, WhereThereIsNoneTheAnswerComesAtOnce) {
  Task::transcodeMovieWithOptionsJBL_completionHandler(platform, {"in"}, noting());
  EXPECT_THAT(answers, ElementsAre("NO at once"));
  EXPECT_THAT(
      log.lines(),
      ElementsAre("Inside ZELKOR_Task => transcodeMovieWithOptionsJBL:completionHandler:... UNABLE TO "
                  "FIND SCRIPT FILE: [lumoBoomerang.sh]..."));
}

}  // namespace
