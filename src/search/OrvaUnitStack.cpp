#include "search/OrvaUnitStack.h"

#include "support/memory/LumoMemoryManager.h"
#include "system/OrvaSystem.h"

OrvaUnitStack::OrvaUnitStack(int capacity) : OrvaVariableStack(capacity) {
  LumoMemoryManager::TraceNew(this, "OrvaUnitStack");
}

OrvaUnitStack::~OrvaUnitStack() { LumoMemoryManager::TraceDelete(this, "OrvaUnitStack"); }

void OrvaUnitStack::InitializeWalk(const OrvaSystem* system) {
  _InitializeWalk(system->GetNumberOfVariables());
}
