#include "platform/notification_center.h"

#include <atomic>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "platform/format.h"
#include "platform/message_bus.h"

namespace {

using namespace platform;
using Texts = std::vector<std::string>;

TEST(NotificationCenter, CallsTheObserversOfTheNameInOrderAtOnce) {
  NotificationCenter center;
  Texts heard;
  center.addObserver("a", [&](const Notification&) { heard.push_back("first"); });
  center.addObserver("b", [&](const Notification&) { heard.push_back("other"); });
  center.addObserver("a", [&](const Notification&) { heard.push_back("second"); });
  center.postNotificationName("a");
  EXPECT_EQ(heard, Texts({"first", "second"}));
  center.postNotificationName("A");
  center.postNotificationName("");
  EXPECT_EQ(heard.size(), 2u);
}

TEST(NotificationCenter, HandsOverWhatWasPosted) {
  NotificationCenter center;
  int sender = 0;
  std::optional<Notification> heard;
  center.addObserver("n", [&](const Notification& notification) { heard = notification; });
  center.postNotification({"n", "object", {{"key", 1}}, &sender});
  ASSERT_TRUE(heard);
  EXPECT_EQ(heard->name, "n");
  EXPECT_EQ(heard->object, PropertyList("object"));
  EXPECT_EQ(heard->userInfo, (Dictionary{{"key", 1}}));
  EXPECT_EQ(heard->sender, &sender);
  center.postNotificationName("n");
  EXPECT_FALSE(heard->object);
  EXPECT_EQ(heard->sender, nullptr);
}

TEST(NotificationCenter, RunsObserversOnThePostersThread) {
  NotificationCenter center;
  std::thread::id heardOn;
  center.addObserver("n", [&](const Notification&) { heardOn = std::this_thread::get_id(); });
  std::thread poster([&] {
    center.postNotificationName("n");
    EXPECT_EQ(heardOn, std::this_thread::get_id());
  });
  poster.join();
  EXPECT_NE(heardOn, std::this_thread::get_id());
}

TEST(NotificationCenter, ForgetsRemovedObservers) {
  NotificationCenter center;
  int first = 0;
  int second = 0;
  const auto token = center.addObserver("n", [&](const Notification&) { ++first; });
  center.addObserver("n", [&](const Notification&) { ++second; });
  center.removeObserver(token);
  center.removeObserver(token);
  center.removeObserver(0);
  center.removeObserver(12345);
  center.postNotificationName("n");
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);
}

TEST(NotificationCenter, LetsObserversAddRemoveAndPost) {
  NotificationCenter center;
  Texts heard;
  NotificationCenter::Token own = 0;
  NotificationCenter::Token later = 0;
  own = center.addObserver("n", [&](const Notification&) {
    heard.push_back("once");
    center.removeObserver(own);
    center.removeObserver(later);
    // Hears of later notifications only.
    center.addObserver("n", [&](const Notification&) { heard.push_back("new"); });
    center.postNotificationName("inner");
  });
  later = center.addObserver("n", [&](const Notification&) { heard.push_back("removed before its turn"); });
  center.addObserver("n", [&](const Notification&) { heard.push_back("last"); });
  center.addObserver("inner", [&](const Notification&) { heard.push_back("inner"); });
  center.postNotificationName("n");
  EXPECT_EQ(heard, Texts({"once", "inner", "last"}));
  heard.clear();
  center.postNotificationName("n");
  EXPECT_EQ(heard, Texts({"last", "new"}));
}

TEST(NotificationCenter, IgnoresAnEmptyObserver) {
  NotificationCenter center;
  center.addObserver("n", nullptr);
  EXPECT_NO_THROW(center.postNotificationName("n"));
}

TEST(NotificationCenter, GoesOnAfterAnObserverThatThrows) {
  NotificationCenter center;
  int heard = 0;
  const auto token = center.addObserver("n", [](const Notification&) { throw std::runtime_error("no"); });
  center.addObserver("n", [&](const Notification&) { ++heard; });
  EXPECT_THROW(center.postNotificationName("n"), std::runtime_error);
  center.removeObserver(token);
  center.postNotificationName("n");
  EXPECT_EQ(heard, 1);
}

// What an observer holds may use the center while it is destroyed.
TEST(NotificationCenter, DropsRemovedObserversOutsideOfItsLock) {
  NotificationCenter center;
  struct Poster {
    NotificationCenter& center;
    explicit Poster(NotificationCenter& where) : center(where) {}
    ~Poster() { center.postNotificationName("gone"); }
  };
  int gone = 0;
  center.addObserver("gone", [&](const Notification&) { ++gone; });
  const auto token =
      center.addObserver("n", [poster = std::make_shared<Poster>(center)](const Notification&) {});
  center.removeObserver(token);
  EXPECT_EQ(gone, 1);
}

TEST(NotificationCenter, WorksFromManyThreads) {
  NotificationCenter center;
  std::atomic<int> heard = 0;
  center.addObserver("n", [&](const Notification&) { ++heard; });
  std::vector<std::thread> threads;
  threads.reserve(4);
  constexpr int rounds = 300;
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([&] {
      for (int round = 0; round < rounds; ++round) {
        const auto own = std::make_shared<std::atomic<int>>(0);
        const auto token = center.addObserver("n", [own](const Notification&) { ++*own; });
        center.postNotificationName("n");
        center.removeObserver(token);
        EXPECT_GE(*own, 1);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(heard, 4 * rounds);
}

TEST(Notification, DescribesItself) {
  EXPECT_EQ(description(Notification{"N", std::nullopt, {}, nullptr}),
            "{name = N; object = (null); userInfo = {\n}}");
  EXPECT_EQ(stringWithFormat("%@...", Notification{"N", "a b", {{"k", 1}}, nullptr}),
            "{name = N; object = a b; userInfo = {\n    k = 1;\n}}...");
  EXPECT_EQ(
      description(DistributedNotification{"lumoXNotification", std::nullopt, {{"status", "registered"}}}),
      "{name = lumoXNotification; object = (null); userInfo = {\n    status = registered;\n}}");
}

}  // namespace
