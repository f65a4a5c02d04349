#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "platform/linux/linux_dispatch.h"
#include "platform/notification_center.h"
#include "support/ZELKOR_Log.h"

using lumo::ZELKOR_Log;

// The log on the machine's own queues: eight threads write while its settings change and its file is opened.
TEST(LogOnThreads, EveryLineIsWrittenOnceAndInTheOrderOfItsThread) {
  constexpr int kThreads = 8;
  constexpr int kLines = 2000;
  std::string pattern = (std::filesystem::temp_directory_path() / "log-test-XXXXXX").string();
  const std::filesystem::path folder = mkdtemp(pattern.data());
  std::atomic<int> notified = 0;
  {
    platform::LinuxDispatch dispatch;
    platform::NotificationCenter center;
    ZELKOR_Log::initialize(dispatch, center, "MyApp");
    center.addObserver(ZELKOR_Log::LogFileDidUpdateNotification,
                       [&](const platform::Notification&) { ++notified; });
    ASSERT_TRUE(ZELKOR_Log::setLogFile((folder / "Foo.log").string()));
    ZELKOR_Log::setShouldLogToStdErr(false);
    ZELKOR_Log::setShouldNotifyForLogUpdates(true);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([t] {
        for (int i = 0; i < kLines; ++i) {
          ZELKOR_Log::debug2(std::to_string(t) + " " + std::to_string(i));
        }
      });
    }
    for (int i = 0; i < 500; ++i) {
      ZELKOR_Log::setShouldLogAppName(i % 2 == 0);
      ZELKOR_Log::setApplicationName(i % 3 == 0 ? "MyApp" : "Other");
      ZELKOR_Log::setLogFile((folder / "Bar.log").string());
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
    ZELKOR_Log::loggingQueue().drain();
  }
  std::ifstream file(folder / "Foo.log");
  std::map<int, int> next;
  int count = 0;
  for (std::string line; std::getline(file, line); ++count) {
    // The application name may stand before the message.
    std::istringstream words(line.substr(line.find_last_of(":]") + 1));
    int thread = -1;
    int number = -1;
    words >> thread >> number;
    ASSERT_EQ(number, next[thread]++) << line;
  }
  EXPECT_EQ(count, kThreads * kLines);
  EXPECT_EQ(notified, kThreads * kLines);
  EXPECT_FALSE(std::filesystem::exists(folder / "Bar.log"));
  std::filesystem::remove_all(folder);
}
