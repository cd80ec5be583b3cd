// Random coherent models, read from text and solved by the engine, against the minimal cutsets
// found by trying all subsets of the basic events.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iomanip>
#include <random>
#include <set>
#include <vector>

#include "OrvaTestSupport.h"
#include "quantification/OrvaHandle.h"
#include "store/OrvaMCSSet.h"
#include "support/containers/LumoList.h"
#include "system/OrvaSystem.h"

namespace {

using Subset = std::uint32_t;  // of the basic events

class RandomModel {
 public:
  explicit RandomModel(std::mt19937& random, bool hasEighths = false)
      : _random(random), _hasEighths(hasEighths) {
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

  std::size_t GetNumberOfEvents() const { return _probabilities.size(); }
  double GetProbabilityOfEvent(std::size_t i) const { return _probabilities[i]; }
  // Events are named after their numbers, b0, b1, ... and g0, g1, ...; the top has the last gate.
  std::string GetTop() const { return "g" + std::to_string(_top); }
  std::string ToText() const {
    std::ostringstream text;
    for (std::size_t i = 0; i < _gates.size(); ++i) {
      const int min = _gates[i].min;
      text << 'g' << i << (min == OR ? "=or" : min == AND ? "=and" : "=atleast");
      if (min > 0) text << min;
      char separator = '(';
      for (const Child& child : _gates[i].children) {
        text << std::exchange(separator, ',') << (child.isGate ? 'g' : 'b') << child.number;
      }
      text << ");\n";
    }
    for (std::size_t i = 0; i < _probabilities.size(); ++i) {
      text << "#b" << i << '=' << std::setprecision(17) << std::showpoint << _probabilities[i]
           << ";\n";
    }
    return text.str();
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
    // Small ones as a rule; among eighths, 0 and 1 happen.
    const double eighth = (Draw(3) == 0 ? Draw(9) : Draw(3)) / 8.0;
    _probabilities.push_back(_hasEighths ? eighth : scale * (1 + Draw(1000)) / 1000.0);
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
  const bool _hasEighths;
  int _maximumOfEvents;
  int _maximumOfGates;
  std::vector<Gate> _gates;  // each after those below it
  std::vector<double> _probabilities;
  std::size_t _top;
};

// What the engine finds for a model. A cutset that is listed twice is a failure.
std::set<Subset> Solve(const RandomModel& model, const std::string& limits, double& sum,
                       int& numberOfModules) {
  OrvaTestEngine engine;
  engine.Define(model.ToText());
  engine.MustRun("<build><minimal-cutsets top-event=\"" + model.GetTop() + "\" " + limits +
                 "/></build>");
  const OrvaEvent* top = engine.GetEvent(model.GetTop().c_str());
  const OrvaMCSSet* set = top->GetHandle("MCS")->GetMCSSet();
  numberOfModules = top->GetHandle("system")->GetSystem()->GetNumberOfModules();
  set->ComputeSumOfMinimalCutsetProbabilities(sum);
  std::set<Subset> cutsets;
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
    EXPECT_TRUE(cutsets.insert(cutset).second) << cutset << " is there twice";
  }
  return cutsets;
}

// What is kept depends on the final cutset alone, whatever modules it passed through: its order
// must not exceed the limit and its probability must reach it, since the order and the highest
// probability of a module's cutsets bound those of what contains it. Rounding decides at the
// limit itself. Two of three models have no limits.
TEST(RandomModels, AllMinimalCutsetsWithinTheLimitsAreFound) {
  constexpr double TOLERANCE = 1e-9;
  std::mt19937 random(1);
  int withModules = 0, kept = 0, refused = 0;
  for (int trial = 0; trial < 3000; ++trial) {
    RandomModel model(random);
    const std::set<Subset> all = model.FindMinimalCutsets();
    // Limits of either kind or of both; probabilities often just that of one of the cutsets.
    int maximumOrder = 100;
    double minimum = 0.0;
    char limits[80] = "";
    if (trial % 3 == 0) {
      if (trial % 9 != 3) maximumOrder = model.Draw(6);
      if (trial % 9 != 0) minimum = std::pow(10.0, -0.01 * model.Draw(600));
      if (minimum > 0.0 && model.Draw(2) == 0) {
        minimum =
            model.GetProbability(*std::next(all.begin(), model.Draw(static_cast<int>(all.size()))));
      }
      std::snprintf(limits, sizeof limits, "maximum-order=\"%d\" minimum-probability=\"%.17g\"",
                    maximumOrder, minimum);
    }
    double found = 0.0, sum = 0.0;
    int numberOfModules = 0;
    const std::set<Subset> cutsets = Solve(model, limits, found, numberOfModules);
    for (const Subset cutset : all) {
      const double p = model.GetProbability(cutset);
      const bool isKept = cutsets.count(cutset) != 0;
      if (isKept) sum += p;
      ++(isKept ? kept : refused);
      const bool isShort = std::popcount(cutset) <= maximumOrder;
      if (isShort && minimum > 0.0 && std::abs(p - minimum) <= TOLERANCE * minimum) continue;
      ASSERT_EQ(isKept, isShort && p >= minimum)
          << "trial " << trial << ", cutset " << cutset << ", " << limits << "\n"
          << model.ToText();
    }
    for (const Subset cutset : cutsets) ASSERT_EQ(all.count(cutset), 1u) << model.ToText();
    ASSERT_NEAR(found, sum, 1e-12 * (sum + 1e-300)) << "trial " << trial;
    withModules += numberOfModules > 0 ? 1 : 0;
  }
  // The models are worth the trial.
  EXPECT_GT(withModules, 750);
  EXPECT_LT(withModules, 2850);
  EXPECT_GT(kept, 7000);
  EXPECT_GT(refused, 1000);
}

// Importance factors by their definitions, over the cutsets found by brute force. With eighths all
// sums and products are exact, whatever their order.
TEST(RandomModels, ImportanceFactorsAreThoseOfTheCutsets) {
  std::mt19937 random(6);
  int noProbability = 0, clamped = 0, noReduction = 0, negative = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const RandomModel model(random, true);
    const std::set<Subset> cutsets = model.FindMinimalCutsets();
    OrvaTestEngine engine;
    engine.Define(model.ToText());
    engine.MustRun("<set><option name=\"top-event\" value=\"" + model.GetTop() +
                   "\"/></set><build><minimal-cutsets/></build>"
                   "<compute><importance-factors output=\"importance.txt\""
                   " print-conditional-probability-1=\"on\" print-conditional-probability-0=\"on\""
                   " print-Fussel-Vesely-importance-factor=\"on\"/></compute>");
    const auto rows = OrvaTestEngine::ReadTable("importance.txt");
    ASSERT_EQ(rows.size(), model.GetNumberOfEvents() + 3);  // in an order of their own
    double sum = 0.0;
    for (const Subset cutset : cutsets) sum += model.GetProbability(cutset);
    const double top = std::min(sum, 1.0);
    EXPECT_EQ(rows[1][2], OrvaPrint(top));
    clamped += sum > 1.0 ? 1 : 0;
    noProbability += top == 0.0 ? 1 : 0;
    std::set<std::size_t> events;
    for (auto row = rows.begin() + 3; row != rows.end(); ++row) {
      const std::size_t event = std::stoul(row->at(0).substr(1));
      EXPECT_TRUE(events.insert(event).second);
      double occurrences = 0.0, mif = 0.0;
      for (const Subset cutset : cutsets) {
        if ((cutset >> event & 1) == 0) continue;
        occurrences += 1.0;
        mif += model.GetProbability(cutset & ~(1u << event));
      }
      const double p = model.GetProbabilityOfEvent(event);
      const double with = top - p * mif + mif, without = top - p * mif;
      const auto overTop = [&](double x) { return top == 0.0 ? 0.0 : x / top; };
      const double rrw = without == 0.0 ? 0.0 : top / without;
      const double expected[] = {occurrences,
                                 p,
                                 with,
                                 without,
                                 mif,
                                 overTop(p * mif),
                                 overTop(p * with),
                                 overTop(with),
                                 rrw,
                                 overTop(p * with)};
      for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(row->at(i + 1), OrvaPrint(expected[i])) << rows[2][i + 1] << model.ToText();
      }
      noReduction += top > 0.0 && without == 0.0 ? 1 : 0;
      negative += without < 0.0 ? 1 : 0;
    }
  }
  // The models are worth the trial.
  EXPECT_GT(noProbability, 20);
  EXPECT_GT(clamped, 20);
  EXPECT_GT(noReduction, 20);
  EXPECT_GT(negative, 0);
}

}  // namespace
