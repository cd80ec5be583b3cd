// What the formulas below a top event do to its minimal cutsets. They are looked at as they are
// written: what normalisation makes of them has no lines any more.

#include <map>

#include "check/OrvaFindings.h"
#include "check/OrvaModelCheck.h"
#include "model/OrvaGate.h"
#include "reader/OrvaModelElements.h"

using namespace OrvaModelElements;

namespace {

constexpr const char* NOT = "not";
constexpr const char* ATLEAST = "atleast";
constexpr const char* CONSTANT = "constant";
// Names of names are followed that far, which also ends rings of them.
constexpr int LONGEST_CHAIN_OF_ALIASES = 1000;

// Or a constant, which goes away.
bool IsLiteral(const LumoXMLNode* formula) {
  if (formula->IsNodeOfName(CONSTANT)) return true;
  if (formula->IsNodeOfName(NOT)) formula = OrvaFirstElement(formula);
  return formula != nullptr && OrvaIsReference(formula);
}

// Null when there is none, or a second.
const LumoXMLNode* GetOnlyElement(const LumoXMLNode* node) {
  const LumoXMLNode* first = OrvaFirstElement(node);
  return first == nullptr || OrvaNextElement(first) != nullptr ? nullptr : first;
}

int CountElements(const LumoXMLNode* node) {
  int count = 0;
  OrvaVisitChildren(node, [&](const LumoXMLNode*) { ++count; });
  return count;
}

}  // namespace

void OrvaModelCheck::CheckFormulas(const char* topEvent, bool isSearch) {
  for (const std::string_view event : _text.GetEventsBelow(topEvent)) {
    const LumoXMLNode* formula = _text.FindFormula(event);
    if (formula != nullptr) _CheckGate(event, formula, isSearch);
  }
  _CheckHouseEvents();
  if (isSearch) _CheckTopEvent(topEvent);
}

void OrvaModelCheck::CheckAllFormulas() {
  for (const auto& [node, replaced] : _text.GetEvents().definitions) {
    const LumoXMLNode* formula = _text.FindFormula(OrvaGetName(node));
    if (formula != nullptr) _CheckGate(OrvaGetName(node), formula, true);
  }
  _CheckHouseEvents();
}

void OrvaModelCheck::_CheckHouseEvents() {
  for (const auto& [node, replaced] : _text.GetEvents().definitions) {
    if (!node->IsNodeOfName(DEFINE_HOUSE_EVENT)) continue;
    OrvaVisitChildren(node, [&, house = node](const LumoXMLNode* child) {
      if (!child->IsNodeOfName(CONSTANT)) return;
      _findings->ReportOnce(OrvaFinding::HOUSE_EVENT_VALUE, house, std::string(OrvaGetName(house)));
    });
  }
}

void OrvaModelCheck::_CheckTopEvent(const char* topEvent) {
  const LumoXMLNode* node = _text.GetEvents().Find(topEvent);
  if (node == nullptr || !node->IsNodeOfName(DEFINE_GATE)) return;
  const std::string_view named = _ResolveAlias(topEvent, true);
  if (named != topEvent && _text.FindFormula(named) == nullptr &&
      _text.FindGroup(named) == nullptr) {
    _findings->ReportOnce(OrvaFinding::SINGLE_ARGUMENT, node, topEvent);
  }
}

void OrvaModelCheck::_CheckGate(std::string_view gate, const LumoXMLNode* formula, bool isSearch) {
  const std::string name(gate);
  OrvaVisitElements(formula, [&](const LumoXMLNode* each) {
    if (each->IsNodeOfName(NOT)) _findings->ReportOnce(OrvaFinding::NEGATION, each, name);
    if (each->IsNodeOfName(ATLEAST)) _CheckThreshold(each, isSearch);
    if (each != formula && each->GetParent() == formula && !IsLiteral(each)) {
      _findings->ReportOnce(OrvaFinding::NESTED_FORMULA, each, name);
    }
  });
}

void OrvaModelCheck::_CheckThreshold(const LumoXMLNode* formula, bool isSearch) {
  const int count = CountElements(formula);
  const int min = formula->FindAttribute(MIN)->GetValueAsInt();
  if (min <= 0 || min > count) {
    _findings->ReportOnce(OrvaFinding::IMPOSSIBLE_THRESHOLD, formula, std::to_string(count));
  }
  if (!isSearch) return;
  std::map<std::string_view, int> occurrences;
  OrvaVisitChildren(formula, [&](const LumoXMLNode* argument) {
    if (!OrvaIsReference(argument)) return;
    const std::string_view event = _ResolveAlias(OrvaGetName(argument), false);
    if (++occurrences[event] != 2) return;
    _findings->ReportOnce(OrvaFinding::REPEATED_ARGUMENT, formula, std::string(event));
  });
}

// The event that an event is another name of: itself, unless it is a gate with a single argument.
std::string_view OrvaModelCheck::_ResolveAlias(std::string_view event, bool passesNegations) const {
  for (int i = 0; i < LONGEST_CHAIN_OF_ALIASES; ++i) {
    const LumoXMLNode* formula = _text.FindFormula(event);
    while (formula != nullptr && !OrvaIsReference(formula)) {
      if (formula->IsNodeOfName(NOT) && !passesNegations) return event;
      formula = GetOnlyElement(formula);
    }
    if (formula == nullptr) return event;
    event = OrvaGetName(formula);
  }
  return event;
}
