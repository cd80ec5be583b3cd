#pragma once

#include <cstdint>
#include <span>
#include <vector>

// The order in which minimal cutsets are listed: their numbers, 0 .. n-1, by decreasing
// probability. Cutsets of equal probability keep their order. If a probability is NaN, the order is
// the one in which the search tree of the equivalent list holds them: defined, but not sorted.
std::vector<std::uint32_t> OrvaRankCutsets(std::span<const double> probabilities);
