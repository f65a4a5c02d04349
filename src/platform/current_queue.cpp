#include "platform/current_queue.h"

#include <exception>

#include "platform/log.h"

namespace platform {

namespace {

thread_local const void* currentIdentity = nullptr;

}  // namespace

CurrentQueue::CurrentQueue(const void* identity) : outer_(currentIdentity) {
  currentIdentity = identity;
}

CurrentQueue::~CurrentQueue() {
  currentIdentity = outer_;
}

const void* CurrentQueue::identity() {
  return currentIdentity;
}

void runBlock(Block block, const void* identity, const std::string& label) {
  const CurrentQueue mark(identity);
  try {
    block();
  } catch (const std::exception& error) {
    NSLog("A block on the queue \"%@\" ended with an exception: %s", label, error.what());
  } catch (...) {
    NSLog("A block on the queue \"%@\" ended with an exception of an unknown kind", label);
  }
  block = nullptr;
}

}  // namespace platform
