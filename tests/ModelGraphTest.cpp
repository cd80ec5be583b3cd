// Symbols, terms, events, gates, parameters, and the model that holds them.

#include "OrvaTestSupport.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/random/LumoCongruentialRandomizer.h"

namespace {

using Expression = OrvaProbabilityDistribution;

template <class Start>
std::string CollectDescendants(Start* start,
                               OrvaSymbol::Selector selector = OrvaSymbol::CompareAsAnySymbol) {
  LumoList result;
  start->CollectDescendants(selector, nullptr, &result);
  return OrvaNamesOf(result);
}

// A term without meaning of its own; its type tells it apart.
std::string TypesOfChildren(const OrvaTerm& term) {
  std::string types;
  for (const OrvaTerm* child : LumoItems<OrvaTerm>(term.GetChildren())) {
    EXPECT_EQ(child->GetParent(), &term);
    types += std::to_string(child->GetType());
  }
  return types;
}

// A model, and the proof that everything in it is released with it.
class ModelGraphTest : public testing::Test {
 protected:
  ~ModelGraphTest() override {
    engine.reset();
    EXPECT_EQ(LumoMemoryManager::GetAllocationBalance(), _balance);
  }
  void Define(const std::string& shortModel) {
    engine->Define(shortModel);
    model = engine->GetModel();
  }
  OrvaEvent* Event(const char* name) { return model->LookForEvent(name); }
  OrvaGate* Ref(const char* name) { return OrvaGate::NewEvent(model, Event(name)); }
  void ExpectFlagsAtRest() {
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(model->GetEvents())) {
      EXPECT_EQ(event->GetFlag(), 0) << event->GetName();
    }
  }
  double P(const char* event) { return Event(event)->GetProbability(); }

 private:
  std::int64_t _balance = LumoMemoryManager::GetAllocationBalance();

 protected:
  std::unique_ptr<OrvaTestEngine> engine = std::make_unique<OrvaTestEngine>();
  OrvaModel* model = engine->GetModel();
};

TEST_F(ModelGraphTest, TermsHaveOneParentThatAgreesWithItsChildren) {
  OrvaTerm *left = new OrvaTerm(model, 0), *right = new OrvaTerm(model, 0), *t[6];
  for (int i = 1; i < 6; ++i) t[i] = new OrvaTerm(model, i);
  LumoList list(3, t[1], t[2], t[3]);
  left->AddChildren(&list);
  right->AddChild(t[2]);  // moves
  left->AddChild(t[1]);   // moves to the end
  LumoListCursor cursor(&const_cast<LumoList&>(left->GetChildren()));
  cursor.ResetOnFirstItem();
  left->AddChildAfter(&cursor, t[4]);
  left->AddChildBefore(&cursor, t[5]);
  EXPECT_EQ(TypesOfChildren(*left) + "|" + TypesOfChildren(*right), "5341|2");
  EXPECT_FALSE(right->RemoveChild(t[5]));
  left->RemoveChildren(nullptr);
  EXPECT_EQ(t[4]->GetParent(), nullptr);
  right->AddChildren(&list);
  OrvaTerm::Delete(t[1]);  // attached: nothing happens
  right->RemoveChildren(&list);
  EXPECT_EQ(TypesOfChildren(*left) + TypesOfChildren(*right), "");
  for (OrvaTerm* term : {t[1], t[2], t[3], t[4], t[5], left, right}) OrvaTerm::Delete(term);
}

TEST_F(ModelGraphTest, ReferencesAreOccurrencesForAsLongAsTheyLive) {
  Define("G = and(A,or(A)); #B = 0");
  OrvaEvent *a = Event("A"), *b = Event("B"), *g = Event("G");
  EXPECT_EQ(a->GetNumberOfOccurrences(), 2);
  OrvaGate* reference = g->GetDefinition()->GetChild(1);
  g->GetDefinition()->RemoveChild(reference);
  OrvaTerm::Delete(reference);
  EXPECT_EQ(a->GetNumberOfOccurrences(), 1);
  g->SetDefinition(Ref("B"));
  EXPECT_EQ(a->GetNumberOfOccurrences(), 0);
  // A definition that became part of another tree is let go, not deleted.
  OrvaGate* former = g->GetDefinition();
  g->SetDefinition(OrvaGate::NewNot(model, former));
  EXPECT_EQ(former->GetParent(), g->GetDefinition());
  EXPECT_EQ(former->GetDefinedEvent(), nullptr);
  EXPECT_EQ(b->GetNumberOfOccurrences(), 1);
  g->SetDefinition(nullptr);
  EXPECT_EQ(g->GetDefinition(), nullptr);
  EXPECT_EQ(b->GetNumberOfOccurrences(), 0);
}

