// The compute command.

#include <memory>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "driver/OrvaInterpreterSwitches.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "printer/OrvaPrinter.h"
#include "store/OrvaMCSSet.h"
#include "support/statistics/LumoCurve.h"
#include "xml/LumoXMLNode.h"

using Center = OrvaOptionCenter;

namespace {

constexpr const char* TOO_MANY_POINTS = "Too many points in a curve\n";
constexpr const char* NUMBER_TOO_LARGE = "The number is too large: %s\n";

void PrintCurveOfProbability(OrvaPrinter* printer, const LumoCurve* curve, LumoStream* stream) {
  if (printer->printUnavailability || printer->printAverageUnavailability) {
    printer->PrintUnavailability(curve, stream);
  }
  if (printer->printSafetyIntegrityLevel) printer->PrintSafetyIntegrityLevel(true, curve, stream);
}

void PrintCurveOfFailureIntensity(OrvaPrinter* printer, const LumoCurve* curve,
                                  LumoStream* stream) {
  if (printer->printConditionalFailureIntensity ||
      printer->printAverageConditionalFailureIntensity || printer->printUnreliability ||
      printer->printProbabilityOfFailurePerHour) {
    printer->PrintFailureIntensity(curve, stream);
  }
  if (printer->printSafetyIntegrityLevel) printer->PrintSafetyIntegrityLevel(false, curve, stream);
}

}  // namespace

const OrvaInterpreter::Commands OrvaInterpreter::_COMPUTE_COMMANDS = {
    [] {
      using Interpreter = OrvaInterpreter;
      static constexpr Command ROWS[] = {
          {"values-of-parameters", &Interpreter::_DownloadCommandComputeValuesOfParameters},
          {"probabilities-of-basic-events",
           &Interpreter::_DownloadCommandComputeProbabilitiesOfBasicEvents},
          {"probability", &Interpreter::_DownloadCommandComputeTopEventProbability},
          {"importance-factors", &Interpreter::_DownloadCommandComputeImportanceFactors},
          {"orders", &Interpreter::_DownloadCommandComputeOrdersOfMinimalCutsets},
          {"sensitivity", &Interpreter::_DownloadCommandComputeTopEventSensitivity},
          {"failure-intensity", &Interpreter::_DownloadCommandComputeFailureIntensity},
      };
      return std::span<const Command>(ROWS);
    }(),
    "Not a compute command option", true};

void OrvaInterpreter::_DownloadCommandCompute(int& error, const LumoXMLNode* command) {
  _DownloadCommands(error, command, _COMPUTE_COMMANDS);
}

void OrvaInterpreter::_DownloadSwitches(int& error, const LumoXMLNode* command,
                                        std::span<const Switch> switches) {
  for (const Switch& row : switches) {
    _DownloadBooleanOption(error, command, row.option, _printer.get()->*row.isOn);
  }
}

// These two take the mission time from their own attribute only, as it stands.

void OrvaInterpreter::_DownloadCommandComputeValuesOfParameters(int& error,
                                                                const LumoXMLNode* command) {
  const double missionTime = command->GetAttributeValueAsDouble(Center::MISSION_TIME, 0.0);
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  _model->ComputeValuesOfParameters(missionTime);
  _printer->PrintValuesOfParameters(_model.get(), _model->GetMissionTime(), stream);
  _CloseOutputStream(error, stream);
}

void OrvaInterpreter::_DownloadCommandComputeProbabilitiesOfBasicEvents(
    int& error, const LumoXMLNode* command) {
  const double missionTime = command->GetAttributeValueAsDouble(Center::MISSION_TIME, 0.0);
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  _model->ComputeProbabilitiesOfBasicEvents(missionTime);
  _printer->PrintProbabilitiesOfBasicEvents(_model.get(), _model->GetMissionTime(), stream);
  _CloseOutputStream(error, stream);
}

// With a last date of its own the command computes a curve, whatever the option center says.
void OrvaInterpreter::_DownloadCommandComputeTopEventProbability(int& error,
                                                                 const LumoXMLNode* command) {
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::MCS_HANDLE, handle);
  if (handle == nullptr) return;
  double lastDate = 0.0;
  if (_DownloadRealOption(error, command, Center::LAST_DATE, lastDate)) {
    _ComputeCurveOfTopEventProbability(error, command, lastDate, handle);
  } else {
    _ComputeTopEventProbabilityAtMissionTime(error, command, handle);
  }
}

void OrvaInterpreter::_ComputeTopEventProbabilityAtMissionTime(int& error,
                                                               const LumoXMLNode* command,
                                                               OrvaHandle* handle) {
  double missionTime = 0.0;
  _DownloadRealOption(error, command, Center::MISSION_TIME, missionTime);
  if (error != 0) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  handle->ResetRandomDeviatesOfBasicEvents();
  handle->ComputeTopEventProbability(missionTime);
  _printer->PrintTopEventProbability(handle->GetTopEvent(), handle, missionTime, stream);
  _CloseOutputStream(error, stream);
}

void OrvaInterpreter::_DownloadCurveOptions(int& error, const LumoXMLNode* command,
                                            CurveOptions& options) {
  _DownloadRealOption(error, command, Center::STEP, options.step);
  _DownloadBooleanOption(error, command, Center::ADD_SINGULAR_POINTS, options.addSingularPoints);
  _DownloadBooleanOption(error, command, Center::SMOOTH_CURVE, options.smoothCurve);
  _DownloadRealOption(error, command, Center::SMOOTHING_RATIO, options.smoothingRatio);
}

