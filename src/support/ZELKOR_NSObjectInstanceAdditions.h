#pragma once

#include <string>
#include <utility>

#include "support/ZELKOR_NSObjectAdditions.h"

namespace lumo {

// The queue helpers as operations of an object: a class that derives from this has them under their names.
// Each does what the one of ZELKOR_NSObjectAdditions does.
class ZELKOR_NSObjectInstanceAdditions {
 public:
  using QueueOrNone = ZELKOR_NSObjectAdditions::QueueOrNone;

  void runOnceForKey_onQueue_collectingFor_usingBlock(platform::Dispatch& dispatch, const std::string& key,
                                                      const QueueOrNone& queue, double seconds,
                                                      const platform::Block& block) const {
    ZELKOR_NSObjectAdditions::runOnceForKey_onQueue_collectingFor_usingBlock(dispatch, key, queue, seconds,
                                                                             block);
  }
  void runOnceForKey_onQueue_afterWaiting_usingBlock(platform::Dispatch& dispatch, const std::string& key,
                                                     const QueueOrNone& queue, double seconds,
                                                     const platform::Block& block) const {
    ZELKOR_NSObjectAdditions::runOnceForKey_onQueue_afterWaiting_usingBlock(dispatch, key, queue, seconds,
                                                                            block);
  }
  void runOnceForKey_onQueue_beforeAndAfter_usingBlock(platform::Dispatch& dispatch, const std::string& key,
                                                       const QueueOrNone& queue, double seconds,
                                                       const platform::Block& block) const {
    ZELKOR_NSObjectAdditions::runOnceForKey_onQueue_beforeAndAfter_usingBlock(dispatch, key, queue, seconds,
                                                                              block);
  }
  void performAsyncOnMainQueue(platform::Dispatch& dispatch, platform::Block block) const {
    ZELKOR_NSObjectAdditions::performAsyncOnMainQueue(dispatch, std::move(block));
  }
  void performAsyncGlobalQOS_block(platform::Dispatch& dispatch, unsigned qos, platform::Block block) const {
    ZELKOR_NSObjectAdditions::performAsyncGlobalQOS_block(dispatch, qos, std::move(block));
  }
  void performAsyncGlobalUserInitiated(platform::Dispatch& dispatch, platform::Block block) const {
    ZELKOR_NSObjectAdditions::performAsyncGlobalUserInitiated(dispatch, std::move(block));
  }
  void performAsyncGlobal(platform::Dispatch& dispatch, platform::Block block) const {
    ZELKOR_NSObjectAdditions::performAsyncGlobal(dispatch, std::move(block));
  }
  void performSyncOnQueue_block(platform::Dispatch& dispatch, const QueueOrNone& queue,
                                const platform::Block& block) const {
    ZELKOR_NSObjectAdditions::performSyncOnQueue_block(dispatch, queue, block);
  }
  void performInlineOnQueue_block(platform::Dispatch& dispatch, const QueueOrNone& queue,
                                  platform::Block block) const {
    ZELKOR_NSObjectAdditions::performInlineOnQueue_block(dispatch, queue, std::move(block));
  }
  void performSyncOnMainQueue(platform::Dispatch& dispatch, const platform::Block& block) const {
    ZELKOR_NSObjectAdditions::performSyncOnMainQueue(dispatch, block);
  }
  bool isMainQueue(platform::Dispatch& dispatch) const {
    return ZELKOR_NSObjectAdditions::isMainQueue(dispatch);
  }
};

}  // namespace lumo
