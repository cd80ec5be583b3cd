#pragma once

#include <array>
#include <cassert>
#include <span>

#include "support/values/LumoAttributeAccess.h"

class OrvaEquation;
class OrvaEvent;
class OrvaSystem;

// A variable of a Boolean system: an input variable, which stands for a basic event or for a
// module, or the left member of one equation.
//
// The search lives on these records, so what it touches stands first, together: the value, the
// tables of the equations in which the variable occurs, the definition, the cutset value.
class OrvaVariable : public LumoAttributeAccess<OrvaVariable> {
 public:
  // What the search knows of a variable: necessarily means fixed on the current branch.
  enum Value : int {
    POSSIBLY_FALSE = 0,
    POSSIBLY_TRUE = 1,
    NECESSARILY_FALSE = 2,
    NECESSARILY_TRUE = 3,
  };

  OrvaVariable();
  ~OrvaVariable();
  OrvaVariable(const OrvaVariable&) = delete;
  OrvaVariable& operator=(const OrvaVariable&) = delete;
  // Back to a new variable, but for the system, the number, the index in the store, the ranks, the
  // weight and the flag.
  void Reset();

  // The value of the negated literal.
  static Value GetOpposite(Value value) { return _oppositeTable[static_cast<unsigned>(value)]; }
  static bool IsFixed(Value value) { return value >= NECESSARILY_FALSE; }

  // Values of the search.
  Value GetCandidateValue() const { return _candidateValue; }
  void SetCandidateValue(Value value) { _candidateValue = value; }
  bool IsFixed() const { return IsFixed(_candidateValue); }
  // The value waiting on the unit stack, 0 for none.
  Value GetUnitValue() const { return _unitValue; }
  void SetUnitValue(Value value) { _unitValue = value; }
  // One more word of the walker's, cleared with these values. Of an input variable it is the
  // position on the path of the last cutset, 0 off the path; of the others, how many literals of
  // the definition need not be looked at.
  int GetWalkWord() const { return _walkWord; }
  void SetWalkWord(int word) { _walkWord = word; }
  int GetPathPosition() const {
    assert(IsInputVariable());
    return _walkWord;
  }
  void SetPathPosition(int position) {
    assert(IsInputVariable() && position >= 0);
    _walkWord = position;
  }
  int GetNumberOfPassedLiterals() const {
    assert(!IsInputVariable());
    return _walkWord;
  }
  void SetNumberOfPassedLiterals(int n) {
    assert(!IsInputVariable() && n >= 0);
    _walkWord = n;
  }
  int GetFlag() const { return _flag; }
  void SetFlag(int flag) { _flag = flag; }

  // The value under the current cutset: of an input variable, whether it is in; of the others,
  // what follows. Setting it carries the change upward through the equations' cutset counts.
  bool GetCutsetValue() const { return _cutsetValue; }
  void SatisfyInCutset();
  void FalsifyInCutset();
  // Sets the value without carrying it upward.
  void ResetCutsetValue(bool value) { _cutsetValue = value; }

  bool IsInputVariable() const { return _definition == nullptr; }
  bool IsOutputVariable() const { return GetNumberOfOccurrences() == 0; }

  // The equation whose left member the variable is, null for an input variable. Not owned.
  OrvaEquation* GetDefinition() const { return _definition; }
  void SetDefinition(OrvaEquation* equation) { _definition = equation; }

  // The equations in which the variable occurs as a positive or as a negative literal, in equation
  // order, once per literal. The tables are owned. `i` counts from 0.
  std::span<OrvaEquation* const> GetPositiveOccurrences() const {
    return {_occurrences[1], static_cast<std::size_t>(_numbersOfOccurrences[1])};
  }
  std::span<OrvaEquation* const> GetNegativeOccurrences() const {
    return {_occurrences[0], static_cast<std::size_t>(_numbersOfOccurrences[0])};
  }
  void SetOccurrence(int i, OrvaEquation* equation, bool sign) {
    assert(i >= 0 && i <= _numbersOfOccurrences[sign ? 1 : 0]);  // the number follows the table
    _occurrences[sign ? 1 : 0][i] = equation;
  }
  int GetNumberOfOccurrences() const { return _numbersOfOccurrences[0] + _numbersOfOccurrences[1]; }
  int GetNumberOfOccurrences(bool sign) const { return _numbersOfOccurrences[sign ? 1 : 0]; }
  void SetNumberOfOccurrences(bool sign, int n) { _numbersOfOccurrences[sign ? 1 : 0] = n; }
  // Tables of the current numbers, all null; none for a number of 0.
  void CreateOccurrenceTables();

  // The probability of a basic event or the sum over a module's cutsets, and the highest among
  // the latter (the same number for a basic event). 1.0 at construction.
  double GetProbability() const { return _probability; }
  void SetProbability(double probability) { _probability = probability; }
  double GetHighestCutsetProbability() const { return _highestCutsetProbability; }
  void SetHighestCutsetProbability(double probability) { _highestCutsetProbability = probability; }
  // The index of the event in the cutset node store.
  int GetMCSIndex() const { return _mcsIndex; }
  void SetMCSIndex(int index) { _mcsIndex = index; }

