#include <memory>

#include "OrvaTestSupport.h"
#include "quantification/OrvaHandle.h"
#include "search/OrvaWalker.h"
#include "system/OrvaModuleRecord.h"

// A system written as rows "left k literals", over variables in a given order, and its walk. A
// letter alone is a basic event.
class OrvaWalkerTest : public testing::Test {
 protected:
  static constexpr int NO_LIMIT = 2147483647;

  void Build(const std::string& names, const std::vector<std::string>& rows) {
    _system = std::make_unique<OrvaSystem>(static_cast<int>(OrvaSplit(names).size()),
                                           static_cast<int>(rows.size()));
    OrvaFillSystem(*_system, names, rows);
    for (OrvaVariable& variable : _system->GetVariables()) {
      OrvaEvent* event = _model.LookForEvent(variable.GetName());
      if (event == nullptr) event = _model.AddEvent(variable.GetName(), OrvaEvent::BASIC_EVENT);
      variable.SetEvent(event);
    }
  }
  OrvaVariable* Variable(const std::string& name) { return _system->GetVariable(name.c_str()); }
  void SetProbability(const std::string& name, double p) {
    Variable(name)->SetProbability(p);
    Variable(name)->SetHighestCutsetProbability(p);
  }

  // Walks into a new set, or once more into the present one; gives the counters, in the order of
  // the printed table and with the one that is not printed, and the tree.
  std::string Walk() {
    if (_set == nullptr)
      _set = std::make_unique<OrvaMCSSet>(&_manager, _manager.NewUndevelopedLeaf());
    _walker.BuildMinimalCutsetTree(_system.get(), &_cutoff, _set.get());
    // All is as it was: only what is false when nothing is set stays possibly false.
    for (const OrvaVariable& variable : _system->GetVariables()) {
      if (variable.IsInputVariable()) {
        EXPECT_EQ(variable.GetCandidateValue(), OrvaVariable::POSSIBLY_FALSE);
        EXPECT_FALSE(variable.GetCutsetValue());
      }
      EXPECT_FALSE(variable.IsFixed() && variable.GetDefinition()->GetSize() > 0);
      EXPECT_EQ(variable.GetUnitValue(), 0);
      EXPECT_EQ(variable.GetFlag(), 0);
    }
    EXPECT_EQ(_walker.GetSystem(), nullptr);
    EXPECT_EQ(_walker.GetStack()->GetOrder() + _walker.GetCutset()->GetOrder(), 0);
    const OrvaWalkObserver* o = _walker.GetObserver();
    std::string text;
    for (const long n : {o->unit, o->branching, o->cutoff, o->deadEnds, o->cutoffs,
                         o->nonMinimalCutsets, o->minimalCutsets, o->knownMinimalCutsets}) {
      text += std::to_string(n) + " ";
    }
    return text + Tree();
  }
  // "(event then else)", "M" for a minimal cutset, "." for an open path.
  std::string Tree() { return Tree(_set->GetRootNode()); }
  std::string Tree(const OrvaMCSNode* node) {
    if (node->IsMinimalCutset()) return "M";
    if (node->IsUndeveloped()) return ".";
    if (!node->IsInternal()) return std::to_string(node->GetType());
    return std::string("(") + _manager.GetEvent(node->GetIndex())->GetName() + " " +
           Tree(node->GetThenSon()) + " " + Tree(node->GetElseSon()) + ")";
  }

  // Access to the steps, for the fixture is the walker's friend.
  void StartBranch() {
    _set = std::make_unique<OrvaMCSSet>(&_manager, _manager.NewUndevelopedLeaf());
    _walker._InitializeWalk(_system.get(), &_cutoff, _set.get());
    _walker._status = OrvaWalker::PARTIAL;
    OrvaVariable* top = _system->GetTopVariable();
    _walker._stack.Push(top, top->GetCandidateValue(), 0, OrvaStack::UNIT);
    _walker._SetCandidateValueOfVariable(top, OrvaVariable::NECESSARILY_TRUE);
  }
  void CompleteBranch() { _walker._CompleteBranch(); }
  void PushOntoResolvant(const char* name) { _walker._resolvant.Push(Variable(name)); }
  // The dumps of stack, unit stack, cutset, assignment and resolvant, one per line.
  std::string Dump() {
    OrvaTextStream stream;
    for (const auto dump :
         {&OrvaWalker::_DumpStack, &OrvaWalker::_DumpUnitStack, &OrvaWalker::_DumpCutset,
          &OrvaWalker::_DumpAssignment, &OrvaWalker::_DumpResolvant}) {
      (_walker.*dump)(stream.Get());
    }
    return stream.GetText();
  }
  std::string CheckAssignment() {
    testing::internal::CaptureStdout();
    _walker._CheckAssignment();
    return testing::internal::GetCapturedStdout();
  }

