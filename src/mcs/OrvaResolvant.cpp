#include "mcs/OrvaResolvant.h"

#include <utility>

#include "support/memory/LumoMemoryManager.h"
#include "system/OrvaSystem.h"

OrvaResolvant::OrvaResolvant(int capacity)
    : _capacity(capacity), _variables(new OrvaVariable*[static_cast<std::size_t>(capacity)]) {
  LumoMemoryManager::TraceNew(this, "OrvaResolvant");
}

OrvaResolvant::~OrvaResolvant() {
  delete[] _variables;
  LumoMemoryManager::TraceDelete(this, "OrvaResolvant");
}

void OrvaResolvant::InitializeWalk(const OrvaSystem* system) {
  _order = 0;
  if (system->GetNumberOfEquations() <= _capacity) return;
  _capacity = system->GetNumberOfEquations();
  delete[] std::exchange(_variables, nullptr);
  _variables = new OrvaVariable*[static_cast<std::size_t>(_capacity)];
}
