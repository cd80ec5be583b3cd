// The compute command.

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "driver/OrvaOptionCenter.h"
#include "mcs/OrvaMCSSet.h"
#include "printer/OrvaPrinter.h"
#include "xml/LumoXMLNode.h"

namespace {
constexpr const char* NO_CURVES = "Curves over dates are not computed by this version\n";
}

const OrvaInterpreter::Commands OrvaInterpreter::_COMPUTE_COMMANDS = {
    [] {
      static constexpr Command ROWS[] = {
          {"probability", &OrvaInterpreter::_DownloadCommandComputeTopEventProbability},
          {"orders", &OrvaInterpreter::_DownloadCommandComputeOrdersOfMinimalCutsets},
      };
      return std::span<const Command>(ROWS);
    }(),
    "Not a compute command option", true};

void OrvaInterpreter::_DownloadCommandCompute(int& error, const LumoXMLNode* command) {
  _DownloadCommands(error, command, _COMPUTE_COMMANDS);
}

void OrvaInterpreter::_DownloadCommandComputeTopEventProbability(int& error,
                                                                 const LumoXMLNode* command) {
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::MCS_HANDLE, handle);
  if (handle == nullptr) return;
  const char* lastDate;
  if (_DownloadOptionInCommand(command, OrvaOptionCenter::LAST_DATE, lastDate)) {
    return _Report(error, NO_CURVES, command);
  }
  double missionTime = 0.0;
  _DownloadRealOption(error, command, OrvaOptionCenter::MISSION_TIME, missionTime);
  if (error != 0) return;
  LumoStream* stream;
  _OpenOutputStream(error, command, stream);
  if (stream == nullptr) return;
  handle->ResetRandomDeviatesOfBasicEvents();
  handle->ComputeTopEventProbability(missionTime);
  _printer->PrintTopEventProbability(handle->GetTopEvent(), handle, missionTime, stream);
  _CloseOutputStream(error, stream);
}

void OrvaInterpreter::_DownloadCommandComputeOrdersOfMinimalCutsets(int& error,
                                                                    const LumoXMLNode* command) {
  _DownloadCommandPrintOrders(error, command);
}
