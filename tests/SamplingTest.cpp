// Uncertainty analysis: what the engine samples, against a computation of its own here.

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "OrvaTestSupport.h"
#include "model/OrvaParameter.h"
#include "quantification/OrvaHandle.h"
#include "support/random/LumoRandomizer.h"
#include "support/statistics/LumoMeasure.h"

namespace {

// The parameters, in the order in which the events lead to them: u, n, sum, l, b, g, h. The events
// a to f take them, g to m have deviates of their own; that of n, and the mean of o, stand below
// another node and are never drawn.
constexpr const char* MODEL = R"(
  <define-gate name="TOP"><or><basic-event name="a"/><basic-event name="b"/><basic-event name="c"/>
    <basic-event name="d"/><basic-event name="e"/><basic-event name="f"/><gate name="AND"/>
    <basic-event name="i"/><basic-event name="j"/><basic-event name="k"/><basic-event name="m"/>
    <basic-event name="n"/><basic-event name="o"/></or></define-gate>
  <define-gate name="AND"><and><basic-event name="g"/><basic-event name="h"/></and></define-gate>
  <define-basic-event name="a"><parameter name="u"/></define-basic-event>
  <define-basic-event name="b"><mul><parameter name="sum"/><float value="0.5"/></mul>
    </define-basic-event>
  <define-basic-event name="c"><exponential><parameter name="l"/><mission-time/></exponential>
    </define-basic-event>
  <define-basic-event name="d"><parameter name="b"/></define-basic-event>
  <define-basic-event name="e"><parameter name="g"/></define-basic-event>
  <define-basic-event name="f"><parameter name="h"/></define-basic-event>
  <define-basic-event name="g"><uniform-deviate><float value="0.1"/><float value="0.5"/>
    </uniform-deviate></define-basic-event>
  <define-basic-event name="h"><normal-deviate><float value="0.1"/><float value="0.1"/>
    </normal-deviate></define-basic-event>
  <define-basic-event name="i"><lognormal-deviate><float value="0.01"/><int value="5"/>
    <float value="0.9"/></lognormal-deviate></define-basic-event>
  <define-basic-event name="j"><beta-deviate><float value="0.5"/><float value="9.5"/>
    </beta-deviate></define-basic-event>
  <define-basic-event name="k"><gamma-deviate><float value="3"/><float value="0.01"/>
    </gamma-deviate></define-basic-event>
  <define-basic-event name="m"><histogram><float value="1"/><bin><int value="2"/>
    <float value="0.02"/></bin><bin><int value="5"/><float value="0.01"/></bin></histogram>
    </define-basic-event>
  <define-basic-event name="n"><mul><int value="2"/><uniform-deviate><float value="0.01"/>
    <float value="0.03"/></uniform-deviate></mul></define-basic-event>
  <define-basic-event name="o"><normal-deviate><uniform-deviate><float value="0.01"/>
    <float value="0.03"/></uniform-deviate><float value="0.001"/></normal-deviate>
    </define-basic-event>
  <define-parameter name="u"><uniform-deviate><float value="0.01"/><float value="0.03"/>
    </uniform-deviate></define-parameter>
  <define-parameter name="sum"><add><parameter name="n"/><parameter name="u"/></add>
    </define-parameter>
  <define-parameter name="n"><normal-deviate><float value="0.02"/><float value="0.03"/>
    </normal-deviate></define-parameter>
  <define-parameter name="l"><lognormal-deviate><float value="0.01"/><float value="3"/>
    <float value="0.95"/></lognormal-deviate></define-parameter>
  <define-parameter name="b"><beta-deviate><int value="2"/><int value="30"/></beta-deviate>
    </define-parameter>
  <define-parameter name="g"><gamma-deviate><float value="0.5"/><float value="0.04"/>
    </gamma-deviate></define-parameter>
  <define-parameter name="h"><histogram><int value="0"/><bin><float value="0.2"/>
    <float value="0.01"/></bin><bin><float value="0.5"/><float value="0.02"/></bin><bin>
    <int value="1"/><float value="0.03"/></bin></histogram></define-parameter>)";
constexpr const char* PARAMETERS[] = {"u", "n", "sum", "l", "b", "g", "h"};
constexpr const char* EVENTS[] = {"a", "b", "c", "d", "e", "f", "g",
                                  "h", "i", "j", "k", "m", "n", "o"};
constexpr double DATE = 5.0;

using Bins = std::vector<std::pair<double, double>>;  // upper bounds and values

