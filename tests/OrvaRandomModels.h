#pragma once

// Random models, and what is true of them, found without the engine: by going through all states,
// or with decision diagrams where there are too many. A test of another way to solve models is a
// loop over models that compares its results with FindMinimalCutsets, OrvaFamily::Collect,
// GetProbabilityOfStates or OrvaDiagrams::GetProbability.

#include <bit>
#include <cstdint>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <unordered_map>

#include "OrvaTestSupport.h"
#include "quantification/OrvaHandle.h"
#include "store/OrvaMCSSet.h"

using OrvaEventSet = std::uint64_t;  // bit i for the basic event b<i>

// Decision diagrams over variables, which are tested in the order of their numbers. A node is read
// as a Boolean function (R. E. Bryant, "Graph-based algorithms for Boolean function manipulation",
// 1986) or as a family of sets, in which a skipped variable is in no set.
class OrvaDiagrams {
 public:
  using Node = std::uint64_t;
  static constexpr Node ZERO = 0;  // the function false, the family without a set
  static constexpr Node ONE = 1;   // the function true, the family of the empty set

  struct Fields {
    std::uint64_t variable;
    Node then;
    Node otherwise;
  };
  // By value: the table may grow during a computation.
  Fields operator[](Node node) const { return _nodes[node]; }

  Node NewVariable(std::uint64_t variable) { return _New(variable, ONE, ZERO); }
  Node Not(Node f) { return IfThenElse(f, ZERO, ONE); }

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

  // That a function is true, for the probabilities of the variables.
  double GetProbability(Node f, const std::vector<double>& probabilities) const {
    std::unordered_map<Node, double> known = {{ZERO, 0.0}, {ONE, 1.0}};
    return _GetProbability(f, probabilities, known);
  }

 private:
  enum Operation : std::uint64_t { NODE, IF_THEN_ELSE, MINIMAL_CUTSETS, WITHOUT };
  static constexpr std::uint64_t NO_VARIABLE = 63;
  static constexpr int BITS = 20;  // of a node number

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
  double _GetProbability(Node f, const std::vector<double>& probabilities,
                         std::unordered_map<Node, double>& known) const {
    const auto found = known.find(f);
    if (found != known.end()) return found->second;
    const double p = probabilities[_At(f).variable];
    return known[f] = p * _GetProbability(_At(f).then, probabilities, known) +
                      (1.0 - p) * _GetProbability(_At(f).otherwise, probabilities, known);
  }

  std::vector<Fields> _nodes = {{NO_VARIABLE, ZERO, ZERO}, {NO_VARIABLE, ONE, ONE}};
  std::unordered_map<std::uint64_t, Node> _known;
};

// A model of gates "or", "and" and "atleast" with shared, repeated and, if wanted, negated children
// and with gates of one child. The probabilities make all products exact, in whatever order: they
// are powers of two, 2 to the minus their exponents, or eighths.
class OrvaRandomModel {
 public:
  struct Shape {
    int fewestEvents = 5;
    int mostEvents = 12;  // at most 60; for states up to 20 or so
    bool hasNegations = false;
    bool hasEighths = false;  // 0 and 1 among them
  };

  OrvaRandomModel(std::mt19937& random, const Shape& shape) : _random(random), _shape(shape) {
    do {
      _Grow();
      // The alias of a basic event is an empty equation, and always true: as it is defined.
    } while (_GetTarget(_GetSize() - 1) < GetNumberOfEvents());
    _OrderEvents(_GetSize() - 1);
  }

  int Draw(int n) { return std::uniform_int_distribution<int>(0, n - 1)(_random); }

