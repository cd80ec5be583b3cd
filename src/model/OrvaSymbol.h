#pragma once

#include "support/containers/LumoList.h"
#include "support/text/LumoRawString.h"
#include "support/values/LumoAttributeAccess.h"

class OrvaModel;
class OrvaTerm;

// A named thing of a model: an event or a parameter. A symbol may be defined by one tree of terms,
// which it owns, and referenced from any number of terms, its occurrences. Symbols and terms form
// a graph: symbol → definition → child terms → referenced symbols → their definitions ...
//
// The flag is 0 at rest. Every walk below uses it as a visit mark and leaves it at 0 again, so two
// walks over one graph must not be interleaved.
class OrvaSymbol : public LumoAttributeAccess<OrvaSymbol> {
 public:
  // Picks a symbol by returning 0.
  using Selector = LumoContainer::Match;

  // Copies the name. The model is not owned.
  OrvaSymbol(OrvaModel* model, const char* name);
  // Deletes the definition and the attributes, not the terms that occur.
  ~OrvaSymbol();
  OrvaSymbol(const OrvaSymbol&) = delete;
  OrvaSymbol& operator=(const OrvaSymbol&) = delete;

  OrvaModel* GetModel() const { return _model; }
  const char* GetName() const { return _name; }
  // Inside a model rename through OrvaModel::RenameEvent, which keeps the dictionary in order.
  void SetName(const char* name);

  OrvaTerm* GetDefinition() const { return _definition; }
  // Deletes the old tree and takes ownership of the new one, which may be null.
  void SetDefinition(OrvaTerm* definition);

  int GetNumberOfOccurrences() const { return _occurrences.GetNumberOfItems(); }
  void AddOccurrence(OrvaTerm* term);
  void RemoveOccurrence(OrvaTerm* term);

  int GetFlag() const { return _flag; }
  void SetFlag(int flag) { _flag = flag; }

  // Three-way byte-wise comparison of names, for the ordered containers.
  int CompareName(const char* name) const { return LumoRawString::Compare(_name, name); }
  int CompareNames(const OrvaSymbol* other) const { return CompareName(other->_name); }
  static int CompareName(const void* symbol, const void* name);
  static int CompareNames(const void* a, const void* b);

  // Selectors; the argument is not used.
  static int CompareAsAnySymbol(const void* symbol, const void* argument);
  // Nothing references the symbol.
  static int CompareAsRootSymbol(const void* symbol, const void* argument);
  // The symbol has no definition (has one).
  static int CompareAsLeafSymbol(const void* symbol, const void* argument);
  static int CompareAsInternalSymbol(const void* symbol, const void* argument);

  // Insert into the result the selected symbols at or below this one, each once and after all the
  // symbols below it.
  void CollectDescendants(Selector selector, const void* argument, LumoContainer* result);

  // Offered to users of the class; the program itself does not call what follows.

  static void Delete(void* symbol);
  const LumoList& GetOccurrences() const { return _occurrences; }
  // A new cursor, owned by the caller.
  LumoListCursor* NewCursorOnOccurrences() { return new LumoListCursor(&_occurrences); }
  // Insert into the result this symbol and, for each formula in which it occurs, the symbol
  // defined by it together with everything below that; the walk climbs no further. This pairing
  // is the defined behaviour.
  void CollectAncestors(Selector selector, const void* argument, LumoContainer* result);
  // Set the flag of this symbol and of all below (above) it, stopping where it is set already.
  void SetFlagsOfDescendants(int flag);
  void SetFlagsOfAncestors(int flag);

 private:
  friend LumoAttributeAccess<OrvaSymbol>;

  OrvaModel* _model;
  char* _name;
  OrvaTerm* _definition = nullptr;
  LumoList _occurrences;
  LumoLateAttributeList _attributes;
  int _flag = 0;  // the last field: what derives goes on behind it without a gap
};
