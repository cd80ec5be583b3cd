#pragma once

#include <cassert>
#include <cstdint>
#include <vector>

#include "store/OrvaMCSNode.h"

class OrvaMCSManager;
class OrvaMCSNodeTable;

// A run of nodes allocated together.
class OrvaMCSNodePage {
 public:
  OrvaMCSNodePage(OrvaMCSNodeTable* table, int size);
  ~OrvaMCSNodePage();
  OrvaMCSNodePage(const OrvaMCSNodePage&) = delete;
  OrvaMCSNodePage& operator=(const OrvaMCSNodePage&) = delete;

  OrvaMCSNode* GetNode(int i) const { return &_nodes[i]; }
  int GetSize() const { return _size; }

  // Offered to users of the class; the program itself does not call what follows.
  // Sets every node to zero.
  void Reset();

 private:
  OrvaMCSNodeTable* _table;
  int _size;
  OrvaMCSNode* _nodes;  // owned
};

// The store from which all nodes of all cutset trees come: pages of growing size and a list of
// free nodes.
class OrvaMCSNodeTable {
 public:
  explicit OrvaMCSNodeTable(OrvaMCSManager* manager);
  ~OrvaMCSNodeTable();
  OrvaMCSNodeTable(const OrvaMCSNodeTable&) = delete;
  OrvaMCSNodeTable& operator=(const OrvaMCSNodeTable&) = delete;

  // New nodes without parent. The sons of a new internal node become its own.
  OrvaMCSNode* NewLeaf(std::uint32_t type) {
    OrvaMCSNode* leaf = _NewNode();
    leaf->_SetLeaf(type);
    return leaf;
  }
  OrvaMCSNode* NewInternalNode(int index, OrvaMCSNode* thenSon, OrvaMCSNode* elseSon) {
    OrvaMCSNode* node = _NewNode();
    // Both sons are there, which the analyser loses sight of in the expansion of modules:
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
    node->_SetWord(OrvaMCSNode::INTERNAL | thenSon->GetType() | elseSon->GetType(), index);
    node->_parent = nullptr;
    node->_SetSons(thenSon, elseSon);
    return node;
  }
  void FreeNode(OrvaMCSNode* node) {
    assert(node->GetType() != OrvaMCSNode::FREE);
    ++_numberOfChanges;
    node->_SetLeaf(OrvaMCSNode::FREE);
    node->_then = _freeNode;
    _freeNode = node;
  }
  void FreeTree(OrvaMCSNode* root);
  // Gives a leaf another type.
  void MuteLeaf(OrvaMCSNode* leaf, std::uint32_t type) {
    assert(!leaf->IsInternal() && leaf->GetType() != OrvaMCSNode::FREE);
    ++_numberOfChanges;
    leaf->_SetWord(type, 0);
  }
  // Turns a leaf into an internal node over two undeveloped leaves, which are handed over.
  void ExpandLeaf(OrvaMCSNode* leaf, int index, OrvaMCSNode*& thenLeaf, OrvaMCSNode*& elseLeaf) {
    assert(!leaf->IsInternal() && leaf->GetType() != OrvaMCSNode::FREE);
    ++_numberOfChanges;
    thenLeaf = NewLeaf(OrvaMCSNode::UNDEVELOPED);
    elseLeaf = NewLeaf(OrvaMCSNode::UNDEVELOPED);
    leaf->_SetWord(OrvaMCSNode::INTERNAL | OrvaMCSNode::UNDEVELOPED, index);
    leaf->_SetSons(thenLeaf, elseLeaf);
  }
  // Recomputes the type of an internal node; when no bit of the mask lies below, the node becomes
  // a leaf of the joint type of its sons, whose subtrees are freed.
  void FoldInternalNode(OrvaMCSNode* node, unsigned mask);
  // How often the cutsets of a tree in the store may have changed: while it stays the same, so do
  // they. (Folding frees nodes, and counts by that.)
  std::uint64_t GetNumberOfChanges() const { return _numberOfChanges; }

  // Offered to users of the class; the program itself does not call what follows.
  // A leaf that is no minimal cutset is copied as an undeveloped one.
  OrvaMCSNode* CopyTree(OrvaMCSNode* root);
  // Turns cutoff leaves into undeveloped ones and recomputes the types above.
  void ResetTree(OrvaMCSNode* root);
  // Deletes all pages, with every tree in them, and makes a first one again.
  void Reset();
  // The number of nodes of all pages, in use or free.
  int GetNumberOfNodes() const;

 private:
  OrvaMCSNode* _NewNode() {
    if (_freeNode == nullptr) return _NewUnusedNode();
    OrvaMCSNode* node = _freeNode;
    assert(node->GetType() == OrvaMCSNode::FREE);
    _freeNode = node->_then;
    return node;
  }
  OrvaMCSNode* _NewUnusedNode();
  void _NewPage();
  void _DeletePages();

  static constexpr int STARTING_PAGE_SIZE = 16384;
  static constexpr int MAXIMUM_PAGE_SIZE = 1048576;

  OrvaMCSManager* _manager;
  int _currentPageSize = STARTING_PAGE_SIZE;
  std::vector<OrvaMCSNodePage*> _pages;  // owned
  OrvaMCSNode* _freeNode = nullptr;
  int _nextUnusedNode = 0;  // in the last page
  std::uint64_t _numberOfChanges = 0;
};
