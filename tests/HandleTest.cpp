// Handles: what they know of a top event, and what they compute from its minimal cutsets.

#include <limits>

#include "OrvaTestSupport.h"
#include "model/OrvaProbabilityDistribution.h"
#include "quantification/OrvaHandle.h"
#include "store/OrvaMCSSet.h"

namespace {

using Expression = OrvaProbabilityDistribution;

// The cutsets are A B and C; what W adds is not minimal.
class HandleTest : public testing::Test {
 protected:
  HandleTest() {
    engine.Define(R"(TOP = or(V,W,C); V = and(A,B); W = and(B,E,C); $half = mul(rate,0.5);
      $rate = 0.02; #A = exponential(half,time); #B = exponential(rate,time); #C = 0.3; #E = 0.4;
      #unused = other)");
    engine.MustRun("<build><minimal-cutsets top-event=\"TOP\"/></build>");
    top = engine.GetEvent("TOP");
    mcs = top->GetHandle("MCS");
    system = top->GetHandle("system");
  }
  static double A(double t) { return 1 - std::exp(-0.01 * t); }
  static double B(double t) { return 1 - std::exp(-0.02 * t); }
  // With the importance factors of one date and the probabilities of another.
  static double Intensity(double tOfFactors, double t) {
    return B(tOfFactors) * 0.01 * (1 - A(t)) + A(tOfFactors) * 0.02 * (1 - B(t));
  }

  OrvaTestEngine engine;
  OrvaEvent* top = nullptr;
  OrvaHandle *mcs = nullptr, *system = nullptr;
};

TEST_F(HandleTest, KnowsWhatLiesBelowTheTopEvent) {
  EXPECT_EQ(OrvaNamesOf(*mcs->GetBasicEvents()), "A B E C");
  EXPECT_EQ(OrvaNamesOf(*mcs->GetParameters()), "rate half");  // users after what they use, once
  engine.GetEvent("V")->GetDefinition()->AddChild(
      OrvaGate::NewEvent(engine.GetModel(), engine.GetEvent("unused")));
  engine.GetEvent("A")->SetProbabilityDistribution(nullptr);
  mcs->UpdateBasicEventsAndParameters();
  EXPECT_EQ(OrvaNamesOf(*mcs->GetBasicEvents()), "A B unused E C");
  EXPECT_EQ(OrvaNamesOf(*mcs->GetParameters()), "rate other");
  EXPECT_GT(OrvaHandle::CompareNames(system, mcs), 0);
  EXPECT_EQ(OrvaHandle::CompareTypes(mcs, system), 1);
  const OrvaHandle::Type type = OrvaHandle::MCS_HANDLE;
  EXPECT_EQ(OrvaHandle::CompareType(system, &type), -1);
}

TEST_F(HandleTest, SystemsAreNotQuantified) {
  OrvaEvent* b = engine.GetEvent("B");
  mcs->ComputeImportanceFactorsOfBasicEvents(5.0);
  EXPECT_NEAR(top->GetProbability(), A(5.0) * B(5.0) + 0.3, 1e-12);
  EXPECT_NEAR(mcs->GetMarginalImportanceFactorOfBasicEvent(b), A(5.0), 1e-12);
  system->ComputeTopEventProbability(10.0);
  EXPECT_EQ(system->GetTopEventProbability(), 0.0);
  EXPECT_NEAR(b->GetProbability(), B(10.0), 1e-12);
  EXPECT_EQ(system->GetNumberOfOccurrencesOfBasicEvent(b), 0);
  top->SetProbability(0.5);
  system->ComputeImportanceFactorsOfBasicEvents(20.0);
  EXPECT_EQ(top->GetProbability(), 0.0);
  EXPECT_NEAR(b->GetMarginalImportanceFactor(), A(5.0), 1e-12);
  // The intensity takes the factors that are there.
  system->ComputeTopEventUnconditionalFailureIntensity(20.0);
  EXPECT_NEAR(top->GetUnconditionalFailureIntensity(), Intensity(5.0, 20.0), 1e-12);
  EXPECT_NEAR(system->GetTopEventConditionalFailureIntensity(), Intensity(5.0, 20.0), 1e-12);
  mcs->ComputeTopEventUnconditionalFailureIntensity(8.0);
  double unconditional = 0.0;
  EXPECT_NEAR(mcs->GetTopEventConditionalFailureIntensity(unconditional),
              Intensity(8.0, 8.0) / (0.7 - A(8.0) * B(8.0)), 1e-12);
  EXPECT_NEAR(unconditional, Intensity(8.0, 8.0), 1e-12);
  // Only the given events are computed anew.
  LumoList onlyB(1, b);
  mcs->ComputeProbabilitiesOfBasicEvents(1.0, &onlyB);
  EXPECT_NEAR(b->GetProbability(), B(1.0), 1e-12);
  EXPECT_NEAR(engine.GetEvent("A")->GetProbability(), A(8.0), 1e-12);
}

TEST(Handle, GuardsOfTheSum) {
  OrvaTestEngine engine;
  engine.Define("TOP = or(a,b); #a = 0; #b = 0.25");
  engine.MustRun("<build><minimal-cutsets top-event=\"TOP\"/></build>");
  OrvaModel* model = engine.GetModel();
  OrvaEvent* top = engine.GetEvent("TOP");
  OrvaHandle* handle = top->GetHandle("MCS");
  const auto set = [&](const char* event, Expression* expression) {
    engine.GetEvent(event)->SetProbabilityDistribution(expression);
    handle->ComputeTopEventUnconditionalFailureIntensity(10.0);
    return handle->GetTopEventProbability();
  };
  const auto number = [&](double x) { return Expression::NewFloat(model, x); };
  EXPECT_EQ(set("a", number(0.5)), 0.75);
  // The sum is cut at 1 and the conditional intensity is then 1, whatever w is.
  EXPECT_EQ(set("b", number(0.75)), 1.0);
  EXPECT_EQ(handle->GetTopEventUnconditionalFailureIntensity(), 0.0);
  EXPECT_EQ(handle->GetTopEventConditionalFailureIntensity(), 1.0);
  // Without expression an event is certain.
  set("b", number(0.0));
  EXPECT_EQ(set("a", nullptr), 1.0);
  handle->ComputeTopEventProbability(10.0);
  EXPECT_EQ(engine.GetEvent("a")->GetProbability(), 1.0);
  EXPECT_TRUE(std::isnan(set("a", number(std::numeric_limits<double>::quiet_NaN()))));

  // A handle replaces the one of its name.
  auto* manager = handle->GetMCSSet()->GetManager();
  OrvaHandle* empty = top->NewHandle("MCS", new OrvaMCSSet(manager, manager->NewUndevelopedLeaf()));
  EXPECT_EQ(top->GetHandle("MCS"), empty);
  empty->ComputeTopEventProbability(10.0);
  EXPECT_EQ(top->GetProbability(), 0.0);
  EXPECT_EQ(empty->GetNumberOfOccurrencesOfBasicEvent(engine.GetEvent("a")), 0);
  top->DeleteHandles(OrvaHandle::CompareName, "MCS");
  EXPECT_EQ(top->GetHandle("MCS"), nullptr);
}

}  // namespace
