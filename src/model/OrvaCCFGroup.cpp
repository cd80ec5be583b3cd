// A member of a group of n fails alone, or together with any set of the others. Expansion makes
// each of these failures a basic event: one for each member and, since the members are taken as
// alike, one for each subset of two or more, shared by the gates of all its members. In front of Q,
// the failure probability of one member, stands the probability that the failure is the common one
// of a given subset of k members, which the factors f give:
//
//   beta-factor    1 - f_n for k = 1, f_n for k = n; there are no others
//   MGL            f_2 ... f_k (1 - f_{k+1}) / C(n - 1, k - 1); without (1 - f_{k+1}) for k = n
//   alpha-factor   f_k / (f_1 + ... + f_n) / C(n - 1, k - 1)
//   phi-factor     f_k
//
// The binomial coefficient shares the failures of size k out among the subsets of that size that a
// given member belongs to. The expressions are made of copies of the factors and of Q, not of
// references to them, and are trees like any that was read. All failures of one size have the same
// one: where its evaluation leaves nothing behind, they hold one tree together, else, above all
// where it is drawn at random, each has its own.
//
// A group of n has 2^n subsets, each in the gates of all its members, so that little may be done
// for one of them: a subset is a number, whose digit i says whether member i belongs to it, the
// event of a subset is named and looked for once, and counting upwards enumerates the subsets in
// the order that is defined for a gate.

#include "model/OrvaCCFGroup.h"

#include <bit>
#include <cassert>
#include <iterator>
#include <vector>

#include "model/OrvaEvent.h"
#include "model/OrvaGate.h"
#include "model/OrvaModel.h"
#include "model/OrvaProbabilityDistribution.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/statistics/LumoMath.h"
#include "support/text/LumoRawString.h"

using Distribution = OrvaProbabilityDistribution;

namespace {

constexpr int INITIAL_CAPACITY = 8;
constexpr int INDEPENDENT_LEVEL = 1;

// In the order of the types.
constexpr const char* TYPE_NAMES[] = {"beta-factor", "MGL", "alpha-factor", "phi-factor"};

}  // namespace

OrvaCCFGroup::OrvaCCFGroup(OrvaModel* model, Type type, const char* name)
    : _model(model),
      _type(type),
      _name(LumoRawString::Copy(name)),
      _members(INITIAL_CAPACITY),
      _factors(INITIAL_CAPACITY) {
  LumoMemoryManager::TraceNew(this, "OrvaCCFGroup");
}

OrvaCCFGroup::~OrvaCCFGroup() {
  for (OrvaEvent* member : LumoItems<OrvaEvent>(_members)) _Unlink(member);
  _factors.DeleteItems(OrvaTerm::Delete);
  SetDistribution(nullptr);
  LumoRawString::Delete(_name);
  LumoMemoryManager::TraceDelete(this, "OrvaCCFGroup");
}

void OrvaCCFGroup::Delete(void* group) {
  if (group != nullptr) delete static_cast<OrvaCCFGroup*>(group);
}

OrvaCCFGroup::Type OrvaCCFGroup::GetType(const char* name) {
  for (int type = 0; type < static_cast<int>(std::size(TYPE_NAMES)); ++type) {
    if (LumoRawString::IsEqual(name, TYPE_NAMES[type])) return static_cast<Type>(type);
  }
  return UNKNOWN;
}

const char* OrvaCCFGroup::GetTypeName(Type type) {
  static_assert(std::size(TYPE_NAMES) == PHI_FACTOR + 1);
  return type == UNKNOWN ? nullptr : TYPE_NAMES[type];
}

OrvaEvent* OrvaCCFGroup::GetMember(int i) const {
  return static_cast<OrvaEvent*>(_members.GetItem(i));
}

std::string OrvaCCFGroup::GetNameOfMemberGate(int i) const {
  return std::string(_name) + "-" + GetMember(i)->GetName();
}

// The array grows by its increment, which would copy a large group once for every eight members.
void OrvaCCFGroup::AddMember(OrvaEvent* member) {
  const int n = GetNumberOfMembers();
  assert(n <= _members.GetSize());
  if (n == _members.GetSize()) _members.Expand(2 * n);
  SetMember(n, member);
}

void OrvaCCFGroup::SetMember(int i, OrvaEvent* member) {
  assert(i >= 0 && member != nullptr);
  if (OrvaEvent* former = GetMember(i)) _Unlink(former);
  _members.SetItem(i, member);
  member->SetCCFGroup(this);
}

