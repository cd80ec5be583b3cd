#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class OrvaMCSManager;
class OrvaMCSNode;

// A cutset tree written down as the arithmetic that its evaluation takes, in flat arrays: for
// studies that evaluate one tree at many dates or for many samples. It knows the tree as it was
// when it was compiled.
//
// Events are numbered 0, 1, ... as the tree meets them.
class OrvaMCSProgram {
 public:
  // Replaces what was compiled before. A null root has no cutsets.
  void Compile(const OrvaMCSManager& manager, OrvaMCSNode* root);

  // The sum over the cutsets of the products of the probabilities that the manager has now for
  // their events: to the last bit that of OrvaMCSManager::ComputeSumOfMinimalCutsetProbabilities.
  double ComputeSum(const OrvaMCSManager& manager);
  // The sum, and its derivatives with respect to the probabilities of the events.
  double ComputeSumAndDerivatives(const OrvaMCSManager& manager);

  std::size_t GetNumberOfEvents() const { return _events.size(); }
  // The index of an event in the store; its derivative, as of the last computation of them; in how
  // many cutsets it is.
  int GetIndexOfEvent(std::size_t event) const { return _events[event]; }
  double GetDerivative(std::size_t event) const { return _derivatives[event]; }
  int GetNumberOfOccurrences(std::size_t event) const { return _occurrences[event]; }

 private:
  using Event = std::uint32_t;
  // What comes after a number of terms: the end of a chain, in a cutset or not, or a branch.
  struct Step {
    std::uint32_t numberOfTerms;
    Event event;  // of a branch, or one of the two ends
  };
  static constexpr Event END = 0xfffffffe;
  static constexpr Event END_IN_CUTSET = 0xffffffff;
  class Compiler;

  void _CountOccurrences();
  void _LoadProbabilities(const OrvaMCSManager& manager);
  template <bool KEEPS_SUMS>
  double _ComputeSum();
  void _ComputeDerivatives();

  std::vector<int> _events;
  std::vector<int> _occurrences;
  std::vector<Step> _steps;
  std::vector<Event> _terms;
  // What an evaluation writes.
  std::vector<double> _probabilities;
  std::vector<double> _derivatives;
  std::vector<double> _sums;  // below the then-sons of the branches, the last branch first
  std::vector<double> _stack;
};
