#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "browser/ReturnPage.h"
#include "browser/Sender.h"
#include "browser/ServerRoutes.h"
#include "platform/notification_center.h"
#include "platform/platform.h"
#include "platform/queue.h"
#include "platform/web_view.h"
#include "platform/window.h"

namespace lumo {

class LegacyWebViewDelegate;
class MyDragDropView;
class MyPreferencesWindowController;

// A rule that makes a view this much higher than its superview, in logical pixels.
struct LayoutConstraint {
  double constant = 0;
};

// The kiosk's browser window: one window that shows the photo server's application, its two web views, its
// navigation bar, the layer above the page and the window modes. Main queue only, but for what says
// otherwise.
//
// Every command acts on a web view only if it exists and is not hidden, the legacy one first. As set up here
// the legacy view is hidden, so only ibWKWebView takes part.
class MyWebViewWindowController final : public platform::WindowDelegate, public platform::WebViewDelegate {
 public:
  // Loads the window from the description "MyWebViewWindowController" and sets it up; it is not shown yet.
  // `platform` must outlive the controller. Without a description the controller has no window and its
  // commands do nothing.
  explicit MyWebViewWindowController(platform::Platform& platform);
  // A second window, which shares the class-wide queue with its owner.
  MyWebViewWindowController(platform::Platform& platform, const MyWebViewWindowController& owner);
  ~MyWebViewWindowController() override;
  MyWebViewWindowController(const MyWebViewWindowController&) = delete;
  MyWebViewWindowController& operator=(const MyWebViewWindowController&) = delete;

  // The window, or null when there is no description of it.
  platform::Window* window() const { return window_.get(); }
  void showWindow();

  // Outlets, null where the window description has no such thing.
  platform::TextField* ibTextField = nullptr;
  platform::WebView* ibWebView = nullptr;
  platform::WebView* ibWKWebView = nullptr;
  platform::ProgressIndicator* ibProgressIndicator = nullptr;
  platform::ProgressIndicator* ibProgressIndicator2 = nullptr;
  platform::Overlay* ibChildWindow = nullptr;
  // What takes drops, owned by its place above the page.
  std::weak_ptr<MyDragDropView> ibDragDropView;
  std::unique_ptr<MyPreferencesWindowController> myPreferencesWindowController;
  // The second window, of the newest page of the legacy view that asked for one.
  std::unique_ptr<MyWebViewWindowController> myWebViewWindowController;
  // The rule that the web view's height follows, and its constant as it was loaded. While a receipt is laid
  // out the constant is what the view then has more than its superview.
  std::weak_ptr<LayoutConstraint> ibWebViewContraintHeight;
  std::atomic<double> ibWebViewOriginalConstant{0};
  // True until the first page of the legacy view has loaded.
  std::atomic<bool> fFirstTime{false};
  // True from the start of a receipt until the last one that was started has been printed.
  std::atomic<bool> fIsPrintingReceipt{false};

  // The one queue that all browser windows share for the printing sequence. Any thread.
  platform::SerialQueue webviewProcessQueue() const { return webviewProcessQueue_; }

  // Window modes.
  // Applies the window-mode preferences, read anew at each call.
  void adjustWebViewForNavigationBar(const Sender& sender);
  void ibShowNavBar(const Sender& sender);
  void handleShowNavBarNotification(const platform::Notification& notification);
  // Applies prefForceFullScreen: posts the change of the window's frame to the main queue.
  void makeWindowFullScreen();

  // Receipts. Lays the page out as a receipt, pictures it, goes back to `page` and prints the picture, in the
  // order of the calls, behind the layer that tells the customer so. Without a picture nothing is printed.
  // Any thread, while the controller lives.
  void doPrintThisPageAndReturnToPage(const ReturnPage& page);
  // Loads `page` into ibWKWebView, without time-out and header; where there is none, an alert says so. Any
  // thread, while the controller lives.
  void returnToLandingPageAfterPrinting(const ReturnPage& page);