TEST_F(ModelGraphTest, DescendantsAndAncestors) {
  Define("TOP = or(G,H); G = and(A,B); H = and(B,-C); #D = 0");
  OrvaEvent* top = Event("TOP");
  EXPECT_EQ(CollectDescendants(top), "A B G C H TOP");  // once, and after all below them
  EXPECT_EQ(CollectDescendants(top, OrvaSymbol::CompareAsLeafSymbol), "A B C");
  EXPECT_EQ(CollectDescendants(top, OrvaSymbol::CompareAsInternalSymbol), "G H TOP");
  EXPECT_EQ(CollectDescendants(top, OrvaSymbol::CompareAsRootSymbol), "TOP");
  EXPECT_EQ(CollectDescendants(Event("D")), "D");
  // From a term: its own symbol is not below it.
  EXPECT_EQ(CollectDescendants(Event("H")->GetDefinition()), "B C");
  // A occurs in G only: G comes with all below it (but for A, which is open), then A. TOP does not.
  LumoList result;
  Event("A")->CollectAncestors(OrvaSymbol::CompareAsAnySymbol, nullptr, &result);
  EXPECT_EQ(OrvaNamesOf(result), "B G A");
  result.RemoveItems();
  OrvaGate* negation = Event("H")->GetDefinition()->GetChild(2);
  negation->CollectAncestors(OrvaSymbol::CompareAsAnySymbol, nullptr, &result);
  EXPECT_EQ(OrvaNamesOf(result), "B C H");
  ExpectFlagsAtRest();
  // Setting flags does climb, and stops where the flag is set already.
  Event("C")->SetFlagsOfAncestors(5);
  for (const char* name : {"C", "H", "TOP"}) EXPECT_EQ(Event(name)->GetFlag(), 5) << name;
  for (const char* name : {"A", "B", "G"}) EXPECT_EQ(Event(name)->GetFlag(), 0) << name;
  top->SetFlagsOfDescendants(5);
  EXPECT_EQ(Event("G")->GetFlag(), 0);
  top->SetFlag(0);
  top->SetFlagsOfDescendants(5);
  EXPECT_EQ(Event("A")->GetFlag(), 5);
}

// Neither walks nor deletion may run out of stack on a long chain of gates or a deep formula.
TEST_F(ModelGraphTest, DepthIsNoLimit) {
  constexpr int DEPTH = 100000;
  Define("deep = -A");
  OrvaEvent* event = Event("deep");
  OrvaGate* formula = Ref("A");
  for (int i = 0; i < DEPTH; ++i) formula = OrvaGate::NewNot(model, formula);
  event->SetDefinition(formula);
  for (int i = 0; i < DEPTH; ++i) {
    OrvaEvent* above = model->AddEvent(("g" + std::to_string(i)).c_str(), OrvaEvent::GATE);
    above->SetDefinition(OrvaGate::NewEvent(model, event));
    event = above;
  }
  LumoList result;
  event->CollectDescendants(OrvaSymbol::CompareAsAnySymbol, nullptr, &result);
  EXPECT_EQ(result.GetNumberOfItems(), DEPTH + 2);
  result.RemoveItems();
  Event("A")->CollectAncestors(OrvaSymbol::CompareAsAnySymbol, nullptr, &result);
  EXPECT_EQ(OrvaNamesOf(result), "deep A");
  ExpectFlagsAtRest();
}

TEST_F(ModelGraphTest, GatesHaveDeepCopies) {
  Define("g = or(A,-A,and(true,B),atleast2(A,B,C),atmost1(A,B),cardinality1-2(A,B,C),nand(A,B))");
  const OrvaGate* gate = Event("g")->GetDefinition();
  OrvaGate* copy = OrvaGate::Copy(model, gate);
  EXPECT_EQ(OrvaShortModel::Write(copy), OrvaShortModel::Write(gate));
  EXPECT_EQ(Event("A")->GetNumberOfOccurrences(), 12);
  OrvaTerm::Delete(copy);
  EXPECT_EQ(Event("A")->GetNumberOfOccurrences(), 6);
  model->RenameEvent(Event("B"), "z");
  EXPECT_EQ(Event("B"), nullptr);
  EXPECT_EQ(OrvaNamesOf(model->GetEvents()), "A C g z");  // byte-wise
}

// A uses p, B uses z, C has no expression, D's value is out of range.
TEST_F(ModelGraphTest, ParametersAreComputedBeforeTheirUsers) {
  Define(R"($p = add(z,time); $z = mul(2,time); #A = p; #B = z; #D = 1.5; TOP = or(B,A,C,-A))");
  OrvaEvent* c = Event("C");
  c->SetType(OrvaEvent::BASIC_EVENT);
  model->ComputeProbabilitiesOfBasicEvents(0.25);
  const double expected[] = {0.75, 0.5, 1.0, 1.5};  // D's as it is
  for (int i = 0; i < 4; ++i) EXPECT_EQ(P(std::string(1, "ABCD"[i]).c_str()), expected[i]);
  // One event at a time: bounded, and 0 without an expression, or 1 with the intensity.
  Event("D")->ComputeProbabilityOfBasicEvent(0.0);
  EXPECT_EQ(P("D"), 1.0);
  c->ComputeProbabilityOfBasicEvent(0.0);
  EXPECT_EQ(P("C"), 0.0);
  c->SetUnconditionalFailureIntensity(3.0);
  c->ComputeProbabilityAndUnconditionalFailureIntensityOfBasicEvent(0.0);
  EXPECT_EQ(P("C"), 1.0);
  EXPECT_EQ(c->GetUnconditionalFailureIntensity(), 0.0);
  // Each parameter once, though both A and B lead to z.
  LumoList used;
  Event("TOP")->CollectParameters(&used);
  EXPECT_EQ(OrvaNamesOf(used), "z p");
}

TEST_F(ModelGraphTest, DeviatesOfGivenEventsAreReset) {
  Define(R"($shared = uniform-deviate(10,20); #A = shared; #B = shared;
            #C = uniform-deviate(0.0,4))");
  LumoCongruentialRandomizer randomizer(1);
  model->DrawRandomDeviatesOfModel(&randomizer);
  LumoList onlyA(1, Event("A"));
  model->ResetRandomDeviatesOfBasicEvents(&onlyA);
  model->ComputeProbabilitiesOfBasicEvents(0.0);
  EXPECT_EQ(P("B"), 15.0);
  EXPECT_NE(P("C"), 2.0);
}

}  // namespace
