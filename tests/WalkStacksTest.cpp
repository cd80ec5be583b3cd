#include <cmath>
#include <string>

#include "OrvaTestSupport.h"
#include "mcs/OrvaCutset.h"
#include "mcs/OrvaResolvant.h"
#include "mcs/OrvaStack.h"
#include "mcs/OrvaUnitStack.h"
#include "system/OrvaSystem.h"

namespace {

using Value = OrvaVariable::Value;
constexpr Value F = OrvaVariable::NECESSARILY_FALSE;
constexpr Value T = OrvaVariable::NECESSARILY_TRUE;

TEST(Cutoff, DynamicThresholdRisesOnly) {
  OrvaCutoff cutoff;
  EXPECT_EQ(cutoff.GetMinimumContribution(), 1e-9);
  EXPECT_TRUE(cutoff.Check(2147483647, 0.0));
  cutoff.SetMaximumOrder(3);
  cutoff.SetMinimumProbability(1e-6);
  EXPECT_TRUE(cutoff.Check(3, 1e-6));
  EXPECT_FALSE(cutoff.Check(4, 1e-6));
  EXPECT_FALSE(cutoff.Check(3, 0.9e-6));
  cutoff.RecordProduct(1, 0.5);  // 0.5e-9 is below
  EXPECT_TRUE(cutoff.Check(1, 1e-6));
  cutoff.SetMinimumContribution(1e-3);
  cutoff.ResetCurrentSumOfProductProbabilities();
  cutoff.RecordProduct(1, 0.5);
  EXPECT_TRUE(cutoff.Check(1, 5.1e-4));
  EXPECT_FALSE(cutoff.Check(1, 4.9e-4));
  cutoff.RecordProduct(1, -0.25);
  EXPECT_FALSE(cutoff.Check(1, 4.9e-4));
  EXPECT_EQ(cutoff.GetCurrentNumberOfProducts(), 2);
  EXPECT_EQ(cutoff.GetCurrentSumOfProductProbabilities(), 0.25);
  EXPECT_EQ(cutoff.GetMinimumProbability(), 1e-6);
  cutoff.ResetCurrentSumOfProductProbabilities();
  EXPECT_TRUE(cutoff.Check(1, 1e-6));
  EXPECT_EQ(cutoff.GetCurrentNumberOfProducts(), 0);
}

TEST(WalkStacks, StackGrowsAndKeepsItsEntries) {
  OrvaVariable variables[20];
  OrvaStack stack(4);
  OrvaVariable* variable = variables;
  Value value = T;
  int order = 7;
  OrvaStack::Branching branching = OrvaStack::CUTOFF;
  stack.Pop(variable, value, order, branching);
  EXPECT_EQ(variable, nullptr);
  EXPECT_EQ(value, OrvaVariable::POSSIBLY_FALSE);
  EXPECT_EQ(branching, OrvaStack::UNIT);
  EXPECT_EQ(stack.GetOrder(), 0);
  for (int i = 0; i < 20; ++i) {
    stack.Push(&variables[i], static_cast<Value>(i % 4), i,
               static_cast<OrvaStack::Branching>(i % 3));
    // Full at capacity - 1, since slot 0 is not used.
    EXPECT_EQ(stack.GetCapacity(), i < 3 ? 4 : i < 7 ? 8 : i < 15 ? 16 : 32);
  }
  stack.GetFloor(3, variable, value, order, branching);
  EXPECT_EQ(variable, &variables[2]);
  EXPECT_EQ(value, F);
  EXPECT_EQ(order, 2);
  EXPECT_EQ(branching, OrvaStack::UNIT);
  EXPECT_EQ(stack.GetVariable(-1), &variables[19]);
  for (const int outside : {0, 21}) EXPECT_EQ(stack.GetVariable(outside), nullptr);
  stack.SetLastChoicePoint(19);
  EXPECT_FALSE(stack.IsAtLastChoicePoint());
  stack.Pop(variable, value, order, branching);
  EXPECT_EQ(variable, &variables[19]);
  EXPECT_TRUE(stack.IsAtLastChoicePoint());
  stack.Enlarge(10);
  EXPECT_EQ(stack.GetCapacity(), 32);
  OrvaSystem system(100, 0);
  stack.InitializeWalk(&system, nullptr);
  EXPECT_GE(stack.GetCapacity(), 100);
  EXPECT_EQ(stack.GetOrder(), 0);
}

TEST(WalkStacks, NoVariableWaitsTwice) {
  OrvaVariable a;
  OrvaVariable b;
  OrvaUnitStack stack(4);
  EXPECT_FALSE(stack.Push(&a, T));
  EXPECT_FALSE(stack.Push(&a, T));
  EXPECT_TRUE(stack.Push(&a, F));
  EXPECT_FALSE(stack.Push(&b, F));
  EXPECT_TRUE(stack.Push(&b, T));
  EXPECT_FALSE(stack.Push(&b, F));
  EXPECT_EQ(stack.GetOrder(), 2);
  EXPECT_EQ(stack.GetVariable(0), &a);
  OrvaVariable* variable;
  Value value;
  stack.Pop(variable, value);
  EXPECT_EQ(variable, &b);
  EXPECT_EQ(value, F);
  EXPECT_EQ(b.GetUnitValue(), 0);
  stack.Flush();
  EXPECT_EQ(a.GetUnitValue(), 0);
  stack.Pop(variable, value);
  EXPECT_EQ(variable, nullptr);
  a.SetUnitValue(OrvaVariable::POSSIBLY_TRUE);  // neither waits nor conflicts
  EXPECT_FALSE(stack.Push(&a, F));
  EXPECT_EQ(stack.GetOrder(), 0);
}

// Pushing checks nothing, so a walk must find room for all variables, whatever the shape.
TEST(WalkStacks, WalksFindRoom) {
  OrvaSystem wide(5000, 1);
  OrvaUnitStack stack(4);
  stack.InitializeWalk(&wide);
  for (OrvaVariable& variable : wide.GetVariables()) EXPECT_FALSE(stack.Push(&variable, T));
  EXPECT_EQ(stack.GetOrder(), 5000);
  stack.Flush();
  OrvaSystem deep(5000, 5000);
  OrvaResolvant resolvant(4);
  resolvant.InitializeWalk(&deep);
  for (OrvaVariable& variable : deep.GetVariables()) resolvant.Push(&variable);
  EXPECT_EQ(resolvant.GetOrder(), 5000);
  resolvant.Pop(2);
  resolvant.Push(deep.GetVariable(7));
  EXPECT_EQ(resolvant.GetOrder(), 3);
  EXPECT_EQ(resolvant.GetVariable(1), deep.GetVariable(1));
  EXPECT_EQ(resolvant.GetVariable(2), deep.GetVariable(7));
}

// top = or(a, g), g = and(b, c); variables a, b, c, g, top.
class CutsetTest : public testing::Test {
 protected:
  CutsetTest() {
    const char* const names[] = {"a", "b", "c", "g", "top"};
    for (int i = 0; i < 5; ++i) _system.SetVariable(i, names[i]);
    Define(0, 3, 2, 1, 2);
    Define(1, 4, 1, 0, 3);
    _system.BuildListsOfOccurrences();
    _system.ResetVariableValues();
  }
  OrvaVariable* Variable(const char* name) { return _system.GetVariable(name); }
  // "1" or "0" for the cutset value of each variable.
  std::string Valuation() {
    std::string text;
    for (const OrvaVariable& v : _system.GetVariables()) text += v.GetCutsetValue() ? "1" : "0";
    return text;
  }
  // Replaces the cutset by the variables named by single letters and tests it.
  bool Check(const std::string& letters) {
    while (_cutset.GetOrder() > 0) _cutset.Pop();
    for (const char letter : letters) _cutset.Push(Variable(std::string(1, letter).c_str()));
    const bool isMinimal = _cutset.CheckMinimality();
    for (const OrvaVariable& v : _system.GetVariables()) EXPECT_EQ(v.GetFlag(), 0);
    return isMinimal;
  }

