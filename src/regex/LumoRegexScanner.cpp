#include "regex/LumoRegexScanner.h"

#include <cassert>

namespace {

using CharSet = LumoRegexProgram::CharSet;

constexpr const char* TRAILING_BACKSLASH = "A pattern ends with a backslash";
constexpr const char* UNCLOSED_CLASS = "A class of characters is not closed";
constexpr const char* REVERSED_RANGE = "A range of characters is reversed";

unsigned char AsByte(char c) { return static_cast<unsigned char>(c); }

CharSet MakeRange(unsigned char from, unsigned char to) {
  assert(from <= to);
  CharSet set;
  for (unsigned c = from; c <= to; ++c) set.set(c);
  return set;
}

CharSet MakeSet(const char* chars) {
  CharSet set;
  for (; *chars != '\0'; ++chars) set.set(AsByte(*chars));
  return set;
}

CharSet GetDigits() { return MakeRange('0', '9'); }
CharSet GetWordChars() {
  return GetDigits() | MakeRange('a', 'z') | MakeRange('A', 'Z') | MakeSet("_");
}
CharSet GetBlanks() { return MakeSet(" \t\n\v\f\r"); }

struct Operator {
  char c;
  LumoRegexScanner::Token token;
};
constexpr Operator OPERATORS[] = {
    {'^', LumoRegexScanner::BEGIN},
    {'$', LumoRegexScanner::END},
    {'*', LumoRegexScanner::STAR},
    {'+', LumoRegexScanner::PLUS},
    {'?', LumoRegexScanner::OPTIONAL},
    {'|', LumoRegexScanner::ALTERNATIVE},
    {'(', LumoRegexScanner::OPEN},
    {')', LumoRegexScanner::CLOSE},
    {'\0', LumoRegexScanner::END_OF_PATTERN},
};

// What a backslash before `c` stands for.
CharSet GetEscaped(char c) {
  switch (c) {
    case 'd':
      return GetDigits();
    case 'D':
      return ~GetDigits();
    case 'w':
      return GetWordChars();
    case 'W':
      return ~GetWordChars();
    case 's':
      return GetBlanks();
    case 'S':
      return ~GetBlanks();
    case 'n':
      return MakeSet("\n");
    case 't':
      return MakeSet("\t");
    case 'r':
      return MakeSet("\r");
    case 'f':
      return MakeSet("\f");
    case 'v':
      return MakeSet("\v");
    default:
      return MakeRange(AsByte(c), AsByte(c));
  }
}

}  // namespace

LumoRegexScanner::Token LumoRegexScanner::Scan() {
  const char c = *_rest;
  for (const Operator& row : OPERATORS) {
    if (row.c != c) continue;
    if (c != '\0') ++_rest;
    return row.token;
  }
  ++_rest;
  switch (c) {
    case '\\':
      return _ScanEscape();
    case '[':
      return _ScanClass();
    case '.':
      _chars = ~MakeSet("\n");
      return CHARS;
    default:
      _chars = MakeRange(AsByte(c), AsByte(c));
      return CHARS;
  }
}

LumoRegexScanner::Token LumoRegexScanner::_ScanEscape() {
  if (*_rest == '\0') return _Fail(TRAILING_BACKSLASH);
  _chars = GetEscaped(*_rest++);
  return CHARS;
}

LumoRegexScanner::Token LumoRegexScanner::_ScanClass() {
  const bool isNegated = *_rest == '^';
  if (isNegated) ++_rest;
  _chars.reset();
  for (bool isFirst = true; *_rest != ']' || isFirst; isFirst = false) {
    unsigned char low = 0;
    if (*_rest == '\0' || (*_rest == '\\' && _rest[1] == '\0')) return _Fail(UNCLOSED_CLASS);
    if (!_ScanClassMember(low)) continue;
    unsigned char high = low;
    const bool isRange = *_rest == '-' && _rest[1] != ']' && _rest[1] != '\0';
    if (isRange) {
      ++_rest;
      if (*_rest == '\\' && _rest[1] == '\0') return _Fail(UNCLOSED_CLASS);
      if (!_ScanClassMember(high)) {
        // A set ends no range: the dash stands for itself.
        _chars.set(AsByte('-'));
        high = low;
      }
    }
    if (high < low) return _Fail(REVERSED_RANGE);
    _chars |= MakeRange(low, high);
  }
  ++_rest;
  if (isNegated) _chars.flip();
  return CHARS;
}

bool LumoRegexScanner::_ScanClassMember(unsigned char& c) {
  assert(*_rest != '\0');
  if (*_rest != '\\') {
    c = AsByte(*_rest++);
    return true;
  }
  const CharSet escaped = GetEscaped(_rest[1]);
  _rest += 2;
  if (escaped.count() != 1) {
    _chars |= escaped;
    return false;
  }
  c = 0;
  while (!escaped.test(c)) ++c;
  return true;
}

LumoRegexScanner::Token LumoRegexScanner::_Fail(const char* error) {
  assert(error != nullptr);
  _error = error;
  return ERROR;
}
