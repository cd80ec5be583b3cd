// Bytes go to the buffer of the file, which is written when it is full, on a flush and on closing.
// A table has as many fields as a search has results, so what a field costs counts: numbers are not
// formatted by printf, and bytes are put without the lock of the file, since a stream serves one
// thread.

#include "support/text/LumoFileStream.h"

#include <cmath>
#include <cstring>

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoNumberText.h"
#include "support/text/LumoString.h"

namespace {

constexpr std::size_t PUSH_BACK_SIZE = 32;
constexpr std::size_t NUMBER_LENGTH = 512;  // "%f" of the largest double has 309 digits

// What a backslash followed by `c` stands for, or '\0' when it stands for itself.
char GetEscapedChar(char c) {
  switch (c) {
    case '"':
    case '\\':
      return c;
    case 'n':
      return '\n';
    case 't':
      return '\t';
    default:
      return '\0';
  }
}

}  // namespace

LumoFileStream::LumoFileStream(bool input, std::FILE* file)
    : _input(input), _pushBack(LumoString::New(PUSH_BACK_SIZE, PUSH_BACK_SIZE)), _file(file) {
  LumoMemoryManager::TraceNew(this, "LumoFileStream");
}

LumoFileStream::~LumoFileStream() {
  LumoString::Delete(_pushBack);
  LumoMemoryManager::TraceDelete(this, "LumoFileStream");
}

int LumoFileStream::GetChar() {
  if (!_input || _file == nullptr) return -1;
  int c;
  if (_pushBack->IsEmpty()) {
    c = std::fgetc(_file);
  } else {
    char pushed;
    _pushBack = _pushBack->PopChar(pushed);
    c = static_cast<unsigned char>(pushed);
  }
  if (c == EOF) return -1;
  if (c == '\n') ++_lineNumber;
  _Trace(static_cast<char>(c));
  return c;
}

void LumoFileStream::UnGetChar(char c) {
  if (!_input) return;
  _pushBack = _pushBack->PushChar(c);
  if (c == '\n') --_lineNumber;
}

bool LumoFileStream::IsAtEnd() {
  if (!_input || _file == nullptr) return true;
  return _pushBack->IsEmpty() && std::feof(_file) != 0;
}

void LumoFileStream::Put(char c) {
  if (!_IsOutput()) return;
  putc_unlocked(c, _file);
  _Trace(c);
}

void LumoFileStream::PutBytes(const char* bytes, std::size_t size) {
  if (!_IsOutput()) return;
  fwrite_unlocked(bytes, 1, size, _file);
  if (!_IsTraced()) return;
  for (std::size_t i = 0; i < size; ++i) _Trace(bytes[i]);
}

void LumoFileStream::Put(int value) { Put(static_cast<long>(value)); }

void LumoFileStream::Put(long value) {
  char text[LUMO_INTEGER_LENGTH];
  PutBytes(text, static_cast<std::size_t>(LumoWriteInteger(text, value) - text));
}

void LumoFileStream::Put(float value) { Put(static_cast<double>(value)); }

void LumoFileStream::Put(const char* format, float value) {
  Put(format, static_cast<double>(value));
}

void LumoFileStream::Put(double value) {
  char text[LUMO_MOST_DIGITS + LUMO_REAL_MARGIN];
  char* end = LumoWriteReal(text, value, GetSignificantDigitNumber());
  PutBytes(text, static_cast<std::size_t>(end - text));
}

void LumoFileStream::Put(const char* format, double value) {
  char text[NUMBER_LENGTH];
  // The sign of a value that isn't a number is left out, as everywhere.
  std::snprintf(text, sizeof text, format, std::isnan(value) ? std::fabs(value) : value);
  Put(text);
}

void LumoFileStream::Put(const char* text) {
  if (text == nullptr) return;
  for (;;) {
    const std::size_t plain = std::strcspn(text, "\\");
    PutBytes(text, plain);
    text += plain;
    if (*text == '\0') return;
    const char escaped = GetEscapedChar(text[1]);
    Put(escaped == '\0' ? *text : escaped);
    text += escaped == '\0' ? 1 : 2;
  }
}

void LumoFileStream::Flush() {
  if (_IsOutput()) std::fflush(_file);
}

void LumoFileStream::Close() {
  if (_file == nullptr) return;
  Flush();
  if (_file != stdin && _file != stdout && _file != stderr) std::fclose(_file);
  _file = nullptr;
  _pushBack = _pushBack->Flush();
}