  OrvaModel _model;
  OrvaMCSManager _manager;
  OrvaWalker _walker{&_manager};
  OrvaCutoff _cutoff;
  std::unique_ptr<OrvaSystem> _system;
  std::unique_ptr<OrvaMCSSet> _set;
};

namespace {

// Each walk is traced beside it. T and F are necessarily true and false; "unit" sets what is
// implied, the last implied first; "second" is the other side of a choice, taken on the way back.
// Counters: unit, branching, cutoff, dead ends, cutoffs, non-minimal, minimal, known.

TEST_F(OrvaWalkerTest, Or) {
  // top=T waits. choose a=T: {a}. second a=F. choose b=T: {b}. second b=F implies c.
  // unit c=T: {c}.
  Build("a b c top", {"top 1 a b c"});
  EXPECT_EQ(Walk(), "1 2 0 0 0 0 3 0 (a M (b M (c M .)))");
  EXPECT_STREQ(_walker.GetBranchStatusString(), "COMPLETED");
  // Once more into the same set: every cutset is there already.
  EXPECT_EQ(Walk(), "1 2 0 0 0 0 0 3 (a M (b M (c M .)))");
}

TEST_F(OrvaWalkerTest, SharedEvent) {
  // top=T implies g1, g2. unit g2=T waits. unit g1=T waits. choose a=T (for g1). choose b=T (for
  // g2): {a,b} is not minimal. second b=F implies c. unit c=T: {a,c}. second a=F implies b.
  // unit b=T: {b}.
  Build("a b c g1 g2 top", {"g1 1 a b", "g2 1 b c", "top 2 g1 g2"});
  EXPECT_EQ(Walk(), "4 2 0 0 0 1 2 0 (a (c M .) (b M .))");
}

TEST_F(OrvaWalkerTest, AtLeast) {
  // top=T waits. choose a=T. choose b=T: {a,b}. second b=F implies c. unit c=T: {a,c}. second a=F
  // implies b, c. unit c=T. unit b=T: {c,b}.
  Build("a b c top", {"top 2 a b c"});
  EXPECT_EQ(Walk(), "3 2 0 0 0 0 3 0 (a (b M (c M .)) (c (b M .) .))");
}

TEST_F(OrvaWalkerTest, CutoffByOrder) {
  // top=T implies g1, g2. unit g2, unit g1: both wait. choose a=T. c is refused: c=F implies d.
  // unit d is refused. second a=F implies b. unit b=T. c is refused: c=F implies d. unit d is
  // refused.
  Build("a b c d g1 g2 top", {"g1 1 a b", "g2 1 c d", "top 2 g1 g2"});
  _cutoff.SetMaximumOrder(1);
  EXPECT_EQ(Walk(), "5 1 2 0 2 0 0 0 .");
  // With no order left nothing is chosen: a is refused, a=F implies b, unit b is refused.
  Build("a b top", {"top 1 a b"});
  _cutoff.SetMaximumOrder(0);
  EXPECT_EQ(Walk(), "1 0 1 0 1 0 0 0 .");
}

TEST_F(OrvaWalkerTest, CutoffByProbability) {
  // As with the shared event, but c comes first in g2: choose a=T. choose c=T, 0.5 * 0.2 is enough:
  // {a,c}. second c=F implies b. unit b is refused: 0.5 * 0.1. second a=F implies b. unit b=T: {b}.
  Build("a b c g1 g2 top", {"g1 1 a b", "g2 1 c b", "top 2 g1 g2"});
  SetProbability("a", 0.5);
  SetProbability("b", 0.1);
  SetProbability("c", 0.2);
  _cutoff.SetMinimumProbability(0.1);
  EXPECT_EQ(Walk(), "4 2 0 0 1 0 2 0 (a (c M .) (b M .))");
  EXPECT_EQ(_manager.GetProbability(_model.LookForEvent("c")->GetMCSIndex()), 0.2);
}

// The second side of a gate is taken while the status is not PARTIAL, so nothing is required of
// the gate's formula: as it is defined.
TEST_F(OrvaWalkerTest, SecondChoiceOfGateRequiresNothing) {
  // top=T waits. choose g1=T waits. choose a=T: {a}. second a=F implies b. unit b=T: {b}.
  // second g1=F implies g2 (and not a=F, b=F). unit g2=T implies b, c. unit c=T. unit b=T makes g1
  // true: dead end.
  Build("a b c g1 g2 top", {"g1 1 a b", "g2 2 b c", "top 1 g1 g2"});
  EXPECT_EQ(Walk(), "4 2 0 1 0 0 2 0 (a M (b M .))");
}

// A branch starts PARTIAL even when the second choice before it ran into a conflict: as it is
// defined.
TEST_F(OrvaWalkerTest, ConflictOfSecondChoiceIsForgotten) {
  // top=T waits. choose x=T: {x}. second x=F implies h=F, and h=T for the top: a conflict.
  // unit h=F makes the top false: dead end.
  Build("x y h top", {"h 2 x y", "top 1 x h"});
  EXPECT_EQ(Walk(), "1 1 0 1 0 0 1 0 (x M .)");
}

// Literals behind a conflict were not pushed. When the conflict is forgotten, the next push of the
// same literals meets it again, before what waits below it is set.
TEST_F(OrvaWalkerTest, LiteralsArePushedAgainAfterForgottenConflict) {
  // top=T waits. choose a=T. choose b=T: {a,b}. second b=F implies g. unit g=T implies c. unit c=T:
  // {a,c}. second a=F implies g=F, and b, g=T for the top: a conflict. unit b=T: the top pushes g=T
  // again: dead end, and g=F is never set.
  Build("a b c g top", {"g 2 a c", "top 2 a b g"});
  EXPECT_EQ(Walk(), "3 2 0 1 0 0 2 0 (a (b M (c M .)) .)");
  // top=T waits. choose a=T. d is refused: d=F implies b, g. unit g=T implies c. unit c is refused.
  // second a=F implies g=F, and d, b, g=T for the top: a conflict. unit b=T: the top pushes g=T
  // again: dead end. Were d set next, the cutoff would end the branch instead.
  Build("a b c d g top", {"g 2 a c", "top 3 a d b g"});
  _set.reset();
  _cutoff.SetMaximumOrder(1);
  EXPECT_EQ(Walk(), "3 1 1 1 1 0 0 0 .");
}

TEST_F(OrvaWalkerTest, NegativeLiterals) {
  // top=T waits. choose g1=T implies a, b=F. unit b=F makes g2 false. unit g2=F. unit a=T: {a}.
  // second g1=F implies g2. unit g2=T implies a, b. unit b=T. unit a=T: {b,a} is not minimal, for
  // without b it is g1 that holds.
  Build("a b g1 g2 top", {"g1 2 a -b", "g2 2 a b", "top 1 g1 g2"});
  EXPECT_EQ(Walk(), "6 1 0 0 0 1 1 0 (a M .)");
}

// A gate that must be false, and may be true yet: one of its literals is turned over.
TEST_F(OrvaWalkerTest, GateThatMustBeFalse) {
  // top=T implies h=F, c. unit c=T. unit h=F waits. choose a=T (for h): {c,a}. second a=F implies
  // b. unit b=T: {c,b}.
  Build("a b c h top", {"h 2 -a -b", "top 2 -h c"});
  EXPECT_EQ(Walk(), "3 1 0 0 0 0 2 0 (c (a M (b M .)) .)");
}

TEST_F(OrvaWalkerTest, TopThatIsABasicEvent) {
  Build("a", {});
  SetProbability("a", 0.25);
  _cutoff.SetMinimumProbability(0.5);
  EXPECT_EQ(Walk(), "0 0 0 0 0 0 0 0 .");
  EXPECT_STREQ(_walker.GetBranchStatusString(), "PRUNED");
  _cutoff.SetMinimumProbability(0.25);
  EXPECT_EQ(Walk(), "0 0 0 0 0 0 1 0 (a M .)");
}

// A gate without literals and with threshold 0 is true: the empty cutset.
TEST_F(OrvaWalkerTest, TopThatIsAlwaysTrue) {
  Build("top", {"top 0"});
  EXPECT_EQ(Walk(), "0 0 0 0 0 0 1 0 M");
}

// Indices go in name order, and stay with their events.
TEST_F(OrvaWalkerTest, IndicesBelongToEvents) {
  Build("c a top", {"top 1 c a"});
  Walk();
  Build("b c top2", {"top2 2 b c"});
  _set.reset();
  EXPECT_EQ(Walk(), "2 0 0 0 0 0 1 0 (c (b M .) .)");  // implied last, set first
  for (int i = 1; i <= 3; ++i)
    EXPECT_STREQ(_manager.GetEvent(i)->GetName(), i == 1 ? "a" : i == 2 ? "c" : "b");
}

TEST_F(OrvaWalkerTest, Dumps) {
  Build("a b c g1 g2 top", {"g1 1 a b", "g2 1 b c", "top 2 g1 g2"});
  StartBranch();
  EXPECT_EQ(Dump(), " top=[]T\nunit: g1=[]T g2=[]T\ncutset:\n top=[]T\nresolvant:\n");
  CompleteBranch();
  PushOntoResolvant("c");
  EXPECT_EQ(Dump(),
            " top=[]T g2=[]T g1=[]T a=[]T b=[]T\n"
            "unit:\n"
            "cutset: a b\n"
            " a=[]T b=[]T g1=[]T g2=[]T top=[]T\n"
            "resolvant: g2 g1 c=<>F\n");
  // The cutset valuation has not been brought to this cutset yet, but for a.
  Variable("a")->SatisfyInCutset();
  EXPECT_EQ(CheckAssignment(), "ALERT: b []T []F\nALERT: g2 []T []F\nALERT: top []T []F\n");
}

// The highest contribution of the sum so far is a threshold too; it does not fall with the sum.
TEST(Cutoff, DynamicThresholdRisesOnly) {
  OrvaCutoff cutoff;
  cutoff.SetMinimumProbability(1e-6);
  cutoff.SetMinimumContribution(1e-3);
  EXPECT_TRUE(cutoff.Check(1, 1e-6));
  for (const double p : {0.5, -0.25}) {
    cutoff.RecordProduct(1, p);
    EXPECT_TRUE(cutoff.Check(1, 5.1e-4));
    EXPECT_FALSE(cutoff.Check(1, 4.9e-4));
  }
  EXPECT_EQ(cutoff.GetCurrentSumOfProductProbabilities(), 0.25);
  cutoff.ResetCurrentSumOfProductProbabilities();
  EXPECT_TRUE(cutoff.Check(1, 1e-6));
}

// top = or(and(m, c), and(n, d)) over its own tree, with hand-made trees of the modules m and n.
class ExpansionTest : public OrvaWalkerTest {
 protected:
  ExpansionTest() {
    Build("a b c d m n g h top", {"g 2 m c", "h 2 n d", "top 1 g h"});
    int index = 0;
    for (const char* name : {"a", "b", "c", "d", "m", "n"}) {
      _model.LookForEvent(name)->SetMCSIndex(++index);
      _manager.SetEvent(index, _model.LookForEvent(name));
      _manager.SetProbability(index, name[0] == 'c' ? 0.25 : 0.5);
    }
  }
  OrvaEvent* Event(const char* name) { return _model.LookForEvent(name); }
  // Reads a tree as Tree writes it.
  OrvaMCSNode* Read(const std::string& text) {
    std::size_t position = 0;
    return Read(text, position);
  }
  OrvaMCSNode* Read(const std::string& text, std::size_t& position) {
    const char c = text[position++];
    if (c == 'M') return _manager.NewMinimalCutsetLeaf();
    if (c == '.') return _manager.NewUndevelopedLeaf();
    const std::string name(1, text[position]);
    position += 2;
    OrvaMCSNode* thenSon = Read(text, position);
    ++position;
    OrvaMCSNode* elseSon = Read(text, position);
    ++position;
    return _manager.NewInternalNode(Event(name.c_str())->GetMCSIndex(), thenSon, elseSon);
  }
  void MakeModule(const char* name, const std::string& tree) {
    Event(name)->SetDefinition(OrvaGate::NewOr(&_model, nullptr));
    OrvaModuleRecord* record = OrvaModuleRecord::FindOrAttach(Event(name));
    record->SetFirstDate(1);
    record->SetSecondDate(2);
    record->SetLowestDate(1);
    record->SetHighestDate(2);
    Event(name)->NewHandle("M", new OrvaMCSSet(&_manager, Read(tree)));
  }
  std::string Expand(const std::string& tree, int maximumOrder, double minimumProbability) {
    _cutoff.SetMaximumOrder(maximumOrder);
    _cutoff.SetMinimumProbability(minimumProbability);
    Event("top")->NewHandle("M", new OrvaMCSSet(&_manager, Read(tree)));
    _walker.ExpandMinimalCutset(Event("top"), _system.get(), "M", &_cutoff);
    for (const char* name : {"m", "n"}) {
      EXPECT_EQ(_manager.GetModuleTree(Event(name)->GetMCSIndex()), nullptr);
    }
    return Tree(Event("top")->GetHandle("M")->GetMCSSet()->GetRootNode());
  }
};

TEST_F(ExpansionTest, ModulesGiveWayToTheirCutsets) {
  EXPECT_EQ(Expand("(m (c M .) (d M .))", 0, 1.0), "(m (c M .) (d M .))");  // no module: untouched
  // m = {a} or {b}: a, else b, else what stands where m is false.
  MakeModule("m", "(a M (b M .))");
  EXPECT_EQ(Expand("(m (c M .) (d M .))", NO_LIMIT, 0.0), "(a (c M .) (b (c M .) (d M .)))");
  EXPECT_EQ(Expand("(m M (n M .))", NO_LIMIT, 0.0), "(a M (b M (n M .)))");
  EXPECT_EQ(Expand("(d (m M .) .)", NO_LIMIT, 0.0), "(d (a M (b M .)) .)");
  // A path that took events of the module and failed does not go on where the module is false.
  MakeModule("m", "(a (b M .) .)");
  EXPECT_EQ(Expand("(m (c M .) (d M .))", NO_LIMIT, 0.0), "(a (b (c M .) .) (d M .))");
  // Two modules.
  MakeModule("n", "(c M .)");
  EXPECT_EQ(Expand("(m (d M .) (n (d M .) .))", NO_LIMIT, 0.0), "(a (b (d M .) .) (c (d M .) .))");
}

TEST_F(ExpansionTest, LimitsHoldForTheEventsOfModules) {
  MakeModule("m", "(a M (b M .))");
  const std::string tree = "(m (c M .) (d M .))";  // {a,c}, {b,c} of 0.125 and {d} of 0.5
  EXPECT_EQ(Expand(tree, 2, 0.0), "(a (c M .) (b (c M .) (d M .)))");
  EXPECT_EQ(Expand(tree, 1, 0.0), "(d M .)");
  EXPECT_EQ(Expand(tree, 0, 0.0), ".");
  EXPECT_EQ(Expand(tree, NO_LIMIT, 0.125), "(a (c M .) (b (c M .) (d M .)))");
  EXPECT_EQ(Expand(tree, NO_LIMIT, 0.126), "(d M .)");
  EXPECT_EQ(Expand(tree, NO_LIMIT, 0.51), ".");
  // Probability 0 cuts off, unless there is no limit.
  _manager.SetProbability(Event("b")->GetMCSIndex(), 0.0);
  EXPECT_EQ(Expand(tree, NO_LIMIT, 1e-9), "(a (c M .) (d M .))");
  EXPECT_EQ(Expand(tree, NO_LIMIT, 0.0), "(a (c M .) (b (c M .) (d M .)))");
}

// A top event that is a module itself makes the expansion run: as it is defined.
TEST_F(ExpansionTest, TopCountsAsModule) {
  EXPECT_EQ(Expand("(c M (d M .))", 0, 0.0), "(c M (d M .))");
  MakeModule("top", ".");
  EXPECT_EQ(Expand("(c M (d M .))", 1, 0.3), "(d M .)");
}

}  // namespace
