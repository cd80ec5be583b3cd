#include <cstdio>

#include "driver/OrvaInterpreter.h"

// Evaluates each argument in turn, up to the first that fails.
int main(int argc, char** argv) {
  int result = 0;
  for (int i = 1; i < argc && result == 0; ++i) result = Orva_EvalScriptFile(argv[i]);
  if (std::puts("bye") == EOF || std::fflush(stdout) == EOF) {
    std::fputs("Unable to write standard output\n", stderr);
    result = 1;
  }
  return result;
}