  int GetNumberOfEvents() const { return static_cast<int>(_exponents.size()); }
  int GetExponent(int event) const { return _exponents[static_cast<std::size_t>(event)]; }
  double GetProbability(int event) const {
    return _shape.hasEighths ? GetExponent(event) / 8.0 : std::ldexp(1.0, -GetExponent(event));
  }
  double GetProbabilityOfSet(OrvaEventSet set) const {
    double product = 1.0;
    for (; set != 0; set &= set - 1) product *= GetProbability(std::countr_zero(set));
    return product;
  }
  // The event of each variable of the diagrams.
  const std::vector<int>& GetOrder() const { return _order; }

  // In short: b0, b1, ... are basic events, g0, g1, ... gates.
  std::string GetTop() const { return _GetName(_GetSize() - 1); }
  std::string ToText() const {
    std::string text;
    for (int i = 0; i < GetNumberOfEvents(); ++i) {
      text += "#" + _GetName(i) + "=" + std::to_string(GetProbability(i)) + ";";
    }
    for (const Gate& gate : _gates) {
      const std::string atleast = "atleast" + std::to_string(gate.min);
      text += "g" + std::to_string(&gate - _gates.data()) + "=" +
              (gate.kind == OR    ? "or"
               : gate.kind == AND ? "and"
                                  : atleast);
      char separator = '(';
      for (const Child& child : gate.children) {
        text += std::exchange(separator, ',') + std::string(child.isNegated ? "-" : "") +
                _GetName(child.number);
      }
      text += ");\n";
    }
    text.resize(text.size() - 2);
    return text;
  }

  // By all states: those in which the top is true.
  std::vector<bool> FindTrueStates() const {
    const OrvaEventSet size = OrvaEventSet{1} << GetNumberOfEvents();
    std::vector<bool> states(size);
    std::vector<bool> values(static_cast<std::size_t>(_GetSize()));
    for (OrvaEventSet state = 0; state < size; ++state) {
      for (int i = 0; i < GetNumberOfEvents(); ++i) values[At(i)] = (state >> i & 1) != 0;
      for (int i = GetNumberOfEvents(); i < _GetSize(); ++i) {
        int count = 0;
        for (const Child& child : _GetGate(i).children) {
          count += values[At(child.number)] != child.isNegated ? 1 : 0;
        }
        values[At(i)] = count >= _GetGate(i).min;
      }
      states[state] = values.back();
    }
    return states;
  }
  double GetProbabilityOfStates() const {
    const std::vector<bool> states = FindTrueStates();
    double sum = 0.0;
    for (OrvaEventSet state = 0; state < states.size(); ++state) {
      double product = states[state] ? 1.0 : 0.0;
      for (int i = 0; i < GetNumberOfEvents(); ++i) {
        product *= (state >> i & 1) != 0 ? GetProbability(i) : 1.0 - GetProbability(i);
      }
      sum += product;
    }
    return sum;
  }
  // Of a model without negations: the true states in which no event can be spared.
  std::set<OrvaEventSet> FindMinimalCutsets() const {
    const std::vector<bool> states = FindTrueStates();
    std::set<OrvaEventSet> cutsets;
    for (OrvaEventSet state = 0; state < states.size(); ++state) {
      bool isMinimal = states[state];
      for (OrvaEventSet rest = state; rest != 0; rest &= rest - 1) {
        isMinimal = isMinimal && !states[state & ~(rest & (~rest + 1))];
      }
      if (isMinimal) cutsets.insert(state);
    }
    return cutsets;
  }

  OrvaDiagrams::Node ToDiagram(OrvaDiagrams& diagrams) const {
    std::vector<OrvaDiagrams::Node> functions(_exponents.size());
    for (std::size_t i = 0; i < _order.size(); ++i) {
      functions[At(_order[i])] = diagrams.NewVariable(i);
    }
    for (const Gate& gate : _gates) {
      std::vector<OrvaDiagrams::Node> children;
      for (const Child& child : gate.children) {
        const OrvaDiagrams::Node f = functions[At(child.number)];
        children.push_back(child.isNegated ? diagrams.Not(f) : f);
      }
      functions.push_back(diagrams.AtLeast(gate.min, children));
    }
    return functions.back();
  }

