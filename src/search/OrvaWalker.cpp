// The search, from top to bottom in the order of a walk: its start and end, the walk from branch to
// branch, the choice of the branching variable, values and what follows from them, the storing.
//
// The inner loop is _SetCandidateValueOfVariable: two counters of each equation around the variable
// move by one, and each of these equations is asked whether its left member, or what is left of its
// literals, is forced now. Shares of 2,330 million instructions, counted on a plant of 1,962 gates
// and 3,028 basic events at a minimum probability of 1e-10 (in the top's own system 2.3 million
// values implied, 245,000 chosen and 1.35 million refused by the cutoff, for 11,744 cutsets):
//
//   setting a value, with the look at each equation   45.0 %
//   undoing it, which only moves the counters back    12.6 %
//   selecting the branching variable                  10.5 %
//   the loop of the unit propagation                   6.2 %
//   the loop of the backtracking                       5.8 %
//   testing for minimality                             5.7 %
//   choosing                                           3.1 %
//   pushing literals                                   1.8 %
//   requiring the value of a gate                      1.5 %
//   completing a branch, storing                       1.4 %
//   reading, rewriting, building and summing up        6.4 %
//
// So the counters are moved and never counted afresh, a literal is read only to be pushed or
// chosen, what the loop reads of a variable and of an equation stands together at the front of its
// record, nothing is allocated during a walk (but by long scans), and no call is virtual.

#include "search/OrvaWalker.h"

#include <cassert>
#include <iterator>
#include <span>

#include "quantification/OrvaVariableIndices.h"
#include "support/memory/LumoMemoryManager.h"

using Value = OrvaVariable::Value;

namespace {

constexpr int STACK_CAPACITY = 4096;
constexpr int SMALL_STACK_CAPACITY = 1024;
constexpr int LONG_SCAN = 32;

constexpr const char* BRANCH_STATUS_STRINGS[] = {"FALSIFIED", "SATISFIED", "PRUNED", "COMPLETED",
                                                 "PARTIAL"};

bool IsInput(const OrvaVariable* variable) { return variable->IsInputVariable(); }

}  // namespace

OrvaWalker::OrvaWalker(OrvaMCSManager* manager)
    : _manager(manager),
      _stack(STACK_CAPACITY),
      _resolvant(SMALL_STACK_CAPACITY),
      _unitStack(SMALL_STACK_CAPACITY),
      _cutset(SMALL_STACK_CAPACITY) {
  LumoMemoryManager::TraceNew(this, "OrvaWalker");
}

OrvaWalker::~OrvaWalker() { LumoMemoryManager::TraceDelete(this, "OrvaWalker"); }

// Start and end of a walk.

void OrvaWalker::BuildMinimalCutsetTree(OrvaSystem* system, const OrvaCutoff* cutoff,
                                        OrvaMCSSet* set) {
  assert(_IsAtRest());
  _InitializeWalk(system, cutoff, set);
  _status = PARTIAL;
  // A top event that is a basic event refused by the cutoff yields nothing and counts nothing.
  if (IsInput(_topVariable) && !_cutset.CheckCutoffAhead(_topVariable)) {
    _status = PRUNED;
  } else {
    _WalkFromTop();
  }
  _TerminateWalk();
  assert(_IsAtRest() && system->AreWalkValuesReset());
}

void OrvaWalker::_InitializeWalk(OrvaSystem* system, const OrvaCutoff* cutoff, OrvaMCSSet* set) {
  _system = system;
  _cutoff = cutoff;
  _root = set->GetRootNode();
  _topVariable = system->GetTopVariable();
  assert(_root != nullptr && _topVariable != nullptr);
  _LoadVariablesInMinimalCutsetManager();
  _stack.InitializeWalk(system, cutoff);
  _resolvant.InitializeWalk(system);
  _unitStack.InitializeWalk(system);
  _cutset.InitializeWalk(system, cutoff);
  _observer.Reset();
  _ResetVariableValues();
  _path.Start(_root);
}

// Between the entries and the variables of the walk, both ways.
void OrvaWalker::_LoadVariablesInMinimalCutsetManager() {
  OrvaIndexInputVariables(_system, _manager);
  for (OrvaVariable& variable : _system->GetVariables()) {
    if (IsInput(&variable)) _manager->SetVariable(variable.GetMCSIndex(), &variable);
  }
}

