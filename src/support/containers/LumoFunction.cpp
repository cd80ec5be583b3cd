#include "support/containers/LumoFunction.h"

#include <cstdio>
#include <functional>

void LumoFunction::DoNothing(void* /*item*/) {}

void* LumoFunction::SelfAccess(void* item) { return item; }

int LumoFunction::CompareAddress(const void* item, const void* key) {
  const std::less<> isBefore;
  return static_cast<int>(isBefore(key, item)) - static_cast<int>(isBefore(item, key));
}

int LumoFunction::Return0(const void* /*item*/, const void* /*key*/) { return 0; }

void LumoFunction::TraceMessage(const char* text) { std::fprintf(stderr, "%s\n", text); }