 private:
  enum Kind { OR, AND, ATLEAST };
  struct Child {
    int number;  // basic events, and behind them gates
    bool isNegated;
  };
  struct Gate {
    Kind kind;
    int min;
    std::vector<Child> children;
  };

  static std::size_t At(int i) { return static_cast<std::size_t>(i); }
  int _GetSize() const { return GetNumberOfEvents() + static_cast<int>(_gates.size()); }
  const Gate& _GetGate(int i) const { return _gates[At(i - GetNumberOfEvents())]; }
  std::string _GetName(int i) const {
    const bool isEvent = i < GetNumberOfEvents();
    return isEvent ? "b" + std::to_string(i) : "g" + std::to_string(i - GetNumberOfEvents());
  }

  // Gates take up what is in no gate yet, until one of them is left: the top.
  void _Grow() {
    _gates.clear();
    _exponents.clear();
    const int n = _shape.fewestEvents + Draw(_shape.mostEvents - _shape.fewestEvents + 1);
    for (int i = 0; i < n; ++i) {
      const int eighth = Draw(3) == 0 ? Draw(9) : Draw(3);
      _exponents.push_back(_shape.hasEighths ? eighth : Draw(6));
    }
    std::vector<int> roots(_exponents.size());
    std::iota(roots.begin(), roots.end(), 0);
    const int sharing = 2 + Draw(6);
    while (roots.size() > 1 || Draw(12) == 0) _AddGate(roots, sharing);
  }
  // A few roots, and now and then an event or a gate that has a parent already, or a child again.
  void _AddGate(std::vector<int>& roots, int sharing) {
    Gate gate;
    const int wanted = Draw(12) == 0 ? 1 : 2 + Draw(3);
    for (int i = std::min(wanted, static_cast<int>(roots.size())); i > 0; --i) {
      std::swap(roots[At(Draw(static_cast<int>(roots.size())))], roots.back());
      gate.children.push_back({roots.back(), _IsNegated()});
      roots.pop_back();
    }
    while (wanted > 1 && Draw(sharing) == 0) gate.children.push_back({Draw(_GetSize()), false});
    if (wanted > 1 && Draw(8) == 0) gate.children.push_back(gate.children[0]);
    const int size = static_cast<int>(gate.children.size());
    std::set<int> targets;  // what counts twice is for "or" and "and" only
    for (const Child& child : gate.children) targets.insert(_GetTarget(child.number));
    gate.kind = static_cast<Kind>(Draw(std::ssize(targets) == size ? 3 : 2));
    gate.min = gate.kind == OR ? 1 : gate.kind == AND ? size : 1 + Draw(size);
    roots.push_back(_GetSize());
    _gates.push_back(gate);
  }
  bool _IsNegated() { return _shape.hasNegations && Draw(4) == 0; }
  // What is left of a child when gates with one child give way to it.
  int _GetTarget(int i) const {
    while (i >= GetNumberOfEvents() && _GetGate(i).children.size() == 1) {
      i = _GetGate(i).children[0].number;
    }
    return i;
  }
  // Events in the order in which they are reached from the top: a fair order for diagrams.
  void _OrderEvents(int i) {
    if (i >= GetNumberOfEvents()) {
      for (const Child& child : _GetGate(i).children) _OrderEvents(child.number);
    } else if (std::find(_order.begin(), _order.end(), i) == _order.end()) {
      _order.push_back(i);
    }
  }

  std::mt19937& _random;
  const Shape _shape;
  std::vector<int> _exponents;  // of the basic events, or their eighths
  std::vector<Gate> _gates;     // each after those below it; the top is the last one
  std::vector<int> _order;
};

// The minimal cutsets of a model without negations as a family, and those of them within limits.
class OrvaFamily {
 public:
  explicit OrvaFamily(const OrvaRandomModel& model)
      : _model(model), _root(_diagrams.FindMinimalCutsets(model.ToDiagram(_diagrams))) {}

