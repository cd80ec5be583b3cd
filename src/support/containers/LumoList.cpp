#include "support/containers/LumoList.h"

#include <algorithm>
#include <cassert>
#include <cstdarg>
#include <utility>
#include <vector>

#include "support/containers/LumoRange.h"
#include "support/memory/LumoMemoryManager.h"

namespace {

// Marks items through their own mark words and gives the words their old values back at the end.
class Marking {
 public:
  Marking(LumoList::MarkOfItem key, int mark) : _key(key), _mark(mark) {}
  ~Marking() {
    for (const auto& [word, value] : _old) *word = value;
  }
  Marking(const Marking&) = delete;
  Marking& operator=(const Marking&) = delete;

  bool IsMarked(void* item) const { return *_key(item) == _mark; }
  // Whether the item was unmarked until now.
  bool Mark(void* item) {
    if (IsMarked(item)) return false;
    int* word = _key(item);
    assert(word != nullptr);
    _old.emplace_back(word, std::exchange(*word, _mark));
    return true;
  }
  void MarkAll(const LumoList* list) {
    for (void* item : LumoItems<void>(*list)) Mark(item);
  }

 private:
  LumoList::MarkOfItem _key;
  int _mark;
  std::vector<std::pair<int*, int>> _old;
};

}  // namespace

LumoList::LumoList() { LumoMemoryManager::TraceNew(this, "LumoList"); }

LumoList::~LumoList() {
  // RemoveCell moves _first on, which the analyser misses.
  while (_first != nullptr) RemoveCell(_first);  // NOLINT(clang-analyzer-cplusplus.NewDelete)
  LumoMemoryManager::TraceDelete(this, "LumoList");
}

LumoListCell* LumoList::GetNthCell(int n) const {
  if (n == 0 || n > _numberOfItems || n < -_numberOfItems) return nullptr;
  LumoListCell* cell = n > 0 ? _first : _last;
  for (int i = 1; i < n; ++i) cell = cell->_next;
  for (int i = -1; i > n; --i) cell = cell->_previous;
  return cell;
}

LumoListCell* LumoList::LookForCell(const void* item) const {
  LumoListCell* cell = _first;
  while (cell != nullptr && cell->_item != item) cell = cell->_next;
  return cell;
}

void* LumoList::GetNthItem(int n) const {
  const LumoListCell* cell = GetNthCell(n);
  return cell == nullptr ? nullptr : cell->_item;
}

void* LumoList::LookForItem(const LumoComparator* comparator, const void* key) const {
  for (const LumoListCell* cell = _first; cell != nullptr; cell = cell->_next) {
    if (comparator->Compare(cell->_item, key) == 0) return cell->_item;
  }
  return nullptr;
}

void* LumoList::RemoveItem(const void* item) { return RemoveCell(LookForCell(item)); }

void LumoList::DeleteItems(Release release) {
  // As in the destructor: NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDelete)
  while (_first != nullptr) release(RemoveCell(_first));
}

LumoCursor* LumoList::NewCursor() { return new LumoListCursor(this); }

void* LumoList::RemoveCell(LumoListCell* cell) {
  if (cell == nullptr) return nullptr;
  assert(_numberOfItems > 0);
  assert((cell->_previous == nullptr) == (cell == _first));
  assert((cell->_next == nullptr) == (cell == _last));
  (cell->_previous == nullptr ? _first : cell->_previous->_next) = cell->_next;
  (cell->_next == nullptr ? _last : cell->_next->_previous) = cell->_previous;
  --_numberOfItems;
  void* item = cell->_item;
  delete cell;
  return item;
}

LumoListCell* LumoList::InsertItemBefore(LumoListCell* cell, void* item) {
  assert(item != nullptr);
  assert(cell == nullptr || (cell->_previous == nullptr) == (cell == _first));
  auto* added = new LumoListCell(item);
  added->_next = cell;
  added->_previous = cell == nullptr ? _last : cell->_previous;
  (added->_previous == nullptr ? _first : added->_previous->_next) = added;
  (added->_next == nullptr ? _last : added->_next->_previous) = added;
  ++_numberOfItems;
  assert(_first->_previous == nullptr && _last->_next == nullptr);
  return added;
}

// Offered to users of the class; the program itself does not call what follows.

LumoList::LumoList(int count, ...) : LumoList() {
  std::va_list items;
  va_start(items, count);
  for (int i = 0; i < count; ++i) {
    // The analyser misses va_start on some targets.
    void* item = va_arg(items, void*);  // NOLINT(clang-analyzer-valist.Uninitialized)
    InsertItemLast(item);
  }
  va_end(items);
}

LumoListCell* LumoList::InsertItemAfter(LumoListCell* cell, void* item) {
  return InsertItemBefore(cell == nullptr ? _first : cell->_next, item);
}

void LumoList::InsertItemInPosition(void* item, int n) {
  InsertItemBefore(GetNthCell(std::max(n, 1)), item);
}

void LumoList::InsertItemBefore(Match match, const void* key, void* item) {
  if (LumoListCell* cell = GetNthCell(SearchItem(match, key))) InsertItemBefore(cell, item);
}

