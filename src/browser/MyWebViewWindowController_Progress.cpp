#include "browser/MyWebViewWindowController.h"
#include "platform/log.h"

// The indicator that shows that a page is on its way.

namespace lumo {

using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";
constexpr double kLoading = 0.5;

}  // namespace

void MyWebViewWindowController::changeIndicator(std::function<void(platform::ProgressIndicator&)> change) {
  const std::uint64_t number = ++indicatorChanges_;
  platform::SerialQueue(platform_.dispatch)
      .async(
          [this, &platform = platform_, alive = std::weak_ptr(alive_), number, change = std::move(change)] {
            platform.dispatch.main().async([this, alive, number, change] {
              // Each change has a queue of its own and may be overtaken: a start that comes after its stop
              // would leave the indicator on for ever.
              if (!alive.expired() && ibProgressIndicator != nullptr && number > shownIndicatorChange_) {
                shownIndicatorChange_ = number;
                change(*ibProgressIndicator);
              }
            });
          });
}

void MyWebViewWindowController::startIndicator() {
  changeIndicator([](platform::ProgressIndicator& indicator) {
    indicator.setMinValue(0);
    indicator.setMaxValue(1);
    indicator.setDoubleValue(kLoading);
    indicator.startAnimation();
  });
}

void MyWebViewWindowController::stopIndicator() {
  changeIndicator([](platform::ProgressIndicator& indicator) { indicator.stopAnimation(); });
}

void MyWebViewWindowController::updateIndicator(double fraction) {
  changeIndicator([fraction](platform::ProgressIndicator& indicator) { indicator.setDoubleValue(fraction); });
}

void MyWebViewWindowController::handleWebViewProgressStarted(const platform::Notification& /*note*/) {
  NSLog("%@->%@....TURN ON PROGRESSSSSSSSSS...", kClass, "handleWebViewProgressStarted:");
  startIndicator();
}

void MyWebViewWindowController::handleWebViewProgressFinished(const platform::Notification& /*note*/) {
  NSLog("%@->%@....TURN OFFFFFFFFF PROGRESSSSSSSSSS...", kClass, "handleWebViewProgressFinished:");
  stopIndicator();
}

void MyWebViewWindowController::handleWebViewProgressChanged(const platform::Notification& /*note*/) {
  const double progress = ibWebView == nullptr ? 0 : ibWebView->estimatedProgress();
  NSLog("%@->%@....UPDATE Progress...%5.2f%", kClass, "handleWebViewProgressChanged:", 100 * progress);
  updateIndicator(progress);
}

}  // namespace lumo
