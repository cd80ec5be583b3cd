#include <cfloat>
#include <memory>
#include <random>

#include "OrvaTestSupport.h"
#include "support/statistics/LumoMath.h"
#include "support/statistics/LumoMeasure.h"

namespace {

using Bins = std::vector<std::pair<double, double>>;  // values and weights

Bins GetBins(const LumoBinTable& table) {
  Bins bins;
  for (int i = 0; i < table.GetSize(); ++i)
    bins.emplace_back(table.GetValue(i), table.GetWeight(i));
  return bins;
}

std::vector<double> TakeValues(LumoQuantileTable* table) {
  const std::unique_ptr<LumoQuantileTable> owner(table);
  std::vector<double> values;
  for (int i = 0; i < table->GetNumberOfValues(); ++i) values.push_back(table->GetQuantile(i));
  return values;
}

// The rank of the i-th of n quantiles among N values, from 1: the least not below i N / (n + 1).
long GetRank(long i, long n, long total) { return (i * total + n) / (n + 1); }

// What the collapses of a sample of N values in b buffers of k do, level by level and without the
// values: when all are full, the last buffers of one level become one of the next level, as heavy
// as all of them. Gives the bound on the error of ranks: (sum of the weights of the collapses'
// results - their number - 1) / 2 + the largest weight at the end.
double GetRankErrorBound(long total, int b, int k) {
  struct Buffer {
    int level;
    long weight;
  };
  std::vector<Buffer> buffers;
  long sum = 0, number = 0, largest = 0;
  for (long filled = 0; filled < total; filled += k) {
    if (std::ssize(buffers) == b) {
      const int level = buffers.back().level;
      long weight = 0;
      for (; !buffers.empty() && buffers.back().level == level; buffers.pop_back()) {
        weight += buffers.back().weight;
      }
      buffers.push_back({level + 1, weight});
      sum += weight;
      ++number;
    }
    // The last empty buffer takes the level of the one before it.
    buffers.push_back({std::ssize(buffers) == b - 1 ? buffers.back().level : 0, 1});
  }
  for (const Buffer& buffer : buffers) largest = std::max(largest, buffer.weight);
  return static_cast<double>(sum - number - 1) / 2.0 + static_cast<double>(largest);
}

// Random values with ties, and the same in increasing and in decreasing order.
std::vector<std::vector<double>> MakeSamples(std::size_t size) {
  std::mt19937 random(7);
  std::vector<double> sample(size);
  for (double& x : sample) x = static_cast<double>(random() % 100000) - 50000.0;
  std::vector<double> increasing = sample;
  std::sort(increasing.begin(), increasing.end());
  return {sample, increasing, {increasing.rbegin(), increasing.rend()}};
}

}  // namespace

TEST(LumoMeasure, MomentsAndExtremes) {
  LumoMeasure measure("x");
  for (const double mean : {0.0, -2.0}) {  // without a value, and with one
    EXPECT_EQ(measure.ComputeMean(), mean);
    EXPECT_EQ(measure.ComputeStandardDeviation(), 0.0);
    EXPECT_EQ(measure.ComputeNinetyFivePercentConfidenceSlack(), 0.0);
    EXPECT_EQ(measure.ComputeNinetyFivePercentErrorFactor(), 0.0);
    EXPECT_EQ(measure.GetMinimumValue(), mean == 0.0 ? DBL_MAX : -2.0);
    EXPECT_EQ(measure.GetMaximumValue(), DBL_MIN);  // not -2: the least positive double stays
    measure.AddValue(-2.0);
  }
  measure.Reset();
  EXPECT_EQ(measure.GetLastValue(), -2.0);  // the one that stays
  // Sum 40, sum of squares 232; variance (232 - 40 × 5) / 7.
  for (const double x : {2.0, 4.0, 4.0, 4.0, 5.0, 5.0, 7.0, 9.0}) measure.AddValue(x);
  const double deviation = std::sqrt(32.0 / 7.0);
  EXPECT_EQ(measure.ComputeMean(), 5.0);
  EXPECT_DOUBLE_EQ(measure.ComputeStandardDeviation(), deviation);
  EXPECT_DOUBLE_EQ(measure.ComputeNinetyFivePercentConfidenceSlack(),
                   1.96 * deviation / std::sqrt(8.0));
  EXPECT_DOUBLE_EQ(measure.ComputeNinetyFivePercentErrorFactor(), std::exp(1.96 * deviation));
  EXPECT_EQ(measure.GetMinimumValue(), 2.0);
  EXPECT_EQ(measure.GetMaximumValue(), 9.0);
}

