// Moments, quantiles and bins of sampled values.

#include <cassert>
#include <memory>

#include "model/OrvaEvent.h"
#include "model/OrvaParameter.h"
#include "printer/OrvaPrinter.h"
#include "printer/OrvaPrinterRows.h"
#include "support/statistics/LumoMeasure.h"

namespace {

struct Column {
  bool OrvaPrinter::*isOn;
  const char* heading;
  void (*put)(OrvaPrinterRow& row, const LumoMeasure* measure);
};

constexpr Column COLUMNS[] = {
    {&OrvaPrinter::printMean, "mean",
     [](OrvaPrinterRow& row, const LumoMeasure* m) { row.Put(m->ComputeMean()); }},
    {&OrvaPrinter::printStandardDeviation, "standard-deviation",
     [](OrvaPrinterRow& row, const LumoMeasure* m) { row.Put(m->ComputeStandardDeviation()); }},
    // Two columns under one heading: the low and the high end.
    {&OrvaPrinter::printConfidenceRange, "confidence-range\t",
     [](OrvaPrinterRow& row, const LumoMeasure* m) {
       const double mean = m->ComputeMean();
       const double slack = m->ComputeNinetyFivePercentConfidenceSlack();
       row.Put(mean - slack).Put(mean + slack);
     }},
    {&OrvaPrinter::printErrorFactor, "error-factor",
     [](OrvaPrinterRow& row, const LumoMeasure* m) {
       row.Put(m->ComputeNinetyFivePercentErrorFactor());
     }},
};

}  // namespace

void OrvaPrinter::PrintSensitivityOfTopEvent(const OrvaEvent* top, const OrvaHandle* /*handle*/,
                                             double /*missionTime*/, LumoStream* stream) {
  LumoMeasure* measure = top->GetMeasure();
  OrvaPutHeader(this, "top-event", COLUMNS, stream);
  PrintMoments(measure, stream);
  PrintQuantiles(measure, stream);
  PrintBins(measure, stream);
}

void OrvaPrinter::PrintSensitivitiesOfParameters(const LumoContainer* parameters,
                                                 const OrvaHandle* /*handle*/,
                                                 double /*missionTime*/, LumoStream* stream) {
  OrvaPutHeader(this, "parameter", COLUMNS, stream);
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(*parameters)) {
    PrintMoments(parameter->GetMeasure(), stream);
  }
}

void OrvaPrinter::PrintSensitivitiesOfBasicEvents(const LumoContainer* basicEvents,
                                                  const OrvaHandle* /*handle*/,
                                                  double /*missionTime*/, LumoStream* stream) {
  OrvaPutHeader(this, "basic-event", COLUMNS, stream);
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*basicEvents)) {
    PrintMoments(event->GetMeasure(), stream);
  }
}

// Every row has one empty field behind the name that the header lacks: this is the defined
// behaviour.
void OrvaPrinter::PrintMoments(const LumoMeasure* measure, LumoStream* stream) {
  assert(measure != nullptr);  // the symbol was sampled
  OrvaPrinterRow row(stream);
  row.Put(measure->GetName()).Put("");
  for (const Column& column : COLUMNS) {
    if (this->*column.isOn) column.put(row, measure);
  }
  row.End();
}

void OrvaPrinter::PrintQuantiles(LumoMeasure* measure, LumoStream* stream) {
  LumoQuantilizer* quantilizer = measure->GetQuantilizer();
  if (quantilizer == nullptr) return;
  const std::unique_ptr<LumoQuantileTable> quantiles(
      quantilizer->ExtractQuantiles(numberOfQuantiles));
  assert(quantiles != nullptr);
  OrvaPutRow(stream, "quantile", "value");
  for (int i = 1; i <= numberOfQuantiles; ++i) {
    OrvaPutRow(stream, i, quantiles->GetQuantile(i - 1));
  }
  stream->Flush();
}

void OrvaPrinter::PrintBins(LumoMeasure* measure, LumoStream* stream) {
  LumoBinTable* bins = measure->GetBinTable();
  if (bins == nullptr) return;
  bins->Shrink(numberOfBins);
  OrvaPutRow(stream, "bin", "value");
  for (int i = 1; i <= numberOfBins; ++i) OrvaPutRow(stream, i, bins->GetValue(i - 1));
  stream->Flush();
}
