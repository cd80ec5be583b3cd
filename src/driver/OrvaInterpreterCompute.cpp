// The compute command.
//
// A sub-command first finds its handle, then reads what it computes with; after a fault in either
// it ends there, and its output file is not even opened, let alone emptied. Only with the output
// open does it compute and read what it prints: these options go straight into the printer, where
// they stay for the commands to come, and a bad switch ends the script but not the table.

#include <memory>
#include <span>
#include <string>

#include "diagram/OrvaExactProbability.h"
#include "driver/OrvaCommandOptions.h"
#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "model/OrvaModel.h"
#include "quantification/OrvaApproximation.h"
#include "support/random/LumoRandomizer.h"
#include "support/statistics/LumoCurve.h"
#include "support/time/LumoProgress.h"

using Center = OrvaOptionCenter;
using Options = OrvaCommandOptions;

// A kind of curve: how it is computed, what is printed of it, and how.
struct OrvaInterpreter::CurveKind {
  struct Options {
    double firstDate;
    double lastDate;
    double step = 0.0;
    bool addSingularPoints = false;
    bool smoothCurve = false;
    double smoothingRatio = 0.0;
    OrvaCurveCorrections corrections = {};
  };
  void (*compute)(OrvaHandle* handle, const Options& options, LumoCurve* curve);
  std::span<const Switch> switches;
  void (*print)(OrvaPrinter* printer, const LumoCurve* curve, LumoStream* stream);
  bool hasFailureRates = false;
};

namespace {

constexpr const char* TOO_MANY_POINTS = "Too many points in a curve\n";
constexpr const char* UNKNOWN_APPROXIMATION = "Unknown approximation %s\n";
constexpr const char* DIAGRAM_TOO_LARGE = "The exact probability of %s needs a larger diagram\n";
constexpr const char* NO_SYSTEM = "No system of %s under the system handle\n";
constexpr int DEFAULT_MAXIMUM_NODES = 10'000'000;

enum class Approximation { RARE_EVENT, UPPER_BOUND, EXACT };
constexpr OrvaWord<Approximation> APPROXIMATIONS[] = {
    {"rare-event", Approximation::RARE_EVENT},
    {"mcub", Approximation::UPPER_BOUND},
    {"exact", Approximation::EXACT},
};
constexpr const char* UNKNOWN_FAILURE_RATE = "Unknown failure rate %s\n";
constexpr const char* NOT_A_SEED = "Not a seed: %s\n";

constexpr OrvaWord<bool> FAILURE_RATES[] = {{"expression", false}, {"numeric", true}};

void PrintCurveOfProbability(OrvaPrinter* printer, const LumoCurve* curve, LumoStream* stream) {
  if (printer->printUnavailability || printer->printAverageUnavailability ||
      printer->layout == OrvaPrinter::IN_COLUMNS) {
    printer->PrintUnavailability(curve, stream);
  }
  if (printer->printSafetyIntegrityLevel) printer->PrintSafetyIntegrityLevel(true, curve, stream);
}

void PrintCurveOfFailureIntensity(OrvaPrinter* printer, const LumoCurve* curve,
                                  LumoStream* stream) {
  if (printer->printConditionalFailureIntensity ||
      printer->printAverageConditionalFailureIntensity || printer->printUnreliability ||
      printer->printProbabilityOfFailurePerHour || printer->layout == OrvaPrinter::IN_COLUMNS) {
    printer->PrintFailureIntensity(curve, stream);
  }
  if (printer->printSafetyIntegrityLevel) printer->PrintSafetyIntegrityLevel(false, curve, stream);
}

}  // namespace

void OrvaInterpreter::_DownloadCommandCompute(int& error, const LumoXMLNode* command) {
  using Interpreter = OrvaInterpreter;
  static constexpr Command COMMANDS[] = {
      {"values-of-parameters", &Interpreter::_DownloadCommandComputeValuesOfParameters},
      {"probabilities-of-basic-events",
       &Interpreter::_DownloadCommandComputeProbabilitiesOfBasicEvents},
      {"probability", &Interpreter::_DownloadCommandComputeTopEventProbability},
      {"importance-factors", &Interpreter::_DownloadCommandComputeImportanceFactors},
      {"orders", &Interpreter::_DownloadCommandComputeOrdersOfMinimalCutsets},
      {"sensitivity", &Interpreter::_DownloadCommandComputeTopEventSensitivity},
      {"failure-intensity", &Interpreter::_DownloadCommandComputeFailureIntensity},
  };
  _DownloadCommands(error, command, {COMMANDS, "Not a compute command option"});
}

// The two on a whole model take the mission time from their own attribute only, as it stands: this
// is the defined behaviour.

