#include "xml/LumoXMLArena.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace {

constexpr std::size_t SMALLEST_PAGE = 4096;
constexpr std::size_t LARGEST_PAGE = 262144;
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

// A piece larger than a page gets one of its own, and the last page stays in use.
char* LumoXMLArena::_TakePage(std::size_t size) {
  _pageSize = std::clamp(2 * _pageSize, SMALLEST_PAGE, LARGEST_PAGE);
  char* page = static_cast<char*>(::operator new(std::max(size, _pageSize)));
  _pages.push_back(page);
  if (size > _pageSize) return page;
  _next = page;
  _end = page + _pageSize;
  return nullptr;
}

void* LumoXMLArena::NewCell(std::size_t size) {
  size = (size + alignof(void*) - 1) / alignof(void*) * alignof(void*);
  if (static_cast<std::size_t>(_end - _next) < size) {
    if (char* page = _TakePage(size)) return page;
  }
  char* cell = _next;
  _next += size;
  return cell;
}

char* LumoXMLArena::NewText(const char* text, std::size_t length) {
  char* copy = nullptr;
  if (static_cast<std::size_t>(_end - _next) <= length) copy = _TakePage(length + 1);
  if (copy == nullptr) copy = _end -= length + 1;
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

const char* LumoXMLArena::NewName(const char* name, std::size_t length) {
  if (2 * _numberOfNames >= _names.size()) _GrowNames();
  const std::uint32_t hash = Hash(name, length);
  Name& place = _FindPlace(name, length, hash);
  if (place.text == nullptr) {
    place = {NewText(name, length), length, hash};
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
  for (char* page : _pages) ::operator delete(page);
  _pages.clear();
  _names.clear();
  _numberOfNames = 0;
  _pageSize = 0;
  _next = _end = nullptr;
}
