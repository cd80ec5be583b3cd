// Random coherent models of up to 40 basic events, solved by the engine and by decision diagrams,
// which know nothing of the search.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <random>
#include <set>
#include <unordered_map>
#include <vector>

#include "OrvaTestSupport.h"
#include "quantification/OrvaHandle.h"
#include "store/OrvaMCSSet.h"
#include "support/containers/LumoList.h"
#include "system/OrvaSystem.h"

namespace {

using Cutset = std::uint64_t;  // bit i for the basic event b<i>

// Decision diagrams over variables, which are tested in the order of their numbers. A node is read
// as a Boolean function (R. E. Bryant, "Graph-based algorithms for Boolean function manipulation",
// 1986) or as a family of sets, in which a skipped variable is in no set.
class Diagrams {
 public:
  using Node = std::uint64_t;
  static constexpr Node ZERO = 0;  // the function false, the family without a set
  static constexpr Node ONE = 1;   // the function true, the family of the empty set

  struct Fields {
    std::uint64_t variable;
    Node then;
    Node otherwise;
  };
  const Fields& operator[](Node node) const { return _nodes[node]; }

  Node NewVariable(std::uint64_t variable) { return _New(variable, ONE, ZERO); }

  // If f then g, else h.
  Node IfThenElse(Node f, Node g, Node h) {
    if (f == ONE || g == h) return g;
    if (f == ZERO) return h;
    return _Compute(IF_THEN_ELSE, f, g, h, [&] {
      const std::uint64_t x = std::min({_At(f).variable, _At(g).variable, _At(h).variable});
      const Node then = IfThenElse(_Then(f, x), _Then(g, x), _Then(h, x));
      const Node otherwise = IfThenElse(_Else(f, x), _Else(g, x), _Else(h, x));
      return then == otherwise ? then : _New(x, then, otherwise);
    });
  }
  // At least k of the functions from the i-th on are true.
  Node AtLeast(int k, const std::vector<Node>& functions, std::size_t i = 0) {
    if (k <= 0) return ONE;
    if (static_cast<std::size_t>(k) > functions.size() - i) return ZERO;
    return IfThenElse(functions[i], AtLeast(k - 1, functions, i + 1), AtLeast(k, functions, i + 1));
  }

  // The minimal cutsets of a monotone function, and the sets of a family that contain no set of
  // another one (A. Rauzy, "New algorithms for fault trees analysis", 1993).
  Node FindMinimalCutsets(Node f) {
    if (f <= ONE) return f;
    return _Compute(MINIMAL_CUTSETS, f, 0, 0, [&] {
      const Node otherwise = FindMinimalCutsets(_At(f).otherwise);
      const Node then = Without(FindMinimalCutsets(_At(f).then), otherwise);
      return _NewFamily(_At(f).variable, then, otherwise);
    });
  }
  Node Without(Node f, Node g) {
    if (f == ZERO || g == ONE) return ZERO;
    if (f == ONE || g == ZERO) return f;
    if (_At(g).variable < _At(f).variable) return Without(f, _At(g).otherwise);
    return _Compute(WITHOUT, f, g, 0, [&] {
      const bool isShared = _At(f).variable == _At(g).variable;
      const Node inElse = isShared ? _At(g).otherwise : g;
      Node then = Without(_At(f).then, inElse);
      if (isShared) then = Without(then, _At(g).then);
      return _NewFamily(_At(f).variable, then, Without(_At(f).otherwise, inElse));
    });
  }

 private:
  enum Operation : std::uint64_t { NODE, IF_THEN_ELSE, MINIMAL_CUTSETS, WITHOUT };
  static constexpr std::uint64_t NO_VARIABLE = 63;
  static constexpr int BITS = 20;  // of a node number

  // By value: the table may grow during a computation.
  Fields _At(Node node) const { return _nodes[node]; }
  Node _Then(Node f, std::uint64_t x) const { return _At(f).variable == x ? _At(f).then : f; }
  Node _Else(Node f, std::uint64_t x) const { return _At(f).variable == x ? _At(f).otherwise : f; }

