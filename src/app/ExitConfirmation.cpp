#include "app/ExitConfirmation.h"

#include "platform/strings.h"

namespace lumo {

bool isOrderPage(const std::optional<std::string>& running) {
  return running && platform::containsIgnoringCase(*running, "registrationorders");
}

platform::Alert exitConfirmation(const std::optional<std::string>& running) {
  platform::Alert alert;
  alert.messageText = "Are You Sure???";
  alert.informativeText = "Are you sure you want to exit this window?";
  alert.addButtonWithTitle("Cancel");
  if (isOrderPage(running)) {
    alert.addButtonWithTitle("Close Window");
  } else {
    alert.addButtonWithTitle("Close Window Only");
    alert.addButtonWithTitle("Close Window and Release Order");
  }
  return alert;
}

}  // namespace lumo
