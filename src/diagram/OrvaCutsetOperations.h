#pragma once

#include <cstdint>
#include <vector>

#include "diagram/OrvaCutsetDiagram.h"

// Bounds over the cutsets of something: they have at least so many basic events, and are at most so
// probable.
struct OrvaCutsetBounds {
  std::uint32_t leastOrder;
  float greatestProbability;
};

// What cutsets have to keep to: at most so many basic events, at least so probable. The probability
// is rounded down, as bounds of cutsets are rounded up.
struct OrvaCutsetLimits {
  std::uint32_t order = UINT32_MAX;
  float probability = 0.0F;

  bool IsBrokenBy(std::uint32_t leastOrder, float greatestProbability) const {
    return leastOrder > order || greatestProbability < probability;
  }
  // Whether all that keeps to the other limits keeps to these.
  bool Include(const OrvaCutsetLimits& other) const {
    return order >= other.order && probability <= other.probability;
  }
  friend bool operator==(const OrvaCutsetLimits&, const OrvaCutsetLimits&) = default;
};

// The operations on sets of minimal cutsets in a diagram. Each takes sets without a cutset that
// contains another one, and yields such a set. Nothing recurses.
class OrvaCutsetOperations {
 public:
  using Node = OrvaCutsetDiagram::Node;

  // The diagram is not owned.
  explicit OrvaCutsetOperations(OrvaCutsetDiagram& diagram);

  // The cutsets of f that contain no cutset of g.
  Node Without(Node f, Node g, OrvaCutsetLimits limits);
  // The minimal ones among the cutsets of f and g.
  Node Unite(Node f, Node g, OrvaCutsetLimits limits);
  // The minimal ones among the unions of a cutset of f and a cutset of g. Those that keep to the
  // limits are all there; others may be.
  Node Multiply(Node f, Node g, OrvaCutsetLimits limits);
  // The cutsets of `elseNode`, and those of `thenNode` with a variable above all of theirs.
  Node Prepend(std::uint32_t variable, Node thenNode, Node elseNode) {
    return _diagram.MakeNode(variable, thenNode, elseNode);
  }
  // To be called when nodes have been renamed.
  void Forget();

 private:
  enum class Operation : std::uint32_t { WITHOUT, UNITE, MULTIPLY };
  struct Key {
    std::uint32_t f;  // with the operation in its highest bits
    std::uint32_t g;
  };
  struct Entry {
    Key key;
    std::uint32_t order;
    float probability;
    Node result;
  };
  static constexpr std::uint32_t NO_KEY = UINT32_MAX;
  static constexpr Entry NO_ENTRY = {{NO_KEY, 0}, 0, 0.0F, OrvaCutsetDiagram::EMPTY};
  // An operation that waits for parts of itself: see the source.
  struct Task {
    Operation operation;
    Node f;
    Node g;
    int stage;
    OrvaCutsetLimits limits;
    Node elseResult;
    Node partial;
  };

  template <Operation operation>
  Node _Compute(Node f, Node g, OrvaCutsetLimits limits);
  template <Operation operation>
  bool _IsPlain(Node& f, Node& g, OrvaCutsetLimits limits);
  bool _IsBeyond(Node f, OrvaCutsetLimits limits) const;
  bool _IsVariableBeyond(std::uint32_t variable, OrvaCutsetLimits limits) const;
  bool _IsPlainDifference(Node& f, Node& g, OrvaCutsetLimits limits);
  bool _IsPlainUnion(Node& f, Node& g, OrvaCutsetLimits limits);
  bool _IsPlainProduct(Node& f, Node& g, OrvaCutsetLimits limits);
  template <Operation operation>
  bool _Call(Node f, Node g, OrvaCutsetLimits limits);
  bool _Advance(Task& task);
  bool _AdvanceDifference(Task& task);
  bool _AdvanceUnion(Task& task);
  bool _AdvanceProduct(Task& task);
  OrvaCutsetLimits _GetLimitsBelow(std::uint32_t variable, OrvaCutsetLimits limits) const;
  Entry& _GetEntry(const Key& key);
  void _Store(const Task& task);
  void _EnlargeCache();

  OrvaCutsetDiagram& _diagram;
  OrvaDiagramArray<Entry> _cache;  // 2^n entries
  int _shift = 0;                  // 64 - n
  std::vector<Task> _tasks;
  Node _result = OrvaCutsetDiagram::EMPTY;
};
