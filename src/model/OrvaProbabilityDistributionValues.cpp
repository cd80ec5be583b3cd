// The value of each kind of expression.

#include <algorithm>
#include <array>
#include <cfloat>
#include <climits>
#include <cmath>

#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistributionKinds.h"
#include "support/statistics/LumoMath.h"

namespace {

// The value of a "standby" of more units is no number: its states can't be enumerated.
constexpr long MAXIMUM_NUMBER_OF_STANDBY_UNITS = 1000000;

// After so many cycles of a periodic test that have not settled, the rest is not followed singly.
constexpr int MAXIMUM_NUMBER_OF_CYCLES = 10000;

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

// What a periodically tested component can be: working, failed without it being known, under
// repair.
struct OrvaProbabilityDistribution::TestedState {
  double U, F, R;
  bool operator==(const TestedState&) const = default;
};

// One test of duration w and the operation of duration v after it, both starting from a state. The
// probabilities after them are linear in those before.
struct OrvaProbabilityDistribution::TestCycle {
  TestCycle(const PeriodicTest& test, const TestedState& state, double w) : _test(test), _s(state) {
    _A = (1.0 - test.gamma) * state.U;
    _e1 = std::exp(-test.lambdaTest * w);
    _e2 = std::exp(-test.mu * w);
    double q = _IsDistinct() ? std::exp(-test.lambda * w) - _e2 : test.mu * w;
    q = _IsDistinct() ? q * (test.mu / OrvaNonZero(test.mu - test.lambda)) : q * _e2;
    Rr = (1.0 - test.omega) * state.R * q;
    Ut = _A * _e1 + Rr;
  }
  // The state at the end of the operation.
  TestedState Operate(double v) const {
    const double f1 = std::exp(-_test.lambda * v);
    const double f2 = std::exp(-_test.mu * v);
    double h = _IsDistinct() ? (f1 - f2) * _test.mu / OrvaNonZero(_test.mu - _test.lambda)
                             : _test.mu * v * f2;
    const double G = (1.0 - _e1) * _A + _s.U * _test.gamma;  // failed during the test
    // Detected, under repair.
    const double D = _test.sigma * _s.F + _test.sigma * G + _s.R * _e2;
    h = h * (1.0 - _test.omega) * D;
    return {Ut * f1 + h,
            (1.0 - _test.sigma) * _s.F + (1.0 - _test.sigma) * G + (_s.R - _s.R * _e2 - Rr) +
                Ut * (1.0 - f1) + (D - f2 * D - h),
            D * f2};
  }

  // During the test: working, and repaired meanwhile.
  double Ut, Rr;

 private:
  bool _IsDistinct() const { return _test.lambda != _test.mu; }

  const PeriodicTest& _test;
  const TestedState& _s;
  double _A, _e1, _e2;
};

// Follows the state over the cycles. Once a cycle changes nothing, the remaining whole ones are
// skipped; when they don't settle, those that remain are taken together.
double OrvaProbabilityDistribution::_ComputeValueOfPeriodicTest11(const PeriodicTest& test,
                                                                  double t) {
  if (!(test.theta < t)) return 1.0 - std::exp(-test.lambda * t);
  TestedState state;
  state.U = std::exp(-test.lambda * test.theta);
  state.F = 1.0 - state.U;
  state.R = 0.0;
  if (test.tau == 0.0) return state.F;
  double date = test.theta;  // of the current test
  for (int cycles = 1;; ++cycles) {
    const bool endsInTest = date + test.pi >= t;
    const TestCycle cycle(test, state, date + test.pi > t ? t - date : test.pi);
    if (endsInTest) return test.isAvailable ? 1.0 - cycle.Ut : 1.0 - cycle.Rr;
    double next = date + test.tau;
    const TestedState nextState = cycle.Operate(next > t ? t - date - test.pi : test.tau - test.pi);
    // An interval too small to move the date ends the cycles too.
    if (next >= t || !(next > date)) return 1.0 - nextState.U;
    const bool isStationary = state == nextState;
    state = nextState;
    if (t - next > test.tau && (isStationary || cycles == MAXIMUM_NUMBER_OF_CYCLES)) {
      const double skipped = std::floor(std::min((t - next) / test.tau, DBL_MAX));
      if (!isStationary) state = _SkipCycles(test, state, skipped);
      next += skipped * test.tau;
    }
    date = next;
    if (cycles > MAXIMUM_NUMBER_OF_CYCLES + 2) return 1.0 - state.U;
  }
}

// The state after n whole cycles: the matrix of one, raised to the n-th power by squaring.
OrvaProbabilityDistribution::TestedState OrvaProbabilityDistribution::_SkipCycles(
    const PeriodicTest& test, const TestedState& state, double n) {
  const auto combine = [](const std::array<TestedState, 3>& images, const TestedState& s) {
    const auto sum = [&](double TestedState::*p) {
      return images[0].*p * s.U + images[1].*p * s.F + images[2].*p * s.R;
    };
    return TestedState{sum(&TestedState::U), sum(&TestedState::F), sum(&TestedState::R)};
  };
  const auto cycle = [&](const TestedState& s) {
    return TestCycle(test, s, test.pi).Operate(test.tau - test.pi);
  };
  std::array<TestedState, 3> power = {cycle({1, 0, 0}), cycle({0, 1, 0}), cycle({0, 0, 1})};
  TestedState result = state;
  while (n >= 1.0) {
    if (std::fmod(n, 2.0) == 1.0) result = combine(power, result);
    power = {combine(power, power[0]), combine(power, power[1]), combine(power, power[2])};
    n = std::floor(n / 2.0);
  }
  return result;
}
