// Binary decision diagrams, as published by R. E. Bryant, "Graph-based algorithms for Boolean
// function manipulation", IEEE Transactions on Computers 35, 1986, with complemented edges (K. S.
// Brace, R. L. Rudell and R. E. Bryant, "Efficient implementation of a BDD package", Design
// Automation Conference 1990): a function and its negation share their nodes, and the conjunction
// is the only operation. A then-edge is never a complement, so that equal functions are equal
// edges.
//
// As in the diagrams of cutsets, a conjunction that needs a part of itself waits on a stack of
// tasks, since its depth is the number of variables; the cache is direct-mapped and forgets; dead
// nodes are looked for only now and then, and then the others are moved together in their order, so
// that one pass in the order of the numbers evaluates a diagram.
#include "diagram/OrvaBinaryDiagram.h"

#include <algorithm>
#include <cassert>
#include <utility>

using Edge = OrvaBinaryDiagram::Edge;

namespace {

constexpr int WORD_BITS = 64;
constexpr int FIRST_TABLE_BITS = 10;
constexpr std::size_t NODES_PER_ENTRY = 2;
constexpr std::size_t MINIMUM_COLLECTION = 1U << 16;
constexpr std::uint64_t MULTIPLIER = 0x9e3779b97f4a7c15;  // 2^64 over the golden ratio
// The numbers of nodes have to leave room for the complement.
constexpr std::size_t MAXIMUM_NODE = std::size_t{1} << 31;

}  // namespace

OrvaBinaryDiagram::OrvaBinaryDiagram(long maximumNumberOfNodes)
    : _maximumNumberOfNodes(
          std::min(static_cast<std::size_t>(std::max(maximumNumberOfNodes, 0L)), MAXIMUM_NODE)) {
  _records.Add({NO_VARIABLE, CERTAIN, CERTAIN, 0});
  _Hash(FIRST_TABLE_BITS);
  _ResetCache(FIRST_TABLE_BITS);
}

void OrvaBinaryDiagram::SetRoom(std::size_t numberOfNodes) {
  _maximumNumberOfNodes = std::min(_records.GetSize() + numberOfNodes, MAXIMUM_NODE);
  _isExhausted = false;
}

std::size_t OrvaBinaryDiagram::_GetPlace(std::uint32_t variable, Edge thenEdge,
                                         Edge elseEdge) const {
  const std::uint64_t pair = (static_cast<std::uint64_t>(thenEdge) << 32) | elseEdge;
  const std::uint64_t hash = (pair * MULTIPLIER) ^ (variable * 0xff51afd7ed558ccdU);
  return static_cast<std::size_t>((hash * MULTIPLIER) >> _shift);
}

Edge OrvaBinaryDiagram::_MakeNode(std::uint32_t variable, Edge thenEdge, Edge elseEdge) {
  if (thenEdge == elseEdge) return thenEdge;
  const bool isComplement = IsComplement(thenEdge);
  thenEdge = ComplementIf(thenEdge, isComplement);
  elseEdge = ComplementIf(elseEdge, isComplement);
  std::uint32_t& first = _table[_GetPlace(variable, thenEdge, elseEdge)];
  for (std::uint32_t node = first; node != 0; node = _records[node].next) {
    const Record& record = _records[node];
    if (record.thenEdge == thenEdge && record.elseEdge == elseEdge && record.variable == variable) {
      return ComplementIf(node << 1, isComplement);
    }
  }
  if (_records.GetSize() > _maximumNumberOfNodes) {
    _isExhausted = true;
    return IMPOSSIBLE;
  }
  assert(variable < _records[GetNode(thenEdge)].variable);
  assert(variable < _records[GetNode(elseEdge)].variable);
  const auto node = static_cast<std::uint32_t>(_records.GetSize());
  _records.Add({variable, thenEdge, elseEdge, std::exchange(first, node)});
  if (node >= 2 * _table.GetSize()) _Hash(WORD_BITS - _shift + 1);
  return ComplementIf(node << 1, isComplement);
}

// A new table of 2^bits places, all nodes in it.
void OrvaBinaryDiagram::_Hash(int bits) {
  _shift = WORD_BITS - bits;
  _table.Fill(std::size_t{1} << bits, 0);
  for (std::uint32_t node = 1; node < _records.GetSize(); ++node) {
    Record& record = _records[node];
    std::uint32_t& first = _table[_GetPlace(record.variable, record.thenEdge, record.elseEdge)];
    record.next = std::exchange(first, node);
  }
}

// An entry of the constant is none: its conjunctions are not looked up.
void OrvaBinaryDiagram::_ResetCache(int bits) {
  _cacheShift = WORD_BITS - bits;
  _cache.Fill(std::size_t{1} << bits, {CERTAIN, CERTAIN, CERTAIN});
}

OrvaBinaryDiagram::Entry& OrvaBinaryDiagram::_GetEntry(Edge f, Edge g) {
  const std::uint64_t pair = (static_cast<std::uint64_t>(f) << 32) | g;
  return _cache[static_cast<std::size_t>(((pair ^ (pair >> 29)) * MULTIPLIER) >> _cacheShift)];
}

