#include "support/containers/LumoArray.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "support/containers/LumoFunction.h"
#include "support/memory/LumoMemoryManager.h"

namespace {

constexpr int DEFAULT_SIZE = 1024;

void** NewSlots(int size) { return new void*[static_cast<std::size_t>(size)](); }

}  // namespace

LumoArray::LumoArray(int size)
    : _slots(NewSlots(std::max(size, 0))), _size(std::max(size, 0)), _increment(std::max(size, 1)) {
  LumoMemoryManager::TraceNew(this, "LumoArray");
}

LumoArray::~LumoArray() {
  delete[] _slots;
  LumoMemoryManager::TraceDelete(this, "LumoArray");
}

void* LumoArray::GetLastItem() const {
  const int index = GetIndexOfLastItem();
  return index < 0 ? nullptr : _slots[index];
}

void* LumoArray::GetNthItem(int n) const {
  if (n == 0) return GetItem(0);
  const int index = GetIndexOfNthItem(n);
  return index < 0 ? nullptr : _slots[index];
}

void* LumoArray::LookForItem(const LumoComparator* comparator, const void* key) const {
  const int index = GetIndexOfItem(comparator, key);
  return index < 0 ? nullptr : _slots[index];
}

void* LumoArray::RemoveItem(const void* item) { return RemoveItem(GetIndexOfItem(item)); }

void* LumoArray::RemoveNthItem(int n) { return RemoveItem(GetIndexOfNthItem(n)); }

void* LumoArray::RemoveLastItem() { return RemoveItem(GetIndexOfLastItem()); }

void LumoArray::DeleteItems(Release release) { DeleteItems(0, _size, release); }

LumoCursor* LumoArray::NewCursor() { return new LumoArrayCursor(this); }

void* LumoArray::_Exchange(int index, void* item) {
  assert(index >= 0 && index < _size);
  void* old = std::exchange(_slots[index], item);
  _numberOfItems += static_cast<int>(item != nullptr) - static_cast<int>(old != nullptr);
  assert(_numberOfItems >= 0 && _numberOfItems <= _size);
  return old;
}

void LumoArray::SetItem(int index, void* item) {
  if (index < 0) return;
  Expand(index);
  _Exchange(index, item);
}

void* LumoArray::RemoveItem(int index) {
  return GetItem(index) == nullptr ? nullptr : _Exchange(index, nullptr);
}

void LumoArray::_Clip(int& start, int& length) const {
  const long long end = std::min<long long>(static_cast<long long>(start) + length, _size);
  start = std::max(start, 0);
  length = static_cast<int>(std::max<long long>(end - start, 0));
  assert(length == 0 || start + length <= _size);
}

void LumoArray::DeleteItems(int from, int count, Release release) {
  _Clip(from, count);
  for (int i = from; i < from + count; ++i) {
    if (_slots[i] != nullptr) release(_Exchange(i, nullptr));
  }
}

void LumoArray::InsertItemAtIndex(int index, void* item) {
  if (index < 0 || index > _numberOfItems) return;
  // Room for one more after the last occupied slot, wherever the holes are.
  Expand(std::max(GetIndexOfLastItem() + 1, index));
  ShiftBlockRight(index, GetIndexOfLastItem() + 1 - index, 1);
  assert(_slots[index] == nullptr);
  _Exchange(index, item);
}

int LumoArray::GetIndexOfItem(const void* item) const {
  return GetIndexOfItem(LumoFunction::CompareAddress, item);
}

int LumoArray::GetIndexOfItem(Match match, const void* key) const {
  const LumoFunctionComparator comparator(match);
  return GetIndexOfItem(&comparator, key);
}

int LumoArray::GetIndexOfItem(const LumoComparator* comparator, const void* key) const {
  for (int i = 0; i < _size; ++i) {
    if (_slots[i] != nullptr && comparator->Compare(_slots[i], key) == 0) return i;
  }
  return -1;
}

int LumoArray::GetIndexOfLastItem() const {
  int index = _size - 1;
  while (index >= 0 && _slots[index] == nullptr) --index;
  return index;
}

int LumoArray::GetIndexOfNthItem(int n) const {
  if (n < 1 || n > _numberOfItems) return -1;
  int index = -1;
  for (int rank = 0; rank < n;) rank += static_cast<int>(_slots[++index] != nullptr);
  assert(index < _size);
  return index;
}

void LumoArray::ShiftBlockRight(int start, int length, int distance) {
  if (length <= 0 || distance <= 0 || start < 0 || distance > _size - start - length) return;
  for (int i = start + length - 1; i >= start; --i) {
    _Exchange(i + distance, _Exchange(i, nullptr));
  }
}

void LumoArray::_Resize(int size) {
  assert(size >= 0 && _increment >= 1);
  void** slots = NewSlots(size);
  std::copy_n(_slots, std::min(_size, size), slots);
  delete[] std::exchange(_slots, slots);
  _size = size;
}

void LumoArray::Expand(int n) {
  if (n < _size) return;
  _Resize(_size + ((n - _size) / _increment + 1) * _increment);
  assert(n < _size);
}

// Offered to users of the class; the program itself does not call what follows.

LumoArray::LumoArray() : LumoArray(DEFAULT_SIZE) {}

void* LumoArray::RemoveItemAtIndex(int index) {
  if (index < 0 || index >= _size) return nullptr;
  void* item = RemoveItem(index);
  ShiftBlockLeft(index + 1, _size - index - 1, 1);
  return item;
}

