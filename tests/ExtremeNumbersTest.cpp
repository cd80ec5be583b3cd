// Numbers at the edges: what they lead to ends, and says so.

#include <cfloat>
#include <cmath>
#include <limits>

#include "OrvaTestSupport.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "quantification/OrvaHandle.h"
#include "support/statistics/LumoBinTable.h"
#include "support/statistics/LumoCurve.h"

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

std::string Numbers(const std::vector<const char*>& values) {
  std::string text;
  for (const char* value : values) text += std::string("<float value=\"") + value + "\"/>";
  return text;
}

double Evaluate(const std::string& expression, double t) {
  OrvaTestEngine engine;
  EXPECT_EQ(engine.Load("<define-parameter name=\"p\">" + expression + "</define-parameter>"), 0)
      << engine.GetErrors();
  return engine.GetModel()->LookForParameter("p")->ComputeValue(t)->ToDouble();
}

std::string PeriodicTest(const std::vector<const char*>& arguments) {
  // The eighth is a Boolean.
  std::string text = Numbers({arguments.begin(), arguments.begin() + 7});
  text += "<bool value=\"true\"/>" + Numbers({arguments.begin() + 7, arguments.end()});
  return "<periodic-test>" + text + "<mission-time/></periodic-test>";
}

TEST(ExtremeNumbers, PeriodicTestsOfManyCycles) {
  // Nothing is ever detected: each cycle loses a share gamma in the test and the rest at the rate
  // lambda. Half a million cycles don't settle.
  const std::string slow = PeriodicTest({"1e-9", "1e-9", "0.02", "1", "0", "1e-9", "0", "0", "0"});
  for (const double cycles : {5e3, 5e5, 2e9}) {
    EXPECT_NEAR(Evaluate(slow, cycles), -std::expm1(cycles * (std::log1p(-1e-9) - 1e-9)), 1e-8);
  }
  // Intervals at the resolution of dates, dates without end, no date at all.
  const std::string tiny =
      PeriodicTest({"0.1", "0.1", "0.2", "1e-12", "10000", "0", "0", "0.5", "0"});
  EXPECT_GE(Evaluate(tiny, 10001.0), 0.0);
  EXPECT_LE(Evaluate(tiny, 10001.0), 1.0);
  EXPECT_TRUE(std::isfinite(Evaluate(slow, std::numeric_limits<double>::infinity())));
  EXPECT_TRUE(std::isnan(Evaluate(slow, NOT_A_NUMBER)));
}

TEST(ExtremeNumbers, StandbyOfManyUnits) {
  const auto standby = [](const char* n, const std::vector<const char*>& others) {
    return Evaluate(
        std::string("<standby><int value=\"") + n + "\"/>" + Numbers(others) + "</standby>", 0.0);
  };
  // The weights of 0 .. n failed units are powers of 1/2; all have failed.
  const std::vector<const char*> halves = {"1", "1", "0.5", "0", "1"};
  EXPECT_EQ(standby("2", halves), 0.25 / 1.75);
  EXPECT_EQ(standby("1000000", halves), 0.0);
  EXPECT_TRUE(std::isnan(standby("2000000000", halves)));
  // Weights that grow beyond all numbers. Failures of all 400 units are 100 times as probable as of
  // 399, these 200 times as of 398, ...: the others are exp(0.01) - 1 of them together.
  EXPECT_NEAR(standby("400", {"1", "1", "0.01", "0.01", "1e-4"}), std::exp(-0.01), 1e-14);
  // Without repair divisors are the machine epsilon.
  EXPECT_NEAR(standby("30", {"1", "0", "0.001", "0.001", "0"}), 1.0 - DBL_EPSILON / 0.001, 1e-15);
}

// Probabilities that are no numbers must be seen.
TEST(ExtremeNumbers, CutsetsOfUnknownProbability) {
  OrvaTestEngine engine;
  engine.Define("T = or(a, b); #a = standby(2000000000, 1, 1, 0.5, 0.0, 1.0); #b = 0.25");
  for (const std::string limit : {"0", "0.5"}) {
    const std::string options = "top-event=\"T\" handle=\"" + limit + "\"";
    engine.MustRun("<build><minimal-cutsets minimum-probability=\"" + limit + "\" " + options +
                   "/></build><compute><probability output=\"unknown.txt\" " + options +
                   "/></compute>");
    EXPECT_EQ(OrvaTestEngine::ReadTable("unknown.txt")[1][2], "nan") << limit;
  }
}

TEST(ExtremeNumbers, FailureRatesThroughSharedParameters) {
  // p0 = p1 p1, p1 = p2 p2 ... to a rate of 1: 2^60 ways to it.
  std::string model;
  for (int i = 0; i < 60; ++i) {
    const std::string next = "<parameter name=\"p" + std::to_string(i + 1) + "\"/>";
    model += "<define-parameter name=\"p" + std::to_string(i) + "\"><mul>" + next + next +
             "</mul></define-parameter>";
  }
  OrvaTestEngine engine;
  ASSERT_EQ(engine.Load(model + "<define-parameter name=\"p60\"><exponential>" + Numbers({"1"}) +
                        "<mission-time/></exponential></define-parameter>"
                        "<define-basic-event name=\"e\"><parameter name=\"p0\"/>"
                        "</define-basic-event>"),
            0);
  engine.GetModel()->ComputeValuesOfParameters(0.0);
  OrvaEvent* event = engine.GetEvent("e");
  event->ComputeProbabilityAndUnconditionalFailureIntensityOfBasicEvent(0.0);
  EXPECT_EQ(event->GetUnconditionalFailureIntensity(), 1.0);
}

TEST(ExtremeNumbers, CurvesThatCannotBeDivided) {
  OrvaTestEngine engine;
  ASSERT_EQ(
      engine.Load("<define-gate name=\"T\"><or><basic-event name=\"e\"/>"
                  "<basic-event name=\"f\"/></or></define-gate>"
                  "<define-basic-event name=\"e\"><float value=\"0.5\"/></define-basic-event>"),
      0);
  ASSERT_EQ(engine.Run("<build><minimal-cutsets top-event=\"T\"/></build>"), 0);
  OrvaHandle* handle = engine.GetEvent("T")->GetHandle("MCS");
  // Dates 16 apart are neighbours; five of them.
  LumoCurve curve;
  handle->ComputeCurveOfTopEventProbability(1e17, 1e17 + 64.0, 1.0, true, true, -1.0, &curve);
  EXPECT_EQ(curve.GetNumberOfPoints(), 5);
  for (const double last : {std::numeric_limits<double>::infinity(), NOT_A_NUMBER}) {
    LumoCurve endless;
    handle->ComputeCurveOfTopEventProbability(0.0, last, NOT_A_NUMBER, true, true, NOT_A_NUMBER,
                                              &endless);
    EXPECT_LE(endless.GetNumberOfPoints(), 3);
  }
}

TEST(ExtremeNumbers, BinTablesWithoutSpareRoom) {
  LumoBinTable table(4, 1);
  for (int i = 1; i <= 100; ++i) table.AddValue(i);
  EXPECT_LE(table.GetSize(), table.GetCapacity());
  EXPECT_EQ(table.GetWeight(), 100.0);
}

}  // namespace
