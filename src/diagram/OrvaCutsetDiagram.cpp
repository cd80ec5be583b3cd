// Zero-suppressed decision diagrams, as published by S. Minato, "Zero-suppressed BDDs for set
// manipulation in combinatorial problems", Design Automation Conference 1993: nodes whose then-node
// is empty are left out, and a hash table finds the node that is already there.
//
// Each node keeps four bounds over its cutsets, made from those of its two nodes when it is made:
// the operations and the listing cut off whole sets by looking at one record.
//
// A record takes 28 bytes, its share of the table 2 to 4. Dead nodes are not counted as they die;
// now and then those that are needed are marked, and when they are few they are moved together.
// Moving keeps their order, so that a node has always a higher number than the nodes below it, and
// one pass from the last node to the first marks them without a stack.
#include "diagram/OrvaCutsetDiagram.h"

#include <algorithm>
#include <cassert>

#include "support/memory/LumoMemoryManager.h"

namespace {

using Node = OrvaCutsetDiagram::Node;
using Record = OrvaCutsetDiagram::Record;

constexpr int WORD_BITS = 64;
constexpr int FIRST_TABLE_BITS = 10;
// Below this number of nodes it is not worth looking for dead ones.
constexpr std::size_t MINIMUM_COLLECTION = 1U << 16;

std::uint16_t Saturate(std::uint32_t count) {
  return static_cast<std::uint16_t>(std::min<std::uint32_t>(count, OrvaCutsetDiagram::COUNT_LIMIT));
}

}  // namespace

OrvaCutsetDiagram::OrvaCutsetDiagram() {
  _records.Add({NO_VARIABLE, EMPTY, EMPTY, EMPTY, COUNT_LIMIT, 0, COUNT_LIMIT, 0, 0.0F});
  _records.Add({NO_VARIABLE, EMPTY, EMPTY, EMPTY, 0, 0, 0, 0, 1.0F});
  _Hash(FIRST_TABLE_BITS);
}

void OrvaCutsetDiagram::SetWeight(std::uint32_t variable, std::uint32_t leastOrder,
                                  float greatestProbability) {
  if (variable >= _weights.size()) _weights.resize(variable + 1);
  const double inverse = 1.0 / static_cast<double>(std::max(greatestProbability, FLT_MIN));
  _weights[variable] = {leastOrder, greatestProbability, RoundDown(inverse)};
}

Node OrvaCutsetDiagram::_AddNode(std::uint32_t variable, Node thenNode, Node elseNode,
                                 Node& first) {
  assert(variable < _records[thenNode].variable && variable < _records[elseNode].variable);
  const Record& thenRecord = _records[thenNode];
  const Record& elseRecord = _records[elseNode];
  const Weight& weight = _weights[variable];
  const std::uint32_t order =
      std::min<std::uint32_t>(weight.leastOrder, COUNT_LIMIT) + thenRecord.leastOrder;
  const double probability =
      static_cast<double>(weight.greatestProbability) * thenRecord.greatestProbability;
  Record record;
  record.variable = variable;
  record.thenNode = thenNode;
  record.elseNode = elseNode;
  record.next = first;
  record.leastLength = std::min(Saturate(thenRecord.leastLength + 1U), elseRecord.leastLength);
  record.greatestLength =
      std::max(Saturate(thenRecord.greatestLength + 1U), elseRecord.greatestLength);
  record.leastOrder = std::min(Saturate(order), elseRecord.leastOrder);
  record.mark = 0;
  record.greatestProbability = std::max(RoundUp(probability), elseRecord.greatestProbability);
  const std::size_t number = _records.GetSize();
  if (number > MAXIMUM_NODE) LumoMemoryManager::EndOnExhaustedMemory();
  const auto node = static_cast<Node>(number);
  first = node;
  _records.Add(record);
  if (number >= 2 * _table.GetSize()) _Hash(WORD_BITS - _shift + 1);
  return node;
}

// A new table of 2^bits places, all nodes in it.
void OrvaCutsetDiagram::_Hash(int bits) {
  _shift = WORD_BITS - bits;
  _table.Fill(std::size_t{1} << bits, EMPTY);
  for (Node node = UNIT + 1; node < _records.GetSize(); ++node) {
    Record& record = _records[node];
    Node& first = _table[_GetPlace(record.variable, record.thenNode, record.elseNode)];
    record.next = first;
    first = node;
  }
}

std::size_t OrvaCutsetDiagram::CountNodes(Node node, std::size_t limit) {
  std::vector<Node> found;
  const auto visit = [&](Node next) {
    if (_records[next].mark != 0 || next <= UNIT || found.size() >= limit) return;
    _records[next].mark = 1;
    found.push_back(next);
  };
  visit(node);
  for (std::size_t i = 0; i < found.size(); ++i) {
    visit(_records[found[i]].thenNode);
    visit(_records[found[i]].elseNode);
  }
  for (const Node marked : found) _records[marked].mark = 0;
  return found.size();
}

bool OrvaCutsetDiagram::Collect(std::span<Node> roots) {
  const std::size_t size = _records.GetSize();
  if (size < MINIMUM_COLLECTION || size < 2 * _nodesAfterCollection) return false;
  const std::size_t needed = _Mark(roots);
  const bool isWorthwhile = needed < size / 2;
  if (isWorthwhile) {
    _MoveTogether(roots);
  } else {
    for (Node node = 0; node < size; ++node) _records[node].mark = 0;
  }
  _nodesAfterCollection = _records.GetSize();
  return isWorthwhile;
}

std::size_t OrvaCutsetDiagram::_Mark(std::span<const Node> roots) {
  for (const Node root : roots) _records[root].mark = 1;
  _records[EMPTY].mark = _records[UNIT].mark = 1;
  std::size_t marked = 2;
  for (auto node = static_cast<Node>(_records.GetSize() - 1); node > UNIT; --node) {
    const Record& record = _records[node];
    if (record.mark == 0) continue;
    assert(record.thenNode < node && record.elseNode < node);
    _records[record.thenNode].mark = 1;
    _records[record.elseNode].mark = 1;
    ++marked;
  }
  return marked;
}

// The field `next`, of no use until the table is made anew, tells where the node that stood there
// has gone. So a record leaves that field as it is in the place that it moves to.
void OrvaCutsetDiagram::_MoveTogether(std::span<Node> roots) {
  Node end = 0;
  for (Node node = 0; node < _records.GetSize(); ++node) {
    if (_records[node].mark == 0) continue;
    Record record = _records[node];
    record.mark = 0;
    if (node > UNIT) {
      record.thenNode = _records[record.thenNode].next;
      record.elseNode = _records[record.elseNode].next;
    }
    _records[node].next = end;
    record.next = _records[end].next;
    _records[end] = record;
    ++end;
  }
  for (Node& root : roots) root = _records[root].next;
  _records.Shorten(end);
  _Hash(WORD_BITS - _shift);
}
