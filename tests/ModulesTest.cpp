#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "OrvaTestSupport.h"
#include "model/OrvaGate.h"
#include "system/OrvaAnalyzer.h"
#include "system/OrvaModuleRecord.h"
#include "system/OrvaRewriter.h"

namespace {

using Type = OrvaGate::Type;
constexpr Type AND = OrvaGate::AND;
constexpr Type OR = OrvaGate::OR;

// A model of flat gates: Gate("g", OR, "a -b c") defines g as the OR of a, NOT b and c. Names
// without definition are basic events, T is the constant true.
class FlatModel {
 public:
  OrvaEvent* Event(const std::string& name) {
    OrvaEvent* event = Model()->LookForEvent(name.c_str());
    return event != nullptr ? event : Model()->AddEvent(name.c_str(), OrvaEvent::BASIC_EVENT);
  }
  OrvaGate* Gate(const std::string& name, Type type, const std::string& children) {
    OrvaGate* gate = OrvaGate::NewOperator(Model(), type, nullptr);
    std::istringstream words(children);
    for (std::string word; words >> word;) {
      const bool isNegative = word[0] == '-';
      OrvaGate* child = word == "T"
                            ? OrvaGate::NewConstant(Model(), true)
                            : OrvaGate::NewEvent(Model(), Event(word.substr(isNegative ? 1 : 0)));
      gate->AddChild(isNegative ? OrvaGate::NewNot(Model(), child) : child);
    }
    Event(name)->SetDefinition(gate);
    return gate;
  }
  // The operator and its children: "or a -b c".
  std::string Formula(const std::string& name) {
    const OrvaGate* gate = Event(name)->GetDefinition();
    if (gate == nullptr) return "undefined";
    std::string text = OrvaGate::GetFunctor(gate->GetType());
    for (int i = 1; i <= gate->GetNumberOfChildren(); ++i) {
      const OrvaGate* child = gate->GetChild(i);
      const bool isNegative = child->IsNegation();
      if (isNegative) child = child->GetFirstChild();
      text += isNegative ? " -" : " ";
      text += child->IsConstantTrue() ? "T" : child->GetReferencedEvent()->GetName();
    }
    return text;
  }
  void Detect(const std::string& top) { Rewriter()->DetectModules(Model(), Event(top)); }
  void Modularize() { Rewriter()->Modularize(Model(), Event("top")); }
  // "first second last lowest highest".
  std::string Dates(const std::string& name) {
    const OrvaModuleRecord* record = OrvaModuleRecord::Find(Event(name));
    if (record == nullptr) return "none";
    std::ostringstream text;
    text << record->GetFirstDate() << " " << record->GetSecondDate() << " " << record->GetLastDate()
         << " " << record->GetLowestDate() << " " << record->GetHighestDate();
    return text.str();
  }

  OrvaModel* Model() { return _engine.GetModel(); }
  OrvaRewriter* Rewriter() { return _engine->GetRewriter(); }
  OrvaAnalyzer* Analyzer() { return _engine->GetAnalyzer(); }

