#pragma once

#include "support/containers/LumoContainer.h"

// A cell of a list: an item between its neighbours.
class LumoListCell {
 public:
  void* GetItem() const { return _item; }
  LumoListCell* GetPrevious() const { return _previous; }
  LumoListCell* GetNext() const { return _next; }

 private:
  friend class LumoList;

  explicit LumoListCell(void* item) : _item(item) {}

  void* _item;
  LumoListCell* _previous = nullptr;
  LumoListCell* _next = nullptr;
};

// A doubly linked list of item pointers.
class LumoList : public LumoContainer {
 public:
  LumoList();
  ~LumoList() override;

  using LumoContainer::DeleteItems;
  using LumoContainer::LookForItem;
  using LumoContainer::NewCursor;

  int GetNumberOfItems() const override { return _numberOfItems; }
  void* GetFirstItem() const override { return _first == nullptr ? nullptr : _first->_item; }
  void* GetLastItem() const override { return _last == nullptr ? nullptr : _last->_item; }
  // From the first item for n ≥ 1, from the last for n ≤ -1 (-1 is the last); else null.
  void* GetNthItem(int n) const override;
  void* LookForItem(const LumoComparator* comparator, const void* key) const override;
  void InsertItem(void* item) override { InsertItemLast(item); }
  // Removes the first cell that holds the very pointer.
  void* RemoveItem(const void* item) override;
  void* RemoveNthItem(int n) override { return RemoveCell(GetNthCell(n)); }
  void* RemoveFirstItem() override { return RemoveCell(_first); }
  void* RemoveLastItem() override { return RemoveCell(_last); }
  void DeleteItems(Release release) override;
  LumoCursor* NewCursor() override;

  // The cells, for owners that keep an item's place and want it back in constant time.
  LumoListCell* GetFirstCell() const { return _first; }
  LumoListCell* GetLastCell() const { return _last; }
  LumoListCell* GetNthCell(int n) const;
  LumoListCell* LookForCell(const void* item) const;
  // Frees the cell and returns its item. Null is ignored.
  void* RemoveCell(LumoListCell* cell);

  void InsertItemLast(void* item) { InsertItemBefore(static_cast<LumoListCell*>(nullptr), item); }
  // Inserts before a cell, or at the end before no cell. The new cell is returned.
  LumoListCell* InsertItemBefore(LumoListCell* cell, void* item);

  // Offered to users of the class; the program itself does not call what follows.

  // A list of the `count` item pointers that follow, in order.
  LumoList(int count, ...);
  void InsertItemFirst(void* item) { InsertItemBefore(_first, item); }
  // After no cell means at the start.
  LumoListCell* InsertItemAfter(LumoListCell* cell, void* item);
  // Makes the item the n-th; beyond the end, the last.
  void InsertItemInPosition(void* item, int n);
  // Insert beside the first item that matches the key; without one, do nothing.
  void InsertItemBefore(Match match, const void* key, void* item);
  void InsertItemAfter(Match match, const void* key, void* item);

  void Push(void* item) { InsertItemFirst(item); }
  void* Pop() { return RemoveFirstItem(); }
  void* GetTop() const { return GetFirstItem(); }
  void EnQueue(void* item) { InsertItemLast(item); }
  void* DeQueue() { return RemoveFirstItem(); }
  void* GetHead() const { return GetFirstItem(); }

  // Sort; equal items keep their order. The last form orders items by keys taken from them.
  void QuickSort(Order order);
  void QuickSort(const LumoComparator* comparator);
  void QuickSort(void* (*key)(void* item), Order orderOfKeys);
  void BubbleSort(Order order) { QuickSort(order); }
  void Reverse();
  // Inserts the other list's items at the end; the other list is left unchanged.
  void Append(const LumoList* other) { InsertItems(other); }
  // Removes the items at positions from .. to; they are returned in a new list.
  LumoList* ExtractRange(int from, int to);

  // New lists, owned by the caller: set operations by identity, in the order of this list, then
  // of the other.
  LumoList* BuildUnion(const LumoList* other) const;
  LumoList* BuildIntersection(const LumoList* other) const;
  LumoList* BuildDifference(const LumoList* other) const;
  // The same in linear time. `key` gives each item's own mark word; items whose word equals
  // `mark` count as marked, so no item's word may equal it beforehand. All words get their
  // former values back.
  using MarkOfItem = int* (*)(void* item);
  LumoList* BuildLinearUnion(const LumoList* other, MarkOfItem key, int mark) const;
  LumoList* BuildLinearIntersection(const LumoList* other, MarkOfItem key, int mark) const;
  LumoList* BuildLinearDifference(const LumoList* other, MarkOfItem key, int mark) const;

  LumoList* Copy() const;
  LumoList* CopyWithItems(CopyItem copy) const;

 private:
  template <class IsBefore>
  void _Sort(IsBefore isBefore);

  int _numberOfItems = 0;
  LumoListCell* _first = nullptr;
  LumoListCell* _last = nullptr;
};

class LumoListCursor : public LumoCursor {
 public:
  explicit LumoListCursor(LumoList* list);
  ~LumoListCursor() override;

  bool IsBeforeFirstItem() const override { return _isBeforeFirst; }
  bool IsAfterLastItem() const override { return _isAfterLast; }
  bool IsOnFirstItem() const override;
  bool IsOnLastItem() const override;
  void ResetOnFirstItem() override { ResetOnCell(_list->GetFirstCell()); }
  void ResetOnLastItem() override { ResetOnCell(_list->GetLastCell()); }
  void ResetInPosition(int n) override { ResetOnCell(_list->GetNthCell(n)); }
  void ResetOnItem(const void* item) override { ResetOnCell(_list->LookForCell(item)); }
  void Increment() override;
  void Decrement() override;
  void* GetItem() const override { return _cell == nullptr ? nullptr : _cell->GetItem(); }
  void* RemoveItemAndIncrement() override;
  void* RemoveItemAndDecrement() override;

  // The current cell, null when the cursor stands on no item.
  LumoListCell* GetCell() const { return _cell; }
  void ResetOnCell(LumoListCell* cell);

 private:
  LumoList* _list;
  LumoListCell* _cell = nullptr;
  bool _isBeforeFirst = true;
  bool _isAfterLast = true;
};
