#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "OrvaTestSupport.h"
#include "model/OrvaGate.h"
#include "quantification/OrvaHandle.h"
#include "system/OrvaRewriter.h"
#include "system/OrvaSystem.h"
#include "system/OrvaSystemBuilder.h"

namespace {

using Value = OrvaVariable::Value;

struct Row {
  const char* left;
  int k;
  const char* literals;  // "a -b c"
};

// Variables in the order given, one equation per row.
void Fill(OrvaSystem& system, const std::vector<const char*>& names, const std::vector<Row>& rows) {
  for (std::size_t i = 0; i < names.size(); ++i) system.SetVariable(static_cast<int>(i), names[i]);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    OrvaEquation* equation = system.GetEquation(static_cast<int>(i));
    std::istringstream text(rows[i].literals);
    std::vector<std::string> words;
    for (std::string word; text >> word;) words.push_back(word);
    equation->CreateFaninTable(static_cast<int>(words.size()));
    for (std::size_t j = 0; j < words.size(); ++j) {
      const bool isPositive = words[j][0] != '-';
      OrvaVariable* variable = system.GetVariable(words[j].c_str() + (isPositive ? 0 : 1));
      equation->SetFanin(static_cast<int>(j), variable, isPositive);
    }
    equation->SetMin(rows[i].k);
    OrvaVariable* left = system.GetVariable(rows[i].left);
    equation->SetFanout(left);
    left->SetDefinition(equation);
  }
  system.BuildListsOfOccurrences();
}

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

int CompareNamesOfLiterals(const void* a, const void* b) {
  return static_cast<const OrvaLiteral*>(a)->GetVariable()->CompareNames(
      static_cast<const OrvaLiteral*>(b)->GetVariable());
}

TEST(Equation, FaninTable) {
  OrvaSystem system(4, 1);
  Fill(system, {"a", "b", "c", "g"}, {{"g", 2, "c -a b a -c"}});
  OrvaEquation& equation = *system.GetEquation(0);
  OrvaVariable* variable = nullptr;
  bool sign = true;
  equation.GetFanin(1, variable, sign);
  EXPECT_STREQ(variable->GetName(), "a");
  EXPECT_FALSE(sign);
  for (const int outside : {-1, 5}) {
    equation.SetFanin(outside, variable, false);
    sign = false;
    equation.GetFanin(outside, variable, sign);
    EXPECT_EQ(variable, nullptr);
    EXPECT_TRUE(sign);
    variable = system.GetVariable(0);
  }
  equation.SwapFanins(0, 2);
  EXPECT_EQ(Write(equation), "g=2(b,-a,c,a,-c)");
  equation.SortFanins(&CompareNamesOfLiterals);
  EXPECT_EQ(Write(equation), "g=2(-a,a,b,c,-c)");  // equal ones keep their order
}

// The value of the right member is fixed when all ways to fix the unfixed literals agree; otherwise
// it is what the candidate values make it.
TEST(Equation, RightMemberFollowsFromItsLiterals) {
  OrvaSystem system(4, 1);
  Fill(system, {"a", "b", "c", "g"}, {{"g", 0, "a -b c"}});
  OrvaEquation& equation = *system.GetEquation(0);
  for (int code = 0; code < 64; ++code) {
    int values[3];
    for (int i = 0; i < 3; ++i) {
      values[i] = code >> (2 * i) & 3;
      system.GetVariable(i)->SetCandidateValue(static_cast<Value>(values[i]));
    }
    values[1] ^= 1;  // the negative literal
    for (int k = -1; k <= 5; ++k) {
      equation.SetMin(k);
      equation.ResetCandidateCounts();
      bool canBeTrue = false;
      bool canBeFalse = false;
      bool candidate = false;
      for (int world = 0; world < 8; ++world) {
        int numberOfTrue = 0;
        bool isCandidate = true;
        bool isPossible = true;
        for (int i = 0; i < 3; ++i) {
          const bool isTrue = (world >> i & 1) != 0;
          const bool taken = values[i] == 1 || values[i] == 3;
          if (values[i] >= 2 && isTrue != taken) isPossible = false;
          if (isTrue != taken) isCandidate = false;
          numberOfTrue += isTrue ? 1 : 0;
        }
        if (!isPossible) continue;
        (numberOfTrue >= k ? canBeTrue : canBeFalse) = true;
        if (isCandidate) candidate = numberOfTrue >= k;
      }
      const Value expected = !canBeFalse  ? OrvaVariable::NECESSARILY_TRUE
                             : !canBeTrue ? OrvaVariable::NECESSARILY_FALSE
                             : candidate  ? OrvaVariable::POSSIBLY_TRUE
                                          : OrvaVariable::POSSIBLY_FALSE;
      ASSERT_EQ(equation.GetRightMemberCandidateValue(), expected) << code << ", k = " << k;
      system.GetVariable("g")->SetCandidateValue(OrvaVariable::NECESSARILY_FALSE);
      EXPECT_EQ(equation.IsResolved(), OrvaVariable::IsFixed(expected));
      system.GetVariable("g")->SetCandidateValue(OrvaVariable::POSSIBLY_TRUE);
      EXPECT_FALSE(equation.IsResolved());
    }
  }
}

