// One quantification goes once over the parameters, in the order in which they depend on each
// other, once over the basic events, and once or twice over the cutset tree, which the set keeps
// compiled from one date or sample to the next.
//
// The probability P of the top event is the sum over the minimal cutsets of the products of their
// probabilities, the rare-event approximation: one pass over the tree. The marginal importance
// factor of an event is the derivative of that sum by the event's probability. One more pass gives
// it for all events at once: it adds to the event of each node the probability of the path down to
// the node times the sum below it on the side where the event has failed. Asking the sum again with
// each event failed, then working, would take as many passes as there are events.
//
// The unconditional failure intensity of the top event is w = Σ MIF(e) w(e): it fails at a date
// when one event fails and the others of a cutset have failed already. Divided by 1 - P it is
// conditional on the top event not having occurred before.

#include "quantification/OrvaHandle.h"

#include <cassert>

#include "model/OrvaModel.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "quantification/OrvaApproximation.h"
#include "store/OrvaMCSSet.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"
#include "system/OrvaSystem.h"

namespace {

// The conditional failure intensity of a top event that is certain to have occurred: a guard
// value, neither w nor infinity.
constexpr double CERTAIN_FAILURE_INTENSITY = 1.0;
constexpr double PROBABILITY_WITHOUT_EXPRESSION = 1.0;

const OrvaHandle* AsHandle(const void* item) { return static_cast<const OrvaHandle*>(item); }

}  // namespace

OrvaHandle::OrvaHandle(OrvaEvent* topEvent, const char* name, Type type, OrvaSystem* system,
                       OrvaMCSSet* set)
    : _topEvent(topEvent),
      _name(LumoRawString::Copy(name)),
      _type(type),
      _system(system),
      _set(set) {
  assert((_type == SYSTEM_HANDLE ? _set == nullptr : _system == nullptr));
  UpdateBasicEventsAndParameters();
  LumoMemoryManager::TraceNew(this, "OrvaHandle");
}

OrvaHandle::OrvaHandle(OrvaEvent* topEvent, const char* name, OrvaSystem* system)
    : OrvaHandle(topEvent, name, SYSTEM_HANDLE, system, nullptr) {}

OrvaHandle::OrvaHandle(OrvaEvent* topEvent, const char* name, OrvaMCSSet* set)
    : OrvaHandle(topEvent, name, MCS_HANDLE, nullptr, set) {}

OrvaHandle::~OrvaHandle() {
  delete _system;
  delete _set;
  LumoRawString::Delete(_name);
  LumoMemoryManager::TraceDelete(this, "OrvaHandle");
}

void OrvaHandle::Delete(void* handle) {
  if (handle != nullptr) delete static_cast<OrvaHandle*>(handle);
}

void OrvaHandle::UpdateBasicEventsAndParameters() {
  _basicEvents.RemoveItems();
  _parameters.RemoveItems();
  _topEvent->CollectDescendants(OrvaSymbol::CompareAsLeafSymbol, nullptr, &_basicEvents);
  OrvaModel::CollectParametersOfEvents(&_basicEvents, &_parameters);
}

int OrvaHandle::CompareName(const char* name) const { return LumoRawString::Compare(_name, name); }

int OrvaHandle::CompareName(const void* handle, const void* name) {
  return AsHandle(handle)->CompareName(static_cast<const char*>(name));
}

int OrvaHandle::CompareNames(const void* a, const void* b) {
  return AsHandle(a)->CompareNames(AsHandle(b));
}

double OrvaHandle::GetTopEventProbability() const { return _topEvent->GetProbability(); }

double OrvaHandle::GetProbabilityOfBasicEvent(const OrvaEvent* event) const {
  return event->GetProbability();
}

double OrvaHandle::GetTopEventUnconditionalFailureIntensity() const {
  return _topEvent->GetUnconditionalFailureIntensity();
}

double OrvaHandle::GetMarginalImportanceFactorOfBasicEvent(const OrvaEvent* event) const {
  return event->GetMarginalImportanceFactor();
}

double OrvaHandle::GetTopEventConditionalFailureIntensity() const {
  double unconditional;
  return GetTopEventConditionalFailureIntensity(unconditional);
}

double OrvaHandle::GetTopEventConditionalFailureIntensity(double& unconditional) const {
  unconditional = GetTopEventUnconditionalFailureIntensity();
  const double complement = 1.0 - GetTopEventProbability();
  return complement == 0.0 ? CERTAIN_FAILURE_INTENSITY : unconditional / complement;
}

int OrvaHandle::GetNumberOfOccurrencesOfBasicEvent(const OrvaEvent* event) const {
  if (_set == nullptr) return 0;
  const OrvaMCSBasicEvent* entry = _set->GetBasicEvent(event->GetMCSIndex());
  return entry == nullptr ? 0 : entry->numberOfOccurrences;
}

