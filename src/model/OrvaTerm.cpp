#include "model/OrvaTerm.h"

#include <cassert>
#include <vector>

#include "model/OrvaDescendantWalk.h"
#include "support/containers/LumoFunction.h"
#include "support/containers/LumoRange.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

OrvaTerm::OrvaTerm(OrvaModel* model, int type) : _model(model), _type(type) {
  LumoMemoryManager::TraceNew(this, "OrvaTerm");
}

OrvaTerm::~OrvaTerm() {
  SetReferencedSymbol(nullptr);
  LumoMemoryManager::TraceDelete(this, "OrvaTerm");
}

OrvaTerm* OrvaTerm::GetNextSibling() const {
  assert((_parent == nullptr) == (_cellInParent == nullptr));
  if (_cellInParent == nullptr) return nullptr;
  const LumoListCell* next = _cellInParent->GetNext();
  return next == nullptr ? nullptr : static_cast<OrvaTerm*>(next->GetItem());
}

void OrvaTerm::_Detach() {
  if (_parent != nullptr) ResetParent();
}

void OrvaTerm::_AttachChild(OrvaTerm* child, LumoListCell* before) {
  assert(child != this && child->_parent == nullptr);
  child->_parent = this;
  child->_cellInParent = _children.InsertItemBefore(before, child);
}

void OrvaTerm::AddChild(OrvaTerm* child) {
  child->_Detach();
  _AttachChild(child, nullptr);
}

void OrvaTerm::AddChildBefore(LumoListCursor* cursor, OrvaTerm* child) {
  child->_Detach();
  assert(cursor->GetCell() != nullptr);
  _AttachChild(child, cursor->GetCell());
}

void OrvaTerm::AddChildren(const LumoContainer* children) {
  for (OrvaTerm* child : LumoItems<OrvaTerm>(*children)) AddChild(child);
}

bool OrvaTerm::RemoveChild(OrvaTerm* child) {
  if (child->_parent != this) return false;
  assert(child->_cellInParent->GetItem() == child);
  _children.RemoveCell(child->_cellInParent);
  child->_parent = nullptr;
  child->_cellInParent = nullptr;
  return true;
}

void OrvaTerm::SetReferencedSymbol(OrvaSymbol* symbol) {
  if (_referencedSymbol != nullptr) _referencedSymbol->RemoveOccurrence(this);
  _referencedSymbol = symbol;
  if (_referencedSymbol != nullptr) _referencedSymbol->AddOccurrence(this);
}

OrvaSymbol* const* OrvaTerm::_FindSymbol(const char* name) const {
  if (LumoRawString::IsEqual(name, REFERENCED_SYMBOL)) return &_referencedSymbol;
  if (LumoRawString::IsEqual(name, DEFINED_SYMBOL)) return &_definedSymbol;
  return nullptr;
}

void OrvaTerm::ResetAttribute(const char* name) {
  if (_FindSymbol(name) != nullptr) {
    SetAttribute(name, static_cast<OrvaSymbol*>(nullptr));
  } else if (LumoRawString::IsEqual(name, FUNCTOR)) {
    _functor = nullptr;
  } else {
    _attributes.ResetValueOfAttribute(name);
  }
}

void OrvaTerm::SetAttribute(const char* name, OrvaSymbol* symbol) {
  if (OrvaSymbol* const* place = _FindSymbol(name)) {
    *const_cast<OrvaSymbol**>(place) = symbol;
  } else {
    _attributes.SetValueOfAttribute(name, static_cast<void*>(symbol), LumoFunction::DoNothing, 0);
  }
}

void OrvaTerm::SetAttribute(const char* name, const char* text) {
  if (LumoRawString::IsEqual(name, FUNCTOR)) {
    _functor = text;
  } else {
    _attributes.SetValueOfAttribute(name, text);
  }
}

OrvaTerm* OrvaTerm::GetFirstInPostOrder() {
  OrvaTerm* term = this;
  while (OrvaTerm* child = term->GetFirstChild()) term = child;
  return term;
}

