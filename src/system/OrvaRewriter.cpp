// The normal form: constants, references, nesting, duplicates.
//
// Four steps run over the definitions below the top, each over all of them before the next, and
// every definition after those that it references. So a step finds what it looks at below in its
// final form: one pass is enough, and nothing has to be looked at again when something below has
// changed.
//
// Each step leaves what the next ones rely on. Without constants, every gate has children. With
// aliases gone, gates of one operator in a row are next to each other, and two references to the
// same event are the same. Coalescing makes duplicates, which go last. The assertions behind each
// step say what has been reached.

#include "system/OrvaRewriter.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <string>

#include "model/OrvaModel.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

namespace {

bool IsAndOrOr(const OrvaGate* gate) {
  return gate->GetType() == OrvaGate::AND || gate->GetType() == OrvaGate::OR;
}

// The operators that are decided by any child of one value, and otherwise by having no child left.
struct DecidedOperator {
  OrvaGate::Type type;
  bool decidingChild;  // a child of this value decides,
  bool decidedValue;   // for this value;
  bool valueWhenEmpty;
};
constexpr DecidedOperator DECIDED_OPERATORS[] = {
    {OrvaGate::AND, false, false, true},
    {OrvaGate::OR, true, true, false},
    {OrvaGate::NAND, false, true, false},
    {OrvaGate::NOR, true, false, true},
};

template <class Step>
void ForEachDefinition(const LumoList& events, Step step) {
  for (OrvaEvent* event : LumoItems<OrvaEvent>(events)) step(event->GetDefinition());
}

template <class Test>
[[maybe_unused]] bool HoldsForDefinitions(const LumoList& events, Test test) {
  bool holds = true;
  ForEachDefinition(events, [&](const OrvaGate* gate) { holds = holds && test(gate); });
  return holds;
}

template <class Test>
bool HoldsForChildren(const OrvaGate* gate, Test test) {
  const OrvaGate* child = gate->GetFirstChild();
  while (child != nullptr && test(child)) child = child->GetNextSibling();
  return child == nullptr;
}

}  // namespace

OrvaRewriter::OrvaRewriter(OrvaInterpreter* interpreter)
    : _interpreter(interpreter), _generatedGatePrefix(LumoRawString::Copy(DEFAULT_GATE_PREFIX)) {
  LumoMemoryManager::TraceNew(this, "OrvaRewriter");
}

OrvaRewriter::~OrvaRewriter() {
  LumoRawString::Delete(_generatedGatePrefix);
  LumoMemoryManager::TraceDelete(this, "OrvaRewriter");
}

OrvaEvent* OrvaRewriter::GenerateGate(OrvaModel* model) {
  std::string name;
  do {
    name = _generatedGatePrefix + std::to_string(++_generatedGateNumber);
  } while (model->LookForEvent(name.c_str()) != nullptr);
  return model->AddEvent(name.c_str(), OrvaEvent::GATE);
}

void OrvaRewriter::_CollectDefinedEvents(OrvaEvent* top, LumoList* events) {
  top->CollectDescendants(OrvaSymbol::CompareAsInternalSymbol, nullptr, events);
}

void OrvaRewriter::NormalizeModel(int& error, OrvaModel* model, OrvaEvent* top) {
  model->ExpandCCFGroups();
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _PropagateConstants(events);
  _DereferenceVariables(events);
  _CoalesceGates(error, model, events);
  _RemoveDuplicatedChildren(model, events);
}

void OrvaRewriter::_PropagateConstants(const LumoList& events) {
  ForEachDefinition(events, [&](OrvaGate* gate) { _PropagateConstants(gate); });
  assert(HoldsForDefinitions(events, _IsFreeOfConstants));
}

void OrvaRewriter::_DereferenceVariables(const LumoList& events) {
  _deadEnds.clear();
  ForEachDefinition(events, [&](OrvaGate* gate) { _DereferenceVariables(gate); });
  assert(
      HoldsForDefinitions(events, [this](const OrvaGate* gate) { return _IsDereferenced(gate); }));
}

void OrvaRewriter::_CoalesceGates(int& error, OrvaModel* model, const LumoList& events) {
  _numberOfCopies = 0;
  _numberOfVisits = 0;
  ForEachDefinition(events, [&](OrvaGate* gate) { _CoalesceGate(model, gate); });
  if (_IsCoalescingTooLong()) {
    error = 1;
  } else {
    assert(HoldsForDefinitions(events, _IsCoalesced));
  }
}

void OrvaRewriter::_RemoveDuplicatedChildren(OrvaModel* model, const LumoList& events) {
  ForEachDefinition(events, [&](OrvaGate* gate) { _RemoveDuplicatedChildren(model, gate); });
  assert(HoldsForDefinitions(events, _IsFreeOfDuplicates));
}

