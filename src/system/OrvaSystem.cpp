#include "system/OrvaSystem.h"

#include <algorithm>
#include <cassert>
#include <vector>

#include "model/OrvaEvent.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

OrvaSystem::OrvaSystem(int numberOfVariables, int numberOfEquations)
    : _dictionary(OrvaVariable::CompareNames),
      _variables(new OrvaVariable[static_cast<std::size_t>(numberOfVariables)]),
      _numberOfVariables(numberOfVariables),
      _equations(new OrvaEquation[static_cast<std::size_t>(numberOfEquations)]),
      _numberOfEquations(numberOfEquations) {
  for (int i = 0; i < _numberOfVariables; ++i) {
    _variables[i].SetSystem(this);
    _variables[i].SetNumber(i);
  }
  for (int i = 0; i < _numberOfEquations; ++i) {
    _equations[i].SetSystem(this);
    _equations[i].SetNumber(i);
  }
  LumoMemoryManager::TraceNew(this, "OrvaSystem");
}

OrvaSystem::~OrvaSystem() {
  Reset();
  delete[] _equations;
  delete[] _variables;
  LumoMemoryManager::TraceDelete(this, "OrvaSystem");
}

void OrvaSystem::Reset() {
  _dictionary.RemoveItems();
  for (OrvaVariable& variable : GetVariables()) variable.Reset();
  for (OrvaEquation& equation : GetEquations()) equation.Reset();
  SetName(nullptr);
  _topVariable = nullptr;
}

void OrvaSystem::SetName(const char* name) { LumoRawString::Replace(_name, name); }

OrvaVariable* OrvaSystem::GetVariable(int i) const {
  return i >= 0 && i < _numberOfVariables ? &_variables[i] : nullptr;
}

void OrvaSystem::SetVariable(int i, const char* name) {
  assert(i >= 0 && i < _numberOfVariables && name != nullptr);
  _variables[i].SetName(name);
  _dictionary.InsertItem(&_variables[i]);
}

void OrvaSystem::CollectVariables(LumoContainer* result) const {
  for (int i = 0; i < _numberOfVariables; ++i) result->InsertItem(&_variables[i]);
}

int OrvaSystem::GetNumberOfAtomicVariables() const {
  return static_cast<int>(
      std::count_if(_variables, _variables + _numberOfVariables,
                    [](const OrvaVariable& variable) { return variable.IsInputVariable(); }));
}

int OrvaSystem::GetNumberOfModules() const {
  return static_cast<int>(
      std::count_if(_variables, _variables + _numberOfVariables, [](const OrvaVariable& variable) {
        const OrvaEvent* event = variable.GetEvent();
        return variable.IsInputVariable() && event != nullptr && event->IsModule();
      }));
}

OrvaEquation* OrvaSystem::GetEquation(int i) const {
  return i >= 0 && i < _numberOfEquations ? &_equations[i] : nullptr;
}

void OrvaSystem::BuildListsOfOccurrences() {
  // Twice over all literals: first to count, then to fill.
  const auto forEachLiteral = [this](auto visit) {
    for (OrvaVariable& variable : GetVariables()) {
      variable.SetNumberOfOccurrences(true, 0);
      variable.SetNumberOfOccurrences(false, 0);
    }
    for (OrvaEquation& equation : GetEquations()) {
      for (const OrvaLiteral& literal : equation.GetFanins()) {
        OrvaVariable* variable = literal.GetVariable();
        if (variable == nullptr) continue;
        const int n = variable->GetNumberOfOccurrences(literal.GetSign());
        visit(variable, n, &equation, literal.GetSign());
        variable->SetNumberOfOccurrences(literal.GetSign(), n + 1);
      }
    }
  };
  forEachLiteral([](OrvaVariable*, int, OrvaEquation*, bool) {});
  for (OrvaVariable& variable : GetVariables()) {
    if (variable.IsOutputVariable()) _topVariable = &variable;
    variable.CreateOccurrenceTables();
  }
  forEachLiteral([](OrvaVariable* variable, int n, OrvaEquation* equation, bool sign) {
    variable->SetOccurrence(n, equation, sign);
  });
}

