// One JSON object a round: how many calls a second the coalescing takes, and how many lines the log writes,
// each beside what others use for it.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include <glib.h>
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include "platform/linux/linux_dispatch.h"
#include "platform/notification_center.h"
#include "support/ZELKOR_Log.h"
#include "support/ZELKOR_NSObjectAdditions.h"

namespace {

namespace fs = std::filesystem;
namespace additions = lumo::ZELKOR_NSObjectAdditions;
using platform::Millis;
using Clock = std::chrono::steady_clock;

constexpr int kCalls = 100000;
constexpr int kKeys = 1000;
constexpr Millis kDelay{50};
constexpr int kLines = 100000;
// The log keeps one level's lines.
constexpr std::string_view kLine = "the page of the order 0815 came with status 200 and 14 headers, in 37 ms";

[[noreturn]] void fail(const std::string& reason) {
  std::fprintf(stderr, "support_steps: %s\n", reason.c_str());
  std::exit(1);
}

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

std::vector<std::string> keys() {
  std::vector<std::string> names;
  names.reserve(kKeys);
  for (int key = 0; key < kKeys; ++key) {
    names.push_back("key " + std::to_string(key));
  }
  return names;
}

// Calls a second: from the first call, of `threads` threads, to the last block, without the delay itself.
double coalescing(platform::LinuxDispatch& dispatch, int threads) {
  const std::vector<std::string> names = keys();
  // Each call's block holds this; it is alone again when the last timer has gone.
  const auto pending = std::make_shared<int>(0);
  const auto start = Clock::now();
  std::vector<std::thread> callers;
  callers.reserve(static_cast<std::size_t>(threads));
  for (int thread = 0; thread < threads; ++thread) {
    callers.emplace_back([&, thread] {
      for (int call = thread; call < kCalls; call += threads) {
        additions::runOnceForKey_onQueue_afterWaiting_usingBlock(
            dispatch, names[static_cast<std::size_t>(call % kKeys)], std::nullopt,
            std::chrono::duration<double>(kDelay).count(), [pending] { ++*pending; });
      }
    });
  }
  for (std::thread& caller : callers) {
    caller.join();
  }
  while (pending.use_count() > 1) {
    dispatch.runMainOnce(Millis(1));
  }
  const double time = secondsSince(start) - std::chrono::duration<double>(kDelay).count();
  if (*pending < kKeys) {
    fail("a burst was lost");
  }
  return kCalls / time;
}

// The same as programs with GLib do it: the key's timer is taken out and set again.
double coalescingWithGLib() {
  struct Burst {
    guint timer = 0;
    int* ran = nullptr;
  };
  const std::vector<std::string> names = keys();
  std::unordered_map<std::string, Burst> bursts;
  int ran = 0;
  const auto start = Clock::now();
  for (int call = 0; call < kCalls; ++call) {
    Burst& burst = bursts[names[static_cast<std::size_t>(call % kKeys)]];
    burst.ran = &ran;
    if (burst.timer != 0) {
      g_source_remove(burst.timer);
    }
    burst.timer = g_timeout_add(
        static_cast<guint>(kDelay.count()),
        [](gpointer data) -> gboolean {
          auto* ended = static_cast<Burst*>(data);
          ended->timer = 0;
          ++*ended->ran;
          return G_SOURCE_REMOVE;
        },
        &burst);
  }
  const auto isPending = [](const auto& entry) { return entry.second.timer != 0; };
  while (std::any_of(bursts.begin(), bursts.end(), isPending)) {
    g_main_context_iteration(nullptr, TRUE);
  }
  const double time = secondsSince(start) - std::chrono::duration<double>(kDelay).count();
  if (ran < kKeys) {
    fail("GLib lost a burst");
  }
  return kCalls / time;
}

void checkLines(const fs::path& file) {
  std::ifstream stream(file);
  const auto count = std::count(std::istreambuf_iterator<char>(stream), {}, '\n');
  if (count != kLines) {
    fail(file.string() + " has " + std::to_string(count) + " lines");
  }
  fs::remove(file);
}

// Lines a second, from the first call to the last line in the file; and nanoseconds that a call takes.
struct LogSpeed {
  double lines = 0;
  double call = 0;
};

template <class Write, class Finish>
LogSpeed logging(const fs::path& file, Write&& write, Finish&& finish) {
  const auto start = Clock::now();
  for (int line = 0; line < kLines; ++line) {
    write();
  }
  const double called = secondsSince(start);
  finish();
  const double time = secondsSince(start);
  checkLines(file);
  return {kLines / time, called / kLines * 1e9};
}

LogSpeed ownLog(platform::LinuxDispatch& dispatch, platform::NotificationCenter& center,
                const fs::path& folder) {
  const fs::path file = folder / "own.log";
  lumo::ZELKOR_Log::initialize(dispatch, center, "bench");
  // Before the file, which would take standard error as well.
  if (!lumo::ZELKOR_Log::setLogFile(file.string())) {
    fail("the log has no file");
  }
  lumo::ZELKOR_Log::setShouldLogToStdErr(false);
  return logging(
      file, [] { lumo::ZELKOR_Log::logLevel_message(lumo::ZELKOR_Log::Debug2, kLine); },
      [] { lumo::ZELKOR_Log::loggingQueue().drain(); });
}

// With `flushed`, each line is in the file at once, as with the kiosk's log; a crash loses none.
LogSpeed spdlogFile(const fs::path& folder, bool flushed) {
  const fs::path file = folder / "spdlog.log";
  spdlog::init_thread_pool(8192, 1);
  auto logger = spdlog::basic_logger_mt<spdlog::async_factory>("bench", file.string());
  logger->set_pattern("D2 [%Y/%m/%d %H:%M:%S.%e %z] %v");
  if (flushed) {
    logger->flush_on(spdlog::level::trace);
  }
  return logging(
      file, [&logger] { logger->info(kLine); },
      [&logger] {
        logger.reset();
        spdlog::shutdown();
      });
}

}  // namespace

