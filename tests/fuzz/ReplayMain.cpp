// Runs a fuzz target on files, and on all files below folders.
//
//   fuzz-TARGET [--stride N --replacements N] FILE_OR_FOLDER...
//
// With options also on each file cut at every stride-th byte, and with so many replacements of one
// byte by another. What a target fails on is written to the file "finding".

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "OrvaFuzzSupport.h"

namespace {

std::size_t stride = 0;
std::size_t replacements = 0;

const std::string* current = nullptr;

void KeepFinding(int number) {
  std::signal(number, SIG_DFL);
  std::ofstream("finding", std::ios::binary) << *current;
  std::raise(number);
}

int Replay(const std::string& bytes) {
  current = &bytes;
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  return 1;
}

// A byte that means something to the readers, or any other.
char DrawByte(std::mt19937& random) {
  constexpr char BYTES[] = {'\0', '\xff', '"', '<', '&', '%', '\\'};
  const std::size_t i = random() % (sizeof BYTES + 1);
  return i < sizeof BYTES ? BYTES[i] : static_cast<char>(random() % 256);
}

int Replay(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(file), {});
  int count = Replay(bytes);
  for (std::size_t i = 0; stride > 0 && i < bytes.size(); i += stride) {
    count += Replay(bytes.substr(0, i));
  }
  std::mt19937 random(1);
  for (std::size_t i = 0; i < replacements && !bytes.empty(); ++i) {
    std::string damaged = bytes;
    damaged[random() % bytes.size()] = DrawByte(random);
    count += Replay(damaged);
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  for (const int number : {SIGABRT, SIGSEGV, SIGFPE, SIGTERM}) std::signal(number, KeepFinding);
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--stride") stride = std::strtoul(argv[++i], nullptr, 10);
    if (argument == "--replacements") replacements = std::strtoul(argv[++i], nullptr, 10);
    if (std::filesystem::is_regular_file(argument))
      count += Replay(std::filesystem::path(argument));
    if (!std::filesystem::is_directory(argument)) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argument)) {
      if (entry.is_regular_file()) count += Replay(entry.path());
    }
  }
  std::printf("%d texts\n", count);
  return count > 0 ? 0 : 1;
}
