#include "mcs/OrvaUnitStack.h"

#include <utility>

#include "support/memory/LumoMemoryManager.h"
#include "system/OrvaSystem.h"

OrvaUnitStack::OrvaUnitStack(int capacity)
    : _capacity(capacity), _variables(new OrvaVariable*[static_cast<std::size_t>(capacity)]) {
  LumoMemoryManager::TraceNew(this, "OrvaUnitStack");
}

OrvaUnitStack::~OrvaUnitStack() {
  delete[] _variables;
  LumoMemoryManager::TraceDelete(this, "OrvaUnitStack");
}

void OrvaUnitStack::InitializeWalk(const OrvaSystem* system) {
  _order = 0;
  if (system->GetNumberOfVariables() <= _capacity) return;
  _capacity = system->GetNumberOfVariables();
  delete[] std::exchange(_variables, nullptr);
  _variables = new OrvaVariable*[static_cast<std::size_t>(_capacity)];
}