  template <class Result>
  Node _Compute(Operation operation, Node a, Node b, Node c, Result result) {
    const std::uint64_t key = ((operation << BITS | a) << BITS | b) << BITS | c;
    const auto known = _known.find(key);
    return known != _known.end() ? known->second : _known[key] = result();
  }
  Node _New(std::uint64_t variable, Node then, Node otherwise) {
    return _Compute(NODE, variable, then, otherwise, [&] {
      _nodes.push_back({variable, then, otherwise});
      EXPECT_LE(_nodes.size(), std::size_t{1} << BITS);
      return static_cast<Node>(_nodes.size() - 1);
    });
  }
  Node _NewFamily(std::uint64_t variable, Node then, Node otherwise) {
    return then == ZERO ? otherwise : _New(variable, then, otherwise);
  }

  std::vector<Fields> _nodes = {{NO_VARIABLE, ZERO, ZERO}, {NO_VARIABLE, ONE, ONE}};
  std::unordered_map<std::uint64_t, Node> _known;
};

// Probabilities are powers of two: products are exact in whatever order they are made, and so are
// comparisons with limits, which are powers of two as well.
class RandomModel {
 public:
  explicit RandomModel(std::mt19937& random) : _random(random) {
    const int numberOfEvents = 10 + Draw(31);
    for (int i = 0; i < numberOfEvents; ++i) _exponents.push_back(Draw(6));
    // Gates take up what is in no gate yet, until one of them is left: the top.
    std::vector<int> roots(_exponents.size());
    std::iota(roots.begin(), roots.end(), 0);
    const int sharing = 2 + Draw(6);
    while (roots.size() > 1) _AddGate(roots, sharing);
    _OrderEvents(roots[0]);
  }

  int Draw(int n) { return std::uniform_int_distribution<int>(0, n - 1)(_random); }

  std::string GetTop() const { return _GetName(_GetNumberOfEvents() + GetNumberOfGates() - 1); }
  int GetNumberOfGates() const { return static_cast<int>(_gates.size()); }
  int GetExponent(int event) const { return _exponents[static_cast<std::size_t>(event)]; }
  // The event of each variable of the diagrams.
  const std::vector<int>& GetOrder() const { return _order; }

  std::string ToText() const {
    std::string text;
    for (int i = 0; i < _GetNumberOfEvents() + GetNumberOfGates(); ++i) {
      const bool isEvent = i < _GetNumberOfEvents();
      const std::string element = isEvent ? "define-basic-event" : "define-gate";
      text += "<" + element + " name=\"" + _GetName(i) + "\">";
      text += isEvent
                  ? "<float value=\"" + std::to_string(std::ldexp(1.0, -GetExponent(i))) + "\"/>"
                  : _ToText(_GetGate(i));
      text += "</" + element + ">\n";
    }
    return text;
  }

  Diagrams::Node ToDiagram(Diagrams& diagrams) const {
    std::vector<Diagrams::Node> functions(_exponents.size());
    for (std::size_t i = 0; i < _order.size(); ++i) {
      functions[static_cast<std::size_t>(_order[i])] = diagrams.NewVariable(i);
    }
    for (const Gate& gate : _gates) {
      std::vector<Diagrams::Node> children;
      for (const int child : gate.children) {
        children.push_back(functions[static_cast<std::size_t>(child)]);
      }
      functions.push_back(diagrams.AtLeast(gate.min, children));
    }
    return functions.back();
  }

 private:
  struct Gate {
    const char* element;
    int min;
    std::vector<int> children;  // basic events, and behind them gates
  };

  int _GetNumberOfEvents() const { return static_cast<int>(_exponents.size()); }
  const Gate& _GetGate(int i) const {
    return _gates[static_cast<std::size_t>(i - _GetNumberOfEvents())];
  }
  std::string _GetName(int i) const {
    const bool isEvent = i < _GetNumberOfEvents();
    return isEvent ? "b" + std::to_string(i) : "g" + std::to_string(i - _GetNumberOfEvents());
  }

