// The value of each kind of expression, as its formula says. Rates and times below 0 count as 0,
// probabilities are brought into [0, 1], and the bounded value stays in the child it came from.
//
// The reliability models divide by nothing that is 0: such a divisor becomes the machine epsilon.
// The operators of arithmetic leave the matter to the constants, whose quotient by 0 is nil.

#include <algorithm>
#include <cassert>
#include <cfloat>
#include <climits>
#include <cmath>

#include "model/OrvaParameter.h"
#include "model/OrvaPeriodicTest.h"
#include "model/OrvaProbabilityDistributionKinds.h"
#include "support/statistics/LumoMath.h"

namespace {

// The value of a "standby" of more units is no number: its states can't be enumerated.
constexpr long MAXIMUM_NUMBER_OF_STANDBY_UNITS = 1000000;

double ClampToProbability(double x) {
  if (x < 0.0) return 0.0;
  return x > 1.0 ? 1.0 : x;
}

}  // namespace

// Child i bounded as a rate or a time.
double OrvaProbabilityDistribution::_GetRate(int i, double t) {
  return ComputeValueOfChildAsDouble(i, t, 0.0, DBL_MAX);
}

void OrvaProbabilityDistribution::_EvaluateParameter(double /*t*/) {
  if (OrvaParameter* parameter = GetReferencedParameter()) {
    _value.Set(parameter->GetValue());
  } else {
    _value.Set(0.0);
  }
}

void OrvaProbabilityDistribution::_EvaluatePi(double /*t*/) { _value.Set(LumoMath::Pi()); }

void OrvaProbabilityDistribution::_EvaluateMissionTime(double t) { _value.Set(t); }

void OrvaProbabilityDistribution::_EvaluateOperation(double t) {
  assert(GetFirstChild() != nullptr);
  (_value.*_GetFunctor().operation)(GetFirstChild()->ComputeValue(t));
}

void OrvaProbabilityDistribution::_EvaluateBinaryOperation(double t) {
  const LumoConstant* a = ComputeValueOfChild(1, t);
  const LumoConstant* b = ComputeValueOfChild(2, t);
  if (a == nullptr || b == nullptr) return _value.Set();
  (_value.*_GetFunctor().binaryOperation)(a, b);
}

void OrvaProbabilityDistribution::_EvaluateFold(double t) {
  const Functor& functor = _GetFunctor();
  assert(functor.operation != nullptr);
  switch (functor.startType) {
    case LumoConstant::BOOL:
      _value.Set(functor.start != 0.0);
      break;
    case LumoConstant::INT:
      _value.Set(static_cast<int>(functor.start));
      break;
    default:
      _value.Set(functor.start);
  }
  for (auto* child = GetFirstChild(); child != nullptr; child = child->GetNextSibling()) {
    (_value.*functor.operation)(child->ComputeValue(t));
  }
}

void OrvaProbabilityDistribution::_EvaluateMean(double t) {
  _EvaluateFold(t);
  _value.SetDiv(GetNumberOfChildren());
}

void OrvaProbabilityDistribution::_EvaluateIte(double t) {
  assert(GetNumberOfChildren() == 3);
  const bool condition = ComputeValueOfChild(1, t)->ToBool();
  _value.Set(ComputeValueOfChild(condition ? 2 : 3, t));
}

// A child that is no case ends the walk: the value is that of its first child or, for a leaf,
// which has none, its own. Without a match the value stays as it was.
void OrvaProbabilityDistribution::_EvaluateSwitch(double t) {
  for (auto* child = GetFirstChild(); child != nullptr; child = child->GetNextSibling()) {
    OrvaProbabilityDistribution* first = child->GetFirstChild();
    if (child->GetType() != CASE) {
      return _value.Set((first == nullptr ? child : first)->ComputeValue(t));
    }
    assert(first != nullptr && child->GetNumberOfChildren() == 2);
    if (first->ComputeValue(t)->ToBool()) return _value.Set(child->ComputeValueOfChild(2, t));
  }
}

void OrvaProbabilityDistribution::_EvaluateDirac(double t) {
  const double date = _GetRate(1, t);
  _value.Set(date == _GetRate(2, t) ? 1.0 : 0.0);
}

