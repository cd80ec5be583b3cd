#pragma once

#include <cstddef>
#include <cstring>

class LumoList;

// Plain null-terminated character strings. Strings made here are counted by the memory accounting
// under "LumoRawString" and are released with Delete, never with `delete`.
class LumoRawString {
 public:
  LumoRawString() = delete;

  // A new string of `size` zero bytes, the terminator included.
  static char* New(std::size_t size);
  // A new copy of a string, which must not be null.
  static char* Copy(const char* text);
  // Uncounts and frees. The uncounting happens even for null: delete only what you own.
  static void Delete(char* text);

  // Copy, or null for null. Delete, or nothing for null.
  static char* CopyIfAny(const char* text) { return text == nullptr ? nullptr : Copy(text); }
  static void DeleteIfAny(char* text) {
    if (text != nullptr) Delete(text);
  }
  // Makes `field` an own copy of `text` (null for null) and releases what it held. `text` may be
  // the held string itself.
  static void Replace(char*& field, const char* text);

  // Byte-wise three-way comparison (strcmp). Null sorts before any string; two nulls are equal.
  static int Compare(const char* a, const char* b) {
    if (a != nullptr && b != nullptr) return std::strcmp(a, b);
    return static_cast<int>(a != nullptr) - static_cast<int>(b != nullptr);
  }
  static bool IsEqual(const char* a, const char* b) { return Compare(a, b) == 0; }
  static bool IsDifferent(const char* a, const char* b) { return Compare(a, b) != 0; }

  // An integer is a text that its own value prints back as: "-5" is one, "+5", "05" and " 5"
  // are not, nor is a number beyond 32 bits.
  static bool IsInt(const char* text);
  // The leading base-10 integer of the text, 0 for none or for null.
  static int ToInt(const char* text);
  // A real is [sign] digits [. digits] or [sign] . [digits], then an optional exponent with at
  // least one digit. A point alone is a real by this rule; the empty text and null are not.
  static bool IsDouble(const char* text);
  // The leading real of the text (strtod), 0.0 for none or for null.
  static double ToDouble(const char* text);
  // Exactly "true" or "false".
  static bool IsBool(const char* text);
  static bool ToBool(const char* text) { return IsEqual(text, "true"); }

  // Offered to users of the class; the program itself does not call what follows.

  static int ReverseCompare(const char* a, const char* b) { return Compare(b, a); }
  static bool IsLessThan(const char* a, const char* b) { return Compare(a, b) < 0; }
  static bool IsLessOrEqual(const char* a, const char* b) { return Compare(a, b) <= 0; }
  static bool IsGreaterThan(const char* a, const char* b) { return Compare(a, b) > 0; }
  static bool IsGreaterOrEqual(const char* a, const char* b) { return Compare(a, b) >= 0; }
  // Compares the real values of two strings: -1, 0 or 1. Strings that are not both reals compare
  // as text.
  static int CompareNumerically(const char* a, const char* b);
  static int ReverseCompareNumerically(const char* a, const char* b) {
    return CompareNumerically(b, a);
  }
  // The number of bytes before the terminator; 0 for null.
  static std::size_t GetLength(const char* text);
  // A new string: the two texts one after the other (null counts as empty).
  static char* Append(const char* head, const char* tail);
  // Whether `text` starts (ends) with the given part. Null is no part of anything.
  static bool IsPrefix(const char* prefix, const char* text);
  static bool IsSuffix(const char* suffix, const char* text);
  // Writes `part` over the bytes of `text` from `position` on, as far as `text` reaches.
  static void Overwrite(char* text, std::size_t position, const char* part);
  // New strings: "%d", "%g", and "true" or "false".
  static char* ToString(int value);
  static char* ToString(double value);
  static char* ToString(bool value);

  // Patterns are regular expressions (see LumoRegex). These are defined with them, in src/regex.
  // Whether the pattern matches somewhere in the text; false for a null text or a bad pattern.
  static bool MatchPattern(const char* text, const char* pattern);
  // A new string: the first match; null when there is none.
  static char* ExtractPattern(const char* text, const char* pattern);
  // Appends new strings to the list: the parts of the text between the matches. False, with
  // nothing appended, for a null text or a bad pattern.
  static bool SplitWithPattern(const char* text, const char* pattern, LumoList* parts);
  // A new string: the text with its first match, or all its matches, replaced; null for a null
  // text or a bad pattern. Matches do not overlap.
  static char* SubstitutePattern(const char* text, const char* pattern, const char* replacement);
  static char* SubstitutePatterns(const char* text, const char* pattern, const char* replacement);
};
