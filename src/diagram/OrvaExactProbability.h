#pragma once

#include <memory>
#include <vector>

#include "diagram/OrvaBinarySolver.h"
#include "quantification/OrvaApproximation.h"

// The exact probability of a Boolean function of independent basic events, negations included.
class OrvaExactProbability : public OrvaApproximation {
 public:
  // Makes the diagrams of the graph, which is rewritten, with at most so many nodes at a time; null
  // when they need more. They serve any number of computations.
  static std::unique_ptr<OrvaExactProbability> Build(OrvaDiagramGraph& graph,
                                                     long maximumNumberOfNodes);
  explicit OrvaExactProbability(std::unique_ptr<OrvaBinarySolution> solution);
  ~OrvaExactProbability() override;

  // The probability of the function, brought into [0, 1]; the cutsets don't count.
  double Compute(const OrvaMCSSet& set) override;
  std::size_t GetNumberOfNodes() const { return _solution->diagram.GetNumberOfNodes(); }

 private:
  using Edge = OrvaBinaryDiagram::Edge;

  // The probabilities that something is true and that it is false. Both are kept: a probability
  // near 1 can't tell how small its complement is.
  struct Chance {
    double isTrue;
    double isFalse;
  };
  Chance _GetChance(Edge edge) const;

  std::unique_ptr<OrvaBinarySolution> _solution;
  std::vector<Chance> _chances;  // by number of the node
};
