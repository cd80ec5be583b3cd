// Boolean systems in three formats, their statistics and their variables, and module records.
//
// All three formats write threshold equations, as the system has them: an "and" has become n out of
// n, an "or" 1 out of n. The "open-psa" form is a model again, with "atleast" gates, but one of the
// flat system: a variable that stands for a module is a basic event in it, which has two
// probabilities, the sum of the module's cutsets and the highest of them.

#include <cassert>
#include <iterator>
#include <string>

#include "model/OrvaGate.h"
#include "model/OrvaModel.h"
#include "model/OrvaProbabilityDistribution.h"
#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterTable.h"
#include "quantification/OrvaHandle.h"
#include "reader/OrvaModelElements.h"
#include "support/text/LumoFileStream.h"
#include "system/OrvaAnalyzer.h"
#include "system/OrvaModuleRecord.h"
#include "system/OrvaSystem.h"
#include "xml/LumoXMLDocument.h"

using namespace OrvaModelElements;

namespace {

bool IsModule(const OrvaVariable* variable) {
  return variable->IsInputVariable() && variable->GetEvent() != nullptr &&
         variable->GetEvent()->IsModule();
}

// A variable without a name goes by its number.
void PutVariable(const OrvaVariable* variable, LumoStream* stream) {
  assert(variable != nullptr);
  if (variable->GetName() != nullptr) {
    stream->Put(variable->GetName());
  } else {
    stream->Put(variable->GetNumber());
  }
}

std::string GetText(const OrvaVariable* variable) {
  assert(variable != nullptr);
  return variable->GetName() != nullptr ? variable->GetName()
                                        : std::to_string(variable->GetNumber());
}

void PutLiteral(const OrvaLiteral& literal, LumoStream* stream) {
  if (!literal.GetSign()) stream->Put("-");
  PutVariable(literal.GetVariable(), stream);
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
  const OrvaEvent::Type type =
      variable->IsInputVariable() ? OrvaEvent::BASIC_EVENT : OrvaEvent::GATE;
  LumoXMLNode* node = LumoXMLNode::NewNode(GetElementOfReference(type));
  AddName(variable, node);
  if (literal.GetSign()) return node;
  LumoXMLNode* negation = LumoXMLNode::NewNode(OrvaGate::GetFunctor(OrvaGate::NOT));
  negation->AddChild(node);
  return negation;
}

LumoXMLNode* NewGateDefinition(const OrvaEquation& equation) {
  assert(equation.GetFanout() != nullptr);
  LumoXMLNode* definition = LumoXMLNode::NewNode(DEFINE_GATE);
  AddName(equation.GetFanout(), definition);
  LumoXMLNode* formula = LumoXMLNode::NewNode(OrvaGate::GetFunctor(OrvaGate::ATLEAST));
  formula->AddAttribute(MIN, equation.GetMin());
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
  {
    OrvaPrinterTable table(this, stream);
    table.PutRow("gates", system->GetNumberOfEquations());
    table.PutRow("basic-events", system->GetNumberOfAtomicVariables());
    table.PutRow("modules", system->GetNumberOfModules());
  }
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
    if (error == 0 && equation.GetFanout() != nullptr) root->AddChild(NewGateDefinition(equation));
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
  node = LumoXMLNode::NewNode(DEFINE_BASIC_EVENT);
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
  node = LumoXMLNode::NewNode(
      OrvaProbabilityDistribution::GetFunctor(OrvaProbabilityDistribution::FLOAT));
  node->AddAttribute(VALUE, x);
}

void OrvaPrinter::PrintSystemStatistics(const OrvaSystem* system, LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  table.PutRecord(
      {{"#gates", system->GetNumberOfEquations()},
       {"#basic-events", system->GetNumberOfVariables() - system->GetNumberOfEquations()}});
}

void OrvaPrinter::PrintDataOfVariables(OrvaSystem* system, LumoStream* stream,
                                       VariablePrinter print, const char* heading,
                                       const char* ending) {
  LumoList variables;
  system->CollectVariables(&variables);
  PrintDataOfVariables(&variables, stream, print, heading, ending);
}

void OrvaPrinter::PrintDataOfVariables(const LumoContainer* variables, LumoStream* stream,
                                       VariablePrinter print, const char* heading,
                                       const char* ending) {
  stream->Put(heading);
  for (const OrvaVariable* variable : LumoItems<OrvaVariable>(*variables)) {
    (this->*print)(variable, stream);
  }
  stream->Put(ending);
  stream->Flush();
}

void OrvaPrinter::PrintValuesOfVariables(OrvaSystem* system, LumoStream* stream) {
  OrvaPrinterTable(this, stream).PutHeaderOfColumns("variable", "value");
  PrintDataOfVariables(system, stream, &OrvaPrinter::PrintValueOfVariable,
                       layout == IN_ROWS ? "values-of-variables\n" : nullptr, nullptr);
}

void OrvaPrinter::PrintOccurrencesOfVariables(OrvaSystem* system, LumoStream* stream) {
  OrvaPrinterTable(this, stream).PutHeaderOfColumns("variable", "occurrences", "equations");
  PrintDataOfVariables(system, stream, &OrvaPrinter::PrintOccurrencesOfVariable,
                       layout == IN_ROWS ? "occurrences\n" : nullptr, nullptr);
}

void OrvaPrinter::PrintValueOfVariable(const OrvaVariable* variable, LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  const bool isTrue = variable->GetCandidateValue() != OrvaVariable::POSSIBLY_FALSE;
  table.PutRow(GetText(variable).c_str(), isTrue ? 1 : 0);
}

void OrvaPrinter::PrintOccurrencesOfVariable(const OrvaVariable* variable, LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  table.Put(GetText(variable).c_str()).Put(variable->GetNumberOfOccurrences()).BeginList();
  for (const OrvaEquation* equation : variable->GetPositiveOccurrences()) {
    table.PutItem(GetText(equation->GetFanout()).c_str());
  }
  for (const OrvaEquation* equation : variable->GetNegativeOccurrences()) {
    table.PutItem(std::string("-").append(GetText(equation->GetFanout())).c_str());
  }
  table.EndRow();
}

void OrvaPrinter::PrintNumbersOfParents(const LumoContainer* events, LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  table.PutHeaderOfColumns("event", "parents");
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*events)) {
    table.PutRow(event->GetName(), OrvaAnalyzer::GetNumberOfParents(event));
  }
}

