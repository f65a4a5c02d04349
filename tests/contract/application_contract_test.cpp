#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/contract/application_harness.h"
#include "tests/contract/recording_delegate.h"

using platform::Pasteboard;
using platform::TerminateReply;
using namespace std::chrono_literals;

namespace {

using Events = std::vector<std::string>;

struct Kind {
  const char* name;
  std::unique_ptr<ApplicationHarness> (*make)();
};

void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.name;
}

}  // namespace

class ApplicationContract : public testing::TestWithParam<Kind> {
 protected:
  ApplicationHarness& harness() { return *harness_; }
  platform::Application& application() { return harness_->application(); }
  platform::Queue& main() { return harness_->dispatch().main(); }
  RecordingDelegate& delegate() { return delegate_; }
  // Runs until the application ends by itself, or says that it did not.
  int run() {
    main().after(10s, [this] {
      delegate_.add("the test waited in vain");
      delegate_.setReply(TerminateReply::Now);
      application().terminate();
    });
    return application().run(delegate_);
  }

 private:
  std::unique_ptr<ApplicationHarness> harness_ = GetParam().make();
  RecordingDelegate delegate_{harness_->dispatch()};
};

TEST_P(ApplicationContract, LaunchesAndEndsInOrder) {
  delegate().on("didFinishLaunching", [this] { main().async([this] { application().terminate(); }); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate().events(),
            (Events{"willFinishLaunching", "didFinishLaunching", "shouldTerminate", "willTerminate"}));
}

TEST_P(ApplicationContract, GoesOnWhenTheDelegateCancels) {
  delegate().setReply(TerminateReply::Cancel);
  delegate().on("didFinishLaunching", [this] {
    main().async([this] {
      application().terminate();
      main().after(1ms, [this] {
        delegate().add("goes on");
        delegate().setReply(TerminateReply::Now);
        application().terminate();
      });
    });
  });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate().events(), (Events{"willFinishLaunching", "didFinishLaunching", "shouldTerminate",
                                         "goes on", "shouldTerminate", "willTerminate"}));
}

TEST_P(ApplicationContract, AsksOnTheMainQueueWhoeverTerminates) {
  delegate().on("didFinishLaunching",
                [this] { harness().dispatch().global().async([this] { application().terminate(); }); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate().events(),
            (Events{"willFinishLaunching", "didFinishLaunching", "shouldTerminate", "willTerminate"}));
  EXPECT_TRUE(delegate().wasAlwaysOnMain());
}

// A request to quit is answered "cancel" and quits by itself a moment later, from a queue that waits for it.
TEST_P(ApplicationContract, CanBeTerminatedFromAQueueThatWaits) {
  delegate().setReply(TerminateReply::Cancel);
  delegate().on("shouldTerminate", [this] {
    if (delegate().reply() == TerminateReply::Cancel) {
      platform::SerialQueue(harness().dispatch()).async([this] {
        harness().dispatch().syncOnMain([this] {
          delegate().setReply(TerminateReply::Now);
          application().terminate();
        });
      });
    }
  });
  delegate().on("didFinishLaunching", [this] { main().async([this] { application().terminate(); }); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate().events(), (Events{"willFinishLaunching", "didFinishLaunching", "shouldTerminate",
                                         "shouldTerminate", "willTerminate"}));
}

TEST_P(ApplicationContract, HandsOverAddressesInOrder) {
  delegate().on("didFinishLaunching", [this] {
    harness().openURLs({"lumobrowser://[junivaserver]/a b", "http://10.0.0.5:9090/x?y#z", "no address"});
  });
  delegate().endAfter("openURLs", application());
  EXPECT_EQ(run(), 0);
  EXPECT_TRUE(
      delegate().has("openURLs lumobrowser://[junivaserver]/a b|http://10.0.0.5:9090/x?y#z|no address"))
      << testing::PrintToString(delegate().events());
}

TEST_P(ApplicationContract, AnAddressOfItsOwnComesBackInALaterTurn) {
  delegate().on("didFinishLaunching", [this] {
    application().openURL("lumobrowser://file:///k/a%20b.jpg");
    delegate().add("asked");
  });
  delegate().endAfter("openURLs", application());
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate().events(),
            (Events{"willFinishLaunching", "didFinishLaunching", "asked",
                    "openURLs lumobrowser://file:///k/a%20b.jpg", "shouldTerminate", "willTerminate"}));
}

TEST_P(ApplicationContract, HandsOverFilesAsPaths) {
  delegate().on("didFinishLaunching", [this] {
    harness().openFiles({"/tmp/a b#c%20d.html", "/tmp/Größe.html"});
  });
  delegate().endAfter("openFiles", application());
  EXPECT_EQ(run(), 0);
  EXPECT_TRUE(delegate().has("openFiles /tmp/a b#c%20d.html|/tmp/Größe.html"))
      << testing::PrintToString(delegate().events());
}

TEST_P(ApplicationContract, HandsOverWhatTheSelectionHolds) {
  application().setServicesProvider(&delegate());
  delegate().on("didFinishLaunching", [this] {
    Pasteboard text;
    text.types = {platform::kStringPboardType, "other"};
    text.string = "[junivaserver]/x";
    harness().requestService(text, "data");
    Pasteboard files;
    files.types = {platform::kFilenamesPboardType};
    files.filenames = {"/tmp/a b", "/tmp/c"};
    harness().requestService(files, "");
    Pasteboard both;
    both.types = {platform::kFilenamesPboardType, platform::kStringPboardType};
    both.filenames.emplace();
    both.string = "";
    harness().requestService(both, "last");
  });
  delegate().endAfter("search NSFilenamesPboardType,NSStringPboardType", application());
  EXPECT_EQ(run(), 0);
  const Events events = delegate().eventsStartingWith("search");
  EXPECT_EQ(events, (Events{"search NSStringPboardType,other no files [[junivaserver]/x] data=data",
                            "search NSFilenamesPboardType files(/tmp/a b|/tmp/c) no string data=",
                            "search NSFilenamesPboardType,NSStringPboardType files() [] data=last"}));
}

TEST_P(ApplicationContract, TellsTheEndOfTheSession) {
  delegate().on("mustTerminate", [this] { application().terminate(); });
  delegate().on("didFinishLaunching", [this] { harness().endSession(); });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate().events(), (Events{"willFinishLaunching", "didFinishLaunching", "mustTerminate",
                                         "shouldTerminate", "willTerminate"}));
}

