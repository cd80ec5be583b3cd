// The minimality of a cutset is tested on a valuation of its own, the cutset valuation: a basic
// event is true exactly when it is in the cutset, and a gate follows through a count that its
// equation keeps. A cutset is minimal when the top variable becomes false whichever member is taken
// out.
//
// Building this valuation afresh for each candidate would cost the size of the system. Two
// candidates in a row share most of their members, since the search goes from one to the next by
// undoing the last choices; so the valuation is moved, by the members that left and by those that
// are new. To take a member out and to put it back is a move too, and each costs only what it
// changes: the walk upward ends where a count does not cross its threshold. The tests take 6 % of
// the instructions of a walk, moves included: see OrvaWalker.cpp.
//
// The members that changed also tell where the way down the tree of the cutsets departs from the
// last one: the lowest position among them is remembered for the storing.

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

// The flags are 0 at rest; 1 marks what is in the current cutset and has not been met yet.
void OrvaCutset::_BringValuationToCurrentCutset() {
  for (int i = 1; i <= _order; ++i) {
    assert(_entries[i].variable->GetFlag() == 0);  // no member is there twice
    _entries[i].variable->SetFlag(1);
  }
  for (int i = 1; i <= _previousOrder; ++i) {
    assert(_previous[i]->GetCutsetValue());
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
      assert(!variable->GetCutsetValue());
      variable->SatisfyInCutset();
      _NoteChange(variable);
    }
    _previous[i] = variable;
  }
  _previousOrder = _order;
}

void OrvaCutset::_NoteChange(const OrvaVariable* variable) {
  const int position = variable->GetPathPosition();
  if (position != 0 && position < _lowestChangedPathPosition) _lowestChangedPathPosition = position;
}

bool OrvaCutset::CheckMinimality() {
  _BringValuationToCurrentCutset();
  [[maybe_unused]] const bool isTrue = _topVariable->GetCutsetValue();
  for (int i = 1; i <= _order; ++i) {
    OrvaVariable* variable = _entries[i].variable;
    variable->FalsifyInCutset();
    const bool isTrueWithout = _topVariable->GetCutsetValue();
    variable->SatisfyInCutset();
    assert(_topVariable->GetCutsetValue() == isTrue);
    if (isTrueWithout) return false;
  }
  return true;
}

void OrvaCutset::InitializeWalk(OrvaSystem* system, const OrvaCutoff* cutoff) {
  assert(_order == 0 && _previousOrder == 0);
  _order = 0;
  _previousOrder = 0;
  _lowestChangedPathPosition = INT_MAX;
  _system = system;
  _topVariable = system->GetTopVariable();
  _cutoff = cutoff;
  const int numberOfInputs = system->GetNumberOfAtomicVariables();
  if (numberOfInputs >= _capacity) Enlarge(numberOfInputs + 1);
  _entries[0] = {nullptr, 1.0};
}

void OrvaCutset::TerminateWalk() {
  assert(_order == 0);
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

// Offered to users of the class; the program itself does not call what follows.

double OrvaCutset::GetProbability(int i) const {
  if (i == -1) i = _order;
  return i < 1 || i > _order ? 1.0 : _entries[i].product;
}
