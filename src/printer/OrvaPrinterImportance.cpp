// Importance factors of basic events.

#include "model/OrvaEvent.h"
#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterRows.h"
#include "quantification/OrvaHandle.h"

namespace {

constexpr const char* BASIC_EVENT = "basic-event";

// A column: its switch, its heading, and how its field is written.
struct Column {
  bool OrvaPrinter::*isOn;
  const char* heading;
  void (*put)(OrvaPrinterRow& row, const OrvaHandle* handle, const OrvaEvent* event);
};

template <auto Accessor>
void PutFactor(OrvaPrinterRow& row, const OrvaHandle* handle, const OrvaEvent* event) {
  row.Put((handle->*Accessor)(event));
}

template <bool Value>
void PutConditionalProbability(OrvaPrinterRow& row, const OrvaHandle* handle,
                               const OrvaEvent* event) {
  row.Put(handle->GetConditionalProbabilityOfBasicEvent(event, Value));
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

void PutRow(const OrvaPrinter* printer, const OrvaEvent* event, const OrvaHandle* handle,
            LumoStream* stream) {
  OrvaPrinterRow row(stream);
  row.Put(event->GetName());
  for (const Column& column : COLUMNS) {
    if (printer->*column.isOn) column.put(row, handle, event);
  }
  row.End();
}

}  // namespace

void OrvaPrinter::PrintImportanceFactorsOfBasicEvents(const OrvaEvent* top,
                                                      const LumoContainer* basicEvents,
                                                      const OrvaHandle* handle, double missionTime,
                                                      LumoStream* stream) {
  PrintTopEventProbability(top, handle, missionTime, stream);
  OrvaPutHeader(this, BASIC_EVENT, COLUMNS, stream);
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) {
    PutRow(this, event, handle, stream);
  }
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaPrinter::PrintImportanceFactorsOfBasicEvent(const OrvaEvent* top,
                                                     const OrvaEvent* basicEvent,
                                                     const OrvaHandle* handle, double missionTime,
                                                     LumoStream* stream) {
  PrintTopEventProbability(top, handle, missionTime, stream);
  OrvaPutHeader(this, BASIC_EVENT, COLUMNS, stream);
  PutRow(this, basicEvent, handle, stream);
}
