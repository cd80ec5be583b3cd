#pragma once

#include <bitset>
#include <vector>

// A regular expression as a program: instructions of which each leads to the next, a split to two.
// Program counters are indices into `instructions`.
struct LumoRegexProgram {
  using CharSet = std::bitset<256>;

  enum Code : int {
    CHARS,  // a character of the set `set`
    BEGIN,  // the start of the text
    END,    // the end of the text
    SPLIT,  // go on at `next` and at `alternative`
    JUMP,   // go on at `next`
    MATCH,
  };
  struct Instruction {
    Code code;
    int next;
    int alternative;
    int set;
  };

  std::vector<Instruction> instructions;
  std::vector<CharSet> sets;
  int start = 0;
};
