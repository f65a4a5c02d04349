#include "platform/linux/linux_application.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/linux_services.h"
#include "tests/contract/application_harness.h"
#include "tests/contract/recording_delegate.h"
#include "tests/fakes/captured_log.h"

using platform::Millis;
using platform::SerialQueue;
using platform::TerminateReply;
using namespace std::chrono_literals;

namespace {

using Events = std::vector<std::string>;
constexpr const char* kInvalid = "org.freedesktop.DBus.Error.InvalidArgs";

class LinuxApplicationTest : public testing::Test {
 protected:
  platform::LinuxApplication& application() { return harness_.application(); }
  BusClient& client() { return harness_.client(); }
  platform::Queue& main() { return harness_.dispatch().main(); }
  int run() {
    main().after(20s, [this] {
      delegate_.add("the test waited in vain");
      delegate_.setReply(TerminateReply::Now);
      application().terminate();
    });
    return application().run(delegate_);
  }
  // Looks again and again, as the main queue has time, and runs `then` when it is so.
  void when(std::function<bool()> reached, std::function<void()> then) {
    main().after(1ms, [this, reached = std::move(reached), then = std::move(then)] {
      if (reached()) {
        then();
      } else {
        when(reached, then);
      }
    });
  }
  // Ends the run when the client has so many answers.
  void endAfterAnswers(std::size_t count) {
    client().whenAnswered([this, count](const std::string&) {
      if (client().answers().size() == count) {
        application().terminate();
      }
    });
  }

  LinuxApplicationHarness harness_;
  RecordingDelegate delegate_{harness_.dispatch()};
};

const Events kQuietRun{"willFinishLaunching", "didFinishLaunching", "shouldTerminate", "willTerminate"};

}  // namespace

TEST_F(LinuxApplicationTest, LetsRequestsWaitForTheLoadOfTheStart) {
  client().open({"http://10.0.0.5:9090/order"});
  delegate_.on("didFinishLaunching", [this] {
    SerialQueue(harness_.dispatch()).async([this] { main().async([this] { delegate_.add("home"); }); });
  });
  delegate_.endAfter("openURLs", application());
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate_.events(),
            (Events{"willFinishLaunching", "didFinishLaunching", "home",
                    "openURLs http://10.0.0.5:9090/order", "shouldTerminate", "willTerminate"}));
}

TEST_F(LinuxApplicationTest, SortsWhatIsToBeOpened) {
  client().open(
      {"file:///tmp/a%20b", "lumobrowser://%5Bjunivaserver%5D/x", "http://y/?a%5B0%5D", "file:///tmp/c"});
  delegate_.endAfter("openFiles /tmp/c", application());
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate_.eventsStartingWith("open"),
            (Events{"openFiles /tmp/a b", "openURLs lumobrowser://[junivaserver]/x|http://y/?a%5B0%5D",
                    "openFiles /tmp/c"}));
}

