#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "diagram/OrvaDiagramArray.h"

// A reduced ordered binary decision diagram: Boolean functions of numbered variables, each an edge.
// An edge is a node or its complement; equal functions are equal edges.
class OrvaBinaryDiagram {
 public:
  using Edge = std::uint32_t;  // twice the number of a node, and 1 for the complement
  static constexpr Edge CERTAIN = 0;
  static constexpr Edge IMPOSSIBLE = 1;
  static constexpr std::uint32_t NO_VARIABLE = UINT32_MAX;

  struct Record {
    std::uint32_t variable;  // NO_VARIABLE for the first node, the constant
    Edge thenEdge;           // never a complement
    Edge elseEdge;
    std::uint32_t next;  // in the chain of its place in the table
  };

  // At most so many nodes: what is over is not done, and IsExhausted() tells.
  explicit OrvaBinaryDiagram(long maximumNumberOfNodes);

  static Edge Complement(Edge edge) { return edge ^ 1U; }
  static Edge ComplementIf(Edge edge, bool isComplement) {
    return edge ^ static_cast<Edge>(isComplement);
  }
  static bool IsComplement(Edge edge) { return (edge & 1U) != 0; }
  static std::size_t GetNode(Edge edge) { return edge >> 1; }

  // By number; a node has a higher number than those below it.
  const Record& operator[](std::size_t node) const { return _records[node]; }
  std::size_t GetNumberOfNodes() const { return _records.GetSize(); }
  bool IsExhausted() const { return _isExhausted; }
  // From now on at most so many nodes, and those that are there already.
  void SetRoom(std::size_t numberOfNodes);
  // The nodes of a function but the constant, as far as the limit, in no order.
  std::vector<std::size_t> FindNodes(Edge edge, std::size_t limit = SIZE_MAX);

  // A variable stands above all with higher numbers.
  Edge MakeVariable(std::uint32_t variable) { return _MakeNode(variable, CERTAIN, IMPOSSIBLE); }
  Edge And(Edge f, Edge g);
  Edge Or(Edge f, Edge g) { return Complement(And(Complement(f), Complement(g))); }

  // Removes every node that none of the roots needs, moves the others together in their order and
  // renames the roots. Not forced, it leaves all as they are while most nodes seem to be needed.
  void Collect(std::span<Edge> roots, bool isForced);
  // Gives up what only operations need.
  void Freeze();

 private:
  struct Entry {
    Edge f;
    Edge g;
    Edge result;
  };
  // A conjunction that waits for its else-part, then for its then-part.
  struct Task {
    Edge f;
    Edge g;
    int stage;
    Edge elseResult;
  };

  Edge _MakeNode(std::uint32_t variable, Edge thenEdge, Edge elseEdge);
  bool _Call(Edge f, Edge g);
  bool _Advance(Task& task);
  Edge _GetCofactor(Edge edge, std::uint32_t variable, bool value) const;
  std::size_t _GetPlace(std::uint32_t variable, Edge thenEdge, Edge elseEdge) const;
  Entry& _GetEntry(Edge f, Edge g);
  void _Hash(int bits);
  void _ResetCache(int bits);
  std::vector<bool> _Mark(std::span<const Edge> roots) const;

  std::size_t _maximumNumberOfNodes;
  bool _isExhausted = false;
  OrvaDiagramArray<Record> _records;
  OrvaDiagramArray<std::uint32_t> _table;  // 2^n places, 0 for none
  int _shift = 0;                          // 64 - n
  OrvaDiagramArray<Entry> _cache;          // 2^m entries
  int _cacheShift = 0;                     // 64 - m
  std::vector<Task> _tasks;
  std::vector<bool> _isFound;  // of nodes being counted; otherwise none
  Edge _result = IMPOSSIBLE;
  std::size_t _nodesAfterCollection = 0;
};