int main(int count, char** arguments) {
  const int rounds = count == 3 ? std::atoi(arguments[2]) : 0;
  if (rounds < 1) {
    std::fprintf(stderr, "Usage: support_steps FOLDER ROUNDS\n");
    return 2;
  }
  const fs::path folder = arguments[1];
  platform::LinuxDispatch dispatch;
  platform::NotificationCenter center;
  // The first round warms up. The order changes from round to round.
  for (int round = 0; round <= rounds; ++round) {
    double one = 0;
    double eight = 0;
    double glib = 0;
    LogSpeed own;
    LogSpeed buffered;
    LogSpeed flushed;
    const std::vector<std::function<void()>> steps = {
        [&] { one = coalescing(dispatch, 1); },      [&] { glib = coalescingWithGLib(); },
        [&] { eight = coalescing(dispatch, 8); },    [&] { own = ownLog(dispatch, center, folder); },
        [&] { flushed = spdlogFile(folder, true); }, [&] { buffered = spdlogFile(folder, false); },
    };
    for (std::size_t step = 0; step < steps.size(); ++step) {
      steps[round % 2 == 0 ? step : steps.size() - 1 - step]();
    }
    if (round > 0) {
      std::printf(
          "{\"coalescing\": %.0f, \"coalescing_8_threads\": %.0f, \"coalescing_glib\": %.0f, \"log\": %.0f, "
          "\"log_spdlog_flushed\": %.0f, \"log_spdlog\": %.0f, \"call\": %.0f, \"call_spdlog_flushed\": "
          "%.0f, "
          "\"call_spdlog\": %.0f}\n",
          one, eight, glib, own.lines, flushed.lines, buffered.lines, own.call, flushed.call, buffered.call);
      std::fflush(stdout);
    }
  }
  return 0;
}
