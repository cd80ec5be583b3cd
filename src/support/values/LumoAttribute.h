#pragma once

#include "support/text/LumoRawString.h"
#include "support/values/LumoConstant.h"

// A named value with two sets of flags: who may see it, and where it comes from.
class LumoAttribute {
 public:
  enum Privacy : int { PUBLIC = 1, PRIVATE = 2 };
  enum Locality : int { LOCAL = 1, INHERITED = 2, SYNTHESIZED = 4 };

  // The name is copied; the value is made as the constant of the same arguments, nil without any.
  // A new attribute is public and local.
  template <class... Values>
  explicit LumoAttribute(const char* name, Values... values) : LumoAttribute(name, Named()) {
    if constexpr (sizeof...(values) > 0) _value.Set(values...);
  }
  ~LumoAttribute();
  LumoAttribute(const LumoAttribute&) = delete;
  LumoAttribute& operator=(const LumoAttribute&) = delete;
  static void Delete(void* attribute);

  const char* GetName() const { return _name; }
  int CompareName(const char* name) const { return LumoRawString::Compare(_name, name); }

  // The constant itself, owned by the attribute.
  LumoConstant* GetValue() { return &_value; }
  const LumoConstant* GetValue() const { return &_value; }
  // Everything else about the value is the constant's: its type and tests, its conversions (a
  // value that is no string has no text), its setters.
  bool GetValueAsBool() const { return _value.ToBool(); }
  int GetValueAsInt() const { return _value.ToInt(); }
  double GetValueAsDouble() const { return _value.ToDouble(); }
  const char* GetValueAsString() const { return _value.ToString(); }
  void* GetValueAsPointer() { return _value.ToPointer(); }
  template <class... Values>
  void SetValue(Values... values) {
    _value.Set(values...);
  }

  bool DoesPrivacyMatch(int mask) const { return (_privacy & mask) != 0; }
  bool DoesLocalityMatch(int mask) const { return (_locality & mask) != 0; }

  // Offered to users of the class; the program itself does not call what follows.

  // A new raw string, owned by the caller.
  char* CopyName() const;
  int CompareNames(const LumoAttribute* other) const { return CompareName(other->_name); }
  int Compare(const LumoAttribute* other) const { return CompareNames(other); }
  static int CompareName(const void* attribute, const void* name);
  static int CompareNames(const void* a, const void* b);

  // The constant's own operations.
  LumoConstant::Type GetType() const { return _value.GetType(); }
  bool IsNil() const { return _value.IsNil(); }
  bool IsBool() const { return _value.IsBool(); }
  bool IsInt() const { return _value.IsInt(); }
  bool IsDouble() const { return _value.IsDouble(); }
  bool IsNum() const { return _value.IsNum(); }
  bool IsString() const { return _value.IsString(); }
  bool IsPointer() const { return _value.IsPointer(); }
  bool IsPointerOfCode(int code) const { return _value.IsPointerOfCode(code); }
  void* GetValueAsPointerOfCode(int code) const { return _value.ToPointerOfCode(code); }
  template <class Value>
  void IncrementValue(Value value) {
    _value.Inc(value);
  }
  template <class Value>
  void DecrementValue(Value value) {
    _value.Dec(value);
  }
  template <class Value>
  int CompareValue(Value value) const {
    return _value.Compare(value);
  }
  int CompareValues(const LumoAttribute* other) const { return _value.Compare(&other->_value); }

  int GetPrivacy() const { return _privacy; }
  void SetPrivacy(int flags) { _privacy = flags; }
  bool IsPublic() const { return DoesPrivacyMatch(PUBLIC); }
  bool IsPrivate() const { return DoesPrivacyMatch(PRIVATE); }
  int GetLocality() const { return _locality; }
  void SetLocality(int flags) { _locality = flags; }
  bool IsLocal() const { return DoesLocalityMatch(LOCAL); }
  bool IsInherited() const { return DoesLocalityMatch(INHERITED); }
  bool IsSynthesized() const { return DoesLocalityMatch(SYNTHESIZED); }

 private:
  struct Named {};
  LumoAttribute(const char* name, Named);

  char* _name;
  LumoConstant _value;
  int _privacy = PUBLIC;
  int _locality = LOCAL;
};
