// Common-cause failure groups and their expansion.

#include <vector>

#include "OrvaTestSupport.h"
#include "model/OrvaCCFGroup.h"
#include "model/OrvaGate.h"
#include "model/OrvaProbabilityDistribution.h"

namespace {

using Expression = OrvaProbabilityDistribution;

// An expression as "mul(sub(1,0.5),2)"; its numbers are reals.
std::string TextOf(const Expression* expression) {
  if (expression->GetFirstChild() == nullptr) return OrvaPrint(expression->GetValueAsDouble());
  std::string text = Expression::GetFunctor(expression->GetType());
  char separator = '(';
  for (const Expression* child = expression->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    text += std::exchange(separator, ',') + TextOf(child);
  }
  return text + ")";
}

std::string TextOf(const OrvaEvent* event) {
  const OrvaGate* gate = event->GetDefinition();
  return gate == nullptr ? TextOf(event->GetProbabilityDistribution())
                         : OrvaShortModel::Write(gate);
}

// A group G of members A, B, C ... below TOP = and(A, B, C ...), with the given factors, and the
// total failure probability 0.01. Expanded.
OrvaCCFGroup* Expand(OrvaTestEngine& engine, const std::string& model, int members, int level,
                     const std::vector<double>& factors, const std::string& more,
                     bool hasDistribution = true) {
  std::string events;
  for (int i = 0; i < members; ++i) {
    events += std::string("<basic-event name=\"") + static_cast<char>('A' + i) + "\"/>";
  }
  std::string text = "<define-gate name=\"TOP\"><and>" + events + "</and></define-gate>" +
                     OrvaShortModel(more).GetElements() + "<define-CCF-group name=\"G\" model=\"" +
                     model + "\"><members>" + events + "</members>";
  if (hasDistribution) text += "<distribution><float value=\"0.01\"/></distribution>";
  for (const double factor : factors) {
    text += "<factor level=\"" + std::to_string(level++) + "\"><float value=\"" +
            OrvaPrint(factor) + "\"/></factor>";
  }
  EXPECT_EQ(engine.Load(text + "</define-CCF-group>"), 0) << engine.GetErrors();
  OrvaCCFGroup* group = engine.GetModel()->LookForCCFGroup("G");
  EXPECT_FALSE(group->IsExpanded());
  engine.GetModel()->ExpandCCFGroups();
  EXPECT_TRUE(group->IsExpanded());
  return group;
}

TEST(CCFGroup, ExpansionByModel) {
  // The subsets with a member count up in binary, the first member as the lowest digit. An alpha
  // factor has no factor k in front of the ratio, as defined. The event G-110 of the last group is
  // there already and left as it is.
  const struct {
    const char* model;
    int members, firstLevel;
    std::vector<double> factors;
    const char* definitions;
  } rows[] = {{"beta-factor", 3, 3, {0.1}, R"(TOP=and(G-A,G-B,G-C) G-A=or(A,G-111) G-C=or(C,G-111)
           B=mul(sub(1,0.1),0.01) G-111=mul(0.1,0.01))"},
              {"MGL", 4, 2, {0.2, 0.3, 0.4}, R"(
           G-A=or(A,G-1100,G-1010,G-1110,G-1001,G-1101,G-1011,G-1111)
           G-D=or(D,G-1001,G-0101,G-1101,G-0011,G-1011,G-0111,G-1111)
           A=mul(1,sub(1,0.2),0.01) G-0110=mul(0.333333,0.2,sub(1,0.3),0.01)
           G-1101=mul(0.333333,0.2,0.3,sub(1,0.4),0.01) G-1111=mul(1,0.2,0.3,0.4,0.01))"},
              {"alpha-factor", 3, 1, {0.8, 0.15, 0.05}, R"(
           G-A=or(A,G-110,G-101,G-111) G-B=or(B,G-110,G-011,G-111)
           B=mul(1,div(0.8,add(0.8,0.15,0.05)),0.01)
           G-110=mul(0.5,div(0.15,add(0.8,0.15,0.05)),0.01)
           G-111=mul(1,div(0.05,add(0.8,0.15,0.05)),0.01))"},
              {"phi-factor", 3, 1, {0.7, 0.1, 0.05}, R"(G-B=or(B,G-110,G-011,G-111) A=mul(0.7,0.01)
           G-011=mul(0.1,0.01) G-111=mul(0.05,0.01) G-110=0.5)"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.model);
    const bool isPhi = row.model == std::string("phi-factor");
    OrvaTestEngine engine;
    OrvaCCFGroup* group = Expand(engine, row.model, row.members, row.firstLevel, row.factors,
                                 isPhi ? "#G-110 = 0.5" : "");
    const auto get = [&](const std::string& name) { return engine.GetEvent(name.c_str()); };
    for (const std::string& definition : OrvaSplit(row.definitions)) {
      const std::string name = definition.substr(0, definition.find('='));
      EXPECT_EQ(name + "=" + TextOf(get(name)), definition);
    }
    const int numberOfEvents = engine.GetModel()->GetNumberOfEvents();
    group->Expand();  // once is enough
    EXPECT_EQ(engine.GetModel()->GetNumberOfEvents(), numberOfEvents);
    engine.GetModel()->ComputeProbabilitiesOfBasicEvents(0.0);
    for (int i = 0; i < row.members; ++i) {
      const OrvaEvent* member = get(std::string(1, static_cast<char>('A' + i)));
      EXPECT_EQ(group->GetMember(i), member);
      EXPECT_EQ(member->GetCCFGroup(), nullptr);
      if (isPhi) continue;
      // A member fails with the total probability, whatever the failures it is shared out to.
      double sum = 0.0;
      const OrvaGate* gate = get(std::string("G-") + member->GetName())->GetDefinition();
      for (int k = 1; k <= gate->GetNumberOfChildren(); ++k) {
        sum += gate->GetChild(k)->GetReferencedEvent()->GetProbability();
      }
      EXPECT_NEAR(sum, 0.01, 1e-15);
    }
    EXPECT_EQ(group->GetMember(row.members), nullptr);
  }
}

TEST(CCFGroup, WithoutDistributionOnlyTheStructureIsMade) {
  OrvaTestEngine engine;
  Expand(engine, "MGL", 2, 2, {0.1}, "", false);
  EXPECT_EQ(TextOf(engine.GetEvent("G-A")), "or(A,G-11)");
  EXPECT_EQ(engine.GetEvent("G-11")->GetProbabilityDistribution(), nullptr);
  engine.GetModel()->Complete();
  EXPECT_EQ(TextOf(engine.GetEvent("G-11")), "0");
}

TEST(CCFGroup, OwnsFactorsAndLinksMembers) {
  OrvaModel model;
  OrvaEvent* a = model.AddEvent("A", OrvaEvent::BASIC_EVENT);
  OrvaEvent* b = model.AddEvent("B", OrvaEvent::BASIC_EVENT);
  auto* group = new OrvaCCFGroup(&model, OrvaCCFGroup::MGL, "group");
  group->AddMember(a);
  group->SetMember(0, b);
  EXPECT_EQ(a->GetCCFGroup(), nullptr);
  EXPECT_EQ(b->GetCCFGroup(), group);
  for (const double x : {0.0, 1.0}) group->AddFactor(Expression::NewFloat(&model, x));
  group->SetFactor(20, Expression::NewFloat(&model, 20.0));  // beyond the first capacity
  group->SetFactor(1, Expression::NewFloat(&model, 1.5));
  group->MoveFactor(2, 1);  // nothing there to move
  group->MoveFactor(0, 20);
  EXPECT_EQ(group->GetFactor(0), nullptr);
  EXPECT_EQ(TextOf(group->GetFactor(1)), "1.5");
  EXPECT_EQ(TextOf(group->GetFactor(20)), "0");
  OrvaCCFGroup::Delete(group);
  EXPECT_EQ(b->GetCCFGroup(), nullptr);
}

}  // namespace
