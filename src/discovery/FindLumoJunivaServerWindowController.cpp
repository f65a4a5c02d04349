#include "discovery/FindLumoJunivaServerWindowController.h"

#include <utility>

#include "app/PreferenceKeys.h"
#include "platform/bundle.h"
#include "platform/format.h"
#include "platform/user_defaults.h"

// The window; the scan stands in a file of its own beside this one.

namespace lumo {

using platform::stringWithFormat;

namespace {

constexpr const char* kWindow = "FindLumoJunivaServerWindowController";
// For the queues' labels where the bundle has no identifier.
constexpr const char* kApplicationIdentifier = "com.lumo.LumoBrowser";
constexpr int kScanButtonTag = 3000;
constexpr int kFirstChoiceTag = 5000;
constexpr int kChoices = 10;
constexpr platform::Color kBlack{0, 0, 0, 1};

std::string identifierOf(const platform::Bundle& bundle) {
  const auto identifier = bundle.bundleIdentifier();
  return identifier && !identifier->empty() ? *identifier : kApplicationIdentifier;
}

bool isControl(const platform::View& view) {
  switch (view.kind()) {
    case platform::ViewKind::Button:
    case platform::ViewKind::TextField:
    case platform::ViewKind::SegmentedControl:
    case platform::ViewKind::ImageView:
      return true;
    default:
      return false;
  }
}

}  // namespace

std::shared_ptr<FindLumoJunivaServerWindowController> FindLumoJunivaServerWindowController::make(
    platform::Platform& platform, LocalNetwork network) {
  // A worker may drop the last reference; the window must not go on its thread.
  std::shared_ptr<FindLumoJunivaServerWindowController> made(
      new FindLumoJunivaServerWindowController(platform, std::move(network)),
      [&main = platform.dispatch.main()](FindLumoJunivaServerWindowController* controller) {
        if (main.isCurrent()) {
          delete controller;
        } else {
          main.async([controller] { delete controller; });
        }
      });
  made->awakeFromNib();
  return made;
}

FindLumoJunivaServerWindowController::FindLumoJunivaServerWindowController(platform::Platform& platform,
                                                                           LocalNetwork network)
    : platform_(platform),
      network_(std::move(network)),
      currentTaskQueue_(platform.dispatch,
                        stringWithFormat("%@.curTaskQueue", identifierOf(platform.bundle))),
      window_(platform.windows.loadWindow(kWindow)) {}

FindLumoJunivaServerWindowController::~FindLumoJunivaServerWindowController() = default;

platform::SerialQueue FindLumoJunivaServerWindowController::mylittleQueue(const std::string& name) const {
  return platform::SerialQueue(platform_.dispatch,
                               identifierOf(platform_.bundle) + stringWithFormat(".littleQueue.%@", name));
}

void FindLumoJunivaServerWindowController::awakeFromNib() {
  connectActions();
  fStatusColor = kBlack;
  const platform::Bundle& bundle = platform_.bundle;
  fVersionString =
      stringWithFormat("%@ - v%@ (%@)", bundle.bundleName(), bundle.infoString("CFBundleShortVersionString"),
                       bundle.infoString("CFBundleVersion"));
  showText("fVersionString", fVersionString);
  ibHideChoiceButtons(nullptr);
  setScanButtonString("Scan for Juniva Server(s)...");
  onGlobal(platform::QualityOfService::Default, platform::Millis{0}, [this] {
    const std::string address = getLocalIPAddress(network_);
    onMain([this, address] {
      fLocalIPAddressString = address;
      fBottomLineString = stringWithFormat("This localhost IP is: %@", address);
      showText("fBottomLineString", fBottomLineString);
    });
    const std::string info = getIPInfo();
    onMain([this, info] {
      fBottomLineString = info;
      showText("fBottomLineString", fBottomLineString);
    });
  });
}

void FindLumoJunivaServerWindowController::connectActions() {
  if (window_ == nullptr) {
    return;
  }
  window_->setAction("ibDoTestButton:", [this](platform::View& sender) { ibDoTestButton(&sender); });
  window_->setAction("ibCloseButton:", [this](platform::View& sender) { ibCloseButton(&sender); });
}

void FindLumoJunivaServerWindowController::onMain(std::function<void()> work) {
  platform_.dispatch.main().async([weak = weak_from_this(), work = std::move(work)] {
    if (const auto self = weak.lock()) {
      work();
    }
  });
}

void FindLumoJunivaServerWindowController::onGlobal(platform::QualityOfService qos, platform::Millis delay,
                                                    std::function<void()> work) {
  platform_.dispatch.global(qos).after(delay, [weak = weak_from_this(), work = std::move(work)] {
    if (const auto self = weak.lock()) {
      work();
    }
  });
}

std::string FindLumoJunivaServerWindowController::getLocalIPAddress(const LocalNetwork& network) {
  return localIPAddress(network);
}

std::optional<std::string> FindLumoJunivaServerWindowController::getWifiName(const LocalNetwork& network) {
  return wifiName(network);
}

std::string FindLumoJunivaServerWindowController::getIPInfo() const {
  const auto name = getWifiName(network_);
  return networkSummary(getLocalIPAddress(network_), name);
}

platform::Button* FindLumoJunivaServerWindowController::scanButton() const {
  return window_ == nullptr ? nullptr : dynamic_cast<platform::Button*>(window_->viewWithTag(kScanButtonTag));
}

void FindLumoJunivaServerWindowController::showText(const char* view, const std::string& text) {
  if (window_ == nullptr) {
    return;
  }
  if (auto* field = dynamic_cast<platform::TextField*>(window_->viewNamed(view))) {
    field->setStringValue(text);
  }
}

void FindLumoJunivaServerWindowController::showProgress(double answers) {
  if (window_ == nullptr) {
    return;
  }
  if (auto* bar = dynamic_cast<platform::ProgressIndicator*>(window_->viewNamed("fProgressIndicator"))) {
    bar->setMinValue(0);
    bar->setMaxValue(static_cast<double>(fMaxNumberOfIpAddressToCheck.load()));
    bar->setDoubleValue(answers);
  }
}

void FindLumoJunivaServerWindowController::setScanButtonString(const std::string& title) {
  onMain([this, title] {
    if (platform::Button* button = scanButton()) {
      button->setTitle(title);
    }
  });
}

void FindLumoJunivaServerWindowController::ibHideChoiceButtons(platform::View* /*sender*/) {
  onMain([this] {
    for (int index = 0; window_ != nullptr && index < kChoices; ++index) {
      platform::View* view = window_->viewWithTag(kFirstChoiceTag + index);
      if (view != nullptr && isControl(*view)) {
        view->setHidden(true);
      }
    }
  });
}

void FindLumoJunivaServerWindowController::enableDisableButton(platform::View* /*sender*/) {
  onMain([this] {
    if (platform::Button* button = scanButton()) {
      button->setEnabled(!fIsSearchingForJunivaServers);
    }
  });
}

void FindLumoJunivaServerWindowController::setStatusString(const std::string& text) {
  onMain([this, text] {
    fScanningResultString = text;
    showText("fScanningResultString", text);
    if (platform::View* line = window_ == nullptr ? nullptr : window_->viewNamed("fScanningResultString")) {
      line->setHidden(text.empty());
    }
  });
}

void FindLumoJunivaServerWindowController::updateStatus1(const std::string& text) {
  setStatusString(text);
  updateStatus_forTag(text, 90);
}

void FindLumoJunivaServerWindowController::updateStatus2(const std::string& text) {
  updateStatus_forTag(text, 91);
}

void FindLumoJunivaServerWindowController::updateStatus3(const std::string& text) {
  updateStatus_forTag(text, 92);
}

void FindLumoJunivaServerWindowController::setStatusColor(platform::Color /*color*/) {
  onMain([this] { fStatusColor = kBlack; });
}

void FindLumoJunivaServerWindowController::updateStatus_forTag(const std::string& /*text*/, int /*tag*/) {}

void FindLumoJunivaServerWindowController::updateActivityView() {}

void FindLumoJunivaServerWindowController::enableDisableButton2(platform::View* /*sender*/) {}

void FindLumoJunivaServerWindowController::updateNetworkActivityIndicator() {}

void FindLumoJunivaServerWindowController::ibDoTestButton(platform::View* sender) {
  ibTestAction(sender);
}

void FindLumoJunivaServerWindowController::showResults() {
  const auto found = fFoundList();
  if (!found || found->empty()) {
    return;
  }
  const std::string localAddress = getLocalIPAddress(network_);
  // Two steps, so that the buttons come after what is posted now.
  onMain([this, found = *found, localAddress] {
    onMain([this, found, localAddress] { fillChoiceButtons(found, localAddress); });
  });
}

void FindLumoJunivaServerWindowController::fillChoiceButtons(const platform::Array& found,
                                                             const std::string& localAddress) {
  std::uint16_t index = 0;
  for (const platform::PropertyList& server : found) {
    platform::View* view = window_ == nullptr ? nullptr : window_->viewWithTag(kFirstChoiceTag + index++);
    auto* button = dynamic_cast<platform::Button*>(view);
    const auto* record = server.as<platform::Dictionary>();
    if (button != nullptr && record != nullptr) {
      button->setTitle(choiceTitle(*record, localAddress));
      button->setHidden(false);
    }
  }
  updateStatus1("");
}

void FindLumoJunivaServerWindowController::ibCloseButton(platform::View* sender) {
  const bool isChoice = sender != nullptr && isControl(*sender);
  const std::int16_t index = isChoice ? choiceIndex(sender->tag().value_or(0)) : std::int16_t{-1};
  if (const auto found = fFoundList(); found && !found->empty()) {
    fArrayOfJunivaServers = *found;
  }
  int code = 0;
  if (auto record = chosenRecord(fArrayOfJunivaServers, index)) {
    platform_.defaults.setObject(std::move(record), prefSelectedJunivaServerInfo);
    platform_.defaults.synchronize();
    code = 1;
  }
  if (platform::Window* parent = window_ == nullptr ? nullptr : window_->sheetParent()) {
    // What follows may drop this controller.
    parent->endSheet(*window_, code);
  }
}

}  // namespace lumo
