#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/contract/engine_test.h"
#include "tests/fakes/captured_log.h"

// What the engine asks its application, and what a page gets for it in a kiosk.

namespace {

using platform::PropertyList;
using testing::IsEmpty;

class KioskAnswersTest : public EngineTest {
 protected:
  // Runs a script that sets `answer` at some time, and waits for that.
  std::string answerTo(const std::string& script) {
    value("answer = ''; " + script + "; undefined");
    std::string found;
    EXPECT_TRUE(harness.runUntil([&] {
      const auto present = value("answer");
      const std::string* text = present ? present->as<std::string>() : nullptr;
      found = text == nullptr ? "" : *text;
      return !found.empty();
    })) << script;
    return found;
  }
  bool logged(const std::string& text) {
    return harness.runUntil([&] { return log.contains("the kiosk does not allow " + text); });
  }
  // The toolkit's windows that can be seen, the test's own left out.
  int otherWindows() {
    int count = 0;
    GList* windows = gtk_window_list_toplevels();
    for (GList* entry = windows; entry != nullptr; entry = entry->next) {
      count += GTK_WINDOW(entry->data) != LinuxToolkit::toplevel(*window) &&
               gtk_widget_get_mapped(GTK_WIDGET(entry->data)) != FALSE;
    }
    g_list_free(windows);
    return count;
  }

