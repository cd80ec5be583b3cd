#include "search/OrvaWalkObserver.h"

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

namespace {
constexpr const char* UNSET_NAME = "?";
}

OrvaWalkObserver::OrvaWalkObserver() { LumoMemoryManager::TraceNew(this, "OrvaWalkObserver"); }

OrvaWalkObserver::~OrvaWalkObserver() {
  Reset();
  LumoMemoryManager::TraceDelete(this, "OrvaWalkObserver");
}

void OrvaWalkObserver::Reset() {
  numberOfGates = numberOfBasicEvents = numberOfModules = 0;
  maximumOrder = INT_MAX;
  minimumProbability = 0.0;
  unit = branching = cutoff = 0;
  deadEnds = cutoffs = nonMinimalCutsets = minimalCutsets = knownMinimalCutsets = 0;
  SetTopEventName(nullptr);
  SetRunningTime(nullptr);
}

const char* OrvaWalkObserver::GetTopEventName() const {
  return _topEventName == nullptr ? UNSET_NAME : _topEventName;
}

void OrvaWalkObserver::SetTopEventName(const char* name) {
  LumoRawString::Replace(_topEventName, name);
}

void OrvaWalkObserver::SetRunningTime(const char* time) {
  LumoRawString::Replace(_runningTime, time);
}
