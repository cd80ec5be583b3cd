// The unconditional failure intensity w of a basic event: the probability, per time unit, that it
// fails at a date, P being the probability that it has failed by then.
//
// - A value that does not depend on the date does not fail at any: w is 0.
// - A component that can be repaired fails at its failure rate λ whenever it works: w = λ (1 - P).
//   The failure rate is read off the expression, as the parameter that is one or, of a product or a
//   choice, from its parts. The derivative of P would not do, since repairs take away from P what
//   failures add.
// - Otherwise only failures change P, and w is (1 - P) times the difference quotient of P. The step
//   is a thousandth of the date, so that it follows the time scale of the mission; at date 0, and
//   beyond a hundred time units, where such a step grows too long, of a time unit.
//
// What looks odd and is defined so: a sum, or a standby system, has the failure rate 0; and a
// switch looks at the values of its cases themselves, which evaluation never sets, not at their
// conditions.

#include <cassert>
#include <cfloat>
#include <cmath>

#include "model/OrvaDescendantWalk.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistributionKinds.h"
#include "support/containers/LumoRange.h"

double OrvaProbabilityDistribution::ComputeProbabilityAndUnconditionalFailureIntensity(double t) {
  constexpr double STEP = 0.001;
  constexpr double STEPS_PER_DATE = 1000.0;
  constexpr double LATEST_DATE_OF_RELATIVE_STEP = 100.0;
  const double date = t < 0.0 ? 0.0 : t;
  if (!IsTimeDependent()) {
    ComputeValueAsProbability(date);
    _unconditionalFailureIntensity = 0.0;
  } else if (IsRepairDependent()) {
    const double p = ComputeValueAsProbability(date);
    _unconditionalFailureIntensity = _ComputeFailureRate(date) * (1.0 - p);
  } else {
    const bool isRelative = date != 0.0 && date <= LATEST_DATE_OF_RELATIVE_STEP;
    const double h = isRelative ? date / STEPS_PER_DATE : STEP;
    // The later value first: the node's value ends as the probability at the date.
    const double p1 = ComputeValueAsProbability(date + h);
    const double p0 = ComputeValueAsProbability(date);
    _unconditionalFailureIntensity = (1.0 - p0) * (p1 - p0) / h;
  }
  return _unconditionalFailureIntensity;
}

// From the current values of the children, which the caller has computed. The rates of the
// parameters below come first, each after those that it uses: their chains may be long, and one
// that is used twice is not followed twice.
double OrvaProbabilityDistribution::_ComputeFailureRate(double t) {
  switch (GetType()) {
    case PARAMETER:
    case MUL:
    case ITE:
    case SWITCH:
      break;
    default:
      return _GetCurrentFailureRate(t);
  }
  LumoList parameters;
  OrvaDescendantWalk walk(OrvaSymbol::CompareAsAnySymbol, nullptr, &parameters);
  walk.VisitTerm(this);
  walk.ClearFlags();
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(parameters)) {
    const OrvaProbabilityDistribution* definition = parameter->GetDefinition();
    if (definition == nullptr) {
      parameter->SetFailureRate(0.0, false);
    } else {
      parameter->SetFailureRate(definition->_GetCurrentFailureRate(t),
                                definition->_HasCurrentFailureRate());
    }
  }
  return _GetCurrentFailureRate(t);
}

double OrvaProbabilityDistribution::_GetCurrentFailureRate(double t) const {
  return (this->*_GetFunctor().failureRate)(t);
}

// Whether the expression is repair dependent, as far as the parameters know of themselves.
bool OrvaProbabilityDistribution::_HasCurrentFailureRate() const {
  switch (_GetFunctor().repair) {
    case Dependence::DEFINITION: {
      const OrvaParameter* parameter = GetReferencedParameter();
      return parameter != nullptr && parameter->IsRepairDependent();
    }
    case Dependence::CHILDREN: {
      const OrvaProbabilityDistribution* child = GetFirstChild();
      while (child != nullptr && !child->_HasCurrentFailureRate()) child = child->GetNextSibling();
      return child != nullptr;
    }
    default:
      return _GetFunctor().repair == Dependence::ALWAYS;
  }
}

double OrvaProbabilityDistribution::_GetFailureRateOfParameter(double /*t*/) const {
  const OrvaParameter* parameter = GetReferencedParameter();
  return parameter == nullptr ? 0.0 : parameter->GetFailureRate();
}

double OrvaProbabilityDistribution::_GetFailureRateOfProduct(double t) const {
  double rate = 1.0;
  for (const auto* child = GetFirstChild(); child != nullptr; child = child->GetNextSibling()) {
    rate *= child->_HasCurrentFailureRate() ? child->_GetCurrentFailureRate(t)
                                            : child->GetValueAsDouble();
  }
  return rate;
}

double OrvaProbabilityDistribution::_GetFailureRateOfIte(double t) const {
  assert(GetNumberOfChildren() == 3);
  return GetChild(GetFirstChild()->GetValueAsBool() ? 2 : 3)->_GetCurrentFailureRate(t);
}

// The first case whose own value, which evaluation never sets, reads false; else the last child.
double OrvaProbabilityDistribution::_GetFailureRateOfSwitch(double t) const {
  const OrvaProbabilityDistribution* chosen = GetFirstChild();
  assert(chosen != nullptr);
  while (chosen->GetType() != CASE || chosen->GetValueAsBool()) {
    const OrvaProbabilityDistribution* next = chosen->GetNextSibling();
    if (next == nullptr) break;
    chosen = next;
  }
  return chosen->_GetCurrentFailureRate(t);
}

double OrvaProbabilityDistribution::_GetFailureRateOfFirstChild(double /*t*/) const {
  return GetValueOfChildAsDouble(1);
}

double OrvaProbabilityDistribution::_GetFailureRateOfGLM(double /*t*/) const {
  return GetValueOfChildAsDouble(2);
}

double OrvaProbabilityDistribution::_GetFailureRateOfMTT(double /*t*/) const {
  const double meanTimeToFailure = GetValueOfChildAsDouble(1);
  return meanTimeToFailure == 0.0 ? DBL_MAX : 1.0 / meanTimeToFailure;
}

double OrvaProbabilityDistribution::_GetFailureRateOfPeriodicTest(double t) const {
  constexpr int LAMBDA = 1, LAMBDA_TEST = 2, TAU = 4, THETA = 5, PI_DURATION = 7;
  if (GetNumberOfChildren() != 11) return GetValueOfChildAsDouble(LAMBDA);
  const double theta = GetValueOfChildAsDouble(THETA);
  if (theta >= t) return GetValueOfChildAsDouble(LAMBDA);
  const double sinceTest = std::fmod(t - theta - DBL_EPSILON, GetValueOfChildAsDouble(TAU));
  const bool isTestOver = GetValueOfChildAsDouble(PI_DURATION) < sinceTest;
  return GetValueOfChildAsDouble(isTestOver ? LAMBDA : LAMBDA_TEST);
}
