// Debugging dumps of the state of a walk.

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

void EndDump(LumoStream* stream) {
  stream->Putln();
  std::fflush(stdout);
}

}  // namespace

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

// What the search takes for true must be what the cutset makes true.
void OrvaWalker::_CheckAssignment() const {
  for (const OrvaVariable& variable : _system->GetVariables()) {
    const bool isTaken = variable.GetCandidateValue() == OrvaVariable::POSSIBLY_TRUE ||
                         variable.GetCandidateValue() == OrvaVariable::NECESSARILY_TRUE;
    if (isTaken == variable.GetCutsetValue()) continue;
    std::printf("ALERT: %s %s %s\n", variable.GetName(), variable.GetCandidateValueString(),
                variable.GetCutsetValueString());
  }
}
