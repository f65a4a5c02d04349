#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LumoNSViewAdditions.h"
#include "tests/fakes/captured_log.h"
#include "tests/fakes/fake_controls.h"
#include "tests/fakes/fake_view.h"
#include "tests/fakes/journal.h"
#include "tests/fakes/sim_dispatch.h"

namespace {

using fakes::CapturedLog;
using fakes::FakeImageView;
using fakes::FakeProgressIndicator;
using fakes::FakeView;
using fakes::Journal;
using fakes::SimDispatch;
using fakes::ViewOptions;
using platform::View;
using platform::ViewKind;
using testing::ElementsAre;

namespace additions = lumo::LumoNSViewAdditions;

class ViewSearch : public testing::Test {
 protected:
  template <class V>
  V& add(FakeView& parent, const std::string& name, const std::optional<std::string>& identifier) {
    ViewOptions options;
    options.identifier = identifier;
    auto made = std::make_unique<V>(fakes::Stage{dispatch, journal}, name, options);
    V& added = *made;
    parent.place(added);
    views_.push_back(std::move(made));
    return added;
  }
  View* find(const std::string& identifier, ViewKind kind) {
    return additions::findViewWithIdentifier_viewType(view, identifier, kind);
  }

  SimDispatch dispatch;
  Journal journal{dispatch};
  CapturedLog log;
  FakeView view{{dispatch, journal}, "view"};

 private:
  std::vector<std::unique_ptr<FakeView>> views_;
};

TEST_F(ViewSearch, FindsAViewTwoLevelsDeepInsidePlainViews) {
  FakeView& outer = add<FakeView>(view, "outer", "outer");
  FakeView& inner = add<FakeView>(outer, "inner", std::nullopt);
  auto& wanted = add<FakeProgressIndicator>(inner, "wanted", "progressview");

  EXPECT_EQ(find("progressview", ViewKind::ProgressIndicator), &wanted);
}

TEST_F(ViewSearch, IgnoresTheCaseOfTheIdentifier) {
  FakeView& wanted = add<FakeView>(view, "wanted", "ProgressView");

  EXPECT_EQ(find("progressview", ViewKind::View), &wanted);
}

TEST_F(ViewSearch, DoesNotLookInsideAViewOfTheKindWithAnotherIdentifier) {
  auto& other = add<FakeImageView>(view, "other", "another");
  add<FakeImageView>(other, "inside", "progressimage");

  EXPECT_EQ(find("progressimage", ViewKind::ImageView), nullptr);
}

TEST_F(ViewSearch, ForPlainViewsOnlyTheDirectSubviewsCount) {
  FakeView& outer = add<FakeView>(view, "outer", "outer");
  add<FakeView>(outer, "inside", "progressview");

  EXPECT_EQ(find("progressview", ViewKind::View), nullptr);
}

TEST_F(ViewSearch, AControlIsAViewToo) {
  auto& control = add<FakeProgressIndicator>(view, "control", "progressview");

  EXPECT_EQ(find("progressview", ViewKind::View), &control);
}

TEST_F(ViewSearch, DoesNotTakeAViewOfAnotherKind) {
  add<FakeView>(view, "plain", "progressimage");

  EXPECT_EQ(find("progressimage", ViewKind::ImageView), nullptr);
}

TEST_F(ViewSearch, NeverMatchesAViewWithoutAnIdentifier) {
  add<FakeView>(view, "nameless", std::nullopt);

  EXPECT_EQ(find("", ViewKind::View), nullptr);
}

TEST_F(ViewSearch, TheFirstMatchInDepthFirstOrderWins) {
  FakeView& branch = add<FakeView>(view, "branch", std::nullopt);
  auto& deep = add<FakeImageView>(branch, "deep", "progressimage");
  add<FakeImageView>(view, "later", "progressimage");

  EXPECT_EQ(find("progressimage", ViewKind::ImageView), &deep);
}

TEST_F(ViewSearch, GoesOnWithTheNextSubviewWhenOneHadNothing) {
  add<FakeView>(view, "empty", std::nullopt);
  auto& wanted = add<FakeImageView>(view, "wanted", "progressimage");

  EXPECT_EQ(find("progressimage", ViewKind::ImageView), &wanted);
}

TEST_F(ViewSearch, DoesNotTakeTheViewItself) {
  ViewOptions options;
  options.identifier = "progressimage";
  FakeImageView root{{dispatch, journal}, "root", options};

  EXPECT_EQ(additions::findViewWithIdentifier_viewType(root, "progressimage", ViewKind::ImageView), nullptr);
}

TEST_F(ViewSearch, LogsWhatItIsGivenAndEachViewThatItLooksAt) {
  FakeView& branch = add<FakeView>(view, "branch", std::nullopt);
  add<FakeImageView>(branch, "wanted", "progressimage");
  find("ProgressImage", ViewKind::ImageView);

  const std::string searched =
      "-findViewWithIdentifier:viewType:-> identifier[ProgressImage] classname[ImageView]";
  EXPECT_THAT(log.lines(),
              ElementsAre("<View>" + searched, "self.subviews = (", "    \"<View>\"", ")",
                          "checking => aview[(null)] = <View> (View)", "<View>" + searched,
                          "self.subviews = (", "    \"<ImageView progressimage>\"", ")",
                          "checking => aview[progressimage] = <ImageView progressimage> (ImageView)"));
}

}  // namespace
