// The print command.

#include <memory>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "driver/OrvaInterpreterSwitches.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "printer/OrvaPrinter.h"
#include "search/OrvaWalker.h"
#include "support/text/LumoRawString.h"
#include "support/text/LumoStream.h"
#include "system/OrvaAnalyzer.h"
#include "xml/LumoXMLDocument.h"

using Center = OrvaOptionCenter;

namespace {

constexpr const char* UNSUITABLE_HANDLE = "Unsuitable handle %s\n";
constexpr const char* NO_OPTION_NAME = "No option name\n";
constexpr const char* UNKNOWN_OPTION = "Unknown option %s\n";
constexpr const char* TALVIK = "talvik";
constexpr const char* EXCEL = "excel";

}  // namespace

const OrvaInterpreter::Commands OrvaInterpreter::_PRINT_COMMANDS = {
    [] {
      using Interpreter = OrvaInterpreter;
      static constexpr Command ROWS[] = {
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
      return std::span<const Command>(ROWS);
    }(),
    "Not a print command option", true};

void OrvaInterpreter::_DownloadCommandPrint(int& error, const LumoXMLNode* command) {
  _DownloadCommands(error, command, _PRINT_COMMANDS);
}

// Opens the output, lets `print` write to it, and closes it.
template <class Print>
void OrvaInterpreter::_PrintToOutput(int& error, const LumoXMLNode* command, Print print) {
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  print(stream);
  _CloseOutputStream(error, stream);
}

// The same with the handle that the command names, if it is of the type asked for.
template <class Print>
void OrvaInterpreter::_PrintHandleToOutput(int& error, const LumoXMLNode* command,
                                           OrvaHandle::Type type, Print print) {
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, type, handle);
  if (handle == nullptr) return;
  _PrintToOutput(error, command, [&](LumoStream* stream) { print(handle, stream); });
}

void OrvaInterpreter::_DownloadCommandPrintModel(int& error, const LumoXMLNode* command) {
  LumoXMLDocument* document;
  _printer->UploadModel(error, _model.get(), document);
  if (document == nullptr) return;
  _PrintToOutput(error, command,
                 [&](LumoStream* stream) { _printer->PrintDocument(document, stream); });
  delete document;
}

void OrvaInterpreter::_DownloadCommandPrintModules(int& error, const LumoXMLNode* command) {
  _PrintToOutput(error, command,
                 [&](LumoStream* stream) { _printer->PrintModules(_model.get(), stream); });
}

void OrvaInterpreter::_DownloadCommandPrintNumbersOfParents(int& error,
                                                            const LumoXMLNode* command) {
  OrvaEvent* topEvent;
  _DownloadOptionTopEvent(error, command, topEvent);
  if (topEvent == nullptr) return;
  _PrintToOutput(error, command, [&](LumoStream* stream) {
    LumoAVLTree* events;
    _analyzer->SortDescendantsByDecreasingNumbersOfParents(topEvent, events);
    for (const OrvaEvent* event : LumoItems<OrvaEvent>(*events)) {
      stream->Put(event->GetName());
      stream->Put("\t");
      stream->Putln(OrvaAnalyzer::GetNumberOfParents(event));
    }
    delete events;
  });
}

void OrvaInterpreter::_DownloadCommandPrintSystem(int& error, const LumoXMLNode* command) {
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::SYSTEM_HANDLE, handle);
  const char* format;
  _DownloadOptionFormat(error, command, format);
  if (handle == nullptr || format == nullptr) return;
  _PrintToOutput(error, command, [&](LumoStream* stream) {
    if (LumoRawString::IsEqual(format, TALVIK)) {
      _printer->PrintSystemAtTalvikFormat(handle->GetSystem(), stream);
    } else if (LumoRawString::IsEqual(format, EXCEL)) {
      _printer->PrintSystemAtExcelFormat(handle->GetSystem(), stream);
    } else {
      LumoXMLDocument* document;
      _printer->UploadSystem(error, handle->GetSystem(), document);
      _printer->PrintDocument(document, stream);
      delete document;
    }
  });
}

void OrvaInterpreter::_DownloadCommandPrintOccurrencesOfVariables(int& error,
                                                                  const LumoXMLNode* command) {
  _PrintHandleToOutput(error, command, OrvaHandle::SYSTEM_HANDLE,
                       [&](OrvaHandle* handle, LumoStream* stream) {
                         _printer->PrintDataOfVariables(handle->GetSystem(), stream,
                                                        &OrvaPrinter::PrintOccurrencesOfVariable,
                                                        "occurrences\n", nullptr);
                       });
}

