#include "printer/OrvaPrinterTable.h"

#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include "support/text/LumoNumberText.h"
#include "support/text/LumoStream.h"
#include "support/values/LumoConstant.h"

namespace {

// Whether a file has something in it, before which nothing can be put any more.
bool HasContents(std::FILE* file) {
  return file != nullptr && std::fseek(file, 0, SEEK_END) == 0 && std::ftell(file) > 0;
}

bool StartsWith(std::FILE* file, const char* text, std::size_t length) {
  std::vector<char> start(length);
  std::rewind(file);
  const bool isLong = std::fread(start.data(), 1, length, file) == length;
  std::fseek(file, 0, SEEK_END);
  return isLong && std::memcmp(start.data(), text, length) == 0;
}

// What stands for a character behind a backslash, or '\0' when it stands for itself.
char GetEscape(char c, bool isItem) {
  switch (c) {
    case '\t':
      return 't';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\\':
      return '\\';
    case ';':
      return isItem ? ';' : '\0';
    default:
      return '\0';
  }
}

}  // namespace

OrvaPrinterTable::OrvaPrinterTable(const OrvaPrinter* printer, LumoStream* stream, const char* name)
    : _printer(printer),
      _stream(stream),
      _isInColumns(printer->layout == OrvaPrinter::IN_COLUMNS),
      _ownsStream(_isInColumns && name != nullptr),
      _isContinued(false) {
  if (_ownsStream) _stream = printer->OpenTable(name);
  if (_isInColumns) _isContinued = HasContents(_stream->GetFile());
}

OrvaPrinterTable::~OrvaPrinterTable() {
  _HandOver();
  _stream->EndLines();
  if (_ownsStream) _printer->CloseTable(_stream);
}

void OrvaPrinterTable::_HandOver() {
  if (!_isRefused) _stream->PutBytes(_text, _length);
  _length = 0;
}

char* OrvaPrinterTable::_MakeRoom(std::size_t size) {
  if (SIZE - _length < size) _HandOver();
  return _text + _length;
}

char* OrvaPrinterTable::_BeginField(std::size_t size) {
  char* to = _MakeRoom(size + 1);
  *to = '\t';
  if (!_isRowEmpty) ++to;
  _isRowEmpty = false;
  return to;
}

OrvaPrinterTable& OrvaPrinterTable::Put(const char* text) {
  const std::string_view view(text == nullptr ? "" : text);
  if (_isInColumns) {
    _End(_BeginField(0));
    _PutEscaped(view.data(), false);
  } else if (view.size() >= SIZE || view.find('\\') != std::string_view::npos) {
    _End(_BeginField(0));
    _HandOver();
    _stream->Put(text);
  } else {
    char* to = _BeginField(view.size());
    _End(to + view.copy(to, view.size()));
  }
  return *this;
}

OrvaPrinterTable& OrvaPrinterTable::Put(long value) {
  char* to = _BeginField(LUMO_INTEGER_LENGTH);
  _End(LumoWriteInteger(to, value));
  return *this;
}

OrvaPrinterTable& OrvaPrinterTable::Put(double value) {
  const int digits = _stream->GetSignificantDigitNumber();
  char* to = _BeginField(static_cast<std::size_t>(digits) + LUMO_REAL_MARGIN);
  _End(LumoWriteReal(to, value, digits));
  return *this;
}

OrvaPrinterTable& OrvaPrinterTable::Put(const LumoConstant* value) {
  if (value->GetType() == LumoConstant::DOUBLE) return Put(value->ToDouble());
  _End(_BeginField(0));
  _HandOver();
  _stream->Put(value);
  return *this;
}

void OrvaPrinterTable::_PutEscaped(const char* text, bool isItem) {
  for (; *text != '\0'; ++text) {
    const char escape = GetEscape(*text, isItem);
    char* to = _MakeRoom(2);
    if (escape != '\0') *to++ = '\\';
    *to++ = escape != '\0' ? escape : *text;
    _End(to);
  }
}

OrvaPrinterTable& OrvaPrinterTable::BeginList() {
  if (_isInColumns) _End(_BeginField(0));
  _isListEmpty = true;
  return *this;
}

OrvaPrinterTable& OrvaPrinterTable::PutItem(const char* text) {
  if (!_isInColumns) return Put(text);
  if (!_isListEmpty) {
    char* to = _MakeRoom(1);
    *to = ';';
    _End(to + 1);
  }
  _isListEmpty = false;
  _PutEscaped(text, true);
  return *this;
}

void OrvaPrinterTable::PutRecord(std::initializer_list<OrvaPrinterField> fields) {
  const auto put = [this](const OrvaPrinterField& field) {
    std::visit([this](auto value) { Put(value); }, field.value);
  };
  if (_isInColumns) {
    for (const OrvaPrinterField& field : fields) Put(field.heading);
    _EndHeader();
    for (const OrvaPrinterField& field : fields) put(field);
    return EndRow();
  }
  for (const OrvaPrinterField& field : fields) {
    if (field.block != nullptr) {
      if (&field != fields.begin()) EndRow();
      PutRow(field.block);
    }
    Put(field.heading);
    put(field);
    EndRow();
  }
}

void OrvaPrinterTable::_EndHeader() {
  EndRow();
  if (!_isContinued) return;
  if (!StartsWith(_stream->GetFile(), _text, _length)) {
    _isRefused = true;
    _printer->RefuseTable(_ownsStream);
  }
  _length = 0;
}

void OrvaPrinterTable::EndRow() {
  char* to = _MakeRoom(1);
  *to = '\n';
  _End(to + 1);
  _isRowEmpty = true;
}
