// Numeric and Boolean expressions, reliability models, random deviates.

#include <array>
#include <cfloat>
#include <functional>
#include <memory>

#include "OrvaTestSupport.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "support/random/LumoCongruentialRandomizer.h"

namespace {

using Node = OrvaProbabilityDistribution;

// An expression given in short, among other definitions. P is 1 - exp(-0.1 t).
struct Tree {
  explicit Tree(const std::string& text, const std::string& definitions = "") {
    engine->Define("$P = exponential(0.1,time); #e = " + text + ";" + definitions);
    node = engine->GetEvent("e")->GetProbabilityDistribution();
  }
  Node* operator->() const { return node; }

  std::unique_ptr<OrvaTestEngine> engine = std::make_unique<OrvaTestEngine>();
  Node* node;
};

double ValueOf(const std::string& text, double t = 0.0) {
  return Tree(text)->ComputeValue(t)->ToDouble();
}

double IntensityOf(const std::string& text, double t) {
  const Tree tree(text);
  tree.engine->GetModel()->ComputeValuesOfParameters(t);
  const double w = tree->ComputeProbabilityAndUnconditionalFailureIntensity(t);
  EXPECT_EQ(tree->GetUnconditionalFailureIntensity(), w);
  return w;
}

// A call in short: "standby(2,1,1,...)".
std::string Call(const std::string& function, const std::vector<double>& numbers) {
  std::string text = function;
  for (const double x : numbers) text += (text == function ? "(" : ",") + OrvaPrint(x);
  return text + ")";
}

// Integrates dy/dt = f(y) over a duration with the Runge-Kutta method of order 4.
template <std::size_t N>
using State = std::array<double, N>;
template <std::size_t N>
State<N> Integrate(const std::function<State<N>(const State<N>&)>& f, State<N> y, double duration) {
  constexpr int STEPS = 400;
  const double h = duration / STEPS;
  const auto move = [](const State<N>& from, const State<N>& slope, double step) {
    State<N> to = from;
    for (std::size_t i = 0; i < N; ++i) to[i] += step * slope[i];
    return to;
  };
  for (int step = 0; step < STEPS; ++step) {
    const State<N> a = f(y), b = f(move(y, a, h / 2)), c = f(move(y, b, h / 2)),
                   d = f(move(y, c, h));
    for (std::size_t i = 0; i < N; ++i) y[i] += h / 6 * (a[i] + 2 * b[i] + 2 * c[i] + d[i]);
  }
  return y;
}

TEST(Expression, ValuesAndKindsOfOperators) {
  for (const std::string& row : OrvaReadRows("expressions")) {
    SCOPED_TRACE(row);
    const std::size_t end = row.rfind('=');
    const std::string expected = row.substr(end + 1);
    const Tree tree(row.substr(0, end), "$p = 7");
    tree.engine->GetModel()->ComputeValuesOfParameters(5.0);
    // Twice: what an evaluation leaves behind must not change the next one.
    for (int run = 0; run < 2; ++run) {
      const LumoConstant* value = tree->ComputeValue(5.0);
      if (expected == "nil") {
        EXPECT_TRUE(value->IsNil());
      } else if (expected == "true" || expected == "false") {
        EXPECT_TRUE(value->IsBool());
        EXPECT_EQ(value->ToBool(), expected == "true");
      } else {
        EXPECT_EQ(value->IsInt(), expected.find('.') == std::string::npos);
        EXPECT_DOUBLE_EQ(value->ToDouble(), std::stod(expected));
      }
    }
  }
  // "mod" takes one argument, although its value reads two: as it is defined.
  EXPECT_TRUE(Node::CheckNumberOfChildren(Node::MOD, 1));
  EXPECT_FALSE(Node::CheckNumberOfChildren(Node::MOD, 2));
  OrvaModel model;
  const std::unique_ptr<Node, void (*)(void*)> mod(
      Node::NewDistribution(&model, Node::MOD, Node::NewInt(&model, 7), Node::NewInt(&model, 4)),
      OrvaTerm::Delete);
  EXPECT_TRUE(mod->ComputeValue(0.0)->Is(3));
  // A switch without a case that holds keeps its value.
  const Tree unmatched("switch(case(lt(time,10),4))");
  for (const double t : {5.0, 15.0}) EXPECT_TRUE(unmatched->ComputeValue(t)->Is(4));
}

TEST(Expression, BoundsAreWrittenBack) {
  const Tree tree("add(1.5,7,1,2.75,-3)");
  EXPECT_EQ(tree->ComputeValueOfChildAsDouble(1, 0.0, 0.0, 1.0), 1.0);
  EXPECT_EQ(tree->GetValueOfChildAsDouble(1), 1.0);
  EXPECT_EQ(tree->ComputeValueOfChildAsInt(2, 0.0, 0, 5), 5);
  EXPECT_TRUE(tree->GetChild(2)->GetValue()->Is(5));
  // In range nothing is written: the integer stays one, the real keeps its fraction.
  EXPECT_EQ(tree->ComputeValueOfChildAsDouble(3, 0.0, 0.0, 1.0), 1.0);
  EXPECT_TRUE(tree->GetChild(3)->GetValue()->IsInt());
  EXPECT_EQ(tree->ComputeValueOfChildAsInt(4, 0.0, 0, 5), 2);
  EXPECT_EQ(tree->GetValueOfChildAsDouble(4), 2.75);
  EXPECT_EQ(tree->ComputeValueAsProbability(0.0), 1.0);
  EXPECT_EQ(tree->GetValueAsDouble(), 1.0);
}

TEST(Expression, CopiesAreDeep) {
  const Tree tree("mul(P,uniform-deviate(2,6),3)");
  OrvaParameter* p = tree->GetChild(1)->GetReferencedParameter();
  Node* copy = Node::Copy(tree.engine->GetModel(), tree.node);
  EXPECT_EQ(copy->GetChild(1)->GetReferencedParameter(), p);
  EXPECT_EQ(p->GetNumberOfOccurrences(), 2);
  copy->ResetRandomDeviates();
  EXPECT_EQ(copy->GetValueOfChildAsDouble(2), 4.0);
  copy->ComputeValueOfChildAsDouble(3, 0.0, 0.0, 1.0);
  OrvaTerm::Delete(copy);
  EXPECT_EQ(p->GetNumberOfOccurrences(), 1);
  EXPECT_EQ(tree->GetValueOfChildAsDouble(3), 3.0);
}

// Two states, working and failed: Q' = λ (1 - Q) - μ Q from Q(0) = γ.
double SolveTwoStates(double gamma, double lambda, double mu, double t) {
  return Integrate<1>([&](const State<1>& q) { return State<1>{lambda * (1 - q[0]) - mu * q[0]}; },
                      {gamma}, t)[0];
}

TEST(Expression, ModelsOfOneComponent) {
  EXPECT_DOUBLE_EQ(ValueOf("exponential(0.1,time)", 5.0), 1 - std::exp(-0.5));
  EXPECT_EQ(ValueOf("exponential(-1,time)", 5.0), 0.0);
  for (const double t : {0.0, 0.7, 3.0, 40.0}) {
    SCOPED_TRACE(t);
    EXPECT_NEAR(ValueOf("GLM(0.3,0.2,0.5,time)", t), SolveTwoStates(0.3, 0.2, 0.5, t), 1e-8);
    EXPECT_NEAR(ValueOf("GLM(7,0.2,-1,time)", t), 1.0, 1e-12);  // γ and μ are bounded
    EXPECT_NEAR(ValueOf("GLM(0.3,0,0,time)", t), 0.3, 1e-12);   // nothing happens
    EXPECT_NEAR(ValueOf("MTT(5,2,time)", t), SolveTwoStates(0, 0.2, 0.5, t), 1e-8);
  }
  EXPECT_NEAR(ValueOf("MTT(0,2,time)", 1.0), 1.0, 1e-12);
  EXPECT_DOUBLE_EQ(ValueOf("Weibull(4,2,time)", 2.0), 1 - std::exp(-0.25));
  EXPECT_DOUBLE_EQ(ValueOf("Weibull(0,2,2e-10)"), 1 - std::exp(-4.0));

  // Dormant: the failed share of a cycle of length T that is prolonged by the repair time x after
  // a failure, with the failed time within T integrated by Simpson's rule.
  const double T = 4.0;
  const auto failed = [&](double s) { return 1 - std::exp(-0.3 * s); };
  double down = 0.0;
  for (double s = 0.0; s < T; s += 0.125) {
    down += (failed(s) + 4 * failed(s + 0.0625) + failed(s + 0.125)) * 0.125 / 6;
  }
  const double repairTime = 2.0 * failed(T);
  EXPECT_NEAR(ValueOf("dormant(0.3,2,4)", 99.0), (down + repairTime) / (T + repairTime), 1e-7);
  EXPECT_EQ(ValueOf("dormant(0,0,0)"), 0.0);

  // Bounded time: the clock runs from 3 to 7. The value is kept positive.
  const double bounds[][2] = {{2, DBL_MIN}, {3, DBL_MIN}, {5, 0.2}, {7, 0.4}, {70, 0.4}};
  for (const auto& [t, exponent] : bounds) {
    EXPECT_DOUBLE_EQ(ValueOf("bound-time(3,4,exponential(0.1,time),time)", t),
                     exponent == DBL_MIN ? DBL_MIN : 1 - std::exp(-exponent));
  }
}

// The stationary law of the chain over the number of failed units, found by letting probability
// flow along its transitions until nothing changes; then the share of states with fewer than k
// working units.
double SolveStandby(int n, int k, int r, double lambda, double lambdaStandby, double mu) {
  std::vector<double> p(static_cast<std::size_t>(n) + 1, 1.0 / (n + 1));
  for (double change = 1.0; change > 1e-15;) {
    std::vector<double> next = p;
    change = 0.0;
    const auto flow = [&](int from, int to, double rate) {
      const double amount = p[static_cast<std::size_t>(from)] * rate * 0.05;
      next[static_cast<std::size_t>(from)] -= amount;
      next[static_cast<std::size_t>(to)] += amount;
    };
    for (int i = 0; i < n; ++i) {
      const int good = n - i;
      const int active = std::min(good, k);
      flow(i, i + 1, active * lambda + (good - active) * lambdaStandby);
      flow(i + 1, i, std::min(r, i + 1) * mu);
    }
    for (std::size_t i = 0; i < p.size(); ++i) change += std::abs(next[i] - p[i]);
    p = next;
  }
  double lost = 0.0;
  for (int failed = n - k + 1; failed <= n; ++failed) lost += p[static_cast<std::size_t>(failed)];
  return lost;
}

TEST(Expression, StandbyIsTheStationaryLawOfItsChain) {
  const struct {
    int n, k, r;
    double lambda, lambdaStandby, mu;
  } rows[] = {{2, 1, 1, 0.5, 0.0, 1.0}, {3, 2, 1, 0.4, 0.1, 1.5},  {4, 2, 2, 0.3, 0.3, 0.9},
              {5, 1, 3, 0.7, 0.2, 0.8}, {3, 3, 2, 0.25, 0.9, 1.0}, {1, 1, 1, 0.2, 0.0, 0.6}};
  for (const auto& [n, k, r, lambda, lambdaStandby, mu] : rows) {
    EXPECT_NEAR(ValueOf(Call("standby", {1.0 * n, 1.0 * k, 1.0 * r, lambda, lambdaStandby, mu})),
                SolveStandby(n, k, r, lambda, lambdaStandby, mu), 1e-10)
        << n << k << r;
  }
  EXPECT_EQ(ValueOf("standby(3,0,1,0.5,0.5,1)"), 0.0);           // nothing is needed
  EXPECT_NEAR(ValueOf("standby(2,1,0,0.5,0.5,1)"), 1.0, 1e-12);  // no repair
  // k and r are bounded by n: the same as 2-out-of-2 with two repairmen.
  EXPECT_DOUBLE_EQ(ValueOf("standby(2,9,9,0.5,0.1,1)"), ValueOf("standby(2,2,2,0.5,0.1,1)"));
}

struct PeriodicTest {
  double lambda, lambdaTest, mu, tau, theta, gamma, pi;
  bool isAvailable;
  double sigma, omega;