// A system may be gone when the next walk meets the same tree: no entry keeps a variable.
void OrvaWalker::_UnloadVariablesFromMinimalCutsetManager() {
  for (const OrvaVariable& variable : _system->GetVariables()) {
    if (IsInput(&variable)) _manager->SetVariable(variable.GetMCSIndex(), nullptr);
  }
}

void OrvaWalker::_ResetVariableValues() { _system->ResetVariableValues(); }

void OrvaWalker::_WalkFromTop() {
  const Value old = _topVariable->GetCandidateValue();
  _stack.Push(_topVariable, old, 0, OrvaStack::UNIT);
  if (IsInput(_topVariable)) _cutset.Push(_topVariable);
  _SetCandidateValueOfVariable(_topVariable, OrvaVariable::NECESSARILY_TRUE);
  _stack.SetLastChoicePoint(1);
  _BuildMinimalCutsetTree();
  _Backtrack();
  assert(_stack.GetOrder() == 1 && _topVariable->IsFixed());
  if (IsInput(_topVariable)) _cutset.Pop();
  _ResetCandidateValueOfVariable(_topVariable, old);
}

void OrvaWalker::_TerminateWalk() {
  _UnloadVariablesFromMinimalCutsetManager();
  _cutset.TerminateWalk();
  _unitStack.TerminateWalk();
  _resolvant.TerminateWalk();
  _stack.TerminateWalk();
  _path.Clear();
  _scans.clear();
  _system = nullptr;
  _cutoff = nullptr;
  _root = nullptr;
  _topVariable = nullptr;
}

// The walk: branch after branch, until the stack is back where it started.

void OrvaWalker::_BuildMinimalCutsetTree() {
  const int lastChoicePoint = _stack.GetLastChoicePoint();
  _stack.SetLastChoicePoint(_stack.GetOrder());
  while (_status != COMPLETED) {
    _CompleteBranch();
    _CloseBranch();
    _Backtrack();
  }
  _stack.SetLastChoicePoint(lastChoicePoint);
}

void OrvaWalker::_CloseBranch() {
  assert(_unitStack.IsEmpty() && _status != PARTIAL && _status != COMPLETED);
  switch (_status) {
    case SATISFIED:
      _CloseSatisfiedBranch();
      break;
    case PRUNED:
      ++_observer.cutoffs;
      break;
    case FALSIFIED:
      ++_observer.deadEnds;
      break;
    default:
      break;
  }
}

void OrvaWalker::_CloseSatisfiedBranch() {
  const bool isMinimal = _cutset.CheckMinimality();
  assert(_IsAssignmentRight());
  if (!isMinimal) {
    ++_observer.nonMinimalCutsets;
  } else if (_StoreMinimalCutset()) {
    ++_observer.minimalCutsets;
  } else {
    ++_observer.knownMinimalCutsets;
  }
}

// The status starts afresh, whatever a second choice made of it: as it is defined.
void OrvaWalker::_CompleteBranch() {
  _status = PARTIAL;
  while (_status == PARTIAL) {
    _UnitPropagate();
    if (_status != PARTIAL) break;
    OrvaVariable* variable;
    Value value;
    if (_SelectVariable(variable, value)) {
      _Choose(variable, value);
    } else {
      _status = SATISFIED;
    }
  }
  _EndPropagation();
}

// Sets what is implied, the last implied first.
void OrvaWalker::_UnitPropagate() {
  while (!_unitStack.IsEmpty() && _status == PARTIAL) {
    OrvaVariable* variable;
    Value value;
    ++_observer.unit;
    _unitStack.Pop(variable, value);
    assert(!variable->IsFixed());
    const bool entersCutset = IsInput(variable) && value == OrvaVariable::NECESSARILY_TRUE;
    if (entersCutset && !_cutset.CheckCutoffAhead(variable)) {
      _status = PRUNED;
      break;
    }
    _stack.Push(variable, variable->GetCandidateValue(), _resolvant.GetOrder(), OrvaStack::UNIT);
    if (entersCutset) _cutset.Push(variable);
    _SetCandidateValueOfVariable(variable, value);
  }
  _EndPropagation();
}

