// Three operations on sets of minimal cutsets, each defined by what it does with the highest
// variable x of its operands; f1 and f0 are the then- and the else-node of f, or nothing and f
// where f does not begin with x:
//
//   f without g  =  x·((f1 without g0) without g1)  +  (f0 without g0)
//   f united g   =  x·((f1 without g0) united (g1 without f0))  +  (f0 united g0)
//   f times g    =  x·((f1·(g1 united g0) united f0·g1) without f0·g0)  +  f0·g0
//
// What the else-part holds is not in the then-part: a cutset with x that contains one without x is
// not minimal. So every set in the diagram is minimal from the start, and stays small.
//
// All three cut off what the limits refuse: an operand whose bounds break them counts as empty, and
// below x the limits fall by what x brings in at least. (A cutset beyond the limits is part of none
// that keeps to them.) Too many cutsets are no fault inside, only too few: so the cache keeps with
// each result the limits that it was made for, and gives it out for the same limits and for all
// narrower ones. With limits on the product alone, a plant of 3,400 events at 1e-10 took twice the
// work.
//
// The depth of the work is the number of variables, which can be 100,000 in one gate. Therefore a
// task that needs a part of its result first waits on a stack of tasks; its stage tells where it
// goes on. Most parts are found at once, in a plain case or in the cache, and never become tasks.
//
// The cache is direct-mapped and forgets: an entry gives way to the next one of the same place. It
// holds between a fifth and two fifths of the number of nodes.
#include "diagram/OrvaCutsetOperations.h"

#include <algorithm>
#include <cassert>
#include <utility>

using Node = OrvaCutsetDiagram::Node;

namespace {

constexpr Node EMPTY = OrvaCutsetDiagram::EMPTY;
constexpr Node UNIT = OrvaCutsetDiagram::UNIT;
constexpr int WORD_BITS = 64;
constexpr int FIRST_CACHE_BITS = 10;
constexpr int OPERATION_SHIFT = 30;
constexpr std::size_t NODES_PER_ENTRY = 5;

}  // namespace

OrvaCutsetOperations::OrvaCutsetOperations(OrvaCutsetDiagram& diagram)
    : _diagram(diagram), _shift(WORD_BITS - FIRST_CACHE_BITS) {
  _cache.Fill(std::size_t{1} << FIRST_CACHE_BITS, NO_ENTRY);
}

void OrvaCutsetOperations::Forget() { _cache.Fill(_cache.GetSize(), NO_ENTRY); }

// Plain cases have their result at once. They also bring the operands into the order in which the
// cache knows them.
template <OrvaCutsetOperations::Operation operation>
bool OrvaCutsetOperations::_IsPlain(Node& f, Node& g, OrvaCutsetLimits limits) {
  if constexpr (operation == Operation::WITHOUT) return _IsPlainDifference(f, g, limits);
  if constexpr (operation == Operation::UNITE) return _IsPlainUnion(f, g, limits);
  if constexpr (operation == Operation::MULTIPLY) return _IsPlainProduct(f, g, limits);
}

bool OrvaCutsetOperations::_IsBeyond(Node f, OrvaCutsetLimits limits) const {
  return limits.IsBrokenBy(_diagram[f].leastOrder, _diagram[f].greatestProbability);
}

bool OrvaCutsetOperations::_IsPlainDifference(Node& f, Node& g, OrvaCutsetLimits limits) {
  // No cutset of f contains one with a variable above all those of f.
  const std::uint32_t variable = _diagram[f].variable;
  const std::uint32_t greatestLength = _diagram[f].greatestLength;
  while (_diagram[g].variable < variable && _diagram[g].leastLength <= greatestLength) {
    g = _diagram[g].elseNode;
  }
  if (f == EMPTY || g == UNIT || f == g || _IsBeyond(f, limits)) {
    _result = EMPTY;
    return true;
  }
  // A shorter cutset can't contain a longer one.
  if (g == EMPTY || f == UNIT || _diagram[g].leastLength > _diagram[f].greatestLength ||
      _IsBeyond(g, limits)) {
    _result = f;
    return true;
  }
  return false;
}

bool OrvaCutsetOperations::_IsPlainUnion(Node& f, Node& g, OrvaCutsetLimits limits) {
  if (_IsBeyond(f, limits)) f = EMPTY;
  if (_IsBeyond(g, limits)) g = EMPTY;
  if (f > g) std::swap(f, g);  // EMPTY and UNIT first
  if (f == g || f == EMPTY) {
    _result = g;
    return true;
  }
  _result = UNIT;
  return f == UNIT;
}

