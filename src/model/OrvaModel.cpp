#include "model/OrvaModel.h"

#include <cassert>

#include "model/OrvaCCFGroup.h"
#include "model/OrvaDescendantWalk.h"
#include "model/OrvaGate.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

OrvaModel::OrvaModel()
    : _events(OrvaSymbol::CompareNames),
      _ccfGroups(OrvaCCFGroup::CompareNames),
      _parameters(OrvaSymbol::CompareNames),
      _format(LumoRawString::Copy(DEFAULT_FORMAT)) {
  LumoMemoryManager::TraceNew(this, "OrvaModel");
}

// All definitions and expressions go first, so that every node leaves the occurrences of its
// symbol while all symbols still exist.
OrvaModel::~OrvaModel() {
  for (OrvaEvent* event : LumoItems<OrvaEvent>(_events)) {
    event->SetDefinition(nullptr);
    event->SetProbabilityDistribution(nullptr);
    event->DeleteHandles();
  }
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(_parameters)) {
    parameter->SetDefinition(nullptr);
  }
  _ccfGroups.DeleteItems(OrvaCCFGroup::Delete);
  _events.DeleteItems(OrvaEvent::Delete);
  _parameters.DeleteItems(OrvaParameter::Delete);
  LumoRawString::Delete(_format);
  LumoMemoryManager::TraceDelete(this, "OrvaModel");
}

OrvaEvent* OrvaModel::AddEvent(const char* name, OrvaEvent::Type type) {
  auto* event = new OrvaEvent(this, name, type);
  _events.InsertItem(event);
  return event;
}

OrvaEvent* OrvaModel::LookForEvent(const char* name) const {
  return static_cast<OrvaEvent*>(_events.LookForItem(OrvaSymbol::CompareName, name));
}

void OrvaModel::CollectEvents(OrvaSymbol::Selector selector, const void* argument,
                              LumoContainer* result) const {
  _events.CollectItems(selector, argument, result);
}

void OrvaModel::RenameEvent(OrvaEvent* event, const char* name) {
  assert(_events.LookForNodeOfItem(event) != nullptr);
  _events.RemoveNode(_events.LookForNodeOfItem(event));  // not another one of that name
  event->SetName(name);
  _events.InsertItem(event);
}

OrvaParameter* OrvaModel::AddParameter(const char* name) {
  auto* parameter = new OrvaParameter(this, name);
  _parameters.InsertItem(parameter);
  return parameter;
}

OrvaParameter* OrvaModel::LookForParameter(const char* name) const {
  return static_cast<OrvaParameter*>(_parameters.LookForItem(OrvaSymbol::CompareName, name));
}

void OrvaModel::CollectParameters(OrvaSymbol::Selector selector, const void* argument,
                                  LumoContainer* result) const {
  _parameters.CollectItems(selector, argument, result);
}

void OrvaModel::AddCCFGroup(OrvaCCFGroup* group) { _ccfGroups.InsertItem(group); }

OrvaCCFGroup* OrvaModel::LookForCCFGroup(const char* name) const {
  return static_cast<OrvaCCFGroup*>(_ccfGroups.LookForItem(OrvaCCFGroup::CompareName, name));
}

void OrvaModel::DeleteCCFGroup(OrvaCCFGroup* group) { _ccfGroups.RemoveItem(group); }

void OrvaModel::ExpandCCFGroups() {
  for (OrvaCCFGroup* group : LumoItems<OrvaCCFGroup>(_ccfGroups)) {
    if (!group->IsExpanded()) group->Expand();
  }
}

void OrvaModel::SetFormat(const char* format) { LumoRawString::Replace(_format, format); }

void OrvaModel::CollectParametersOfEvents(const LumoContainer* events, LumoContainer* result) {
  OrvaDescendantWalk walk(OrvaSymbol::CompareAsAnySymbol, nullptr, result);
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*events)) {
    if (OrvaTerm* distribution = event->GetProbabilityDistribution()) walk.VisitTerm(distribution);
  }
  walk.ClearFlags();
}

void OrvaModel::ComputeValuesOfParameters(double t) {
  LumoList parameters;
  OrvaDescendantWalk walk(OrvaSymbol::CompareAsAnySymbol, nullptr, &parameters);
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(_parameters)) {
    walk.VisitSymbol(parameter);
  }
  walk.ClearFlags();
  ComputeValuesOfParameters(t, &parameters);
}

void OrvaModel::ComputeValuesOfParameters(double t, const LumoContainer* parameters) {
  SetMissionTime(t);
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    parameter->ComputeValue(t);
  }
}

