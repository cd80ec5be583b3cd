#pragma once

#include <array>
#include <cassert>
#include <cstdint>
#include <span>

#include "support/values/LumoAttributeAccess.h"
#include "system/OrvaVariable.h"

// A variable or its negation.
class OrvaLiteral {
 public:
  OrvaVariable* GetVariable() const { return _variable; }
  bool GetSign() const { return _sign; }
  // `sign` is true for the variable itself. A new literal has no variable.
  void Set(OrvaVariable* variable, bool sign) {
    _variable = variable;
    _sign = sign;
  }
  // The value of the literal.
  OrvaVariable::Value GetCandidateValue() const {
    const OrvaVariable::Value value = _variable->GetCandidateValue();
    return _sign ? value : OrvaVariable::GetOpposite(value);
  }

 private:
  OrvaVariable* _variable = nullptr;
  bool _sign = true;
};

// An equation of a system: its left member (the fanout) is true exactly when at least k of its n
// literals (the fanins) are. The fields that the search moves stand first.
class OrvaEquation : public LumoAttributeAccess<OrvaEquation> {
 public:
  OrvaEquation();
  ~OrvaEquation();
  OrvaEquation(const OrvaEquation&) = delete;
  OrvaEquation& operator=(const OrvaEquation&) = delete;
  // Back to a new equation, but for the system, the number and the counters of the search.
  void Reset();

  OrvaVariable* GetFanout() const { return _fanout; }
  void SetFanout(OrvaVariable* variable) { _fanout = variable; }
  // The threshold k and the number n of literals.
  int GetMin() const { return _min; }
  void SetMin(int k) { _min = k; }
  int GetSize() const { return _size; }

  // Replaces the table by one of n literals without variable.
  void CreateFaninTable(int n);
  std::span<const OrvaLiteral> GetFanins() const {
    return {_fanins, static_cast<std::size_t>(_size)};
  }
  // Literals count from 0. Outside the table, setting is ignored.
  void SetFanin(int i, OrvaVariable* variable, bool sign);

  // The number of literals of each value, moved by the search, and the thresholds: from k true
  // literals on the right member is true, from n + 1 - k false ones on it is false.
  int GetCandidateCount(OrvaVariable::Value value) const {
    return _candidateCounts[static_cast<unsigned>(value)];
  }
  void MoveCandidate(OrvaVariable::Value from, OrvaVariable::Value to) {
    assert(_candidateCounts[static_cast<unsigned>(from)] > 0);
    --_candidateCounts[static_cast<unsigned>(from)];
    ++_candidateCounts[static_cast<unsigned>(to)];
  }
  int GetNumberOfLiteralsForTrue() const { return _needTrue; }
  int GetNumberOfLiteralsForFalse() const { return _needFalse; }
  // Counts the literals afresh.
  void ResetCandidateCounts();
  OrvaVariable::Value GetRightMemberCandidateValue() const {
    const int surelyTrue = _candidateCounts[OrvaVariable::NECESSARILY_TRUE];
    if (surelyTrue >= _min) return OrvaVariable::NECESSARILY_TRUE;
    const int nowTrue = surelyTrue + _candidateCounts[OrvaVariable::POSSIBLY_TRUE];
    if (nowTrue >= _min) return OrvaVariable::POSSIBLY_TRUE;
    const bool isReachable = nowTrue + _candidateCounts[OrvaVariable::POSSIBLY_FALSE] >= _min;
    return isReachable ? OrvaVariable::POSSIBLY_FALSE : OrvaVariable::NECESSARILY_FALSE;
  }

  // The value of the left member, as the search has set it: where the search looks at it, it has
  // the equation at hand, but not the variable.
  OrvaVariable::Value GetLeftValue() const { return _leftValue; }
  void SetLeftValue(OrvaVariable::Value value) { _leftValue = value; }

  // The propagation in which all literals were last implied, for the walker; 0 for none.
  std::uint64_t GetPropagation() const { return _propagation; }
  void SetPropagation(std::uint64_t number) { _propagation = number; }

  // k minus the number of literals that are true under the current cutset: the left member is true
  // there when it is below 1.
  int GetCutsetCount() const { return _cutsetCount; }
  void IncrementCutsetCount() {
    ++_cutsetCount;
    assert(_IsCutsetCountInRange());
  }
  void DecrementCutsetCount() {
    --_cutsetCount;
    assert(_IsCutsetCountInRange());
  }
  bool IsTrueInCutset() const { return _cutsetCount < 1; }
  void ResetCutsetCount();
  // Whether all counts are what counting afresh would make them, for assertions.
  bool AreCountsRight() const;

  void SetSystem(OrvaSystem* system) { _system = system; }
  void SetNumber(int number) { _number = number; }

  // Offered to users of the class; the program itself does not call what follows.
  // Outside the table, getting yields null and true.
  void GetFanin(int i, OrvaVariable*& variable, bool& sign) const;
  OrvaVariable* GetFaninVariable(int i) const;
  bool GetFaninPolarity(int i) const;
  void SwapFanins(int i, int j);
  // Orders the literals by a three-way function on them; equal ones keep their order.
  void SortFanins(int (*compare)(const void* a, const void* b));
  // Both members are fixed.
  bool IsResolved() const {
    return _fanout->IsFixed() && OrvaVariable::IsFixed(GetRightMemberCandidateValue());
  }
  void SetCutsetCount(int count) { _cutsetCount = count; }
  OrvaSystem* GetSystem() const { return _system; }
  int GetNumber() const { return _number; }

 private:
  friend LumoAttributeAccess<OrvaEquation>;

  bool _IsInTable(int i) const { return i >= 0 && i < _size; }
  // From all literals true to none.
  bool _IsCutsetCountInRange() const;
  std::array<int, 4> _CountLiterals() const;
  int _CountForCutset() const;

  OrvaVariable* _fanout = nullptr;
  int _min = 0;
  int _size = 0;
  std::array<int, 4> _candidateCounts = {0, 0, 0, 0};
  int _needTrue = 0;
  int _needFalse = 0;
  OrvaVariable::Value _leftValue = OrvaVariable::POSSIBLY_FALSE;
  int _cutsetCount = 0;
  OrvaLiteral* _fanins = nullptr;  // owned
  std::uint64_t _propagation = 0;

  OrvaSystem* _system = nullptr;
  int _number = 0;
  LumoAttributeList _attributes;
};
