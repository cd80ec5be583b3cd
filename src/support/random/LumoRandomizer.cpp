// Every deviate is made from uniform ones, u.
//
// Normal: a point (y1, y2) uniform in the unit circle, found by refusing those of the square that
// lie outside, gives two independent deviates y sqrt(-2 ln s / s), s = y1² + y2². The second one
// waits for the next call.
//
// Lognormal: the exponential of a normal deviate. Its error factor at a confidence level is
// exp(score σ), which gives σ; the mean of the law is exp(μ + σ²/2), which gives μ.
//
// Gamma, of shape k ≥ 1: with d = k - 1/3 and v = (1 + x / (3 sqrt(d)))³, x normal, d v has nearly
// the law wanted; it is accepted when ln u lies below the difference of the two log-densities, for
// which a quartic in x, cheaper, nearly always suffices. A shape below 1 is one above it, times
// u^(1/k).
//
// Beta: of two gamma deviates, the share of the first.
//
// Exponential: ln 2 for each doubling that keeps u below 1, which is the whole part of the deviate
// in units of ln 2; the rest is the least of a random number of uniform ones.
//
// The order in which uniform deviates are taken is part of a run's results.

#include "support/random/LumoRandomizer.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <iterator>

namespace {

constexpr double LN_2 = 0.6931471805599453;

// EXPONENTIAL_TABLE[k] is the sum of (ln 2)^i / i! over i = 1 .. k + 1.
constexpr double EXPONENTIAL_TABLE[] = {
    LN_2,
    0.9333736875190459,
    0.9888777961838675,
    0.998495925291496,
    0.9998292811061389,
    0.9999833164100727,
    0.9999985691438767,
    0.9999998906925558,
    0.9999999924734159,
    0.9999999995283275,
    0.9999999999728814,
    0.9999999999985598,
    0.999999999999929,
    0.9999999999999968,
    0.9999999999999999,
    1.0,
};

struct Score {
  double level;
  double score;
};

constexpr Score STANDARD_SCORES[] = {
    {0.5, 0.6745},  {0.68269, 1.0}, {0.9, 1.6449},   {0.95, 1.9599},   {0.9545, 2.0},
    {0.99, 2.5759}, {0.9973, 3.0},  {0.999, 3.2905}, {0.9999, 3.8906}, {0.99993, 4.0},
};
constexpr double HIGHEST_STANDARD_SCORE = 4.4172;

// The quartic below which a gamma deviate is accepted without a logarithm.
constexpr double SQUEEZE = 0.0331;

// A working generator is refused more often than this with a probability below 10^-600.
constexpr int MAXIMUM_NUMBER_OF_REFUSALS = 1000;

}  // namespace

LumoRandomizer::~LumoRandomizer() = default;

double LumoRandomizer::UniformDraw(double a, double b) { return a + (b - a) * UniformDraw(); }

double LumoRandomizer::NormalDraw() {
  if (_normalDrawValue != 0.0) {
    const double value = _normalDrawValue;
    _normalDrawValue = 0.0;
    return value;
  }
  for (int refusals = 0; refusals < MAXIMUM_NUMBER_OF_REFUSALS; ++refusals) {
    const double y1 = 2.0 * UniformDraw() - 1.0;
    const double y2 = 2.0 * UniformDraw() - 1.0;
    const double s = y1 * y1 + y2 * y2;
    if (s > 0.0 && s < 1.0) {
      const double factor = std::sqrt(-2.0 * std::log(s) / s);
      _normalDrawValue = y2 * factor;
      return y1 * factor;
    }
  }
  return 0.0;
}

double LumoRandomizer::LognormalDraw(double mean, double errorFactor, double level) {
  double mu;
  double sigma;
  GetNormalLawOfLogarithm(mean, errorFactor, level, mu, sigma);
  return std::exp(NormalDraw(mu, sigma));
}

void LumoRandomizer::GetNormalLawOfLogarithm(double mean, double errorFactor, double level,
                                             double& mu, double& sigma) {
  sigma = std::log(errorFactor) / StandardScore(level);
  mu = std::log(mean) - 0.5 * sigma * sigma;
}

double LumoRandomizer::GammaDraw(double k) {
  if (std::isnan(k)) return k;
  if (k <= 0.0) return 0.0;
  if (k < 1.0) {
    const double u = UniformDraw();
    return GammaDraw(1.0 + k) * std::pow(u, 1.0 / k);
  }
  const double d = k - 1.0 / 3.0;
  assert(d > 0.0);
  const double c = (1.0 / 3.0) / std::sqrt(d);
  for (;;) {
    double x;
    double v;
    do {
      x = NormalDraw();
      v = 1.0 + c * x;
    } while (!(v > 0.0));
    v = v * v * v;
    const double u = UniformDraw();
    if (u < 1.0 - SQUEEZE * (x * x) * (x * x)) return d * v;
    if (std::log(u) < 0.5 * x * x + d * (1.0 - v + std::log(v))) return d * v;
  }
}

double LumoRandomizer::BetaDraw(double a, double b) {
  const double x = GammaDraw(a);
  const double y = GammaDraw(b);
  return x / (x + y);
}

double LumoRandomizer::StandardScore(double level) {
  for (const Score& row : STANDARD_SCORES) {
    if (level <= row.level) return row.score;
  }
  return HIGHEST_STANDARD_SCORE;
}

// Offered to users of the class; the program itself does not call what follows.

long LumoRandomizer::DrawModulo(long n) {
  return static_cast<long>(std::floor(UniformDraw() * static_cast<double>(n)));
}

double LumoRandomizer::ExponentialDraw() {
  double u = UniformDraw();
  while (u == 0.0) u = UniformDraw();
  double a = 0.0;
  u += u;
  while (u <= 1.0) {
    a += LN_2;
    u += u;
  }
  u -= 1.0;
  if (u <= LN_2) return a + u;
  double smallest = UniformDraw();
  int i = 1;
  do {
    assert(i < static_cast<int>(std::size(EXPONENTIAL_TABLE)));
    smallest = std::min(smallest, UniformDraw());
  } while (u > EXPONENTIAL_TABLE[i++]);
  return a + smallest * LN_2;
}
