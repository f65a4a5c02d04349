#include "tests/fakes/test_platform.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "platform/url.h"

namespace fakes {

namespace {

std::filesystem::path makeFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "lumo-bundle-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("no temporary folder for a bundle");
  }
  return pattern;
}

platform::Bundle makeBundle(const std::filesystem::path& folder, const TestBundle::Info& info) {
  const std::filesystem::path bundle = folder / "LumoBrowser.app";
  std::filesystem::create_directories(bundle / "Resources");
  std::ofstream file(bundle / "Info.plist");
  file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n";
  for (const auto& [key, value] : info) {
    file << "<key>" << platform::htmlEscaped(key) << "</key><string>" << platform::htmlEscaped(value)
         << "</string>\n";
  }
  file << "</dict>\n</plist>\n";
  file.close();
  return platform::Bundle(bundle);
}

}  // namespace

TestBundle::Info TestBundle::usualInfo() {
  return {{"CFBundleIdentifier", "com.lumo.LumoBrowser"},
          {"CFBundleName", "LumoBrowser"},
          {"CFBundleDisplayName", "Lumo Browser"},
          {"CFBundleShortVersionString", "1.0.0"},
          {"CFBundleVersion", "100"},
          {"DTXcode", "g++-12"},
          {"DTSDKName", "webkitgtk2.50"}};
}

TestBundle::TestBundle(const Info& info) : folder_(makeFolder()), bundle_(makeBundle(folder_, info)) {}

TestBundle::~TestBundle() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::filesystem::path TestBundle::addResource(const std::string& name, const std::string& content) {
  std::filesystem::path path = bundle_.path() / "Resources" / name;
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

TestPlatform::TestPlatform(const TestBundle::Info& info) : bundle(info) {
  windows.setClosedByPerson([this] { application.noteLastWindowClosed(); });
}

}  // namespace fakes
