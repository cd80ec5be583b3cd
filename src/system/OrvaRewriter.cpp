// The normal form: constants, references, nesting, duplicates.

#include "system/OrvaRewriter.h"

#include <algorithm>
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

}  // namespace

OrvaRewriter::OrvaRewriter(OrvaInterpreter* interpreter)
    : _interpreter(interpreter), _generatedGatePrefix(LumoRawString::Copy(DEFAULT_GATE_PREFIX)) {
  LumoMemoryManager::TraceNew(this, "OrvaRewriter");
}

OrvaRewriter::~OrvaRewriter() {
  LumoRawString::Delete(_generatedGatePrefix);
  LumoMemoryManager::TraceDelete(this, "OrvaRewriter");
}

void OrvaRewriter::SetGeneratedGatePrefix(const char* prefix) {
  LumoRawString::Replace(_generatedGatePrefix, prefix);
  _generatedGateNumber = 0;
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

template <class Step>
void OrvaRewriter::_ApplyToDefinitions(const LumoList& events, Step step) {
  for (OrvaEvent* event : LumoItems<OrvaEvent>(events)) step(event->GetDefinition());
}

void OrvaRewriter::NormalizeModel(int& error, OrvaModel* model, OrvaEvent* top) {
  model->ExpandCCFGroups();
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _ApplyToDefinitions(events, [&](OrvaGate* gate) { _PropagateConstants(gate); });
  _deadEnds.clear();
  _ApplyToDefinitions(events, [&](OrvaGate* gate) { _DereferenceVariables(gate); });
  _numberOfCopies = 0;
  _numberOfVisits = 0;
  _ApplyToDefinitions(events, [&](OrvaGate* gate) { _CoalesceGate(model, gate); });
  if (_IsCoalescingTooLong()) error = 1;
  _ApplyToDefinitions(events, [&](OrvaGate* gate) { _RemoveDuplicatedChildren(model, gate); });
}

void OrvaRewriter::PropagateConstants(int& /*error*/, OrvaModel* /*model*/, OrvaEvent* top) {
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _ApplyToDefinitions(events, [&](OrvaGate* gate) { _PropagateConstants(gate); });
}

void OrvaRewriter::DereferenceVariables(int& /*error*/, OrvaModel* /*model*/, OrvaEvent* top) {
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _deadEnds.clear();
  _ApplyToDefinitions(events, [&](OrvaGate* gate) { _DereferenceVariables(gate); });
}

void OrvaRewriter::CoalesceGates(int& /*error*/, OrvaModel* model, OrvaEvent* top) {
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _numberOfCopies = 0;
  _numberOfVisits = 0;
  _ApplyToDefinitions(events, [&](OrvaGate* gate) { _CoalesceGate(model, gate); });
}

void OrvaRewriter::RemoveDuplicatedChildren(int& /*error*/, OrvaModel* model, OrvaEvent* top) {
  LumoList events;
  _CollectDefinedEvents(top, &events);
  _ApplyToDefinitions(events, [&](OrvaGate* gate) { _RemoveDuplicatedChildren(model, gate); });
}

// Constants.

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

// References.

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

// Nesting and duplicates. Both steps mark the events that a gate references so far.

bool OrvaRewriter::_IsMarked(const OrvaGate* reference) {
  return reference->GetReferencedEvent()->GetAttributeAsBool(DUPLICATED_CHILDREN_REMOVAL, false);
}

void OrvaRewriter::_Mark(OrvaGate* reference) {
  reference->GetReferencedEvent()->SetAttribute(DUPLICATED_CHILDREN_REMOVAL, true);
}

void OrvaRewriter::_UnmarkChildren(OrvaGate* gate) {
  for (const OrvaGate* child = gate->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    if (child->IsEvent()) child->GetReferencedEvent()->ResetAttribute(DUPLICATED_CHILDREN_REMOVAL);
  }
}

bool OrvaRewriter::_IsCoalescingTooLong() const {
  constexpr long VISITS_PER_COPY = 10;
  return _numberOfCopies > _maximumNumberOfCopies ||
         _numberOfVisits > VISITS_PER_COPY * _maximumNumberOfCopies;
}

void OrvaRewriter::_CoalesceGate(OrvaModel* model, OrvaGate* gate) {
  if (!IsAndOrOr(gate) || _IsCoalescingTooLong()) return;
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
