#include "tests/fakes/window_descriptions.h"

#include "tests/fakes/fake_drop_view.h"
#include "tests/fakes/fake_settings_form.h"
#include "tests/fakes/fake_web_view.h"

namespace fakes {

using platform::Rect;

namespace {

ViewOptions withAction(const std::string& action) {
  ViewOptions options;
  options.action = action;
  return options;
}

ViewOptions withIdentifier(const std::string& identifier) {
  ViewOptions options;
  options.identifier = identifier;
  return options;
}

}  // namespace

void describeBrowserWindow(FakeWindow& window) {
  const Rect all{0, 0, 1024, 768};
  window.setInitialFrame({100, 80, all.width, all.height});
  ViewOptions covering;
  covering.frame = all;
  window.adopt(std::make_unique<FakeWebView>(window.stage(), "ibWebView", covering, true));
  window.add<FakeDropView>("ibDragDropView", covering);

  FakeView& toolbar = window.add<FakeView>("toolbar");
  window.add<FakeSegmentedControl>("segmentedControl", withAction("ibToolbarSegmentedControl1:"), &toolbar);
  window.add<FakeButton>("homeButton", withAction("ibHomeButton:"), &toolbar);
  window.add<FakeTextField>("ibTextField", withAction("ibToolbarTextField:"), &toolbar);
  window.add<FakeButton>("goButton", withAction("ibToolbarGoButton:"), &toolbar);
  window.add<FakeButton>("settingsButton", withAction("ibToolbarSettingsButton:"), &toolbar);
  window.add<FakeProgressIndicator>("ibProgressIndicator", {}, &toolbar);
  window.add<FakeProgressIndicator>("ibProgressIndicator2", {}, &toolbar);

  FakeOverlay& overlay = window.addOverlay();
  window.add<FakeView>("progressview", withIdentifier("progressview"), &overlay.contentView());
  FakeView& card = window.add<FakeView>("progresscard", {}, &overlay.contentView());
  window.add<FakeImageView>("progressimage", withIdentifier("progressimage"), &card);
}

void describePreferencesWindow(FakeWindow& window) {
  window.setInitialFrame({0, 0, 560, 640});
  window.add<FakeTextField>("fVersionString");
  window.add<FakeTextField>("fIpInfoString");
  window.add<FakeImageView>("fStatus1View");
  window.add<FakeTextField>("ibStatusText");
  window.add<FakeSettingsForm>("ibSettingsForm");
  for (const char* name : {"ibCloseButton", "ibResetToFactory1", "ibResetToFactory2", "ibTestConnection",
                           "ibSearchJunivaServer"}) {
    window.add<FakeButton>(name, withAction(std::string(name) + ":"));
  }
}

void describeFinderWindow(FakeWindow& window) {
  constexpr int kScanTag = 3000;
  constexpr int kFirstChoiceTag = 5000;
  constexpr int kChoices = 10;
  window.setInitialFrame({0, 0, 480, 560});
  window.add<FakeTextField>("fVersionString");
  window.add<FakeTextField>("fScanningResultString");
  window.add<FakeTextField>("fBottomLineString");
  window.add<FakeProgressIndicator>("fProgressIndicator");
  ViewOptions scan = withAction("ibDoTestButton:");
  scan.tag = kScanTag;
  window.add<FakeButton>("ibScanButton", scan);
  for (int index = 0; index < kChoices; ++index) {
    ViewOptions choice = withAction("ibCloseButton:");
    choice.tag = kFirstChoiceTag + index;
    choice.hidden = true;
    window.add<FakeButton>("ibChoiceButton" + std::to_string(index), choice);
  }
  window.add<FakeButton>("ibCloseButton", withAction("ibCloseButton:"));
}

}  // namespace fakes