// Deviates from x' = 16807 x mod 2^31 - 1, masked.
class Sampled {
 public:
  double Uniform(double a, double b) { return a + (b - a) * Uniform(); }
  double Normal(double mean, double deviation) { return mean + deviation * Normal(); }
  double Lognormal(double mean, double errorFactor, double score) {
    const double sigma = std::log(errorFactor) / score;
    return std::exp(Normal(std::log(mean) - 0.5 * sigma * sigma, sigma));
  }
  double Beta(double a, double b) {
    const double x = Gamma(a, 1.0);
    return x / (x + Gamma(b, 1.0));
  }
  // Marsaglia and Tsang.
  double Gamma(double k, double theta) {
    if (k < 1.0) {
      const double u = Uniform();
      return theta * (Gamma(1.0 + k, 1.0) * std::pow(u, 1.0 / k));
    }
    const double d = k - 1.0 / 3.0;
    for (;;) {
      const double x = Normal();
      const double v = std::pow(1.0 + x / (3.0 * std::sqrt(d)), 3.0);
      if (v <= 0.0) continue;
      const double u = Uniform();
      if (u < 1.0 - 0.0331 * std::pow(x, 4.0) ||
          std::log(u) < 0.5 * x * x + d * (1.0 - v + std::log(v))) {
        return theta * (d * v);
      }
    }
  }
  double Histogram(double low, const Bins& bins) {
    const double u = Uniform(low, bins.back().first);
    for (const auto& [bound, value] : bins) {
      if (bound >= u) return value;
    }
    return bins.back().second;
  }

 private:
  static constexpr long MODULUS = 2147483647;
  static constexpr long MASK = 123459876;
  double Uniform() {
    _state = 16807 * (_state ^ MASK) % MODULUS ^ MASK;
    return static_cast<double>(_state) / static_cast<double>(MODULUS);
  }
  // Marsaglia's polar method.
  double Normal() {
    if (_waiting != 0.0) return std::exchange(_waiting, 0.0);
    for (;;) {
      const double x = 2.0 * Uniform() - 1.0;
      const double y = 2.0 * Uniform() - 1.0;
      const double s = x * x + y * y;
      if (!(0.0 < s && s < 1.0)) continue;
      const double f = std::sqrt(-2.0 * std::log(s) / s);
      _waiting = y * f;
      return x * f;
    }
  }

  long _state = 12345;
  double _waiting = 0.0;
};

// The values that stand when nothing is drawn.
struct Central {
  double Uniform(double a, double b) { return (a + b) / 2.0; }
  double Normal(double mean, double) { return mean; }
  double Lognormal(double mean, double, double) { return mean; }
  double Beta(double a, double b) { return a / (a + b); }
  double Gamma(double k, double theta) { return k * theta; }
  double Histogram(double low, const Bins& bins) {
    double sum = 0.0;
    double last = low;
    for (const auto& [bound, value] : bins) sum += value * (bound - std::exchange(last, bound));
    return sum / (last - low);
  }
};

// One trial: the values of the parameters and the events in their order, and the top event's.
struct Trial {
  std::vector<double> parameters, events, top;
};

template <class Deviates>
Trial Compute(Deviates& draw) {
  Trial trial;
  const double u = draw.Uniform(0.01, 0.03);
  const double n = draw.Normal(0.02, 0.03);
  const double l = draw.Lognormal(0.01, 3.0, 1.9599);
  const double b = draw.Beta(2.0, 30.0);
  const double g = draw.Gamma(0.5, 0.04);
  const double h = draw.Histogram(0.0, {{0.2, 0.01}, {0.5, 0.02}, {1.0, 0.03}});
  trial.parameters = {u, n, n + u, l, b, g, h};
  trial.events = {u, 0.5 * (n + u), 1.0 - std::exp(-l * DATE), b, g, h};
  trial.events.push_back(draw.Uniform(0.1, 0.5));
  trial.events.push_back(draw.Normal(0.1, 0.1));
  trial.events.push_back(draw.Lognormal(0.01, 5.0, 1.6449));
  trial.events.push_back(draw.Beta(0.5, 9.5));
  trial.events.push_back(draw.Gamma(3.0, 0.01));
  trial.events.push_back(draw.Histogram(1.0, {{2.0, 0.02}, {5.0, 0.01}}));
  trial.events.push_back(0.04);
  trial.events.push_back(draw.Normal(0.02, 0.001));
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
    EXPECT_EQ(engine.Load(MODEL), 0) << engine.GetErrors();
    Run("<set><option name=\"top-event\" value=\"TOP\"/>"
        "<option name=\"mission-time\" value=\"5\"/></set><build><minimal-cutsets/></build>");
    handle = engine.GetEvent("TOP")->GetHandle("MCS");
  }
  void Run(const std::string& commands) {
    EXPECT_EQ(engine.Run(commands), 0) << engine.GetErrors();
  }
  // Runs a sensitivity command; gives the fields of its table.
  std::vector<std::vector<std::string>> Sample(const std::string& options) {
    Run("<compute><sensitivity output=\"sampling.txt\" " + options + "/></compute>");
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(OrvaTestEngine::ReadFile("sampling.txt"));
    for (std::string line; std::getline(lines, line);) {
      std::istringstream fields(line);
      rows.emplace_back();
      for (std::string field; std::getline(fields, field, '\t');) rows.back().push_back(field);
    }
    return rows;
  }

  OrvaTestEngine engine;
  OrvaHandle* handle = nullptr;
  Sampled sampled;
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

