// Curves over dates, point by point: each is one quantification, which is why a date that is on the
// curve already is not computed again. The probability and the conditional failure intensity are
// computed alike: the private steps take the quantity as a member function.
//
// A regular grid shows neither the jumps nor the bends of a curve. The jumps are where they are
// known to be, at the tests of the expressions: two points close together, at a test and just after
// it, draw them steep. The bends are looked for: an interval is halved as long as the straight line
// over it is off in its middle by more than the ratio allowed. That the middle is kept in either
// case costs nothing, since it has been computed; that it is not kept where the quantity is 0 or
// less is the defined behaviour. Intervals of a tenth of a time unit and below are left alone,
// which bounds the halving at jumps.

#include <algorithm>
#include <cassert>
#include <cfloat>
#include <cmath>
#include <memory>
#include <vector>

#include "model/OrvaEvent.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "quantification/OrvaHandle.h"
#include "support/statistics/LumoCurve.h"
#include "support/time/LumoProgress.h"

namespace {

using Distribution = OrvaProbabilityDistribution;

// The distance of a point from the test that it shows, and the shortest interval that is split.
constexpr double LARGEST_OFFSET = 0.1;
constexpr double OFFSETS_PER_DURATION = 100.0;
constexpr double OFFSETS_PER_INTERVAL = 1000.0;
constexpr double SHORTEST_INTERVAL = 0.1;

// The step of a numeric derivative: a part of the date, up to a limit; at date 0.
constexpr double STEPS_PER_DATE = 1000.0;
constexpr double LARGEST_STEP = 0.1;
constexpr double STEP_AT_START = 0.001;

// Where the arguments of a "periodic-test" with a given number of children are, from 1; 0 for
// none.
struct TestArguments {
  int numberOfChildren;
  int interval;
  int firstTest;
  int duration;
};
constexpr TestArguments TEST_ARGUMENTS[] = {{4, 2, 3, 0}, {5, 3, 4, 0}, {11, 4, 5, 7}};

// So many steps to the first test in range are taken singly.
constexpr double LARGEST_NUMBER_OF_STEPS = 1e5;

bool IsFull(const LumoCurve* curve) {
  return curve->GetNumberOfPoints() >= OrvaHandle::MAXIMUM_NUMBER_OF_POINTS;
}

// Moves a date by a step; false when the step is too small to move it.
bool Advance(double& date, double step) {
  const double former = date;
  date += step;
  return date > former;
}

double GetArgument(Distribution* test, int i) {
  return i == 0 ? 0.0 : test->ComputeValueOfChildAsDouble(i, 0.0, DBL_MIN, DBL_MAX);
}

}  // namespace

// Tests at the dates first, first + interval, ...; with a duration, each shows where it ends too.
struct OrvaHandle::Tests {
  double interval;
  double first;
  bool hasDuration;
  double duration;

  double GetOffset() const {
    return std::min(LARGEST_OFFSET, hasDuration && duration != 0.0
                                        ? duration / OFFSETS_PER_DURATION
                                        : interval / OFFSETS_PER_INTERVAL);
  }
};

double OrvaHandle::_ComputeProbabilityAt(double t) {
  ComputeTopEventProbability(t);
  return GetTopEventProbability();
}

double OrvaHandle::_ComputeConditionalFailureIntensityAt(double t) {
  ComputeTopEventUnconditionalFailureIntensity(t);
  return GetTopEventConditionalFailureIntensity();
}

double OrvaHandle::_ComputeNumericConditionalFailureIntensityAt(double t) {
  _ComputeNumericFailureIntensitiesOfBasicEvents(t < 0.0 ? 0.0 : t);
  _ComputeTopEventUnconditionalFailureIntensity();
  return GetTopEventConditionalFailureIntensity();
}