  // How many there are of each order, or of each sum of exponents.
  std::vector<double> CountOrders() const { return _Count(_root, false); }
  std::vector<double> CountExponents() const { return _Count(_root, true); }
  std::set<OrvaEventSet> Collect(int maximumOrder, int maximumExponent) const {
    std::set<OrvaEventSet> result;
    _Collect(_root, 0, maximumOrder, maximumExponent, result);
    return result;
  }

 private:
  using Node = OrvaDiagrams::Node;
  int _GetEvent(Node node) const { return _model.GetOrder()[_diagrams[node].variable]; }

  std::vector<double> _Count(Node node, bool isOfExponents) const {
    if (node == OrvaDiagrams::ZERO) return {};
    if (node == OrvaDiagrams::ONE) return {1.0};
    const auto known = _counts.find({node, isOfExponents});
    if (known != _counts.end()) return known->second;
    std::vector<double> sum = _Count(_diagrams[node].otherwise, isOfExponents);
    const std::vector<double> then = _Count(_diagrams[node].then, isOfExponents);
    const int cost = isOfExponents ? _model.GetExponent(_GetEvent(node)) : 1;
    const auto shift = static_cast<std::size_t>(cost);
    sum.resize(std::max(sum.size(), then.size() + shift));
    for (std::size_t i = 0; i < then.size(); ++i) sum[i + shift] += then[i];
    return _counts[{node, isOfExponents}] = sum;
  }
  // Both limits only fall from node to node.
  void _Collect(Node node, OrvaEventSet path, int order, int exponent,
                std::set<OrvaEventSet>& result) const {
    if (node == OrvaDiagrams::ZERO || order < 0 || exponent < 0) return;
    if (node == OrvaDiagrams::ONE) {
      result.insert(path);
      return;
    }
    const int event = _GetEvent(node);
    _Collect(_diagrams[node].then, path | OrvaEventSet{1} << event, order - 1,
             exponent - _model.GetExponent(event), result);
    _Collect(_diagrams[node].otherwise, path, order, exponent, result);
  }

  const OrvaRandomModel& _model;
  OrvaDiagrams _diagrams;
  Node _root;
  mutable std::map<std::pair<Node, bool>, std::vector<double>> _counts;
};

// What the engine finds for a model, with attributes of the build. A cutset that is listed twice is
// a failure.
struct OrvaSolution {
  OrvaSolution(const OrvaRandomModel& model, const std::string& attributes) {
    OrvaTestEngine engine;
    engine.Define(model.ToText());
    engine.MustRun("<build><minimal-cutsets top-event=\"" + model.GetTop() + "\" " + attributes +
                   "/></build>");
    const OrvaEvent* top = engine.GetEvent(model.GetTop().c_str());
    const OrvaMCSSet* set = top->GetHandle("MCS")->GetMCSSet();
    hasModules = top->GetHandle("system")->GetSystem()->GetNumberOfModules() > 0;
    set->ComputeSumOfMinimalCutsetProbabilities(sum);
    LumoList leaves;
    set->CollectMinimalCutsets(&leaves);
    for (const OrvaMCSNode* leaf : LumoItems<OrvaMCSNode>(leaves)) {
      OrvaEventSet cutset = 0;
      for (const OrvaMCSNode* node = leaf; node->GetParent() != nullptr; node = node->GetParent()) {
        if (!node->IsThenSon()) continue;
        const char* name = set->GetManager()->GetEvent(node->GetParent()->GetIndex())->GetName();
        EXPECT_EQ(name[0], 'b');
        cutset |= OrvaEventSet{1} << std::atoi(name + 1);
      }
      EXPECT_TRUE(cutsets.insert(cutset).second) << cutset << " is there twice";
    }
  }
  std::set<OrvaEventSet> cutsets;
  double sum = 0.0;
  bool hasModules = false;
};
