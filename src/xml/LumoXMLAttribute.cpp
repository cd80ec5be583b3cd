#include "xml/LumoXMLAttribute.h"

#include <cstdio>
#include <new>

#include "support/memory/LumoMemoryManager.h"
#include "xml/LumoXMLArena.h"

namespace {

constexpr std::size_t NUMBER_LENGTH = 32;

const LumoXMLAttribute* AsAttribute(const void* item) {
  return static_cast<const LumoXMLAttribute*>(item);
}

const char* AsText(const void* key) { return static_cast<const char*>(key); }

}  // namespace

LumoXMLAttribute::LumoXMLAttribute(const char* name, const char* value)
    : _name(LumoRawString::CopyIfAny(name)), _value(LumoRawString::CopyIfAny(value)) {
  LumoMemoryManager::TraceNew(this, "LumoXMLAttribute");
}

LumoXMLAttribute::LumoXMLAttribute(const char* name, double value)
    : LumoXMLAttribute(name, static_cast<const char*>(nullptr)) {
  SetValueAsDouble(value);
}

LumoXMLAttribute::LumoXMLAttribute(const char* name, int value)
    : LumoXMLAttribute(name, static_cast<const char*>(nullptr)) {
  SetValueAsInt(value);
}

LumoXMLAttribute::LumoXMLAttribute(const char* name, bool value)
    : LumoXMLAttribute(name, static_cast<const char*>(nullptr)) {
  SetValueAsBool(value);
}

LumoXMLAttribute::LumoXMLAttribute(const char* name, const char* value, InArena)
    : _name(const_cast<char*>(name)),
      _value(const_cast<char*>(value)),
      _isInArena(true),
      _ownsTexts(false) {
  LumoMemoryManager::TraceNew(this, "LumoXMLAttribute");
}

LumoXMLAttribute::~LumoXMLAttribute() {
  if (_ownsTexts) {
    LumoRawString::DeleteIfAny(_name);
    LumoRawString::DeleteIfAny(_value);
  }
  LumoMemoryManager::TraceDelete(this, "LumoXMLAttribute");
}

LumoXMLAttribute* LumoXMLAttribute::NewInArena(LumoXMLArena* arena, const char* name,
                                               const char* value, std::size_t length) {
  void* cell = arena->NewCell(sizeof(LumoXMLAttribute), value, length);
  return new (cell) LumoXMLAttribute(name, value, InArena());
}

void LumoXMLAttribute::Delete(void* item) {
  auto* attribute = static_cast<LumoXMLAttribute*>(item);
  if (attribute == nullptr) return;
  if (!attribute->_isInArena) return delete attribute;
  attribute->~LumoXMLAttribute();
  LumoXMLArena::Release(attribute);
}

void LumoXMLAttribute::_CopyTexts() {
  _name = LumoRawString::CopyIfAny(_name);
  _value = LumoRawString::CopyIfAny(_value);
  _ownsTexts = true;
}

bool LumoXMLAttribute::IsDouble() const { return LumoRawString::IsDouble(_value); }

bool LumoXMLAttribute::IsInt() const { return LumoRawString::IsInt(_value); }

bool LumoXMLAttribute::IsBool() const { return LumoRawString::IsBool(_value); }

double LumoXMLAttribute::GetValueAsDouble() const { return LumoRawString::ToDouble(_value); }

int LumoXMLAttribute::GetValueAsInt() const { return LumoRawString::ToInt(_value); }

bool LumoXMLAttribute::GetValueAsBool() const { return LumoRawString::ToBool(_value); }

void LumoXMLAttribute::SetValue(const char* text) {
  if (!_ownsTexts) _CopyTexts();
  LumoRawString::Replace(_value, text);
}

void LumoXMLAttribute::SetValueAsDouble(double x) {
  char text[NUMBER_LENGTH];
  std::snprintf(text, sizeof text, "%g", x);
  SetValue(text);
}

void LumoXMLAttribute::SetValueAsInt(int n) {
  char text[NUMBER_LENGTH];
  std::snprintf(text, sizeof text, "%d", n);
  SetValue(text);
}

void LumoXMLAttribute::SetValueAsBool(bool b) { SetValue(b ? "true" : "false"); }

// Offered to users of the class; the program itself does not call what follows.

int LumoXMLAttribute::CompareValue(const char* text) const {
  return LumoRawString::Compare(_value, text);
}

int LumoXMLAttribute::CompareName(const void* attribute, const void* name) {
  return AsAttribute(attribute)->CompareName(AsText(name));
}

int LumoXMLAttribute::CompareNames(const void* a, const void* b) {
  return AsAttribute(a)->CompareNames(AsAttribute(b));
}

int LumoXMLAttribute::CompareValue(const void* attribute, const void* text) {
  return AsAttribute(attribute)->CompareValue(AsText(text));
}

int LumoXMLAttribute::CompareValues(const void* a, const void* b) {
  return AsAttribute(a)->CompareValues(AsAttribute(b));
}
