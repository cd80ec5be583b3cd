#pragma once

#include <array>
#include <cstddef>
#include <cstring>

// The words of a fixed vocabulary and a number for each, found in about the time that it takes to
// read the word: a hash table of static strings, for some dozens of them.
class OrvaNameTable {
 public:
  static constexpr int NOT_FOUND = -1;

  // The first number given to a word stays.
  void Add(const char* name, int number) {
    Row& row = _rows[_Find(name)];
    if (row.name == nullptr) row = {name, number};
  }
  // The names of rows, up to the first without one, each with its place.
  template <class NamedRow>
  void AddRows(const NamedRow* rows) {
    for (int i = 0; rows[i].name != nullptr; ++i) Add(rows[i].name, i);
  }
  int Find(const char* name) const {
    return name == nullptr ? NOT_FOUND : _rows[_Find(name)].number;
  }

 private:
  static constexpr std::size_t SIZE = 256;
  struct Row {
    const char* name = nullptr;
    int number = NOT_FOUND;
  };

  // The place of the name, or where it would be.
  std::size_t _Find(const char* name) const {
    std::size_t hash = 0;
    for (const char* c = name; *c != '\0'; ++c) hash = 31 * hash + static_cast<unsigned char>(*c);
    std::size_t i = hash % SIZE;
    while (_rows[i].name != nullptr && std::strcmp(_rows[i].name, name) != 0) i = (i + 1) % SIZE;
    return i;
  }

  std::array<Row, SIZE> _rows;
};
