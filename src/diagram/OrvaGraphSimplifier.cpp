// Three rewritings, each repeated while it changes something.
//
// Canonical gates: a reference to a gate of one argument becomes one to the argument; repeated
// arguments of and and or go; 1 of n is or, n of n is and; of gates that say the same, one stays.
//
// Merging: an and below an and (an or below an or) that stands nowhere else gives its arguments to
// the gate above. What is left to the diagrams is then one operation of many arguments, which can
// be taken smallest first.
//
// Companions: arguments that stand in exactly the same gates, all of one operator, become one new
// gate of that operator. Nothing outside it uses its arguments, so that it is a module: the
// diagrams above see one variable instead of many. Of all three this one has the largest effect, on
// models of redundant trains over groups of events: a factor of 200 in one of them.
#include "diagram/OrvaGraphSimplifier.h"

#include <algorithm>
#include <utility>

using Literal = OrvaDiagramGraph::Literal;
using Gate = OrvaDiagramGraph::Gate;

namespace {

// A round can make work for the next one. Graphs that go on longer stay correct as they are.
constexpr int MAXIMUM_NUMBER_OF_ROUNDS = 16;

std::uint64_t Mix(std::uint64_t hash, std::uint64_t word) {
  constexpr std::uint64_t MULTIPLIER = 0x9e3779b97f4a7c15;  // 2^64 over the golden ratio
  hash = (hash ^ word) * MULTIPLIER;
  return hash ^ (hash >> 32);
}

std::uint64_t Hash(const Gate& gate) {
  std::uint64_t hash = Mix(gate.type, static_cast<std::uint64_t>(gate.min));
  for (const Literal argument : gate.arguments) hash = Mix(hash, argument.GetCode());
  return hash;
}

bool AreEqual(const Gate& a, const Gate& b) {
  return a.type == b.type && a.min == b.min && a.arguments == b.arguments;
}

template <class Step>
void Repeat(Step step) {
  for (int i = 0; i < MAXIMUM_NUMBER_OF_ROUNDS && step(); ++i) continue;
}

}  // namespace

void OrvaGraphSimplifier::Simplify() {
  Repeat([this] {
    Repeat([this] { return _Canonicalize(); });
    return _MergeNestedGates();
  });
  Repeat([this] {
    const bool isChanged = _GatherCompanions();
    if (isChanged) _Canonicalize();
    return isChanged;
  });
}

// Gates below come first, so that a replacement is final when it is met.
bool OrvaGraphSimplifier::_Canonicalize() {
  const std::vector<std::uint32_t> order = _graph.CollectGatesInPostOrder();
  _replacements.resize(_graph.gates.size());
  EqualGates known;
  known.reserve(order.size());
  bool isChanged = false;
  for (const std::uint32_t number : order) {
    isChanged = _CanonicalizeGate(_graph.gates[number]) || isChanged;
    isChanged = _ReplaceGate(number, known) || isChanged;
  }
  if (_graph.top.IsGate()) {
    _graph.top = _replacements[_graph.top.GetIndex()].NegateIf(_graph.top.IsNegated());
  }
  return isChanged;
}

// Whether the operator or the arguments changed.
bool OrvaGraphSimplifier::_CanonicalizeGate(Gate& gate) {
  for (Literal& argument : gate.arguments) {
    if (argument.IsGate()) {
      argument = _replacements[argument.GetIndex()].NegateIf(argument.IsNegated());
    }
  }
  std::sort(gate.arguments.begin(), gate.arguments.end());
  const auto size = static_cast<int>(gate.arguments.size());
  bool isChanged = false;
  if (gate.type == OrvaDiagramGraph::ATLEAST && (gate.min == 1 || gate.min == size)) {
    gate.type = gate.min == 1 ? OrvaDiagramGraph::OR : OrvaDiagramGraph::AND;
    gate.min = 0;
    isChanged = true;
  }
  if (gate.type != OrvaDiagramGraph::ATLEAST) {
    gate.arguments.erase(std::unique(gate.arguments.begin(), gate.arguments.end()),
                         gate.arguments.end());
  }
  return isChanged || static_cast<int>(gate.arguments.size()) != size;
}

