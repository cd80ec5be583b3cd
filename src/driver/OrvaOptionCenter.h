#pragma once

#include "support/values/LumoAttributeList.h"

class OrvaInterpreter;

// The settings of an interpreter: named, typed values with their defaults, in the order in which
// they are defined. Commands read an option from their own element first and fall back to the
// center. Unknown names read as null, 0 and false; the commands report them.
class OrvaOptionCenter {
 public:
  static constexpr const char* INPUT_FILE = "input";
  static constexpr const char* CHECK_EVENT_REDEFINITION = "check-event-redefinition";
  static constexpr const char* CHECK_PARAMETER_REDEFINITION = "check-parameter-redefinition";
  static constexpr const char* CHECK_CCF_GROUP_REDEFINITION = "check-CCF-group-redefinition";
  static constexpr const char* MISSION_TIME = "mission-time";
  static constexpr const char* TOP_EVENT = "top-event";
  static constexpr const char* SYSTEM_HANDLE = "system-handle";
  static constexpr const char* HANDLE = "handle";
  static constexpr const char* MINIMUM_PROBABILITY = "minimum-probability";
  static constexpr const char* MINIMUM_CONTRIBUTION = "minimum-contribution";
  static constexpr const char* MAXIMUM_ORDER = "maximum-order";
  static constexpr const char* OUTPUT_FORMAT = "format";
  static constexpr const char* OUTPUT_FILE = "output";
  static constexpr const char* OUTPUT_MODE = "mode";
  static constexpr const char* PRINT_MINIMAL_CUTSET_RANK = "print-minimal-cutset-rank";
  static constexpr const char* PRINT_MINIMAL_CUTSET_ORDER = "print-minimal-cutset-order";
  static constexpr const char* PRINT_MINIMAL_CUTSET_PROBABILITY =
      "print-minimal-cutset-probability";
  // Defined and listed; the contribution column follows the rank option.
  static constexpr const char* PRINT_MINIMAL_CUTSET_CONTRIBUTION =
      "print-minimal-cutset-contribution";
  static constexpr const char* PRINT_NUMBER_OF_OCCURRENCES_IN_MINIMAL_CUTSETS =
      "print-number-of-occurrences";
  static constexpr const char* PRINT_PROBABILITY = "print-probability";
  static constexpr const char* PRINT_CONDITIONAL_PROBABILITY_1 = "print-conditional-probability-1";
  static constexpr const char* PRINT_CONDITIONAL_PROBABILITY_0 = "print-conditional-probability-0";
  static constexpr const char* PRINT_MARGINAL_IMPORTANCE_FACTOR =
      "print-marginal-importance-factor";
  static constexpr const char* PRINT_CRITICAL_IMPORTANCE_FACTOR =
      "print-critical-importance-factor";
  static constexpr const char* PRINT_DIAGNOSIS_IMPORTANCE_FACTOR =
      "print-diagnosis-importance-factor";
  static constexpr const char* PRINT_RISK_ACHIEVEMENT_WORTH = "print-risk-achievement-worth";
  static constexpr const char* PRINT_RISK_REDUCTION_WORTH = "print-risk-reduction-worth";
  static constexpr const char* PRINT_FUSSEL_VESELY_IMPORTANCE_FACTOR =
      "print-Fussel-Vesely-importance-factor";
  static constexpr const char* NUMBER_OF_TRIES = "number-of-tries";
  static constexpr const char* PRINT_BASIC_EVENT_SENSITIVITY = "print-basic-event-sensitivity";
  static constexpr const char* PRINT_PARAMETER_SENSITIVITY = "print-parameter-sensitivity";
  static constexpr const char* PRINT_MEAN = "print-mean";
  static constexpr const char* PRINT_STANDARD_DEVIATION = "print-standard-deviation";
  static constexpr const char* PRINT_CONFIDENCE_RANGE = "print-confidence-range";
  static constexpr const char* PRINT_ERROR_FACTOR = "print-error-factor";
  static constexpr const char* NUMBER_OF_QUANTILES = "number-of-quantiles";
  static constexpr const char* NUMBER_OF_BINS = "number-of-bins";
  static constexpr const char* RANDOMIZER_SEED = "randomizer-seed";
  static constexpr const char* FIRST_DATE = "first-date";
  static constexpr const char* LAST_DATE = "last-date";
  static constexpr const char* STEP = "step";
  static constexpr const char* ADD_SINGULAR_POINTS = "add-singular-points";
  static constexpr const char* SMOOTH_CURVE = "smooth-curve";
  static constexpr const char* SMOOTHING_RATIO = "smoothing-ratio";
  static constexpr const char* PRINT_UNAVAILABILITY = "print-unavailability";
  static constexpr const char* PRINT_AVERAGE_UNAVAILABILITY = "print-average-unavailability";
  static constexpr const char* PRINT_CONDITIONAL_FAILURE_INTENSITY =
      "print-conditional-failure-intensity";
  static constexpr const char* PRINT_AVERAGE_CONDITIONAL_FAILURE_INTENSITY =
      "print-average-conditional-failure-intensity";
  static constexpr const char* PRINT_UNRELIABILITY = "print-unreliability";
  static constexpr const char* PRINT_PROBABILITY_OF_FAILURE_PER_HOUR =
      "print-probability-of-failure-per-hour";
  static constexpr const char* PRINT_SAFETY_INTEGRITY_LEVEL = "print-safety-integrity-level";

  // How scripts write an option: an element with two attributes, and the values of a Boolean.
  static constexpr const char* ELEMENT = "option";
  static constexpr const char* NAME = "name";
  static constexpr const char* VALUE = "value";
  static constexpr const char* VALUE_ON = "on";
  static constexpr const char* VALUE_OFF = "off";

  // Defines every option with its default. The interpreter is not owned; its randomizer is seeded
  // with the default seed.
  explicit OrvaOptionCenter(OrvaInterpreter* interpreter);
  ~OrvaOptionCenter();
  OrvaOptionCenter(const OrvaOptionCenter&) = delete;
  OrvaOptionCenter& operator=(const OrvaOptionCenter&) = delete;

  // Set a value, defining the option when it is new. Setting the randomizer's seed here also seeds
  // the interpreter's randomizer; writing through GetOption does not.
  void SetStringOption(const char* name, const char* text);
  void SetRealOption(const char* name, double value);
  void SetIntegerOption(const char* name, int value);
  void SetBooleanOption(const char* name, bool value);

  const char* GetStringOption(const char* name) const;
  double GetRealOption(const char* name) const;
  int GetIntegerOption(const char* name) const;
  bool GetBooleanOption(const char* name) const;

  // The stored value itself, null for an unknown name.
  LumoConstant* GetOption(const char* name) const { return _options.GetValueOfAttribute(name); }
  // The options, as LumoAttributes, in the order of their definition.
  const LumoAttributeList& GetOptions() const { return _options; }

  // Offered to users of the class; the program itself does not call what follows.

  OrvaInterpreter* GetInterpreter() const { return _interpreter; }
  bool IsOption(const char* name) const { return _options.HasAttribute(name); }
  // The cursor over the options is the caller's.
  LumoCursor* NewCursorOnOptions() { return _options.NewCursor(); }

 private:
  OrvaInterpreter* _interpreter;
  LumoAttributeList _options;
};
