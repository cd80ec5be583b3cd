// Curves over dates: their points, what is summed over them, and their tables.

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <functional>
#include <random>
#include <set>
#include <vector>

#include "OrvaTestSupport.h"
#include "printer/OrvaPrinter.h"
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

// How long the polyline lies within [low, high], by looking at N places of each segment. A segment
// crosses each bound at most once, so it is off by two places at most.
constexpr int N = 4000;
double IntegrateSojourn(const Points& points, double low, double high) {
  double sojourn = 0.0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const auto [x0, y0] = points[i - 1];
    const auto [x1, y1] = points[i];
    int inside = 0;
    for (int k = 0; k < N; ++k) {
      const double y = y0 + (y1 - y0) * (k + 0.5) / N;
      if (low <= y && y <= high) ++inside;
    }
    sojourn += (x1 - x0) * inside / N;
  }
  return sojourn;
}

std::string Format(double x) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", x);
  return text;
}

TEST(LumoCurve, KeepsOnePointPerDateInOrder) {
  LumoCurve curve;
  EXPECT_EQ(curve.GetFirstPoint(), nullptr);
  EXPECT_EQ(curve.GetLastX(-1.0), -1.0);
  EXPECT_EQ(curve.GetFirstX(-2.0), -2.0);
  Fill(curve, {{3.0, 0.5}, {1.0, 0.25}, {2.0, 4.0}});
  LumoCurvePoint* middle = curve.LookForPointAtX(2.0);
  EXPECT_EQ(curve.NewPoint(2.0, 1.0), middle);  // the y is replaced
  curve.NewPoint(std::nextafter(2.0, 3.0), 1.0);
  EXPECT_EQ(PointsOf(curve),
            (Points{{1.0, 0.25}, {2.0, 1.0}, {std::nextafter(2.0, 3.0), 1.0}, {3.0, 0.5}}));
  EXPECT_EQ(curve.LookForPointAtX(2.5), nullptr);
  EXPECT_DOUBLE_EQ(curve.GetIntegral(), 0.625 + 0.75);
  EXPECT_EQ(curve.GetPointWithMaximumY(), middle);  // the first one
  EXPECT_EQ(curve.GetMinimumY(), 0.25);
  curve.DeletePoint(middle);
  EXPECT_EQ(curve.GetNumberOfPoints(), 3);
  EXPECT_EQ(curve.GetFirstX(-1.0), 1.0);
  EXPECT_EQ(curve.GetLastX(-1.0), 3.0);
  // The search for the maximum starts from the smallest positive double.
  Fill(curve, {{0.0, -1.0}, {1.0, DBL_MIN}});
  EXPECT_EQ(curve.GetPointWithMaximumY(), nullptr);
  EXPECT_EQ(curve.GetPointWithMinimumY(), curve.GetFirstPoint());
  Fill(curve, {{5.0, 1.0}});
  EXPECT_EQ(curve.GetIntegral(), 0.0);
  EXPECT_EQ(curve.GetXSojournBetweenYValues(0.0, 2.0), 0.0);
}

TEST(LumoCurve, SojournsAreThoseOfThePolyline) {
  std::mt19937 random(3);
  const auto draw = [&](int n) { return static_cast<double>(random() % static_cast<unsigned>(n)); };
  LumoCurve curve;
  for (int trial = 0; trial < 1000; ++trial) {
    // Values and bounds on a small grid, so that they often meet, or anywhere.
    const double scale = trial % 2 == 0 ? 1.0 : 1.0 / 1024.0;
    const int range = trial % 2 == 0 ? 6 : 6 * 1024;
    Points points;
    double x = draw(20) - 10.0;
    for (int i = 2 + static_cast<int>(draw(6)); i > 0; --i) {
      points.emplace_back(x, scale * draw(range));
      x += 0.25 * (1.0 + draw(30));
    }
    const double span = points.back().first - points.front().first;
    Fill(curve, points);
    std::set<double> bounds = {-1.0, 7.0};
    for (int i = 0; i < 3; ++i) bounds.insert(scale * draw(range));
    double total = 0.0;
    double onBounds = 0.0;  // what lies on a bound counts on both its sides
    for (auto low = bounds.begin(); std::next(low) != bounds.end(); ++low) {
      const double sojourn = curve.GetXSojournBetweenYValues(*low, *std::next(low));
      EXPECT_NEAR(sojourn, IntegrateSojourn(points, *low, *std::next(low)), 2.0 * span / N);
      total += sojourn;
      onBounds += curve.GetXSojournBetweenYValues(*low, *low);
    }
    EXPECT_NEAR(total - onBounds, span, 1e-9 * span) << trial;
  }
}

