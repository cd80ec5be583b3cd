#include "model/OrvaEvent.h"

#include "model/OrvaDescendantWalk.h"
#include "model/OrvaGate.h"
#include "model/OrvaProbabilityDistribution.h"
#include "model/OrvaSampling.h"

void OrvaEvent::Delete(void* event) {
  if (event != nullptr) delete static_cast<OrvaEvent*>(event);
}

OrvaGate* OrvaEvent::GetDefinition() const {
  return static_cast<OrvaGate*>(OrvaSymbol::GetDefinition());
}

void OrvaEvent::SetDefinition(OrvaGate* definition) {
  OrvaSymbol::SetDefinition(definition);
  _type = GATE;
}

void OrvaEvent::SetProbabilityDistribution(OrvaProbabilityDistribution* distribution) {
  OrvaTerm::Delete(_distribution);
  _distribution = distribution;
}

void OrvaEvent::ComputeProbabilityOfBasicEvent(double t) {
  _probability = _distribution == nullptr ? 0.0 : _distribution->ComputeValueAsProbability(t);
}

void OrvaEvent::ComputeProbabilityAndUnconditionalFailureIntensityOfBasicEvent(double t) {
  if (_distribution == nullptr) {
    _probability = 1.0;
    _unconditionalFailureIntensity = 0.0;
    return;
  }
  _unconditionalFailureIntensity =
      _distribution->ComputeProbabilityAndUnconditionalFailureIntensity(t);
  _probability = _distribution->GetValueAsDouble();
}

void OrvaEvent::ResetMeasure(int numberOfQuantiles, int numberOfBins) {
  OrvaSampling::ResetMeasure(_measure, this, numberOfQuantiles, numberOfBins);
}

// Offered to users of the class; the program itself does not call what follows.

int OrvaEvent::CompareType(const void* event, const void* type) {
  return static_cast<const OrvaEvent*>(event)->CompareType(*static_cast<const Type*>(type));
}

void OrvaEvent::CollectParameters(LumoContainer* result) {
  LumoList basicEvents;
  CollectDescendants(CompareAsLeafSymbol, nullptr, &basicEvents);
  LumoList parameters;
  while (void* parameter = result->RemoveFirstItem()) parameters.InsertItemLast(parameter);
  OrvaDescendantWalk walk(CompareAsAnySymbol, nullptr, &parameters);
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(basicEvents)) {
    if (event->_distribution != nullptr) walk.VisitTerm(event->_distribution);
  }
  walk.ClearFlags();
  for (OrvaSymbol* parameter : LumoItems<OrvaSymbol>(parameters)) {
    if (parameter->GetFlag() == 0) result->InsertItem(parameter);
    parameter->SetFlag(1);
  }
  for (OrvaSymbol* parameter : LumoItems<OrvaSymbol>(parameters)) parameter->SetFlag(0);
}
