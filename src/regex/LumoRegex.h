#pragma once

#include <cstddef>

#include "regex/LumoRegexProgram.h"

// A regular expression over bytes, compiled once and matched any number of times.
//
//   c        the character itself, unless it is one of  \ . [ ] ( ) | * + ? ^ $
//   .        any character but a newline
//   [abc]    one of these; ranges as in [a-z]; [^abc] any other one. A "]" right after the opening
//            and a "-" at either end stand for themselves
//   ^  $     the start and the end of the text
//   xy       x, then y              x|y    x or y; either may be empty
//   (x)      x as a whole           x*  x+  x?    x any number of times, at least once, at most
//   once \n \t \r \f \v    control characters \d \w \s          a digit, a letter or digit or "_",
//   a blank; \D \W \S any other character \c       any other character c for itself
//
// A match is the leftmost one and, among those that start there, the longest. It is found in time
// proportional to the length of the text times that of the pattern, by following all ways through
// the program at once (K. Thompson, "Regular expression search algorithm", 1968, as R. Cox retells
// it); nothing backtracks, and nothing recurses on the text or on the pattern.
class LumoRegex {
 public:
  // Offered to users of the class; the program itself does not call what follows.

  // Null counts as the empty pattern.
  explicit LumoRegex(const char* pattern);
  ~LumoRegex();
  LumoRegex(const LumoRegex&) = delete;
  LumoRegex& operator=(const LumoRegex&) = delete;

  // Why the pattern is not well formed; null when it is.
  const char* GetError() const { return _error; }
  bool IsValid() const { return _error == nullptr; }

  // The first match at or after `from`, as the offsets [start, end) into the text. False when
  // there is none, or for an invalid pattern. "^" matches at the start of the text only.
  bool Find(const char* text, std::size_t from, std::size_t& start, std::size_t& end) const;
  // The same in a text of known length.
  bool Find(const char* text, std::size_t length, std::size_t from, std::size_t& start,
            std::size_t& end) const;

 private:
  LumoRegexProgram _program;
  const char* _error;
};