  void SetSystem(OrvaSystem* system) { _system = system; }
  int GetNumber() const { return _number; }
  void SetNumber(int number) { _number = number; }
  const char* GetName() const { return _name; }
  void SetName(const char* name);
  // The model event, null for none. Not owned.
  OrvaEvent* GetEvent() const { return _event; }
  void SetEvent(OrvaEvent* event) { _event = event; }

  int CompareName(const char* name) const;
  int CompareNames(const OrvaVariable* other) const { return CompareName(other->_name); }
  static int CompareNames(const void* a, const void* b);

  // Sets the flag of this variable and of those below it in the definitions, stopping where it is
  // set already.
  void SetFlagsOfDescendants(int flag);

  // Offered to users of the class; the program itself does not call what follows.
  // "<>F", "<>T", "[]F", "[]T"; null for any other code.
  static const char* GetCandidateValueString(int value);
  const char* GetCandidateValueString() const { return GetCandidateValueString(_candidateValue); }
  // "[]T" or "[]F".
  const char* GetCutsetValueString() const;
  // The value of "x equals y".
  static Value GetEquality(Value x, Value y) {
    return _equalityTable[static_cast<unsigned>(x)][static_cast<unsigned>(y)];
  }
  void SetCutsetValue(bool value) { value ? SatisfyInCutset() : FalsifyInCutset(); }
  bool IsInternalVariable() const { return _definition != nullptr; }
  OrvaEquation* GetOccurrence(int i, bool sign) const {
    assert(i >= 0 && i < _numbersOfOccurrences[sign ? 1 : 0]);
    return _occurrences[sign ? 1 : 0][i];
  }
  OrvaEquation* GetPositiveOccurrence(int i) const { return GetOccurrence(i, true); }
  OrvaEquation* GetNegativeOccurrence(int i) const { return GetOccurrence(i, false); }
  OrvaSystem* GetSystem() const { return _system; }
  // For heuristics that order variables.
  int GetProbabilityRank() const { return _probabilityRank; }
  void SetProbabilityRank(int rank) { _probabilityRank = rank; }
  int GetRank() const { return _rank; }
  void SetRank(int rank) { _rank = rank; }
  double GetWeight() const { return _weight; }
  void SetWeight(double weight) { _weight = weight; }
  void IncrementWeight() { _weight += 1.0; }
  void DecayWeight(double factor) { _weight *= factor; }
  int CompareRank(int rank) const { return _rank - rank; }
  int CompareRanks(const OrvaVariable* other) const { return CompareRank(other->_rank); }
  static int CompareRanks(const void* a, const void* b);
  // The highest probability first.
  static int CompareHighestCutsetProbabilities(const void* a, const void* b);
  static int CompareName(const void* variable, const void* name);
  // As for descendants, above the variable: through the left members of the equations in which it
  // occurs, the positive ones first.
  void SetFlagsOfAncestors(int flag);

 private:
  friend LumoAttributeAccess<OrvaVariable>;

  static constexpr std::array<Value, 4> _oppositeTable = {POSSIBLY_TRUE, POSSIBLY_FALSE,
                                                          NECESSARILY_TRUE, NECESSARILY_FALSE};
  static constexpr std::array<std::array<Value, 4>, 4> _equalityTable = {{
      {POSSIBLY_TRUE, POSSIBLY_FALSE, POSSIBLY_TRUE, POSSIBLY_FALSE},
      {POSSIBLY_FALSE, POSSIBLY_TRUE, POSSIBLY_FALSE, POSSIBLY_TRUE},
      {POSSIBLY_TRUE, POSSIBLY_FALSE, NECESSARILY_TRUE, NECESSARILY_FALSE},
      {POSSIBLY_FALSE, POSSIBLY_TRUE, NECESSARILY_FALSE, NECESSARILY_TRUE},
  }};

  void _ChangeCutsetValue();
  void _Schedule(OrvaVariable*& pending);

  Value _candidateValue = POSSIBLY_FALSE;
  Value _unitValue = POSSIBLY_FALSE;
  int _numbersOfOccurrences[2] = {0, 0};                // negative, positive
  OrvaEquation** _occurrences[2] = {nullptr, nullptr};  // negative, positive
  OrvaEquation* _definition = nullptr;
  bool _cutsetValue = false;
  bool _isScheduled = false;
  int _flag = 0;
  OrvaVariable* _nextScheduled = nullptr;
  double _highestCutsetProbability = 1.0;
  int _mcsIndex = 0;
  int _walkWord = 0;

  double _probability = 1.0;
  OrvaSystem* _system = nullptr;
  int _number = 0;
  int _probabilityRank = 0;
  int _rank = 0;
  double _weight = 0.0;
  char* _name = nullptr;
  OrvaEvent* _event = nullptr;
  LumoAttributeList _attributes;
};
