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

class RewriterTest : public testing::Test, protected ShortModel {
 protected:
  // Cases "formula of the top; other definitions > what the top becomes", a line or a "|" apart.
  static void Check(Step step, std::string cases) {
    std::replace(cases.begin(), cases.end(), '|', '\n');
    std::istringstream lines(cases);
    for (std::string line; std::getline(lines, line);) {
      line.erase(std::remove(line.begin(), line.end(), ' '), line.end());
      if (line.empty()) continue;
      SCOPED_TRACE(line);
      const std::size_t arrow = line.find('>');
      ShortModel model;
      model.Define("top=" + line.substr(0, arrow));
      model.Apply(step);
      EXPECT_EQ(model.Formula("top"), line.substr(arrow + 1));
    }
  }
};

TEST_F(RewriterTest, ConstantsLeaveEveryOperator) {
  Check(&OrvaRewriter::PropagateConstants, R"(
      and(true,a,b) > and(a,b)          | and(a,false,b) > false | and(true,true) > true
      and() > true                      | and(true,a) > a
      or(a,false,b) > or(a,b)           | or(a,true) > true      | or(false) > false
      or() > false                      | or(false,a) > a
      nand(true,a,b) > nand(a,b)        | nand(a,false) > true   | nand(true) > false
      nor(false,a,b) > nor(a,b)         | nor(a,true) > false    | nor(false) > true
      atleast2(true,a,b) > atleast1(a,b)          | atleast2(false,a,b) > atleast2(a,b)
      atleast2(true,a,true) > true                | atleast3(true,a) > false
      atleast2(true,a) > a                        | atleast0() > true
      atmost1(true,a,b) > atmost0(a,b)            | atmost0(true,a) > false
      atmost1(a,false) > true                     | atmost1(true) > true
      cardinality1-2(true,a,b) > cardinality0-1(a,b) | cardinality1-3(true,a,b) > true
      cardinality2-3(false,a) > false             | cardinality0-0(true,a) > false
      cardinality1-1(false,a) > a                 | cardinality1-2(false,a) > cardinality1-2(a)
      not(true) > false                           | not(false) > true | not(a) > not(a) )");
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

TEST_F(RewriterTest, OneChildTakesThePlaceOfItsGate) {
  // Without negation: as it is defined.
  Check(&OrvaRewriter::PropagateConstants,
        "nand(true,a) > a | nor(false,a) > a | atmost0(false,a) > a");
  // It goes last among the parent's children.
  Check(&OrvaRewriter::PropagateConstants, R"(
      and(or(false,a),b) > and(b,a)
      and(or(false,a),or(true,c),b,nand(true,d)) > and(b,a,d)
      or(and(or(a,false),true),false) > a
      not(or(false,a)) > not(a)
      and(b,not(or(true,a))) > false )");
}

TEST_F(RewriterTest, ConstantsTravelThroughReferences) {
  Define("top=and(g,b); g=or(h,a); h=true; k=or(a,g)");
  Apply(&OrvaRewriter::PropagateConstants);
  EXPECT_EQ(Formula("g"), "true");
  EXPECT_EQ(Formula("top"), "b");
  EXPECT_EQ(Formula("k"), "or(a,g)");  // not below the top
  EXPECT_EQ(Occurrences("h"), 0);
  for (const char* name : {"g", "a", "b"}) EXPECT_EQ(Occurrences(name), 1) << name;

  // A definition that is itself a reference becomes the constant and still defines its event.
  Check(&OrvaRewriter::PropagateConstants, "h; h=true > true");
}

TEST_F(RewriterTest, ReferencesFollowAliasesAndNegations) {
  Check(&OrvaRewriter::DereferenceVariables, R"(
      and(x,b); x=y; y=g; g=or(c,d) > and(g,b)
      and(x,b); x=y; y=a > and(a,b)
      and(x,b); x=not(y) > and(not(y),b)
      x; x=not(y) > not(y)
      and(b,or(x,not(x)),c); x=y > and(b,or(y,not(y)),c)
      atleast2(x,b,y); x=not(g); y=x; g=and(c,d) > atleast2(not(g),b,not(g)) )");
  // Two negations on the chain.
  Check(&OrvaRewriter::DereferenceVariables, R"(
      and(x,b); x=not(y); y=not(z) > and(z,b)
      x; x=not(y); y=not(z) > z )");
  // Inside a formula the second negation stays.
  Check(&OrvaRewriter::DereferenceVariables, R"(
      or(not(y),b); y=not(z) > or(not(not(z)),b) )");
  // The negation of a formula ends the chain with nothing, also for what leads to it.
  Check(&OrvaRewriter::DereferenceVariables, R"(
      or(w,c); w=x; x=not(and(a,b)) > or(w,c)
      and(x,b); x=true > and(x,b) )");
  // Occurrences move with the references: x is left, y has those of top and of x's definition.
  Define("top=and(x,b,x); x=not(y)");
  Apply(&OrvaRewriter::DereferenceVariables);
  EXPECT_EQ(Formula("top"), "and(not(y),b,not(y))");
  EXPECT_EQ(Occurrences("x"), 0);
  EXPECT_EQ(Occurrences("y"), 3);
  EXPECT_EQ(GetEvent("top")->GetDefinition()->GetChild(1)->GetReferencedEvent(), nullptr);
}

// Only a definition that became NOT of NOT by dereferencing gives way to the reference.
TEST_F(RewriterTest, WrittenDoubleNegationStays) {
  Check(&OrvaRewriter::DereferenceVariables, "or(not(x),c); x=not(not(a)) > or(not(x),c)");
}

TEST_F(RewriterTest, GatesOfTheSameOperatorMerge) {
  Check(&OrvaRewriter::CoalesceGates, R"(
      and(g,b); g=and(c,d) > and(c,d,b)
      or(a,g,b); g=or(c,h); h=or(d,not(e)) > or(a,c,d,not(e),b)
      and(a,g); g=and(not(b),or(c,d)) > and(a,not(b),or(c,d))
      and(g,b); g=or(c,d) > and(g,b)
      and(not(g),b); g=and(c,d) > and(not(g),b)
      or(and(g,b),a); g=and(c,d) > or(and(g,b),a)
      atleast2(g,b,c); g=atleast2(c,d,e) > atleast2(g,b,c)
      nor(g,b); g=nor(c,d) > nor(g,b) )");
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
  Check(&OrvaRewriter::RemoveDuplicatedChildren, R"(
      and(a,a,not(a)) > and(a,not(a))
      or(a,b,not(b),a,not(b),b,c) > or(a,b,not(b),not(b),c)
      and(a,or(b,b),a) > and(a,or(b,b))
      and(a,a) > and(a)
      atleast2(a,a,b) > atleast2(a,a,b)
      nand(a,a) > nand(a,a) )");
  // No mark stays behind: a second gate sees the event as new.
  Define("top=or(g,a,a); g=and(a,a,b)");
  Apply(&OrvaRewriter::RemoveDuplicatedChildren);
  EXPECT_EQ(Formula("g"), "and(a,b)");
  EXPECT_EQ(Formula("top"), "or(g,a)");
  EXPECT_EQ(Occurrences("a"), 2);
  EXPECT_FALSE(GetEvent("a")->GetAttributeAsBool("__DUPLICATED_CHILDREN_REMOVAL__", false));
}

TEST_F(RewriterTest, NormalizeRunsAllStepsInOrder) {
  // g loses its constant and becomes an alias of k, which then merges.
  Check(&OrvaRewriter::NormalizeModel, R"(
      or(g,b); g=and(k,true); k=or(c,b) > or(c,b)
      and(c,g,d); g=and(d,c,e) > and(c,d,e)
      and(g,g,b); g=and(not(c),d) > and(not(c),d,not(c),b)
      or(x,b); x=not(y); y=not(z) > or(z,b) )");
  // Aliases of one event are duplicates only after dereferencing.
  Check(&OrvaRewriter::NormalizeModel, R"(
      and(x,y,b); x=a; y=or(a) > and(a,b)
      atleast2(x,y,b); x=a; y=or(a,false) > atleast2(a,a,b) )");
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
