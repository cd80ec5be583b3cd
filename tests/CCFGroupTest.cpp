// Common-cause failure groups: what whole runs do not show of their expansion.

#include "OrvaTestSupport.h"
#include "model/OrvaCCFGroup.h"
#include "model/OrvaProbabilityDistribution.h"

namespace {

// An expression as "mul(sub(1,0.5),2)"; its numbers are reals.
std::string TextOf(const OrvaProbabilityDistribution* expression) {
  if (expression == nullptr) return "none";
  if (expression->GetFirstChild() == nullptr) return OrvaPrint(expression->GetValueAsDouble());
  std::string text = OrvaProbabilityDistribution::GetFunctor(expression->GetType());
  char separator = '(';
  for (const auto* child = expression->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    text += std::exchange(separator, ',') + TextOf(child);
  }
  return text + ")";
}

// Members A and B of a group G with factors from a level on, and what becomes of them.
TEST(CCFGroup, Expansion) {
  const struct {
    std::string model, factors, ofA, ofBoth;
  } rows[] = {{"beta-factor", "2:0.1", "mul(sub(1,0.1),0.01)", "mul(0.1,0.01)"},
              {"MGL", "2:0.2", "mul(1,sub(1,0.2),0.01)", "mul(1,0.2,0.01)"},
              // No factor k in front of the ratio: as it is defined.
              {"alpha-factor", "1:0.8 2:0.2", "mul(1,div(0.8,add(0.8,0.2)),0.01)",
               "mul(1,div(0.2,add(0.8,0.2)),0.01)"},
              {"phi-factor", "1:0.7 2:0.3", "mul(0.7,0.01)", "mul(0.3,0.01)"},
              {"phi-factor", "1:0.7 2:0.3", "none", "none"}};  // without a distribution
  for (const auto& [name, factors, ofA, ofBoth] : rows) {
    SCOPED_TRACE(name);
    std::string text = "<define-CCF-group name=\"G\" model=\"" + name +
                       "\"><members><basic-event name=\"A\"/><basic-event name=\"B\"/></members>";
    if (ofA != "none") text += "<distribution><float value=\"0.01\"/></distribution>";
    for (const std::string& factor : OrvaSplit(factors)) {
      text += "<factor level=\"" + factor.substr(0, 1) + "\"><float value=\"" + factor.substr(2) +
              "\"/></factor>";
    }
    OrvaTestEngine engine;
    ASSERT_EQ(engine.Load(text + "</define-CCF-group>"), 0);
    OrvaCCFGroup* group = engine.GetModel()->LookForCCFGroup("G");
    EXPECT_FALSE(group->IsExpanded());
    for (int i = 0; i < 2; ++i) {  // once is enough
      engine.GetModel()->ExpandCCFGroups();
      group->Expand();
      EXPECT_TRUE(group->IsExpanded());
      EXPECT_EQ(OrvaNamesOf(engine.GetModel()->GetEvents()), "A B G-11 G-A G-B");
      EXPECT_EQ(OrvaShortModel::Write(engine.GetEvent("G-B")->GetDefinition()), "or(B,G-11)");
      EXPECT_EQ(TextOf(engine.GetEvent("A")->GetProbabilityDistribution()), ofA);
      EXPECT_EQ(TextOf(engine.GetEvent("G-11")->GetProbabilityDistribution()), ofBoth);
      EXPECT_EQ(group->GetMember(1), engine.GetEvent("B"));
      EXPECT_EQ(group->GetMember(1)->GetCCFGroup(), nullptr);
    }
    engine.GetModel()->Complete();
    EXPECT_EQ(TextOf(engine.GetEvent("G-11")->GetProbabilityDistribution()),
              ofA == "none" ? "0" : ofBoth);
  }
}

// The events of one level may hold one tree, but none that an evaluation could tell apart.
TEST(CCFGroup, SharesExpressionsThatKeepNothing) {
  const struct {
    std::string q;
    bool isShared;
  } rows[] = {
      {"<exponential><float value=\"0.01\"/><mission-time/></exponential>", true},
      {"<mul><float value=\"2\"/><parameter name=\"p\"/></mul>", true},
      {"<exponential><float value=\"-0.01\"/><mission-time/></exponential>", false},
      {"<uniform-deviate><float value=\"0\"/><float value=\"1\"/></uniform-deviate>", false},
      {"<switch><case><bool value=\"false\"/><float value=\"1\"/></case></switch>", false}};
  for (const auto& [q, isShared] : rows) {
    SCOPED_TRACE(q);
    OrvaTestEngine engine;
    ASSERT_EQ(engine.Load("<define-CCF-group name=\"G\" model=\"beta-factor\"><members>"
                          "<basic-event name=\"A\"/><basic-event name=\"B\"/></members>"
                          "<distribution>" +
                          q +
                          "</distribution><factor level=\"2\">"
                          "<float value=\"0.1\"/></factor></define-CCF-group>"),
              0);
    engine.GetModel()->ExpandCCFGroups();
    OrvaEvent* a = engine.GetEvent("A");
    OrvaEvent* b = engine.GetEvent("B");
    EXPECT_EQ(a->GetProbabilityDistribution() == b->GetProbabilityDistribution(), isShared);
    const std::string text = TextOf(b->GetProbabilityDistribution());
    a->SetProbabilityDistribution(nullptr);
    EXPECT_EQ(TextOf(b->GetProbabilityDistribution()), text);
  }
}

TEST(CCFGroup, OwnsFactorsAndLinksMembers) {
  OrvaModel model;
  OrvaEvent* a = model.AddEvent("A", OrvaEvent::BASIC_EVENT);
  OrvaEvent* b = model.AddEvent("B", OrvaEvent::BASIC_EVENT);
  auto* group = new OrvaCCFGroup(&model, OrvaCCFGroup::MGL, "group");
  auto* other = new OrvaCCFGroup(&model, OrvaCCFGroup::MGL, "other");
  group->AddMember(a);
  group->SetMember(0, b);
  EXPECT_EQ(a->GetCCFGroup(), nullptr);
  EXPECT_EQ(b->GetCCFGroup(), group);
  other->AddMember(b);  // moves
  const auto number = [&](double x) { return OrvaProbabilityDistribution::NewFloat(&model, x); };
  for (const double x : {0.0, 1.0}) group->AddFactor(number(x));
  group->SetFactor(20, number(20.0));  // beyond the first capacity
  group->SetFactor(1, number(1.5));
  group->MoveFactor(2, 1);  // nothing there to move
  group->MoveFactor(0, 20);
  EXPECT_EQ(TextOf(group->GetFactor(0)) + TextOf(group->GetFactor(1)), "none1.5");
  EXPECT_EQ(TextOf(group->GetFactor(20)), "0");
  OrvaCCFGroup::Delete(group);
  EXPECT_EQ(b->GetCCFGroup(), other);
  OrvaCCFGroup::Delete(other);
  EXPECT_EQ(b->GetCCFGroup(), nullptr);
}

}  // namespace
