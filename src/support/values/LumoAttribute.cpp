#include "support/values/LumoAttribute.h"

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

LumoAttribute::LumoAttribute(const char* name, Named) : _name(LumoRawString::CopyIfAny(name)) {
  LumoMemoryManager::TraceNew(this, "LumoAttribute");
}

LumoAttribute::~LumoAttribute() {
  LumoRawString::DeleteIfAny(_name);
  LumoMemoryManager::TraceDelete(this, "LumoAttribute");
}

void LumoAttribute::Delete(void* attribute) {
  if (attribute != nullptr) delete static_cast<LumoAttribute*>(attribute);
}

// Offered to users of the class; the program itself does not call what follows.

char* LumoAttribute::CopyName() const { return LumoRawString::CopyIfAny(_name); }

int LumoAttribute::CompareName(const void* attribute, const void* name) {
  return static_cast<const LumoAttribute*>(attribute)->CompareName(static_cast<const char*>(name));
}

int LumoAttribute::CompareNames(const void* a, const void* b) {
  return static_cast<const LumoAttribute*>(a)->CompareNames(static_cast<const LumoAttribute*>(b));
}