// Whether references to the gate become references to something else.
bool OrvaGraphSimplifier::_ReplaceGate(std::uint32_t number, EqualGates& known) {
  const Gate& gate = _graph.gates[number];
  Literal& replacement = _replacements[number];
  if (gate.type != OrvaDiagramGraph::ATLEAST && gate.arguments.size() == 1) {
    replacement = gate.arguments.front();
    return true;
  }
  replacement = OrvaDiagramGraph::Node::Gate(number);
  const std::uint64_t hash = Hash(gate);
  const auto [first, last] = known.equal_range(hash);
  const auto equal = std::find_if(
      first, last, [&](const auto& entry) { return AreEqual(_graph.gates[entry.second], gate); });
  if (equal == last) {
    known.emplace(hash, number);
    return false;
  }
  replacement = OrvaDiagramGraph::Node::Gate(equal->second);
  return true;
}

bool OrvaGraphSimplifier::_MergeNestedGates() {
  const std::vector<std::uint32_t> order = _graph.CollectGatesInPostOrder();
  _CountOccurrences(order);
  std::vector<bool> isAbsorbed(_graph.gates.size());
  bool isChanged = false;
  for (const std::uint32_t number : order) {
    const Gate& gate = _graph.gates[number];
    for (const Literal argument : gate.arguments) {
      if (!_IsAbsorbed(argument, gate)) continue;
      isAbsorbed[argument.GetIndex()] = true;
      isChanged = true;
    }
  }
  if (!isChanged) return false;
  for (const std::uint32_t number : order) {
    if (!isAbsorbed[number]) _Absorb(_graph.gates[number]);
  }
  return true;
}

void OrvaGraphSimplifier::_CountOccurrences(const std::vector<std::uint32_t>& gates) {
  _occurrences.assign(_graph.gates.size(), 0);
  for (const std::uint32_t number : gates) {
    for (const Literal argument : _graph.gates[number].arguments) {
      if (argument.IsGate()) ++_occurrences[argument.GetIndex()];
    }
  }
}

bool OrvaGraphSimplifier::_IsAbsorbed(Literal argument, const Gate& parent) const {
  return argument.IsGate() && !argument.IsNegated() && _occurrences[argument.GetIndex()] == 1 &&
         parent.type != OrvaDiagramGraph::ATLEAST && _graph.GetGate(argument).type == parent.type;
}

// A gate takes the arguments of a whole cluster of nested gates at once: passing them up gate by
// gate would be quadratic in a long chain.
void OrvaGraphSimplifier::_Absorb(Gate& gate) {
  std::vector<Literal> arguments;
  std::vector<Literal> pending(gate.arguments.rbegin(), gate.arguments.rend());
  while (!pending.empty()) {
    const Literal argument = pending.back();
    pending.pop_back();
    if (_IsAbsorbed(argument, gate)) {
      const auto& below = _graph.GetGate(argument).arguments;
      pending.insert(pending.end(), below.rbegin(), below.rend());
    } else {
      arguments.push_back(argument);
    }
  }
  gate.arguments = std::move(arguments);
}

namespace {

// For each node, events first, the gates in which it stands, in their order.
class ParentLists {
 public:
  ParentLists(const OrvaDiagramGraph& graph, const std::vector<std::uint32_t>& order)
      : _graph(graph), _firsts(graph.events.size() + graph.gates.size() + 1) {
    for (const std::uint32_t number : order) {
      for (const Literal argument : graph.gates[number].arguments)
        ++_firsts[GetPlace(argument) + 1];
    }
    for (std::size_t i = 1; i < _firsts.size(); ++i) _firsts[i] += _firsts[i - 1];
    _parents.resize(_firsts.back());
    _isNegated.resize(_firsts.size());
    std::vector<std::size_t> next = _firsts;
    for (const std::uint32_t number : order) {
      for (const Literal argument : graph.gates[number].arguments) {
        _parents[next[GetPlace(argument)]++] = number;
        if (argument.IsNegated()) _isNegated[GetPlace(argument)] = true;
      }
    }
  }