bool OrvaCutsetOperations::_IsPlainProduct(Node& f, Node& g, OrvaCutsetLimits limits) {
  if (f > g) std::swap(f, g);
  const OrvaCutsetDiagram::Record& a = _diagram[f];
  const OrvaCutsetDiagram::Record& b = _diagram[g];
  if (f == EMPTY || limits.IsBrokenBy(a.leastOrder, a.greatestProbability) ||
      limits.IsBrokenBy(b.leastOrder, b.greatestProbability)) {
    _result = EMPTY;
    return true;
  }
  _result = g;
  if (f == UNIT || f == g) return true;
  if (b.variable < a.variable) std::swap(f, g);
  return false;
}

bool OrvaCutsetOperations::_IsVariableBeyond(std::uint32_t variable,
                                             OrvaCutsetLimits limits) const {
  const OrvaCutsetDiagram::Weight& weight = _diagram.GetWeight(variable);
  return limits.IsBrokenBy(weight.leastOrder, weight.greatestProbability);
}

// True when the result is there; otherwise a task for it stands on the stack.
template <OrvaCutsetOperations::Operation operation>
bool OrvaCutsetOperations::_Call(Node f, Node g, OrvaCutsetLimits limits) {
  if (_IsPlain<operation>(f, g, limits)) return true;
  const Key key = {f | (static_cast<std::uint32_t>(operation) << OPERATION_SHIFT), g};
  const Entry& entry = _GetEntry(key);
  if (entry.key.f == key.f && entry.key.g == key.g &&
      OrvaCutsetLimits{entry.order, entry.probability}.Include(limits)) {
    _result = entry.result;
    return true;
  }
  _tasks.push_back({operation, f, g, 0, limits, EMPTY, EMPTY});
  return false;
}

bool OrvaCutsetOperations::_AdvanceDifference(Task& task) {
  const OrvaCutsetDiagram::Record& f = _diagram[task.f];
  const OrvaCutsetDiagram::Record& g = _diagram[task.g];
  const bool isCommon = g.variable == f.variable;
  const Node g1 = isCommon ? g.thenNode : EMPTY;
  const Node g0 = isCommon ? g.elseNode : task.g;
  switch (task.stage++) {
    case 0:
      if (!_Call<Operation::WITHOUT>(f.elseNode, g0, task.limits)) return false;
      ++task.stage;
      [[fallthrough]];
    case 1:
      task.elseResult = _result;
      if (_IsVariableBeyond(f.variable, task.limits)) return true;
      if (!_Call<Operation::WITHOUT>(f.thenNode, g0, _GetLimitsBelow(f.variable, task.limits)))
        return false;
      ++task.stage;
      [[fallthrough]];
    case 2:
      if (!_Call<Operation::WITHOUT>(_result, g1, _GetLimitsBelow(f.variable, task.limits)))
        return false;
      [[fallthrough]];
    default:
      _result = _diagram.MakeNode(f.variable, _result, task.elseResult);
      return true;
  }
}

bool OrvaCutsetOperations::_AdvanceUnion(Task& task) {
  const OrvaCutsetDiagram::Record& f = _diagram[task.f];
  const OrvaCutsetDiagram::Record& g = _diagram[task.g];
  const std::uint32_t x = std::min(f.variable, g.variable);
  const Node f1 = f.variable == x ? f.thenNode : EMPTY;
  const Node f0 = f.variable == x ? f.elseNode : task.f;
  const Node g1 = g.variable == x ? g.thenNode : EMPTY;
  const Node g0 = g.variable == x ? g.elseNode : task.g;
  switch (task.stage++) {
    case 0:
      if (!_Call<Operation::UNITE>(f0, g0, task.limits)) return false;
      ++task.stage;
      [[fallthrough]];
    case 1:
      task.elseResult = _result;
      if (_IsVariableBeyond(x, task.limits)) return true;
      if (!_Call<Operation::WITHOUT>(f1, g0, _GetLimitsBelow(x, task.limits))) return false;
      ++task.stage;
      [[fallthrough]];
    case 2:
      task.partial = _result;
      if (!_Call<Operation::WITHOUT>(g1, f0, _GetLimitsBelow(x, task.limits))) return false;
      ++task.stage;
      [[fallthrough]];
    case 3:
      if (!_Call<Operation::UNITE>(task.partial, _result, _GetLimitsBelow(x, task.limits))) {
        return false;
      }
      [[fallthrough]];
    default:
      _result = _diagram.MakeNode(x, _result, task.elseResult);
      return true;
  }
}

