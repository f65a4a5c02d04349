#pragma once

#include <functional>
#include <memory>
#include <string>

#include "discovery/FindLumoJunivaServerWindowController.h"
#include "platform/http_client.h"
#include "platform/platform.h"
#include "platform/queue.h"
#include "platform/view.h"
#include "platform/window.h"
#include "preferences/PreferenceForm.h"
#include "preferences/ThisComputer.h"

namespace lumo {

// The operator's settings, a sheet from the window description "MyPreferencesWindowController": the version
// and network lines, a test of the connection to the photo server with its status light, the search for
// servers, every preference that an operator sets, the two resets, and a close button. Main queue only, but
// for what says otherwise; made anew at each opening by the browser window, which shows it. A test that runs
// when the controller ends shows nothing any more.
class MyPreferencesWindowController final : public platform::WindowDelegate {
 public:
  // What the controller of the window below does with the command of that name; empty when it has none.
  using ShowNavBar = std::function<void()>;

  // Loads the window and sets it up: both lines, and the first test of the connection, follow from a worker
  // thread. `previous` is the controller of the opening before, whose task queue this one shares; null for
  // none. `platform` must outlive the controller and its work.
  explicit MyPreferencesWindowController(platform::Platform& platform, ShowNavBar showNavBarBelow = {},
                                         const MyPreferencesWindowController* previous = nullptr,
                                         ThisComputer computer = thisComputer());
  ~MyPreferencesWindowController() override;
  MyPreferencesWindowController(const MyPreferencesWindowController&) = delete;
  MyPreferencesWindowController& operator=(const MyPreferencesWindowController&) = delete;

  // The sheet, or null when there is no description of it.
  platform::Window* window() const { return window_.get(); }

  // Whether a test of the connection runs.
  bool fIsChecking = false;
  // Shows the result of the last test; null where the description has no such thing.
  platform::ImageView* fStatus1View = nullptr;
  // The network line and the version line, empty until they are known.
  std::string fIpInfoString;
  std::string fVersionString;
  // The finder of the last search.
  std::shared_ptr<FindLumoJunivaServerWindowController> fFindJunivaController;

  // The one queue on which all connection tests are prepared. Any thread.
  platform::SerialQueue currentTaskQueue1() const { return currentTaskQueue1_; }

  // This computer's address for people, "unknown" for none, and the line about its network. Both block: not
  // on the main queue.
  std::string getIPAddress() const;
  std::string getIPInfo() const;

  // Gives the window below its level as the preferences have it.
  void ibSetWindowLevel();
  // Has the window below apply its modes again. Nothing happens when this one is no sheet; where there is no
  // window at all, the notification "ibshownavbarNotification" asks for it.
  void ibShowNavBar();
  // Ends the sheet with 1.
  void ibCloseButton();
  // Asks, then gives the pages with a focus, or the paths that end a session, their factory value.
  void ibResetToFactory1();
  void ibResetToFactory2();
  // Tests the connection to the server, 5.0 s at most: whatever it answers, it can be reached. While a test
  // runs another one is refused with two beeps.
  void ibTestConnection();
  // Shows the server finder on this window. The server that is chosen there becomes the server's address.
  void ibSearchJunivaServer();

  // They only log. Nothing on this platform calls the first and the last.
  void windowDidExpose();
  void windowWillBeginSheet();
  void URLSession_downloadTask_didWriteData_totalBytesWritten_totalBytesExpectedToWrite();

  // Escape closes the sheet as its button does.
  bool windowShouldClose(platform::Window& window) override;
  void windowDidResize(platform::Window& /*window*/) override {}
  void windowDidEnterFullScreen(platform::Window& /*window*/) override {}

 private:
  void connectActions();
  void windowDidLoad();
  // Posts work with the window, which is dropped when the controller has gone. Any thread.
  std::function<void(platform::Block)> toMain() const;
  void showVersion(const std::string& text);
  void showIpInfo(const std::string& text);
  void showText(const char* view, const std::string& text);
  void showStatus(const std::string& image);
  void startTest();
  void testEnded(const platform::HttpResult& result);
  void serverChosen();
  void preferenceChanged(const std::string& key);
  void refresh(const char* key);
  void askToReset(const char* operation, const char* informativeText, std::function<void()> reset);
  void resetEndOfSession();

  platform::Platform& platform_;
  const ShowNavBar showNavBarBelow_;
  const ThisComputer computer_;
  platform::SerialQueue currentTaskQueue1_;
  const std::shared_ptr<void> alive_ = std::make_shared<int>(0);
  std::unique_ptr<platform::Window> window_;
  std::unique_ptr<PreferenceForm> form_;
};

}  // namespace lumo
