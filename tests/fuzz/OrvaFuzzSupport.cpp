#include "OrvaFuzzSupport.h"

#include <csignal>
#include <cstdlib>

#include "support/memory/LumoMemoryManager.h"

void OrvaRequire(bool condition, const char* expectation) {
  if (condition) return;
  std::fprintf(stderr, "It is not so that %s\n", expectation);
  std::abort();
}

OrvaBytesFile::OrvaBytesFile(std::string_view bytes)
    : _file(fmemopen(const_cast<char*>(bytes.data()), bytes.size(), "r")) {
  OrvaRequire(_file != nullptr, "bytes can be opened as a file");
}

OrvaBytesFile::~OrvaBytesFile() { std::fclose(_file); }

OrvaBalanceCheck::OrvaBalanceCheck() {
  OrvaGetNowhere();  // which lives on
  _balance = LumoMemoryManager::GetAllocationBalance();
}

OrvaBalanceCheck::~OrvaBalanceCheck() {
  OrvaRequire(LumoMemoryManager::GetAllocationBalance() == _balance, "nothing is leaked");
}

LumoFileStream* OrvaGetNowhere() {
  static LumoFileStream* const NOWHERE = new LumoFileStream(false, std::fopen("/dev/null", "w"));
  return NOWHERE;
}

// What libFuzzer calls first; the replay doesn't. The messages of the engine are dropped: those of
// libFuzzer go to the stream that it has kept, those of the sanitizers past the streams. At its
// limit of processor time the process ends as if interrupted, with its statistics.
extern "C" int LLVMFuzzerInitialize(int*, char***);
extern "C" int LLVMFuzzerInitialize(int*, char***) {
  OrvaGetNowhere();
  LumoMemoryManager::SetTraceNullPointerDeletions(false);
  stderr = OrvaGetNowhere()->GetFile();
  std::signal(SIGXCPU, [](int) { std::raise(SIGINT); });
  return 0;
}
