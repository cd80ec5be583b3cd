#pragma once

#include "support/containers/LumoComparator.h"
#include "support/containers/LumoCursor.h"

// A collection of item pointers. A container never owns its items, except inside an operation
// that takes a release function; null is never an item. Positions count from 1.
//
// A matching function takes (item, key) and returns 0 for a match; an ordering function takes two
// items and returns a negative number, 0 or a positive one. Every operation that takes a matching
// function has a twin that takes a comparator object. Nothing here reports an error: positions
// outside the container give null or do nothing.
class LumoContainer {
 public:
  using Match = LumoFunctionComparator::Match;
  using Order = int (*)(const void* item, const void* other);
  using Predicate = bool (*)(const void* item);
  using Release = void (*)(void* item);
  using CopyItem = void* (*)(const void* item);

  LumoContainer() = default;
  virtual ~LumoContainer() = default;
  LumoContainer(const LumoContainer&) = delete;
  LumoContainer& operator=(const LumoContainer&) = delete;

  virtual int GetNumberOfItems() const = 0;
  virtual void* GetFirstItem() const = 0;
  virtual void* GetLastItem() const = 0;
  virtual void* GetNthItem(int n) const = 0;
  // Whether this very pointer is in the container.
  virtual bool DoesContainItem(const void* item) const;
  // The first match, null when there is none.
  virtual void* LookForItem(Match match, const void* key) const;
  virtual void* LookForItem(const LumoComparator* comparator, const void* key) const = 0;
  virtual void InsertItem(void* item) = 0;
  // Remove one item, which is returned; null when there was none.
  virtual void* RemoveItem(const void* item) = 0;
  virtual void* RemoveNthItem(int n) = 0;
  virtual void* RemoveFirstItem() = 0;
  virtual void* RemoveLastItem() = 0;
  // Remove and release all items, or those that match.
  virtual void DeleteItems(Release release) = 0;
  virtual void DeleteItems(Match match, const void* key, Release release);
  virtual void DeleteItems(const LumoComparator* comparator, const void* key, Release release);
  // A new cursor, owned by the caller.
  virtual LumoCursor* NewCursor() = 0;
  // A cursor that promises to change nothing.
  LumoCursor* NewCursor() const { return const_cast<LumoContainer*>(this)->NewCursor(); }

  bool IsEmpty() const { return GetNumberOfItems() == 0; }
  // The position of an item, or of the first match; 0 when there is none.
  int GetItemPosition(const void* item) const;
  int SearchItem(Match match, const void* key) const;
  int SearchItem(const LumoComparator* comparator, const void* key) const;

  // Insert all items, or those that match, into another container.
  void CollectItems(LumoContainer* target) const;
  void CollectItems(Match match, const void* key, LumoContainer* target) const;
  void CollectItems(const LumoComparator* comparator, const void* key, LumoContainer* target) const;

  void InsertItems(const LumoContainer* other) { other->CollectItems(this); }
  void RemoveItems();
  // Removes and releases each item of the other container (one occurrence for one).
  void DeleteItems(const LumoContainer* other, Release release);

  // Offered to users of the class; the program itself does not call what follows.

  int CountItems(Predicate predicate) const;
  int CountItems(Match match, const void* key) const;
  int CountItems(const LumoComparator* comparator, const void* key) const;
  // Inserts the items chosen by the predicate into another container.
  void CollectItems(Predicate predicate, LumoContainer* target) const;
  // Call a function on each item. The second form inserts what it returns, if not null.
  void Apply(void (*function)(void* item, void* argument), void* argument);
  void Apply(void* (*function)(void* item, void* argument), void* argument, LumoContainer* target);
  // Remove the items that match.
  void RemoveItems(Match match, const void* key);
  void RemoveItems(const LumoComparator* comparator, const void* key);
  // Removes each item of the other container.
  void RemoveItems(const LumoContainer* other);

  // Set operations in place, by identity of the items.
  void Add(const LumoContainer* other);
  void Subtract(const LumoContainer* other);
  void Select(const LumoContainer* other);
  int CountItemsOfUnion(const LumoContainer* other) const;
  int CountItemsOfIntersection(const LumoContainer* other) const;
  int CountItemsOfDifference(const LumoContainer* other) const;
  // Whether every item of the other container is in this one; and the other way round too.
  bool DoesContainItems(const LumoContainer* other) const;
  bool HasSameItems(const LumoContainer* other) const;

  // Releases every item, then the container, which must have been made with `new`.
  void DeleteWithItems(Release release);
};
