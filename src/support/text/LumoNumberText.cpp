// Whole numbers and reals with six significant digits, which most of what the program writes
// consists of. Six digits are three pairs from a table. This serves whole numbers of five or six
// digits too, as most ranks of a long table are; std::to_chars is as fast for shorter ones.
//
// std::to_chars formats exactly, and takes 650 instructions for it, three times less than printf
// and still more than the rest of a table's row. Most values need no exact arithmetic: scaled by a
// power of ten to six digits before the point, a value is known with an error far below one, and
// only one that lies next to the middle between two texts could be rounded to the wrong one. These
// few are left to std::to_chars, and so is every other number of digits.
//
// The error: the powers are products of at most 304 factors, with a relative error of 2^-53 each,
// and scaling adds two more, so that a scaled value below 10^6 is off by less than 4e-8. What lies
// closer than MARGIN, 25 times that, to a middle goes the exact way.

#include "support/text/LumoNumberText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int DIGITS = 6;
constexpr double LEAST = 1e5;  // with this number of digits
constexpr double LIMIT = 1e6;
constexpr double MARGIN = 1e-6;

// What is scaled has its power in the table, and stays a normal number.
constexpr int HIGHEST_POWER = 304;
constexpr double SMALLEST_SCALED = 1e-298;
constexpr double LARGEST_SCALED = 1e298;

constexpr std::array<double, HIGHEST_POWER + 1> POWERS = [] {
  std::array<double, HIGHEST_POWER + 1> powers = {1.0};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10.0;
  return powers;
}();

double GetPower(int exponent) { return POWERS[static_cast<std::size_t>(exponent)]; }

// "00" to "99".
constexpr std::array<std::array<char, 2>, 100> PAIRS = [] {
  std::array<std::array<char, 2>, 100> pairs = {};
  for (unsigned i = 0; i < pairs.size(); ++i) {
    pairs[i] = {static_cast<char>('0' + i / 10), static_cast<char>('0' + i % 10)};
  }
  return pairs;
}();

void WriteDigits(char* to, unsigned digits) {
  std::memcpy(to, PAIRS[digits / 10000].data(), 2);
  std::memcpy(to + 2, PAIRS[digits / 100 % 100].data(), 2);
  std::memcpy(to + 4, PAIRS[digits % 100].data(), 2);
}

// digits * 10^(exponent - 5), the first of the six digits not being 0.
struct Decimal {
  unsigned digits;
  int exponent;
};

// False when the value is too close to the middle between two results.
bool Round(double value, Decimal& result) {
  constexpr int EXPONENT_SHIFT = 52;
  constexpr int EXPONENT_OF_ONE = 1023;
  int exponent =
      static_cast<int>(std::bit_cast<std::uint64_t>(value) >> EXPONENT_SHIFT) - EXPONENT_OF_ONE;
  // The exponent of ten is this or one more: 78913 / 2^18 is log10(2), and close enough to it that
  // no power of two gets beyond the next power of ten.
  exponent = (exponent * 78913) >> 18;
  const int power = DIGITS - 1 - exponent;
  double scaled = power >= 0 ? value * GetPower(power) : value / GetPower(-power);
  if (scaled >= LIMIT) {
    scaled /= 10.0;
    ++exponent;
  }
  unsigned digits = static_cast<unsigned>(scaled);
  const double rest = scaled - digits;
  if (std::fabs(rest - 0.5) < MARGIN) return false;
  if (rest > 0.5) ++digits;
  if (digits == static_cast<unsigned>(LIMIT)) {
    digits = static_cast<unsigned>(LEAST);
    ++exponent;
  }
  assert(digits >= LEAST && digits < LIMIT);
  result = {digits, exponent};
  return true;
}

// As "%.6g", with up to six characters of no meaning behind the end: six digits around the point,
// or one before it and an exponent, and no zeros at the end.
char* Write(char* to, const Decimal& decimal) {
  char digits[DIGITS];
  WriteDigits(digits, decimal.digits);
  int number = DIGITS;  // of digits without zeros at the end
  while (digits[number - 1] == '0') --number;
  const int exponent = decimal.exponent;
  if (exponent >= 0 && exponent < DIGITS) {
    const int point = exponent + 1;
    std::memcpy(to, digits, DIGITS);
    if (number <= point) return to + point;
    to[point] = '.';
    std::memcpy(to + point + 1, digits + point, static_cast<std::size_t>(number - point));
    return to + number + 1;
  }
  if (exponent < 0 && exponent >= -4) {
    std::copy_n("0.000", 1 - exponent, to);
    std::memcpy(to + 1 - exponent, digits, DIGITS);
    return to + 1 - exponent + number;
  }
  to[0] = digits[0];
  to[1] = '.';
  std::memcpy(to + 2, digits + 1, DIGITS - 1);
  to += number == 1 ? 1 : number + 1;
  *to++ = 'e';
  *to++ = exponent < 0 ? '-' : '+';
  const unsigned size = static_cast<unsigned>(std::abs(exponent));
  if (size >= 100) return std::to_chars(to, to + 3, size).ptr;
  std::memcpy(to, PAIRS[size].data(), 2);
  return to + 2;
}

}  // namespace

char* LumoWriteReal(char* first, double value, int digits) {
  assert(digits >= 0 && digits <= LUMO_MOST_DIGITS);
  const double size = std::fabs(value);
  Decimal decimal;
  if (digits == DIGITS && size >= SMALLEST_SCALED && size <= LARGEST_SCALED &&
      Round(size, decimal)) {
    if (value < 0.0) *first++ = '-';
    return Write(first, decimal);
  }
  return std::to_chars(first, first + digits + LUMO_REAL_MARGIN, std::isnan(value) ? size : value,
                       std::chars_format::general, digits)
      .ptr;
}

char* LumoWriteInteger(char* first, long value) {
  constexpr long LEAST_OF_FIVE_DIGITS = 10000;
  if (value < LEAST_OF_FIVE_DIGITS || value >= static_cast<long>(LIMIT)) {
    return std::to_chars(first, first + LUMO_INTEGER_LENGTH, value).ptr;
  }
  char digits[DIGITS + 1] = {};
  WriteDigits(digits, static_cast<unsigned>(value));
  const int zeros = value < static_cast<long>(LEAST) ? 1 : 0;
  std::memcpy(first, digits + zeros, DIGITS);
  return first + DIGITS - zeros;
}
