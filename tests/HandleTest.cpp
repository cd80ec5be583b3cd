// Handles: what they know of a top event, and what they compute from its minimal cutsets.

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <vector>

#include "OrvaTestSupport.h"
#include "mcs/OrvaMCSSet.h"
#include "model/OrvaGate.h"
#include "model/OrvaProbabilityDistribution.h"
#include "quantification/OrvaHandle.h"

namespace {

using Expression = OrvaProbabilityDistribution;

std::string NamesOf(const LumoContainer& symbols) {
  std::string names;
  for (const OrvaSymbol* symbol : LumoItems<OrvaSymbol>(symbols)) {
    names += (names.empty() ? "" : " ") + std::string(symbol->GetName());
  }
  return names;
}

// TOP = V or W, V = at least 2 of (A or D), B, C, W = D and E and B. What W adds is not minimal.
// A, B and D fail at the rates half, rate and 0.05; C and E are constants.
constexpr const char* MODEL = R"(
  <define-gate name="TOP"><or><gate name="V"/><gate name="W"/></or></define-gate>
  <define-gate name="V"><atleast min="2"><gate name="G"/><basic-event name="B"/>
    <basic-event name="C"/></atleast></define-gate>
  <define-gate name="G"><or><basic-event name="A"/><basic-event name="D"/></or></define-gate>
  <define-gate name="W"><and><basic-event name="D"/><basic-event name="E"/>
    <basic-event name="B"/></and></define-gate>
  <define-parameter name="half"><mul><parameter name="rate"/><float value="0.5"/></mul>
    </define-parameter>
  <define-parameter name="rate"><float value="0.02"/></define-parameter>
  <define-basic-event name="A"><exponential><parameter name="half"/><mission-time/></exponential>
    </define-basic-event>
  <define-basic-event name="B"><exponential><parameter name="rate"/><mission-time/></exponential>
    </define-basic-event>
  <define-basic-event name="C"><float value="0.3"/></define-basic-event>
  <define-basic-event name="D"><exponential><float value="0.05"/><mission-time/></exponential>
    </define-basic-event>
  <define-basic-event name="E"><float value="0.4"/></define-basic-event>
  <define-basic-event name="unused"><parameter name="other"/></define-basic-event>)";

class HandleTest : public testing::Test {
 protected:
  using Cutset = std::vector<std::string>;

  HandleTest() {
    EXPECT_EQ(engine.Load(MODEL), 0) << engine.GetErrors();
    EXPECT_EQ(engine.Run("<set><option name=\"top-event\" value=\"TOP\"/></set>"
                         "<build><minimal-cutsets/></build>"
                         "<print><minimal-cutsets output=\"handle-cutsets.txt\"/></print>"),
              0)
        << engine.GetErrors();
    top = engine.GetEvent("TOP");
    // The events come after rank, probability and contribution.
    std::istringstream lines(OrvaTestEngine::ReadFile("handle-cutsets.txt"));
    for (std::string line; std::getline(lines, line);) {
      std::istringstream fields(line);
      Cutset cutset(1);
      while (std::getline(fields, cutset.back(), '\t')) cutset.emplace_back();
      cutset.pop_back();
      cutsets.emplace_back(cutset.begin() + 3, cutset.end());
    }
  }

  static double RateOf(const std::string& event) {
    return event == "A" ? 0.01 : event == "B" ? 0.02 : event == "D" ? 0.05 : 0.0;
  }
  static double ProbabilityOf(const std::string& event, double t) {
    if (event == "C") return 0.3;
    return event == "E" ? 0.4 : 1 - std::exp(-RateOf(event) * t);
  }
  // The sum of the products over the cutsets; with an event, over those that contain it and
  // without its own probability.
  double Sum(double t, const std::string& event = "") const {
    double sum = 0.0;
    for (const Cutset& cutset : cutsets) {
      const bool isIn = std::find(cutset.begin(), cutset.end(), event) != cutset.end();
      if (!event.empty() && !isIn) continue;
      double product = 1.0;
      for (const std::string& each : cutset) {
        if (each != event) product *= ProbabilityOf(each, t);
      }
      sum += product;
    }
    return sum;
  }
  double Intensity(double tOfFactors, double t) const {
    double w = 0.0;
    for (const char* event : {"A", "B", "C", "D", "E"}) {
      w += Sum(tOfFactors, event) * RateOf(event) * (1 - ProbabilityOf(event, t));
    }
    return w;
  }

  OrvaTestEngine engine;
  OrvaEvent* top = nullptr;
  std::vector<Cutset> cutsets;
};

