#pragma once

#include <cassert>
#include <vector>

#include "model/OrvaTerm.h"

// The symbols that a tree of terms refers to, once for each reference, in post-order. The tree must
// not change meanwhile.
class OrvaReferenceCursor {
 public:
  // A null tree has no references.
  explicit OrvaReferenceCursor(OrvaTerm* root)
      : _root(root), _next(root == nullptr ? nullptr : root->GetFirstInPostOrder()) {}

  // Null after the last one.
  OrvaSymbol* TakeNext() {
    while (_next != nullptr) {
      OrvaSymbol* reference = _next->GetReferencedSymbol();
      _next = _next->GetNextInPostOrder(_root);
      if (reference != nullptr) return reference;
    }
    return nullptr;
  }

 private:
  OrvaTerm* _root;
  OrvaTerm* _next;
};

// The depth-first walk along definitions and references, on a stack of its own: a chain of gates
// may be as long as the model is large. What is done on the way, and what is walked at all, is the
// caller's; the calls are resolved at compile time.
class OrvaDefinitionWalk {
 public:
  // Calls enter(symbol) at the start and at each reference met; when it returns true, goes through
  // the references of the symbol's definition, if there is one, and calls leave(symbol) after them.
  // The symbols below the start must be of its type.
  template <class Symbol, class Enter, class Leave>
  void Visit(Symbol* start, Enter enter, Leave leave) {
    assert(_stack.empty());
    const auto open = [&](Symbol* symbol) {
      if (!enter(symbol)) return;
      OrvaTerm* definition = symbol->GetDefinition();
      if (definition == nullptr) return leave(symbol);
      _stack.push_back({symbol, OrvaReferenceCursor(definition)});
    };
    open(start);
    while (!_stack.empty()) {
      if (OrvaSymbol* reference = _stack.back().references.TakeNext()) {
        open(static_cast<Symbol*>(reference));
      } else {
        auto* symbol = static_cast<Symbol*>(_stack.back().symbol);
        _stack.pop_back();
        leave(symbol);
      }
    }
  }

 private:
  struct Frame {
    OrvaSymbol* symbol;
    OrvaReferenceCursor references;
  };

  std::vector<Frame> _stack;
};
