#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>

#include "OrvaTestSupport.h"
#include "support/random/LumoCongruentialRandomizer.h"

namespace {

constexpr long MODULUS = 2147483647;
constexpr long MASK = 123459876;

// x y mod m, and the state before `state` under the multiplier: m is prime, so that the inverse
// of a is a^(m - 2).
long Multiply(long x, long y) { return x * y % MODULUS; }
long GetPredecessor(long state, long multiplier) {
  for (long exponent = MODULUS - 2; exponent != 0; exponent /= 2) {
    if (exponent % 2 != 0) state = Multiply(state, multiplier);
    multiplier = Multiply(multiplier, multiplier);
  }
  return state;
}

// The published algorithms in their shortest form, over x' = a x mod m computed directly.
class Reference {
 public:
  explicit Reference(long seed, long multiplier = 16807)
      : _state(seed ^ MASK), _multiplier(multiplier) {}

  long Draw() { return (_state = Multiply(_multiplier, _state)) ^ MASK; }
  double Uniform() { return static_cast<double>(Draw()) / static_cast<double>(MODULUS); }

  // Ahrens and Dieter: how often a uniform number can be doubled, then the least of a number of
  // uniform numbers that follows from q[k], the sums of (ln 2)^i / i! for i = 1 .. k + 1.
  double Exponential() {
    const double ln2 = std::log(2.0);
    double u = 0.0;
    while (u == 0.0) u = Uniform();
    double a = 0.0;
    for (u += u; u <= 1.0; u += u) a += ln2;
    u -= 1.0;
    if (u <= ln2) return a + u;
    double least = Uniform();
    double term = ln2;
    double q = ln2;
    for (int i = 2;; ++i) {
      least = std::min(least, Uniform());
      term *= ln2 / i;
      q = i > 15 ? 1.0 : q + term;
      if (u <= q) return a + least * ln2;
    }
  }

  // Marsaglia: a point in the unit circle gives two values.
  double Normal() {
    if (_waiting != 0.0) return std::exchange(_waiting, 0.0);
    for (;;) {
      const double x = 2.0 * Uniform() - 1.0;
      const double y = 2.0 * Uniform() - 1.0;
      const double s = x * x + y * y;
      if (s >= 1.0 || s == 0.0) continue;
      const double f = std::sqrt(-2.0 * std::log(s) / s);
      _waiting = y * f;
      return x * f;
    }
  }

  double Lognormal(double mean, double errorFactor, double score) {
    const double sigma = std::log(errorFactor) / score;
    return std::exp(std::log(mean) - 0.5 * sigma * sigma + sigma * Normal());
  }

  // Marsaglia and Tsang.
  double Gamma(double k) {
    if (k < 1.0) {
      const double u = Uniform();
      return Gamma(1.0 + k) * std::pow(u, 1.0 / k);
    }
    const double d = k - 1.0 / 3.0;
    for (;;) {
      const double x = Normal();
      const double v = std::pow(1.0 + x / 3.0 / std::sqrt(d), 3);
      if (v <= 0.0) continue;
      const double u = Uniform();
      if (u < 1.0 - 0.0331 * x * x * x * x) return d * v;
      if (std::log(u) < 0.5 * x * x + d * (1.0 - v + std::log(v))) return d * v;
    }
  }

  double Beta(double a, double b) {
    const double x = Gamma(a);
    return x / (x + Gamma(b));
  }

 private:
  long _state;
  long _multiplier;
  double _waiting = 0.0;
};

using Deviate = std::function<double(LumoCongruentialRandomizer&)>;
using ReferenceDeviate = std::function<double(Reference&)>;

}  // namespace

TEST(LumoCongruentialRandomizer, FollowsTheRecurrence) {
  const struct {
    int kind;
    long multiplier;
  } kinds[] = {{0, 16807}, {1, 16807}, {2, 48271}, {3, 69621}, {4, 16807}, {-1, 16807}};
  for (const auto& [kind, multiplier] : kinds) {
    LumoCongruentialRandomizer randomizer(kind);
    EXPECT_EQ(randomizer.GetModulus(), MODULUS);
    EXPECT_EQ(randomizer.GetMultiplier(), multiplier);
    EXPECT_EQ(randomizer.GetMask(), MASK);
    EXPECT_EQ(randomizer.GetSeed(), 12345);
    for (const long seed : {12345L, 0L, 1L, 2147483646L}) {
      randomizer.SetSeed(seed);
      Reference reference(seed, multiplier);
      for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(randomizer.Draw(), reference.Draw()) << kind << ' ' << seed << ' ' << i;
      }
      EXPECT_EQ(randomizer.UniformDraw(), reference.Uniform());
      EXPECT_EQ(randomizer.UniformDraw(3.0, 1.0), 3.0 - 2.0 * reference.Uniform());
      EXPECT_EQ(randomizer.DrawModulo(10), std::floor(10.0 * reference.Uniform()));
    }
  }
  // The check value that was published for 16807 without a mask: the 10000th number from 1 on.
  LumoCongruentialRandomizer plain(MODULUS, 16807, 0);
  plain.SetSeed(1);
  for (int i = 1; i < 10000; ++i) plain.Draw();
  EXPECT_EQ(plain.Draw(), 1043618065);
}

TEST(LumoCongruentialRandomizer, StaysOnASeedEqualToTheMask) {
  LumoCongruentialRandomizer randomizer(1);
  randomizer.SetSeed(MASK);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(randomizer.Draw(), MASK);
  EXPECT_EQ(randomizer.UniformDraw(), 123459876.0 / 2147483647.0);
  EXPECT_EQ(randomizer.GetSeed(), MASK);
  // The polar method refuses every point that this number gives; the draw must still end.
  randomizer.NormalDraw();
}

