#include <functional>
#include <limits>
#include <memory>

#include "OrvaTestSupport.h"
#include "support/random/LumoCongruentialRandomizer.h"

using Randomizer = LumoCongruentialRandomizer;

constexpr long MODULUS = 2147483647;
constexpr long MASK = 123459876;

TEST(LumoCongruentialRandomizer, FollowsTheRecurrence) {
  const std::pair<int, long> kinds[] = {{0, 16807}, {1, 16807}, {2, 48271},
                                        {3, 69621}, {4, 16807}, {-1, 16807}};
  for (const auto& [kind, multiplier] : kinds) {
    Randomizer randomizer(kind);
    EXPECT_EQ(randomizer.GetSeed(), 12345);
    for (const long seed : {12345L, 0L, 1L, 2147483646L, MASK}) {  // which stays on the mask
      randomizer.SetSeed(seed);
      long state = seed ^ MASK;
      for (int i = 0; i < 200; ++i) {
        state = multiplier * state % MODULUS;
        ASSERT_EQ(randomizer.Draw(), state ^ MASK) << kind << ' ' << seed << ' ' << i;
      }
    }
  }
  // The check value that was published for 16807 without a mask: the 10000th number from 1 on.
  Randomizer plain(MODULUS, 16807, 0);
  plain.SetSeed(1);
  for (int i = 1; i < 10000; ++i) plain.Draw();
  EXPECT_EQ(plain.Draw(), 1043618065);
}

// The first draw and the sum of a thousand, from the published algorithms written anew elsewhere.
TEST(LumoCongruentialRandomizer, DrawsTheDeviatesOfThePublishedAlgorithms) {
  const struct {
    std::function<double(Randomizer&)> draw;
    double first, sum;
  } rows[] = {{[](auto& r) { return r.UniformDraw(3.0, 1.0); }, 2.42976866170288, 1998.10351647535},
              {[](auto& r) { return r.ExponentialDraw(); }, 0.833609857154195, 954.847687353088},
              {[](auto& r) { return r.NormalDraw(3.0, 0.5); }, 2.71395901715101, 3009.8936008259},
              {[](auto& r) { return r.LognormalDraw(0.01, 3.0, 0.9); }, 0.00546005423041006,
               10.3233502995127},
              {[](auto& r) { return r.GammaDraw(0.3); }, 0.0398262762941693, 297.639017685215},
              {[](auto& r) { return r.GammaDraw(1.0); }, 0.30016337723315, 1083.88763423892},
              {[](auto& r) { return r.GammaDraw(2.5, 4.0); }, 5.71586554226652, 10393.5020023983},
              {[](auto& r) { return r.BetaDraw(0.5, 3.0); }, 0.0798743189836574, 141.184737977644}};
  for (const auto& [draw, first, sum] : rows) {
    Randomizer randomizer(1);
    double found = draw(randomizer);
    EXPECT_NEAR(found, first, 1e-14 * first);
    for (int i = 1; i < 1000; ++i) found += draw(randomizer);
    EXPECT_NEAR(found, sum, 1e-11 * sum) << first;
  }
}

// The masked state is returned, so that both ends of [0, 1] occur: 0 for the state that equals the
// mask, 1 for the state that differs from it in every bit. These seeds come before them.
TEST(LumoCongruentialRandomizer, ReachesBothEndsOfTheUnitInterval) {
  Randomizer randomizer(1);
  const std::pair<long, double> ends[] = {{529411685, 1.90755691069217},
                                          {1618071962, 0.0418606715682537}};
  for (const auto& [seed, exponential] : ends) {
    const double end = seed == 529411685 ? 0.0 : 1.0;
    randomizer.SetSeed(seed);
    EXPECT_EQ(randomizer.UniformDraw(), end);
    randomizer.SetSeed(seed);
    EXPECT_EQ(randomizer.DrawModulo(10), 10.0 * end);
    randomizer.SetSeed(seed);
    EXPECT_NEAR(randomizer.ExponentialDraw(), exponential, 1e-14);
  }
  // The polar method refuses every point that this seed gives; the draw must still end.
  randomizer.SetSeed(MASK);
  randomizer.NormalDraw();
}

TEST(LumoCongruentialRandomizer, KeepsTheSecondNormalValue) {
  Randomizer randomizer(1);
  const double first = randomizer.NormalDraw();
  randomizer.SetSeed(12345);  // does not forget the value that waits
  EXPECT_NE(randomizer.NormalDraw(), first);
  EXPECT_EQ(randomizer.GetSeed(), 12345);
  EXPECT_EQ(randomizer.NormalDraw(), first);
  randomizer.ResetNormalDrawValue();
  randomizer.SetSeed(12345);
  EXPECT_EQ(randomizer.NormalDraw(), first);
  Randomizer fresh(MODULUS, 48271, 5);
  randomizer.Initialize(MODULUS, 48271, 5);  // forgets it and takes the first seed
  EXPECT_EQ(randomizer.NormalDraw(), fresh.NormalDraw());
  const std::unique_ptr<LumoRandomizer> copy(randomizer.Copy());
  copy->SetSeed(12345);
  EXPECT_EQ(copy->Draw(), (48271L * (12345 ^ 5) % MODULUS) ^ 5);
}

TEST(LumoRandomizer, StandardScoresOfTheNextTabulatedLevel) {
  const std::pair<double, double> rows[] = {{0.5, 0.6745},  {0.68269, 1.0},  {0.9, 1.6449},
                                            {0.95, 1.9599}, {0.9545, 2.0},   {0.99, 2.5759},
                                            {0.9973, 3.0},  {0.999, 3.2905}, {0.9999, 3.8906},
                                            {0.99993, 4.0}, {1.0, 4.4172}};
  double below = -1.0;
  for (const auto& [level, score] : rows) {
    EXPECT_EQ(LumoRandomizer::StandardScore(level), score);
    EXPECT_EQ(LumoRandomizer::StandardScore(std::nextafter(below, 2.0)), score);
    below = level;
  }
  EXPECT_EQ(LumoRandomizer::StandardScore(std::numeric_limits<double>::quiet_NaN()), 4.4172);
}
