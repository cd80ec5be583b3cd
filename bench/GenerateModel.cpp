#include <cstdio>
#include <cstdlib>

#include "ModelGenerator.h"

// Writes a generated model to standard output.
int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: generate-model NUMBER-OF-BASIC-EVENTS [SEED]\n");
    return 1;
  }
  const unsigned seed = argc == 3 ? static_cast<unsigned>(std::atoi(argv[2])) : 1;
  std::fputs(GenerateModel(std::atoi(argv[1]), seed).c_str(), stdout);
  return 0;
}