TEST(Printer, SafetyIntegrityLevelsShareTheSpan) {
  OrvaTestEngine engine;
  std::mt19937 random(4);
  std::uniform_real_distribution<double> exponent(-11.0, 0.0);
  const char* bounds[2][5] = {
      {"1e-06\t1", "1e-07\t1e-06", "1e-08\t1e-07", "1e-09\t1e-08", "0\t1e-09"},
      {"0.01\t1", "0.001\t0.01", "0.0001\t0.001", "1e-05\t0.0001", "0\t1e-05"}};
  for (int trial = 0; trial < 50; ++trial) {
    LumoCurve curve;
    for (int x = 0; x < 40; ++x) curve.NewPoint(5.0 + x, std::pow(10.0, exponent(random)));
    OrvaTextStream text;
    engine->GetPrinter()->PrintSafetyIntegrityLevel(trial % 2 == 1, &curve, text.Get());
    std::istringstream lines(text.GetText());
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "SIL\tlower-bound\tupper-bound\tsojourn-time\tratio");
    double total = 0.0;
    for (int level = 0; level < 5; ++level) {
      std::getline(lines, line);
      const std::string head = std::to_string(level) + "\t" + bounds[trial % 2][level] + "\t";
      ASSERT_EQ(line.substr(0, head.size()), head);
      std::istringstream numbers(line.substr(head.size()));
      double sojourn = -1.0, ratio = -1.0;
      numbers >> sojourn >> ratio;
      // The share of a segment that lies between the bounds is that of its rise.
      double expected = 0.0;
      double low, high;
      std::istringstream(bounds[trial % 2][level]) >> low >> high;
      const Points points = PointsOf(curve);
      for (std::size_t i = 1; i < points.size(); ++i) {
        const double y0 = points[i - 1].second, y1 = points[i].second;
        expected += (std::clamp(y1, low, high) - std::clamp(y0, low, high)) / (y1 - y0);
      }
      EXPECT_NEAR(sojourn, expected, 1e-5 * expected + 1e-12);
      EXPECT_NEAR(ratio, expected / 39.0, 1e-5 * ratio);
      total += sojourn;
    }
    EXPECT_NEAR(total, 39.0, 1e-3);
    std::getline(lines, line);
    EXPECT_EQ(line, "average\t" + Format(curve.GetIntegral() / 39.0));
    EXPECT_FALSE(std::getline(lines, line));
  }
}

// A to F are tested: A, as its whole expression, from 20 on every 50; B, below a product, from 10
// on every 30; D from 15 on every 40, for 4; E through a parameter, which is not looked into; F
// after all dates. C is not tested.
constexpr const char* MODEL = R"(
  <define-gate name="TOP"><or><basic-event name="A"/><gate name="BC"/><gate name="CD"/>
    <gate name="EF"/></or></define-gate>
  <define-gate name="BC"><and><basic-event name="B"/><basic-event name="C"/></and></define-gate>
  <define-gate name="CD"><and><basic-event name="C"/><basic-event name="D"/></and></define-gate>
  <define-gate name="EF"><and><basic-event name="E"/><basic-event name="F"/></and></define-gate>
  <define-basic-event name="A"><periodic-test><float value="0.001"/><int value="50"/>
    <int value="20"/><mission-time/></periodic-test></define-basic-event>
  <define-basic-event name="B"><mul><float value="0.5"/><periodic-test><float value="0.01"/>
    <float value="0.1"/><int value="30"/><int value="10"/><mission-time/></periodic-test></mul>
    </define-basic-event>
  <define-basic-event name="C"><exponential><float value="0.01"/><mission-time/></exponential>
    </define-basic-event>
  <define-basic-event name="D"><periodic-test><float value="0.0005"/><float value="0.001"/>
    <float value="0.05"/><int value="40"/><int value="15"/><float value="0.01"/><int value="4"/>
    <bool value="false"/><float value="0.9"/><float value="0.05"/><mission-time/></periodic-test>
    </define-basic-event>
  <define-basic-event name="E"><parameter name="tested"/></define-basic-event>
  <define-parameter name="tested"><periodic-test><float value="0.001"/><int value="7"/>
    <int value="1"/><mission-time/></periodic-test></define-parameter>
  <define-basic-event name="F"><periodic-test><float value="0.001"/><int value="1"/>
    <int value="101"/><mission-time/></periodic-test></define-basic-event>
  <define-gate name="NEVER"><and><basic-event name="A"/><basic-event name="Z"/></and></define-gate>
  <define-basic-event name="Z"><float value="0"/></define-basic-event>)";

