// The file of the preferences, XML or binary.

#include <filesystem>
#include <optional>
#include <string>

#include <stdlib.h>

#include "platform/domain_file.h"
#include "platform/property_list_file.h"
#include "tests/fuzz/fuzzing.h"

using fuzzing::require;

namespace {

namespace fs = std::filesystem;

// In memory, and empty for each input.
class Folder {
 public:
  Folder() {
    std::string name = fs::exists("/dev/shm") ? "/dev/shm/lumo-fuzz-XXXXXX" : "/tmp/lumo-fuzz-XXXXXX";
    require(::mkdtemp(name.data()) != nullptr, "there is a place for the file");
    path_ = name;
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  void clear() const {
    for (const auto& entry : fs::directory_iterator(path_)) {
      fs::remove(entry.path());
    }
  }
  fs::path file() const { return path_ / "domain.plist"; }

 private:
  fs::path path_;
};

void write(const fs::path& path, std::string_view bytes) {
  FILE* file = std::fopen(path.c_str(), "wb");
  require(file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size(),
          "the file can be written");
  std::fclose(file);
}

void lookAtDomain(std::string_view bytes, const std::optional<platform::PropertyList>& list) {
  static const Folder folder;
  folder.clear();
  write(folder.file(), bytes);
  platform::DomainFile file(folder.file());
  const auto values = file.read();
  require(values.has_value(), "a file that can be opened is read or set aside");
  const auto* const dictionary = list ? list->as<platform::Dictionary>() : nullptr;
  require(values->empty() || dictionary != nullptr, "only a dictionary has values");
  const auto lock = file.lock();
  require(lock && file.read(*lock), "the file can be locked");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto list = platform::propertyListFromData(bytes);
  if (list) {
    const std::string xml = platform::xmlDataFromPropertyList(*list);
    if (xml.size() <= platform::propertyListSizeLimit) {
      const auto again = platform::propertyListFromData(xml);
      require(again.has_value(), "what was written can be read");
      require(platform::xmlDataFromPropertyList(*again) == xml, "what was read is written the same");
    }
    platform::boolValue(*list);
    platform::stringValue(*list);
  }
  lookAtDomain(bytes, list);
  return 0;
}