TEST(LumoMeasure, ImportsAndFeedsOthers) {
  LumoMeasure source("x"), imported("y"), expected("z");
  for (LumoMeasure* measure : {&imported, &expected}) measure->AddValue(4.0);
  source.CreateQuantilizer(100);
  EXPECT_EQ(source.GetQuantilizer()->GetSizeOfBuffers(), 400);
  source.CreateQuantilizer(3, 2);
  source.CreateBinTable(4, 1);
  imported.Import(&source, -2.0, 3.0);  // nothing yet
  for (const double x : {6.0, 1.0, 2.0}) {
    source.AddValue(x);
    expected.AddValue(-2.0 * x + 3.0);
  }
  imported.Import(&source, -2.0, 3.0);
  EXPECT_EQ(imported.GetNumberOfValues(), 4);
  EXPECT_DOUBLE_EQ(imported.ComputeMean(), expected.ComputeMean());
  EXPECT_DOUBLE_EQ(imported.ComputeStandardDeviation(), expected.ComputeStandardDeviation());
  EXPECT_EQ(imported.GetLastValue(), expected.GetLastValue());
  EXPECT_EQ(imported.GetMinimumValue() + imported.GetMaximumValue(), -9.0 + 4.0);
  const std::unique_ptr<LumoMeasure> copy(source.Copy());
  source.Reset();  // empties both and keeps them
  EXPECT_EQ(source.GetBinTable()->GetSize(), 0);
  EXPECT_TRUE(TakeValues(source.GetQuantilizer()->ExtractQuantiles(1)).empty());
  EXPECT_EQ(copy->GetBinTable()->GetSize(), 3);
  EXPECT_EQ(TakeValues(copy->GetQuantilizer()->ExtractQuantiles(1)), std::vector{2.0});
}

TEST(LumoBinTable, MergesIntoBinsOfEqualWeight) {
  const struct {
    std::vector<double> values;
    int k;
    Bins bins;
  } cases[] = {
      {{6, 1, 3, 5, 2, 4}, 2, {{2, 3}, {5, 3}}},
      // Bins of weight 1.5: 1 and half of 2; the other half and 3; and so on.
      {{6, 1, 3, 5, 2, 4}, 4, {{4 / 3.0, 1.5}, {8 / 3.0, 1.5}, {13 / 3.0, 1.5}, {17 / 3.0, 1.5}}},
      {{6, 1, 3, 5, 2, 4}, 1, {{3.5, 6}}},
      {{6, 1, 3}, 7, {{6, 1}, {1, 1}, {3, 1}}},  // beyond the capacity: nothing happens
      // More bins than entries, w = 0.5: 1 closes a bin and leaves 0.5, at 2 that rest closes one
      // by itself and 2 is carried whole; at 3 a weight of 1 - 0.5 is given back, (2 - 0.5 × 3) /
      // 0.5 = 1, and 1.5 × 3 stays for the last bin.
      {{2, 3, 1}, 6, {{1, 0.5}, {1, 0.5}, {1, 0.5}, {3, 1.5}}},
      {{}, 3, {}}};
  for (const auto& [values, k, bins] : cases) {
    LumoBinTable table(2, 3);
    for (const double x : values) table.AddValue(x);
    table.Shrink(k);
    ASSERT_EQ(table.GetSize(), std::ssize(bins)) << k;
    for (int i = 0; i < table.GetSize(); ++i) {
      EXPECT_DOUBLE_EQ(table.GetValue(i), bins[static_cast<std::size_t>(i)].first) << k << ' ' << i;
      EXPECT_DOUBLE_EQ(table.GetWeight(i), bins[static_cast<std::size_t>(i)].second) << k;
    }
    EXPECT_EQ(table.GetWeight(), static_cast<double>(values.size()));
    for (const int i : {-1, table.GetSize(), 7, 1000}) EXPECT_EQ(table.GetValue(i), 0.0);
  }
}

