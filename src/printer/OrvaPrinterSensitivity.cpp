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
  const char* headingInColumns = nullptr;  // if it is another
};

constexpr Column COLUMNS[] = {
    {&OrvaPrinter::printMean, "mean",
     [](OrvaPrinterTable& table, const LumoMeasure* m) { table.Put(m->ComputeMean()); }},
    {&OrvaPrinter::printStandardDeviation, "standard-deviation",
     [](OrvaPrinterTable& table, const LumoMeasure* m) {
       table.Put(m->ComputeStandardDeviation());
     }},
    // In rows, two columns under one heading: the low and the high end.
    {&OrvaPrinter::printConfidenceRange, "confidence-range",
     [](OrvaPrinterTable& table, const LumoMeasure* m) {
       table.Put(m->ComputeMean() - m->ComputeNinetyFivePercentConfidenceSlack());
     },
     "confidence-range-low"},
    {&OrvaPrinter::printConfidenceRange, "",
     [](OrvaPrinterTable& table, const LumoMeasure* m) {
       table.Put(m->ComputeMean() + m->ComputeNinetyFivePercentConfidenceSlack());
     },
     "confidence-range-high"},
    {&OrvaPrinter::printErrorFactor, "error-factor",
     [](OrvaPrinterTable& table, const LumoMeasure* m) {
       table.Put(m->ComputeNinetyFivePercentErrorFactor());
     }},
};

// In rows, every row has one empty field behind the name that the header lacks: this is the defined
// behaviour.
void PutMoments(OrvaPrinterTable& table, const OrvaPrinter* printer, const LumoMeasure* measure) {
  assert(measure != nullptr);  // the symbol was sampled
  table.Put(measure->GetName());
  if (!table.IsInColumns()) table.Put("");
  for (const Column& column : COLUMNS) {
    if (printer->*column.isOn) column.put(table, measure);
  }
  table.EndRow();
}

// One row per symbol.
template <class Symbol>
void PrintSymbols(const OrvaPrinter* printer, const char* heading, const LumoContainer* symbols,
                  LumoStream* stream, const char* name) {
  OrvaPrinterTable table(printer, stream, name);
  table.PutHeaderOf(printer, heading, COLUMNS);
  for (const Symbol* symbol : LumoItems<Symbol>(*symbols)) {
    PutMoments(table, printer, symbol->GetMeasure());
  }
}

}  // namespace

void OrvaPrinter::PrintSensitivityOfTopEvent(const OrvaEvent* top, const OrvaHandle* /*handle*/,
                                             double /*missionTime*/, LumoStream* stream) {
  LumoMeasure* measure = top->GetMeasure();
  {
    OrvaPrinterTable table(this, stream);
    table.PutHeaderOf(this, "top-event", COLUMNS);
    PutMoments(table, this, measure);
  }
  PrintQuantiles(measure, stream);
  PrintBins(measure, stream);
}

void OrvaPrinter::PrintSensitivitiesOfParameters(const LumoContainer* parameters,
                                                 const OrvaHandle* /*handle*/,
                                                 double /*missionTime*/, LumoStream* stream) {
  PrintSymbols<OrvaParameter>(this, "parameter", parameters, stream, "parameters");
}

void OrvaPrinter::PrintSensitivitiesOfBasicEvents(const LumoContainer* basicEvents,
                                                  const OrvaHandle* /*handle*/,
                                                  double /*missionTime*/, LumoStream* stream) {
  PrintSymbols<OrvaEvent>(this, "basic-event", basicEvents, stream, "basic-events");
}

void OrvaPrinter::PrintMoments(const LumoMeasure* measure, LumoStream* stream) {
  OrvaPrinterTable table(this, stream);
  PutMoments(table, this, measure);
}

void OrvaPrinter::PrintQuantiles(LumoMeasure* measure, LumoStream* stream) {
  LumoQuantilizer* quantilizer = measure->GetQuantilizer();
  if (quantilizer == nullptr) return;
  const std::unique_ptr<LumoQuantileTable> quantiles(
      quantilizer->ExtractQuantiles(numberOfQuantiles));
  assert(quantiles != nullptr);
  OrvaPrinterTable table(this, stream, "quantiles");
  table.PutHeader("quantile", "value");
  for (int i = 1; i <= numberOfQuantiles; ++i) table.PutRow(i, quantiles->GetQuantile(i - 1));
}

void OrvaPrinter::PrintBins(LumoMeasure* measure, LumoStream* stream) {
  LumoBinTable* bins = measure->GetBinTable();
  if (bins == nullptr) return;
  bins->Shrink(numberOfBins);
  OrvaPrinterTable table(this, stream, "bins");
  table.PutHeader("bin", "value");
  for (int i = 1; i <= numberOfBins; ++i) table.PutRow(i, bins->GetValue(i - 1));
}
