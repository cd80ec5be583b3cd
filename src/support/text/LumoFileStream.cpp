#include "support/text/LumoFileStream.h"

#include <cmath>

#include "support/memory/LumoMemoryManager.h"
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
  std::fputc(c, _file);
  _Trace(c);
}

void LumoFileStream::Put(int value) { Put(static_cast<long>(value)); }

void LumoFileStream::Put(long value) {
  char text[NUMBER_LENGTH];
  std::snprintf(text, sizeof text, "%ld", value);
  Put(text);
}

void LumoFileStream::Put(float value) { Put(static_cast<double>(value)); }

void LumoFileStream::Put(const char* format, float value) {
  Put(format, static_cast<double>(value));
}

void LumoFileStream::Put(double value) {
  char format[32];
  std::snprintf(format, sizeof format, "%%.%dg", GetSignificantDigitNumber());
  Put(format, value);
}

void LumoFileStream::Put(const char* format, double value) {
  char text[NUMBER_LENGTH];
  // The sign of a value that isn't a number says nothing, and differs from one machine to another.
  std::snprintf(text, sizeof text, format, std::isnan(value) ? std::fabs(value) : value);
  Put(text);
}

void LumoFileStream::Put(const char* text) {
  if (text == nullptr || !_IsOutput()) return;
  for (; *text != '\0'; ++text) {
    const char escaped = *text == '\\' ? GetEscapedChar(text[1]) : '\0';
    if (escaped == '\0') {
      Put(*text);
    } else {
      Put(escaped);
      ++text;
    }
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
