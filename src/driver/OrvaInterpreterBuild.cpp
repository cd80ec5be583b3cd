// The build command: systems and minimal cutsets.

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "reader/OrvaChecker.h"
#include "search/OrvaWalker.h"
#include "support/text/LumoRawString.h"
#include "support/time/LumoTimer.h"
#include "system/OrvaRewriter.h"
#include "system/OrvaSystemBuilder.h"
#include "xml/LumoXMLNode.h"

namespace {

constexpr const char* NO_SOURCE_HANDLE = "No source handle for module %s\n";
constexpr const char* SOURCE_HANDLE_IS_NO_SYSTEM = "Source handle for module %s is not a system\n";
constexpr const char* FORMULAS_TOO_LARGE = "The formulas below %s grow too large\n";
constexpr const char* TOO_MANY_BASIC_EVENTS = "Too many basic events in minimal cutsets\n";
constexpr const char* SAME_HANDLES = "System and MCS handles cannot be the same.\n";

}  // namespace

const OrvaInterpreter::Commands OrvaInterpreter::_BUILD_COMMANDS = {
    [] {
      static constexpr Command ROWS[] = {
          {"system", &OrvaInterpreter::_DownloadCommandBuildSystem},
          {"minimal-cutsets", &OrvaInterpreter::_DownloadCommandBuildMinimalCutsets},
      };
      return std::span<const Command>(ROWS);
    }(),
    "Not a build command option\n", true};

void OrvaInterpreter::_DownloadCommandBuild(int& error, const LumoXMLNode* command) {
  _DownloadCommands(error, command, _BUILD_COMMANDS);
}

void OrvaInterpreter::_DownloadCommandBuildSystem(int& error, const LumoXMLNode* command) {
  OrvaEvent* topEvent;
  _DownloadOptionTopEvent(error, command, topEvent);
  const char* systemHandleName;
  _DownloadStringOption(error, command, OrvaOptionCenter::SYSTEM_HANDLE, systemHandleName);
  if (topEvent == nullptr || systemHandleName == nullptr) return;
  _model->Complete();
  _checker->CheckModel(error, _model.get());
  if (error != 0) return;
  _systemBuilder->BuildSystem(_model.get(), topEvent, systemHandleName, true);
}

void OrvaInterpreter::_DownloadCommandBuildMinimalCutsets(int& error, const LumoXMLNode* command) {
  OrvaEvent* topEvent;
  _DownloadOptionTopEvent(error, command, topEvent);
  double missionTime = 0.0;
  _DownloadRealOption(error, command, OrvaOptionCenter::MISSION_TIME, missionTime);
  std::unique_ptr<OrvaCutoff> cutoff;
  _DownloadOptionCutoff(error, command, cutoff);
  if (error != 0) return;
  _PrepareModel(error, topEvent);
  if (error != 0) return;
  const char* systemHandleName =
      _DownloadHandleName(error, command, OrvaOptionCenter::SYSTEM_HANDLE);
  _FindOrBuildSystem(error, command, topEvent, systemHandleName);
  if (error != 0) return;
  const char* handleName = _DownloadHandleName(error, command, OrvaOptionCenter::HANDLE);
  if (LumoRawString::IsEqual(handleName, systemHandleName)) {
    return _Report(error, SAME_HANDLES, command);
  }
  _ComputeMinimalCutsets(error, topEvent, systemHandleName, handleName, missionTime, cutoff.get());
}

// The name of a handle to be made: an option set to nothing is the empty name.
const char* OrvaInterpreter::_DownloadHandleName(int& error, const LumoXMLNode* command,
                                                 const char* option) {
  const char* name;
  _DownloadStringOption(error, command, option, name);
  return name == nullptr ? "" : name;
}

// The expansion of common-cause failure groups can close a ring: a group may find the event of a
// subset defined, by a formula that uses a member.
void OrvaInterpreter::_NormalizeModel(int& error, OrvaEvent* topEvent) {
  _model->Complete();
  _checker->CheckCCFGroups(error, _model.get());
  if (error != 0) return;
  _model->ExpandCCFGroups();
  _checker->CheckCyclesOfGates(error, _model.get());
  if (error != 0) return;
  _rewriter->NormalizeModel(error, _model.get(), topEvent);
  if (error != 0) return _Report(error, FORMULAS_TOO_LARGE, topEvent->GetName(), nullptr);
  _rewriter->Modularize(_model.get(), topEvent);
}

void OrvaInterpreter::_PrepareModel(int& error, OrvaEvent* topEvent) {
  _NormalizeModel(error, topEvent);
  if (error == 0) _checker->CheckModel(error, _model.get());
}

// The index of a basic event has to fit into a node of the cutset store.
bool OrvaInterpreter::_HasRoomForBasicEvents(OrvaSystem* system) const {
  int highest = _mcsManager->GetIndexOfHighestEntry();
  for (const OrvaVariable& variable : system->GetVariables()) {
    if (variable.IsInputVariable() && variable.GetEvent()->GetMCSIndex() == 0) ++highest;
  }
  return highest <= OrvaMCSNode::MAXIMUM_INDEX;
}

