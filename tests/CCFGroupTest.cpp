// Common-cause failure groups and their expansion.

#include <vector>

#include "OrvaTestSupport.h"
#include "model/OrvaCCFGroup.h"
#include "model/OrvaGate.h"
#include "model/OrvaProbabilityDistribution.h"

namespace {

using Expression = OrvaProbabilityDistribution;

// An event's formula as "or(a,b)".
std::string FormulaOf(const OrvaEvent* event) {
  const OrvaGate* gate = event->GetDefinition();
  std::string text = std::string(OrvaGate::GetFunctor(gate->GetType())) + "(";
  for (const OrvaGate* child = gate->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    text += (child == gate->GetFirstChild() ? "" : ",");
    text += child->GetReferencedEvent()->GetName();
  }
  return text + ")";
}

// An expression as "mul(sub(1,0.5),2)"; its numbers are reals.
std::string TextOf(const Expression* expression) {
  if (expression->GetFirstChild() == nullptr) {
    EXPECT_EQ(expression->GetType(), Expression::FLOAT);
    std::ostringstream number;
    number << expression->GetValueAsDouble();
    return number.str();
  }
  std::string text = std::string(Expression::GetFunctor(expression->GetType())) + "(";
  for (const Expression* child = expression->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    text += (child == expression->GetFirstChild() ? "" : ",") + TextOf(child);
  }
  return text + ")";
}

// A group G of members A, B, C ... below TOP = and(A, B, C ...), with the given factors, and the
// total failure probability 0.01. Expanded.
class CCFGroupTest : public testing::Test {
 protected:
  void Expand(const char* model, int members, int firstLevel, const std::vector<double>& factors,
              const std::string& more = "", bool hasDistribution = true) {
    std::string events;
    for (int i = 0; i < members; ++i) {
      events += std::string("<basic-event name=\"") + static_cast<char>('A' + i) + "\"/>";
    }
    std::string text = "<define-gate name=\"TOP\"><and>" + events + "</and></define-gate>" + more +
                       "<define-CCF-group name=\"G\" model=\"" + model + "\"><members>" + events +
                       "</members>";
    if (hasDistribution) text += "<distribution><float value=\"0.01\"/></distribution>";
    for (const double factor : factors) {
      text += "<factor level=\"" + std::to_string(firstLevel++) + "\"><float value=\"" +
              std::to_string(factor) + "\"/></factor>";
    }
    ASSERT_EQ(engine.Load(text + "</define-CCF-group>"), 0) << engine.GetErrors();
    group = engine.GetModel()->LookForCCFGroup("G");
    EXPECT_FALSE(group->IsExpanded());
    engine.GetModel()->ExpandCCFGroups();
    EXPECT_TRUE(group->IsExpanded());
    engine.GetModel()->ComputeProbabilitiesOfBasicEvents(0.0);
  }
  std::string Formula(const char* event) { return FormulaOf(engine.GetEvent(event)); }
  std::string Text(const char* event) {
    return TextOf(engine.GetEvent(event)->GetProbabilityDistribution());
  }
  double Probability(const std::string& event) {
    return engine.GetEvent(event.c_str())->GetProbability();
  }
  // A member fails with the total probability, whatever the failures that it is shared out to.
  void ExpectTotal(const char* gate, double total) {
    double sum = 0.0;
    for (const OrvaGate* child = engine.GetEvent(gate)->GetDefinition()->GetFirstChild();
         child != nullptr; child = child->GetNextSibling()) {
      sum += child->GetReferencedEvent()->GetProbability();
    }
    EXPECT_NEAR(sum, total, 1e-15);
  }

