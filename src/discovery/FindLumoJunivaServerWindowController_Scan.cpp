#include <chrono>
#include <ctime>
#include <utility>

#include "discovery/FindLumoJunivaServerWindowController.h"
#include "platform/format.h"
#include "platform/log.h"

// The scan: probes, answers and the wait for them.

namespace lumo {

using platform::Millis;
using platform::NSLog;
using platform::QualityOfService;
using platform::stringWithFormat;

namespace {

constexpr const char* kPort = "9090";
constexpr int kPortNumber = 9090;
constexpr Millis kProbeTimeout{5000};
constexpr Millis kLongestWait{10'000};
constexpr Millis kBetweenLooks{200};
constexpr Millis kBeforeResults{1};

// Seconds and milliseconds of the local time, "ss.SSS".
std::string secondsNow() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  std::tm local = {};
  localtime_r(&seconds, &local);
  const auto millis = std::chrono::duration_cast<Millis>(now.time_since_epoch()).count() % 1000;
  return stringWithFormat("%02d.%03d", local.tm_sec, millis);
}

}  // namespace

std::optional<Answers> FindLumoJunivaServerWindowController::fIpListInfo() const {
  const std::lock_guard lock(mutex_);
  return ipListInfo_;
}

std::optional<platform::Array> FindLumoJunivaServerWindowController::fFoundList() const {
  const std::lock_guard lock(mutex_);
  return foundList_;
}

void FindLumoJunivaServerWindowController::ibTestAction(platform::View* /*sender*/) {
  // A second press can come before the button is seen disabled.
  if (!fIsSearchingForJunivaServers.exchange(true)) {
    onGlobal(QualityOfService::Default, Millis{0}, [this] { startScan(); });
  }
}

void FindLumoJunivaServerWindowController::startScan() {
  updateActivityView();
  ibHideChoiceButtons(nullptr);
  enableDisableButton(nullptr);
  {
    const std::lock_guard lock(mutex_);
    foundList_.reset();
    ipListInfo_.reset();
  }
  NSLog("self.fIpListInfo at start.... %@", std::nullopt);
  NSLog(" self.fFoundList at start.... %@", std::nullopt);
  const ScanRange range = scanRange(getLocalIPAddress(network_));
  fMaxNumberOfIpAddressToCheck = range.maximum;
  onMain([this] { showProgress(0); });
  if (range.isSubnet) {
    probingSince_ = platform_.dispatch.now();
    probe(range, 0);
  } else {
    updateStatus1(stringWithFormat("Checking %@:%@", range.addressTemplate, kPort));
    doCheckIpAddress_withPort(range.addressTemplate, kPort);
    probesAreOut();
  }
}

void FindLumoJunivaServerWindowController::probe(const ScanRange& range, std::int64_t number) {
  const std::string address = scanAddress(range, number);
  updateStatus1(stringWithFormat("Checking %@:%@", address, kPort));
  doCheckIpAddress_withPort(address, kPort);
  const std::int64_t next = number + 1;
  const Millis pause = pauseBeforeProbe(next, platform_.dispatch.now() - probingSince_);
  onGlobal(QualityOfService::Default, pause, [this, range, next] {
    if (fMaxNumberOfIpAddressToCheck >= next) {
      probe(range, next);
    } else {
      probesAreOut();
    }
  });
}

void FindLumoJunivaServerWindowController::probesAreOut() {
  enableDisableButton(nullptr);
  ibCheckAction(nullptr);
}

void FindLumoJunivaServerWindowController::doCheckIpAddress_withPort(const std::string& address,
                                                                     const std::string& port) {
  onGlobal(QualityOfService::Background, Millis{0}, [this, address, port] {
    platform_.http.get(stringWithFormat("http://%@:%@", address, port), kProbeTimeout,
                       [weak = weak_from_this(), address](const platform::HttpResult& result) {
                         if (const auto self = weak.lock()) {
                           self->note(address, result);
                         }
                       });
  });
}

void FindLumoJunivaServerWindowController::note(const std::string& address,
                                                const platform::HttpResult& result) {
  if (!result.error) {
    NSLog("response = %@", result.headers);
  }
  const auto name = photoServerName(result);
  if (!name) {
    updateIpArray_withStatus(address, kServerUnavailable);
    return;
  }
  NSLog("FOUND JUNIVA SERVER !!!!");
  updateIpArray_withStatus(address, answerRecord(name));
}

void FindLumoJunivaServerWindowController::updateIpArray_withStatus(
    const std::string& address, const std::variant<std::string, platform::Dictionary>& status) {
  onMain([this, address, status] {
    platform::Dictionary record;
    if (const auto* entries = std::get_if<platform::Dictionary>(&status)) {
      record = *entries;
    } else {
      record.set("status", std::get<std::string>(status));
    }
    std::size_t answers = 0;
    {
      const std::lock_guard lock(mutex_);
      if (!ipListInfo_) {
        ipListInfo_.emplace();
      }
      (*ipListInfo_)[address] = record;
      answers = ipListInfo_->size();
    }
    const platform::PropertyList* shown = record.find("status");
    updateStatus1(stringWithFormat("%@:%@ status = %@...", address, kPortNumber, shown));
    showProgress(static_cast<double>(answers));
  });
}

bool FindLumoJunivaServerWindowController::checkIfDone() {
  std::optional<platform::Array> found;
  {
    const std::lock_guard lock(mutex_);
    const std::uint64_t answers = ipListInfo_ ? ipListInfo_->size() : 0;
    if (answers >= static_cast<std::uint64_t>(fMaxNumberOfIpAddressToCheck.load())) {
      found = ipListInfo_ ? foundServers(*ipListInfo_, fPortNumberString) : platform::Array();
      foundList_ = found;
    }
  }
  if (!found) {
    updateStatus1(stringWithFormat("Waiting for Responses...%@", secondsNow()));
    return false;
  }
  NSLog("done");
  NSLog("FoundList = %@", *found);
  fIsSearchingForJunivaServers = false;
  updateActivityView();
  return true;
}

void FindLumoJunivaServerWindowController::ibCheckAction(platform::View* sender) {
  onGlobal(QualityOfService::Default, Millis{0}, [this, sender] {
    enableDisableButton2(sender);
    NSLog("start...");
    waitingSince_ = platform_.dispatch.now();
    waitingSinceDate_ = std::chrono::system_clock::now();
    waitForAnswers();
  });
}

void FindLumoJunivaServerWindowController::waitForAnswers() {
  if (!checkIfDone() && platform_.dispatch.now() - waitingSince_ <= kLongestWait) {
    onGlobal(QualityOfService::Default, kBetweenLooks, [this] { waitForAnswers(); });
    return;
  }
  NSLog("end...");
  NSLog("startdate = %@", platform::PropertyList(waitingSinceDate_));
  NSLog("enddate = %@", platform::PropertyList(std::chrono::system_clock::now()));
  const std::chrono::duration<double> elapsed = platform_.dispatch.now() - waitingSince_;
  NSLog("total time = %5.2f", elapsed.count());
  onGlobal(QualityOfService::Default, kBeforeResults, [this] { endWaiting(); });
}

void FindLumoJunivaServerWindowController::endWaiting() {
  showResults();
  updateActivityView();
  enableDisableButton(nullptr);
  enableDisableButton2(nullptr);
  updateNetworkActivityIndicator();
  updateStatus1("");
  if (const auto found = fFoundList(); found && found->empty()) {
    const std::string address = getLocalIPAddress(network_);
    updateStatus1(nothingFoundText(address, getWifiName(network_).has_value()));
  }
}

}  // namespace lumo
