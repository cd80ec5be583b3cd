#pragma once

#include <cstdint>
#include <vector>

#include "diagram/OrvaDiagramGraph.h"

// The modules of a graph, each with the variables of its diagram in their order. A module is a gate
// that shares nothing with the rest of the graph; it is solved by itself, once, and stands as one
// variable in the module above. The top is a module, also when it is an event.
class OrvaDiagramModules {
 public:
  using Node = OrvaDiagramGraph::Node;
  using Literal = OrvaDiagramGraph::Literal;

  static constexpr std::uint32_t NONE = UINT32_MAX;

  // An event of the graph, or the module of that number.
  struct Variable {
    bool isModule;
    std::uint32_t number;
  };
  struct Module {
    // The gates of the module in post-order, its top last; those of modules below are not among
    // them. Empty for a graph that is an event.
    std::vector<std::uint32_t> gates;
    // Its variables: a run of those of the graph. The first stands at the top of the diagram.
    std::uint32_t firstVariable;
    std::uint32_t endOfVariables;
  };

  // Gathers the independent arguments of gates into new gates of the graph, and finds the modules.
  explicit OrvaDiagramModules(OrvaDiagramGraph& graph);

  // Each after those below it; the last one is the top.
  const std::vector<Module>& GetModules() const { return _modules; }
  const std::vector<Variable>& GetVariables() const { return _variables; }
  // The variable that stands for an event or for a module; NONE for a gate inside a module.
  std::uint32_t GetVariable(Node node) const {
    return node.IsGate() ? _variablesOfGates[node.GetIndex()] : _variablesOfEvents[node.GetIndex()];
  }

  // For each gate of the graph, by number, in how many places it is an argument.
  std::vector<std::uint32_t> CountUsers() const;

 private:
  struct Visits;

  void _GatherIndependentArguments(const std::vector<std::uint32_t>& order);
  void _WeighGates(const std::vector<std::uint32_t>& order);
  void _OrderVariables(std::uint32_t top);
  void _SortArguments(std::uint32_t gate);
  std::uint32_t _AddVariable(bool isModule, std::size_t number);

  OrvaDiagramGraph& _graph;
  std::vector<bool> _isModule;              // by number of the gate
  std::vector<std::uint32_t> _occurrences;  // by number of the gate
  std::vector<double> _weights;             // by number of the gate: the leaves of its tree
  std::vector<std::uint32_t> _modulesOfGates;
  std::vector<std::uint32_t> _variablesOfGates;
  std::vector<std::uint32_t> _variablesOfEvents;
  std::vector<Module> _modules;
  std::vector<Variable> _variables;
};