// With the rate h = p' / (1 - p) of a law that only grows, w = h (1 - p) is p' itself. It is taken
// from the middle of both sides. Where the probability falls on one of them, a test or a repair is
// there, which is no failure, and only the other side counts. Parameters are computed at each date
// too: a law may be hidden in one.
void OrvaHandle::_ComputeNumericFailureIntensitiesOfBasicEvents(double t) {
  const double later = t > 0.0 ? std::min(t / STEPS_PER_DATE, LARGEST_STEP) : STEP_AT_START;
  const double earlier = std::min(later, t);
  const auto getProbabilities = [&](double date) {
    ComputeProbabilitiesOfBasicEvents(date);
    std::vector<double> probabilities;
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(_basicEvents)) {
      probabilities.push_back(event->GetProbability());
    }
    return probabilities;
  };
  const std::vector<double> after = getProbabilities(t + later);
  const std::vector<double> before = getProbabilities(t - earlier);
  ComputeProbabilitiesOfBasicEvents(t);
  std::size_t i = 0;
  for (OrvaEvent* event : LumoItems<OrvaEvent>(_basicEvents)) {
    const double p = event->GetProbability();
    const double forward = (after[i] - p) / later;
    const double backward = earlier > 0.0 ? (p - before[i]) / earlier : forward;
    const bool grows = forward >= 0.0 && backward >= 0.0;
    event->SetUnconditionalFailureIntensity(grows ? (forward + backward) * 0.5
                                                  : std::max({forward, backward, 0.0}));
    ++i;
  }
}

LumoCurvePoint* OrvaHandle::_ComputePoint(Quantity quantity, double t, LumoCurve* curve) {
  assert(curve != nullptr);
  LumoCurvePoint* point = curve->LookForPointAtX(t);
  if (point != nullptr || IsFull(curve)) return point;
  LumoProgress::Advance();
  return curve->NewPoint(t, (this->*quantity)(t));
}

void OrvaHandle::ComputeCurveOfTopEventProbability(double firstDate, double lastDate, double step,
                                                   bool addSingularPoints, bool smoothCurve,
                                                   double smoothingRatio, LumoCurve* curve,
                                                   const OrvaCurveCorrections& corrections) {
  const Quantity quantity = &OrvaHandle::_ComputeProbabilityAt;
  _ComputeGrid(quantity, firstDate, lastDate, step, curve);
  if (addSingularPoints) {
    _ComputeSingularPoints(quantity, firstDate, lastDate, corrections.followsParameters, curve);
  }
  if (smoothCurve) _SmoothCurve(quantity, smoothingRatio, curve);
}

void OrvaHandle::ComputeCurveOfTopEventConditionalFailureIntensity(
    double lastDate, double step, bool addSingularPoints, bool smoothCurve, double smoothingRatio,
    LumoCurve* curve, const OrvaCurveCorrections& corrections) {
  const Quantity quantity = corrections.takesNumericFailureRates
                                ? &OrvaHandle::_ComputeNumericConditionalFailureIntensityAt
                                : &OrvaHandle::_ComputeConditionalFailureIntensityAt;
  _ComputeGrid(quantity, 0.0, lastDate, step, curve);
  if (addSingularPoints) {
    _ComputeSingularPoints(quantity, 0.0, lastDate, corrections.followsParameters, curve);
  }
  if (smoothCurve) _SmoothCurve(quantity, smoothingRatio, curve);
}

// The two ends, then the dates between them, accumulated by addition.
void OrvaHandle::_ComputeGrid(Quantity quantity, double firstDate, double lastDate, double step,
                              LumoCurve* curve) {
  _ComputePoint(quantity, firstDate, curve);
  _ComputePoint(quantity, lastDate, curve);
  if (!(lastDate > firstDate) || !(step > 0.0)) return;
  double x = firstDate;
  while (Advance(x, step) && x < lastDate && !IsFull(curve)) _ComputePoint(quantity, x, curve);
}

void OrvaHandle::_ComputeSingularPoints(Quantity quantity, double firstDate, double lastDate,
                                        bool followsParameters, LumoCurve* curve) {
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(_basicEvents)) {
    Distribution* expression = event->GetProbabilityDistribution();
    _ComputeSingularPoints(quantity, expression, firstDate, lastDate, curve);
  }
  if (!followsParameters) return;
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(_parameters)) {
    _ComputeSingularPoints(quantity, parameter->GetDefinition(), firstDate, lastDate, curve);
  }
}

void OrvaHandle::_ComputeSingularPoints(Quantity quantity, Distribution* expression,
                                        double firstDate, double lastDate, LumoCurve* curve) {
  if (expression == nullptr) return;
  for (OrvaTerm* term = expression->GetFirstInPostOrder(); term != nullptr;
       term = term->GetNextInPostOrder(expression)) {
    auto* node = static_cast<Distribution*>(term);
    if (node->GetType() != Distribution::PERIODIC_TEST) continue;
    for (const TestArguments& row : TEST_ARGUMENTS) {
      if (row.numberOfChildren != node->GetNumberOfChildren()) continue;
      const Tests tests = {GetArgument(node, row.interval), GetArgument(node, row.firstTest),
                           row.duration != 0, GetArgument(node, row.duration)};
      _ComputeSingularPoints(quantity, tests, firstDate, lastDate, curve);
    }
  }
}

