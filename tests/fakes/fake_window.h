#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/window.h"
#include "tests/fakes/fake_controls.h"
#include "tests/fakes/fake_view.h"
#include "tests/fakes/sheet_queue.h"

namespace fakes {

// The layer above a window's page. Recorded under the name "ibChildWindow".
class FakeOverlay final : public platform::Overlay {
 public:
  explicit FakeOverlay(Stage stage);

  void beginAlert(const platform::Alert& alert, platform::AlertCompletion completion) override;
  platform::Rect frame() const override { return frame_; }
  void setFrame(const platform::Rect& frame) override;
  int level() const override { return level_; }
  void setLevel(int level) override;
  void setOpaque(bool opaque) override;
  void setBackgroundColor(std::optional<platform::Color> color) override;
  void setAlphaValue(double alpha) override;
  FakeView& contentView() override { return contentView_; }
  bool isVisible() const override { return visible_; }
  void orderFrontRegardless() override;
  void orderOut() override;

  // For the test.
  bool isOpaque() const { return opaque_; }
  std::optional<platform::Color> backgroundColor() const { return color_; }
  double alphaValue() const { return alpha_; }
  const platform::Alert* currentAlert() const { return sheets_.currentAlert(); }
  const std::vector<platform::Alert>& shownAlerts() const { return sheets_.shownAlerts(); }
  void answerAlert(int code, const std::string& text = "") { sheets_.answer(code, text); }
  void pressAlertButton(const std::string& title, const std::string& text = "") {
    sheets_.press(title, text);
  }

 private:
  void record(const std::string& what) const { stage_.journal.add("ibChildWindow " + what); }

  const Stage stage_;
  FakeView contentView_;
  SheetQueue sheets_;
  platform::Rect frame_;
  int level_ = platform::kNormalWindowLevel;
  bool opaque_ = true;
  std::optional<platform::Color> color_;
  double alpha_ = 1;
  bool visible_ = false;
};

// A window of a description that the test (or descriptions.h) gives by adding views. It owns them; a sheet's
// description says that it is one. The journal knows it by the description's name.
class FakeWindow final : public platform::Window {
 public:
  enum class Kind { Toplevel, Sheet };
  using Screens = std::shared_ptr<std::vector<platform::Rect>>;

  FakeWindow(Stage stage, std::string name, Kind kind = Kind::Toplevel, Screens screens = {});
  ~FakeWindow() override;
  FakeWindow(const FakeWindow&) = delete;
  FakeWindow& operator=(const FakeWindow&) = delete;

  void beginAlert(const platform::Alert& alert, platform::AlertCompletion completion) override;
  void setDelegate(platform::WindowDelegate* delegate) override { delegate_ = delegate; }
  platform::Rect frame() const override { return frame_; }
  void setFrame(const platform::Rect& frame, bool animate) override;
  int level() const override { return level_; }
  void setLevel(int level) override;
  std::string title() const override { return title_; }
  void setTitle(const std::string& title) override;
  bool isTitleVisible() const override { return titleVisible_; }
  void setTitleVisible(bool visible) override;
  bool isToolbarVisible() const override { return toolbarVisible_; }
  void setToolbarVisible(bool visible) override;
  unsigned styleMask() const override { return styleMask_; }
  void setStyleMask(unsigned mask) override;
  void toggleFullScreen() override;
  FakeView& contentView() override { return contentView_; }
  platform::View* viewNamed(const std::string& name) override;
  platform::View* viewWithTag(int tag) override;
  FakeOverlay* overlay() override { return overlay_.get(); }
  void setAction(const std::string& action, std::function<void(platform::View&)> handler) override;
  bool makeFirstResponder(platform::View& view) override;
  void makeKeyAndOrderFront() override;
  void orderFront() override;
  void orderOut() override;
  bool isVisible() const override;
  void close() override;
  void beginSheet(platform::Window& sheet, std::function<void(int)> completion) override;
  void endSheet(platform::Window& sheet, int code) override;
  platform::Window* sheetParent() const override { return parent_; }

  // The description.

