#pragma once

#include <memory>

#include "support/containers/LumoList.h"
#include "support/values/LumoAttribute.h"

// Attributes looked up by name, in the order in which they were first set. The list owns them.
// Names are unique as long as the list is filled through SetValueOfAttribute.
class LumoAttributeList : public LumoList {
 public:
  LumoAttributeList();
  ~LumoAttributeList() override;

  // The first attribute of that name, or null.
  LumoAttribute* FindAttribute(const char* name) const;

  // Sets the value of the attribute of that name, which is created, public and local, at the end
  // of the list when absent. The values are those of a LumoConstant; none at all sets nil.
  template <class... Values>
  LumoAttribute* SetValueOfAttribute(const char* name, Values... values) {
    LumoAttribute* attribute = _GetAttribute(name);
    attribute->SetValue(values...);
    return attribute;
  }

  // The value of an attribute: null, or the given default, when it is absent.
  LumoConstant* GetValueOfAttribute(const char* name) const;
  const char* GetValueOfAttributeAsString(const char* name, const char* defaultValue) const;
  double GetValueOfAttributeAsDouble(const char* name, double defaultValue) const;
  int GetValueOfAttributeAsInt(const char* name, int defaultValue) const;
  bool GetValueOfAttributeAsBool(const char* name, bool defaultValue) const;
  void* GetValueOfAttributeAsPointer(const char* name, void* defaultValue) const;

  // Removes and deletes the attribute of that name, or every attribute that matches both masks.
  void ResetValueOfAttribute(const char* name);
  void ResetValuesOfAttributes(int privacyMask, int localityMask);
  // Appends the attributes that match both masks (not copies of them) to a list.
  void CollectAttributes(LumoList* target, int privacyMask, int localityMask) const;

  // Offered to users of the class; the program itself does not call what follows.

  bool HasAttribute(const char* name) const { return FindAttribute(name) != nullptr; }
  void* GetValueOfAttributeAsPointerOfCode(const char* name, int code, void* defaultValue) const;
  // Whether there is an attribute of that name whose value is of that kind.
  bool IsNilAttribute(const char* name) const { return _IsOfType(name, LumoConstant::NIL); }
  bool IsBoolAttribute(const char* name) const { return _IsOfType(name, LumoConstant::BOOL); }
  bool IsIntAttribute(const char* name) const { return _IsOfType(name, LumoConstant::INT); }
  bool IsDoubleAttribute(const char* name) const { return _IsOfType(name, LumoConstant::DOUBLE); }
  bool IsStringAttribute(const char* name) const { return _IsOfType(name, LumoConstant::STRING); }
  bool IsPointerAttribute(const char* name) const { return _IsOfType(name, LumoConstant::POINTER); }
  // On an existing attribute only.
  template <class Value>
  void IncrementValueOfAttribute(const char* name, Value value) {
    if (LumoAttribute* attribute = FindAttribute(name)) attribute->IncrementValue(value);
  }
  template <class Value>
  void DecrementValueOfAttribute(const char* name, Value value) {
    if (LumoAttribute* attribute = FindAttribute(name)) attribute->DecrementValue(value);
  }
  // Takes over the value, the privacy and the locality of every attribute of the other list.
  void SetValuesOfAttributes(const LumoAttributeList* other);
  bool HasPublicAttribute() const;

 private:
  LumoAttribute* _GetAttribute(const char* name);
  bool _IsOfType(const char* name, LumoConstant::Type type) const;
};

// The same for objects by the million, most of which never get an attribute: the list is made with
// the first one.
class LumoLateAttributeList {
 public:
  template <class... Values>
  LumoAttribute* SetValueOfAttribute(const char* name, Values... values) {
    if (!_list) _list = std::make_unique<LumoAttributeList>();
    return _list->SetValueOfAttribute(name, values...);
  }
  const char* GetValueOfAttributeAsString(const char* name, const char* defaultValue) const {
    return _list ? _list->GetValueOfAttributeAsString(name, defaultValue) : defaultValue;
  }
  double GetValueOfAttributeAsDouble(const char* name, double defaultValue) const {
    return _list ? _list->GetValueOfAttributeAsDouble(name, defaultValue) : defaultValue;
  }
  int GetValueOfAttributeAsInt(const char* name, int defaultValue) const {
    return _list ? _list->GetValueOfAttributeAsInt(name, defaultValue) : defaultValue;
  }
  bool GetValueOfAttributeAsBool(const char* name, bool defaultValue) const {
    return _list ? _list->GetValueOfAttributeAsBool(name, defaultValue) : defaultValue;
  }
  void* GetValueOfAttributeAsPointer(const char* name, void* defaultValue) const {
    return _list ? _list->GetValueOfAttributeAsPointer(name, defaultValue) : defaultValue;
  }
  void ResetValueOfAttribute(const char* name) {
    if (_list) _list->ResetValueOfAttribute(name);
  }

 private:
  std::unique_ptr<LumoAttributeList> _list;
};
