#include "system/OrvaAnalyzer.h"

#include "model/OrvaDefinitionWalk.h"
#include "model/OrvaEvent.h"
#include "model/OrvaGate.h"
#include "support/memory/LumoMemoryManager.h"

OrvaAnalyzer::OrvaAnalyzer(OrvaInterpreter* interpreter) : _interpreter(interpreter) {
  LumoMemoryManager::TraceNew(this, "OrvaAnalyzer");
}

OrvaAnalyzer::~OrvaAnalyzer() { LumoMemoryManager::TraceDelete(this, "OrvaAnalyzer"); }

// An event is counted from its parents, which come after it in post-order: resetting its count
// when its own formula has been counted loses nothing.
void OrvaAnalyzer::SortDescendantsByDecreasingNumbersOfParents(OrvaEvent* top,
                                                               LumoAVLTree*& result) {
  LumoList events;
  top->CollectDescendants(OrvaSymbol::CompareAsAnySymbol, nullptr, &events);
  for (OrvaEvent* event : LumoItems<OrvaEvent>(events)) ResetNumberOfParents(event);
  for (OrvaEvent* event : LumoItems<OrvaEvent>(events)) {
    OrvaReferenceCursor references(event->GetDefinition());
    while (OrvaSymbol* reference = references.TakeNext()) {
      IncrementNumberOfParents(static_cast<OrvaEvent*>(reference));
    }
    ResetNumberOfParents(event);
  }
  result = new LumoAVLTree(CompareNumbersOfParents);
  result->InsertItems(&events);
}

int OrvaAnalyzer::GetNumberOfParents(const OrvaEvent* event) {
  return event->GetAttributeAsInt(NUMBER_OF_PARENTS, 0);
}

int OrvaAnalyzer::GetNumberOfParents(const void* event) {
  return GetNumberOfParents(static_cast<const OrvaEvent*>(event));
}

void OrvaAnalyzer::IncrementNumberOfParents(OrvaEvent* event) {
  event->SetAttribute(NUMBER_OF_PARENTS, GetNumberOfParents(event) + 1);
}

void OrvaAnalyzer::ResetNumberOfParents(OrvaEvent* event) {
  event->ResetAttribute(NUMBER_OF_PARENTS);
}

int OrvaAnalyzer::CompareNumbersOfParents(const void* a, const void* b) {
  return GetNumberOfParents(b) - GetNumberOfParents(a);
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaAnalyzer::Delete(void* analyzer) {
  if (analyzer != nullptr) delete static_cast<OrvaAnalyzer*>(analyzer);
}
