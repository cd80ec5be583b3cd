#include <cstdio>

#include "driver/OrvaInterpreter.h"
#include "support/time/LumoProgress.h"

namespace {

// Fills the places of standard streams that are closed: files open in the lowest free place, and a
// result file there would get what is meant for the stream. What is written to these fails.
class ClosedStandardStreams {
 public:
  ClosedStandardStreams() {
    for (std::FILE*& file : _files) file = std::fopen("/dev/null", "r");
  }
  ~ClosedStandardStreams() {
    for (std::FILE* file : _files) {
      if (file != nullptr) std::fclose(file);
    }
  }
  ClosedStandardStreams(const ClosedStandardStreams&) = delete;
  ClosedStandardStreams& operator=(const ClosedStandardStreams&) = delete;

 private:
  std::FILE* _files[3];
};

}  // namespace

// Evaluates each argument in turn, up to the first that fails.
int main(int argc, char** argv) {
  const ClosedStandardStreams closed;
  LumoProgress::Start();
  int result = 0;
  for (int i = 1; i < argc && result == 0; ++i) result = Orva_EvalScriptFile(argv[i]);
  if (std::puts("bye") == EOF || std::fflush(stdout) == EOF) {
    std::fputs("Unable to write standard output\n", stderr);
    result = 1;
  }
  return result;
}
