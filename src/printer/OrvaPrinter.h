#pragma once

#include "xml/LumoXMLPrinter.h"

class LumoStream;
class OrvaEvent;
class OrvaHandle;
class OrvaInterpreter;
class OrvaMCSSet;
class OrvaOptionCenter;
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

 private:
  OrvaInterpreter* _interpreter;
  OrvaOptionCenter* _optionCenter = nullptr;
};
