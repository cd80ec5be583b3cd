#include "model/OrvaSymbol.h"

#include <cassert>
#include <vector>

#include "model/OrvaDescendantWalk.h"
#include "model/OrvaTerm.h"
#include "support/containers/LumoRange.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

namespace {

const OrvaSymbol* AsSymbol(const void* item) { return static_cast<const OrvaSymbol*>(item); }

// The symbol defined by the formula in which a term stands, null when the formula defines none.
OrvaSymbol* GetSymbolDefinedAbove(const OrvaTerm* term) {
  while (term->GetParent() != nullptr) term = term->GetParent();
  return term->GetDefinedSymbol();
}

}  // namespace

OrvaSymbol::OrvaSymbol(OrvaModel* model, const char* name)
    : _model(model), _name(LumoRawString::Copy(name)) {
  LumoMemoryManager::TraceNew(this, "OrvaSymbol");
}

OrvaSymbol::~OrvaSymbol() {
  OrvaTerm::Delete(_definition);
  LumoRawString::Delete(_name);
  LumoMemoryManager::TraceDelete(this, "OrvaSymbol");
}

void OrvaSymbol::SetName(const char* name) { LumoRawString::Replace(_name, name); }

void OrvaSymbol::SetDefinition(OrvaTerm* definition) {
  if (_definition != nullptr) {
    _definition->SetDefinedSymbol(nullptr);
    OrvaTerm::Delete(_definition);
  }
  assert(definition == nullptr || definition->GetParent() == nullptr);
  _definition = definition;
  if (_definition != nullptr) _definition->SetDefinedSymbol(this);
}

void OrvaSymbol::AddOccurrence(OrvaTerm* term) {
  _occurrences.InsertItemLast(term);
  term->_symbolOfOccurrence = this;
  term->_cellOfOccurrence = _occurrences.GetLastCell();
}

void OrvaSymbol::RemoveOccurrence(OrvaTerm* term) {
  if (term->_symbolOfOccurrence == this) {
    assert(term->_cellOfOccurrence->GetItem() == term);
    _occurrences.RemoveCell(term->_cellOfOccurrence);
    term->_symbolOfOccurrence = nullptr;
    term->_cellOfOccurrence = nullptr;
  } else {
    _occurrences.RemoveItem(term);
  }
}

int OrvaSymbol::CompareName(const void* symbol, const void* name) {
  return AsSymbol(symbol)->CompareName(static_cast<const char*>(name));
}

int OrvaSymbol::CompareNames(const void* a, const void* b) {
  return AsSymbol(a)->CompareNames(AsSymbol(b));
}

int OrvaSymbol::CompareAsAnySymbol(const void* /*symbol*/, const void* /*argument*/) { return 0; }

int OrvaSymbol::CompareAsRootSymbol(const void* symbol, const void* /*argument*/) {
  return AsSymbol(symbol)->GetNumberOfOccurrences();
}

int OrvaSymbol::CompareAsLeafSymbol(const void* symbol, const void* /*argument*/) {
  return AsSymbol(symbol)->GetDefinition() == nullptr ? 0 : 1;
}

int OrvaSymbol::CompareAsInternalSymbol(const void* symbol, const void* /*argument*/) {
  return AsSymbol(symbol)->GetDefinition() != nullptr ? 0 : 1;
}

void OrvaSymbol::CollectDescendants(Selector selector, const void* argument,
                                    LumoContainer* result) {
  OrvaDescendantWalk walk(selector, argument, result);
  walk.VisitSymbol(this);
  walk.ClearFlags();
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaSymbol::Delete(void* symbol) {
  if (symbol != nullptr) delete static_cast<OrvaSymbol*>(symbol);
}

void OrvaSymbol::CollectAncestors(Selector selector, const void* argument, LumoContainer* result) {
  OrvaDescendantWalk walk(selector, argument, result);
  SetFlag(1);
  for (const OrvaTerm* term : LumoItems<OrvaTerm>(_occurrences)) {
    if (OrvaSymbol* symbol = GetSymbolDefinedAbove(term)) walk.VisitSymbol(symbol);
  }
  if (selector(this, argument) == 0) result->InsertItem(this);
  walk.ClearFlags();
  SetFlag(0);
}

void OrvaSymbol::SetFlagsOfDescendants(int flag) {
  if (_flag == flag) return;
  _flag = flag;
  if (_definition != nullptr) _definition->SetFlagsOfDescendants(flag);
}

void OrvaSymbol::SetFlagsOfAncestors(int flag) {
  if (_flag == flag) return;
  _flag = flag;
  std::vector<OrvaSymbol*> waiting = {this};
  while (!waiting.empty()) {
    const OrvaSymbol* symbol = waiting.back();
    waiting.pop_back();
    for (const OrvaTerm* term : LumoItems<OrvaTerm>(symbol->_occurrences)) {
      OrvaSymbol* defined = GetSymbolDefinedAbove(term);
      if (defined == nullptr || defined->_flag == flag) continue;
      defined->_flag = flag;
      waiting.push_back(defined);
    }
  }
}