Edge OrvaBinaryDiagram::And(Edge f, Edge g) {
  assert(_tasks.empty());
  if (_Call(f, g)) return _result;
  while (!_tasks.empty()) {
    Task& task = _tasks.back();
    if (!_Advance(task)) continue;
    if (_isExhausted) {
      _tasks.clear();
      return IMPOSSIBLE;
    }
    if (_records.GetSize() > NODES_PER_ENTRY * _cache.GetSize()) {
      _ResetCache(WORD_BITS - _cacheShift + 1);
    }
    _GetEntry(task.f, task.g) = {task.f, task.g, _result};
    _tasks.pop_back();
  }
  return _result;
}

// True when the result is there; otherwise a task for it stands on the stack.
bool OrvaBinaryDiagram::_Call(Edge f, Edge g) {
  if (f > g) std::swap(f, g);
  if (f == CERTAIN || f == g) {
    _result = g;
    return true;
  }
  if (f == IMPOSSIBLE || f == Complement(g)) {
    _result = IMPOSSIBLE;
    return true;
  }
  const Entry& entry = _GetEntry(f, g);
  if (entry.f == f && entry.g == g) {
    _result = entry.result;
    return true;
  }
  _tasks.push_back({f, g, 0, IMPOSSIBLE});
  return false;
}

bool OrvaBinaryDiagram::_Advance(Task& task) {
  const std::uint32_t variable =
      std::min(_records[GetNode(task.f)].variable, _records[GetNode(task.g)].variable);
  switch (task.stage++) {
    case 0:
      if (!_Call(_GetCofactor(task.f, variable, false), _GetCofactor(task.g, variable, false))) {
        return false;
      }
      ++task.stage;
      [[fallthrough]];
    case 1:
      task.elseResult = _result;
      if (!_Call(_GetCofactor(task.f, variable, true), _GetCofactor(task.g, variable, true))) {
        return false;
      }
      [[fallthrough]];
    default:
      _result = _MakeNode(variable, _result, task.elseResult);
      return true;
  }
}

// What a function becomes with a value for a variable that does not stand below its own.
Edge OrvaBinaryDiagram::_GetCofactor(Edge edge, std::uint32_t variable, bool value) const {
  const Record& record = _records[GetNode(edge)];
  if (record.variable != variable) return edge;
  return ComplementIf(value ? record.thenEdge : record.elseEdge, IsComplement(edge));
}

std::vector<std::size_t> OrvaBinaryDiagram::FindNodes(Edge edge, std::size_t limit) {
  _isFound.resize(std::max(_isFound.size(), _records.GetSize()));
  std::vector<std::size_t> found;
  const auto visit = [&](std::size_t node) {
    if (node == 0 || _isFound[node] || found.size() >= limit) return;
    _isFound[node] = true;
    found.push_back(node);
  };
  visit(GetNode(edge));
  for (std::size_t i = 0; i < found.size(); ++i) {
    visit(GetNode(_records[found[i]].thenEdge));
    visit(GetNode(_records[found[i]].elseEdge));
  }
  for (const std::size_t node : found) _isFound[node] = false;
  return found;
}

std::vector<bool> OrvaBinaryDiagram::_Mark(std::span<const Edge> roots) const {
  std::vector<bool> isNeeded(_records.GetSize());
  isNeeded[0] = true;
  for (const Edge root : roots) isNeeded[GetNode(root)] = true;
  for (std::size_t node = _records.GetSize() - 1; node > 0; --node) {
    if (!isNeeded[node]) continue;
    isNeeded[GetNode(_records[node].thenEdge)] = true;
    isNeeded[GetNode(_records[node].elseEdge)] = true;
  }
  return isNeeded;
}

// The field `next`, of no use until the table is made anew, tells where the node that stood there
// has gone. So a record leaves that field as it is in the place that it moves to.
void OrvaBinaryDiagram::Collect(std::span<Edge> roots, bool isForced) {
  const std::size_t size = _records.GetSize();
  if (!isForced && (size < MINIMUM_COLLECTION || size < 2 * _nodesAfterCollection)) return;
  const std::vector<bool> isNeeded = _Mark(roots);
  const auto rename = [this](Edge edge) {
    return ComplementIf(_records[GetNode(edge)].next << 1, IsComplement(edge));
  };
  std::uint32_t end = 0;
  for (std::size_t node = 0; node < size; ++node) {
    if (!isNeeded[node]) continue;
    Record record = _records[node];
    if (node != 0) {
      record.thenEdge = rename(record.thenEdge);
      record.elseEdge = rename(record.elseEdge);
    }
    _records[node].next = end;
    record.next = _records[end].next;
    _records[end++] = record;
  }
  for (Edge& root : roots) root = rename(root);
  _records.Shorten(end);
  _nodesAfterCollection = end;
  _Hash(WORD_BITS - _shift);
  _ResetCache(WORD_BITS - _cacheShift);
}

void OrvaBinaryDiagram::Freeze() {
  _table.Release();
  _cache.Release();
  _tasks = {};
  _isFound = {};
}
