#pragma once

#include <unordered_set>

#include "model/OrvaEvent.h"
#include "model/OrvaGate.h"

class OrvaInterpreter;
class OrvaModel;
class OrvaModuleRecord;

// Rewrites, in place, the formulas below a top event so that they become flat and free of
// constants, and finds the modules among them. Only coalescing sets `error`, where it meets its
// limit: what can't be built afterwards is the model checker's to report.
class OrvaRewriter {
 public:
  static constexpr const char* DEFAULT_GATE_PREFIX = "XB";

  explicit OrvaRewriter(OrvaInterpreter* interpreter);
  ~OrvaRewriter();
  OrvaRewriter(const OrvaRewriter&) = delete;
  OrvaRewriter& operator=(const OrvaRewriter&) = delete;

  // Expands the common-cause failure groups of the model, then runs the four steps that are offered
  // one by one below, each over all definitions below the top before the next. The definitions must
  // be free of cycles.
  // When coalescing would make more than the maximum number of copies, or look at ten times as many
  // children, it stops, `error` is set to 1, and the formulas are what has become of them so far: a
  // chain of n gates of one operator takes n²/2 copies, of some 200 bytes each.
  void NormalizeModel(int& error, OrvaModel* model, OrvaEvent* top);

  // Dates every event below `top`: see OrvaModuleRecord.
  void DetectModules(OrvaModel* model, OrvaEvent* top);
  // Detects modules, gathers the independent children of gates that are no modules into new
  // gates, and detects again.
  void Modularize(OrvaModel* model, OrvaEvent* top);

  // Adds a gate without definition under the next free name made of the prefix and a number.
  OrvaEvent* GenerateGate(OrvaModel* model);

  // Offered to users of the class; the program itself does not call what follows.
  OrvaInterpreter* GetInterpreter() const { return _interpreter; }
  // Each step visits the definitions below `top`, every gate after the gates that it references.
  // Constants disappear, from house events, empty gates and thresholds that are met or out of
  // reach; a gate left with one child becomes that child, also for NAND and NOR (without negation:
  // this simplification is the defined behaviour).
  void PropagateConstants(int& error, OrvaModel* model, OrvaEvent* top);
  // References to aliases and negations of other events become references to these.
  void DereferenceVariables(int& error, OrvaModel* model, OrvaEvent* top);
  // A child of an AND (OR) that references a gate of the same operator gives way to copies of that
  // gate's children, except of references that the gate has gathered already: they would be
  // duplicates, and a ladder of shared gates would double them at each level. Sets `error` where it
  // stops short, as in NormalizeModel.
  void CoalesceGates(int& error, OrvaModel* model, OrvaEvent* top);
  // A repeated reference in an AND or OR goes; repeated negations stay.
  void RemoveDuplicatedChildren(int& error, OrvaModel* model, OrvaEvent* top);
  int GetMaximumNumberOfCopies() const { return _maximumNumberOfCopies; }
  void SetMaximumNumberOfCopies(int n) { _maximumNumberOfCopies = n; }
  const char* GetGeneratedGatePrefix() const { return _generatedGatePrefix; }
  // Copies the prefix; numbers start at 1 again.
  void SetGeneratedGatePrefix(const char* prefix);
  int GetGeneratedGateNumber() const { return _generatedGateNumber; }

 private:
  void _CollectDefinedEvents(OrvaEvent* top, LumoList* events);
  // The steps, on the definitions of events in post-order.
  void _PropagateConstants(const LumoList& events);
  void _DereferenceVariables(const LumoList& events);
  void _CoalesceGates(int& error, OrvaModel* model, const LumoList& events);
  void _RemoveDuplicatedChildren(OrvaModel* model, const LumoList& events);

  void _PropagateConstants(OrvaGate* gate);
  void _PropagateConstantsInDescendants(OrvaGate* gate);
  struct ConstantChildren {
    int numberOfFalse = 0;
    int numberOfTrue = 0;
  };
  ConstantChildren _DeleteConstantChildren(OrvaGate* gate);
  void _PropagateConstantsInEvent(OrvaGate* gate);
  void _PropagateConstantsInNot(OrvaGate* gate, const ConstantChildren& constants);
  void _PropagateConstantsInOperator(OrvaGate* gate, const ConstantChildren& constants);
  void _PropagateConstantsInThreshold(OrvaGate* gate, const ConstantChildren& constants);
  void _SubstituteUniqueChildForGate(OrvaGate* gate);

  void _DereferenceVariables(OrvaGate* gate);
  void _DereferenceReference(OrvaGate* gate);
  void _ReplaceDoubleNegation(OrvaGate* gate);
  bool _DereferenceEvent(OrvaEvent*& event, bool& isPositive);

  bool _IsCoalescingTooLong() const;
  void _CoalesceGate(OrvaModel* model, OrvaGate* gate);
  void _InsertNewChildrenBefore(OrvaModel* model, OrvaGate* gate, LumoListCursor* cursor,
                                const OrvaGate* definition);
  void _RemoveDuplicatedChildren(OrvaModel* model, OrvaGate* gate);
  static bool _IsMarked(const OrvaGate* reference);
  static void _Mark(OrvaGate* reference);
  void _UnmarkChildren(OrvaGate* gate);

  // The normal form, step by step, for assertions.
  static bool _IsFreeOfConstants(const OrvaGate* gate);
  bool _IsDereferenced(const OrvaGate* gate) const;
  static bool _IsCoalesced(const OrvaGate* gate);
  static bool _IsFreeOfDuplicates(const OrvaGate* gate);
  static bool _HasNoMarks(const OrvaGate* gate);

  OrvaModuleRecord* _GetModuleRecord(OrvaEvent* event);
  void _InheritModuleDates(OrvaEvent* top, int& date);
  void _SynthesizeModuleDates(OrvaEvent* top, int& low, int& high);
  bool _IsModule(const OrvaEvent* event) const { return event->IsModule(); }
  bool _IsModularizable(const OrvaEvent* event) const;
  bool _IsModularizable(const OrvaGate* gate) const;
  void _GatherModules(OrvaModel* model, OrvaGate* gate);

  OrvaInterpreter* _interpreter;
  char* _generatedGatePrefix;
  int _generatedGateNumber = 0;
  int _numberOfCopies = 0;
  long _numberOfVisits = 0;
  int _maximumNumberOfCopies = 10000000;
  // In a pass of dereferencing: events whose chains lead to no event.
  std::unordered_set<const OrvaEvent*> _deadEnds;
};
