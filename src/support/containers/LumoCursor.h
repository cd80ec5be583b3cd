#pragma once

// Walks over the items of one container.
//
// A new cursor stands on no item, before the first and after the last at once; moving it changes
// nothing until one of the Reset operations has placed it. The usual loop:
//
//   for (cursor->ResetOnFirstItem(); !cursor->IsAfterLastItem(); cursor->Increment()) {
//     Use(cursor->GetItem());
//   }
//
// A cursor belongs to whoever asked for it and must not outlive its container. Other changes of
// the container while a cursor stands on the changed item leave the cursor's position undefined;
// removing the current item goes through the cursor.
class LumoCursor {
 public:
  virtual ~LumoCursor() = default;

  virtual bool IsBeforeFirstItem() const = 0;
  virtual bool IsAfterLastItem() const = 0;
  virtual bool IsOnFirstItem() const = 0;
  virtual bool IsOnLastItem() const = 0;

  // Place the cursor on an item: the first, the last, the n-th (from 1), the given one. Without
  // such an item the cursor stands on none, with both flags set.
  virtual void ResetOnFirstItem() = 0;
  virtual void ResetOnLastItem() = 0;
  virtual void ResetInPosition(int n) = 0;
  virtual void ResetOnItem(const void* item) = 0;

  // One step; beyond the last (first) item the cursor stands after (before) all of them.
  virtual void Increment() = 0;
  virtual void Decrement() = 0;

  // The current item, null when the cursor stands on none.
  virtual void* GetItem() const = 0;

  // Remove the current item from the container and stand on the next (previous) one. The removed
  // item is returned, null when there was none.
  virtual void* RemoveItemAndIncrement() = 0;
  virtual void* RemoveItemAndDecrement() = 0;
};
