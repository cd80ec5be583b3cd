#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "diagram/OrvaDiagramGraph.h"

// Rewrites a graph, its function staying the same, into one with fewer and more independent gates.
class OrvaGraphSimplifier {
 public:
  explicit OrvaGraphSimplifier(OrvaDiagramGraph& graph) : _graph(graph) {}

  void Simplify();

 private:
  using Literal = OrvaDiagramGraph::Literal;
  using Gate = OrvaDiagramGraph::Gate;
  // The gates with the same hash value, by number.
  using EqualGates = std::unordered_multimap<std::uint64_t, std::uint32_t>;

  bool _Canonicalize();
  bool _CanonicalizeGate(Gate& gate);
  bool _ReplaceGate(std::uint32_t number, EqualGates& known);
  bool _MergeNestedGates();
  void _CountOccurrences(const std::vector<std::uint32_t>& gates);
  bool _IsAbsorbed(Literal argument, const Gate& parent) const;
  void _Absorb(Gate& gate);
  bool _GatherCompanions();
  template <class Replacement>
  void _ReplaceCompanions(Gate& gate, Replacement replacement);

  OrvaDiagramGraph& _graph;
  std::vector<Literal> _replacements;       // by number of the gate
  std::vector<std::uint32_t> _occurrences;  // by number of the gate
  std::vector<const Gate*> _lastUsers;      // by number of a new gate: who got it last
};
