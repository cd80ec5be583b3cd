#pragma once

#include "system/OrvaVariable.h"

class OrvaSystem;

// The gate variables whose required value is not justified yet, in the order in which they were
// required. Each is here at most once per branch.
class OrvaResolvant {
 public:
  explicit OrvaResolvant(int capacity);
  ~OrvaResolvant();
  OrvaResolvant(const OrvaResolvant&) = delete;
  OrvaResolvant& operator=(const OrvaResolvant&) = delete;

  void Push(OrvaVariable* variable) { _variables[_order++] = variable; }
  // Drops the entries beyond the first `order` ones.
  void Pop(int order) { _order = order; }
  int GetOrder() const { return _order; }
  // From 0.
  OrvaVariable* GetVariable(int i) const { return _variables[i]; }

  // Makes room for every equation of the system; pushing checks nothing.
  void InitializeWalk(const OrvaSystem* system);
  void TerminateWalk() { _order = 0; }

 private:
  int _capacity;
  OrvaVariable** _variables;  // owned
  int _order = 0;
};
