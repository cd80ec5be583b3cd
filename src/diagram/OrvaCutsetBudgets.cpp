// The limits of the top are loose for a gate deep below it. In "S1 and S2 and S3" with a maximum
// order of 4, where each of S2 and S3 fails by two events at least, nothing of S1 counts.
//
// Bottom-up, each gate gets a lower bound of the order and an upper bound of the probability of its
// cutsets. The arguments of an and add up as far as their supports, the variables below them, are
// disjoint. Top-down, the limits of a gate go to its arguments, less what the other arguments of an
// and need at least; a gate with several parents takes the loosest limits. Both sweeps cross
// modules, and happen before the first diagram is made. On a model of sequences of systems behind
// shared barriers, this brings 423,000 nodes down to 11,000.
//
// The supports of a module take as many bits as it has gates times variables. Beyond a limit of
// memory they are left out, and arguments of an and are then taken as overlapping, which is loose
// but correct; so are those of an and of very many arguments that overlap somewhere.
#include "diagram/OrvaCutsetBudgets.h"

#include <algorithm>
#include <cfloat>
#include <functional>

namespace {

using Bounds = OrvaCutsetBounds;
using Literal = OrvaDiagramGraph::Literal;

constexpr Bounds NOTHING = {0, 1.0F};
constexpr std::size_t MAXIMUM_SUPPORT_WORDS = std::size_t{1} << 22;  // 32 MB
// Beyond so many arguments that overlap, what the others need is not worked out one by one.
constexpr std::size_t MANY_ARGUMENTS = 32;

std::uint32_t AddOrders(std::uint32_t a, std::uint32_t b) {
  return a > UINT32_MAX - b ? UINT32_MAX : a + b;
}

Bounds Join(const Bounds& a, const Bounds& b) {
  return {AddOrders(a.leastOrder, b.leastOrder),
          OrvaCutsetDiagram::RoundUp(static_cast<double>(a.greatestProbability) *
                                     b.greatestProbability)};
}

// The weaker bounds of two, for a cutset that is of the one or of the other; the stronger ones, for
// one that contains both.
Bounds GetWeaker(const Bounds& a, const Bounds& b) {
  return {std::min(a.leastOrder, b.leastOrder),
          std::max(a.greatestProbability, b.greatestProbability)};
}
Bounds GetStronger(const Bounds& a, const Bounds& b) {
  return {std::max(a.leastOrder, b.leastOrder),
          std::min(a.greatestProbability, b.greatestProbability)};
}

// What limits leave when something else is needed too. Where more is needed than there is, a cutset
// of no event that is certain could remain, which does no harm.
OrvaCutsetLimits Reduce(const OrvaCutsetLimits& limits, const Bounds& needed) {
  OrvaCutsetLimits rest = limits;
  if (limits.order != UINT32_MAX) {
    rest.order -= std::min(needed.leastOrder, limits.order);
  }
  if (limits.probability != 0.0F) {
    const double probability = limits.probability;
    rest.probability = needed.greatestProbability == 0.0F
                           ? FLT_MAX
                           : OrvaCutsetDiagram::RoundDown(probability / needed.greatestProbability);
  }
  return rest;
}

}  // namespace

class OrvaCutsetBudgets::Supports {
 public:
  using Set = std::vector<std::uint64_t>;

  Supports(const OrvaCutsetBudgets& budgets, const Module& module)
      : _budgets(budgets),
        _firstVariable(module.firstVariable),
        _words((module.endOfVariables - module.firstVariable + BITS - 1) / BITS) {
    if (module.gates.size() > MAXIMUM_SUPPORT_WORDS / _words) return;
    _bits.resize(module.gates.size() * _words);
    for (const std::uint32_t gate : module.gates) {
      for (const Literal argument : budgets._graph.gates[gate].arguments) {
        _Visit(argument, [&, row = _GetRow(gate)](std::size_t word, std::uint64_t bits) {
          _bits[row + word] |= bits;
        });
      }
    }
  }

