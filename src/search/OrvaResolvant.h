#pragma once

#include <cassert>

#include "search/OrvaVariableStack.h"

class OrvaSystem;

// The gate variables whose required value is not justified yet, in the order in which they were
// required. Each is here at most once per branch.
class OrvaResolvant : public OrvaVariableStack {
 public:
  explicit OrvaResolvant(int capacity);
  ~OrvaResolvant();

  void Push(OrvaVariable* variable) {
    assert(_HasRoom());
    _variables[_order++] = variable;
  }
  // Drops the entries beyond the first `order` ones.
  void Pop(int order) {
    assert(order >= 0 && order <= _order);
    _order = order;
  }

  // Makes room for every equation of the system.
  void InitializeWalk(const OrvaSystem* system);
};
