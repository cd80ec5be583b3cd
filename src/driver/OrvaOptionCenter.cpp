// The options and their defaults.
//
// The center is a list of attributes whose values carry their types; the table below gives both,
// and the order in which options are listed. An option keeps its type: the set command reads a new
// value by the type of the present one. Setting the seed seeds the randomizer, but only through
// SetIntegerOption: a script that writes the option through GetOption does not, which is the
// defined behaviour.

#include "driver/OrvaOptionCenter.h"

#include <cassert>
#include <climits>

#include "driver/OrvaInterpreter.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

using Center = OrvaOptionCenter;

namespace {

// An option and its default, whose type is the option's.
struct Option {
  constexpr Option(const char* option, bool value)
      : name(option), type(LumoConstant::BOOL), boolean(value) {}
  constexpr Option(const char* option, int value)
      : name(option), type(LumoConstant::INT), integer(value) {}
  constexpr Option(const char* option, double value)
      : name(option), type(LumoConstant::DOUBLE), real(value) {}
  constexpr Option(const char* option, const char* value)
      : name(option), type(LumoConstant::STRING), text(value) {}

  const char* name;
  LumoConstant::Type type;
  bool boolean = false;
  int integer = 0;
  double real = 0.0;
  const char* text = nullptr;
};

constexpr bool ON = true;
constexpr bool OFF = false;

constexpr Option OPTIONS[] = {
    {Center::INPUT_FILE, "orva.xml"},
    {Center::CHECK_EVENT_REDEFINITION, ON},
    {Center::CHECK_PARAMETER_REDEFINITION, ON},
    {Center::CHECK_CCF_GROUP_REDEFINITION, ON},
    {Center::MISSION_TIME, 0.0},
    {Center::TOP_EVENT, "top-event"},
    {Center::SYSTEM_HANDLE, "system"},
    {Center::HANDLE, "MCS"},
    {Center::MINIMUM_PROBABILITY, 0.0},
    {Center::MINIMUM_CONTRIBUTION, 0.0},
    {Center::MAXIMUM_ORDER, INT_MAX},
    {Center::OUTPUT_FORMAT, "open-psa"},
    {Center::OUTPUT_FILE, "results.txt"},
    {Center::OUTPUT_MODE, "write"},
    {Center::PRINT_MINIMAL_CUTSET_RANK, ON},
    {Center::PRINT_MINIMAL_CUTSET_ORDER, OFF},
    {Center::PRINT_MINIMAL_CUTSET_PROBABILITY, ON},
    {Center::PRINT_MINIMAL_CUTSET_CONTRIBUTION, ON},
    {Center::PRINT_NUMBER_OF_OCCURRENCES_IN_MINIMAL_CUTSETS, ON},
    {Center::PRINT_PROBABILITY, ON},
    {Center::PRINT_CONDITIONAL_PROBABILITY_1, OFF},
    {Center::PRINT_CONDITIONAL_PROBABILITY_0, OFF},
    {Center::PRINT_MARGINAL_IMPORTANCE_FACTOR, ON},
    {Center::PRINT_CRITICAL_IMPORTANCE_FACTOR, ON},
    {Center::PRINT_DIAGNOSIS_IMPORTANCE_FACTOR, ON},
    {Center::PRINT_RISK_ACHIEVEMENT_WORTH, ON},
    {Center::PRINT_RISK_REDUCTION_WORTH, ON},
    {Center::PRINT_FUSSEL_VESELY_IMPORTANCE_FACTOR, OFF},
    {Center::NUMBER_OF_TRIES, 1000},
    {Center::PRINT_BASIC_EVENT_SENSITIVITY, OFF},
    {Center::PRINT_PARAMETER_SENSITIVITY, OFF},
    {Center::PRINT_MEAN, ON},
    {Center::PRINT_STANDARD_DEVIATION, ON},
    {Center::PRINT_CONFIDENCE_RANGE, ON},
    {Center::PRINT_ERROR_FACTOR, ON},
    {Center::NUMBER_OF_QUANTILES, 0},
    {Center::NUMBER_OF_BINS, 20},
    {Center::RANDOMIZER_SEED, 12345},
    {Center::FIRST_DATE, 0.0},
    {Center::LAST_DATE, 0.0},
    {Center::STEP, 0.0},
    {Center::ADD_SINGULAR_POINTS, ON},
    {Center::SMOOTH_CURVE, ON},
    {Center::SMOOTHING_RATIO, 0.1},
    {Center::PRINT_UNAVAILABILITY, ON},
    {Center::PRINT_AVERAGE_UNAVAILABILITY, OFF},
    {Center::PRINT_CONDITIONAL_FAILURE_INTENSITY, ON},
    {Center::PRINT_AVERAGE_CONDITIONAL_FAILURE_INTENSITY, OFF},
    {Center::PRINT_UNRELIABILITY, OFF},
    {Center::PRINT_PROBABILITY_OF_FAILURE_PER_HOUR, OFF},
    {Center::PRINT_SAFETY_INTEGRITY_LEVEL, OFF},
};

}  // namespace

OrvaOptionCenter::OrvaOptionCenter(OrvaInterpreter* interpreter) : _interpreter(interpreter) {
  for (const Option& option : OPTIONS) {
    switch (option.type) {
      case LumoConstant::BOOL:
        SetBooleanOption(option.name, option.boolean);
        break;
      case LumoConstant::INT:
        SetIntegerOption(option.name, option.integer);
        break;
      case LumoConstant::DOUBLE:
        SetRealOption(option.name, option.real);
        break;
      default:
        assert(option.type == LumoConstant::STRING);
        SetStringOption(option.name, option.text);
    }
  }
  LumoMemoryManager::TraceNew(this, "OrvaOptionCenter");
}

OrvaOptionCenter::~OrvaOptionCenter() { LumoMemoryManager::TraceDelete(this, "OrvaOptionCenter"); }

void OrvaOptionCenter::SetStringOption(const char* name, const char* text) {
  _options.SetValueOfAttribute(name, text);
}

void OrvaOptionCenter::SetRealOption(const char* name, double value) {
  _options.SetValueOfAttribute(name, value);
}

void OrvaOptionCenter::SetIntegerOption(const char* name, int value) {
  _options.SetValueOfAttribute(name, value);
  if (LumoRawString::IsEqual(name, RANDOMIZER_SEED)) _interpreter->SetRandomizerSeed(value);
}

void OrvaOptionCenter::SetBooleanOption(const char* name, bool value) {
  _options.SetValueOfAttribute(name, value);
}

const char* OrvaOptionCenter::GetStringOption(const char* name) const {
  return _options.GetValueOfAttributeAsString(name, nullptr);
}

double OrvaOptionCenter::GetRealOption(const char* name) const {
  return _options.GetValueOfAttributeAsDouble(name, 0.0);
}

int OrvaOptionCenter::GetIntegerOption(const char* name) const {
  return _options.GetValueOfAttributeAsInt(name, 0);
}

bool OrvaOptionCenter::GetBooleanOption(const char* name) const {
  return _options.GetValueOfAttributeAsBool(name, false);
}
