// Common-cause failure groups.
//
// A group is made whole before the model hears of it: members, distribution and factors are read
// into a group of its own, its factors are counted against its members, and only then does it join
// the model, in the place of the group of that name that it redefines. After a fault it vanishes,
// and its members stay as basic events. They may be taken over from the group that is redefined,
// which goes, but from no other.

#include <cassert>
#include <memory>
#include <string>

#include "model/OrvaModel.h"
#include "reader/OrvaModelElements.h"
#include "reader/OrvaParser.h"
#include "reader/OrvaParserMessages.h"

using namespace OrvaModelElements;
using namespace OrvaParserMessages;

namespace {

constexpr int MINIMUM_NUMBER_OF_MEMBERS = 2;

// The lowest level for which each model needs a factor; the highest is the number of members.
int GetLowestLevel(const OrvaCCFGroup* group) {
  switch (group->GetType()) {
    case OrvaCCFGroup::BETA_FACTOR:
      return group->GetNumberOfMembers();
    case OrvaCCFGroup::MGL:
      return 2;
    default:
      return 1;
  }
}

const LumoXMLNode* GetFirstNonComment(const LumoXMLNode* node) {
  const LumoXMLNode* child = node->GetFirstChild();
  while (child != nullptr && child->IsComment()) child = child->GetNextSibling();
  return child;
}

}  // namespace

void OrvaParser::_DownloadCCFGroupDefinition(int& error, const LumoXMLNode* node,
                                             OrvaModel* model) {
  if (!node->IsNodeOfName(DEFINE_CCF_GROUP)) return _Report(error, INCORRECT_GROUP, node);
  const char* name = _DownloadAttribute(error, node, NAME);
  if (name == nullptr) return;
  OrvaCCFGroup* former = model->LookForCCFGroup(name);
  // An expanded group has rewritten the model: it can't be taken back.
  if (former != nullptr && (former->IsExpanded() || _ChecksCCFGroupRedefinition())) {
    return _Report(error, GROUP_ALREADY_DEFINED, name, node);
  }
  const OrvaCCFGroup::Type type = _DownloadCCFModel(error, node);
  if (error != 0) return;
  assert(type != OrvaCCFGroup::UNKNOWN);
  auto group = std::make_unique<OrvaCCFGroup>(model, type, name);
  _DownloadCCFGroupOptions(error, node, group.get());
  if (error == 0) _CheckCCFGroup(error, node, group.get());
  if (error != 0) return;
  if (former != nullptr) {
    model->DeleteCCFGroup(former);
    OrvaCCFGroup::Delete(former);
  }
  assert(model->LookForCCFGroup(name) == nullptr);
  model->AddCCFGroup(group.release());
}

OrvaCCFGroup::Type OrvaParser::_DownloadCCFModel(int& error, const LumoXMLNode* node) {
  const char* name = _DownloadAttribute(error, node, MODEL);
  const OrvaCCFGroup::Type type = OrvaCCFGroup::GetType(name);
  if (name == nullptr) {
    _Report(error, NO_CCF_MODEL, node);
  } else if (type == OrvaCCFGroup::UNKNOWN) {
    _Report(error, UNKNOWN_CCF_MODEL, node);
  }
  return type;
}

void OrvaParser::_DownloadCCFGroupOptions(int& error, const LumoXMLNode* node,
                                          OrvaCCFGroup* group) {
  for (const LumoXMLNode* option = node->GetFirstChild(); option != nullptr && error == 0;
       option = option->GetNextSibling()) {
    if (!option->IsComment()) _DownloadCCFGroupOption(error, option, group);
  }
}

void OrvaParser::_DownloadCCFGroupOption(int& error, const LumoXMLNode* option,
                                         OrvaCCFGroup* group) {
  struct Option {
    const char* element;
    void (OrvaParser::*download)(int& error, const LumoXMLNode* node, OrvaCCFGroup* group);
  };
  static constexpr Option OPTIONS[] = {
      {MEMBERS, &OrvaParser::_DownloadCCFMembers},
      {DISTRIBUTION, &OrvaParser::_DownloadCCFDistribution},
      {FACTOR, &OrvaParser::_DownloadCCFFactor},
      {FACTORS, &OrvaParser::_DownloadCCFFactors},
  };
  if (option->IsNodeOfName(LABEL)) return _DownloadLabel(option, group);
  for (const Option& row : OPTIONS) {
    if (option->IsNodeOfName(row.element)) return (this->*row.download)(error, option, group);
  }
  _Report(error, UNKNOWN_GROUP_OPTION, option);
}

