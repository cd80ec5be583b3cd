// Moments, quantiles and bins of sampled values.

#include <cassert>
#include <memory>

#include "model/OrvaEvent.h"
#include "model/OrvaParameter.h"
#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterTable.h"
#include "support/statistics/LumoMeasure.h"

namespace {

struct Column {
  bool OrvaPrinter::*isOn;
  const char* heading;
  void (*put)(OrvaPrinterTable& table, const LumoMeasure* measure);
};

constexpr Column COLUMNS[] = {
    {&OrvaPrinter::printMean, "mean",
     [](OrvaPrinterTable& table, const LumoMeasure* m) { table.Put(m->ComputeMean()); }},
    {&OrvaPrinter::printStandardDeviation, "standard-deviation",
     [](OrvaPrinterTable& table, const LumoMeasure* m) {
       table.Put(m->ComputeStandardDeviation());
     }},
    // Two columns under one heading: the low and the high end.
    {&OrvaPrinter::printConfidenceRange, "confidence-range\t",
     [](OrvaPrinterTable& table, const LumoMeasure* m) {
       const double mean = m->ComputeMean();
       const double slack = m->ComputeNinetyFivePercentConfidenceSlack();
       table.Put(mean - slack).Put(mean + slack);
     }},
    {&OrvaPrinter::printErrorFactor, "error-factor",
     [](OrvaPrinterTable& table, const LumoMeasure* m) {
       table.Put(m->ComputeNinetyFivePercentErrorFactor());
     }},
};

// Every row has one empty field behind the name that the header lacks: this is the defined
// behaviour.
void PutMoments(OrvaPrinterTable& table, const OrvaPrinter* printer, const LumoMeasure* measure) {
  assert(measure != nullptr);  // the symbol was sampled
  table.Put(measure->GetName()).Put("");
  for (const Column& column : COLUMNS) {
    if (printer->*column.isOn) column.put(table, measure);
  }
  table.EndRow();
}

// One row per symbol.
template <class Symbol>
void PrintSymbols(const OrvaPrinter* printer, const char* heading, const LumoContainer* symbols,
                  LumoStream* stream) {
  OrvaPrinterTable table(stream);
  table.PutHeader(printer, heading, COLUMNS);
  for (const Symbol* symbol : LumoItems<Symbol>(*symbols)) {
    PutMoments(table, printer, symbol->GetMeasure());
  }
}

}  // namespace

void OrvaPrinter::PrintSensitivityOfTopEvent(const OrvaEvent* top, const OrvaHandle* /*handle*/,
                                             double /*missionTime*/, LumoStream* stream) {
  LumoMeasure* measure = top->GetMeasure();
  {
    OrvaPrinterTable table(stream);
    table.PutHeader(this, "top-event", COLUMNS);
    PutMoments(table, this, measure);
  }
  PrintQuantiles(measure, stream);
  PrintBins(measure, stream);
}

void OrvaPrinter::PrintSensitivitiesOfParameters(const LumoContainer* parameters,
                                                 const OrvaHandle* /*handle*/,
                                                 double /*missionTime*/, LumoStream* stream) {
  PrintSymbols<OrvaParameter>(this, "parameter", parameters, stream);
}

void OrvaPrinter::PrintSensitivitiesOfBasicEvents(const LumoContainer* basicEvents,
                                                  const OrvaHandle* /*handle*/,
                                                  double /*missionTime*/, LumoStream* stream) {
  PrintSymbols<OrvaEvent>(this, "basic-event", basicEvents, stream);
}

void OrvaPrinter::PrintMoments(const LumoMeasure* measure, LumoStream* stream) {
  OrvaPrinterTable table(stream);
  PutMoments(table, this, measure);
}

void OrvaPrinter::PrintQuantiles(LumoMeasure* measure, LumoStream* stream) {
  LumoQuantilizer* quantilizer = measure->GetQuantilizer();
  if (quantilizer == nullptr) return;
  const std::unique_ptr<LumoQuantileTable> quantiles(
      quantilizer->ExtractQuantiles(numberOfQuantiles));
  assert(quantiles != nullptr);
  OrvaPrinterTable table(stream);
  table.PutRow("quantile", "value");
  for (int i = 1; i <= numberOfQuantiles; ++i) table.PutRow(i, quantiles->GetQuantile(i - 1));
}

void OrvaPrinter::PrintBins(LumoMeasure* measure, LumoStream* stream) {
  LumoBinTable* bins = measure->GetBinTable();
  if (bins == nullptr) return;
  bins->Shrink(numberOfBins);
  OrvaPrinterTable table(stream);
  table.PutRow("bin", "value");
  for (int i = 1; i <= numberOfBins; ++i) table.PutRow(i, bins->GetValue(i - 1));
}
