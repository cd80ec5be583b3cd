#pragma once

#include <memory>

#include "model/OrvaSymbol.h"
#include "support/values/LumoConstant.h"

class LumoMeasure;
class OrvaProbabilityDistribution;

// A named quantity of the model, defined by an expression.
class OrvaParameter : public OrvaSymbol {
 public:
  OrvaParameter(OrvaModel* model, const char* name);
  ~OrvaParameter();
  static void Delete(void* parameter);

  OrvaProbabilityDistribution* GetDefinition() const;
  // Deletes the former expression and takes ownership of the new one, which may be null.
  void SetDefinition(OrvaProbabilityDistribution* definition);

  // The value of the last evaluation, nil before the first.
  LumoConstant* GetValue() { return &_value; }
  // The definition's value at date t, the real 0 without one. The parameters that the definition
  // uses must have been computed before.
  LumoConstant* ComputeValue(double t);

  // The failure rate of the definition and whether it can be read off it, for the expressions that
  // refer to the parameter while their failure rates are computed.
  double GetFailureRate() const { return _failureRate; }
  bool IsRepairDependent() const { return _isRepairDependent; }
  void SetFailureRate(double rate, bool isRepairDependent) {
    _failureRate = rate;
    _isRepairDependent = isRepairDependent;
  }

  // The statistics of the sampled values, as for events.
  LumoMeasure* GetMeasure() const { return _measure.get(); }
  void ResetMeasure(int numberOfQuantiles, int numberOfBins);

  // Offered to users of the class; the program itself does not call what follows.

  // Copies the value.
  void SetValue(const LumoConstant* value) { _value.Set(value); }

 private:
  LumoConstant _value;
  double _failureRate = 0.0;
  bool _isRepairDependent = false;
  std::unique_ptr<LumoMeasure> _measure;
};
