#pragma once

#include <vector>

// A histogram of a sample in bins of equal weight. Values are kept as they come until the table
// is full; then it shrinks to its target size, neighbouring values merging into weighted means.
class LumoBinTable {
 public:
  // Room for targetSize × shrinkFactor entries, a product in the range of int. A target below 1
  // counts as 1, a factor below 2 as 2: a full table must have room after it has shrunk.
  LumoBinTable(int targetSize, int shrinkFactor);
  ~LumoBinTable();
  LumoBinTable(const LumoBinTable&) = delete;
  LumoBinTable& operator=(const LumoBinTable&) = delete;

  void Reset();
  void AddValue(double x);
  // Merges the sorted entries into k bins of weight w = total / k each, the last possibly less;
  // a bin's value is the weighted mean of what falls into it. What an entry has beyond the bin
  // that it closes starts the next one whole, even when it exceeds w, so with fewer entries than
  // bins the bins need not hold what their weights say. Does nothing for k < 1 or k beyond the
  // capacity.
  void Shrink(int k);

  // The value of an entry, 0.0 outside the table.
  double GetValue(int i) const { return _IsInside(i) ? _entries[Index(i)].value : 0.0; }
  int GetCapacity() const { return _targetSize * _shrinkFactor; }

  // Offered to users of the class; the program itself does not call what follows.

  // A new table with the same entries, owned by the caller.
  LumoBinTable* Copy() const;
  // The weight of an entry, 0.0 outside the table; the total weight.
  double GetWeight(int i) const { return _IsInside(i) ? _entries[Index(i)].weight : 0.0; }
  double GetWeight() const { return _totalWeight; }
  int GetTargetSize() const { return _targetSize; }
  int GetShrinkFactor() const { return _shrinkFactor; }
  // The number of entries in use, and the index of the last (-1 without any).
  int GetSize() const { return _size; }
  int GetTop() const { return _size - 1; }

 private:
  struct Entry {
    double value = 0.0;
    double weight = 0.0;
    int rank = 0;  // place before sorting, which keeps equal values in order
  };

  static std::size_t Index(int i) { return static_cast<std::size_t>(i); }
  bool _IsInside(int i) const { return i >= 0 && i <= GetCapacity(); }
  void _Sort();

  int _targetSize;
  int _shrinkFactor;
  int _size = 0;
  double _totalWeight = 0.0;
  std::vector<Entry> _entries;  // one more than the capacity: rounding may leave a last small bin
};
