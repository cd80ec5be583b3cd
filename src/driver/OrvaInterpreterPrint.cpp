// The print command.
//
// What a table is about is read before the output is opened, so that a fault in it leaves the file
// of an earlier command as it was; a model that can't be written is found out before, too. What is
// computed for a table (the probabilities of the basic events at the mission time, the order of the
// events) and the switches of its columns follow with the output open.

#include <cassert>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "model/OrvaModel.h"
#include "search/OrvaWalker.h"
#include "system/OrvaAnalyzer.h"
#include "xml/LumoXMLDocument.h"

using Center = OrvaOptionCenter;

namespace {

constexpr const char* UNKNOWN_FORMAT = "Unknown format %s\n";
// With a line end, which the set command's message of that text has not.
constexpr const char* NO_OPTION_NAME = "No option name\n";
constexpr const char* UNKNOWN_OPTION = "Unknown option %s\n";

void PrintSystemAtOpenPSAFormat(OrvaPrinter* printer, OrvaSystem* system, LumoStream* stream) {
  int error = 0;
  LumoXMLDocument* document;
  printer->UploadSystem(error, system, document);
  assert(error == 0 && document != nullptr);  // every system can be written
  printer->PrintDocument(document, stream);
  delete document;
}

// The formats of systems.
using SystemPrinter = void (*)(OrvaPrinter* printer, OrvaSystem* system, LumoStream* stream);
constexpr OrvaWord<SystemPrinter> FORMATS[] = {
    {"open-psa", PrintSystemAtOpenPSAFormat},
    {"excel", [](OrvaPrinter* printer, OrvaSystem* system,
                 LumoStream* stream) { printer->PrintSystemAtExcelFormat(system, stream); }},
    {"talvik", [](OrvaPrinter* printer, OrvaSystem* system,
                  LumoStream* stream) { printer->PrintSystemAtTalvikFormat(system, stream); }},
};

}  // namespace

void OrvaInterpreter::_DownloadCommandPrint(int& error, const LumoXMLNode* command) {
  using Interpreter = OrvaInterpreter;
  static constexpr Command COMMANDS[] = {
      {"model", &Interpreter::_DownloadCommandPrintModel},
      {"modules", &Interpreter::_DownloadCommandPrintModules},
      {"numbers-of-parents", &Interpreter::_DownloadCommandPrintNumbersOfParents},
      {"system", &Interpreter::_DownloadCommandPrintSystem},
      {"occurrences-of-variables", &Interpreter::_DownloadCommandPrintOccurrencesOfVariables},
      {"values-of-variables", &Interpreter::_DownloadCommandPrintValuesOfVariables},
      {"system-statistics", &Interpreter::_DownloadCommandPrintSystemStatistics},
      {"minimal-cutsets", &Interpreter::_DownloadCommandPrintMinimalCutsets},
      {"orders", &Interpreter::_DownloadCommandPrintOrders},
      {"numbers-of-occurrences", &Interpreter::_DownloadCommandPrintNumbersOfOccurrences},
      {"walk-statistics", &Interpreter::_DownloadCommandPrintWalkStatistics},
      {"option", &Interpreter::_DownloadCommandPrintOption},
      {"options", &Interpreter::_DownloadCommandPrintOptions},
  };
  _DownloadCommands(error, command, {COMMANDS, "Not a print command option"});
}

void OrvaInterpreter::_DownloadOptionFormat(int& error, const LumoXMLNode* command,
                                            const char*& format) {
  _DownloadStringOption(error, command, Center::OUTPUT_FORMAT, format);
  if (OrvaFindWord(FORMATS, format) != nullptr) return;
  _Report(error, UNKNOWN_FORMAT, OrvaTextOrEmpty(format), command);
  format = nullptr;
}

void OrvaInterpreter::_DownloadCommandPrintModel(int& error, const LumoXMLNode* command) {
  LumoXMLDocument* document;
  _printer->UploadModel(error, _model.get(), document);
  if (document == nullptr) return;
  _WriteOutput(error, command,
               [&](LumoStream* stream) { _printer->PrintDocument(document, stream); });
  delete document;
}

void OrvaInterpreter::_DownloadCommandPrintModules(int& error, const LumoXMLNode* command) {
  _WriteOutput(error, command,
               [&](LumoStream* stream) { _printer->PrintModules(_model.get(), stream); });
}

void OrvaInterpreter::_DownloadCommandPrintNumbersOfParents(int& error,
                                                            const LumoXMLNode* command) {
  OrvaEvent* topEvent;
  _DownloadOptionTopEvent(error, command, topEvent);
  if (topEvent == nullptr) return;
  _WriteOutput(error, command, [&](LumoStream* stream) {
    LumoAVLTree* events;
    _analyzer->SortDescendantsByDecreasingNumbersOfParents(topEvent, events);
    _printer->PrintNumbersOfParents(events, stream);
    delete events;
  });
}

