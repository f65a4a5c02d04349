#include "support/ZELKOR_NSObjectAdditions.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/fakes/captured_log.h"
#include "tests/fakes/sim_dispatch.h"

namespace additions = lumo::ZELKOR_NSObjectAdditions;

TEST(ZELKOR_NSObjectAdditions, ASerialQueueHasItsLabelAndRecognisesItself) {
  fakes::SimDispatch dispatch;
  platform::SerialQueue queue = additions::dispatchQueueSerialWithDebugLabel(dispatch, "debug label");
  EXPECT_EQ(queue.label(), "debug label");
  bool inside = false;
  queue.async([&] { inside = queue.isCurrent(); });
  dispatch.runUntilIdle();
  EXPECT_TRUE(inside);
  EXPECT_FALSE(queue.isCurrent());
}

TEST(ZELKOR_NSObjectAdditions, WithoutALabelTheQueueHasTheEmptyOne) {
  fakes::SimDispatch dispatch;
  EXPECT_EQ(additions::dispatchQueueSerial(dispatch).label(), "");
  EXPECT_EQ(additions::dispatchQueueSerialWithDebugLabel(dispatch, std::nullopt).label(), "");
}

TEST(ZELKOR_NSObjectAdditions, EveryCallMakesAQueueOfItsOwn) {
  fakes::SimDispatch dispatch;
  EXPECT_FALSE(additions::dispatchQueueSerialWithDebugLabel(dispatch, "label") ==
               additions::dispatchQueueSerialWithDebugLabel(dispatch, "label"));
  EXPECT_FALSE(additions::dispatchQueueSerial(dispatch) == additions::dispatchQueueSerial(dispatch));
}

TEST(ZELKOR_NSObjectAdditions, ThePathToSelfIsTheExecutablesAndLoggedThreeTimes) {
  fakes::CapturedLog log;
  const auto path = additions::pathToSelf();
  ASSERT_TRUE(path);
  EXPECT_TRUE(std::filesystem::equivalent(*path, "/proc/self/exe"));
  EXPECT_EQ(log.count("pathToSelf = " + *path), 3U);
}

TEST(ZELKOR_NSObjectAdditions, ThePathToSelfIsTheSameAfterTheFileHasGone) {
  EXPECT_EQ(additions::pathOfExecutable("/opt/kiosk", true), "/opt/kiosk");
  EXPECT_EQ(additions::pathOfExecutable("/opt/kiosk (deleted)", false), "/opt/kiosk");
  EXPECT_EQ(additions::pathOfExecutable("/opt/kiosk (deleted)", true), "/opt/kiosk (deleted)");
  EXPECT_EQ(additions::pathOfExecutable("/opt/kiosk", false), "/opt/kiosk");
  EXPECT_EQ(additions::pathOfExecutable("/opt/k\xfcsten", true), "/opt/k\uFFFDsten");
  EXPECT_EQ(additions::pathOfExecutable("", false), std::nullopt);
}
