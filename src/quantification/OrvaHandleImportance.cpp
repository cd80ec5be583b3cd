// Importance factors of basic events. The sum over the cutsets is linear in each probability p,
// with the marginal importance factor as its slope: what it would be with p = 1 or p = 0 follows
// from P without computing anything again. P has been brought into [0, 1] before, what follows from
// it is not.

#include "model/OrvaEvent.h"
#include "quantification/OrvaHandle.h"

namespace {

// A ratio is 0 when its denominator is exactly 0; NaN passes.
double Divide(double numerator, double denominator) {
  return denominator == 0.0 ? 0.0 : numerator / denominator;
}

}  // namespace

double OrvaHandle::GetConditionalProbabilityOfBasicEvent(const OrvaEvent* event, bool value) const {
  const double P = GetTopEventProbability();
  const double p = GetProbabilityOfBasicEvent(event);
  const double factor = GetMarginalImportanceFactorOfBasicEvent(event);
  return value ? P - p * factor + factor : P - p * factor;
}

double OrvaHandle::GetCriticalImportanceFactorOfBasicEvent(const OrvaEvent* event) const {
  const double P = GetTopEventProbability();
  const double p = GetProbabilityOfBasicEvent(event);
  return Divide(p * GetMarginalImportanceFactorOfBasicEvent(event), P);
}

double OrvaHandle::GetDiagnosisImportanceFactorOfBasicEvent(const OrvaEvent* event) const {
  const double P = GetTopEventProbability();
  const double p = GetProbabilityOfBasicEvent(event);
  return Divide(p * GetConditionalProbabilityOfBasicEvent(event, true), P);
}

double OrvaHandle::GetFusselVeselyImportanceFactorOfBasicEvent(const OrvaEvent* event) const {
  return GetDiagnosisImportanceFactorOfBasicEvent(event);
}

double OrvaHandle::GetRiskAchievementWorthOfBasicEvent(const OrvaEvent* event) const {
  const double P = GetTopEventProbability();
  return Divide(GetConditionalProbabilityOfBasicEvent(event, true), P);
}

double OrvaHandle::GetRiskReductionWorthOfBasicEvent(const OrvaEvent* event) const {
  const double P = GetTopEventProbability();
  return Divide(P, GetConditionalProbabilityOfBasicEvent(event, false));
}
