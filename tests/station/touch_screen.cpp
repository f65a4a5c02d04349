#include "station/touch_screen.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include <X11/extensions/XI2.h>
#include <sys/socket.h>
#include <unistd.h>
#include <xorg/xf86-input-inputtest-protocol.h>

#include "station/local_socket.h"

namespace station {

namespace {

// The device's coordinates for the whole screen.
constexpr double kRange = 0xFFFF;

constexpr const char* kConfiguration = R"(
Section "Device"
  Identifier "card"
  Driver "dummy"
  VideoRam 16384
EndSection
Section "Monitor"
  Identifier "monitor"
  HorizSync 5.0 - 1000.0
  VertRefresh 5.0 - 200.0
EndSection
Section "Screen"
  Identifier "screen"
  Device "card"
  Monitor "monitor"
  DefaultDepth 24
  SubSection "Display"
    Depth 24
    Modes "SIZE"
  EndSubSection
EndSection
Section "InputDevice"
  Identifier "finger"
  Driver "inputtest"
  Option "SocketPath" "SOCKET"
  Option "DeviceType" "Touch"
  Option "TouchCount" "1"
EndSection
Section "ServerLayout"
  Identifier "layout"
  Screen "screen"
  InputDevice "finger" "SendCoreEvents"
EndSection
Section "ServerFlags"
  Option "AutoAddDevices" "false"
  Option "DontVTSwitch" "true"
EndSection
)";

void replace(std::string& text, const std::string& what, const std::string& with) {
  text.replace(text.find(what), what.size(), with);
}

// A message of the protocol with its header filled in.
template <class Message>
Message message(xf86ITEventType type) {
  static_assert(std::is_trivially_copyable_v<Message>);
  Message made;
  std::memset(&made, 0, sizeof made);
  made.header.length = sizeof made;
  made.header.type = type;
  return made;
}

template <class Message>
void send(int socket, const Message& message) {
  if (::send(socket, &message, sizeof message, MSG_NOSIGNAL) != static_cast<ssize_t>(sizeof message)) {
    throw std::runtime_error("the touch screen takes nothing");
  }
}

template <class Message>
Message receive(int socket) {
  Message message;
  if (recv(socket, &message, sizeof message, MSG_WAITALL) != static_cast<ssize_t>(sizeof message)) {
    throw std::runtime_error("the touch screen does not answer");
  }
  return message;
}

}  // namespace

TouchScreen::TouchScreen(std::filesystem::path folder, const std::string& size) : folder_(std::move(folder)) {
  if (std::sscanf(size.c_str(), "%dx%d", &width_, &height_) != 2) {
    throw std::runtime_error(size + " is no size");
  }
  std::string text = kConfiguration;
  replace(text, "SIZE", size);
  replace(text, "SOCKET", folder_ / "finger");
  std::ofstream(folder_ / "screen.conf") << text;
}

std::vector<std::string> TouchScreen::command() const {
  return {"/usr/lib/xorg/Xorg", "-config",    folder_ / "screen.conf", "-logfile",
          folder_ / "xorg.txt", "-novtswitch"};
}

void TouchScreen::connect() {
  socket_ = connectedTo(folder_ / "finger");
  if (!socket_) {
    throw std::runtime_error("there is no touch screen");
  }
  const timeval patience{10, 0};
  setsockopt(socket_.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  auto version = message<xf86ITEventClientVersion>(XF86IT_EVENT_CLIENT_VERSION);
  version.major = XF86IT_PROTOCOL_VERSION_MAJOR;
  version.minor = XF86IT_PROTOCOL_VERSION_MINOR;
  send(socket_.get(), version);
  receive<xf86ITResponseServerVersion>(socket_.get());
}

void TouchScreen::put(int type, int x, int y) {
  auto touch = message<xf86ITEventTouch>(XF86IT_EVENT_TOUCH);
  touch.touchid = 1;
  touch.touch_type = static_cast<std::uint32_t>(type);
  touch.valuators.mask[0] = 3;
  touch.valuators.valuators[0] = x * kRange / width_;
  touch.valuators.valuators[1] = y * kRange / height_;
  send(socket_.get(), touch);
}

void TouchScreen::waitUntilTaken() {
  send(socket_.get(), message<xf86ITEventWaitForSync>(XF86IT_EVENT_WAIT_FOR_SYNC));
  receive<xf86ITResponseSyncFinished>(socket_.get());
}

void TouchScreen::tap(int x, int y) {
  if (!socket_) {
    connect();
  }
  put(XI_TouchBegin, x, y);
  put(XI_TouchEnd, x, y);
  waitUntilTaken();
}

}  // namespace station
