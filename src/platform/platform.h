#pragma once

namespace platform {

class Application;
class Bundle;
class Dispatch;
class HttpClient;
class MessageBus;
class NotificationCenter;
class UserDefaults;
class WindowSystem;

// Everything that the system gets from the machine, given to each controller from outside: by kiosk.cpp or by
// a test. Nothing is owned; all of it outlives the controllers.
struct Platform {
  Dispatch& dispatch;
  Application& application;
  WindowSystem& windows;
  MessageBus& bus;
  HttpClient& http;
  UserDefaults& defaults;
  NotificationCenter& notifications;
  Bundle& bundle;
};

}  // namespace platform
