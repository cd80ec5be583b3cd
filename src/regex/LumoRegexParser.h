#pragma once

#include <vector>

#include "regex/LumoRegexScanner.h"

// Reads a pattern and writes its program.
//
// A fragment is a piece of program with one way in and any number of open ways out. The open ends
// are threaded through the instructions' own fields, so that joining two fragments takes constant
// time. Open groups wait on a stack: no depth of parentheses uses the machine stack.
class LumoRegexParser {
 public:
  explicit LumoRegexParser(LumoRegexProgram& program) : _program(program) {}

  // Null, or why the pattern is not well formed; the program is then not to be run.
  const char* Parse(const char* pattern);

 private:
  // An open end: twice the index of an instruction, plus 1 for its alternative way. Or NONE.
  using End = int;
  static constexpr End NONE = -1;
  struct Fragment {
    int start;
    End firstEnd;
    End lastEnd;
  };
  // What stands before the present place in a group: finished alternatives, the pieces of the
  // present one, and its last piece, which an operator may still repeat.
  struct Group {
    bool hasAlternatives = false;
    Fragment alternatives{};
    bool hasSequence = false;
    Fragment sequence{};
    bool hasPiece = false;
    Fragment piece{};
  };

  // Each null, or what is wrong.
  const char* _AddToken(LumoRegexScanner::Token token, const LumoRegexProgram::CharSet& chars);
  const char* _EndPattern();

  int& _GetTarget(End end);
  Fragment _NewInstruction(LumoRegexProgram::Code code, int set);
  void _Connect(const Fragment& fragment, int target);
  Fragment _Join(const Fragment& a, const Fragment& b);
  Fragment _Sequence(const Fragment& a, const Fragment& b);
  Fragment _Alternative(const Fragment& a, const Fragment& b);
  Fragment _Repeat(const Fragment& piece, bool isOptional, bool isMultiple);

  void _AddPiece(const Fragment& piece);
  void _EndPiece();
  void _EndAlternative();
  Fragment _EndGroup();

  LumoRegexProgram& _program;
  std::vector<Group> _groups;
};
