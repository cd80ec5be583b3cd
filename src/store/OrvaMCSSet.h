#pragma once

#include <vector>

#include "store/OrvaMCSManager.h"
#include "store/OrvaMCSProgram.h"

// What importance factors need to know of one basic event of a cutset set.
struct OrvaMCSBasicEvent {
  double probability = 0.0;
  // The derivative of the sum of the cutset probabilities with respect to that probability.
  double marginalImportanceFactor = 0.0;
  // In how many minimal cutsets the event is.
  int numberOfOccurrences = 0;
};

// The minimal cutsets of a top event: a tree in the node store, and what was computed from it.
//
// The set owns the tree but leaves it in the store when it is destroyed; the store goes with all
// its trees. Statistics are those of OrvaMCSManager, on the whole tree.
class OrvaMCSSet {
 public:
  OrvaMCSSet(OrvaMCSManager* manager, OrvaMCSNode* root);
  ~OrvaMCSSet();
  OrvaMCSSet(const OrvaMCSSet&) = delete;
  OrvaMCSSet& operator=(const OrvaMCSSet&) = delete;

  OrvaMCSManager* GetManager() const { return _manager; }
  OrvaMCSNode* GetRootNode() const { return _root; }
  // Frees the former tree, unless it is the same.
  void SetRootNode(OrvaMCSNode* root);

  void ComputeHighestOrderOfMinimalCutsets(int& order) const {
    _manager->ComputeHighestOrderOfMinimalCutsets(_root, order);
  }
  void ComputeOrdersOfMinimalCutsets(int*& numbers, int& highestOrder, int& total) const {
    _manager->ComputeOrdersOfMinimalCutsets(_root, numbers, highestOrder, total);
  }
  void ComputeNumberOfOccurrencesOfVariablesInMinimalCutsets(int*& numbers, int& highestIndex,
                                                             int& total) const {
    _manager->ComputeNumberOfOccurrencesOfVariablesInMinimalCutsets(_root, numbers, highestIndex,
                                                                    total);
  }
  void ComputeSumOfMinimalCutsetProbabilities(double& sum) const {
    _manager->ComputeSumOfMinimalCutsetProbabilities(_root, sum);
  }
  void ComputeHighestMinimalCutsetProbability(double& highest) const {
    _manager->ComputeHighestMinimalCutsetProbability(_root, highest);
  }

  // The rare-event approximation: the sum of the cutset probabilities, brought into [0, 1]. NaN
  // stays NaN.
  double UpdateTopEventProbability();

  // The table of basic events, by index in the store. The first update makes it; entries of
  // indices that came to the store since are added.
  void CreateBasicEventTable();
  int GetHighestBasicEventIndex() const { return static_cast<int>(_basicEvents.size()) - 1; }
  // Null for an index outside the table.
  const OrvaMCSBasicEvent* GetBasicEvent(int index) const;
  // Take the probabilities from the store, of one event or of all, and start the factors at 0.
  void UpdateBasicEventIndicators(int index);
  void UpdateBasicEventsIndicators();
  // Computes the marginal importance factors and the numbers of occurrences of all events, and by
  // the way what UpdateTopEventProbability computes, which it returns.
  double UpdateMarginalImportanceFactors();

  // Offered to users of the class; the program itself does not call what follows.
  // A new set, the caller's, with a copy of the tree: see OrvaMCSNodeTable::CopyTree.
  OrvaMCSSet* Copy() const;
  void FreeTree() { SetRootNode(nullptr); }
  void ResetTree() { _manager->ResetTree(_root); }
  // Inserts the leaves of the cutsets, then-sons first.
  void CollectMinimalCutsets(LumoContainer* result) const;
  void ComputeSizeOfTree(int& size) const { _manager->ComputeSizeOfTree(_root, size); }
  void ComputeNumberOfMinimalCutsets(int& number) const {
    _manager->ComputeNumberOfMinimalCutsets(_root, number);
  }
  void SetWeightsOfLeavesAsCutsetProbabilities() {
    _manager->SetWeightsOfLeavesAsCutsetProbabilities(_root, 1.0);
  }
  void ResetWeightsOfLeaves() { _manager->ResetWeightsOfLeaves(_root); }
  void SetWeightsOfLeavesAsProductProbabilities() {
    _manager->SetWeightsOfLeavesAsProductProbabilities(_root, 1.0);
  }
  double GetTopEventProbability() const { return _topEventProbability; }
  void DeleteBasicEventTable();

 private:
  OrvaMCSProgram& _GetProgram();
  double _SetTopEventProbability(double sum);

  OrvaMCSManager* _manager;
  OrvaMCSNode* _root;
  std::vector<OrvaMCSBasicEvent> _basicEvents;
  // The tree, compiled when the store had counted that many changes.
  OrvaMCSProgram _program;
  std::uint64_t _numberOfTreeChanges = NEVER_COMPILED;
  double _topEventProbability = 0.0;

  static constexpr std::uint64_t NEVER_COMPILED = static_cast<std::uint64_t>(-1);
};
