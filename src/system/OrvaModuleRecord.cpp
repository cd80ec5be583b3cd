#include "system/OrvaModuleRecord.h"

#include "model/OrvaEvent.h"
#include "support/memory/LumoMemoryManager.h"

OrvaModuleRecord::OrvaModuleRecord() { LumoMemoryManager::TraceNew(this, "OrvaModuleRecord"); }

OrvaModuleRecord::~OrvaModuleRecord() { LumoMemoryManager::TraceDelete(this, "OrvaModuleRecord"); }

OrvaModuleRecord* OrvaModuleRecord::FindOrAttach(OrvaEvent* event) {
  OrvaModuleRecord* record = event->GetModuleRecord();
  return record == nullptr ? event->NewModuleRecord() : record;
}

void OrvaModuleRecord::Reset() {
  _firstDate = 0;
  _secondDate = 0;
  _lastDate = 0;
  _lowestDate = INT_MAX;
  _highestDate = 0;
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaModuleRecord::Delete(void* record) {
  if (record != nullptr) delete static_cast<OrvaModuleRecord*>(record);
}