// Sets a chosen variable. The cutoff is looked at for every basic event, whatever its value; one
// that it refuses becomes false, whatever was chosen.
void OrvaWalker::_Choose(OrvaVariable* variable, Value value) {
  const Value old = variable->GetCandidateValue();
  assert(!OrvaVariable::IsFixed(old) && OrvaVariable::IsFixed(value) && _unitStack.IsEmpty());
  if (IsInput(variable) && !_cutset.CheckCutoffAhead(variable)) {
    ++_observer.cutoff;
    _stack.Push(variable, old, _resolvant.GetOrder(), OrvaStack::CUTOFF);
    return _SetCandidateValueOfVariable(variable, OrvaVariable::NECESSARILY_FALSE);
  }
  ++_observer.branching;
  _stack.Push(variable, old, _resolvant.GetOrder(), OrvaStack::FIRST_CHOICE);
  if (IsInput(variable) && value == OrvaVariable::NECESSARILY_TRUE) _cutset.Push(variable);
  _SetCandidateValueOfVariable(variable, value);
}

// The branching variable.
//
// A gate waits in the resolvant because its formula did not have the required value when the gate
// got it. Entries are not taken out when they become justified, which would have to be undone:
// whoever looks for the next variable asks each gate again, from the last required one to the
// first, so that a formula that was started is finished before the next one. To ask them takes
// 2.8 % of the instructions.
//
// In the formula of that gate, the first literal that stands in the way is chosen, in the order of
// the table. To look for it takes 7.7 %. In an OR over 100,000 events each second choice fixes one
// more literal, and a scan from the start would pass over all of them again: n²/2 steps. So a long
// scan is noted at the gate, which knows then how many literals need not be looked at.

// False when every gate is justified.
bool OrvaWalker::_SelectVariable(OrvaVariable*& variable, Value& value) {
  for (int i = _resolvant.GetOrder() - 1; i >= 0; --i) {
    OrvaVariable* gate = _resolvant.GetVariable(i);
    assert(gate->IsFixed() && !IsInput(gate));
    const Value right = gate->GetDefinition()->GetRightMemberCandidateValue();
    if (gate->GetCandidateValue() == OrvaVariable::NECESSARILY_TRUE) {
      if (right == OrvaVariable::POSSIBLY_FALSE) {
        _SelectFanin(gate, OrvaVariable::POSSIBLY_FALSE, OrvaVariable::NECESSARILY_TRUE, variable,
                     value);
        return true;
      }
    } else if (right == OrvaVariable::POSSIBLY_TRUE) {
      _SelectFanin(gate, OrvaVariable::POSSIBLY_TRUE, OrvaVariable::NECESSARILY_FALSE, variable,
                   value);
      return true;
    }
  }
  return false;
}

// The first literal of the given value, and the value that turns it over: the given one for a
// positive literal, the opposite for a negative one. There is such a literal: without it, the right
// member would not have the value that it has.
void OrvaWalker::_SelectFanin(OrvaVariable* gate, Value literalValue, Value valueOfPositive,
                              OrvaVariable*& variable, Value& value) {
  const std::span<const OrvaLiteral> fanins = gate->GetDefinition()->GetFanins();
  const OrvaLiteral* const start = fanins.data() + gate->GetNumberOfPassedLiterals();
  const OrvaLiteral* found = start;
  while (found->GetCandidateValue() != literalValue) {
    ++found;
    assert(found < fanins.data() + fanins.size());
  }
  variable = found->GetVariable();
  value = found->GetSign() ? valueOfPositive : OrvaVariable::GetOpposite(valueOfPositive);
  if (found - start >= LONG_SCAN) _NoteScan(gate, static_cast<int>(found - fanins.data()));
}

// The literals that a scan has passed over are fixed, or never have the value that it looks for.
// While what is on the stack now stays there, so do they, and the next scan can start behind them.
void OrvaWalker::_NoteScan(OrvaVariable* gate, int position) {
  assert(_scans.empty() || _scans.back().stackOrder <= _stack.GetOrder());
  _scans.push_back({_stack.GetOrder(), gate, gate->GetNumberOfPassedLiterals()});
  gate->SetNumberOfPassedLiterals(position);
}

