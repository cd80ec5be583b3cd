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

// Those of a lognormal law become the mean and the deviation of its logarithm, which is all that it
// takes to draw.
OrvaProbabilityDistribution::Arguments OrvaProbabilityDistribution::_GetArgumentsOfDeviate() {
  const int number = _GetFunctor().numberOfArguments;
  Arguments x = {};
  for (int i = 0; i < number; ++i) x[static_cast<std::size_t>(i)] = _GetDeviateParameter(i + 1);
  if (GetType() == LOGNORMAL_DEVIATE) {
    LumoRandomizer::GetNormalLawOfLogarithm(x[0], x[1], x[2], x[0], x[1]);
  }
  return x;
}

void OrvaProbabilityDistribution::_DrawDeviate(LumoRandomizer* randomizer) {
  _value.Set(_GetFunctor().deviate(_GetArgumentsOfDeviate(), randomizer));
}

bool OrvaProbabilityDistribution::PrepareDraw(PreparedDraw& draw) {
  bool hasDeviates = false;
  bool areConstants = true;
  for (OrvaTerm* term = GetFirstInPostOrder(); term != nullptr;
       term = term->GetNextInPostOrder(this)) {
    const auto* node = static_cast<const OrvaProbabilityDistribution*>(term);
    hasDeviates = hasDeviates || node->GetType() >= UNIFORM_DEVIATE;
    areConstants = areConstants && (node == this || node->_IsConstant());
  }
  draw._node = this;
  draw._areConstants = areConstants && _GetFunctor().deviate != nullptr;
  if (draw._areConstants) draw._arguments = _GetArgumentsOfDeviate();
  return hasDeviates;
}

void OrvaProbabilityDistribution::PreparedDraw::Draw(LumoRandomizer* randomizer) const {
  if (!_areConstants) return _node->DrawRandomDeviates(randomizer);
  _node->_value.Set(_node->_GetFunctor().deviate(_arguments, randomizer));
}

void OrvaProbabilityDistribution::_ResetUniform() {
  const double a = _GetDeviateParameter(1);
  const double b = _GetDeviateParameter(2);
  _value.Set(a + (b - a) * 0.5);
}

void OrvaProbabilityDistribution::_ResetToFirstParameter() { _value.Set(_GetDeviateParameter(1)); }

void OrvaProbabilityDistribution::_ResetBeta() {
  const double alpha = _GetDeviateParameter(1);
  const double beta = _GetDeviateParameter(2);
  _value.Set(alpha / OrvaNonZero(alpha + beta));
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
