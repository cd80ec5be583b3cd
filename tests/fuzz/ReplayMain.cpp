// Runs a fuzz target on files, and on all files below folders.

#include <filesystem>
#include <fstream>
#include <iterator>

#include "OrvaFuzzSupport.h"

namespace {

int Replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    if (std::filesystem::is_regular_file(argv[i])) count += Replay(argv[i]);
    if (!std::filesystem::is_directory(argv[i])) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (entry.is_regular_file()) count += Replay(entry.path());
    }
  }
  std::printf("%d files replayed\n", count);
  return count > 0 ? 0 : 1;
}