TEST_F(SamplingTest, EveryTrialDrawsParametersThenEvents) {
  for (int i = 0; i < 300; ++i) {
    const Trial trial = Compute(sampled);
    handle->PerformSensitivityAnalysisOnTopEventProbability(DATE, 1, engine->GetRandomizer(), 0, 0,
                                                            true, true);
    std::size_t p = 0;
    for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(*handle->GetParameters())) {
      ASSERT_STREQ(parameter->GetName(), PARAMETERS[p]);
      ASSERT_NEAR(parameter->GetMeasure()->GetLastValue(), trial.parameters[p], 1e-12) << i;
      ++p;
    }
    std::size_t e = 0;
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(*handle->GetBasicEvents())) {
      ASSERT_STREQ(event->GetName(), EVENTS[e]);
      ASSERT_NEAR(event->GetMeasure()->GetLastValue(), trial.events[e], 1e-12) << EVENTS[e] << i;
      ++e;
    }
    ASSERT_EQ(p + e, std::size(PARAMETERS) + std::size(EVENTS));
    ASSERT_NEAR(handle->GetTopEvent()->GetMeasure()->GetLastValue(), trial.top[0], 1e-12);
  }
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
    for (std::size_t i = 0; i < TRIALS; ++i) trials.push_back(Compute(sampled));
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

TEST_F(SamplingTest, FewTrialsAndMeasuresThatAreNotReset) {
  auto rows = Sample(
      "number-of-tries=\"1\" number-of-bins=\"0\""
      " print-basic-event-sensitivity=\"on\"");
  ASSERT_EQ(rows.size(), 17u);
  ExpectMoments(rows[16], "TOP", Compute(sampled).top);
  const LumoMeasure* measure = engine.GetEvent("g")->GetMeasure();
  const double last = measure->GetLastValue();
  rows = Sample("number-of-tries=\"0\" number-of-bins=\"0\" print-mean=\"off\"");
  EXPECT_EQ(OrvaTestEngine::ReadFile("sampling.txt"),
            "top-event\tstandard-deviation\tconfidence-range\t\terror-factor\nTOP\t\t0\t0\t0\t0\n");
  EXPECT_EQ(engine.GetEvent("TOP")->GetMeasure()->GetNumberOfValues(), 0);
  Sample("number-of-tries=\"5\"");
  EXPECT_EQ(measure->GetNumberOfValues(), 1);  // the one of the first run
  EXPECT_EQ(measure->GetLastValue(), last);
}

TEST_F(SamplingTest, OtherCommandsReturnToTheCentralValues) {
  Central none;
  const Trial central = Compute(none);
  for (const std::string command :
       {"<compute><probability output=\"sampling-1.txt\"/></compute>",
        "<compute><probability output=\"sampling-1.txt\" first-date=\"5\" "
        "last-date=\"5\"/></compute>",
        "<compute><importance-factors output=\"sampling-1.txt\"/></compute>",
        "<compute><failure-intensity output=\"sampling-1.txt\" last-date=\"5\" "
        "smooth-curve=\"off\"/>"
        "</compute>",
        "<print><minimal-cutsets output=\"sampling-1.txt\"/></print>"}) {
    Sample("number-of-tries=\"3\"");
    for (int i = 0; i < 2; ++i) Compute(sampled);
    const Trial last = Compute(sampled);
    // The last trial stays drawn until then.
    handle->ComputeTopEventProbability(DATE);
    EXPECT_NEAR(handle->GetTopEventProbability(), last.top[0], 1e-12);
    Run(command);
    for (std::size_t e = 0; e < std::size(EVENTS); ++e) {
      EXPECT_NEAR(engine.GetEvent(EVENTS[e])->GetProbability(), central.events[e], 1e-12)
          << command << EVENTS[e];
    }
    handle->ComputeTopEventProbability(DATE);
    EXPECT_NEAR(handle->GetTopEventProbability(), central.top[0], 1e-12) << command;
  }
}

}  // namespace
