#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// The memory of what a document was read into: terms, attributes and their texts, in pages of the
// order of the file. A page goes when the last of its cells is released, and all cells must have
// been released when the arena goes.
class LumoXMLArena {
 public:
  LumoXMLArena() = default;
  ~LumoXMLArena() { Reset(); }
  LumoXMLArena(const LumoXMLArena&) = delete;
  LumoXMLArena& operator=(const LumoXMLArena&) = delete;

  // A cell of that size followed by a null-terminated copy of a text, to which `text` is moved.
  // Aligned for pointers, not zeroed.
  void* NewCell(std::size_t size, const char*& text, std::size_t length);
  void* NewCell(std::size_t size);
  static void Release(void* cell);
  // A null-terminated copy of the name of an element or of an attribute, the same for equal names;
  // it stays until the reset.
  const char* NewName(const char* name, std::size_t length);

  // To be called when there are no cells. Releases the names.
  void Reset();

 private:
  struct Page;
  struct Name {
    char* text;
    std::size_t length;
    std::uint32_t hash;
  };

  void _TakePage(std::size_t size);
  void _LeavePage();
  Name& _FindPlace(const char* name, std::size_t length, std::uint32_t hash);
  void _GrowNames();

  Page* _page = nullptr;  // the last one, and what is left of it
  char* _next = nullptr;
  char* _end = nullptr;
  std::vector<Name> _names;  // a hash table, a power of two in size, at most half full
  std::size_t _numberOfNames = 0;
};