// The last number counts the gates that carry a record, whether or not they are modules: this is
// the defined behaviour.
void OrvaPrinter::PrintModules(const OrvaModel* model, LumoStream* stream) {
  int numberOfBasicEvents = 0;
  int numberOfGates = 0;
  int numberOfRecords = 0;
  {
    OrvaPrinterTable table(this, stream);
    table.PutHeaderOfColumns("gate", "first-date", "second-date", "last-date", "lowest-date",
                             "highest-date", "module");
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(model->GetEvents())) {
      ++(event->GetDefinition() == nullptr ? numberOfBasicEvents : numberOfGates);
      const OrvaModuleRecord* record = event->GetModuleRecord();
      if (event->GetDefinition() == nullptr || record == nullptr) continue;
      ++numberOfRecords;
      table.Put(event->GetName()).Put(record->GetFirstDate()).Put(record->GetSecondDate());
      table.Put(record->GetLastDate()).Put(record->GetLowestDate()).Put(record->GetHighestDate());
      if (table.IsInColumns()) {
        table.Put(record->IsModule() ? 1 : 0);
      } else if (record->IsModule()) {
        table.Put("module");
      }
      table.EndRow();
    }
  }
  OrvaPrinterTable table(this, stream, "numbers");
  table.PutRecord({{"basic-events", numberOfBasicEvents},
                   {"gates", numberOfGates},
                   {"modules", numberOfRecords}});
}

// Offered to users of the class; the program itself does not call what follows.

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

void OrvaPrinter::PrintDataOfEquations(OrvaSystem* system, LumoStream* stream,
                                       EquationPrinter print, const char* heading,
                                       const char* ending) {
  LumoList equations;
  for (OrvaEquation& equation : system->GetEquations()) equations.InsertItemLast(&equation);
  PrintDataOfEquations(&equations, stream, print, heading, ending);
}

void OrvaPrinter::PrintDataOfEquations(const LumoContainer* equations, LumoStream* stream,
                                       EquationPrinter print, const char* heading,
                                       const char* ending) {
  stream->Put(heading);
  for (const OrvaEquation* equation : LumoItems<OrvaEquation>(*equations)) {
    (this->*print)(equation, stream);
  }
  stream->Put(ending);
  stream->Flush();
}

void OrvaPrinter::PrintValue(OrvaVariable::Value value, LumoStream* stream) {
  static constexpr const char* VALUES[] = {"?", "!", "0", "1"};
  assert(value >= 0 && value < static_cast<int>(std::size(VALUES)));
  stream->Put(VALUES[value]);
}

void OrvaPrinter::PrintProbabilityOfVariable(const OrvaVariable* variable, LumoStream* stream) {
  PutVariable(variable, stream);
  stream->Put("\t");
  OrvaPrinterTable table(this, stream);
  table.PutRow(variable->GetProbability(), variable->GetHighestCutsetProbability());
}

void OrvaPrinter::PrintRankOfVariable(const OrvaVariable* variable, LumoStream* stream) {
  PutVariable(variable, stream);
  stream->Put("\t");
  stream->Putln(variable->GetRank());
}
