// Random coherent models, read from text and solved by the engine, against the minimal cutsets
// found by trying all subsets of the basic events.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <set>
#include <vector>

#include "OrvaTestSupport.h"
#include "mcs/OrvaMCSSet.h"
#include "quantification/OrvaHandle.h"
#include "support/containers/LumoList.h"
#include "system/OrvaSystem.h"

namespace {

using Subset = std::uint32_t;  // of the basic events

class RandomModel {
 public:
  explicit RandomModel(std::mt19937& random) : _random(random) {
    do {
      _gates.clear();
      _probabilities.clear();
      _maximumOfEvents = 5 + Draw(8);
      _maximumOfGates = 3 + Draw(6);
      _top = _GrowGate(Draw(2) == 0 ? OR : AND);
      // The alias of a basic event is an empty equation, and always true: as it is defined.
    } while (_gates.size() < 3 || !_Dereference({true, _top}).isGate);
  }

  int Draw(int n) { return std::uniform_int_distribution<int>(0, n - 1)(_random); }

  // Events are named after their numbers, b0, b1, ... and g0, g1, ...; the top has the last gate.
  std::string GetTop() const { return "g" + std::to_string(_top); }
  std::string ToText() const {
    std::string text;
    char line[64];
    for (std::size_t i = 0; i < _gates.size(); ++i) {
      const Gate& gate = _gates[i];
      const std::string name = gate.min == OR ? "or" : gate.min == AND ? "and" : "atleast";
      text += "<define-gate name=\"g" + std::to_string(i) + "\"><" + name;
      if (name == "atleast") text += " min=\"" + std::to_string(gate.min) + "\"";
      text += ">";
      for (const Child& child : gate.children) {
        text += child.isGate ? "<gate name=\"g" : "<basic-event name=\"b";
        text += std::to_string(child.number) + "\"/>";
      }
      text += "</" + name + "></define-gate>\n";
    }
    for (std::size_t i = 0; i < _probabilities.size(); ++i) {
      std::snprintf(line, sizeof line, "\"><float value=\"%.17g\"/>", _probabilities[i]);
      text += "<define-basic-event name=\"b" + std::to_string(i) + line + "</define-basic-event>\n";
    }
    return text;
  }

  double GetProbability(Subset cutset) const {
    double product = 1.0;
    for (std::size_t i = 0; i < _probabilities.size(); ++i) {
      if ((cutset >> i & 1) != 0) product *= _probabilities[i];
    }
    return product;
  }

  // By brute force: the truth table of every gate, then the true subsets with no member to spare.
  std::set<Subset> FindMinimalCutsets() const {
    const std::size_t size = std::size_t{1} << _probabilities.size();
    std::vector<std::vector<char>> tables;
    std::vector<int> counts(size);
    for (const Gate& gate : _gates) {
      std::fill(counts.begin(), counts.end(), 0);
      for (const Child& child : gate.children) {
        for (std::size_t s = 0; s < size; ++s) {
          counts[s] +=
              child.isGate ? tables[child.number][s] : static_cast<int>(s >> child.number & 1);
        }
      }
      const int min =
          gate.min == AND ? static_cast<int>(gate.children.size()) : std::max(gate.min, 1);
      tables.emplace_back(size);
      for (std::size_t s = 0; s < size; ++s) tables.back()[s] = counts[s] >= min ? 1 : 0;
    }
    const std::vector<char>& table = tables[_top];
    std::set<Subset> cutsets;
    for (std::size_t s = 0; s < size; ++s) {
      bool isMinimal = table[s] != 0;
      for (std::size_t i = 0; i < _probabilities.size() && isMinimal; ++i) {
        isMinimal = (s >> i & 1) == 0 || table[s ^ (std::size_t{1} << i)] == 0;
      }
      if (isMinimal) cutsets.insert(static_cast<Subset>(s));
    }
    return cutsets;
  }

 private:
  static constexpr int OR = 0;
  static constexpr int AND = -1;
  struct Child {
    bool isGate;
    std::size_t number;
  };
  struct Gate {
    int min;  // OR, AND, or the threshold
    std::vector<Child> children;
  };

  // Children are new events and gates, or shared ones; mostly new, so that modules happen.
  std::size_t _GrowGate(int operatorAbove) {
    --_maximumOfGates;
    Gate gate;
    gate.min = operatorAbove == OR ? AND : OR;  // mostly in turn
    if (Draw(2) == 0) gate.min = Draw(3) - 1;
    const int n = Draw(12) == 0 ? 1 : 2 + Draw(3);
    for (int i = 0; i < n; ++i) {
      const bool isShared = Draw(6) == 0;
      if (isShared && Draw(2) == 0 && !_gates.empty()) {
        gate.children.push_back(
            {true, static_cast<std::size_t>(Draw(static_cast<int>(_gates.size())))});
      } else if (!isShared && Draw(2) == 0 && _maximumOfGates > 0) {
        gate.children.push_back({true, _GrowGate(gate.min)});
      } else {
        gate.children.push_back({false, _GrowEvent(isShared)});
      }
    }
    if (Draw(6) == 0) gate.children.push_back(gate.children[0]);  // a repeated child
    if (gate.min == 1) gate.min += Draw(static_cast<int>(gate.children.size()));
    if (_HasRepeatedChild(gate)) gate.min = Draw(2) == 0 ? OR : AND;
    _gates.push_back(gate);
    return _gates.size() - 1;
  }
  std::size_t _GrowEvent(bool isShared) {
    const int n = static_cast<int>(_probabilities.size());
    if (n == _maximumOfEvents || (isShared && n > 0)) return static_cast<std::size_t>(Draw(n));
    const double scale = Draw(3) == 0 ? 1e-3 : 1.0;
    _probabilities.push_back(scale * (1 + Draw(1000)) / 1000.0);
    return _probabilities.size() - 1;
  }
  // What is left of a child when gates with one child give way to it.
  Child _Dereference(Child child) const {
    while (child.isGate && _gates[child.number].children.size() == 1) {
      child = _gates[child.number].children[0];
    }
    return child;
  }
  bool _HasRepeatedChild(const Gate& gate) const {
    std::set<std::pair<bool, std::size_t>> known;
    for (const Child& child : gate.children) {
      const Child final = _Dereference(child);
      if (!known.insert({final.isGate, final.number}).second) return true;
    }
    return false;
  }

