// Times the steps of a receipt, and others' way of the same: receipt_steps BUNDLE FOLDER ROUNDS
//
// The page is laid out at receipt size in the kiosk's own window, pictured, encoded, written and handed to a
// script that reads it. Beside that the same picture is encoded by GdkPixbuf, in this process, and by
// ImageMagick, as a program. Each round is one line of JSON with milliseconds and bytes. The first round
// warms up and is not told. Exit status 1: a step failed; 2: bad usage or no display.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>

#include <gdk-pixbuf/gdk-pixbuf.h>

#include "browser/ReceiptLayout.h"
#include "platform/bundle.h"
#include "platform/file_io.h"
#include "platform/linux/linux_application.h"
#include "platform/linux/linux_dispatch.h"
#include "platform/linux/linux_window_system.h"
#include "platform/linux/session_bus.h"
#include "platform/linux/toolkit.h"
#include "platform/linux/web_engine.h"
#include "platform/task.h"
#include "platform/web_view.h"
#include "support/JpegImage.h"
#include "support/ZELKOR_NSStringAdditions.h"

namespace {

namespace fs = std::filesystem;
using platform::Image;
using platform::Millis;

constexpr int kLines = 40;
constexpr Millis kPatience{15000};

[[noreturn]] void fail(const std::string& why) {
  std::fprintf(stderr, "receipt_steps: %s\n", why.c_str());
  std::exit(1);
}

double millisecondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

void runUntil(platform::LinuxDispatch& dispatch, const std::function<bool()>& reached, const char* what) {
  const Millis end = dispatch.now() + kPatience;
  while (!reached()) {
    if (dispatch.now() > end) {
      fail(std::string(what) + " takes too long");
    }
    dispatch.runMainOnce(Millis(2));
  }
}

std::string receiptPage() {
  std::string html =
      "<!doctype html><style>body{margin:16px;font:26px sans-serif}td{padding:6px}</style>"
      "<h1>Lumo Photo</h1><table>";
  for (int line = 1; line <= kLines; ++line) {
    html += "<tr><td>" + std::to_string(line) + " x</td><td>print 10 x 15 cm, glossy</td><td>0.39</td></tr>";
  }
  return html + "</table><h2>Total 15.60</h2>";
}

std::size_t encodeWithPixbuf(const Image& image) {
  // The library takes JPEG without transparency only.
  GdkPixbuf* whole =
      gdk_pixbuf_new_from_data(reinterpret_cast<const guchar*>(image.pixels.data()), GDK_COLORSPACE_RGB, TRUE,
                               8, image.width, image.height, image.width * 4, nullptr, nullptr);
  gchar* bytes = nullptr;
  gsize size = 0;
  if (gdk_pixbuf_save_to_buffer(whole, &bytes, &size, "jpeg", nullptr, "quality", "100", nullptr) == FALSE) {
    fail("GdkPixbuf could not encode the picture");
  }
  g_free(bytes);
  g_object_unref(whole);
  return size;
}

void writeFile(const fs::path& path, const void* bytes, std::size_t size) {
  std::ofstream(path, std::ios::binary).write(static_cast<const char*>(bytes), static_cast<long>(size));
}

class Bench {
 public:
  Bench(const fs::path& bundle, fs::path folder) : bundle_(bundle), folder_(std::move(folder)) {
    window_ = windows_.loadWindow("MyWebViewWindowController");
    if (window_ == nullptr) {
      fail("the bundle has no browser window");
    }
    page_ = windows_.makeWebView(window_->contentView().frame());
    window_->contentView().addSubviewAbove(*page_, nullptr);
    page_->setHidden(false);
    window_->makeKeyAndOrderFront();
    page_->loadHTMLString(receiptPage(), std::nullopt);
    bool loaded = false;
    bool asking = false;
    runUntil(
        dispatch_,
        [&] {
          if (!asking && !loaded) {
            asking = true;
            page_->evaluateJavaScript("document.querySelectorAll('tr').length",
                                      [&](const std::optional<platform::PropertyList>& rows, const auto&) {
                                        asking = false;
                                        loaded = rows == platform::PropertyList(kLines);
                                      });
          }
          return loaded && !asking;
        },
        "the page");
    usual_ = page_->frame();
    writeFile(script(), kScript.data(), kScript.size());
    fs::permissions(script(), fs::perms::owner_all);
  }

