#pragma once

#include <cassert>

#include "system/OrvaVariable.h"

// What the unit stack and the resolvant share: a stack of variables whose room is made before a
// walk and never given back. Pushing checks nothing. Entries count from 0.
class OrvaVariableStack {
 public:
  OrvaVariableStack(const OrvaVariableStack&) = delete;
  OrvaVariableStack& operator=(const OrvaVariableStack&) = delete;

  int GetOrder() const { return _order; }
  OrvaVariable* GetVariable(int i) const {
    assert(i >= 0 && i < _order);
    return _variables[i];
  }
  void TerminateWalk() { _order = 0; }

 protected:
  explicit OrvaVariableStack(int capacity);
  ~OrvaVariableStack();
  // Empties the stack and makes room for that many variables.
  void _InitializeWalk(int capacity);
  bool _HasRoom() const { return _order < _capacity; }

  OrvaVariable** _variables;  // owned
  int _order = 0;

 private:
  int _capacity;
};