// The masked state is returned, so that both ends of [0, 1] occur: 0 for the state that equals the
// mask, 1 for the state that differs from it in every bit.
TEST(LumoCongruentialRandomizer, ReachesBothEndsOfTheUnitInterval) {
  LumoCongruentialRandomizer randomizer(1);
  const long beforeZero = GetPredecessor(MASK, 16807) ^ MASK;
  const long beforeOne = GetPredecessor(MODULUS ^ MASK, 16807) ^ MASK;
  randomizer.SetSeed(beforeZero);
  EXPECT_EQ(randomizer.UniformDraw(), 0.0);
  randomizer.SetSeed(beforeOne);
  EXPECT_EQ(randomizer.UniformDraw(), 1.0);
  randomizer.SetSeed(beforeOne);
  EXPECT_EQ(randomizer.DrawModulo(10), 10);
  for (const long seed : {beforeZero, beforeOne}) {
    randomizer.SetSeed(seed);
    Reference reference(seed);
    EXPECT_DOUBLE_EQ(randomizer.ExponentialDraw(), reference.Exponential());
  }
}

TEST(LumoCongruentialRandomizer, DrawsTheDeviatesOfThePublishedAlgorithms) {
  const struct {
    const char* name;
    Deviate draw;
    ReferenceDeviate expected;
    double mean;
    double tolerance;  // five deviations of the mean of 20000 draws
  } cases[] = {{"exponential", [](auto& r) { return r.ExponentialDraw(); },
                [](auto& r) { return r.Exponential(); }, 1.0, 0.036},
               {"normal", [](auto& r) { return r.NormalDraw(); },
                [](auto& r) { return r.Normal(); }, 0.0, 0.036},
               {"normal(3, 0.5)", [](auto& r) { return r.NormalDraw(3.0, 0.5); },
                [](auto& r) { return 3.0 + 0.5 * r.Normal(); }, 3.0, 0.018},
               {"lognormal", [](auto& r) { return r.LognormalDraw(0.01, 3.0, 0.9); },
                [](auto& r) { return r.Lognormal(0.01, 3.0, 1.6449); }, 0.01, 0.0003},
               {"gamma(0.3)", [](auto& r) { return r.GammaDraw(0.3); },
                [](auto& r) { return r.Gamma(0.3); }, 0.3, 0.02},
               {"gamma(1)", [](auto& r) { return r.GammaDraw(1.0); },
                [](auto& r) { return r.Gamma(1.0); }, 1.0, 0.036},
               {"gamma(2.5, 4)", [](auto& r) { return r.GammaDraw(2.5, 4.0); },
                [](auto& r) { return 4.0 * r.Gamma(2.5); }, 10.0, 0.23},
               {"beta(0.5, 3)", [](auto& r) { return r.BetaDraw(0.5, 3.0); },
                [](auto& r) { return r.Beta(0.5, 3.0); }, 1.0 / 7.0, 0.006}};
  for (const auto& [name, draw, expected, mean, tolerance] : cases) {
    LumoCongruentialRandomizer randomizer(1);
    Reference reference(12345);
    double sum = 0.0;
    for (int i = 0; i < 20000; ++i) {
      const double value = draw(randomizer);
      const double wanted = expected(reference);
      ASSERT_NEAR(value, wanted, 1e-12 * std::abs(wanted)) << name << ' ' << i;
      sum += value;
    }
    EXPECT_NEAR(sum / 20000, mean, tolerance) << name;  // the law itself
  }
}

TEST(LumoCongruentialRandomizer, KeepsTheSecondNormalValue) {
  LumoCongruentialRandomizer randomizer(1);
  const double first = randomizer.NormalDraw();
  const double second = randomizer.NormalDraw();
  randomizer.SetSeed(12345);
  EXPECT_EQ(randomizer.NormalDraw(), first);
  randomizer.SetSeed(12345);  // does not forget the value that waits
  EXPECT_EQ(randomizer.NormalDraw(), second);
  EXPECT_EQ(randomizer.GetSeed(), 12345);
  EXPECT_EQ(randomizer.NormalDraw(), first);
  randomizer.ResetNormalDrawValue();
  randomizer.SetSeed(12345);
  EXPECT_EQ(randomizer.NormalDraw(), first);
  LumoCongruentialRandomizer fresh(MODULUS, 48271, 5);
  randomizer.Initialize(MODULUS, 48271, 5);  // forgets it and takes the first seed
  EXPECT_EQ(randomizer.NormalDraw(), fresh.NormalDraw());
  const std::unique_ptr<LumoRandomizer> copy(randomizer.Copy());
  copy->SetSeed(12345);
  EXPECT_EQ(copy->Draw(), (48271L * (12345 ^ 5) % MODULUS) ^ 5);
}

TEST(LumoRandomizer, StandardScoresOfTheNextTabulatedLevel) {
  const struct {
    double level;
    double score;
  } rows[] = {{0.5, 0.6745},    {0.68269, 1.0}, {0.9, 1.6449}, {0.95, 1.9599},
              {0.9545, 2.0},    {0.99, 2.5759}, {0.9973, 3.0}, {0.999, 3.2905},
              {0.9999, 3.8906}, {0.99993, 4.0}, {1.0, 4.4172}};
  double below = -1.0;
  for (const auto& [level, score] : rows) {
    EXPECT_EQ(LumoRandomizer::StandardScore(level), score);
    EXPECT_EQ(LumoRandomizer::StandardScore(std::nextafter(below, 2.0)), score);
    below = level;
  }
  EXPECT_EQ(LumoRandomizer::StandardScore(std::numeric_limits<double>::quiet_NaN()), 4.4172);
}
