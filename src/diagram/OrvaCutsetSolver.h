#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "diagram/OrvaCutsetBudgets.h"
#include "diagram/OrvaCutsetExtraction.h"
#include "diagram/OrvaCutsetOperations.h"
#include "diagram/OrvaCutsetSolution.h"
#include "diagram/OrvaDiagramModules.h"

// Makes the diagrams of the minimal cutsets of a graph, module by module.
class OrvaCutsetSolver {
 public:
  // The minimal cutsets of the graph, which is rewritten, that have at most `maximumOrder` events
  // and whose probabilities, the products of those of their events, are not below
  // `minimumProbability`. The graph has no negated literals.
  static std::unique_ptr<OrvaCutsetSolution> Solve(OrvaDiagramGraph& graph, int maximumOrder,
                                                   double minimumProbability);

 private:
  using Node = OrvaCutsetDiagram::Node;
  using Literal = OrvaDiagramGraph::Literal;
  using Gate = OrvaDiagramGraph::Gate;
  using Bounds = OrvaCutsetBounds;

  OrvaCutsetSolver(const OrvaDiagramGraph& graph, const OrvaDiagramModules& modules,
                   OrvaCutsetSolution& solution);
  OrvaCutsetLimits _GetLimitsInside() const;
  void _Solve();
  void _SolveModule(std::size_t number);
  void _SetVariable(std::uint32_t number);
  Node _SolveGate(std::uint32_t number);
  Node _Unite(const Gate& gate, const OrvaCutsetLimits& limits);
  Node _Multiply(const Gate& gate, const OrvaCutsetLimits& limits);
  Node _CountUp(const Gate& gate, const OrvaCutsetLimits& limits);
  std::vector<Node> _GetOperands(std::span<const Literal> arguments);
  Node _GetNodeOfVariable(std::uint32_t variable);
  void _Release(const Gate& gate);
  void _Collect();

  const OrvaDiagramGraph& _graph;
  const OrvaDiagramModules& _modules;
  OrvaCutsetSolution& _solution;
  OrvaCutsetDiagram& _diagram;
  OrvaCutsetOperations _operations;
  OrvaCutsetExtraction _extraction;
  std::vector<Bounds> _boundsOfEvents;
  bool _isUnlimited;
  OrvaCutsetBudgets _budgets;
  // The cutsets of gates, EMPTY once no gate needs them any more, then those of modules.
  std::vector<Node> _nodes;
  std::span<Node> _nodesOfModules;
  std::vector<std::uint32_t> _users;  // of each gate: gates that have not been solved yet
};
