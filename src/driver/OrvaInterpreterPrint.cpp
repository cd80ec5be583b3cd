// The print command.

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "driver/OrvaOptionCenter.h"
#include "mcs/OrvaWalker.h"
#include "printer/OrvaPrinter.h"
#include "support/text/LumoRawString.h"
#include "xml/LumoXMLDocument.h"

namespace {

constexpr const char* UNSUITABLE_HANDLE = "Unsuitable handle %s\n";
constexpr const char* TALVIK = "talvik";
constexpr const char* EXCEL = "excel";

}  // namespace

const OrvaInterpreter::Commands OrvaInterpreter::_PRINT_COMMANDS = {
    [] {
      static constexpr Command ROWS[] = {
          {"system", &OrvaInterpreter::_DownloadCommandPrintSystem},
          {"minimal-cutsets", &OrvaInterpreter::_DownloadCommandPrintMinimalCutsets},
          {"orders", &OrvaInterpreter::_DownloadCommandPrintOrders},
          {"walk-statistics", &OrvaInterpreter::_DownloadCommandPrintWalkStatistics},
      };
      return std::span<const Command>(ROWS);
    }(),
    "Not a print command option", true};

void OrvaInterpreter::_DownloadCommandPrint(int& error, const LumoXMLNode* command) {
  _DownloadCommands(error, command, _PRINT_COMMANDS);
}

void OrvaInterpreter::_DownloadCommandPrintSystem(int& error, const LumoXMLNode* command) {
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::SYSTEM_HANDLE, handle);
  const char* format;
  _DownloadOptionFormat(error, command, format);
  if (handle == nullptr || format == nullptr) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  if (LumoRawString::IsEqual(format, TALVIK)) {
    _printer->PrintSystemAtTalvikFormat(handle->GetSystem(), stream);
  } else if (LumoRawString::IsEqual(format, EXCEL)) {
    _printer->PrintSystemAtExcelFormat(handle->GetSystem(), stream);
  } else {
    _PrintSystemAtOpenPSAFormat(error, handle->GetSystem(), stream);
  }
  _CloseOutputStream(error, stream);
}

void OrvaInterpreter::_PrintSystemAtOpenPSAFormat(int& error, OrvaSystem* system,
                                                  LumoStream* stream) {
  LumoXMLDocument* document;
  _printer->UploadSystem(error, system, document);
  _printer->PrintDocument(document, stream);
  delete document;
}

// The contribution column follows the rank option: its own option is not read.
void OrvaInterpreter::_DownloadCommandPrintMinimalCutsets(int& error, const LumoXMLNode* command) {
  using Center = OrvaOptionCenter;
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, handle);
  if (handle == nullptr) return;
  if (handle->GetMCSSet() == nullptr) {
    return _Report(error, UNSUITABLE_HANDLE, handle->GetName(), command);
  }
  double missionTime = 0.0;
  _DownloadRealOption(error, command, Center::MISSION_TIME, missionTime);
  if (error != 0) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  handle->ResetRandomDeviatesOfBasicEvents();
  handle->ComputeProbabilitiesOfBasicEvents(missionTime);
  OrvaPrinter& printer = *_printer;
  _DownloadBooleanOption(error, command, Center::PRINT_MINIMAL_CUTSET_RANK,
                         printer.printMinimalCutsetRank);
  _DownloadBooleanOption(error, command, Center::PRINT_MINIMAL_CUTSET_ORDER,
                         printer.printMinimalCutsetOrder);
  _DownloadBooleanOption(error, command, Center::PRINT_MINIMAL_CUTSET_PROBABILITY,
                         printer.printMinimalCutsetProbability);
  printer.printMinimalCutsetContribution = printer.printMinimalCutsetRank;
  printer.PrintMinimalCutsets(handle->GetMCSSet(), stream);
  _CloseOutputStream(error, stream);
}

void OrvaInterpreter::_DownloadCommandPrintOrders(int& error, const LumoXMLNode* command) {
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::MCS_HANDLE, handle);
  if (handle == nullptr) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  _printer->PrintOrdersOfMinimalCutsets(handle->GetMCSSet(), stream);
  _CloseOutputStream(error, stream);
}

void OrvaInterpreter::_DownloadCommandPrintWalkStatistics(int& error, const LumoXMLNode* command) {
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  _printer->PrintWalkObserver(_walker->GetObserver(), stream);
  _CloseOutputStream(error, stream);
}
