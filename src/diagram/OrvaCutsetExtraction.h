#pragma once

#include <cstddef>
#include <vector>

#include "diagram/OrvaBinaryDiagram.h"
#include "diagram/OrvaBinarySolver.h"
#include "diagram/OrvaCutsetOperations.h"
#include "diagram/OrvaDiagramModules.h"

// Takes the minimal cutsets of modules from binary diagrams of theirs.
class OrvaCutsetExtraction {
 public:
  using Node = OrvaCutsetDiagram::Node;

  // Nothing is owned. The graph has no negated literals.
  OrvaCutsetExtraction(const OrvaDiagramGraph& graph, const OrvaDiagramModules& modules,
                       OrvaCutsetOperations& operations);

  // All minimal cutsets of the module of that number, over its variables. False, and nothing done,
  // when its binary diagram grows too large.
  bool Extract(std::size_t number, Node& result);

 private:
  Node _Extract(OrvaBinaryDiagram::Edge edge);

  OrvaBinaryDiagram _binary;
  OrvaBinarySolver _solver;
  OrvaCutsetOperations& _operations;
  std::vector<Node> _cutsets;  // by node of the binary diagram
};
