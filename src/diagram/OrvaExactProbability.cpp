// The probability of a node is that of its then-edge where its variable is true and that of its
// else-edge where it is false (R. E. Bryant, 1986; A. Rauzy, "New algorithms for fault trees
// analysis", Reliability Engineering and System Safety 40, 1993). Nodes stand behind those below
// them, and a module before those that use it as a variable: one pass in the order of the numbers
// computes them all.
//
// Each node carries the probability that it is true and the probability that it is false, both as
// sums of products of what is below. The second is not computed as a difference: with complemented
// edges that would leave of a probability of 1e-12 no more than four digits.
#include "diagram/OrvaExactProbability.h"

#include <algorithm>
#include <utility>

#include "model/OrvaEvent.h"
#include "support/memory/LumoMemoryManager.h"

std::unique_ptr<OrvaExactProbability> OrvaExactProbability::Build(OrvaDiagramGraph& graph,
                                                                  long maximumNumberOfNodes) {
  std::unique_ptr<OrvaBinarySolution> solution =
      OrvaBinarySolver::Solve(graph, maximumNumberOfNodes);
  if (solution == nullptr) return nullptr;
  return std::make_unique<OrvaExactProbability>(std::move(solution));
}

OrvaExactProbability::OrvaExactProbability(std::unique_ptr<OrvaBinarySolution> solution)
    : _solution(std::move(solution)), _chances(_solution->diagram.GetNumberOfNodes()) {
  LumoMemoryManager::TraceNew(this, "OrvaExactProbability");
}

OrvaExactProbability::~OrvaExactProbability() {
  LumoMemoryManager::TraceDelete(this, "OrvaExactProbability");
}

OrvaExactProbability::Chance OrvaExactProbability::_GetChance(Edge edge) const {
  const Chance chance = _chances[OrvaBinaryDiagram::GetNode(edge)];
  return OrvaBinaryDiagram::IsComplement(edge) ? Chance{chance.isFalse, chance.isTrue} : chance;
}

double OrvaExactProbability::Compute(const OrvaMCSSet& /*set*/) {
  const OrvaBinaryDiagram& diagram = _solution->diagram;
  _chances[0] = {1.0, 0.0};
  for (std::size_t node = 1; node < diagram.GetNumberOfNodes(); ++node) {
    const OrvaBinaryDiagram::Record& record = diagram[node];
    const OrvaBinarySolution::Variable& variable = _solution->variables[record.variable];
    Chance own;
    if (variable.event == nullptr) {
      own = _GetChance(variable.module);
    } else {
      own.isTrue = variable.event->GetProbability();
      own.isFalse = 1.0 - own.isTrue;
    }
    const Chance thenChance = _GetChance(record.thenEdge);
    const Chance elseChance = _GetChance(record.elseEdge);
    _chances[node] = {own.isTrue * thenChance.isTrue + own.isFalse * elseChance.isTrue,
                      own.isTrue * thenChance.isFalse + own.isFalse * elseChance.isFalse};
  }
  return std::clamp(_GetChance(_solution->top).isTrue, 0.0, 1.0);
}
