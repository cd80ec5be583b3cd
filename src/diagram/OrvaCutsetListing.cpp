// A diagram shares its nodes, and its modules stand in it once; a cutset tree shares nothing. So
// the walk is depth first through the diagram, with what is still to come: at the variable of a
// module it goes on in the module's own diagram, and remembers two ways out of it. Behind a cutset
// of the module comes the then-node of the variable; where no event of the module was taken, the
// module is false, and the else-node takes its turn. Both ways out are lists that share their ends,
// on stacks that fall back as the walk does.
//
// Each step becomes a node of the tree as the walk comes back up, so that the tree is built
// directly and never searched. A branch is entered only when the bounds of all that is to come
// allow at least one cutset: then almost every step ends in one. The bounds have a margin. The last
// word on a cutset is its own product.
#include "diagram/OrvaCutsetListing.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "model/OrvaEvent.h"
#include "store/OrvaMCSMerge.h"
#include "store/OrvaMCSSet.h"
#include "support/time/LumoProgress.h"

namespace {

constexpr OrvaCutsetDiagram::Node EMPTY = OrvaCutsetDiagram::EMPTY;
constexpr OrvaCutsetDiagram::Node UNIT = OrvaCutsetDiagram::UNIT;
constexpr std::uint32_t NOTHING = 0;  // the place at which each list ends
constexpr double MARGIN = 1e-6;

}  // namespace

OrvaCutsetListing::OrvaCutsetListing(const OrvaCutsetSolution& solution, OrvaMCSManager* manager)
    : _solution(solution),
      _manager(manager),
      _lowestBound(solution.minimumProbability * (1.0 - MARGIN)) {
  _indices.reserve(solution.variables.size());
  for (const OrvaCutsetSolution::Variable& variable : solution.variables) {
    _indices.push_back(variable.event == nullptr ? 0 : variable.event->GetMCSIndex());
  }
}

bool OrvaCutsetListing::_IsWithinLimits(int order, double probability) const {
  // A probability that is no number respects every limit.
  return order <= _solution.maximumOrder && !(probability < _solution.minimumProbability);
}

// Whether some cutset of what the state has before it can keep to the limits; otherwise the walk
// still has what comes when the module is false.
bool OrvaCutsetListing::_CanYield(const State& state) const {
  const OrvaCutsetDiagram::Record& record = _solution.diagram[state.node];
  const Rest& rest = _rests[state.rest];
  const long order = static_cast<long>(state.order) + record.leastOrder + rest.leastOrder;
  if (state.node == EMPTY || order > _solution.maximumOrder) return false;
  return !(state.probability * record.greatestProbability * rest.greatestProbability <
           _lowestBound);
}

// Leaves what can't yield a cutset and what is complete, up to a variable or the end of a cutset;
// false when nothing is left.
bool OrvaCutsetListing::_MoveToCandidate(State& state) const {
  for (;;) {
    if (!_CanYield(state)) {
      if (state.otherwise == NOTHING) return false;
      const Otherwise& otherwise = _otherwises[state.otherwise];
      state.node = otherwise.node;
      state.rest = otherwise.rest;
      state.otherwise = otherwise.next;
    } else if (state.node == UNIT && state.rest != NOTHING) {
      state.node = _rests[state.rest].node;
      state.rest = _rests[state.rest].next;
      state.otherwise = NOTHING;
    } else {
      return true;
    }
  }
}

// A part that would add nothing is not remembered: nothing behind the module, nothing in its place.
void OrvaCutsetListing::_EnterModule(State& state, const OrvaCutsetDiagram::Record& record) {
  if (record.elseNode != EMPTY) {
    _otherwises.push_back({record.elseNode, state.rest, state.otherwise});
    state.otherwise = static_cast<Place>(_otherwises.size() - 1);
  }
  if (record.thenNode != UNIT) {
    const OrvaCutsetDiagram::Record& behind = _solution.diagram[record.thenNode];
    const Rest& rest = _rests[state.rest];
    _rests.push_back({record.thenNode, state.rest, behind.leastOrder + rest.leastOrder,
                      behind.greatestProbability * rest.greatestProbability});
    state.rest = static_cast<Place>(_rests.size() - 1);
  }
  state.node = _solution.variables[record.variable].module;
}

