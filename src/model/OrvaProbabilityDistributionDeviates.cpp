// Random deviates. A deviate keeps its value until it is drawn or reset again: during one trial all
// evaluations see the same draw, and outside a trial its central value stands for it.
//
// Only the deviate at the root of an expression is drawn; one that is a parameter of another is
// reset to its central value. This is the defined behaviour.

#include <cassert>
#include <cfloat>

#include "model/OrvaProbabilityDistributionKinds.h"
#include "support/random/LumoRandomizer.h"

void OrvaProbabilityDistribution::DrawRandomDeviates(LumoRandomizer* randomizer) {
  for (auto* child = GetFirstChild(); child != nullptr; child = child->GetNextSibling()) {
    child->ResetRandomDeviates();
  }
  (this->*_GetFunctor().draw)(randomizer);
}

void OrvaProbabilityDistribution::ResetRandomDeviates() {
  for (auto* child = GetFirstChild(); child != nullptr; child = child->GetNextSibling()) {
    child->ResetRandomDeviates();
  }
  (this->*_GetFunctor().reset)();
}

// The parameters of a deviate do not depend on the date.
double OrvaProbabilityDistribution::_GetDeviateParameter(int i) {
  return ComputeValueOfChildAsDouble(i, 0.0, DBL_MIN, DBL_MAX);
}

void OrvaProbabilityDistribution::_DrawUniform(LumoRandomizer* randomizer) {
  const double a = _GetDeviateParameter(1);
  const double b = _GetDeviateParameter(2);
  _value.Set(randomizer->UniformDraw(a, b));
}

void OrvaProbabilityDistribution::_ResetUniform() {
  const double a = _GetDeviateParameter(1);
  const double b = _GetDeviateParameter(2);
  _value.Set(a + (b - a) * 0.5);
}

void OrvaProbabilityDistribution::_DrawNormal(LumoRandomizer* randomizer) {
  const double mean = _GetDeviateParameter(1);
  const double deviation = _GetDeviateParameter(2);
  _value.Set(randomizer->NormalDraw(mean, deviation));
}

void OrvaProbabilityDistribution::_DrawLognormal(LumoRandomizer* randomizer) {
  const double mean = _GetDeviateParameter(1);
  const double errorFactor = _GetDeviateParameter(2);
  const double level = _GetDeviateParameter(3);
  _value.Set(randomizer->LognormalDraw(mean, errorFactor, level));
}

void OrvaProbabilityDistribution::_ResetToFirstParameter() { _value.Set(_GetDeviateParameter(1)); }

void OrvaProbabilityDistribution::_DrawBeta(LumoRandomizer* randomizer) {
  const double alpha = _GetDeviateParameter(1);
  const double beta = _GetDeviateParameter(2);
  _value.Set(randomizer->BetaDraw(alpha, beta));
}

void OrvaProbabilityDistribution::_ResetBeta() {
  const double alpha = _GetDeviateParameter(1);
  const double beta = _GetDeviateParameter(2);
  _value.Set(alpha / OrvaNonZero(alpha + beta));
}

void OrvaProbabilityDistribution::_DrawGamma(LumoRandomizer* randomizer) {
  const double k = _GetDeviateParameter(1);
  const double theta = _GetDeviateParameter(2);
  _value.Set(randomizer->GammaDraw(k, theta));
}

void OrvaProbabilityDistribution::_ResetGamma() {
  const double k = _GetDeviateParameter(1);
  const double theta = _GetDeviateParameter(2);
  _value.Set(k * theta);
}

// A histogram is a lower bound followed by bins in increasing order; without a bin at the end it
// is that bound.

double OrvaProbabilityDistribution::_GetUpperBoundOfBin(OrvaProbabilityDistribution* bin) {
  return bin->_GetDeviateParameter(1);
}

double OrvaProbabilityDistribution::_GetValueOfBin(OrvaProbabilityDistribution* bin) {
  return bin->_GetDeviateParameter(2);
}

void OrvaProbabilityDistribution::_DrawHistogram(LumoRandomizer* randomizer) {
  const double lowerBound = _GetDeviateParameter(1);
  OrvaProbabilityDistribution* last = GetLastChild();
  if (last->GetType() != BIN) return _value.Set(lowerBound);
  const double u = randomizer->UniformDraw(lowerBound, _GetUpperBoundOfBin(last));
  OrvaProbabilityDistribution* bin = GetChild(2);
  assert(bin != nullptr);
  while (bin != last && !(_GetUpperBoundOfBin(bin) >= u)) bin = bin->GetNextSibling();
  _value.Set(_GetValueOfBin(bin));
}

void OrvaProbabilityDistribution::_ResetHistogram() {
  const double lowerBound = _GetDeviateParameter(1);
  OrvaProbabilityDistribution* last = GetLastChild();
  if (last->GetType() != BIN) return _value.Set(lowerBound);
  double sum = 0.0;
  double previousBound = lowerBound;
  for (auto* bin = GetChild(2); bin != nullptr; bin = bin->GetNextSibling()) {
    const double bound = _GetUpperBoundOfBin(bin);
    sum += _GetValueOfBin(bin) * (bound - previousBound);
    previousBound = bound;
  }
  _value.Set(sum / OrvaNonZero(previousBound - lowerBound));
}
