#include "platform/view.h"

#include "platform/format.h"

namespace platform {

std::string description(ViewKind kind) {
  switch (kind) {
    case ViewKind::Button:
      return "Button";
    case ViewKind::TextField:
      return "TextField";
    case ViewKind::SegmentedControl:
      return "SegmentedControl";
    case ViewKind::ImageView:
      return "ImageView";
    case ViewKind::ProgressIndicator:
      return "ProgressIndicator";
    case ViewKind::SettingsForm:
      return "SettingsForm";
    case ViewKind::WebView:
      return "WebView";
    case ViewKind::View:
      break;
  }
  return "View";
}

std::string description(const View& view) {
  const std::optional<std::string> identifier = view.identifier();
  return identifier ? stringWithFormat("<%@ %@>", view.kind(), *identifier)
                    : stringWithFormat("<%@>", view.kind());
}

std::string description(const std::vector<View*>& views) {
  std::vector<std::string> texts;
  texts.reserve(views.size());
  for (const View* view : views) {
    texts.push_back(stringWithFormat("%@", view));
  }
  return description(texts);
}

}  // namespace platform