void OrvaInterpreter::_DownloadCommandComputeValuesOfParameters(int& error,
                                                                const LumoXMLNode* command) {
  const double missionTime = command->GetAttributeValueAsDouble(Center::MISSION_TIME, 0.0);
  _WriteOutput(error, command, [&](LumoStream* stream) {
    _model->ComputeValuesOfParameters(missionTime);
    _printer->PrintValuesOfParameters(_model.get(), _model->GetMissionTime(), stream);
  });
}

void OrvaInterpreter::_DownloadCommandComputeProbabilitiesOfBasicEvents(
    int& error, const LumoXMLNode* command) {
  const double missionTime = command->GetAttributeValueAsDouble(Center::MISSION_TIME, 0.0);
  _WriteOutput(error, command, [&](LumoStream* stream) {
    _model->ComputeProbabilitiesOfBasicEvents(missionTime);
    _printer->PrintProbabilitiesOfBasicEvents(_model.get(), _model->GetMissionTime(), stream);
  });
}

// With a last date of its own the command computes a curve, whatever the option center says.
void OrvaInterpreter::_DownloadCommandComputeTopEventProbability(int& error,
                                                                 const LumoXMLNode* command) {
  static constexpr Switch SWITCHES[] = {
      {Center::PRINT_UNAVAILABILITY, &OrvaPrinter::printUnavailability},
      {Center::PRINT_AVERAGE_UNAVAILABILITY, &OrvaPrinter::printAverageUnavailability},
      {Center::PRINT_SAFETY_INTEGRITY_LEVEL, &OrvaPrinter::printSafetyIntegrityLevel},
  };
  static constexpr CurveKind CURVE = {
      [](OrvaHandle* handle, const CurveKind::Options& options, LumoCurve* curve) {
        handle->ComputeCurveOfTopEventProbability(
            options.firstDate, options.lastDate, options.step, options.addSingularPoints,
            options.smoothCurve, options.smoothingRatio, curve, options.corrections);
      },
      SWITCHES, PrintCurveOfProbability};
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::MCS_HANDLE, handle);
  if (handle == nullptr) return;
  const std::unique_ptr<OrvaApproximation> approximation =
      _NewApproximation(error, command, handle);
  handle->SetApproximation(approximation.get());
  double lastDate = 0.0;
  if (_DownloadRealOption(error, command, Center::LAST_DATE, lastDate)) {
    double firstDate = 0.0;
    _DownloadRealOption(error, command, Center::FIRST_DATE, firstDate);
    _WriteCurve(error, command, handle, CURVE, firstDate, lastDate);
  } else {
    _WriteTopEventProbability(error, command, handle);
  }
  handle->SetApproximation(nullptr);
}

// What the command asks for in the place of the sum over the minimal cutsets; null for that sum.
std::unique_ptr<OrvaApproximation> OrvaInterpreter::_NewApproximation(int& error,
                                                                      const LumoXMLNode* command,
                                                                      OrvaHandle* handle) {
  switch (_DownloadWordInCommand(error, command, Options::APPROXIMATION, APPROXIMATIONS,
                                 UNKNOWN_APPROXIMATION)) {
    case Approximation::UPPER_BOUND:
      return std::make_unique<OrvaUpperBound>();
    case Approximation::EXACT:
      return _NewExactProbability(error, command, handle);
    default:
      return nullptr;
  }
}

std::unique_ptr<OrvaApproximation> OrvaInterpreter::_NewExactProbability(int& error,
                                                                         const LumoXMLNode* command,
                                                                         OrvaHandle* handle) {
  int maximumNodes = DEFAULT_MAXIMUM_NODES;
  _DownloadIntegerInCommand(error, command, Options::MAXIMUM_NODES, maximumNodes);
  const char* systemHandleName;
  _DownloadStringOption(error, command, Center::SYSTEM_HANDLE, systemHandleName);
  if (error != 0) return nullptr;
  OrvaDiagramGraph graph;
  const OrvaEvent* without =
      graph.BuildFromSystems(handle->GetTopEvent(), OrvaTextOrEmpty(systemHandleName));
  if (without != nullptr) {
    _Report(error, NO_SYSTEM, without->GetName(), command);
    return nullptr;
  }
  if (_watcher != nullptr) return nullptr;  // a rehearsal computes nothing
  std::unique_ptr<OrvaApproximation> exact = OrvaExactProbability::Build(graph, maximumNodes);
  if (exact == nullptr) {
    _Report(error, DIAGRAM_TOO_LARGE, handle->GetTopEvent()->GetName(), command);
  }
  return exact;
}

