// Curves over dates: their points, what is summed over them, and their tables.

#include <cfloat>
#include <functional>
#include <random>
#include <set>
#include <vector>

#include "OrvaTestSupport.h"
#include "quantification/OrvaHandle.h"
#include "support/statistics/LumoCurve.h"

namespace {

using Points = std::vector<std::pair<double, double>>;

Points PointsOf(const LumoCurve& curve) {
  Points points;
  for (const LumoCurvePoint* point : LumoItems<LumoCurvePoint>(*curve.GetPoints())) {
    points.emplace_back(point->GetX(), point->GetY());
  }
  return points;
}

void Fill(LumoCurve& curve, const Points& points) {
  curve.Reset();
  for (const auto& [x, y] : points) curve.NewPoint(x, y);
}

TEST(LumoCurve, KeepsOnePointPerDateInOrder) {
  LumoCurve curve;
  EXPECT_EQ(curve.GetLastX(-1.0), -1.0);
  Fill(curve, {{3.0, 0.5}, {1.0, 0.25}, {2.0, 4.0}});
  LumoCurvePoint* middle = curve.LookForPointAtX(2.0);
  EXPECT_EQ(curve.NewPoint(2.0, 1.0), middle);  // the y is replaced
  curve.NewPoint(std::nextafter(2.0, 3.0), 1.0);
  EXPECT_EQ(PointsOf(curve),
            (Points{{1.0, 0.25}, {2.0, 1.0}, {std::nextafter(2.0, 3.0), 1.0}, {3.0, 0.5}}));
  EXPECT_DOUBLE_EQ(curve.GetIntegral(), 0.625 + 0.75);
  EXPECT_DOUBLE_EQ(curve.GetMeanY(), 1.375 / 2.0);
  EXPECT_EQ(curve.GetPointWithMaximumY(), middle);  // the first one
  EXPECT_EQ(curve.GetMaximumY() + curve.GetMinimumY(), 1.25);
  curve.DeletePoint(middle);
  EXPECT_EQ(curve.GetNumberOfPoints(), 3);
  // The search for the maximum starts from the smallest positive double.
  Fill(curve, {{0.0, -1.0}, {1.0, DBL_MIN}});
  EXPECT_EQ(curve.GetPointWithMaximumY(), nullptr);
  EXPECT_EQ(curve.GetPointWithMinimumY(), curve.GetFirstPoint());
  Fill(curve, {{5.0, 1.0}});
  EXPECT_EQ(curve.GetMeanY(), 1.0);
  EXPECT_EQ(curve.GetXSojournBetweenYValues(0.0, 2.0), 0.0);
}

TEST(LumoCurve, MeasuresHowLongItLiesBetweenTwoValues) {
  // A segment from (1, y0) to (5, y1), by hand; on a bound it counts.
  const struct {
    double y0, y1, low, high, sojourn;
  } rows[] = {{0, 8, 2, 6, 2},  {8, 0, 2, 6, 2}, {0, 4, 2, 6, 2}, {4, 0, 2, 6, 2},
              {4, 8, 2, 6, 2},  {8, 4, 2, 6, 2}, {3, 5, 2, 6, 4}, {0, 1, 2, 6, 0},
              {9, 7, 2, 6, 0},  {3, 3, 2, 6, 4}, {2, 2, 2, 6, 4}, {6, 6, 2, 6, 4},
              {7, 7, 2, 6, 0},  {0, 2, 2, 6, 0}, {8, 6, 2, 6, 0}, {10, 2, 2, 6, 2},
              {-2, 6, 2, 6, 2}, {2, 6, 2, 6, 4}, {2, 8, 2, 5, 2}, {6, 0, 3, 6, 2}};
  LumoCurve curve;
  for (const auto& [y0, y1, low, high, sojourn] : rows) {
    Fill(curve, {{1.0, y0}, {5.0, y1}});
    EXPECT_NEAR(curve.GetXSojournBetweenYValues(low, high), sojourn, 1e-12) << y0 << ' ' << y1;
  }
  Fill(curve, {{0, 0}, {4, 4}, {6, 4}, {14, 0}});
  EXPECT_NEAR(curve.GetXSojournBetweenYValues(1, 3), 2 + 4, 1e-12);
}

// A to F are tested: A, as its whole expression, from 20 on every 50; B, below a product, from 10
// on every 30; D from 15 on every 40, for 4; E through a parameter, which is not looked into; F
// after all dates. C is not tested.
constexpr const char* MODEL = R"(TOP = or(A,BC,CD,EF); BC = and(B,C); CD = and(C,D);
  EF = and(E,F); NEVER = and(A,Z); #A = periodic-test(0.001,50,20,time);
  #B = mul(0.5,periodic-test(0.01,0.1,30,10,time)); #C = exponential(0.01,time);
  #D = periodic-test(0.0005,0.001,0.05,40,15,0.01,4,false,0.9,0.05,time);
  #E = tested; $tested = periodic-test(0.001,7,1,time); #F = periodic-test(0.001,1,101,time);
  #Z = 0)";

class CurveTest : public testing::Test {
 protected:
  CurveTest() {
    engine.Define(MODEL);
    UseTop("TOP");
  }
  void UseTop(const std::string& top) {
    engine.MustRun("<build><minimal-cutsets top-event=\"" + top + "\"/></build>");
    handle = engine.GetEvent(top.c_str())->GetHandle("MCS");
  }
  double ProbabilityAt(double t) {
    handle->ComputeTopEventProbability(t);
    return handle->GetTopEventProbability();
  }
  double IntensityAt(double t) {
    handle->ComputeTopEventUnconditionalFailureIntensity(t);
    return handle->GetTopEventConditionalFailureIntensity();
  }
  // A ratio of 0: not smoothed. Intensities start at 0.
  Points Curve(bool isIntensity, double first, double last, double step, bool addSingular,
               double ratio) {
    LumoCurve curve;
    if (isIntensity) {
      handle->ComputeCurveOfTopEventConditionalFailureIntensity(last, step, addSingular,
                                                                ratio > 0.0, ratio, &curve);
    } else {
      handle->ComputeCurveOfTopEventProbability(first, last, step, addSingular, ratio > 0.0, ratio,
                                                &curve);
    }
    return PointsOf(curve);
  }

