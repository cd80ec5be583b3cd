#pragma once

#include <cstddef>

// Writes a real as printf does with "%.<digits>g", without a final '\0', and returns the end of the
// text. Infinity is "inf" and what isn't a number "nan", whatever its sign, which says nothing and
// differs from one machine to another. `digits` is between 0, which counts as 1, and
// LUMO_MOST_DIGITS; `first` has room for so many characters and LUMO_REAL_MARGIN more.
constexpr std::size_t LUMO_REAL_MARGIN = 16;
constexpr int LUMO_MOST_DIGITS = 300;
char* LumoWriteReal(char* first, double value, int digits);

// Writes a whole number in the same way; `first` has room for LUMO_INTEGER_LENGTH characters.
constexpr std::size_t LUMO_INTEGER_LENGTH = 24;
char* LumoWriteInteger(char* first, long value);