void OrvaInterpreter::_WriteTopEventProbability(int& error, const LumoXMLNode* command,
                                                OrvaHandle* handle) {
  double missionTime = 0.0;
  _DownloadRealOption(error, command, Center::MISSION_TIME, missionTime);
  _WriteOutput(error, command, [&](LumoStream* stream) {
    handle->ResetRandomDeviatesOfBasicEvents();
    handle->ComputeTopEventProbability(missionTime);
    _printer->PrintTopEventProbability(handle->GetTopEvent(), handle, missionTime, stream);
  });
}

// There is no first date: this curve begins at 0.
void OrvaInterpreter::_DownloadCommandComputeFailureIntensity(int& error,
                                                              const LumoXMLNode* command) {
  static constexpr Switch SWITCHES[] = {
      {Center::PRINT_CONDITIONAL_FAILURE_INTENSITY, &OrvaPrinter::printConditionalFailureIntensity},
      {Center::PRINT_AVERAGE_CONDITIONAL_FAILURE_INTENSITY,
       &OrvaPrinter::printAverageConditionalFailureIntensity},
      {Center::PRINT_UNRELIABILITY, &OrvaPrinter::printUnreliability},
      {Center::PRINT_PROBABILITY_OF_FAILURE_PER_HOUR,
       &OrvaPrinter::printProbabilityOfFailurePerHour},
      {Center::PRINT_SAFETY_INTEGRITY_LEVEL, &OrvaPrinter::printSafetyIntegrityLevel},
  };
  static constexpr CurveKind CURVE = {
      [](OrvaHandle* handle, const CurveKind::Options& options, LumoCurve* curve) {
        handle->ComputeCurveOfTopEventConditionalFailureIntensity(
            options.lastDate, options.step, options.addSingularPoints, options.smoothCurve,
            options.smoothingRatio, curve, options.corrections);
      },
      SWITCHES, PrintCurveOfFailureIntensity, true};
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::MCS_HANDLE, handle);
  if (handle == nullptr) return;
  double lastDate = 0.0;
  _DownloadRealOption(error, command, Center::LAST_DATE, lastDate);
  _WriteCurve(error, command, handle, CURVE, 0.0, lastDate);
}

void OrvaInterpreter::_WriteCurve(int& error, const LumoXMLNode* command, OrvaHandle* handle,
                                  const CurveKind& kind, double firstDate, double lastDate) {
  CurveKind::Options options = {firstDate, lastDate};
  _DownloadRealOption(error, command, Center::STEP, options.step);
  _DownloadBooleanOption(error, command, Center::ADD_SINGULAR_POINTS, options.addSingularPoints);
  _DownloadBooleanOption(error, command, Center::SMOOTH_CURVE, options.smoothCurve);
  _DownloadRealOption(error, command, Center::SMOOTHING_RATIO, options.smoothingRatio);
  _DownloadBooleanInCommand(error, command, Options::FOLLOW_PARAMETERS,
                            options.corrections.followsParameters);
  if (kind.hasFailureRates) {
    options.corrections.takesNumericFailureRates = _DownloadWordInCommand(
        error, command, Options::FAILURE_RATE, FAILURE_RATES, UNKNOWN_FAILURE_RATE);
  }
  _WriteOutput(error, command, [&](LumoStream* stream) {
    const LumoProgress progress("curve", "points so far");
    LumoCurve curve;
    handle->ResetRandomDeviatesOfBasicEvents();
    kind.compute(handle, options, &curve);
    _DownloadSwitches(error, command, kind.switches);
    if (curve.GetNumberOfPoints() >= OrvaHandle::MAXIMUM_NUMBER_OF_POINTS) {
      return _Report(error, TOO_MANY_POINTS, command);  // the curve may lack some
    }
    kind.print(_printer.get(), &curve, stream);
  });
}

