#include "support/statistics/LumoMeasure.h"

#include <algorithm>
#include <cassert>
#include <cfloat>
#include <cmath>

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

namespace {

constexpr double NINETY_FIVE_PERCENT_SCORE = 1.96;
constexpr int NUMBER_OF_BUFFERS = 8;
constexpr int SMALLEST_BUFFER = 200;
constexpr int VALUES_PER_QUANTILE = 4;
constexpr int ENTRIES_PER_BIN = 20;
constexpr int SHRINK_FACTOR = 20;

}  // namespace

LumoMeasure::LumoMeasure(const char* name)
    : _name(LumoRawString::CopyIfAny(name)), _minimum(DBL_MAX), _maximum(DBL_MIN) {
  LumoMemoryManager::TraceNew(this, "LumoMeasure");
}

LumoMeasure::~LumoMeasure() {
  LumoRawString::DeleteIfAny(_name);
  LumoMemoryManager::TraceDelete(this, "LumoMeasure");
}

void LumoMeasure::_AddMoments(double sum, double sumOfSquares, int numberOfValues) {
  _sum += sum;
  _sumOfSquares += sumOfSquares;
  assert(numberOfValues >= 0);
  _numberOfValues += numberOfValues;
}

void LumoMeasure::_AddExtremes(double low, double high) {
  if (low < _minimum) _minimum = low;
  if (high > _maximum) _maximum = high;
}

void LumoMeasure::AddValue(double x) {
  _AddMoments(x, x * x, 1);
  _lastValue = x;
  _AddExtremes(x, x);
  if (_quantilizer) _quantilizer->AddValue(x);
  if (_binTable) _binTable->AddValue(x);
}

void LumoMeasure::Reset() {
  _sum = 0.0;
  _sumOfSquares = 0.0;
  _numberOfValues = 0;
  _minimum = DBL_MAX;
  _maximum = DBL_MIN;
  if (_quantilizer) _quantilizer->Reset();
  if (_binTable) _binTable->Reset();
}

double LumoMeasure::ComputeMean() const {
  return _numberOfValues == 0 ? 0.0 : _sum / _numberOfValues;
}

double LumoMeasure::ComputeStandardDeviation() const {
  if (_numberOfValues <= 1) return 0.0;
  // Rounding can leave a small negative difference.
  const double squares = std::fabs(_sumOfSquares - _sum * (_sum / _numberOfValues));
  return std::sqrt(squares / (_numberOfValues - 1));
}

double LumoMeasure::ComputeNinetyFivePercentConfidenceSlack() const {
  if (_numberOfValues < 2) return 0.0;
  return NINETY_FIVE_PERCENT_SCORE * ComputeStandardDeviation() /
         std::sqrt(static_cast<double>(_numberOfValues));
}

double LumoMeasure::ComputeNinetyFivePercentErrorFactor() const {
  if (_numberOfValues < 2) return 0.0;
  return std::exp(NINETY_FIVE_PERCENT_SCORE * ComputeStandardDeviation());
}

void LumoMeasure::CreateQuantilizer(int q) {
  CreateQuantilizer(NUMBER_OF_BUFFERS,
                    std::max(SMALLEST_BUFFER, VALUES_PER_QUANTILE * std::max(q, 0)));
}

void LumoMeasure::CreateQuantilizer(int buffers, int size) {
  _quantilizer = std::make_unique<LumoQuantilizer>(buffers, size);
}

void LumoMeasure::CreateBinTable(int b) {
  CreateBinTable(ENTRIES_PER_BIN * std::max(b, 0), SHRINK_FACTOR);
}

void LumoMeasure::CreateBinTable(int targetSize, int shrinkFactor) {
  _binTable = std::make_unique<LumoBinTable>(targetSize, shrinkFactor);
}

// Offered to users of the class; the program itself does not call what follows.

void LumoMeasure::Delete(void* measure) {
  if (measure != nullptr) delete static_cast<LumoMeasure*>(measure);
}

LumoMeasure* LumoMeasure::Copy() const {
  auto* copy = new LumoMeasure(_name);
  copy->_reference = _reference;
  copy->_sum = _sum;
  copy->_sumOfSquares = _sumOfSquares;
  copy->_numberOfValues = _numberOfValues;
  copy->_lastValue = _lastValue;
  copy->_minimum = _minimum;
  copy->_maximum = _maximum;
  if (_quantilizer) copy->_quantilizer.reset(_quantilizer->Copy());
  if (_binTable) copy->_binTable.reset(_binTable->Copy());
  return copy;
}

int LumoMeasure::CompareName(const char* name) const { return LumoRawString::Compare(_name, name); }

int LumoMeasure::CompareName(const void* measure, const void* name) {
  return static_cast<const LumoMeasure*>(measure)->CompareName(static_cast<const char*>(name));
}

int LumoMeasure::CompareNames(const void* a, const void* b) {
  return static_cast<const LumoMeasure*>(a)->CompareNames(static_cast<const LumoMeasure*>(b));
}

void LumoMeasure::Import(const LumoMeasure* other, double scale, double offset) {
  const int n = other->_numberOfValues;
  if (n == 0) return;
  _AddMoments(scale * other->_sum + offset * n,
              scale * scale * other->_sumOfSquares + 2.0 * scale * offset * other->_sum +
                  offset * offset * n,
              n);
  _lastValue = scale * other->_lastValue + offset;
  const auto [low, high] =
      std::minmax({scale * other->_minimum + offset, scale * other->_maximum + offset});
  _AddExtremes(low, high);
}