  std::mt19937& _random;
  int _maximumOfEvents;
  int _maximumOfGates;
  std::vector<Gate> _gates;  // each after those below it
  std::vector<double> _probabilities;
  std::size_t _top;
};

// What the engine finds for a model. A cutset that is listed twice is a failure.
struct Solution {
  std::set<Subset> cutsets;
  double sum = 0.0;
  int numberOfModules = 0;
};

Solution Solve(const RandomModel& model, const std::string& limits) {
  Solution solution;
  OrvaTestEngine engine;
  EXPECT_EQ(engine.Load(model.ToText()), 0);
  EXPECT_EQ(engine.Run("<build><minimal-cutsets top-event=\"" + model.GetTop() + "\" " + limits +
                       "/></build>"),
            0);
  EXPECT_EQ(engine.GetErrors(), "");
  const OrvaEvent* top = engine.GetEvent(model.GetTop().c_str());
  const OrvaMCSSet* set = top->GetHandle("MCS")->GetMCSSet();
  solution.numberOfModules = top->GetHandle("system")->GetSystem()->GetNumberOfModules();
  set->ComputeSumOfMinimalCutsetProbabilities(solution.sum);
  LumoList leaves;
  set->CollectMinimalCutsets(&leaves);
  for (const OrvaMCSNode* leaf : LumoItems<OrvaMCSNode>(leaves)) {
    Subset cutset = 0;
    for (const OrvaMCSNode* node = leaf; node->GetParent() != nullptr; node = node->GetParent()) {
      if (!node->IsThenSon()) continue;
      const OrvaEvent* event = set->GetManager()->GetEvent(node->GetParent()->GetIndex());
      EXPECT_EQ(event->GetName()[0], 'b');
      cutset |= 1u << std::atoi(event->GetName() + 1);
    }
    EXPECT_TRUE(solution.cutsets.insert(cutset).second) << cutset << " is there twice";
  }
  return solution;
}

TEST(RandomModels, AllMinimalCutsetsAreFound) {
  std::mt19937 random(1);
  int withModules = 0;
  std::size_t numberOfCutsets = 0;
  for (int trial = 0; trial < 2000; ++trial) {
    const RandomModel model(random);
    const std::set<Subset> expected = model.FindMinimalCutsets();
    const Solution solution = Solve(model, "");
    ASSERT_EQ(solution.cutsets, expected) << "trial " << trial << "\n" << model.ToText();
    double sum = 0.0;
    for (const Subset cutset : expected) sum += model.GetProbability(cutset);
    ASSERT_NEAR(solution.sum, sum, 1e-12 * sum) << "trial " << trial;
    withModules += solution.numberOfModules > 0 ? 1 : 0;
    numberOfCutsets += expected.size();
  }
  // The models are worth the trial.
  EXPECT_GT(withModules, 500);
  EXPECT_LT(withModules, 1900);
  EXPECT_GT(numberOfCutsets, 6000u);
}

// What is kept depends on the final cutset alone, whatever modules it passed through: its order
// must not exceed the limit and its probability must reach it, since the order and the highest
// probability of a module's cutsets bound those of what contains it. Rounding decides at the
// limit itself.
TEST(RandomModels, CutoffsKeepExactlyWhatReachesThem) {
  constexpr double TOLERANCE = 1e-9;
  std::mt19937 random(2);
  int kept = 0;
  int refused = 0;
  for (int trial = 0; trial < 1000; ++trial) {
    RandomModel model(random);
    const std::set<Subset> all = model.FindMinimalCutsets();
    // Limits of either kind or of both; probabilities often just that of one of the cutsets.
    const int maximumOrder = trial % 3 == 1 ? 100 : model.Draw(6);
    double minimum = 0.0;
    if (trial % 3 != 0) {
      minimum = std::pow(10.0, -0.01 * model.Draw(600));
      if (model.Draw(2) == 0) {
        minimum =
            model.GetProbability(*std::next(all.begin(), model.Draw(static_cast<int>(all.size()))));
      }
    }
    char limits[80];
    std::snprintf(limits, sizeof limits, "maximum-order=\"%d\" minimum-probability=\"%.17g\"",
                  maximumOrder, minimum);
    const Solution solution = Solve(model, limits);
    double sum = 0.0;
    for (const Subset cutset : all) {
      const double p = model.GetProbability(cutset);
      const bool isKept = solution.cutsets.count(cutset) != 0;
      if (isKept) sum += p;
      ++(isKept ? kept : refused);
      const bool isShort = std::popcount(cutset) <= maximumOrder;
      if (isShort && std::abs(p - minimum) <= TOLERANCE * minimum) continue;
      ASSERT_EQ(isKept, isShort && p >= minimum)
          << "trial " << trial << ", cutset " << cutset << ", " << limits << "\n"
          << model.ToText();
    }
    for (const Subset cutset : solution.cutsets) ASSERT_EQ(all.count(cutset), 1u) << model.ToText();
    ASSERT_NEAR(solution.sum, sum, 1e-12 * (sum + 1e-300)) << "trial " << trial;
  }
  EXPECT_GT(kept, 1000);
  EXPECT_GT(refused, 1000);
}

}  // namespace
