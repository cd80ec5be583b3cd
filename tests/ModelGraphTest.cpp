// Symbols, terms, events, gates, parameters, and the model that holds them.

#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

#include "model/OrvaGate.h"
#include "model/OrvaModel.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/random/LumoCongruentialRandomizer.h"

namespace {

using Expression = OrvaProbabilityDistribution;

std::string NamesOf(const LumoContainer& symbols) {
  std::string names;
  for (const OrvaSymbol* symbol : LumoItems<OrvaSymbol>(symbols)) {
    names += (names.empty() ? "" : " ") + std::string(symbol->GetName());
  }
  return names;
}

template <class Start>
std::string CollectDescendants(Start* start,
                               OrvaSymbol::Selector selector = OrvaSymbol::CompareAsAnySymbol) {
  LumoList result;
  start->CollectDescendants(selector, nullptr, &result);
  return NamesOf(result);
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
    delete model;
    EXPECT_EQ(LumoMemoryManager::GetAllocationBalance(), _balance);
  }

  OrvaEvent* Event(const char* name, OrvaEvent::Type type = OrvaEvent::BASIC_EVENT) {
    OrvaEvent* event = model->LookForEvent(name);
    return event != nullptr ? event : model->AddEvent(name, type);
  }
  OrvaGate* Ref(const char* name) { return OrvaGate::NewEvent(model, Event(name)); }
  OrvaGate* Gate(OrvaGate* (*make)(OrvaModel*, const LumoList*),
                 std::initializer_list<OrvaGate*> children) {
    LumoList list;
    for (OrvaGate* child : children) list.InsertItem(child);
    return make(model, &list);
  }
  // TOP = or(G, H), G = and(A, B), H = and(B, not C): B is shared, D stands alone.
  void DefineSharedTree() {
    Event("G")->SetDefinition(Gate(OrvaGate::NewAnd, {Ref("A"), Ref("B")}));
    Event("H")->SetDefinition(
        Gate(OrvaGate::NewAnd, {Ref("B"), OrvaGate::NewNot(model, Ref("C"))}));
    Event("TOP")->SetDefinition(Gate(OrvaGate::NewOr, {Ref("G"), Ref("H")}));
    Event("D");
  }
  void ExpectFlagsAtRest() {
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(model->GetEvents())) {
      EXPECT_EQ(event->GetFlag(), 0) << event->GetName();
    }
  }
  double P(const char* event) { return Event(event)->GetProbability(); }
  Expression* Use(const char* parameter) {
    return Expression::NewParameter(model, model->LookForParameter(parameter));
  }
  Expression* Uniform(double a, double b) {
    return Expression::NewDistribution(model, Expression::UNIFORM_DEVIATE,
                                       Expression::NewFloat(model, a),
                                       Expression::NewFloat(model, b));
  }

 private:
  std::int64_t _balance = LumoMemoryManager::GetAllocationBalance();

 protected:
  OrvaModel* model = new OrvaModel;
};

TEST_F(ModelGraphTest, TermsHaveOneParentThatAgreesWithItsChildren) {
  OrvaTerm *left = new OrvaTerm(model, 0), *right = new OrvaTerm(model, 0), *t[6];
  for (int i = 1; i < 6; ++i) t[i] = new OrvaTerm(model, i);
  LumoList list(3, t[1], t[2], t[3]);
  left->AddChildren(&list);
  right->AddChild(t[2]);  // moves
  left->AddChild(t[1]);   // moves to the end
  EXPECT_EQ(TypesOfChildren(*left), "31");
  LumoListCursor cursor(&const_cast<LumoList&>(left->GetChildren()));
  cursor.ResetOnFirstItem();
  left->AddChildAfter(&cursor, t[4]);
  left->AddChildBefore(&cursor, t[5]);
  left->AddChildAfter(&cursor, t[2]);
  EXPECT_EQ(TypesOfChildren(*left), "53241");
  EXPECT_EQ(TypesOfChildren(*right), "");
  EXPECT_FALSE(right->RemoveChild(t[5]));
  t[5]->SetParent(right);
  t[4]->ResetParent();
  EXPECT_EQ(t[4]->GetParent(), nullptr);
  left->RemoveChildren(&list);
  EXPECT_EQ(TypesOfChildren(*left), "");
  left->AddChildren(&list);
  left->RemoveChildren(nullptr);
  right->AddChildren(&list);
  OrvaTerm::Delete(t[5]);  // attached: nothing happens
  EXPECT_EQ(TypesOfChildren(*right), "5123");
  for (OrvaTerm* term : {t[4], left, right}) OrvaTerm::Delete(term);
}

