// Probabilities, values and options. This is the one source file of the printer that looks upward,
// for the options.

#include "printer/OrvaPrinter.h"

#include <cassert>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "model/OrvaParameter.h"
#include "printer/OrvaPrinterRows.h"
#include "support/memory/LumoMemoryManager.h"

using Center = OrvaOptionCenter;

namespace {

constexpr const char* UNWRITABLE_TEXT = "A model can't be written with this name or text: %s\n";

constexpr const char* SET = "set";

}  // namespace

OrvaPrinter::OrvaPrinter(OrvaInterpreter* interpreter) : _interpreter(interpreter) {
  LumoMemoryManager::TraceNew(this, "OrvaPrinter");
}

OrvaPrinter::~OrvaPrinter() { LumoMemoryManager::TraceDelete(this, "OrvaPrinter"); }

void OrvaPrinter::UpdateOptionCenter() { _optionCenter = _interpreter->GetOptionCenter(); }

void OrvaPrinter::PrintTopEventProbability(const OrvaEvent* top, const OrvaHandle* /*handle*/,
                                           double missionTime, LumoStream* stream) {
  OrvaPutRow(stream, "top-event", "mission-time", "probability");
  OrvaPutRow(stream, top->GetName(), missionTime, top->GetProbability());
}

void OrvaPrinter::PrintProbabilitiesOfBasicEvents(const OrvaModel* model, double missionTime,
                                                  LumoStream* stream) {
  LumoList events;
  model->CollectEvents(OrvaSymbol::CompareAsLeafSymbol, nullptr, &events);
  PrintProbabilitiesOfBasicEvents(&events, missionTime, stream);
}

void OrvaPrinter::PrintProbabilitiesOfBasicEvents(const LumoContainer* events, double missionTime,
                                                  LumoStream* stream) {
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*events)) {
    PrintProbabilityOfBasicEvent(event, missionTime, stream);
  }
}

void OrvaPrinter::PrintProbabilityOfBasicEvent(const OrvaEvent* event, double missionTime,
                                               LumoStream* stream) {
  OrvaPutRow(stream, "Pr", event->GetName(), missionTime, event->GetProbability());
}

void OrvaPrinter::PrintValuesOfParameters(const OrvaModel* model, double missionTime,
                                          LumoStream* stream) {
  LumoList parameters;
  model->CollectParameters(OrvaSymbol::CompareAsAnySymbol, nullptr, &parameters);
  PrintValuesOfParameters(&parameters, missionTime, stream);
}

void OrvaPrinter::PrintValuesOfParameters(const LumoContainer* parameters, double missionTime,
                                          LumoStream* stream) {
  for (OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    PrintValueOfParameter(parameter, missionTime, stream);
  }
}

void OrvaPrinter::PrintValueOfParameter(OrvaParameter* parameter, double missionTime,
                                        LumoStream* stream) {
  const LumoConstant* value = parameter->GetValue();
  OrvaPutRow(stream, "value", parameter->GetName(), missionTime, value);
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