  void round(bool told) {
    std::optional<Image> image;
    const double picture = millisecondsOf([&] {
      bool answered = false;
      page_->setFrame(lumo::receiptFrame(usual_, usual_));
      page_->takeSnapshot([&](std::optional<Image> taken) {
        image = std::move(taken);
        answered = true;
      });
      runUntil(
          dispatch_, [&] { return answered; }, "the picture");
    });
    if (!image || image->width != 505 || image->height != 14047) {
      fail("the picture is not that of a receipt");
    }
    page_->setFrame(usual_);

    std::optional<std::string> jpeg;
    const double encode = millisecondsOf([&] { jpeg = lumo::jpegRepresentation(*image, 1.0); });
    if (!jpeg) {
      fail("the picture cannot be encoded");
    }
    const fs::path file = folder_ / "Snapshot.jpg";
    const double write = millisecondsOf([&] {
      if (platform::replaceFile(file, folder_ / ".Snapshot.jpg.new", *jpeg)) {
        fail("the picture cannot be written");
      }
    });
    std::optional<std::string> said;
    const double handOver = millisecondsOf([&] {
      said = lumo::ZELKOR_NSStringAdditions::outputWhenRunAsShellCommand(script().string() + " " +
                                                                         file.string());
    });
    if (!said || std::stoul(*said) != jpeg->size()) {
      fail("the script did not get the picture");
    }

    std::size_t pixbufBytes = 0;
    const double pixbuf = millisecondsOf([&] { pixbufBytes = encodeWithPixbuf(*image); });
    const fs::path raw = folder_ / "raw.rgba";
    const fs::path other = folder_ / "magick.jpg";
    writeFile(raw, image->pixels.data(), image->pixels.size());
    const double magick = millisecondsOf([&] {
      const auto result = platform::Task::run(
          "/usr/bin/env", {"convert", "-size", "505x14047", "-depth", "8", "rgba:" + raw.string(), "-alpha",
                           "off", "-sampling-factor", "1x1", "-quality", "100", "jpeg:" + other.string()});
      if (!result || result->status != 0) {
        fail("ImageMagick could not encode the picture");
      }
    });
    if (told) {
      std::printf(
          "{\"picture_ms\": %.2f, \"encode_ms\": %.2f, \"write_ms\": %.2f, \"hand_over_ms\": %.2f, "
          "\"gdkpixbuf_ms\": %.2f, \"imagemagick_ms\": %.2f, \"bytes\": %zu, \"gdkpixbuf_bytes\": %zu, "
          "\"imagemagick_bytes\": %ju}\n",
          picture, encode, write, handOver, pixbuf, magick, jpeg->size(), pixbufBytes, fs::file_size(other));
      std::fflush(stdout);
    }
  }

 private:
  static constexpr std::string_view kScript = "#!/bin/sh\nwc -c < \"$1\"\n";
  fs::path script() const { return folder_ / "script.sh"; }

  platform::Bundle bundle_;
  const fs::path folder_;
  platform::LinuxDispatch dispatch_;
  platform::SessionBus bus_{dispatch_};
  platform::LinuxApplication application_{dispatch_, bus_, bundle_};
  platform::WebEngine engine_{dispatch_};
  platform::LinuxWindowSystem windows_{dispatch_, application_, bundle_, engine_};
  std::unique_ptr<platform::Window> window_;
  std::unique_ptr<platform::WebView> page_;
  platform::Rect usual_;
};

}  // namespace

int main(int count, char** arguments) {
  const int rounds = count == 4 ? std::atoi(arguments[3]) : 0;
  if (rounds < 1) {
    std::fprintf(stderr, "Usage: receipt_steps BUNDLE FOLDER ROUNDS\n");
    return 2;
  }
  platform::prepareDrawingEnvironment();
  if (!platform::initializeToolkit()) {
    return 2;
  }
  platform::initializeStyle();
  Bench bench(arguments[1], arguments[2]);
  for (int round = 0; round <= rounds; ++round) {
    bench.round(round > 0);
  }
  return 0;
}
