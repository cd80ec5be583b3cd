// The definitions of gates, basic events, house events and parameters.
//
// Two questions are kept apart: what an element says the event is, and what it gives to it. An
// event may have got its type from a reference; a declaration of another type, or a second
// definition, is a fault, or, with the option that checks this off, is passed over: the event keeps
// its type and gets the new definition on top. So an event can come to have both a formula and an
// expression, and its type says which of them counts. A house event with a value is a gate for all
// that follows, by OrvaEvent::SetDefinition.

#include <cassert>

#include "model/OrvaGate.h"
#include "model/OrvaModel.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "reader/OrvaModelElements.h"
#include "reader/OrvaParser.h"
#include "reader/OrvaParserMessages.h"
#include "support/text/LumoRawString.h"

using namespace OrvaModelElements;
using namespace OrvaParserMessages;

namespace {

constexpr const char* RISKSPECTRUM_PROBABILITY = "probability";
constexpr const char* CONSTANT = "constant";

bool IsConstant(const LumoXMLNode* node) { return node->IsNodeOfName(CONSTANT); }

bool IsFormula(const LumoXMLNode* node) {
  return node->IsNode() && OrvaGate::GetType(node->GetName()) != OrvaGate::UNKNOWN;
}

bool IsExpression(const LumoXMLNode* node) {
  return node->IsNode() && OrvaProbabilityDistribution::GetType(node->GetName()) !=
                               OrvaProbabilityDistribution::UNKNOWN;
}

}  // namespace

// What is said when an event of some type is declared again: one message per type, in the order of
// the types. The declared type itself is a conflict only with what defines it already.
struct OrvaParser::Conflicts {
  const char* withGate;
  const char* withBasicEvent;
  const char* withHouseEvent;
};

namespace {

constexpr const char* GetConflict(const auto& conflicts, OrvaEvent::Type type) {
  switch (type) {
    case OrvaEvent::GATE:
      return conflicts.withGate;
    case OrvaEvent::BASIC_EVENT:
      return conflicts.withBasicEvent;
    default:
      return conflicts.withHouseEvent;
  }
}

// Whether an event has what a declaration of its own type gives it.
bool IsDefinedAs(const OrvaEvent* event, OrvaEvent::Type type) {
  return type == OrvaEvent::BASIC_EVENT ? event->GetProbabilityDistribution() != nullptr
                                        : event->GetDefinition() != nullptr;
}

}  // namespace

OrvaEvent* OrvaParser::_DeclareEvent(int& error, const LumoXMLNode* node, OrvaEvent::Type type,
                                     const Conflicts& conflicts, OrvaModel* model) {
  const char* name = _DownloadAttribute(error, node, NAME);
  if (name == nullptr) return nullptr;
  OrvaEvent* event = model->LookForEvent(name);
  if (event == nullptr) return model->AddEvent(name, type);
  if (event->GetType() == OrvaEvent::UNSPECIFIED_EVENT) {
    event->SetType(type);
  } else if ((event->GetType() != type || IsDefinedAs(event, type)) && _ChecksEventRedefinition()) {
    _Report(error, GetConflict(conflicts, event->GetType()), name, node);
    return nullptr;
  }
  assert(event->GetType() != OrvaEvent::UNSPECIFIED_EVENT);
  return event;
}

// The children of a definition: its labels, and what it is defined by.
template <class Owner, class Predicate, class Download>
void OrvaParser::_DownloadStructure(int& error, const LumoXMLNode* node, Owner* owner,
                                    Predicate isDefinition, Download download) {
  for (const LumoXMLNode* child = node->GetFirstChild(); child != nullptr && error == 0;
       child = child->GetNextSibling()) {
    if (child->IsComment()) continue;
    if (child->IsNodeOfName(LABEL)) {
      _DownloadLabel(child, owner);
    } else if (isDefinition(child)) {
      download(child);
    } else {
      _Report(error, UNKNOWN_STRUCTURE, child);
    }
  }
}

// The same where only one definition may stand.
template <class Owner, class Predicate, class Download>
void OrvaParser::_DownloadUniqueDefinition(int& error, const LumoXMLNode* node, Owner* owner,
                                           Predicate isDefinition, Download download) {
  bool isDefined = false;
  _DownloadStructure(error, node, owner, isDefinition, [&](const LumoXMLNode* child) {
    if (isDefined) return _Report(error, MULTIPLE_DEFINITIONS, child);
    isDefined = true;
    auto* definition = download(child);
    assert((definition == nullptr) == (error != 0));
    if (definition != nullptr) owner->SetDefinition(definition);
  });
}