// The points just before and just after a test show the jump there.
void OrvaHandle::_ComputeSingularPoints(Quantity quantity, const Tests& tests, double firstDate,
                                        double lastDate, LumoCurve* curve) {
  assert(!(tests.interval < 0.0) && !(tests.duration < 0.0));
  if (tests.interval == 0.0) return;
  const double offset = tests.GetOffset();
  const auto addPoint = [&](double t) {
    if (t >= firstDate && t <= lastDate) _ComputePoint(quantity, t, curve);
  };
  double test = tests.first;
  if (!(test <= lastDate)) return;
  const double earlier = std::floor((firstDate - tests.duration - offset - test) / tests.interval);
  if (earlier > LARGEST_NUMBER_OF_STEPS) test += earlier * tests.interval;
  do {
    addPoint(test);
    addPoint(test + offset);
    if (!tests.hasDuration) continue;
    const double end = test + tests.duration;
    addPoint(end - offset);
    addPoint(end);
    addPoint(end + offset);
  } while (Advance(test, tests.interval) && test <= lastDate && !IsFull(curve));
}

// The cursor stands on the right end of the interval looked at; it goes back to the left end when
// both halves of the interval are to be looked at next.
void OrvaHandle::_SmoothCurve(Quantity quantity, double smoothingRatio, LumoCurve* curve) {
  if (curve->GetNumberOfPoints() < 2) return;
  const std::unique_ptr<LumoCursor> cursor(curve->NewCursorOnPoints());
  cursor->ResetOnFirstItem();
  for (;;) {
    const auto* a = static_cast<const LumoCurvePoint*>(cursor->GetItem());
    cursor->Increment();
    if (cursor->IsAfterLastItem()) return;
    const auto* b = static_cast<const LumoCurvePoint*>(cursor->GetItem());
    assert(a->GetX() < b->GetX());
    if (!(b->GetX() - a->GetX() > SHORTEST_INTERVAL)) continue;
    const double middle = (a->GetX() + b->GetX()) * 0.5;
    if (!(middle > a->GetX() && middle < b->GetX())) continue;  // no date lies between them
    const double value = (this->*quantity)(middle);
    if (!(value > 0.0)) continue;
    if (IsFull(curve)) return;
    curve->NewPoint(middle, value);
    const double error = std::fabs((a->GetY() + b->GetY()) * 0.5 - value) / value;
    if (error > smoothingRatio) {
      cursor->Decrement();
      cursor->Decrement();
    }
  }
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaHandle::ComputeSingularPointsOfTopEventProbability(double firstDate, double lastDate,
                                                            LumoCurve* curve) {
  _ComputeSingularPoints(&OrvaHandle::_ComputeProbabilityAt, firstDate, lastDate, false, curve);
}

void OrvaHandle::ComputeSingularPointsOfTopEventConditionalFailureIntensity(double lastDate,
                                                                            LumoCurve* curve) {
  _ComputeSingularPoints(&OrvaHandle::_ComputeConditionalFailureIntensityAt, 0.0, lastDate, false,
                         curve);
}

void OrvaHandle::SmoothCurveOfTopEventProbability(double smoothingRatio, LumoCurve* curve) {
  _SmoothCurve(&OrvaHandle::_ComputeProbabilityAt, smoothingRatio, curve);
}

void OrvaHandle::SmoothCurveOfTopEventConditionalFailureIntensity(double smoothingRatio,
                                                                  LumoCurve* curve) {
  _SmoothCurve(&OrvaHandle::_ComputeConditionalFailureIntensityAt, smoothingRatio, curve);
}

LumoCurvePoint* OrvaHandle::ComputePointOfTopEventProbability(double t, LumoCurve* curve) {
  return _ComputePoint(&OrvaHandle::_ComputeProbabilityAt, t, curve);
}

LumoCurvePoint* OrvaHandle::ComputePointOfTopEventConditionalFailureIntensity(double t,
                                                                              LumoCurve* curve) {
  return _ComputePoint(&OrvaHandle::_ComputeConditionalFailureIntensityAt, t, curve);
}
