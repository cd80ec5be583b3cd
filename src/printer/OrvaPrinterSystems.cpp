// Boolean systems, in three formats.

#include <memory>

#include "model/OrvaEvent.h"
#include "printer/OrvaPrinter.h"
#include "quantification/OrvaHandle.h"
#include "support/text/LumoFileStream.h"
#include "system/OrvaSystem.h"
#include "xml/LumoXMLDocument.h"

namespace {

constexpr const char* OPEN_PSA = "open-psa";
constexpr const char* NAME = "name";
constexpr const char* VALUE = "value";

bool IsModule(const OrvaVariable* variable) {
  return variable->IsInputVariable() && variable->GetEvent() != nullptr &&
         variable->GetEvent()->IsModule();
}

// A variable without a name goes by its number.
void PutVariable(const OrvaVariable* variable, LumoStream* stream) {
  if (variable->GetName() != nullptr) {
    stream->Put(variable->GetName());
  } else {
    stream->Put(variable->GetNumber());
  }
}

void PutLiteral(const OrvaLiteral& literal, LumoStream* stream) {
  if (!literal.GetSign()) stream->Put("-");
  PutVariable(literal.GetVariable(), stream);
}

void PutLabelled(const char* label, int value, LumoStream* stream) {
  stream->Put(label);
  stream->Putln(value);
}

void AddName(const OrvaVariable* variable, LumoXMLNode* node) {
  if (variable->GetName() != nullptr) {
    node->AddAttribute(NAME, variable->GetName());
  } else {
    node->AddAttribute(NAME, variable->GetNumber());
  }
}

LumoXMLNode* NewLiteral(const OrvaLiteral& literal) {
  const OrvaVariable* variable = literal.GetVariable();
  LumoXMLNode* node = LumoXMLNode::NewNode(variable->IsInputVariable() ? "basic-event" : "gate");
  AddName(variable, node);
  if (literal.GetSign()) return node;
  LumoXMLNode* negation = LumoXMLNode::NewNode("not");
  negation->AddChild(node);
  return negation;
}

LumoXMLNode* NewGateDefinition(const OrvaEquation& equation) {
  LumoXMLNode* definition = LumoXMLNode::NewNode("define-gate");
  AddName(equation.GetFanout(), definition);
  LumoXMLNode* formula = LumoXMLNode::NewNode("atleast");
  formula->AddAttribute("min", equation.GetMin());
  for (const OrvaLiteral& literal : equation.GetFanins()) formula->AddChild(NewLiteral(literal));
  definition->AddChild(formula);
  return definition;
}

}  // namespace

void OrvaPrinter::PrintEquationAtTalvikFormat(const OrvaEquation* equation, LumoStream* stream) {
  PutVariable(equation->GetFanout(), stream);
  stream->Put(" := @(");
  stream->Put(equation->GetMin());
  const char* separator = ",[";
  for (const OrvaLiteral& literal : equation->GetFanins()) {
    stream->Put(separator);
    PutLiteral(literal, stream);
    separator = ",";
  }
  if (equation->GetSize() == 0) stream->Put(separator);
  stream->Putln("]);");
}

void OrvaPrinter::PrintSystemAtTalvikFormat(OrvaSystem* system, LumoStream* stream) {
  for (const OrvaEquation& equation : system->GetEquations()) {
    PrintEquationAtTalvikFormat(&equation, stream);
  }
  stream->Flush();
  for (const OrvaVariable* variable : LumoItems<OrvaVariable>(system->GetDictionary())) {
    if (!IsModule(variable)) continue;
    const OrvaHandle* handle = variable->GetEvent()->GetHandle(system->GetName());
    if (handle == nullptr || handle->GetSystem() == nullptr) continue;
    stream->Put("/* Module ");
    stream->Put(variable->GetEvent()->GetName());
    stream->Putln(" */");
    PrintSystemAtTalvikFormat(handle->GetSystem(), stream);
  }
}

