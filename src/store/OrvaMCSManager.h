#pragma once

#include <vector>

#include "store/OrvaMCSEntryTable.h"
#include "store/OrvaMCSNodeTable.h"

// The store of all cutset trees: the nodes, the entries of the basic events that they test, and
// the statistics over trees.
//
// Statistics take the root of a tree; a null root contributes nothing. p(i) is the probability of
// entry i. No walk uses the machine stack in proportion to the tree.
class OrvaMCSManager {
 public:
  OrvaMCSManager();
  ~OrvaMCSManager();
  OrvaMCSManager(const OrvaMCSManager&) = delete;
  OrvaMCSManager& operator=(const OrvaMCSManager&) = delete;

  // Nodes: see OrvaMCSNodeTable.
  OrvaMCSNode* NewUndevelopedLeaf() { return _nodes.NewLeaf(OrvaMCSNode::UNDEVELOPED); }
  OrvaMCSNode* NewMinimalCutsetLeaf() { return _nodes.NewLeaf(OrvaMCSNode::MINIMAL_CUTSET); }
  OrvaMCSNode* NewInternalNode(int index, OrvaMCSNode* thenSon, OrvaMCSNode* elseSon) {
    return _nodes.NewInternalNode(index, thenSon, elseSon);
  }
  void FreeNode(OrvaMCSNode* node) { _nodes.FreeNode(node); }
  void FreeTree(OrvaMCSNode* root) { _nodes.FreeTree(root); }
  void MuteLeaf(OrvaMCSNode* leaf, OrvaMCSNode::Type type) { _nodes.MuteLeaf(leaf, type); }
  void ExpandLeaf(OrvaMCSNode* leaf, int index, OrvaMCSNode*& thenLeaf, OrvaMCSNode*& elseLeaf) {
    _nodes.ExpandLeaf(leaf, index, thenLeaf, elseLeaf);
  }
  void FoldInternalNode(OrvaMCSNode* node, unsigned mask) { _nodes.FoldInternalNode(node, mask); }
  std::uint64_t GetNumberOfTreeChanges() const { return _nodes.GetNumberOfChanges(); }

  // Entries: see OrvaMCSEntryTable.
  OrvaEvent* GetEvent(int index) const { return _entries.GetEvent(index); }
  void SetEvent(int index, OrvaEvent* event) { _entries.SetEvent(index, event); }
  OrvaVariable* GetVariable(int index) const { return _entries.GetVariable(index); }
  void SetVariable(int index, OrvaVariable* variable) { _entries.SetVariable(index, variable); }
  double GetProbability(int index) const { return _entries.GetProbability(index); }
  void SetProbability(int index, double p) { _entries.SetProbability(index, p); }
  OrvaMCSNode* GetModuleTree(int index) const { return _entries.GetModuleTree(index); }
  void SetModuleTree(int index, OrvaMCSNode* tree) { _entries.SetModuleTree(index, tree); }
  int GetIndexOfHighestEntry() const { return _entries.GetIndexOfHighestEntry(); }
  int GetSizeOfEntryTable() const { return _entries.GetSize(); }
  void SetSizeOfEntryTable(int size) { _entries.Resize(size); }

  // -1 without cutsets.
  void ComputeHighestOrderOfMinimalCutsets(OrvaMCSNode* root, int& order) const;
  // A new array, the caller's, of the numbers of cutsets by order, 0 .. highest; their total.
  // Without cutsets the array is null and the highest order -1.
  void ComputeOrdersOfMinimalCutsets(OrvaMCSNode* root, int*& numbers, int& highestOrder,
                                     int& total) const;
  // A new array, the caller's, of the numbers of cutsets that contain each index,
  // 0 .. the highest entry index; their total, at most the largest integer.
  void ComputeNumberOfOccurrencesOfVariablesInMinimalCutsets(OrvaMCSNode* root, int*& numbers,
                                                             int& highestIndex, int& total) const;
  // The sum over the cutsets of the products of the probabilities of their events, and the
  // highest of these products.
  void ComputeSumOfMinimalCutsetProbabilities(OrvaMCSNode* root, double& sum) const;
  void ComputeHighestMinimalCutsetProbability(OrvaMCSNode* root, double& highest) const;

  // Offered to users of the class; the program itself does not call what follows.
  bool IsLocked() const { return _lock != 0; }
  // Forgets all entries and all trees.
  void Reset();
  OrvaMCSNode* NewNonMinimalCutsetLeaf() { return _nodes.NewLeaf(OrvaMCSNode::NON_MINIMAL_CUTSET); }
  OrvaMCSNode* NewDeadEndLeaf() { return _nodes.NewLeaf(OrvaMCSNode::DEAD_END); }
  OrvaMCSNode* NewPathsetLeaf() { return _nodes.NewLeaf(OrvaMCSNode::PATHSET); }
  OrvaMCSNode* NewCutoffLeaf() { return _nodes.NewLeaf(OrvaMCSNode::CUTOFF); }
  OrvaMCSNode* CopyTree(OrvaMCSNode* root) { return _nodes.CopyTree(root); }
  void ResetTree(OrvaMCSNode* root) { _nodes.ResetTree(root); }
  static int GetIndex(const OrvaMCSNode* node) { return node->GetIndex(); }
  static std::uint32_t GetType(const OrvaMCSNode* node) { return node->GetType(); }
  static OrvaMCSNode* GetThenSon(const OrvaMCSNode* node) { return node->GetThenSon(); }
  static OrvaMCSNode* GetElseSon(const OrvaMCSNode* node) { return node->GetElseSon(); }
  static OrvaMCSNode* GetParent(const OrvaMCSNode* node) { return node->GetParent(); }
  static double GetWeight(const OrvaMCSNode* node) { return node->GetWeight(); }
  int GetNumberOfNodes() const { return _nodes.GetNumberOfNodes(); }
  OrvaMCSEntry* GetEntry(int index) const { return _entries.GetEntry(index); }
  OrvaMCSEntry::Value GetValue(int index) const { return _entries.GetValue(index); }
  void SetValue(int index, OrvaMCSEntry::Value value) { _entries.SetValue(index, value); }
  int GetIndexOfLowestEntry() const { return _entries.GetIndexOfLowestEntry(); }
  // All nodes, leaves included; the minimal cutset leaves among them.
  void ComputeSizeOfTree(OrvaMCSNode* root, int& size) const;
  void ComputeNumberOfMinimalCutsets(OrvaMCSNode* root, int& number) const;
  // Write into every leaf: the product of `w` and the p(i) of the then-branches above it, for a
  // minimal cutset the probability of the cutset; or 0; or the number of then-branches above it,
  // counting from `order`; or the product of `w`, the p(i) of the then-branches and the 1 - p(i) of
  // the else-branches above it.
  void SetWeightsOfLeavesAsCutsetProbabilities(OrvaMCSNode* root, double w);
  void ResetWeightsOfLeaves(OrvaMCSNode* root);
  void SetWeightsOfLeavesAsCutsetOrders(OrvaMCSNode* root, int order);
  void SetWeightsOfLeavesAsProductProbabilities(OrvaMCSNode* root, double w);

 private:
  int _lock = 0;
  OrvaMCSNodeTable _nodes;
  OrvaMCSEntryTable _entries;
  // The stack of the walks that combine values upward, kept so that they allocate nothing.
  mutable std::vector<double> _values;
  std::vector<double> _weights;
};
