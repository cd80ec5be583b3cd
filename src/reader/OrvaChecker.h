#pragma once

#include <initializer_list>

#include "model/OrvaEvent.h"

class OrvaGate;
class OrvaInterpreter;
class OrvaModel;

// Validates a loaded model before a Boolean system is built from it. Each check reports every
// fault that it finds through the interpreter and sets `error` to 1; it never resets `error` to 0
// and changes nothing in the model. Events and parameters are visited in the order of their names.
class OrvaChecker {
 public:
  explicit OrvaChecker(OrvaInterpreter* interpreter);
  ~OrvaChecker();
  OrvaChecker(const OrvaChecker&) = delete;
  OrvaChecker& operator=(const OrvaChecker&) = delete;

  void CheckGateDefinitions(int& error, const OrvaModel* model);
  void CheckBasicEventDefinitions(int& error, const OrvaModel* model);
  void CheckHouseEventDefinitions(int& error, const OrvaModel* model);
  void CheckParameterDefinitions(int& error, const OrvaModel* model);
  // All events at once; those of unspecified type are reported as such.
  void CheckEventDefinitions(int& error, const OrvaModel* model);
  // Exactly one event, of whatever type, is referenced by nothing.
  void CheckTopEventUniqueness(int& error, const OrvaModel* model);
  // Every gate of the model, below a top event or not, has a flat formula: one operator over
  // literals. A house event with a value is a gate with a constant formula, which is not flat.
  void CheckNormalForm(int& error, const OrvaModel* model);
  // The gates that members of common-cause failure groups are going to be have names of their own.
  void CheckCCFGroups(int& error, const OrvaModel* model);
  // No gate, no parameter is used by its own definition, directly or through others. One ring is
  // reported. Normalisation and systems need the former, evaluation the latter.
  void CheckCyclesOfGates(int& error, const OrvaModel* model);
  void CheckCyclesOfParameters(int& error, const OrvaModel* model);
  // Gates, basic events, house events, parameters, the normal form and cycles, in this order.
  void CheckModel(int& error, const OrvaModel* model);

 private:
  struct Fault;
  void _CheckDefinitions(int& error, const OrvaModel* model, std::initializer_list<Fault> faults);
  void _CheckCycles(int& error, const LumoContainer* symbols, const char* message);
  void _Report(int& error, const char* format, const OrvaSymbol* symbol);
  static bool _IsGateBuildable(const OrvaGate* gate);

  OrvaInterpreter* _interpreter;
};
