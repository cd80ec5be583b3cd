// Terms are made in the order of the file and, where a model is read from them, go in that order:
// then the pages behind the reader are free for the model already. So a page counts its cells. It
// begins at a multiple of its size, where a cell finds it without a word of its own; a cell that is
// too large has a larger page to itself, and begins in the first part of it.

#include "xml/LumoXMLArena.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "support/memory/LumoMemoryManager.h"

struct LumoXMLArena::Page {
  std::size_t numberOfCells;  // one more while cells are taken from it
};

namespace {

constexpr std::size_t PAGE_ALIGNMENT = 65536;
constexpr std::size_t PAGE_SIZE = PAGE_ALIGNMENT - 64;  // room for what the C library puts between
constexpr std::size_t FIRST_NUMBER_OF_NAMES = 64;

// FNV-1a.
std::uint32_t Hash(const char* text, std::size_t length) {
  std::uint32_t hash = 2166136261U;
  for (std::size_t i = 0; i < length; ++i) {
    hash = (hash ^ static_cast<unsigned char>(text[i])) * 16777619U;
  }
  return hash;
}

}  // namespace

void LumoXMLArena::_TakePage(std::size_t size) {
  _LeavePage();
  const std::size_t pageSize = std::max(PAGE_SIZE, sizeof(Page) + size);
  void* memory = nullptr;
  if (posix_memalign(&memory, PAGE_ALIGNMENT, pageSize) != 0) {
    LumoMemoryManager::EndOnExhaustedMemory();
  }
  _page = new (memory) Page{1};
  _next = static_cast<char*>(memory) + sizeof(Page);
  _end = static_cast<char*>(memory) + pageSize;
}

void LumoXMLArena::_LeavePage() {
  if (_page != nullptr) Release(std::exchange(_page, nullptr));
  _next = _end = nullptr;
}

void* LumoXMLArena::NewCell(std::size_t size) {
  size = (size + alignof(void*) - 1) / alignof(void*) * alignof(void*);
  if (static_cast<std::size_t>(_end - _next) < size) _TakePage(size);
  char* cell = _next;
  _next += size;
  ++_page->numberOfCells;
  return cell;
}

void* LumoXMLArena::NewCell(std::size_t size, const char*& text, std::size_t length) {
  char* cell = static_cast<char*>(NewCell(size + length + 1));
  std::memcpy(cell + size, text, length);
  cell[size + length] = '\0';
  text = cell + size;
  return cell;
}

void LumoXMLArena::Release(void* cell) {
  char* place = static_cast<char*>(cell);
  place -= reinterpret_cast<std::uintptr_t>(place) % PAGE_ALIGNMENT;
  Page* page = reinterpret_cast<Page*>(place);
  assert(page->numberOfCells > 0);
  if (--page->numberOfCells == 0) std::free(place);
}

const char* LumoXMLArena::NewName(const char* name, std::size_t length) {
  if (2 * _numberOfNames >= _names.size()) _GrowNames();
  const std::uint32_t hash = Hash(name, length);
  Name& place = _FindPlace(name, length, hash);
  if (place.text == nullptr) {
    char* text = static_cast<char*>(::operator new(length + 1));  // zeroed
    std::memcpy(text, name, length);
    place = {text, length, hash};
    ++_numberOfNames;
  }
  return place.text;
}

LumoXMLArena::Name& LumoXMLArena::_FindPlace(const char* name, std::size_t length,
                                             std::uint32_t hash) {
  assert(_numberOfNames < _names.size());
  for (std::size_t i = hash;; ++i) {
    Name& place = _names[i & (_names.size() - 1)];
    if (place.text == nullptr) return place;
    if (place.hash == hash && place.length == length &&
        std::memcmp(place.text, name, length) == 0) {
      return place;
    }
  }
}

void LumoXMLArena::_GrowNames() {
  const std::vector<Name> former = std::move(_names);
  _names = std::vector<Name>(std::max(2 * former.size(), FIRST_NUMBER_OF_NAMES));
  for (const Name& name : former) {
    if (name.text != nullptr) _FindPlace(name.text, name.length, name.hash) = name;
  }
}

void LumoXMLArena::Reset() {
  assert(_page == nullptr || _page->numberOfCells == 1);
  _LeavePage();
  for (const Name& name : _names) {
    if (name.text != nullptr) ::operator delete(name.text);
  }
  _names.clear();
  _numberOfNames = 0;
}
