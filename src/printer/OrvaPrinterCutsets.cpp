// Minimal cutsets and the search for them.
//
// The rows are for reading from the top: what contributes most comes first, and inside a row the
// names are in alphabetical order, so that the same cutset reads the same wherever the search found
// it. Cutsets of equal probability keep the order in which the set delivers them; any other rule
// would say something about them that nobody has computed. That order is a matter of the tree, not
// of its addresses, and therefore the same in every run.
//
// The cutsets are collected before any is printed: one walk down the tree keeps the events of the
// path and copies them at each leaf, into one array for all cutsets. The ranking then moves small
// records only, in one stable sort. A probability that is no number is the one thing that can't be
// sorted, since it compares as equal to all others, which are not equal among themselves: where
// such cutsets come is defined by the search tree that they are inserted into.

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <memory>
#include <numeric>
#include <span>
#include <vector>

#include "model/OrvaEvent.h"
#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterTable.h"
#include "search/OrvaWalkObserver.h"
#include "store/OrvaMCSSet.h"
#include "store/OrvaMCSTreeWalk.h"
#include "support/containers/LumoAVLTree.h"

namespace {

struct Cutset {
  double probability;
  int number;  // in the order of the set
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
  // With the numbers of cutsets of each order: room for all from the start halves the cost.
  CutsetCollector(const OrvaMCSManager* store, std::span<const int> numbersOfCutsets)
      : manager(store) {
    std::size_t numberOfCutsets = 0;
    std::size_t numberOfEvents = 0;
    for (std::size_t order = 0; order < numbersOfCutsets.size(); ++order) {
      const auto number = static_cast<std::size_t>(numbersOfCutsets[order]);
      numberOfCutsets += number;
      numberOfEvents += number * order;
    }
    cutsets.reserve(numberOfCutsets);
    places.reserve(numberOfCutsets + 1);
    places.push_back(0);
    events.reserve(numberOfEvents);
  }
  void Enter(OrvaMCSNode* node) {
    path.push_back(manager->GetEvent(node->GetIndex()));
    assert(path.back() != nullptr);
  }
  void Cross(OrvaMCSNode* /*node*/) { path.pop_back(); }
  void VisitLeaf(OrvaMCSNode* leaf) {
    if (!leaf->IsMinimalCutset()) return;
    cutsets.push_back({leaf->GetWeight(), static_cast<int>(cutsets.size())});
    for (const OrvaEvent* event : path) events.push_back(event);
    SortByName(events.end() - static_cast<std::ptrdiff_t>(path.size()), events.end());
    places.push_back(events.size());
  }
  // Names are unique: no two events of a cutset are equal.
  static void SortByName(std::vector<const OrvaEvent*>::iterator first,
                         std::vector<const OrvaEvent*>::iterator last) {
    std::sort(first, last, [](const OrvaEvent* a, const OrvaEvent* b) {
      return OrvaSymbol::CompareNames(a, b) < 0;
    });
  }
  struct Events {
    const OrvaEvent* const* first;
    const OrvaEvent* const* last;
  };
  Events GetEvents(const Cutset& cutset) const {
    const auto number = static_cast<std::size_t>(cutset.number);
    return {events.data() + places[number], events.data() + places[number + 1]};
  }

  const OrvaMCSManager* manager;
  std::vector<const OrvaEvent*> path;
  // The events of one cutset after the other, and where those of each begin and the last ones end.
  std::vector<const OrvaEvent*> events;
  std::vector<std::size_t> places;
  std::vector<Cutset> cutsets;
};

// The most probable first.
void Rank(std::vector<Cutset>& cutsets) {
  const auto isNoNumber = [](const Cutset& cutset) { return std::isnan(cutset.probability); };
  if (std::none_of(cutsets.begin(), cutsets.end(), isNoNumber)) {
    return std::stable_sort(cutsets.begin(), cutsets.end(), [](const Cutset& a, const Cutset& b) {
      return a.probability > b.probability;
    });
  }
  LumoAVLTree tree(CompareDecreasingProbabilities);
  for (Cutset& cutset : cutsets) tree.InsertItem(&cutset);
  std::vector<Cutset> ranked;
  for (const Cutset* cutset : LumoItems<Cutset>(tree)) ranked.push_back(*cutset);
  cutsets.swap(ranked);
}

// What the columns of a cutset are made of: its place, and the sum that it has its share in.
struct RankedCutset {
  int rank;
  int order;
  double probability;
  double sum;
};

struct Column {
  bool OrvaPrinter::*isOn;
  const char* heading;
  void (*put)(OrvaPrinterTable& table, const RankedCutset& ranked);
};

constexpr Column COLUMNS[] = {
    {&OrvaPrinter::printMinimalCutsetRank, "rank",
     [](OrvaPrinterTable& table, const RankedCutset& ranked) { table.Put(ranked.rank); }},
    {&OrvaPrinter::printMinimalCutsetOrder, "order",
     [](OrvaPrinterTable& table, const RankedCutset& ranked) { table.Put(ranked.order); }},
    {&OrvaPrinter::printMinimalCutsetProbability, "probability",
     [](OrvaPrinterTable& table, const RankedCutset& ranked) { table.Put(ranked.probability); }},
    {&OrvaPrinter::printMinimalCutsetContribution, "contribution",
     [](OrvaPrinterTable& table, const RankedCutset& ranked) {
       table.Put(ranked.sum == 0.0 ? 0.0 : ranked.probability / ranked.sum);
     }},
};

}  // namespace

