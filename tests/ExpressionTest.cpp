// Numeric and Boolean expressions, reliability models, random deviates.

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "model/OrvaModel.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "support/random/LumoCongruentialRandomizer.h"

namespace {

using Node = OrvaProbabilityDistribution;

OrvaModel& TheModel() {
  static OrvaModel model;
  return model;
}

// An expression in short: constants stand for themselves, and the date is DATE.
struct Date {};
constexpr Date DATE;

struct X {
  X(bool value) : node(Node::NewBool(&TheModel(), value)) {}
  X(int value) : node(Node::NewInt(&TheModel(), value)) {}
  X(double value) : node(Node::NewFloat(&TheModel(), value)) {}
  X(Date) : X(Node::MISSION_TIME, {}) {}
  X(Node* existing) : node(existing) {}
  X(OrvaParameter* parameter) : node(Node::NewParameter(&TheModel(), parameter)) {}
  X(Node::Type type, std::initializer_list<X> children)
      : node(Node::NewDistribution(&TheModel(), type, nullptr)) {
    for (const X& child : children) node->AddChild(child.node);
  }
  Node* node;
};

// An expression that belongs to the test.
struct Tree : std::unique_ptr<Node, void (*)(void*)> {
  Tree(const X& x) : unique_ptr(x.node, OrvaTerm::Delete) {}
  Tree(Node::Type type, std::initializer_list<X> children) : Tree(X(type, children)) {}
};

double ValueOf(const X& x, double t = 0.0) {
  const Tree tree(x);
  return tree->ComputeValue(t)->ToDouble();
}

double IntensityOf(const X& x, double t) {
  const Tree tree(x);
  const double w = tree->ComputeProbabilityAndUnconditionalFailureIntensity(t);
  EXPECT_EQ(tree->GetUnconditionalFailureIntensity(), w);
  return w;
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

TEST(Expression, KindsByNameCodeAndNumberOfChildren) {
  // In the order of their codes, each with the number of children: "s" for at least 1, "m" for at
  // least 2, "p" for 4, 5 or 11. That "mod" takes one, although its value reads two, is as defined.
  std::istringstream kinds(
      "parameter 0 bool 0 int 0 float 0 pi 0 mission-time 0 and m or m not 1 eq 2 df 2 lt 2 gt 2 "
      "leq 2 geq 2 neg 1 add m sub 2 mul m div 2 abs 1 acos 1 asin 1 atan 1 cos 1 cosh 1 exp 1 "
      "log 1 log10 1 mod 1 pow 2 sin 1 sinh 1 tan 1 tanh 1 sqrt 1 ceil 1 floor 1 min m max m "
      "mean m ite 3 switch s case 2 Dirac 2 periodic 3 exponential 2 GLM 4 MTT 3 dormant 3 "
      "Weibull 3 standby 6 periodic-test p bound-time 4 uniform-deviate 2 normal-deviate 2 "
      "lognormal-deviate 3 beta-deviate 2 gamma-deviate 2 bin 2 histogram m");
  std::string name;
  char children;
  int code = 0;
  for (; kinds >> name >> children; ++code) {
    const auto type = static_cast<Node::Type>(code);
    EXPECT_STREQ(Node::GetFunctor(type), name.c_str());
    EXPECT_EQ(Node::GetType(name.c_str()), type);
    for (int n = 0; n <= 13; ++n) {
      const bool isAccepted = children == 's'   ? n >= 1
                              : children == 'm' ? n >= 2
                              : children == 'p' ? n == 4 || n == 5 || n == 11
                                                : n == children - '0';
      EXPECT_EQ(Node::CheckNumberOfChildren(type, n), isAccepted) << name << " " << n;
    }
  }
  EXPECT_EQ(code, 61);
  EXPECT_FALSE(Node::CheckNumberOfChildren(static_cast<Node::Type>(61), 2));
  EXPECT_EQ(Node::GetType("dirac"), -1);
}

TEST(Expression, ValuesAndKindsOfOperators) {
  using Nil = std::monostate;
  OrvaParameter p(&TheModel(), "p");
  const LumoConstant seven(7);
  p.SetValue(&seven);
  const double t = 5.0;
  const struct {
    X expression;
    std::variant<Nil, bool, int, double> value;
  } rows[] = {
      {{&p}, 7},
      {{static_cast<OrvaParameter*>(nullptr)}, 0.0},
      {{Node::PI, {}}, 3.141592653589793},
      {DATE, 5.0},
      {{Node::AND, {true, true, false}}, false},
      {{Node::AND, {true, 1}}, Nil()},
      {{Node::OR, {false, true, false}}, true},
      {{Node::NOT, {false}}, true},
      {{Node::EQ, {1, 1.0}}, true},
      {{Node::EQ, {true, 1}}, Nil()},
      {{Node::DF, {1, 2}}, true},
      {{Node::LT, {2, 2}}, false},
      {{Node::GT, {2.5, 2}}, true},
      {{Node::LEQ, {2, 2}}, true},
      {{Node::GEQ, {1, 2}}, false},
      {{Node::NEG, {3}}, -3},
      {{Node::ADD, {1, 2, 4}}, 7},
      {{Node::ADD, {1, 0.5, 2}}, 3.5},
      {{Node::SUB, {5, 7}}, -2},
      {{Node::MUL, {2, 3, 4}}, 24},
      {{Node::MUL, {2, 0.5, DATE}}, 5.0},
      {{Node::DIV, {7, 2}}, 3},
      {{Node::DIV, {7, 2.0}}, 3.5},
      {{Node::DIV, {7, 0.0}}, Nil()},
      {{Node::ABS, {-3}}, 3.0},
      {{Node::ACOS, {0.5}}, 1.0471975511965979},
      {{Node::ASIN, {0.5}}, 0.5235987755982989},
      {{Node::ATAN, {1}}, 0.7853981633974483},
      {{Node::COS, {1}}, 0.5403023058681398},
      {{Node::COSH, {1}}, 1.5430806348152437},
      {{Node::EXP, {1}}, 2.718281828459045},
      {{Node::LOG, {10}}, 2.302585092994046},
      {{Node::LOG10, {1000}}, 3.0},
      {{Node::MOD, {7, 4}}, 3},
      {{Node::MOD, {7.5, 2}}, 1.5},
      {{Node::POW, {2, 10}}, 1024.0},
      {{Node::SIN, {1}}, 0.8414709848078965},
      {{Node::SINH, {1}}, 1.1752011936438014},
      {{Node::TAN, {1}}, 1.5574077246549023},
      {{Node::TANH, {1}}, 0.7615941559557649},
      {{Node::SQRT, {2}}, 1.4142135623730951},
      {{Node::CEIL, {1.25}}, 2.0},
      {{Node::FLOOR, {1.75}}, 1.0},
      // What is not positive has no value.
      {{Node::FLOOR, {-1.5}}, Nil()},
      {{Node::CEIL, {0}}, Nil()},
      {{Node::MIN, {3, 2, 4.5}}, 2},
      {{Node::MAX, {3, 2.5}}, 3},
      {{Node::MAX, {-3, -0.5}}, 2.2250738585072014e-308},
      {{Node::MEAN, {1, 2, 6}}, 3.0},
      {{Node::ITE, {0.0, 2, 3}}, 3},
      {{Node::ITE, {true, 2, 3.5}}, 2},
      {{Node::SWITCH, {{Node::CASE, {false, 1}}, {Node::CASE, {2, 4}}, {Node::CASE, {true, 5}}}},
       4},
      // A child that is no case ends the walk with the value of its own first child.
      {{Node::SWITCH, {{Node::CASE, {false, 1}}, {Node::NEG, {3}}, {Node::CASE, {true, 5}}}}, 3},
      {{Node::SWITCH, {{Node::CASE, {false, 1}}}}, Nil()},
      {{Node::DIRAC, {DATE, 5}}, 1.0},
      {{Node::DIRAC, {DATE, 4}}, 0.0},
      {{Node::DIRAC, {-1, -2}}, 1.0},  // both bounded to 0
      {{Node::PERIODIC, {1, 2, DATE}}, 1.0},
      {{Node::PERIODIC, {1, 3, DATE}}, 0.0},
  };
  for (const auto& row : rows) {
    const Tree tree(row.expression);
    SCOPED_TRACE(Node::GetFunctor(tree->GetType()));
    // Twice: what an evaluation leaves behind must not change the next one.
    for (int run = 0; run < 2; ++run) {
      const LumoConstant* value = tree->ComputeValue(t);
      ASSERT_EQ(static_cast<std::size_t>(value->GetType()), row.value.index());
      if (const auto* real = std::get_if<double>(&row.value)) {
        EXPECT_DOUBLE_EQ(value->ToDouble(), *real);
      } else if (const auto* integer = std::get_if<int>(&row.value)) {
        EXPECT_EQ(value->ToInt(), *integer);
      } else if (const auto* boolean = std::get_if<bool>(&row.value)) {
        EXPECT_EQ(value->ToBool(), *boolean);
      }
    }
  }
}

TEST(Expression, UnmatchedSwitchKeepsItsValue) {
  const Tree tree(Node::SWITCH, {{Node::CASE, {{Node::LT, {DATE, 10}}, 4}}});
  for (const double t : {5.0, 15.0}) EXPECT_TRUE(tree->ComputeValue(t)->Is(4));
}

TEST(Expression, BoundsAreWrittenBack) {
  const Tree tree(Node::ADD, {1.5, 7, 1, 2.75, -3});
  EXPECT_EQ(tree->ComputeValueOfChildAsDouble(1, 0.0, 0.0, 1.0), 1.0);
  EXPECT_EQ(tree->GetValueOfChildAsDouble(1), 1.0);
  EXPECT_EQ(tree->ComputeValueOfChildAsInt(2, 0.0, 0, 5), 5);
  EXPECT_TRUE(tree->GetChild(2)->GetValue()->Is(5));
  // In range nothing is written: the integer stays one, the real keeps its fraction.
  EXPECT_EQ(tree->ComputeValueOfChildAsDouble(3, 0.0, 0.0, 1.0), 1.0);
  EXPECT_TRUE(tree->GetChild(3)->GetValue()->IsInt());
  EXPECT_EQ(tree->ComputeValueOfChildAsInt(4, 0.0, 0, 5), 2);
  EXPECT_EQ(tree->GetValueOfChildAsDouble(4), 2.75);
  EXPECT_EQ(tree->ComputeValueOfChildAsDouble(5, 0.0, DBL_MIN, DBL_MAX), DBL_MIN);
  EXPECT_EQ(tree->GetValueOfChildAsDouble(6), 0.0);
  EXPECT_EQ(tree->ComputeValueAsProbability(0.0), 1.0);
  EXPECT_EQ(tree->GetValueAsDouble(), 1.0);
  EXPECT_EQ(Tree(Node::LOG, {0})->ComputeValueAsProbability(0.0), 0.0);
}

TEST(Expression, CopiesAreDeep) {
  OrvaParameter p(&TheModel(), "p");
  const Tree tree(Node::MUL, {&p, {Node::UNIFORM_DEVIATE, {2, 6}}, 3});
  {
    const Tree copy{Node::Copy(&TheModel(), tree.get())};
    EXPECT_EQ(copy->GetChild(1)->GetReferencedParameter(), &p);
    EXPECT_EQ(p.GetNumberOfOccurrences(), 2);
    copy->ResetRandomDeviates();
    EXPECT_EQ(copy->GetValueOfChildAsDouble(2), 4.0);
    copy->ComputeValueOfChildAsDouble(3, 0.0, 0.0, 1.0);
  }
  EXPECT_EQ(p.GetNumberOfOccurrences(), 1);
  EXPECT_EQ(tree->GetValueOfChildAsDouble(3), 3.0);
}

// Two states, working and failed: Q' = λ (1 - Q) - μ Q from Q(0) = γ.
double SolveTwoStates(double gamma, double lambda, double mu, double t) {
  return Integrate<1>([&](const State<1>& q) { return State<1>{lambda * (1 - q[0]) - mu * q[0]}; },
                      {gamma}, t)[0];
}

TEST(Expression, ModelsOfOneComponent) {
  EXPECT_DOUBLE_EQ(ValueOf({Node::EXPONENTIAL, {0.1, DATE}}, 5.0), 1 - std::exp(-0.5));
  EXPECT_EQ(ValueOf({Node::EXPONENTIAL, {-1, DATE}}, 5.0), 0.0);
  for (const double t : {0.0, 0.7, 3.0, 40.0}) {
    SCOPED_TRACE(t);
    EXPECT_NEAR(ValueOf({Node::GLM, {0.3, 0.2, 0.5, DATE}}, t), SolveTwoStates(0.3, 0.2, 0.5, t),
                1e-8);
    EXPECT_NEAR(ValueOf({Node::GLM, {7, 0.2, -1, DATE}}, t), 1.0, 1e-12);  // γ and μ are bounded
    EXPECT_NEAR(ValueOf({Node::GLM, {0.3, 0, 0, DATE}}, t), 0.3, 1e-12);   // nothing happens
    EXPECT_NEAR(ValueOf({Node::MTT, {5, 2, DATE}}, t), SolveTwoStates(0, 0.2, 0.5, t), 1e-8);
  }
  EXPECT_NEAR(ValueOf({Node::MTT, {0, 2, DATE}}, 1.0), 1.0, 1e-12);
  EXPECT_DOUBLE_EQ(ValueOf({Node::WEIBULL, {4, 2, DATE}}, 2.0), 1 - std::exp(-0.25));
  EXPECT_DOUBLE_EQ(ValueOf({Node::WEIBULL, {0, 2, 2e-10}}), 1 - std::exp(-4.0));

  // Dormant: the failed share of a cycle of length T that is prolonged by the repair time x after
  // a failure, with the failed time within T integrated by Simpson's rule.
  const double lambda = 0.3, repair = 2.0, T = 4.0;
  const auto failed = [&](double s) { return 1 - std::exp(-lambda * s); };
  double down = 0.0;
  for (double s = 0.0; s < T; s += 0.125) {
    down += (failed(s) + 4 * failed(s + 0.0625) + failed(s + 0.125)) * 0.125 / 6;
  }
  const double repairTime = repair * failed(T);
  EXPECT_NEAR(ValueOf({Node::DORMANT, {lambda, repair, T}}, 99.0),
              (down + repairTime) / (T + repairTime), 1e-7);
  EXPECT_EQ(ValueOf({Node::DORMANT, {0, 0, 0}}), 0.0);

  // Bounded time: the clock runs from 3 to 7. The value is kept positive.
  const auto bound = [](double t) {
    return ValueOf({Node::BOUND_TIME, {3, 4, {Node::EXPONENTIAL, {0.1, DATE}}, DATE}}, t);
  };
  EXPECT_EQ(bound(2.0), 2.2250738585072014e-308);
  EXPECT_EQ(bound(3.0), 2.2250738585072014e-308);
  EXPECT_DOUBLE_EQ(bound(5.0), 1 - std::exp(-0.2));
  EXPECT_DOUBLE_EQ(bound(7.0), 1 - std::exp(-0.4));
  EXPECT_DOUBLE_EQ(bound(70.0), 1 - std::exp(-0.4));
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
  for (const auto& row : rows) {
    EXPECT_NEAR(
        ValueOf({Node::STANDBY, {row.n, row.k, row.r, row.lambda, row.lambdaStandby, row.mu}}),
        SolveStandby(row.n, row.k, row.r, row.lambda, row.lambdaStandby, row.mu), 1e-10)
        << row.n << row.k << row.r;
  }
  EXPECT_EQ(ValueOf({Node::STANDBY, {3, 0, 1, 0.5, 0.5, 1.0}}), 0.0);           // nothing is needed
  EXPECT_NEAR(ValueOf({Node::STANDBY, {2, 1, 0, 0.5, 0.5, 1.0}}), 1.0, 1e-12);  // no repair
  // k and r are bounded by n: the same as 2-out-of-2 with two repairmen.
  EXPECT_DOUBLE_EQ(ValueOf({Node::STANDBY, {2, 9, 9, 0.5, 0.1, 1.0}}),
                   ValueOf({Node::STANDBY, {2, 2, 2, 0.5, 0.1, 1.0}}));
}

struct PeriodicTest {
  double lambda, lambdaTest, mu, tau, theta, gamma, pi;
  bool isAvailable;
  double sigma, omega;

  X Expression() const {
    return {Node::PERIODIC_TEST,
            {lambda, lambdaTest, mu, tau, theta, gamma, pi, isAvailable, sigma, omega, DATE}};
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
    const Tree tree(test.Expression());
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
    EXPECT_NEAR(ValueOf({Node::PERIODIC_TEST, {0.05, 0.3, 8, 5, DATE}}, t),
                SolvePeriodicTest(perfect, t), 1e-9)
        << t;
  }
  // Four: as good as new after each test, as bad as it gets at the date of one.
  const double elapsed[][2] = {{3, 3}, {5, 5}, {6, 1}, {13, 8}, {21, 8}, {23.5, 2.5}};
  for (const auto& [t, d] : elapsed) {
    EXPECT_DOUBLE_EQ(ValueOf({Node::PERIODIC_TEST, {0.05, 8, 5, DATE}}, t), 1 - std::exp(-0.05 * d))
        << t;
  }
  // Without an interval nothing is ever tested after θ.
  EXPECT_DOUBLE_EQ(ValueOf({Node::PERIODIC_TEST, {0.05, 0.3, 0, 5, DATE}}, 40.0),
                   1 - std::exp(-0.25));
}

TEST(Expression, StationaryTestCyclesAreSkipped) {
  // Dates are exact in binary, so that only the number of cycles differs.
  const PeriodicTest test = {0.05, 0.125, 0.25, 8, 4, 0.0625, 0.5, false, 0.75, 0.125};
  const Tree tree(test.Expression());
  for (const double offset : {0.25, 3.0, 7.5}) {
    const double early = tree->ComputeValue(4 + 8 * 200.0 + offset)->ToDouble();
    EXPECT_NEAR(early, SolvePeriodicTest(test, 4 + 8 * 200.0 + offset), 1e-9);
    EXPECT_NEAR(tree->ComputeValue(4 + 8e6 + offset)->ToDouble(), early, 1e-12);
  }
  // The date of a test reached by skipping is the start of that test, not the end of the cycle
  // before: a unit that never fails is unavailable there from the third test on, as defined.
  const Tree sound(PeriodicTest{0, 0, 0, 8, 4, 0, 1, false, 1, 0}.Expression());
  EXPECT_EQ(sound->ComputeValue(4 + 2 * 8)->ToDouble(), 0.0);
  EXPECT_EQ(sound->ComputeValue(4 + 3 * 8)->ToDouble(), 1.0);
}

TEST(Expression, TimeAndRepairDependence) {
  OrvaParameter failing(&TheModel(), "failing"), undefined(&TheModel(), "undefined");
  failing.SetDefinition(X(Node::EXPONENTIAL, {0.1, DATE}).node);
  const struct {
    X expression;
    bool time, repair;
  } rows[] = {
      {DATE, true, false},
      {&failing, true, true},
      {&undefined, false, false},
      {{Node::ITE, {true, 1, {Node::NEG, {&failing}}}}, true, true},
      {{Node::SWITCH, {{Node::CASE, {true, DATE}}}}, true, false},
      {{Node::DIRAC, {DATE, 5}}, true, false},
      {{Node::EXPONENTIAL, {0.1, 5}}, false, true},
      {{Node::GLM, {0, 0.1, 0.2, 5}}, false, true},
      {{Node::MTT, {100, 10, DATE}}, true, false},
      {{Node::MTT, {100, &failing, 1}}, true, true},
      {{Node::WEIBULL, {100, 2, DATE}}, true, false},
      {{Node::WEIBULL, {&failing, 2, 1}}, true, true},
      {{Node::DORMANT, {0.1, 1, 1}}, false, true},
      {{Node::STANDBY, {2, 1, 1, 0.1, 0.1, 1}}, false, true},
      {{Node::PERIODIC_TEST, {0.1, 10, 1, 5}}, true, true},
      {{Node::BOUND_TIME, {1, 1, 0.5, 5}}, true, false},
      {{Node::BOUND_TIME, {1, 1, &failing, 5}}, true, true},
      {{Node::UNIFORM_DEVIATE, {DATE, &failing}}, false, false},
      {{Node::HISTOGRAM, {0, {Node::BIN, {DATE, &failing}}}}, false, false},
  };
  for (const auto& row : rows) {
    const Tree tree(row.expression);
    EXPECT_EQ(tree->IsTimeDependent(), row.time) << &row - rows;
    EXPECT_EQ(tree->IsRepairDependent(), row.repair) << &row - rows;
  }
}

TEST(Expression, FailureIntensities) {
  const auto exponential = [](double lambda) { return X(Node::EXPONENTIAL, {lambda, DATE}); };
  const double survival = std::exp(-0.5);  // of rate 0.1 at date 5

  // Constants do not fail, even if made of a rate.
  EXPECT_EQ(IntensityOf(0.3, 5.0), 0.0);
  EXPECT_EQ(IntensityOf({Node::EXPONENTIAL, {0.1, 5}}, 5.0), 0.0);
  const Tree certain{X(1.5)};
  certain->ComputeProbabilityAndUnconditionalFailureIntensity(5.0);
  EXPECT_EQ(certain->GetValueAsDouble(), 1.0);

  // Failure rate × availability.
  EXPECT_NEAR(IntensityOf(exponential(0.1), 5.0), 0.1 * survival, 1e-12);
  EXPECT_NEAR(IntensityOf(exponential(0.1), -5.0), 0.1, 1e-12);  // as at date 0
  EXPECT_NEAR(IntensityOf({Node::GLM, {0.3, 0.2, 0.5, DATE}}, 3.0),
              0.2 * (1 - SolveTwoStates(0.3, 0.2, 0.5, 3.0)), 1e-8);
  EXPECT_NEAR(IntensityOf({Node::MUL, {0.5, exponential(0.1)}}, 5.0),
              0.5 * 0.1 * (1 - 0.5 * (1 - survival)), 1e-12);
  EXPECT_NEAR(IntensityOf({Node::MUL, {exponential(0.1), exponential(0.2)}}, 5.0),
              0.1 * 0.2 * (1 - (1 - survival) * (1 - std::exp(-1.0))), 1e-12);
  const auto choice = [&] {
    return X(Node::ITE, {{Node::LT, {DATE, 10}}, exponential(0.1), exponential(0.2)});
  };
  EXPECT_NEAR(IntensityOf(choice(), 5.0), 0.1 * survival, 1e-12);
  EXPECT_NEAR(IntensityOf(choice(), 20.0), 0.2 * std::exp(-4.0), 1e-12);
  // Rate of MTT: 1 / MTTF, when the whole counts as repairable.
  EXPECT_NEAR(IntensityOf({Node::ITE, {true, {Node::MTT, {5, 2, DATE}}, exponential(0.1)}}, 3.0),
              0.2 * (1 - SolveTwoStates(0, 0.2, 0.5, 3.0)), 1e-8);
  OrvaParameter p(&TheModel(), "p");
  p.SetDefinition(exponential(0.1).node);
  p.ComputeValue(5.0);
  EXPECT_NEAR(IntensityOf(&p, 5.0), 0.1 * survival, 1e-12);

  // Repairable without a rate of its own: sums, bounded times, standby, a switch over cases.
  EXPECT_EQ(IntensityOf({Node::ADD, {0.1, exponential(0.1)}}, 5.0), 0.0);
  EXPECT_EQ(IntensityOf({Node::BOUND_TIME, {1, 9, exponential(0.1), DATE}}, 5.0), 0.0);
  EXPECT_EQ(IntensityOf({Node::STANDBY, {2, 1, 1, 0.1, DATE, 1}}, 5.0), 0.0);
  EXPECT_EQ(IntensityOf({Node::SWITCH, {{Node::CASE, {true, exponential(0.1)}}}}, 5.0), 0.0);
  // Without a case it takes the last child's rate; its value is that child's first, here λ.
  EXPECT_NEAR(IntensityOf({Node::SWITCH, {exponential(0.1)}}, 5.0), 0.1 * (1 - 0.1), 1e-12);

  // Periodic tests: the rate during a test is the second.
  const Tree tested(PeriodicTest{0.05, 0.5, 0.3, 20, 10, 0.1, 2, true, 0.9, 0.1}.Expression());
  const double rates[][2] = {{5, 0.05}, {11, 0.5}, {15, 0.05}, {31, 0.5}, {33, 0.05}};
  for (const auto& [t, rate] : rates) {
    const double w = tested->ComputeProbabilityAndUnconditionalFailureIntensity(t);
    EXPECT_NEAR(w, rate * (1 - tested->GetValueAsDouble()), 1e-12) << t;
  }
  EXPECT_NEAR(IntensityOf({Node::PERIODIC_TEST, {0.05, 8, 5, DATE}}, 6.0), 0.05 * std::exp(-0.05),
              1e-12);
}

// P(t) = c t²: the forward difference over h is c (2 t + h).
TEST(Expression, FailureIntensityByDifferences) {
  constexpr double c = 1e-6;
  const Tree tree(Node::MUL, {c, DATE, DATE});
  const struct {
    double t, base, h;
  } rows[] = {{10, 10, 0.01}, {100, 100, 0.1}, {200, 200, 0.001}, {0, 0, 0.001}, {-7, 0, 0.001}};
  for (const auto& row : rows) {
    const double p = c * row.base * row.base;
    const double w = tree->ComputeProbabilityAndUnconditionalFailureIntensity(row.t);
    EXPECT_NEAR(w / (c * (2 * row.base + row.h) * (1 - p)), 1.0, 1e-8) << row.t;
    EXPECT_DOUBLE_EQ(tree->GetValueAsDouble(), p) << row.t;
  }
}

TEST(Expression, DeviatesAreDrawnAndReset) {
  LumoCongruentialRandomizer randomizer(1), expected(1);
  const struct {
    X expression;
    std::function<double()> draw;
    double central;
  } rows[] = {
      {{Node::UNIFORM_DEVIATE, {2, 5}}, [&] { return expected.UniformDraw(2, 5); }, 3.5},
      {{Node::NORMAL_DEVIATE, {10, 2}}, [&] { return expected.NormalDraw(10, 2); }, 10},
      {{Node::LOGNORMAL_DEVIATE, {0.1, 3, 0.95}},
       [&] { return expected.LognormalDraw(0.1, 3, 0.95); },
       0.1},
      {{Node::BETA_DEVIATE, {2, 6}}, [&] { return expected.BetaDraw(2, 6); }, 0.25},
      {{Node::GAMMA_DEVIATE, {3, 0.5}}, [&] { return expected.GammaDraw(3, 0.5); }, 1.5},
      // Parameters are kept positive, which takes the lower bound to just above 0.
      {{Node::UNIFORM_DEVIATE, {-3, 4}}, [&] { return expected.UniformDraw(DBL_MIN, 4); }, 2},
      {{Node::NORMAL_DEVIATE, {-1, 2}}, [&] { return expected.NormalDraw(DBL_MIN, 2); }, DBL_MIN},
  };
  for (const auto& row : rows) {
    const Tree tree(row.expression);
    SCOPED_TRACE(&row - rows);
    EXPECT_TRUE(tree->ComputeValue(0.0)->IsNil());
    for (int run = 0; run < 3; ++run) {
      tree->DrawRandomDeviates(&randomizer);
      EXPECT_DOUBLE_EQ(tree->ComputeValue(9.0)->ToDouble(), row.draw());
    }
    tree->ResetRandomDeviates();
    EXPECT_DOUBLE_EQ(tree->ComputeValue(9.0)->ToDouble(), row.central);
    EXPECT_EQ(randomizer.GetSeed(), expected.GetSeed());
  }
  // Deviates below the one that is drawn are set to their central values, as are those below an
  // operator.
  const Tree nested(Node::LOGNORMAL_DEVIATE, {{Node::UNIFORM_DEVIATE, {2, 4}}, 3, 0.9});
  nested->GetChild(1)->DrawRandomDeviates(&randomizer);
  expected.UniformDraw();
  nested->DrawRandomDeviates(&randomizer);
  EXPECT_EQ(nested->GetValueOfChildAsDouble(1), 3.0);
  EXPECT_DOUBLE_EQ(nested->GetValueAsDouble(), expected.LognormalDraw(3, 3, 0.9));
  const Tree product(Node::MUL, {2, {Node::UNIFORM_DEVIATE, {2, 4}}});
  product->DrawRandomDeviates(&randomizer);
  EXPECT_EQ(product->ComputeValue(0.0)->ToDouble(), 6.0);
  EXPECT_EQ(randomizer.GetSeed(), expected.GetSeed());
}

TEST(Expression, HistogramsDrawABin) {
  LumoCongruentialRandomizer randomizer(1), expected(1);
  const Tree tree(Node::HISTOGRAM,
                  {1, {Node::BIN, {2, 10}}, {Node::BIN, {4, 20}}, {Node::BIN, {5, 70}}});
  tree->ResetRandomDeviates();
  EXPECT_DOUBLE_EQ(tree->ComputeValue(0.0)->ToDouble(), (10 * 1 + 20 * 2 + 70 * 1) / 4.0);
  for (int run = 0; run < 50; ++run) {
    tree->DrawRandomDeviates(&randomizer);
    const double u = expected.UniformDraw(1, 5);
    EXPECT_EQ(tree->ComputeValue(0.0)->ToDouble(), u <= 2 ? 10 : u <= 4 ? 20 : 70) << u;
  }
  const Tree open(Node::HISTOGRAM, {3, {Node::BIN, {4, 20}}, 5});
  open->DrawRandomDeviates(&randomizer);
  EXPECT_EQ(open->GetValueAsDouble(), 3.0);
  open->ResetRandomDeviates();
  EXPECT_EQ(open->GetValueAsDouble(), 3.0);
}

}  // namespace