  // The end of an order: each waits, sends the release message and then has the application end. Any thread.
  // `fields` are the header fields of the answer that released the order.
  void handleTerminateWithRegistrationOrdersPhotoStationData(const platform::HeaderFields& fields);
  // Answers YES and sends nothing.
  bool handleTerminateWithRegistrationOrdersPhotoStationDataLOOP(const platform::HeaderFields& fields);
  void handleTerminateWithRegistrationSave();
  // Observes the notification that the person leaves without saving an order.
  void handleTerminateWithOutRegistrationSave(const platform::Notification& notification);
  // Sends the browser to the station's order list instead; `data` holds the failing address under
  // "NSErrorFailingURLKey", and nothing happens without one.
  void handleTerminateWithRegistrationOrdersConfirmSaveData(const platform::Dictionary& data);

  // Commands. A sender that is an address counts only for ibGoButton and only when no address is stored.
  void ibGoButton(const Sender& sender);
  void ibGoButtonWK(const Sender& sender);
  void ibHomeButton(const Sender& sender);
  void ibBackButton(const Sender& sender);
  void ibForwardButton(const Sender& sender);
  // Reloads the stored address; the text in the field is not used.
  void ibTextButton(const Sender& sender);
  void ibToolbarGoButton(const Sender& sender);
  void ibToolbarTextField(const Sender& sender);
  void ibToolbarSettingsButton(const Sender& sender);
  void ibToolbarSegmentedControl1(const Sender& sender);
  // Shows the preferences as a sheet, one at a time.
  void ibOpenPreferences(const Sender& sender);
  // The end of a sheet that was shown by the old application-level call.
  void didEndSheet2_returnCode_contextInfo(platform::Window& sheet, long returnCode);
  // Whether this kiosk has a camera to scan with. It has none.
  bool hasCamera() const { return false; }

  // The load indicator. Each change reaches it a little later, through a private queue and the main queue;
  // one that a newer change has overtaken is dropped. Any thread. `fraction` is 0.0 to 1.0.
  void startIndicator();
  void stopIndicator();
  void updateIndicator(double fraction);
  // For the progress notifications of the legacy view, which nothing registers them for.
  void handleWebViewProgressStarted(const platform::Notification& notification);
  void handleWebViewProgressFinished(const platform::Notification& notification);
  void handleWebViewProgressChanged(const platform::Notification& notification);
  // Begins a scan, which the station's scan program carries on.
  void doTheScanProcess();

  // Shows the page that tells of `error` in every visible web view, unless a newer address was asked for
  // meanwhile; without an error only a line in the log. The settings follow 500 ms later where they are
  // wanted. Any thread.
  void handleWebViewError(const std::optional<platform::WebError>& error);

  // Window delegate.
  bool windowShouldClose(platform::Window& window) override;
  void windowDidResize(platform::Window& window) override;
  void windowDidEnterFullScreen(platform::Window& window) override;

  // Web view delegate.
  void webView_decidePolicyForNavigationAction_decisionHandler(platform::WebView& view,
                                                               const platform::NavigationAction& action,
                                                               platform::DecisionHandler decide) override;
  void webView_decidePolicyForNavigationResponse_decisionHandler(platform::WebView& view,
                                                                 const platform::NavigationResponse& response,
                                                                 platform::DecisionHandler decide) override;
  void webView_didStartProvisionalNavigation(platform::WebView& view) override;
  void webView_didFinishNavigation(platform::WebView& view) override;
  void webView_didFailProvisionalNavigation_withError(platform::WebView& view,
                                                      const platform::WebError& error) override;
  void webView_didFailNavigation_withError(platform::WebView& view, const platform::WebError& error) override;
  void webViewWebContentProcessDidTerminate(platform::WebView& view) override;
  void webView_runJavaScriptAlertPanelWithMessage_initiatedByFrame_completionHandler(
      platform::WebView& view, const std::string& message, const platform::UrlRequest& frameRequest,
      platform::Block done) override;
  void webView_runJavaScriptConfirmPanelWithMessage_initiatedByFrame_completionHandler(
      platform::WebView& view, const std::string& message, const platform::UrlRequest& frameRequest,
      std::function<void(bool)> done) override;
  void webView_runJavaScriptTextInputPanelWithPrompt_defaultText_initiatedByFrame_completionHandler(
      platform::WebView& view, const std::string& prompt, const std::string& defaultText,
      const platform::UrlRequest& frameRequest,
      std::function<void(std::optional<std::string>)> done) override;
  platform::WebView* webView_createWebViewWithRequest(platform::WebView& view,
                                                      const platform::UrlRequest& request) override;
  void webViewDidClose(platform::WebView& view) override;

