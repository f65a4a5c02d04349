#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>

#include "discovery/LocalNetwork.h"
#include "discovery/ServerScan.h"
#include "platform/http_client.h"
#include "platform/platform.h"
#include "platform/property_list.h"
#include "platform/queue.h"
#include "platform/window.h"

namespace lumo {

// The server finder: a sheet in which a person has the local network searched for photo servers and picks one
// of up to ten. The sheet ends with 1 when a server's record has just been stored under
// prefSelectedJunivaServerInfo, else with 0.
//
// A scan asks each of the 256 addresses of this computer's /24 network once, 2 ms apart, and is complete with
// 255 answers; without a network it asks this computer alone. A person waits for ten seconds at most. Work
// with the window happens on the main queue; where nothing else is said an operation posts that work and may
// be called from any thread. A scan ends with its controller.
class FindLumoJunivaServerWindowController
    : public std::enable_shared_from_this<FindLumoJunivaServerWindowController> {
 public:
  // Loads the sheet from the description "FindLumoJunivaServerWindowController" and sets it up; the texts
  // about the network follow from a worker thread. `platform` must outlive the controller. Main queue, where
  // the controller also ends, whoever drops it last.
  static std::shared_ptr<FindLumoJunivaServerWindowController> make(
      platform::Platform& platform, LocalNetwork network = networkOfThisComputer());
  ~FindLumoJunivaServerWindowController();
  FindLumoJunivaServerWindowController(const FindLumoJunivaServerWindowController&) = delete;
  FindLumoJunivaServerWindowController& operator=(const FindLumoJunivaServerWindowController&) = delete;

  // The sheet, or null when there is no description of it. Main queue only.
  platform::Window* window() const { return window_.get(); }

  // What the window shows. Main queue only.
  std::string fVersionString;
  std::string fBottomLineString;
  std::string fScanningResultString;
  // Always black.
  platform::Color fStatusColor;
  // This computer's address at set-up, not shown.
  std::string fLocalIPAddressString;
  // The list from which a choice is taken.
  platform::Array fArrayOfJunivaServers;

  // The scan's state. Any thread.
  std::atomic<std::int64_t> fMaxNumberOfIpAddressToCheck{0};
  std::atomic<bool> fIsSearchingForJunivaServers{false};
  const std::string fPortNumberString = "9090";
  // Absent before the first answer of a scan.
  std::optional<Answers> fIpListInfo() const;
  // Absent while a scan runs and after one that timed out.
  std::optional<platform::Array> fFoundList() const;

  // This computer's address ("localhost" where it has none) and the name of its Wi-Fi network (absent for
  // none). Both block: not on the main queue.
  static std::string getLocalIPAddress(const LocalNetwork& network = networkOfThisComputer());
  static std::optional<std::string> getWifiName(const LocalNetwork& network = networkOfThisComputer());
  // The line about both, always present. Blocks like them.
  std::string getIPInfo() const;

  // Starts a scan. Nothing happens while one runs, nor after one that timed out.
  void ibTestAction(platform::View* sender);
  void ibDoTestButton(platform::View* sender);
  // Sends one probe of 5 s at most, which ends in exactly one answer.
  void doCheckIpAddress_withPort(const std::string& address, const std::string& port);
  // Records an answer: a status, or the record of a server.
  void updateIpArray_withStatus(const std::string& address,
                                const std::variant<std::string, platform::Dictionary>& status);
  // Whether the scan is complete; builds the list of the servers found then. Not on the main queue.
  bool checkIfDone();
  // Waits for the scan's completion, then shows the results.
  void ibCheckAction(platform::View* sender);

  void setScanButtonString(const std::string& title);
  void ibHideChoiceButtons(platform::View* sender);
  // Enables the scan button unless a scan runs.
  void enableDisableButton(platform::View* sender);
  void updateStatus1(const std::string& text);
  void updateStatus2(const std::string& text);
  void updateStatus3(const std::string& text);
  void setStatusString(const std::string& text);
  // The status line is black whatever is asked for.
  void setStatusColor(platform::Color color);
  // Titles and shows a button for each server found, as far as there are buttons. Asks for this computer's
  // address first: not on the main queue.
  void showResults();
  // Stores the choice that `sender` stands for and ends the sheet. Main queue only.
  void ibCloseButton(platform::View* sender);

  // Called at fixed points of a scan; they do nothing.
  void updateStatus_forTag(const std::string& text, int tag);
  void updateActivityView();
  void enableDisableButton2(platform::View* sender);
  void updateNetworkActivityIndicator();

  // Serial queues for work beside the scan, which uses neither: one for this controller, and a new one at
  // each call.
  platform::SerialQueue currentTaskQueue() const { return currentTaskQueue_; }
  platform::SerialQueue mylittleQueue(const std::string& name) const;

 private:
  FindLumoJunivaServerWindowController(platform::Platform& platform, LocalNetwork network);

  void awakeFromNib();
  void connectActions();
  // Posts work with the window, which is dropped when the controller has gone.
  void onMain(std::function<void()> work);
  // The same for a global queue, where the controller lives until the work has been done.
  void onGlobal(platform::QualityOfService qos, platform::Millis delay, std::function<void()> work);

  void startScan();
  void probe(const ScanRange& range, std::int64_t number);
  void probesAreOut();
  void waitForAnswers();
  void endWaiting();
  void note(const std::string& address, const platform::HttpResult& result);

  void fillChoiceButtons(const platform::Array& found, const std::string& localAddress);
  void showText(const char* view, const std::string& text);
  void showProgress(double answers);
  platform::Button* scanButton() const;

  platform::Platform& platform_;
  const LocalNetwork network_;
  platform::SerialQueue currentTaskQueue_;
  std::unique_ptr<platform::Window> window_;
  mutable std::mutex mutex_;
  // Under the mutex.
  std::optional<Answers> ipListInfo_;
  std::optional<platform::Array> foundList_;
  // Of the one scan that runs.
  platform::Millis probingSince_{0};
  platform::Millis waitingSince_{0};
  platform::Date waitingSinceDate_;
};

}  // namespace lumo
