#pragma once

#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <type_traits>
#include <utility>

#include "support/memory/LumoMemoryManager.h"

// The array of the tables of a diagram. A table of hundreds of megabytes that grows by copying is
// in memory twice while it is copied; this one grows with realloc(), which moves large blocks by
// their pages. Room that is not used yet is not touched, and so takes none.
template <class T>
class OrvaDiagramArray {
 public:
  static_assert(std::is_trivially_copyable_v<T>);

  OrvaDiagramArray() = default;
  ~OrvaDiagramArray() { std::free(_items); }
  OrvaDiagramArray(const OrvaDiagramArray&) = delete;
  OrvaDiagramArray& operator=(const OrvaDiagramArray&) = delete;

  std::size_t GetSize() const { return _size; }
  T& operator[](std::size_t i) {
    assert(i < _size);
    return _items[i];
  }
  const T& operator[](std::size_t i) const {
    assert(i < _size);
    return _items[i];
  }
  void Add(const T& item) {
    if (_size == _capacity) _Reserve(_capacity + _capacity / 2 + MINIMUM_CAPACITY);
    ::new (&_items[_size++]) T(item);
  }
  // Makes the array that long, all its items the given one.
  void Fill(std::size_t size, const T& item) {
    if (size > _capacity) _Reserve(size);
    for (_size = 0; _size < size; ++_size) ::new (&_items[_size]) T(item);
  }
  // Makes the array empty and gives up its room.
  void Release() {
    std::free(std::exchange(_items, nullptr));
    _size = _capacity = 0;
  }
  // Drops the items behind the first `size` ones.
  void Shorten(std::size_t size) {
    assert(size <= _size);
    _size = size;
  }

 private:
  static constexpr std::size_t MINIMUM_CAPACITY = 64;

  // As operator new does, when memory is exhausted: the process ends.
  void _Reserve(std::size_t capacity) {
    void* items = std::realloc(static_cast<void*>(_items), capacity * sizeof(T));
    if (items == nullptr) LumoMemoryManager::EndOnExhaustedMemory();
    _items = static_cast<T*>(items);
    _capacity = capacity;
  }

  T* _items = nullptr;
  std::size_t _size = 0;
  std::size_t _capacity = 0;
};
