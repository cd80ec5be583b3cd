// Values stand as they came until the table is full. It then shrinks to its target size: the sorted
// entries are poured, in order, into bins of equal weight, and each bin becomes one entry, the mean
// of what it got. Since an entry closes at most one bin, a bin is never written beyond the entry
// just read, and the pouring needs no second table.
//
// A histogram of equal widths would need the range of the sample beforehand. Equal weights follow
// the sample wherever it lies, and are finest where it is densest.

#include "support/statistics/LumoBinTable.h"

#include <algorithm>
#include <cassert>
#include <cmath>

#include "support/memory/LumoMemoryManager.h"

LumoBinTable::LumoBinTable(int targetSize, int shrinkFactor)
    : _targetSize(std::max(targetSize, 1)),
      _shrinkFactor(std::max(shrinkFactor, 2)),
      _entries(Index(GetCapacity()) + 1) {
  LumoMemoryManager::TraceNew(this, "LumoBinTable");
}

LumoBinTable::~LumoBinTable() { LumoMemoryManager::TraceDelete(this, "LumoBinTable"); }

void LumoBinTable::Reset() {
  _size = 0;
  _totalWeight = 0.0;
  std::fill(_entries.begin(), _entries.end(), Entry());
}

void LumoBinTable::AddValue(double x) {
  if (_size == GetCapacity()) Shrink(_targetSize);
  assert(_size <= GetCapacity());
  _entries[Index(_size++)] = {x, 1.0, 0};
  _totalWeight += 1.0;
}

// By value, equal values in the order of their entries; NaNs last.
void LumoBinTable::_Sort() {
  for (int i = 0; i < _size; ++i) _entries[Index(i)].rank = i;
  std::sort(_entries.begin(), _entries.begin() + _size, [](const Entry& a, const Entry& b) {
    if (a.value != b.value && !std::isnan(a.value)) return a.value < b.value || std::isnan(b.value);
    return std::isnan(a.value) == std::isnan(b.value) && a.rank < b.rank;
  });
}

void LumoBinTable::Shrink(int k) {
  if (k < 1 || k > GetCapacity()) return;
  _Sort();
  const double binWeight = _totalWeight / k;
  double weight = 0.0;
  double sum = 0.0;
  int bins = 0;
  for (int i = 0; i < _size; ++i) {
    const Entry entry = _entries[Index(i)];
    _entries[Index(i)] = Entry();
    if (weight + entry.weight < binWeight) {
      sum += entry.value * entry.weight;
      weight += entry.weight;
    } else {
      const double part = binWeight - weight;
      assert(bins <= i);
      _entries[Index(bins++)] = {(part * entry.value + sum) / binWeight, binWeight, 0};
      sum = (entry.weight - part) * entry.value;
      weight = entry.weight - part;
    }
  }
  if (weight > 0.0) _entries[Index(bins++)] = {sum / weight, weight, 0};
  assert(Index(bins) <= _entries.size());
  _size = bins;
}

// Offered to users of the class; the program itself does not call what follows.

LumoBinTable* LumoBinTable::Copy() const {
  auto* copy = new LumoBinTable(_targetSize, _shrinkFactor);
  copy->_size = _size;
  copy->_totalWeight = _totalWeight;
  copy->_entries = _entries;
  return copy;
}
