#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/captured_log.h"
#include "tests/fakes/test_platform.h"

namespace {

using fakes::FakeHttpClient;
using platform::HttpResult;
using platform::Millis;
using platform::TerminateReply;
using testing::ElementsAre;
using testing::IsEmpty;

class Delegate : public platform::ApplicationDelegate {
 public:
  void applicationWillFinishLaunching() override {
    heard.push_back("will finish");
    if (whileLaunching) {
      whileLaunching();
    }
  }
  void applicationDidFinishLaunching() override { heard.push_back("did finish"); }
  TerminateReply applicationShouldTerminate() override { return reply; }
  bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
  void applicationDidResignActive() override { heard.push_back("resigned"); }
  void applicationWillTerminate() override { heard.push_back("will terminate"); }
  void applicationMustTerminate() override { heard.push_back("must terminate"); }
  void application_openURLs(const std::vector<std::string>& urls) override {
    heard.push_back("open " + urls.at(0));
  }
  void application_openFiles(const std::vector<std::string>& files) override {
    heard.push_back("open file " + files.at(0));
  }
  bool applicationOpenUntitledFile() override { return true; }

  TerminateReply reply = TerminateReply::Now;
  platform::Block whileLaunching;
  std::vector<std::string> heard;
};

class FakeApplicationTest : public testing::Test {
 protected:
  fakes::TestPlatform machine;
  Delegate delegate;
};

TEST_F(FakeApplicationTest, RunsUntilItIsToldToTerminate) {
  delegate.whileLaunching = [&] {
    machine.dispatch.global().after(Millis{500}, [&] { machine.application.terminate(); });
  };
  EXPECT_EQ(machine.application.run(delegate), 0);
  EXPECT_EQ(machine.dispatch.now(), Millis{500});
  EXPECT_TRUE(machine.application.isTerminated());
  EXPECT_THAT(delegate.heard, ElementsAre("will finish", "did finish", "will terminate"));
}

TEST_F(FakeApplicationTest, SaysWhenARunComesToRestWithoutAnEnd) {
  EXPECT_THROW(machine.application.run(delegate), std::logic_error);
}

TEST_F(FakeApplicationTest, ABlockThatIsNotReturnedToEndsWithTheApplication) {
  machine.application.setDelegate(&delegate);
  machine.dispatch.main().after(Millis{500}, [&] { machine.application.terminate(); });
  EXPECT_THROW(machine.application.runToTermination(), fakes::ProcessExit);
  EXPECT_EQ(machine.dispatch.now(), Millis{500});
  EXPECT_EQ(machine.application.exitStatus(), 0);
  EXPECT_THAT(delegate.heard, ElementsAre("will terminate"));
}

TEST_F(FakeApplicationTest, SendsWhatWasPostedBeforeItGoes) {
  machine.application.launch(delegate);
  machine.application.terminate();
  EXPECT_FALSE(machine.application.isTerminated());
  machine.dispatch.runUntilIdle();
  EXPECT_TRUE(machine.application.isTerminated());
  EXPECT_THAT(machine.application.replies(), ElementsAre(TerminateReply::Now));
}

TEST_F(FakeApplicationTest, StaysWhenTheDelegateCancels) {
  delegate.reply = TerminateReply::Cancel;
  machine.application.launch(delegate);
  machine.application.quit();
  machine.dispatch.runUntilIdle();
  EXPECT_FALSE(machine.application.isTerminated());
}

TEST_F(FakeApplicationTest, AnExitIsThrownAndRemembered) {
  delegate.whileLaunching = [&] { machine.application.exitProcess(3); };
  try {
    machine.application.launch(delegate);
    FAIL() << "the process went on";
  } catch (const fakes::ProcessExit& exit) {
    EXPECT_EQ(exit.status, 3);
  }
  EXPECT_EQ(machine.application.exitStatus(), 3);
}

TEST_F(FakeApplicationTest, OtherCopiesAreOlder) {
  machine.application.setOthers(std::vector<int>{17});
  EXPECT_THAT(*machine.application.runningApplications(),
              ElementsAre(platform::RunningApplication{17}, platform::RunningApplication{4242}));
  machine.application.setOthers(std::nullopt);
  EXPECT_FALSE(machine.application.runningApplications());
}

TEST_F(FakeApplicationTest, HandsRequestsToTheDelegate) {
  EXPECT_THROW(machine.application.resignActive(), std::logic_error);
  machine.application.launch(delegate);
  delegate.heard.clear();
  machine.application.openURLs({"lumobrowser:x"});
  machine.application.openFiles({"/tmp/a"});
  machine.application.resignActive();
  machine.application.mustTerminate();
  EXPECT_THAT(delegate.heard,
              ElementsAre("open lumobrowser:x", "open file /tmp/a", "resigned", "must terminate"));
}

TEST_F(FakeApplicationTest, AMenuItemWithoutAHandlerIsDisabled) {
  int reloads = 0;
  EXPECT_FALSE(machine.application.chooseMenu("ibReloadPage:"));
  machine.application.setMenuAction("ibReloadPage:", [&] { ++reloads; });
  EXPECT_TRUE(machine.application.chooseMenu("ibReloadPage:"));
  EXPECT_EQ(reloads, 1);
}

TEST_F(FakeApplicationTest, ClosingTheWindowByHandCanEndTheApplication) {
  machine.application.launch(delegate);
  const auto window = machine.windows.loadWindow("MyWebViewWindowController");
  machine.window()->requestClose();
  EXPECT_EQ(machine.application.replies().size(), 1U);
}

using FakeBusTest = FakeApplicationTest;

TEST_F(FakeBusTest, SaysOnceThatThereIsNoBus) {
  const fakes::CapturedLog log;
  machine.bus.setPresent(false);
  EXPECT_FALSE(machine.bus.postNotification({"lumoXNotification", {}, {}}));
  EXPECT_FALSE(machine.bus.postNotification({"lumoXNotification", {}, {}}));
  EXPECT_EQ(log.lines().size(), 1U);
  EXPECT_THAT(machine.bus.posted(), IsEmpty());
}

using FakeHttpTest = FakeApplicationTest;

TEST_F(FakeHttpTest, AnswersAtTheScriptedTimeAndElseWithTheTimeOut) {
  std::vector<std::string> results;
  const auto keep = [&](const HttpResult& result) {
    results.push_back(std::to_string(machine.dispatch.now().count()) + " " +
                      result.error.value_or(std::to_string(result.statusCode)));
  };
  machine.http.answer("http://a/", FakeHttpClient::status(404), Millis{120});
  machine.http.answer("http://late/", FakeHttpClient::status(200), Millis{5000});
  machine.http.answer("http://closed/", FakeHttpClient::error("refused"));
  for (const char* url : {"http://a/", "http://late/", "http://closed/", "http://silent/"}) {
    machine.http.get(url, Millis{5000}, keep);
  }
  EXPECT_THAT(results, IsEmpty());
  machine.dispatch.advance(Millis{10000});

  EXPECT_THAT(results,
              ElementsAre("0 refused", "120 404", "5000 Timeout was reached", "5000 Timeout was reached"));
  EXPECT_EQ(machine.http.mostOpen(), 4U);
  EXPECT_EQ(machine.http.open(), 0U);
  EXPECT_EQ(machine.http.requestedUrls().size(), 4U);
}

using TestPlatformTest = FakeApplicationTest;

TEST_F(TestPlatformTest, HasABundleWithNamesAndResources) {
  EXPECT_EQ(machine.bundle.bundle().bundleName(), "LumoBrowser");
  EXPECT_EQ(machine.bundle.bundle().bundleIdentifier(), "com.lumo.LumoBrowser");
  EXPECT_FALSE(machine.bundle.bundle().pathForResource("script", "sh"));
  const auto path = machine.bundle.addResource("script.sh", "echo");
  EXPECT_EQ(machine.bundle.bundle().pathForResource("script", "sh"), path);
}

TEST_F(TestPlatformTest, KeepsPreferencesInMemory) {
  const platform::Platform platform = machine.platform();
  platform.defaults.setObject(true, "prefForceFullScreen");
  EXPECT_TRUE(machine.defaults.boolForKey("prefForceFullScreen"));
  fakes::TestPlatform other;
  EXPECT_FALSE(other.defaults.boolForKey("prefForceFullScreen"));
}

}  // namespace
