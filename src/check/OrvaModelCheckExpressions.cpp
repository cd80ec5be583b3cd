#include <cstdio>

#include "check/OrvaExpressionTraits.h"
#include "check/OrvaFindings.h"
#include "check/OrvaModelCheck.h"
#include "model/OrvaModel.h"
#include "model/OrvaProbabilityDistribution.h"
#include "reader/OrvaModelElements.h"
#include "support/text/LumoRawString.h"

using namespace OrvaModelElements;

namespace {

constexpr const char* SWITCH = "switch";
constexpr const char* CASE = "case";
constexpr const char* BOOL = "bool";
constexpr const char* TRUE = "true";
constexpr const char* FALSE = "false";
// Also ends rings.
constexpr int LONGEST_CHAIN_OF_PARAMETERS = 1000;

}  // namespace

void OrvaModelCheck::CheckExpressions(OrvaModel* model) {
  for (const LumoXMLNode* expression : _text.GetAllExpressions()) {
    OrvaVisitElements(expression, [&](const LumoXMLNode* each) {
      if (OrvaExpressionTraits::IsDeviate(each)) _CheckDeviate(each);
      if (each->IsNodeOfName(SWITCH)) _CheckSwitch(each);
    });
  }
  _CheckProbabilities(model);
}

// A group computes the probabilities of its events from its distribution and its factors, which
// are inside these computations then.
void OrvaModelCheck::_CheckDeviate(const LumoXMLNode* node) {
  const LumoXMLNode* parent = node->GetParent();
  if (OrvaIsExpression(parent) || parent->IsNodeOfName(DISTRIBUTION) ||
      parent->IsNodeOfName(FACTOR)) {
    _findings->Report(OrvaFinding::UNDRAWN_DEVIATE, node, node->GetName(), parent->GetName());
  }
}

// Cases are tried in order, up to the first child that is no case.
void OrvaModelCheck::_CheckSwitch(const LumoXMLNode* node) {
  bool isDecided = false;
  OrvaVisitChildren(node, [&](const LumoXMLNode* child) {
    const bool isCase = child->IsNodeOfName(CASE);
    const LumoXMLNode* condition = OrvaFirstElement(child);
    if (isDecided || (isCase && _IsConstant(condition, FALSE))) {
      _findings->Report(OrvaFinding::UNREACHABLE_CASE, child);
    }
    isDecided = isDecided || !isCase || _IsConstant(condition, TRUE);
  });
}

bool OrvaModelCheck::_IsConstant(const LumoXMLNode* condition, const char* value) const {
  for (int i = 0; i < LONGEST_CHAIN_OF_PARAMETERS && condition != nullptr; ++i) {
    if (condition->IsNodeOfName(BOOL)) {
      return LumoRawString::IsEqual(condition->GetAttributeValue(VALUE), value);
    }
    if (!OrvaIsParameter(condition)) return false;
    condition = _text.FindExpressionOfParameter(OrvaGetName(condition));
  }
  return false;
}

void OrvaModelCheck::_CheckProbabilities(OrvaModel* model) {
  model->Complete();
  model->ComputeProbabilitiesOfBasicEvents(0.0);
  for (const auto& [node, replaced] : _text.GetEvents().definitions) {
    const std::string name(OrvaGetName(node));
    if (_text.GetEvents().Find(name) != node || _text.FindGroup(name) != nullptr) continue;
    const auto expressions = _text.GetExpressions(name);
    const OrvaEvent* event = model->LookForEvent(name.c_str());
    if (expressions.empty() || event == nullptr || event->GetDefinition() != nullptr) continue;
    const double probability = event->GetProbability();
    if (probability >= 0.0 && probability <= 1.0) continue;
    if ((_GetTraits().Get(expressions.front()) & OrvaExpressionTraits::DEPENDS_ON_TIME) != 0) {
      continue;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", probability);
    _findings->Report(OrvaFinding::PROBABILITY_OUT_OF_RANGE, node, name, text);
  }
}
