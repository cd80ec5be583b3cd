// Uncertainty and sensitivity by sampling. A trial draws every deviate below the top event,
// parameters first and each in the order of the handle's lists, and quantifies once: what is random
// is the model, not the failures. All measures of a trial get the values of the same draw, so that
// those of the parameters and of the basic events can be set against that of the top event.
//
// Only what has deviates is drawn, and with constant arguments these are looked at once.
//
// A basic event draws only what stands in its own expression. The parameters that it refers to are
// drawn before, once for all the events that share them.

#include <cassert>

#include "model/OrvaEvent.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "quantification/OrvaHandle.h"
#include "support/statistics/LumoMeasure.h"
#include "support/time/LumoProgress.h"

void OrvaHandle::PerformSensitivityAnalysisOnTopEventProbability(
    double missionTime, int numberOfTries, LumoRandomizer* randomizer, int numberOfQuantiles,
    int numberOfBins, bool parameters, bool basicEvents) {
  if (parameters) ResetSensitivityMeasuresOfParameters();
  if (basicEvents) ResetSensitivityMeasuresOfBasicEvents();
  ResetSensitivityMeasureOfTopEvent(numberOfQuantiles, numberOfBins);
  const std::vector<OrvaProbabilityDistribution::PreparedDraw> draws = _PrepareDraws();
  const LumoProgress progress("sampling", "tries", numberOfTries);
  for (int i = 0; i < numberOfTries; ++i) {
    LumoProgress::Advance();
    for (const auto& draw : draws) draw.Draw(randomizer);
    ComputeTopEventProbability(missionTime);
    if (parameters) AddCurrentValuesOfParametersToTheirSensitivityMeasures();
    if (basicEvents) AddCurrentProbabilitiesOfBasicEventsToTheirSensitivityMeasures();
    AddCurrentTopEventProbabilityToItsSensitivityMeasure();
  }
}

std::vector<OrvaProbabilityDistribution::PreparedDraw> OrvaHandle::_PrepareDraws() const {
  std::vector<OrvaProbabilityDistribution::PreparedDraw> draws;
  const auto prepare = [&](OrvaProbabilityDistribution* expression) {
    OrvaProbabilityDistribution::PreparedDraw draw;
    if (expression != nullptr && expression->PrepareDraw(draw)) draws.push_back(draw);
  };
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(_parameters)) {
    prepare(parameter->GetDefinition());
  }
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(_basicEvents)) {
    prepare(event->GetProbabilityDistribution());
  }
  return draws;
}

void OrvaHandle::ResetSensitivityMeasureOfTopEvent(int numberOfQuantiles, int numberOfBins) {
  _topEvent->ResetMeasure(numberOfQuantiles, numberOfBins);
}

void OrvaHandle::ResetSensitivityMeasuresOfBasicEvents() {
  ResetSensitivityMeasuresOfBasicEvents(&_basicEvents);
}

void OrvaHandle::ResetSensitivityMeasuresOfBasicEvents(const LumoContainer* basicEvents) {
  for (OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) event->ResetMeasure(0, 0);
}

void OrvaHandle::ResetSensitivityMeasuresOfParameters() {
  ResetSensitivityMeasuresOfParameters(&_parameters);
}

void OrvaHandle::ResetSensitivityMeasuresOfParameters(const LumoContainer* parameters) {
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    parameter->ResetMeasure(0, 0);
  }
}

void OrvaHandle::AddCurrentTopEventProbabilityToItsSensitivityMeasure() {
  assert(_topEvent->GetMeasure() != nullptr);
  _topEvent->GetMeasure()->AddValue(GetTopEventProbability());
}

void OrvaHandle::AddCurrentProbabilitiesOfBasicEventsToTheirSensitivityMeasures() {
  AddCurrentProbabilitiesOfBasicEventsToTheirSensitivityMeasures(&_basicEvents);
}

void OrvaHandle::AddCurrentProbabilitiesOfBasicEventsToTheirSensitivityMeasures(
    const LumoContainer* basicEvents) {
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) {
    assert(event->GetMeasure() != nullptr);
    event->GetMeasure()->AddValue(event->GetProbability());
  }
}

void OrvaHandle::AddCurrentValuesOfParametersToTheirSensitivityMeasures() {
  AddCurrentValuesOfParametersToTheirSensitivityMeasures(&_parameters);
}

void OrvaHandle::AddCurrentValuesOfParametersToTheirSensitivityMeasures(
    const LumoContainer* parameters) {
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    assert(parameter->GetMeasure() != nullptr);
    parameter->GetMeasure()->AddValue(parameter->GetValue()->ToDouble());
  }
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaHandle::DrawRandomDeviatesOfBasicEvents(LumoRandomizer* randomizer) {
  DrawRandomDeviatesOfParameters(randomizer);
  DrawRandomDeviatesOfBasicEvents(randomizer, &_basicEvents);
}

void OrvaHandle::DrawRandomDeviatesOfBasicEvents(LumoRandomizer* randomizer,
                                                 const LumoContainer* basicEvents) {
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) {
    if (auto* distribution = event->GetProbabilityDistribution()) {
      distribution->DrawRandomDeviates(randomizer);
    }
  }
}

void OrvaHandle::DrawRandomDeviatesOfParameters(LumoRandomizer* randomizer) {
  DrawRandomDeviatesOfParameters(randomizer, &_parameters);
}

void OrvaHandle::DrawRandomDeviatesOfParameters(LumoRandomizer* randomizer,
                                                const LumoContainer* parameters) {
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    assert(parameter->GetDefinition() != nullptr);
    parameter->GetDefinition()->DrawRandomDeviates(randomizer);
  }
}