TEST(System, DictionaryOccurrencesAndTop) {
  OrvaSystem system(6, 2);
  // f occurs nowhere and comes before top; b stands twice in one equation.
  Fill(system, {"b", "f", "g", "a", "top", "c"}, {{"top", 2, "g a -b b b"}, {"g", 1, "-b a c"}});
  EXPECT_STREQ(system.GetTopVariable()->GetName(), "top");
  OrvaVariable* b = system.GetVariable("b");
  EXPECT_EQ(b->GetNumberOfOccurrences(true), 2);
  EXPECT_EQ(b->GetNumberOfOccurrences(false), 2);
  EXPECT_EQ(b->GetPositiveOccurrence(1), system.GetEquation(0));
  EXPECT_EQ(b->GetNegativeOccurrence(0), system.GetEquation(0));
  EXPECT_EQ(b->GetNegativeOccurrence(1), system.GetEquation(1));
  EXPECT_TRUE(system.GetVariable("f")->IsInputVariable());
  EXPECT_TRUE(system.GetVariable("f")->IsOutputVariable());
  EXPECT_TRUE(system.GetVariable("g")->IsInternalVariable());
  EXPECT_EQ(system.GetNumberOfAtomicVariables(), 4);
  EXPECT_EQ(system.GetNumberOfModules(), 0);
  system.BuildListsOfOccurrences();  // afresh
  EXPECT_EQ(b->GetNumberOfOccurrences(), 4);

  system.ChangeNameOfVariable(b, "z");
  EXPECT_EQ(system.GetVariable("b"), nullptr);
  EXPECT_EQ(system.GetVariable("z"), b);
  std::string names;
  for (const OrvaVariable* variable : LumoItems<OrvaVariable>(system.GetDictionary())) {
    names += variable->GetName() + std::string(" ");
  }
  EXPECT_EQ(names, "a c f g top z ");

  // Down from g: its inputs, and nothing above. Up from a: both gates.
  system.GetVariable("g")->SetFlagsOfDescendants(1);
  const auto flags = [&] {
    std::string text;
    for (const OrvaVariable& variable : system.GetVariables()) {
      text += std::to_string(variable.GetFlag());
    }
    return text;
  };
  EXPECT_EQ(flags(), "101101");
  system.GetVariable("g")->SetFlagsOfDescendants(0);
  system.GetVariable("a")->SetFlagsOfAncestors(1);
  EXPECT_EQ(flags(), "001110");

  OrvaSystem single(1, 0);  // a top that is a basic event
  Fill(single, {"a"}, {});
  EXPECT_STREQ(single.GetTopVariable()->GetName(), "a");
}

TEST(System, ResetKeepsCutsetValuesOfGates) {
  OrvaSystem system(5, 3);
  Fill(system, {"a", "b", "g", "always", "top"},
       {{"g", 1, "a"}, {"always", 0, "b"}, {"top", 2, "g -b always"}});
  system.ResetVariableValues();
  // An equation with k <= 0 is true from the start: top = not b and always.
  EXPECT_TRUE(system.GetVariable("always")->GetCutsetValue());
  EXPECT_TRUE(system.GetVariable("top")->GetCutsetValue());
  EXPECT_EQ(system.GetVariable("top")->GetCandidateValue(), OrvaVariable::POSSIBLY_TRUE);
  EXPECT_EQ(system.GetVariable("always")->GetCandidateValue(), OrvaVariable::NECESSARILY_TRUE);
  system.SetVariableCutsetValue(system.GetVariable("a"), true);
  system.SetVariableCutsetValue(system.GetVariable("top"), false);  // no input variable: ignored
  system.GetVariable("b")->SetCandidateValue(OrvaVariable::NECESSARILY_TRUE);
  EXPECT_TRUE(system.GetVariableCutsetValue(system.GetVariable("g")));
  EXPECT_EQ(system.GetEquation(2)->GetCutsetCount(), -1);

  system.ResetWalkValuations();
  EXPECT_FALSE(system.GetVariable("a")->GetCutsetValue());
  EXPECT_EQ(system.GetVariable("b")->GetCandidateValue(), OrvaVariable::POSSIBLY_FALSE);
  EXPECT_TRUE(system.GetVariable("g")->GetCutsetValue());  // stays
  EXPECT_EQ(system.GetEquation(0)->GetCutsetCount(), 1);   // though a is false
  EXPECT_EQ(system.GetEquation(2)->GetCutsetCount(), -1);  // g, -b and always count as true
  EXPECT_EQ(system.GetVariable("a")->GetFlag(), 0);

  system.ResetVariableValues();
  EXPECT_FALSE(system.GetVariable("g")->GetCutsetValue());
  EXPECT_EQ(system.GetEquation(2)->GetCutsetCount(), 0);
}

