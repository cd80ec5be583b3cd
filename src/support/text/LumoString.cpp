#include "support/text/LumoString.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstring>
#include <string>

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

namespace {

constexpr std::size_t DEFAULT_INCREMENT = 32;

template <class Value>
std::string Print(const char* format, Value value) {
  std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, format, value)), '\0');
  std::snprintf(text.data(), text.size() + 1, format, value);
  return text;
}

}  // namespace

LumoString::LumoString(std::size_t size, std::size_t increment)
    : _buffer(LumoRawString::New(std::max<std::size_t>(size, 1))),
      _size(std::max<std::size_t>(size, 1)),
      _increment(std::max<std::size_t>(increment, 1)) {
  LumoMemoryManager::TraceNew(this, "LumoString");
}

LumoString::~LumoString() {
  LumoRawString::Delete(_buffer);
  LumoMemoryManager::TraceDelete(this, "LumoString");
}

LumoString* LumoString::New(std::size_t size, std::size_t increment) {
  return new LumoString(size, increment);
}

void LumoString::Delete(LumoString* string) {
  assert(string == nullptr || string->_count >= 1);
  if (string != nullptr && --string->_count == 0) delete string;
}

LumoString* LumoString::_GetPrivateCopy() {
  assert(_count >= 1 && _length < _size && _buffer[_length] == '\0');
  if (_count == 1) return this;
  LumoString* copy = New(_size, _increment);
  std::memcpy(copy->_buffer, _buffer, _length);
  copy->_length = _length;
  --_count;
  return copy;
}

// Whole increments, and at least twice the old size, so that appending stays linear in the text.
void LumoString::_Grow(std::size_t size) {
  const std::size_t wanted = std::max(size, 2 * _size);
  const std::size_t newSize = _size + (wanted - _size + _increment - 1) / _increment * _increment;
  assert(newSize >= size && (newSize - _size) % _increment == 0);
  char* buffer = LumoRawString::New(newSize);
  std::memcpy(buffer, _buffer, _length);
  LumoRawString::Delete(_buffer);
  _buffer = buffer;
  _size = newSize;
}

LumoString* LumoString::Flush() {
  LumoString* own = _GetPrivateCopy();
  own->_length = 0;
  own->_buffer[0] = '\0';
  return own;
}

LumoString* LumoString::PopChar(char& c) {
  c = _length == 0 ? '\0' : _buffer[_length - 1];
  return Chop(1);
}

LumoString* LumoString::Chop(std::size_t n) {
  LumoString* own = _GetPrivateCopy();
  own->_length -= std::min(n, own->_length);
  own->_buffer[own->_length] = '\0';
  return own;
}

// Offered to users of the class; the program itself does not call what follows.

LumoString* LumoString::New(const char* text) {
  return New(LumoRawString::GetLength(text) + 1, DEFAULT_INCREMENT)->Append(text);
}

LumoString* LumoString::New(int value, const char* format) {
  return New(Print(format, value).c_str());
}

LumoString* LumoString::New(double value, const char* format) {
  return New(Print(format, value).c_str());
}

LumoString* LumoString::Copy() {
  ++_count;
  return this;
}

char* LumoString::CopyAscii() const { return LumoRawString::Copy(_buffer); }

LumoString* LumoString::_Append(const char* text, std::size_t length) {
  LumoString* own = _GetPrivateCopy();
  if (own->_length + length >= own->_size) own->_Grow(own->_length + length + 1);
  assert(own->_length + length < own->_size);
  std::memmove(own->_buffer + own->_length, text, length);
  own->_length += length;
  own->_buffer[own->_length] = '\0';
  return own;
}

LumoString* LumoString::Append(const char* text) {
  return text == nullptr ? this : _Append(text, std::strlen(text));
}

LumoString* LumoString::Append(const LumoString* other) {
  // A string may be appended to itself: its own bytes move when it grows.
  const std::string text(other->_buffer, other->_length);
  return _Append(text.data(), text.size());
}

LumoString* LumoString::Append(int value, const char* format) {
  return Append(Print(format, value).c_str());
}

LumoString* LumoString::Append(double value, const char* format) {
  return Append(Print(format, value).c_str());
}

LumoString* LumoString::GetSlice(std::size_t from, std::size_t length) const {
  const std::size_t start = std::min(from, _length);
  const std::size_t end = start + std::min(length, _length - start);
  assert(start <= end && end <= _length);
  return New(end - start + 1, _increment)->_Append(_buffer + start, end - start);
}

LumoString* LumoString::GetSuffix(std::size_t length) const {
  return GetSlice(_length - std::min(length, _length), length);
}

int LumoString::Compare(const char* text) const { return LumoRawString::Compare(_buffer, text); }

bool LumoString::IsInt() const { return LumoRawString::IsInt(_buffer); }

bool LumoString::IsDouble() const { return LumoRawString::IsDouble(_buffer); }

int LumoString::ToInt(int defaultValue) const {
  return IsInt() ? LumoRawString::ToInt(_buffer) : defaultValue;
}

double LumoString::ToDouble(double defaultValue) const {
  return IsDouble() ? LumoRawString::ToDouble(_buffer) : defaultValue;
}
