// juniva-demo: a small photo server with an order application, for trying and testing a kiosk browser.

#include <csignal>
#include <cstdio>

#include <gio/gio.h>
#include <glib-unix.h>

#include "options.h"
#include "order_routes.h"
#include "server.h"

namespace {

using namespace juniva;

// One write for the whole line, at once, so that a watcher behind a pipe sees it before the answer. A reader
// that has gone away is no reason to stop serving.
void printLine(const std::string& line) {
  const std::string text = line + "\n";
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

std::string localTime() {
  GDateTime* now = g_date_time_new_now_local();
  char* text = g_date_time_format(now, "%d.%m.%Y %H:%M");
  std::string result(text);
  g_free(text);
  g_date_time_unref(now);
  return result;
}

std::string newTicket() {
  char* text = g_uuid_string_random();
  std::string result(text);
  g_free(text);
  return result;
}

gboolean quit(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_CONTINUE;
}

bool isLoopback(const std::string& address) {
  GInetAddress* parsed = g_inet_address_new_from_string(address.c_str());
  const bool result = parsed != nullptr && g_inet_address_get_is_loopback(parsed);
  if (parsed != nullptr) g_object_unref(parsed);
  return result;
}

int serve(const Options& options) {
  Shop shop{.pages = OrderPages(options.act), .localTime = localTime, .newTicket = newTicket};
  const RouteTable routes = makeOrderRoutes(shop);
  Server server({.answer = [&](const Request& request) { return routes.answer(request); },
                 .bodyTooLarge = [&] { return bodyTooLarge(shop); },
                 .log = printLine});
  if (const auto problem = server.listen(options.address, options.port)) {
    std::fprintf(stderr, "juniva-demo: %s\n", problem->c_str());
    return 1;
  }
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  g_unix_signal_add(SIGTERM, quit, loop);
  g_unix_signal_add(SIGINT, quit, loop);
  if (!isLoopback(options.address)) {
    std::fprintf(stderr, "juniva-demo: other computers can reach this server on %s\n",
                 options.address.c_str());
  }
  printLine("juniva-demo listening on http://" + hostForUrl(options.address) + ":" +
            std::to_string(server.port()) + "/registrationorders");
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  const auto parsed = parseOptions(std::vector<std::string>(argv + 1, argv + argc));
  if (const auto* error = std::get_if<OptionError>(&parsed)) {
    std::fprintf(stderr, "juniva-demo: %s (see juniva-demo --help)\n", error->message.c_str());
    return 2;
  }
  const Options& options = std::get<Options>(parsed);
  if (options.help) {
    std::fputs(std::string(helpText()).c_str(), stdout);
    return 0;
  }
  if (options.version) {
    std::printf("juniva-demo %s\n", std::string(kVersion).c_str());
    return 0;
  }
  return serve(options);
}
