// The minimal cutsets of a coherent function x·f1 + f0, where f1 contains f0, are those of f0, and
// x with those of f1 that contain none of f0 (A. Rauzy, "New algorithms for fault trees analysis",
// Reliability Engineering and System Safety 40, 1993).
//
// A coherent function is true when all events are. So is every function on a path of then-edges,
// and that is what an edge without complement says: below a coherent function the only complement
// is the impossible one. Therefore a node stands for one set of cutsets, and since nodes have
// higher numbers than those below them, one pass in the order of the numbers makes them all.
#include "diagram/OrvaCutsetExtraction.h"

#include <algorithm>
#include <cassert>

namespace {

// Most published models of up to 500 events stay below; beyond it the direct way is as fast.
constexpr std::size_t MAXIMUM_NUMBER_OF_NODES = 100000;

}  // namespace

OrvaCutsetExtraction::OrvaCutsetExtraction(const OrvaDiagramGraph& graph,
                                           const OrvaDiagramModules& modules,
                                           OrvaCutsetOperations& operations)
    : _binary(MAXIMUM_NUMBER_OF_NODES), _solver(graph, modules, _binary), _operations(operations) {}

bool OrvaCutsetExtraction::Extract(std::size_t number, Node& result) {
  _binary.SetRoom(MAXIMUM_NUMBER_OF_NODES);
  const OrvaBinaryDiagram::Edge edge = _solver.SolveModule(number);
  const bool isComplete = !_binary.IsExhausted();
  if (isComplete) result = _Extract(edge);
  _solver.ReleaseModule(number);
  return isComplete;
}

OrvaCutsetExtraction::Node OrvaCutsetExtraction::_Extract(OrvaBinaryDiagram::Edge edge) {
  std::vector<std::size_t> nodes = _binary.FindNodes(edge);
  std::sort(nodes.begin(), nodes.end());
  _cutsets.resize(std::max(_cutsets.size(), _binary.GetNumberOfNodes()));
  _cutsets[0] = OrvaCutsetDiagram::UNIT;
  const auto getCutsets = [this](OrvaBinaryDiagram::Edge below) {
    assert(!OrvaBinaryDiagram::IsComplement(below) || below == OrvaBinaryDiagram::IMPOSSIBLE);
    return below == OrvaBinaryDiagram::IMPOSSIBLE ? OrvaCutsetDiagram::EMPTY
                                                  : _cutsets[OrvaBinaryDiagram::GetNode(below)];
  };
  for (const std::size_t node : nodes) {
    const OrvaBinaryDiagram::Record& record = _binary[node];
    const Node elseCutsets = getCutsets(record.elseEdge);
    const Node thenCutsets =
        _operations.Without(getCutsets(record.thenEdge), elseCutsets, OrvaCutsetLimits());
    _cutsets[node] = _operations.Prepend(record.variable, thenCutsets, elseCutsets);
  }
  return getCutsets(edge);
}
