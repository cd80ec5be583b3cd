// Minimal cutsets and the search for them.

#include <memory>

#include "mcs/OrvaMCSSet.h"
#include "mcs/OrvaWalkObserver.h"
#include "model/OrvaEvent.h"
#include "printer/OrvaPrinter.h"
#include "support/containers/LumoAVLTree.h"
#include "support/text/LumoStream.h"

namespace {

// The highest probability first.
int CompareDecreasingWeights(const void* a, const void* b) {
  return OrvaMCSNode::CompareWeights(b, a);
}

// The fields of one row: the first has no tab before it.
class Row {
 public:
  explicit Row(LumoStream* stream) : _stream(stream) {}
  template <class Value>
  void Put(Value value) {
    if (!_isEmpty) _stream->Put("\t");
    _isEmpty = false;
    _stream->Put(value);
  }
  void End() { _stream->Putln(); }

 private:
  LumoStream* _stream;
  bool _isEmpty = true;
};

// The events whose then-branches lead from the root to a leaf, in alphabetical order.
void CollectEventsOfCutset(const OrvaMCSManager* manager, const OrvaMCSNode* leaf,
                           LumoAVLTree* events) {
  for (const OrvaMCSNode* node = leaf; node->GetParent() != nullptr; node = node->GetParent()) {
    if (node->IsThenSon()) events->InsertItem(manager->GetEvent(node->GetParent()->GetIndex()));
  }
}

template <class Value>
void PutLabelled(LumoStream* stream, const char* label, Value value) {
  stream->Put(label);
  stream->Put("\t");
  stream->Putln(value);
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
    Row row(stream);
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
  stream->Putln("order\t#MCS");
  for (int order = 0; order <= highestOrder; ++order) {
    if (numbers[order] == 0) continue;
    stream->Put(order);
    stream->Put("\t");
    stream->Putln(numbers[order]);
  }
  PutLabelled(stream, "total", total);
}

void OrvaPrinter::PrintWalkObserver(const OrvaWalkObserver* observer, LumoStream* stream) {
  stream->Putln("Model");
  PutLabelled(stream, "top-event", observer->GetTopEventName());
  PutLabelled(stream, "#gates", observer->numberOfGates);
  PutLabelled(stream, "#basic-events", observer->numberOfBasicEvents);
  PutLabelled(stream, "#modules", observer->numberOfModules);
  stream->Putln();
  stream->Putln("Cutoff");
  PutLabelled(stream, "maximum-order", observer->maximumOrder);
  PutLabelled(stream, "minimum-probability", observer->minimumProbability);
  stream->Putln();
  stream->Putln("Choices");
  PutLabelled(stream, "#unit", observer->unit);
  PutLabelled(stream, "#cutoff", observer->cutoff);
  PutLabelled(stream, "#branching", observer->branching);
  stream->Putln();
  stream->Putln("Branches");
  PutLabelled(stream, "#dead-ends", observer->deadEnds);
  PutLabelled(stream, "#cutoffs", observer->cutoffs);
  PutLabelled(stream, "#non-minimal-cutsets", observer->nonMinimalCutsets);
  PutLabelled(stream, "#minimal-cutsets", observer->minimalCutsets);
  stream->Putln();
  stream->Putln("Running Times");
  PutLabelled(stream, "seconds", observer->GetRunningTime());
}
