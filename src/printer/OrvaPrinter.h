#pragma once

#include <cstdio>

#include "xml/LumoXMLPrinter.h"

class LumoStream;
class LumoXMLDocument;
class LumoXMLNode;
class OrvaEquation;
class OrvaEvent;
class OrvaHandle;
class OrvaInterpreter;
class OrvaMCSSet;
class OrvaOptionCenter;
class OrvaSystem;
class OrvaVariable;
class OrvaWalkObserver;

// Writes results as text tables: one tab between fields, one line per row, reals with six
// significant digits. The printer computes nothing and reports no error: it writes what was
// computed last.
class OrvaPrinter : public LumoXMLPrinter {
 public:
  explicit OrvaPrinter(OrvaInterpreter* interpreter);
  ~OrvaPrinter() override;

  OrvaInterpreter* GetInterpreter() const { return _interpreter; }
  OrvaOptionCenter* GetOptionCenter() const { return _optionCenter; }
  // Takes the option center from the interpreter again.
  void UpdateOptionCenter();

  // Column switches, set from the options of each command.
  bool printMinimalCutsetRank = false;
  bool printMinimalCutsetOrder = false;
  bool printMinimalCutsetProbability = false;
  bool printMinimalCutsetContribution = false;

  // "top-event", "mission-time" and "probability": a header and one row.
  void PrintTopEventProbability(const OrvaEvent* top, const OrvaHandle* handle, double missionTime,
                                LumoStream* stream);

  // One row per minimal cutset, the most probable first, equal ones in the order of the set: the
  // columns that are switched on (rank, order, probability, share in the sum), then the names of
  // the basic events in alphabetical order. Nothing for a set without cutsets or with the empty
  // one only. The store's probabilities must be those of the mission time.
  void PrintMinimalCutsets(OrvaMCSSet* set, LumoStream* stream);
  // "order" and "#MCS", a row for each order that occurs, and the total.
  void PrintOrdersOfMinimalCutsets(const OrvaMCSSet* set, LumoStream* stream);
  // The statistics of a walk, in blocks of labels and values.
  void PrintWalkObserver(const OrvaWalkObserver* observer, LumoStream* stream);

  // Systems. "talvik": one equation per line, g := @(k,[literals]); with "-" before a negative
  // literal, then each module that has a system of the same name, behind a comment.
  void PrintEquationAtTalvikFormat(const OrvaEquation* equation, LumoStream* stream);
  void PrintSystemAtTalvikFormat(OrvaSystem* system, LumoStream* stream);
  // "excel": the top variable and the numbers of gates, basic events and modules; then for each
  // equation its variable, its threshold, the number of its literals, and the literals.
  void PrintEquationAtExcelFormat(const OrvaEquation* equation, LumoStream* stream);
  void PrintSystemAtExcelFormat(OrvaSystem* system, LumoStream* stream);
  // "open-psa": a new document, the caller's, with an "atleast" gate per equation and a basic
  // event per input variable. The other forms write it to a file; one that can't be opened sets
  // `error`.
  void UploadSystem(int& error, OrvaSystem* system, LumoXMLDocument*& document);
  void UploadSystem(int& error, OrvaSystem* system, std::FILE* file);
  void UploadSystem(int& error, OrvaSystem* system, const char* path);

 private:
  void _UploadInputVariables(int& error, OrvaSystem* system, LumoXMLNode* root);
  void _UploadInputVariable(int& error, const OrvaVariable* variable, LumoXMLNode*& node);
  void _UploadRealValue(int& error, double x, LumoXMLNode*& node);

  OrvaInterpreter* _interpreter;
  OrvaOptionCenter* _optionCenter = nullptr;
};
