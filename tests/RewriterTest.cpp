#include <algorithm>
#include <cctype>

#include "OrvaTestSupport.h"
#include "model/OrvaGate.h"
#include "system/OrvaRewriter.h"

namespace {

// A model written as "top=and(g,not(b)); g=atleast2(c,true,d)". Operators with bounds are written
// atleast2, atmost1 and cardinality1-2. Names without definition are basic events.
class WrittenModel {
 public:
  void Define(const std::string& text) {
    _text = text;
    _text.erase(std::remove(_text.begin(), _text.end(), ' '), _text.end());
    _position = 0;
    while (_position < _text.size()) {
      OrvaEvent* event = GetEvent(ReadWord());
      ++_position;  // "="
      event->SetDefinition(ReadFormula());
      if (_position < _text.size()) ++_position;  // ";"
    }
  }

  OrvaEvent* GetEvent(const std::string& name) {
    OrvaEvent* event = Model()->LookForEvent(name.c_str());
    return event != nullptr ? event : Model()->AddEvent(name.c_str(), OrvaEvent::BASIC_EVENT);
  }

  std::string Write(const OrvaGate* gate) {
    if (gate == nullptr) return "undefined";
    if (gate->IsConstant()) return gate->GetConstantValue() ? "true" : "false";
    if (gate->IsEvent()) return gate->GetReferencedEvent()->GetName();
    std::string text = OrvaGate::GetFunctor(gate->GetType());
    if (gate->GetType() == OrvaGate::ATLEAST) text += std::to_string(gate->GetMin());
    if (gate->GetType() == OrvaGate::ATMOST) text += std::to_string(gate->GetMax());
    if (gate->GetType() == OrvaGate::CARDINALITY) {
      text += std::to_string(gate->GetMin()) + "-" + std::to_string(gate->GetMax());
    }
    text += "(";
    for (int i = 1; i <= gate->GetNumberOfChildren(); ++i) {
      EXPECT_EQ(gate->GetChild(i)->GetParent(), gate);
      text += (i > 1 ? "," : "") + Write(gate->GetChild(i));
    }
    return text + ")";
  }
  std::string Formula(const char* name) {
    const OrvaGate* definition = GetEvent(name)->GetDefinition();
    if (definition != nullptr) {
      EXPECT_EQ(definition->GetParent(), nullptr) << name;
      EXPECT_EQ(definition->GetDefinedEvent(), GetEvent(name)) << name;
    }
    return Write(definition);
  }
  int Occurrences(const char* name) { return GetEvent(name)->GetNumberOfOccurrences(); }

  using Step = void (OrvaRewriter::*)(int&, OrvaModel*, OrvaEvent*);
  void Apply(Step step) {
    int error = 0;
    (Rewriter()->*step)(error, Model(), GetEvent("top"));
    EXPECT_EQ(error, 0);
  }

  OrvaModel* Model() { return _engine.GetModel(); }
  OrvaRewriter* Rewriter() { return _engine->GetRewriter(); }

 private:
  std::string ReadWord() {
    std::string word;
    while (_position < _text.size() &&
           (std::isalnum(_text[_position]) || _text[_position] == '-' || _text[_position] == '_')) {
      word += _text[_position++];
    }
    return word;
  }
  static int ReadInt(const std::string& text) { return std::atoi(text.c_str()); }

  OrvaGate* ReadFormula() {
    const std::string word = ReadWord();
    if (word == "true" || word == "false") return OrvaGate::NewConstant(Model(), word == "true");
    if (_position >= _text.size() || _text[_position] != '(') {
      return OrvaGate::NewEvent(Model(), GetEvent(word));
    }
    const std::size_t digits = word.find_first_of("0123456789");
    const OrvaGate::Type type = OrvaGate::GetType(word.substr(0, digits).c_str());
    OrvaGate* gate = OrvaGate::NewOperator(Model(), type, nullptr);
    if (digits != std::string::npos) {
      const std::size_t dash = word.find('-');
      if (type != OrvaGate::ATMOST) gate->SetAttribute(OrvaGate::MIN, ReadInt(word.substr(digits)));
      if (type == OrvaGate::ATMOST) gate->SetAttribute(OrvaGate::MAX, ReadInt(word.substr(digits)));
      if (type == OrvaGate::CARDINALITY) {
        gate->SetAttribute(OrvaGate::MAX, ReadInt(word.substr(dash + 1)));
      }
    }
    while (_text[_position] != ')') {
      ++_position;  // "(" or ","
      if (_text[_position] != ')') gate->AddChild(ReadFormula());
    }
    ++_position;
    return gate;
  }

  OrvaTestEngine _engine;
  std::string _text;
  std::size_t _position = 0;
};

class RewriterTest : public testing::Test, protected WrittenModel {
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
      WrittenModel model;
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
  EXPECT_EQ(Occurrences("g"), 1);
  EXPECT_EQ(Occurrences("a"), 1);
  EXPECT_EQ(Occurrences("b"), 1);

  // A definition that is itself a reference becomes the constant and still defines its event.
  Define("top=h");
  Apply(&OrvaRewriter::PropagateConstants);
  EXPECT_EQ(Formula("top"), "true");
  EXPECT_EQ(GetEvent("top")->GetType(), OrvaEvent::GATE);
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
  EXPECT_STREQ(Rewriter()->GetGeneratedGatePrefix(), "XB");
  OrvaEvent* gate = Rewriter()->GenerateGate(Model());
  EXPECT_STREQ(gate->GetName(), "XB3");
  EXPECT_EQ(gate->GetType(), OrvaEvent::GATE);
  EXPECT_EQ(gate->GetDefinition(), nullptr);
  EXPECT_EQ(Model()->LookForEvent("XB3"), gate);
  // Numbers are not used again, even when a name has become free.
  Model()->RenameEvent(gate, "other");
  EXPECT_STREQ(Rewriter()->GenerateGate(Model())->GetName(), "XB4");
  EXPECT_EQ(Rewriter()->GetGeneratedGateNumber(), 4);
  Rewriter()->SetGeneratedGatePrefix("N");
  EXPECT_EQ(Rewriter()->GetGeneratedGateNumber(), 0);
  EXPECT_STREQ(Rewriter()->GenerateGate(Model())->GetName(), "N1");
  Rewriter()->SetGeneratedGatePrefix("XB");
  EXPECT_STREQ(Rewriter()->GenerateGate(Model())->GetName(), "XB3");
}

}  // namespace