void LumoArray::RemoveItems(int from, int count) {
  DeleteItems(from, count, LumoFunction::DoNothing);
}

void LumoArray::PushItem(void* item) {
  if (item != nullptr) SetItem(_numberOfItems, item);
}

void* LumoArray::PopItem() { return RemoveItem(_numberOfItems - 1); }

void LumoArray::SwapItems(int i, int j) {
  if (i < 0 || j < 0 || i >= _size || j >= _size) return;
  std::swap(_slots[i], _slots[j]);
}

void LumoArray::ShiftBlockLeft(int start, int length, int distance) {
  if (length <= 0 || distance <= 0 || distance > start || length > _size - start) return;
  for (int i = start; i < start + length; ++i) {
    _Exchange(i - distance, _Exchange(i, nullptr));
  }
}

void LumoArray::CompactBlockLeft(int start, int length) {
  _Clip(start, length);
  void** first = _slots + start;
  std::stable_partition(first, first + length, [](void* item) { return item != nullptr; });
}

void LumoArray::CompactBlockRight(int start, int length) {
  _Clip(start, length);
  void** first = _slots + start;
  std::stable_partition(first, first + length, [](void* item) { return item == nullptr; });
}

void LumoArray::SortBlock(int start, int length, Order order) {
  _Clip(start, length);
  CompactBlockLeft(start, length);
  void** first = _slots + start;
  void** last = std::find(first, first + length, nullptr);
  std::stable_sort(first, last, [order](void* a, void* b) { return order(a, b) < 0; });
}

void LumoArray::Shrink(int n) {
  const int size = n < 0 ? 0 : (n / _increment + 1) * _increment;
  if (size >= _size) return;
  RemoveItems(size, _size - size);
  _Resize(size);
}

LumoArray* LumoArray::Copy() const {
  auto* copy = new LumoArray(_increment);
  if (_size > 0) copy->Expand(_size - 1);
  for (int i = 0; i < _size; ++i) copy->_Exchange(i, _slots[i]);
  return copy;
}

LumoArray* LumoArray::CopyWithItems(CopyItem copyItem) const {
  LumoArray* copy = Copy();
  for (int i = 0; i < _size; ++i) {
    if (_slots[i] != nullptr) copy->_Exchange(i, copyItem(_slots[i]));
  }
  return copy;
}

LumoArrayCursor::LumoArrayCursor(LumoArray* array) : _array(array) {
  LumoMemoryManager::TraceNew(this, "LumoArrayCursor");
}

LumoArrayCursor::~LumoArrayCursor() { LumoMemoryManager::TraceDelete(this, "LumoArrayCursor"); }

bool LumoArrayCursor::IsOnFirstItem() const {
  return _IsOnItem() && _index == _array->GetIndexOfFirstItem();
}

bool LumoArrayCursor::IsOnLastItem() const {
  return _IsOnItem() && _index == _array->GetIndexOfLastItem();
}

void LumoArrayCursor::_ResetOnIndex(int index) {
  _index = index;
  _isBeforeFirst = _isAfterLast = index < 0;
}

void LumoArrayCursor::ResetOnFirstItem() { _ResetOnIndex(_array->GetIndexOfFirstItem()); }

void LumoArrayCursor::ResetOnLastItem() { _ResetOnIndex(_array->GetIndexOfLastItem()); }

void LumoArrayCursor::ResetInPosition(int n) { _ResetOnIndex(_array->GetIndexOfNthItem(n)); }

void LumoArrayCursor::ResetOnItem(const void* item) { _ResetOnIndex(_array->GetIndexOfItem(item)); }

void LumoArrayCursor::_MoveFrom(int index, int step) {
  assert(index >= -1 && index <= _array->GetSize() && (step == 1 || step == -1));
  while (index >= 0 && index < _array->GetSize() && _array->GetItem(index) == nullptr) {
    index += step;
  }
  _index = index;
  _isBeforeFirst = index < 0;
  _isAfterLast = index >= _array->GetSize();
}

void LumoArrayCursor::Increment() {
  if (_IsOnItem()) _MoveFrom(_index + 1, +1);
}

void LumoArrayCursor::Decrement() {
  if (_IsOnItem()) _MoveFrom(_index - 1, -1);
}

void* LumoArrayCursor::GetItem() const { return _IsOnItem() ? _array->GetItem(_index) : nullptr; }

void* LumoArrayCursor::RemoveItemAndIncrement() {
  if (!_IsOnItem()) return nullptr;
  void* item = _array->RemoveItem(_index);
  Increment();
  return item;
}

void* LumoArrayCursor::RemoveItemAndDecrement() {
  if (!_IsOnItem()) return nullptr;
  void* item = _array->RemoveItem(_index);
  Decrement();
  return item;
}

// Offered to users of the class; the program itself does not call what follows.

void LumoArrayCursor::ResetOnCursor(const LumoArrayCursor* other) { *this = *other; }

void LumoArrayCursor::SubstituteItemForItem(void* item) {
  if (_IsOnItem()) _array->SetItem(_index, item);
}

void LumoArrayCursor::ExchangeItems(LumoArrayCursor* other) {
  if (!_IsOnItem() || !other->_IsOnItem()) return;
  void* item = GetItem();
  SubstituteItemForItem(other->GetItem());
  other->SubstituteItemForItem(item);
}
