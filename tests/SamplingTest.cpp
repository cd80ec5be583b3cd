// Uncertainty analysis: what the engine samples, against a computation of its own here.

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "OrvaTestSupport.h"
#include "model/OrvaParameter.h"
#include "quantification/OrvaHandle.h"
#include "support/random/LumoCongruentialRandomizer.h"
#include "support/statistics/LumoMeasure.h"

namespace {

// The parameters, in the order in which the events lead to them: u, n, sum, l, b, g, h. The events
// a to f take them, g to m have deviates of their own; that of n, and the mean of o, stand below
// another node and are never drawn.
constexpr const char* MODEL = R"(TOP = or(a,b,c,d,e,f,AND,i,j,k,m,n,o); AND = and(g,h);
  #a = u; #b = mul(sum,0.5); #c = exponential(l,time); #d = b; #e = g; #f = h;
  #g = uniform-deviate(0.1,0.5); #h = normal-deviate(0.1,0.1);
  #i = lognormal-deviate(0.01,5,0.9); #j = beta-deviate(0.5,9.5); #k = gamma-deviate(3,0.01);
  #m = histogram(1,bin(2,0.02),bin(5,0.01)); #n = mul(2,uniform-deviate(0.01,0.03));
  #o = normal-deviate(uniform-deviate(0.01,0.03),0.001);
  $u = uniform-deviate(0.01,0.03); $sum = add(n,u); $n = normal-deviate(0.02,0.03);
  $l = lognormal-deviate(0.01,3,0.95); $b = beta-deviate(2,30); $g = gamma-deviate(0.5,0.04);
  $h = histogram(0,bin(0.2,0.01),bin(0.5,0.02),bin(1,0.03)))";
constexpr const char* PARAMETERS[] = {"u", "n", "sum", "l", "b", "g", "h"};
constexpr const char* EVENTS[] = {"a", "b", "c", "d", "e", "f", "g",
                                  "h", "i", "j", "k", "m", "n", "o"};
constexpr double DATE = 5.0;

// One trial: the values of the parameters and the events in their order, and the top event's.
struct Trial {
  std::vector<double> parameters, events, top;
};

Trial Compute(LumoRandomizer& draw) {
  Trial trial;
  const double u = draw.UniformDraw(0.01, 0.03);
  const double n = draw.NormalDraw(0.02, 0.03);
  const double l = draw.LognormalDraw(0.01, 3.0, 0.95);
  const double b = draw.BetaDraw(2.0, 30.0);
  const double g = draw.GammaDraw(0.5, 0.04);
  const double place = draw.UniformDraw();
  const double h = place <= 0.2 ? 0.01 : place <= 0.5 ? 0.02 : 0.03;
  trial.parameters = {u, n, n + u, l, b, g, h};
  trial.events = {u,
                  0.5 * (n + u),
                  1.0 - std::exp(-l * DATE),
                  b,
                  g,
                  h,
                  draw.UniformDraw(0.1, 0.5),
                  draw.NormalDraw(0.1, 0.1),
                  draw.LognormalDraw(0.01, 5.0, 0.9),
                  draw.BetaDraw(0.5, 9.5),
                  draw.GammaDraw(3.0, 0.01),
                  draw.UniformDraw(1.0, 5.0) <= 2.0 ? 0.02 : 0.01,
                  0.04,
                  draw.NormalDraw(0.02, 0.001)};
  double sum = 0.0;
  for (std::size_t i = 0; i < trial.events.size(); ++i) {
    trial.events[i] = std::clamp(trial.events[i], 0.0, 1.0);
    if (i != 6 && i != 7) sum += trial.events[i];
  }
  trial.top = {std::min(sum + trial.events[6] * trial.events[7], 1.0)};
  return trial;
}

class SamplingTest : public testing::Test {
 protected:
  SamplingTest() {
    engine.Define(MODEL);
    engine.MustRun(
        "<set><option name=\"top-event\" value=\"TOP\"/>"
        "<option name=\"mission-time\" value=\"5\"/></set><build><minimal-cutsets/></build>");
    handle = engine.GetEvent("TOP")->GetHandle("MCS");
  }
  // Runs a sensitivity command; gives the fields of its table.
  std::vector<std::vector<std::string>> Sample(const std::string& options) {
    engine.MustRun("<compute><sensitivity output=\"sampling.txt\" " + options + "/></compute>");
    return OrvaTestEngine::ReadTable("sampling.txt");
  }

  OrvaTestEngine engine;
  OrvaHandle* handle = nullptr;
  LumoCongruentialRandomizer randomizer{1};  // drawn as the engine's
};

void ExpectClose(const std::string& field, double expected) {
  EXPECT_NEAR(std::stod(field), expected, 1e-5 * std::fabs(expected) + 1e-8);
}

void ExpectMoments(const std::vector<std::string>& row, const std::string& name,
                   const std::vector<double>& sample) {
  ASSERT_EQ(row.size(), 7u);
  EXPECT_EQ(row[0], name);
  EXPECT_EQ(row[1], "");
  const double n = static_cast<double>(sample.size());
  double mean = 0.0, squares = 0.0;
  for (const double x : sample) mean += x / n;
  for (const double x : sample) squares += (x - mean) * (x - mean);
  const double deviation = n > 1 ? std::sqrt(squares / (n - 1.0)) : 0.0;
  const double slack = 1.96 * deviation / std::sqrt(std::max(n, 1.0));
  ExpectClose(row[2], mean);
  ExpectClose(row[3], deviation);
  ExpectClose(row[4], mean - slack);
  ExpectClose(row[5], mean + slack);
  ExpectClose(row[6], n > 1 ? std::exp(1.96 * deviation) : 0.0);
}