void OrvaParser::_DownloadCCFMembers(int& error, const LumoXMLNode* node, OrvaCCFGroup* group) {
  for (const LumoXMLNode* child = node->GetFirstChild(); child != nullptr && error == 0;
       child = child->GetNextSibling()) {
    if (child->IsComment()) continue;
    if (!child->IsNode()) return _Report(error, SYNTAX_ERROR, child);
    _DownloadCCFMember(error, child, group);
  }
  if (error == 0 && group->GetNumberOfMembers() < MINIMUM_NUMBER_OF_MEMBERS) {
    _Report(error, TOO_FEW_MEMBERS, node);
  }
}

void OrvaParser::_DownloadCCFMember(int& error, const LumoXMLNode* node, OrvaCCFGroup* group) {
  if (!node->IsNodeOfName(GetElementOfReference(OrvaEvent::UNSPECIFIED_EVENT)) &&
      !node->IsNodeOfName(GetElementOfReference(OrvaEvent::BASIC_EVENT))) {
    return _Report(error, ILL_FORMED_MEMBER, node);
  }
  OrvaModel* model = group->GetModel();
  OrvaEvent* event = _LookForOrAddEvent(error, node, OrvaEvent::BASIC_EVENT, model);
  if (event == nullptr) return;
  const OrvaCCFGroup* other = event->GetCCFGroup();
  // A redefinition takes the members of the group that it replaces.
  if (other != nullptr && (other == group || other->CompareNames(group) != 0)) {
    return _Report(error, MEMBER_OF_ANOTHER_GROUP, event->GetName(), node);
  }
  assert(event->GetType() == OrvaEvent::BASIC_EVENT);
  group->AddMember(event);
}

void OrvaParser::_DownloadCCFDistribution(int& error, const LumoXMLNode* node,
                                          OrvaCCFGroup* group) {
  for (const LumoXMLNode* child = node->GetFirstChild(); child != nullptr && error == 0;
       child = child->GetNextSibling()) {
    if (child->IsComment()) continue;
    if (!child->IsNode()) return _Report(error, SYNTAX_ERROR, child);
    auto* distribution = _DownloadProbabilityDistribution(error, child, group->GetModel());
    if (distribution != nullptr) group->SetDistribution(distribution);
  }
}

void OrvaParser::_DownloadCCFFactors(int& error, const LumoXMLNode* node, OrvaCCFGroup* group) {
  for (const LumoXMLNode* child = node->GetFirstChild(); child != nullptr && error == 0;
       child = child->GetNextSibling()) {
    if (child->IsComment()) continue;
    if (!child->IsNodeOfName(FACTOR)) return _Report(error, SYNTAX_ERROR, child);
    _DownloadCCFFactor(error, child, group);
  }
}

void OrvaParser::_DownloadCCFFactor(int& error, const LumoXMLNode* node, OrvaCCFGroup* group) {
  int level = 0;
  if (node->FindAttribute(LEVEL) != nullptr) _DownloadIntegerAttribute(error, node, LEVEL, level);
  if (error != 0) return;
  if (level < 0 || level > OrvaCCFGroup::MAXIMUM_LEVEL) {
    return _Report(error, LEVEL_OUT_OF_RANGE, node->GetAttributeValue(LEVEL), node);
  }
  const LumoXMLNode* child = GetFirstNonComment(node);
  if (child == nullptr) return _Report(error, DISTRIBUTION_EXPECTED, node);
  auto* factor = _DownloadProbabilityDistribution(error, child, group->GetModel());
  if (factor != nullptr) group->SetFactor(level, factor);
}

void OrvaParser::_CheckCCFGroup(int& error, const LumoXMLNode* node, OrvaCCFGroup* group) {
  assert(error == 0 && !group->IsExpanded());
  const int n = group->GetNumberOfMembers();
  const bool isBetaFactor = group->GetType() == OrvaCCFGroup::BETA_FACTOR;
  if (n < MINIMUM_NUMBER_OF_MEMBERS) return _Report(error, TOO_FEW_MEMBERS, node);
  if (!isBetaFactor && n > OrvaCCFGroup::MAXIMUM_NUMBER_OF_MEMBERS) {
    return _Report(error, TOO_MANY_MEMBERS, node);
  }
  if (isBetaFactor && group->GetFactor(n) == nullptr) group->MoveFactor(0, n);
  for (int level = GetLowestLevel(group); level <= n; ++level) {
    if (group->GetFactor(level) == nullptr) {
      return _Report(error, MISSING_FACTOR, std::to_string(level).c_str(), node);
    }
  }
}
