// Tells when a point of the screen first has a colour: first_pixel X Y RRGGBB SECONDS
//
// Prints "ready" when it watches and then the time on the monotonic clock, in nanoseconds. Exit status 1: the
// colour did not come within the limit; 2: bad usage or no display.
//
// One point is asked for at a time, so watching costs the programs under test next to nothing.

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr timespec kBetween{0, 2'000'000};
// Renderers round differently.
constexpr int kTolerance = 3;

std::int64_t now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * kSecond + time.tv_nsec;
}

bool readNumber(const char* text, int base, long limit, long& value) {
  char* end = nullptr;
  errno = 0;
  value = std::strtol(text, &end, base);
  return errno == 0 && end != text && *end == '\0' && value >= 0 && value <= limit;
}

bool near(unsigned long one, unsigned long other) {
  for (int shift = 0; shift < 24; shift += 8) {
    const int difference = static_cast<int>(one >> shift & 0xff) - static_cast<int>(other >> shift & 0xff);
    if (difference > kTolerance || difference < -kTolerance) return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  long x = 0;
  long y = 0;
  long colour = 0;
  long seconds = 0;
  if (argc != 5 || !readNumber(argv[1], 10, 32767, x) || !readNumber(argv[2], 10, 32767, y) ||
      !readNumber(argv[3], 16, 0xffffff, colour) || !readNumber(argv[4], 10, 3600, seconds)) {
    std::fprintf(stderr, "Usage: first_pixel X Y RRGGBB SECONDS\n");
    return 2;
  }
  Display* display = XOpenDisplay(nullptr);
  if (display == nullptr) {
    std::fprintf(stderr, "first_pixel: cannot open the display\n");
    return 2;
  }
  const int screen = DefaultScreen(display);
  if (x >= DisplayWidth(display, screen) || y >= DisplayHeight(display, screen) ||
      DefaultDepth(display, screen) != 24) {
    std::fprintf(stderr, "first_pixel: the point is outside the screen, or the screen has not 24 bits\n");
    return 2;
  }
  std::printf("ready\n");
  std::fflush(stdout);
  const std::int64_t end = now() + seconds * kSecond;
  while (now() < end) {
    XImage* image = XGetImage(display, RootWindow(display, screen), static_cast<int>(x), static_cast<int>(y),
                              1, 1, AllPlanes, ZPixmap);
    if (image != nullptr) {
      const unsigned long seen = XGetPixel(image, 0, 0);
      XDestroyImage(image);
      if (near(seen, static_cast<unsigned long>(colour))) {
        std::printf("%lld\n", static_cast<long long>(now()));
        XCloseDisplay(display);
        return 0;
      }
    }
    nanosleep(&kBetween, nullptr);
  }
  XCloseDisplay(display);
  return 1;
}
