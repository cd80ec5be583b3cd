#include "quantification/OrvaVariableIndices.h"

#include <cassert>

#include "model/OrvaEvent.h"
#include "store/OrvaMCSManager.h"
#include "system/OrvaSystem.h"

void OrvaIndexEvent(OrvaEvent* event, OrvaMCSManager* manager) {
  if (event->GetMCSIndex() != 0) return;
  const int next = manager->GetIndexOfHighestEntry() + 1;
  const int size = manager->GetSizeOfEntryTable();
  if (next >= size) manager->SetSizeOfEntryTable(2 * size);
  assert(next <= OrvaMCSNode::MAXIMUM_INDEX && next < manager->GetSizeOfEntryTable());
  event->SetMCSIndex(next);
  manager->SetEvent(next, event);
}

// In the order of the dictionary: tables of events are printed in the order of the indices.
void OrvaIndexInputVariables(OrvaSystem* system, OrvaMCSManager* manager) {
  for (OrvaVariable* variable : LumoItems<OrvaVariable>(system->GetDictionary())) {
    if (!variable->IsInputVariable()) continue;
    OrvaIndexEvent(variable->GetEvent(), manager);
    variable->SetMCSIndex(variable->GetEvent()->GetMCSIndex());
    manager->SetProbability(variable->GetMCSIndex(), variable->GetProbability());
  }
}
