#include "check/OrvaModelText.h"

#include <unordered_set>

#include "model/OrvaGate.h"
#include "model/OrvaProbabilityDistribution.h"
#include "reader/OrvaModelElements.h"

using namespace OrvaModelElements;

namespace {

const LumoXMLNode* Lookup(const std::unordered_map<std::string_view, const LumoXMLNode*>& nodes,
                          std::string_view name) {
  const auto found = nodes.find(name);
  return found == nodes.end() ? nullptr : found->second;
}

void AddExpressions(const LumoXMLNode* parent, std::vector<const LumoXMLNode*>& result) {
  OrvaVisitChildren(parent, [&](const LumoXMLNode* child) {
    if (OrvaIsExpression(child)) result.push_back(child);
  });
}

// Those of its distribution and of its factors.
void AddExpressionsOfGroup(const LumoXMLNode* group, std::vector<const LumoXMLNode*>& result) {
  OrvaVisitChildren(group, [&](const LumoXMLNode* part) {
    if (part->IsNodeOfName(DISTRIBUTION) || part->IsNodeOfName(FACTOR)) {
      AddExpressions(part, result);
    } else if (part->IsNodeOfName(FACTORS)) {
      OrvaVisitChildren(part, [&](const LumoXMLNode* factor) { AddExpressions(factor, result); });
    }
  });
}

}  // namespace

std::string_view OrvaGetName(const LumoXMLNode* node) {
  const char* name = node->GetAttributeValue(NAME);
  return name == nullptr ? std::string_view() : std::string_view(name);
}

bool OrvaIsReference(const LumoXMLNode* node) {
  for (const Reference& reference : REFERENCES) {
    if (node->IsNodeOfName(reference.element)) return true;
  }
  return false;
}

bool OrvaIsParameter(const LumoXMLNode* node) { return node->IsNodeOfName("parameter"); }

bool OrvaIsFormula(const LumoXMLNode* node) {
  return node->IsNode() && OrvaGate::GetType(node->GetName()) != OrvaGate::UNKNOWN;
}

bool OrvaIsExpression(const LumoXMLNode* node) {
  return node->IsNode() && OrvaProbabilityDistribution::GetType(node->GetName()) !=
                               OrvaProbabilityDistribution::UNKNOWN;
}

void OrvaNames::Define(const LumoXMLNode* node) {
  const LumoXMLNode*& last = lastDefinition[OrvaGetName(node)];
  definitions.push_back({node, last});
  last = node;
}

void OrvaNames::Refer(const LumoXMLNode* node) {
  if (firstReference.insert({OrvaGetName(node), node}).second) references.push_back(node);
}

const LumoXMLNode* OrvaNames::Find(std::string_view name) const {
  return Lookup(lastDefinition, name);
}

void OrvaModelText::Add(std::unique_ptr<LumoXMLDocument> document) {
  OrvaVisitChildren(document.get(), [&](const LumoXMLNode* root) {
    OrvaVisitChildren(root, [&](const LumoXMLNode* node) {
      if (node->IsNodeOfName(DEFINE_FAULT_TREE) || node->IsNodeOfName(MODEL_DATA)) {
        OrvaVisitChildren(node, [&](const LumoXMLNode* each) { _AddDefinition(each); });
      } else {
        _AddDefinition(node);
      }
    });
  });
  _documents.push_back(std::move(document));
}

void OrvaModelText::_AddDefinition(const LumoXMLNode* node) {
  if (node->IsNodeOfName(DEFINE_CCF_GROUP)) return _AddGroup(node);
  if (node->IsNodeOfName(DEFINE_GATE)) {
    _events.Define(node);
    OrvaVisitElements(node, [&](const LumoXMLNode* each) {
      if (OrvaIsReference(each)) _events.Refer(each);
    });
  } else {
    (node->IsNodeOfName(DEFINE_PARAMETER) ? _parameters : _events).Define(node);
    _AddParameterReferences(node);
  }
}

void OrvaModelText::_AddGroup(const LumoXMLNode* node) {
  _groups.push_back(node);
  OrvaVisitElements(node, [&](const LumoXMLNode* each) {
    if (!each->IsNodeOfName(MEMBERS)) return;
    OrvaVisitChildren(each, [&](const LumoXMLNode* member) {
      _groupOfMember[OrvaGetName(member)] = node;
      _events.Refer(member);
    });
  });
  _AddParameterReferences(node);
}

void OrvaModelText::_AddParameterReferences(const LumoXMLNode* node) {
  OrvaVisitElements(node, [&](const LumoXMLNode* each) {
    if (OrvaIsParameter(each)) _parameters.Refer(each);
  });
}

const LumoXMLNode* OrvaModelText::FindFormula(std::string_view event) const {
  const LumoXMLNode* node = _events.Find(event);
  if (node == nullptr || !node->IsNodeOfName(DEFINE_GATE)) return nullptr;
  const LumoXMLNode* formula = OrvaFirstElement(node);
  while (formula != nullptr && !OrvaIsFormula(formula)) formula = OrvaNextElement(formula);
  return formula;
}

const LumoXMLNode* OrvaModelText::FindGroup(std::string_view event) const {
  return Lookup(_groupOfMember, event);
}

std::vector<const LumoXMLNode*> OrvaModelText::GetExpressions(std::string_view event) const {
  std::vector<const LumoXMLNode*> expressions;
  const LumoXMLNode* node = _events.Find(event);
  if (const LumoXMLNode* group = FindGroup(event)) {
    AddExpressionsOfGroup(group, expressions);
  } else if (node != nullptr && node->IsNodeOfName(DEFINE_BASIC_EVENT)) {
    AddExpressions(node, expressions);
  }
  return expressions;
}

const LumoXMLNode* OrvaModelText::FindExpressionOfParameter(std::string_view parameter) const {
  const LumoXMLNode* node = _parameters.Find(parameter);
  if (node == nullptr) return nullptr;
  std::vector<const LumoXMLNode*> expressions;
  AddExpressions(node, expressions);
  return expressions.empty() ? nullptr : expressions.front();
}

std::vector<std::string_view> OrvaModelText::GetEventsBelow(std::string_view event) const {
  std::vector<std::string_view> below = {event};
  std::unordered_set<std::string_view> known = {event};
  for (std::size_t i = 0; i < below.size(); ++i) {
    const LumoXMLNode* formula = FindFormula(below[i]);
    if (formula == nullptr) continue;
    OrvaVisitElements(formula, [&](const LumoXMLNode* each) {
      if (!OrvaIsReference(each)) return;
      if (known.insert(OrvaGetName(each)).second) below.push_back(OrvaGetName(each));
    });
  }
  return below;
}

std::vector<const LumoXMLNode*> OrvaModelText::GetAllExpressions() const {
  std::vector<const LumoXMLNode*> all;
  for (const OrvaNames* names : {&_events, &_parameters}) {
    for (const OrvaNames::Definition& definition : names->definitions) {
      if (!definition.node->IsNodeOfName(DEFINE_GATE)) AddExpressions(definition.node, all);
    }
  }
  for (const LumoXMLNode* group : _groups) AddExpressionsOfGroup(group, all);
  return all;
}
