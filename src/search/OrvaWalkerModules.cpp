// The expansion of modules in a cutset tree. This is the one source file of the walker that looks
// upward, to the handles under which the modules keep their cutsets.

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

// One step of the expansion on an explicit stack, since both the chains of a tree can be long: a
// node to be expanded under what is left of the limits. Inside a module's tree the frame also
// knows where to go on when the module turns out true (the then-son of the module's node) or
// false (its else-son, on the path that took no event of the module).
struct Frame {
  OrvaMCSNode* node;
  OrvaMCSNode* thenSon;  // of the module's node; null outside a module
  OrvaMCSNode* elseSon;
  bool isOnElsePath;
  int order;
  double probability;
  enum Stage { START, THEN_DONE, ELSE_DONE } stage = START;
  OrvaMCSNode* thenResult = nullptr;
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
  std::vector<Frame> stack;
  OrvaMCSNode* result = nullptr;
  const auto finish = [&](OrvaMCSNode* tree) {
    result = tree;
    stack.pop_back();
  };
  stack.push_back({root, nullptr, nullptr, false, order, probability});
  while (!stack.empty()) {
    Frame& frame = stack.back();
    const bool isInModule = frame.thenSon != nullptr;
    const int index = frame.node->GetIndex();
    switch (frame.stage) {
      case Frame::START: {
        // Inside a module the limits are not looked at: what exceeds them is cut off where the
        // path leaves the module.
        if (!isInModule && (frame.order < 0 || frame.probability > 1.0)) {
          finish(_manager->NewUndevelopedLeaf());
          break;
        }
        if (!frame.node->IsInternal()) {
          const bool isTrue = frame.node->IsMinimalCutset();
          if (isInModule && (isTrue || frame.isOnElsePath)) {
            OrvaMCSNode* next = isTrue ? frame.thenSon : frame.elseSon;
            frame = {next, nullptr, nullptr, false, frame.order, frame.probability};
          } else {
            const bool isCutset = isTrue && !isInModule;
            finish(isCutset ? _manager->NewMinimalCutsetLeaf() : _manager->NewUndevelopedLeaf());
          }
          break;
        }
        OrvaMCSNode* module = isInModule ? nullptr : _manager->GetModuleTree(index);
        if (module != nullptr) {
          frame = {module,      frame.node->GetThenSon(), frame.node->GetElseSon(), true,
                   frame.order, frame.probability};
          break;
        }
        frame.stage = Frame::THEN_DONE;
        const double required =
            GetRequirementBelow(frame.probability, _manager->GetProbability(index));
        stack.push_back({frame.node->GetThenSon(), frame.thenSon, frame.elseSon, false,
                         frame.order - 1, required});
        break;
      }
      case Frame::THEN_DONE:
        frame.stage = Frame::ELSE_DONE;
        frame.thenResult = result;
        stack.push_back({frame.node->GetElseSon(), frame.thenSon, frame.elseSon, frame.isOnElsePath,
                         frame.order, frame.probability});
        break;
      case Frame::ELSE_DONE:
        if (frame.thenResult->IsUndeveloped()) {
          _manager->FreeNode(frame.thenResult);
          finish(result);
        } else {
          finish(_manager->NewInternalNode(index, frame.thenResult, result));
        }
    }
  }
  return result;
}
