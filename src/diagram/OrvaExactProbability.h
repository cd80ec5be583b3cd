#pragma once

#include <memory>
#include <vector>

#include "diagram/OrvaBinarySolver.h"

// The exact probability of a Boolean function of independent basic events, negations included.
class OrvaExactProbability {
 public:
  // Makes the diagrams of the graph, which is rewritten, with at most so many nodes at a time; null
  // when they need more. They serve any number of computations.
  static std::unique_ptr<OrvaExactProbability> Build(OrvaDiagramGraph& graph,
                                                     long maximumNumberOfNodes);
  explicit OrvaExactProbability(std::unique_ptr<OrvaBinarySolution> solution);
  ~OrvaExactProbability();
  OrvaExactProbability(const OrvaExactProbability&) = delete;
  OrvaExactProbability& operator=(const OrvaExactProbability&) = delete;

  // The probability of the function, from the present probabilities of the events.
  double Compute();
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
