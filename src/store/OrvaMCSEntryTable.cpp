#include "store/OrvaMCSEntryTable.h"

#include <algorithm>
#include <utility>

#include "support/memory/LumoMemoryManager.h"

OrvaMCSEntryTable::OrvaMCSEntryTable(OrvaMCSManager* manager)
    : _manager(manager), _entries(new OrvaMCSEntry[INITIAL_SIZE]) {
  LumoMemoryManager::TraceNew(this, "OrvaMCSEntryTable");
}

OrvaMCSEntryTable::~OrvaMCSEntryTable() {
  delete[] _entries;
  LumoMemoryManager::TraceDelete(this, "OrvaMCSEntryTable");
}

void OrvaMCSEntryTable::Resize(int size) {
  if (size <= _size) return;
  auto* entries = new OrvaMCSEntry[static_cast<std::size_t>(size)];
  std::copy_n(_entries, _size, entries);
  delete[] std::exchange(_entries, entries);
  _size = size;
}

OrvaMCSEntry* OrvaMCSEntryTable::CreateEntry(int index) {
  OrvaMCSEntry* entry = &_GetPlace(index);
  if (entry->_table != nullptr) return entry;
  const bool isFirst = _lowest == 0 && _highest == 0 && _entries[0]._table == nullptr;
  entry->_table = this;
  entry->_probability = 1.0;
  _lowest = isFirst ? index : std::min(_lowest, index);
  _highest = isFirst ? index : std::max(_highest, index);
  assert(_lowest <= index && index <= _highest);
  return entry;
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaMCSEntryTable::Reset() {
  std::fill_n(_entries, _size, OrvaMCSEntry());
  _lowest = 0;
  _highest = 0;
}

int OrvaMCSEntryTable::GetNumberOfActiveEntries() const {
  int number = 0;
  for (int i = _lowest; i <= _highest; ++i) number += static_cast<int>(IsEntryActive(i));
  return number;
}
