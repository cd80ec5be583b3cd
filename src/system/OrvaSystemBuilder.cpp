#include "system/OrvaSystemBuilder.h"

#include <vector>

#include "model/OrvaDefinitionWalk.h"
#include "model/OrvaGate.h"
#include "model/OrvaModel.h"
#include "support/memory/LumoMemoryManager.h"
#include "system/OrvaModuleRecord.h"
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
  return end;
}

bool OrvaSystemBuilder::_IsAtomicEvent(const OrvaEvent* event, bool cutsModules) const {
  if (event->GetDefinition() == nullptr) return true;
  if (event == _top || event == _dereferencedTop || !cutsModules) return false;
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

OrvaHandle* OrvaSystemBuilder::BuildSystem(OrvaModel* model, OrvaEvent* top, const char* handleName,
                                           bool cutsModules) {
  _endsOfAliases = {};
  _SetTop(top);
  LumoList events;
  _CollectEvents(_dereferencedTop, &events, cutsModules);
  if (cutsModules) _BuildModules(model, events, handleName);
  _SetTop(top);
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
  return top->NewHandle(handleName, system);
}

void OrvaSystemBuilder::_SetTop(OrvaEvent* top) {
  _top = top;
  _dereferencedTop = _GetDereferencedEvent(top);
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
  return event == _dereferencedTop ? _top : event;
}

void OrvaSystemBuilder::_BuildVariables(OrvaSystem* system, const LumoList& events) {
  int i = 0;
  for (OrvaEvent* collected : LumoItems<OrvaEvent>(events)) {
    OrvaEvent* event = _GetEventOfVariable(collected);
    system->SetVariable(i, event->GetName());
    OrvaVariable* variable = system->GetVariable(i);
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
}

// One literal per child of the definition. A definition that is a reference to a basic event, or
// a negation, leaves k at 0, so that its equation always holds: this is the defined behaviour.
void OrvaSystemBuilder::_BuildEquation(OrvaEvent* event, OrvaEquation* equation) {
  OrvaVariable* fanout = _GetEventOfVariable(event)->GetVariable();
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
