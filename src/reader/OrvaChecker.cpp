// The checker's passes.
//
// Each check is one walk over the events, the parameters or the groups in the order of their names,
// and reports every fault on its way. What a definition must have is a table: the types of events
// that a check looks at and what it says of each, so that one walk serves all four checks of
// definitions; they differ in what they say of an event of unspecified type, which is a basic event
// that lacks its expression to one and an event that lacks its type to another.
//
// The checks on rings are the exception: one ring is reported, since one definition may lie on a
// great many. They are passes of their own because everything behind the checker walks along
// definitions, and a ring would keep it from ending.

#include "reader/OrvaChecker.h"

#include <cassert>
#include <string>
#include <unordered_set>
#include <vector>

#include "driver/OrvaInterpreter.h"
#include "model/OrvaCCFGroup.h"
#include "model/OrvaGate.h"
#include "model/OrvaModel.h"
#include "model/OrvaParameter.h"
#include "reader/OrvaCycleSearch.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoStream.h"

// What is said about an event of that type that lacks its formula or its expression, or about
// every event of that type.
struct OrvaChecker::Fault {
  OrvaEvent::Type type;
  const char* message;
  bool isAlways = false;
};

namespace {

// The texts are defined to the letter.
constexpr const char* UNDEFINED_GATE = "Undefined gate %s\n";
constexpr const char* UNDEFINED_EVENT = "Undefined event %s\n";
constexpr const char* UNDEFINED_BASIC_EVENT = "Undefined basic event %s\n";
constexpr const char* UNDEFINED_HOUSE_EVENT = "Undefined house event %s\n";
// It speaks of an event: this is the defined text.
constexpr const char* UNDEFINED_PARAMETER = "Event with no specified type %s\n";
constexpr const char* NO_TOP_EVENT = "No top event\n";
constexpr const char* MULTIPLE_TOP_EVENTS = "Multiple top events:";
constexpr const char* EXISTING_MEMBER_GATE =
    "A CCF group needs the name %s, which is already in use\n";
constexpr const char* CYCLE_OF_GATES = "The definition of a gate uses itself: %s\n";
constexpr const char* CYCLE_OF_PARAMETERS = "The definition of a parameter uses itself: %s\n";
constexpr const char* NOT_FLAT = "The current version handles flat formulas only (%s)\n";

// Gates and house events are defined by a formula, the others by an expression.
bool IsDefined(const OrvaEvent* event) {
  switch (event->GetType()) {
    case OrvaEvent::GATE:
    case OrvaEvent::HOUSE_EVENT:
      return event->GetDefinition() != nullptr;
    default:
      return event->GetProbabilityDistribution() != nullptr;
  }
}

}  // namespace

OrvaChecker::OrvaChecker(OrvaInterpreter* interpreter) : _interpreter(interpreter) {
  LumoMemoryManager::TraceNew(this, "OrvaChecker");
}

OrvaChecker::~OrvaChecker() { LumoMemoryManager::TraceDelete(this, "OrvaChecker"); }

void OrvaChecker::_Report(int& error, const char* format, const OrvaSymbol* symbol) {
  assert(symbol->GetName() != nullptr);
  error = 1;
  _interpreter->RaiseError(format, symbol->GetName(), nullptr);
}

void OrvaChecker::_CheckDefinitions(int& error, const OrvaModel* model,
                                    std::initializer_list<Fault> faults) {
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(model->GetEvents())) {
    for (const Fault& fault : faults) {
      if (event->GetType() != fault.type) continue;
      if (fault.isAlways || !IsDefined(event)) _Report(error, fault.message, event);
    }
  }
}

void OrvaChecker::CheckGateDefinitions(int& error, const OrvaModel* model) {
  _CheckDefinitions(error, model, {{OrvaEvent::GATE, UNDEFINED_GATE}});
}

void OrvaChecker::CheckBasicEventDefinitions(int& error, const OrvaModel* model) {
  _CheckDefinitions(error, model,
                    {{OrvaEvent::UNSPECIFIED_EVENT, UNDEFINED_BASIC_EVENT},
                     {OrvaEvent::BASIC_EVENT, UNDEFINED_BASIC_EVENT}});
}

