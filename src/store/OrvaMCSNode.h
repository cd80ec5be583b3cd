#pragma once

#include <cassert>
#include <cstdint>

class LumoContainer;

// A node of a cutset tree, 32 bytes. An internal node tests one basic event: its then-son holds
// the cutsets that contain the event, its else-son those that do not. A leaf ends a path and may
// carry a weight. Nodes live in the pages of the node store and are only made there.
class OrvaMCSNode {
 public:
  // A bit set. An internal node joins the types of its sons, so that its type tells which kinds
  // of leaf lie below.
  enum Type : std::uint32_t {
    UNDEVELOPED = 1,  // an open path: nothing is stored yet
    DEAD_END = 2,
    PATHSET = 4,
    NON_MINIMAL_CUTSET = 8,
    MINIMAL_CUTSET = 15,  // the then-branches of the path are the cutset
    CUTOFF = 16,
    INTERNAL = 32,
  };
  // The index of a basic event has 24 bits.
  static constexpr int MAXIMUM_INDEX = (1 << 24) - 1;

  int GetIndex() const { return static_cast<int>(_word & INDEX_MASK); }
  std::uint32_t GetType() const { return _word >> TYPE_SHIFT; }
  bool IsInternal() const { return (_word & INTERNAL_BIT) != 0; }
  bool IsMinimalCutset() const { return GetType() == MINIMAL_CUTSET; }
  bool IsUndeveloped() const { return GetType() == UNDEVELOPED; }
  // Null for a root.
  OrvaMCSNode* GetParent() const { return _parent; }
  // Of an internal node.
  OrvaMCSNode* GetThenSon() const {
    assert(IsInternal());
    return _then;
  }
  OrvaMCSNode* GetElseSon() const {
    assert(IsInternal());
    return _else;
  }
  // Of a leaf; 0.0 for an internal node.
  double GetWeight() const { return IsInternal() ? 0.0 : _weight; }
  void SetWeight(double weight) {
    assert(!IsInternal());
    _weight = weight;
  }

  // Offered to users of the class; the program itself does not call what follows.
  bool IsThenSon() const { return _parent->_then == this; }
  // The number of then-branches between the root and the node.
  int GetCutsetOrder() const;
  // Inserts the minimal cutset leaves at or below the node, then-sons first.
  void CollectMinimalCutsets(LumoContainer* result);
  // Three-way, by the weights of two leaves.
  static int CompareWeights(const void* a, const void* b);

 private:
  friend class OrvaMCSNodeTable;

  // The type of a node that is in no tree.
  static constexpr std::uint32_t FREE = 0;
  static constexpr std::uint32_t INDEX_MASK = 0x00ffffff;
  static constexpr int TYPE_SHIFT = 24;
  static constexpr std::uint32_t INTERNAL_BIT = static_cast<std::uint32_t>(INTERNAL) << TYPE_SHIFT;

  void _SetWord(std::uint32_t type, int index) {
    assert(index >= 0 && index <= MAXIMUM_INDEX);
    _word = (type << TYPE_SHIFT) | static_cast<std::uint32_t>(index);
  }
  void _SetLeaf(std::uint32_t type) {
    _SetWord(type, 0);
    _parent = nullptr;
    _weight = 0.0;
    _else = nullptr;
  }
  void _SetSons(OrvaMCSNode* thenSon, OrvaMCSNode* elseSon) {
    assert(thenSon->GetType() != FREE && elseSon->GetType() != FREE && thenSon != elseSon);
    assert(thenSon->_parent == nullptr && elseSon->_parent == nullptr);  // a tree shares nothing
    _then = thenSon;
    _else = elseSon;
    thenSon->_parent = this;
    elseSon->_parent = this;
  }

  // No initialisers: pages are made of zero bytes, and are not touched before they are used.
  std::uint32_t _word;
  OrvaMCSNode* _parent;
  union {
    OrvaMCSNode* _then;  // of an internal node; in a free node, the next free one
    double _weight;      // of a leaf
  };
  OrvaMCSNode* _else;
};

static_assert(sizeof(void*) != 8 || sizeof(OrvaMCSNode) == 32);