  bool AreKnown() const { return !_bits.empty(); }
  Set GetEmptySet() const { return Set(_words); }
  // Whether the set and the support of the argument are disjoint.
  bool AreDisjoint(const Set& set, Literal argument) const {
    std::uint64_t common = 0;
    _Visit(argument, [&](std::size_t word, std::uint64_t bits) { common |= set[word] & bits; });
    return common == 0;
  }
  void AddTo(Set& set, Literal argument) const {
    _Visit(argument, [&](std::size_t word, std::uint64_t bits) { set[word] |= bits; });
  }
  // Whether no two arguments of the gate overlap.
  bool AreDisjoint(const Gate& gate) const {
    Set united = GetEmptySet();
    return std::all_of(gate.arguments.begin(), gate.arguments.end(), [&](Literal argument) {
      const bool isDisjoint = AreDisjoint(united, argument);
      AddTo(united, argument);
      return isDisjoint;
    });
  }

 private:
  static constexpr std::size_t BITS = 64;

  std::size_t _GetRow(std::size_t gate) const { return _budgets._positions[gate] * _words; }
  // Calls back with the words of the support of an argument.
  template <class Callback>
  void _Visit(Literal argument, Callback callback) const {
    const std::uint32_t variable = _budgets._modules.GetVariable(argument.GetNode());
    if (variable != OrvaDiagramModules::NONE) {
      const std::size_t place = variable - _firstVariable;
      callback(place / BITS, std::uint64_t{1} << (place % BITS));
      return;
    }
    const std::size_t row = _GetRow(argument.GetIndex());
    for (std::size_t word = 0; word < _words; ++word) callback(word, _bits[row + word]);
  }

  const OrvaCutsetBudgets& _budgets;
  std::size_t _firstVariable;
  std::size_t _words;
  std::vector<std::uint64_t> _bits;  // a row for each gate of the module
};

OrvaCutsetBudgets::OrvaCutsetBudgets(const OrvaDiagramGraph& graph,
                                     const OrvaDiagramModules& modules,
                                     const std::vector<Bounds>& boundsOfEvents,
                                     const OrvaCutsetLimits& limits)
    : _graph(graph),
      _modules(modules),
      _boundsOfEvents(boundsOfEvents),
      _positions(graph.gates.size()),
      _bounds(graph.gates.size(), NOTHING),
      _limits(graph.gates.size(), limits) {
  if (limits == OrvaCutsetLimits() || !graph.top.IsGate()) return;
  for (const Module& module : modules.GetModules()) {
    for (std::size_t i = 0; i < module.gates.size(); ++i) _positions[module.gates[i]] = i;
    const Supports supports(*this, module);
    for (const std::uint32_t gate : module.gates) {
      _bounds[gate] = _ComputeBounds(graph.gates[gate], supports);
    }
  }
  // Nothing is left to a gate until a parent leaves it something.
  std::fill(_limits.begin(), _limits.end(), OrvaCutsetLimits{0, FLT_MAX});
  _limits[graph.top.GetIndex()] = limits;
  for (auto module = modules.GetModules().rbegin(); module != modules.GetModules().rend();
       ++module) {
    const Supports supports(*this, *module);
    for (auto gate = module->gates.rbegin(); gate != module->gates.rend(); ++gate) {
      _DistributeLimits(*gate, supports);
    }
  }
}

Bounds OrvaCutsetBudgets::_GetBounds(Literal argument) const {
  return argument.IsGate() ? _bounds[argument.GetIndex()] : _boundsOfEvents[argument.GetIndex()];
}

Bounds OrvaCutsetBudgets::_ComputeBounds(const Gate& gate, const Supports& supports) const {
  switch (gate.type) {
    case OrvaDiagramGraph::AND:
      return _ComputeBoundsOfAnd(gate, supports);
    case OrvaDiagramGraph::ATLEAST:
      return _ComputeBoundsOfAtLeast(gate, supports);
    default: {
      Bounds bounds = {UINT32_MAX, 0.0F};
      for (const Literal argument : gate.arguments) {
        bounds = GetWeaker(bounds, _GetBounds(argument));
      }
      return bounds;
    }
  }
}

