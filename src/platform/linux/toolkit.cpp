#include "platform/linux/toolkit.h"

#include <fstream>
#include <system_error>

#include <adwaita.h>
#include <fontconfig/fontconfig.h>

#include "platform/linux/lost_screen.h"

namespace platform {

namespace {

std::vector<std::string>& preparedNames() {
  static std::vector<std::string> names;
  return names;
}

void prepare(const char* name, const char* value) {
  if (g_getenv(name) == nullptr) {
    g_setenv(name, value, FALSE);
    preparedNames().emplace_back(name);
  }
}

// The virtio device is the render node's device or a child of what carries it, by the version of the kernel.
bool isVirtioGpuWithout3D(const std::filesystem::path& device) {
  std::error_code error;
  return std::filesystem::read_symlink(device / "driver", error).filename() == "virtio_gpu" &&
         std::ifstream(device / "features").get() == '0';
}

// A virtio GPU has a render node also where the machine around it lends it no 3D: then all would be drawn by
// a GL made of software. Its device tells its features as a text of zeros and ones, the first of which is
// VIRTIO_GPU_F_VIRGL (Virtual I/O Device 1.2, 5.7.3).
bool canRender(const std::filesystem::path& device) {
  if (isVirtioGpuWithout3D(device)) {
    return false;
  }
  std::error_code error;
  for (std::filesystem::directory_iterator child(device, error), end; !error && child != end;
       child.increment(error)) {
    if (child->path().filename().string().starts_with("virtio") && isVirtioGpuWithout3D(child->path())) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool hasGpu(const std::filesystem::path& root) {
  std::error_code error;
  for (std::filesystem::directory_iterator entry(root / "dev/dri", error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    if (name.starts_with("renderD") && canRender(root / "sys/class/drm" / name / "device")) {
      return true;
    }
  }
  return false;
}

void prepareDrawingEnvironment() {
  if (hasGpu()) {
    return;
  }
  prepare("GSK_RENDERER", "cairo");
  // Newer toolkits read another name, and warn of a value of the old one that they do not know.
  if (gtk_get_minor_version() >= 16) {
    prepare("GDK_DISABLE", "gl");
  } else {
    prepare("GDK_DEBUG", "gl-disable");
  }
}

std::vector<std::string> drawingEnvironment() {
  return preparedNames();
}

bool initializeToolkit() {
  return openWatchedScreen([] { return gtk_init_check() != FALSE; });
}

bool hasFonts() {
  const FcFontSet* fonts = FcConfigGetFonts(nullptr, FcSetSystem);
  return fonts != nullptr && fonts->nfont > 0;
}

void initializeStyle() {
  adw_init();
}

}  // namespace platform
