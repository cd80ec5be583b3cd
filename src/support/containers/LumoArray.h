#pragma once

#include "support/containers/LumoContainer.h"

// A sparse array of item pointers: slots may be null. Slot indices count from 0, positions of
// items, as in every container, from 1 over the slots that are not null.
//
// Removing by index keeps a hole instead of shifting, in constant time; holes go when asked or
// before sorting.
class LumoArray : public LumoContainer {
 public:
  explicit LumoArray(int size);
  ~LumoArray() override;

  using LumoContainer::DeleteItems;
  using LumoContainer::LookForItem;
  using LumoContainer::NewCursor;
  using LumoContainer::RemoveItems;

  int GetNumberOfItems() const override { return _numberOfItems; }
  void* GetFirstItem() const override { return GetNthItem(1); }
  void* GetLastItem() const override;
  // The n-th slot that is not null, for n ≥ 1; n = 0 gives slot 0 as it is.
  void* GetNthItem(int n) const override;
  void* LookForItem(const LumoComparator* comparator, const void* key) const override;
  void InsertItem(void* item) override { InsertItemLast(item); }
  // Empties the first slot that holds the very pointer.
  void* RemoveItem(const void* item) override;
  void* RemoveNthItem(int n) override;
  void* RemoveFirstItem() override { return RemoveNthItem(1); }
  void* RemoveLastItem() override;
  void DeleteItems(Release release) override;
  LumoCursor* NewCursor() override;

  // The capacity.
  int GetSize() const { return _size; }
  // A slot; null outside the capacity.
  void* GetItem(int index) const { return index >= 0 && index < _size ? _slots[index] : nullptr; }
  // Fills (or, with null, empties) a slot, growing the block to reach it. A negative index is
  // ignored.
  void SetItem(int index, void* item);

  // Empties one slot, without shifting. The item is returned.
  void* RemoveItem(int index);
  // Empties the slots [from, from + count), as far as there are, releasing their items.
  void DeleteItems(int from, int count, Release release);

  // Inserts before a slot, the following ones shifting one to the right. Indices outside
  // 0 .. number of items are ignored.
  void InsertItemAtIndex(int index, void* item);
  void InsertItemLast(void* item) { InsertItemAtIndex(_numberOfItems, item); }

  // Slot indices, -1 when there is none.
  int GetIndexOfItem(const void* item) const;
  int GetIndexOfItem(Match match, const void* key) const;
  int GetIndexOfItem(const LumoComparator* comparator, const void* key) const;
  int GetIndexOfFirstItem() const { return GetIndexOfNthItem(1); }
  int GetIndexOfLastItem() const;
  int GetIndexOfNthItem(int n) const;

  // Move the slots [start, start + length) by `distance`, overwriting what they move onto and
  // leaving null behind. Runs that would leave the capacity are ignored.
  void ShiftBlockRight(int start, int length, int distance);

  // Grows, by whole increments, until slot `n` exists.
  void Expand(int n);

  // Offered to users of the class; the program itself does not call what follows.

  // A capacity and a growth increment of 1024.
  LumoArray();
  void InsertItemFirst(void* item) { InsertItemAtIndex(0, item); }
  // As a stack, over slots without holes. A null item is ignored.
  void PushItem(void* item);
  void* PopItem();
  // Removes the slot itself: the following ones shift one to the left. The item is returned.
  void* RemoveItemAtIndex(int index);
  // As DeleteItems, releasing nothing.
  void RemoveItems(int from, int count);
  void SwapItems(int i, int j);
  // As ShiftBlockRight, the other way.
  void ShiftBlockLeft(int start, int length, int distance);
  // Move the items of a run, or of the whole array, together to its left (right) end, in order.
  void CompactBlockLeft(int start, int length);
  void CompactBlockRight(int start, int length);
  void CompactLeft() { CompactBlockLeft(0, _size); }
  void CompactRight() { CompactBlockRight(0, _size); }
  // Compact to the left, then sort; equal items keep their order.
  void Sort(Order order) { SortBlock(0, _size, order); }
  void SortBlock(int start, int length, Order order);
  // Shrinks to the smallest multiple of the increment (at least one) that keeps slot `n`; to
  // nothing for a negative `n`. Items beyond are removed.
  void Shrink(int n);
  // New arrays, owned by the caller: the same items, or copies of them.
  LumoArray* Copy() const;
  LumoArray* CopyWithItems(CopyItem copy) const;

 private:
  void _Resize(int size);
  void* _Exchange(int index, void* item);
  // Clips a run of slots to the capacity.
  void _Clip(int& start, int& length) const;

  void** _slots;  // owned
  int _size;
  int _increment;
  int _numberOfItems = 0;
};

// Moves over the slots of an array, skipping the null ones.
class LumoArrayCursor : public LumoCursor {
 public:
  explicit LumoArrayCursor(LumoArray* array);
  ~LumoArrayCursor() override;

  bool IsBeforeFirstItem() const override { return _isBeforeFirst; }
  bool IsAfterLastItem() const override { return _isAfterLast; }
  bool IsOnFirstItem() const override;
  bool IsOnLastItem() const override;
  void ResetOnFirstItem() override;
  void ResetOnLastItem() override;
  void ResetInPosition(int n) override;
  void ResetOnItem(const void* item) override;
  void Increment() override;
  void Decrement() override;
  void* GetItem() const override;
  void* RemoveItemAndIncrement() override;
  void* RemoveItemAndDecrement() override;

  // Offered to users of the class; the program itself does not call what follows.

  // Stands where the other cursor stands.
  void ResetOnCursor(const LumoArrayCursor* other);
  // Puts another item into the current slot.
  void SubstituteItemForItem(void* item);
  // Swaps the two current items. Both cursors must stand on one.
  void ExchangeItems(LumoArrayCursor* other);

 private:
  bool _IsOnItem() const { return !_isBeforeFirst && !_isAfterLast; }
  void _ResetOnIndex(int index);
  // Moves to the nearest item from `index` on in the given direction.
  void _MoveFrom(int index, int step);

  LumoArray* _array;
  int _index = -1;
  bool _isBeforeFirst = true;
  bool _isAfterLast = true;
};