void OrvaInterpreter::_DownloadCommandComputeImportanceFactors(int& error,
                                                               const LumoXMLNode* command) {
  static constexpr Switch SWITCHES[] = {
      {Center::PRINT_NUMBER_OF_OCCURRENCES_IN_MINIMAL_CUTSETS,
       &OrvaPrinter::printNumberOfOccurrences},
      {Center::PRINT_PROBABILITY, &OrvaPrinter::printProbability},
      {Center::PRINT_CONDITIONAL_PROBABILITY_1, &OrvaPrinter::printConditionalProbability1},
      {Center::PRINT_CONDITIONAL_PROBABILITY_0, &OrvaPrinter::printConditionalProbability0},
      {Center::PRINT_MARGINAL_IMPORTANCE_FACTOR, &OrvaPrinter::printMarginalImportanceFactor},
      {Center::PRINT_CRITICAL_IMPORTANCE_FACTOR, &OrvaPrinter::printCriticalImportanceFactor},
      {Center::PRINT_DIAGNOSIS_IMPORTANCE_FACTOR, &OrvaPrinter::printDiagnosisImportanceFactor},
      {Center::PRINT_RISK_ACHIEVEMENT_WORTH, &OrvaPrinter::printRiskAchievementWorth},
      {Center::PRINT_RISK_REDUCTION_WORTH, &OrvaPrinter::printRiskReductionWorth},
      {Center::PRINT_FUSSEL_VESELY_IMPORTANCE_FACTOR,
       &OrvaPrinter::printFusselVeselyImportanceFactor},
  };
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::MCS_HANDLE, handle);
  if (handle == nullptr) return;
  double missionTime = 0.0;
  _DownloadRealOption(error, command, Center::MISSION_TIME, missionTime);
  _WriteOutput(error, command, [&](LumoStream* stream) {
    handle->ResetRandomDeviatesOfBasicEvents();
    handle->ComputeImportanceFactorsOfBasicEvents(missionTime);
    _DownloadSwitches(error, command, SWITCHES);
    _printer->PrintImportanceFactorsOfBasicEvents(handle->GetTopEvent(), handle->GetBasicEvents(),
                                                  handle, missionTime, stream);
  });
}

void OrvaInterpreter::_DownloadCommandComputeOrdersOfMinimalCutsets(int& error,
                                                                    const LumoXMLNode* command) {
  _DownloadCommandPrintOrders(error, command);
}

// A seed starts the random numbers afresh, without a normal deviate that waits from before. There
// are seeds from which the generator does not get away.
void OrvaInterpreter::_DownloadOptionSeed(int& error, const LumoXMLNode* command) {
  int seed = 0;
  if (!_DownloadIntegerInCommand(error, command, Options::SEED, seed) || error != 0) return;
  _randomizer->SetSeed(seed);
  const long first = _randomizer->Draw();
  if (seed < 0 || _randomizer->Draw() == first) {
    return _Report(error, NOT_A_SEED, std::to_string(seed).c_str(), command);
  }
  _randomizer->SetSeed(seed);
  _randomizer->ResetNormalDrawValue();
}

// Without a seed the randomizer goes on from where the last run left it: this is the defined
// behaviour.
void OrvaInterpreter::_DownloadCommandComputeTopEventSensitivity(int& error,
                                                                 const LumoXMLNode* command) {
  static constexpr Switch MOMENTS[] = {
      {Center::PRINT_MEAN, &OrvaPrinter::printMean},
      {Center::PRINT_STANDARD_DEVIATION, &OrvaPrinter::printStandardDeviation},
      {Center::PRINT_CONFIDENCE_RANGE, &OrvaPrinter::printConfidenceRange},
      {Center::PRINT_ERROR_FACTOR, &OrvaPrinter::printErrorFactor},
  };
  static constexpr Switch TABLES[] = {
      {Center::PRINT_PARAMETER_SENSITIVITY, &OrvaPrinter::printParameterSensitivity},
      {Center::PRINT_BASIC_EVENT_SENSITIVITY, &OrvaPrinter::printBasicEventSensitivity},
  };
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::MCS_HANDLE, handle);
  if (handle == nullptr) return;
  double missionTime = 0.0;
  int tries = 0;
  _DownloadRealOption(error, command, Center::MISSION_TIME, missionTime);
  _DownloadIntegerOption(error, command, Center::NUMBER_OF_TRIES, tries);
  _DownloadOptionSeed(error, command);
  _WriteOutput(error, command, [&](LumoStream* stream) {
    OrvaPrinter& out = *_printer;
    _DownloadSwitches(error, command, MOMENTS);
    const bool hasQuantiles = _DownloadNumberOfStatistics(
        error, command, Center::NUMBER_OF_QUANTILES, out.numberOfQuantiles);
    const bool hasBins =
        _DownloadNumberOfStatistics(error, command, Center::NUMBER_OF_BINS, out.numberOfBins);
    _DownloadSwitches(error, command, TABLES);
    if (!hasQuantiles || !hasBins) return;
    handle->PerformSensitivityAnalysisOnTopEventProbability(
        missionTime, tries, _randomizer.get(), out.numberOfQuantiles, out.numberOfBins,
        out.printParameterSensitivity, out.printBasicEventSensitivity);
    if (out.printParameterSensitivity) {
      out.PrintSensitivitiesOfParameters(handle->GetParameters(), handle, missionTime, stream);
    }
    if (out.printBasicEventSensitivity) {
      out.PrintSensitivitiesOfBasicEvents(handle->GetBasicEvents(), handle, missionTime, stream);
    }
    out.PrintSensitivityOfTopEvent(handle->GetTopEvent(), handle, missionTime, stream);
  });
}
