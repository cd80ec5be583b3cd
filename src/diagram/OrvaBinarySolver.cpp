// As with diagrams of cutsets, the gates of a module are solved from the bottom up, and a module is
// one variable in the module above. The variables of a gate are taken first, from the lowest in the
// diagram to the highest, which takes one step each; then its gates, smallest first. At least k of
// n arguments come from the usual table, in which row j holds "at least j of the arguments so far".
#include "diagram/OrvaBinarySolver.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "diagram/OrvaGraphSimplifier.h"

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
  OrvaBinarySolver(graph, modules, *solution)._Solve();
  return solution->diagram.IsExhausted() ? nullptr : std::move(solution);
}

OrvaBinarySolver::OrvaBinarySolver(const OrvaDiagramGraph& graph, const OrvaDiagramModules& modules,
                                   OrvaBinarySolution& solution)
    : _graph(graph),
      _modules(modules),
      _solution(solution),
      _diagram(solution.diagram),
      _edges(graph.gates.size() + modules.GetModules().size(), IMPOSSIBLE),
      _edgesOfModules(std::span(_edges).last(modules.GetModules().size())),
      _users(graph.gates.size()) {}

void OrvaBinarySolver::_Solve() {
  for (const Module& module : _modules.GetModules()) {
    for (const std::uint32_t gate : module.gates) {
      for (const Literal argument : _graph.gates[gate].arguments) {
        if (argument.IsGate()) ++_users[argument.GetIndex()];
      }
    }
  }
  for (const Module& module : _modules.GetModules()) {
    _SolveModule(module);
    if (_diagram.IsExhausted()) return;
  }
  _diagram.Collect(_edgesOfModules, true);
  _diagram.Freeze();
  for (const OrvaDiagramModules::Variable& variable : _modules.GetVariables()) {
    if (variable.isModule) {
      _solution.variables.push_back({nullptr, _edgesOfModules[variable.number]});
    } else {
      _solution.variables.push_back({_graph.events[variable.number], IMPOSSIBLE});
    }
  }
  _solution.top = OrvaBinaryDiagram::ComplementIf(_edgesOfModules.back(), _graph.top.IsNegated());
}

void OrvaBinarySolver::_SolveModule(const Module& module) {
  const auto number = static_cast<std::size_t>(&module - _modules.GetModules().data());
  if (module.gates.empty()) {
    _edgesOfModules[number] = _diagram.MakeVariable(module.firstVariable);
    return;
  }
  for (const std::uint32_t gate : module.gates) {
    _edges[gate] = _SolveGate(_graph.gates[gate]);
    if (_diagram.IsExhausted()) return;
    _Release(_graph.gates[gate]);
    if (gate == module.gates.back()) {
      _edgesOfModules[number] = std::exchange(_edges[gate], IMPOSSIBLE);
    }
    _diagram.Collect(_edges, false);
  }
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
    for (auto& [size, edge] : gates) size = _diagram.CountNodes(edge, LARGE_FUNCTION);
    std::sort(gates.begin(), gates.end());
  }
  std::vector<Edge> operands;
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
