// Minimal cutsets and the search for them.
//
// The rows are for reading from the top: what contributes most comes first, and inside a row the
// names are in alphabetical order, so that the same cutset reads the same wherever the search found
// it. Cutsets of equal probability keep the order in which the set delivers them; any other rule
// would say something about them that nobody has computed. That order is a matter of the tree, not
// of its addresses, and therefore the same in every run.
//
// The cutsets are collected before any is printed: one walk down the tree keeps the events of the
// path and copies them at each leaf, into one array for all cutsets. The ranking then moves
// pointers to small records only.

#include <algorithm>
#include <cassert>
#include <cstddef>
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
  void Enter(OrvaMCSNode* node) {
    path.push_back(manager->GetEvent(node->GetIndex()));
    assert(path.back() != nullptr);
  }
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

// A cutset in its place, and the sum that it has its share in.
struct RankedCutset {
  const Cutset* cutset;
  int rank;
  double sum;
};

struct Column {
  bool OrvaPrinter::*isOn;
  void (*put)(OrvaPrinterRow& row, const RankedCutset& ranked);
};

constexpr Column COLUMNS[] = {
    {&OrvaPrinter::printMinimalCutsetRank,
     [](OrvaPrinterRow& row, const RankedCutset& ranked) { row.Put(ranked.rank); }},
    {&OrvaPrinter::printMinimalCutsetOrder,
     [](OrvaPrinterRow& row, const RankedCutset& ranked) { row.Put(ranked.cutset->order); }},
    {&OrvaPrinter::printMinimalCutsetProbability,
     [](OrvaPrinterRow& row, const RankedCutset& ranked) { row.Put(ranked.cutset->probability); }},
    {&OrvaPrinter::printMinimalCutsetContribution,
     [](OrvaPrinterRow& row, const RankedCutset& ranked) {
       row.Put(ranked.sum == 0.0 ? 0.0 : ranked.cutset->probability / ranked.sum);
     }},
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
  assert(collector.path.empty());
  int rank = 0;
  for (const Cutset* cutset : LumoItems<Cutset>(cutsets)) {
    const RankedCutset ranked = {cutset, ++rank, sum};
    OrvaPrinterRow row(stream);
    for (const Column& column : COLUMNS) {
      if (this->*column.isOn) column.put(row, ranked);
    }
    assert(cutset->order <= highestOrder);
    const auto* events = collector.events.data() + cutset->firstEvent;
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
  assert(numbers != nullptr || highestOrder < 0);
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
  assert(numbers != nullptr && highestIndex >= 0);
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
