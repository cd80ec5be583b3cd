#pragma once

#include <memory>

class LumoMeasure;
class OrvaSymbol;

// What events and parameters share for the statistics of their sampled values.
class OrvaSampling {
 public:
  OrvaSampling() = delete;

  // Empties a symbol's measure. A missing one is created, named after the symbol and referring
  // back to it. It gets a quantilizer and a bin table of the given sizes, or none for 0.
  static void ResetMeasure(std::unique_ptr<LumoMeasure>& measure, OrvaSymbol* symbol,
                           int numberOfQuantiles, int numberOfBins);
};
