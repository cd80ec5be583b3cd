#pragma once

#include "support/text/LumoRawString.h"

class LumoXMLArena;

// A named text of an XML element. Typed views are taken from the text on demand.
class LumoXMLAttribute {
 public:
  // Copies the name and the value. The typed forms write the value as the typed setters do.
  LumoXMLAttribute(const char* name, const char* value);
  LumoXMLAttribute(const char* name, double value);
  LumoXMLAttribute(const char* name, int value);
  LumoXMLAttribute(const char* name, bool value);
  ~LumoXMLAttribute();
  LumoXMLAttribute(const LumoXMLAttribute&) = delete;
  LumoXMLAttribute& operator=(const LumoXMLAttribute&) = delete;
  // An attribute in a document's memory, where its name is already.
  static LumoXMLAttribute* NewInArena(LumoXMLArena* arena, const char* name, const char* value,
                                      std::size_t length);
  static void Delete(void* attribute);

  // The attribute after this one in its element; null at the end.
  LumoXMLAttribute* GetNext() const { return _next; }

  const char* GetName() const { return _name; }
  const char* GetValue() const { return _value; }

  // The recognition and the conversion of numbers are those of LumoRawString. A Boolean is "true"
  // or "false", nothing else; as a Boolean, any other text is false.
  bool IsDouble() const;
  bool IsInt() const;
  bool IsBool() const;
  double GetValueAsDouble() const;
  int GetValueAsInt() const;
  bool GetValueAsBool() const;

  int CompareName(const char* name) const { return LumoRawString::Compare(_name, name); }

  void SetValue(const char* text);
  void SetValueAsDouble(double x);  // "%g"
  void SetValueAsInt(int n);        // "%d"
  void SetValueAsBool(bool b);      // "true" or "false"

  // Offered to users of the class; the program itself does not call what follows.

  bool HasName(const char* name) const { return CompareName(name) == 0; }
  bool HasValue(const char* text) const { return CompareValue(text) == 0; }
  int CompareNames(const LumoXMLAttribute* other) const { return CompareName(other->_name); }
  int CompareValue(const char* text) const;
  int CompareValues(const LumoXMLAttribute* other) const { return CompareValue(other->_value); }
  static int CompareName(const void* attribute, const void* name);
  static int CompareNames(const void* a, const void* b);
  static int CompareValue(const void* attribute, const void* text);
  static int CompareValues(const void* a, const void* b);

 private:
  friend class LumoXMLNode;

  struct InArena {};
  LumoXMLAttribute(const char* name, const char* value, InArena);
  // Makes the texts the attribute's own.
  void _CopyTexts();

  char* _name;
  char* _value;
  LumoXMLAttribute* _next = nullptr;
  bool _isInArena = false;
  bool _ownsTexts = true;  // or they are in the arena
};
