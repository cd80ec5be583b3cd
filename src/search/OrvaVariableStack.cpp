#include "search/OrvaVariableStack.h"

#include <utility>

OrvaVariableStack::OrvaVariableStack(int capacity)
    : _variables(new OrvaVariable*[static_cast<std::size_t>(capacity)]), _capacity(capacity) {}

OrvaVariableStack::~OrvaVariableStack() { delete[] _variables; }

void OrvaVariableStack::_InitializeWalk(int capacity) {
  _order = 0;
  if (capacity <= _capacity) return;
  delete[] std::exchange(_variables, nullptr);
  _variables = new OrvaVariable*[static_cast<std::size_t>(capacity)];
  _capacity = capacity;
}
