#pragma once

#include <cassert>

#include "system/OrvaVariable.h"

class OrvaCutoff;
class OrvaSystem;

// The backtracking stack of the search: the variables in the order in which they were set, each
// with what is needed to undo it. Entries count from 1.
class OrvaStack {
 public:
  enum Branching : int { FIRST_CHOICE = 0, SECOND_CHOICE = 1, UNIT = 2, CUTOFF = 3 };

  explicit OrvaStack(int capacity);
  ~OrvaStack();
  OrvaStack(const OrvaStack&) = delete;
  OrvaStack& operator=(const OrvaStack&) = delete;

  // The variable, the value that it had, the order that the resolvant had.
  void Push(OrvaVariable* variable, OrvaVariable::Value value, int resolvantOrder,
            Branching branching) {
    if (_order == _capacity - 1) Enlarge(2 * _capacity);
    assert(variable != nullptr && _order + 1 < _capacity);
    _entries[++_order] = {variable, value, resolvantOrder, branching};
  }
  // Removes the last entry. An empty stack yields a null variable, value 0, order 0 and UNIT; so
  // do all readers for an entry that does not exist.
  void Pop(OrvaVariable*& variable, OrvaVariable::Value& value, int& resolvantOrder,
           Branching& branching) {
    if (_order == 0) return GetFloor(0, variable, value, resolvantOrder, branching);
    const Entry& entry = _entries[_order--];
    variable = entry.variable;
    value = entry.value;
    resolvantOrder = entry.resolvantOrder;
    branching = entry.branching;
  }
  // Entry i; -1 means the last.
  void GetFloor(int i, OrvaVariable*& variable, OrvaVariable::Value& value, int& resolvantOrder,
                Branching& branching) const {
    const Entry entry = _GetEntry(i);
    variable = entry.variable;
    value = entry.value;
    resolvantOrder = entry.resolvantOrder;
    branching = entry.branching;
  }
  int GetOrder() const { return _order; }
  // The order at which the search has been undone completely.
  int GetLastChoicePoint() const { return _lastChoicePoint; }
  void SetLastChoicePoint(int order) { _lastChoicePoint = order; }
  bool IsAtLastChoicePoint() const {
    assert(_order >= _lastChoicePoint);
    return _order == _lastChoicePoint;
  }

  // Grows, never shrinks.
  void Enlarge(int capacity);
  void InitializeWalk(const OrvaSystem* system, const OrvaCutoff* cutoff);
  void TerminateWalk();

  // Offered to users of the class; the program itself does not call what follows.
  void GetTop(OrvaVariable*& variable, OrvaVariable::Value& value, int& resolvantOrder,
              Branching& branching) const {
    GetFloor(_order, variable, value, resolvantOrder, branching);
  }
  OrvaVariable* GetVariable(int i) const { return _GetEntry(i).variable; }
  OrvaVariable::Value GetValue(int i) const { return _GetEntry(i).value; }
  Branching GetBranching(int i) const { return _GetEntry(i).branching; }
  int GetCapacity() const { return _capacity; }

 private:
  struct Entry {
    OrvaVariable* variable;
    OrvaVariable::Value value;
    int resolvantOrder;
    Branching branching;
  };

  Entry _GetEntry(int i) const {
    if (i == -1) i = _order;
    if (i < 1 || i > _order) return {nullptr, OrvaVariable::POSSIBLY_FALSE, 0, UNIT};
    return _entries[i];
  }

  int _capacity;
  Entry* _entries;  // owned; slot 0 is not used
  int _order = 0;
  int _lastChoicePoint = 0;
};