void OrvaProbabilityDistribution::_EvaluatePeriodic(double t) {
  const double first = _GetRate(1, t);
  const double period = _GetRate(2, t);
  const double date = _GetRate(3, t);
  _value.Set(std::fmod(date - first, period) == 0.0 ? 1.0 : 0.0);
}

void OrvaProbabilityDistribution::_EvaluateExponential(double t) {
  const double lambda = _GetRate(1, t);
  const double date = _GetRate(2, t);
  _value.Set(1.0 - std::exp(-lambda * date));
}

void OrvaProbabilityDistribution::_EvaluateGLM(double t) {
  const double gamma = ComputeValueOfChildAsDouble(1, t, 0.0, 1.0);
  const double lambda = _GetRate(2, t);
  const double mu = _GetRate(3, t);
  const double date = _GetRate(4, t);
  const double s = OrvaNonZero(lambda + mu);
  _value.Set(lambda / s - std::exp(-s * date) * (lambda - s * gamma) / s);
}

void OrvaProbabilityDistribution::_EvaluateMTT(double t) {
  const double meanTimeToFailure = _GetRate(1, t);
  const double meanTimeToRepair = _GetRate(2, t);
  const double date = _GetRate(3, t);
  const double a = 1.0 / OrvaNonZero(meanTimeToFailure);
  const double s = OrvaNonZero(1.0 / OrvaNonZero(meanTimeToRepair) + a);
  _value.Set((a / s) * (1.0 - std::exp(-s * date)));
}

// The date plays no part: the value is an average over the test interval T.
void OrvaProbabilityDistribution::_EvaluateDormant(double t) {
  const double lambda = _GetRate(1, t);
  const double meanTimeToRepair = _GetRate(2, t);
  const double interval = _GetRate(3, t);
  const double e = std::exp(-lambda * interval);
  const double c = lambda * meanTimeToRepair * (1.0 - e);
  const double value = (lambda * interval - (1.0 - e) + c) / OrvaNonZero(lambda * interval + c);
  _value.Set(ClampToProbability(value));
}

void OrvaProbabilityDistribution::_EvaluateWeibull(double t) {
  constexpr double SMALLEST_SCALE = 1e-10;
  double alpha = _GetRate(1, t);
  const double beta = _GetRate(2, t);
  const double date = _GetRate(3, t);
  if (alpha == 0.0) alpha = SMALLEST_SCALE;
  _value.Set(1.0 - std::exp(-std::pow(date / alpha, beta)));
}

namespace {

struct Standby {
  long n, k, r;  // units, those that must work, those that can be repaired at a time
  double lambda, lambdaStandby, mu;
};

// A birth-death chain over the number i of failed units out of n, of which k must work and r can
// be repaired at a time. Sums getTerm(i, weight) over the states i, with the weight of each
// relative to state 0. Once a weight is 0, so are the others. Weights that grow too large are
// scaled down together with the sum so far, by a power of two, which rounds nothing: the terms must
// be proportional to the weights.
template <class GetTerm>
double SumOverStatesOfStandby(const Standby& units, GetTerm getTerm) {
  constexpr double LARGE = 0x1p500;
  const auto& [n, k, r, lambda, lambdaStandby, mu] = units;
  assert(k >= 0 && k <= n && r >= 0 && r <= n);
  double weight = 1.0;
  double sum = getTerm(0, weight);
  for (long i = 1; i <= n && weight != 0.0; ++i) {
    const double rate = i > n - k + 1 ? lambda * static_cast<double>(n - i + 1)
                                      : lambda * static_cast<double>(k) +
                                            lambdaStandby * static_cast<double>(n - k - i + 1);
    weight = rate * weight / OrvaNonZero(mu * static_cast<double>(std::min(r, i)));
    if (weight > LARGE) {
      weight /= LARGE;
      sum /= LARGE;
    }
    sum += getTerm(i, weight);
  }
  return sum;
}

}  // namespace