TEST_F(ModelGraphTest, ReferencesAreOccurrencesForAsLongAsTheyLive) {
  OrvaEvent *a = Event("A"), *b = Event("B"), *g = Event("G");
  OrvaGate* reference = Ref("A");
  OrvaGate* root = Gate(OrvaGate::NewAnd, {reference, Gate(OrvaGate::NewOr, {Ref("A")})});
  EXPECT_EQ(a->GetNumberOfOccurrences(), 2);
  root->RemoveChild(reference);
  OrvaTerm::Delete(reference);
  EXPECT_EQ(a->GetNumberOfOccurrences(), 1);
  g->SetDefinition(root);
  EXPECT_EQ(root->GetAttributeAsSymbol(OrvaTerm::DEFINED_SYMBOL, nullptr), g);
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

TEST_F(ModelGraphTest, DescendantsComeOnceAndAfterAllBelowThem) {
  DefineSharedTree();
  OrvaEvent* top = Event("TOP");
  EXPECT_EQ(CollectDescendants(top), "A B G C H TOP");
  EXPECT_EQ(CollectDescendants(top, OrvaSymbol::CompareAsLeafSymbol), "A B C");
  EXPECT_EQ(CollectDescendants(top, OrvaSymbol::CompareAsInternalSymbol), "G H TOP");
  EXPECT_EQ(CollectDescendants(top, OrvaSymbol::CompareAsRootSymbol), "TOP");
  EXPECT_EQ(CollectDescendants(Event("D")), "D");
  EXPECT_EQ(CollectDescendants(Event("D"), OrvaSymbol::CompareAsInternalSymbol), "");
  // From a term: its own symbol is not below it.
  EXPECT_EQ(CollectDescendants(Event("H")->GetDefinition()), "B C");
  ExpectFlagsAtRest();
}

TEST_F(ModelGraphTest, AncestorsStopAtTheDefinedSymbol) {
  DefineSharedTree();
  // A occurs in G only: G comes with all below it (but for A, which is open), then A. TOP does not.
  LumoList result;
  Event("A")->CollectAncestors(OrvaSymbol::CompareAsAnySymbol, nullptr, &result);
  EXPECT_EQ(NamesOf(result), "B G A");
  ExpectFlagsAtRest();
  result.RemoveItems();
  OrvaGate* negation = Event("H")->GetDefinition()->GetChild(2);
  negation->CollectAncestors(OrvaSymbol::CompareAsAnySymbol, nullptr, &result);
  EXPECT_EQ(NamesOf(result), "B C H");
  ExpectFlagsAtRest();
  // Setting flags does climb, and stops where the flag is set already.
  Event("C")->SetFlagsOfAncestors(5);
  for (const char* name : {"C", "H", "TOP"}) EXPECT_EQ(Event(name)->GetFlag(), 5) << name;
  for (const char* name : {"A", "B", "G"}) EXPECT_EQ(Event(name)->GetFlag(), 0) << name;
  Event("TOP")->SetFlagsOfDescendants(5);
  EXPECT_EQ(Event("G")->GetFlag(), 0);
  Event("TOP")->SetFlag(0);
  Event("TOP")->SetFlagsOfDescendants(5);
  EXPECT_EQ(Event("A")->GetFlag(), 5);
}

// Neither walks nor deletion may run out of stack on a long chain of gates or a deep formula.
TEST_F(ModelGraphTest, DepthIsNoLimit) {
  constexpr int DEPTH = 100000;
  OrvaGate* formula = Ref("A");
  for (int i = 0; i < DEPTH; ++i) formula = OrvaGate::NewNot(model, formula);
  OrvaEvent* event = Event("deep");
  event->SetDefinition(formula);
  for (int i = 0; i < DEPTH; ++i) {
    OrvaEvent* above = Event(("g" + std::to_string(i)).c_str());
    above->SetDefinition(OrvaGate::NewEvent(model, event));
    event = above;
  }
  LumoList result;
  event->CollectDescendants(OrvaSymbol::CompareAsAnySymbol, nullptr, &result);
  EXPECT_EQ(result.GetNumberOfItems(), DEPTH + 2);
  result.RemoveItems();
  Event("A")->CollectAncestors(OrvaSymbol::CompareAsAnySymbol, nullptr, &result);
  EXPECT_EQ(NamesOf(result), "deep A");
  ExpectFlagsAtRest();
}

TEST_F(ModelGraphTest, GateOperatorsAndTheirThresholds) {
  const auto add = [&](OrvaGate* gate) {
    for (const char* name : {"A", "B", "C"}) gate->AddChild(Ref(name));
    return gate;
  };
  const struct {
    OrvaGate* gate;
    int type;
    const char* functor;
    int min, max;
  } rows[] = {
      {OrvaGate::NewConstant(model, true), 0, "constant", 0, 0},
      {OrvaGate::NewConstant(model, false), 0, "constant", 1, 1},
      {Ref("A"), 1, "event", 1, 1},
      {add(OrvaGate::NewAnd(model, nullptr)), 2, "and", 3, 3},
      {add(OrvaGate::NewOr(model, nullptr)), 3, "or", 1, 3},
      {add(OrvaGate::NewNand(model, nullptr)), 4, "nand", 0, 2},
      {add(OrvaGate::NewNor(model, nullptr)), 5, "nor", 0, 0},
      {add(OrvaGate::NewAtLeast(model, 2, nullptr)), 6, "atleast", 2, 3},
      {add(OrvaGate::NewAtMost(model, 1, nullptr)), 7, "atmost", 0, 1},
      {add(OrvaGate::NewCardinality(model, 1, 2, nullptr)), 8, "cardinality", 1, 2},
      {OrvaGate::NewNot(model, Ref("A")), 9, "not", 0, 0},
  };
  for (const auto& row : rows) {
    const int occurrences = Event("A")->GetNumberOfOccurrences();
    OrvaGate* copy = OrvaGate::Copy(model, row.gate);
    for (const OrvaGate* gate : {row.gate, copy}) {
      EXPECT_EQ(gate->GetType(), row.type);
      EXPECT_STREQ(gate->GetAttributeAsString(OrvaTerm::FUNCTOR, ""), row.functor);
      EXPECT_EQ(gate->GetMin(), row.min) << row.functor;
      EXPECT_EQ(gate->GetMax(), row.max) << row.functor;
    }
    EXPECT_EQ(OrvaGate::GetType(row.functor), row.type);
    EXPECT_EQ(CollectDescendants(copy), CollectDescendants(row.gate));
    EXPECT_EQ(Event("A")->GetNumberOfOccurrences(), occurrences + (row.type == 0 ? 0 : 1));
    OrvaTerm::Delete(copy);
    OrvaTerm::Delete(row.gate);
  }
  for (const char* name : {"gate", "basic-event", "house-event"}) {
    EXPECT_EQ(OrvaGate::GetType(name), OrvaGate::EVENT);
  }
  EXPECT_EQ(OrvaGate::GetType("xor"), -1);
  // Thresholds that are missing read as 0.
  OrvaGate* gate = add(OrvaGate::NewAtLeast(model, 2, nullptr));
  gate->ResetAttribute(OrvaGate::MIN);
  EXPECT_EQ(gate->GetMin(), 0);
  gate->SetType(static_cast<OrvaGate::Type>(10));
  EXPECT_EQ(OrvaGate::Copy(model, gate), nullptr);
  OrvaTerm::Delete(gate);
}

TEST_F(ModelGraphTest, MutingKeepsWhatIsDefined) {
  Event("G")->SetDefinition(OrvaGate::NewCardinality(model, 1, 2, nullptr));
  OrvaGate* gate = Event("G")->GetDefinition();
  gate->AddChild(OrvaGate::NewNot(model, Ref("A")));
  gate->MuteToConstant(true);
  EXPECT_TRUE(gate->IsConstantTrue());
  EXPECT_STREQ(gate->GetAttributeAsString(OrvaTerm::FUNCTOR, ""), "constant");
  EXPECT_EQ(gate->GetDefinedEvent(), Event("G"));
  EXPECT_EQ(gate->GetAttributeAsInt(OrvaGate::MIN, -1), -1);
  EXPECT_EQ(gate->GetAttributeAsInt(OrvaGate::MAX, -1), -1);
  OrvaGate* reference = Ref("A");
  reference->MuteToConstant(false);
  EXPECT_TRUE(reference->IsConstantFalse());
  EXPECT_EQ(Event("A")->GetNumberOfOccurrences(), 0);
  OrvaTerm::Delete(reference);
}

TEST_F(ModelGraphTest, EventsByNameTypeAndDefinition) {
  Event("house", OrvaEvent::HOUSE_EVENT);
  for (const char* name : {"B", "a", "C"}) Event(name);
  EXPECT_EQ(NamesOf(model->GetEvents()), "B C a house");  // byte-wise
  model->RenameEvent(Event("B"), "z");
  EXPECT_EQ(model->LookForEvent("B"), nullptr);
  EXPECT_STREQ(model->LookForEvent("z")->GetName(), "z");
  EXPECT_EQ(NamesOf(model->GetEvents()), "C a house z");

  Event("house")->SetDefinition(OrvaGate::NewConstant(model, true));
  EXPECT_EQ(Event("house")->GetType(), OrvaEvent::GATE);
  Event("C")->SetDefinition(nullptr);
  EXPECT_EQ(Event("C")->GetType(), OrvaEvent::GATE);
  LumoList gates;
  const OrvaEvent::Type type = OrvaEvent::GATE;
  model->CollectEvents(OrvaEvent::CompareType, &type, &gates);
  EXPECT_EQ(NamesOf(gates), "C house");
}

// p = z + t, z = 2 t; A uses p, B uses z, C has no expression, D's value is out of range.
TEST_F(ModelGraphTest, ParametersAreComputedBeforeTheirUsers) {
  OrvaParameter* p = model->AddParameter("p");
  OrvaParameter* z = model->AddParameter("z");
  EXPECT_TRUE(p->GetValue()->IsNil());
  EXPECT_EQ(p->ComputeValue(1.0)->ToDouble(), 0.0);
  EXPECT_TRUE(p->GetValue()->IsDouble());
  const auto date = [&] {
    return Expression::NewDistribution(model, Expression::MISSION_TIME, nullptr);
  };
  p->SetDefinition(Expression::NewDistribution(model, Expression::ADD, Use("z"), date()));
  z->SetDefinition(
      Expression::NewDistribution(model, Expression::MUL, Expression::NewInt(model, 2), date()));
  Event("A")->SetProbabilityDistribution(Use("p"));
  Event("B")->SetProbabilityDistribution(Use("z"));
  Event("C");
  Event("D")->SetProbabilityDistribution(Expression::NewFloat(model, 1.5));
  Event("TOP")->SetDefinition(
      Gate(OrvaGate::NewOr, {Ref("B"), Ref("A"), Ref("C"), OrvaGate::NewNot(model, Ref("A"))}));
  model->ComputeProbabilitiesOfBasicEvents(0.25);
  EXPECT_EQ(model->GetMissionTime(), 0.25);
  EXPECT_EQ(P("A"), 0.75);
  EXPECT_EQ(P("B"), 0.5);
  EXPECT_EQ(P("C"), 1.0);
  EXPECT_EQ(P("D"), 1.5);  // as it is
  LumoList onlyA(1, Event("A"));
  model->ComputeProbabilitiesOfBasicEvents(0.5, &onlyA);
  EXPECT_EQ(P("A"), 1.5);
  EXPECT_EQ(P("B"), 0.5);
  // One event at a time: bounded, and 0 without an expression, or 1 with the intensity.
  Event("D")->ComputeProbabilityOfBasicEvent(0.0);
  EXPECT_EQ(P("D"), 1.0);
  Event("C")->ComputeProbabilityOfBasicEvent(0.0);
  EXPECT_EQ(P("C"), 0.0);
  Event("C")->SetUnconditionalFailureIntensity(3.0);
  Event("C")->ComputeProbabilityAndUnconditionalFailureIntensityOfBasicEvent(0.0);
  EXPECT_EQ(P("C"), 1.0);
  EXPECT_EQ(Event("C")->GetUnconditionalFailureIntensity(), 0.0);
  // Each parameter once, though both A and B lead to z.
  LumoList used;
  Event("TOP")->CollectParameters(&used);
  EXPECT_EQ(NamesOf(used), "z p");
  EXPECT_EQ(z->GetFlag() + p->GetFlag(), 0);
}

// The parameters are drawn first, each once however many events use it, then the events.
TEST_F(ModelGraphTest, DeviatesAreDrawnInOrder) {
  OrvaParameter* shared = model->AddParameter("shared");
  shared->SetDefinition(Uniform(10.0, 20.0));
  model->AddParameter("unused")->SetDefinition(Uniform(1.0, 2.0));
  for (const char* name : {"A", "B"}) Event(name)->SetProbabilityDistribution(Use("shared"));
  Event("C")->SetProbabilityDistribution(Uniform(0.0, 4.0));
  Event("D");

  LumoCongruentialRandomizer randomizer(1), expected(1);
  model->ResetRandomDeviatesOfModel();
  model->DrawRandomDeviatesOfModel(&randomizer);
  model->ComputeProbabilitiesOfBasicEvents(0.0);
  const double drawn = expected.UniformDraw(10.0, 20.0);
  EXPECT_EQ(P("A"), drawn);
  EXPECT_EQ(P("B"), drawn);
  EXPECT_DOUBLE_EQ(P("C"), expected.UniformDraw(0.0, 4.0));
  EXPECT_EQ(randomizer.GetSeed(), expected.GetSeed());

  LumoList onlyA(1, Event("A"));
  model->ResetRandomDeviatesOfBasicEvents(&onlyA);
  model->ComputeProbabilitiesOfBasicEvents(0.0);
  EXPECT_EQ(P("B"), 15.0);
  EXPECT_NE(P("C"), 2.0);
  model->ResetRandomDeviatesOfModel();
  model->ComputeProbabilitiesOfBasicEvents(0.0);
  EXPECT_DOUBLE_EQ(P("C"), 2.0);
}

TEST_F(ModelGraphTest, CompletionLeavesNothingUndefined) {
  OrvaEvent* unspecified = Event("U", OrvaEvent::UNSPECIFIED_EVENT);
  OrvaEvent* gate = Event("G", OrvaEvent::GATE);
  OrvaEvent* house = Event("H", OrvaEvent::HOUSE_EVENT);
  OrvaEvent* basic = Event("B");
  basic->SetProbabilityDistribution(Uniform(0.0, 1.0));
  OrvaEvent* kept = Event("K");
  kept->SetDefinition(OrvaGate::NewConstant(model, true));
  OrvaParameter* parameter = model->AddParameter("p");
  model->Complete();
  EXPECT_EQ(unspecified->GetType(), OrvaEvent::BASIC_EVENT);
  EXPECT_TRUE(unspecified->GetProbabilityDistribution()->GetValue()->Is(0.0));
  for (const OrvaEvent* event : {gate, house}) {
    EXPECT_EQ(event->GetType(), OrvaEvent::GATE);
    EXPECT_TRUE(event->GetDefinition()->IsConstantFalse());
  }
  EXPECT_TRUE(kept->GetDefinition()->IsConstantTrue());
  EXPECT_EQ(kept->GetProbabilityDistribution(), nullptr);
  EXPECT_TRUE(parameter->GetDefinition()->GetValue()->Is(0.0));
  EXPECT_DOUBLE_EQ(basic->GetProbabilityDistribution()->GetValueAsDouble(), 0.5);
}

}  // namespace