class CurveTest : public testing::Test {
 protected:
  CurveTest() {
    EXPECT_EQ(engine.Load(MODEL), 0) << engine.GetErrors();
    EXPECT_EQ(engine.Run("<build><minimal-cutsets top-event=\"TOP\"/></build>"), 0)
        << engine.GetErrors();
    handle = engine.GetEvent("TOP")->GetHandle("MCS");
  }
  double ProbabilityAt(double t) {
    handle->ComputeTopEventProbability(t);
    return handle->GetTopEventProbability();
  }
  double IntensityAt(double t) {
    handle->ComputeTopEventUnconditionalFailureIntensity(t);
    return handle->GetTopEventConditionalFailureIntensity();
  }
  Points ProbabilityCurve(double first, double last, double step, bool addSingular, double ratio) {
    LumoCurve curve;
    handle->ComputeCurveOfTopEventProbability(first, last, step, addSingular, ratio > 0.0, ratio,
                                              &curve);
    return PointsOf(curve);
  }
  Points IntensityCurve(double last, double step, bool addSingular, double ratio) {
    LumoCurve curve;
    handle->ComputeCurveOfTopEventConditionalFailureIntensity(last, step, addSingular, ratio > 0.0,
                                                              ratio, &curve);
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
  const auto probability = [&](double t) { return ProbabilityAt(t); };
  const auto intensity = [&](double t) { return IntensityAt(t); };
  for (const auto& [first, last, step, grid] : grids) {
    for (const bool addSingular : {false, true}) {
      for (const double ratio : {0.0, 0.1, 0.003}) {  // 0: not smoothed
        for (const bool isIntensity : {false, true}) {
          if (isIntensity && first != 0.0) continue;
          const std::function<double(double)> value =
              isIntensity ? std::function<double(double)>(intensity) : probability;
          std::set<double> dates = grid;
          if (addSingular) AddTests(first, last, dates);
          if (ratio > 0.0) {
            const std::vector<double> rough(dates.begin(), dates.end());
            for (std::size_t i = 1; i < rough.size(); ++i) {
              Smooth(rough[i - 1], rough[i], ratio, value, dates);
            }
          }
          EXPECT_EQ(isIntensity ? IntensityCurve(last, step, addSingular, ratio)
                                : ProbabilityCurve(first, last, step, addSingular, ratio),
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
  EXPECT_EQ(engine.Run("<build><minimal-cutsets top-event=\"NEVER\"/></build>"), 0);
  handle = engine.GetEvent("NEVER")->GetHandle("MCS");
  EXPECT_EQ(ProbabilityCurve(0, 100, 50, false, 0.1), (Points{{0, 0}, {50, 0}, {100, 0}}));
  EXPECT_EQ(IntensityCurve(100, 50, false, 0.1), (Points{{0, 0}, {50, 0}, {100, 0}}));
}

TEST_F(CurveTest, IsPrintedWithItsAverages) {
  EXPECT_EQ(
      engine.Run(
          "<set><option name=\"top-event\" value=\"TOP\"/></set>"
          "<compute><probability output=\"curve-p.txt\" first-date=\"12\" last-date=\"100\""
          " step=\"8\" print-average-unavailability=\"on\"/>"
          "<probability output=\"curve-one.txt\" first-date=\"5\" last-date=\"5\"/>"
          "<failure-intensity output=\"curve-f.txt\" first-date=\"12\" last-date=\"100\""
          " step=\"8\" smoothing-ratio=\"0.01\" print-average-conditional-failure-intensity=\"on\""
          " print-unreliability=\"on\" print-probability-of-failure-per-hour=\"on\"/></compute>"),
      0);
  EXPECT_EQ(OrvaTestEngine::ReadFile("curve-one.txt"), "");
  for (const bool isIntensity : {false, true}) {
    const Points points =
        isIntensity ? IntensityCurve(100, 8, true, 0.01) : ProbabilityCurve(12, 100, 8, true, 0.1);
    std::string text = isIntensity ? "date\tCFI\tCFIavg\tF\tPFH\n0\t0.0\t0.0\t0.0\t0.0\n"
                                   : "date\tPr/PFD\tPFDavg\n";
    double integral = 0.0;
    for (std::size_t i = 0; i < points.size(); ++i) {
      const auto [x, y] = points[i];
      if (i > 0) {
        integral += (points[i - 1].second + y) * 0.5 * (x - points[i - 1].first);
      } else if (isIntensity) {
        continue;
      }
      std::vector<double> fields = {x, y, i == 0 ? y : integral / (x - 12.0)};
      if (isIntensity) {
        const double f = 1.0 - std::exp(-integral);
        fields = {x, y, integral / x, f, f / x};
      }
      for (const double field : fields) text += Format(field) + "\t";
      text.back() = '\n';
    }
    EXPECT_EQ(OrvaTestEngine::ReadFile(isIntensity ? "curve-f.txt" : "curve-p.txt"), text);
    EXPECT_GT(points.size(), 30u);
  }
}

}  // namespace
