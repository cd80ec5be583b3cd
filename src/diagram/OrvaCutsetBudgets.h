#pragma once

#include <cstdint>
#include <vector>

#include "diagram/OrvaCutsetOperations.h"
#include "diagram/OrvaDiagramModules.h"

// What the limits of the top leave to each gate of a graph: a cutset of the gate that exceeds them
// is part of no cutset of the top that keeps to the limits of the top.
class OrvaCutsetBudgets {
 public:
  using Bounds = OrvaCutsetBounds;

  // The bounds of the events are by number of the event.
  OrvaCutsetBudgets(const OrvaDiagramGraph& graph, const OrvaDiagramModules& modules,
                    const std::vector<Bounds>& boundsOfEvents, const OrvaCutsetLimits& limits);

  const OrvaCutsetLimits& GetLimits(std::uint32_t gate) const { return _limits[gate]; }

 private:
  using Module = OrvaDiagramModules::Module;
  using Literal = OrvaDiagramGraph::Literal;
  using Gate = OrvaDiagramGraph::Gate;
  // The variables below each gate of one module, as sets of bits; empty where they would take too
  // much memory.
  class Supports;

  Bounds _GetBounds(Literal argument) const;
  Bounds _ComputeBounds(const Gate& gate, const Supports& supports) const;
  Bounds _ComputeBoundsOfAnd(const Gate& gate, const Supports& supports) const;
  Bounds _ComputeBoundsOfAtLeast(const Gate& gate, const Supports& supports) const;
  void _DistributeLimits(std::uint32_t gate, const Supports& supports);
  Bounds _GetBoundsOfOthers(const Gate& gate, Literal argument, const Supports& supports) const;
  Bounds _GetBoundsOfDisjointOthers(std::uint32_t gate, Literal argument) const;

  const OrvaDiagramGraph& _graph;
  const OrvaDiagramModules& _modules;
  const std::vector<Bounds>& _boundsOfEvents;
  std::vector<std::size_t> _positions;    // of the gates in their modules
  std::vector<Bounds> _bounds;            // by number of the gate
  std::vector<OrvaCutsetLimits> _limits;  // by number of the gate
};
