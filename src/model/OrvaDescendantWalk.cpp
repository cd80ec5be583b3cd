#include "model/OrvaDescendantWalk.h"

#include <cassert>

void OrvaDescendantWalk::VisitSymbol(OrvaSymbol* symbol) {
  _walk.Visit(
      symbol,
      [this](OrvaSymbol* entered) {
        if (entered->GetFlag() == 1) return false;
        entered->SetFlag(1);
        _visited.push_back(entered);
        return true;
      },
      [this](OrvaSymbol* left) {
        if (_selector(left, _argument) == 0) _result->InsertItem(left);
      });
}

void OrvaDescendantWalk::VisitTerm(OrvaTerm* term) {
  OrvaReferenceCursor references(term);
  while (OrvaSymbol* reference = references.TakeNext()) VisitSymbol(reference);
}

void OrvaDescendantWalk::ClearFlags() {
  for (OrvaSymbol* symbol : _visited) {
    assert(symbol->GetFlag() == 1);
    symbol->SetFlag(0);
  }
  _visited.clear();
}
