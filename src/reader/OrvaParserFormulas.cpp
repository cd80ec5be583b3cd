// Boolean formulas.

#include <cassert>

#include "model/OrvaGate.h"
#include "model/OrvaModel.h"
#include "reader/OrvaModelElements.h"
#include "reader/OrvaParser.h"
#include "reader/OrvaParserMessages.h"

using namespace OrvaModelElements;
using namespace OrvaParserMessages;

namespace {

OrvaEvent::Type GetTypeOfReference(const LumoXMLNode* node) {
  for (const Reference& reference : REFERENCES) {
    if (node->IsNodeOfName(reference.element)) return reference.type;
  }
  assert(false);  // every element that refers to an event is in the table
  return OrvaEvent::UNSPECIFIED_EVENT;
}

// What is said of an event whose type a reference contradicts, by its type.
const char* GetContradiction(OrvaEvent::Type type) {
  switch (type) {
    case OrvaEvent::GATE:
      return "Event %s already used/declared as a gate";
    case OrvaEvent::BASIC_EVENT:
      return "Event %s already used/declared as a basic event";
    default:
      return "Event %s already used/declared as a house event";
  }
}

}  // namespace

OrvaGate* OrvaParser::_DownloadGate(int& error, const LumoXMLNode* node, OrvaModel* model) {
  const OrvaGate::Type type =
      node->IsNode() ? OrvaGate::GetType(node->GetName()) : OrvaGate::UNKNOWN;
  switch (type) {
    case OrvaGate::UNKNOWN:
      _Report(error, ILL_FORMED_GATE, node);
      return nullptr;
    case OrvaGate::CONSTANT:
      return _DownloadConstant(error, node, model);
    case OrvaGate::EVENT: {
      OrvaEvent* event = _DownloadEvent(error, node, model);
      return event == nullptr ? nullptr : OrvaGate::NewEvent(model, event);
    }
    default:
      return _DownloadOperator(error, node, model);
  }
}

OrvaGate* OrvaParser::_DownloadConstant(int& error, const LumoXMLNode* node, OrvaModel* model) {
  bool value = false;
  _DownloadBooleanAttribute(error, node, VALUE, value);
  return error != 0 ? nullptr : OrvaGate::NewConstant(model, value);
}

OrvaGate* OrvaParser::_DownloadOperator(int& error, const LumoXMLNode* node, OrvaModel* model) {
  const OrvaGate::Type type = OrvaGate::GetType(node->GetName());
  assert(type != OrvaGate::UNKNOWN && type != OrvaGate::CONSTANT && type != OrvaGate::EVENT);
  OrvaGate* gate = OrvaGate::NewOperator(model, type, nullptr);
  if (type == OrvaGate::ATLEAST || type == OrvaGate::CARDINALITY) {
    _DownloadThreshold(error, node, MIN, OrvaGate::MIN, gate);
  }
  if (type == OrvaGate::ATMOST || type == OrvaGate::CARDINALITY) {
    _DownloadThreshold(error, node, MAX, OrvaGate::MAX, gate);
  }
  _DownloadGateChildren(error, node, gate, model);
  if (error == 0 && type == OrvaGate::NOT && gate->GetNumberOfChildren() != 1) {
    _Report(error, WRONG_NUMBER_OF_CHILDREN, node);
  }
  if (error == 0) return gate;
  OrvaTerm::Delete(gate);
  return nullptr;
}

void OrvaParser::_DownloadThreshold(int& error, const LumoXMLNode* node, const char* name,
                                    const char* attribute, OrvaGate* gate) {
  if (error != 0) return;
  int threshold = 0;
  _DownloadIntegerAttribute(error, node, name, threshold);
  gate->SetAttribute(attribute, threshold);
}

void OrvaParser::_DownloadGateChildren(int& error, const LumoXMLNode* node, OrvaGate* gate,
                                       OrvaModel* model) {
  for (const LumoXMLNode* child = node->GetFirstChild(); child != nullptr && error == 0;
       child = child->GetNextSibling()) {
    if (child->IsComment()) continue;
    if (!child->IsNode() || OrvaGate::GetType(child->GetName()) == OrvaGate::UNKNOWN) {
      return _Report(error, UNKNOWN_OPERAND, child);
    }
    if (OrvaGate* operand = _DownloadGate(error, child, model)) gate->AddChild(operand);
  }
}

OrvaEvent* OrvaParser::_DownloadEvent(int& error, const LumoXMLNode* node, OrvaModel* model) {
  return _LookForOrAddEvent(error, node, GetTypeOfReference(node), model);
}

// A reference of unspecified type matches every event.
OrvaEvent* OrvaParser::_LookForOrAddEvent(int& error, const LumoXMLNode* node, OrvaEvent::Type type,
                                          OrvaModel* model) {
  const char* name = _DownloadAttribute(error, node, NAME);
  if (name == nullptr) return nullptr;
  OrvaEvent* event = model->LookForEvent(name);
  if (event == nullptr) return model->AddEvent(name, type);
  if (type == OrvaEvent::UNSPECIFIED_EVENT || event->GetType() == type) return event;
  if (event->GetType() != OrvaEvent::UNSPECIFIED_EVENT) {
    _Report(error, GetContradiction(event->GetType()), name, node);
    return nullptr;
  }
  assert(type != OrvaEvent::UNSPECIFIED_EVENT);
  event->SetType(type);
  return event;
}