TEST_P(ApplicationContract, EndsWithTheLastWindowWhenTheDelegateWants) {
  delegate().setEndsWithLastWindow(false);
  delegate().on("didFinishLaunching", [this] {
    harness().closeLastWindow();
    main().after(1ms, [this] {
      delegate().setEndsWithLastWindow(true);
      harness().closeLastWindow();
    });
  });
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(delegate().events(), (Events{"willFinishLaunching", "didFinishLaunching", "lastWindowClosed",
                                         "lastWindowClosed", "shouldTerminate", "willTerminate"}));
}

TEST_P(ApplicationContract, IsTheOneRunningCopyAtFirst) {
  const auto copies = application().runningApplications();
  ASSERT_TRUE(copies);
  ASSERT_EQ(copies->size(), 1U);
  EXPECT_EQ(copies->front().processIdentifier, application().processIdentifier());
  EXPECT_EQ(application().runningApplications(), copies);
}

TEST_P(ApplicationContract, ComesLastBesideAnOlderCopy) {
  const int older = harness().startOlderCopy();
  const auto copies = application().runningApplications();
  ASSERT_TRUE(copies);
  ASSERT_EQ(copies->size(), 2U);
  EXPECT_EQ(copies->front().processIdentifier, older);
  EXPECT_EQ(copies->back().processIdentifier, application().processIdentifier());
}

TEST_P(ApplicationContract, KnowsWhetherTheMenuBarShows) {
  application().setMenuBarVisible(false);
  EXPECT_FALSE(application().isMenuBarVisible());
  application().setMenuBarVisible(true);
  EXPECT_TRUE(application().isMenuBarVisible());
}

INSTANTIATE_TEST_SUITE_P(All, ApplicationContract,
                         testing::Values(Kind{"Fake",
                                              []() -> std::unique_ptr<ApplicationHarness> {
                                                return std::make_unique<FakeApplicationHarness>();
                                              }},
                                         Kind{"Linux",
                                              []() -> std::unique_ptr<ApplicationHarness> {
                                                return std::make_unique<LinuxApplicationHarness>();
                                              }}),
                         [](const auto& info) { return std::string(info.param.name); });
