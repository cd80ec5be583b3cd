#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "ModelGenerator.h"

// Writes a generated model to standard output.
int main(int argc, char** argv) {
  const std::string_view law = argc == 4 ? argv[3] : "probability";
  if (argc < 2 || argc > 4 || (law != "probability" && law != "rate" && law != "lognormal")) {
    std::fprintf(stderr,
                 "usage: generate-model NUMBER-OF-BASIC-EVENTS "
                 "[SEED [probability|rate|lognormal]]\n");
    return 1;
  }
  const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 1;
  const Law kind = law == "rate"        ? Law::RATE
                   : law == "lognormal" ? Law::LOGNORMAL
                                        : Law::PROBABILITY;
  std::fputs(GenerateModel(std::atoi(argv[1]), seed, kind).c_str(), stdout);
  return 0;
}
