// Two searches. One depth first over all definitions tells in linear time whether there is a ring,
// and names a symbol on one; but the ring that it closes may be a long way round, for it goes down
// as deep as it can first. So a second one, by breadth and from that symbol only, finds the
// shortest way back to it: that is the ring to show.

#include "reader/OrvaCycleSearch.h"

#include <algorithm>
#include <cassert>
#include <deque>
#include <unordered_map>

#include "model/OrvaDefinitionWalk.h"
#include "support/containers/LumoRange.h"

namespace {

constexpr std::size_t LONGEST_SHOWN = 12;
constexpr std::size_t SHOWN_AT_ENDS = 5;
constexpr const char* ARROW = " -> ";

enum Flag : int { UNSEEN = 0, OPEN = 1, CLOSED = 2 };

// A depth-first search for a symbol that is met again before it is left.
class Search {
 public:
  // A symbol on a ring, or null.
  OrvaSymbol* FindSymbolOnCycle(const LumoContainer* symbols) {
    OrvaDefinitionWalk walk;
    for (OrvaSymbol* symbol : LumoItems<OrvaSymbol>(*symbols)) {
      walk.Visit(
          symbol, [this](OrvaSymbol* entered) { return _Enter(entered); },
          [](OrvaSymbol* left) { left->SetFlag(CLOSED); });
      if (_found != nullptr) break;
    }
    for (OrvaSymbol* symbol : _visited) symbol->SetFlag(UNSEEN);
    return _found;
  }

 private:
  // Once a ring is found, nothing more is entered.
  bool _Enter(OrvaSymbol* symbol) {
    if (_found != nullptr || symbol->GetFlag() == CLOSED) return false;
    if (symbol->GetFlag() == OPEN) {
      _found = symbol;
      return false;
    }
    assert(symbol->GetFlag() == UNSEEN);
    symbol->SetFlag(OPEN);
    _visited.push_back(symbol);
    return true;
  }

  std::vector<OrvaSymbol*> _visited;
  OrvaSymbol* _found = nullptr;
};

// The shortest way from a symbol along references back to itself, by breadth.
std::vector<OrvaSymbol*> FindShortestCycle(OrvaSymbol* start) {
  std::unordered_map<OrvaSymbol*, OrvaSymbol*> cameFrom;
  std::deque<OrvaSymbol*> waiting = {start};
  while (cameFrom.count(start) == 0) {
    assert(!waiting.empty());
    OrvaSymbol* symbol = waiting.front();
    waiting.pop_front();
    OrvaReferenceCursor references(symbol->GetDefinition());
    while (OrvaSymbol* reference = references.TakeNext()) {
      if (cameFrom.emplace(reference, symbol).second) waiting.push_back(reference);
      if (reference == start) break;
    }
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