// A member may have moved to another group meanwhile: that link is not ours to clear.
void OrvaCCFGroup::_Unlink(OrvaEvent* member) {
  if (member->GetCCFGroup() == this) member->SetCCFGroup(nullptr);
}

Distribution* OrvaCCFGroup::GetFactor(int level) const {
  return static_cast<Distribution*>(_factors.GetItem(level));
}

void OrvaCCFGroup::SetFactor(int level, Distribution* factor) {
  OrvaTerm::Delete(GetFactor(level));
  _factors.SetItem(level, factor);
}

void OrvaCCFGroup::MoveFactor(int from, int to) {
  if (GetFactor(from) == nullptr || from == to) return;
  SetFactor(to, GetFactor(from));
  _factors.RemoveItem(from);
}

void OrvaCCFGroup::SetDistribution(Distribution* distribution) {
  OrvaTerm::Delete(_distribution);
  _distribution = distribution;
}

int OrvaCCFGroup::CompareName(const char* name) const {
  return LumoRawString::Compare(_name, name);
}

int OrvaCCFGroup::CompareName(const void* group, const void* name) {
  return static_cast<const OrvaCCFGroup*>(group)->CompareName(static_cast<const char*>(name));
}

int OrvaCCFGroup::CompareNames(const void* a, const void* b) {
  return static_cast<const OrvaCCFGroup*>(a)->CompareNames(static_cast<const OrvaCCFGroup*>(b));
}

struct OrvaCCFGroup::Expansion {
  std::string prefix;                      // of the names of common failures
  std::vector<OrvaEvent*> events;          // by subset; null until made
  std::vector<Distribution*> expressions;  // by level, where events share one
};

void OrvaCCFGroup::Expand() {
  if (_isExpanded) return;
  const int n = GetNumberOfMembers();
  Expansion expansion = {.prefix = std::string(_name) + "-", .events = {}, .expressions = {}};
  expansion.expressions.resize(static_cast<std::size_t>(n) + 1);
  expansion.events.resize(_type == BETA_FACTOR ? 1 : std::size_t{1} << n);
  for (int i = 0; i < n; ++i) {
    switch (_type) {
      case BETA_FACTOR:
        _ExpandMemberForBetaFactor(expansion, i);
        break;
      case MGL:
      case ALPHA_FACTOR:
      case PHI_FACTOR:
        _ExpandMember(expansion, i);
        break;
      default:
        break;
    }
  }
  _isExpanded = true;
}

// The independent failure comes first, the failure of all members last.
void OrvaCCFGroup::_ExpandMember(Expansion& expansion, int i) {
  OrvaEvent* member = _ReplaceMemberByIndependentEvent(expansion, i);
  const std::size_t independent = std::size_t{1} << i;
  expansion.events[independent] = GetMember(i);
  OrvaGate* definition = OrvaGate::NewOr(_model, nullptr);
  for (std::size_t subset = independent; subset < expansion.events.size(); ++subset) {
    if ((subset & independent) == 0) continue;
    definition->AddChild(OrvaGate::NewEvent(_model, _GetEventOfSubset(expansion, subset)));
  }
  member->SetDefinition(definition);
}

// The failure of all members is made for the first one.
void OrvaCCFGroup::_ExpandMemberForBetaFactor(Expansion& expansion, int i) {
  const int n = GetNumberOfMembers();
  OrvaEvent* member = _ReplaceMemberByIndependentEvent(expansion, i);
  OrvaEvent*& common = expansion.events.front();
  if (common == nullptr) {
    const std::string digits(static_cast<std::size_t>(n), '1');
    common = _FindOrAddBasicEvent(expansion.prefix + digits);
  }
  _AssociateProbabilityDistributionToBasicEvent(expansion, common, n);
  OrvaGate* definition = OrvaGate::NewOr(_model, nullptr);
  definition->AddChild(OrvaGate::NewEvent(_model, GetMember(i)));
  definition->AddChild(OrvaGate::NewEvent(_model, common));
  member->SetDefinition(definition);
}

// The member keeps its occurrences in the fault trees under the name "group-member"; its own name
// goes to a new basic event, the independent failure, which takes its place in the group. The
// new event is not linked to the group.
OrvaEvent* OrvaCCFGroup::_ReplaceMemberByIndependentEvent(Expansion& expansion, int i) {
  OrvaEvent* member = GetMember(i);
  assert(member != nullptr);
  const std::string name = member->GetName();
  _model->RenameEvent(member, GetNameOfMemberGate(i).c_str());
  OrvaEvent* independent = _model->AddEvent(name.c_str(), OrvaEvent::BASIC_EVENT);
  _Unlink(member);
  _members.SetItem(i, independent);
  _AssociateProbabilityDistributionToBasicEvent(expansion, independent, INDEPENDENT_LEVEL);
  return member;
}

