#include "driver/OrvaCommandOptions.h"

#include "driver/OrvaOptionCenter.h"
#include "support/text/LumoRawString.h"
#include "xml/LumoXMLNode.h"

using Center = OrvaOptionCenter;
using Options = OrvaCommandOptions;

namespace {

constexpr const char* INPUT[] = {Center::INPUT_FILE};
constexpr const char* NAME[] = {Center::NAME};
constexpr const char* VALUE[] = {Center::VALUE};
constexpr const char* MISSION_TIME[] = {Center::MISSION_TIME};
constexpr const char* FORMAT[] = {Center::OUTPUT_FORMAT};

constexpr const char* TOP_EVENT[] = {Center::TOP_EVENT};
constexpr const char* SYSTEM[] = {Center::TOP_EVENT, Center::SYSTEM_HANDLE};
constexpr const char* SOURCE[] = {Center::TOP_EVENT, Center::HANDLE};
constexpr const char* CUTOFF[] = {Center::MINIMUM_PROBABILITY, Center::MINIMUM_CONTRIBUTION,
                                  Center::MAXIMUM_ORDER};
constexpr const char* ALGORITHM[] = {Options::ALGORITHM};

// A layout is read with every output, also where what is written has but one.
constexpr const char* OUTPUT[] = {Center::OUTPUT_FILE, Center::OUTPUT_MODE, Options::LAYOUT};

constexpr const char* CUTSET_COLUMNS[] = {Center::PRINT_MINIMAL_CUTSET_RANK,
                                          Center::PRINT_MINIMAL_CUTSET_ORDER,
                                          Center::PRINT_MINIMAL_CUTSET_PROBABILITY};
constexpr const char* IMPORTANCE_COLUMNS[] = {
    Center::PRINT_NUMBER_OF_OCCURRENCES_IN_MINIMAL_CUTSETS,
    Center::PRINT_PROBABILITY,
    Center::PRINT_CONDITIONAL_PROBABILITY_1,
    Center::PRINT_CONDITIONAL_PROBABILITY_0,
    Center::PRINT_MARGINAL_IMPORTANCE_FACTOR,
    Center::PRINT_CRITICAL_IMPORTANCE_FACTOR,
    Center::PRINT_DIAGNOSIS_IMPORTANCE_FACTOR,
    Center::PRINT_RISK_ACHIEVEMENT_WORTH,
    Center::PRINT_RISK_REDUCTION_WORTH,
    Center::PRINT_FUSSEL_VESELY_IMPORTANCE_FACTOR,
};
constexpr const char* SAMPLE[] = {Center::NUMBER_OF_TRIES, Options::SEED,
                                  Center::NUMBER_OF_QUANTILES, Center::NUMBER_OF_BINS};
constexpr const char* SAMPLE_TABLES[] = {
    Center::PRINT_MEAN,
    Center::PRINT_STANDARD_DEVIATION,
    Center::PRINT_CONFIDENCE_RANGE,
    Center::PRINT_ERROR_FACTOR,
    Center::PRINT_PARAMETER_SENSITIVITY,
    Center::PRINT_BASIC_EVENT_SENSITIVITY,
};

// Of the probability, whether at a date or as a curve. The exact one is taken from the system.
constexpr const char* APPROXIMATION[] = {Options::APPROXIMATION, Options::MAXIMUM_NODES,
                                         Center::SYSTEM_HANDLE};
constexpr const char* CURVE[] = {
    Center::LAST_DATE,           Center::STEP,
    Center::SMOOTH_CURVE,        Center::SMOOTHING_RATIO,
    Center::ADD_SINGULAR_POINTS, Options::FOLLOW_PARAMETERS,
};
constexpr const char* UNAVAILABILITY_COLUMNS[] = {
    Center::FIRST_DATE,
    Center::PRINT_UNAVAILABILITY,
    Center::PRINT_AVERAGE_UNAVAILABILITY,
    Center::PRINT_SAFETY_INTEGRITY_LEVEL,
};
constexpr const char* INTENSITY_COLUMNS[] = {
    Options::FAILURE_RATE,
    Center::PRINT_CONDITIONAL_FAILURE_INTENSITY,
    Center::PRINT_AVERAGE_CONDITIONAL_FAILURE_INTENSITY,
    Center::PRINT_UNRELIABILITY,
    Center::PRINT_PROBABILITY_OF_FAILURE_PER_HOUR,
    Center::PRINT_SAFETY_INTEGRITY_LEVEL,
};

constexpr Options Holder(const char* parent, const char* element) {
  return {.parent = parent, .element = element, .content = Options::ELEMENTS};
}

// A row with a condition stands before the row of all other commands of its name.
constexpr Options COMMANDS[] = {
    Holder("orva", "load"),
    {.parent = "load", .element = "model", .options = {INPUT}},
    {.parent = "load", .element = "script", .options = {INPUT}},
    Holder("orva", "check"),
    {.parent = "orva", .element = "normalize", .options = {TOP_EVENT}},
    {.parent = "orva", .element = "test", .options = {SOURCE, MISSION_TIME, OUTPUT}},
    Holder("orva", "set"),
    {.parent = "set", .element = "option", .attributes = NAME, .options = {VALUE}},
    Holder("set", "default-probability-distribution"),
    Holder("orva", "build"),
    {.parent = "build", .element = "system", .options = {SYSTEM}},
    {.parent = "build",
     .element = "minimal-cutsets",
     .options = {SYSTEM, SOURCE, MISSION_TIME, CUTOFF, ALGORITHM}},
    Holder("orva", "compute"),
    {.parent = "compute",
     .element = "values-of-parameters",
     .attributes = MISSION_TIME,
     .options = {OUTPUT}},
    {.parent = "compute",
     .element = "probabilities-of-basic-events",
     .attributes = MISSION_TIME,
     .options = {OUTPUT}},
    {.parent = "compute",
     .element = "probability",
     .given = Center::LAST_DATE,
     .options = {SOURCE, APPROXIMATION, CURVE, UNAVAILABILITY_COLUMNS, OUTPUT}},
    {.parent = "compute",
     .element = "probability",
     .options = {SOURCE, APPROXIMATION, MISSION_TIME, OUTPUT}},
    {.parent = "compute",
     .element = "importance-factors",
     .options = {SOURCE, MISSION_TIME, IMPORTANCE_COLUMNS, OUTPUT}},
    {.parent = "compute", .element = "orders", .options = {SOURCE, OUTPUT}},
    {.parent = "compute",
     .element = "sensitivity",
     .options = {SOURCE, MISSION_TIME, SAMPLE, SAMPLE_TABLES, OUTPUT}},
    {.parent = "compute",
     .element = "failure-intensity",
     .options = {SOURCE, CURVE, INTENSITY_COLUMNS, OUTPUT}},
    Holder("orva", "print"),
    {.parent = "print", .element = "model", .options = {OUTPUT}},
    {.parent = "print", .element = "modules", .options = {OUTPUT}},
    {.parent = "print", .element = "numbers-of-parents", .options = {TOP_EVENT, OUTPUT}},
    {.parent = "print", .element = "system", .options = {SOURCE, FORMAT, OUTPUT}},
    {.parent = "print", .element = "occurrences-of-variables", .options = {SOURCE, OUTPUT}},
    {.parent = "print", .element = "values-of-variables", .options = {SOURCE, OUTPUT}},
    {.parent = "print", .element = "system-statistics", .options = {SOURCE, OUTPUT}},
    {.parent = "print",
     .element = "minimal-cutsets",
     .options = {SOURCE, MISSION_TIME, CUTSET_COLUMNS, OUTPUT}},
    {.parent = "print", .element = "orders", .options = {SOURCE, OUTPUT}},
    {.parent = "print", .element = "numbers-of-occurrences", .options = {SOURCE, OUTPUT}},
    {.parent = "print", .element = "walk-statistics", .options = {OUTPUT}},
    {.parent = "print", .element = "option", .attributes = NAME, .options = {OUTPUT}},
    {.parent = "print", .element = "options", .options = {OUTPUT}},
};

bool IsIn(Options::Names names, const char* name) {
  for (const char* each : names) {
    if (LumoRawString::IsEqual(each, name)) return true;
  }
  return false;
}

}  // namespace