 private:
  OrvaTestEngine _engine;
};

class ModulesTest : public testing::Test, protected FlatModel {};

TEST_F(ModulesTest, RecordJudgesByItsDates) {
  OrvaModuleRecord record;
  EXPECT_FALSE(record.IsDated());
  EXPECT_FALSE(record.IsUpdated());
  struct {
    int first, second, lowest, highest;
    bool isModule;
  } const cases[] = {
      {2, 7, 2, 7, true}, {2, 7, 3, 6, true}, {2, 7, 1, 7, false}, {2, 7, 2, 8, false}};
  for (const auto& row : cases) {
    record.SetFirstDate(row.first);
    record.SetSecondDate(row.second);
    record.SetLowestDate(row.lowest);
    record.SetHighestDate(row.highest);
    EXPECT_TRUE(record.IsDated() && record.IsUpdated());
    EXPECT_EQ(record.IsModule(), row.isModule);
  }
  record.SetLastDate(9);
  record.Reset();
  EXPECT_FALSE(record.IsDated() || record.IsUpdated());
  EXPECT_EQ(record.GetSecondDate() + record.GetLastDate() + record.GetHighestDate(), 0);
  EXPECT_EQ(record.GetLowestDate(), 2147483647);
}

TEST_F(ModulesTest, VisitsAreDatedInDepthFirstOrder) {
  Gate("top", OR, "g1 g2");
  Gate("g1", AND, "a b");
  Gate("g2", AND, "c d");
  Detect("top");
  EXPECT_EQ(Dates("top"), "1 14 14 1 14");
  EXPECT_EQ(Dates("g1"), "2 7 7 2 7");
  EXPECT_EQ(Dates("a"), "3 4 4 3 4");
  EXPECT_EQ(Dates("b"), "5 6 6 5 6");
  EXPECT_EQ(Dates("g2"), "8 13 13 8 13");
  EXPECT_TRUE(Event("top")->IsModule() && Event("g1")->IsModule() && Event("g2")->IsModule());
  EXPECT_FALSE(Event("a")->IsModule());
  EXPECT_EQ(Dates("elsewhere"), "none");

  // b is shared: visited at 5 and 6 inside g1, again at 9 inside g2.
  Gate("g2", AND, "b c");
  Detect("top");
  EXPECT_EQ(Dates("top"), "1 13 13 1 13");
  EXPECT_EQ(Dates("b"), "5 6 9 5 6");
  EXPECT_EQ(Dates("g1"), "2 7 7 2 9");
  EXPECT_EQ(Dates("g2"), "8 12 12 5 12");
  EXPECT_TRUE(Event("top")->IsModule());
  EXPECT_FALSE(Event("g1")->IsModule() || Event("g2")->IsModule());
  EXPECT_EQ(Dates("d"), "11 12 12 11 12");  // no longer below the top: left as it was

  // A gate referenced twice, below an operator too, is a module all the same. Its own later visit
  // counts for its parents only.
  Gate("top", OR, "k c")
      ->AddChild(OrvaGate::NewNot(Model(), OrvaGate::NewEvent(Model(), Event("g1"))));
  Gate("k", AND, "g1 d");
  Detect("top");  // top 1, k 2, g1 3, a 4 5, b 6 7, g1 8, d 9 10, k 11, c 12 13, g1 14, top 15
  EXPECT_EQ(Dates("g1"), "3 8 14 3 8");
  EXPECT_EQ(Dates("k"), "2 11 11 2 14");
  EXPECT_TRUE(Event("g1")->IsModule());
  EXPECT_FALSE(Event("k")->IsModule());
}

// By definition: no event outside the gate references an event below it.
TEST_F(ModulesTest, DetectionAgreesWithTheDefinition) {
  std::mt19937 random(20240);
  const auto draw = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  int numberOfModules = 0;
  int numberOfOthers = 0;
  for (int trial = 0; trial < 1000; ++trial) {
    OrvaTestEngine engine;
    OrvaModel* model = engine.GetModel();
    // Gates 0 .. n-1, each above some later ones; basic events n .. n+m-1. Gate 0 is the top.
    const int n = 2 + draw(10);
    const int m = 2 + draw(12);
    std::vector<OrvaEvent*> events;
    for (int i = 0; i < n + m; ++i) {
      events.push_back(model->AddEvent(("e" + std::to_string(i)).c_str(), OrvaEvent::BASIC_EVENT));
    }
    std::vector<unsigned> children(events.size(), 0);
    for (int i = 0; i < n; ++i) {
      OrvaGate* gate = OrvaGate::NewOr(model, nullptr);
      for (int j = 1 + draw(4); j > 0; --j) {
        // Mostly what follows closely, so that modules happen.
        const int child = std::min(n + m - 1, i + 1 + draw(draw(3) == 0 ? n + m : 4));
        OrvaGate* reference = OrvaGate::NewEvent(model, events[static_cast<unsigned>(child)]);
        gate->AddChild(draw(4) == 0 ? OrvaGate::NewNot(model, reference) : reference);
        children[static_cast<unsigned>(i)] |= 1u << child;
      }
      events[static_cast<unsigned>(i)]->SetDefinition(gate);
    }
    std::vector<unsigned> below(events.size(), 0);  // strictly
    for (std::size_t i = static_cast<std::size_t>(n); i-- > 0;) {
      for (std::size_t j = 0; j < events.size(); ++j) {
        if ((children[i] >> j & 1) != 0) below[i] |= 1u << j | below[j];
      }
    }
    engine->GetRewriter()->DetectModules(model, events[0]);
    const unsigned reached = below[0] | 1u;
    for (std::size_t i = 0; i < events.size(); ++i) {
      if ((reached >> i & 1) == 0) continue;
      bool isModule = below[i] != 0;
      for (std::size_t j = 0; j < events.size(); ++j) {
        const bool isOutside = (reached >> j & 1) != 0 && j != i && (below[i] >> j & 1) == 0;
        if (isOutside && (children[j] & below[i]) != 0) isModule = false;
      }
      ASSERT_EQ(events[i]->IsModule(), isModule) << "trial " << trial << ", event " << i;
      if (i > 0 && below[i] != 0) ++(isModule ? numberOfModules : numberOfOthers);
    }
  }
  EXPECT_GT(numberOfModules, 500);
  EXPECT_GT(numberOfOthers, 500);
}

TEST_F(ModulesTest, IndependentChildrenAreGathered) {
  // Each row defines g. m1, m2 and m3 are modules, which occur once unless g has them twice; x and
  // y are shared with k, so that g is no module.
  struct {
    Type type;
    const char* before;
    const char* after;
    const char* generated;
  } const cases[] = {
      {AND, "m1 m2 x y", "and x y XB1", "and m1 m2"},
      {OR, "x m1 y m2 m3", "or x y XB1", "or m1 m2 m3"},
      {AND, "-m1 x m2", "and x XB1", "and -m1 m2"},
      {OR, "T x m1", "or x XB1", "or T m1"},
      {OrvaGate::NAND, "m1 x m2", "nand x XB1", "nand m1 m2"},  // the operator stays, as defined
      {OrvaGate::NOR, "m1 m2 x", "nor x XB1", "nor m1 m2"},
      {AND, "m1 x y", "and m1 x y", "undefined"},
      {AND, "m1 m1 x m2", "and m1 m1 x m2", "undefined"},
      {AND, "a b x", "and a b x", "undefined"},  // basic events are no modules
      {OrvaGate::ATLEAST, "m1 m2 x", "atleast m1 m2 x", "undefined"},
      {OrvaGate::NOT, "x", "not x", "undefined"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.before);
    FlatModel model;
    for (const std::string n : {"1", "2", "3"}) model.Gate("m" + n, OR, "p" + n + " q" + n);
    model.Gate("g", row.type, row.before);
    model.Gate("k", AND, "x y z");
    model.Gate("top", OR, "g k");
    model.Modularize();
    EXPECT_EQ(model.Formula("g"), row.after);
    EXPECT_EQ(model.Formula("k"), "and x y z");
    EXPECT_EQ(model.Formula("top"), "or g k");
    const bool isGathered = model.Model()->LookForEvent("XB1") != nullptr;
    ASSERT_EQ(isGathered, row.generated != std::string("undefined"));
    EXPECT_FALSE(model.Event("g")->IsModule());
    EXPECT_TRUE(model.Event("top")->IsModule());
    if (!isGathered) continue;
    // The records describe the final formulas.
    EXPECT_EQ(model.Formula("XB1"), row.generated);
    EXPECT_TRUE(model.Event("XB1")->IsModule() && model.Event("m1")->IsModule());
    EXPECT_EQ(model.Event("m1")->GetNumberOfOccurrences(), 1);
    EXPECT_EQ(model.Event("XB1")->GetNumberOfOccurrences(), 1);
  }
}

TEST_F(ModulesTest, GatheringGoesUpwardAndLeavesModulesAlone) {
  // h comes before g in post-order, so its gate is the first. The module n keeps its modules.
  Gate("top", OR, "g k n");
  Gate("g", AND, "h m1 m2 x");
  Gate("h", OR, "m3 y m4");
  Gate("k", AND, "x y");
  Gate("n", AND, "m5 m6");
  for (const std::string i : {"1", "2", "3", "4", "5", "6"}) Gate("m" + i, OR, "p" + i + " q" + i);
  Modularize();
  EXPECT_EQ(Formula("h"), "or y XB1");
  EXPECT_EQ(Formula("XB1"), "or m3 m4");
  EXPECT_EQ(Formula("g"), "and h x XB2");
  EXPECT_EQ(Formula("XB2"), "and m1 m2");
  EXPECT_EQ(Formula("n"), "and m5 m6");
  EXPECT_EQ(Formula("top"), "or g k n");
}

TEST_F(ModulesTest, ParentsAreCountedPerReference) {
  // In post-order: a, b, g1, g2, top. An older count must not stay.
  Gate("top", AND, "g1 g2 a -a");
  Gate("g1", OR, "a b");
  Gate("g2", OR, "a g1");
  Gate("above", OR, "top a");
  Analyzer()->IncrementNumberOfParents(Event("b"));
  EXPECT_EQ(OrvaAnalyzer::GetNumberOfParents(Event("b")), 1);
  LumoAVLTree* sorted = nullptr;
  Analyzer()->SortDescendantsByDecreasingNumbersOfParents(Event("top"), sorted);
  const std::unique_ptr<LumoAVLTree> owner(sorted);
  std::string text;
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*sorted)) {
    text += event->GetName() + std::to_string(OrvaAnalyzer::GetNumberOfParents(event)) + " ";
  }
  EXPECT_EQ(text, "a4 g12 b1 g21 top0 ");  // equal ones in post-order
  EXPECT_EQ(OrvaAnalyzer::CompareNumbersOfParents(Event("a"), Event("b")), -3);
  Analyzer()->ResetNumberOfParents(Event("a"));
  EXPECT_EQ(OrvaAnalyzer::GetNumberOfParents(Event("a")), 0);
}

}  // namespace
