#include "support/values/LumoAttributeList.h"

#include "support/containers/LumoRange.h"
#include "support/memory/LumoMemoryManager.h"

LumoAttributeList::LumoAttributeList() { LumoMemoryManager::TraceNew(this, "LumoAttributeList"); }

LumoAttributeList::~LumoAttributeList() {
  DeleteItems(LumoAttribute::Delete);
  LumoMemoryManager::TraceDelete(this, "LumoAttributeList");
}

// Attributes are looked up in every walk over a model: this is a plain loop over the cells.
LumoAttribute* LumoAttributeList::FindAttribute(const char* name) const {
  for (const LumoListCell* cell = GetFirstCell(); cell != nullptr; cell = cell->GetNext()) {
    auto* attribute = static_cast<LumoAttribute*>(cell->GetItem());
    if (attribute->CompareName(name) == 0) return attribute;
  }
  return nullptr;
}

LumoAttribute* LumoAttributeList::_GetAttribute(const char* name) {
  LumoAttribute* attribute = FindAttribute(name);
  if (attribute == nullptr) {
    attribute = new LumoAttribute(name);
    InsertItemLast(attribute);
  }
  return attribute;
}

LumoConstant* LumoAttributeList::GetValueOfAttribute(const char* name) const {
  LumoAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? nullptr : attribute->GetValue();
}

const char* LumoAttributeList::GetValueOfAttributeAsString(const char* name,
                                                           const char* defaultValue) const {
  const LumoAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? defaultValue : attribute->GetValueAsString();
}

double LumoAttributeList::GetValueOfAttributeAsDouble(const char* name, double defaultValue) const {
  const LumoAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? defaultValue : attribute->GetValueAsDouble();
}

int LumoAttributeList::GetValueOfAttributeAsInt(const char* name, int defaultValue) const {
  const LumoAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? defaultValue : attribute->GetValueAsInt();
}

bool LumoAttributeList::GetValueOfAttributeAsBool(const char* name, bool defaultValue) const {
  const LumoAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? defaultValue : attribute->GetValueAsBool();
}

void* LumoAttributeList::GetValueOfAttributeAsPointer(const char* name, void* defaultValue) const {
  LumoAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? defaultValue : attribute->GetValueAsPointer();
}

void LumoAttributeList::ResetValueOfAttribute(const char* name) {
  for (LumoListCell* cell = GetFirstCell(); cell != nullptr; cell = cell->GetNext()) {
    auto* attribute = static_cast<LumoAttribute*>(cell->GetItem());
    if (attribute->CompareName(name) != 0) continue;
    RemoveCell(cell);
    delete attribute;
    return;
  }
}

void LumoAttributeList::ResetValuesOfAttributes(int privacyMask, int localityMask) {
  LumoList matching;
  CollectAttributes(&matching, privacyMask, localityMask);
  DeleteItems(&matching, LumoAttribute::Delete);
}

void LumoAttributeList::CollectAttributes(LumoList* target, int privacyMask,
                                          int localityMask) const {
  for (LumoAttribute* attribute : LumoItems<LumoAttribute>(*this)) {
    if (attribute->DoesPrivacyMatch(privacyMask) && attribute->DoesLocalityMatch(localityMask)) {
      target->InsertItemLast(attribute);
    }
  }
}

// Offered to users of the class; the program itself does not call what follows.

bool LumoAttributeList::_IsOfType(const char* name, LumoConstant::Type type) const {
  const LumoAttribute* attribute = FindAttribute(name);
  return attribute != nullptr && attribute->GetType() == type;
}

void* LumoAttributeList::GetValueOfAttributeAsPointerOfCode(const char* name, int code,
                                                            void* defaultValue) const {
  const LumoAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? defaultValue : attribute->GetValueAsPointerOfCode(code);
}

void LumoAttributeList::SetValuesOfAttributes(const LumoAttributeList* other) {
  for (const LumoAttribute* attribute : LumoItems<LumoAttribute>(*other)) {
    LumoAttribute* own = SetValueOfAttribute(attribute->GetName(), attribute->GetValue());
    own->SetPrivacy(attribute->GetPrivacy());
    own->SetLocality(attribute->GetLocality());
  }
}

bool LumoAttributeList::HasPublicAttribute() const {
  for (const LumoAttribute* attribute : LumoItems<LumoAttribute>(*this)) {
    if (attribute->IsPublic()) return true;
  }
  return false;
}