void OrvaWalker::_UndoScans() {
  while (!_scans.empty() && _scans.back().stackOrder > _stack.GetOrder()) {
    _scans.back().gate->SetNumberOfPassedLiterals(_scans.back().position);
    _scans.pop_back();
  }
}

// Undoes the branch up to the last choice that has another side, and takes that side. No cutoff
// is looked at then, and nothing is required of a gate, since the status is not PARTIAL: both are
// the defined behaviour.
void OrvaWalker::_Backtrack() {
  while (!_stack.IsAtLastChoicePoint()) {
    OrvaVariable* variable;
    Value old;
    int resolvantOrder;
    OrvaStack::Branching branching;
    _stack.Pop(variable, old, resolvantOrder, branching);
    _resolvant.Pop(resolvantOrder);
    // Above the last choice point the stack is not empty, which the analyser can't know:
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
    const Value current = variable->GetCandidateValue();
    const bool isInCutset = IsInput(variable) && current == OrvaVariable::NECESSARILY_TRUE;
    assert(OrvaVariable::IsFixed(current));
    assert(!isInCutset || _cutset.GetVariable(-1) == variable);
    if (isInCutset) _cutset.Pop();
    if (branching == OrvaStack::FIRST_CHOICE) {
      _UndoScans();
      _stack.Push(variable, old, resolvantOrder, OrvaStack::SECOND_CHOICE);
      if (IsInput(variable) && !isInCutset) _cutset.Push(variable);
      return _SetCandidateValueOfVariable(variable, OrvaVariable::GetOpposite(current));
    }
    _ResetCandidateValueOfVariable(variable, old);
  }
  _UndoScans();
  _status = COMPLETED;
}

// Values and what follows from them.
//
// An equation says that its left member is true exactly when k of its n literals are. Let c2 be the
// number of its literals that are necessarily false, c3 that of the necessarily true ones. From c3
// = k on the formula is true whatever comes, from c2 = n + 1 - k on it is false. A value is looked
// at from both ends: a gate that gets one asks what its formula says (_RequireValueOfGate), and a
// formula of which a literal gets one asks what its left member says
// (_UpdateStatusOfLeftMemberOfEquation).
//
// A gate that is to be true meets four cases:
//   c2 >= n + 1 - k   the formula is false for good: a dead end;
//   c3 >= k           the formula is true for good: nothing to do;
//   c2 = n - k        just k literals are left, and all of them must be true;
//   otherwise         it may yet become true in several ways. If it is true when all unfixed basic
//                     events are false, nothing is needed now; if not, the gate waits in the
//                     resolvant until a choice is made for it.
// A gate that is to be false meets their mirror images: true and false change places, and so do k
// and n + 1 - k.
//
// A left member that has its value already meets the first three of these cases again each time
// that a literal is fixed, but not the fourth: it waits in the resolvant since it got its value.
// One that has none yet gets it when a counter reaches its threshold, from the literals upward.

// Moves the counters of the equations around the variable, and looks at each.
void OrvaWalker::_SetCandidateValueOfVariable(OrvaVariable* variable, Value value) {
  assert(OrvaVariable::IsFixed(value));
  const Value old = variable->GetCandidateValue();
  variable->SetCandidateValue(value);
  if (!IsInput(variable)) variable->GetDefinition()->SetLeftValue(value);
  for (OrvaEquation* equation : variable->GetPositiveOccurrences()) {
    equation->MoveCandidate(old, value);
    _UpdateStatusOfLeftMemberOfEquation(equation);
  }
  const Value oldOpposite = OrvaVariable::GetOpposite(old);
  const Value opposite = OrvaVariable::GetOpposite(value);
  for (OrvaEquation* equation : variable->GetNegativeOccurrences()) {
    equation->MoveCandidate(oldOpposite, opposite);
    _UpdateStatusOfLeftMemberOfEquation(equation);
  }
  if (_status == PARTIAL && !IsInput(variable)) _RequireValueOfGate(variable);
}

