#pragma once

#include <span>

#include "support/containers/LumoAVLTree.h"
#include "system/OrvaEquation.h"

// The flat Boolean form of one top event: fixed arrays of variables and of threshold equations,
// each equation defining one variable. The system owns both.
class OrvaSystem {
 public:
  // Numbers count from 0. Variables are named afterwards.
  OrvaSystem(int numberOfVariables, int numberOfEquations);
  ~OrvaSystem();
  OrvaSystem(const OrvaSystem&) = delete;
  OrvaSystem& operator=(const OrvaSystem&) = delete;
  // Unnames the system, resets every variable and every equation.
  void Reset();

  const char* GetName() const { return _name; }
  void SetName(const char* name);

  int GetNumberOfVariables() const { return _numberOfVariables; }
  std::span<OrvaVariable> GetVariables() {
    return {_variables, static_cast<std::size_t>(_numberOfVariables)};
  }
  // Null outside the array.
  OrvaVariable* GetVariable(int i) const;
  // Names variable i and enters it into the dictionary.
  void SetVariable(int i, const char* name);
  // The named variables in name order.
  const LumoAVLTree& GetDictionary() const { return _dictionary; }
  // Inserts all variables.
  void CollectVariables(LumoContainer* result) const;
  // The numbers of input variables, and of those among them that stand for modules.
  int GetNumberOfAtomicVariables() const;
  int GetNumberOfModules() const;

  int GetNumberOfEquations() const { return _numberOfEquations; }
  std::span<OrvaEquation> GetEquations() {
    return {_equations, static_cast<std::size_t>(_numberOfEquations)};
  }
  OrvaEquation* GetEquation(int i) const;

  // The last variable, in array order, that occurs nowhere; null before BuildListsOfOccurrences.
  OrvaVariable* GetTopVariable() const { return _topVariable; }

  // Fills the occurrence tables of all variables from the equations, and finds the top variable.
  void BuildListsOfOccurrences();
  // From the top down: unfixes every variable, counts every equation afresh, and makes every input
  // variable false in the cutset; the cutset values of the others stay.
  void ResetWalkValuations();
  // The same for a search about to start, with the cutset values of all variables.
  void ResetVariableValues();

  // Whether all values below the top are as the reset for a search leaves them, for assertions.
  bool AreWalkValuesReset();

  // Offered to users of the class; the program itself does not call what follows.
  // Null when no variable has that name.
  OrvaVariable* GetVariable(const char* name) const;
  void ChangeNameOfVariable(OrvaVariable* variable, const char* name);
  // The cursor on the named variables, in name order, is the caller's.
  LumoCursor* NewCursorOnDictionary() { return _dictionary.NewCursor(); }
  // Insert the variables that the predicate accepts, or those that match.
  void CollectVariables(LumoContainer* result, LumoContainer::Predicate predicate) const;
  void CollectVariables(LumoContainer* result, LumoContainer::Match match, const void* key) const;
  bool GetVariableCutsetValue(const OrvaVariable* variable) const {
    return variable->GetCutsetValue();
  }
  // Does nothing for a variable that is no input variable.
  void SetVariableCutsetValue(OrvaVariable* variable, bool value);

 private:
  template <class Visit>
  void _VisitVariablesBelowTop(Visit visit);
  static void _ResetInputVariable(OrvaVariable* variable);
  static void _ResetGateVariable(OrvaVariable* variable);
  static bool _IsReset(const OrvaVariable* variable);

  char* _name = nullptr;
  LumoAVLTree _dictionary;
  OrvaVariable* _variables;  // owned
  int _numberOfVariables;
  OrvaVariable* _topVariable = nullptr;
  OrvaEquation* _equations;  // owned
  int _numberOfEquations;
};
