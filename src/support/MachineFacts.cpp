#include "support/MachineFacts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "platform/format.h"
#include "platform/strings.h"
#include "support/ZELKOR_NSStringAdditions.h"

namespace lumo {

namespace {

using platform::stringWithFormat;

constexpr int kBytesToMB = 20;

// The value after "KEY:" at the start of a line.
std::optional<std::string> valueOfKey(std::string_view text, std::string_view key) {
  for (const std::string& line : platform::componentsSeparatedBy(text, "\n")) {
    const auto colon = line.find(':');
    if (colon != std::string::npos && platform::trimmed(line.substr(0, colon)) == key) {
      return platform::trimmed(line.substr(colon + 1));
    }
  }
  return std::nullopt;
}

// A size that stands in KiB, in bytes.
std::optional<std::uint64_t> bytesOfKey(std::string_view meminfo, std::string_view key) {
  const std::string value = valueOfKey(meminfo, key).value_or("");
  std::uint64_t kibibytes = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), kibibytes);
  if (error != std::errc() || kibibytes > std::numeric_limits<std::uint64_t>::max() / 1024) {
    return std::nullopt;
  }
  return kibibytes * 1024;
}

bool saysSomething(const std::string& name) {
  constexpr std::array<std::string_view, 8> kFillers = {"To be filled by O.E.M.",
                                                        "System Product Name",
                                                        "Default string",
                                                        "Not Specified",
                                                        "Not Applicable",
                                                        "None",
                                                        "N/A",
                                                        "Undefined"};
  return !name.empty() && std::none_of(kFillers.begin(), kFillers.end(), [&name](std::string_view filler) {
    return platform::equalIgnoringCase(name, filler);
  });
}

std::int64_t numberOfKey(const std::optional<platform::Dictionary>& memory, std::string_view key) {
  const auto* value = memory ? memory->find(key) : nullptr;
  const auto* number = value != nullptr ? value->as<std::int64_t>() : nullptr;
  return number != nullptr ? *number : 0;
}

}  // namespace

std::optional<MemoryStatistics> memoryStatistics(std::string_view meminfo, std::uint64_t pageSize) {
  const auto free = bytesOfKey(meminfo, "MemFree");
  if (!free || pageSize == 0) {
    return std::nullopt;
  }
  MemoryStatistics statistics;
  statistics.freePages = static_cast<std::uint32_t>(
      std::min<std::uint64_t>(*free / pageSize, std::numeric_limits<std::uint32_t>::max()));
  // None of these counts what another one has.
  for (const char* key : {"Unevictable", "SUnreclaim", "KernelStack", "PageTables", "Percpu"}) {
    statistics.wiredPages += bytesOfKey(meminfo, key).value_or(0) / pageSize;
  }
  return statistics;
}

platform::Dictionary memoryDictionary(const MemoryStatistics& statistics, std::uint64_t pageSize,
                                      bool withWired) {
  const std::uint64_t freeBytes = statistics.freePages * pageSize;
  platform::Dictionary dictionary{{"freePages", static_cast<std::int64_t>(statistics.freePages)},
                                  {"freeBytes", static_cast<std::int64_t>(freeBytes)},
                                  {"freeMB", static_cast<std::int64_t>(freeBytes >> kBytesToMB)}};
  if (withWired) {
    dictionary.set("wiredMB", static_cast<std::int64_t>((statistics.wiredPages * pageSize) >> kBytesToMB));
  }
  return dictionary;
}

std::string hardwareModel(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    // The device tree ends its texts with a zero byte.
    std::string text = platform::trimmed(name.substr(0, name.find('\0')));
    if (saysSomething(text)) {
      return text;
    }
  }
  return {};
}

std::string processorName(std::string_view cpuinfo) {
  return valueOfKey(cpuinfo, "model name").value_or("");
}

std::optional<std::string> modelAndMachine(const std::string& model, const std::string& machine) {
  constexpr std::size_t kLeast = 16;
  using platform::StringEncoding;
  namespace additions = ZELKOR_NSStringAdditions;
  std::vector<char> buffer(std::max(model.size() + 1, kLeast));
  const auto textOf = [&buffer](const std::string& bytes) {
    std::fill(buffer.begin(), buffer.end(), '\0');
    std::copy_n(bytes.begin(), std::min(bytes.size(), buffer.size()), buffer.begin());
    return additions::stringWithCString_maxLength_encoding(buffer.data(), buffer.size(),
                                                           StringEncoding::UTF8);
  };
  const auto modelText = textOf(model);
  if (!modelText) {
    return std::nullopt;
  }
  return *modelText + stringWithFormat(" (%@)", textOf(machine));
}

std::optional<std::string> osReleaseValue(std::string_view osRelease, std::string_view key) {
  for (const std::string& line : platform::componentsSeparatedBy(osRelease, "\n")) {
    if (!line.starts_with(key) || line.find('=') != key.size()) {
      continue;
    }
    // As in a shell: quotes around it, a backslash before what would mean something.
    const std::string value = platform::trimmed(line.substr(key.size() + 1));
    const bool quoted =
        value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
    const std::string inner = quoted ? value.substr(1, value.size() - 2) : value;
    std::string text;
    for (std::size_t i = 0; i < inner.size(); ++i) {
      if (inner[i] == '\\' && i + 1 < inner.size() && value.front() != '\'') {
        ++i;
      }
      text += inner[i];
    }
    return text;
  }
  return std::nullopt;
}

double versionNumber(std::string_view text) {
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

std::string systemVersionText(const SystemFacts& facts, bool withWired) {
  constexpr const char* kByteOrder = "LittleEndian";
  constexpr long kWordSize = 64;
  const std::uint64_t physicalMB = facts.physicalMemory >> kBytesToMB;
  const std::int64_t freeMB = numberOfKey(facts.memory, "freeMB");
  if (!withWired) {
    return stringWithFormat("Mac OS X %@ foundation (%.3f);\n%lluMB (%ldMB free); %lu CPU; %@ (%ld-bit); %@",
                            facts.operatingSystemVersion, facts.foundationVersion, physicalMB, freeMB,
                            facts.processors, kByteOrder, kWordSize, facts.modelAndArch);
  }
  return stringWithFormat(
      "Mac OS X %@ foundation (%.3f);\n%lluMB (%ldMB wired, %ldMB free); %lu CPU; %@ (%ld-bit); %@",
      facts.operatingSystemVersion, facts.foundationVersion, physicalMB, numberOfKey(facts.memory, "wiredMB"),
      freeMB, facts.processors, kByteOrder, kWordSize, facts.modelAndArch);
}

std::string startupText(const std::string& processName, const std::string& systemVersionInfo) {
  constexpr std::size_t kLine = 80;
  return std::string(kLine, '^') + stringWithFormat("\n%@ starting up\n%@", processName, systemVersionInfo);
}

}  // namespace lumo
