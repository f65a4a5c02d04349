#include <utility>

#include "browser/MyWebViewWindowController.h"
#include "browser/ReceiptLayout.h"
#include "browser/ReceiptPrint.h"
#include "platform/log.h"
#include "support/LumoNSViewAdditions.h"
#include "support/ZELKOR_NSStringAdditions.h"

// Receipts. The page is pictured at once; the overlay and the printing take their turns on the class-wide
// queue, which is occupied until a receipt is printed, also while an alert asks for a printer. No thread
// waits for that: the receipt's Hold goes along from block to block, and whoever drops it ends the receipt.

namespace lumo {

using platform::Hold;
using platform::NSLog;

namespace {

constexpr const char* kClass = "MyWebViewWindowController";
constexpr platform::Millis kOverlayWait{500};
constexpr const char* kPrintScript = "printtocups2.sh";
// So much of what the script says is logged.
constexpr std::size_t kLoggedOutput = 200;
constexpr const char* kAlertBlock =
    "-[MyWebViewWindowController doPrintThisPageAndReturnToPage:]_block_invoke";

}  // namespace

// A receipt that has been written and waits for the script. With the last copy of `receipt` it has ended.
struct MyWebViewWindowController::PrintStep {
  platform::Platform* platform;
  std::function<void(Act)> onMain;
  std::string commandLine;
  Hold receipt;
};

std::function<void(MyWebViewWindowController::Act)> MyWebViewWindowController::mainHandle() {
  return [this, &platform = platform_, alive = std::weak_ptr(alive_)](Act act) {
    platform.dispatch.main().async([this, alive, act = std::move(act)] {
      if (!alive.expired()) {
        act(*this);
      }
    });
  };
}

void MyWebViewWindowController::doPrintThisPageAndReturnToPage(const ReturnPage& page) {
  NSLog("%@->%@....", kClass, "doPrintThisPageAndReturnToPage:");
  mainHandle()([page](MyWebViewWindowController& browser) { browser.startReceipt(page); });
}

void MyWebViewWindowController::startReceipt(const ReturnPage& page) {
  if (window_ == nullptr) {
    return;
  }
  fIsPrintingReceipt = true;
  if (receipts_++ == 0) {
    levelBeforeReceipts_ = window_->level();
  }
  ++receiptsToPicture_;
  if (ibWKWebView != nullptr) {
    layOutReceipt();
  }
  queueOverlayStep();
  if (ibWKWebView == nullptr) {
    receiptPictured(std::nullopt, page);
    return;
  }
  ibWKWebView->takeSnapshot(
      [this, alive = std::weak_ptr(alive_), page](std::optional<platform::Image> image) {
        if (!alive.expired()) {
          receiptPictured(std::move(image), page);
        }
      });
}

void MyWebViewWindowController::layOutReceipt() {
  const platform::View* superview = ibWKWebView->superview();
  const platform::Rect present = superview == nullptr ? platform::Rect{} : superview->frame();
  // Before the second receipt the page may still be laid out for the first.
  if (receiptsToPicture_ == 1) {
    frameBeforeReceipts_ = ibWKWebView->frame();
    superviewBeforeReceipts_ = present;
  }
  ibWKWebView->setFrame(receiptFrame(frameBeforeReceipts_, present));
  if (const auto height = ibWebViewContraintHeight.lock()) {
    height->constant = kReceiptHeight - present.height;
  }
}

void MyWebViewWindowController::queueOverlayStep() {
  webviewProcessQueue_.asyncHolding([onMain = mainHandle()](const Hold& hold) {
    onMain([hold](MyWebViewWindowController& browser) {
      browser.showReceiptOverlay();
      browser.platform_.dispatch.main().after(kOverlayWait,
                                              [&browser, alive = std::weak_ptr(browser.alive_), hold] {
                                                if (!alive.expired()) {
                                                  browser.window_->makeKeyAndOrderFront();
                                                }
                                              });
    });
  });
}

void MyWebViewWindowController::showReceiptOverlay() {
  window_->setLevel(platform::kNormalWindowLevel);
  if (ibChildWindow == nullptr) {
    return;
  }
  ibChildWindow->orderFrontRegardless();
  ibChildWindow->setFrame(window_->frame());
  LumoNSViewAdditions::rotateViewWithCompletionBlock(platform_.dispatch, receiptProgressView(), [] {});
}

platform::View& MyWebViewWindowController::receiptProgressView() {
  platform::View& content = ibChildWindow->contentView();
  platform::View* image = LumoNSViewAdditions::findViewWithIdentifier_viewType(content, "progressimage",
                                                                               platform::ViewKind::ImageView);
  return image == nullptr ? content : *image;
}

void MyWebViewWindowController::receiptPictured(std::optional<platform::Image> image,
                                                const ReturnPage& page) {
  if (--receiptsToPicture_ == 0 && ibWKWebView != nullptr) {
    const platform::View* superview = ibWKWebView->superview();
    ibWKWebView->setFrame(
        frameAfterReceipt(frameBeforeReceipts_, superviewBeforeReceipts_,
                          superview == nullptr ? superviewBeforeReceipts_ : superview->frame()));
    if (const auto height = ibWebViewContraintHeight.lock()) {
      height->constant = ibWebViewOriginalConstant;
    }
  }
  returnToLandingPageAfterPrinting(page);
  queuePrintStep(std::move(image));
}

void MyWebViewWindowController::queuePrintStep(std::optional<platform::Image> image) {
  auto picture = std::make_shared<std::optional<platform::Image>>(std::move(image));
  webviewProcessQueue_.asyncHolding([&platform = platform_, onMain = mainHandle(), picture](Hold hold) {
    // The queue stays occupied until the end is noted on the main queue.
    const Hold receipt(nullptr, [onMain, hold = std::move(hold)](void*) {
      onMain([hold](MyWebViewWindowController& browser) { browser.receiptEnded(); });
    });
    const std::string snapshot = snapshotPath();
    const bool written = *picture && writeSnapshot(**picture, snapshot);
    // The script may take its time, and a receipt is a large picture.
    picture->reset();
    if (!written) {
      NSLog("there is no picture of this receipt, so nothing is printed");
      return;
    }
    const auto script = ZELKOR_NSStringAdditions::getPathToScript(kPrintScript, platform.bundle);
    if (const auto commandLine = printCommandLine(script, snapshot)) {
      runPrintScript({&platform, onMain, *commandLine, receipt});
    }
  });
}

void MyWebViewWindowController::runPrintScript(const PrintStep& step) {
  const auto output = ZELKOR_NSStringAdditions::outputWhenRunAsShellCommand(step.commandLine);
  NSLog("the print script said: %@", output ? std::optional(output->substr(0, kLoggedOutput)) : output);
  if (reportsNoPrinter(output)) {
    step.onMain([step](MyWebViewWindowController& browser) { browser.askForPrinter(step); });
  }
}

void MyWebViewWindowController::askForPrinter(const PrintStep& step) {
  const bool isCovered = ibChildWindow != nullptr && ibChildWindow->isVisible();
  platform::AlertParent& parent = isCovered ? static_cast<platform::AlertParent&>(*ibChildWindow) : *window_;
  // Whoever keeps the completion after the answer must not keep the queue.
  const auto waiting = std::make_shared<std::optional<PrintStep>>(step);
  parent.beginAlert(noPrinterAlert(), [waiting](const platform::AlertResponse& response) {
    NSLog("%s with response %ld", kAlertBlock, static_cast<long>(response.code));
    const std::optional<PrintStep> answered = std::exchange(*waiting, std::nullopt);
    if (answered && response.code == kTryAgain) {
      answered->platform->dispatch.global().async([step = *answered] { runPrintScript(step); });
    }
  });
}

void MyWebViewWindowController::receiptEnded() {
  if (--receipts_ > 0) {
    return;
  }
  fIsPrintingReceipt = false;
  if (window_->level() == platform::kNormalWindowLevel &&
      levelBeforeReceipts_ != platform::kNormalWindowLevel) {
    window_->setLevel(levelBeforeReceipts_);
  }
  if (ibChildWindow == nullptr) {
    return;
  }
  // What turns unseen would still be drawn anew with every frame.
  platform::View& progress = receiptProgressView();
  for (const std::string& key : progress.animationKeys()) {
    progress.removeAnimation(key);
  }
  ibChildWindow->orderOut();
}

void MyWebViewWindowController::returnToLandingPageAfterPrinting(const ReturnPage& page) {
  NSLog("%@->%@....", kClass, "returnToLandingPageAfterPrinting:");
  mainHandle()([url = returnUrl(page)](MyWebViewWindowController& browser) {
    if (!url) {
      if (browser.window_ != nullptr) {
        browser.window_->beginAlert(noReturnPageAlert(), [](const platform::AlertResponse&) {});
      }
    } else if (browser.ibWKWebView != nullptr) {
      browser.ibWKWebView->load({*url});
    }
  });
}

}  // namespace lumo
