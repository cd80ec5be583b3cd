// What an event owns of the layers above: its handles, and the module record that tells whether it
// is a module. This is the one source file of events that looks upward.

#include <cassert>

#include "model/OrvaEvent.h"
#include "quantification/OrvaHandle.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/statistics/LumoMeasure.h"
#include "system/OrvaModuleRecord.h"

OrvaEvent::OrvaEvent(OrvaModel* model, const char* name, Type type)
    : OrvaSymbol(model, name), _type(type) {
  LumoMemoryManager::TraceNew(this, "OrvaEvent");
}

OrvaEvent::~OrvaEvent() {
  DeleteHandles();
  SetProbabilityDistribution(nullptr);
  LumoMemoryManager::TraceDelete(this, "OrvaEvent");
}

LumoAVLTree* OrvaEvent::_GetHandles() {
  if (!_handles) _handles.reset(new LumoAVLTree(OrvaHandle::CompareNames));
  return _handles.get();
}

OrvaHandle* OrvaEvent::NewHandle(const char* name, OrvaSystem* system) {
  DeleteHandle(name);
  assert(GetHandle(name) == nullptr);
  auto* handle = new OrvaHandle(this, name, system);
  _GetHandles()->InsertItem(handle);
  return handle;
}

OrvaHandle* OrvaEvent::NewHandle(const char* name, OrvaMCSSet* set) {
  DeleteHandle(name);
  assert(GetHandle(name) == nullptr);
  auto* handle = new OrvaHandle(this, name, set);
  _GetHandles()->InsertItem(handle);
  return handle;
}

OrvaHandle* OrvaEvent::GetHandle(const char* name) const {
  if (!_handles) return nullptr;
  return static_cast<OrvaHandle*>(_handles->LookForItem(OrvaHandle::CompareName, name));
}

void OrvaEvent::DeleteHandle(const char* name) {
  OrvaHandle* handle = GetHandle(name);
  if (handle != nullptr) OrvaHandle::Delete(_handles->RemoveItem(handle));
}

void OrvaEvent::DeleteHandles() {
  if (_handles) _handles->DeleteItems(OrvaHandle::Delete);
}

OrvaModuleRecord* OrvaEvent::NewModuleRecord() {
  _moduleRecord = std::make_unique<OrvaModuleRecord>();
  return _moduleRecord.get();
}

bool OrvaEvent::IsModule() const {
  return GetDefinition() != nullptr && _moduleRecord && _moduleRecord->IsModule();
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaEvent::DeleteHandles(LumoContainer::Match selector, const void* argument) {
  if (_handles) _handles->DeleteItems(selector, argument, OrvaHandle::Delete);
}