bool OrvaInterpreter::_CheckCurve(int& error, const LumoXMLNode* command, const LumoCurve& curve) {
  const bool isComplete = curve.GetNumberOfPoints() < OrvaHandle::MAXIMUM_NUMBER_OF_POINTS;
  if (!isComplete) _Report(error, TOO_MANY_POINTS, command);
  return isComplete;
}

void OrvaInterpreter::_ComputeCurveOfTopEventProbability(int& error, const LumoXMLNode* command,
                                                         double lastDate, OrvaHandle* handle) {
  static constexpr Switch SWITCHES[] = {
      {Center::PRINT_UNAVAILABILITY, &OrvaPrinter::printUnavailability},
      {Center::PRINT_AVERAGE_UNAVAILABILITY, &OrvaPrinter::printAverageUnavailability},
      {Center::PRINT_SAFETY_INTEGRITY_LEVEL, &OrvaPrinter::printSafetyIntegrityLevel},
  };
  double firstDate = 0.0;
  CurveOptions options;
  _DownloadRealOption(error, command, Center::FIRST_DATE, firstDate);
  _DownloadCurveOptions(error, command, options);
  if (error != 0) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  LumoCurve curve;
  handle->ResetRandomDeviatesOfBasicEvents();
  handle->ComputeCurveOfTopEventProbability(firstDate, lastDate, options.step,
                                            options.addSingularPoints, options.smoothCurve,
                                            options.smoothingRatio, &curve);
  _DownloadSwitches(error, command, SWITCHES);
  if (_CheckCurve(error, command, curve)) PrintCurveOfProbability(_printer.get(), &curve, stream);
  _CloseOutputStream(error, stream);
}

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
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::MCS_HANDLE, handle);
  if (handle == nullptr) return;
  double lastDate = 0.0;
  CurveOptions options;
  _DownloadRealOption(error, command, Center::LAST_DATE, lastDate);
  _DownloadCurveOptions(error, command, options);
  if (error != 0) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  LumoCurve curve;
  handle->ResetRandomDeviatesOfBasicEvents();
  handle->ComputeCurveOfTopEventConditionalFailureIntensity(
      lastDate, options.step, options.addSingularPoints, options.smoothCurve,
      options.smoothingRatio, &curve);
  _DownloadSwitches(error, command, SWITCHES);
  if (_CheckCurve(error, command, curve)) {
    PrintCurveOfFailureIntensity(_printer.get(), &curve, stream);
  }
  _CloseOutputStream(error, stream);
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
  if (error != 0) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  handle->ResetRandomDeviatesOfBasicEvents();
  handle->ComputeImportanceFactorsOfBasicEvents(missionTime);
  _DownloadSwitches(error, command, SWITCHES);
  _printer->PrintImportanceFactorsOfBasicEvents(handle->GetTopEvent(), handle->GetBasicEvents(),
                                                handle, missionTime, stream);
  _CloseOutputStream(error, stream);
}

void OrvaInterpreter::_DownloadCommandComputeOrdersOfMinimalCutsets(int& error,
                                                                    const LumoXMLNode* command) {
  _DownloadCommandPrintOrders(error, command);
}

// The randomizer goes on from where the last run left it.
// False when there would be too many. A number below 0 gives none.
bool OrvaInterpreter::_DownloadNumberOfStatistics(int& error, const LumoXMLNode* command,
                                                  const char* option, int& number) {
  _DownloadIntegerOption(error, command, option, number);
  if (number <= MAXIMUM_NUMBER_OF_STATISTICS) return true;
  _Report(error, NUMBER_TOO_LARGE, option, command);
  number = 0;
  return false;
}

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
  int numberOfTries = 0;
  _DownloadRealOption(error, command, Center::MISSION_TIME, missionTime);
  _DownloadIntegerOption(error, command, Center::NUMBER_OF_TRIES, numberOfTries);
  if (error != 0) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  OrvaPrinter& printer = *_printer;
  _DownloadSwitches(error, command, MOMENTS);
  const bool hasQuantiles = _DownloadNumberOfStatistics(error, command, Center::NUMBER_OF_QUANTILES,
                                                        printer.numberOfQuantiles);
  const bool hasBins =
      _DownloadNumberOfStatistics(error, command, Center::NUMBER_OF_BINS, printer.numberOfBins);
  _DownloadSwitches(error, command, TABLES);
  if (hasQuantiles && hasBins) {
    handle->PerformSensitivityAnalysisOnTopEventProbability(
        missionTime, numberOfTries, _randomizer.get(), printer.numberOfQuantiles,
        printer.numberOfBins, printer.printParameterSensitivity,
        printer.printBasicEventSensitivity);
    if (printer.printParameterSensitivity) {
      printer.PrintSensitivitiesOfParameters(handle->GetParameters(), handle, missionTime, stream);
    }
    if (printer.printBasicEventSensitivity) {
      printer.PrintSensitivitiesOfBasicEvents(handle->GetBasicEvents(), handle, missionTime,
                                              stream);
    }
    printer.PrintSensitivityOfTopEvent(handle->GetTopEvent(), handle, missionTime, stream);
  }
  _CloseOutputStream(error, stream);
}