 private:
  MyWebViewWindowController(platform::Platform& platform, platform::SerialQueue queue);

  void connectOutlets();
  void connectActions();
  void awakeFromNib();
  void windowDidLoad();
  void setUpUserAgents();
  void setUpOverlay();
  // Something to do with this controller, on the main queue. The function that it is given to may be called
  // on any thread and outlive the controller: then it does nothing.
  using Act = std::function<void(MyWebViewWindowController&)>;
  std::function<void(Act)> mainHandle();

  struct PrintStep;
  void startReceipt(const ReturnPage& page);
  void layOutReceipt();
  void queueOverlayStep();
  void showReceiptOverlay();
  void receiptPictured(std::optional<platform::Image> image, const ReturnPage& page);
  void queuePrintStep(std::optional<platform::Image> image);
  static void runPrintScript(const PrintStep& step);
  void askForPrinter(const PrintStep& step);
  void receiptEnded();
  // What turns while a receipt is printed: the overlay's image, else all of the overlay.
  platform::View& receiptProgressView();

  // Prints the page as a receipt when it has had the time to draw itself; later receipts wait their turn.
  void printReceiptSoon(const ReturnPage& page);
  void focusFieldSoon(platform::WebView& view);
  // The web views that commands act on: those that exist and are not hidden, the legacy one first.
  std::vector<platform::WebView*> visibleWebViews() const;
  void changeIndicator(std::function<void(platform::ProgressIndicator&)> change);

  platform::Platform& platform_;
  platform::SerialQueue webviewProcessQueue_;
  std::unique_ptr<platform::Window> window_;
  std::unique_ptr<platform::WebView> madeWebView_;
  std::unique_ptr<LegacyWebViewDelegate> legacyDelegate_;
  // Goes before the window whose view it works in.
  std::shared_ptr<MyDragDropView> dragDropView_;
  std::vector<platform::NotificationCenter::Token> observers_;
  // While a toggle of the full-screen state waits on the main queue.
  bool toggleIsPosted_ = false;
  // How many pages the commands have asked for.
  std::atomic<std::uint64_t> loads_{0};
  // How many changes of the indicator were asked for, and the newest one that it shows (main queue only).
  std::atomic<std::uint64_t> indicatorChanges_{0};
  std::uint64_t shownIndicatorChange_ = 0;
  // Owns what the outlet of the web view's height shows.
  std::shared_ptr<LayoutConstraint> webViewHeight_;

  // Receipts that were started and have not been printed yet.
  int receipts_ = 0;
  // Those of them whose page has not been pictured yet, and how the page was laid out before the first.
  int receiptsToPicture_ = 0;
  platform::Rect frameBeforeReceipts_;
  platform::Rect superviewBeforeReceipts_;
  // The window's level before the first receipt.
  int levelBeforeReceipts_ = platform::kNormalWindowLevel;

  // Expires with the controller, for what is posted to the main queue.
  std::shared_ptr<int> alive_ = std::make_shared<int>(0);
};

}  // namespace lumo
