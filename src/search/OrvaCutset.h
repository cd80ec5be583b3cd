#pragma once

#include <cassert>
#include <climits>
#include <utility>

#include "search/OrvaCutoff.h"
#include "system/OrvaVariable.h"

class OrvaSystem;

// The current cutset of the search: the input variables that are set true, in the order in which
// they were set, each with the product of the highest cutset probabilities so far. Entries count
// from 1; slot 0 holds the empty product.
class OrvaCutset {
 public:
  explicit OrvaCutset(int capacity);
  ~OrvaCutset();
  OrvaCutset(const OrvaCutset&) = delete;
  OrvaCutset& operator=(const OrvaCutset&) = delete;

  void Push(OrvaVariable* variable) {
    assert(variable->IsInputVariable() && _order + 1 < _capacity);
    const double product = _entries[_order].product * variable->GetHighestCutsetProbability();
    _entries[++_order] = {variable, product};
  }
  // From a cutset that is not empty.
  void Pop() {
    assert(_order > 0);
    --_order;
  }
  int GetOrder() const { return _order; }
  // Entry i, -1 for the last; null outside.
  OrvaVariable* GetVariable(int i) const;

  // Whether the cutset with one more variable respects the cutoff. A probability that is no number
  // does: what is unknown must not disappear from the results.
  bool CheckCutoffAhead(const OrvaVariable* variable) const {
    assert(_cutoff != nullptr);
    if (_order + 1 > _cutoff->GetMaximumOrder()) return false;
    return !(variable->GetHighestCutsetProbability() * _entries[_order].product <
             _cutoff->GetMinimumProbability());
  }

  // Whether no variable can be left out without making the top variable false. Brings the cutset
  // values of all variables to the current cutset, from the one tested before.
  bool CheckMinimality();
  // The lowest position, on the path of the last stored cutset, of the variables whose cutset value
  // has changed since the last call; INT_MAX for none.
  int TakeLowestChangedPathPosition() { return std::exchange(_lowestChangedPathPosition, INT_MAX); }

  void InitializeWalk(OrvaSystem* system, const OrvaCutoff* cutoff);
  // Makes the cutset values of all variables those of the empty cutset.
  void TerminateWalk();
  // Makes room for that many slots; grows, never shrinks.
  void Enlarge(int capacity);

  // Offered to users of the class; the program itself does not call what follows.
  void Pop(OrvaVariable*& variable) {
    GetTop(variable);
    Pop();
  }
  void GetTop(OrvaVariable*& variable) const { variable = _entries[_order].variable; }
  // The product up to entry i, -1 for the last; 1.0 outside.
  double GetProbability(int i) const;
  // Whether the cutset respects the cutoff as it stands.
  bool CheckCutoff() const {
    return _order <= _cutoff->GetMaximumOrder() &&
           !(_entries[_order].product < _cutoff->GetMinimumProbability());
  }

 private:
  struct Entry {
    OrvaVariable* variable;
    double product;
  };

  void _BringValuationToCurrentCutset();
  void _NoteChange(const OrvaVariable* variable);

  int _capacity;
  Entry* _entries;  // owned
  int _order = 0;
  OrvaVariable** _previous;  // the cutset tested before, from 1; owned
  int _previousOrder = 0;
  int _lowestChangedPathPosition = INT_MAX;
  OrvaSystem* _system = nullptr;
  OrvaVariable* _topVariable = nullptr;
  const OrvaCutoff* _cutoff = nullptr;
};
