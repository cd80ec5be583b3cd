#include "support/text/LumoRawString.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/memory/LumoMemoryManager.h"

namespace {

constexpr const char* CLASS_NAME = "LumoRawString";
constexpr std::size_t NUMBER_LENGTH = 32;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Moves the text past its leading digits and says whether there were any.
bool SkipDigits(const char*& text) {
  const char* start = text;
  while (IsDigit(*text)) ++text;
  return text != start;
}

void SkipSign(const char*& text) {
  if (*text == '+' || *text == '-') ++text;
}

}  // namespace

char* LumoRawString::New(std::size_t size) {
  char* text = static_cast<char*>(LumoMemoryManager::NewCell(size));
  if (text == nullptr) LumoMemoryManager::EndOnExhaustedMemory();
  LumoMemoryManager::TraceNew(text, CLASS_NAME);
  return text;
}

char* LumoRawString::Copy(const char* text) {
  assert(text != nullptr);
  const std::size_t size = std::strlen(text) + 1;
  return static_cast<char*>(std::memcpy(New(size), text, size));
}

void LumoRawString::Delete(char* text) {
  LumoMemoryManager::TraceDelete(text, CLASS_NAME);
  LumoMemoryManager::DeleteCell(text);
}

void LumoRawString::Replace(char*& field, const char* text) {
  char* old = field;
  field = CopyIfAny(text);
  DeleteIfAny(old);
}

bool LumoRawString::IsInt(const char* text) {
  if (text == nullptr) return false;
  char printed[NUMBER_LENGTH];
  std::snprintf(printed, sizeof printed, "%d", ToInt(text));
  return std::strcmp(printed, text) == 0;
}

int LumoRawString::ToInt(const char* text) {
  return text == nullptr ? 0 : static_cast<int>(std::strtol(text, nullptr, 10));
}

bool LumoRawString::IsDouble(const char* text) {
  if (text == nullptr) return false;
  SkipSign(text);
  const bool hasIntegerPart = SkipDigits(text);
  if (*text == '.') {
    ++text;
    SkipDigits(text);
  } else if (!hasIntegerPart) {
    return false;
  }
  if (*text == 'e' || *text == 'E') {
    ++text;
    SkipSign(text);
    if (!SkipDigits(text)) return false;
  }
  return *text == '\0';
}

double LumoRawString::ToDouble(const char* text) {
  return text == nullptr ? 0.0 : std::strtod(text, nullptr);
}

bool LumoRawString::IsBool(const char* text) {
  return IsEqual(text, "true") || IsEqual(text, "false");
}

// Offered to users of the class; the program itself does not call what follows.

int LumoRawString::CompareNumerically(const char* a, const char* b) {
  if (!IsDouble(a) || !IsDouble(b)) return Compare(a, b);
  const double x = ToDouble(a);
  const double y = ToDouble(b);
  return static_cast<int>(x > y) - static_cast<int>(x < y);
}

std::size_t LumoRawString::GetLength(const char* text) {
  return text == nullptr ? 0 : std::strlen(text);
}

char* LumoRawString::Append(const char* head, const char* tail) {
  const std::size_t headLength = GetLength(head);
  const std::size_t tailLength = GetLength(tail);
  char* text = New(headLength + tailLength + 1);
  if (headLength > 0) std::memcpy(text, head, headLength);
  if (tailLength > 0) std::memcpy(text + headLength, tail, tailLength);
  return text;
}

bool LumoRawString::IsPrefix(const char* prefix, const char* text) {
  if (prefix == nullptr || text == nullptr) return false;
  return std::strncmp(prefix, text, std::strlen(prefix)) == 0;
}

bool LumoRawString::IsSuffix(const char* suffix, const char* text) {
  if (suffix == nullptr || text == nullptr) return false;
  const std::size_t length = std::strlen(text);
  const std::size_t suffixLength = std::strlen(suffix);
  return suffixLength <= length && std::strcmp(suffix, text + length - suffixLength) == 0;
}

void LumoRawString::Overwrite(char* text, std::size_t position, const char* part) {
  const std::size_t length = GetLength(text);
  if (position >= length) return;
  std::memcpy(text + position, part, std::min(GetLength(part), length - position));
}

char* LumoRawString::ToString(int value) {
  char text[NUMBER_LENGTH];
  std::snprintf(text, sizeof text, "%d", value);
  return Copy(text);
}

char* LumoRawString::ToString(double value) {
  char text[NUMBER_LENGTH];
  std::snprintf(text, sizeof text, "%g", value);
  return Copy(text);
}

char* LumoRawString::ToString(bool value) { return Copy(value ? "true" : "false"); }
