#pragma once

#include <algorithm>
#include <cfloat>
#include <cstdint>
#include <span>
#include <vector>

#include "diagram/OrvaDiagramArray.h"

// The store of a zero-suppressed decision diagram: sets of cutsets over numbered variables, each
// node a set. A node (x, then, else) holds the cutsets of its else-node, and those of its then-node
// with x added. Equal sets are one node.
//
// Nodes are numbers; they stay valid until Collect() moves them.
class OrvaCutsetDiagram {
 public:
  using Node = std::uint32_t;
  static constexpr Node EMPTY = 0;  // no cutset
  static constexpr Node UNIT = 1;   // the empty cutset alone
  // Operations keep two bits of the number of a node for themselves.
  static constexpr Node MAXIMUM_NODE = (1U << 30) - 1;

  // What one variable brings into a cutset at least: events, and a factor of at most that. For an
  // event 1 and its probability, for a module the bounds of its own diagram.
  struct Weight {
    std::uint32_t leastOrder;
    float greatestProbability;
    // What a limit on probability is multiplied with for the rest of the cutset: 1 over the
    // greatest probability, rounded down.
    float requirement;
  };

  // Bounds over the cutsets of a node, which truncation lives on. Counts end at COUNT_LIMIT, which
  // stands for "that or more"; a count that is a lower bound stays one, and the greatest length is
  // compared in a way that allows for it.
  struct Record {
    std::uint32_t variable;  // NO_VARIABLE for EMPTY and UNIT
    Node thenNode;
    Node elseNode;
    Node next;  // in the chain of its place in the table
    std::uint16_t leastLength;
    std::uint16_t greatestLength;  // in variables
    std::uint16_t leastOrder;      // in basic events
    std::uint16_t mark;
    float greatestProbability;  // of a cutset, rounded up
  };
  static constexpr std::uint32_t NO_VARIABLE = UINT32_MAX;
  static constexpr std::uint16_t COUNT_LIMIT = UINT16_MAX;
  // More than the relative error of one rounding to a float.
  static constexpr double ROUNDING = 1.0 / (1 << 22);

  OrvaCutsetDiagram();

  const Record& operator[](Node node) const { return _records[node]; }
  std::size_t GetNumberOfNodes() const { return _records.GetSize(); }
  // The number of nodes below the node, itself included, as far as the limit.
  std::size_t CountNodes(Node node, std::size_t limit);

  // Weights are set once, before the first node of the variable is made.
  void SetWeight(std::uint32_t variable, std::uint32_t leastOrder, float greatestProbability);
  const Weight& GetWeight(std::uint32_t variable) const { return _weights[variable]; }

  // The variable has to stand above those of both nodes, which means that its number is lower.
  Node MakeNode(std::uint32_t variable, Node thenNode, Node elseNode) {
    if (thenNode == EMPTY) return elseNode;
    Node& first = _table[_GetPlace(variable, thenNode, elseNode)];
    for (Node node = first; node != EMPTY; node = _records[node].next) {
      const Record& record = _records[node];
      if (record.thenNode == thenNode && record.elseNode == elseNode &&
          record.variable == variable) {
        return node;
      }
    }
    return _AddNode(variable, thenNode, elseNode, first);
  }
  // The set of the one cutset {variable}.
  Node MakeVariable(std::uint32_t variable) { return MakeNode(variable, UNIT, EMPTY); }

  // Removes every node that none of the roots needs, moves the others together and renames the
  // roots. True when it did; when most nodes are needed it leaves all as they are.
  bool Collect(std::span<Node> roots);

  // A float that is not below (not above) the bound, and near it. Bounds that are too small for a
  // float become its least number when rounded up, and 0 when rounded down.
  static float RoundUp(double bound) {
    if (bound <= 0.0) return 0.0F;
    return std::clamp(static_cast<float>(bound * (1.0 + ROUNDING)), FLT_MIN, FLT_MAX);
  }
  static float RoundDown(double bound) {
    const double below = bound * (1.0 - ROUNDING);
    return below < FLT_MIN ? 0.0F : static_cast<float>(std::min<double>(below, FLT_MAX));
  }

 private:
  std::size_t _GetPlace(std::uint32_t variable, Node thenNode, Node elseNode) const {
    constexpr std::uint64_t MULTIPLIER = 0x9e3779b97f4a7c15;  // 2^64 over the golden ratio
    const std::uint64_t pair = (static_cast<std::uint64_t>(thenNode) << 32) | elseNode;
    const std::uint64_t hash = (pair * MULTIPLIER) ^ (variable * 0xff51afd7ed558ccdU);
    return static_cast<std::size_t>((hash * MULTIPLIER) >> _shift);
  }
  Node _AddNode(std::uint32_t variable, Node thenNode, Node elseNode, Node& first);
  void _Hash(int bits);
  std::size_t _Mark(std::span<const Node> roots);
  void _MoveTogether(std::span<Node> roots);

  OrvaDiagramArray<Record> _records;
  OrvaDiagramArray<Node> _table;  // 2^n places, EMPTY for none
  int _shift = 0;                 // 64 - n
  std::vector<Weight> _weights;
  std::size_t _nodesAfterCollection = 0;
};