// A system of that name is used as it stands.
void OrvaInterpreter::_FindOrBuildSystem(int& error, const LumoXMLNode* command,
                                         OrvaEvent* topEvent, const char* systemHandleName) {
  const OrvaHandle* handle = topEvent->GetHandle(systemHandleName);
  if (handle == nullptr) {
    _systemBuilder->BuildSystem(_model.get(), topEvent, systemHandleName, true);
  } else if (handle->GetType() != OrvaHandle::SYSTEM_HANDLE) {
    _Report(error, SOURCE_HANDLE_IS_NO_SYSTEM, topEvent->GetName(), command);
  }
}

void OrvaInterpreter::_ComputeMinimalCutsets(int& error, OrvaEvent* topEvent,
                                             const char* systemHandleName, const char* handleName,
                                             double missionTime, const OrvaCutoff* cutoff) {
  LumoTimer timer;
  timer.Start();
  OrvaSystem* system = topEvent->GetHandle(systemHandleName)->GetSystem();
  _model->ResetRandomDeviatesOfModel();
  _model->ComputeProbabilitiesOfBasicEvents(missionTime);
  _ComputeMinimalCutsetsOfModules(error, system, systemHandleName, handleName, missionTime, cutoff);
  if (!_ComputeMinimalCutsetsOfEvent(error, topEvent, system, handleName, missionTime, cutoff)) {
    return;
  }
  _walker->ExpandMinimalCutset(topEvent, system, handleName, cutoff);
  timer.Stop();
  char* runningTime = timer.ToStringOfTimeInSeconds();
  _UpdateWalkObserver(topEvent, system, cutoff, runningTime);
  LumoRawString::Delete(runningTime);
}

// A module without a system is reported; the others are computed all the same.
void OrvaInterpreter::_ComputeMinimalCutsetsOfModules(int& error, OrvaSystem* system,
                                                      const char* systemHandleName,
                                                      const char* handleName, double missionTime,
                                                      const OrvaCutoff* cutoff) {
  for (OrvaVariable* variable : LumoItems<OrvaVariable>(system->GetDictionary())) {
    OrvaEvent* module = variable->GetEvent();
    if (!variable->IsInputVariable() || !module->IsModule()) continue;
    const OrvaHandle* source = module->GetHandle(systemHandleName);
    if (source == nullptr) {
      _Report(error, NO_SOURCE_HANDLE, module->GetName(), nullptr);
    } else if (source->GetType() != OrvaHandle::SYSTEM_HANDLE) {
      _Report(error, SOURCE_HANDLE_IS_NO_SYSTEM, module->GetName(), nullptr);
    } else {
      if (!_ComputeMinimalCutsetsOfEvent(error, module, source->GetSystem(), handleName,
                                         missionTime, cutoff)) {
        return;
      }
      const OrvaMCSSet* set = module->GetHandle(handleName)->GetMCSSet();
      double sum;
      double highest;
      set->ComputeSumOfMinimalCutsetProbabilities(sum);
      set->ComputeHighestMinimalCutsetProbability(highest);
      variable->SetProbability(sum);
      variable->SetHighestCutsetProbability(highest);
    }
  }
}

// Adds to a set of minimal cutsets of that name; a handle of another type gives way to a new set.
// False when the store has no room for the basic events.
bool OrvaInterpreter::_ComputeMinimalCutsetsOfEvent(int& error, OrvaEvent* event,
                                                    OrvaSystem* system, const char* handleName,
                                                    double missionTime, const OrvaCutoff* cutoff) {
  if (!_HasRoomForBasicEvents(system)) {
    _Report(error, TOO_MANY_BASIC_EVENTS, nullptr);
    return false;
  }
  _systemBuilder->LoadProbabilities(_model.get(), system, missionTime);
  OrvaHandle* handle = event->GetHandle(handleName);
  if (handle == nullptr || handle->GetType() != OrvaHandle::MCS_HANDLE) {
    auto* set = new OrvaMCSSet(_mcsManager.get(), _mcsManager->NewUndevelopedLeaf());
    handle = event->NewHandle(handleName, set);
  }
  _walker->BuildMinimalCutsetTree(system, cutoff, handle->GetMCSSet());
  return true;
}

void OrvaInterpreter::_UpdateWalkObserver(const OrvaEvent* topEvent, const OrvaSystem* system,
                                          const OrvaCutoff* cutoff, const char* runningTime) {
  OrvaWalkObserver* observer = _walker->GetObserver();
  observer->SetTopEventName(topEvent->GetName());
  observer->numberOfGates = system->GetNumberOfEquations();
  observer->numberOfBasicEvents = system->GetNumberOfAtomicVariables();
  observer->numberOfModules = system->GetNumberOfModules();
  observer->maximumOrder = cutoff->GetMaximumOrder();
  observer->minimumProbability = cutoff->GetMinimumProbability();
  observer->SetRunningTime(runningTime);
}
