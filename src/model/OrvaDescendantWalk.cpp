#include "model/OrvaDescendantWalk.h"

#include "model/OrvaTerm.h"

void OrvaDescendantWalk::VisitSymbol(OrvaSymbol* symbol) {
  if (symbol->GetFlag() == 1) return;
  _Open(symbol);
  _Run();
}

void OrvaDescendantWalk::VisitTerm(OrvaTerm* term) {
  _stack.push_back({nullptr, term, term->GetFirstInPostOrder()});
  _Run();
}

void OrvaDescendantWalk::ClearFlags() {
  for (OrvaSymbol* symbol : _visited) symbol->SetFlag(0);
  _visited.clear();
}

void OrvaDescendantWalk::_Open(OrvaSymbol* symbol) {
  symbol->SetFlag(1);
  _visited.push_back(symbol);
  if (OrvaTerm* definition = symbol->GetDefinition()) {
    _stack.push_back({symbol, definition, definition->GetFirstInPostOrder()});
  } else {
    _Close(symbol);
  }
}

void OrvaDescendantWalk::_Close(OrvaSymbol* symbol) {
  if (_selector(symbol, _argument) == 0) _result->InsertItem(symbol);
}

void OrvaDescendantWalk::_Run() {
  while (!_stack.empty()) {
    Frame& frame = _stack.back();
    if (frame.next == nullptr) {
      OrvaSymbol* symbol = frame.symbol;
      _stack.pop_back();
      if (symbol != nullptr) _Close(symbol);
      continue;
    }
    OrvaSymbol* reference = frame.next->GetReferencedSymbol();
    frame.next = frame.next->GetNextInPostOrder(frame.root);
    if (reference != nullptr && reference->GetFlag() != 1) _Open(reference);
  }
}
