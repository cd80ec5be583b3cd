#include "support/statistics/LumoQuantileTable.h"

#include <algorithm>
#include <cstdlib>

#include "support/memory/LumoMemoryManager.h"

namespace {

int Double__Compare(const void* a, const void* b) {
  const double x = *static_cast<const double*>(a);
  const double y = *static_cast<const double*>(b);
  return static_cast<int>(x > y) - static_cast<int>(x < y);
}

}  // namespace

LumoQuantileTable::LumoQuantileTable(int numberOfQuantiles)
    : _values(static_cast<std::size_t>(std::max(numberOfQuantiles, 0))) {
  LumoMemoryManager::TraceNew(this, "LumoQuantileTable");
}

LumoQuantileTable::~LumoQuantileTable() {
  LumoMemoryManager::TraceDelete(this, "LumoQuantileTable");
}

void LumoQuantileTable::Reset() {
  _numberOfValues = 0;
  _weight = 1;
  _level = 0;
}

void LumoQuantileTable::SortValues() {
  std::qsort(_values.data(), static_cast<std::size_t>(_numberOfValues), sizeof(double),
             Double__Compare);
}
