#include "app/AppDelegate.h"
#include "kiosk.h"

int main() {
  return lumo::runKiosk(
      [](platform::Platform& platform) { return std::make_unique<lumo::AppDelegate>(platform); });
}
