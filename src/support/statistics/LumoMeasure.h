#pragma once

#include <memory>

#include "support/statistics/LumoBinTable.h"
#include "support/statistics/LumoQuantilizer.h"

// The statistics of the sampled values of one quantity. Quantiles and bins are kept on request.
class LumoMeasure {
 public:
  // Copies the name, which may be null.
  explicit LumoMeasure(const char* name);
  ~LumoMeasure();
  LumoMeasure(const LumoMeasure&) = delete;
  LumoMeasure& operator=(const LumoMeasure&) = delete;

  const char* GetName() const { return _name; }
  // The measured object. Not owned.
  void SetReference(void* reference) { _reference = reference; }

  void AddValue(double x);
  // Forgets all values but the last. The quantilizer and the bin table are emptied and kept.
  void Reset();

  // S / n; 0 without values.
  double ComputeMean() const;
  // sqrt(|Q - S (S / n)| / (n - 1)), Q the sum of squares; 0 for fewer than 2 values.
  double ComputeStandardDeviation() const;
  // 1.96 × standard deviation / sqrt(n); 0 for fewer than 2 values.
  double ComputeNinetyFivePercentConfidenceSlack() const;
  // exp(1.96 × standard deviation), of the values themselves, not of their logarithms; 0 for
  // fewer than 2 values.
  double ComputeNinetyFivePercentErrorFactor() const;

  // Null when there is none. The first Create forms size the tables for q quantiles (8 buffers of
  // max(200, 4 q) values) and b bins (a target of 20 b, a shrink factor of 20).
  LumoQuantilizer* GetQuantilizer() const { return _quantilizer.get(); }
  void CreateQuantilizer(int q);
  void CreateQuantilizer(int buffers, int size);
  void DeleteQuantilizer() { _quantilizer.reset(); }
  LumoBinTable* GetBinTable() const { return _binTable.get(); }
  void CreateBinTable(int b);
  void CreateBinTable(int targetSize, int shrinkFactor);
  void DeleteBinTable() { _binTable.reset(); }

  // Offered to users of the class; the program itself does not call what follows.

  static void Delete(void* measure);
  // A new measure with the same values, owned by the caller.
  LumoMeasure* Copy() const;
  int CompareName(const char* name) const;
  int CompareNames(const LumoMeasure* other) const { return CompareName(other->_name); }
  static int CompareName(const void* measure, const void* name);
  static int CompareNames(const void* a, const void* b);
  void* GetReference() const { return _reference; }
  // Adds the values of another measure, each taken as scale × x + offset, to the moments and the
  // extremes. Quantiles and bins, which keep no single values, take no part.
  void Import(const LumoMeasure* other, double scale, double offset);
  int GetNumberOfValues() const { return _numberOfValues; }
  double GetSumOfValues() const { return _sum; }
  double GetSumOfValueSquares() const { return _sumOfSquares; }
  double GetLastValue() const { return _lastValue; }
  // The largest double when there is no value below it.
  double GetMinimumValue() const { return _minimum; }
  // Starts at the smallest positive normal double, not at the lowest one: a sample of values that
  // are all below it reports it as its maximum. This is the defined behaviour.
  double GetMaximumValue() const { return _maximum; }
  // Takes ownership; the former one is deleted.
  void SetQuantilizer(LumoQuantilizer* quantilizer) { _quantilizer.reset(quantilizer); }

 private:
  void _AddMoments(double sum, double sumOfSquares, int numberOfValues);
  void _AddExtremes(double low, double high);

  char* _name;
  void* _reference = nullptr;
  double _sum = 0.0;
  double _sumOfSquares = 0.0;
  int _numberOfValues = 0;
  double _lastValue = 0.0;
  double _minimum;
  double _maximum;
  std::unique_ptr<LumoQuantilizer> _quantilizer;
  std::unique_ptr<LumoBinTable> _binTable;
};
