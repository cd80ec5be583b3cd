// Importance factors of basic events.

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <vector>

#include "OrvaTestSupport.h"
#include "quantification/OrvaHandle.h"

namespace {

using Cutset = std::vector<std::string>;

std::string Row(const std::string& name, const std::vector<double>& numbers) {
  std::string row = name;
  for (const double x : numbers) {
    char text[32];
    std::snprintf(text, sizeof text, "\t%.6g", x);
    row += text;
  }
  return row + "\n";
}

// A random coherent model below g0. Probabilities are multiples of 1/8, so that all sums and
// products are exact, and others before date 10 than from then on.
class RandomModel {
 public:
  explicit RandomModel(std::mt19937& random) {
    const auto draw = [&](std::size_t n) { return random() % n; };
    const std::size_t gates = 2 + draw(5);
    probabilities.resize(3 + draw(5));
    for (std::size_t g = 0; g < gates; ++g) {
      std::set<std::string> children;
      if (g + 1 < gates) children.insert("gate name=\"g" + std::to_string(g + 1));
      while (children.size() < 2 || draw(3) != 0) {
        const std::size_t i = draw(2) == 0 ? g + 1 + draw(3) : gates;
        children.insert(i < gates
                            ? "gate name=\"g" + std::to_string(i)
                            : "basic-event name=\"b" + std::to_string(draw(probabilities.size())));
      }
      const char* const kinds[][2] = {{"and", ""}, {"or", ""}, {"atleast", " min=\"2\""}};
      const auto& [kind, min] = kinds[draw(3)];
      text += "<define-gate name=\"g" + std::to_string(g) + "\"><" + kind + min + ">";
      for (const std::string& child : children) text += "<" + child + "\"/>";
      text += std::string("</") + kind + "></define-gate>\n";
    }
    // Small ones as a rule; 0 and 1 happen.
    for (std::size_t b = 0; b < probabilities.size(); ++b) {
      text += "<define-basic-event name=\"b" + std::to_string(b) +
              "\"><ite><lt><mission-time/><int value=\"10\"/></lt>";
      for (double& p : probabilities[b]) {
        p = static_cast<double>(draw(3) == 0 ? draw(9) : draw(3)) / 8.0;
        text += "<float value=\"" + std::to_string(p) + "\"/>";
      }
      text += "</ite></define-basic-event>\n";
    }
  }
  double GetProbability(const std::string& event, double t) const {
    return probabilities[static_cast<std::size_t>(std::stoi(event.substr(1)))][t < 10.0 ? 0 : 1];
  }

