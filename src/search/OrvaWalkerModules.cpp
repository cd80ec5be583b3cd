// The expansion of modules in a cutset tree. This is the one source file of the walker that looks
// upward, to the handles under which the modules keep their cutsets.
//
// The tree of the top is copied with every module's node replaced by the module's own tree. Each
// cutset leaf in there is a way to make the module true: the copy goes on with what stood at the
// then-son of the module's node, once for every such leaf. The path that takes none of the module's
// events stands for the module being false, and goes on with the else-son. The other paths of the
// module's tree end in no cutset; what would follow on them is found on the paths that took fewer
// of its events.
//
// A cutset that was within the limits as long as a module counted as one event of the probability
// of its best cutset may exceed them now. So the limits go down with the copy: each then-son spends
// one unit of order and divides the required probability by that of its event, and where too little
// is left the copy ends in an undeveloped leaf. A node without cutsets at its then-son is not made.
//
// Trees can be a million nodes deep along their else-sons, so the copying runs on a stack of
// frames.

#include <cassert>
#include <vector>

#include "model/OrvaEvent.h"
#include "quantification/OrvaHandle.h"
#include "search/OrvaWalker.h"

namespace {

// The divisor of a probability that is 0 leaves a requirement that nothing meets.
constexpr double UNREACHABLE_PROBABILITY = 2.0;

// What is still required below an event of probability p; 0 means no requirement.
double GetRequirementBelow(double required, double p) {
  if (required == 0.0) return 0.0;
  return p == 0.0 ? UNREACHABLE_PROBABILITY : required / p;
}

// Calls back on each module among the variables of a system, in the order of the dictionary.
template <class Callback>
void ForEachModule(const OrvaSystem* system, Callback callback) {
  for (const OrvaVariable* variable : LumoItems<OrvaVariable>(system->GetDictionary())) {
    OrvaEvent* event = variable->GetEvent();
    if (event != nullptr && event->IsModule()) callback(event);
  }
}

// Where the expansion is: a node, and what is left of the limits there. Inside a module's tree it
// also knows where the tree goes on behind the module.
struct Place {
  OrvaMCSNode* node;
  int order;           // how many more events a cutset may have
  double probability;  // what those must still reach, 0 for any
  // The sons of the module's node: the way on when the module is true, and when it is false. Null
  // outside a module.
  OrvaMCSNode* whenTrue = nullptr;
  OrvaMCSNode* whenFalse = nullptr;
  // On the path in the module's tree that took none of its events: the one on which the module
  // counts as false.
  bool isOnElsePath = false;

  bool IsInModule() const { return whenTrue != nullptr; }
  bool ExceedsLimits() const { return order < 0 || probability > 1.0; }
};

class Expansion {
 public:
  explicit Expansion(OrvaMCSManager* manager) : _manager(manager) {}

  OrvaMCSNode* Expand(const Place& start) {
    _frames.push_back({start});
    while (!_frames.empty()) _Step();
    return _result;
  }

 private:
  // An internal node on the way: not looked at yet, its then-son expanded, its else-son expanded.
  struct Frame {
    Place place;
    enum Stage { START, THEN_DONE, ELSE_DONE } stage = START;
    OrvaMCSNode* thenResult = nullptr;
  };

  void _Step() {
    Frame& frame = _frames.back();
    switch (frame.stage) {
      case Frame::START:
        return _Start(frame);
      case Frame::THEN_DONE:
        return _GoToElseSon(frame);
      case Frame::ELSE_DONE:
        return _Join(frame);
    }
  }

  // Inside a module the limits are not looked at: what exceeds them is cut off where the path
  // leaves the module.
  void _Start(Frame& frame) {
    const Place& place = frame.place;
    if (!place.IsInModule() && place.ExceedsLimits())
      return _Finish(_manager->NewUndevelopedLeaf());
    if (!place.node->IsInternal()) return _EndPath(frame);
    OrvaMCSNode* module =
        place.IsInModule() ? nullptr : _manager->GetModuleTree(place.node->GetIndex());
    module == nullptr ? _GoToThenSon(frame) : _EnterModule(frame, module);
  }

  void _EnterModule(Frame& frame, OrvaMCSNode* module) {
    const Place& place = frame.place;
    frame.place = {
        module, place.order, place.probability, place.node->GetThenSon(), place.node->GetElseSon(),
        true};
  }

  // At a leaf of a module's tree the path goes on behind the module, or fails in it.
  void _EndPath(Frame& frame) {
    const Place& place = frame.place;
    const bool isCutset = place.node->IsMinimalCutset();
    if (!place.IsInModule()) {
      _Finish(isCutset ? _manager->NewMinimalCutsetLeaf() : _manager->NewUndevelopedLeaf());
    } else if (isCutset || place.isOnElsePath) {
      frame.place = {isCutset ? place.whenTrue : place.whenFalse, place.order, place.probability};
    } else {
      _Finish(_manager->NewUndevelopedLeaf());
    }
  }

  void _GoToThenSon(Frame& frame) {
    frame.stage = Frame::THEN_DONE;
    Place place = frame.place;
    const double p = _manager->GetProbability(place.node->GetIndex());
    place.node = place.node->GetThenSon();
    place.order -= 1;
    place.probability = GetRequirementBelow(place.probability, p);
    place.isOnElsePath = false;
    _frames.push_back({place});
  }

  void _GoToElseSon(Frame& frame) {
    frame.stage = Frame::ELSE_DONE;
    frame.thenResult = _result;
    Place place = frame.place;
    place.node = place.node->GetElseSon();
    _frames.push_back({place});
  }

  // Where the event has no cutset left, its node is left out.
  void _Join(const Frame& frame) {
    if (frame.thenResult->IsUndeveloped()) {
      _manager->FreeNode(frame.thenResult);
      _Finish(_result);
    } else {
      _Finish(_manager->NewInternalNode(frame.place.node->GetIndex(), frame.thenResult, _result));
    }
  }

  void _Finish(OrvaMCSNode* tree) {
    assert(tree->GetParent() == nullptr);
    _result = tree;
    _frames.pop_back();
  }

  OrvaMCSManager* _manager;
  std::vector<Frame> _frames;
  OrvaMCSNode* _result = nullptr;  // of the frame finished last
};

}  // namespace

// Every variable is looked at, the top included: when the top event is itself a module, its tree
// of this name is registered too.
void OrvaWalker::ExpandMinimalCutset(OrvaEvent* top, OrvaSystem* system, const char* handleName,
                                     const OrvaCutoff* cutoff) {
  int numberOfModules = 0;
  ForEachModule(system, [&](OrvaEvent* module) {
    const OrvaHandle* handle = module->GetHandle(handleName);
    ++numberOfModules;
    if (handle == nullptr || handle->GetMCSSet() == nullptr) return;
    _manager->SetModuleTree(module->GetMCSIndex(), handle->GetMCSSet()->GetRootNode());
  });
  if (numberOfModules == 0) return;
  OrvaMCSSet* set = top->GetHandle(handleName)->GetMCSSet();
  set->SetRootNode(_ExpandMinimalCutset(set->GetRootNode(), cutoff->GetMaximumOrder(),
                                        cutoff->GetMinimumProbability()));
  ForEachModule(
      system, [&](OrvaEvent* module) { _manager->SetModuleTree(module->GetMCSIndex(), nullptr); });
}

// Returns a new tree; the old one is not freed.
OrvaMCSNode* OrvaWalker::_ExpandMinimalCutset(OrvaMCSNode* root, int order, double probability) {
  return Expansion(_manager).Expand({root, order, probability});
}
