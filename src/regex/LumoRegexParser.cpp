// The program is written from left to right as the tokens come. The last piece read is held back,
// since an operator may follow that repeats it; the pieces before it form a sequence, the sequences
// before that the alternatives of the group, and the groups around it wait on a stack.
//
// A piece whose ways out lead nowhere yet lists them in the very fields that will hold their
// targets: firstEnd is the first one, its field holds the next, and NONE ends the list. Connecting
// a piece walks its list once, joining two pieces links the end of one list to the start of the
// other.

#include "regex/LumoRegexParser.h"

#include <cassert>

namespace {

using Program = LumoRegexProgram;
using Scanner = LumoRegexScanner;

constexpr const char* NOTHING_TO_REPEAT = "There is nothing to repeat";
constexpr const char* UNOPENED_GROUP = "A group is closed that is not open";
constexpr const char* UNCLOSED_GROUP = "A group is not closed";
constexpr int NO_SET = -1;

}  // namespace

const char* LumoRegexParser::Parse(const char* pattern) {
  Scanner scanner(pattern);
  _groups = {Group()};
  for (;;) {
    const Scanner::Token token = scanner.Scan();
    if (token == Scanner::ERROR) return scanner.GetError();
    if (token == Scanner::END_OF_PATTERN) return _EndPattern();
    if (const char* error = _AddToken(token, scanner.GetChars())) return error;
  }
}

const char* LumoRegexParser::_AddToken(Scanner::Token token, const Program::CharSet& chars) {
  switch (token) {
    case Scanner::CHARS:
      _program.sets.push_back(chars);
      _AddPiece(_NewInstruction(Program::CHARS, static_cast<int>(_program.sets.size()) - 1));
      break;
    case Scanner::BEGIN:
      _AddPiece(_NewInstruction(Program::BEGIN, NO_SET));
      break;
    case Scanner::END:
      _AddPiece(_NewInstruction(Program::END, NO_SET));
      break;
    case Scanner::ALTERNATIVE:
      _EndAlternative();
      break;
    case Scanner::OPEN:
      _groups.emplace_back();
      break;
    case Scanner::CLOSE:
      if (_groups.size() == 1) return UNOPENED_GROUP;
      _AddPiece(_EndGroup());
      break;
    default: {
      Group& group = _groups.back();
      if (!group.hasPiece) return NOTHING_TO_REPEAT;
      group.piece = _Repeat(group.piece, token != Scanner::PLUS, token != Scanner::OPTIONAL);
    }
  }
  return nullptr;
}

const char* LumoRegexParser::_EndPattern() {
  if (_groups.size() > 1) return UNCLOSED_GROUP;
  const Fragment whole = _EndGroup();
  assert(_groups.empty());
  const Fragment match = _NewInstruction(Program::MATCH, NO_SET);
  _Connect(whole, match.start);
  _program.start = whole.start;
  return nullptr;
}

// Groups.

void LumoRegexParser::_AddPiece(const Fragment& piece) {
  _EndPiece();
  _groups.back().piece = piece;
  _groups.back().hasPiece = true;
}

void LumoRegexParser::_EndPiece() {
  Group& group = _groups.back();
  if (!group.hasPiece) return;
  group.sequence = group.hasSequence ? _Sequence(group.sequence, group.piece) : group.piece;
  group.hasSequence = true;
  group.hasPiece = false;
}

void LumoRegexParser::_EndAlternative() {
  _EndPiece();
  Group& group = _groups.back();
  if (!group.hasSequence) group.sequence = _NewInstruction(Program::JUMP, NO_SET);
  group.alternatives =
      group.hasAlternatives ? _Alternative(group.alternatives, group.sequence) : group.sequence;
  group.hasAlternatives = true;
  group.hasSequence = false;
}

LumoRegexParser::Fragment LumoRegexParser::_EndGroup() {
  _EndAlternative();
  assert(_groups.back().hasAlternatives && !_groups.back().hasSequence);
  const Fragment whole = _groups.back().alternatives;
  _groups.pop_back();
  return whole;
}

// Fragments.

int& LumoRegexParser::_GetTarget(End end) {
  assert(end >= 0 && static_cast<std::size_t>(end / 2) < _program.instructions.size());
  Program::Instruction& instruction = _program.instructions[static_cast<std::size_t>(end / 2)];
  return end % 2 == 0 ? instruction.next : instruction.alternative;
}

LumoRegexParser::Fragment LumoRegexParser::_NewInstruction(Program::Code code, int set) {
  const int index = static_cast<int>(_program.instructions.size());
  _program.instructions.push_back({code, NONE, NONE, set});
  return {index, 2 * index, 2 * index};
}

// Leads every open end to the target.
void LumoRegexParser::_Connect(const Fragment& fragment, int target) {
  for (End end = fragment.firstEnd; end != NONE;) {
    int& field = _GetTarget(end);
    end = field;
    field = target;
  }
}

// The open ends of both, one list behind the other; the start of a.
LumoRegexParser::Fragment LumoRegexParser::_Join(const Fragment& a, const Fragment& b) {
  assert(_GetTarget(a.lastEnd) == NONE);
  _GetTarget(a.lastEnd) = b.firstEnd;
  return {a.start, a.firstEnd, b.lastEnd};
}

LumoRegexParser::Fragment LumoRegexParser::_Sequence(const Fragment& a, const Fragment& b) {
  _Connect(a, b.start);
  return {a.start, b.firstEnd, b.lastEnd};
}

LumoRegexParser::Fragment LumoRegexParser::_Alternative(const Fragment& a, const Fragment& b) {
  const int split = _NewInstruction(Program::SPLIT, NO_SET).start;
  _GetTarget(2 * split) = a.start;
  _GetTarget(2 * split + 1) = b.start;
  const Fragment both = _Join(a, b);
  return {split, both.firstEnd, both.lastEnd};
}

// A split that goes through the piece or past it. Repeated, the piece leads back to the split;
// what must come once is entered at the piece.
LumoRegexParser::Fragment LumoRegexParser::_Repeat(const Fragment& piece, bool isOptional,
                                                   bool isMultiple) {
  const int split = _NewInstruction(Program::SPLIT, NO_SET).start;
  const End past = 2 * split + 1;
  _GetTarget(2 * split) = piece.start;
  if (!isMultiple) {
    const Fragment both = _Join(piece, {split, past, past});
    return {split, both.firstEnd, both.lastEnd};
  }
  _Connect(piece, split);
  return {isOptional ? split : piece.start, past, past};
}