void OrvaInterpreter::_DownloadCommandPrintSystem(int& error, const LumoXMLNode* command) {
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::SYSTEM_HANDLE, handle);
  const char* format;
  _DownloadOptionFormat(error, command, format);
  _WriteOutput(error, command, [&](LumoStream* stream) {
    assert(format != nullptr && handle->GetSystem() != nullptr);
    OrvaFindWord(FORMATS, format)->value(_printer.get(), handle->GetSystem(), stream);
  });
}

void OrvaInterpreter::_DownloadCommandPrintOccurrencesOfVariables(int& error,
                                                                  const LumoXMLNode* command) {
  _WriteOutput(error, command, OrvaHandle::SYSTEM_HANDLE,
               [&](OrvaHandle* handle, LumoStream* stream) {
                 _printer->PrintOccurrencesOfVariables(handle->GetSystem(), stream);
               });
}

void OrvaInterpreter::_DownloadCommandPrintValuesOfVariables(int& error,
                                                             const LumoXMLNode* command) {
  _WriteOutput(error, command, OrvaHandle::SYSTEM_HANDLE,
               [&](OrvaHandle* handle, LumoStream* stream) {
                 _printer->PrintValuesOfVariables(handle->GetSystem(), stream);
               });
}

void OrvaInterpreter::_DownloadCommandPrintSystemStatistics(int& error,
                                                            const LumoXMLNode* command) {
  _WriteOutput(error, command, OrvaHandle::SYSTEM_HANDLE,
               [&](OrvaHandle* handle, LumoStream* stream) {
                 _printer->PrintSystemStatistics(handle->GetSystem(), stream);
               });
}

// The contribution column follows the rank option, and its own option is not read: this is the
// defined behaviour.
void OrvaInterpreter::_DownloadCommandPrintMinimalCutsets(int& error, const LumoXMLNode* command) {
  static constexpr Switch SWITCHES[] = {
      {Center::PRINT_MINIMAL_CUTSET_RANK, &OrvaPrinter::printMinimalCutsetRank},
      {Center::PRINT_MINIMAL_CUTSET_ORDER, &OrvaPrinter::printMinimalCutsetOrder},
      {Center::PRINT_MINIMAL_CUTSET_PROBABILITY, &OrvaPrinter::printMinimalCutsetProbability},
  };
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::MCS_HANDLE, handle);
  if (handle == nullptr) return;
  double missionTime = 0.0;
  _DownloadRealOption(error, command, Center::MISSION_TIME, missionTime);
  _WriteOutput(error, command, [&](LumoStream* stream) {
    handle->ResetRandomDeviatesOfBasicEvents();
    handle->ComputeProbabilitiesOfBasicEvents(missionTime);
    _DownloadSwitches(error, command, SWITCHES);
    _printer->printMinimalCutsetContribution = _printer->printMinimalCutsetRank;
    _printer->PrintMinimalCutsets(handle->GetMCSSet(), stream);
  });
}

void OrvaInterpreter::_DownloadCommandPrintOrders(int& error, const LumoXMLNode* command) {
  _WriteOutput(error, command, OrvaHandle::MCS_HANDLE, [&](OrvaHandle* handle, LumoStream* stream) {
    _printer->PrintOrdersOfMinimalCutsets(handle->GetMCSSet(), stream);
  });
}

void OrvaInterpreter::_DownloadCommandPrintNumbersOfOccurrences(int& error,
                                                                const LumoXMLNode* command) {
  _WriteOutput(error, command, OrvaHandle::MCS_HANDLE, [&](OrvaHandle* handle, LumoStream* stream) {
    _printer->PrintNumberOfOccurrencesOfVariablesInMinimalCutsets(handle->GetMCSSet(), stream);
  });
}

void OrvaInterpreter::_DownloadCommandPrintWalkStatistics(int& error, const LumoXMLNode* command) {
  _WriteOutput(error, command, [&](LumoStream* stream) {
    _printer->PrintWalkObserver(_walker->GetObserver(), stream);
  });
}

void OrvaInterpreter::_DownloadCommandPrintOption(int& error, const LumoXMLNode* command) {
  const char* name = command->GetAttributeValue(Center::NAME);
  if (name == nullptr) return _Report(error, NO_OPTION_NAME, command);
  const LumoConstant* value = _optionCenter->GetOption(name);
  if (value == nullptr) return _Report(error, UNKNOWN_OPTION, name, command);
  _WriteOutput(error, command,
               [&](LumoStream* stream) { _printer->PrintOption(name, value, stream); });
}

void OrvaInterpreter::_DownloadCommandPrintOptions(int& error, const LumoXMLNode* command) {
  _WriteOutput(error, command, [&](LumoStream* stream) { _printer->PrintOptions(stream); });
}
