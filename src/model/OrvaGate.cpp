#include "model/OrvaGate.h"

#include <cassert>
#include <iterator>

#include "model/OrvaEvent.h"
#include "model/OrvaNameTable.h"
#include "support/memory/LumoMemoryManager.h"

// In the order of the types; the last row ends the table.
const OrvaGate::Functor OrvaGate::_FUNCTORS[] = {
    {"constant", Bound::ONE_IF_FALSE, Bound::ONE_IF_FALSE},
    {"event", Bound::ONE, Bound::ONE},
    {"and", Bound::ALL, Bound::ALL},
    {"or", Bound::ONE, Bound::ALL},
    {"nand", Bound::ZERO, Bound::ALL_BUT_ONE},
    {"nor", Bound::ZERO, Bound::ZERO},
    {"atleast", Bound::MIN_ATTRIBUTE, Bound::ALL},
    {"atmost", Bound::ZERO, Bound::MAX_ATTRIBUTE},
    {"cardinality", Bound::MIN_ATTRIBUTE, Bound::MAX_ATTRIBUTE},
    {"not", Bound::ZERO, Bound::ZERO},
    {nullptr, Bound::ZERO, Bound::ZERO},
};

namespace {

// Elements that refer to an event say of which kind it is.
constexpr const char* REFERENCE_NAMES[] = {"gate", "basic-event", "house-event"};

}  // namespace

OrvaGate::OrvaGate(OrvaModel* model, Type type) : OrvaTerm(model, type) {
  SetType(type);
  LumoMemoryManager::TraceNew(this, "OrvaGate");
}

OrvaGate::~OrvaGate() { LumoMemoryManager::TraceDelete(this, "OrvaGate"); }

OrvaGate* OrvaGate::NewConstant(OrvaModel* model, bool value) {
  auto* gate = new OrvaGate(model, CONSTANT);
  gate->SetAttribute(VALUE, value);
  return gate;
}

OrvaGate* OrvaGate::NewEvent(OrvaModel* model, OrvaEvent* event) {
  auto* gate = new OrvaGate(model, EVENT);
  gate->SetReferencedEvent(event);
  return gate;
}

OrvaGate* OrvaGate::NewOperator(OrvaModel* model, Type type, const LumoList* children) {
  auto* gate = new OrvaGate(model, type);
  if (children != nullptr) gate->AddChildren(children);
  return gate;
}

OrvaGate* OrvaGate::NewOr(OrvaModel* model, const LumoList* children) {
  return NewOperator(model, OR, children);
}

OrvaGate* OrvaGate::Copy(OrvaModel* model, const OrvaGate* gate) {
  if (GetFunctor(gate->GetType()) == nullptr) return nullptr;
  if (gate->IsConstant()) return NewConstant(model, gate->GetConstantValue());
  if (gate->IsEvent()) return NewEvent(model, gate->GetReferencedEvent());
  OrvaGate* copy = NewOperator(model, gate->GetType(), nullptr);
  for (const char* threshold : {MIN, MAX}) {
    const int value = gate->GetAttributeAsInt(threshold, 0);
    if (value != 0) copy->SetAttribute(threshold, value);
  }
  copy->_CopyChildren(model, gate);
  return copy;
}

void OrvaGate::_CopyChildren(OrvaModel* model, const OrvaGate* gate) {
  for (const OrvaGate* child = gate->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    AddChild(Copy(model, child));
  }
}

const char* OrvaGate::GetFunctor(Type type) {
  static_assert(std::size(_FUNCTORS) == NOT + 2);
  const bool isKnown = type >= 0 && type < static_cast<int>(std::size(_FUNCTORS));
  return isKnown ? _FUNCTORS[type].name : nullptr;
}

OrvaGate::Type OrvaGate::GetType(const char* name) {
  static const OrvaNameTable table = [] {
    OrvaNameTable names;
    for (const char* reference : REFERENCE_NAMES) names.Add(reference, EVENT);
    names.AddRows(_FUNCTORS);
    return names;
  }();
  static_assert(UNKNOWN == OrvaNameTable::NOT_FOUND);
  return static_cast<Type>(table.Find(name));
}

void OrvaGate::SetType(Type type) {
  OrvaTerm::SetType(type);
  SetAttribute(FUNCTOR, GetFunctor(type));
}

OrvaEvent* OrvaGate::GetDefinedEvent() const { return static_cast<OrvaEvent*>(GetDefinedSymbol()); }