void LumoList::InsertItemAfter(Match match, const void* key, void* item) {
  if (LumoListCell* cell = GetNthCell(SearchItem(match, key))) InsertItemAfter(cell, item);
}

template <class IsBefore>
void LumoList::_Sort(IsBefore isBefore) {
  std::vector<void*> items;
  items.reserve(static_cast<std::size_t>(_numberOfItems));
  for (const LumoListCell* cell = _first; cell != nullptr; cell = cell->_next) {
    items.push_back(cell->_item);
  }
  std::stable_sort(items.begin(), items.end(), isBefore);
  LumoListCell* cell = _first;
  for (void* item : items) {
    cell->_item = item;
    cell = cell->_next;
  }
}

void LumoList::QuickSort(Order order) {
  _Sort([order](void* a, void* b) { return order(a, b) < 0; });
}

void LumoList::QuickSort(const LumoComparator* comparator) {
  _Sort([comparator](void* a, void* b) { return comparator->Compare(a, b) < 0; });
}

void LumoList::QuickSort(void* (*key)(void*), Order orderOfKeys) {
  _Sort([=](void* a, void* b) { return orderOfKeys(key(a), key(b)) < 0; });
}

void LumoList::Reverse() {
  for (LumoListCell* cell = _first; cell != nullptr; cell = cell->_previous) {
    std::swap(cell->_previous, cell->_next);
  }
  std::swap(_first, _last);
}

LumoList* LumoList::ExtractRange(int from, int to) {
  auto* range = new LumoList;
  from = std::max(from, 1);
  LumoListCell* cell = GetNthCell(from);
  for (int i = from; i <= to && cell != nullptr; ++i) {
    LumoListCell* next = cell->_next;
    range->InsertItemLast(RemoveCell(cell));
    cell = next;
  }
  return range;
}

LumoList* LumoList::BuildUnion(const LumoList* other) const {
  LumoList* result = Copy();
  result->Add(other);
  return result;
}

LumoList* LumoList::BuildIntersection(const LumoList* other) const {
  LumoList* result = Copy();
  result->Select(other);
  return result;
}

LumoList* LumoList::BuildDifference(const LumoList* other) const {
  LumoList* result = Copy();
  result->Subtract(other);
  return result;
}

LumoList* LumoList::BuildLinearUnion(const LumoList* other, MarkOfItem key, int mark) const {
  Marking marking(key, mark);
  marking.MarkAll(this);
  LumoList* result = Copy();
  for (void* item : LumoItems<void>(*other)) {
    if (marking.Mark(item)) result->InsertItemLast(item);
  }
  return result;
}

LumoList* LumoList::BuildLinearIntersection(const LumoList* other, MarkOfItem key, int mark) const {
  Marking marking(key, mark);
  marking.MarkAll(other);
  auto* result = new LumoList;
  for (void* item : LumoItems<void>(*this)) {
    if (marking.IsMarked(item)) result->InsertItemLast(item);
  }
  return result;
}

LumoList* LumoList::BuildLinearDifference(const LumoList* other, MarkOfItem key, int mark) const {
  Marking marking(key, mark);
  marking.MarkAll(other);
  auto* result = new LumoList;
  for (void* item : LumoItems<void>(*this)) {
    if (!marking.IsMarked(item)) result->InsertItemLast(item);
  }
  return result;
}

LumoList* LumoList::Copy() const {
  auto* copy = new LumoList;
  copy->InsertItems(this);
  return copy;
}

LumoList* LumoList::CopyWithItems(CopyItem copyItem) const {
  auto* copy = new LumoList;
  for (const void* item : LumoItems<void>(*this)) copy->InsertItemLast(copyItem(item));
  return copy;
}

LumoListCursor::LumoListCursor(LumoList* list) : _list(list) {
  LumoMemoryManager::TraceNew(this, "LumoListCursor");
}

LumoListCursor::~LumoListCursor() { LumoMemoryManager::TraceDelete(this, "LumoListCursor"); }

bool LumoListCursor::IsOnFirstItem() const {
  return _cell != nullptr && _cell == _list->GetFirstCell();
}

bool LumoListCursor::IsOnLastItem() const {
  return _cell != nullptr && _cell == _list->GetLastCell();
}

void LumoListCursor::ResetOnCell(LumoListCell* cell) {
  _cell = cell;
  _isBeforeFirst = _isAfterLast = cell == nullptr;
}

void LumoListCursor::Increment() {
  if (_cell == nullptr) return;
  assert(!_isBeforeFirst && !_isAfterLast);
  _cell = _cell->GetNext();
  _isAfterLast = _cell == nullptr;
}

void LumoListCursor::Decrement() {
  if (_cell == nullptr) return;
  assert(!_isBeforeFirst && !_isAfterLast);
  _cell = _cell->GetPrevious();
  _isBeforeFirst = _cell == nullptr;
}

void* LumoListCursor::RemoveItemAndIncrement() {
  LumoListCell* cell = _cell;
  Increment();
  return _list->RemoveCell(cell);
}

void* LumoListCursor::RemoveItemAndDecrement() {
  LumoListCell* cell = _cell;
  Decrement();
  return _list->RemoveCell(cell);
}
