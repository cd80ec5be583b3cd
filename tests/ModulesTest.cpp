#include <memory>
#include <random>

#include "OrvaTestSupport.h"
#include "system/OrvaAnalyzer.h"
#include "system/OrvaModuleRecord.h"
#include "system/OrvaRewriter.h"

namespace {

// "first second last lowest highest" of an event's visits, an asterisk in front for a module.
std::string DatesOf(OrvaTestEngine& engine, const char* name) {
  const OrvaEvent* event = engine.GetEvent(name);
  const OrvaModuleRecord* record = event->GetModuleRecord();
  if (record == nullptr) return "none";
  std::ostringstream text;
  text << (event->IsModule() ? "*" : "") << record->GetFirstDate() << " " << record->GetSecondDate()
       << " " << record->GetLastDate() << " " << record->GetLowestDate() << " "
       << record->GetHighestDate();
  return text.str();
}

TEST(Modules, VisitsAreDatedInDepthFirstOrder) {
  const struct {
    const char* model;
    std::vector<std::pair<const char*, const char*>> dates;
  } rows[] = {
      {"top = or(g1,g2); g1 = and(a,b); g2 = and(c,d); elsewhere = or(a,b)",
       {{"top", "*1 14 14 1 14"},
        {"g1", "*2 7 7 2 7"},
        {"a", "3 4 4 3 4"},
        {"g2", "*8 13 13 8 13"},
        {"elsewhere", "none"}}},
      // b is shared: visited at 5 and 6 inside g1, again at 9 inside g2.
      {"top = or(g1,g2); g1 = and(a,b); g2 = and(b,c)",
       {{"top", "*1 13 13 1 13"}, {"b", "5 6 9 5 6"}, {"g1", "2 7 7 2 9"}, {"g2", "8 12 12 5 12"}}},
      // A gate referenced twice, below an operator too, is a module all the same. Its own later
      // visit counts for its parents only: top 1, k 2, g1 3, a 4 5, b 6 7, g1 8, d 9 10, k 11,
      // c 12 13, g1 14, top 15.
      {"top = or(k,c,-g1); k = and(g1,d); g1 = and(a,b)",
       {{"g1", "*3 8 14 3 8"}, {"k", "2 11 11 2 14"}}}};
  for (const auto& [model, dates] : rows) {
    OrvaTestEngine engine;
    engine.Define(model);
    for (int run = 0; run < 2; ++run) {  // the second one starts anew
      engine->GetRewriter()->DetectModules(engine.GetModel(), engine.GetEvent("top"));
      for (const auto& [event, expected] : dates) {
        EXPECT_EQ(DatesOf(engine, event), expected) << event << model;
      }
    }
  }
}

// By definition: no event outside the gate references an event below it.
TEST(Modules, DetectionAgreesWithTheDefinition) {
  std::mt19937 random(20240);
  const auto draw = [&](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  int numberOfModules = 0;
  int numberOfOthers = 0;
  for (int trial = 0; trial < 1000; ++trial) {
    // Gates e0 .. en-1, each above some later ones; m basic events. e0 is the top.
    const int n = 2 + draw(10);
    const int m = 2 + draw(12);
    std::string model;
    std::vector<unsigned> children(static_cast<unsigned>(n + m), 0);
    for (int i = 0; i < n; ++i) {
      model += "e" + std::to_string(i) + " = or(";
      for (int j = 1 + draw(4); j > 0; --j) {
        // Mostly what follows closely, so that modules happen.
        const int child = std::min(n + m - 1, i + 1 + draw(draw(3) == 0 ? n + m : 4));
        model += (draw(4) == 0 ? "-e" : "e") + std::to_string(child) + (j > 1 ? "," : ");");
        children[static_cast<unsigned>(i)] |= 1u << child;
      }
    }
    OrvaTestEngine engine;
    engine.Define(model);
    std::vector<unsigned> below(children.size(), 0);  // strictly
    for (std::size_t i = static_cast<std::size_t>(n); i-- > 0;) {
      for (std::size_t j = 0; j < children.size(); ++j) {
        if ((children[i] >> j & 1) != 0) below[i] |= 1u << j | below[j];
      }
    }
    engine->GetRewriter()->DetectModules(engine.GetModel(), engine.GetEvent("e0"));
    const unsigned reached = below[0] | 1u;
    for (std::size_t i = 0; i < children.size(); ++i) {
      if ((reached >> i & 1) == 0) continue;
      bool isModule = below[i] != 0;
      for (std::size_t j = 0; j < children.size(); ++j) {
        const bool isOutside = (reached >> j & 1) != 0 && j != i && (below[i] >> j & 1) == 0;
        if (isOutside && (children[j] & below[i]) != 0) isModule = false;
      }
      const std::string name = "e" + std::to_string(i);
      ASSERT_EQ(engine.GetEvent(name.c_str())->IsModule(), isModule) << name << " in " << model;
      if (i > 0 && below[i] != 0) ++(isModule ? numberOfModules : numberOfOthers);
    }
  }
  EXPECT_GT(numberOfModules, 500);
  EXPECT_GT(numberOfOthers, 500);
}

// Formulas before and after, with those of the gates that are generated.
void CheckGathering(const std::string& before, const std::string& after) {
  OrvaTestEngine engine;
  engine.Define(before);
  engine->GetRewriter()->Modularize(engine.GetModel(), engine.GetEvent("top"));
  std::string text;
  for (const std::string& definition : OrvaSplit(after)) {
    const std::string name = definition.substr(0, definition.find('='));
    const OrvaEvent* event = engine.GetEvent(name.c_str());
    ASSERT_NE(event, nullptr) << name << before;
    EXPECT_EQ(name + "=" + OrvaShortModel::Write(event->GetDefinition()), definition) << before;
    // The records describe the final formulas.
    const bool isAsFound = event->IsModule() && event->GetNumberOfOccurrences() == 1;
    EXPECT_TRUE(isAsFound || !name.starts_with("XB"));
  }
  const bool isGenerated = after.find("XB") != std::string::npos;
  EXPECT_EQ(engine.GetEvent("XB1") != nullptr, isGenerated) << before;
}

TEST(Modules, IndependentChildrenAreGathered) {
  for (const std::string& row : OrvaReadRows("modules")) {
    const std::size_t arrow = row.find(" > ");
    CheckGathering("g = " + row.substr(0, arrow) +
                       "; top = or(g,k); k = and(x,y,z); m1 = or(p1,q1); m2 = or(p2,q2);"
                       "m3 = or(p3,q3)",
                   "k=and(x,y,z) top=or(g,k) g=" + row.substr(arrow + 3));
  }
  // Upward: h comes before g in post-order. The module n keeps its modules.
  CheckGathering(
      R"(top = or(g,k,n); g = and(h,m1,m2,x); h = or(m3,y,m4); k = and(x,y);
                    n = and(m5,m6); m1 = or(p1,q1); m2 = or(p2,q2); m3 = or(p3,q3);
                    m4 = or(p4,q4); m5 = or(p5,q5); m6 = or(p6,q6))",
      "h=or(y,XB1) XB1=or(m3,m4) g=and(h,x,XB2) XB2=and(m1,m2) n=and(m5,m6) top=or(g,k,n)");
}

// In post-order: a, b, g1, g2, top. An older count must not stay.
TEST(Modules, ParentsAreCountedPerReference) {
  OrvaTestEngine engine;
  engine.Define("top = and(g1,g2,a,-a); g1 = or(a,b); g2 = or(a,g1); above = or(top,a)");
  OrvaAnalyzer* analyzer = engine->GetAnalyzer();
  analyzer->IncrementNumberOfParents(engine.GetEvent("b"));
  LumoAVLTree* sorted = nullptr;
  analyzer->SortDescendantsByDecreasingNumbersOfParents(engine.GetEvent("top"), sorted);
  const std::unique_ptr<LumoAVLTree> owner(sorted);
  std::string text;
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(*sorted)) {
    text += event->GetName() + std::to_string(OrvaAnalyzer::GetNumberOfParents(event)) + " ";
  }
  EXPECT_EQ(text, "a4 g12 b1 g21 top0 ");  // equal ones in post-order
}

}  // namespace
