// Minimal cutsets and the search for them.

#include <memory>

#include "mcs/OrvaMCSSet.h"
#include "mcs/OrvaWalkObserver.h"
#include "model/OrvaEvent.h"
#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterRows.h"
#include "support/containers/LumoAVLTree.h"

namespace {

// The highest probability first.
int CompareDecreasingWeights(const void* a, const void* b) {
  return OrvaMCSNode::CompareWeights(b, a);
}

// The events whose then-branches lead from the root to a leaf, in alphabetical order.
void CollectEventsOfCutset(const OrvaMCSManager* manager, const OrvaMCSNode* leaf,
                           LumoAVLTree* events) {
  for (const OrvaMCSNode* node = leaf; node->GetParent() != nullptr; node = node->GetParent()) {
    if (node->IsThenSon()) events->InsertItem(manager->GetEvent(node->GetParent()->GetIndex()));
  }
}

}  // namespace

void OrvaPrinter::PrintMinimalCutsets(OrvaMCSSet* set, LumoStream* stream) {
  int highestOrder;
  set->ComputeHighestOrderOfMinimalCutsets(highestOrder);
  if (highestOrder < 1) return;
  set->SetWeightsOfLeavesAsCutsetProbabilities();
  double sum;
  set->ComputeSumOfMinimalCutsetProbabilities(sum);
  LumoAVLTree cutsets(CompareDecreasingWeights);
  set->CollectMinimalCutsets(&cutsets);
  int rank = 0;
  for (const OrvaMCSNode* leaf : LumoItems<OrvaMCSNode>(cutsets)) {
    LumoAVLTree events(OrvaSymbol::CompareNames);
    CollectEventsOfCutset(set->GetManager(), leaf, &events);
    const double probability = leaf->GetWeight();
    OrvaPrinterRow row(stream);
    ++rank;
    if (printMinimalCutsetRank) row.Put(rank);
    if (printMinimalCutsetOrder) row.Put(leaf->GetCutsetOrder());
    if (printMinimalCutsetProbability) row.Put(probability);
    if (printMinimalCutsetContribution) row.Put(sum == 0.0 ? 0.0 : probability / sum);
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(events)) row.Put(event->GetName());
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
  OrvaPutRow(stream, "total", total);
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