  OrvaTestEngine engine;
  OrvaHandle* handle = nullptr;
};

Points Evaluate(const std::set<double>& dates, const std::function<double(double)>& value) {
  Points points;
  for (const double t : dates) points.emplace_back(t, value(t));
  return points;
}

// The dates that show the tests of A, B and D within [low, high].
void AddTests(double low, double high, std::set<double>& dates) {
  const auto add = [&](double t) {
    if (low <= t && t <= high) dates.insert(t);
  };
  for (double d = 20.0; d <= high; d += 50.0) add(d), add(d + 0.05);
  for (double d = 10.0; d <= high; d += 30.0) add(d), add(d + 0.03);
  for (double d = 15.0; d <= high; d += 40.0) {
    for (const double t : {d, d + 0.04, d + 4.0 - 0.04, d + 4.0, d + 4.0 + 0.04}) add(t);
  }
}

// Halves [a, b] for as long as the middle is off the straight line by more than the ratio.
void Smooth(double a, double b, double ratio, const std::function<double(double)>& value,
            std::set<double>& dates) {
  const double middle = (a + b) * 0.5;
  if (!(b - a > 0.1) || !(value(middle) > 0.0)) return;
  dates.insert(middle);
  if (std::fabs((value(a) + value(b)) * 0.5 - value(middle)) / value(middle) <= ratio) return;
  Smooth(a, middle, ratio, value, dates);
  Smooth(middle, b, ratio, value, dates);
}

TEST_F(CurveTest, HasTheDatesAskedForAndTheValuesOfSingleDates) {
  const struct {
    double first, last, step;
    std::set<double> grid;
  } grids[] = {{12, 100, 8, {12, 20, 28, 36, 44, 52, 60, 68, 76, 84, 92, 100}},
               {0, 100, 30, {0, 30, 60, 90, 100}},
               {0, 20, 30, {0, 20}},
               {0, 20, 20, {0, 20}},
               {16, 97, 0, {16, 97}},
               {10, 20, -1, {10, 20}},
               {30, 10, 5, {10, 30}},
               {55, 55, 1, {55}}};
  for (const auto& [first, last, step, grid] : grids) {
    for (const bool addSingular : {false, true}) {
      for (const double ratio : {0.0, 0.1, 0.003}) {
        for (const bool isIntensity : {false, true}) {
          if (isIntensity && first != 0.0) continue;
          const auto value = [&](double t) {
            return isIntensity ? IntensityAt(t) : ProbabilityAt(t);
          };
          std::set<double> dates = grid;
          if (addSingular) AddTests(first, last, dates);
          if (ratio > 0.0) {
            const std::vector<double> rough(dates.begin(), dates.end());
            for (std::size_t i = 1; i < rough.size(); ++i) {
              Smooth(rough[i - 1], rough[i], ratio, value, dates);
            }
          }
          EXPECT_EQ(Curve(isIntensity, first, last, step, addSingular, ratio),
                    Evaluate(dates, value))
              << first << ' ' << last << ' ' << addSingular << ' ' << ratio << ' ' << isIntensity;
        }
      }
    }
  }
  // At 70, the very date of a test, A has run for a whole interval; right after it, for no time.
  EXPECT_NEAR(ProbabilityAt(70.0) - ProbabilityAt(70.0 + 1e-9), 1 - std::exp(-0.05), 1e-6);
}

TEST_F(CurveTest, IsNotSmoothedWhereItIsZero) {
  UseTop("NEVER");
  for (const bool isIntensity : {false, true}) {
    EXPECT_EQ(Curve(isIntensity, 0, 100, 50, false, 0.1), (Points{{0, 0}, {50, 0}, {100, 0}}));
  }
}

// The average over 8760 time units of events that are tested in parameters, against a sum over fine
// steps.
TEST(CurveCorrections, FollowTheTestsInParameters) {
  constexpr double LAST = 8760.0;
  OrvaTestEngine engine;
  engine.Define(R"(SUM = or(A,B,C); PAIR = and(A,B); $interval = 730;
      $a = periodic-test(1e-5,interval,730,time); $b = periodic-test(2e-5,1460,365,time);
      $c = mul(0.5,periodic-test(3e-5,2190,2190,time));
      #A = mul(a,1); #B = mul(b,1); #C = mul(c,1))");
  const auto p = [](double lambda, double interval, double first, double t) {
    const double since = t <= first ? t : std::fmod(t - first, interval);
    return 1.0 - std::exp(-lambda * since);
  };
  const auto a = [&](double t) { return p(1e-5, 730, 730, t); };
  const auto b = [&](double t) { return p(2e-5, 1460, 365, t); };
  const auto c = [&](double t) { return 0.5 * p(3e-5, 2190, 2190, t); };
  const struct {
    const char* top;
    std::function<double(double)> value;
  } rows[] = {{"A", a},
              {"SUM", [&](double t) { return a(t) + b(t) + c(t); }},
              {"PAIR", [&](double t) { return a(t) * b(t); }}};
  for (const auto& [top, value] : rows) {
    engine.MustRun(std::string("<build><minimal-cutsets top-event=\"") + top + "\"/></build>");
    constexpr int STEPS = 87600;
    double average = 0.0;
    for (int i = 0; i < STEPS; ++i) average += value((i + 0.5) * LAST / STEPS) / STEPS;
    LumoCurve curve;
    engine.GetEvent(top)->GetHandle("MCS")->ComputeCurveOfTopEventProbability(
        0.0, LAST, 0.0, true, true, 0.1, &curve, {.followsParameters = true});
    EXPECT_NEAR(curve.GetIntegral() / LAST, average, 0.01 * average) << top;
  }
}

// The conditional failure intensity of one event is the rate of its law, from early to late dates.
TEST(CurveCorrections, TakeNumericRatesOfLawsThatGrow) {
  OrvaTestEngine engine;
  engine.Define(R"($law = exponential(2e-4,time); #written = sub(1,exp(neg(mul(1e-4,time))));
      #sum = add(exponential(1e-5,time),mul(0.5,law)); #least = min(0.9,law);
      #run = add(0.01,exponential(1e-7,time)); #worn = Weibull(1e4,3,time); #fixed = 0.5)");
  const struct {
    const char* event;
    std::function<double(double)> rate;
  } rows[] = {{"written", [](double) { return 1e-4; }},
              {"sum",
               [](double t) {
                 const double x = std::exp(-1e-5 * t), y = 0.5 * std::exp(-2e-4 * t);
                 return (1e-5 * x + 2e-4 * y) / (x + y - 0.5);
               }},
              {"least", [](double) { return 2e-4; }},
              {"run",
               [](double t) {
                 const double x = std::exp(-1e-7 * t);
                 return 1e-7 * x / (x - 0.01);
               }},
              {"worn", [](double t) { return 3e-4 * std::pow(t / 1e4, 2.0); }},
              {"fixed", [](double) { return 0.0; }}};
  for (const auto& [event, rate] : rows) {
    engine.MustRun(std::string("<build><minimal-cutsets top-event=\"") + event + "\"/></build>");
    for (const double t : {20.0, 730.0, 8760.0}) {
      LumoCurve curve;
      engine.GetEvent(event)->GetHandle("MCS")->ComputeCurveOfTopEventConditionalFailureIntensity(
          t, 0.0, false, false, 0.1, &curve, {.takesNumericFailureRates = true});
      EXPECT_NEAR(curve.GetLastPoint()->GetY(), rate(t), 0.002 * rate(t)) << event << ' ' << t;
    }
  }
}

}  // namespace
