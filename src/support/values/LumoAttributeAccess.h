#pragma once

#include "support/values/LumoAttributeList.h"

// The named attributes of an object, forwarded to its list. An owner derives from this class,
// befriends it and has a field `_attributes`, made at once or late, wherever among its fields it
// wants it.
//
// Setting takes the values of a LumoConstant; a pointer comes with the function that releases it.
// Getting yields the default when there is no attribute of that name.
template <class Owner>
class LumoAttributeAccess {
 public:
  void ResetAttribute(const char* name) { _GetList().ResetValueOfAttribute(name); }
  void SetAttribute(const char* name, void* value, void (*release)(void*)) {
    _GetList().SetValueOfAttribute(name, value, release, 0);
  }
  template <class Value>
  void SetAttribute(const char* name, Value value) {
    _GetList().SetValueOfAttribute(name, value);
  }
  void* GetAttributeAsPointer(const char* name, void* defaultValue) const {
    return _GetList().GetValueOfAttributeAsPointer(name, defaultValue);
  }
  double GetAttributeAsDouble(const char* name, double defaultValue) const {
    return _GetList().GetValueOfAttributeAsDouble(name, defaultValue);
  }
  int GetAttributeAsInt(const char* name, int defaultValue) const {
    return _GetList().GetValueOfAttributeAsInt(name, defaultValue);
  }
  bool GetAttributeAsBool(const char* name, bool defaultValue) const {
    return _GetList().GetValueOfAttributeAsBool(name, defaultValue);
  }
  const char* GetAttributeAsString(const char* name, const char* defaultValue) const {
    return _GetList().GetValueOfAttributeAsString(name, defaultValue);
  }

 private:
  friend Owner;

  LumoAttributeAccess() = default;
  auto& _GetList() { return static_cast<Owner*>(this)->_attributes; }
  const auto& _GetList() const { return static_cast<const Owner*>(this)->_attributes; }
};
