#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "xml/LumoXMLDocument.h"

// The elements among the children of an element.
inline const LumoXMLNode* OrvaSkipToElement(const LumoXMLNode* node) {
  while (node != nullptr && !node->IsNode()) node = node->GetNextSibling();
  return node;
}
inline const LumoXMLNode* OrvaFirstElement(const LumoXMLNode* parent) {
  return OrvaSkipToElement(parent->GetFirstChild());
}
inline const LumoXMLNode* OrvaNextElement(const LumoXMLNode* node) {
  return OrvaSkipToElement(node->GetNextSibling());
}
template <class Visit>
void OrvaVisitChildren(const LumoXMLNode* parent, Visit visit) {
  for (const LumoXMLNode* child = OrvaFirstElement(parent); child != nullptr;
       child = OrvaNextElement(child)) {
    visit(child);
  }
}
// An element and all elements below it, in the order of the document.
template <class Visit>
void OrvaVisitElements(const LumoXMLNode* root, Visit visit) {
  for (const LumoXMLNode* node = root; node != nullptr;) {
    visit(node);
    const LumoXMLNode* next = OrvaFirstElement(node);
    while (next == nullptr && node != root) {
      next = OrvaNextElement(node);
      node = node->GetParent();
    }
    node = next;
  }
}

// The attribute "name" of an element; empty without one.
std::string_view OrvaGetName(const LumoXMLNode* node);
// Whether an element stands for an event, in a formula.
bool OrvaIsReference(const LumoXMLNode* node);
// Whether it stands for a parameter, in an expression.
bool OrvaIsParameter(const LumoXMLNode* node);
// Whether it is of a kind of formula, or of expression.
bool OrvaIsFormula(const LumoXMLNode* node);
bool OrvaIsExpression(const LumoXMLNode* node);

// One kind of name in a model, events or parameters: where each is defined and referred to.
struct OrvaNames {
  struct Definition {
    const LumoXMLNode* node;
    const LumoXMLNode* replaced;  // the definition before it, null for none
  };
  std::vector<Definition> definitions;         // as they come
  std::vector<const LumoXMLNode*> references;  // the first to each name
  std::unordered_map<std::string_view, const LumoXMLNode*> lastDefinition;
  std::unordered_map<std::string_view, const LumoXMLNode*> firstReference;

  void Define(const LumoXMLNode* node);
  void Refer(const LumoXMLNode* node);
  // Null for none.
  const LumoXMLNode* Find(std::string_view name) const;
};

// The elements of the model files, by the names that they define and use. The loaded model knows
// neither lines nor what normalisation has made of a formula.
class OrvaModelText {
 public:
  // Takes over the document of a model.
  void Add(std::unique_ptr<LumoXMLDocument> document);

  const OrvaNames& GetEvents() const { return _events; }
  const OrvaNames& GetParameters() const { return _parameters; }
  // The formula of a gate; null for any other event.
  const LumoXMLNode* FindFormula(std::string_view event) const;
  // The group that an event is a member of; null for none.
  const LumoXMLNode* FindGroup(std::string_view event) const;
  // What the probability of an event is computed from: its expression, or those of its group.
  std::vector<const LumoXMLNode*> GetExpressions(std::string_view event) const;
  const LumoXMLNode* FindExpressionOfParameter(std::string_view parameter) const;
  // The events at or below one, each once, those above first.
  std::vector<std::string_view> GetEventsBelow(std::string_view event) const;
  // Every expression that something is defined by.
  std::vector<const LumoXMLNode*> GetAllExpressions() const;

 private:
  void _AddDefinition(const LumoXMLNode* node);
  void _AddGroup(const LumoXMLNode* node);
  void _AddParameterReferences(const LumoXMLNode* node);

  std::vector<std::unique_ptr<LumoXMLDocument>> _documents;
  OrvaNames _events;
  OrvaNames _parameters;
  std::vector<const LumoXMLNode*> _groups;
  std::unordered_map<std::string_view, const LumoXMLNode*> _groupOfMember;
};