// Constants.
//
// A constant child decides its gate or disappears from it, and a gate without children is a
// constant itself. The one child that is left takes the place of its gate, whatever the operator:
// this is the defined behaviour, also where a negation is lost.

void OrvaRewriter::_PropagateConstants(OrvaGate* gate) {
  switch (gate->GetType()) {
    case OrvaGate::CONSTANT:
      return;
    case OrvaGate::EVENT:
      return _PropagateConstantsInEvent(gate);
    default:
      break;
  }
  _PropagateConstantsInDescendants(gate);
  const ConstantChildren constants = _DeleteConstantChildren(gate);
  switch (gate->GetType()) {
    case OrvaGate::NOT:
      return _PropagateConstantsInNot(gate, constants);
    case OrvaGate::ATLEAST:
    case OrvaGate::ATMOST:
    case OrvaGate::CARDINALITY:
      return _PropagateConstantsInThreshold(gate, constants);
    default:
      return _PropagateConstantsInOperator(gate, constants);
  }
}

// A child that gives way to its own unique child leaves the list, which goes on at the next one.
void OrvaRewriter::_PropagateConstantsInDescendants(OrvaGate* gate) {
  OrvaGate* child = gate->GetFirstChild();
  while (child != nullptr) {
    OrvaGate* next = child->GetNextSibling();
    _PropagateConstants(child);
    child = next;
  }
}

OrvaRewriter::ConstantChildren OrvaRewriter::_DeleteConstantChildren(OrvaGate* gate) {
  ConstantChildren constants;
  OrvaGate* child = gate->GetFirstChild();
  while (child != nullptr) {
    OrvaGate* next = child->GetNextSibling();
    if (child->IsConstant()) {
      ++(child->GetConstantValue() ? constants.numberOfTrue : constants.numberOfFalse);
      gate->RemoveChild(child);
      OrvaTerm::Delete(child);
    }
    child = next;
  }
  return constants;
}

void OrvaRewriter::_PropagateConstantsInEvent(OrvaGate* gate) {
  const OrvaGate* definition = gate->GetReferencedEvent()->GetDefinition();
  if (definition != nullptr && definition->IsConstant()) {
    gate->MuteToConstant(definition->GetConstantValue());
  }
}

void OrvaRewriter::_PropagateConstantsInNot(OrvaGate* gate, const ConstantChildren& constants) {
  if (constants.numberOfTrue == 1) {
    gate->MuteToConstant(false);
  } else if (constants.numberOfFalse == 1) {
    gate->MuteToConstant(true);
  }
}

void OrvaRewriter::_PropagateConstantsInOperator(OrvaGate* gate,
                                                 const ConstantChildren& constants) {
  for (const DecidedOperator& row : DECIDED_OPERATORS) {
    if (gate->GetType() != row.type) continue;
    const int deciding = row.decidingChild ? constants.numberOfTrue : constants.numberOfFalse;
    if (deciding > 0) return gate->MuteToConstant(row.decidedValue);
    if (gate->GetNumberOfChildren() == 0) return gate->MuteToConstant(row.valueWhenEmpty);
    if (gate->GetNumberOfChildren() == 1) return _SubstituteUniqueChildForGate(gate);
  }
}

// Each true child that went lowers the thresholds by one. The gate is true when the number of its
// true children lies between its min and its max.
void OrvaRewriter::_PropagateConstantsInThreshold(OrvaGate* gate,
                                                  const ConstantChildren& constants) {
  const OrvaGate::Type type = gate->GetType();
  const auto lower = [&](int threshold) {
    return static_cast<int>(std::max(threshold - static_cast<long>(constants.numberOfTrue),
                                     static_cast<long>(INT_MIN)));
  };
  if (type != OrvaGate::ATMOST) gate->SetAttribute(OrvaGate::MIN, lower(gate->GetMin()));
  if (type != OrvaGate::ATLEAST) gate->SetAttribute(OrvaGate::MAX, lower(gate->GetMax()));
  const int n = gate->GetNumberOfChildren();
  const int min = gate->GetMin();
  const int max = gate->GetMax();
  if (min < 1 && max >= n) return gate->MuteToConstant(true);
  if (min > n || max < 0) return gate->MuteToConstant(false);
  // An ATMOST left with one child becomes that child too, not its negation: as it is defined.
  if (n == 1 && (type != OrvaGate::CARDINALITY || (min == 1 && max == 1))) {
    _SubstituteUniqueChildForGate(gate);
  }
}

