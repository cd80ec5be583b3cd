// The value of each kind of expression.

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <vector>

#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistributionKinds.h"
#include "support/statistics/LumoMath.h"

namespace {

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

// A birth-death chain over the number i of failed units out of n, of which k must work and r can
// be repaired at a time: p[i] is the weight of state i relative to state 0, S their sum.
void OrvaProbabilityDistribution::_EvaluateStandby(double t) {
  const long n = ComputeValueOfChildAsInt(1, t, 0, INT_MAX);
  const long k = ComputeValueOfChildAsInt(2, t, 0, static_cast<int>(n));
  const long r = ComputeValueOfChildAsInt(3, t, 0, static_cast<int>(n));
  const double lambda = _GetRate(4, t);
  const double lambdaStandby = _GetRate(5, t);
  const double mu = _GetRate(6, t);
  std::vector<double> p(static_cast<std::size_t>(n) + 1);
  p[0] = 1.0;
  double sum = 1.0;
  for (long i = 1; i <= n; ++i) {
    const double rate = i > n - k + 1 ? lambda * static_cast<double>(n - i + 1)
                                      : lambda * static_cast<double>(k) +
                                            lambdaStandby * static_cast<double>(n - k - i + 1);
    const auto state = static_cast<std::size_t>(i);
    p[state] = rate * p[state - 1] / OrvaNonZero(mu * static_cast<double>(std::min(r, i)));
    sum += p[state];
  }
  double value = 0.0;
  for (long j = n - k + 1; j <= n; ++j) value += p[static_cast<std::size_t>(j)] / sum;
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

// Periodic tests.

struct OrvaProbabilityDistribution::PeriodicTest {
  double lambda;      // failure rate in operation
  double lambdaTest;  // failure rate during a test
  double mu;          // repair rate
  double tau;         // interval between the starts of two tests
  double theta;       // date of the first test
  double gamma;       // probability that a test causes a failure
  double pi;          // duration of a test
  bool isAvailable;   // whether the component is available during a test
  double sigma;       // probability that a test detects the failure
  double omega;       // probability that the component is badly restored after a test or a repair
};

void OrvaProbabilityDistribution::_EvaluatePeriodicTest(double t) {
  const auto rate = [&](int i) { return _GetRate(i, t); };
  const auto probability = [&](int i) { return ComputeValueOfChildAsDouble(i, t, 0.0, 1.0); };
  switch (GetNumberOfChildren()) {
    case 4:
      return _value.Set(_ComputeValueOfPeriodicTest4(t));
    case 5: {
      const PeriodicTest test{rate(1), rate(1), rate(2), rate(3), rate(4),
                              0.0,     0.0,     false,   1.0,     0.0};
      const double date = ComputeValueOfChildAsDouble(5, t, DBL_MIN, DBL_MAX);
      return _value.Set(_ComputeValueOfPeriodicTest11(test, date));
    }
    default: {
      const PeriodicTest test{
          rate(1),        rate(2),        rate(3), rate(4),
          rate(5),        probability(6), rate(7), ComputeValueOfChild(8, t)->ToBool(),
          probability(9), probability(10)};
      return _value.Set(_ComputeValueOfPeriodicTest11(test, rate(11)));
    }
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

// Follows three probabilities over the test cycles: working (U), failed without it being known
// (F) and under repair (R).
double OrvaProbabilityDistribution::_ComputeValueOfPeriodicTest11(const PeriodicTest& test,
                                                                  double t) {
  const auto& [lambda, lambdaTest, mu, tau, theta, gamma, pi, isAvailable, sigma, omega] = test;
  if (theta >= t) return 1.0 - std::exp(-lambda * t);
  double U = std::exp(-lambda * theta);
  double F = 1.0 - U;
  if (tau == 0.0) return F;
  double R = 0.0;
  double date = theta;  // of the current test
  const bool isDistinct = lambda != mu;
  for (;;) {
    // The test.
    bool isLast = date + pi >= t;
    const double w = date + pi > t ? t - date : pi;
    const double A = (1.0 - gamma) * U;
    const double e1 = std::exp(-lambdaTest * w);
    const double e2 = std::exp(-mu * w);
    double q = isDistinct ? std::exp(-lambda * w) - e2 : mu * w;
    q = isDistinct ? q * (mu / OrvaNonZero(mu - lambda)) : q * e2;
    const double Rr = (1.0 - omega) * R * q;
    const double Ut = A * e1 + Rr;
    if (isLast) return isAvailable ? 1.0 - Ut : 1.0 - Rr;

    // The operation until the next test, or until t.
    double next = date + tau;
    double v = tau - pi;
    if (next > t) v = t - date - pi;
    isLast = next >= t;
    const double f1 = std::exp(-lambda * v);
    const double f2 = std::exp(-mu * v);
    double h = isDistinct ? (f1 - f2) * mu / OrvaNonZero(mu - lambda) : mu * v * f2;
    const double G = (1.0 - e1) * A + U * gamma;      // failed during the test
    const double D = sigma * F + sigma * G + R * e2;  // detected, under repair
    h = h * (1.0 - omega) * D;
    const double nextU = Ut * f1 + h;
    if (isLast) return 1.0 - nextU;

    const double nextR = D * f2;
    const double nextF = (1.0 - sigma) * F + (1.0 - sigma) * G + (R - R * e2 - Rr) +
                         Ut * (1.0 - f1) + (D - f2 * D - h);
    const bool isStationary = U == nextU && F == nextF && R == nextR;
    if (isStationary && t - next > tau) next += std::floor((t - next) / tau) * tau;
    U = nextU;
    F = nextF;
    R = nextR;
    date = next;
  }
}
