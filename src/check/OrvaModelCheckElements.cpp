// What the elements of models are given and the reader passes over: attributes that it does not
// look for, and whatever is inside an element that stands for itself. Attributes of another
// namespace are notes of the program that wrote the model. One finding for each kind of element and
// each name: models come from programs, which write the same thing everywhere.

#include "check/OrvaFindings.h"
#include "check/OrvaModelCheck.h"
#include "check/OrvaNearestName.h"
#include "reader/OrvaModelElements.h"
#include "support/text/LumoRawString.h"

using namespace OrvaModelElements;

namespace {

constexpr const char* NOTHING_IS_READ = "it reads no attributes";
constexpr const char* NAMESPACE = "xmlns";

// The attributes that an element may have, and whether elements inside it are read. All others have
// no attributes.
struct Row {
  const char* element;
  std::vector<const char*> attributes;
  bool readsElements = true;
};

const Row& FindRow(const LumoXMLNode* node) {
  static const Row ROWS[] = {
      {OPEN_PSA, {NAME}},
      {SRF_PSA, {NAME}},
      {OPSA_MEF, {NAME}},
      {RISKSPECTRUM_OPSA_MEF, {NAME}},
      {DEFINE_FAULT_TREE, {NAME}},
      {DEFINE_GATE, {NAME}},
      {DEFINE_BASIC_EVENT, {NAME}},
      {DEFINE_HOUSE_EVENT, {NAME}},
      {DEFINE_PARAMETER, {NAME, "unit"}},
      {DEFINE_CCF_GROUP, {NAME, MODEL}},
      {FACTOR, {LEVEL}},
      {LABEL, {}, false},
      {"parameter", {NAME}, false},
      {"constant", {VALUE}, false},
      {"bool", {VALUE}, false},
      {"int", {VALUE}, false},
      {"float", {VALUE}, false},
      {"atleast", {MIN}},
      {"atmost", {MAX}},
      {"cardinality", {MIN, MAX}},
  };
  static const Row REFERENCE = {nullptr, {NAME}, false};
  static const Row OTHER = {nullptr, {}};
  if (OrvaIsReference(node)) return REFERENCE;
  for (const Row& row : ROWS) {
    if (node->IsNodeOfName(row.element)) return row;
  }
  return OTHER;
}

bool IsForeign(const std::string& attribute) {
  return attribute == NAMESPACE || attribute.find(':') != std::string::npos;
}

// Of several distributions the last counts, and of what is inside a factor the first.
bool IsPassedOver(const LumoXMLNode* node) {
  const LumoXMLNode* parent = node->GetParent();
  if (parent->IsNodeOfName(FACTOR)) return node != OrvaFirstElement(parent);
  return parent->IsNodeOfName(DISTRIBUTION) && OrvaNextElement(node) != nullptr;
}

}  // namespace

void OrvaModelCheck::CheckElement(const LumoXMLNode* node) {
  const Row& row = FindRow(node);
  for (const LumoXMLAttribute* attribute = node->GetFirstAttribute(); attribute != nullptr;
       attribute = attribute->GetNext()) {
    _CheckAttribute(node, attribute->GetName(), row.attributes);
  }
  OrvaVisitChildren(node, [&](const LumoXMLNode* child) {
    if (row.readsElements && !IsPassedOver(child)) return CheckElement(child);
    if (!_passedOver.insert({node->GetName(), child->GetName()}).second) return;
    _findings->Report(OrvaFinding::UNREAD_ELEMENT, child, child->GetName());
  });
}

void OrvaModelCheck::_CheckAttribute(const LumoXMLNode* node, const std::string& name,
                                     const std::vector<const char*>& names) {
  for (const char* known : names) {
    if (name == known) return;
  }
  if (IsForeign(name) || !_passedOver.insert({node->GetName(), "@" + name}).second) return;
  _findings->ReportTag(OrvaFinding::UNREAD_ATTRIBUTE, node, name,
                       OrvaDescribeNearestName(name.c_str(), names, NOTHING_IS_READ));
}
