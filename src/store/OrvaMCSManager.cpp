// Statistics over trees. A tree is walked once, by a visitor that carries something down the
// branches (the order, a probability), or combines what comes up from the sons (numbers, sums).
// What a study asks for again and again, OrvaMCSProgram computes from flat arrays.

#include "store/OrvaMCSManager.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <numeric>

#include "store/OrvaMCSProgram.h"
#include "store/OrvaMCSTreeWalk.h"
#include "support/memory/LumoMemoryManager.h"

namespace {

template <class Value>
Value Pop(std::vector<Value>& stack) {
  assert(!stack.empty());
  const Value value = stack.back();
  stack.pop_back();
  return value;
}

// Calls back on each minimal cutset leaf with its order.
template <class OnCutset>
struct OrderVisitor : OrvaMCSTreeVisitor {
  explicit OrderVisitor(OnCutset function) : onCutset(function) {}
  void Enter(OrvaMCSNode* /*node*/) { ++order; }
  void Cross(OrvaMCSNode* /*node*/) { --order; }
  void VisitLeaf(OrvaMCSNode* leaf) {
    if (leaf->IsMinimalCutset()) onCutset(order);
  }
  OnCutset onCutset;
  int order = 0;
};

// Combines values upward: 1 from a minimal cutset, 0 from any other leaf, and from an internal
// node what `combine` makes of it and of the values of its sons.
template <class Combine>
struct ValueVisitor : OrvaMCSTreeVisitor {
  ValueVisitor(std::vector<double>& stack, Combine function) : values(stack), combine(function) {
    values.clear();
  }
  void VisitLeaf(OrvaMCSNode* leaf) { values.push_back(leaf->IsMinimalCutset() ? 1.0 : 0.0); }
  void Leave(OrvaMCSNode* node) {
    const double elseValue = Pop(values);
    values.back() = combine(node->GetIndex(), values.back(), elseValue);
  }
  double GetResult() const {
    assert(values.size() <= 1);  // one value for a tree, none without
    return values.empty() ? 0.0 : values.back();
  }
  std::vector<double>& values;
  Combine combine;
};

// Hands weights downward and writes them into the leaves.
template <class ThenWeight, class ElseWeight>
struct WeightVisitor : OrvaMCSTreeVisitor {
  WeightVisitor(std::vector<double>& stack, double start, ThenWeight onThen, ElseWeight onElse)
      : weights(stack), weight(start), thenWeight(onThen), elseWeight(onElse) {
    weights.clear();
  }
  void Enter(OrvaMCSNode* node) {
    weights.push_back(weight);
    weight = thenWeight(weight, node->GetIndex());
  }
  void Cross(OrvaMCSNode* node) { weight = elseWeight(Pop(weights), node->GetIndex()); }
  void VisitLeaf(OrvaMCSNode* leaf) { leaf->SetWeight(weight); }
  std::vector<double>& weights;
  double weight;
  ThenWeight thenWeight;
  ElseWeight elseWeight;
};

}  // namespace

OrvaMCSManager::OrvaMCSManager() : _nodes(this), _entries(this) {
  LumoMemoryManager::TraceNew(this, "OrvaMCSManager");
}

OrvaMCSManager::~OrvaMCSManager() { LumoMemoryManager::TraceDelete(this, "OrvaMCSManager"); }

void OrvaMCSManager::ComputeHighestOrderOfMinimalCutsets(OrvaMCSNode* root, int& order) const {
  order = -1;
  OrderVisitor visitor([&](int cutsetOrder) { order = std::max(order, cutsetOrder); });
  OrvaWalkMCSTree(root, visitor);
}

void OrvaMCSManager::ComputeOrdersOfMinimalCutsets(OrvaMCSNode* root, int*& numbers,
                                                   int& highestOrder, int& total) const {
  std::vector<int> counts;
  OrderVisitor visitor([&](int order) {
    const auto place = static_cast<std::size_t>(order);
    if (place >= counts.size()) counts.resize(place + 1);
    ++counts[place];
  });
  OrvaWalkMCSTree(root, visitor);
  highestOrder = static_cast<int>(counts.size()) - 1;
  total = std::accumulate(counts.begin(), counts.end(), 0);
  numbers = counts.empty() ? nullptr : new int[counts.size()];
  std::copy(counts.begin(), counts.end(), numbers);
}

