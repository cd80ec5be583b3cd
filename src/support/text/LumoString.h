#pragma once

#include <cassert>
#include <cstddef>

// A growable character string shared by reference counting.
//
// A holder owns one count and gives it back with Delete. An operation that modifies a string
// shared with other holders first makes a private copy and leaves the shared one to them, so
// every modifying operation returns the string to hold from then on: `s = s->Append(c);`.
// The text is always null-terminated and may hold null bytes of its own.
class LumoString {
 public:
  LumoString(const LumoString&) = delete;
  LumoString& operator=(const LumoString&) = delete;

  // An empty string of `size` bytes of capacity that grows by multiples of `increment`.
  static LumoString* New(std::size_t size, std::size_t increment);

  // Gives a holder's count back; the last one frees the string. Null is ignored.
  static void Delete(LumoString* string);

  // The text, valid until the next modification.
  const char* GetAscii() const { return _buffer; }
  bool IsEmpty() const { return _length == 0; }

  LumoString* Flush();
  LumoString* Append(char c) {
    LumoString* own = _count == 1 ? this : _GetPrivateCopy();
    if (own->_length + 1 >= own->_size) own->_Grow(own->_length + 2);
    assert(own->_length + 1 < own->_size);
    own->_buffer[own->_length++] = c;
    own->_buffer[own->_length] = '\0';
    return own;
  }
  LumoString* PushChar(char c) { return Append(c); }
  // Removes the last character and hands it over; '\0' when there is none.
  LumoString* PopChar(char& c);
  // Removes the last `n` characters, as far as there are.
  LumoString* Chop(std::size_t n);

  // Offered to users of the class; the program itself does not call what follows.

  static LumoString* New(const char* text);
  // One value written with a printf format for that type.
  static LumoString* New(int value, const char* format);
  static LumoString* New(double value, const char* format);
  // The same string, with one more holder.
  LumoString* Copy();
  // A new raw string, owned by the caller.
  char* CopyAscii() const;
  std::size_t GetLength() const { return _length; }
  std::size_t GetSize() const { return _size; }
  LumoString* Append(const char* text);
  LumoString* Append(const LumoString* other);
  LumoString* Append(int value, const char* format);
  LumoString* Append(double value, const char* format);
  // New strings: characters [from, from + length) as far as there are, the first and the last
  // `length` characters.
  LumoString* GetSlice(std::size_t from, std::size_t length) const;
  LumoString* GetPrefix(std::size_t length) const { return GetSlice(0, length); }
  LumoString* GetSuffix(std::size_t length) const;
  int Compare(const LumoString* other) const { return Compare(other->_buffer); }
  int Compare(const char* text) const;
  bool IsEqual(const LumoString* other) const { return Compare(other) == 0; }
  bool IsEqual(const char* text) const { return Compare(text) == 0; }
  bool IsInt() const;
  bool IsDouble() const;
  // The value, or the default when the whole text is not a number of that kind.
  int ToInt(int defaultValue) const;
  double ToDouble(double defaultValue) const;

 private:
  LumoString(std::size_t size, std::size_t increment);
  ~LumoString();
  LumoString* _GetPrivateCopy();
  // Makes room for `size` bytes.
  void _Grow(std::size_t size);
  LumoString* _Append(const char* text, std::size_t length);

  char* _buffer;
  int _count = 1;
  std::size_t _size;
  std::size_t _increment;
  std::size_t _length = 0;
};