// Each change of an input variable is carried upward by counts; the same from scratch.
TEST(System, CutsetValuationAgreesWithRecomputation) {
  std::mt19937 random(7);
  const auto draw = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  for (int trial = 0; trial < 200; ++trial) {
    const int inputs = 1 + draw(6);
    const int gates = 1 + draw(10);
    OrvaSystem system(inputs + gates, gates);
    for (int i = 0; i < gates; ++i) {
      OrvaEquation* equation = system.GetEquation(i);
      equation->CreateFaninTable(1 + draw(5));
      for (int j = 0; j < equation->GetSize(); ++j) {
        equation->SetFanin(j, system.GetVariable(draw(inputs + i)), draw(3) != 0);
      }
      equation->SetMin(draw(equation->GetSize() + 3) - 1);  // beyond 1 .. n now and then
      equation->SetFanout(system.GetVariable(inputs + i));
      equation->GetFanout()->SetDefinition(equation);
    }
    system.BuildListsOfOccurrences();
    std::vector<char> values(static_cast<std::size_t>(inputs + gates), 0);
    const auto recompute = [&] {
      for (const OrvaEquation& equation : system.GetEquations()) {
        int numberOfTrue = 0;
        for (const OrvaLiteral& literal : equation.GetFanins()) {
          const auto i = static_cast<std::size_t>(literal.GetVariable()->GetNumber());
          numberOfTrue += (values[i] != 0) == literal.GetSign() ? 1 : 0;
        }
        const auto left = static_cast<std::size_t>(equation.GetFanout()->GetNumber());
        values[left] = numberOfTrue >= equation.GetMin() ? 1 : 0;
      }
    };
    recompute();
    for (OrvaVariable& variable : system.GetVariables()) {
      if (variable.IsInternalVariable()) variable.GetDefinition()->ResetCutsetCount();
      variable.ResetCutsetValue(values[static_cast<std::size_t>(variable.GetNumber())] != 0);
    }
    for (int step = 0; step < 30; ++step) {
      const int input = draw(inputs);
      const bool value = draw(2) == 0;
      system.SetVariableCutsetValue(system.GetVariable(input), value);
      values[static_cast<std::size_t>(input)] = value ? 1 : 0;
      recompute();
      for (const OrvaVariable& variable : system.GetVariables()) {
        const auto i = static_cast<std::size_t>(variable.GetNumber());
        ASSERT_EQ(variable.GetCutsetValue(), values[i] != 0)
            << "trial " << trial << ", step " << step << ", variable " << i;
      }
    }
  }
}

class BuilderTest : public testing::Test {
 protected:
  // Defines a gate: "and", "or", "atleast2", "not" or "event" over "a -b c".
  void Gate(const std::string& name, const std::string& type, const std::string& children) {
    const bool isAtLeast = type.rfind("atleast", 0) == 0;
    std::string text;
    std::istringstream words(children);
    for (std::string word; words >> word;) {
      text += word[0] == '-' ? "<not><event name=\"" + word.substr(1) + "\"/></not>"
                             : "<event name=\"" + word + "\"/>";
    }
    if (isAtLeast) text = "<atleast min=\"" + type.substr(7) + "\">" + text + "</atleast>";
    if (!isAtLeast && type != "event") text = "<" + type + ">" + text + "</" + type + ">";
    ASSERT_EQ(_engine.Load("<define-gate name=\"" + name + "\">" + text + "</define-gate>"), 0);
  }
  OrvaSystem* Build(const char* top, bool cutsModules) {
    _engine.GetModel()->Complete();
    OrvaEvent* event = _engine.GetEvent(top);
    OrvaHandle* handle =
        _engine->GetSystemBuilder()->BuildSystem(_engine.GetModel(), event, "S", cutsModules);
    EXPECT_EQ(handle, event->GetHandle("S"));
    EXPECT_EQ(handle->GetType(), OrvaHandle::SYSTEM_HANDLE);
    EXPECT_STREQ(handle->GetSystem()->GetName(), "S");
    for (const OrvaEvent* any : LumoItems<OrvaEvent>(_engine.GetModel()->GetEvents())) {
      EXPECT_EQ(any->GetVariable(), nullptr);
      EXPECT_EQ(any->GetFlag(), 0);
    }
    return handle->GetSystem();
  }