  // A new view, found by `name` from now on, on top of the others in `parent` (the content view when null).
  template <class V>
  V& add(const std::string& name, ViewOptions options = {}, FakeView* parent = nullptr) {
    auto view = std::make_unique<V>(stage_, name, std::move(options));
    V& added = *view;
    adopt(std::move(view), parent);
    return added;
  }
  // The same with a view that was made already.
  void adopt(std::unique_ptr<FakeView> view, FakeView* parent = nullptr);
  // An overlay of the window's frame, hidden.
  FakeOverlay& addOverlay();
  // The frame at first, without a line in the journal.
  void setInitialFrame(const platform::Rect& frame);

  // What the test sees and does.

  const std::string& name() const { return name_; }
  const Stage& stage() const { return stage_; }
  platform::WindowDelegate* delegate() const { return delegate_; }
  // The view of that name as a FakeTextField, FakeButton, …; throws std::logic_error when there is none of
  // that kind.
  template <class V>
  V& view(const std::string& name) {
    auto* found = dynamic_cast<V*>(requireView(name));
    if (found == nullptr) {
      refuse("the view " + name + " is of another kind");
    }
    return *found;
  }
  bool isFullScreen() const { return fullScreen_; }
  // The view that has the keyboard, or null.
  platform::View* firstResponder() const { return responderLife_.expired() ? nullptr : firstResponder_; }

  const platform::Alert* currentAlert() const { return sheets_.currentAlert(); }
  const std::vector<platform::Alert>& shownAlerts() const { return sheets_.shownAlerts(); }
  FakeWindow* currentSheet() const { return sheets_.currentSheet(); }
  // How many sheets and alerts are shown or wait their turn.
  std::size_t sheetCount() const { return sheets_.size(); }
  // Answers the alert that is shown; the next one is shown before its completion runs.
  void answerAlert(int code, const std::string& text = "") { sheets_.answer(code, text); }
  void pressAlertButton(const std::string& title, const std::string& text = "") {
    sheets_.press(title, text);
  }

  bool hasAction(const std::string& action) const { return actions_.contains(action); }
  // Performs an action as if `sender` had been used. False, with a line in the log, when nothing is set for
  // it.
  bool pressAction(const std::string& action, platform::View& sender);
  // The person uses the control of this name. False when that is not possible (hidden, disabled, behind a
  // sheet) or nothing is set for its action.
  bool press(const std::string& name);
  // The person asks to close the window, or a sheet with Escape: asks the delegate. True when it has closed.
  bool requestClose();
  // The desktop gives the window another frame; the delegate hears of it on the main queue.
  void resizeByDesktop(const platform::Rect& frame);
  // What happens after the person has closed the window (the application counts its windows).
  void setClosedByPerson(platform::Block block) { closedByPerson_ = std::move(block); }

 private:
  void record(const std::string& what) const { stage_.journal.add(name_ + " " + what); }
  FakeView* requireView(const std::string& name);
  [[noreturn]] static void refuse(const std::string& text);
  void moveTo(const platform::Rect& frame);
  // Takes a sheet and all that stands on it away, without answers.
  void releaseSheet(FakeWindow& child);
  bool coversScreen() const;
  void show();

  const Stage stage_;
  const std::string name_;
  const Kind kind_;
  Screens screens_;
  FakeView contentView_;
  SheetQueue sheets_;
  std::unique_ptr<FakeOverlay> overlay_;
  std::vector<std::unique_ptr<FakeView>> views_;
  std::map<std::string, FakeView*> named_;
  std::map<std::string, std::function<void(platform::View&)>> actions_;
  platform::WindowDelegate* delegate_ = nullptr;
  platform::Block closedByPerson_;
  FakeWindow* parent_ = nullptr;
  std::function<void(int)> sheetCompletion_;
  platform::View* firstResponder_ = nullptr;
  std::weak_ptr<void> responderLife_;
  platform::Rect frame_;
  std::optional<platform::Rect> usualFrame_;
  bool fullScreen_ = false;
  std::string title_;
  int level_ = platform::kNormalWindowLevel;
  bool titleVisible_ = true;
  bool toolbarVisible_ = true;
  unsigned styleMask_ = 15;
  bool visible_ = false;
  std::vector<FakeWindow*> children_;
};

}  // namespace fakes
