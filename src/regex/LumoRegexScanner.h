#pragma once

#include "regex/LumoRegexProgram.h"

// Cuts a pattern into tokens: operators, and sets of characters.
class LumoRegexScanner {
 public:
  enum Token : int {
    END_OF_PATTERN,
    CHARS,  // a set of characters: GetChars
    BEGIN,
    END,
    STAR,
    PLUS,
    OPTIONAL,
    ALTERNATIVE,
    OPEN,
    CLOSE,
    ERROR,  // GetError
  };

  explicit LumoRegexScanner(const char* pattern) : _rest(pattern) {}

  Token Scan();
  const LumoRegexProgram::CharSet& GetChars() const { return _chars; }
  const char* GetError() const { return _error; }

 private:
  Token _ScanEscape();
  Token _ScanClass();
  // One member of a class: a character (true, in `c`) or an escaped set, joined to _chars (false).
  bool _ScanClassMember(unsigned char& c);
  Token _Fail(const char* error);

  const char* _rest;
  LumoRegexProgram::CharSet _chars;
  const char* _error = nullptr;
};