  OrvaTestEngine _engine;
};

TEST_F(BuilderTest, OneVariablePerEventOneEquationPerGate) {
  Gate("top", "and", "x -g x a");
  Gate("x", "event", "y");  // aliases have no variable
  Gate("y", "event", "g");
  Gate("g", "atleast2", "a -b h");
  Gate("h", "or", "c -a");
  OrvaSystem* system = Build("top", false);
  EXPECT_EQ(Write(system), "a b c h g top ; h=1(c,-a) g=2(a,-b,h) top=4(g,-g,g,a)");
  EXPECT_STREQ(system->GetTopVariable()->GetName(), "top");
  EXPECT_EQ(system->GetVariable("g")->GetEvent(), _engine.GetEvent("g"));
  EXPECT_EQ(system->GetVariable("g")->GetDefinition(), system->GetEquation(1));
  EXPECT_EQ(Write(Build("a", false)), "a ;");  // a basic event is its own top
}

TEST_F(BuilderTest, AliasedTopKeepsItsName) {
  Gate("top", "event", "x");
  Gate("x", "event", "g");
  Gate("g", "or", "a b");
  OrvaSystem* system = Build("top", true);
  EXPECT_EQ(Write(system), "a b top ; top=1(a,b)");
  EXPECT_EQ(system->GetTopVariable()->GetEvent(), _engine.GetEvent("top"));
}

// The threshold of a definition that is no AND, OR or ATLEAST stays what it is in a new equation,
// so that the gate is always true: as it is defined.
TEST_F(BuilderTest, OtherDefinitionsLeaveTheThreshold) {
  Gate("top", "or", "alias negation");
  Gate("alias", "event", "a");
  Gate("negation", "not", "a");
  EXPECT_EQ(Write(Build("top", false)),
            "a alias negation top ; alias=0() negation=0(a) top=1(alias,negation)");
}

TEST_F(BuilderTest, ModulesBecomeSystemsOfTheirOwn) {
  Gate("top", "or", "g k m");
  Gate("g", "and", "m x");
  Gate("k", "and", "n x");
  Gate("m", "or", "a p");  // referenced twice, and still a module
  Gate("p", "and", "b c");
  Gate("n", "atleast2", "d e f");
  ASSERT_EQ(
      _engine.Load("<define-basic-event name=\"a\"><float value=\"0.25\"/>"
                   "</define-basic-event><define-basic-event name=\"x\"><float value=\"0.5\"/>"
                   "</define-basic-event>"),
      0);
  _engine->GetRewriter()->DetectModules(_engine.GetModel(), _engine.GetEvent("top"));
  OrvaSystem* system = Build("top", true);
  EXPECT_EQ(Write(system), "m x g n k top ; g=2(m,x) k=2(n,x) top=1(g,k,m)");
  EXPECT_EQ(system->GetNumberOfModules(), 2);
  EXPECT_EQ(system->GetNumberOfAtomicVariables(), 3);
  ASSERT_NE(_engine.GetEvent("m")->GetHandle("S"), nullptr);
  OrvaSystem* module = _engine.GetEvent("m")->GetHandle("S")->GetSystem();
  EXPECT_EQ(Write(module), "a b c p m ; p=2(b,c) m=1(a,p)");  // p is not cut out of it
  EXPECT_EQ(Write(_engine.GetEvent("n")->GetHandle("S")->GetSystem()), "d e f n ; n=2(d,e,f)");
  EXPECT_EQ(_engine.GetEvent("p")->GetHandle("S"), nullptr);

  // Probabilities go to basic events; modules keep theirs, variables without event get 1.
  _engine.GetModel()->ComputeProbabilitiesOfBasicEvents(0.0);
  system->GetVariable("m")->SetProbability(0.75);
  system->GetVariable("m")->SetHighestCutsetProbability(0.125);
  system->GetVariable("n")->SetEvent(nullptr);
  system->GetVariable("n")->SetProbability(0.0);
  _engine->GetSystemBuilder()->LoadProbabilities(_engine.GetModel(), system, 0.0);
  EXPECT_EQ(system->GetVariable("x")->GetProbability(), 0.5);
  EXPECT_EQ(system->GetVariable("x")->GetHighestCutsetProbability(), 0.5);
  EXPECT_EQ(system->GetVariable("m")->GetProbability(), 0.75);
  EXPECT_EQ(system->GetVariable("m")->GetHighestCutsetProbability(), 0.125);
  EXPECT_EQ(system->GetVariable("n")->GetProbability(), 1.0);

  // Without modules everything is in one system.
  EXPECT_EQ(Build("top", false)->GetNumberOfEquations(), 6);
}

}  // namespace
