// The cutset valuation and how it moves: see OrvaCutset.cpp for what it is good for.
//
// Each equation keeps a count, its k less the number of its literals that are true: the left member
// is true when the count is below 1. When a variable changes, the counts around it move by one, and
// only a left member whose count passes between 0 and 1 changes too. To carry this on by recursion
// could go as deep as the system has gates. The variables to be changed therefore wait in a list
// threaded through themselves, at most once each, which needs no memory and allocates nothing.
//
// Under negative literals a gate can be passed in both directions during one change, so what a
// waiting variable becomes is not written down with it: when its turn comes it is read off the
// count, and a variable that has that value already is skipped. The changes then come to rest in
// the valuation that the counts define, in whatever order they arrive.

#include "system/OrvaVariable.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"
#include "system/OrvaEquation.h"

namespace {

constexpr const char* CANDIDATE_VALUE_STRINGS[] = {"<>F", "<>T", "[]F", "[]T"};
constexpr int ALL_ATTRIBUTES = ~0;

const OrvaVariable* AsVariable(const void* item) { return static_cast<const OrvaVariable*>(item); }

}  // namespace

OrvaVariable::OrvaVariable() { LumoMemoryManager::TraceNew(this, "OrvaVariable"); }

OrvaVariable::~OrvaVariable() {
  Reset();
  LumoMemoryManager::TraceDelete(this, "OrvaVariable");
}

void OrvaVariable::Reset() {
  SetName(nullptr);
  _event = nullptr;
  _definition = nullptr;
  for (OrvaEquation**& table : _occurrences) delete[] std::exchange(table, nullptr);
  std::fill(std::begin(_numbersOfOccurrences), std::end(_numbersOfOccurrences), 0);
  _probability = 1.0;
  _highestCutsetProbability = 1.0;
  _candidateValue = POSSIBLY_FALSE;
  _unitValue = POSSIBLY_FALSE;
  _walkWord = 0;
  _cutsetValue = false;
  _attributes.ResetValuesOfAttributes(ALL_ATTRIBUTES, ALL_ATTRIBUTES);
}

void OrvaVariable::SetName(const char* name) { LumoRawString::Replace(_name, name); }

void OrvaVariable::CreateOccurrenceTables() {
  for (int sign = 0; sign < 2; ++sign) {
    assert(_numbersOfOccurrences[sign] >= 0);
    delete[] _occurrences[sign];
    const auto n = static_cast<std::size_t>(_numbersOfOccurrences[sign]);
    _occurrences[sign] = n == 0 ? nullptr : new OrvaEquation*[n]();
  }
}

void OrvaVariable::SatisfyInCutset() {
  if (!_cutsetValue) _ChangeCutsetValue();
}

void OrvaVariable::FalsifyInCutset() {
  if (_cutsetValue) _ChangeCutsetValue();
}

void OrvaVariable::_Schedule(OrvaVariable*& pending) {
  if (_isScheduled) return;
  _isScheduled = true;
  _nextScheduled = pending;
  pending = this;
}

// Flips the value and carries the change upward.
void OrvaVariable::_ChangeCutsetValue() {
  OrvaVariable* pending = nullptr;
  OrvaVariable* variable = this;
  assert(!_isScheduled);
  for (;;) {
    const bool value = !variable->_cutsetValue;
    variable->_cutsetValue = value;
    for (OrvaEquation* equation :
         value ? variable->GetPositiveOccurrences() : variable->GetNegativeOccurrences()) {
      equation->DecrementCutsetCount();
      if (equation->GetCutsetCount() == 0) equation->GetFanout()->_Schedule(pending);
    }
    for (OrvaEquation* equation :
         value ? variable->GetNegativeOccurrences() : variable->GetPositiveOccurrences()) {
      equation->IncrementCutsetCount();
      if (equation->GetCutsetCount() == 1) equation->GetFanout()->_Schedule(pending);
    }
    do {
      if (pending == nullptr) return;
      variable = pending;
      pending = variable->_nextScheduled;
      assert(variable->_isScheduled && variable->_definition != nullptr);
      variable->_isScheduled = false;
    } while (variable->_definition->IsTrueInCutset() == variable->_cutsetValue);
  }
}

int OrvaVariable::CompareName(const char* name) const {
  return LumoRawString::Compare(_name, name);
}

int OrvaVariable::CompareNames(const void* a, const void* b) {
  return AsVariable(a)->CompareNames(AsVariable(b));
}

void OrvaVariable::SetFlagsOfDescendants(int flag) {
  if (_flag == flag) return;
  _flag = flag;
  std::vector<const OrvaVariable*> waiting = {this};
  while (!waiting.empty()) {
    const OrvaVariable* variable = waiting.back();
    waiting.pop_back();
    if (variable->_definition == nullptr) continue;
    for (const OrvaLiteral& literal : variable->_definition->GetFanins()) {
      OrvaVariable* below = literal.GetVariable();
      if (below == nullptr || below->_flag == flag) continue;
      below->_flag = flag;
      waiting.push_back(below);
    }
  }
}

// Offered to users of the class; the program itself does not call what follows.

const char* OrvaVariable::GetCandidateValueString(int value) {
  const bool isKnown = value >= POSSIBLY_FALSE && value <= NECESSARILY_TRUE;
  return isKnown ? CANDIDATE_VALUE_STRINGS[value] : nullptr;
}

const char* OrvaVariable::GetCutsetValueString() const {
  return GetCandidateValueString(_cutsetValue ? NECESSARILY_TRUE : NECESSARILY_FALSE);
}

int OrvaVariable::CompareRanks(const void* a, const void* b) {
  return AsVariable(a)->CompareRanks(AsVariable(b));
}

int OrvaVariable::CompareHighestCutsetProbabilities(const void* a, const void* b) {
  const double x = AsVariable(a)->_highestCutsetProbability;
  const double y = AsVariable(b)->_highestCutsetProbability;
  return static_cast<int>(x < y) - static_cast<int>(x > y);
}

int OrvaVariable::CompareName(const void* variable, const void* name) {
  return AsVariable(variable)->CompareName(static_cast<const char*>(name));
}

void OrvaVariable::SetFlagsOfAncestors(int flag) {
  if (_flag == flag) return;
  _flag = flag;
  std::vector<const OrvaVariable*> waiting = {this};
  while (!waiting.empty()) {
    const OrvaVariable* variable = waiting.back();
    waiting.pop_back();
    for (const auto& occurrences :
         {variable->GetPositiveOccurrences(), variable->GetNegativeOccurrences()}) {
      for (const OrvaEquation* equation : occurrences) {
        OrvaVariable* above = equation->GetFanout();
        if (above->_flag == flag) continue;
        above->_flag = flag;
        waiting.push_back(above);
      }
    }
  }
}