void OrvaParser::_DownloadGateDefinition(int& error, const LumoXMLNode* node, OrvaModel* model) {
  static constexpr Conflicts CONFLICTS = {
      "Gate %s is already defined.",
      "Event %s declared as a gate but used as a Basic Event.",
      "Event %s declared as a gate but used as a House Event.",
  };
  if (_DownloadAttribute(error, node, NAME) == nullptr) return;
  if (!node->HasChild()) return _Report(error, MISSING_GATE_DEFINITION, node);
  OrvaEvent* event = _DeclareEvent(error, node, OrvaEvent::GATE, CONFLICTS, model);
  if (event == nullptr) return;
  _DownloadUniqueDefinition(error, node, event, IsFormula, [&](const LumoXMLNode* child) {
    return _DownloadGate(error, child, model);
  });
}

void OrvaParser::_DownloadBasicEventDefinition(int& error, const LumoXMLNode* node,
                                               OrvaModel* model) {
  static constexpr Conflicts CONFLICTS = {
      "Event %s declared as a Basic Event but used as a gate.",
      "Basic Event %s is already defined.",
      "Event %s declared as a Basic Event but used as a House Event.",
  };
  OrvaEvent* event = _DeclareEvent(error, node, OrvaEvent::BASIC_EVENT, CONFLICTS, model);
  if (event == nullptr) return;
  const char* riskSpectrumModel = node->GetAttributeValue(RISKSPECTRUM_MODEL);
  if (riskSpectrumModel != nullptr &&
      LumoRawString::IsDifferent(riskSpectrumModel, RISKSPECTRUM_PROBABILITY)) {
    return _Report(error, UNKNOWN_RISKSPECTRUM_MODEL, node);
  }
  _DownloadExpressionOfBasicEvent(error, node, event, riskSpectrumModel);
}

void OrvaParser::_DownloadExpressionOfBasicEvent(int& error, const LumoXMLNode* node,
                                                 OrvaEvent* event, const char* riskSpectrumModel) {
  LumoList expressions;
  _DownloadStructure(error, node, event, IsExpression, [&](const LumoXMLNode* child) {
    auto* expression = _DownloadProbabilityDistribution(error, child, event->GetModel());
    if (expression != nullptr) expressions.InsertItemLast(expression);
  });
  if (error == 0 && expressions.GetNumberOfItems() != 1) {
    _Report(error, WRONG_NUMBER_OF_PARAMETERS, node);
  }
  if (error != 0) return expressions.DeleteItems(OrvaTerm::Delete);
  assert(expressions.GetNumberOfItems() == 1);
  event->SetProbabilityDistribution(
      static_cast<OrvaProbabilityDistribution*>(expressions.GetFirstItem()));
  if (riskSpectrumModel != nullptr) event->SetAttribute(RISKSPECTRUM_MODEL, riskSpectrumModel);
}

void OrvaParser::_DownloadHouseEventDefinition(int& error, const LumoXMLNode* node,
                                               OrvaModel* model) {
  static constexpr Conflicts CONFLICTS = {
      "Event %s declared as a House Event but used as a gate.",
      "Event %s declared as a House Event but used as a Basic Event.",
      "House Event %s is already defined.",
  };
  OrvaEvent* event = _DeclareEvent(error, node, OrvaEvent::HOUSE_EVENT, CONFLICTS, model);
  if (event == nullptr) return;
  _DownloadUniqueDefinition(error, node, event, IsConstant, [&](const LumoXMLNode* child) {
    return _DownloadConstant(error, child, model);
  });
}

void OrvaParser::_DownloadParameterDefinition(int& error, const LumoXMLNode* node,
                                              OrvaModel* model) {
  const char* name = _DownloadAttribute(error, node, NAME);
  if (name == nullptr) return;
  if (!node->HasChild()) return _Report(error, MISSING_PARAMETER_DEFINITION, node);
  OrvaParameter* parameter = model->LookForParameter(name);
  if (parameter == nullptr) {
    parameter = model->AddParameter(name);
  } else if (parameter->GetDefinition() != nullptr && _ChecksParameterRedefinition()) {
    return _Report(error, PARAMETER_ALREADY_DEFINED, name, node);
  }
  for (const char* attribute : PARAMETER_ATTRIBUTES) {
    const char* value = node->GetAttributeValue(attribute);
    if (value != nullptr) parameter->SetAttribute(attribute, value);
  }
  _DownloadUniqueDefinition(error, node, parameter, IsExpression, [&](const LumoXMLNode* child) {
    return _DownloadProbabilityDistribution(error, child, model);
  });
}
