#include <map>

#include "OrvaTestSupport.h"
#include "model/OrvaGate.h"
#include "system/OrvaRewriter.h"

namespace {

class ShortModel : public OrvaTestEngine {
 public:
  std::string Formula(const char* name) {
    const OrvaGate* definition = GetEvent(name)->GetDefinition();
    if (definition != nullptr) {
      EXPECT_EQ(definition->GetParent(), nullptr) << name;
      EXPECT_EQ(definition->GetDefinedEvent(), GetEvent(name)) << name;
    }
    return OrvaShortModel::Write(definition);
  }
  int Occurrences(const char* name) { return GetEvent(name)->GetNumberOfOccurrences(); }

  using Step = void (OrvaRewriter::*)(int&, OrvaModel*, OrvaEvent*);
  void Apply(Step step) {
    int error = 0;
    (Rewriter()->*step)(error, GetModel(), GetEvent("top"));
    EXPECT_EQ(error, 0);
  }

  OrvaRewriter* Rewriter() { return Get()->GetRewriter(); }
};

class RewriterTest : public testing::Test, protected ShortModel {};

TEST_F(RewriterTest, StepsOfTheTable) {
  const std::map<std::string, Step> steps = {
      {"constants", &OrvaRewriter::PropagateConstants},
      {"references", &OrvaRewriter::DereferenceVariables},
      {"nesting", &OrvaRewriter::CoalesceGates},
      {"duplicates", &OrvaRewriter::RemoveDuplicatedChildren},
      {"all", &OrvaRewriter::NormalizeModel}};
  for (std::string row : OrvaReadRows("rewriter")) {
    SCOPED_TRACE(row);
    row.erase(std::remove(row.begin(), row.end(), ' '), row.end());
    const std::size_t colon = row.find(':'), arrow = row.find('>');
    ShortModel model;
    model.Define("top=" + row.substr(colon + 1, arrow - colon - 1));
    model.Apply(steps.at(row.substr(0, colon)));
    EXPECT_EQ(model.Formula("top"), row.substr(arrow + 1));
  }
}

TEST_F(RewriterTest, ThresholdsEndAtTheSmallestInteger) {
  for (const std::string kind : {"atleast", "atmost"}) {
    ShortModel model;
    const std::string bound = (kind == "atleast" ? "min" : "max") + std::string("=\"-2147483648\"");
    ASSERT_EQ(model.Load("<define-gate name=\"top\"><" + kind + " " + bound +
                         "><constant value=\"true\"/><event name=\"a\"/><event name=\"b\"/></" +
                         kind + "></define-gate>"),
              0);
    model.Apply(&OrvaRewriter::PropagateConstants);
    EXPECT_EQ(model.Formula("top"), kind == "atleast" ? "true" : "false");
  }
}

TEST_F(RewriterTest, ConstantsTravelThroughReferences) {
  Define("top=and(g,b); g=or(h,a); h=true; k=or(a,g)");
  Apply(&OrvaRewriter::PropagateConstants);
  EXPECT_EQ(Formula("g"), "true");
  EXPECT_EQ(Formula("top"), "b");
  EXPECT_EQ(Formula("k"), "or(a,g)");  // not below the top
  EXPECT_EQ(Occurrences("h"), 0);
  for (const char* name : {"g", "a", "b"}) EXPECT_EQ(Occurrences(name), 1) << name;
}

TEST_F(RewriterTest, ReferencesFollowAliasesAndNegations) {
  // Occurrences move with the references: x is left, y has those of top and of x's definition.
  Define("top=and(x,b,x); x=not(y)");
  Apply(&OrvaRewriter::DereferenceVariables);
  EXPECT_EQ(Formula("top"), "and(not(y),b,not(y))");
  EXPECT_EQ(Occurrences("x"), 0);
  EXPECT_EQ(Occurrences("y"), 3);
  EXPECT_EQ(GetEvent("top")->GetDefinition()->GetChild(1)->GetReferencedEvent(), nullptr);
}

TEST_F(RewriterTest, GatesOfTheSameOperatorMerge) {
  Define("top=or(g,h); h=and(g,b); g=or(c,d)");
  Apply(&OrvaRewriter::CoalesceGates);
  EXPECT_EQ(Formula("top"), "or(c,d,h)");
  EXPECT_EQ(Formula("g"), "or(c,d)");  // stays as it is
  EXPECT_EQ(Occurrences("g"), 1);      // in h
  EXPECT_EQ(Occurrences("c"), 2);
}

// At the limit the definitions done so far stay, the others are as they were, and the fault is
// told.
TEST_F(RewriterTest, CoalescingThatStopsShortSaysSo) {
  Define("top=or(a,g); g=or(b,h); h=or(c,d)");  // 2 copies for g, then 3 for the top
  Rewriter()->SetMaximumNumberOfCopies(1);
  int error = 0;
  Rewriter()->CoalesceGates(error, GetModel(), GetEvent("top"));
  EXPECT_EQ(error, 1);
  EXPECT_EQ(Formula("g"), "or(b,c,d)");
  EXPECT_EQ(Formula("top"), "or(a,g)");
}

TEST_F(RewriterTest, RepeatedReferencesGo) {
  // No mark stays behind: a second gate sees the event as new.
  Define("top=or(g,a,a); g=and(a,a,b)");
  Apply(&OrvaRewriter::RemoveDuplicatedChildren);
  EXPECT_EQ(Formula("g"), "and(a,b)");
  EXPECT_EQ(Formula("top"), "or(g,a)");
  EXPECT_EQ(Occurrences("a"), 2);
  EXPECT_FALSE(GetEvent("a")->IsMarked());
}

TEST_F(RewriterTest, LadderOfSharedGatesStaysCheap) {
  // a_i = or(a_i-1, b_i-1, x_i) and b_i = or(a_i-1, b_i-1, y_i): 2^60 paths. In the order of the
  // first occurrences: a_i = a0, b0, x1, y1, ..., x_i-1, y_i-1, x_i.
  constexpr int LEVELS = 60;
  std::string model = "top=or(a60,b60)";
  std::string expected = "or(a0,b0";
  for (int i = 1; i <= LEVELS; ++i) {
    const std::string n = std::to_string(i);
    const std::string below = std::to_string(i - 1);
    model += "; a" + n + "=or(a" + below + ",b" + below + ",x" + n + ")";
    model += "; b" + n + "=or(a" + below + ",b" + below + ",y" + n + ")";
    expected += ",x" + n + ",y" + n;
  }
  Define(model);
  Apply(&OrvaRewriter::NormalizeModel);
  EXPECT_EQ(Formula("top"), expected + ")");
  EXPECT_EQ(Formula("a2"), "or(a0,b0,x1,y1,x2)");
}

TEST_F(RewriterTest, GeneratedNamesAreFree) {
  Define("top=and(XB1,XB2,a)");
  OrvaEvent* gate = Rewriter()->GenerateGate(GetModel());
  EXPECT_STREQ(gate->GetName(), "XB3");
  EXPECT_EQ(gate->GetType(), OrvaEvent::GATE);
  // Numbers are not used again, even when a name has become free; a prefix starts anew.
  GetModel()->RenameEvent(gate, "other");
  EXPECT_STREQ(Rewriter()->GenerateGate(GetModel())->GetName(), "XB4");
  for (const auto& [prefix, name] : {std::pair("N", "N1"), {"XB", "XB3"}}) {
    Rewriter()->SetGeneratedGatePrefix(prefix);
    EXPECT_STREQ(Rewriter()->GenerateGate(GetModel())->GetName(), name);
  }
}

}  // namespace
