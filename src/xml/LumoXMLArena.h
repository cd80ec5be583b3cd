#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The memory of what a document was read into: terms, attributes and texts, which live and go
// together. Nothing in it is released alone.
class LumoXMLArena {
 public:
  LumoXMLArena() = default;
  ~LumoXMLArena() { Reset(); }
  LumoXMLArena(const LumoXMLArena&) = delete;
  LumoXMLArena& operator=(const LumoXMLArena&) = delete;

  // A cell for an object, aligned for pointers, not zeroed.
  void* NewCell(std::size_t size);
  // A null-terminated copy of `length` characters.
  char* NewText(const char* text, std::size_t length);
  // The same for the names of elements and attributes: one copy for equal names.
  const char* NewName(const char* name, std::size_t length);

  // Releases everything.
  void Reset();

 private:
  struct Name {
    const char* text;
    std::size_t length;
    std::uint32_t hash;
  };

  char* _TakePage(std::size_t size);
  Name& _FindPlace(const char* name, std::size_t length, std::uint32_t hash);
  void _GrowNames();

  std::vector<char*> _pages;
  std::size_t _pageSize = 0;
  char* _next = nullptr;     // cells come from the front of the last page,
  char* _end = nullptr;      // texts, which need no alignment, from its back
  std::vector<Name> _names;  // a hash table, a power of two in size, at most half full
  std::size_t _numberOfNames = 0;
};
