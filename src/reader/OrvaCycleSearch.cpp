#include "reader/OrvaCycleSearch.h"

#include <algorithm>
#include <deque>
#include <unordered_map>

#include "model/OrvaTerm.h"
#include "support/containers/LumoRange.h"

namespace {

constexpr std::size_t LONGEST_SHOWN = 12;
constexpr std::size_t SHOWN_AT_ENDS = 5;
constexpr const char* ARROW = " -> ";

enum Flag : int { UNSEEN = 0, OPEN = 1, CLOSED = 2 };

// Calls visit with each symbol that a definition refers to, until it returns false.
template <class Visit>
void ForEachReference(OrvaSymbol* symbol, Visit visit) {
  OrvaTerm* definition = symbol->GetDefinition();
  if (definition == nullptr) return;
  for (OrvaTerm* term = definition->GetFirstInPostOrder(); term != nullptr;
       term = term->GetNextInPostOrder(definition)) {
    OrvaSymbol* reference = term->GetReferencedSymbol();
    if (reference != nullptr && !visit(reference)) return;
  }
}

// A depth-first search that ends when it meets a symbol that it has not left yet.
class Search {
 public:
  // A symbol on a ring, or null.
  OrvaSymbol* FindSymbolOnCycle(const LumoContainer* symbols) {
    for (OrvaSymbol* symbol : LumoItems<OrvaSymbol>(*symbols)) {
      if (symbol->GetFlag() == UNSEEN) _Open(symbol);
      while (!_stack.empty() && _found == nullptr) _Step();
      if (_found != nullptr) break;
    }
    for (OrvaSymbol* symbol : _visited) symbol->SetFlag(UNSEEN);
    return _found;
  }

 private:
  struct Frame {
    OrvaSymbol* symbol;
    OrvaTerm* definition;
    OrvaTerm* next;
  };

  void _Open(OrvaSymbol* symbol) {
    symbol->SetFlag(OPEN);
    _visited.push_back(symbol);
    OrvaTerm* definition = symbol->GetDefinition();
    _stack.push_back(
        {symbol, definition, definition == nullptr ? nullptr : definition->GetFirstInPostOrder()});
  }
  void _Step() {
    Frame& frame = _stack.back();
    if (frame.next == nullptr) {
      frame.symbol->SetFlag(CLOSED);
      _stack.pop_back();
      return;
    }
    OrvaSymbol* reference = frame.next->GetReferencedSymbol();
    frame.next = frame.next->GetNextInPostOrder(frame.definition);
    if (reference == nullptr || reference->GetFlag() == CLOSED) return;
    if (reference->GetFlag() == OPEN) {
      _found = reference;
    } else {
      _Open(reference);
    }
  }

  std::vector<Frame> _stack;
  std::vector<OrvaSymbol*> _visited;
  OrvaSymbol* _found = nullptr;
};

// The shortest way from a symbol along references back to itself, by breadth.
std::vector<OrvaSymbol*> FindShortestCycle(OrvaSymbol* start) {
  std::unordered_map<OrvaSymbol*, OrvaSymbol*> cameFrom;
  std::deque<OrvaSymbol*> waiting = {start};
  while (cameFrom.count(start) == 0) {
    OrvaSymbol* symbol = waiting.front();
    waiting.pop_front();
    ForEachReference(symbol, [&](OrvaSymbol* reference) {
      if (cameFrom.emplace(reference, symbol).second) waiting.push_back(reference);
      return reference != start;
    });
  }
  std::vector<OrvaSymbol*> cycle;
  for (OrvaSymbol* symbol = cameFrom[start]; symbol != start; symbol = cameFrom[symbol]) {
    cycle.push_back(symbol);
  }
  cycle.push_back(start);
  std::reverse(cycle.begin(), cycle.end());  // it was followed against the references
  return cycle;
}

}  // namespace

std::vector<OrvaSymbol*> OrvaCycleSearch::FindCycle(const LumoContainer* symbols) {
  OrvaSymbol* start = Search().FindSymbolOnCycle(symbols);
  return start == nullptr ? std::vector<OrvaSymbol*>() : FindShortestCycle(start);
}

std::string OrvaCycleSearch::GetText(const std::vector<OrvaSymbol*>& cycle) {
  std::string text;
  for (std::size_t i = 0; i < cycle.size(); ++i) {
    if (cycle.size() > LONGEST_SHOWN && i == SHOWN_AT_ENDS) {
      text += std::string("...") + ARROW;
      i = cycle.size() - SHOWN_AT_ENDS;
    }
    text += cycle[i]->GetName() + std::string(ARROW);
  }
  return text + cycle.front()->GetName();
}