void OrvaProbabilityDistribution::_EvaluateStandby(double t) {
  const long n = ComputeValueOfChildAsInt(1, t, 0, INT_MAX);
  const long k = ComputeValueOfChildAsInt(2, t, 0, static_cast<int>(n));
  const long r = ComputeValueOfChildAsInt(3, t, 0, static_cast<int>(n));
  const Standby units = {n, k, r, _GetRate(4, t), _GetRate(5, t), _GetRate(6, t)};
  if (n > MAXIMUM_NUMBER_OF_STANDBY_UNITS) return _value.Set(std::nan(""));
  const double sum =
      SumOverStatesOfStandby(units, [](long /*i*/, double weight) { return weight; });
  const double value = SumOverStatesOfStandby(
      units, [&](long i, double weight) { return i > n - k ? weight / sum : 0.0; });
  _value.Set(ClampToProbability(value));
}

// The expression as if its clock had started at date a and stopped b later.
void OrvaProbabilityDistribution::_EvaluateBoundTime(double t) {
  const double start = _GetRate(1, t);
  const double duration = _GetRate(2, t);
  const double date = _GetRate(4, t);
  double localDate = date - start;
  if (start > date) localDate = 0.0;
  if (date > start + duration) localDate = duration;
  _value.Set(ComputeValueOfChildAsDouble(3, localDate, DBL_MIN, DBL_MAX));
}

void OrvaProbabilityDistribution::_EvaluatePeriodicTest(double t) {
  switch (GetNumberOfChildren()) {
    case 4:
      return _value.Set(_ComputeValueOfPeriodicTest4(t));
    case 5:
      return _value.Set(_ComputeValueOfPeriodicTest5(t));
    default:
      return _value.Set(_ComputeValueOfPeriodicTest11(t));
  }
}

// At the very date of a test the component is as bad as it gets: the remainder 0 counts as a
// whole interval.
double OrvaProbabilityDistribution::_ComputeValueOfPeriodicTest4(double t) {
  const double lambda = _GetRate(1, t);
  const double tau = _GetRate(2, t);
  const double theta = _GetRate(3, t);
  const double date = _GetRate(4, t);
  double elapsed = date;
  if (theta < date) {
    elapsed = std::fmod(date - theta, OrvaNonZero(tau));
    if (elapsed == 0.0) elapsed = tau;
  }
  return 1.0 - std::exp(-lambda * elapsed);
}

// Tests that take no time, find every failure and break nothing.
double OrvaProbabilityDistribution::_ComputeValueOfPeriodicTest5(double t) {
  const double lambda = _GetRate(1, t);
  const OrvaPeriodicTest test = {.failureRate = lambda,
                                 .failureRateInTest = lambda,
                                 .repairRate = _GetRate(2, t),
                                 .interval = _GetRate(3, t),
                                 .firstTest = _GetRate(4, t),
                                 .probabilityOfFailureByTest = 0.0,
                                 .duration = 0.0,
                                 .isAvailableInTest = false,
                                 .probabilityOfDetection = 1.0,
                                 .probabilityOfBadRestoration = 0.0};
  return OrvaComputeUnavailability(test, ComputeValueOfChildAsDouble(5, t, DBL_MIN, DBL_MAX));
}

double OrvaProbabilityDistribution::_ComputeValueOfPeriodicTest11(double t) {
  assert(GetNumberOfChildren() == 11);
  const OrvaPeriodicTest test = {
      .failureRate = _GetRate(1, t),
      .failureRateInTest = _GetRate(2, t),
      .repairRate = _GetRate(3, t),
      .interval = _GetRate(4, t),
      .firstTest = _GetRate(5, t),
      .probabilityOfFailureByTest = ComputeValueOfChildAsDouble(6, t, 0.0, 1.0),
      .duration = _GetRate(7, t),
      .isAvailableInTest = ComputeValueOfChild(8, t)->ToBool(),
      .probabilityOfDetection = ComputeValueOfChildAsDouble(9, t, 0.0, 1.0),
      .probabilityOfBadRestoration = ComputeValueOfChildAsDouble(10, t, 0.0, 1.0)};
  return OrvaComputeUnavailability(test, _GetRate(11, t));
}
