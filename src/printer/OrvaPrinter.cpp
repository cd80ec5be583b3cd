// Probabilities, values and options. This is the one source file of the printer that looks upward,
// for the options.

#include "printer/OrvaPrinter.h"

#include <cassert>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "model/OrvaParameter.h"
#include "printer/OrvaPrinterTable.h"
#include "support/memory/LumoMemoryManager.h"

using Center = OrvaOptionCenter;

namespace {

constexpr const char* UNWRITABLE_TEXT = "A model can't be written with this name or text: %s\n";

constexpr const char* SET = "set";

void PutProbability(OrvaPrinterTable& table, const OrvaEvent* event, double missionTime) {
  if (!table.IsInColumns()) table.Put("Pr");
  table.PutRow(event->GetName(), missionTime, event->GetProbability());
}

void PutValue(OrvaPrinterTable& table, OrvaParameter* parameter, double missionTime) {
  const LumoConstant* value = parameter->GetValue();
  if (!table.IsInColumns()) table.Put("value");
  table.PutRow(parameter->GetName(), missionTime, value);
}

}  // namespace

OrvaPrinter::OrvaPrinter(OrvaInterpreter* interpreter) : _interpreter(interpreter) {
  LumoMemoryManager::TraceNew(this, "OrvaPrinter");
}

OrvaPrinter::~OrvaPrinter() { LumoMemoryManager::TraceDelete(this, "OrvaPrinter"); }

void OrvaPrinter::UpdateOptionCenter() { _optionCenter = _interpreter->GetOptionCenter(); }

LumoStream* OrvaPrinter::OpenTable(const char* name) const { return _interpreter->OpenTable(name); }

void OrvaPrinter::CloseTable(LumoStream* stream) const { _interpreter->CloseTable(stream); }

void OrvaPrinter::RefuseTable(bool isFurther) const { _interpreter->RefuseTable(isFurther); }

void OrvaPrinter::PrintTopEventProbability(const OrvaEvent* top, const OrvaHandle* /*handle*/,
                                           double missionTime, LumoStream* stream) {
  _PrintTopEventProbability(top, missionTime, stream, nullptr);
}

void OrvaPrinter::_PrintTopEventProbability(const OrvaEvent* top, double missionTime,
                                            LumoStream* stream, const char* name) {
  OrvaPrinterTable table(this, stream, name);
  table.PutHeader("top-event", "mission-time", "probability");
  table.PutRow(top->GetName(), missionTime, top->GetProbability());
}

void OrvaPrinter::PrintProbabilitiesOfBasicEvents(const OrvaModel* model, double missionTime,
                                                  LumoStream* stream) {
  LumoList events;
  model->CollectEvents(OrvaSymbol::CompareAsLeafSymbol, nullptr, &events);
  PrintProbabilitiesOfBasicEvents(&events, missionTime, stream);
}

void OrvaPrinter::PrintProbabilitiesOfBasicEvents(const LumoContainer* events, double missionTime,
                                                  LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  table.PutHeaderOfColumns("basic-event", "mission-time", "probability");
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*events)) {
    PutProbability(table, event, missionTime);
  }
}

void OrvaPrinter::PrintProbabilityOfBasicEvent(const OrvaEvent* event, double missionTime,
                                               LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  PutProbability(table, event, missionTime);
}

void OrvaPrinter::PrintValuesOfParameters(const OrvaModel* model, double missionTime,
                                          LumoStream* stream) {
  PrintValuesOfParameters(&model->GetParameters(), missionTime, stream);
}

void OrvaPrinter::PrintValuesOfParameters(const LumoContainer* parameters, double missionTime,
                                          LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  table.PutHeaderOfColumns("parameter", "mission-time", "value");
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    PutValue(table, parameter, missionTime);
  }
}

void OrvaPrinter::PrintValueOfParameter(OrvaParameter* parameter, double missionTime,
                                        LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  PutValue(table, parameter, missionTime);
}

void OrvaPrinter::PrintOptions(LumoStream* stream) {
  assert(_optionCenter != nullptr);
  PrintOpenTag(SET, stream);
  for (const LumoAttribute* option : LumoItems<LumoAttribute>(_optionCenter->GetOptions())) {
    _PrintOptionElement(option->GetName(), option->GetValue(), stream);
  }
  PrintCloseTag(SET, stream);
}

void OrvaPrinter::PrintOption(const char* name, const LumoConstant* value, LumoStream* stream) {
  PrintOpenTag(SET, stream);
  _PrintOptionElement(name, value, stream);
  PrintCloseTag(SET, stream);
}

void OrvaPrinter::_PrintOptionElement(const char* name, const LumoConstant* value,
                                      LumoStream* stream) {
  PrintOpenTagOpening(Center::ELEMENT, stream);
  PrintAttribute(Center::NAME, name, stream);
  if (value->IsBool()) {
    PrintAttribute(Center::VALUE, value->ToBool() ? Center::VALUE_ON : Center::VALUE_OFF, stream);
  } else {
    PrintAttribute(Center::VALUE, value, stream);
  }
  PrintOpenTagEnding(stream);
}

void OrvaPrinter::_ReportUnwritableText(int& error, const char* text) {
  error = 1;
  _interpreter->RaiseError(UNWRITABLE_TEXT, text, nullptr);
}