TEST_F(SamplingTest, MomentsQuantilesAndBinsAreThoseOfTheSample) {
  constexpr std::size_t TRIALS = 200;
  const std::vector<std::string> heading = {
      "", "mean", "standard-deviation", "confidence-range", "", "error-factor"};
  // The second and the third run go on in the sequence of draws. As many quantiles as trials are
  // the sorted sample.
  for (const auto& [quantiles, bins] : {std::pair(200, 8), {10, 7}, {0, 0}}) {
    const auto rows = Sample(
        "number-of-tries=\"200\" print-parameter-sensitivity=\"on\""
        " print-basic-event-sensitivity=\"on\" number-of-quantiles=\"" +
        std::to_string(quantiles) + "\" number-of-bins=\"" + std::to_string(bins) + "\"");
    std::vector<Trial> trials;
    for (std::size_t i = 0; i < TRIALS; ++i) trials.push_back(Compute(randomizer));
    auto row = rows.begin();
    std::vector<double> sample(TRIALS);
    const auto expectTable = [&](const char* kind, std::size_t size, const char* const* names,
                                 std::vector<double> Trial::*values) {
      std::vector<std::string> header = heading;
      header[0] = kind;
      ASSERT_GT(rows.end() - row, static_cast<int>(size));
      EXPECT_EQ(*row++, header);
      for (std::size_t i = 0; i < size; ++i) {
        for (std::size_t k = 0; k < TRIALS; ++k) sample[k] = (trials[k].*values)[i];
        ExpectMoments(*row++, names[i], sample);
      }
    };
    const char* const top[] = {"TOP"};
    expectTable("parameter", std::size(PARAMETERS), PARAMETERS, &Trial::parameters);
    expectTable("basic-event", std::size(EVENTS), EVENTS, &Trial::events);
    expectTable("top-event", 1, top, &Trial::top);
    std::sort(sample.begin(), sample.end());
    ASSERT_EQ(rows.end() - row, quantiles == 0 ? 0 : quantiles + bins + 2);
    if (quantiles == 0) continue;
    EXPECT_EQ(*row++, (std::vector<std::string>{"quantile", "value"}));
    for (int i = 1; i <= quantiles; ++i, ++row) {
      EXPECT_EQ(row->at(0), std::to_string(i));
      const double rank = std::ceil(static_cast<double>(i) * TRIALS / (quantiles + 1.0));
      ExpectClose(row->at(1), sample[static_cast<std::size_t>(rank) - 1]);
    }
    EXPECT_EQ(*row++, (std::vector<std::string>{"bin", "value"}));
    // Bin i is the mean of what lies between its ends (i - 1) w and i w, each value one unit long.
    const double w = static_cast<double>(TRIALS) / bins;
    for (int i = 1; i <= bins; ++i, ++row) {
      EXPECT_EQ(row->at(0), std::to_string(i));
      double sum = 0.0;
      for (std::size_t k = 0; k < TRIALS; ++k) {
        const auto start = static_cast<double>(k);
        sum +=
            sample[k] * std::max(0.0, std::min(start + 1.0, i * w) - std::max(start, (i - 1) * w));
      }
      ExpectClose(row->at(1), sum / w);
    }
  }
}

TEST_F(SamplingTest, MeasuresThatAreNotPrintedAreNotReset) {
  Sample("number-of-tries=\"1\" number-of-bins=\"0\" print-basic-event-sensitivity=\"on\"");
  const LumoMeasure* measure = engine.GetEvent("g")->GetMeasure();
  const double last = measure->GetLastValue();
  Sample("number-of-tries=\"0\" number-of-bins=\"0\" print-mean=\"off\"");
  EXPECT_EQ(OrvaTestEngine::ReadFile("sampling.txt"),
            "top-event\tstandard-deviation\tconfidence-range\t\terror-factor\nTOP\t\t0\t0\t0\t0\n");
  Sample("number-of-tries=\"5\"");
  EXPECT_EQ(measure->GetNumberOfValues(), 1);  // the one of the first run
  EXPECT_EQ(measure->GetLastValue(), last);
}

// At the central values: u = n = 0.02, l = 0.01, b = 1 / 16, g = 0.02, h = 0.023; the sum of the
// events is that of a to f and, of those with deviates of their own, g h = 0.03 and the others.
TEST_F(SamplingTest, OtherCommandsReturnToTheCentralValues) {
  const double central = 0.02 + 0.02 + (1 - std::exp(-0.05)) + 0.0625 + 0.02 + 0.023 + 0.03 + 0.01 +
                         0.05 + 0.03 + 0.0125 + 0.04 + 0.02;
  for (const std::string command :
       {"compute><probability", "compute><probability first-date=\"5\" last-date=\"5\"",
        "compute><importance-factors",
        "compute><failure-intensity last-date=\"5\" smooth-curve=\"off\"",
        "print><minimal-cutsets"}) {
    Sample("number-of-tries=\"3\"");
    for (int i = 0; i < 2; ++i) Compute(randomizer);
    // The last trial stays drawn until then.
    for (const double expected : {Compute(randomizer).top[0], central}) {
      handle->ComputeTopEventProbability(DATE);
      EXPECT_NEAR(handle->GetTopEventProbability(), expected, 1e-12) << command;
      engine.MustRun("<" + command + " output=\"sampling-1.txt\"/></" +
                     command.substr(0, command.find('>') + 1));
    }
  }
}

}  // namespace
