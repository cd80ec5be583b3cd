// The gates of a module are solved from the bottom up, each under the limits that the top leaves to
// it; then the module stands as one variable above, with the bounds of its own diagram as weight.
//
// In an or, the variables make one chain, built from its end, which takes one step each; the sets
// of gates are united smallest first, and so are those of an and multiplied. At least k of n
// arguments come from the usual table, in which row j holds "at least j of the arguments so far".
#include "diagram/OrvaCutsetSolver.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <functional>
#include <utility>

#include "diagram/OrvaGraphSimplifier.h"
#include "model/OrvaEvent.h"
#include "support/time/LumoProgress.h"

using Node = OrvaCutsetDiagram::Node;

namespace {

constexpr Node EMPTY = OrvaCutsetDiagram::EMPTY;
constexpr Node UNIT = OrvaCutsetDiagram::UNIT;
// Limits on probability are this much wider inside than for the cutsets that are listed, since
// bounds are products in another order.
constexpr double MARGIN = 1e-6;
// Sizes of sets only serve to sort them.
constexpr std::size_t LARGE_SET = 100000;

std::vector<OrvaCutsetBounds> GetBounds(const std::vector<OrvaEvent*>& events) {
  std::vector<OrvaCutsetBounds> weights;
  weights.reserve(events.size());
  for (const OrvaEvent* event : events) {
    weights.push_back({1, OrvaCutsetDiagram::RoundUp(event->GetProbability())});
  }
  return weights;
}

}  // namespace

std::unique_ptr<OrvaCutsetSolution> OrvaCutsetSolver::Solve(OrvaDiagramGraph& graph,
                                                            int maximumOrder,
                                                            double minimumProbability) {
  OrvaGraphSimplifier(graph).Simplify();
  const OrvaDiagramModules modules(graph);
  auto solution = std::make_unique<OrvaCutsetSolution>();
  solution->maximumOrder = maximumOrder;
  solution->minimumProbability = minimumProbability;
  OrvaCutsetSolver(graph, modules, *solution)._Solve();
  return solution;
}

OrvaCutsetSolver::OrvaCutsetSolver(const OrvaDiagramGraph& graph, const OrvaDiagramModules& modules,
                                   OrvaCutsetSolution& solution)
    : _graph(graph),
      _modules(modules),
      _solution(solution),
      _diagram(solution.diagram),
      _operations(_diagram),
      _extraction(graph, modules, _operations),
      _boundsOfEvents(GetBounds(graph.events)),
      _isUnlimited(_GetLimitsInside() == OrvaCutsetLimits()),
      _budgets(graph, modules, _boundsOfEvents, _GetLimitsInside()),
      _nodes(graph.gates.size() + modules.GetModules().size(), EMPTY),
      _nodesOfModules(std::span(_nodes).last(modules.GetModules().size())),
      _users(modules.CountUsers()) {
  solution.variables.reserve(modules.GetVariables().size());
}

// A cutset that contains another one is less probable, unless a "probability" is no such thing:
// then only the listing looks at the limit.
OrvaCutsetLimits OrvaCutsetSolver::_GetLimitsInside() const {
  const bool areProbabilities =
      std::all_of(_graph.events.begin(), _graph.events.end(), [](const OrvaEvent* event) {
        return event->GetProbability() >= 0.0 && event->GetProbability() <= 1.0;
      });
  OrvaCutsetLimits limits;
  if (_solution.maximumOrder != INT_MAX) {
    limits.order = static_cast<std::uint32_t>(std::max(_solution.maximumOrder, 0));
  }
  if (areProbabilities && _solution.minimumProbability > 0.0) {
    limits.probability =
        OrvaCutsetDiagram::RoundDown(_solution.minimumProbability * (1.0 - MARGIN));
  }
  return limits;
}

void OrvaCutsetSolver::_Solve() {
  const LumoProgress progress("diagrams", "modules", static_cast<long>(_nodesOfModules.size()));
  for (std::size_t number = 0; number < _nodesOfModules.size(); ++number) {
    _SolveModule(number);
    LumoProgress::Advance();
  }
  for (OrvaCutsetSolution::Variable& variable : _solution.variables) {
    if (variable.event == nullptr) variable.module = _nodesOfModules[variable.module];
  }
  _solution.top = _nodesOfModules.back();
}

void OrvaCutsetSolver::_SolveModule(std::size_t number) {
  const OrvaDiagramModules::Module& module = _modules.GetModules()[number];
  for (std::uint32_t i = module.firstVariable; i < module.endOfVariables; ++i) _SetVariable(i);
  Node& result = _nodesOfModules[number];
  if (module.gates.empty()) {
    result = _GetNodeOfVariable(module.firstVariable);
  } else if (_isUnlimited && module.gates.size() > 1 && _extraction.Extract(number, result)) {
    _Collect();
  } else {
    const LumoProgress progress("gates", "gates", static_cast<long>(module.gates.size()));
    for (const std::uint32_t gate : module.gates) {
      LumoProgress::Advance();
      _nodes[gate] = _SolveGate(gate);
      _Release(_graph.gates[gate]);
      if (gate == module.gates.back()) result = std::exchange(_nodes[gate], EMPTY);
      _Collect();
    }
  }
}

