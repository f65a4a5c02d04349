#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "app/PreferenceKeys.h"
#include "platform/log.h"
#include "platform/log_sink.h"
#include "platform/property_list_file.h"
#include "platform/standard_descriptors.h"
#include "platform/user_defaults.h"
#include "tools/lumoctl/arguments.h"
#include "tools/lumoctl/defaults_command.h"
#include "tools/lumoctl/json_line.h"
#include "tools/lumoctl/kiosk_bus.h"
#include "tools/lumoctl/open_plan.h"
#include "tools/lumoctl/selection.h"

// The operator's command. What it decides is in the pure files beside; here it meets the machine.

namespace lumoctl {

namespace {

namespace fs = std::filesystem;

constexpr const char* kIdentifier = "com.lumo.LumoBrowser";
constexpr std::chrono::seconds kStartPatience{30};
constexpr const char* kBusSilent = "the session bus does not answer";

int failed(const std::string& why) {
  std::cerr << "lumoctl: " << why << '\n';
  return kFailed;
}

// The kiosk's bundle: beside this program, or below the prefix into which both were installed.
std::optional<fs::path> findBundle() {
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  const std::array candidates{folder / "LumoBrowser.app",
                              folder.parent_path() / "lib/lumobrowser/LumoBrowser.app"};
  for (const fs::path& bundle : candidates) {
    if (fs::is_regular_file(bundle / "lumobrowser", error)) {
      return bundle;
    }
  }
  return std::nullopt;
}

platform::Dictionary factoryValues() {
  const auto bundle = findBundle();
  const auto list =
      bundle ? platform::propertyListFromFile(*bundle / "Resources/FactoryDefaults.plist") : std::nullopt;
  const auto* values = list ? list->as<platform::Dictionary>() : nullptr;
  return values == nullptr ? platform::Dictionary() : registeredValues(*values);
}

// The preferences as the kiosk sees them; null, with a complaint, when there is no place for them.
std::unique_ptr<platform::UserDefaults> preferences(const platform::Dictionary& factory) {
  const auto path = platform::UserDefaults::standardPath(kIdentifier);
  if (!path) {
    failed("the preferences have no place: neither XDG_CONFIG_HOME nor HOME is an absolute path");
    return nullptr;
  }
  auto defaults = std::make_unique<platform::UserDefaults>(*path);
  defaults->registerDefaults(factory);
  return defaults;
}

std::optional<std::string> ensureRunning(KioskBus& bus) {
  const auto running = bus.running();
  if (!running) {
    return kBusSilent;
  }
  if (*running) {
    return std::nullopt;
  }
  const auto bundle = findBundle();
  if (!bundle) {
    return "no kiosk runs, and LumoBrowser.app is neither beside lumoctl nor below its prefix";
  }
  return bus.start(*bundle / "lumobrowser", kStartPatience);
}

int run(const Open& command) {
  const auto factory = factoryValues();
  const auto defaults = preferences(factory);
  if (!defaults) {
    return kFailed;
  }
  const ServerAddresses servers{defaults->stringForKey(lumo::prefServerAddress),
                                defaults->stringForKey(lumo::prefDefaultServerAddress)};
  std::string error;
  std::optional<std::string> selected;
  OpenPlan plan;
  if (command.selection) {
    selected = primarySelection(error);
    if (!selected) {
      return failed(error);
    }
    plan.refusal = refusalOf(*selected, servers);
  } else {
    std::error_code ignored;
    plan = planOpen(command.items, fs::current_path(ignored).string(), servers,
                    [&ignored](const std::string& path) { return fs::exists(path, ignored); });
  }
  if (plan.refusal) {
    return failed(*plan.refusal);
  }
  const auto bus = KioskBus::connect(error);
  if (!bus) {
    return failed(error);
  }
  auto problem = ensureRunning(*bus);
  if (!problem) {
    problem = selected                 ? bus->searchText(*selected)
              : plan.addresses.empty() ? bus->activate()
                                       : bus->open(plan.addresses);
  }
  return problem ? failed(*problem) : kDone;
}

int run(const Listen&) {
  std::string error;
  const auto bus = KioskBus::connect(error);
  if (!bus) {
    return failed(error);
  }
  const bool asked = bus->listen([](const platform::DistributedNotification& notification) {
    std::cout << jsonLine(notification) << std::endl;
  });
  return asked ? kDone : failed("the session bus went away");
}

int run(const Status&) {
  std::string error;
  const auto bus = KioskBus::connect(error);
  if (!bus) {
    return failed(error);
  }
  const auto running = bus->running();
  if (!running) {
    return failed(kBusSilent);
  }
  if (!*running) {
    std::cout << "kiosk: not running\n";
    return kDone;
  }
  std::cout << "kiosk: running\n";
  if (const auto process = bus->process()) {
    std::cout << "pid: " << *process << '\n';
    std::error_code unreadable;
    const auto program = fs::read_symlink("/proc/" + std::to_string(*process) + "/exe", unreadable);
    if (!unreadable) {
      std::cout << "bundle: " << program.parent_path().string() << '\n';
    }
  }
  if (const auto defaults = preferences({})) {
    std::cout << "address: " << defaults->stringForKey(lumo::prefRunningUrlString).value_or("-") << '\n';
  }
  return kDone;
}

int run(const Help&) {
  std::cout << usageText;
  return kDone;
}

int run(const Version&) {
  std::cout << "lumoctl " LUMO_VERSION "\n";
  return kDone;
}

int run(const UsageError& error) {
  std::cerr << "lumoctl: " << error.message << "; lumoctl --help lists the commands\n";
  return kUsage;
}

template <class Command>
int runOnDefaults(const Command& command) {
  // Of a failure one line tells everything.
  std::vector<std::string> remarks;
  platform::setLogSink([&remarks](const std::string& text) { remarks.push_back(text); });
  const auto factory = factoryValues();
  auto defaults = preferences(factory);
  const int status = defaults ? command(*defaults, factory, Streams{std::cout, std::cerr, remarks}) : kFailed;
  // It may try once more to write what waits.
  defaults.reset();
  platform::setLogSink(nullptr);
  if (status == kDone) {
    for (const std::string& remark : remarks) {
      std::cerr << "lumoctl: " << remark << '\n';
    }
  }
  return status;
}

int run(const DefaultsRead& command) {
  return runOnDefaults([&](auto& defaults, const auto& factory, const Streams& streams) {
    return readDefaults(command, defaults, factory, streams);
  });
}

int run(const DefaultsWrite& command) {
  return runOnDefaults([&](auto& defaults, const auto&, const Streams& streams) {
    return writeDefaults(command, defaults, streams);
  });
}

int run(const DefaultsDelete& command) {
  return runOnDefaults([&](auto& defaults, const auto&, const Streams& streams) {
    return deleteDefaults(command, defaults, streams);
  });
}

int run(const DefaultsList&) {
  return runOnDefaults([&](auto& defaults, const auto& factory, const Streams& streams) {
    return listDefaults(defaults, factory, streams);
  });
}

int run(const DefaultsExport& command) {
  return runOnDefaults([&](auto& defaults, const auto&, const Streams& streams) {
    return exportDefaults(command, defaults, streams);
  });
}

int run(const DefaultsImport& command) {
  return runOnDefaults([&](auto& defaults, const auto&, const Streams& streams) {
    return importDefaults(command, defaults, std::cin, streams);
  });
}

}  // namespace

}  // namespace lumoctl

int main(int count, char** words) {
  platform::openStandardDescriptors();
  platform::setLogProcessName("lumoctl");
  std::ios::sync_with_stdio(false);
  const std::vector<std::string> arguments(words + (count > 0 ? 1 : 0), words + count);
  const auto command = lumoctl::parseArguments(arguments);
  const int status = std::visit([](const auto& command) { return lumoctl::run(command); }, command);
  std::cout.flush();
  if (!std::cout && status == lumoctl::kDone) {
    return lumoctl::failed("the output could not be written");
  }
  return status;
}