// Arguments that overlap with those before them don't add up; the strongest bounds hold alone.
Bounds OrvaCutsetBudgets::_ComputeBoundsOfAnd(const Gate& gate, const Supports& supports) const {
  Bounds joined = NOTHING;
  Bounds strongest = NOTHING;
  Supports::Set united = supports.GetEmptySet();
  for (const Literal argument : gate.arguments) {
    const Bounds bounds = _GetBounds(argument);
    strongest = GetStronger(strongest, bounds);
    if (!supports.AreKnown() || !supports.AreDisjoint(united, argument)) continue;
    joined = Join(joined, bounds);
    supports.AddTo(united, argument);
  }
  return GetStronger(joined, strongest);
}

// Some k arguments are in each cutset. When they overlap, the bounds are at least those of the k-th
// of them, in the order of weakness.
Bounds OrvaCutsetBudgets::_ComputeBoundsOfAtLeast(const Gate& gate,
                                                  const Supports& supports) const {
  const auto k = static_cast<std::size_t>(std::max(gate.min, 0));
  if (k == 0 || k > gate.arguments.size()) return NOTHING;
  std::vector<std::uint32_t> orders;
  std::vector<float> probabilities;
  for (const Literal argument : gate.arguments) {
    orders.push_back(_GetBounds(argument).leastOrder);
    probabilities.push_back(_GetBounds(argument).greatestProbability);
  }
  std::sort(orders.begin(), orders.end());
  std::sort(probabilities.begin(), probabilities.end(), std::greater<>());
  const bool isRepeating =
      std::adjacent_find(gate.arguments.begin(), gate.arguments.end()) != gate.arguments.end();
  if (isRepeating) return {orders.front(), probabilities.front()};
  if (!supports.AreKnown() || !supports.AreDisjoint(gate)) {
    return {orders[k - 1], probabilities[k - 1]};
  }
  Bounds bounds = NOTHING;
  for (std::size_t i = 0; i < k; ++i) bounds = Join(bounds, {orders[i], probabilities[i]});
  return bounds;
}

void OrvaCutsetBudgets::_DistributeLimits(std::uint32_t number, const Supports& supports) {
  const Gate& gate = _graph.gates[number];
  const bool isAnd = gate.type == OrvaDiagramGraph::AND && supports.AreKnown();
  const bool isDisjoint = isAnd && supports.AreDisjoint(gate);
  const bool isWorkedOut = isAnd && (isDisjoint || gate.arguments.size() <= MANY_ARGUMENTS);
  for (const Literal argument : gate.arguments) {
    if (!argument.IsGate()) continue;
    OrvaCutsetLimits limits = _limits[number];
    if (isWorkedOut) {
      const Bounds others = isDisjoint ? _GetBoundsOfDisjointOthers(number, argument)
                                       : _GetBoundsOfOthers(gate, argument, supports);
      limits = Reduce(limits, others);
    }
    OrvaCutsetLimits& loosest = _limits[argument.GetIndex()];
    loosest.order = std::max(loosest.order, limits.order);
    loosest.probability = std::min(loosest.probability, limits.probability);
  }
}

// What the arguments of an and need at least beside the given one.
Bounds OrvaCutsetBudgets::_GetBoundsOfOthers(const Gate& gate, Literal argument,
                                             const Supports& supports) const {
  Bounds joined = NOTHING;
  Supports::Set united = supports.GetEmptySet();
  supports.AddTo(united, argument);
  for (const Literal other : gate.arguments) {
    if (!supports.AreDisjoint(united, other)) continue;
    joined = Join(joined, _GetBounds(other));
    supports.AddTo(united, other);
  }
  return joined;
}

// The same where no two arguments overlap: all that the gate needs but for the argument's own.
Bounds OrvaCutsetBudgets::_GetBoundsOfDisjointOthers(std::uint32_t gate, Literal argument) const {
  const Bounds& all = _bounds[gate];
  const Bounds own = _GetBounds(argument);
  Bounds others = NOTHING;
  if (all.leastOrder != UINT32_MAX) others.leastOrder = all.leastOrder - own.leastOrder;
  if (own.greatestProbability > 0.0F) {
    others.greatestProbability = OrvaCutsetDiagram::RoundUp(
        static_cast<double>(all.greatestProbability) / own.greatestProbability);
  }
  return others;
}