void OrvaPrinter::PrintEquationAtExcelFormat(const OrvaEquation* equation, LumoStream* stream) {
  PutVariable(equation->GetFanout(), stream);
  stream->Put("\t");
  stream->Put(equation->GetMin());
  stream->Put("\t");
  stream->Put(equation->GetSize());
  for (const OrvaLiteral& literal : equation->GetFanins()) {
    stream->Put("\t");
    PutLiteral(literal, stream);
  }
  stream->Putln();
}

void OrvaPrinter::PrintSystemAtExcelFormat(OrvaSystem* system, LumoStream* stream) {
  stream->Put("system\t");
  PutVariable(system->GetTopVariable(), stream);
  stream->Putln();
  PutLabelled("gates\t", system->GetNumberOfEquations(), stream);
  PutLabelled("basic-events\t", system->GetNumberOfAtomicVariables(), stream);
  PutLabelled("modules\t", system->GetNumberOfModules(), stream);
  for (const OrvaEquation& equation : system->GetEquations()) {
    PrintEquationAtExcelFormat(&equation, stream);
  }
  stream->Flush();
}

void OrvaPrinter::UploadSystem(int& error, OrvaSystem* system, LumoXMLDocument*& document) {
  document = new LumoXMLDocument;
  document->SetDocumentType(OPEN_PSA);
  LumoXMLNode* root = LumoXMLNode::NewNode(OPEN_PSA);
  root->AddAttribute("gates", system->GetNumberOfEquations());
  root->AddAttribute("basic-events", system->GetNumberOfAtomicVariables());
  root->AddAttribute("modules", system->GetNumberOfModules());
  document->AddRoot(root);
  for (const OrvaEquation& equation : system->GetEquations()) {
    if (equation.GetFanout() != nullptr) root->AddChild(NewGateDefinition(equation));
  }
  _UploadInputVariables(error, system, root);
}

void OrvaPrinter::_UploadInputVariables(int& error, OrvaSystem* system, LumoXMLNode* root) {
  for (const OrvaVariable& variable : system->GetVariables()) {
    if (error != 0) return;
    if (!variable.IsInputVariable()) continue;
    LumoXMLNode* definition;
    _UploadInputVariable(error, &variable, definition);
    root->AddChild(definition);
  }
}

// A variable whose two probabilities differ stands for a module.
void OrvaPrinter::_UploadInputVariable(int& error, const OrvaVariable* variable,
                                       LumoXMLNode*& node) {
  node = LumoXMLNode::NewNode("define-basic-event");
  AddName(variable, node);
  LumoXMLNode* probability;
  _UploadRealValue(error, variable->GetProbability(), probability);
  if (variable->GetProbability() == variable->GetHighestCutsetProbability()) {
    return node->AddChild(probability);
  }
  LumoXMLNode* highest;
  _UploadRealValue(error, variable->GetHighestCutsetProbability(), highest);
  LumoXMLNode* module = LumoXMLNode::NewNode("orva:module");
  module->AddChild(probability);
  module->AddChild(highest);
  node->AddChild(module);
}

void OrvaPrinter::_UploadRealValue(int& /*error*/, double x, LumoXMLNode*& node) {
  node = LumoXMLNode::NewNode("float");
  node->AddAttribute(VALUE, x);
}

void OrvaPrinter::UploadSystem(int& error, OrvaSystem* system, std::FILE* file) {
  LumoXMLDocument* document;
  UploadSystem(error, system, document);
  LumoFileStream stream(false, file);
  PrintDocument(document, &stream);
  delete document;
}

void OrvaPrinter::UploadSystem(int& error, OrvaSystem* system, const char* path) {
  std::FILE* file = std::fopen(path, "w");
  if (file == nullptr) {
    error = 1;
    return;
  }
  UploadSystem(error, system, file);
  std::fclose(file);
}