TEST_F(HandleTest, KnowsWhatLiesBelowTheTopEvent) {
  OrvaHandle* handle = top->GetHandle("MCS");
  EXPECT_EQ(handle->GetTopEvent(), top);
  EXPECT_EQ(handle->GetType(), OrvaHandle::MCS_HANDLE);
  EXPECT_EQ(handle->GetSystem(), nullptr);
  EXPECT_EQ(NamesOf(*handle->GetBasicEvents()), "A D B C E");
  EXPECT_EQ(NamesOf(*handle->GetParameters()), "rate half");  // users after what they use, once
  engine.GetEvent("G")->GetDefinition()->AddChild(
      OrvaGate::NewEvent(engine.GetModel(), engine.GetEvent("unused")));
  engine.GetEvent("A")->SetProbabilityDistribution(nullptr);
  handle->UpdateBasicEventsAndParameters();
  EXPECT_EQ(NamesOf(*handle->GetBasicEvents()), "A D unused B C E");
  EXPECT_EQ(NamesOf(*handle->GetParameters()), "other rate");

  OrvaHandle* system = top->GetHandle("system");
  EXPECT_EQ(system->GetType(), OrvaHandle::SYSTEM_HANDLE);
  EXPECT_EQ(system->GetMCSSet(), nullptr);
  EXPECT_GT(OrvaHandle::CompareNames(system, handle), 0);
  EXPECT_EQ(OrvaHandle::CompareName(handle, "MCS"), 0);
  EXPECT_EQ(OrvaHandle::CompareTypes(handle, system), 1);
  const OrvaHandle::Type type = OrvaHandle::MCS_HANDLE;
  EXPECT_EQ(OrvaHandle::CompareType(system, &type), -1);
}

TEST_F(HandleTest, QuantitiesAreSumsOverTheCutsets) {
  std::vector<Cutset> sorted = cutsets;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(sorted,
            (std::vector<Cutset>{{"A", "B"}, {"A", "C"}, {"B", "C"}, {"B", "D"}, {"C", "D"}}));
  OrvaHandle* handle = top->GetHandle("MCS");
  handle->ComputeTopEventProbability(10.0);
  EXPECT_NEAR(handle->GetTopEventProbability(), Sum(10.0), 1e-12);
  EXPECT_NEAR(handle->GetProbabilityOfBasicEvent(engine.GetEvent("A")), 1 - std::exp(-0.1), 1e-12);

  handle->ComputeImportanceFactorsOfBasicEvents(5.0);
  EXPECT_NEAR(top->GetProbability(), Sum(5.0), 1e-12);
  const std::map<std::string, int> occurrences = {{"A", 2}, {"B", 3}, {"C", 3}, {"D", 2}, {"E", 0}};
  for (const auto& [name, number] : occurrences) {
    const OrvaEvent* event = engine.GetEvent(name.c_str());
    EXPECT_NEAR(handle->GetMarginalImportanceFactorOfBasicEvent(event), Sum(5.0, name), 1e-12);
    EXPECT_EQ(handle->GetNumberOfOccurrencesOfBasicEvent(event), number) << name;
  }
  handle->ComputeTopEventUnconditionalFailureIntensity(8.0);
  const double w = Intensity(8.0, 8.0);
  EXPECT_NEAR(handle->GetTopEventUnconditionalFailureIntensity(), w, 1e-12);
  EXPECT_NEAR(top->GetProbability(), Sum(8.0), 1e-12);
  EXPECT_NEAR(handle->GetUnconditionalFailureIntensityOfBasicEvent(engine.GetEvent("B")),
              0.02 * std::exp(-0.16), 1e-12);
  double unconditional = 0.0;
  EXPECT_NEAR(handle->GetTopEventConditionalFailureIntensity(unconditional), w / (1 - Sum(8.0)),
              1e-12);
  EXPECT_EQ(unconditional, top->GetUnconditionalFailureIntensity());

  // Only the given events are computed anew.
  LumoList onlyD(1, engine.GetEvent("D"));
  handle->ComputeProbabilitiesOfBasicEvents(1.0, &onlyD);
  EXPECT_NEAR(engine.GetEvent("D")->GetProbability(), ProbabilityOf("D", 1.0), 1e-12);
  EXPECT_NEAR(engine.GetEvent("B")->GetProbability(), ProbabilityOf("B", 8.0), 1e-12);
}

