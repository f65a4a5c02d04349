#include "platform/drop_session.h"

#include <optional>
#include <utility>

#include <gmock/gmock.h>

namespace platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Destination final : public DropDestination {
 public:
  unsigned draggingEntered(const DraggingInfo& sender) override {
    calls.push_back("entered " + sender.draggingPasteboard.string.value_or("-"));
    return operations;
  }
  void draggingExited(const DraggingInfo& /*sender*/) override { calls.emplace_back("exited"); }
  bool prepareForDragOperation(const DraggingInfo& /*sender*/) override {
    calls.emplace_back("prepare");
    return prepares;
  }
  bool performDragOperation(const DraggingInfo& /*sender*/) override {
    calls.emplace_back("perform");
    return performs;
  }
  void draggingEnded(const DraggingInfo& sender) override {
    calls.push_back("ended " + sender.draggingPasteboard.string.value_or("-"));
  }
  void drawRect(const Rect& /*area*/, Canvas& /*canvas*/) override {}

  unsigned operations = kDragOperationEvery;
  bool prepares = true;
  bool performs = true;
  std::vector<std::string> calls;
};

Pasteboard text(const std::string& string) {
  return {{kStringPboardType}, std::nullopt, string};
}

class DropSessionTest : public testing::Test {
 protected:
  void drop() {
    session.dropped([this](bool taken) { destination.calls.emplace_back(taken ? "taken" : "refused"); });
  }

  Destination destination;
  DropSession session{destination, {kFilenamesPboardType, kStringPboardType}};
};

TEST_F(DropSessionTest, ADropIsHandedOverInOrderAndTheSourceHearsBeforeTheHandOver) {
  session.contentIsKnown(text("x"));
  drop();
  EXPECT_THAT(destination.calls, ElementsAre("entered x", "prepare", "perform", "taken", "ended x"));
}

TEST_F(DropSessionTest, ContentThatComesAfterTheDropIsHandedOverThen) {
  drop();
  EXPECT_THAT(destination.calls, IsEmpty());
  session.contentIsKnown(text("x"));
  EXPECT_THAT(destination.calls, ElementsAre("entered x", "prepare", "perform", "taken", "ended x"));
}

TEST_F(DropSessionTest, ADragThatLeavesHandsNothingOver) {
  session.contentIsKnown(text("x"));
  session.left();
  drop();
  session.left();
  EXPECT_THAT(destination.calls, ElementsAre("entered x", "exited"));
}

TEST_F(DropSessionTest, ADragThatLeavesBeforeItsContentIsKnownIsNotHeardOf) {
  session.left();
  session.contentIsKnown(text("x"));
  EXPECT_THAT(destination.calls, IsEmpty());
}

TEST_F(DropSessionTest, LeavingAfterTheDropIsNoLeaving) {
  drop();
  session.left();
  session.contentIsKnown(text("x"));
  session.left();
  EXPECT_THAT(destination.calls, ElementsAre("entered x", "prepare", "perform", "taken", "ended x"));
}

TEST_F(DropSessionTest, OnlyTheFirstContentAndTheFirstDropCount) {
  session.contentIsKnown(text("x"));
  session.contentIsKnown(text("y"));
  drop();
  drop();
  EXPECT_THAT(destination.calls, ElementsAre("entered x", "prepare", "perform", "taken", "ended x"));
}

TEST_F(DropSessionTest, WhatCarriesNoRegisteredTypeIsNotHeardOfAndRefused) {
  session.contentIsKnown({{"image/png"}, std::nullopt, std::nullopt});
  drop();
  EXPECT_THAT(destination.calls, ElementsAre("refused"));
}

TEST_F(DropSessionTest, WhatCannotBeReadIsRefused) {
  drop();
  session.contentIsKnown({});
  EXPECT_THAT(destination.calls, ElementsAre("refused"));
}

TEST_F(DropSessionTest, OnlyRegisteredTypesAreShown) {
  DropSession filesOnly(destination, {kFilenamesPboardType});
  filesOnly.contentIsKnown(text("x"));
  filesOnly.dropped([this](bool taken) { destination.calls.emplace_back(taken ? "taken" : "refused"); });
  EXPECT_THAT(destination.calls, ElementsAre("refused"));
}

TEST_F(DropSessionTest, ADestinationThatOffersNoOperationGetsNoDrop) {
  destination.operations = kDragOperationNone;
  session.contentIsKnown(text("x"));
  drop();
  EXPECT_THAT(destination.calls, ElementsAre("entered x", "exited", "refused"));
}

TEST_F(DropSessionTest, ADestinationThatIsNotPreparedGetsNoDrop) {
  destination.prepares = false;
  session.contentIsKnown(text("x"));
  drop();
  EXPECT_THAT(destination.calls, ElementsAre("entered x", "prepare", "exited", "refused"));
}

TEST_F(DropSessionTest, AnOperationThatFailsIsToldToTheSource) {
  destination.performs = false;
  session.contentIsKnown(text("x"));
  drop();
  EXPECT_THAT(destination.calls, ElementsAre("entered x", "prepare", "perform", "refused", "ended x"));
}

}  // namespace
}  // namespace platform
