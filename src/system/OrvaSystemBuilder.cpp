// From formulas to a system: the events below the top are collected so that each comes after those
// below it; they become the variables in this order, and those with a formula the left members of
// the equations. Names that stand for other gates get no place: references to them go to the gate
// at the end of the chain. The chains met are kept during a build, with what its modules need, so
// that a chain shared by many references is followed once.
//
// A module is built by itself, as a system of the same name on the module's event, before the
// system above it, where it is an input variable.

#include "system/OrvaSystemBuilder.h"

#include <cassert>
#include <utility>
#include <vector>

#include "model/OrvaDefinitionWalk.h"
#include "model/OrvaGate.h"
#include "support/memory/LumoMemoryManager.h"
#include "system/OrvaSystem.h"

namespace {

// Whether an event is but another name for a gate.
bool IsAlias(const OrvaEvent* event) {
  const OrvaGate* definition = event->GetDefinition();
  return definition != nullptr && definition->IsGate();
}

OrvaEvent* GetAliased(const OrvaEvent* event) {
  return event->GetDefinition()->GetReferencedEvent();
}

}  // namespace

OrvaSystemBuilder::OrvaSystemBuilder(OrvaInterpreter* interpreter) : _interpreter(interpreter) {
  LumoMemoryManager::TraceNew(this, "OrvaSystemBuilder");
}

OrvaSystemBuilder::~OrvaSystemBuilder() {
  LumoMemoryManager::TraceDelete(this, "OrvaSystemBuilder");
}

OrvaEvent* OrvaSystemBuilder::_GetDereferencedEvent(OrvaEvent* event) {
  OrvaEvent* end = event;
  while (IsAlias(end)) {
    const auto known = _endsOfAliases.find(end);
    end = known == _endsOfAliases.end() ? GetAliased(end) : known->second;
  }
  while (event != end && _endsOfAliases.emplace(event, end).second) event = GetAliased(event);
  assert(!IsAlias(end));
  return end;
}

bool OrvaSystemBuilder::_IsAtomicEvent(const OrvaEvent* event, bool cutsModules) const {
  if (event->GetDefinition() == nullptr) return true;
  if (event == _top.given || event == _top.dereferenced || !cutsModules) return false;
  return event->IsModule();
}

// Depth first, each event after those below it; aliases of gates get no place.
void OrvaSystemBuilder::_CollectEvents(OrvaEvent* top, LumoList* events, bool cutsModules) {
  std::vector<OrvaEvent*> visited;
  const auto enter = [&](OrvaEvent* event) {
    if (event->GetFlag() != 0) return false;
    event->SetFlag(1);
    visited.push_back(event);
    const bool isAtomic = _IsAtomicEvent(event, cutsModules);
    if (isAtomic) events->InsertItemLast(event);
    return !isAtomic;
  };
  const auto leave = [&](OrvaEvent* event) {
    if (!IsAlias(event)) events->InsertItemLast(event);
  };
  OrvaDefinitionWalk().Visit(top, enter, leave);
  for (OrvaEvent* event : visited) event->SetFlag(0);
}

// The builds of the modules happen inside the one of the system above them: each puts back the top
// that it found.
OrvaHandle* OrvaSystemBuilder::BuildSystem(OrvaModel* model, OrvaEvent* top, const char* handleName,
                                           bool cutsModules) {
  if (_top.given == nullptr) _endsOfAliases = {};
  const Top topAbove = std::exchange(_top, {top, _GetDereferencedEvent(top)});
  OrvaSystem* system = _NewSystem(model, handleName, cutsModules);
  _top = topAbove;
  return top->NewHandle(handleName, system);
}