// The four cases, from above.
void OrvaWalker::_RequireValueOfGate(OrvaVariable* gate) {
  OrvaEquation* equation = gate->GetDefinition();
  assert(gate->IsFixed() && equation->GetFanout() == gate);
  const int n = equation->GetSize();
  const int possiblyFalse = equation->GetCandidateCount(OrvaVariable::POSSIBLY_FALSE);
  const int possiblyTrue = equation->GetCandidateCount(OrvaVariable::POSSIBLY_TRUE);
  const int surelyFalse = equation->GetCandidateCount(OrvaVariable::NECESSARILY_FALSE);
  const int surelyTrue = equation->GetCandidateCount(OrvaVariable::NECESSARILY_TRUE);
  const int needTrue = equation->GetNumberOfLiteralsForTrue();
  const int needFalse = equation->GetNumberOfLiteralsForFalse();
  assert(needTrue + needFalse == n + 1);
  if (gate->GetCandidateValue() != OrvaVariable::NECESSARILY_FALSE) {
    if (surelyFalse >= needFalse) {
      _status = FALSIFIED;
    } else if (surelyTrue >= needTrue) {
      return;
    } else if (needTrue == n - surelyFalse) {
      _PushFaninsOntoUnitStack(equation);
    } else if (needTrue > surelyTrue + possiblyTrue) {
      _resolvant.Push(gate);
    }
  } else {
    if (surelyTrue >= needTrue) {
      _status = FALSIFIED;
    } else if (surelyFalse >= needFalse) {
      return;
    } else if (needFalse == n - surelyTrue) {
      _PushFaninsOntoUnitStack(equation);
    } else if (needFalse > surelyFalse + possiblyFalse) {
      _resolvant.Push(gate);
    }
  }
}

// Moves the counters back, and nothing else.
void OrvaWalker::_ResetCandidateValueOfVariable(OrvaVariable* variable, Value value) {
  const Value current = variable->GetCandidateValue();
  for (OrvaEquation* equation : variable->GetPositiveOccurrences()) {
    equation->MoveCandidate(current, value);
  }
  const Value currentOpposite = OrvaVariable::GetOpposite(current);
  const Value opposite = OrvaVariable::GetOpposite(value);
  for (OrvaEquation* equation : variable->GetNegativeOccurrences()) {
    equation->MoveCandidate(currentOpposite, opposite);
  }
  variable->SetCandidateValue(value);
  if (!IsInput(variable)) variable->GetDefinition()->SetLeftValue(value);
}

// The counters of an equation have moved: the first three cases, from below.
inline void OrvaWalker::_UpdateStatusOfLeftMemberOfEquation(OrvaEquation* equation) {
  assert(equation->GetLeftValue() == equation->GetFanout()->GetCandidateValue());
  const int n = equation->GetSize();
  const int surelyFalse = equation->GetCandidateCount(OrvaVariable::NECESSARILY_FALSE);
  const int surelyTrue = equation->GetCandidateCount(OrvaVariable::NECESSARILY_TRUE);
  const int needTrue = equation->GetNumberOfLiteralsForTrue();
  const int needFalse = equation->GetNumberOfLiteralsForFalse();
  switch (equation->GetLeftValue()) {
    case OrvaVariable::NECESSARILY_FALSE:
      if (surelyTrue >= needTrue) {
        _status = FALSIFIED;
      } else if (surelyFalse < needFalse && needFalse == n - surelyTrue) {
        _PushFaninsOntoUnitStack(equation);
      }
      break;
    case OrvaVariable::NECESSARILY_TRUE:
      if (surelyFalse >= needFalse) {
        _status = FALSIFIED;
      } else if (surelyTrue < needTrue && needTrue == n - surelyFalse) {
        _PushFaninsOntoUnitStack(equation);
      }
      break;
    default:
      if (surelyFalse == needFalse) {
        _PushOntoUnitStack(equation->GetFanout(), OrvaVariable::NECESSARILY_FALSE);
      } else if (surelyTrue == needTrue) {
        _PushOntoUnitStack(equation->GetFanout(), OrvaVariable::NECESSARILY_TRUE);
      }
  }
}

