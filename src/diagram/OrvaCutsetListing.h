#pragma once

#include <cstddef>
#include <vector>

#include "diagram/OrvaCutsetSolution.h"

class OrvaMCSManager;
class OrvaMCSNode;
class OrvaMCSSet;

// Writes the cutsets of a solution that keep to its limits as cutset trees.
class OrvaCutsetListing {
 public:
  // The events of the solution have their indices in the store of the manager; neither is owned.
  OrvaCutsetListing(const OrvaCutsetSolution& solution, OrvaMCSManager* manager);

  // Adds to the set the cutsets that are not there, and returns their number.
  long AddTo(OrvaMCSSet* set);

 private:
  using Node = OrvaCutsetDiagram::Node;
  using Place = std::uint32_t;

  // What is still to come behind a diagram: another one, and what comes behind that.
  struct Rest {
    Node node;
    Place next;
    // Bounds of all that is to come.
    std::uint32_t leastOrder;
    double greatestProbability;
  };
  // Where the walk is: see the source.
  struct State {
    Node node;
    Place rest;
    Place otherwise;
    int order;
    double probability;
  };
  // Where the walk goes on when the module that it is in turns out false: in a state with the order
  // and the probability of that moment.
  struct Otherwise {
    Node node;
    Place rest;
    Place next;
  };
  // A node of the cutset tree whose sons are being made: the then-son first.
  struct Frame {
    State elseState;
    int index;
    OrvaMCSNode* thenSon;
    std::size_t numberOfRests;
    std::size_t numberOfOtherwises;
  };

  OrvaMCSNode* _ListTree();
  bool _MoveToCandidate(State& state) const;
  bool _CanYield(const State& state) const;
  void _EnterModule(State& state, const OrvaCutsetDiagram::Record& record);
  void _TakeEvent(State& state, const OrvaCutsetDiagram::Record& record);
  OrvaMCSNode* _NewLeaf(int order, double probability);
  bool _GoOn(State& state, OrvaMCSNode*& result);
  bool _IsWithinLimits(int order, double probability) const;

  const OrvaCutsetSolution& _solution;
  OrvaMCSManager* _manager;
  std::vector<int> _indices;  // in the store, by number of the variable
  double _lowestBound;
  std::vector<Rest> _rests;
  std::vector<Otherwise> _otherwises;
  std::vector<Frame> _frames;
  long _numberOfCutsets = 0;
};