// The modules below have been solved.
void OrvaCutsetSolver::_SetVariable(std::uint32_t number) {
  const OrvaDiagramModules::Variable& variable = _modules.GetVariables()[number];
  assert(_solution.variables.size() == number);
  if (variable.isModule) {
    const OrvaCutsetDiagram::Record& record = _diagram[_nodesOfModules[variable.number]];
    _diagram.SetWeight(number, record.leastOrder, record.greatestProbability);
    _solution.variables.push_back({nullptr, 0.0, variable.number});
  } else {
    const OrvaEvent* event = _graph.events[variable.number];
    _diagram.SetWeight(number, 1, _boundsOfEvents[variable.number].greatestProbability);
    _solution.variables.push_back({event, event->GetProbability(), EMPTY});
  }
}

Node OrvaCutsetSolver::_SolveGate(std::uint32_t number) {
  const Gate& gate = _graph.gates[number];
  switch (gate.type) {
    case OrvaDiagramGraph::AND:
      return _Multiply(gate, _budgets.GetLimits(number));
    case OrvaDiagramGraph::OR:
      return _Unite(gate, _budgets.GetLimits(number));
    default:
      return _CountUp(gate, _budgets.GetLimits(number));
  }
}

Node OrvaCutsetSolver::_Unite(const Gate& gate, const OrvaCutsetLimits& limits) {
  Node result = EMPTY;
  for (const Node operand : _GetOperands(gate.arguments)) {
    result = _operations.Unite(operand, result, limits);
  }
  return result;
}

Node OrvaCutsetSolver::_Multiply(const Gate& gate, const OrvaCutsetLimits& limits) {
  Node result = UNIT;
  for (const Node operand : _GetOperands(gate.arguments)) {
    result = _operations.Multiply(operand, result, limits);
  }
  return result;
}

// The variables from the lowest in the diagram to the highest, then the gates, smallest first. An
// argument that stands there twice is there twice, side by side.
std::vector<Node> OrvaCutsetSolver::_GetOperands(std::span<const Literal> arguments) {
  std::vector<std::uint32_t> variables;
  std::vector<std::pair<std::size_t, Node>> gates;
  for (const Literal argument : arguments) {
    const std::uint32_t variable = _modules.GetVariable(argument.GetNode());
    if (variable != OrvaDiagramModules::NONE) {
      variables.push_back(variable);
    } else {
      gates.emplace_back(0, _nodes[argument.GetIndex()]);
    }
  }
  std::sort(variables.begin(), variables.end(), std::greater<>());
  if (gates.size() > 1) {
    for (auto& [size, node] : gates) size = _diagram.CountNodes(node, LARGE_SET);
    std::sort(gates.begin(), gates.end());
  }
  std::vector<Node> operands;
  operands.reserve(variables.size() + gates.size());
  for (const std::uint32_t variable : variables) operands.push_back(_GetNodeOfVariable(variable));
  for (const auto& [size, node] : gates) operands.push_back(node);
  return operands;
}

// Row j of the table is empty above `highest`, and rows from which too few arguments are left to
// reach k are not needed any more.
Node OrvaCutsetSolver::_CountUp(const Gate& gate, const OrvaCutsetLimits& limits) {
  const auto k = static_cast<std::size_t>(std::max(gate.min, 0));
  const std::vector<Node> operands = _GetOperands(gate.arguments);
  std::vector<Node> rows(k + 1, EMPTY);
  rows[0] = UNIT;
  std::size_t highest = 0;
  for (std::size_t i = 0, last = 0; i < operands.size(); i = last) {
    while (last < operands.size() && operands[last] == operands[i]) ++last;
    const std::size_t weight = last - i;
    const std::size_t left = operands.size() - last;
    const std::size_t lowest = k > left ? k - left : 1;
    const std::size_t reached = std::min(k, highest + weight);
    for (std::size_t j = reached; j >= std::max<std::size_t>(lowest, 1); --j) {
      const Node below = rows[j > weight ? j - weight : 0];
      rows[j] =
          _operations.Unite(rows[j], _operations.Multiply(operands[i], below, limits), limits);
    }
    for (highest = reached; highest > 0 && rows[highest] == EMPTY;) --highest;
  }
  return rows[k];
}

// A module without a cutset within the limits is no variable that could be true.
Node OrvaCutsetSolver::_GetNodeOfVariable(std::uint32_t variable) {
  const OrvaDiagramModules::Variable& kind = _modules.GetVariables()[variable];
  if (kind.isModule && _nodesOfModules[kind.number] == EMPTY) return EMPTY;
  return _diagram.MakeVariable(variable);
}

// Gives up the sets of gates that no other gate needs.
void OrvaCutsetSolver::_Release(const Gate& gate) {
  for (const Literal argument : gate.arguments) {
    if (argument.IsGate() && --_users[argument.GetIndex()] == 0) {
      _nodes[argument.GetIndex()] = EMPTY;
    }
  }
}

void OrvaCutsetSolver::_Collect() {
  if (_diagram.Collect(_nodes)) _operations.Forget();
}
