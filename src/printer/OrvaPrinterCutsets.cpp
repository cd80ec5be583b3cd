// Minimal cutsets and the search for them.

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include "model/OrvaEvent.h"
#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterRows.h"
#include "search/OrvaWalkObserver.h"
#include "store/OrvaMCSSet.h"
#include "store/OrvaMCSTreeWalk.h"
#include "support/containers/LumoAVLTree.h"

namespace {

struct Cutset {
  double probability;
  std::size_t firstEvent;
  int order;
};

// The highest probability first.
int CompareDecreasingProbabilities(const void* a, const void* b) {
  const double x = static_cast<const Cutset*>(a)->probability;
  const double y = static_cast<const Cutset*>(b)->probability;
  return static_cast<int>(x < y) - static_cast<int>(x > y);
}

// Collects the minimal cutsets of a tree whose leaves are weighed, in one walk down: the way up
// from a leaf can be as long as the tree is large.
struct CutsetCollector : OrvaMCSTreeVisitor {
  explicit CutsetCollector(const OrvaMCSManager* store) : manager(store) {}
  void Enter(OrvaMCSNode* node) { path.push_back(manager->GetEvent(node->GetIndex())); }
  void Cross(OrvaMCSNode* /*node*/) { path.pop_back(); }
  void VisitLeaf(OrvaMCSNode* leaf) {
    if (!leaf->IsMinimalCutset()) return;
    cutsets.push_back({leaf->GetWeight(), events.size(), static_cast<int>(path.size())});
    events.insert(events.end(), path.begin(), path.end());
    SortByName(events.end() - static_cast<std::ptrdiff_t>(path.size()), events.end());
  }
  static void SortByName(std::vector<const OrvaEvent*>::iterator first,
                         std::vector<const OrvaEvent*>::iterator last) {
    std::stable_sort(first, last, [](const OrvaEvent* a, const OrvaEvent* b) {
      return OrvaSymbol::CompareNames(a, b) < 0;
    });
  }
  const OrvaMCSManager* manager;
  std::vector<const OrvaEvent*> path;
  std::vector<const OrvaEvent*> events;  // of one cutset after the other
  std::vector<Cutset> cutsets;
};

}  // namespace

void OrvaPrinter::PrintMinimalCutsets(OrvaMCSSet* set, LumoStream* stream) {
  int highestOrder;
  set->ComputeHighestOrderOfMinimalCutsets(highestOrder);
  if (highestOrder < 1) return;
  set->SetWeightsOfLeavesAsCutsetProbabilities();
  double sum;
  set->ComputeSumOfMinimalCutsetProbabilities(sum);
  CutsetCollector collector(set->GetManager());
  OrvaWalkMCSTree(set->GetRootNode(), collector);
  LumoAVLTree cutsets(CompareDecreasingProbabilities);
  for (Cutset& cutset : collector.cutsets) cutsets.InsertItem(&cutset);
  int rank = 0;
  for (const Cutset* cutset : LumoItems<Cutset>(cutsets)) {
    const double probability = cutset->probability;
    OrvaPrinterRow row(stream);
    ++rank;
    if (printMinimalCutsetRank) row.Put(rank);
    if (printMinimalCutsetOrder) row.Put(cutset->order);
    if (printMinimalCutsetProbability) row.Put(probability);
    if (printMinimalCutsetContribution) row.Put(sum == 0.0 ? 0.0 : probability / sum);
    const auto* events = &collector.events[cutset->firstEvent];
    for (int i = 0; i < cutset->order; ++i) row.Put(events[i]->GetName());
    row.End();
  }
  set->ResetWeightsOfLeaves();
}

void OrvaPrinter::PrintOrdersOfMinimalCutsets(const OrvaMCSSet* set, LumoStream* stream) {
  int* numbers;
  int highestOrder;
  int total;
  set->ComputeOrdersOfMinimalCutsets(numbers, highestOrder, total);
  const std::unique_ptr<int[]> owner(numbers);
  OrvaPutRow(stream, "order", "#MCS");
  for (int order = 0; order <= highestOrder; ++order) {
    if (numbers[order] != 0) OrvaPutRow(stream, order, numbers[order]);
  }
  OrvaPutRow(stream, "total", total);
}

void OrvaPrinter::PrintNumberOfOccurrencesOfVariablesInMinimalCutsets(const OrvaMCSSet* set,
                                                                      LumoStream* stream) {
  int* numbers;
  int highestIndex;
  int total;
  set->ComputeNumberOfOccurrencesOfVariablesInMinimalCutsets(numbers, highestIndex, total);
  const std::unique_ptr<int[]> owner(numbers);
  OrvaPutRow(stream, "event", "#occurrences");
  for (int i = 1; i <= highestIndex; ++i) {
    const OrvaEvent* event = set->GetManager()->GetEvent(i);
    if (event != nullptr) OrvaPutRow(stream, event->GetName(), numbers[i]);
  }
  // Not the total above, which ends at the largest integer.
  OrvaPutRow(stream, "total", std::accumulate(numbers, numbers + highestIndex + 1, 0L));
}

void OrvaPrinter::PrintWalkObserver(const OrvaWalkObserver* observer, LumoStream* stream) {
  stream->Putln("Model");
  OrvaPutRow(stream, "top-event", observer->GetTopEventName());
  OrvaPutRow(stream, "#gates", observer->numberOfGates);
  OrvaPutRow(stream, "#basic-events", observer->numberOfBasicEvents);
  OrvaPutRow(stream, "#modules", observer->numberOfModules);
  stream->Putln();
  stream->Putln("Cutoff");
  OrvaPutRow(stream, "maximum-order", observer->maximumOrder);
  OrvaPutRow(stream, "minimum-probability", observer->minimumProbability);
  stream->Putln();
  stream->Putln("Choices");
  OrvaPutRow(stream, "#unit", observer->unit);
  OrvaPutRow(stream, "#cutoff", observer->cutoff);
  OrvaPutRow(stream, "#branching", observer->branching);
  stream->Putln();
  stream->Putln("Branches");
  OrvaPutRow(stream, "#dead-ends", observer->deadEnds);
  OrvaPutRow(stream, "#cutoffs", observer->cutoffs);
  OrvaPutRow(stream, "#non-minimal-cutsets", observer->nonMinimalCutsets);
  OrvaPutRow(stream, "#minimal-cutsets", observer->minimalCutsets);
  stream->Putln();
  stream->Putln("Running Times");
  OrvaPutRow(stream, "seconds", observer->GetRunningTime());
}