bool OrvaCommandOptions::ReadsOption(const char* name) const {
  for (const Names& names : options) {
    if (IsIn(names, name)) return true;
  }
  return false;
}

bool OrvaCommandOptions::ReadsAttribute(const char* name) const {
  return IsIn(attributes, name) || ReadsOption(name);
}

std::vector<const char*> OrvaCommandOptions::GetNames() const {
  std::vector<const char*> all(attributes.begin(), attributes.end());
  for (const Names& names : options) all.insert(all.end(), names.begin(), names.end());
  return all;
}

bool OrvaCommandOptions::_IsFor(const LumoXMLNode* command) const {
  return command->IsNodeOfName(element) && command->GetParent() != nullptr &&
         command->GetParent()->IsNodeOfName(parent);
}

const OrvaCommandOptions* OrvaCommandOptions::Find(const LumoXMLNode* command) {
  for (const Options& row : COMMANDS) {
    const char* text;
    if (!row._IsFor(command)) continue;
    if (row.given == nullptr || FindText(command, row.given, text)) return &row;
  }
  return nullptr;
}

bool OrvaCommandOptions::MayRead(const LumoXMLNode* command, const char* option) {
  for (const Options& row : COMMANDS) {
    const bool asks = LumoRawString::IsEqual(row.given, option);
    if (row._IsFor(command) && (asks || row.ReadsOption(option))) return true;
  }
  return false;
}

bool OrvaCommandOptions::FindTextInChildren(const LumoXMLNode* command, const char* option,
                                            const char*& text) {
  text = nullptr;
  for (const LumoXMLNode* child = command->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    if (child->IsNodeOfName(Center::ELEMENT) &&
        LumoRawString::IsEqual(child->GetAttributeValue(Center::NAME), option)) {
      text = child->GetAttributeValue(Center::VALUE);
      return true;
    }
  }
  return false;
}

bool OrvaCommandOptions::FindText(const LumoXMLNode* command, const char* option,
                                  const char*& text) {
  if (const LumoXMLAttribute* attribute = command->FindAttribute(option)) {
    text = attribute->GetValue();
    return true;
  }
  return FindTextInChildren(command, option, text);
}
