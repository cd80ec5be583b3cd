#pragma once

#include <vector>

#include "model/OrvaSymbol.h"

// The depth-first walk along definitions and references, on a stack of its own: a chain of gates
// may be as long as the model is large.
//
// A walk flags the symbols that it visits and leaves them flagged, so that several starts make one
// walk; ClearFlags ends it.
class OrvaDescendantWalk {
 public:
  // Selected symbols go into the result, each after all the symbols below it.
  OrvaDescendantWalk(OrvaSymbol::Selector selector, const void* argument, LumoContainer* result)
      : _selector(selector), _argument(argument), _result(result) {}

  // Nothing happens at a symbol that is flagged already.
  void VisitSymbol(OrvaSymbol* symbol);
  void VisitTerm(OrvaTerm* term);
  // Sets the flags of all visited symbols back to 0.
  void ClearFlags();

 private:
  // A tree of terms being walked, and the symbol that it defines (null for a start at a term).
  struct Frame {
    OrvaSymbol* symbol;
    OrvaTerm* root;
    OrvaTerm* next;
  };

  void _Open(OrvaSymbol* symbol);
  void _Close(OrvaSymbol* symbol);
  void _Run();

  OrvaSymbol::Selector _selector;
  const void* _argument;
  LumoContainer* _result;
  std::vector<Frame> _stack;
  std::vector<OrvaSymbol*> _visited;
};