void OrvaPrinter::PrintMinimalCutsets(OrvaMCSSet* set, LumoStream* stream) {
  int* numbers;
  int highestOrder;
  int total;
  set->ComputeOrdersOfMinimalCutsets(numbers, highestOrder, total);
  const std::unique_ptr<int[]> owner(numbers);
  OrvaPrinterTable table(this, stream);
  if (table.IsInColumns()) table.PutHeaderOf(this, nullptr, COLUMNS, "basic-events");
  if (highestOrder < (table.IsInColumns() ? 0 : 1)) return;
  set->SetWeightsOfLeavesAsCutsetProbabilities();
  double sum;
  set->ComputeSumOfMinimalCutsetProbabilities(sum);
  CutsetCollector collector(set->GetManager(), {numbers, numbers + highestOrder + 1});
  OrvaWalkMCSTree(set->GetRootNode(), collector);
  assert(collector.path.empty());
  Rank(collector.cutsets);
  int rank = 0;
  for (const Cutset& cutset : collector.cutsets) {
    const auto [first, last] = collector.GetEvents(cutset);
    const RankedCutset ranked = {++rank, static_cast<int>(last - first), cutset.probability, sum};
    assert(ranked.order <= highestOrder);
    for (const Column& column : COLUMNS) {
      if (this->*column.isOn) column.put(table, ranked);
    }
    table.BeginList();
    for (auto event = first; event != last; ++event) table.PutItem((*event)->GetName());
    table.EndRow();
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
  OrvaPrinterTable table(this, stream);
  table.PutHeader("order", "#MCS");
  for (int order = 0; order <= highestOrder; ++order) {
    if (numbers[order] != 0) table.PutRow(order, numbers[order]);
  }
  if (!table.IsInColumns()) table.PutRow("total", total);
}

void OrvaPrinter::PrintNumberOfOccurrencesOfVariablesInMinimalCutsets(const OrvaMCSSet* set,
                                                                      LumoStream* stream) {
  int* numbers;
  int highestIndex;
  int total;
  set->ComputeNumberOfOccurrencesOfVariablesInMinimalCutsets(numbers, highestIndex, total);
  const std::unique_ptr<int[]> owner(numbers);
  assert(numbers != nullptr && highestIndex >= 0);
  OrvaPrinterTable table(this, stream);
  table.PutHeader("event", "#occurrences");
  for (int i = 1; i <= highestIndex; ++i) {
    const OrvaEvent* event = set->GetManager()->GetEvent(i);
    if (event != nullptr) table.PutRow(event->GetName(), numbers[i]);
  }
  if (table.IsInColumns()) return;
  // Not the total above, which ends at the largest integer.
  table.PutRow("total", std::accumulate(numbers, numbers + highestIndex + 1, 0L));
}

void OrvaPrinter::PrintWalkObserver(const OrvaWalkObserver* observer, LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  table.PutRecord({
      {"top-event", observer->GetTopEventName(), "Model"},
      {"#gates", observer->numberOfGates},
      {"#basic-events", observer->numberOfBasicEvents},
      {"#modules", observer->numberOfModules},
      {"maximum-order", observer->maximumOrder, "Cutoff"},
      {"minimum-probability", observer->minimumProbability},
      {"#unit", observer->unit, "Choices"},
      {"#cutoff", observer->cutoff},
      {"#branching", observer->branching},
      {"#dead-ends", observer->deadEnds, "Branches"},
      {"#cutoffs", observer->cutoffs},
      {"#non-minimal-cutsets", observer->nonMinimalCutsets},
      {"#minimal-cutsets", observer->minimalCutsets},
      {"seconds", observer->GetRunningTime(), "Running Times"},
  });
}