// The digits of the name are in the order of the members.
OrvaEvent* OrvaCCFGroup::_GetEventOfSubset(Expansion& expansion, std::size_t subset) {
  OrvaEvent*& event = expansion.events[subset];
  if (event != nullptr) return event;
  std::string name = expansion.prefix;
  for (int i = 0; i < GetNumberOfMembers(); ++i) name += (subset >> i & 1) != 0 ? '1' : '0';
  event = _FindOrAddBasicEvent(name);
  _AssociateProbabilityDistributionToBasicEvent(expansion, event, std::popcount(subset));
  return event;
}

OrvaEvent* OrvaCCFGroup::_FindOrAddBasicEvent(const std::string& name) {
  OrvaEvent* event = _model->LookForEvent(name.c_str());
  return event != nullptr ? event : _model->AddEvent(name.c_str(), OrvaEvent::BASIC_EVENT);
}

void OrvaCCFGroup::_AssociateProbabilityDistributionToBasicEvent(Expansion& expansion,
                                                                 OrvaEvent* event, int level) {
  if (_distribution == nullptr || event->GetProbabilityDistribution() != nullptr) return;
  Distribution*& shared = expansion.expressions[static_cast<std::size_t>(level)];
  if (shared != nullptr) {
    shared->AddHolder();
    return event->SetProbabilityDistribution(shared);
  }
  Distribution* expression = _NewExpressionOfLevel(level);
  if (expression->CanBeShared()) shared = expression;
  event->SetProbabilityDistribution(expression);
}

// The probability of the common failure of a given subset of `level` members: one product.
Distribution* OrvaCCFGroup::_NewExpressionOfLevel(int level) const {
  assert(level >= INDEPENDENT_LEVEL && level <= GetNumberOfMembers());
  LumoList factors;
  switch (_type) {
    case BETA_FACTOR:
      factors.InsertItemLast(level == INDEPENDENT_LEVEL
                                 ? _NewComplementOfFactor(GetNumberOfMembers())
                                 : _CopyFactor(GetNumberOfMembers()));
      break;
    case MGL:
      factors.InsertItemLast(_NewCoefficient(level));
      for (int j = 2; j <= level; ++j) factors.InsertItemLast(_CopyFactor(j));
      if (level < GetNumberOfMembers()) factors.InsertItemLast(_NewComplementOfFactor(level + 1));
      break;
    case ALPHA_FACTOR:
      // No factor `level` in front of the ratio: this is the defined form.
      factors.InsertItemLast(_NewCoefficient(level));
      factors.InsertItemLast(_NewShareOfFactor(level));
      break;
    default:
      factors.InsertItemLast(_CopyFactor(level));
  }
  factors.InsertItemLast(Distribution::Copy(_model, _distribution));
  return Distribution::NewDistribution(_model, Distribution::MUL, &factors);
}

Distribution* OrvaCCFGroup::_CopyFactor(int level) const {
  assert(GetFactor(level) != nullptr);
  return Distribution::Copy(_model, GetFactor(level));
}

Distribution* OrvaCCFGroup::_NewComplementOfFactor(int level) const {
  return Distribution::NewDistribution(_model, Distribution::SUB,
                                       Distribution::NewFloat(_model, 1.0), _CopyFactor(level));
}

// One over the number of subsets of that size that a given member belongs to.
Distribution* OrvaCCFGroup::_NewCoefficient(int level) const {
  return Distribution::NewFloat(_model,
                                1.0 / LumoMath::Binomial(level - 1, GetNumberOfMembers() - 1));
}

Distribution* OrvaCCFGroup::_NewShareOfFactor(int level) const {
  LumoList all;
  for (int j = 1; j <= GetNumberOfMembers(); ++j) all.InsertItemLast(_CopyFactor(j));
  return Distribution::NewDistribution(
      _model, Distribution::DIV, _CopyFactor(level),
      Distribution::NewDistribution(_model, Distribution::ADD, &all));
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaCCFGroup::SetName(const char* name) { LumoRawString::Replace(_name, name); }

void OrvaCCFGroup::AddFactor(Distribution* factor) {
  _factors.SetItem(_factors.GetIndexOfLastItem() + 1, factor);
}
