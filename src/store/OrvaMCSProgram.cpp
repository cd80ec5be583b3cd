// A tree is cut into chains: a node and what follows it by else-sons, up to a leaf. The sum of a
// chain is
//
//   p1 S1 + (p2 S2 + ( ... + (pn Sn + L))),
//
// with S the sums of the then-sons and L the leaf, 1 for a cutset and 0 otherwise. Most then-sons
// are cutsets themselves, with S = 1: such a node is a term, which takes one addition and is stored
// as the number of its event. Any other node is a branch, whose then-son begins a chain.
//
// The steps stand in the order in which a walk down the tree comes to them: a node, what is below
// its then-son, what is below its else-son. Read backward, they compute the sum: the rest of a
// chain is known when its node comes, and only at a branch does it have to wait, on a stack that is
// as deep as the largest cutset, for the chain of the then-son. Read forward, they compute the
// derivatives: the product of the probabilities above is known, and what is below was kept on the
// way back.
//
// Products and sums are nested, and derivatives added up, as the walks over the tree do it, so that
// not one bit changes. For the derivatives this takes that no event is on a path twice: a walk adds
// the share of a node when it comes back from the then-son. Other nodes of the event are not below
// it, and come before or after it in both orders.

#include "store/OrvaMCSProgram.h"

#include <algorithm>
#include <cassert>

#include "store/OrvaMCSManager.h"
#include "store/OrvaMCSTreeWalk.h"

// Writes the steps while it walks down the tree.
class OrvaMCSProgram::Compiler : public OrvaMCSTreeVisitor {
 public:
  Compiler(OrvaMCSProgram* program, int numberOfIndices)
      : _target(program), _numbers(static_cast<std::size_t>(numberOfIndices), NONE) {}

  void Enter(OrvaMCSNode* node) {
    const Event event = _GetNumber(node->GetIndex());
    if (!node->GetThenSon()->IsMinimalCutset()) return _AddStep(event);
    _target->_terms.push_back(event);
    ++_numberOfTerms;
  }
  void VisitLeaf(OrvaMCSNode* leaf) {
    const bool isThenSon = leaf->GetParent() != nullptr && leaf->IsThenSon();
    if (!leaf->IsMinimalCutset()) return _AddStep(END);
    if (!isThenSon) _AddStep(END_IN_CUTSET);
  }

 private:
  static constexpr Event NONE = END;

  Event _GetNumber(int index) {
    Event& number = _numbers[static_cast<std::size_t>(index)];
    if (number == NONE) {
      number = static_cast<Event>(_target->_events.size());
      _target->_events.push_back(index);
    }
    return number;
  }
  void _AddStep(Event event) {
    _target->_steps.push_back({_numberOfTerms, event});
    _numberOfTerms = 0;
  }

  OrvaMCSProgram* _target;
  std::vector<Event> _numbers;  // by index in the store
  std::uint32_t _numberOfTerms = 0;
};

void OrvaMCSProgram::Compile(const OrvaMCSManager& manager, OrvaMCSNode* root) {
  assert(root == nullptr || root->GetParent() == nullptr);
  _events.clear();
  _steps.clear();
  _terms.clear();
  Compiler compiler(this, manager.GetSizeOfEntryTable());
  OrvaWalkMCSTree(root, compiler);
  _probabilities.resize(_events.size());
  std::size_t depth = 1;
  std::size_t deepest = 1;
  std::size_t branches = 0;
  for (const Step& step : _steps) {
    if (step.event >= END) {
      --depth;
    } else {
      deepest = std::max(deepest, ++depth);
      ++branches;
    }
  }
  _stack.resize(deepest);
  _sums.resize(branches);
  _CountOccurrences();
}

void OrvaMCSProgram::_CountOccurrences() {
  _occurrences.assign(_events.size(), 0);
  std::vector<int> waiting;
  int cutsets = 0;
  auto term = _terms.rbegin();
  for (auto step = _steps.rbegin(); step != _steps.rend(); ++step) {
    if (step->event >= END) {
      waiting.push_back(cutsets);
      cutsets = step->event == END_IN_CUTSET ? 1 : 0;
    } else {
      _occurrences[step->event] += cutsets;
      cutsets += waiting.back();
      waiting.pop_back();
    }
    for (std::uint32_t i = 0; i < step->numberOfTerms; ++i) ++_occurrences[*term++];
    cutsets += static_cast<int>(step->numberOfTerms);
  }
}

void OrvaMCSProgram::_LoadProbabilities(const OrvaMCSManager& manager) {
  for (std::size_t i = 0; i < _events.size(); ++i) {
    _probabilities[i] = manager.GetProbability(_events[i]);
  }
}

template <bool KEEPS_SUMS>
double OrvaMCSProgram::_ComputeSum() {
  const double* p = _probabilities.data();
  double* kept = _sums.data();
  double* waiting = _stack.data();
  const Event* term = _terms.data() + _terms.size();
  double sum = 0.0;
  for (std::size_t i = _steps.size(); i-- > 0;) {
    const auto [numberOfTerms, event] = _steps[i];
    if (event >= END) {
      *waiting++ = sum;
      sum = event == END_IN_CUTSET ? 1.0 : 0.0;
    } else {
      if (KEEPS_SUMS) *kept++ = sum;
      sum = p[event] * sum + *--waiting;
    }
    for (const Event* first = term - numberOfTerms; term != first;) sum = p[*--term] + sum;
  }
  assert(term == _terms.data());
  return sum;
}

void OrvaMCSProgram::_ComputeDerivatives() {
  _derivatives.assign(_events.size(), 0.0);
  const double* p = _probabilities.data();
  const double* sum = _sums.data() + _sums.size();
  double* derivatives = _derivatives.data();
  double* waiting = _stack.data();
  const Event* term = _terms.data();
  double weight = 1.0;  // the product of the probabilities above
  for (const auto [numberOfTerms, event] : _steps) {
    for (const Event* last = term + numberOfTerms; term != last;) derivatives[*term++] += weight;
    if (event < END) {
      derivatives[event] += weight * *--sum;
      *waiting++ = weight;
      weight *= p[event];
    } else if (waiting != _stack.data()) {  // only the last end has nothing above it
      weight = *--waiting;
    }
  }
  assert(sum == _sums.data());
}

double OrvaMCSProgram::ComputeSum(const OrvaMCSManager& manager) {
  _LoadProbabilities(manager);
  return _ComputeSum<false>();
}

double OrvaMCSProgram::ComputeSumAndDerivatives(const OrvaMCSManager& manager) {
  _LoadProbabilities(manager);
  const double sum = _ComputeSum<true>();
  _ComputeDerivatives();
  return sum;
}