void OrvaInterpreter::_DownloadCommandPrintValuesOfVariables(int& error,
                                                             const LumoXMLNode* command) {
  _PrintHandleToOutput(error, command, OrvaHandle::SYSTEM_HANDLE,
                       [&](OrvaHandle* handle, LumoStream* stream) {
                         _printer->PrintDataOfVariables(handle->GetSystem(), stream,
                                                        &OrvaPrinter::PrintValueOfVariable,
                                                        "values-of-variables\n", nullptr);
                       });
}

void OrvaInterpreter::_DownloadCommandPrintSystemStatistics(int& error,
                                                            const LumoXMLNode* command) {
  _PrintHandleToOutput(error, command, OrvaHandle::SYSTEM_HANDLE,
                       [&](OrvaHandle* handle, LumoStream* stream) {
                         _printer->PrintSystemStatistics(handle->GetSystem(), stream);
                       });
}

// The contribution column follows the rank option: its own option is not read.
void OrvaInterpreter::_DownloadCommandPrintMinimalCutsets(int& error, const LumoXMLNode* command) {
  static constexpr Switch SWITCHES[] = {
      {Center::PRINT_MINIMAL_CUTSET_RANK, &OrvaPrinter::printMinimalCutsetRank},
      {Center::PRINT_MINIMAL_CUTSET_ORDER, &OrvaPrinter::printMinimalCutsetOrder},
      {Center::PRINT_MINIMAL_CUTSET_PROBABILITY, &OrvaPrinter::printMinimalCutsetProbability},
  };
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, handle);
  if (handle == nullptr) return;
  if (handle->GetMCSSet() == nullptr) {
    return _Report(error, UNSUITABLE_HANDLE, handle->GetName(), command);
  }
  double missionTime = 0.0;
  _DownloadRealOption(error, command, Center::MISSION_TIME, missionTime);
  if (error != 0) return;
  _PrintToOutput(error, command, [&](LumoStream* stream) {
    handle->ResetRandomDeviatesOfBasicEvents();
    handle->ComputeProbabilitiesOfBasicEvents(missionTime);
    _DownloadSwitches(error, command, SWITCHES);
    _printer->printMinimalCutsetContribution = _printer->printMinimalCutsetRank;
    _printer->PrintMinimalCutsets(handle->GetMCSSet(), stream);
  });
}

void OrvaInterpreter::_DownloadCommandPrintOrders(int& error, const LumoXMLNode* command) {
  _PrintHandleToOutput(error, command, OrvaHandle::MCS_HANDLE,
                       [&](OrvaHandle* handle, LumoStream* stream) {
                         _printer->PrintOrdersOfMinimalCutsets(handle->GetMCSSet(), stream);
                       });
}

void OrvaInterpreter::_DownloadCommandPrintNumbersOfOccurrences(int& error,
                                                                const LumoXMLNode* command) {
  _PrintHandleToOutput(
      error, command, OrvaHandle::MCS_HANDLE, [&](OrvaHandle* handle, LumoStream* stream) {
        _printer->PrintNumberOfOccurrencesOfVariablesInMinimalCutsets(handle->GetMCSSet(), stream);
      });
}

void OrvaInterpreter::_DownloadCommandPrintWalkStatistics(int& error, const LumoXMLNode* command) {
  _PrintToOutput(error, command, [&](LumoStream* stream) {
    _printer->PrintWalkObserver(_walker->GetObserver(), stream);
  });
}

void OrvaInterpreter::_DownloadCommandPrintOption(int& error, const LumoXMLNode* command) {
  const char* name = command->GetAttributeValue("name");
  if (name == nullptr) return _Report(error, NO_OPTION_NAME, command);
  const LumoConstant* value = _optionCenter->GetOption(name);
  if (value == nullptr) return _Report(error, UNKNOWN_OPTION, name, command);
  _PrintToOutput(error, command,
                 [&](LumoStream* stream) { _printer->PrintOption(name, value, stream); });
}

void OrvaInterpreter::_DownloadCommandPrintOptions(int& error, const LumoXMLNode* command) {
  _PrintToOutput(error, command, [&](LumoStream* stream) { _printer->PrintOptions(stream); });
}
