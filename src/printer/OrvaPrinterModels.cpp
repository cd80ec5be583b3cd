// Whole models, in the form in which they are read.
//
// What is written must be read back as the same model. The order is part of that. House events come
// first: a valued one is a gate for those that refer to it, so it must be known by then. Everything
// else may be referred to before it is defined. An expanded common-cause failure group is left out:
// it has become gates and basic events.
//
// The format has no way to write some texts, since the reader interprets no references: a quote in
// an attribute would end it. Such a model is not written at all, rather than as another model; the
// first text of the kind is reported. Reals are written with as many digits as they need.

#include <cassert>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "model/OrvaCCFGroup.h"
#include "model/OrvaGate.h"
#include "model/OrvaModel.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "printer/OrvaPrinter.h"
#include "reader/OrvaModelElements.h"
#include "xml/LumoXMLDocument.h"

using namespace OrvaModelElements;

namespace {

using Distribution = OrvaProbabilityDistribution;

// Stands in a definition that would otherwise be empty, which the reader refuses.
constexpr const char* UNDEFINED = "-- undefined --";

// What would end an attribute's value or a text too early, or not come out as it went in.
constexpr const char* UNWRITABLE_IN_ATTRIBUTES = "\"<\\";
constexpr const char* UNWRITABLE_IN_TEXTS = "<\\";

// The shortest decimal text that reads back as the same double.
std::string PrintReal(double x) {
  if (std::isinf(x)) return x > 0.0 ? "1e999" : "-1e999";
  constexpr int FEWEST_DIGITS = 15;
  constexpr int MOST_DIGITS = 17;
  char text[64];
  for (int digits = FEWEST_DIGITS; digits <= MOST_DIGITS; ++digits) {
    std::snprintf(text, sizeof text, "%.*g", digits, x);
    if (std::strtod(text, nullptr) == x) break;
  }
  return text;
}

bool IsHouseEvent(const OrvaEvent* event) {
  if (event->GetType() == OrvaEvent::HOUSE_EVENT) return true;
  return event->GetDefinition() != nullptr && event->GetDefinition()->IsConstant();
}

// Builds the elements. The first name or text that can't be written is kept.
class ModelWriter {
 public:
  const std::string* GetUnwritableText() const {
    return _isUnwritable ? &_unwritableText : nullptr;
  }

