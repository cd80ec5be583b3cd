// Importance factors of basic events.

#include "model/OrvaEvent.h"
#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterTable.h"
#include "quantification/OrvaHandle.h"

namespace {

constexpr const char* BASIC_EVENT = "basic-event";

// A column: its switch, its heading, and how its field is written.
struct Column {
  bool OrvaPrinter::*isOn;
  const char* heading;
  void (*put)(OrvaPrinterTable& table, const OrvaHandle* handle, const OrvaEvent* event);
};

template <auto Accessor>
void PutFactor(OrvaPrinterTable& table, const OrvaHandle* handle, const OrvaEvent* event) {
  table.Put((handle->*Accessor)(event));
}

template <bool Value>
void PutConditionalProbability(OrvaPrinterTable& table, const OrvaHandle* handle,
                               const OrvaEvent* event) {
  table.Put(handle->GetConditionalProbabilityOfBasicEvent(event, Value));
}

constexpr Column COLUMNS[] = {
    {&OrvaPrinter::printNumberOfOccurrences, "occurrences",
     PutFactor<&OrvaHandle::GetNumberOfOccurrencesOfBasicEvent>},
    {&OrvaPrinter::printProbability, "Pr", PutFactor<&OrvaHandle::GetProbabilityOfBasicEvent>},
    {&OrvaPrinter::printConditionalProbability1, "Pr|1", PutConditionalProbability<true>},
    {&OrvaPrinter::printConditionalProbability0, "Pr|0", PutConditionalProbability<false>},
    {&OrvaPrinter::printMarginalImportanceFactor, "MIF",
     PutFactor<&OrvaHandle::GetMarginalImportanceFactorOfBasicEvent>},
    {&OrvaPrinter::printCriticalImportanceFactor, "CIF",
     PutFactor<&OrvaHandle::GetCriticalImportanceFactorOfBasicEvent>},
    {&OrvaPrinter::printDiagnosisImportanceFactor, "DIF",
     PutFactor<&OrvaHandle::GetDiagnosisImportanceFactorOfBasicEvent>},
    {&OrvaPrinter::printRiskAchievementWorth, "RAW",
     PutFactor<&OrvaHandle::GetRiskAchievementWorthOfBasicEvent>},
    {&OrvaPrinter::printRiskReductionWorth, "RRW",
     PutFactor<&OrvaHandle::GetRiskReductionWorthOfBasicEvent>},
    {&OrvaPrinter::printFusselVeselyImportanceFactor, "FV",
     PutFactor<&OrvaHandle::GetFusselVeselyImportanceFactorOfBasicEvent>},
};

void PutRow(OrvaPrinterTable& table, const OrvaPrinter* printer, const OrvaEvent* event,
            const OrvaHandle* handle) {
  table.Put(event->GetName());
  for (const Column& column : COLUMNS) {
    if (printer->*column.isOn) column.put(table, handle, event);
  }
  table.EndRow();
}

}  // namespace

void OrvaPrinter::PrintImportanceFactorsOfBasicEvents(const OrvaEvent* top,
                                                      const LumoContainer* basicEvents,
                                                      const OrvaHandle* handle, double missionTime,
                                                      LumoStream* stream) {
  _PrintTopEventProbability(top, missionTime, stream, "top-event");
  OrvaPrinterTable table(this, stream);
  table.PutHeaderOf(this, BASIC_EVENT, COLUMNS);
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) {
    PutRow(table, this, event, handle);
  }
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaPrinter::PrintImportanceFactorsOfBasicEvent(const OrvaEvent* top,
                                                     const OrvaEvent* basicEvent,
                                                     const OrvaHandle* handle, double missionTime,
                                                     LumoStream* stream) {
  _PrintTopEventProbability(top, missionTime, stream, "top-event");
  OrvaPrinterTable table(this, stream);
  table.PutHeaderOf(this, BASIC_EVENT, COLUMNS);
  PutRow(table, this, basicEvent, handle);
}