void OrvaModel::ComputeProbabilitiesOfBasicEvents(double t) {
  LumoList events;
  CollectEvents(OrvaSymbol::CompareAsLeafSymbol, nullptr, &events);
  ComputeProbabilitiesOfBasicEvents(t, &events);
}

void OrvaModel::ComputeProbabilitiesOfBasicEvents(double t, const LumoContainer* events) {
  SetMissionTime(t);
  LumoList parameters;
  CollectParametersOfEvents(events, &parameters);
  ComputeValuesOfParameters(t, &parameters);
  for (OrvaEvent* event : LumoItems<OrvaEvent>(*events)) {
    OrvaProbabilityDistribution* distribution = event->GetProbabilityDistribution();
    event->SetProbability(distribution == nullptr ? 1.0
                                                  : distribution->ComputeValue(t)->ToDouble());
  }
}

void OrvaModel::ResetRandomDeviatesOfModel() {
  LumoList events;
  CollectEvents(OrvaSymbol::CompareAsLeafSymbol, nullptr, &events);
  ResetRandomDeviatesOfBasicEvents(&events);
}

void OrvaModel::ResetRandomDeviatesOfBasicEvents(const LumoContainer* events) {
  LumoList parameters;
  CollectParametersOfEvents(events, &parameters);
  ResetRandomDeviatesOfParameters(&parameters);
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*events)) {
    if (auto* distribution = event->GetProbabilityDistribution()) {
      distribution->ResetRandomDeviates();
    }
  }
}

void OrvaModel::ResetRandomDeviatesOfParameters(const LumoContainer* parameters) {
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    assert(parameter->GetDefinition() != nullptr);
    parameter->GetDefinition()->ResetRandomDeviates();
  }
}

void OrvaModel::TurnUnspecifiedEventsToBasicEvents() {
  for (OrvaEvent* event : LumoItems<OrvaEvent>(_events)) {
    if (event->GetType() == OrvaEvent::UNSPECIFIED_EVENT) event->SetType(OrvaEvent::BASIC_EVENT);
  }
}

void OrvaModel::_SetDefaultDefinition(OrvaEvent::Type type, bool value) {
  for (OrvaEvent* event : LumoItems<OrvaEvent>(_events)) {
    if (event->GetType() == type && event->GetDefinition() == nullptr) {
      event->SetDefinition(OrvaGate::NewConstant(this, value));
    }
  }
}

void OrvaModel::SetDefaultValueToGates(bool value) {
  _SetDefaultDefinition(OrvaEvent::GATE, value);
}

void OrvaModel::SetDefaultValueToBasicEvents(double value) {
  for (OrvaEvent* event : LumoItems<OrvaEvent>(_events)) {
    if (event->GetType() == OrvaEvent::BASIC_EVENT &&
        event->GetProbabilityDistribution() == nullptr) {
      event->SetProbabilityDistribution(OrvaProbabilityDistribution::NewFloat(this, value));
    }
  }
}

void OrvaModel::SetDefaultValueToHouseEvents(bool value) {
  _SetDefaultDefinition(OrvaEvent::HOUSE_EVENT, value);
}

void OrvaModel::SetDefaultValueToParameters(double value) {
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(_parameters)) {
    if (parameter->GetDefinition() == nullptr) {
      parameter->SetDefinition(OrvaProbabilityDistribution::NewFloat(this, value));
    }
  }
}

void OrvaModel::Complete() {
  TurnUnspecifiedEventsToBasicEvents();
  SetDefaultValueToGates(false);
  SetDefaultValueToBasicEvents(0.0);
  SetDefaultValueToHouseEvents(false);
  SetDefaultValueToParameters(0.0);
  ResetRandomDeviatesOfModel();
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaModel::DrawRandomDeviatesOfModel(LumoRandomizer* randomizer) {
  LumoList events;
  CollectEvents(OrvaSymbol::CompareAsLeafSymbol, nullptr, &events);
  DrawRandomDeviatesOfBasicEvents(randomizer, &events);
}

void OrvaModel::DrawRandomDeviatesOfBasicEvents(LumoRandomizer* randomizer,
                                                const LumoContainer* events) {
  LumoList parameters;
  CollectParametersOfEvents(events, &parameters);
  DrawRandomDeviatesOfParameters(randomizer, &parameters);
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*events)) {
    if (auto* distribution = event->GetProbabilityDistribution()) {
      distribution->DrawRandomDeviates(randomizer);
    }
  }
}

void OrvaModel::DrawRandomDeviatesOfParameters(LumoRandomizer* randomizer,
                                               const LumoContainer* parameters) {
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    assert(parameter->GetDefinition() != nullptr);
    parameter->GetDefinition()->DrawRandomDeviates(randomizer);
  }
}