TEST(LumoBinTable, ShrinksWhenAValueFindsItFull) {
  LumoBinTable table(2, 3);
  for (const double x : {6.0, 1.0, 3.0, 5.0, 2.0, 4.0}) table.AddValue(x);
  EXPECT_EQ(table.GetSize(), 6);
  table.AddValue(3.5);
  EXPECT_EQ(GetBins(table), (Bins{{2, 3}, {5, 3}, {3.5, 1}}));
  // Weight 7, w = 3.5: 2 × 3 and half of 3.5; the other half and 5 × 3.
  table.Shrink(2);
  EXPECT_EQ(GetBins(table), (Bins{{7.75 / 3.5, 3.5}, {16.75 / 3.5, 3.5}}));
  // Over many shrinks neither the weight nor the weighted sum gets lost.
  LumoBinTable many(20, 5);
  double sum = 0.0;
  const auto samples = MakeSamples(5003);
  for (const double x : samples[0]) many.AddValue(x), sum += x;
  double weight = 0.0, weightedSum = 0.0;
  for (const auto& [value, itsWeight] : GetBins(many)) {
    weight += itsWeight;
    weightedSum += value * itsWeight;
  }
  EXPECT_LE(many.GetSize(), 100);
  EXPECT_NEAR(weight, 5003.0, 1e-8);
  EXPECT_NEAR(weightedSum, sum, 1e-3);
}

// The mean of the sorted values between two places, each value being one unit long.
double GetMeanBetween(const std::vector<double>& sorted, double from, double to) {
  double sum = 0.0;
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    const auto start = static_cast<double>(i);
    sum += sorted[i] * std::max(0.0, std::min(start + 1.0, to) - std::max(start, from));
  }
  return sum / (to - from);
}

TEST(LumoQuantilizer, GivesOrderStatisticsWhileTheSampleFits) {
  for (const std::size_t size : {1U, 2U, 9U, 10U, 11U, 37U, 50U}) {
    const auto samples = MakeSamples(size);
    for (const auto& sample : samples) {
      LumoQuantilizer quantilizer(5, 10);
      for (const double x : sample) quantilizer.AddValue(x);
      for (const int n : {1, 3, 7}) {
        const auto bins = TakeValues(quantilizer.ExtractBins(n));
        const auto shares = TakeValues(quantilizer.ExtractDistribution(-30000.0, 20000.0, n));
        const auto sums =
            TakeValues(quantilizer.ExtractCumulativeDistribution(-30000.0, 20000.0, n));
        for (int i = 0; i < n; ++i) {
          const auto k = static_cast<std::size_t>(i);
          const double width = static_cast<double>(size) / n;
          EXPECT_NEAR(bins.at(k), GetMeanBetween(samples[1], i * width, (i + 1) * width), 1e-6);
          const auto countBelow = [&](int interval) {
            const double end = -30000.0 + 50000.0 * interval / n;
            return std::count_if(sample.begin(), sample.end(), [&](double x) { return x < end; });
          };
          const auto total = static_cast<double>(size);
          EXPECT_DOUBLE_EQ(sums.at(k) * total, static_cast<double>(countBelow(i + 1)));
          EXPECT_NEAR(shares.at(k) * total, static_cast<double>(countBelow(i + 1) - countBelow(i)),
                      1e-9);
        }
      }
      for (const int n : {1, 3, 4, 19, 99}) {
        const auto quantiles = TakeValues(quantilizer.ExtractQuantiles(n));
        ASSERT_EQ(std::ssize(quantiles), n);
        for (int i = 1; i <= n; ++i) {
          const long rank = GetRank(i, n, static_cast<long>(size));
          EXPECT_EQ(quantiles[static_cast<std::size_t>(i - 1)],
                    samples[1][static_cast<std::size_t>(rank - 1)])
              << size << ' ' << n << ' ' << i;
        }
      }
    }
  }
  LumoQuantilizer ends(1, 10);  // a value on an end lies behind it
  for (const double x : {0.0, 1.0, 2.0}) ends.AddValue(x);
  EXPECT_EQ(TakeValues(ends.ExtractCumulativeDistribution(0.0, 2.0, 2)),
            (std::vector{1 / 3.0, 2 / 3.0}));
  LumoQuantilizer empty(1, 10);
  EXPECT_EQ(empty.GetNumberOfBuffers(), 2);  // at least
  EXPECT_TRUE(TakeValues(empty.ExtractQuantiles(3)).empty());
}

