#include "platform/linux/linux_dispatch.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <future>
#include <mutex>
#include <thread>
#include <utility>

#include <glib.h>

#include "platform/current_queue.h"
#include "platform/linux/timer_thread.h"
#include "platform/linux/worker_pool.h"
#include "platform/log.h"

namespace platform {

namespace {

constexpr Millis kLongestTurn{20};

// The blocks wait in a deque of our own and only the wake-up crosses into the main context, which needs no
// lock of GLib's for it.
class MainQueue : public Queue {
 public:
  explicit MainQueue(TimerThread& timers) : timers_(timers), context_(g_main_context_default()) {
    static GSourceFuncs functions = {
        [](GSource* source, gint* timeout) -> gboolean {
          *timeout = -1;
          return of(source).hasBlocks();
        },
        [](GSource* source) -> gboolean { return of(source).hasBlocks(); },
        [](GSource* source, GSourceFunc, gpointer) -> gboolean {
          of(source).runWaiting();
          return G_SOURCE_CONTINUE;
        },
        nullptr,
        nullptr,
        nullptr,
    };
    source_ = g_source_new(&functions, sizeof(Source));
    reinterpret_cast<Source*>(source_)->queue = this;
    g_source_set_name(source_, "main queue");
    g_source_set_can_recurse(source_, TRUE);
    g_source_attach(source_, context_);
  }

  ~MainQueue() override { stop(); }
  MainQueue(const MainQueue&) = delete;
  MainQueue& operator=(const MainQueue&) = delete;

  void async(Block block) override {
    bool first = false;
    {
      const std::lock_guard lock(mutex_);
      if (stopped_) {
        return;
      }
      first = blocks_.empty();
      blocks_.push_back(std::move(block));
    }
    // Behind the first block the wake-up is still under way, or the source is at work.
    if (first) {
      g_main_context_wakeup(context_);
    }
  }

  void after(Millis delay, Block block) override {
    if (delay <= Millis::zero()) {
      async(std::move(block));
      return;
    }
    timers_.schedule(delay, [this, block = std::move(block)]() mutable { async(std::move(block)); });
  }

  bool isCurrent() const override { return std::this_thread::get_id() == thread_; }
  std::string label() const override { return "main"; }

  // How many blocks have been started so far. Main thread only.
  std::uint64_t startedBlocks() const { return started_; }

  void stop() {
    std::deque<Block> dropped;
    {
      const std::lock_guard lock(mutex_);
      stopped_ = true;
      dropped.swap(blocks_);
    }
    if (source_ != nullptr) {
      g_source_destroy(source_);
      g_source_unref(std::exchange(source_, nullptr));
    }
  }

 private:
  struct Source {
    GSource base;
    MainQueue* queue;
  };

  static MainQueue& of(GSource* source) { return *reinterpret_cast<Source*>(source)->queue; }

  bool hasBlocks() {
    const std::lock_guard lock(mutex_);
    return !blocks_.empty();
  }

  // Blocks that are added meanwhile wait for the next turn, so that frames are drawn in between. So do those
  // that a long turn leaves over: the window answers its person in between.
  void runWaiting() {
    const auto end = std::chrono::steady_clock::now() + kLongestTurn;
    std::unique_lock lock(mutex_);
    for (std::size_t left = blocks_.size(); left > 0 && !blocks_.empty(); --left) {
      Block block = std::move(blocks_.front());
      blocks_.pop_front();
      lock.unlock();
      ++started_;
      runBlock(std::move(block), this, "main");
      lock.lock();
      if (std::chrono::steady_clock::now() > end) {
        break;
      }
    }
  }

  TimerThread& timers_;
  GMainContext* const context_;
  const std::thread::id thread_ = std::this_thread::get_id();
  GSource* source_ = nullptr;
  std::mutex mutex_;
  std::deque<Block> blocks_;
  bool stopped_ = false;
  std::uint64_t started_ = 0;
};

class GlobalQueue : public Queue {
 public:
  GlobalQueue(WorkerPool& pool, TimerThread& timers, std::string label)
      : pool_(pool), timers_(timers), label_(std::move(label)) {}

  void async(Block block) override {
    pool_.post([this, block = std::move(block)]() mutable { runBlock(std::move(block), this, label_); });
  }

  void after(Millis delay, Block block) override {
    if (delay <= Millis::zero()) {
      async(std::move(block));
      return;
    }
    timers_.schedule(delay, [this, block = std::move(block)]() mutable { async(std::move(block)); });
  }

  bool isCurrent() const override { return CurrentQueue::identity() == this; }
  std::string label() const override { return label_; }

 private:
  WorkerPool& pool_;
  TimerThread& timers_;
  const std::string label_;
};

}  // namespace

// The pool comes last, so that its destructor, which waits for running blocks, finds the rest alive.
struct LinuxDispatch::State {
  const TimerThread::Clock::time_point start = TimerThread::Clock::now();
  TimerThread timers;
  MainQueue main{timers};
  GlobalQueue background{pool, timers, "global background"};
  GlobalQueue normal{pool, timers, "global default"};
  GlobalQueue userInitiated{pool, timers, "global user-initiated"};
  WorkerPool pool;
};

LinuxDispatch::LinuxDispatch() : state_(std::make_unique<State>()) {}

LinuxDispatch::~LinuxDispatch() {
  stop();
}

Millis LinuxDispatch::now() const {
  return std::chrono::duration_cast<Millis>(TimerThread::Clock::now() - state_->start);
}

Queue& LinuxDispatch::main() {
  return state_->main;
}

Queue& LinuxDispatch::global(QualityOfService qos) {
  switch (qos) {
    case QualityOfService::Background:
      return state_->background;
    case QualityOfService::UserInitiated:
      return state_->userInitiated;
    case QualityOfService::Default:
      break;
  }
  return state_->normal;
}

void LinuxDispatch::syncOnMain(const Block& block) {
  MainQueue* queue = &state_->main;
  if (queue->isCurrent()) {
    runBlock([&block] { block(); }, queue, "main");
    return;
  }
  auto ended = std::make_shared<std::promise<void>>();
  const std::future<void> end = ended->get_future();
  queue->async([ended, queue, &block] {
    runBlock([&block] { block(); }, queue, "main");
    ended->set_value();
  });
  ended.reset();
  // Also ends when the block is dropped: the promise is then gone.
  end.wait();
}

void LinuxDispatch::stop() {
  state_->timers.stop();
  state_->main.stop();
  state_->pool.stop();
}

bool LinuxDispatch::runMainOnce(Millis maxWait) {
  if (!state_->main.isCurrent()) {
    NSLog("The main loop runs on the main thread only");
    return false;
  }
  GMainContext* context = g_main_context_default();
  if (g_main_context_iteration(context, FALSE)) {
    return true;
  }
  if (maxWait <= Millis::zero()) {
    return false;
  }
  const std::uint64_t before = state_->main.startedBlocks();
  bool timedOut = false;
  GSource* limit = g_timeout_source_new(static_cast<guint>(std::min<Millis::rep>(maxWait.count(), G_MAXINT)));
  g_source_set_callback(
      limit,
      [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_REMOVE;
      },
      &timedOut, nullptr);
  g_source_attach(limit, context);
  // A wake-up alone may end an iteration in which nothing was done.
  bool done = false;
  while (!done && !timedOut) {
    done = g_main_context_iteration(context, TRUE);
  }
  g_source_destroy(limit);
  g_source_unref(limit);
  return done && (!timedOut || state_->main.startedBlocks() != before);
}

}  // namespace platform
