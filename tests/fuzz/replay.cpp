// Gives each file below the folders and files named to the target once. Exit status 1: there was none.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/fuzz/fuzzing.h"

namespace {

void replay(const std::filesystem::path& path, int& inputs) {
  std::ifstream file(path, std::ios::binary);
  // Exactly as long as the input, so that a sanitizer sees the first byte beyond.
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  ++inputs;
}

}  // namespace

int main(int argc, char** argv) {
  int inputs = 0;
  for (int i = 1; i < argc; ++i) {
    if (!std::filesystem::is_directory(argv[i])) {
      replay(argv[i], inputs);
      continue;
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (entry.is_regular_file()) {
        replay(entry.path(), inputs);
      }
    }
  }
  std::printf("%d inputs\n", inputs);
  return inputs > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