  fakes::CapturedLog log;
};

TEST_F(KioskAnswersTest, ThePlaceOfThisComputerIsDenied) {
  peer.start();
  load("/");
  EXPECT_EQ(answerTo("navigator.geolocation.getCurrentPosition(() => answer = 'place', "
                     "error => answer = 'error ' + error.code)"),
            "error 1");
  EXPECT_TRUE(logged("WebKitGeolocationPermissionRequest"));
}

TEST_F(KioskAnswersTest, CameraAndMicrophoneAreDenied) {
  peer.start();
  load("/");
  EXPECT_EQ(answerTo("navigator.mediaDevices ? navigator.mediaDevices.getUserMedia({video: true}).then("
                     "() => answer = 'camera', error => answer = 'denied') : answer = 'denied'"),
            "denied");
}

TEST_F(KioskAnswersTest, NotificationsAreDenied) {
  peer.start();
  load("/");
  EXPECT_EQ(answerTo("Notification.requestPermission().then(given => answer = given)"), "denied");
}

// No page gets so far: the one has no permission, the other is switched off.
TEST_F(KioskAnswersTest, WhatNoPageCanAskForIsAnsweredAllTheSame) {
  gboolean answered = FALSE;
  g_signal_emit_by_name(engine(), "show-notification", nullptr, &answered);
  EXPECT_TRUE(answered);
  EXPECT_TRUE(logged("a page to show notifications"));
  answered = FALSE;
  g_signal_emit_by_name(engine(), "enter-fullscreen", &answered);
  EXPECT_TRUE(answered);
  EXPECT_TRUE(logged("a page to cover the whole screen"));
}

TEST_F(KioskAnswersTest, APageThatWantsANameAndAPasswordIsShownAsItIs) {
  peer.answer("/closed",
              "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"Back office\"\r\n"
              "Content-Type: text/html\r\nContent-Length: 6\r\nConnection: close\r\n\r\nclosed");
  peer.start();
  load("/closed");
  EXPECT_EQ(value("document.body.textContent"), PropertyList("closed"));
  EXPECT_EQ(delegate.responses.back().statusCode, 401);
  EXPECT_TRUE(logged("a page to ask for a name and a password"));
  EXPECT_THAT(delegate.errors, IsEmpty());
  EXPECT_EQ(otherWindows(), 0);
}

TEST_F(KioskAnswersTest, FilesOfThisComputerCannotBeChosen) {
  peer.start();
  load("/");
  EXPECT_EQ(answerTo("let field = document.createElement('input'); field.type = 'file'; "
                     "field.oncancel = () => answer = 'cancelled'; document.body.append(field); "
                     "field.click()"),
            "cancelled");
  EXPECT_TRUE(logged("a page to choose files of this computer"));
  EXPECT_EQ(otherWindows(), 0);
}

TEST_F(KioskAnswersTest, ColoursCannotBeChosen) {
  peer.start();
  load("/");
  value(
      "void (field = document.createElement('input'), field.type = 'color', "
      "document.body.append(field), document.body.offsetHeight, field.click())");
  EXPECT_TRUE(logged("a colour chooser"));
  EXPECT_EQ(otherWindows(), 0);
}

TEST_F(KioskAnswersTest, ThePrintDialogueDoesNotOpen) {
  peer.start();
  load("/");
  value("void print()");
  EXPECT_TRUE(logged("a page to open the print dialogue"));
  EXPECT_EQ(otherWindows(), 0);
}

TEST_F(KioskAnswersTest, APageCannotCoverTheWholeScreen) {
  peer.start();
  load("/");
  EXPECT_EQ(answerTo("document.documentElement.requestFullscreen ? "
                     "document.documentElement.requestFullscreen().then(() => answer = 'covers', "
                     "() => answer = 'refused') : answer = 'refused'"),
            "refused");
  EXPECT_EQ(value("document.fullscreenElement === null || document.fullscreenElement === undefined"),
            PropertyList(true));
}

TEST_F(KioskAnswersTest, AFileToKeepIsNotKept) {
  peer.answer("/photo.zip",
              "HTTP/1.1 200 OK\r\nContent-Type: application/zip\r\nContent-Disposition: attachment; "
              "filename=photo.zip\r\nContent-Length: 4\r\nConnection: close\r\n\r\nPK..");
  peer.start();
  load("/");
  value("void (location.href = '/photo.zip')");
  EXPECT_TRUE(harness.runUntil([&] { return !delegate.errors.empty(); }))
      << testing::PrintToString(delegate.heard);
  EXPECT_EQ(delegate.heard.back(), "provisional failure 102");
  EXPECT_TRUE(log.contains("the kiosk does not show application/zip"));
  EXPECT_EQ(delegate.address(*web), "/");
  EXPECT_EQ(value("document.body.textContent"), PropertyList("home"));
}

TEST_F(KioskAnswersTest, AnAnswerWithoutContentLeavesThePage) {
  peer.answer("/done", "HTTP/1.1 204 No Content\r\nConnection: close\r\n\r\n");
  peer.start();
  load("/");
  value("void (location.href = '/done')");
  EXPECT_TRUE(heard("response 204 at /done"));
  load("/next");
  EXPECT_THAT(delegate.errors, IsEmpty());
}

TEST_F(KioskAnswersTest, APanelWhoseProcessEndsLeavesTheKioskUsable) {
  peer.start();
  load("/");
  web->evaluateJavaScript("alert('Wait')", [](auto, auto) {});
  ASSERT_TRUE(heard("alert Wait of /"));
  webkit_web_view_terminate_web_process(engine());
  ASSERT_TRUE(heard("terminated"));
  std::exchange(delegate.alertDone, nullptr)();
  load("/next");
  EXPECT_EQ(value("document.body.textContent"), PropertyList("next"));
}

TEST_F(KioskAnswersTest, ALinkThatIsToBeKeptIsNotFollowed) {
  page("/card.html", "a card");
  peer.start();
  load("/");
  value(
      "void (link = document.createElement('a'), link.href = '/card.html', link.download = 'card', "
      "document.body.append(link), link.click())");
  EXPECT_TRUE(logged("downloads"));
  EXPECT_EQ(delegate.address(*web), "/");
  EXPECT_FALSE(g_file_test("card", G_FILE_TEST_EXISTS));
}

TEST_F(KioskAnswersTest, NobodyIsAskedWhetherThePageMayBeLeft) {
  page("/form", "<script>onbeforeunload = event => { event.preventDefault(); return 'Stay?' }</script>");
  peer.start();
  load("/form");
  load("/next");
  EXPECT_EQ(value("document.body.textContent"), PropertyList("next"));
}

TEST_F(KioskAnswersTest, APageOpensNoWindowByItself) {
  page("/pushy", "<script>opened = window.open('/next')</script>");
  peer.start();
  load("/pushy");
  EXPECT_EQ(value("opened === null"), PropertyList(true));
  EXPECT_FALSE(delegate.hasHeard("new window /next"));
}

}  // namespace
