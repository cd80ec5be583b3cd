#pragma once

#include <cstdint>
#include <vector>

#include "search/OrvaCutset.h"
#include "search/OrvaMCSPath.h"
#include "search/OrvaResolvant.h"
#include "search/OrvaStack.h"
#include "search/OrvaUnitStack.h"
#include "search/OrvaWalkObserver.h"
#include "store/OrvaMCSSet.h"
#include "system/OrvaSystem.h"

class LumoStream;
class OrvaEvent;

// The search for the minimal cutsets of the top variable of a system.
//
// It enumerates, depth first, the ways to make the top variable true. A branch is a set of fixed
// values; every other variable keeps the value that it has when all unfixed basic events are
// false. Setting a value moves the counters of the equations around it, and what follows of
// necessity is pushed onto the unit stack and set next. A gate that must have a value which its
// formula does not have yet waits in the resolvant; the last such gate chooses the next variable.
// When none is left, the basic events set true are a cutset, which is kept if it is minimal.
//
// One walker serves many walks, one at a time. Conflicts are statuses: nothing is reported.
class OrvaWalker {
 public:
  enum BranchStatus : int {
    FALSIFIED = 0,  // a conflict: a dead end
    SATISFIED = 1,  // every requirement is justified
    PRUNED = 2,     // one more basic event would break the cutoff
    COMPLETED = 3,  // the walk is over
    PARTIAL = 4,    // the branch is still being extended
  };

  // The manager is not owned.
  explicit OrvaWalker(OrvaMCSManager* manager);
  ~OrvaWalker();
  OrvaWalker(const OrvaWalker&) = delete;
  OrvaWalker& operator=(const OrvaWalker&) = delete;

  // Adds the minimal cutsets of the system under the cutoff to the set, as far as their paths end
  // in undeveloped leaves of its tree.
  void BuildMinimalCutsetTree(OrvaSystem* system, const OrvaCutoff* cutoff, OrvaMCSSet* set);

  // Replaces, in the top event's set of that handle name, every module by the cutsets in the
  // module's own set of the same name. Each basic event spends one unit of the maximum order and
  // divides the minimum probability by its own; what exceeds the limits is cut off.
  void ExpandMinimalCutset(OrvaEvent* top, OrvaSystem* system, const char* handleName,
                           const OrvaCutoff* cutoff);

  OrvaWalkObserver* GetObserver() { return &_observer; }

  // Offered to users of the class; the program itself does not call what follows.
  OrvaMCSManager* GetMCSManager() const { return _manager; }
  const OrvaStack* GetStack() const { return &_stack; }
  const OrvaCutset* GetCutset() const { return &_cutset; }
  // Null between walks.
  OrvaSystem* GetSystem() const { return _system; }
  const OrvaCutoff* GetCutoff() const { return _cutoff; }
  OrvaMCSNode* GetRootNode() const { return _root; }
  OrvaVariable* GetTopVariable() const { return _topVariable; }
  // Null for an unknown status.
  static const char* GetBranchStatusString(int status);
  const char* GetBranchStatusString() const { return GetBranchStatusString(_status); }

 private:
  friend class OrvaWalkerTest;

  void _InitializeWalk(OrvaSystem* system, const OrvaCutoff* cutoff, OrvaMCSSet* set);
  void _LoadVariablesInMinimalCutsetManager();
  void _UnloadVariablesFromMinimalCutsetManager();
  void _ResetVariableValues();
  void _TerminateWalk();
  void _WalkFromTop();

  void _BuildMinimalCutsetTree();
  void _CloseBranch();
  void _CloseSatisfiedBranch();
  void _CompleteBranch();
  void _UnitPropagate();
  void _Choose(OrvaVariable* variable, OrvaVariable::Value value);
  bool _SelectVariable(OrvaVariable*& variable, OrvaVariable::Value& value);
  void _SelectFanin(OrvaVariable* gate, OrvaVariable::Value literalValue,
                    OrvaVariable::Value valueOfPositive, OrvaVariable*& variable,
                    OrvaVariable::Value& value);
  void _NoteScan(OrvaVariable* gate, int position);
  void _UndoScans();
  void _Backtrack();

  void _SetCandidateValueOfVariable(OrvaVariable* variable, OrvaVariable::Value value);
  void _RequireValueOfGate(OrvaVariable* gate);
  void _ResetCandidateValueOfVariable(OrvaVariable* variable, OrvaVariable::Value value);
  void _UpdateStatusOfLeftMemberOfEquation(OrvaEquation* equation);
  void _PushFaninsOntoUnitStack(OrvaEquation* equation);
  void _EndPropagation();
  void _PushOntoUnitStack(OrvaVariable* variable, OrvaVariable::Value value);

  bool _StoreMinimalCutset();
  void _StoreMinimalCutset(int position, OrvaMCSNode* leaf);

  OrvaMCSNode* _ExpandMinimalCutset(OrvaMCSNode* root, int order, double probability);

  // What assertions ask for.
  bool _IsAtRest() const;
  bool _ArePushed(const OrvaEquation* equation) const;
  bool _IsAssignmentRight() const;
  bool _IsCutsetPath(const OrvaMCSNode* leaf) const;

  // Debugging dumps, for use from a debugger and in tests.
  void _DumpStack(LumoStream* stream) const;
  void _DumpUnitStack(LumoStream* stream) const;
  void _DumpCutset(LumoStream* stream) const;
  void _DumpAssignment(LumoStream* stream) const;
  void _DumpResolvant(LumoStream* stream) const;
  // The number of variables reported.
  int _CheckAssignment() const;

  // Nodes fold when nothing of these kinds lies below them: all but cutoff leaves.
  static constexpr unsigned FOLD_MASK = OrvaMCSNode::UNDEVELOPED | OrvaMCSNode::DEAD_END |
                                        OrvaMCSNode::PATHSET | OrvaMCSNode::NON_MINIMAL_CUTSET |
                                        OrvaMCSNode::INTERNAL;

  OrvaMCSManager* _manager;
  OrvaStack _stack;
  OrvaResolvant _resolvant;
  OrvaUnitStack _unitStack;
  OrvaCutset _cutset;
  OrvaSystem* _system = nullptr;
  const OrvaCutoff* _cutoff = nullptr;
  OrvaMCSNode* _root = nullptr;
  OrvaVariable* _topVariable = nullptr;
  OrvaMCSPath _path;
  // Scans of long formulas to be undone: where the stack stood, and where the scan had started.
  struct Scan {
    int stackOrder;
    OrvaVariable* gate;
    int position;
  };
  std::vector<Scan> _scans;
  BranchStatus _status = PARTIAL;
  // Counts the times that the unit stack was emptied.
  std::uint64_t _propagation = 1;
  OrvaWalkObserver _observer;
};
