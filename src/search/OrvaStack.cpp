#include "search/OrvaStack.h"

#include <algorithm>
#include <utility>

#include "support/memory/LumoMemoryManager.h"
#include "system/OrvaSystem.h"

OrvaStack::OrvaStack(int capacity)
    : _capacity(capacity), _entries(new Entry[static_cast<std::size_t>(capacity)]) {
  LumoMemoryManager::TraceNew(this, "OrvaStack");
}

OrvaStack::~OrvaStack() {
  delete[] _entries;
  LumoMemoryManager::TraceDelete(this, "OrvaStack");
}

void OrvaStack::Enlarge(int capacity) {
  if (capacity <= _capacity) return;
  auto* entries = new Entry[static_cast<std::size_t>(capacity)];
  std::copy_n(_entries, _order + 1, entries);
  delete[] std::exchange(_entries, entries);
  _capacity = capacity;
}

void OrvaStack::InitializeWalk(const OrvaSystem* system, const OrvaCutoff* /*cutoff*/) {
  Enlarge(system->GetNumberOfVariables());
  _order = 0;
}

void OrvaStack::TerminateWalk() {
  _order = 0;
  _lastChoicePoint = 0;
}