// Calls visit on the top variable and on all below it, each after those below it. The flags serve
// as visit marks and are cleared.
template <class Visit>
void OrvaSystem::_VisitVariablesBelowTop(Visit visit) {
  struct Frame {
    OrvaVariable* variable;
    std::size_t next;
  };
  if (_topVariable == nullptr) return;
  std::vector<Frame> stack = {{_topVariable, 0}};
  assert(std::all_of(_variables, _variables + _numberOfVariables,
                     [](const OrvaVariable& variable) { return variable.GetFlag() == 0; }));
  _topVariable->SetFlag(1);
  while (!stack.empty()) {
    Frame& frame = stack.back();
    const OrvaEquation* definition = frame.variable->GetDefinition();
    const auto fanins =
        definition == nullptr ? std::span<const OrvaLiteral>() : definition->GetFanins();
    if (frame.next == fanins.size()) {
      visit(frame.variable);
      stack.pop_back();
      continue;
    }
    OrvaVariable* below = fanins[frame.next++].GetVariable();
    if (below == nullptr || below->GetFlag() != 0) continue;
    below->SetFlag(1);
    stack.push_back({below, 0});
  }
  _topVariable->SetFlagsOfDescendants(0);
}

void OrvaSystem::_ResetInputVariable(OrvaVariable* variable) {
  variable->SetCandidateValue(OrvaVariable::POSSIBLY_FALSE);
  variable->SetUnitValue(OrvaVariable::POSSIBLY_FALSE);
  variable->SetWalkWord(0);
  variable->ResetCutsetValue(false);
}

void OrvaSystem::_ResetGateVariable(OrvaVariable* variable) {
  OrvaEquation* definition = variable->GetDefinition();
  assert(definition->GetFanout() == variable);
  definition->ResetCandidateCounts();
  definition->SetPropagation(0);
  variable->SetCandidateValue(definition->GetRightMemberCandidateValue());
  definition->SetLeftValue(variable->GetCandidateValue());
  variable->SetUnitValue(OrvaVariable::POSSIBLY_FALSE);
  variable->SetWalkWord(0);
  definition->ResetCutsetCount();
}

void OrvaSystem::ResetWalkValuations() {
  _VisitVariablesBelowTop([](OrvaVariable* variable) {
    if (variable->IsInputVariable()) {
      _ResetInputVariable(variable);
    } else {
      _ResetGateVariable(variable);
    }
  });
}

void OrvaSystem::ResetVariableValues() {
  _VisitVariablesBelowTop([](OrvaVariable* variable) {
    if (variable->IsInputVariable()) {
      _ResetInputVariable(variable);
    } else {
      _ResetGateVariable(variable);
      variable->ResetCutsetValue(variable->GetDefinition()->IsTrueInCutset());
    }
  });
  assert(AreWalkValuesReset());
}

// The values that depend on each other are compared with each other: a gate has the value that its
// formula has, and the counts say what the literals say.
bool OrvaSystem::_IsReset(const OrvaVariable* variable) {
  if (variable->GetUnitValue() != OrvaVariable::POSSIBLY_FALSE || variable->GetWalkWord() != 0) {
    return false;
  }
  if (variable->IsInputVariable()) {
    return variable->GetCandidateValue() == OrvaVariable::POSSIBLY_FALSE &&
           !variable->GetCutsetValue();
  }
  const OrvaEquation* definition = variable->GetDefinition();
  return definition->AreCountsRight() &&
         variable->GetCandidateValue() == definition->GetRightMemberCandidateValue() &&
         variable->GetCutsetValue() == definition->IsTrueInCutset();
}

bool OrvaSystem::AreWalkValuesReset() {
  bool areReset = true;
  _VisitVariablesBelowTop([&](OrvaVariable* variable) { areReset &= _IsReset(variable); });
  return areReset;
}

// Offered to users of the class; the program itself does not call what follows.

OrvaVariable* OrvaSystem::GetVariable(const char* name) const {
  return static_cast<OrvaVariable*>(_dictionary.LookForItem(OrvaVariable::CompareName, name));
}

void OrvaSystem::ChangeNameOfVariable(OrvaVariable* variable, const char* name) {
  _dictionary.RemoveItem(variable);
  variable->SetName(name);
  _dictionary.InsertItem(variable);
}

void OrvaSystem::CollectVariables(LumoContainer* result, LumoContainer::Predicate predicate) const {
  for (int i = 0; i < _numberOfVariables; ++i) {
    if (predicate(&_variables[i])) result->InsertItem(&_variables[i]);
  }
}

void OrvaSystem::CollectVariables(LumoContainer* result, LumoContainer::Match match,
                                  const void* key) const {
  for (int i = 0; i < _numberOfVariables; ++i) {
    if (match(&_variables[i], key) == 0) result->InsertItem(&_variables[i]);
  }
}

void OrvaSystem::SetVariableCutsetValue(OrvaVariable* variable, bool value) {
  if (variable->IsInputVariable()) variable->SetCutsetValue(value);
}