// The child goes last among the parent's children, or becomes the definition.
void OrvaRewriter::_SubstituteUniqueChildForGate(OrvaGate* gate) {
  assert(gate->GetNumberOfChildren() == 1);
  OrvaGate* child = gate->GetFirstChild();
  gate->RemoveChild(child);
  if (OrvaGate* parent = gate->GetParent()) {
    parent->RemoveChild(gate);
    parent->AddChild(child);
    OrvaTerm::Delete(gate);
  } else if (OrvaEvent* event = gate->GetDefinedEvent()) {
    event->SetDefinition(child);  // deletes the emptied gate
  }
}

bool OrvaRewriter::_IsFreeOfConstants(const OrvaGate* gate) {
  return HoldsForChildren(gate, [](const OrvaGate* child) {
    if (child->IsConstant()) return false;
    if (!child->IsEvent()) return _IsFreeOfConstants(child);
    const OrvaGate* definition = child->GetReferencedEvent()->GetDefinition();
    return definition == nullptr || !definition->IsConstant();
  });
}

// References.
//
// A reference follows the chain of events that are but other names, or negations of other names, to
// the event at its end, and counts the negations on its way. What it finds is one step away from
// then on: whoever comes later, in post-order, passes through the short way.

void OrvaRewriter::_DereferenceVariables(OrvaGate* gate) {
  if (gate->IsEvent()) return _DereferenceReference(gate);
  const bool isNegatedReference = gate->IsNegation() && gate->IsLiteral();
  for (OrvaGate* child = gate->GetFirstChild(); child != nullptr; child = child->GetNextSibling()) {
    _DereferenceVariables(child);
  }
  if (isNegatedReference) _ReplaceDoubleNegation(gate);
}

void OrvaRewriter::_DereferenceReference(OrvaGate* gate) {
  OrvaEvent* event = gate->GetReferencedEvent();
  bool isPositive = true;
  if (!_DereferenceEvent(event, isPositive) || event == gate->GetReferencedEvent()) return;
  if (isPositive) return gate->SetReferencedEvent(event);
  gate->SetReferencedEvent(nullptr);
  gate->SetType(OrvaGate::NOT);
  gate->AddChild(OrvaGate::NewEvent(gate->GetModel(), event));
}

// A negated reference that has become NOT of NOT of a reference gives way to that reference when it
// is a definition; references to the defined event then find their way through it. Inside a larger
// formula nothing is replaced.
void OrvaRewriter::_ReplaceDoubleNegation(OrvaGate* gate) {
  OrvaEvent* event = gate->GetDefinedEvent();
  OrvaGate* inner = gate->GetFirstChild();
  if (event == nullptr || !inner->IsNegation()) return;
  OrvaGate* reference = inner->GetFirstChild();
  inner->RemoveChild(reference);
  event->SetDefinition(reference);
}

// Follows the chain of aliases and negations from an event. False, with nothing found, when the
// chain runs into the negation of something that is no event. Such chains keep their length while
// others come down to one step: to stop at the event after the first keeps all of them short.
bool OrvaRewriter::_DereferenceEvent(OrvaEvent*& event, bool& isPositive) {
  const OrvaEvent* first = event;
  for (;;) {
    const OrvaGate* definition = event->GetDefinition();
    if (definition == nullptr) return true;
    const bool isNegationOfFormula = definition->IsNegation() && !definition->IsLiteral();
    if (isNegationOfFormula || (!_deadEnds.empty() && _deadEnds.count(event) != 0)) {
      _deadEnds.insert(first);
      return false;
    }
    if (definition->IsNegation()) {
      definition = definition->GetFirstChild();
      isPositive = !isPositive;
    } else if (!definition->IsEvent()) {
      return true;
    }
    event = definition->GetReferencedEvent();
  }
}

// Whether no reference leads to another name any more, but for those whose chains have no end.
bool OrvaRewriter::_IsDereferenced(const OrvaGate* gate) const {
  if (!gate->IsEvent()) {
    return HoldsForChildren(gate, [this](const OrvaGate* child) { return _IsDereferenced(child); });
  }
  const OrvaEvent* event = gate->GetReferencedEvent();
  const OrvaGate* definition = event->GetDefinition();
  const bool isName = definition != nullptr && definition->IsLiteral();
  return !isName || _deadEnds.count(event) != 0;
}

// Nesting and duplicates.
//
// A gate takes over the children of the gates of its own operator below it. Since those have taken
// over what was below them, the copies need not be looked at again. A plain reference that the gate
// has already is not copied: in a ladder, where each gate references the next one twice by
// different ways, the references would double at each level, n gates making 2^n of them, only to be
// removed as duplicates afterwards.
//
// Both steps mark the events that a gate references so far, and take the marks off when they leave
// the gate. The mark is a field of the event: as a named attribute, made and deleted five times for
// each event of a group with common causes, it took a third of a normalization.

