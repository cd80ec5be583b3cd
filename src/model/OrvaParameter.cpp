#include "model/OrvaParameter.h"

#include "model/OrvaProbabilityDistribution.h"
#include "model/OrvaSampling.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/statistics/LumoMeasure.h"

OrvaParameter::OrvaParameter(OrvaModel* model, const char* name) : OrvaSymbol(model, name) {
  LumoMemoryManager::TraceNew(this, "OrvaParameter");
}

OrvaParameter::~OrvaParameter() { LumoMemoryManager::TraceDelete(this, "OrvaParameter"); }

void OrvaParameter::Delete(void* parameter) {
  if (parameter != nullptr) delete static_cast<OrvaParameter*>(parameter);
}

OrvaProbabilityDistribution* OrvaParameter::GetDefinition() const {
  return static_cast<OrvaProbabilityDistribution*>(OrvaSymbol::GetDefinition());
}

void OrvaParameter::SetDefinition(OrvaProbabilityDistribution* definition) {
  OrvaSymbol::SetDefinition(definition);
}

LumoConstant* OrvaParameter::ComputeValue(double t) {
  if (OrvaProbabilityDistribution* definition = GetDefinition()) {
    _value.Set(definition->ComputeValue(t));
  } else {
    _value.Set(0.0);
  }
  return &_value;
}

void OrvaParameter::ResetMeasure(int numberOfQuantiles, int numberOfBins) {
  OrvaSampling::ResetMeasure(_measure, this, numberOfQuantiles, numberOfBins);
}
