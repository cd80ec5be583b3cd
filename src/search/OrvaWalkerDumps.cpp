// Debugging dumps of the state of a walk, and what its assertions ask for.

#include <algorithm>
#include <cstdio>

#include "search/OrvaWalker.h"
#include "support/text/LumoStream.h"

namespace {

void PutVariable(LumoStream* stream, const OrvaVariable* variable) {
  stream->Put(" ");
  stream->Put(variable->GetName());
}

void PutValue(LumoStream* stream, OrvaVariable::Value value) {
  stream->Put("=");
  stream->Put(OrvaVariable::GetCandidateValueString(value));
}

// Standard output is flushed whatever the stream is: this is the defined behaviour.
void EndDump(LumoStream* stream) {
  stream->Putln();
  std::fflush(stdout);
}

// What takes a step per variable or per literal is looked at in small systems only: the tests of
// large ones would not end.
constexpr int LARGEST_CHECKED = 256;

}  // namespace

// Between two walks nothing is left of the first.
bool OrvaWalker::_IsAtRest() const {
  return _system == nullptr && _cutoff == nullptr && _root == nullptr && _topVariable == nullptr &&
         _stack.GetOrder() == 0 && _resolvant.GetOrder() == 0 && _unitStack.IsEmpty() &&
         _cutset.GetOrder() == 0 && _scans.empty();
}

// Whether a push of the literals would add nothing to the unit stack.
bool OrvaWalker::_ArePushed(const OrvaEquation* equation) const {
  if (equation->GetSize() > LARGEST_CHECKED) return true;
  const OrvaVariable::Value value = equation->GetFanout()->GetCandidateValue();
  const auto fanins = equation->GetFanins();
  return std::all_of(fanins.begin(), fanins.end(), [value](const OrvaLiteral& literal) {
    const OrvaVariable* variable = literal.GetVariable();
    return variable->IsFixed() ||
           variable->GetUnitValue() ==
               (literal.GetSign() ? value : OrvaVariable::GetOpposite(value));
  });
}

// Whether what the search takes for true is what the cutset makes true, where that must be so: in a
// system of positive literals, none of them twice in one equation. A negative literal can make a
// gate true that the search has not fixed and takes for false; and a second choice that fixes two
// literals at once can pass over the conflict that it makes, which is forgotten.
bool OrvaWalker::_IsAssignmentRight() const {
  if (_system->GetNumberOfVariables() > LARGEST_CHECKED) return true;
  for (OrvaEquation& equation : _system->GetEquations()) {
    std::vector<const OrvaVariable*> variables;
    for (const OrvaLiteral& literal : equation.GetFanins()) {
      if (!literal.GetSign()) return true;
      variables.push_back(literal.GetVariable());
    }
    std::sort(variables.begin(), variables.end());
    if (std::adjacent_find(variables.begin(), variables.end()) != variables.end()) return true;
  }
  return _CheckAssignment() == 0;
}

// Whether the leaf is where the current cutset leads from the root, without the shortcut.
bool OrvaWalker::_IsCutsetPath(const OrvaMCSNode* leaf) const {
  if (_path.GetLength() > LARGEST_CHECKED) return true;
  const OrvaMCSNode* node = _root;
  while (node->IsInternal()) {
    const OrvaVariable* variable = _manager->GetVariable(node->GetIndex());
    const bool isInCutset = variable != nullptr && variable->GetCutsetValue();
    node = isInCutset ? node->GetThenSon() : node->GetElseSon();
  }
  return node == leaf;
}

void OrvaWalker::_DumpStack(LumoStream* stream) const {
  for (int i = 1; i <= _stack.GetOrder(); ++i) {
    PutVariable(stream, _stack.GetVariable(i));
    PutValue(stream, _stack.GetVariable(i)->GetCandidateValue());
  }
  EndDump(stream);
}

void OrvaWalker::_DumpUnitStack(LumoStream* stream) const {
  stream->Put("unit:");
  for (int i = 0; i < _unitStack.GetOrder(); ++i) {
    PutVariable(stream, _unitStack.GetVariable(i));
    PutValue(stream, _unitStack.GetVariable(i)->GetUnitValue());
  }
  EndDump(stream);
}

void OrvaWalker::_DumpCutset(LumoStream* stream) const {
  stream->Put("cutset:");
  for (int i = 1; i <= _cutset.GetOrder(); ++i) PutVariable(stream, _cutset.GetVariable(i));
  EndDump(stream);
}

void OrvaWalker::_DumpAssignment(LumoStream* stream) const {
  for (const OrvaVariable& variable : _system->GetVariables()) {
    if (variable.GetCandidateValue() == OrvaVariable::POSSIBLY_FALSE) continue;
    PutVariable(stream, &variable);
    PutValue(stream, variable.GetCandidateValue());
  }
  EndDump(stream);
}

void OrvaWalker::_DumpResolvant(LumoStream* stream) const {
  stream->Put("resolvant:");
  for (int i = 0; i < _resolvant.GetOrder(); ++i) {
    const OrvaVariable* variable = _resolvant.GetVariable(i);
    PutVariable(stream, variable);
    if (!variable->IsFixed()) PutValue(stream, variable->GetCandidateValue());
  }
  EndDump(stream);
}

int OrvaWalker::_CheckAssignment() const {
  int numberOfAlerts = 0;
  for (const OrvaVariable& variable : _system->GetVariables()) {
    const bool isTaken = variable.GetCandidateValue() == OrvaVariable::POSSIBLY_TRUE ||
                         variable.GetCandidateValue() == OrvaVariable::NECESSARILY_TRUE;
    if (isTaken == variable.GetCutsetValue()) continue;
    ++numberOfAlerts;
    std::printf("ALERT: %s %s %s\n", variable.GetName(), variable.GetCandidateValueString(),
                variable.GetCutsetValueString());
  }
  return numberOfAlerts;
}
