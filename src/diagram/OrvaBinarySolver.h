#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "diagram/OrvaBinaryDiagram.h"
#include "diagram/OrvaDiagramModules.h"

// The function of a graph as diagrams: a variable stands for a basic event or for a module, whose
// function is an edge of the same diagram, made before.
struct OrvaBinarySolution {
  using Edge = OrvaBinaryDiagram::Edge;

  struct Variable {
    const OrvaEvent* event;  // null for a module; the model's
    Edge module;
  };

  explicit OrvaBinarySolution(long maximumNumberOfNodes) : diagram(maximumNumberOfNodes) {}

  OrvaBinaryDiagram diagram;  // nothing but what the top and the modules need
  std::vector<Variable> variables;
  Edge top = OrvaBinaryDiagram::IMPOSSIBLE;
};

// Makes the binary diagrams of a graph, module by module.
class OrvaBinarySolver {
 public:
  using Edge = OrvaBinaryDiagram::Edge;

  // All modules in one diagram. The graph is rewritten. Null when more than so many nodes are
  // needed at a time.
  static std::unique_ptr<OrvaBinarySolution> Solve(OrvaDiagramGraph& graph,
                                                   long maximumNumberOfNodes);

  // For single modules; nothing is owned.
  OrvaBinarySolver(const OrvaDiagramGraph& graph, const OrvaDiagramModules& modules,
                   OrvaBinaryDiagram& diagram);
  // The function of the module of that number over its variables. It stays in the diagram until it
  // is released, under a number that may change. When the diagram is exhausted, the result means
  // nothing.
  Edge SolveModule(std::size_t number);
  void ReleaseModule(std::size_t number);

 private:
  using Literal = OrvaDiagramGraph::Literal;
  using Gate = OrvaDiagramGraph::Gate;

  void _SolveAll(OrvaBinarySolution& solution);
  Edge _SolveGate(const Gate& gate);
  Edge _CountUp(const Gate& gate);
  std::vector<Edge> _GetOperands(std::span<const Literal> arguments);
  void _Release(const Gate& gate);

  const OrvaDiagramGraph& _graph;
  const OrvaDiagramModules& _modules;
  OrvaBinaryDiagram& _diagram;
  // The functions of the gates, IMPOSSIBLE once no gate needs them any more, then those of modules.
  std::vector<Edge> _edges;
  std::span<Edge> _edgesOfModules;
  std::vector<std::uint32_t> _users;  // of each gate: gates that have not been solved yet
};
