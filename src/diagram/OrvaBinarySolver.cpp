// As with diagrams of cutsets, the gates of a module are solved from the bottom up, and a module is
// one variable in the module above. The variables of a gate are taken first, from the lowest in the
// diagram to the highest, which takes one step each; then its gates, smallest first. At least k of
// n arguments come from the usual table, in which row j holds "at least j of the arguments so far".
#include "diagram/OrvaBinarySolver.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "diagram/OrvaGraphSimplifier.h"
#include "support/time/LumoProgress.h"

using Edge = OrvaBinaryDiagram::Edge;

namespace {

constexpr Edge CERTAIN = OrvaBinaryDiagram::CERTAIN;
constexpr Edge IMPOSSIBLE = OrvaBinaryDiagram::IMPOSSIBLE;
// Sizes of functions only serve to sort them.
constexpr std::size_t LARGE_FUNCTION = 100000;

}  // namespace

std::unique_ptr<OrvaBinarySolution> OrvaBinarySolver::Solve(OrvaDiagramGraph& graph,
                                                            long maximumNumberOfNodes) {
  OrvaGraphSimplifier(graph).Simplify();
  const OrvaDiagramModules modules(graph);
  auto solution = std::make_unique<OrvaBinarySolution>(maximumNumberOfNodes);
  OrvaBinarySolver(graph, modules, solution->diagram)._SolveAll(*solution);
  if (solution->diagram.IsExhausted()) return nullptr;
  return solution;
}

OrvaBinarySolver::OrvaBinarySolver(const OrvaDiagramGraph& graph, const OrvaDiagramModules& modules,
                                   OrvaBinaryDiagram& diagram)
    : _graph(graph),
      _modules(modules),
      _diagram(diagram),
      _edges(graph.gates.size() + modules.GetModules().size(), IMPOSSIBLE),
      _edgesOfModules(std::span(_edges).last(modules.GetModules().size())),
      _users(modules.CountUsers()) {}

void OrvaBinarySolver::_SolveAll(OrvaBinarySolution& solution) {
  const std::size_t numberOfModules = _modules.GetModules().size();
  for (std::size_t number = 0; number < numberOfModules; ++number) {
    SolveModule(number);
    if (_diagram.IsExhausted()) return;
  }
  _diagram.Collect(_edgesOfModules, true);
  _diagram.Freeze();
  for (const OrvaDiagramModules::Variable& variable : _modules.GetVariables()) {
    if (variable.isModule) {
      solution.variables.push_back({nullptr, _edgesOfModules[variable.number]});
    } else {
      solution.variables.push_back({_graph.events[variable.number], IMPOSSIBLE});
    }
  }
  solution.top = OrvaBinaryDiagram::ComplementIf(_edgesOfModules.back(), _graph.top.IsNegated());
}

Edge OrvaBinarySolver::SolveModule(std::size_t number) {
  const OrvaDiagramModules::Module& module = _modules.GetModules()[number];
  Edge& result = _edgesOfModules[number];
  if (module.gates.empty()) return result = _diagram.MakeVariable(module.firstVariable);
  const LumoProgress progress("binary diagram", "gates", static_cast<long>(module.gates.size()));
  for (const std::uint32_t gate : module.gates) {
    LumoProgress::Advance();
    _edges[gate] = _SolveGate(_graph.gates[gate]);
    if (_diagram.IsExhausted()) break;
    _Release(_graph.gates[gate]);
    if (gate == module.gates.back()) result = std::exchange(_edges[gate], IMPOSSIBLE);
    _diagram.Collect(_edges, false);
  }
  return result;
}

void OrvaBinarySolver::ReleaseModule(std::size_t number) {
  _edgesOfModules[number] = IMPOSSIBLE;
  for (const std::uint32_t gate : _modules.GetModules()[number].gates) _edges[gate] = IMPOSSIBLE;
}

Edge OrvaBinarySolver::_SolveGate(const Gate& gate) {
  if (gate.type == OrvaDiagramGraph::ATLEAST) return _CountUp(gate);
  const bool isOr = gate.type == OrvaDiagramGraph::OR;
  Edge result = isOr ? IMPOSSIBLE : CERTAIN;
  for (const Edge operand : _GetOperands(gate.arguments)) {
    result = isOr ? _diagram.Or(operand, result) : _diagram.And(operand, result);
  }
  return result;
}

Edge OrvaBinarySolver::_CountUp(const Gate& gate) {
  const auto k = static_cast<std::size_t>(std::max(gate.min, 0));
  const std::vector<Edge> operands = _GetOperands(gate.arguments);
  std::vector<Edge> rows(k + 1, IMPOSSIBLE);
  rows[0] = CERTAIN;
  for (std::size_t i = 0; i < operands.size() && !_diagram.IsExhausted(); ++i) {
    const std::size_t left = operands.size() - i - 1;
    const std::size_t lowest = k > left ? k - left : 1;
    for (std::size_t j = std::min(k, i + 1); j >= lowest && j > 0; --j) {
      rows[j] = _diagram.Or(_diagram.And(operands[i], rows[j - 1]), rows[j]);
    }
  }
  return rows[k];
}

std::vector<Edge> OrvaBinarySolver::_GetOperands(std::span<const Literal> arguments) {
  std::vector<std::pair<std::uint32_t, bool>> variables;
  std::vector<std::pair<std::size_t, Edge>> gates;
  for (const Literal argument : arguments) {
    const std::uint32_t variable = _modules.GetVariable(argument.GetNode());
    if (variable != OrvaDiagramModules::NONE) {
      variables.emplace_back(variable, argument.IsNegated());
    } else {
      const Edge edge = _edges[argument.GetIndex()];
      gates.emplace_back(0, OrvaBinaryDiagram::ComplementIf(edge, argument.IsNegated()));
    }
  }
  std::sort(variables.begin(), variables.end(), std::greater<>());
  if (gates.size() > 1) {
    for (auto& [size, edge] : gates) {
      size = _diagram.FindNodes(edge, LARGE_FUNCTION).size();
    }
    std::sort(gates.begin(), gates.end());
  }
  std::vector<Edge> operands;
  operands.reserve(variables.size() + gates.size());
  for (const auto& [variable, isNegated] : variables) {
    operands.push_back(OrvaBinaryDiagram::ComplementIf(_diagram.MakeVariable(variable), isNegated));
  }
  for (const auto& [size, edge] : gates) operands.push_back(edge);
  return operands;
}

// Gives up the functions of gates that no other gate needs.
void OrvaBinarySolver::_Release(const Gate& gate) {
  for (const Literal argument : gate.arguments) {
    if (argument.IsGate() && --_users[argument.GetIndex()] == 0) {
      _edges[argument.GetIndex()] = IMPOSSIBLE;
    }
  }
}
