// A periodically tested component is a Markov chain of three states: working; failed without
// anybody knowing it; failed and known to be, under repair. In operation a working component fails
// unnoticed at rate λ, and one under repair comes back at rate μ or, badly restored, joins those
// that have failed unnoticed. A test does the same for as long as it takes, may break what it
// tests, and moves the failures that it detects under repair. The probabilities of the states after
// a test, and after the operation that follows it, are linear in those before.
//
// The state at a date is found by following the cycles, one test and one operation each, from the
// first test on. Two things keep a late date as cheap as an early one.
//
// The chain forgets its start. Once a cycle leaves the state as it was, to the last bit, all whole
// cycles that remain would do the same, and are skipped.
//
// A chain that is slow compared with its interval, or whose last bits alternate, does not get there
// soon enough. After MAXIMUM_NUMBER_OF_CYCLES the whole cycles that remain are taken at once: a
// cycle is a 3 × 3 matrix, n cycles are its n-th power, and squaring takes log n products to get
// it. The power rounds differently from the cycles one by one, which is why it is not used earlier.

#include "model/OrvaPeriodicTest.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cfloat>
#include <cmath>

#include "model/OrvaProbabilityDistributionKinds.h"

namespace {

constexpr int MAXIMUM_NUMBER_OF_CYCLES = 10000;

// The probabilities of the states.
struct State {
  double working;
  double failed;  // unnoticed
  double underRepair;
  bool operator==(const State&) const = default;
};

struct StateAfterTest {
  State state;
  double repaired;  // those of the working ones that came back during the test
};

// A repair and a failure in a row have a law of its own when both have the same rate.
bool HasDistinctRates(const OrvaPeriodicTest& test) { return test.failureRate != test.repairRate; }

// A test of duration w, or its first w time units.
StateAfterTest Test(const OrvaPeriodicTest& test, const State& before, double w) {
  const double lambda = test.failureRate;
  const double mu = test.repairRate;
  const double unbroken = (1.0 - test.probabilityOfFailureByTest) * before.working;
  const double survival = std::exp(-test.failureRateInTest * w);
  const double noRepair = std::exp(-mu * w);
  const double comeback = HasDistinctRates(test)
                              ? (std::exp(-lambda * w) - noRepair) * (mu / OrvaNonZero(mu - lambda))
                              : mu * w * noRepair;
  const double repaired = (1.0 - test.probabilityOfBadRestoration) * before.underRepair * comeback;
  const double brokenInTest =
      (1.0 - survival) * unbroken + before.working * test.probabilityOfFailureByTest;
  const double found = test.probabilityOfDetection;
  return {{unbroken * survival + repaired,
           (1.0 - found) * before.failed + (1.0 - found) * brokenInTest +
               (before.underRepair - before.underRepair * noRepair - repaired),
           found * before.failed + found * brokenInTest + before.underRepair * noRepair},
          repaired};
}

// An operation of duration v. The comeback is that of a test, rounded in another order.
State Operate(const OrvaPeriodicTest& test, const State& before, double v) {
  const double lambda = test.failureRate;
  const double mu = test.repairRate;
  const double survival = std::exp(-lambda * v);
  const double noRepair = std::exp(-mu * v);
  const double comeback = HasDistinctRates(test)
                              ? (survival - noRepair) * mu / OrvaNonZero(mu - lambda)
                              : mu * v * noRepair;
  const double repaired = comeback * (1.0 - test.probabilityOfBadRestoration) * before.underRepair;
  return {before.working * survival + repaired,
          before.failed + before.working * (1.0 - survival) +
              (before.underRepair - noRepair * before.underRepair - repaired),
          before.underRepair * noRepair};
}

State GoThroughCycle(const OrvaPeriodicTest& test, const State& before) {
  return Operate(test, Test(test, before, test.duration).state, test.interval - test.duration);
}

// The state after n whole cycles, n a whole number however large. The matrix is kept by its
// columns, the images of the three sure states.
State GoThroughCycles(const OrvaPeriodicTest& test, const State& before, double n) {
  assert(n == std::floor(n));
  const auto apply = [](const std::array<State, 3>& columns, const State& s) {
    const auto sum = [&](double State::*p) {
      return columns[0].*p * s.working + columns[1].*p * s.failed + columns[2].*p * s.underRepair;
    };
    return State{sum(&State::working), sum(&State::failed), sum(&State::underRepair)};
  };
  std::array<State, 3> power = {GoThroughCycle(test, {1, 0, 0}), GoThroughCycle(test, {0, 1, 0}),
                                GoThroughCycle(test, {0, 0, 1})};
  State result = before;
  while (n >= 1.0) {
    if (std::fmod(n, 2.0) == 1.0) result = apply(power, result);
    power = {apply(power, power[0]), apply(power, power[1]), apply(power, power[2])};
    n = std::floor(n / 2.0);
  }
  return result;
}

// The state at the first test: nothing has been noticed before.
State GetStateAtFirstTest(const OrvaPeriodicTest& test) {
  const double working = std::exp(-test.failureRate * test.firstTest);
  return {working, 1.0 - working, 0.0};
}

}  // namespace

double OrvaComputeUnavailability(const OrvaPeriodicTest& test, double t) {
  assert(!(test.failureRate < 0.0) && !(test.failureRateInTest < 0.0) && !(test.repairRate < 0.0));
  assert(!(test.interval < 0.0) && !(test.firstTest < 0.0) && !(test.duration < 0.0));
  if (!(test.firstTest < t)) return 1.0 - std::exp(-test.failureRate * t);
  State state = GetStateAtFirstTest(test);
  if (test.interval == 0.0) return state.failed;
  double date = test.firstTest;  // of the current test
  for (int cycles = 1;; ++cycles) {
    const bool endsInTest = date + test.duration >= t;
    const StateAfterTest tested =
        Test(test, state, date + test.duration > t ? t - date : test.duration);
    // Without the function under test only what is repaired meanwhile counts: the defined form.
    if (endsInTest) return 1.0 - (test.isAvailableInTest ? tested.state.working : tested.repaired);
    double next = date + test.interval;
    const State nextState = Operate(
        test, tested.state, next > t ? t - date - test.duration : test.interval - test.duration);
    // An interval too small to move the date ends the cycles too.
    if (next >= t || !(next > date)) return 1.0 - nextState.working;
    const bool isStationary = state == nextState;
    state = nextState;
    if (t - next > test.interval && (isStationary || cycles == MAXIMUM_NUMBER_OF_CYCLES)) {
      const double skipped = std::floor(std::min((t - next) / test.interval, DBL_MAX));
      if (!isStationary) state = GoThroughCycles(test, state, skipped);
      next += skipped * test.interval;
    }
    date = next;
    // Rounding may leave one cycle or two after those that were skipped, not more.
    if (cycles > MAXIMUM_NUMBER_OF_CYCLES + 2) return 1.0 - state.working;
  }
}