OrvaSystem* OrvaSystemBuilder::_NewSystem(OrvaModel* model, const char* handleName,
                                          bool cutsModules) {
  LumoList events;
  _CollectEvents(_top.dereferenced, &events, cutsModules);
  assert(events.GetLastItem() == _top.dereferenced);
  if (cutsModules) _BuildModules(model, events, handleName);
  int numberOfEquations = 0;
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(events)) {
    numberOfEquations += static_cast<int>(!_IsAtomicEvent(event, cutsModules));
  }
  auto* system = new OrvaSystem(events.GetNumberOfItems(), numberOfEquations);
  system->SetName(handleName);
  _BuildVariables(system, events);
  _BuildEquations(system, events, cutsModules);
  for (OrvaEvent* event : LumoItems<OrvaEvent>(events)) {
    _GetEventOfVariable(event)->SetVariable(nullptr);
  }
  system->BuildListsOfOccurrences();
  system->ResetWalkValuations();
  return system;
}

// The collected events that are atomic although they have a definition.
void OrvaSystemBuilder::_BuildModules(OrvaModel* model, const LumoList& events,
                                      const char* handleName) {
  LumoList modules;
  for (OrvaEvent* event : LumoItems<OrvaEvent>(events)) {
    if (event->GetDefinition() != nullptr && _IsAtomicEvent(event, true)) {
      modules.InsertItemLast(event);
    }
  }
  for (OrvaEvent* module : LumoItems<OrvaEvent>(modules)) {
    BuildSystem(model, module, handleName, false);
  }
}

// The top variable stands for the top as given.
OrvaEvent* OrvaSystemBuilder::_GetEventOfVariable(OrvaEvent* event) const {
  return event == _top.dereferenced ? _top.given : event;
}

void OrvaSystemBuilder::_BuildVariables(OrvaSystem* system, const LumoList& events) {
  int i = 0;
  for (OrvaEvent* collected : LumoItems<OrvaEvent>(events)) {
    OrvaEvent* event = _GetEventOfVariable(collected);
    system->SetVariable(i, event->GetName());
    OrvaVariable* variable = system->GetVariable(i);
    assert(event->GetVariable() == nullptr);
    event->SetVariable(variable);
    variable->SetEvent(event);
    ++i;
  }
}

void OrvaSystemBuilder::_BuildEquations(OrvaSystem* system, const LumoList& events,
                                        bool cutsModules) {
  int i = 0;
  for (OrvaEvent* event : LumoItems<OrvaEvent>(events)) {
    if (!_IsAtomicEvent(event, cutsModules)) _BuildEquation(event, system->GetEquation(i++));
  }
  assert(i == system->GetNumberOfEquations());
}

// One literal per child of the definition. A definition that is a reference to a basic event, or
// a negation, leaves k at 0, so that its equation always holds: this is the defined behaviour.
void OrvaSystemBuilder::_BuildEquation(OrvaEvent* event, OrvaEquation* equation) {
  OrvaVariable* fanout = _GetEventOfVariable(event)->GetVariable();
  assert(fanout != nullptr && fanout->IsInputVariable());  // the left member of no other equation
  equation->SetFanout(fanout);
  fanout->SetDefinition(equation);
  const OrvaGate* definition = event->GetDefinition();
  equation->CreateFaninTable(definition->GetNumberOfChildren());
  int i = 0;
  for (const OrvaGate* child = definition->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    if (child->IsLiteral()) {
      const OrvaGate* reference = child->IsEvent() ? child : child->GetFirstChild();
      OrvaEvent* referenced = _GetDereferencedEvent(reference->GetReferencedEvent());
      assert(referenced->GetVariable() != nullptr);
      equation->SetFanin(i, referenced->GetVariable(), child->IsEvent());
    }
    ++i;
  }
  switch (definition->GetType()) {
    case OrvaGate::AND:
    case OrvaGate::OR:
    case OrvaGate::ATLEAST:
      equation->SetMin(definition->GetMin());
      break;
    default:
      break;
  }
}

void OrvaSystemBuilder::LoadProbabilities(OrvaModel* /*model*/, OrvaSystem* system,
                                          double /*missionTime*/) {
  for (OrvaVariable& variable : system->GetVariables()) {
    if (!variable.IsInputVariable()) continue;
    const OrvaEvent* event = variable.GetEvent();
    if (event != nullptr && event->GetType() != OrvaEvent::BASIC_EVENT) continue;
    const double probability = event == nullptr ? 1.0 : event->GetProbability();
    variable.SetProbability(probability);
    variable.SetHighestCutsetProbability(probability);
  }
}
