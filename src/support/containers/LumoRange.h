#pragma once

#include <cassert>
#include <iterator>
#include <memory>

#include "support/containers/LumoContainer.h"

// The items of a container, typed, for a range-based loop:
//
//   for (OrvaEvent* event : LumoItems<OrvaEvent>(list)) ...
//
// The loop may change the items but not the container.
template <class Item>
class LumoRange {
 public:
  // Takes ownership of the cursor.
  explicit LumoRange(LumoCursor* cursor) : _cursor(cursor) {}

  class Iterator {
   public:
    explicit Iterator(LumoCursor* cursor) : _cursor(cursor) {}
    Item* operator*() const {
      assert(_cursor->GetItem() != nullptr);
      return static_cast<Item*>(_cursor->GetItem());
    }
    Iterator& operator++() {
      _cursor->Increment();
      return *this;
    }
    bool operator==(std::default_sentinel_t) const { return _cursor->IsAfterLastItem(); }

   private:
    LumoCursor* _cursor;
  };

  Iterator begin() const {
    _cursor->ResetOnFirstItem();
    return Iterator(_cursor.get());
  }
  std::default_sentinel_t end() const { return {}; }

 private:
  std::unique_ptr<LumoCursor> _cursor;
};

template <class Item>
LumoRange<Item> LumoItems(const LumoContainer& container) {
  return LumoRange<Item>(container.NewCursor());
}
