// What commands are given, and what they read of it. An attribute comes before an "option" child
// of the same name, and the first child before the next; everything else is passed over in silence.

#include <algorithm>
#include <iterator>
#include <set>
#include <string>

#include "check/OrvaNearestName.h"
#include "check/OrvaScriptCheck.h"
#include "driver/OrvaCommandOptions.h"
#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "support/containers/LumoRange.h"
#include "support/text/LumoRawString.h"
#include "support/values/LumoConstant.h"

using Center = OrvaOptionCenter;
using Options = OrvaCommandOptions;

namespace {

constexpr const char* MODES[] = {"write", "append"};
constexpr const char* NOTHING_IS_READ = "it reads no options";

}  // namespace

void OrvaScriptCheck::_ReportUnread(const LumoXMLNode* node, const char* name, const Options* row) {
  _findings.Report(OrvaFinding::UNREAD_OPTION, node, name,
                   row == nullptr
                       ? NOTHING_IS_READ
                       : OrvaDescribeNearestName(name, row->GetNames(), NOTHING_IS_READ));
}

// Once, at the first command.
void OrvaScriptCheck::_CheckAttributesOfRoot(const LumoXMLNode* command) {
  const LumoXMLNode* root = command->GetParent();
  if (!root->IsNodeOfName("orva") || OrvaFirstElement(root) != command) return;
  for (const LumoXMLAttribute* attribute = root->GetFirstAttribute(); attribute != nullptr;
       attribute = attribute->GetNext()) {
    _findings.ReportTag(OrvaFinding::UNREAD_OPTION, root, attribute->GetName(), NOTHING_IS_READ);
  }
}

void OrvaScriptCheck::_CheckAttributes(const LumoXMLNode* command, const Options& row) {
  std::set<std::string> given;
  for (const LumoXMLAttribute* attribute = command->GetFirstAttribute(); attribute != nullptr;
       attribute = attribute->GetNext()) {
    const char* name = attribute->GetName();
    if (!row.ReadsAttribute(name)) {
      _ReportUnread(command, name, &row);
    } else if (!given.insert(name).second) {
      _findings.Report(OrvaFinding::SHADOWED_OPTION, command, name);
    } else {
      _CheckOption(command, name, attribute->GetValue());
    }
  }
}

void OrvaScriptCheck::_CheckChildren(const LumoXMLNode* command, const Options& row) {
  std::set<std::string> given;
  for (const LumoXMLNode* child = command->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    if (child->IsComment()) continue;
    if (!child->IsNodeOfName(Center::ELEMENT)) {
      _findings.Report(OrvaFinding::UNREAD_ELEMENT, child, child->GetName());
      continue;
    }
    const char* name = child->GetAttributeValue(Center::NAME);
    if (name == nullptr || !row.ReadsOption(name)) {
      _ReportUnread(child, name == nullptr ? "" : name, &row);
    } else if (command->FindAttribute(name) != nullptr || !given.insert(name).second) {
      _findings.Report(OrvaFinding::SHADOWED_OPTION, child, name);
    } else {
      _CheckOption(child, name, child->GetAttributeValue(Center::VALUE));
    }
  }
}

// Switches are read with their table's file open, which a rehearsal never does.
void OrvaScriptCheck::_CheckOption(const LumoXMLNode* node, const char* name, const char* value) {
  if (value == nullptr) value = "";
  const auto isValue = [&](const char* word) { return LumoRawString::IsEqual(value, word); };
  if (LumoRawString::IsEqual(name, Center::OUTPUT_MODE)) {
    if (std::any_of(std::begin(MODES), std::end(MODES), isValue)) return;
    return _findings.Report(OrvaFinding::UNKNOWN_MODE, node, value);
  }
  const LumoConstant* option = _interpreter->GetOptionCenter()->GetOption(name);
  if (option == nullptr || option->GetType() != LumoConstant::BOOL) return;
  if (isValue(Center::VALUE_ON) || isValue(Center::VALUE_OFF)) return;
  _findings.Report(OrvaFinding::UNSUITABLE_VALUE, node, name, value);
}