  OrvaSystem _system{5, 2};
  OrvaCutoff _cutoff;
  OrvaCutset _cutset{2};

 private:
  void Define(int number, int left, int k, int first, int second) {
    OrvaEquation* equation = _system.GetEquation(number);
    equation->CreateFaninTable(2);
    equation->SetFanin(0, _system.GetVariable(first), true);
    equation->SetFanin(1, _system.GetVariable(second), true);
    equation->SetMin(k);
    equation->SetFanout(_system.GetVariable(left));
    _system.GetVariable(left)->SetDefinition(equation);
  }
};

TEST_F(CutsetTest, ProductAndLookAhead) {
  Variable("a")->SetProbability(0.9);
  Variable("a")->SetHighestCutsetProbability(0.5);  // what counts
  Variable("b")->SetHighestCutsetProbability(0.25);
  Variable("c")->SetHighestCutsetProbability(0.0);
  _cutset.InitializeWalk(&_system, &_cutoff);
  EXPECT_TRUE(_cutset.CheckCutoffAhead(Variable("c")));  // nothing is required
  _cutoff.SetMinimumProbability(0.125);
  EXPECT_FALSE(_cutset.CheckCutoffAhead(Variable("c")));
  _cutset.Push(Variable("a"));
  EXPECT_TRUE(_cutset.CheckCutoffAhead(Variable("b")));
  _cutoff.SetMinimumProbability(std::nextafter(0.125, 1.0));
  EXPECT_FALSE(_cutset.CheckCutoffAhead(Variable("b")));
  _cutset.Push(Variable("b"));
  EXPECT_FALSE(_cutset.CheckCutoff());
  _cutoff.SetMinimumProbability(0.0);
  for (const int maximum : {0, 1, 2, 3}) {
    _cutoff.SetMaximumOrder(maximum);
    EXPECT_EQ(_cutset.CheckCutoffAhead(Variable("c")), maximum == 3);
    EXPECT_EQ(_cutset.CheckCutoff(), maximum >= 2);
  }
  EXPECT_EQ(_cutset.GetProbability(1), 0.5);
  EXPECT_EQ(_cutset.GetProbability(2), 0.125);
  EXPECT_EQ(_cutset.GetProbability(3), 1.0);
  EXPECT_EQ(_cutset.GetVariable(1), Variable("a"));
  EXPECT_EQ(_cutset.GetVariable(-1), Variable("b"));
  EXPECT_EQ(_cutset.GetVariable(0), nullptr);
  EXPECT_EQ(_cutset.GetVariable(3), nullptr);
  OrvaVariable* variable;
  _cutset.Pop(variable);
  EXPECT_EQ(variable, Variable("b"));
  _cutset.GetTop(variable);
  EXPECT_EQ(variable, Variable("a"));
  EXPECT_EQ(_cutset.GetOrder(), 1);
}

TEST_F(CutsetTest, MinimalityMovesTheValuationByDifferences) {
  _cutset.InitializeWalk(&_system, &_cutoff);
  EXPECT_TRUE(Check(""));
  EXPECT_TRUE(Check("bc"));
  EXPECT_EQ(Valuation(), "01111");
  EXPECT_FALSE(Check("bca"));
  EXPECT_EQ(Valuation(), "11111");
  EXPECT_FALSE(Check("ac"));
  EXPECT_EQ(Valuation(), "10101");
  EXPECT_TRUE(Check("a"));
  EXPECT_EQ(Valuation(), "10001");
  EXPECT_TRUE(Check("b"));  // no cutset: none of its members keeps the top true
  EXPECT_EQ(Valuation(), "01000");
  EXPECT_TRUE(Check("cb"));
  _cutset.TerminateWalk();
  EXPECT_EQ(Valuation(), "00000");
  EXPECT_EQ(_cutset.GetOrder(), 0);
}

}  // namespace