  std::size_t GetNumberOfPlaces() const { return _firsts.size() - 1; }
  std::size_t GetPlace(Literal literal) const {
    return literal.GetIndex() + (literal.IsGate() ? _graph.events.size() : 0);
  }
  Literal GetLiteral(std::size_t place) const {
    const std::size_t numberOfEvents = _graph.events.size();
    return place < numberOfEvents ? OrvaDiagramGraph::Node::Event(place)
                                  : OrvaDiagramGraph::Node::Gate(place - numberOfEvents);
  }
  // Whether the node stands, never negated, in two gates or more, all of them and, or all or.
  bool HasCommonOperator(std::size_t place) const {
    if (_firsts[place + 1] - _firsts[place] < 2 || _isNegated[place]) return false;
    const OrvaDiagramGraph::Operator type = GetOperator(place);
    return type != OrvaDiagramGraph::ATLEAST &&
           std::all_of(_Begin(place), _End(place),
                       [&](std::uint32_t parent) { return _graph.gates[parent].type == type; });
  }
  OrvaDiagramGraph::Operator GetOperator(std::size_t place) const {
    return _graph.gates[*_Begin(place)].type;
  }
  std::uint64_t GetHash(std::size_t place) const {
    std::uint64_t hash = 0;
    std::for_each(_Begin(place), _End(place), [&](std::uint32_t gate) { hash = Mix(hash, gate); });
    return hash;
  }
  bool AreEqual(std::size_t a, std::size_t b) const {
    return std::equal(_Begin(a), _End(a), _Begin(b), _End(b));
  }
  bool IsLess(std::size_t a, std::size_t b) const {
    return std::lexicographical_compare(_Begin(a), _End(a), _Begin(b), _End(b));
  }
  std::vector<std::uint32_t> GetParents(std::size_t place) const {
    return {_Begin(place), _End(place)};
  }

 private:
  using Iterator = std::vector<std::uint32_t>::const_iterator;
  Iterator _Begin(std::size_t place) const {
    return _parents.begin() + static_cast<std::ptrdiff_t>(_firsts[place]);
  }
  Iterator _End(std::size_t place) const { return _Begin(place + 1); }

  const OrvaDiagramGraph& _graph;
  std::vector<std::size_t> _firsts;  // of each place in the next
  std::vector<std::uint32_t> _parents;
  std::vector<bool> _isNegated;
};

// The nodes with a common operator, those with the same parents side by side, in the order of their
// places among themselves.
std::vector<std::size_t> SortByParents(const ParentLists& parents) {
  std::vector<std::pair<std::uint64_t, std::size_t>> keys;
  for (std::size_t place = 0; place < parents.GetNumberOfPlaces(); ++place) {
    if (parents.HasCommonOperator(place)) keys.emplace_back(parents.GetHash(place), place);
  }
  std::sort(keys.begin(), keys.end(), [&](const auto& a, const auto& b) {
    if (a.first != b.first) return a.first < b.first;
    if (!parents.AreEqual(a.second, b.second)) return parents.IsLess(a.second, b.second);
    return a.second < b.second;
  });
  std::vector<std::size_t> places;
  places.reserve(keys.size());
  for (const auto& key : keys) places.push_back(key.second);
  return places;
}

}  // namespace

// The new gate takes the place of the first of its companions.
template <class Replacement>
void OrvaGraphSimplifier::_ReplaceCompanions(Gate& gate, Replacement replacement) {
  std::vector<Literal> arguments;
  for (const Literal argument : gate.arguments) {
    const Literal gathered = replacement(argument);
    if (gathered == argument) {
      arguments.push_back(argument);
    } else if (std::exchange(_lastUsers[gathered.GetIndex()], &gate) != &gate) {
      arguments.push_back(gathered);
    }
  }
  gate.arguments = std::move(arguments);
}

bool OrvaGraphSimplifier::_GatherCompanions() {
  const std::vector<std::uint32_t> order = _graph.CollectGatesInPostOrder();
  const ParentLists parents(_graph, order);
  const std::vector<std::size_t> places = SortByParents(parents);
  std::vector<Literal> gathered(parents.GetNumberOfPlaces());  // by place of a companion
  std::vector<bool> isCompanion(parents.GetNumberOfPlaces());
  for (std::size_t first = 0, last = 0; first < places.size(); first = last) {
    while (last < places.size() && parents.AreEqual(places[first], places[last])) ++last;
    if (last - first < 2) continue;
    std::vector<Literal> companions;
    for (std::size_t i = first; i < last; ++i) companions.push_back(parents.GetLiteral(places[i]));
    const Literal gate = _graph.AddGate(parents.GetOperator(places[first]), companions);
    for (std::size_t i = first; i < last; ++i) {
      gathered[places[i]] = gate;
      isCompanion[places[i]] = true;
    }
  }
  if (_graph.gates.size() == _replacements.size()) return false;
  _lastUsers.assign(_graph.gates.size(), nullptr);
  for (const std::uint32_t number : order) {
    _ReplaceCompanions(_graph.gates[number], [&](Literal argument) {
      const std::size_t place = parents.GetPlace(argument);
      return isCompanion[place] ? gathered[place] : argument;
    });
  }
  return true;
}
