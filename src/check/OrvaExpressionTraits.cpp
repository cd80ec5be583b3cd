// An expression has the traits of its parts, and a parameter those of its definition. Chains of
// parameters may be as long as the model is large, so traits spread from the definitions that have
// them to the parameters that use these, through a list, until nothing changes. Within one
// definition walks recurse: a document bounds its depth.

#include "check/OrvaExpressionTraits.h"

#include <vector>

#include "check/OrvaModelText.h"

namespace {

// The kinds that have traits of their own, and deviates, which hide what is below them.
struct Kind {
  const char* element;
  int own;
  bool isDeviate = false;
};
constexpr int TIME = OrvaExpressionTraits::DEPENDS_ON_TIME;
constexpr int LAW = OrvaExpressionTraits::HAS_FAILURE_LAW;
constexpr int TESTS = OrvaExpressionTraits::HAS_TESTS;
constexpr Kind KINDS[] = {
    {"mission-time", TIME},
    {"bound-time", TIME},
    {"exponential", LAW},
    {"GLM", LAW},
    {"dormant", LAW},
    {"standby", LAW},
    {"periodic-test", TIME | LAW | TESTS},
    {"uniform-deviate", 0, true},
    {"normal-deviate", 0, true},
    {"lognormal-deviate", 0, true},
    {"beta-deviate", 0, true},
    {"gamma-deviate", 0, true},
    {"histogram", 0, true},
};

const Kind* FindKind(const LumoXMLNode* node) {
  for (const Kind& kind : KINDS) {
    if (node->IsNodeOfName(kind.element)) return &kind;
  }
  return nullptr;
}

// Visits an expression and what the evaluation sees below it.
template <class Visit>
void VisitSeen(const LumoXMLNode* node, const Visit& visit) {
  const Kind* kind = FindKind(node);
  if (kind != nullptr && kind->isDeviate) return;
  visit(node, kind == nullptr ? 0 : kind->own);
  OrvaVisitChildren(node, [&](const LumoXMLNode* child) { VisitSeen(child, visit); });
}

}  // namespace

OrvaExpressionTraits::OrvaExpressionTraits(const OrvaModelText& text) {
  std::unordered_map<std::string_view, std::vector<std::string_view>> users;
  std::vector<std::string_view> changed;
  for (const auto& [name, node] : text.GetParameters().lastDefinition) {
    const LumoXMLNode* expression = text.FindExpressionOfParameter(name);
    if (expression == nullptr) continue;
    int& traits = _traitsOfParameters[name];
    VisitSeen(expression, [&, user = name](const LumoXMLNode* each, int own) {
      traits |= own;
      if (OrvaIsParameter(each)) users[OrvaGetName(each)].push_back(user);
    });
    changed.push_back(name);
  }
  while (!changed.empty()) {
    const std::string_view name = changed.back();
    changed.pop_back();
    const int traits = _traitsOfParameters[name];
    for (const std::string_view user : users[name]) {
      int& traitsOfUser = _traitsOfParameters[user];
      if ((traits & ~traitsOfUser) == 0) continue;
      traitsOfUser |= traits;
      changed.push_back(user);
    }
  }
}

int OrvaExpressionTraits::Get(const LumoXMLNode* expression) const {
  int traits = 0;
  VisitSeen(expression, [&](const LumoXMLNode* each, int own) {
    traits |= own;
    if (OrvaIsParameter(each)) traits |= _GetOfParameter(OrvaGetName(each));
  });
  return traits;
}

bool OrvaExpressionTraits::IsDeviate(const LumoXMLNode* node) {
  const Kind* kind = FindKind(node);
  return kind != nullptr && kind->isDeviate;
}

int OrvaExpressionTraits::_GetOfParameter(std::string_view name) const {
  const auto found = _traitsOfParameters.find(name);
  return found == _traitsOfParameters.end() ? 0 : found->second;
}
