#pragma once

#include "model/OrvaEvent.h"

// The words of the Open-PSA Model Exchange Format, as they are read and written. The operators of
// formulas and expressions and the models of common-cause failure groups name themselves.
namespace OrvaModelElements {

// Root elements.
inline constexpr const char* OPEN_PSA = "open-psa";
inline constexpr const char* SRF_PSA = "srf-psa";
inline constexpr const char* OPSA_MEF = "opsa-mef";
inline constexpr const char* RISKSPECTRUM_OPSA_MEF = "riskspectrum:opsa-mef";

// Definitions and where they stand.
inline constexpr const char* DEFINE_FAULT_TREE = "define-fault-tree";
inline constexpr const char* MODEL_DATA = "model-data";
inline constexpr const char* DEFINE_GATE = "define-gate";
inline constexpr const char* DEFINE_BASIC_EVENT = "define-basic-event";
inline constexpr const char* DEFINE_HOUSE_EVENT = "define-house-event";
inline constexpr const char* DEFINE_PARAMETER = "define-parameter";
inline constexpr const char* DEFINE_CCF_GROUP = "define-CCF-group";

// What several of them carry.
inline constexpr const char* NAME = "name";
inline constexpr const char* VALUE = "value";
inline constexpr const char* LABEL = "label";

// Thresholds of formulas.
inline constexpr const char* MIN = "min";
inline constexpr const char* MAX = "max";

// Common-cause failure groups.
inline constexpr const char* MODEL = "model";
inline constexpr const char* MEMBERS = "members";
inline constexpr const char* DISTRIBUTION = "distribution";
inline constexpr const char* FACTOR = "factor";
inline constexpr const char* FACTORS = "factors";
inline constexpr const char* LEVEL = "level";

// Attributes that the model keeps and that are written back, of basic events and of parameters.
inline constexpr const char* RISKSPECTRUM_MODEL = "riskspectrum:model";
inline constexpr const char* BASIC_EVENT_ATTRIBUTES[] = {RISKSPECTRUM_MODEL};
inline constexpr const char* PARAMETER_ATTRIBUTES[] = {"riskspectrum:type", "unit"};

// The elements that refer to an event, and the type that they say it has.
struct Reference {
  const char* element;
  OrvaEvent::Type type;
};
inline constexpr Reference REFERENCES[] = {
    {"event", OrvaEvent::UNSPECIFIED_EVENT},
    {"gate", OrvaEvent::GATE},
    {"basic-event", OrvaEvent::BASIC_EVENT},
    {"house-event", OrvaEvent::HOUSE_EVENT},
};

constexpr const char* GetElementOfReference(OrvaEvent::Type type) {
  for (const Reference& reference : REFERENCES) {
    if (reference.type == type) return reference.element;
  }
  return REFERENCES[0].element;
}

}  // namespace OrvaModelElements