void OrvaHandle::ComputeValuesOfParameters(double t, const LumoContainer* parameters) {
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    parameter->ComputeValue(t);
  }
}

void OrvaHandle::ComputeProbabilitiesOfBasicEvents(double t, const LumoContainer* basicEvents) {
  ComputeValuesOfParameters(t);
  for (OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) {
    if (event->GetProbabilityDistribution() != nullptr) {
      event->ComputeProbabilityOfBasicEvent(t);
    } else {
      event->SetProbability(PROBABILITY_WITHOUT_EXPRESSION);
    }
  }
  _LoadProbabilitiesOfBasicEvents(basicEvents);
}

void OrvaHandle::ComputeProbabilitiesAndUnconditionalFailureIntensitiesOfBasicEvents(
    double t, const LumoContainer* basicEvents) {
  ComputeValuesOfParameters(t);
  for (OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) {
    event->ComputeProbabilityAndUnconditionalFailureIntensityOfBasicEvent(t);
  }
  _LoadProbabilitiesOfBasicEvents(basicEvents);
}

// Events that no system of the handle's set has met are unknown to the store.
void OrvaHandle::_LoadProbabilitiesOfBasicEvents(const LumoContainer* basicEvents) {
  if (_set == nullptr) return;
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) {
    if (event->GetMCSIndex() == 0) continue;
    _set->GetManager()->SetProbability(event->GetMCSIndex(), event->GetProbability());
  }
}

void OrvaHandle::ComputeTopEventProbability(double t) {
  ComputeProbabilitiesOfBasicEvents(t);
  if (_set == nullptr) return _topEvent->SetProbability(0.0);
  _topEvent->SetProbability(_approximation == nullptr ? _set->UpdateTopEventProbability()
                                                      : _approximation->Compute(*_set));
}

void OrvaHandle::ComputeImportanceFactorsOfBasicEvents(double t) {
  ComputeProbabilitiesOfBasicEvents(t);
  _ComputeImportanceFactorsOfBasicEvents();
}

void OrvaHandle::_ComputeImportanceFactorsOfBasicEvents() {
  if (_set == nullptr) return _topEvent->SetProbability(0.0);
  _topEvent->SetProbability(_set->UpdateMarginalImportanceFactors());
  for (OrvaEvent* event : LumoItems<OrvaEvent>(_basicEvents)) {
    const OrvaMCSBasicEvent* entry = _set->GetBasicEvent(event->GetMCSIndex());
    assert(entry != nullptr);
    event->SetMarginalImportanceFactor(entry->marginalImportanceFactor);
  }
}

void OrvaHandle::ComputeTopEventUnconditionalFailureIntensity(double t) {
  ComputeProbabilitiesAndUnconditionalFailureIntensitiesOfBasicEvents(t);
  _ComputeTopEventUnconditionalFailureIntensity();
}

void OrvaHandle::_ComputeTopEventUnconditionalFailureIntensity() {
  _ComputeImportanceFactorsOfBasicEvents();
  double w = 0.0;
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(_basicEvents)) {
    w += event->GetMarginalImportanceFactor() * event->GetUnconditionalFailureIntensity();
  }
  _topEvent->SetUnconditionalFailureIntensity(w);
}

void OrvaHandle::ResetRandomDeviatesOfBasicEvents() {
  ResetRandomDeviatesOfParameters();
  ResetRandomDeviatesOfBasicEvents(&_basicEvents);
}

void OrvaHandle::ResetRandomDeviatesOfBasicEvents(const LumoContainer* basicEvents) {
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) {
    if (auto* distribution = event->GetProbabilityDistribution()) {
      distribution->ResetRandomDeviates();
    }
  }
}

void OrvaHandle::ResetRandomDeviatesOfParameters() {
  ResetRandomDeviatesOfParameters(&_parameters);
}

void OrvaHandle::ResetRandomDeviatesOfParameters(const LumoContainer* parameters) {
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    assert(parameter->GetDefinition() != nullptr);
    parameter->GetDefinition()->ResetRandomDeviates();
  }
}

// Offered to users of the class; the program itself does not call what follows.

int OrvaHandle::CompareType(const void* handle, const void* type) {
  return AsHandle(handle)->CompareType(static_cast<const Type*>(type));
}

int OrvaHandle::CompareTypes(const void* a, const void* b) {
  return AsHandle(a)->CompareTypes(AsHandle(b));
}

double OrvaHandle::GetUnconditionalFailureIntensityOfBasicEvent(const OrvaEvent* event) const {
  return event->GetUnconditionalFailureIntensity();
}
