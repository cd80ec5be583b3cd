// Handles: what they know of a top event, and what they compute from its minimal cutsets.

#include "OrvaTestSupport.h"
#include "model/OrvaProbabilityDistribution.h"
#include "quantification/OrvaHandle.h"
#include "store/OrvaMCSSet.h"

namespace {

// The cutsets are A B and C; what W adds is not minimal.
TEST(Handle, KnowsWhatItNeedsAndQuantifiesCutsetsOnly) {
  OrvaTestEngine engine;
  engine.Define(R"(TOP = or(V,W,C); V = and(A,B); W = and(B,E,C); $half = mul(rate,0.5);
      $rate = 0.02; #A = exponential(half,time); #B = exponential(rate,time); #C = 0.3; #E = 0.4)");
  engine.MustRun("<build><minimal-cutsets top-event=\"TOP\"/></build>");
  const OrvaEvent *top = engine.GetEvent("TOP"), *b = engine.GetEvent("B");
  OrvaHandle *mcs = top->GetHandle("MCS"), *system = top->GetHandle("system");
  EXPECT_EQ(OrvaNamesOf(*mcs->GetBasicEvents()), "A B E C");
  EXPECT_EQ(OrvaNamesOf(*mcs->GetParameters()), "rate half");  // users after what they use, once
  EXPECT_GT(OrvaHandle::CompareNames(system, mcs), 0);
  EXPECT_EQ(OrvaHandle::CompareTypes(mcs, system), 1);
  const auto a = [](double t) { return 1 - std::exp(-0.01 * t); };
  const auto pb = [](double t) { return 1 - std::exp(-0.02 * t); };
  mcs->ComputeImportanceFactorsOfBasicEvents(5.0);
  EXPECT_NEAR(top->GetProbability(), a(5.0) * pb(5.0) + 0.3, 1e-12);
  EXPECT_NEAR(mcs->GetMarginalImportanceFactorOfBasicEvent(b), a(5.0), 1e-12);
  // A system gives its events their probabilities, and the intensity with the factors of before.
  system->ComputeTopEventUnconditionalFailureIntensity(20.0);
  EXPECT_EQ(system->GetTopEventProbability(), 0.0);
  EXPECT_NEAR(b->GetProbability(), pb(20.0), 1e-12);
  EXPECT_EQ(system->GetNumberOfOccurrencesOfBasicEvent(b), 0);
  const auto intensity = [&](double tOfFactors, double t) {
    return pb(tOfFactors) * 0.01 * (1 - a(t)) + a(tOfFactors) * 0.02 * (1 - pb(t));
  };
  EXPECT_NEAR(system->GetTopEventConditionalFailureIntensity(), intensity(5.0, 20.0), 1e-12);
  mcs->ComputeTopEventUnconditionalFailureIntensity(8.0);
  double unconditional = 0.0;
  EXPECT_NEAR(mcs->GetTopEventConditionalFailureIntensity(unconditional),
              intensity(8.0, 8.0) / (0.7 - a(8.0) * pb(8.0)), 1e-12);
  EXPECT_NEAR(unconditional, intensity(8.0, 8.0), 1e-12);
  // Only the given events are computed anew.
  LumoList onlyB(1, engine.GetEvent("B"));
  mcs->ComputeProbabilitiesOfBasicEvents(1.0, &onlyB);
  EXPECT_NEAR(b->GetProbability(), pb(1.0), 1e-12);
  EXPECT_NEAR(engine.GetEvent("A")->GetProbability(), a(8.0), 1e-12);
}

TEST(Handle, GuardsOfTheSum) {
  OrvaTestEngine engine;
  engine.Define("TOP = or(a,b); #a = 0; #b = 0.25");
  engine.MustRun("<build><minimal-cutsets top-event=\"TOP\"/></build>");
  OrvaEvent* top = engine.GetEvent("TOP");
  OrvaHandle* handle = top->GetHandle("MCS");
  const auto set = [&](const char* event, double p) {
    engine.GetEvent(event)->SetProbabilityDistribution(
        OrvaProbabilityDistribution::NewFloat(engine.GetModel(), p));
    handle->ComputeTopEventUnconditionalFailureIntensity(10.0);
    return handle->GetTopEventProbability();
  };
  EXPECT_EQ(set("a", 0.5), 0.75);
  // The sum is cut at 1 and the conditional intensity is then 1, whatever w is.
  EXPECT_EQ(set("b", 0.75), 1.0);
  EXPECT_EQ(handle->GetTopEventUnconditionalFailureIntensity(), 0.0);
  EXPECT_EQ(handle->GetTopEventConditionalFailureIntensity(), 1.0);
  EXPECT_TRUE(std::isnan(set("a", std::nan(""))));
  set("b", 0.0);
  engine.GetEvent("a")->SetProbabilityDistribution(nullptr);  // an event without is certain
  handle->ComputeTopEventProbability(10.0);
  EXPECT_EQ(top->GetProbability(), 1.0);
  // A handle replaces the one of its name.
  auto* manager = handle->GetMCSSet()->GetManager();
  OrvaHandle* empty = top->NewHandle("MCS", new OrvaMCSSet(manager, manager->NewUndevelopedLeaf()));
  EXPECT_EQ(top->GetHandle("MCS"), empty);
  empty->ComputeTopEventProbability(10.0);
  EXPECT_EQ(top->GetProbability(), 0.0);
}

}  // namespace