OrvaEvent* OrvaGate::GetReferencedEvent() const {
  return static_cast<OrvaEvent*>(GetReferencedSymbol());
}

void OrvaGate::SetReferencedEvent(OrvaEvent* event) { SetReferencedSymbol(event); }

int OrvaGate::_GetBound(Bound bound) const {
  switch (bound) {
    case Bound::ZERO:
      return 0;
    case Bound::ONE:
      return 1;
    case Bound::ALL:
      return GetNumberOfChildren();
    case Bound::ALL_BUT_ONE:
      return GetNumberOfChildren() - 1;
    case Bound::MIN_ATTRIBUTE:
      return GetAttributeAsInt(MIN, 0);
    case Bound::MAX_ATTRIBUTE:
      return GetAttributeAsInt(MAX, 0);
    case Bound::ONE_IF_FALSE:
      return GetConstantValue() ? 0 : 1;
  }
  return 0;
}

int OrvaGate::GetMin() const {
  assert(GetFunctor(GetType()) != nullptr);
  return _GetBound(_FUNCTORS[GetType()].min);
}

int OrvaGate::GetMax() const {
  assert(GetFunctor(GetType()) != nullptr);
  return _GetBound(_FUNCTORS[GetType()].max);
}

bool OrvaGate::IsGate() const {
  return IsEvent() && GetReferencedEvent()->GetType() == OrvaEvent::GATE;
}

bool OrvaGate::IsLiteral() const {
  if (IsEvent()) return true;
  return IsNegation() && GetFirstChild() != nullptr && GetFirstChild()->IsEvent();
}

bool OrvaGate::HasLiteralsOnly() const {
  const OrvaGate* child = GetFirstChild();
  while (child != nullptr && child->IsLiteral()) child = child->GetNextSibling();
  return child == nullptr;
}

bool OrvaGate::IsNormalized() const {
  const Type type = GetType();
  return (type == AND || type == OR || type == ATLEAST) && HasLiteralsOnly();
}

void OrvaGate::MuteToConstant(bool value) {
  SetReferencedEvent(nullptr);
  ResetAttribute(MIN);
  ResetAttribute(MAX);
  while (OrvaGate* child = GetFirstChild()) {
    RemoveChild(child);
    Delete(child);
  }
  assert(GetNumberOfChildren() == 0);
  SetType(CONSTANT);
  SetAttribute(VALUE, value);
}

// Offered to users of the class; the program itself does not call what follows.

OrvaGate* OrvaGate::NewAnd(OrvaModel* model, const LumoList* children) {
  return NewOperator(model, AND, children);
}

OrvaGate* OrvaGate::NewNand(OrvaModel* model, const LumoList* children) {
  return NewOperator(model, NAND, children);
}

OrvaGate* OrvaGate::NewNor(OrvaModel* model, const LumoList* children) {
  return NewOperator(model, NOR, children);
}

OrvaGate* OrvaGate::NewAtLeast(OrvaModel* model, int min, const LumoList* children) {
  OrvaGate* gate = NewOperator(model, ATLEAST, children);
  gate->SetAttribute(MIN, min);
  return gate;
}

OrvaGate* OrvaGate::NewAtMost(OrvaModel* model, int max, const LumoList* children) {
  OrvaGate* gate = NewOperator(model, ATMOST, children);
  gate->SetAttribute(MAX, max);
  return gate;
}

OrvaGate* OrvaGate::NewCardinality(OrvaModel* model, int min, int max, const LumoList* children) {
  OrvaGate* gate = NewOperator(model, CARDINALITY, children);
  gate->SetAttribute(MIN, min);
  gate->SetAttribute(MAX, max);
  return gate;
}

OrvaGate* OrvaGate::NewNot(OrvaModel* model, OrvaGate* child) {
  OrvaGate* gate = NewOperator(model, NOT, nullptr);
  if (child != nullptr) gate->AddChild(child);
  return gate;
}

void OrvaGate::SetDefinedEvent(OrvaEvent* event) { SetDefinedSymbol(event); }

bool OrvaGate::IsBasicEvent() const {
  return IsEvent() && GetReferencedEvent()->GetType() == OrvaEvent::BASIC_EVENT;
}

bool OrvaGate::IsHouseEvent() const {
  return IsEvent() && GetReferencedEvent()->GetType() == OrvaEvent::HOUSE_EVENT;
}
