#include "support/containers/LumoFunction.h"

#include <cstdio>
#include <functional>

void LumoFunction::DoNothing(void* /*item*/) {}

int LumoFunction::CompareAddress(const void* item, const void* key) {
  const std::less<> isBefore;
  return static_cast<int>(isBefore(key, item)) - static_cast<int>(isBefore(item, key));
}

// Offered to users of the class; the program itself does not call what follows.

void* LumoFunction::SelfAccess(void* item) { return item; }

int LumoFunction::Return0(const void* /*item*/, const void* /*key*/) { return 0; }

void LumoFunction::TraceMessage(const char* text) { std::fprintf(stderr, "%s\n", text); }
