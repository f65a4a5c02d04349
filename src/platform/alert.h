#pragma once

#include <functional>
#include <string>
#include <vector>

namespace platform {

// The answers of buttons without a tag, in the order in which they were added.
inline constexpr int kAlertFirstButtonReturn = 1000;
inline constexpr int kAlertSecondButtonReturn = 1001;
inline constexpr int kAlertThirdButtonReturn = 1002;

enum class AlertStyle { Warning = 0, Informational = 1, Critical = 2 };

struct AlertButton {
  std::string title;
  // The answer when it is pressed.
  int tag = 0;
};

// What an alert shows. The first button is the default one and has the focus. Escape answers as the button
// titled "Cancel", or, when there is none and only one button, as that one; else it does nothing.
struct Alert {
  std::string messageText;
  std::string informativeText;
  AlertStyle style = AlertStyle::Warning;
  std::vector<AlertButton> buttons;
  // A field for a line of text (the script prompt), absent for none; its content is given with the answer.
  bool hasTextField = false;
  std::string textFieldValue;

  // Adds a button whose answer is 1000 plus its position, or `tag`.
  void addButtonWithTitle(std::string title) {
    const int tag = kAlertFirstButtonReturn + static_cast<int>(buttons.size());
    buttons.push_back({std::move(title), tag});
  }
  void addButtonWithTitle(std::string title, int tag) { buttons.push_back({std::move(title), tag}); }
};

struct AlertResponse {
  int code = 0;
  std::string text;
};

using AlertCompletion = std::function<void(const AlertResponse&)>;

// What a sheet can be shown on: a window or the layer above it. Alerts wait their turn: one at a time for
// each parent.
class AlertParent {
 public:
  virtual ~AlertParent() = default;
  // Shows `alert` and returns; `completion` runs once on the main queue with the answer, or never when the
  // parent goes first.
  virtual void beginAlert(const Alert& alert, AlertCompletion completion) = 0;
};

}  // namespace platform