OrvaTerm* OrvaTerm::GetNextInPostOrder(const OrvaTerm* root) const {
  if (this == root) return nullptr;
  OrvaTerm* sibling = GetNextSibling();
  return sibling == nullptr ? _parent : sibling->GetFirstInPostOrder();
}

void OrvaTerm::Delete(void* term) {
  if (term != nullptr) static_cast<OrvaTerm*>(term)->_Delete(true);
}

// Bottom-up and without recursion: a term is deleted once it has no child left.
void OrvaTerm::_Delete(bool checkConnectionToParent) {
  if (checkConnectionToParent && _parent != nullptr) return;
  assert(_numberOfHolders > 0);
  if (--_numberOfHolders > 0) return;
  OrvaTerm* term = this;
  for (;;) {
    if (OrvaTerm* child = term->GetFirstChild()) {
      term = child;
      continue;
    }
    if (term == this) break;
    OrvaTerm* parent = term->_parent;
    parent->RemoveChild(term);
    delete term;
    term = parent;
  }
  assert(GetFirstChild() == nullptr);
  delete this;
}

// Offered to users of the class; the program itself does not call what follows.

// The child may be the cursor's neighbour: its place is looked for when it has left.
void OrvaTerm::AddChildAfter(LumoListCursor* cursor, OrvaTerm* child) {
  child->_Detach();
  assert(cursor->GetCell() != nullptr);
  _AttachChild(child, cursor->GetCell()->GetNext());
}

void OrvaTerm::RemoveChildren(const LumoContainer* children) {
  if (children != nullptr) {
    for (OrvaTerm* child : LumoItems<OrvaTerm>(*children)) RemoveChild(child);
  } else {
    while (OrvaTerm* child = GetFirstChild()) RemoveChild(child);
  }
}

OrvaSymbol* OrvaTerm::GetAttributeAsSymbol(const char* name, OrvaSymbol* defaultValue) const {
  if (OrvaSymbol* const* place = _FindSymbol(name)) {
    return *place != nullptr ? *place : defaultValue;
  }
  return static_cast<OrvaSymbol*>(_attributes.GetValueOfAttributeAsPointer(name, defaultValue));
}

const char* OrvaTerm::GetAttributeAsString(const char* name, const char* defaultValue) const {
  if (LumoRawString::IsEqual(name, FUNCTOR)) return _functor != nullptr ? _functor : defaultValue;
  return _attributes.GetValueOfAttributeAsString(name, defaultValue);
}

void OrvaTerm::CollectDescendants(OrvaSymbol::Selector selector, const void* argument,
                                  LumoContainer* result) {
  OrvaDescendantWalk walk(selector, argument, result);
  walk.VisitTerm(this);
  walk.ClearFlags();
}

void OrvaTerm::CollectAncestors(OrvaSymbol::Selector selector, const void* argument,
                                LumoContainer* result) {
  OrvaDescendantWalk walk(selector, argument, result);
  for (const OrvaTerm* term = this; term != nullptr; term = term->_parent) {
    if (term->_definedSymbol != nullptr) walk.VisitSymbol(term->_definedSymbol);
  }
  walk.ClearFlags();
}

void OrvaTerm::SetFlagsOfDescendants(int flag) {
  std::vector<OrvaTerm*> waiting = {this};
  while (!waiting.empty()) {
    OrvaTerm* root = waiting.back();
    waiting.pop_back();
    for (const OrvaTerm* term = root->GetFirstInPostOrder(); term != nullptr;
         term = term->GetNextInPostOrder(root)) {
      OrvaSymbol* symbol = term->_referencedSymbol;
      if (symbol == nullptr || symbol->GetFlag() == flag) continue;
      symbol->SetFlag(flag);
      if (symbol->GetDefinition() != nullptr) waiting.push_back(symbol->GetDefinition());
    }
  }
}

void OrvaTerm::SetFlagsOfAncestors(int flag) {
  for (const OrvaTerm* term = this; term != nullptr; term = term->_parent) {
    if (term->_definedSymbol != nullptr) term->_definedSymbol->SetFlagsOfAncestors(flag);
  }
}

void OrvaTerm::DeleteWithoutCheckingConnectionToParent(void* term) {
  if (term != nullptr) static_cast<OrvaTerm*>(term)->_Delete(false);
}