  std::string ToText() const {
    std::string text = Call("periodic-test", {lambda, lambdaTest, mu, tau, theta, gamma, pi});
    text.back() = ',';
    return text + (isAvailable ? "true," : "false,") + OrvaPrint(sigma) + "," + OrvaPrint(omega) +
           ",time)";
  }
};

// A tested component, by integration of its Markov chain between the dates at which something
// jumps. In operation, units fail at rate λ (unnoticed) and repairs end at rate μ, badly (again an
// unnoticed failure) with probability ω.
//
// A test starts by causing a failure with probability γ. During it, units under test fail at rate
// λt; units that come back from repair in the meantime are not under test, fail at rate λ, and
// that failure is left to the next test. When the test ends, the failures that were there or arose
// under test are found with probability σ and go to repair. A component that is not available
// during the test counts as failed, unless it came back from repair.
double SolvePeriodicTest(const PeriodicTest& c, double t) {
  enum { GOOD, BACK, FAILED, MISSED, REPAIR };
  using Y = State<5>;
  const auto operation = [&](const Y& y) {
    return Y{-c.lambda * y[GOOD] + (1 - c.omega) * c.mu * y[REPAIR], 0.0,
             c.lambda * y[GOOD] + c.omega * c.mu * y[REPAIR], 0.0, -c.mu * y[REPAIR]};
  };
  const auto test = [&](const Y& y) {
    return Y{-c.lambdaTest * y[GOOD], (1 - c.omega) * c.mu * y[REPAIR] - c.lambda * y[BACK],
             c.lambdaTest * y[GOOD], c.omega * c.mu * y[REPAIR] + c.lambda * y[BACK],
             -c.mu * y[REPAIR]};
  };
  Y y = Integrate<5>(operation, {1.0, 0.0, 0.0, 0.0, 0.0}, std::min(t, c.theta));
  for (double date = c.theta; date < t; date += c.tau) {
    y[FAILED] += c.gamma * y[GOOD];
    y[GOOD] *= 1 - c.gamma;
    y = Integrate<5>(test, y, std::min(c.pi, t - date));
    if (t <= date + c.pi) return 1 - y[BACK] - (c.isAvailable ? y[GOOD] : 0.0);
    y = {y[GOOD] + y[BACK], 0.0, (1 - c.sigma) * y[FAILED] + y[MISSED], 0.0,
         y[REPAIR] + c.sigma * y[FAILED]};
    y = Integrate<5>(operation, y, std::min(c.tau, t - date) - c.pi);
  }
  return 1 - y[GOOD];
}

TEST(Expression, PeriodicTestFollowsItsMarkovChain) {
  const PeriodicTest tests[] = {
      {0.05, 0.08, 0.3, 8, 5, 0.0, 0.0, true, 1.0, 0.0},     // instantaneous perfect tests
      {0.05, 0.08, 0.3, 8, 5, 0.1, 0.0, false, 0.8, 0.15},   //   and imperfect ones
      {0.05, 0.12, 0.3, 8, 5, 0.07, 1.5, true, 0.75, 0.2},   // all together, available
      {0.05, 0.12, 0.3, 8, 5, 0.07, 1.5, false, 0.75, 0.2},  //   and not
      {0.25, 0.12, 0.25, 8, 5, 0.07, 1.5, true, 0.75, 0.2},  // λ = μ
      {0.25, 0.12, 0.25, 8, 5, 0.07, 1.5, false, 0.75, 0.2},
      {0.4, 0.0, 0.1, 6, 0, 0.0, 2.0, false, 1.0, 0.0},    // tested from the start; λ > μ
      {0.02, 0.5, 0.05, 10, 3, 1.0, 4.0, true, 0.5, 1.0},  // each test and each repair breaks it
      {0.0, 0.0, 0.0, 4, 1, 0.0, 1.0, true, 0.0, 0.0},     // nothing happens
  };
  for (const PeriodicTest& test : tests) {
    SCOPED_TRACE(&test - tests);
    const Tree tree(test.ToText());
    for (const double cycle : {0.0, 1.0, 2.0, 7.0}) {
      const double date = test.theta + cycle * test.tau;
      // Within the test, at its end, in operation, and at the date of the next test, which ends
      // the cycle before.
      for (const double t : {date + 0.75 * test.pi, date + test.pi, date + test.pi + 1.0,
                             date + 0.9 * test.tau, date + test.tau}) {
        EXPECT_NEAR(tree->ComputeValue(t)->ToDouble(), SolvePeriodicTest(test, t), 1e-9)
            << "at " << t;
      }
    }
    EXPECT_NEAR(tree->ComputeValue(0.5 * test.theta)->ToDouble(),
                1 - std::exp(-test.lambda * 0.5 * test.theta), 1e-12);
  }
  // Five arguments: an instantaneous perfect test and repair.
  const PeriodicTest perfect = {0.05, 0.05, 0.3, 8, 5, 0.0, 0.0, false, 1.0, 0.0};
  for (const double t : {0.0, 4.0, 5.0, 6.0, 13.0, 20.0, 21.0, 47.5}) {
    EXPECT_NEAR(ValueOf("periodic-test(0.05,0.3,8,5,time)", t), SolvePeriodicTest(perfect, t), 1e-9)
        << t;
  }
  // Four: as good as new after each test, as bad as it gets at the date of one.
  const double elapsed[][2] = {{3, 3}, {5, 5}, {6, 1}, {13, 8}, {21, 8}, {23.5, 2.5}};
  for (const auto& [t, d] : elapsed) {
    EXPECT_DOUBLE_EQ(ValueOf("periodic-test(0.05,8,5,time)", t), 1 - std::exp(-0.05 * d)) << t;
  }
  // Without an interval nothing is ever tested after θ.
  EXPECT_DOUBLE_EQ(ValueOf("periodic-test(0.05,0.3,0,5,time)", 40.0), 1 - std::exp(-0.25));
}

TEST(Expression, StationaryTestCyclesAreSkipped) {
  // Dates are exact in binary, so that only the number of cycles differs.
  const PeriodicTest test = {0.05, 0.125, 0.25, 8, 4, 0.0625, 0.5, false, 0.75, 0.125};
  const Tree tree(test.ToText());
  for (const double offset : {0.25, 3.0, 7.5}) {
    const double early = tree->ComputeValue(4 + 8 * 200.0 + offset)->ToDouble();
    EXPECT_NEAR(early, SolvePeriodicTest(test, 4 + 8 * 200.0 + offset), 1e-9);
    EXPECT_NEAR(tree->ComputeValue(4 + 8e6 + offset)->ToDouble(), early, 1e-12);
  }
  // The date of a test reached by skipping is the start of that test, not the end of the cycle
  // before: a unit that never fails is unavailable there from the third test on, as defined.
  const Tree sound(PeriodicTest{0, 0, 0, 8, 4, 0, 1, false, 1, 0}.ToText());
  EXPECT_EQ(sound->ComputeValue(4 + 2 * 8)->ToDouble(), 0.0);
  EXPECT_EQ(sound->ComputeValue(4 + 3 * 8)->ToDouble(), 1.0);
}

TEST(Expression, TimeAndRepairDependence) {
  for (const std::string& row : OrvaReadRows("dependences")) {
    const std::size_t end = row.rfind('=');
    const Tree tree(row.substr(0, end));
    std::string found = tree->IsTimeDependent() ? "t" : "";
    if (tree->IsRepairDependent()) found += "r";
    EXPECT_EQ(found, row.substr(end + 1)) << row;
  }
}

TEST(Expression, FailureIntensities) {
  const std::string fast = "exponential(0.2,time)";
  const double survival = std::exp(-0.5);  // of P at date 5
  const struct {
    std::string text;
    double t, intensity;
  } rows[] = {
      // Constants do not fail, even if made of a rate.
      {"0.3", 5, 0},
      {"exponential(0.1,5)", 5, 0},
      // Failure rate × availability.
      {"exponential(0.1,time)", 5, 0.1 * survival},
      {"exponential(0.1,time)", -5, 0.1},  // as at date 0
      {"GLM(0.3,0.2,0.5,time)", 3, 0.2 * (1 - SolveTwoStates(0.3, 0.2, 0.5, 3.0))},
      {"mul(0.5,P)", 5, 0.5 * 0.1 * (1 - 0.5 * (1 - survival))},
      {"mul(P," + fast + ")", 5, 0.1 * 0.2 * (1 - (1 - survival) * (1 - std::exp(-1.0)))},
      {"ite(lt(time,10),P," + fast + ")", 5, 0.1 * survival},
      {"ite(lt(time,10),P," + fast + ")", 20, 0.2 * std::exp(-4.0)},
      // Rate of MTT: 1 / MTTF, when the whole counts as repairable.
      {"ite(true,MTT(5,2,time),P)", 3, 0.2 * (1 - SolveTwoStates(0, 0.2, 0.5, 3.0))},
      {"P", 5, 0.1 * survival},
      // Repairable without a rate of its own: sums, bounded times, standby, a switch over cases.
      {"add(0.1,P)", 5, 0},
      {"bound-time(1,9,P,time)", 5, 0},
      {"standby(2,1,1,0.1,time,1)", 5, 0},
      {"switch(case(true,P))", 5, 0},
      // Without a case it takes the last child's rate; its value is that child's first, here λ.
      {"switch(exponential(0.1,time))", 5, 0.1 * (1 - 0.1)},
      {"switch(exponential(0.1,time)," + fast + ")", 5, 0.2 * (1 - 0.1)},
      {"mul(P,undefined)", 5, 0},
      {"periodic-test(0.05,8,5,time)", 6, 0.05 * std::exp(-0.05)}};
  for (const auto& [text, t, intensity] : rows) {
    EXPECT_NEAR(IntensityOf(text, t), intensity, 1e-11) << text;
  }
  // Periodic tests: the rate during a test is the second.
  const Tree tested(PeriodicTest{0.05, 0.5, 0.3, 20, 10, 0.1, 2, true, 0.9, 0.1}.ToText());
  const double rates[][2] = {{5, 0.05}, {11, 0.5}, {15, 0.05}, {31, 0.5}, {33, 0.05}};
  for (const auto& [t, rate] : rates) {
    const double w = tested->ComputeProbabilityAndUnconditionalFailureIntensity(t);
    EXPECT_NEAR(w, rate * (1 - tested->GetValueAsDouble()), 1e-12) << t;
  }
}

// Parameters of deviates are kept positive; deviates below another node have their central values.
TEST(Expression, DeviatesAreDrawnAndReset) {
  LumoCongruentialRandomizer randomizer(1), expected(1);
  const struct {
    const char* text;
    std::function<double()> draw;
    double central;
  } rows[] = {{"uniform-deviate(-3,4)", [&] { return expected.UniformDraw(DBL_MIN, 4); }, 2},
              {"normal-deviate(-1,2)", [&] { return expected.NormalDraw(DBL_MIN, 2); }, DBL_MIN},
              {"lognormal-deviate(uniform-deviate(2,4),3,0.9)",
               [&] { return expected.LognormalDraw(3, 3, 0.9); }, 3},
              {"lognormal-deviate(2,3,0.5)", [&] { return expected.LognormalDraw(2, 3, 0.5); }, 2},
              {"mul(2,uniform-deviate(2,4))", [] { return 6.0; }, 6},
              {"histogram(1,bin(2,10),bin(5,70))",
               [&] { return expected.UniformDraw(1, 5) <= 2 ? 10 : 70; }, 55},
              {"histogram(3,bin(4,20),5)", [] { return 3.0; }, 3}};  // its end is no bin
  for (const auto& row : rows) {
    const Tree tree(row.text);
    OrvaProbabilityDistribution::PreparedDraw prepared;
    EXPECT_TRUE(tree->PrepareDraw(prepared));
    for (int run = 0; run < 9; ++run) {
      if (run % 2 == 0) tree->DrawRandomDeviates(&randomizer);
      if (run % 2 != 0) prepared.Draw(&randomizer);
      EXPECT_DOUBLE_EQ(tree->ComputeValue(9.0)->ToDouble(), row.draw()) << row.text;
    }
    tree->ResetRandomDeviates();
    EXPECT_DOUBLE_EQ(tree->ComputeValue(9.0)->ToDouble(), row.central) << row.text;
    EXPECT_EQ(randomizer.GetSeed(), expected.GetSeed());
  }
  OrvaProbabilityDistribution::PreparedDraw none;
  EXPECT_FALSE(Tree("mul(2,3)")->PrepareDraw(none));
}

}  // namespace
