#include "support/ZELKOR_NSObjectAdditions.h"

#include <filesystem>
#include <future>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/log.h"
#include "platform/strings.h"

namespace lumo::ZELKOR_NSObjectAdditions {

using platform::Block;
using platform::Dispatch;
using platform::QualityOfService;
using platform::Queue;
using platform::SerialQueue;

namespace {

void run(const Block& block) {
  if (block) {
    block();
  }
}

// Waits also when the queue is stopped and drops the block: the promise is gone then.
void postAndWait(Queue& queue, const Block& block) {
  auto ended = std::make_shared<std::promise<void>>();
  const std::future<void> end = ended->get_future();
  queue.async([ended, &block] {
    run(block);
    ended->set_value();
  });
  ended.reset();
  end.wait();
}

}  // namespace

QueueOrNone::QueueOrNone(const SerialQueue& queue)
    : queue_(std::make_shared<SerialQueue>(queue)), isSerial_(true) {}

QueueOrNone::QueueOrNone(Queue& queue) {
  if (const auto* serial = dynamic_cast<const SerialQueue*>(&queue)) {
    *this = QueueOrNone(*serial);
  } else {
    // Not owned.
    queue_ = std::shared_ptr<Queue>(std::shared_ptr<void>(), &queue);
  }
}

bool QueueOrNone::isRecognised(Dispatch& dispatch) const {
  return queue_ && (isSerial_ || queue_.get() == &dispatch.main()) && queue_->isCurrent();
}

SerialQueue dispatchQueueSerialWithDebugLabel(Dispatch& dispatch, const std::optional<std::string>& label) {
  return SerialQueue(dispatch, label.value_or(std::string()));
}

SerialQueue dispatchQueueSerial(Dispatch& dispatch) {
  return dispatchQueueSerialWithDebugLabel(dispatch, std::nullopt);
}

Queue& dispatchQueueGlobalWithQOS(Dispatch& dispatch, unsigned qos) {
  switch (static_cast<QualityOfService>(qos)) {
    case QualityOfService::Background:
      return dispatch.global(QualityOfService::Background);
    case QualityOfService::UserInitiated:
      return dispatch.global(QualityOfService::UserInitiated);
    case QualityOfService::Default:
      break;
  }
  return dispatch.global(QualityOfService::Default);
}

Queue& dispatchQueueGlobal(Dispatch& dispatch) {
  return dispatchQueueGlobalWithQOS(dispatch, static_cast<unsigned>(QualityOfService::Default));
}

const void* dispatchQueueSpecificKeyIdentity() {
  static const void* const key = &key;
  return key;
}

bool isMainQueue(Dispatch& dispatch) {
  return dispatch.main().isCurrent();
}

void performSyncOnQueue_block(Dispatch& dispatch, const QueueOrNone& queue, const Block& block) {
  if (queue.get() == nullptr || queue.isRecognised(dispatch)) {
    run(block);
  } else if (isMainQueue(dispatch)) {
    queue.get()->async([block] { run(block); });
  } else if (queue.get() == &dispatch.main()) {
    dispatch.syncOnMain([&block] { run(block); });
  } else {
    postAndWait(*queue.get(), block);
  }
}

void performInlineOnQueue_block(Dispatch& dispatch, const QueueOrNone& queue, Block block) {
  if (queue.get() == nullptr || queue.isRecognised(dispatch)) {
    run(block);
  } else {
    queue.get()->async([block = std::move(block)] { run(block); });
  }
}

void performSyncOnMainQueue(Dispatch& dispatch, const Block& block) {
  if (isMainQueue(dispatch)) {
    run(block);
  } else {
    dispatch.syncOnMain([&block] { run(block); });
  }
}

void performAsyncOnMainQueue(Dispatch& dispatch, Block block) {
  dispatch.main().async([block = std::move(block)] { run(block); });
}

void performAsyncGlobalQOS_block(Dispatch& dispatch, unsigned qos, Block block) {
  dispatchQueueGlobalWithQOS(dispatch, qos).async([block = std::move(block)] { run(block); });
}

void performAsyncGlobalUserInitiated(Dispatch& dispatch, Block block) {
  performAsyncGlobalQOS_block(dispatch, static_cast<unsigned>(QualityOfService::UserInitiated),
                              std::move(block));
}

void performAsyncGlobal(Dispatch& dispatch, Block block) {
  performAsyncGlobalQOS_block(dispatch, static_cast<unsigned>(QualityOfService::Default), std::move(block));
}

std::optional<std::string> pathToSelf() {
  std::error_code error;
  const auto link = std::filesystem::read_symlink("/proc/self/exe", error);
  auto path = pathOfExecutable(link.string(), std::filesystem::exists(link, error));
  // Three times, so that it is found in a long log.
  for (int line = 0; line < 3; ++line) {
    platform::NSLog("pathToSelf = %@", path);
  }
  return path;
}

std::optional<std::string> pathOfExecutable(std::string link, bool exists) {
  constexpr std::string_view kDeleted = " (deleted)";
  if (link.empty()) {
    return std::nullopt;
  }
  if (!exists && link.ends_with(kDeleted)) {
    link.resize(link.size() - kDeleted.size());
  }
  return platform::validUtf8(link);
}

}  // namespace lumo::ZELKOR_NSObjectAdditions
