// The set command.

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "reader/OrvaParser.h"
#include "xml/LumoXMLNode.h"

namespace {

constexpr const char* NO_OPTION_NAME = "No option name";
constexpr const char* NOT_AN_OPTION = "%s is not a valid option";
constexpr const char* DISTRIBUTION_EXPECTED = "A probability distribution was expected\n";

constexpr const char* NAME = "name";
constexpr const char* VALUE = "value";

}  // namespace

const OrvaInterpreter::Commands OrvaInterpreter::_SET_COMMANDS = {
    [] {
      static constexpr Command ROWS[] = {
          {"option", &OrvaInterpreter::_DownloadCommandSetOption},
          {"default-probability-distribution",
           &OrvaInterpreter::_DownloadCommandSetDefaultProbabilityDistributionOfBasicEvents},
      };
      return std::span<const Command>(ROWS);
    }(),
    "Not a set command option", true};

void OrvaInterpreter::_DownloadCommandSet(int& error, const LumoXMLNode* command) {
  _DownloadCommands(error, command, _SET_COMMANDS);
}

// The value is read as an option named "value": without one, the center's option of that name,
// which does not exist, makes it off, 0 or null. It is written straight into the stored constant,
// so that the randomizer is not seeded.
void OrvaInterpreter::_DownloadCommandSetOption(int& error, const LumoXMLNode* command) {
  const char* name = command->GetAttributeValue(NAME);
  if (name == nullptr) return _Report(error, NO_OPTION_NAME, command);
  LumoConstant* option = _optionCenter->GetOption(name);
  if (option == nullptr) return _Report(error, NOT_AN_OPTION, name, command);
  const auto read = [&](auto value, auto download) {
    (this->*download)(error, command, VALUE, value);
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
  if (expression == nullptr) return _Report(error, DISTRIBUTION_EXPECTED, command);
  _parser->DownloadDefaultProbabilityDistributionOfBasicEvents(error, expression, _model.get());
}