inline void OrvaWalker::_PushOntoUnitStack(OrvaVariable* variable, Value value) {
  if (_unitStack.Push(variable, value)) _status = FALSIFIED;
}

void OrvaWalker::_EndPropagation() {
  _unitStack.Flush();
  ++_propagation;
}

// Every unfixed literal must take the value of the left member. The first conflict ends it. Once
// all were pushed they are fixed or wait on the unit stack until the propagation ends, and pushing
// them again would change nothing: it would take n² steps to set the n literals one by one. After a
// conflict, some were not: a second choice's is forgotten, and the next push must meet it again.
void OrvaWalker::_PushFaninsOntoUnitStack(OrvaEquation* equation) {
  assert(equation->GetFanout()->IsFixed());
  if (equation->GetPropagation() == _propagation) {
    assert(_ArePushed(equation));
    return;
  }
  const Value value = equation->GetFanout()->GetCandidateValue();
  const Value opposite = OrvaVariable::GetOpposite(value);
  for (const OrvaLiteral& literal : equation->GetFanins()) {
    OrvaVariable* variable = literal.GetVariable();
    if (variable->IsFixed()) continue;
    if (_unitStack.Push(variable, literal.GetSign() ? value : opposite)) {
      _status = FALSIFIED;
      return;
    }
  }
  equation->SetPropagation(_propagation);
}

// Storing.
//
// The tree is a set of cutsets spelled out over the basic events: a path takes the then-son of the
// events in the cutset and the else-son of the others. A new cutset follows the paths laid down
// before as far as they go. Where it comes to an undeveloped leaf, no cutset agrees with it so far,
// and its remaining events are laid down as a chain of then-sons in the order in which they were
// set; their else-sons are the places where later cutsets may go on. Any other leaf is the end of a
// cutset stored before, and, both being minimal, of the same one.
//
// Where a node has nothing but cutoff leaves below, there is nothing to tell apart, and it folds to
// such a leaf. A chain just laid down ends in a cutset: there folding only joins the types upward,
// one step per node, up to where the chain starts.

// True for a cutset that is new.
bool OrvaWalker::_StoreMinimalCutset() {
  OrvaMCSNode* node = _path.GoBackTo(_cutset.TakeLowestChangedPathPosition());
  while (node->IsInternal()) {
    OrvaVariable* variable = _manager->GetVariable(node->GetIndex());
    _path.Push(node, variable);
    const bool isInCutset = variable != nullptr && variable->GetCutsetValue();
    node = isInCutset ? node->GetThenSon() : node->GetElseSon();
  }
  assert(_IsCutsetPath(node));
  _path.SetEnd(node);
  const bool isNew = node->IsUndeveloped();
  if (isNew) _StoreMinimalCutset(1, node);
  return isNew;
}

// Lays the events of the cutset from a position on down a then-chain, skipping those tested above
// the leaf; then folds the chain from below.
void OrvaWalker::_StoreMinimalCutset(int position, OrvaMCSNode* leaf) {
  OrvaMCSNode* const parentOfChain = leaf->GetParent();
  for (int i = position; i <= _cutset.GetOrder(); ++i) {
    const OrvaVariable* variable = _cutset.GetVariable(i);
    if (!variable->GetCutsetValue() || variable->GetPathPosition() != 0) continue;
    OrvaMCSNode* thenLeaf;
    OrvaMCSNode* elseLeaf;
    _manager->ExpandLeaf(leaf, variable->GetMCSIndex(), thenLeaf, elseLeaf);
    leaf = thenLeaf;
  }
  _manager->MuteLeaf(leaf, OrvaMCSNode::MINIMAL_CUTSET);
  for (OrvaMCSNode* node = leaf->GetParent(); node != parentOfChain; node = node->GetParent()) {
    _manager->FoldInternalNode(node, FOLD_MASK);
    assert(node->IsInternal());
  }
}

// Offered to users of the class; the program itself does not call what follows.

const char* OrvaWalker::GetBranchStatusString(int status) {
  const bool isKnown = status >= 0 && status < static_cast<int>(std::size(BRANCH_STATUS_STRINGS));
  return isKnown ? BRANCH_STATUS_STRINGS[status] : nullptr;
}