  // A few roots, and now and then an event or a gate that has a parent already.
  void _AddGate(std::vector<int>& roots, int sharing) {
    Gate gate;
    const int numberOfRoots = std::min(2 + Draw(3), static_cast<int>(roots.size()));
    for (int i = 0; i < numberOfRoots; ++i) {
      std::swap(roots[static_cast<std::size_t>(Draw(static_cast<int>(roots.size())))],
                roots.back());
      gate.children.push_back(roots.back());
      roots.pop_back();
    }
    while (Draw(sharing) == 0) {
      const int shared = Draw(_GetNumberOfEvents() + GetNumberOfGates());
      const auto isShared = [&](int child) { return child == shared; };
      if (std::none_of(gate.children.begin(), gate.children.end(), isShared)) {
        gate.children.push_back(shared);
      }
    }
    const int size = static_cast<int>(gate.children.size());
    const int kind = Draw(3);
    gate.element = kind == 0 ? "or" : kind == 1 ? "and" : "atleast";
    gate.min = kind == 0 ? 1 : kind == 1 ? size : 1 + Draw(size);
    roots.push_back(_GetNumberOfEvents() + GetNumberOfGates());
    _gates.push_back(gate);
  }

  // Events in the order in which they are reached from the top: a fair order for diagrams.
  void _OrderEvents(int i) {
    if (i >= _GetNumberOfEvents()) {
      for (const int child : _GetGate(i).children) _OrderEvents(child);
    } else if (std::find(_order.begin(), _order.end(), i) == _order.end()) {
      _order.push_back(i);
    }
  }

  std::string _ToText(const Gate& gate) const {
    std::string text = std::string("<") + gate.element;
    if (text == "<atleast") text += " min=\"" + std::to_string(gate.min) + "\"";
    text += ">";
    for (const int child : gate.children) text += "<event name=\"" + _GetName(child) + "\"/>";
    return text + "</" + gate.element + ">";
  }

  std::mt19937& _random;
  std::vector<int> _exponents;  // of the basic events: the probability is 2 to the minus that
  std::vector<Gate> _gates;     // each after those below it; the top is the last one
  std::vector<int> _order;
};

// The minimal cutsets of a model as a family, and those of them within limits.
class Cutsets {
 public:
  explicit Cutsets(const RandomModel& model)
      : _model(model), _root(_diagrams.FindMinimalCutsets(model.ToDiagram(_diagrams))) {}

  // How many there are of each cost, when every event costs what the function says.
  template <class Cost>
  std::vector<double> Count(Cost cost) const {
    std::unordered_map<Diagrams::Node, std::vector<double>> counts;
    return _Count(_root, cost, counts);
  }
  std::set<Cutset> Collect(int maximumOrder, int maximumExponent) const {
    std::set<Cutset> result;
    _Collect(_root, 0, maximumOrder, maximumExponent, result);
    return result;
  }

 private:
  int _GetEvent(Diagrams::Node node) const { return _model.GetOrder()[_diagrams[node].variable]; }

  template <class Cost>
  std::vector<double> _Count(
      Diagrams::Node node, Cost cost,
      std::unordered_map<Diagrams::Node, std::vector<double>>& counts) const {
    if (node == Diagrams::ZERO) return {};
    if (node == Diagrams::ONE) return {1.0};
    const auto known = counts.find(node);
    if (known != counts.end()) return known->second;
    std::vector<double> sum = _Count(_diagrams[node].otherwise, cost, counts);
    const std::vector<double> then = _Count(_diagrams[node].then, cost, counts);
    const auto shift = static_cast<std::size_t>(cost(_GetEvent(node)));
    sum.resize(std::max(sum.size(), then.size() + shift));
    for (std::size_t i = 0; i < then.size(); ++i) sum[i + shift] += then[i];
    return counts[node] = sum;
  }

  // Both limits only fall from node to node.
  void _Collect(Diagrams::Node node, Cutset path, int order, int exponent,
                std::set<Cutset>& result) const {
    if (node == Diagrams::ZERO || order < 0 || exponent < 0) return;
    if (node == Diagrams::ONE) {
      result.insert(path);
      return;
    }
    const int event = _GetEvent(node);
    _Collect(_diagrams[node].then, path | Cutset{1} << event, order - 1,
             exponent - _model.GetExponent(event), result);
    _Collect(_diagrams[node].otherwise, path, order, exponent, result);
  }

