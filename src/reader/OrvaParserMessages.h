#pragma once

// What the reader of models says of faults. The texts are defined to the letter, with their odd
// spellings, and with line ends on some and none on others. The interpreter shares a few of them.
namespace OrvaParserMessages {

// Documents.
inline constexpr const char* NO_FILE_NAME = "No file name\n";
inline constexpr const char* UNABLE_TO_OPEN_FILE = "Unable to open file %s\n";
inline constexpr const char* NO_ROOT_ELEMENT = "No root element \"open-psa\".\n";
inline constexpr const char* UNKNOWN_CONSTRUCT = "Unknown construct.\n";

// Attributes.
inline constexpr const char* NO_ATTRIBUTE = "No attribute \"%s\"";
inline constexpr const char* NOT_A_REAL = "Not a real \"%s\"";
inline constexpr const char* NOT_AN_INTEGER = "Not an integer \"%s\"";
inline constexpr const char* NOT_A_BOOLEAN = "Not a Boolean value \"%s\"";

// Definitions. What is said of an event that is declared again stands with each kind.
inline constexpr const char* MISSING_GATE_DEFINITION = "Missing gate definition";
inline constexpr const char* MISSING_PARAMETER_DEFINITION = "Missing parameter definition";
inline constexpr const char* MULTIPLE_DEFINITIONS = "Multiple definitions";
inline constexpr const char* UNKNOWN_STRUCTURE = "Unknown structure";
inline constexpr const char* UNKNOWN_RISKSPECTRUM_MODEL = "Unknown RiskSpectum Model";
inline constexpr const char* WRONG_NUMBER_OF_PARAMETERS = "Wrong number of parameters";
inline constexpr const char* PARAMETER_ALREADY_DEFINED = "Parameter %s is already defined.";

// Formulas and expressions.
inline constexpr const char* ILL_FORMED_GATE = "Ill formed gate";
inline constexpr const char* NOT_A_DISTRIBUTION = "Not a probability distribution";
inline constexpr const char* UNKNOWN_OPERAND = "Unknow construct";
inline constexpr const char* WRONG_NUMBER_OF_CHILDREN = "Wrong number of children";
inline constexpr const char* WRONG_NUMBER_OF_ARGUMENTS = "Wrong number of arguments";

// Common-cause failure groups.
inline constexpr const char* INCORRECT_GROUP = "Incorrect CCF group definition";
inline constexpr const char* GROUP_ALREADY_DEFINED = "Already defined group %s";
inline constexpr const char* NO_CCF_MODEL = "No CCF model";
inline constexpr const char* UNKNOWN_CCF_MODEL = "Unknown CCF model";
inline constexpr const char* ILL_FORMED_MEMBER = "Ill formed CCF group member";
inline constexpr const char* MEMBER_OF_ANOTHER_GROUP = "Event %s already belongs to a CCF group\n";
inline constexpr const char* TOO_FEW_MEMBERS = "Too few CCF group members";
inline constexpr const char* TOO_MANY_MEMBERS = "Too many CCF group members\n";
inline constexpr const char* SYNTAX_ERROR = "Syntax error";
inline constexpr const char* DISTRIBUTION_EXPECTED = "A probability distribution was expected\n";
inline constexpr const char* LEVEL_OUT_OF_RANGE = "Level %s of CCF factor is out of range\n";
inline constexpr const char* UNKNOWN_GROUP_OPTION = "Unknown CCF group option";
inline constexpr const char* MISSING_FACTOR = "Factor of level %s of CCF group is missing\n";

}  // namespace OrvaParserMessages