// Null for a tree without cutsets.
OrvaMCSNode* OrvaCutsetListing::_ListTree() {
  _rests.assign(1, {UNIT, NOTHING, 0, 1.0});
  _otherwises.assign(1, {EMPTY, NOTHING, NOTHING});
  State state = {_solution.top, NOTHING, NOTHING, 0, 1.0};
  OrvaMCSNode* result = nullptr;
  for (;;) {
    if (!_MoveToCandidate(state)) {
      result = nullptr;
    } else if (state.node == UNIT) {
      result = _NewLeaf(state.order, state.probability);
    } else {
      const OrvaCutsetDiagram::Record& record = _solution.diagram[state.node];
      if (_solution.variables[record.variable].event == nullptr) {
        _EnterModule(state, record);
      } else {
        _TakeEvent(state, record);
      }
      continue;
    }
    if (!_GoOn(state, result)) return result;
  }
}

// Null for a cutset beyond the limits.
OrvaMCSNode* OrvaCutsetListing::_NewLeaf(int order, double probability) {
  if (!_IsWithinLimits(order, probability)) return nullptr;
  ++_numberOfCutsets;
  return _manager->NewMinimalCutsetLeaf();
}

// Goes on in the then-branch, or, where that is but the end of a cutset, in the else-branch.
void OrvaCutsetListing::_TakeEvent(State& state, const OrvaCutsetDiagram::Record& record) {
  const int order = state.order + 1;
  const double probability = state.probability * _solution.variables[record.variable].probability;
  const bool isEnd = record.thenNode == UNIT && state.rest == NOTHING;
  OrvaMCSNode* leaf = isEnd ? _NewLeaf(order, probability) : nullptr;
  if (leaf != nullptr || !isEnd) {
    _frames.push_back({state, _indices[record.variable], leaf, _rests.size(), _otherwises.size()});
    _frames.back().elseState.node = record.elseNode;
  }
  if (isEnd) {
    state.node = record.elseNode;
  } else {
    state = {record.thenNode, state.rest, NOTHING, order, probability};
  }
}

// The tree of a then-branch is followed by the else-branch; that of an else-branch completes the
// node. False when all nodes are complete.
bool OrvaCutsetListing::_GoOn(State& state, OrvaMCSNode*& result) {
  while (!_frames.empty()) {
    Frame& frame = _frames.back();
    if (frame.thenSon == nullptr) {
      state = frame.elseState;
      _rests.resize(frame.numberOfRests);
      _otherwises.resize(frame.numberOfOtherwises);
      frame.thenSon = result;
      if (result == nullptr) _frames.pop_back();  // there is no node
      return true;
    }
    if (result == nullptr) result = _manager->NewUndevelopedLeaf();
    result = _manager->NewInternalNode(frame.index, frame.thenSon, result);
    _frames.pop_back();
  }
  return false;
}

long OrvaCutsetListing::AddTo(OrvaMCSSet* set) {
  _numberOfCutsets = 0;
  LumoProgress progress("listing", "cutsets so far");
  progress.Watch(&_numberOfCutsets);
  OrvaMCSNode* tree = _ListTree();
  if (tree == nullptr) return 0;
  if (set->GetRootNode()->IsUndeveloped()) {
    set->SetRootNode(tree);
    return _numberOfCutsets;
  }
  long numberOfNewCutsets;
  OrvaMCSNode* merged = OrvaMergeMCSTrees(_manager, set->GetRootNode(), tree, numberOfNewCutsets);
  _manager->FreeTree(tree);
  set->SetRootNode(merged);
  return numberOfNewCutsets;
}
