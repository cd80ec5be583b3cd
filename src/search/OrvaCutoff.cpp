#include "search/OrvaCutoff.h"

#include <algorithm>

#include "support/memory/LumoMemoryManager.h"

OrvaCutoff::OrvaCutoff() { LumoMemoryManager::TraceNew(this, "OrvaCutoff"); }

OrvaCutoff::~OrvaCutoff() { LumoMemoryManager::TraceDelete(this, "OrvaCutoff"); }

void OrvaCutoff::SetMinimumProbability(double probability) {
  _minimumProbability = probability;
  _currentThreshold = probability;
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaCutoff::ResetCurrentSumOfProductProbabilities() {
  _currentThreshold = _minimumProbability;
  _currentNumberOfProducts = 0;
  _currentSumOfProductProbabilities = 0.0;
}

void OrvaCutoff::RecordProduct(int /*order*/, double probability) {
  ++_currentNumberOfProducts;
  _currentSumOfProductProbabilities += probability;
  if (_currentSumOfProductProbabilities != 0.0) {
    _currentThreshold =
        std::max(_currentThreshold, _currentSumOfProductProbabilities * _minimumContribution);
  }
}
