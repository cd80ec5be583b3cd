#include "support/time/LumoTimer.h"

#include <cstdio>

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

LumoTimer::LumoTimer(const char* name) : _name(LumoRawString::CopyIfAny(name)) {
  LumoMemoryManager::TraceNew(this, "LumoTimer");
}

LumoTimer::~LumoTimer() {
  LumoRawString::DeleteIfAny(_name);
  LumoMemoryManager::TraceDelete(this, "LumoTimer");
}

void LumoTimer::Start() {
  _startTime = std::time(nullptr);
  _startTicks = std::clock();
}

void LumoTimer::Stop() {
  _accumulatedSeconds += std::difftime(std::time(nullptr), _startTime);
  _accumulatedTicks += std::clock() - _startTicks;
}

char* LumoTimer::ToStringOfTimeInSeconds() const {
  constexpr double LONGEST_TIME_IN_HUNDREDTHS = 60.0;
  char text[64];
  if (_accumulatedSeconds < LONGEST_TIME_IN_HUNDREDTHS) {
    const long hundredths = static_cast<long>(_accumulatedTicks * 100 / CLOCKS_PER_SEC);
    std::snprintf(text, sizeof text, "%ld.%02ld", hundredths / 100, hundredths % 100);
  } else {
    std::snprintf(text, sizeof text, "%g", _accumulatedSeconds);
  }
  return LumoRawString::Copy(text);
}

// Offered to users of the class; the program itself does not call what follows.

void LumoTimer::SetName(const char* name) { LumoRawString::Replace(_name, name); }

int LumoTimer::CompareName(const char* name) const { return LumoRawString::Compare(_name, name); }

void LumoTimer::Reset() {
  _accumulatedSeconds = 0.0;
  _accumulatedTicks = 0;
}