  LumoXMLNode* NewModel(const OrvaModel* model) {
    LumoXMLNode* root = LumoXMLNode::NewNode(model->GetFormat());
    const LumoAVLTree& events = model->GetEvents();
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(events)) {
      if (IsHouseEvent(event)) root->AddChild(NewHouseEvent(event));
    }
    for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(model->GetParameters())) {
      root->AddChild(NewParameter(parameter));
    }
    for (const OrvaCCFGroup* group : LumoItems<OrvaCCFGroup>(model->GetCCFGroups())) {
      if (!group->IsExpanded()) root->AddChild(NewCCFGroup(group));
    }
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(events)) {
      const bool isBasic = event->GetType() == OrvaEvent::BASIC_EVENT;
      if (isBasic && event->GetProbabilityDistribution() != nullptr) {
        root->AddChild(NewBasicEvent(event));
      }
    }
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(events)) {
      const bool isGate = event->GetType() == OrvaEvent::GATE;
      if (isGate && !IsHouseEvent(event)) root->AddChild(NewGate(event));
    }
    return root;
  }

  LumoXMLNode* NewExpression(const Distribution* expression) {
    if (const OrvaParameter* parameter = expression->GetReferencedParameter()) {
      return NewNamed(Distribution::GetFunctor(Distribution::PARAMETER), parameter->GetName());
    }
    switch (expression->GetType()) {
      case Distribution::BOOL:
      case Distribution::INT:
      case Distribution::FLOAT:
        return NewConstant(expression->GetValue());
      default:
        break;
    }
    assert(expression->GetType() != Distribution::UNKNOWN);
    LumoXMLNode* node = LumoXMLNode::NewNode(Distribution::GetFunctor(expression->GetType()));
    for (const Distribution* child = expression->GetFirstChild(); child != nullptr;
         child = child->GetNextSibling()) {
      node->AddChild(NewExpression(child));
    }
    return node;
  }

 private:
  void Check(const char* text, const char* unwritable) {
    if (_isUnwritable || std::strpbrk(text, unwritable) == nullptr) return;
    _isUnwritable = true;
    _unwritableText = text;
  }

  void AddAttribute(LumoXMLNode* node, const char* name, const char* value) {
    Check(value, UNWRITABLE_IN_ATTRIBUTES);
    node->AddAttribute(name, value);
  }

  LumoXMLNode* NewNamed(const char* element, const char* name) {
    assert(name != nullptr);
    LumoXMLNode* node = LumoXMLNode::NewNode(element);
    AddAttribute(node, NAME, name);
    return node;
  }

  // A definition of a symbol or a group, with its label and the attributes that the model keeps.
  template <class Owner>
  LumoXMLNode* NewDefinition(const char* element, const Owner* owner) {
    LumoXMLNode* node = NewNamed(element, owner->GetName());
    if (const char* label = owner->GetAttributeAsString(LABEL, nullptr)) {
      Check(label, UNWRITABLE_IN_TEXTS);
      LumoXMLNode* labelNode = LumoXMLNode::NewNode(LABEL);
      labelNode->AddChild(LumoXMLNode::NewText(label));
      node->AddChild(labelNode);
    }
    return node;
  }

  template <std::size_t N>
  void AddKeptAttributes(LumoXMLNode* node, const OrvaSymbol* symbol,
                         const char* const (&names)[N]) {
    for (const char* name : names) {
      const char* value = symbol->GetAttributeAsString(name, nullptr);
      if (value != nullptr) AddAttribute(node, name, value);
    }
  }

  LumoXMLNode* NewHouseEvent(const OrvaEvent* event) {
    assert(event->GetDefinition() == nullptr || event->GetDefinition()->IsConstant());
    LumoXMLNode* node = NewDefinition(DEFINE_HOUSE_EVENT, event);
    if (event->GetDefinition() != nullptr) node->AddChild(NewFormula(event->GetDefinition()));
    return node;
  }

  LumoXMLNode* NewParameter(const OrvaParameter* parameter) {
    LumoXMLNode* node = NewDefinition(DEFINE_PARAMETER, parameter);
    AddKeptAttributes(node, parameter, PARAMETER_ATTRIBUTES);
    if (parameter->GetDefinition() != nullptr) {
      node->AddChild(NewExpression(parameter->GetDefinition()));
    } else {
      node->AddChild(LumoXMLNode::NewComment(UNDEFINED));
    }
    return node;
  }

  LumoXMLNode* NewBasicEvent(const OrvaEvent* event) {
    LumoXMLNode* node = NewDefinition(DEFINE_BASIC_EVENT, event);
    AddKeptAttributes(node, event, BASIC_EVENT_ATTRIBUTES);
    node->AddChild(NewExpression(event->GetProbabilityDistribution()));
    return node;
  }

  LumoXMLNode* NewGate(const OrvaEvent* event) {
    LumoXMLNode* node = NewDefinition(DEFINE_GATE, event);
    if (event->GetDefinition() != nullptr) {
      node->AddChild(NewFormula(event->GetDefinition()));
    } else {
      node->AddChild(LumoXMLNode::NewComment(UNDEFINED));
    }
    return node;
  }

  LumoXMLNode* NewFormula(const OrvaGate* formula) {
    if (formula->IsEvent()) {
      const OrvaEvent* event = formula->GetReferencedEvent();
      return NewNamed(GetElementOfReference(event->GetType()), event->GetName());
    }
    const OrvaGate::Type type = formula->GetType();
    assert(type != OrvaGate::UNKNOWN);
    LumoXMLNode* node = LumoXMLNode::NewNode(OrvaGate::GetFunctor(type));
    if (type == OrvaGate::CONSTANT) node->AddAttribute(VALUE, formula->GetConstantValue());
    if (type == OrvaGate::ATLEAST || type == OrvaGate::CARDINALITY) {
      node->AddAttribute(MIN, formula->GetMin());
    }
    if (type == OrvaGate::ATMOST || type == OrvaGate::CARDINALITY) {
      node->AddAttribute(MAX, formula->GetMax());
    }
    for (const OrvaGate* child = formula->GetFirstChild(); child != nullptr;
         child = child->GetNextSibling()) {
      node->AddChild(NewFormula(child));
    }
    return node;
  }

  // By the kind of the value: bounding may have turned the constant into one of another kind.
  LumoXMLNode* NewConstant(const LumoConstant* value) {
    const auto newNode = [](Distribution::Type type) {
      return LumoXMLNode::NewNode(Distribution::GetFunctor(type));
    };
    LumoXMLNode* node;
    switch (value->GetType()) {
      case LumoConstant::BOOL:
        node = newNode(Distribution::BOOL);
        node->AddAttribute(VALUE, value->ToBool());
        return node;
      case LumoConstant::INT:
        node = newNode(Distribution::INT);
        node->AddAttribute(VALUE, value->ToInt());
        return node;
      default:
        node = newNode(Distribution::FLOAT);
        node->AddAttribute(VALUE, PrintReal(value->ToDouble()).c_str());
        return node;
    }
  }

  LumoXMLNode* NewCCFGroup(const OrvaCCFGroup* group) {
    LumoXMLNode* node = NewDefinition(DEFINE_CCF_GROUP, group);
    assert(group->GetType() != OrvaCCFGroup::UNKNOWN && !group->IsExpanded());
    node->AddAttribute(MODEL, OrvaCCFGroup::GetTypeName(group->GetType()));
    LumoXMLNode* members = LumoXMLNode::NewNode(MEMBERS);
    for (int i = 0; i < group->GetNumberOfMembers(); ++i) {
      members->AddChild(
          NewNamed(GetElementOfReference(OrvaEvent::BASIC_EVENT), group->GetMember(i)->GetName()));
    }
    node->AddChild(members);
    if (group->GetDistribution() != nullptr) {
      LumoXMLNode* distribution = LumoXMLNode::NewNode(DISTRIBUTION);
      distribution->AddChild(NewExpression(group->GetDistribution()));
      node->AddChild(distribution);
    }
    LumoXMLNode* factors = LumoXMLNode::NewNode(FACTORS);
    for (int level = 0; level <= group->GetHighestLevel(); ++level) {
      if (group->GetFactor(level) == nullptr) continue;
      LumoXMLNode* factor = LumoXMLNode::NewNode(FACTOR);
      factor->AddAttribute(LEVEL, level);
      factor->AddChild(NewExpression(group->GetFactor(level)));
      factors->AddChild(factor);
    }
    node->AddChild(factors);
    return node;
  }

  bool _isUnwritable = false;
  std::string _unwritableText;
};

}  // namespace

void OrvaPrinter::UploadModel(int& error, const OrvaModel* model, LumoXMLDocument*& document) {
  ModelWriter writer;
  document = new LumoXMLDocument;
  document->AddRoot(writer.NewModel(model));
  if (const std::string* text = writer.GetUnwritableText()) {
    _ReportUnwritableText(error, text->c_str());
    delete document;
    document = nullptr;
  }
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaPrinter::UploadProbabilityDistribution(int& error, const Distribution* distribution,
                                                LumoXMLNode*& node) {
  ModelWriter writer;
  node = writer.NewExpression(distribution);
  if (const std::string* text = writer.GetUnwritableText()) {
    _ReportUnwritableText(error, text->c_str());
    delete node;
    node = nullptr;
  }
}
