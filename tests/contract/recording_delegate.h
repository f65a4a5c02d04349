#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/application.h"
#include "platform/queue.h"

// Writes down what the application tells it, as "openURLs a|b", and does what the test says then.
class RecordingDelegate : public platform::ApplicationDelegate, public platform::ServicesProvider {
 public:
  explicit RecordingDelegate(platform::Dispatch& dispatch) : dispatch_(dispatch) {}

  // Runs `reaction` at every event that begins with `event`.
  void on(const std::string& event, std::function<void()> reaction) {
    reactions_[event] = std::move(reaction);
  }
  void endAfter(const std::string& event, platform::Application& application) {
    on(event, [&application] { application.terminate(); });
  }
  void setReply(platform::TerminateReply reply) { reply_ = reply; }
  platform::TerminateReply reply() const { return reply_; }
  void setEndsWithLastWindow(bool ends) { endsWithLastWindow_ = ends; }

  void add(const std::string& event) {
    onMain_ = onMain_ && dispatch_.main().isCurrent();
    events_.push_back(event);
    const auto reactions = reactions_;
    for (const auto& [begin, reaction] : reactions) {
      if (event.starts_with(begin)) {
        reaction();
      }
    }
  }
  const std::vector<std::string>& events() const { return events_; }
  bool has(const std::string& event) const { return std::ranges::find(events_, event) != events_.end(); }
  std::vector<std::string> eventsStartingWith(const std::string& begin) const {
    std::vector<std::string> found;
    std::ranges::copy_if(events_, std::back_inserter(found),
                         [&begin](const std::string& event) { return event.starts_with(begin); });
    return found;
  }
  bool wasAlwaysOnMain() const { return onMain_; }

  void applicationWillFinishLaunching() override { add("willFinishLaunching"); }
  void applicationDidFinishLaunching() override { add("didFinishLaunching"); }
  platform::TerminateReply applicationShouldTerminate() override {
    const platform::TerminateReply reply = reply_;
    add("shouldTerminate");
    return reply;
  }
  bool applicationShouldTerminateAfterLastWindowClosed() override {
    add("lastWindowClosed");
    return endsWithLastWindow_;
  }
  void applicationDidResignActive() override { add("didResignActive"); }
  void applicationWillTerminate() override { add("willTerminate"); }
  void applicationMustTerminate() override { add("mustTerminate"); }
  void application_openURLs(const std::vector<std::string>& urls) override {
    add("openURLs " + joined(urls));
  }
  void application_openFiles(const std::vector<std::string>& filenames) override {
    add("openFiles " + joined(filenames));
  }
  bool applicationOpenUntitledFile() override {
    add("openUntitledFile");
    return true;
  }
  void SearchFromPasteboard_userData_error(const platform::Pasteboard& pasteboard,
                                           const std::optional<std::string>& userData) override {
    std::string types = joined(pasteboard.types);
    std::ranges::replace(types, '|', ',');
    add("search " + types +
        (pasteboard.filenames ? " files(" + joined(*pasteboard.filenames) + ")" : " no files") +
        (pasteboard.string ? " [" + *pasteboard.string + "]" : " no string") +
        " data=" + userData.value_or("absent"));
  }

 private:
  static std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
      all += (&text == &texts.front() ? "" : "|") + text;
    }
    return all;
  }

  platform::Dispatch& dispatch_;
  std::map<std::string, std::function<void()>> reactions_;
  platform::TerminateReply reply_ = platform::TerminateReply::Now;
  bool endsWithLastWindow_ = true;
  bool onMain_ = true;
  std::vector<std::string> events_;
};