bool OrvaRewriter::_HasNoMarks(const OrvaGate* gate) {
  return HoldsForChildren(
      gate, [](const OrvaGate* child) { return !child->IsEvent() || !_IsMarked(child); });
}

bool OrvaRewriter::_IsMarked(const OrvaGate* reference) {
  return reference->GetReferencedEvent()->IsMarked();
}

void OrvaRewriter::_Mark(OrvaGate* reference) { reference->GetReferencedEvent()->SetMarked(true); }

void OrvaRewriter::_UnmarkChildren(OrvaGate* gate) {
  for (const OrvaGate* child = gate->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    if (child->IsEvent()) child->GetReferencedEvent()->SetMarked(false);
  }
}

bool OrvaRewriter::_IsCoalescingTooLong() const {
  constexpr long VISITS_PER_COPY = 10;
  return _numberOfCopies > _maximumNumberOfCopies ||
         _numberOfVisits > VISITS_PER_COPY * _maximumNumberOfCopies;
}

void OrvaRewriter::_CoalesceGate(OrvaModel* model, OrvaGate* gate) {
  if (!IsAndOrOr(gate) || _IsCoalescingTooLong()) return;
  assert(_HasNoMarks(gate));
  LumoListCursor* cursor = gate->NewCursorOnChildren();
  cursor->ResetOnFirstItem();
  while (!cursor->IsAfterLastItem()) {
    auto* child = static_cast<OrvaGate*>(cursor->GetItem());
    const OrvaGate* definition =
        child->IsGate() ? child->GetReferencedEvent()->GetDefinition() : nullptr;
    if (definition != nullptr && definition->GetType() == gate->GetType()) {
      _InsertNewChildrenBefore(model, gate, cursor, definition);
      cursor->Increment();
      gate->RemoveChild(child);
      OrvaTerm::Delete(child);
    } else {
      if (child->IsEvent()) _Mark(child);
      cursor->Increment();
    }
  }
  delete cursor;
  _UnmarkChildren(gate);
}

bool OrvaRewriter::_IsCoalesced(const OrvaGate* gate) {
  if (!IsAndOrOr(gate)) return true;
  return HoldsForChildren(gate, [gate](const OrvaGate* child) {
    const OrvaGate* definition =
        child->IsGate() ? child->GetReferencedEvent()->GetDefinition() : nullptr;
    return definition == nullptr || definition->GetType() != gate->GetType();
  });
}

void OrvaRewriter::_InsertNewChildrenBefore(OrvaModel* model, OrvaGate* gate,
                                            LumoListCursor* cursor, const OrvaGate* definition) {
  for (const OrvaGate* child = definition->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    ++_numberOfVisits;
    if (child->IsEvent() && _IsMarked(child)) continue;
    OrvaGate* copy = OrvaGate::Copy(model, child);
    ++_numberOfCopies;
    gate->AddChildBefore(cursor, copy);
    if (copy->IsEvent()) _Mark(copy);
  }
}

void OrvaRewriter::_RemoveDuplicatedChildren(OrvaModel* /*model*/, OrvaGate* gate) {
  if (!IsAndOrOr(gate)) return;
  assert(_HasNoMarks(gate));
  OrvaGate* child = gate->GetFirstChild();
  while (child != nullptr) {
    OrvaGate* next = child->GetNextSibling();
    if (child->IsEvent()) {
      if (_IsMarked(child)) {
        gate->RemoveChild(child);
        OrvaTerm::Delete(child);
      } else {
        _Mark(child);
      }
    }
    child = next;
  }
  _UnmarkChildren(gate);
}

bool OrvaRewriter::_IsFreeOfDuplicates(const OrvaGate* gate) {
  if (!IsAndOrOr(gate)) return true;
  std::unordered_set<const OrvaEvent*> events;
  return HoldsForChildren(gate, [&](const OrvaGate* child) {
    return !child->IsEvent() || events.insert(child->GetReferencedEvent()).second;
  });
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaRewriter::PropagateConstants(int& /*error*/, OrvaModel* /*model*/, OrvaEvent* top) {
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _PropagateConstants(events);
}

void OrvaRewriter::DereferenceVariables(int& /*error*/, OrvaModel* /*model*/, OrvaEvent* top) {
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _DereferenceVariables(events);
}

void OrvaRewriter::CoalesceGates(int& error, OrvaModel* model, OrvaEvent* top) {
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _CoalesceGates(error, model, events);
}

void OrvaRewriter::RemoveDuplicatedChildren(int& /*error*/, OrvaModel* model, OrvaEvent* top) {
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _RemoveDuplicatedChildren(model, events);
}

void OrvaRewriter::SetGeneratedGatePrefix(const char* prefix) {
  LumoRawString::Replace(_generatedGatePrefix, prefix);
  _generatedGateNumber = 0;
}
