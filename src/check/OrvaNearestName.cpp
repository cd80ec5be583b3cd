#include "check/OrvaNearestName.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace {

// Nobody means a name by a text that long.
constexpr std::size_t LONGEST_NAME = 200;

// The fewest characters to insert, delete or replace that make one text of the other.
std::size_t GetDistance(const char* from, const char* to) {
  const std::size_t length = std::strlen(to);
  std::vector<std::size_t> row(length + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; *from != '\0'; ++from, ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= length; ++j) {
      const std::size_t replaced = diagonal + (*from == to[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row[length];
}

}  // namespace

std::string OrvaDescribeNearestName(const char* name, const std::vector<const char*>& names,
                                    const char* textForNone) {
  if (names.empty() || std::strlen(name) > LONGEST_NAME) return textForNone;
  const char* nearest = *std::min_element(
      names.begin(), names.end(),
      [&](const char* a, const char* b) { return GetDistance(name, a) < GetDistance(name, b); });
  return std::string("the nearest that it reads is \"") + nearest + "\"";
}
