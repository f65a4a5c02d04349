#include "support/ZELKOR_Base.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <gnu/libc-version.h>
#include <stdlib.h>
#include <sys/utsname.h>
#include <unistd.h>

#include "platform/format.h"
#include "platform/log.h"
#include "platform/paths.h"
#include "platform/strings.h"
#include "support/MachineFacts.h"
#include "support/SystemSources.h"

namespace lumo {

namespace {

using platform::stringWithFormat;

// Empty when it cannot be read.
std::string textOfFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return platform::validUtf8(std::string(std::istreambuf_iterator<char>(file), {}));
}

std::uint64_t pageSize() {
  constexpr std::uint64_t kUsual = 4096;
  const long size = ::sysconf(_SC_PAGESIZE);
  return size > 0 ? static_cast<std::uint64_t>(size) : kUsual;
}

struct utsname kernel() {
  struct utsname answer {};
  ::uname(&answer);
  return answer;
}

std::string operatingSystemVersion() {
  std::string text = textOfFile("/etc/os-release");
  if (text.empty()) {
    text = textOfFile("/usr/lib/os-release");
  }
  const auto system = kernel();
  return stringWithFormat("%@ (%s %s)", osReleaseValue(text, "PRETTY_NAME").value_or("Linux"),
                          static_cast<const char*>(system.sysname), static_cast<const char*>(system.release));
}

std::string environmentValue(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

std::optional<platform::Dictionary> currentMemory(bool withWired) {
  const std::uint64_t size = pageSize();
  const auto statistics = memoryStatistics(textOfFile("/proc/meminfo"), size);
  return statistics ? std::optional(memoryDictionary(*statistics, size, withWired)) : std::nullopt;
}

SystemFacts currentFacts(std::optional<platform::Dictionary> memory) {
  const long pages = ::sysconf(_SC_PHYS_PAGES);
  const long processors = ::sysconf(_SC_NPROCESSORS_ONLN);
  SystemFacts facts;
  facts.operatingSystemVersion = operatingSystemVersion();
  facts.foundationVersion = versionNumber(::gnu_get_libc_version());
  facts.physicalMemory = pages > 0 ? static_cast<std::uint64_t>(pages) * pageSize() : 0;
  facts.processors = processors > 0 ? static_cast<unsigned long>(processors) : 0;
  facts.memory = std::move(memory);
  facts.modelAndArch = ZELKOR_Base::hostModelAndArch();
  return facts;
}

std::optional<platform::Dictionary> ZELKOR_Base::vmStats() {
  return currentMemory(false);
}

std::optional<std::string> ZELKOR_Base::hostModelAndArch() {
  const std::string firmware = "/sys/class/dmi/id/";
  const std::string model =
      hardwareModel({textOfFile(firmware + "product_name"), textOfFile(firmware + "board_name"),
                     textOfFile("/proc/device-tree/model"), processorName(textOfFile("/proc/cpuinfo"))});
  return modelAndMachine(model, static_cast<const char*>(kernel().machine));
}

std::string ZELKOR_Base::systemVersionInfo() {
  return systemVersionText(currentFacts(vmStats()), false);
}

std::string ZELKOR_Base::startupInfo() {
  return startupText(program_invocation_short_name, systemVersionInfo());
}

std::optional<std::string> ZELKOR_Base::safeTempFile(int* descriptor) {
  const std::string asked = environmentValue("TMPDIR");
  const std::string pattern =
      platform::appendingPathComponent(asked.empty() ? "/tmp" : asked, "XXXXXXXXXXXXXXXX");
  std::string path = pattern;
  const int file = ::mkostemp(path.data(), O_CLOEXEC);
  const int error = errno;
  if (descriptor != nullptr) {
    *descriptor = file;
  }
  if (file < 0) {
    platform::NSLog("ERROR: failed to create temporary file %@ (Error %d: %s)", pattern, error,
                    std::strerror(error));
    return std::nullopt;
  }
  if (descriptor == nullptr) {
    ::close(file);
  }
  return path;
}

std::optional<std::string> ZELKOR_Base::firstFoundDirectoryType_inDomain(SearchPathDirectory kind,
                                                                         unsigned domain) {
  const std::string asked = environmentValue("XDG_CONFIG_HOME");
  const std::string folder = asked.starts_with('/') ? asked : platform::expandingTilde("~/.config");
  const auto folders =
      standardFolders(kind, domain == 0 ? static_cast<unsigned>(AllDomains) : domain,
                      textOfFile(platform::appendingPathComponent(folder, "user-dirs.dirs")));
  return folders.empty() ? std::nullopt : std::optional(folders.front());
}

}  // namespace lumo