  OrvaTestEngine engine;
  OrvaCCFGroup* group = nullptr;
};

TEST_F(CCFGroupTest, BetaFactor) {
  Expand("beta-factor", 3, 3, {0.1});
  EXPECT_EQ(Formula("TOP"), "and(G-A,G-B,G-C)");
  EXPECT_EQ(Formula("G-A"), "or(A,G-111)");
  EXPECT_EQ(Formula("G-C"), "or(C,G-111)");
  EXPECT_EQ(Text("B"), "mul(sub(1,0.1),0.01)");
  EXPECT_EQ(Text("G-111"), "mul(0.1,0.01)");
  EXPECT_EQ(engine.GetModel()->GetNumberOfEvents(), 8);
  EXPECT_EQ(engine.GetEvent("G-111")->GetNumberOfOccurrences(), 3);
  EXPECT_EQ(engine.GetEvent("G-B")->GetType(), OrvaEvent::GATE);
  EXPECT_EQ(engine.GetEvent("A")->GetType(), OrvaEvent::BASIC_EVENT);
  EXPECT_EQ(engine.GetEvent("A")->GetCCFGroup(), nullptr);
  EXPECT_EQ(group->GetMember(0), engine.GetEvent("A"));
  EXPECT_EQ(group->GetMember(3), nullptr);
  ExpectTotal("G-A", 0.01);
  // Once is enough.
  group->Expand();
  EXPECT_EQ(engine.GetModel()->GetNumberOfEvents(), 8);
  EXPECT_EQ(Formula("G-A"), "or(A,G-111)");
}

TEST_F(CCFGroupTest, MultipleGreekLetters) {
  const double f[] = {1.0, 0.2, 0.3, 0.4};  // levels 1 .. 4
  Expand("MGL", 4, 2, {f[1], f[2], f[3]});
  // The subsets with the member count up in binary, the first member as the lowest digit.
  EXPECT_EQ(Formula("G-A"), "or(A,G-1100,G-1010,G-1110,G-1001,G-1101,G-1011,G-1111)");
  EXPECT_EQ(Formula("G-D"), "or(D,G-1001,G-0101,G-1101,G-0011,G-1011,G-0111,G-1111)");
  EXPECT_EQ(Text("A"), "mul(1,sub(1,0.2),0.01)");
  EXPECT_EQ(Text("G-0110"), "mul(0.333333,0.2,sub(1,0.3),0.01)");
  EXPECT_EQ(Text("G-1111"), "mul(1,0.2,0.3,0.4,0.01)");
  EXPECT_EQ(engine.GetEvent("G-1010")->GetNumberOfOccurrences(), 2);
  EXPECT_EQ(engine.GetEvent("G-1101")->GetNumberOfOccurrences(), 3);
  // Of the subsets of k members, Q(k) is the product of the letters up to k, without the failures
  // of more than k, shared by the (k-1 of 3) subsets that a member is in: 1, 3, 3, 1.
  const double subsets[] = {1, 3, 3, 1};
  const char* const events[] = {"C", "G-0101", "G-1011", "G-1111"};
  double product = 0.01;
  for (int k = 0; k < 4; ++k) {
    product *= f[k];
    const double rest = k < 3 ? 1 - f[k + 1] : 1.0;
    EXPECT_NEAR(Probability(events[k]), product * rest / subsets[k], 1e-15) << events[k];
  }
  for (const char* gate : {"G-A", "G-B", "G-C", "G-D"}) ExpectTotal(gate, 0.01);
}

// No factor k stands in front of the ratio, as defined.
TEST_F(CCFGroupTest, AlphaFactor) {
  Expand("alpha-factor", 3, 1, {0.8, 0.15, 0.05});
  EXPECT_EQ(Formula("G-A"), "or(A,G-110,G-101,G-111)");
  EXPECT_EQ(Formula("G-B"), "or(B,G-110,G-011,G-111)");
  EXPECT_EQ(Text("B"), "mul(1,div(0.8,add(0.8,0.15,0.05)),0.01)");
  EXPECT_EQ(Text("G-110"), "mul(0.5,div(0.15,add(0.8,0.15,0.05)),0.01)");
  EXPECT_EQ(Text("G-111"), "mul(1,div(0.05,add(0.8,0.15,0.05)),0.01)");
  EXPECT_NEAR(Probability("G-011"), 0.5 * 0.15 * 0.01, 1e-15);
  ExpectTotal("G-C", 0.01);
}

TEST_F(CCFGroupTest, PhiFactorAndEventsThatExistAlready) {
  Expand("phi-factor", 3, 1, {0.7, 0.1, 0.05},
         "<define-basic-event name=\"G-110\"><float value=\"0.5\"/></define-basic-event>");
  EXPECT_EQ(Formula("G-B"), "or(B,G-110,G-011,G-111)");
  EXPECT_EQ(Text("A"), "mul(0.7,0.01)");
  EXPECT_EQ(Text("G-011"), "mul(0.1,0.01)");
  EXPECT_EQ(Text("G-111"), "mul(0.05,0.01)");
  EXPECT_EQ(Text("G-110"), "0.5");  // found, and left as it is
  EXPECT_EQ(engine.GetEvent("G-110")->GetNumberOfOccurrences(), 2);
}

TEST_F(CCFGroupTest, WithoutDistributionOnlyTheStructureIsMade) {
  Expand("MGL", 2, 2, {0.1}, "", false);
  EXPECT_EQ(Formula("G-A"), "or(A,G-11)");
  EXPECT_EQ(engine.GetEvent("G-11")->GetProbabilityDistribution(), nullptr);
  engine.GetModel()->Complete();
  EXPECT_EQ(Text("G-11"), "0");
}

TEST(CCFGroup, OwnsFactorsAndLinksMembers) {
  OrvaModel model;
  OrvaEvent* a = model.AddEvent("A", OrvaEvent::BASIC_EVENT);
  OrvaEvent* b = model.AddEvent("B", OrvaEvent::BASIC_EVENT);
  auto* group = new OrvaCCFGroup(&model, OrvaCCFGroup::MGL, "group");
  model.AddCCFGroup(group);
  group->AddMember(a);
  group->SetMember(0, b);
  EXPECT_EQ(a->GetCCFGroup(), nullptr);
  EXPECT_EQ(b->GetCCFGroup(), group);
  const auto number = [&](double x) { return Expression::NewFloat(&model, x); };
  group->AddFactor(number(0.0));
  group->AddFactor(number(1.0));
  group->SetFactor(20, number(20.0));  // beyond the first capacity
  group->SetFactor(1, number(1.5));
  group->MoveFactor(2, 1);  // nothing there to move
  group->MoveFactor(0, 20);
  EXPECT_EQ(group->GetFactor(0), nullptr);
  EXPECT_EQ(TextOf(group->GetFactor(1)), "1.5");
  EXPECT_EQ(TextOf(group->GetFactor(20)), "0");
  model.DeleteCCFGroup(group);  // from the model only
  EXPECT_EQ(model.LookForCCFGroup("group"), nullptr);
  OrvaCCFGroup::Delete(group);
  EXPECT_EQ(b->GetCCFGroup(), nullptr);
}

}  // namespace
