#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "printer/OrvaCutsetRanking.h"

namespace {

using Numbers = std::vector<std::uint32_t>;

// Long lists are sorted by digits, short ones by comparison: both against a stable sort by value.
TEST(OrvaRankCutsets, PutsTheMostProbableFirstAndKeepsTheOrderOfEqualOnes) {
  constexpr double INFINITE = std::numeric_limits<double>::infinity();
  const std::vector<double> special = {0.0,      -0.0, 1.0,       -1.0, 1e-300,
                                       5e-324,   0.5,  -5e-324,   0.25, std::nextafter(0.25, 1.0),
                                       INFINITE, -1e3, -INFINITE, 1e300};
  std::mt19937_64 random(7);
  for (const std::size_t size : {0U, 1U, 2U, 100U, 4095U, 4096U, 20000U}) {
    std::vector<double> probabilities;
    while (probabilities.size() < size) {
      const double drawn = static_cast<double>(random() % 5000) * 1e-9;
      probabilities.push_back(random() % 4 == 0 ? special[random() % special.size()] : drawn);
    }
    Numbers expected(size);
    std::iota(expected.begin(), expected.end(), 0U);
    std::stable_sort(expected.begin(), expected.end(), [&](std::uint32_t a, std::uint32_t b) {
      return probabilities[a] > probabilities[b];
    });
    EXPECT_EQ(OrvaRankCutsets(probabilities), expected) << size;
  }
}

// What isn't a number is equal to all others. The tree of the first three is a chain that turns,
// its root the first such value: what comes later goes to the right of it and of the next.
TEST(OrvaRankCutsets, FollowsTheSearchTreeAroundWhatIsNoNumber) {
  constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(OrvaRankCutsets(std::vector{0.1, NONE, 0.3}), (Numbers{2, 0, 1}));
  EXPECT_EQ(OrvaRankCutsets(std::vector{0.1, NONE, NONE, 0.3}), (Numbers{0, 1, 2, 3}));
}

}  // namespace
