#pragma once

#include <set>
#include <string>
#include <utility>

class LumoStream;
class LumoXMLNode;

// What is looked for. OrvaFindings.cpp has the table.
enum class OrvaFinding : int {
  UNREAD_OPTION,
  UNREAD_ELEMENT,
  UNREAD_ATTRIBUTE,
  SHADOWED_OPTION,
  UNSUITABLE_VALUE,
  UNKNOWN_MODE,
  NO_VALUE,
  IDLE_OPTION,
  SAME_OUTPUT,
  LIMIT_AT_TIME_ZERO,
  HANDLE_BUILT_TWICE,
  SIL_NUMBERS,
  NEGATION,
  NESTED_FORMULA,
  REPEATED_ARGUMENT,
  IMPOSSIBLE_THRESHOLD,
  SINGLE_ARGUMENT,
  HOUSE_EVENT_VALUE,
  UNDEFINED_EVENT,
  UNDEFINED_PARAMETER,
  REDEFINED_EVENT,
  REDEFINED_PARAMETER,
  UNUSED_EVENT,
  UNUSED_PARAMETER,
  PROBABILITY_OUT_OF_RANGE,
  UNDRAWN_DEVIATE,
  UNREACHABLE_CASE,
  TESTS_BEHIND_PARAMETER,
  NO_FAILURE_RATE,
  MULTIPLIED_RATES,
  DERIVATIVE_AS_INTENSITY,
  NUMBER_OF_FINDINGS,
};

// Writes findings, each with the line of its element and the element, below the file that they are
// in.
class OrvaFindings {
 public:
  // The stream is not owned.
  explicit OrvaFindings(LumoStream* stream) : _stream(stream) {}

  // The texts take the places of the first and of the second "%s" of the finding's text.
  void Report(OrvaFinding finding, const LumoXMLNode* node, const std::string& first = {},
              const std::string& second = {});
  // The same, and of the element only the start is shown.
  void ReportTag(OrvaFinding finding, const LumoXMLNode* node, const std::string& first = {},
                 const std::string& second = {});
  // The same as the first, but only once for an element, which must live as long as this.
  void ReportOnce(OrvaFinding finding, const LumoXMLNode* node, const std::string& first = {},
                  const std::string& second = {});

  bool HasWarnings() const { return _hasWarnings; }

  // The line of an element, with the file when that is another one than that of a node.
  static std::string DescribeLine(const LumoXMLNode* element, const LumoXMLNode* node);

  // The name that a finding is reported under.
  static const char* GetName(OrvaFinding finding);

 private:
  void _Report(OrvaFinding finding, const LumoXMLNode* node, const LumoXMLNode* shown,
               const std::string& first, const std::string& second);

  LumoStream* _stream;
  std::string _fileName;  // of the last finding
  bool _hasWarnings = false;
  std::set<std::pair<OrvaFinding, const LumoXMLNode*>> _reported;
};
