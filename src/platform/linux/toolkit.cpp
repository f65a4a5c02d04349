#include "platform/linux/toolkit.h"

#include <adwaita.h>
#include <fontconfig/fontconfig.h>
#include <glob.h>

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

}  // namespace

bool hasGpu() {
  glob_t found{};
  const bool any = glob("/dev/dri/renderD*", GLOB_NOSORT, nullptr, &found) == 0 && found.gl_pathc > 0;
  globfree(&found);
  return any;
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
  return gtk_init_check() != FALSE;
}

bool hasFonts() {
  const FcFontSet* fonts = FcConfigGetFonts(nullptr, FcSetSystem);
  return fonts != nullptr && fonts->nfont > 0;
}

void initializeStyle() {
  adw_init();
}

}  // namespace platform