void OrvaMCSManager::ComputeNumberOfOccurrencesOfVariablesInMinimalCutsets(OrvaMCSNode* root,
                                                                           int*& numbers,
                                                                           int& highestIndex,
                                                                           int& total) const {
  highestIndex = GetIndexOfHighestEntry();
  numbers = new int[static_cast<std::size_t>(highestIndex) + 1]();
  OrvaMCSProgram program;
  program.Compile(*this, root);
  for (std::size_t i = 0; i < program.GetNumberOfEvents(); ++i) {
    numbers[program.GetIndexOfEvent(i)] = program.GetNumberOfOccurrences(i);
  }
  const long sum = std::accumulate(numbers, numbers + highestIndex + 1, 0L);
  total = static_cast<int>(std::min(sum, static_cast<long>(INT_MAX)));
}

void OrvaMCSManager::ComputeSumOfMinimalCutsetProbabilities(OrvaMCSNode* root, double& sum) const {
  ValueVisitor visitor(_values, [this](int i, double thenValue, double elseValue) {
    return GetProbability(i) * thenValue + elseValue;
  });
  OrvaWalkMCSTree(root, visitor);
  sum = visitor.GetResult();
}

void OrvaMCSManager::ComputeHighestMinimalCutsetProbability(OrvaMCSNode* root,
                                                            double& highest) const {
  ValueVisitor visitor(_values, [this](int i, double thenValue, double elseValue) {
    const double withEvent = GetProbability(i) * thenValue;
    return withEvent >= elseValue ? withEvent : elseValue;
  });
  OrvaWalkMCSTree(root, visitor);
  highest = visitor.GetResult();
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaMCSManager::Reset() {
  _entries.Reset();
  _nodes.Reset();
}

void OrvaMCSManager::ComputeSizeOfTree(OrvaMCSNode* root, int& size) const {
  struct Counter : OrvaMCSTreeVisitor {
    void Leave(OrvaMCSNode* /*node*/) { ++count; }
    void VisitLeaf(OrvaMCSNode* /*leaf*/) { ++count; }
    int count = 0;
  };
  Counter counter;
  OrvaWalkMCSTree(root, counter);
  size = counter.count;
}

void OrvaMCSManager::ComputeNumberOfMinimalCutsets(OrvaMCSNode* root, int& number) const {
  number = 0;
  OrderVisitor visitor([&](int /*order*/) { ++number; });
  OrvaWalkMCSTree(root, visitor);
}

void OrvaMCSManager::SetWeightsOfLeavesAsCutsetProbabilities(OrvaMCSNode* root, double w) {
  WeightVisitor visitor(
      _weights, w, [this](double weight, int i) { return weight * GetProbability(i); },
      [](double weight, int /*i*/) { return weight; });
  OrvaWalkMCSTree(root, visitor);
}

void OrvaMCSManager::ResetWeightsOfLeaves(OrvaMCSNode* root) {
  struct Resetter : OrvaMCSTreeVisitor {
    void VisitLeaf(OrvaMCSNode* leaf) { leaf->SetWeight(0.0); }
  };
  Resetter resetter;
  OrvaWalkMCSTree(root, resetter);
}

void OrvaMCSManager::SetWeightsOfLeavesAsCutsetOrders(OrvaMCSNode* root, int order) {
  WeightVisitor visitor(
      _weights, order, [](double w, int /*i*/) { return w + 1.0; },
      [](double w, int /*i*/) { return w; });
  OrvaWalkMCSTree(root, visitor);
}

void OrvaMCSManager::SetWeightsOfLeavesAsProductProbabilities(OrvaMCSNode* root, double w) {
  WeightVisitor visitor(
      _weights, w, [this](double weight, int i) { return weight * GetProbability(i); },
      [this](double weight, int i) { return weight * (1.0 - GetProbability(i)); });
  OrvaWalkMCSTree(root, visitor);
}
