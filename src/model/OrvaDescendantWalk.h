#pragma once

#include <vector>

#include "model/OrvaDefinitionWalk.h"

// Collects the symbols at or below one or several starts.
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
  OrvaSymbol::Selector _selector;
  const void* _argument;
  LumoContainer* _result;
  OrvaDefinitionWalk _walk;
  std::vector<OrvaSymbol*> _visited;
};
