#include <functional>
#include <limits>
#include <memory>

#include "OrvaTestSupport.h"
#include "support/random/LumoCongruentialRandomizer.h"

namespace {

using Reference = OrvaReferenceRandomizer;
constexpr long MODULUS = Reference::MODULUS;
constexpr long MASK = Reference::MASK;

// The state before `state` under the multiplier: m is prime, so that the inverse of a is a^(m - 2).
long GetPredecessor(long state, long multiplier) {
  for (long exponent = MODULUS - 2; exponent != 0; exponent /= 2) {
    if (exponent % 2 != 0) state = state * multiplier % MODULUS;
    multiplier = multiplier * multiplier % MODULUS;
  }
  return state;
}

}  // namespace

TEST(LumoCongruentialRandomizer, FollowsTheRecurrence) {
  const struct {
    int kind;
    long multiplier;
  } kinds[] = {{0, 16807}, {1, 16807}, {2, 48271}, {3, 69621}, {4, 16807}, {-1, 16807}};
  for (const auto& [kind, multiplier] : kinds) {
    LumoCongruentialRandomizer randomizer(kind);
    EXPECT_EQ(randomizer.GetSeed(), 12345);
    for (const long seed : {12345L, 0L, 1L, 2147483646L}) {
      randomizer.SetSeed(seed);
      Reference reference(seed, multiplier);
      for (int i = 0; i < 2000; ++i) {
        ASSERT_EQ(randomizer.Draw(), reference.Draw()) << kind << ' ' << seed << ' ' << i;
      }
      EXPECT_EQ(randomizer.UniformDraw(), reference.Uniform());
      EXPECT_EQ(randomizer.UniformDraw(3.0, 1.0), reference.Uniform(3.0, 1.0));
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
    EXPECT_DOUBLE_EQ(randomizer.ExponentialDraw(), Reference(seed).Exponential());
  }
}

TEST(LumoCongruentialRandomizer, DrawsTheDeviatesOfThePublishedAlgorithms) {
  using Randomizer = LumoCongruentialRandomizer;
  const struct {
    const char* name;
    std::function<double(Randomizer&)> draw;
    std::function<double(Reference&)> expected;
    double mean;
    double tolerance;  // five deviations of the mean of 20000 draws
  } cases[] = {{"exponential", [](auto& r) { return r.ExponentialDraw(); },
                [](auto& r) { return r.Exponential(); }, 1.0, 0.036},
               {"normal", [](auto& r) { return r.NormalDraw(3.0, 0.5); },
                [](auto& r) { return r.Normal(3.0, 0.5); }, 3.0, 0.018},
               {"lognormal", [](auto& r) { return r.LognormalDraw(0.01, 3.0, 0.9); },
                [](auto& r) { return r.Lognormal(0.01, 3.0, 1.6449); }, 0.01, 0.0003},
               {"gamma(0.3)", [](auto& r) { return r.GammaDraw(0.3); },
                [](auto& r) { return r.Gamma(0.3, 1.0); }, 0.3, 0.02},
               {"gamma(1)", [](auto& r) { return r.GammaDraw(1.0); },
                [](auto& r) { return r.Gamma(1.0, 1.0); }, 1.0, 0.036},
               {"gamma(2.5, 4)", [](auto& r) { return r.GammaDraw(2.5, 4.0); },
                [](auto& r) { return r.Gamma(2.5, 4.0); }, 10.0, 0.23},
               {"beta(0.5, 3)", [](auto& r) { return r.BetaDraw(0.5, 3.0); },
                [](auto& r) { return r.Beta(0.5, 3.0); }, 1.0 / 7.0, 0.006}};
  for (const auto& [name, draw, expected, mean, tolerance] : cases) {
    Randomizer randomizer(1);
    Reference reference;
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
  randomizer.SetSeed(12345);  // does not forget the value that waits
  const double second = randomizer.NormalDraw();
  EXPECT_NE(second, first);
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
