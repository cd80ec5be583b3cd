// The two trees may test their events in any order, so that neither can be laid into the other node
// by node, and looking up cutset after cutset would be quadratic in long else-chains. Therefore the
// cutsets of both are listed, each as its indices in rising order, and sorted: those that begin
// with the same event stand together, and below that event again, and that is a tree. Built from
// the last cutset to the first, it needs no recursion: for each depth there is one else-chain under
// construction, and a cutset completes those that are deeper than what it has in common with the
// one before.
#include "store/OrvaMCSMerge.h"

#include <algorithm>
#include <cassert>
#include <span>
#include <utility>
#include <vector>

#include "store/OrvaMCSManager.h"
#include "store/OrvaMCSTreeWalk.h"

namespace {

// The cutsets of trees, one behind the other, each sorted by index.
struct CutsetCollector : OrvaMCSTreeVisitor {
  void Enter(OrvaMCSNode* node) { path.push_back(node->GetIndex()); }
  void Cross(OrvaMCSNode* /*node*/) { path.pop_back(); }
  void VisitLeaf(OrvaMCSNode* leaf) {
    if (!leaf->IsMinimalCutset()) return;
    firsts.push_back(indices.size());
    indices.insert(indices.end(), path.begin(), path.end());
    std::sort(indices.end() - static_cast<std::ptrdiff_t>(path.size()), indices.end());
  }
  std::vector<std::span<const int>> GetCutsets() const {
    std::vector<std::span<const int>> cutsets;
    cutsets.reserve(firsts.size());
    for (std::size_t i = 0; i < firsts.size(); ++i) {
      const std::size_t end = i + 1 < firsts.size() ? firsts[i + 1] : indices.size();
      cutsets.push_back(std::span(indices).subspan(firsts[i], end - firsts[i]));
    }
    return cutsets;
  }

  std::vector<int> path;
  std::vector<int> indices;
  std::vector<std::size_t> firsts;
};

bool IsLess(std::span<const int> a, std::span<const int> b) {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
}

// The number of cutsets, each counted once; they are left sorted and without repetitions.
long SortAndDropRepetitions(std::vector<std::span<const int>>& cutsets) {
  std::sort(cutsets.begin(), cutsets.end(), IsLess);
  const auto end = std::unique(cutsets.begin(), cutsets.end(), [](const auto& a, const auto& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
  });
  cutsets.erase(end, cutsets.end());
  return static_cast<long>(cutsets.size());
}

// Builds a tree from sorted cutsets, the last one first.
class TreeBuilder {
 public:
  explicit TreeBuilder(OrvaMCSManager* manager) : _manager(manager), _chains(1, nullptr) {}

  void Add(std::span<const int> cutset) {
    const auto common = std::mismatch(_last.begin(), _last.end(), cutset.begin(), cutset.end());
    _Complete(static_cast<std::size_t>(common.first - _last.begin()));
    _chains.resize(std::max(_chains.size(), cutset.size() + 1), nullptr);
    OrvaMCSNode*& chain = _chains[cutset.size()];
    if (chain != nullptr) _manager->FreeTree(chain);  // all of it contains the cutset
    chain = _manager->NewMinimalCutsetLeaf();
    _last = cutset;
  }
  OrvaMCSNode* Finish() {
    _Complete(0);
    return _chains.front();
  }

 private:
  // Closes the chains that are deeper than the given depth.
  void _Complete(std::size_t depth) {
    for (std::size_t i = _last.size(); i > depth; --i) {
      OrvaMCSNode*& chain = _chains[i - 1];
      if (chain == nullptr) chain = _manager->NewUndevelopedLeaf();
      chain = _manager->NewInternalNode(_last[i - 1], std::exchange(_chains[i], nullptr), chain);
    }
  }

  OrvaMCSManager* _manager;
  std::vector<OrvaMCSNode*> _chains;  // by depth; null for an empty one
  std::span<const int> _last;
};

}  // namespace

OrvaMCSNode* OrvaMergeMCSTrees(OrvaMCSManager* manager, OrvaMCSNode* first, OrvaMCSNode* second,
                               long& numberOfNewCutsets) {
  CutsetCollector collector;
  OrvaWalkMCSTree(first, collector);
  std::vector<std::span<const int>> cutsets = collector.GetCutsets();
  const long numberOfOldCutsets = SortAndDropRepetitions(cutsets);
  OrvaWalkMCSTree(second, collector);
  cutsets = collector.GetCutsets();
  numberOfNewCutsets = SortAndDropRepetitions(cutsets) - numberOfOldCutsets;
  TreeBuilder builder(manager);
  for (auto cutset = cutsets.rbegin(); cutset != cutsets.rend(); ++cutset) builder.Add(*cutset);
  return builder.Finish();
}
