// A pattern becomes a program in two small steps, tokens (LumoRegexScanner) and instructions
// (LumoRegexParser), and the program is simulated here: all ways through it are followed side by
// side, one character of the text at a time. At any place of the text there is at most one way per
// instruction, whatever happened before it, which bounds the time by the length of the text times
// that of the program. Following one way after the other, and going back when it fails, would take
// a time exponential in the pattern for some.
//
// The match wanted is the leftmost and among those the longest. Each way carries the place at which
// it started; the lists of ways are kept in the order of these places, and of two ways at one
// instruction the one that came first stays. Once a match is found, ways that started behind its
// start are dropped, and the simulation goes on until none is left that could be longer.

#include "regex/LumoRegex.h"

#include <cassert>
#include <cstring>
#include <vector>

#include "regex/LumoRegexParser.h"
#include "support/memory/LumoMemoryManager.h"

namespace {

using Program = LumoRegexProgram;

// All ways through a program at one place of the text. Of two ways that stand at the same
// instruction the one that started further left is kept: what comes is the same for both.
class Simulation {
 public:
  Simulation(const Program& program, const char* text, std::size_t length)
      : _program(program),
        _length(length),
        _text(text),
        _startOf(program.instructions.size()),
        _isListed(program.instructions.size()),
        _formerStartOf(program.instructions.size()) {}

  bool Find(std::size_t from, std::size_t& start, std::size_t& end) {
    assert(from <= _length);
    bool isFound = false;
    for (std::size_t place = from;; ++place) {
      // A new way starts here, after those that started further left.
      if (!isFound) Follow(_program.start, place, place);
      for (const int index : _list) {
        const std::size_t startOfWay = _startOf[static_cast<std::size_t>(index)];
        if (At(index).code != Program::MATCH) continue;
        if (isFound && startOfWay > start) continue;
        assert(startOfWay <= place);
        isFound = true;
        start = startOfWay;
        end = place;
      }
      if (place >= _length || (isFound && _list.empty())) return isFound;
      Step(place, isFound, start);
    }
  }

 private:
  const Program::Instruction& At(int index) const {
    assert(index >= 0 && static_cast<std::size_t>(index) < _program.instructions.size());
    return _program.instructions[static_cast<std::size_t>(index)];
  }

  // Lists an instruction and all those that it leads to without reading a character. Ways are
  // followed in the order of their starts, and a new one starts behind all others: the list stays
  // in that order, and the first way to list an instruction is the leftmost.
  void Follow(int first, std::size_t place, std::size_t start) {
    assert(_list.empty() || _startOf[static_cast<std::size_t>(_list.back())] <= start);
    _waiting.push_back(first);
    while (!_waiting.empty()) {
      const int index = _waiting.back();
      _waiting.pop_back();
      const auto i = static_cast<std::size_t>(index);
      if (_isListed[i]) continue;
      _isListed[i] = true;
      _startOf[i] = start;
      const Program::Instruction& instruction = At(index);
      switch (instruction.code) {
        case Program::SPLIT:
          _waiting.push_back(instruction.alternative);
          _waiting.push_back(instruction.next);
          break;
        case Program::JUMP:
          _waiting.push_back(instruction.next);
          break;
        case Program::BEGIN:
          if (place == 0) _waiting.push_back(instruction.next);
          break;
        case Program::END:
          if (place == _length) _waiting.push_back(instruction.next);
          break;
        default:
          break;
      }
      _list.push_back(index);
    }
  }

  // Reads the character at a place. Once a match is found, ways that started further right are
  // dropped.
  void Step(std::size_t place, bool isFound, std::size_t leftmost) {
    assert(place < _length);
    const auto c = static_cast<unsigned char>(_text[place]);
    _former.swap(_list);
    _list.clear();
    _startOf.swap(_formerStartOf);
    for (const int index : _former) _isListed[static_cast<std::size_t>(index)] = false;
    for (const int index : _former) {
      const Program::Instruction& instruction = At(index);
      const std::size_t start = _formerStartOf[static_cast<std::size_t>(index)];
      if (instruction.code != Program::CHARS || (isFound && start > leftmost)) continue;
      assert(static_cast<std::size_t>(instruction.set) < _program.sets.size());
      if (_program.sets[static_cast<std::size_t>(instruction.set)].test(c)) {
        Follow(instruction.next, place + 1, start);
      }
    }
  }

  const Program& _program;
  std::size_t _length;
  const char* _text;
  std::vector<int> _list;
  std::vector<int> _former;
  std::vector<int> _waiting;
  std::vector<std::size_t> _startOf;
  std::vector<bool> _isListed;
  std::vector<std::size_t> _formerStartOf;
};

}  // namespace

LumoRegex::LumoRegex(const char* pattern) {
  LumoRegexParser parser(_program);
  _error = parser.Parse(pattern == nullptr ? "" : pattern);
  LumoMemoryManager::TraceNew(this, "LumoRegex");
}

LumoRegex::~LumoRegex() { LumoMemoryManager::TraceDelete(this, "LumoRegex"); }

bool LumoRegex::Find(const char* text, std::size_t from, std::size_t& start,
                     std::size_t& end) const {
  return Find(text, std::strlen(text), from, start, end);
}

bool LumoRegex::Find(const char* text, std::size_t length, std::size_t from, std::size_t& start,
                     std::size_t& end) const {
  if (!IsValid() || from > length) return false;
  return Simulation(_program, text, length).Find(from, start, end);
}
