// Minimal cutsets and the search for them.
//
// The rows are for reading from the top: what contributes most comes first, and inside a row the
// names are in alphabetical order, so that the same cutset reads the same wherever the search found
// it. Cutsets of equal probability keep the order in which the set delivers them; any other rule
// would say something about them that nobody has computed. That order is a matter of the tree, not
// of its addresses, and therefore the same in every run.
//
// The cutsets are collected before any is printed: one walk down the tree keeps the names and the
// probability of the path and copies them at each leaf, into one array for all cutsets. The ranking
// then moves small records only.

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <numeric>
#include <span>
#include <vector>

#include "model/OrvaEvent.h"
#include "printer/OrvaCutsetRanking.h"
#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterTable.h"
#include "search/OrvaWalkObserver.h"
#include "store/OrvaMCSSet.h"
#include "store/OrvaMCSTreeWalk.h"

namespace {

// Collects the minimal cutsets of a tree in one walk down: the way up from a leaf can be as long as
// the tree is large.
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
    probabilities.reserve(numberOfCutsets);
    places.reserve(numberOfCutsets + 1);
    places.push_back(0);
    names.reserve(numberOfEvents);
  }
  void Enter(OrvaMCSNode* node) {
    const int index = node->GetIndex();
    assert(manager->GetEvent(index) != nullptr);
    path.push_back(manager->GetEvent(index)->GetName());
    products.push_back(products.back() * manager->GetProbability(index));
  }
  void Cross(OrvaMCSNode* /*node*/) {
    path.pop_back();
    products.pop_back();
  }
  void VisitLeaf(OrvaMCSNode* leaf) {
    if (!leaf->IsMinimalCutset()) return;
    probabilities.push_back(products.back());
    for (const char* name : path) names.push_back(name);
    // No two events of a cutset are equal.
    std::sort(names.begin() + static_cast<std::ptrdiff_t>(places.back()), names.end(),
              [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
    places.push_back(names.size());
  }
  // Of the events of the cutset of this number, in the order of the set.
  std::span<const char* const> GetNames(std::size_t number) const {
    return std::span(names).subspan(places[number], places[number + 1] - places[number]);
  }

  const OrvaMCSManager* manager;
  // From the root to the node: the names of the events, and the products of their probabilities, 1
  // for none.
  std::vector<const char*> path;
  std::vector<double> products = {1.0};
  // The names of one cutset after the other, and where those of each begin and the last ones end.
  std::vector<const char*> names;
  std::vector<std::size_t> places;
  std::vector<double> probabilities;
};

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

// The columns that are switched on: asked once and not for each row.
std::vector<Column> GetColumns(const OrvaPrinter* printer) {
  std::vector<Column> columns;
  std::copy_if(std::begin(COLUMNS), std::end(COLUMNS), std::back_inserter(columns),
               [printer](const Column& column) { return printer->*column.isOn; });
  return columns;
}

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
  double sum;
  set->ComputeSumOfMinimalCutsetProbabilities(sum);
  CutsetCollector collector(set->GetManager(), {numbers, numbers + highestOrder + 1});
  OrvaWalkMCSTree(set->GetRootNode(), collector);
  assert(collector.path.empty());
  const std::vector<Column> columns = GetColumns(this);
  int rank = 0;
  for (const std::uint32_t number : OrvaRankCutsets(collector.probabilities)) {
    const auto names = collector.GetNames(number);
    const RankedCutset ranked = {++rank, static_cast<int>(names.size()),
                                 collector.probabilities[number], sum};
    assert(ranked.order <= highestOrder);
    for (const Column& column : columns) column.put(table, ranked);
    table.BeginList();
    for (const char* name : names) table.PutItem(name);
    table.EndRow();
  }
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
