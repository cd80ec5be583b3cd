#pragma once

#include <cassert>
#include <iterator>
#include <memory>

#include "support/containers/LumoAVLTree.h"
#include "support/containers/LumoContainer.h"
#include "support/containers/LumoList.h"

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

// The same over the cells of a list and the nodes of a tree, which are at hand without a cursor.
template <class Item, class Place>
class LumoRangeOfPlaces {
 public:
  explicit LumoRangeOfPlaces(const Place* first) : _first(first) {}

  class Iterator {
   public:
    explicit Iterator(const Place* place) : _place(place) {}
    Item* operator*() const { return static_cast<Item*>(_place->GetItem()); }
    Iterator& operator++() {
      _place = _place->GetNext();
      return *this;
    }
    bool operator==(std::default_sentinel_t) const { return _place == nullptr; }

   private:
    const Place* _place;
  };

  Iterator begin() const { return Iterator(_first); }
  std::default_sentinel_t end() const { return {}; }

 private:
  const Place* _first;
};

template <class Item>
LumoRangeOfPlaces<Item, LumoListCell> LumoItems(const LumoList& list) {
  return LumoRangeOfPlaces<Item, LumoListCell>(list.GetFirstCell());
}

template <class Item>
LumoRangeOfPlaces<Item, LumoAVLTreeNode> LumoItems(const LumoAVLTree& tree) {
  return LumoRangeOfPlaces<Item, LumoAVLTreeNode>(tree.GetFirstNode());
}
