#include "system/OrvaModuleRecord.h"

#include "model/OrvaEvent.h"
#include "support/memory/LumoMemoryManager.h"

OrvaModuleRecord::OrvaModuleRecord() { LumoMemoryManager::TraceNew(this, "OrvaModuleRecord"); }

OrvaModuleRecord::~OrvaModuleRecord() { LumoMemoryManager::TraceDelete(this, "OrvaModuleRecord"); }

void OrvaModuleRecord::Delete(void* record) {
  if (record != nullptr) delete static_cast<OrvaModuleRecord*>(record);
}

OrvaModuleRecord* OrvaModuleRecord::Find(const OrvaEvent* event) {
  return static_cast<OrvaModuleRecord*>(event->GetAttributeAsPointer(ATTRIBUTE, nullptr));
}

OrvaModuleRecord* OrvaModuleRecord::FindOrAttach(OrvaEvent* event) {
  OrvaModuleRecord* record = Find(event);
  if (record == nullptr) {
    record = new OrvaModuleRecord;
    event->SetAttribute(ATTRIBUTE, record, Delete);
  }
  return record;
}

void OrvaModuleRecord::Reset() {
  _firstDate = 0;
  _secondDate = 0;
  _lastDate = 0;
  _lowestDate = INT_MAX;
  _highestDate = 0;
}