  std::string text;
  std::vector<std::array<double, 2>> probabilities;
};

// How often a factor was guarded, or a quantity out of its usual range.
struct Seen {
  int noProbability = 0, isClamped = 0, noReduction = 0, isNegative = 0, isUnused = 0;
};

// The whole table, from the cutsets and the definitions of the factors.
std::string MakeTable(const RandomModel& model, const std::vector<Cutset>& cutsets, double t,
                      const std::vector<std::string>& events, Seen& seen) {
  const auto multiply = [&](const Cutset& cutset, const std::string& without) {
    double product = 1.0;
    for (const std::string& event : cutset) {
      if (event != without) product *= model.GetProbability(event, t);
    }
    return product;
  };
  double top = 0.0;
  for (const Cutset& cutset : cutsets) top += multiply(cutset, "");
  seen.isClamped += top > 1.0 ? 1 : 0;
  top = std::min(top, 1.0);
  seen.noProbability += top == 0.0 ? 1 : 0;
  std::string table = "top-event\tmission-time\tprobability\n" + Row("g0", {t, top}) +
                      "basic-event\toccurrences\tPr\tPr|1\tPr|0\tMIF\tCIF\tDIF\tRAW\tRRW\tFV\n";
  for (const std::string& event : events) {
    double occurrences = 0.0;
    double mif = 0.0;
    for (const Cutset& cutset : cutsets) {
      if (std::find(cutset.begin(), cutset.end(), event) == cutset.end()) continue;
      occurrences += 1.0;
      mif += multiply(cutset, event);
    }
    const double p = model.GetProbability(event, t);
    const double with = top - p * mif + mif;
    const double without = top - p * mif;
    const auto overTop = [&](double x) { return top == 0.0 ? 0.0 : x / top; };
    const double dif = overTop(p * with);
    table += Row(event, {occurrences, p, with, without, mif, overTop(p * mif), dif, overTop(with),
                         without == 0.0 ? 0.0 : top / without, dif});
    seen.noReduction += top > 0.0 && without == 0.0 ? 1 : 0;
    seen.isNegative += without < 0.0 ? 1 : 0;
    seen.isUnused += cutsets.empty() || occurrences > 0.0 ? 0 : 1;
  }
  return table;
}

TEST(ImportanceFactors, AreThoseOfThePrintedCutsets) {
  std::mt19937 random(6);
  Seen seen;
  for (int trial = 0; trial < 300; ++trial) {
    const RandomModel model(random);
    OrvaTestEngine engine;
    ASSERT_EQ(engine.Load(model.text), 0) << engine.GetErrors();
    ASSERT_EQ(
        engine.Run(
            "<set><option name=\"top-event\" value=\"g0\"/>"
            "<option name=\"print-conditional-probability-1\" value=\"on\"/>"
            "<option name=\"print-conditional-probability-0\" value=\"on\"/>"
            "<option name=\"print-Fussel-Vesely-importance-factor\" value=\"on\"/></set>"
            "<build><minimal-cutsets/></build>"
            "<print><minimal-cutsets output=\"importance-cutsets.txt\""
            " print-minimal-cutset-rank=\"off\" print-minimal-cutset-probability=\"off\"/></print>"
            "<compute><importance-factors output=\"importance-0.txt\"/>"
            "<importance-factors output=\"importance-20.txt\" mission-time=\"20\"/></compute>"),
        0)
        << engine.GetErrors();
    std::vector<Cutset> cutsets;
    std::istringstream lines(OrvaTestEngine::ReadFile("importance-cutsets.txt"));
    for (std::string line; std::getline(lines, line);) {
      std::istringstream names(line);
      cutsets.emplace_back(std::istream_iterator<std::string>(names),
                           std::istream_iterator<std::string>());
    }
    // One row for each basic event below the top event, whether it is in a cutset or not.
    std::vector<std::string> events;
    for (const OrvaEvent* event :
         LumoItems<OrvaEvent>(*engine.GetEvent("g0")->GetHandle("MCS")->GetBasicEvents())) {
      events.emplace_back(event->GetName());
    }
    const std::set<std::string> distinct(events.begin(), events.end());
    EXPECT_EQ(distinct.size(), events.size());
    for (std::size_t b = 0; b < model.probabilities.size(); ++b) {
      const std::string name = "b" + std::to_string(b);
      EXPECT_EQ(
          distinct.count(name),
          model.text.find("<basic-event name=\"" + name + "\"/>") != std::string::npos ? 1 : 0);
    }
    for (const double t : {0.0, 20.0}) {
      ASSERT_EQ(OrvaTestEngine::ReadFile(t == 0.0 ? "importance-0.txt" : "importance-20.txt"),
                MakeTable(model, cutsets, t, events, seen))
          << model.text;
    }
  }
  // The models are worth the trial.
  EXPECT_GT(seen.noProbability, 20);
  EXPECT_GT(seen.isClamped, 20);
  EXPECT_GT(seen.noReduction, 20);
  EXPECT_GT(seen.isNegative, 0);
  EXPECT_GT(seen.isUnused, 20);
}

TEST(ImportanceFactors, PassNaNOnThroughTheirGuards) {
  OrvaTestEngine engine;
  ASSERT_EQ(engine.Load("<define-gate name=\"T\"><or><basic-event name=\"e\"/>"
                        "<basic-event name=\"f\"/></or></define-gate>"),
            0);
  ASSERT_EQ(engine.Run("<build><minimal-cutsets top-event=\"T\"/></build>"), 0);
  OrvaEvent* top = engine.GetEvent("T");
  OrvaEvent* e = engine.GetEvent("e");
  for (const char* name : {"MCS", "system"}) {  // they read what is stored
    const OrvaHandle* handle = top->GetHandle(name);
    top->SetProbability(0.0);
    e->SetProbability(0.5);
    e->SetMarginalImportanceFactor(0.25);
    EXPECT_EQ(handle->GetConditionalProbabilityOfBasicEvent(e, true), 0.125);
    EXPECT_EQ(handle->GetConditionalProbabilityOfBasicEvent(e, false), -0.125);
    EXPECT_EQ(handle->GetCriticalImportanceFactorOfBasicEvent(e), 0.0);
    EXPECT_EQ(handle->GetRiskReductionWorthOfBasicEvent(e), 0.0);
    top->SetProbability(std::numeric_limits<double>::quiet_NaN());
    for (const double factor : {handle->GetCriticalImportanceFactorOfBasicEvent(e),
                                handle->GetDiagnosisImportanceFactorOfBasicEvent(e),
                                handle->GetFusselVeselyImportanceFactorOfBasicEvent(e),
                                handle->GetRiskAchievementWorthOfBasicEvent(e),
                                handle->GetRiskReductionWorthOfBasicEvent(e)}) {
      EXPECT_TRUE(std::isnan(factor));
    }
  }
}

}  // namespace
