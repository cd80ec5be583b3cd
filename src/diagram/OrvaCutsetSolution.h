#pragma once

#include <vector>

#include "diagram/OrvaCutsetDiagram.h"

class OrvaEvent;

// The minimal cutsets of a top event under limits, as a diagram of diagrams: a variable stands for
// a basic event or for a module, whose cutsets are a node of the same store. It holds every minimal
// cutset that keeps to the limits, and may hold others that don't: whoever counts or lists them
// looks at the limits. It knows nothing of where its cutsets go.
struct OrvaCutsetSolution {
  using Node = OrvaCutsetDiagram::Node;

  struct Variable {
    const OrvaEvent* event;  // null for a module; the model's
    double probability;      // of the event
    Node module;             // the cutsets of the module
  };

  OrvaCutsetDiagram diagram;
  std::vector<Variable> variables;
  Node top = OrvaCutsetDiagram::EMPTY;
  // The limits as given: at most that order, at least that probability.
  int maximumOrder = 0;
  double minimumProbability = 0.0;
};