TEST(LumoQuantilizer, KeepsRanksWithinTheBoundAfterTheBuffersOverflow) {
  const struct {
    int buffers;
    int size;
    std::size_t total;
  } cases[] = {{2, 100, 1000}, {5, 10, 1234}, {5, 100, 20007}, {8, 200, 50000}, {3, 7, 22}};
  for (const auto& [b, k, total] : cases) {
    const auto samples = MakeSamples(total);
    const std::vector<double>& sorted = samples[1];
    const double bound = GetRankErrorBound(static_cast<long>(total), b, k);
    ASSERT_LT(bound, static_cast<double>(total) * 0.3);  // it says something
    for (const auto& sample : samples) {
      LumoQuantilizer quantilizer(b, k);
      for (std::size_t i = 0; i < total; ++i) {
        quantilizer.AddValue(sample[i]);
        // Looking at the quantiles in between changes nothing later on.
        if (i % 777 == 0) TakeValues(quantilizer.ExtractQuantiles(9));
      }
      const auto quantiles = TakeValues(quantilizer.ExtractQuantiles(99));
      ASSERT_EQ(quantiles.size(), 99U);
      for (int i = 1; i <= 99; ++i) {
        // The value stands at all ranks lowest .. highest; the nearest one counts.
        const double x = quantiles[static_cast<std::size_t>(i - 1)];
        const auto [first, last] = std::equal_range(sorted.begin(), sorted.end(), x);
        ASSERT_NE(first, last);
        const auto rank = static_cast<double>(GetRank(i, 99, static_cast<long>(total)));
        const auto lowest = static_cast<double>(first - sorted.begin() + 1);
        const auto highest = static_cast<double>(last - sorted.begin());
        EXPECT_LE(std::max(lowest - rank, rank - highest), bound) << b << ' ' << k << ' ' << i;
      }
      EXPECT_TRUE(std::is_sorted(quantiles.begin(), quantiles.end()));
      EXPECT_EQ(TakeValues(quantilizer.ExtractQuantiles(99)), quantiles);
    }
  }
}

TEST(LumoMath, BinomialCoefficientsAndTheGammaLaw) {
  for (int n = 1; n <= 30; ++n) {
    for (int k = -1; k <= n + 1; ++k) {  // Pascal's rule
      const double expected =
          k == 0 ? 1.0 : LumoMath::Binomial(k, n - 1) + LumoMath::Binomial(k - 1, n - 1);
      EXPECT_EQ(LumoMath::Binomial(k, n), expected) << k << ' ' << n;
    }
  }
  EXPECT_EQ(LumoMath::Binomial(0, 0), 1.0);
  EXPECT_NEAR(LumoMath::Gamma(5.0), 24.0, 1e-11);
  EXPECT_NEAR(LumoMath::Gammaln(0.5), 0.5 * std::log(LumoMath::Pi()), 1e-12);
  // Shape 3, scale 2: x² exp(-x / 2) / (2! 2³).
  EXPECT_NEAR(LumoMath::GammaDensity(4.0, 3.0, 2.0), std::exp(-2.0), 1e-14);
  EXPECT_EQ(LumoMath::GammaDensity(-1.0, 3.0, 2.0), 0.0);
}