// f begins with the highest variable; g may begin with the same one.
bool OrvaCutsetOperations::_AdvanceProduct(Task& task) {
  const OrvaCutsetDiagram::Record& f = _diagram[task.f];
  const OrvaCutsetDiagram::Record& g = _diagram[task.g];
  const bool isCommon = g.variable == f.variable;
  const Node g1 = isCommon ? g.thenNode : EMPTY;
  const Node g0 = isCommon ? g.elseNode : task.g;
  const std::uint32_t x = f.variable;
  switch (task.stage++) {
    case 0:
      if (!_Call<Operation::MULTIPLY>(f.elseNode, g0, task.limits)) return false;
      ++task.stage;
      [[fallthrough]];
    case 1:
      task.elseResult = _result;
      if (_IsVariableBeyond(x, task.limits)) return true;
      if (!_Call<Operation::UNITE>(g1, g0, _GetLimitsBelow(x, task.limits))) return false;
      ++task.stage;
      [[fallthrough]];
    case 2:
      if (!_Call<Operation::MULTIPLY>(f.thenNode, _result, _GetLimitsBelow(x, task.limits))) {
        return false;
      }
      ++task.stage;
      [[fallthrough]];
    case 3:
      task.partial = _result;
      if (!_Call<Operation::MULTIPLY>(f.elseNode, g1, _GetLimitsBelow(x, task.limits)))
        return false;
      ++task.stage;
      [[fallthrough]];
    case 4:
      if (!_Call<Operation::UNITE>(task.partial, _result, _GetLimitsBelow(x, task.limits)))
        return false;
      ++task.stage;
      [[fallthrough]];
    case 5:
      if (!_Call<Operation::WITHOUT>(_result, task.elseResult, _GetLimitsBelow(x, task.limits)))
        return false;
      [[fallthrough]];
    default:
      _result = _diagram.MakeNode(x, _result, task.elseResult);
      return true;
  }
}

// The limits are not broken by the variable itself.
OrvaCutsetLimits OrvaCutsetOperations::_GetLimitsBelow(std::uint32_t variable,
                                                       OrvaCutsetLimits limits) const {
  const OrvaCutsetDiagram::Weight& weight = _diagram.GetWeight(variable);
  OrvaCutsetLimits below = limits;
  if (limits.order != UINT32_MAX) below.order -= weight.leastOrder;
  // 0 stays 0, and what is too small for a float is no limit.
  below.probability = limits.probability * weight.requirement;
  return below;
}

OrvaCutsetOperations::Entry& OrvaCutsetOperations::_GetEntry(const Key& key) {
  constexpr std::uint64_t MULTIPLIER = 0x9e3779b97f4a7c15;  // 2^64 over the golden ratio
  const std::uint64_t pair = (static_cast<std::uint64_t>(key.f) << 32) | key.g;
  return _cache[static_cast<std::size_t>(((pair ^ (pair >> 29)) * MULTIPLIER) >> _shift)];
}

void OrvaCutsetOperations::_Store(const Task& task) {
  if (_diagram.GetNumberOfNodes() > NODES_PER_ENTRY * _cache.GetSize()) _EnlargeCache();
  const Key key = {task.f | (static_cast<std::uint32_t>(task.operation) << OPERATION_SHIFT),
                   task.g};
  _GetEntry(key) = {key, task.limits.order, task.limits.probability, _result};
}

// A place is the highest bits of a hash value, so that place i becomes the places 2 i and 2 i + 1:
// from the last one on, entries move up within the array.
void OrvaCutsetOperations::_EnlargeCache() {
  const std::size_t size = _cache.GetSize();
  for (std::size_t i = 0; i < size; ++i) _cache.Add(NO_ENTRY);
  --_shift;
  for (std::size_t i = size; i-- > 0;) {
    const Entry entry = _cache[i];
    _cache[2 * i] = _cache[2 * i + 1] = NO_ENTRY;
    if (entry.key.f != NO_KEY) _GetEntry(entry.key) = entry;
  }
}

bool OrvaCutsetOperations::_Advance(Task& task) {
  switch (task.operation) {
    case Operation::WITHOUT:
      return _AdvanceDifference(task);
    case Operation::UNITE:
      return _AdvanceUnion(task);
    default:
      return _AdvanceProduct(task);
  }
}

template <OrvaCutsetOperations::Operation operation>
Node OrvaCutsetOperations::_Compute(Node f, Node g, OrvaCutsetLimits limits) {
  assert(_tasks.empty());
  if (_Call<operation>(f, g, limits)) return _result;
  while (!_tasks.empty()) {
    Task& task = _tasks.back();
    if (!_Advance(task)) continue;
    _Store(task);
    _tasks.pop_back();
  }
  return _result;
}

Node OrvaCutsetOperations::Without(Node f, Node g, OrvaCutsetLimits limits) {
  return _Compute<Operation::WITHOUT>(f, g, limits);
}

Node OrvaCutsetOperations::Unite(Node f, Node g, OrvaCutsetLimits limits) {
  return _Compute<Operation::UNITE>(f, g, limits);
}

Node OrvaCutsetOperations::Multiply(Node f, Node g, OrvaCutsetLimits limits) {
  return _Compute<Operation::MULTIPLY>(f, g, limits);
}
