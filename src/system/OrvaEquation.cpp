#include "system/OrvaEquation.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "support/memory/LumoMemoryManager.h"

namespace {

constexpr int ALL_ATTRIBUTES = ~0;

// A threshold that can be subtracted from sizes. So far out, thresholds are all alike.
int GetBoundedThreshold(int min) { return std::clamp(min, INT_MIN / 2, INT_MAX / 2); }

}  // namespace

OrvaEquation::OrvaEquation() { LumoMemoryManager::TraceNew(this, "OrvaEquation"); }

OrvaEquation::~OrvaEquation() {
  Reset();
  LumoMemoryManager::TraceDelete(this, "OrvaEquation");
}

void OrvaEquation::Reset() {
  delete[] std::exchange(_fanins, nullptr);
  _size = 0;
  _min = 0;
  _fanout = nullptr;
  _attributes.ResetValuesOfAttributes(ALL_ATTRIBUTES, ALL_ATTRIBUTES);
}

void OrvaEquation::CreateFaninTable(int n) {
  delete[] _fanins;
  _fanins = n == 0 ? nullptr : new OrvaLiteral[static_cast<std::size_t>(n)];
  _size = n;
}

void OrvaEquation::SetFanin(int i, OrvaVariable* variable, bool sign) {
  if (_IsInTable(i)) _fanins[i].Set(variable, sign);
}

std::array<int, 4> OrvaEquation::_CountLiterals() const {
  std::array<int, 4> counts = {0, 0, 0, 0};
  for (const OrvaLiteral& literal : GetFanins()) {
    if (literal.GetVariable() == nullptr) continue;
    ++counts[static_cast<unsigned>(literal.GetCandidateValue())];
  }
  return counts;
}

void OrvaEquation::ResetCandidateCounts() {
  _candidateCounts = _CountLiterals();
  _needTrue = GetBoundedThreshold(_min);
  _needFalse = _size + 1 - _needTrue;
}

int OrvaEquation::_CountForCutset() const {
  int count = GetBoundedThreshold(_min);
  for (const OrvaLiteral& literal : GetFanins()) {
    if (literal.GetVariable() == nullptr) continue;
    if (literal.GetSign() == literal.GetVariable()->GetCutsetValue()) --count;
  }
  return count;
}

bool OrvaEquation::_IsCutsetCountInRange() const {
  const int k = GetBoundedThreshold(_min);
  return _cutsetCount >= k - _size && _cutsetCount <= k;
}

void OrvaEquation::ResetCutsetCount() { _cutsetCount = _CountForCutset(); }

bool OrvaEquation::AreCountsRight() const {
  return _candidateCounts == _CountLiterals() && _cutsetCount == _CountForCutset();
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaEquation::GetFanin(int i, OrvaVariable*& variable, bool& sign) const {
  variable = GetFaninVariable(i);
  sign = GetFaninPolarity(i);
}

OrvaVariable* OrvaEquation::GetFaninVariable(int i) const {
  return _IsInTable(i) ? _fanins[i].GetVariable() : nullptr;
}

bool OrvaEquation::GetFaninPolarity(int i) const {
  return _IsInTable(i) ? _fanins[i].GetSign() : true;
}

void OrvaEquation::SwapFanins(int i, int j) {
  if (_IsInTable(i) && _IsInTable(j)) std::swap(_fanins[i], _fanins[j]);
}

void OrvaEquation::SortFanins(int (*compare)(const void* a, const void* b)) {
  std::stable_sort(_fanins, _fanins + _size, [compare](const OrvaLiteral& a, const OrvaLiteral& b) {
    return compare(&a, &b) < 0;
  });
}
