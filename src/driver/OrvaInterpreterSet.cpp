// The set command.

#include <cassert>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "reader/OrvaParser.h"
#include "reader/OrvaParserMessages.h"

namespace {

// Without a line end, which the print command's message of that text has.
constexpr const char* NO_OPTION_NAME = "No option name";
constexpr const char* NOT_AN_OPTION = "%s is not a valid option";

}  // namespace

void OrvaInterpreter::_DownloadCommandSet(int& error, const LumoXMLNode* command) {
  static constexpr Command COMMANDS[] = {
      {"option", &OrvaInterpreter::_DownloadCommandSetOption},
      {"default-probability-distribution",
       &OrvaInterpreter::_DownloadCommandSetDefaultProbabilityDistributionOfBasicEvents},
  };
  _DownloadCommands(error, command, {COMMANDS, "Not a set command option"});
}

// The value is read as an option named "value": without one, the center's option of that name,
// which does not exist, makes it off, 0 or null. It is written straight into the stored constant,
// so that the randomizer is not seeded. Both are the defined behaviour.
void OrvaInterpreter::_DownloadCommandSetOption(int& error, const LumoXMLNode* command) {
  const char* name = command->GetAttributeValue(OrvaOptionCenter::NAME);
  if (name == nullptr) return _Report(error, NO_OPTION_NAME, command);
  LumoConstant* option = _optionCenter->GetOption(name);
  if (option == nullptr) return _Report(error, NOT_AN_OPTION, name, command);
  assert(error == 0 && option->GetType() != LumoConstant::NIL);
  const auto read = [&](auto value, auto download) {
    (this->*download)(error, command, OrvaOptionCenter::VALUE, value);
    if (error == 0) option->Set(value);
  };
  switch (option->GetType()) {
    case LumoConstant::BOOL:
      return read(false, &OrvaInterpreter::_DownloadBooleanOption);
    case LumoConstant::INT:
      return read(0, &OrvaInterpreter::_DownloadIntegerOption);
    case LumoConstant::DOUBLE:
      return read(0.0, &OrvaInterpreter::_DownloadRealOption);
    default:
      return read(static_cast<const char*>(nullptr), &OrvaInterpreter::_DownloadStringOption);
  }
}

// The first child that is no comment is the expression.
void OrvaInterpreter::_DownloadCommandSetDefaultProbabilityDistributionOfBasicEvents(
    int& error, const LumoXMLNode* command) {
  const LumoXMLNode* expression = command->GetFirstChild();
  while (expression != nullptr && expression->IsComment()) {
    expression = expression->GetNextSibling();
  }
  if (expression == nullptr) {
    return _Report(error, OrvaParserMessages::DISTRIBUTION_EXPECTED, command);
  }
  _parser->DownloadDefaultProbabilityDistributionOfBasicEvents(error, expression, _model.get());
}
