#include "search/OrvaResolvant.h"

#include "support/memory/LumoMemoryManager.h"
#include "system/OrvaSystem.h"

OrvaResolvant::OrvaResolvant(int capacity) : OrvaVariableStack(capacity) {
  LumoMemoryManager::TraceNew(this, "OrvaResolvant");
}

OrvaResolvant::~OrvaResolvant() { LumoMemoryManager::TraceDelete(this, "OrvaResolvant"); }

void OrvaResolvant::InitializeWalk(const OrvaSystem* system) {
  _InitializeWalk(system->GetNumberOfEquations());
}
