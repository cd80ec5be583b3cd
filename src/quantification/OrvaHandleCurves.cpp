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

#include "model/OrvaEvent.h"
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

LumoCurvePoint* OrvaHandle::_ComputePoint(Quantity quantity, double t, LumoCurve* curve) {
  assert(curve != nullptr);
  LumoCurvePoint* point = curve->LookForPointAtX(t);
  if (point != nullptr || IsFull(curve)) return point;
  LumoProgress::Advance();
  return curve->NewPoint(t, (this->*quantity)(t));
}

void OrvaHandle::ComputeCurveOfTopEventProbability(double firstDate, double lastDate, double step,
                                                   bool addSingularPoints, bool smoothCurve,
                                                   double smoothingRatio, LumoCurve* curve) {
  _ComputeGrid(&OrvaHandle::_ComputeProbabilityAt, firstDate, lastDate, step, curve);
  if (addSingularPoints) ComputeSingularPointsOfTopEventProbability(firstDate, lastDate, curve);
  if (smoothCurve) SmoothCurveOfTopEventProbability(smoothingRatio, curve);
}

void OrvaHandle::ComputeCurveOfTopEventConditionalFailureIntensity(double lastDate, double step,
                                                                   bool addSingularPoints,
                                                                   bool smoothCurve,
                                                                   double smoothingRatio,
                                                                   LumoCurve* curve) {
  _ComputeGrid(&OrvaHandle::_ComputeConditionalFailureIntensityAt, 0.0, lastDate, step, curve);
  if (addSingularPoints) {
    ComputeSingularPointsOfTopEventConditionalFailureIntensity(lastDate, curve);
  }
  if (smoothCurve) SmoothCurveOfTopEventConditionalFailureIntensity(smoothingRatio, curve);
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

void OrvaHandle::ComputeSingularPointsOfTopEventProbability(double firstDate, double lastDate,
                                                            LumoCurve* curve) {
  _ComputeSingularPoints(&OrvaHandle::_ComputeProbabilityAt, firstDate, lastDate, curve);
}

void OrvaHandle::ComputeSingularPointsOfTopEventConditionalFailureIntensity(double lastDate,
                                                                            LumoCurve* curve) {
  _ComputeSingularPoints(&OrvaHandle::_ComputeConditionalFailureIntensityAt, 0.0, lastDate, curve);
}

void OrvaHandle::_ComputeSingularPoints(Quantity quantity, double firstDate, double lastDate,
                                        LumoCurve* curve) {
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(_basicEvents)) {
    Distribution* root = event->GetProbabilityDistribution();
    if (root == nullptr) continue;
    for (OrvaTerm* term = root->GetFirstInPostOrder(); term != nullptr;
         term = term->GetNextInPostOrder(root)) {
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

void OrvaHandle::SmoothCurveOfTopEventProbability(double smoothingRatio, LumoCurve* curve) {
  _SmoothCurve(&OrvaHandle::_ComputeProbabilityAt, smoothingRatio, curve);
}

void OrvaHandle::SmoothCurveOfTopEventConditionalFailureIntensity(double smoothingRatio,
                                                                  LumoCurve* curve) {
  _SmoothCurve(&OrvaHandle::_ComputeConditionalFailureIntensityAt, smoothingRatio, curve);
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

LumoCurvePoint* OrvaHandle::ComputePointOfTopEventProbability(double t, LumoCurve* curve) {
  return _ComputePoint(&OrvaHandle::_ComputeProbabilityAt, t, curve);
}

LumoCurvePoint* OrvaHandle::ComputePointOfTopEventConditionalFailureIntensity(double t,
                                                                              LumoCurve* curve) {
  return _ComputePoint(&OrvaHandle::_ComputeConditionalFailureIntensityAt, t, curve);
}