  const RandomModel& _model;
  Diagrams _diagrams;
  Diagrams::Node _root;
};

// What the engine finds. A cutset that is listed twice is a failure.
struct Solution {
  std::set<Cutset> cutsets;
  double sum = 0.0;
  bool hasModules = false;
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
  solution.hasModules = top->GetHandle("system")->GetSystem()->GetNumberOfModules() > 0;
  set->ComputeSumOfMinimalCutsetProbabilities(solution.sum);
  LumoList leaves;
  set->CollectMinimalCutsets(&leaves);
  for (const OrvaMCSNode* leaf : LumoItems<OrvaMCSNode>(leaves)) {
    Cutset cutset = 0;
    for (const OrvaMCSNode* node = leaf; node->GetParent() != nullptr; node = node->GetParent()) {
      if (!node->IsThenSon()) continue;
      const char* name = set->GetManager()->GetEvent(node->GetParent()->GetIndex())->GetName();
      EXPECT_EQ(name[0], 'b');
      cutset |= Cutset{1} << std::atoi(name + 1);
    }
    EXPECT_TRUE(solution.cutsets.insert(cutset).second) << cutset << " is there twice";
  }
  return solution;
}

constexpr double MOST_CUTSETS = 5000.0;

// The cost of one of the cutsets, drawn among the cheapest, or less where too many cost no more.
int DrawLimit(RandomModel& model, const std::vector<double>& counts) {
  const double total = std::accumulate(counts.begin(), counts.end(), 0.0);
  const int rank = model.Draw(static_cast<int>(std::min(total, 500.0)));
  double sum = counts[0];
  int limit = 0;
  while (sum <= rank) sum += counts[static_cast<std::size_t>(++limit)];
  return sum <= MOST_CUTSETS ? limit : limit - 1;
}

TEST(DecisionDiagrams, YieldTheMinimalCutsetsOfTheSearch) {
  constexpr int NO_LIMIT = 1000;
  std::mt19937 random(3);
  int withModules = 0;
  int withoutLimits = 0;
  int truncated = 0;
  for (int trial = 0; trial < 800; ++trial) {
    RandomModel model(random);
    const Cutsets cutsets(model);
    const auto getExponent = [&](int event) { return model.GetExponent(event); };
    const std::vector<double> counts = cutsets.Count([](int) { return 1; });
    const double total = std::accumulate(counts.begin(), counts.end(), 0.0);
    // Bit 0 for a limit of the order, bit 1 for one of the probability.
    const int kind = total > MOST_CUTSETS ? 1 + trial % 3 : trial % 4;
    const int order = (kind & 1) != 0 ? DrawLimit(model, counts) : NO_LIMIT;
    const int exponent = (kind & 2) != 0 ? DrawLimit(model, cutsets.Count(getExponent)) : NO_LIMIT;
    const std::set<Cutset> expected = cutsets.Collect(order, exponent);
    char limits[100];
    std::snprintf(limits, sizeof limits, "maximum-order=\"%d\" minimum-probability=\"%.17g\"",
                  order, std::ldexp(1.0, -exponent));
    const Solution solution = Solve(model, kind == 0 ? "" : limits);
    ASSERT_EQ(solution.cutsets, expected) << "trial " << trial << limits << "\n" << model.ToText();
    double sum = 0.0;
    for (const Cutset cutset : expected) {
      int exponentOfCutset = 0;
      for (Cutset rest = cutset; rest != 0; rest &= rest - 1) {
        exponentOfCutset += model.GetExponent(std::countr_zero(rest));
      }
      sum += std::ldexp(1.0, -exponentOfCutset);
    }
    ASSERT_NEAR(solution.sum, sum, 1e-12 * sum) << "trial " << trial;
    withModules += solution.hasModules ? 1 : 0;
    withoutLimits += kind == 0 ? 1 : 0;
    truncated += static_cast<double>(expected.size()) < total ? 1 : 0;
  }
  // The models are worth the trial.
  EXPECT_GT(withModules, 400);
  EXPECT_GT(withoutLimits, 100);
  EXPECT_GT(truncated, 200);
}

}  // namespace