TEST_F(LinuxApplicationTest, RefusesRequestsThatMakeNoSense) {
  const fakes::CapturedLog log;
  application().setServicesProvider(&delegate_);
  const std::string long_text(70'000, 'x');
  client().open(std::vector<std::string>(1001, "http://x/"));
  client().open({"http://x/" + long_text});
  client().search({"NSStringPboardType"}, {}, long_text, "");
  client().search({"NSStringPboardType"}, {}, "", long_text);
  client().search({"NSFilenamesPboardType"}, {"/tmp/a", "b"}, "", "");
  client().search(std::vector<std::string>(1001, "type"), {}, "", "");
  client().activateAction("quit");
  client().call("org.freedesktop.Application", "Open", g_variant_new("(s)", "http://x/"));
  client().open(std::vector<std::string>(900, "http://x/" + std::string(400, 'x')));
  client().activate({{std::string(300'000, 'x'), 1}});
  client().open({"http://last/"});
  endAfterAnswers(11);
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(client().answers(), (Events{kInvalid, kInvalid, kInvalid, kInvalid, kInvalid, kInvalid, kInvalid,
                                        kInvalid, kInvalid, kInvalid, ""}));
  EXPECT_EQ(log.lines().size(), 10U) << log.text();
  EXPECT_NE(log.text().find(" refused: the request is too large"), std::string::npos) << log.text();
}

TEST_F(LinuxApplicationTest, BoundsTheRequestsThatWaitForTheStart) {
  const fakes::CapturedLog log;
  for (int request = 0; request < 150; ++request) {
    client().open({"http://x/"});
  }
  endAfterAnswers(150);
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(std::ranges::count(client().answers(), kInvalid), 50);
  EXPECT_EQ(log.lines().size(), 50U);
}

TEST_F(LinuxApplicationTest, GoesOnWithoutAServicesProvider) {
  const fakes::CapturedLog log;
  client().search({"NSStringPboardType"}, {}, "x", "");
  client().open({"http://x/"});
  delegate_.endAfter("openURLs", application());
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(client().answers().front(), "");
  EXPECT_EQ(log.lines().size(), 1U) << log.text();
}

TEST_F(LinuxApplicationTest, AsksForADocumentWhenALauncherFindsNoWindow) {
  client().activate({});
  delegate_.endAfter("openUntitledFile", application());
  EXPECT_EQ(run(), 0);
  EXPECT_TRUE(delegate_.has("openUntitledFile"));
}

TEST_F(LinuxApplicationTest, HandsNothingOverWhenAnotherCopyAsks) {
  std::thread other;
  std::optional<std::string> failure = "not asked";
  when([this] { return client().appearances() > 0; },
       [&] {
         other = std::thread([&] {
           failure =
               platform::requestActivation(client().connection(), platform::kActivateIgnoringOtherApps, 10s);
           // What the request led to has been posted by now.
           main().async([this] { application().terminate(); });
         });
       });
  EXPECT_EQ(run(), 0);
  other.join();
  EXPECT_EQ(failure, std::nullopt);
  EXPECT_EQ(delegate_.events(), kQuietRun);
}

TEST_F(LinuxApplicationTest, SaysWhyAnotherCopyWasNotReached) {
  const std::string failed = "The running copy 4711 was not brought to the front: ";
  const fakes::CapturedLog log;
  const ScopedEnvironment display("DISPLAY", "");
  application().activateOther({4711}, platform::kActivateIgnoringOtherApps);
  harness_.daemon().stop();
  // The first calls may still find the connection that nobody serves any more.
  for (int times = 0; times < 100 && !log.contains(failed + "there is no session bus"); ++times) {
    application().activateOther({4711}, platform::kActivateIgnoringOtherApps);
  }
  ASSERT_GE(log.lines().size(), 2U);
  EXPECT_TRUE(log.lines().front().starts_with(failed)) << log.text();
  EXPECT_EQ(log.lines().back(), failed + "there is no session bus");
}

TEST_F(LinuxApplicationTest, TakesItsNameAgainOnABusThatWasStartedAgain) {
  std::unique_ptr<BusClient> second;
  when([this] { return client().appearances() > 0; },
       [&] {
         harness_.daemon().stop();
         harness_.daemon().start();
         second = std::make_unique<BusClient>(harness_.daemon().address());
         second->open({"http://again/"});
       });
  delegate_.endAfter("openURLs http://again/", application());
  EXPECT_EQ(run(), 0);
  EXPECT_TRUE(delegate_.has("openURLs http://again/"));
}

TEST_F(LinuxApplicationTest, RunsWithoutABus) {
  harness_.daemon().stop();
  const fakes::CapturedLog log;
  delegate_.on("didFinishLaunching", [this] { main().after(600ms, [this] { application().terminate(); }); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate_.events(), kQuietRun);
  EXPECT_EQ(
      std::ranges::count_if(log.lines(), [](const auto& line) { return line.starts_with("No session bus"); }),
      1)
      << log.text();
}

TEST_F(LinuxApplicationTest, EndsAlsoWhileItStarts) {
  delegate_.on("willFinishLaunching", [this] { application().terminate(); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate_.events(), (Events{"willFinishLaunching", "shouldTerminate", "willTerminate"}));
}

TEST_F(LinuxApplicationTest, AsksAgainWhenAskedWhileItAsks) {
  delegate_.setReply(TerminateReply::Cancel);
  delegate_.on("shouldTerminate", [this] {
    if (delegate_.reply() == TerminateReply::Cancel) {
      delegate_.setReply(TerminateReply::Now);
      application().terminate();
      delegate_.add("asked once");
    }
  });
  delegate_.on("didFinishLaunching", [this] { main().async([this] { application().terminate(); }); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate_.events(), (Events{"willFinishLaunching", "didFinishLaunching", "shouldTerminate",
                                        "asked once", "shouldTerminate", "willTerminate"}));
}

TEST_F(LinuxApplicationTest, IgnoresFurtherRequestsToEnd) {
  delegate_.on("willTerminate", [this] { application().terminate(); });
  delegate_.on("didFinishLaunching", [this] { main().async([this] { application().terminate(); }); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate_.events(), kQuietRun);
}

TEST_F(LinuxApplicationTest, TakesEndSignalsForTheEndOfTheSession) {
  int signal = SIGTERM;
  delegate_.on("mustTerminate", [&] {
    signal = signal == SIGTERM ? SIGINT : SIGHUP;
    if (delegate_.eventsStartingWith("mustTerminate").size() < 3) {
      std::raise(signal);
    } else {
      application().terminate();
    }
  });
  delegate_.on("didFinishLaunching", [] { std::raise(SIGTERM); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate_.eventsStartingWith("mustTerminate").size(), 3U);
}

TEST_F(LinuxApplicationTest, SurvivesAReaderThatGoesAway) {
  delegate_.on("didFinishLaunching", [this] {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    EXPECT_EQ(write(ends[1], "x", 1), -1);
    close(ends[1]);
    main().async([this] { application().terminate(); });
  });
  EXPECT_EQ(run(), 0);
}

TEST_F(LinuxApplicationTest, TellsThatItResignedOnce) {
  // No window of this program is active, whatever was told.
  delegate_.on("didFinishLaunching", [this] {
    application().noteActiveChanged(false);
    main().after(50ms, [this] {
      delegate_.add("was active");
      application().noteActiveChanged(true);
      application().noteActiveChanged(false);
      application().noteActiveChanged(false);
    });
  });
  delegate_.on("didResignActive", [this] { main().after(50ms, [this] { application().terminate(); }); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate_.events(), (Events{"willFinishLaunching", "didFinishLaunching", "was active",
                                        "didResignActive", "shouldTerminate", "willTerminate"}));
}

TEST(LinuxApplicationDeathTest, WritesBufferedOutputWhenItExits) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        // No bus, whose process would outlive this one.
        platform::LinuxDispatch dispatch;
        platform::SessionBus bus(dispatch);
        const platform::Bundle bundle;
        platform::LinuxApplication application(dispatch, bus, bundle);
        // Of a child the test sees standard error alone, which has no buffer by itself.
        std::setvbuf(stderr, nullptr, _IOFBF, 4096);
        std::fputs("the last words", stderr);
        application.exitProcess(7);
      },
      testing::ExitedWithCode(7), "the last words");
}

TEST(LinuxApplicationDeathTest, ABlockThatIsNotReturnedToKeepsTheLoopGoingToTheEnd) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        const ScopedEnvironment noBus("DBUS_SESSION_BUS_ADDRESS", "unix:path=/no/such/bus");
        platform::LinuxDispatch dispatch;
        platform::SessionBus bus(dispatch);
        const platform::Bundle bundle;
        platform::LinuxApplication application(dispatch, bus, bundle);
        RecordingDelegate delegate(dispatch);
        delegate.on("willTerminate", [] { std::fputs("told of the end", stderr); });
        delegate.on("didFinishLaunching", [&] {
          dispatch.main().async([&] {
            dispatch.main().after(10ms, [&] {
              std::fputs("others run, ", stderr);
              application.terminate();
            });
            application.runToTermination();
          });
        });
        application.run(delegate);
      },
      testing::ExitedWithCode(0), "others run, told of the end");
}
