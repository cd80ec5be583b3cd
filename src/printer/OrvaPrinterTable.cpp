#include "printer/OrvaPrinterTable.h"

#include <charconv>
#include <cstring>

#include "support/text/LumoRealText.h"
#include "support/text/LumoStream.h"
#include "support/values/LumoConstant.h"

OrvaPrinterTable::OrvaPrinterTable(LumoStream* stream) : _stream(stream) {}

OrvaPrinterTable::~OrvaPrinterTable() {
  _HandOver();
  _stream->EndLines();
}

void OrvaPrinterTable::_HandOver() {
  _stream->PutBytes(_text, _length);
  _length = 0;
}

char* OrvaPrinterTable::_MakeRoom(std::size_t size) {
  if (SIZE - _length < size) _HandOver();
  return _text + _length;
}

void OrvaPrinterTable::_BeginField() {
  if (!_isRowEmpty) {
    *_MakeRoom(1) = '\t';
    ++_length;
  }
  _isRowEmpty = false;
}

OrvaPrinterTable& OrvaPrinterTable::Put(const char* text) {
  _BeginField();
  if (text == nullptr) return *this;
  const std::size_t length = std::strlen(text);
  if (length > SIZE || std::memchr(text, '\\', length) != nullptr) {
    _HandOver();
    _stream->Put(text);
  } else {
    std::memcpy(_MakeRoom(length), text, length);
    _length += length;
  }
  return *this;
}

OrvaPrinterTable& OrvaPrinterTable::Put(long value) {
  constexpr std::size_t LENGTH = 24;
  _BeginField();
  char* first = _MakeRoom(LENGTH);
  _length += static_cast<std::size_t>(std::to_chars(first, first + LENGTH, value).ptr - first);
  return *this;
}

OrvaPrinterTable& OrvaPrinterTable::Put(double value) {
  const int digits = _stream->GetSignificantDigitNumber();
  _BeginField();
  char* first = _MakeRoom(static_cast<std::size_t>(digits) + LUMO_REAL_MARGIN);
  _length += static_cast<std::size_t>(LumoWriteReal(first, value, digits) - first);
  return *this;
}

OrvaPrinterTable& OrvaPrinterTable::Put(const LumoConstant* value) {
  if (value->GetType() == LumoConstant::DOUBLE) return Put(value->ToDouble());
  _BeginField();
  _HandOver();
  _stream->Put(value);
  return *this;
}

void OrvaPrinterTable::EndRow() {
  *_MakeRoom(1) = '\n';
  ++_length;
  _isRowEmpty = true;
}