TEST_F(HandleTest, SystemsAreNotQuantified) {
  OrvaHandle* system = top->GetHandle("system");
  OrvaEvent* b = engine.GetEvent("B");
  top->GetHandle("MCS")->ComputeImportanceFactorsOfBasicEvents(5.0);
  system->ComputeTopEventProbability(10.0);
  EXPECT_EQ(system->GetTopEventProbability(), 0.0);
  EXPECT_NEAR(b->GetProbability(), ProbabilityOf("B", 10.0), 1e-12);
  EXPECT_EQ(system->GetNumberOfOccurrencesOfBasicEvent(b), 0);
  top->SetProbability(0.5);
  system->ComputeImportanceFactorsOfBasicEvents(20.0);
  EXPECT_EQ(top->GetProbability(), 0.0);
  EXPECT_NEAR(b->GetMarginalImportanceFactor(), Sum(5.0, "B"), 1e-12);
  // The intensity takes the factors that are there.
  system->ComputeTopEventUnconditionalFailureIntensity(20.0);
  EXPECT_NEAR(top->GetUnconditionalFailureIntensity(), Intensity(5.0, 20.0), 1e-12);
  EXPECT_NEAR(system->GetTopEventConditionalFailureIntensity(), Intensity(5.0, 20.0), 1e-12);
}

// TOP = a or b, with the cutset tree made by hand.
TEST(Handle, GuardsOfTheSum) {
  OrvaMCSManager manager;
  OrvaModel model;
  OrvaEvent* top = model.AddEvent("TOP", OrvaEvent::GATE);
  top->SetDefinition(OrvaGate::NewOr(&model, nullptr));
  OrvaEvent* events[2];
  for (int i = 0; i < 2; ++i) {
    events[i] = model.AddEvent(i == 0 ? "a" : "b", OrvaEvent::BASIC_EVENT);
    events[i]->SetMCSIndex(i + 1);
    manager.SetEvent(i + 1, events[i]);
    top->GetDefinition()->AddChild(OrvaGate::NewEvent(&model, events[i]));
  }
  OrvaMCSNode* tree = manager.NewInternalNode(
      1, manager.NewMinimalCutsetLeaf(),
      manager.NewInternalNode(2, manager.NewMinimalCutsetLeaf(), manager.NewDeadEndLeaf()));
  OrvaHandle* handle = top->NewHandle("MCS", new OrvaMCSSet(&manager, tree));
  const auto set = [&](int i, Expression* expression) {
    events[i]->SetProbabilityDistribution(expression);
    handle->ComputeTopEventUnconditionalFailureIntensity(10.0);
    return handle->GetTopEventProbability();
  };
  set(1, Expression::NewFloat(&model, 0.25));
  EXPECT_EQ(set(0, Expression::NewFloat(&model, 0.5)), 0.75);
  // The sum is cut at 1 and the conditional intensity is then 1, whatever w is.
  EXPECT_EQ(set(1, Expression::NewFloat(&model, 0.75)), 1.0);
  EXPECT_EQ(handle->GetTopEventUnconditionalFailureIntensity(), 0.0);
  EXPECT_EQ(handle->GetTopEventConditionalFailureIntensity(), 1.0);
  set(0, Expression::NewDistribution(
             &model, Expression::EXPONENTIAL, Expression::NewFloat(&model, 0.1),
             Expression::NewDistribution(&model, Expression::MISSION_TIME, nullptr)));
  EXPECT_NEAR(handle->GetTopEventUnconditionalFailureIntensity(), 0.1 * std::exp(-1.0), 1e-12);
  EXPECT_EQ(handle->GetTopEventConditionalFailureIntensity(), 1.0);
  // Without expression an event is certain.
  set(1, Expression::NewFloat(&model, 0.0));
  EXPECT_EQ(set(0, nullptr), 1.0);
  EXPECT_EQ(events[0]->GetProbability(), 1.0);
  EXPECT_TRUE(
      std::isnan(set(0, Expression::NewFloat(&model, std::numeric_limits<double>::quiet_NaN()))));

  // A handle replaces the one of its name.
  OrvaHandle* empty = top->NewHandle("MCS", new OrvaMCSSet(&manager, manager.NewUndevelopedLeaf()));
  EXPECT_EQ(top->GetHandle("MCS"), empty);
  empty->ComputeTopEventProbability(10.0);
  EXPECT_EQ(top->GetProbability(), 0.0);
  EXPECT_EQ(empty->GetNumberOfOccurrencesOfBasicEvent(events[0]), 0);
  top->DeleteHandles(OrvaHandle::CompareName, "MCS");
  EXPECT_EQ(top->GetHandle("MCS"), nullptr);
}

}  // namespace
