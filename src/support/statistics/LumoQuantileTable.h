#pragma once

#include <cassert>
#include <vector>

// A fixed number of places for real values, filled one after the other. A quantilizer's buffers
// are such tables, and so are the quantiles that it extracts.
class LumoQuantileTable {
 public:
  explicit LumoQuantileTable(int numberOfQuantiles);
  ~LumoQuantileTable();
  LumoQuantileTable(const LumoQuantileTable&) = delete;
  LumoQuantileTable& operator=(const LumoQuantileTable&) = delete;

  // The number of places, and of values in use.
  int GetNumberOfQuantiles() const { return static_cast<int>(_values.size()); }
  int GetNumberOfValues() const { return _numberOfValues; }
  bool IsFull() const { return _numberOfValues == GetNumberOfQuantiles(); }
  // The i-th value, from 0; 0.0 for a place not in use or outside the table.
  double GetQuantile(int i) const {
    return i >= 0 && i < _numberOfValues ? _values[static_cast<std::size_t>(i)] : 0.0;
  }

  // Empties the table; weight 1, level 0.
  void Reset();
  // Appends to a table that is not full.
  void AddValue(double x) {
    assert(!IsFull());
    _values[static_cast<std::size_t>(_numberOfValues++)] = x;
  }
  // Increasing order; NaN compares equal to everything.
  void SortValues();

  // How many sampled values each value stands for, and how many collapses deep it is.
  long GetWeight() const { return _weight; }
  void SetWeight(long weight) {
    assert(weight >= 1);
    _weight = weight;
  }
  int GetLevel() const { return _level; }
  void SetLevel(int level) { _level = level; }

  // The reading position of a merge: the value on top, until none is left.
  void ResetTop() { _top = 0; }
  bool HasTop() const { return _top < _numberOfValues; }
  double GetTopValue() const {
    assert(HasTop());
    return _values[static_cast<std::size_t>(_top)];
  }
  void PopTop() {
    assert(HasTop());
    ++_top;
  }

 private:
  std::vector<double> _values;
  int _numberOfValues = 0;
  long _weight = 1;
  int _level = 0;
  int _top = 0;
};
