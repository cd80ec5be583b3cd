#pragma once

#include <cassert>

#include "search/OrvaVariableStack.h"

class OrvaSystem;

// The variables whose value is implied and not set yet, last in, first out. The implied value is
// kept in the variable itself, 0 meaning that it is not here: no variable is on the stack twice.
class OrvaUnitStack : public OrvaVariableStack {
 public:
  explicit OrvaUnitStack(int capacity);
  ~OrvaUnitStack();

  // True for a conflict: the variable waits for the opposite fixed value. It stays as it is then;
  // so it does when it waits for the same value.
  bool Push(OrvaVariable* variable, OrvaVariable::Value value) {
    const OrvaVariable::Value pending = variable->GetUnitValue();
    if (pending != OrvaVariable::POSSIBLY_FALSE) {
      return OrvaVariable::IsFixed(pending) && value == OrvaVariable::GetOpposite(pending);
    }
    assert(_HasRoom() && value != OrvaVariable::POSSIBLY_FALSE);
    variable->SetUnitValue(value);
    _variables[_order++] = variable;
    return false;
  }
  // Null from an empty stack.
  void Pop(OrvaVariable*& variable, OrvaVariable::Value& value) {
    if (_order == 0) {
      variable = nullptr;
      value = OrvaVariable::POSSIBLY_FALSE;
      return;
    }
    variable = _variables[--_order];
    value = variable->GetUnitValue();
    assert(value != OrvaVariable::POSSIBLY_FALSE);
    variable->SetUnitValue(OrvaVariable::POSSIBLY_FALSE);
  }
  void Flush() {
    while (_order > 0) _variables[--_order]->SetUnitValue(OrvaVariable::POSSIBLY_FALSE);
  }
  bool IsEmpty() const { return _order == 0; }

  // Makes room for every variable of the system.
  void InitializeWalk(const OrvaSystem* system);
};
