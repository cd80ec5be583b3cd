#include <climits>

#include "OrvaTestSupport.h"
#include "quantification/OrvaHandle.h"
#include "system/OrvaRewriter.h"
#include "system/OrvaSystemBuilder.h"

namespace {

using Value = OrvaVariable::Value;

std::string Write(const OrvaEquation& equation) {
  std::string text =
      std::string(equation.GetFanout()->GetName()) + "=" + std::to_string(equation.GetMin()) + "(";
  for (const OrvaLiteral& literal : equation.GetFanins()) {
    if (text.back() != '(') text += ",";
    text += std::string(literal.GetSign() ? "" : "-") + literal.GetVariable()->GetName();
  }
  return text + ")";
}

// "variables in array order; equations in array order".
std::string Write(OrvaSystem* system) {
  std::string text;
  for (const OrvaVariable& variable : system->GetVariables()) {
    text += variable.GetName() + std::string(" ");
  }
  text += ";";
  for (const OrvaEquation& equation : system->GetEquations()) text += " " + Write(equation);
  return text;
}

// Values 0 and 1 are possibly, 2 and 3 necessarily false and true.
TEST(Equation, RightMemberFollowsFromItsLiterals) {
  OrvaSystem system(4, 1);
  OrvaFillSystem(system, "a b c g", {"g 0 a -b c"});
  OrvaEquation& equation = *system.GetEquation(0);
  for (int code = 0; code < 64; ++code) {
    int fixed = 0, open = 0, candidates = 0;  // the literals that are true, may be, would be
    for (int i = 0; i < 3; ++i) {
      const int value = code >> (2 * i) & 3;
      system.GetVariable(i)->SetCandidateValue(static_cast<Value>(value));
      const bool isTrue = (value % 2 == 1) != (i == 1);  // b is negative
      fixed += value >= 2 && isTrue ? 1 : 0;
      open += value < 2 ? 1 : 0;
      candidates += isTrue ? 1 : 0;
    }
    for (const int k : {INT_MIN, -1, 0, 1, 2, 3, 4, 5, INT_MAX}) {
      equation.SetMin(k);
      equation.ResetCandidateCounts();
      const Value expected = fixed >= k         ? OrvaVariable::NECESSARILY_TRUE
                             : fixed + open < k ? OrvaVariable::NECESSARILY_FALSE
                             : candidates >= k  ? OrvaVariable::POSSIBLY_TRUE
                                                : OrvaVariable::POSSIBLY_FALSE;
      ASSERT_EQ(equation.GetRightMemberCandidateValue(), expected) << code << ", k = " << k;
      system.GetVariable("g")->SetCandidateValue(OrvaVariable::NECESSARILY_FALSE);
      EXPECT_EQ(equation.IsResolved(), OrvaVariable::IsFixed(expected));
      system.GetVariable("g")->SetCandidateValue(OrvaVariable::POSSIBLY_TRUE);
      EXPECT_FALSE(equation.IsResolved());
    }
  }
}

TEST(System, FaninsOccurrencesAndTop) {
  OrvaSystem system(6, 2);
  // f occurs nowhere and comes before top; b stands twice in one equation.
  OrvaFillSystem(system, "b f g a top c", {"top 2 g a -b b b", "g 1 -b a c"});
  EXPECT_STREQ(system.GetTopVariable()->GetName(), "top");
  OrvaVariable* b = system.GetVariable("b");
  system.BuildListsOfOccurrences();  // afresh
  EXPECT_EQ(b->GetNumberOfOccurrences(true) + b->GetNumberOfOccurrences(false), 4);
  EXPECT_EQ(b->GetNegativeOccurrence(1), system.GetEquation(1));
  EXPECT_EQ(system.GetNumberOfAtomicVariables(), 4);
  system.ChangeNameOfVariable(b, "z");
  EXPECT_EQ(system.GetVariable("b"), nullptr);
  EXPECT_EQ(OrvaNamesOf<OrvaVariable>(system.GetDictionary()), "a c f g top z");

  // Down from g: its inputs, and nothing above. Up from a: both gates.
  const auto takeFlags = [&] {
    std::string text;
    for (OrvaVariable& variable : system.GetVariables()) {
      text += std::to_string(variable.GetFlag());
      variable.SetFlag(0);
    }
    return text;
  };
  system.GetVariable("g")->SetFlagsOfDescendants(1);
  EXPECT_EQ(takeFlags(), "101101");
  system.GetVariable("a")->SetFlagsOfAncestors(1);
  EXPECT_EQ(takeFlags(), "001110");
}

TEST(System, ResetKeepsCutsetValuesOfGates) {
  OrvaSystem system(5, 3);
  OrvaFillSystem(system, "a b g always top", {"g 1 a", "always 0 b", "top 2 g -b always"});
  system.ResetVariableValues();
  // An equation with k <= 0 is true from the start: top = not b and always.
  EXPECT_TRUE(system.GetVariable("always")->GetCutsetValue());
  EXPECT_TRUE(system.GetVariable("top")->GetCutsetValue());
  EXPECT_EQ(system.GetVariable("top")->GetCandidateValue(), OrvaVariable::POSSIBLY_TRUE);
  system.SetVariableCutsetValue(system.GetVariable("a"), true);
  system.SetVariableCutsetValue(system.GetVariable("top"), false);  // no input variable: ignored
  EXPECT_EQ(system.GetEquation(2)->GetCutsetCount(), -1);
  system.ResetWalkValuations();
  EXPECT_FALSE(system.GetVariable("a")->GetCutsetValue());
  EXPECT_TRUE(system.GetVariable("g")->GetCutsetValue());  // stays
  EXPECT_EQ(system.GetEquation(0)->GetCutsetCount(), 1);   // though a is false
  EXPECT_EQ(system.GetEquation(2)->GetCutsetCount(), -1);  // g, -b and always count as true
  system.ResetVariableValues();
  EXPECT_FALSE(system.GetVariable("g")->GetCutsetValue());
  EXPECT_EQ(system.GetEquation(2)->GetCutsetCount(), 0);
}

TEST(SystemBuilder, OneVariablePerEventOneEquationPerGate) {
  // Aliases have no variable, but for the top. The threshold of a definition that is no AND, OR or
  // ATLEAST stays what it is in a new equation, so that the gate is always true: as it is defined.
  // m is a module, though it is referenced twice; p is not cut out of it.
  const char* const rows[][2] = {
      {"top = and(x,-g,x,a); x = y; y = g; g = atleast2(a,-b,h); h = or(c,-a)",
       "a b c h g top ; h=1(c,-a) g=2(a,-b,h) top=4(g,-g,g,a)"},
      {"top = x; x = g; g = or(a,b)", "a b top ; top=1(a,b)"},
      {"top = or(alias,negation); alias = a; negation = -a",
       "a alias negation top ; alias=0() negation=0(a) top=1(alias,negation)"},
      {"top = or(g,k,m); g = and(m,x); k = and(n,x); m = or(a,p); p = and(b,c); n = and(d,e)",
       "m x g n k top ; g=2(m,x) k=2(n,x) top=1(g,k,m) / a b c p m ; p=2(b,c) m=1(a,p) /"
       " d e n ; n=2(d,e)"}};
  for (const auto& [text, expected] : rows) {
    OrvaTestEngine engine;
    engine.Define(text);
    OrvaModel* model = engine.GetModel();
    model->Complete();
    OrvaEvent* top = engine.GetEvent("top");
    engine->GetRewriter()->DetectModules(model, top);
    OrvaHandle* handle = engine->GetSystemBuilder()->BuildSystem(model, top, "S", true);
    EXPECT_EQ(handle, top->GetHandle("S"));
    EXPECT_EQ(handle->GetSystem()->GetTopVariable()->GetEvent(), top);
    std::string found = Write(handle->GetSystem());
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(model->GetEvents())) {
      EXPECT_EQ(event->GetVariable(), nullptr);
      EXPECT_EQ(event->GetFlag(), 0);
      if (event == top || event->GetHandle("S") == nullptr) continue;
      found += " / " + Write(event->GetHandle("S")->GetSystem());
    }
    EXPECT_EQ(found, expected);
  }
}

TEST(SystemBuilder, ProbabilitiesGoToBasicEvents) {
  OrvaTestEngine engine;
  engine.Define("top = or(m,a,b); m = and(c,d); #a = 0.5; #b = 0.25");
  engine.MustRun("<build><minimal-cutsets top-event=\"top\"/></build>");
  OrvaSystem* system = engine.GetEvent("top")->GetHandle("system")->GetSystem();
  for (OrvaVariable& variable : system->GetVariables()) variable.SetProbability(0.75);
  system->GetVariable("b")->SetEvent(nullptr);
  engine->GetSystemBuilder()->LoadProbabilities(engine.GetModel(), system, 0.0);
  EXPECT_EQ(system->GetVariable("a")->GetHighestCutsetProbability(), 0.5);
  EXPECT_EQ(system->GetVariable("m")->GetProbability(), 0.75);  // a module keeps its own
  EXPECT_EQ(system->GetVariable("b")->GetProbability(), 1.0);   // without event
}

}  // namespace
