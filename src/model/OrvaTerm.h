#pragma once

#include <cassert>

#include "model/OrvaSymbol.h"
#include "support/containers/LumoList.h"
#include "support/values/LumoAttributeList.h"

// A node of a formula or of an expression. A term has at most one parent, which agrees with the
// parent's list of children after every operation. The tree owns its terms; a root belongs to the
// symbol that it defines, or to the event that holds it as an expression.
//
// The attributes that are read in every walk, the operator's name and the two symbols, live in
// fields of their own; the named access finds them there.
class OrvaTerm {
 public:
  // The operator's name, a static string that is not copied.
  static constexpr const char* FUNCTOR = "__functor__";
  static constexpr const char* VALUE = "__value__";
  // The symbol that a leaf stands for, and the one that a root defines. Not owned.
  static constexpr const char* REFERENCED_SYMBOL = "__referenced_symbol__";
  static constexpr const char* DEFINED_SYMBOL = "__defined_symbol__";

  // The meaning of the type is the derived class's. The model is not owned.
  OrvaTerm(OrvaModel* model, int type);
  // Leaves the occurrences of the referenced symbol. Children are not deleted: see Delete.
  virtual ~OrvaTerm();
  OrvaTerm(const OrvaTerm&) = delete;
  OrvaTerm& operator=(const OrvaTerm&) = delete;

  OrvaModel* GetModel() const { return _model; }
  int GetType() const { return _type; }
  void SetType(int type) { _type = type; }

  OrvaTerm* GetParent() const { return _parent; }
  // Leaves the parent, which must exist.
  void ResetParent() {
    assert(_parent != nullptr);
    _parent->RemoveChild(this);
  }

  int GetNumberOfChildren() const { return _children.GetNumberOfItems(); }
  // The i-th child, from 1; null outside.
  OrvaTerm* GetChild(int i) const { return static_cast<OrvaTerm*>(_children.GetNthItem(i)); }
  OrvaTerm* GetFirstChild() const { return static_cast<OrvaTerm*>(_children.GetFirstItem()); }
  OrvaTerm* GetNextSibling() const;
  const LumoList& GetChildren() const { return _children; }
  // A new cursor, owned by the caller.
  LumoListCursor* NewCursorOnChildren() { return new LumoListCursor(&_children); }

  // Make a term a child: last, or right before the cursor's position in this term's children. A
  // child of another term, or of this one, is moved; it must not be the child under the cursor.
  void AddChild(OrvaTerm* child);
  void AddChildBefore(LumoListCursor* cursor, OrvaTerm* child);
  // In the container's order.
  void AddChildren(const LumoContainer* children);
  // Detaches a child without deleting it; false when it is none.
  bool RemoveChild(OrvaTerm* child);

  OrvaSymbol* GetReferencedSymbol() const { return _referencedSymbol; }
  // Keeps the occurrences of the old and of the new symbol, either of which may be null.
  void SetReferencedSymbol(OrvaSymbol* symbol);
  OrvaSymbol* GetDefinedSymbol() const { return _definedSymbol; }
  void SetDefinedSymbol(OrvaSymbol* symbol) { _definedSymbol = symbol; }

  // Attributes by name. Symbols are stored without ownership; through SetAttribute, a referenced
  // symbol is stored without touching its occurrences.
  void ResetAttribute(const char* name);
  void SetAttribute(const char* name, OrvaSymbol* symbol);
  void SetAttribute(const char* name, const char* text);
  void SetAttribute(const char* name, int value) { _attributes.SetValueOfAttribute(name, value); }
  void SetAttribute(const char* name, bool value) { _attributes.SetValueOfAttribute(name, value); }
  int GetAttributeAsInt(const char* name, int defaultValue) const {
    return _attributes.GetValueOfAttributeAsInt(name, defaultValue);
  }
  bool GetAttributeAsBool(const char* name, bool defaultValue) const {
    return _attributes.GetValueOfAttributeAsBool(name, defaultValue);
  }

  // The terms of this tree, each after its children: start with the first, step with the next
  // until null. The tree must not change meanwhile.
  OrvaTerm* GetFirstInPostOrder();
  OrvaTerm* GetNextInPostOrder(const OrvaTerm* root) const;

  // Deletes a term with its subtree; does nothing at all when the term has a parent. A root that
  // several hold is deleted for the last of them.
  static void Delete(void* term);
  // One more holds the root, and is going to delete it.
  void AddHolder() { ++_numberOfHolders; }

  // Offered to users of the class; the program itself does not call what follows.

  // Moves the term to the end of the new parent's children.
  void SetParent(OrvaTerm* parent) { parent->AddChild(this); }
  void CollectChildren(LumoContainer* result) const { _children.CollectItems(result); }
  // Makes a term a child right after the cursor's position, under the terms of AddChildBefore.
  void AddChildAfter(LumoListCursor* cursor, OrvaTerm* child);
  // Detaches the children listed, or all for null.
  void RemoveChildren(const LumoContainer* children);

  void SetAttribute(const char* name, double value) {
    _attributes.SetValueOfAttribute(name, value);
  }
  OrvaSymbol* GetAttributeAsSymbol(const char* name, OrvaSymbol* defaultValue) const;
  const char* GetAttributeAsString(const char* name, const char* defaultValue) const;
  double GetAttributeAsDouble(const char* name, double defaultValue) const {
    return _attributes.GetValueOfAttributeAsDouble(name, defaultValue);
  }

  // Walks as for symbols, from this term. Terms themselves are never collected, only symbols.
  void CollectDescendants(OrvaSymbol::Selector selector, const void* argument,
                          LumoContainer* result);
  void CollectAncestors(OrvaSymbol::Selector selector, const void* argument, LumoContainer* result);
  void SetFlagsOfDescendants(int flag);
  void SetFlagsOfAncestors(int flag);
  // The same whether or not there is a parent, from whose children the term is not removed: the
  // caller has done that, or is discarding the parent as well.
  static void DeleteWithoutCheckingConnectionToParent(void* term);

 private:
  friend class OrvaSymbol;

  OrvaSymbol* const* _FindSymbol(const char* name) const;
  void _Detach();
  void _AttachChild(OrvaTerm* child, LumoListCell* before);
  void _Delete(bool checkConnectionToParent);

  OrvaModel* _model;
  int _type;
  int _numberOfHolders = 1;
  OrvaTerm* _parent = nullptr;
  LumoListCell* _cellInParent = nullptr;
  LumoList _children;
  OrvaSymbol* _referencedSymbol = nullptr;
  OrvaSymbol* _definedSymbol = nullptr;
  const char* _functor = nullptr;
  // The place in the occurrences of a symbol, so that leaving them takes constant time.
  OrvaSymbol* _symbolOfOccurrence = nullptr;
  LumoListCell* _cellOfOccurrence = nullptr;
  LumoLateAttributeList _attributes;
};
