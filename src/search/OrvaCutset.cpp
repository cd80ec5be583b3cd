#include "search/OrvaCutset.h"

#include <algorithm>

#include "support/memory/LumoMemoryManager.h"
#include "system/OrvaSystem.h"

OrvaCutset::OrvaCutset(int capacity)
    : _capacity(capacity),
      _entries(new Entry[static_cast<std::size_t>(capacity)]),
      _previous(new OrvaVariable*[static_cast<std::size_t>(capacity)]) {
  _entries[0] = {nullptr, 1.0};
  LumoMemoryManager::TraceNew(this, "OrvaCutset");
}

OrvaCutset::~OrvaCutset() {
  delete[] _entries;
  delete[] _previous;
  LumoMemoryManager::TraceDelete(this, "OrvaCutset");
}

OrvaVariable* OrvaCutset::GetVariable(int i) const {
  if (i == -1) i = _order;
  return i < 1 || i > _order ? nullptr : _entries[i].variable;
}

double OrvaCutset::GetProbability(int i) const {
  if (i == -1) i = _order;
  return i < 1 || i > _order ? 1.0 : _entries[i].product;
}

void OrvaCutset::_BringValuationToCurrentCutset() {
  for (int i = 1; i <= _order; ++i) _entries[i].variable->SetFlag(1);
  for (int i = 1; i <= _previousOrder; ++i) {
    if (_previous[i]->GetFlag() == 1) {
      _previous[i]->SetFlag(0);
    } else {
      _previous[i]->FalsifyInCutset();
      _NoteChange(_previous[i]);
    }
  }
  for (int i = 1; i <= _order; ++i) {
    OrvaVariable* variable = _entries[i].variable;
    if (variable->GetFlag() == 1) {
      variable->SetFlag(0);
      variable->SatisfyInCutset();
      _NoteChange(variable);
    }
    _previous[i] = variable;
  }
  _previousOrder = _order;
}

void OrvaCutset::_NoteChange(const OrvaVariable* variable) {
  const int word = variable->GetWalkWord();
  if (word != 0 && word < _lowestChangedWalkWord) _lowestChangedWalkWord = word;
}

bool OrvaCutset::CheckMinimality() {
  _BringValuationToCurrentCutset();
  for (int i = 1; i <= _order; ++i) {
    OrvaVariable* variable = _entries[i].variable;
    variable->FalsifyInCutset();
    const bool isTrueWithout = _topVariable->GetCutsetValue();
    variable->SatisfyInCutset();
    if (isTrueWithout) return false;
  }
  return true;
}

void OrvaCutset::InitializeWalk(OrvaSystem* system, const OrvaCutoff* cutoff) {
  _order = 0;
  _previousOrder = 0;
  _lowestChangedWalkWord = INT_MAX;
  _system = system;
  _topVariable = system->GetTopVariable();
  _cutoff = cutoff;
  const int numberOfInputs = system->GetNumberOfAtomicVariables();
  if (numberOfInputs >= _capacity) Enlarge(numberOfInputs + 1);
  _entries[0] = {nullptr, 1.0};
}

void OrvaCutset::TerminateWalk() {
  for (int i = 1; i <= _previousOrder; ++i) _previous[i]->FalsifyInCutset();
  _order = 0;
  _previousOrder = 0;
  _system = nullptr;
  _topVariable = nullptr;
  _cutoff = nullptr;
}

void OrvaCutset::Enlarge(int capacity) {
  if (capacity <= _capacity) return;
  auto* entries = new Entry[static_cast<std::size_t>(capacity)];
  auto* previous = new OrvaVariable*[static_cast<std::size_t>(capacity)];
  std::copy_n(_entries, _order + 1, entries);
  std::copy_n(_previous + 1, _previousOrder, previous + 1);
  delete[] std::exchange(_entries, entries);
  delete[] std::exchange(_previous, previous);
  _capacity = capacity;
}
