// Random models, solved by the engine and by methods that know nothing of the search.

#include "OrvaRandomModels.h"

namespace {

constexpr double MOST_CUTSETS = 5000.0;
constexpr int NO_LIMIT = 1000;

// The cost of one of the cutsets, drawn among the cheapest, or less where too many cost no more.
int DrawLimit(OrvaRandomModel& model, const std::vector<double>& counts) {
  const double total = std::accumulate(counts.begin(), counts.end(), 0.0);
  const int rank = model.Draw(static_cast<int>(std::min(total, 500.0)));
  double sum = counts[0];
  int limit = 0;
  while (sum <= rank) sum += counts[static_cast<std::size_t>(++limit)];
  return sum <= MOST_CUTSETS ? limit : limit - 1;
}

// What is kept depends on the final cutset alone, whatever modules it passed through: its order
// must not exceed the limit and its probability must reach it, since the order and the highest
// probability of a module's cutsets bound those of what contains it.
TEST(RandomModels, SearchDiagramsAndBruteForceAgree) {
  std::mt19937 random(3);
  int withModules = 0, withoutLimits = 0, truncated = 0;
  for (int trial = 0; trial < 3800; ++trial) {
    const bool isSmall = trial < 3000;
    OrvaRandomModel model(random,
                          isSmall ? OrvaRandomModel::Shape{5, 12} : OrvaRandomModel::Shape{10, 40});
    const OrvaFamily family(model);
    if (isSmall) {
      ASSERT_EQ(family.Collect(NO_LIMIT, NO_LIMIT), model.FindMinimalCutsets()) << trial;
    }
    const std::vector<double> counts = family.CountOrders();
    const double total = std::accumulate(counts.begin(), counts.end(), 0.0);
    // Bit 0 for a limit of the order, bit 1 for one of the probability.
    const int kind = total > MOST_CUTSETS ? 1 + trial % 3 : trial % 4;
    const int order = (kind & 1) != 0 ? DrawLimit(model, counts) : NO_LIMIT;
    const int exponent = (kind & 2) != 0 ? DrawLimit(model, family.CountExponents()) : NO_LIMIT;
    const std::set<OrvaEventSet> expected = family.Collect(order, exponent);
    char limits[100] = "";
    if (kind != 0) {
      std::snprintf(limits, sizeof limits, "maximum-order=\"%d\" minimum-probability=\"%.17g\"",
                    order, std::ldexp(1.0, -exponent));
    }
    double sum = 0.0;
    for (const OrvaEventSet cutset : expected) sum += model.GetProbabilityOfSet(cutset);
    for (const char* algorithm : {"algorithm=\"diagram\" ", "algorithm=\"search\" "}) {
      const OrvaSolution solution(model, std::string(algorithm) + limits);
      ASSERT_EQ(solution.cutsets, expected) << algorithm << limits << "\n" << model.ToText();
      ASSERT_NEAR(solution.sum, sum, 1e-12 * sum) << algorithm << "trial " << trial;
      withModules += solution.hasModules ? 1 : 0;
    }
    withoutLimits += kind == 0 ? 1 : 0;
    truncated += static_cast<double>(expected.size()) < total ? 1 : 0;
  }
  // The models are worth the trial.
  EXPECT_GT(withModules, 2 * 1500);
  EXPECT_LT(withModules, 2 * 3600);
  EXPECT_GT(withoutLimits, 700);
  EXPECT_GT(truncated, 1000);
}

TEST(RandomModels, ExactProbabilitiesAreThoseOfTheStates) {
  std::mt19937 random(4);
  for (int solved = 0, refused = 0; solved < 300 && refused < 300;) {
    const OrvaRandomModel model(random, {4, 10, true});
    const double expected = model.GetProbabilityOfStates();
    OrvaDiagrams diagrams;
    const OrvaDiagrams::Node top = model.ToDiagram(diagrams);
    std::vector<double> probabilities;
    for (const int event : model.GetOrder()) probabilities.push_back(model.GetProbability(event));
    ASSERT_NEAR(diagrams.GetProbability(top, probabilities), expected, 1e-12);
    OrvaTestEngine engine;
    engine.Define(model.ToText());
    if (engine.Run("<set><option name=\"top-event\" value=\"" + model.GetTop() +
                   "\"/></set><build><minimal-cutsets/></build>"
                   "<compute><probability approximation=\"exact\"/></compute>") != 0) {
      ++refused;  // a negation of what has become a negation is not flat
      continue;
    }
    ++solved;
    ASSERT_NEAR(engine.GetEvent(model.GetTop().c_str())->GetProbability(), expected, 1e-12)
        << model.ToText();
  }
}

// Importance factors by their definitions, over the cutsets found by brute force. With eighths all
// sums and products are exact, whatever their order.
TEST(RandomModels, ImportanceFactorsAreThoseOfTheCutsets) {
  std::mt19937 random(6);
  int noProbability = 0, clamped = 0, noReduction = 0, negative = 0;
  for (int trial = 0; trial < 300; ++trial) {
    const OrvaRandomModel model(random, {5, 12, false, true});
    const std::set<OrvaEventSet> cutsets = model.FindMinimalCutsets();
    OrvaTestEngine engine;
    engine.Define(model.ToText());
    engine.MustRun("<set><option name=\"top-event\" value=\"" + model.GetTop() +
                   "\"/></set><build><minimal-cutsets/></build>"
                   "<compute><importance-factors output=\"importance.txt\""
                   " print-conditional-probability-1=\"on\" print-conditional-probability-0=\"on\""
                   " print-Fussel-Vesely-importance-factor=\"on\"/></compute>");
    const auto rows = OrvaTestEngine::ReadTable("importance.txt");
    ASSERT_EQ(std::ssize(rows), model.GetNumberOfEvents() + 3);  // in an order of their own
    double sum = 0.0;
    for (const OrvaEventSet cutset : cutsets) sum += model.GetProbabilityOfSet(cutset);
    const double top = std::min(sum, 1.0);
    EXPECT_EQ(rows[1][2], OrvaPrint(top));
    clamped += sum > 1.0 ? 1 : 0;
    noProbability += top == 0.0 ? 1 : 0;
    std::set<int> events;
    for (auto row = rows.begin() + 3; row != rows.end(); ++row) {
      const int event = std::stoi(row->at(0).substr(1));
      EXPECT_TRUE(events.insert(event).second);
      double occurrences = 0.0, mif = 0.0;
      for (const OrvaEventSet cutset : cutsets) {
        if ((cutset >> event & 1) == 0) continue;
        occurrences += 1.0;
        mif += model.GetProbabilityOfSet(cutset & ~(OrvaEventSet{1} << event));
      }
      const double p = model.GetProbability(event);
      const double with = top - p * mif + mif, without = top - p * mif;
      const auto over = [](double x, double y) { return y == 0.0 ? 0.0 : x / y; };
      const double dif = over(p * with, top);
      const double expected[] = {
          occurrences,        p,  with, without, mif, over(p * mif, top), dif, over(with, top),
          over(top, without), dif};
      for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(row->at(i + 1), OrvaPrint(expected[i])) << rows[2][i + 1] << model.ToText();
      }
      noReduction += top > 0.0 && without == 0.0 ? 1 : 0;
      negative += without < 0.0 ? 1 : 0;
    }
  }
  // The models are worth the trial.
  EXPECT_GT(noProbability, 20);
  EXPECT_GT(clamped, 20);
  EXPECT_GT(noReduction, 20);
  EXPECT_GT(negative, 0);
}

}  // namespace
