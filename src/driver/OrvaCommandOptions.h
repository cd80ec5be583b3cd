#pragma once

#include <span>
#include <vector>

class LumoXMLNode;

// What a command reads of its own element: a row of a table, for those who ask without executing
// it. Builds with assertions hold the interpreter to the table.
struct OrvaCommandOptions {
  using Names = std::span<const char* const>;
  enum Content { OPTIONS, ELEMENTS };

  // Options that no option center holds: a command has them itself or not at all.
  static constexpr const char* ALGORITHM = "algorithm";
  static constexpr const char* APPROXIMATION = "approximation";
  static constexpr const char* MAXIMUM_NODES = "maximum-nodes";
  static constexpr const char* FOLLOW_PARAMETERS = "follow-parameters";
  static constexpr const char* FAILURE_RATE = "failure-rate";
  static constexpr const char* SEED = "seed";
  static constexpr const char* LAYOUT = "layout";

  // The command, and the element that holds it.
  const char* parent;
  const char* element;
  // The row is for commands that have this option themselves; null for all.
  const char* given = nullptr;
  // Whether the children are options, or commands and the like.
  Content content = OPTIONS;
  // What is read, as an attribute only or in both forms.
  Names attributes = {};
  Names options[6] = {};

  bool ReadsOption(const char* name) const;
  bool ReadsAttribute(const char* name) const;
  // All that it reads.
  std::vector<const char*> GetNames() const;

  // The row of a command; null for an element that is none.
  static const OrvaCommandOptions* Find(const LumoXMLNode* command);
  // Whether the command reads the option in some case.
  static bool MayRead(const LumoXMLNode* command, const char* option);
  // What the command itself says of an option: its attribute of that name, else its first "option"
  // child of that name (a null text when that has no value). False and null when it has neither.
  static bool FindText(const LumoXMLNode* command, const char* option, const char*& text);
  static bool FindTextInChildren(const LumoXMLNode* command, const char* option, const char*& text);

 private:
  bool _IsFor(const LumoXMLNode* command) const;
};
