#include <cstdio>

#include "check/OrvaScriptCheck.h"
#include "support/text/LumoRawString.h"

namespace {

constexpr const char* USAGE =
    "usage: orva-check FILE...\n"
    "\n"
    "Looks at scripts and models, as orva would read them, for what goes wrong in silence.\n"
    "Findings go to standard error. The status is 1 when there is a warning or an error.\n";
constexpr const char* USAGE_ARGUMENTS[] = {"--help", "-h"};

bool IsUsageArgument(const char* argument) {
  for (const char* usageArgument : USAGE_ARGUMENTS) {
    if (LumoRawString::IsEqual(argument, usageArgument)) return true;
  }
  return false;
}

}  // namespace

// Looks at each file by itself, whatever the others have.
int main(int argc, char** argv) {
  if (argc > 1 && IsUsageArgument(argv[1])) return std::fputs(USAGE, stdout) == EOF ? 1 : 0;
  if (argc <= 1) {
    std::fputs(USAGE, stderr);
    return 1;
  }
  int result = 0;
  for (int i = 1; i < argc; ++i) result |= Orva_CheckFile(argv[i]);
  return result;
}
