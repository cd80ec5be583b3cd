#include "model/OrvaSampling.h"

#include "model/OrvaSymbol.h"
#include "support/statistics/LumoMeasure.h"

void OrvaSampling::ResetMeasure(std::unique_ptr<LumoMeasure>& measure, OrvaSymbol* symbol,
                                int numberOfQuantiles, int numberOfBins) {
  if (!measure) {
    measure = std::make_unique<LumoMeasure>(symbol->GetName());
    measure->SetReference(symbol);
  }
  measure->Reset();
  if (numberOfQuantiles != 0) {
    measure->CreateQuantilizer(numberOfQuantiles);
  } else {
    measure->DeleteQuantilizer();
  }
  if (numberOfBins != 0) {
    measure->CreateBinTable(numberOfBins);
  } else {
    measure->DeleteBinTable();
  }
}