void OrvaChecker::CheckHouseEventDefinitions(int& error, const OrvaModel* model) {
  _CheckDefinitions(error, model, {{OrvaEvent::HOUSE_EVENT, UNDEFINED_HOUSE_EVENT}});
}

void OrvaChecker::CheckParameterDefinitions(int& error, const OrvaModel* model) {
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(model->GetParameters())) {
    if (parameter->GetDefinition() == nullptr) _Report(error, UNDEFINED_PARAMETER, parameter);
  }
}

void OrvaChecker::CheckEventDefinitions(int& error, const OrvaModel* model) {
  _CheckDefinitions(error, model,
                    {{OrvaEvent::GATE, UNDEFINED_GATE},
                     {OrvaEvent::UNSPECIFIED_EVENT, UNDEFINED_EVENT, true},
                     {OrvaEvent::BASIC_EVENT, UNDEFINED_BASIC_EVENT},
                     {OrvaEvent::HOUSE_EVENT, UNDEFINED_HOUSE_EVENT}});
}

void OrvaChecker::CheckTopEventUniqueness(int& error, const OrvaModel* model) {
  LumoList tops;
  model->CollectEvents(OrvaSymbol::CompareAsRootSymbol, nullptr, &tops);
  if (tops.GetNumberOfItems() == 1) return;
  error = 1;
  if (tops.IsEmpty()) return _interpreter->RaiseError(NO_TOP_EVENT);
  _interpreter->RaiseError(MULTIPLE_TOP_EVENTS);
  LumoStream* stream = _interpreter->GetErrorStream();
  if (stream == nullptr) return;
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(tops)) stream->Putln(event->GetName());
}

void OrvaChecker::CheckNormalForm(int& error, const OrvaModel* model) {
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(model->GetEvents())) {
    if (event->GetType() != OrvaEvent::GATE || event->GetDefinition() == nullptr) continue;
    if (!_IsGateBuildable(event->GetDefinition())) _Report(error, NOT_FLAT, event);
  }
}

bool OrvaChecker::_IsGateBuildable(const OrvaGate* gate) {
  return gate->IsLiteral() || gate->IsNormalized();
}

void OrvaChecker::CheckCCFGroups(int& error, const OrvaModel* model) {
  std::unordered_set<std::string> names;
  for (const OrvaCCFGroup* group : LumoItems<OrvaCCFGroup>(model->GetCCFGroups())) {
    if (group->IsExpanded()) continue;
    for (int i = 0; i < group->GetNumberOfMembers(); ++i) {
      const std::string name = group->GetNameOfMemberGate(i);
      if (model->LookForEvent(name.c_str()) == nullptr && names.insert(name).second) continue;
      error = 1;
      _interpreter->RaiseError(EXISTING_MEMBER_GATE, name.c_str(), nullptr);
    }
  }
}

void OrvaChecker::CheckCyclesOfGates(int& error, const OrvaModel* model) {
  _CheckCycles(error, &model->GetEvents(), CYCLE_OF_GATES);
}

void OrvaChecker::CheckCyclesOfParameters(int& error, const OrvaModel* model) {
  _CheckCycles(error, &model->GetParameters(), CYCLE_OF_PARAMETERS);
}

void OrvaChecker::_CheckCycles(int& error, const LumoContainer* symbols, const char* message) {
  const std::vector<OrvaSymbol*> cycle = OrvaCycleSearch::FindCycle(symbols);
  if (cycle.empty()) return;
  error = 1;
  _interpreter->RaiseError(message, OrvaCycleSearch::GetText(cycle).c_str(), nullptr);
}

void OrvaChecker::CheckModel(int& error, const OrvaModel* model) {
  CheckGateDefinitions(error, model);
  CheckBasicEventDefinitions(error, model);
  CheckHouseEventDefinitions(error, model);
  CheckParameterDefinitions(error, model);
  CheckNormalForm(error, model);
  CheckCyclesOfGates(error, model);
  CheckCyclesOfParameters(error, model);
}
