#include "tests/fakes/fake_application.h"

#include <stdexcept>

namespace fakes {

using platform::RunningApplication;
using platform::TerminateReply;

std::optional<std::vector<RunningApplication>> FakeApplication::runningApplications() {
  if (!others_) {
    return std::nullopt;
  }
  std::vector<RunningApplication> copies;
  for (const int other : *others_) {
    copies.push_back({other});
  }
  copies.push_back({kOwnIdentifier});
  return copies;
}

void FakeApplication::activateOther(const RunningApplication& other, unsigned options) {
  record("activateOther " + std::to_string(other.processIdentifier) + " " + std::to_string(options));
  otherActivations_.push_back({other.processIdentifier, options});
}

platform::ApplicationDelegate& FakeApplication::delegate() const {
  if (delegate_ == nullptr) {
    throw std::logic_error("the application has no delegate: it was not launched");
  }
  return *delegate_;
}

void FakeApplication::launch(platform::ApplicationDelegate& delegate) {
  delegate_ = &delegate;
  delegate.applicationWillFinishLaunching();
  delegate.applicationDidFinishLaunching();
  dispatch_.runUntilIdle();
}

int FakeApplication::run(platform::ApplicationDelegate& delegate) {
  launch(delegate);
  passUntilTerminated();
  return 0;
}

void FakeApplication::runToTermination() {
  record("runToTermination");
  passUntilTerminated();
  exitProcess(0);
}

void FakeApplication::passUntilTerminated() {
  constexpr platform::Millis kDay = std::chrono::hours(24);
  const platform::Millis end = dispatch_.now() + kDay;
  while (!terminated_ && dispatch_.now() < end && dispatch_.advanceToNextTimer()) {
  }
  if (!terminated_) {
    throw std::logic_error("the application came to rest without terminating");
  }
}

void FakeApplication::terminate() {
  if (!dispatch_.main().isCurrent()) {
    dispatch_.main().async([this] { terminate(); });
    return;
  }
  record("terminate");
  const TerminateReply reply = delegate().applicationShouldTerminate();
  replies_.push_back(reply);
  if (reply == TerminateReply::Cancel || terminating_) {
    return;
  }
  terminating_ = true;
  dispatch_.main().async([this] {
    record("terminated");
    terminated_ = true;
    delegate().applicationWillTerminate();
  });
}

void FakeApplication::setServicesProvider(platform::ServicesProvider* provider) {
  record(provider == nullptr ? "setServicesProvider none" : "setServicesProvider");
  services_ = provider;
}

void FakeApplication::setMenuAction(const std::string& action, std::function<void()> handler) {
  if (handler) {
    menu_[action] = std::move(handler);
  } else {
    menu_.erase(action);
  }
}

void FakeApplication::setMenuBarVisible(bool visible) {
  record(std::string("setMenuBarVisible ") + yesNo(visible));
  menuBarVisible_ = visible;
}

void FakeApplication::activate(unsigned options) {
  record("activate " + std::to_string(options));
  activations_.push_back(options);
}

void FakeApplication::beep() {
  record("beep");
  ++beeps_;
}

void FakeApplication::exitProcess(int status) {
  record("exitProcess " + std::to_string(status));
  exitStatus_ = status;
  throw ProcessExit{status};
}

void FakeApplication::openURL(const std::string& url) {
  record("openURL " + url);
  dispatch_.main().async([this, url] {
    if (delegate_ != nullptr) {
      delegate_->application_openURLs({url});
    }
  });
}

void FakeApplication::openURLs(const std::vector<std::string>& urls) {
  delegate().application_openURLs(urls);
}

void FakeApplication::openFiles(const std::vector<std::string>& filenames) {
  delegate().application_openFiles(filenames);
}

bool FakeApplication::openUntitledFile() {
  return delegate().applicationOpenUntitledFile();
}

void FakeApplication::resignActive() {
  delegate().applicationDidResignActive();
}

void FakeApplication::mustTerminate() {
  delegate().applicationMustTerminate();
}

void FakeApplication::noteLastWindowClosed() {
  if (delegate_ != nullptr && delegate_->applicationShouldTerminateAfterLastWindowClosed()) {
    terminate();
  }
}

bool FakeApplication::requestService(const platform::Pasteboard& pasteboard,
                                     const std::optional<std::string>& userData) {
  if (services_ == nullptr) {
    return false;
  }
  services_->SearchFromPasteboard_userData_error(pasteboard, userData);
  return true;
}

bool FakeApplication::chooseMenu(const std::string& action) {
  const auto found = menu_.find(action);
  if (found == menu_.end()) {
    return false;
  }
  const std::function<void()> handler = found->second;
  handler();
  return true;
}

}  // namespace fakes
