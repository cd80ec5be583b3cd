// The build command: systems and minimal cutsets.
//
// A top event is computed by parts. The formulas below it are brought to normal form, its modules
// are found, and each module has a system of its own, in which it is the top; in the system of the
// top event it is one variable. The minimal cutsets of every module come first: their sum and their
// highest probability are what the search for the top event needs of a module for its limits. Only
// then are the module's cutsets put in the place of its variable. Diagrams find their own modules,
// and need none of this; the model's modules are computed by them all the same, since commands may
// ask for the results of a module.
//
// What can fail is looked at before it is relied on, in this order: groups whose gates would take a
// name in use, rings that their expansion has closed, formulas that normalisation lets grow too
// large, what the checker finds, and room for the indices of basic events in the cutset store. The
// systems keep pointers into the model, so an existing one is used as it stands.

#include <algorithm>
#include <cassert>
#include <memory>

#include "diagram/OrvaCutsetListing.h"
#include "diagram/OrvaCutsetSolver.h"
#include "diagram/OrvaDiagramGraph.h"
#include "driver/OrvaCommandOptions.h"
#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "model/OrvaModel.h"
#include "quantification/OrvaVariableIndices.h"
#include "reader/OrvaChecker.h"
#include "search/OrvaCutoff.h"
#include "search/OrvaWalker.h"
#include "support/time/LumoProgress.h"
#include "support/time/LumoTimer.h"
#include "system/OrvaRewriter.h"
#include "system/OrvaSystem.h"
#include "system/OrvaSystemBuilder.h"

namespace {

constexpr const char* NO_SOURCE_HANDLE = "No source handle for module %s\n";
constexpr const char* SOURCE_HANDLE_IS_NO_SYSTEM = "Source handle for module %s is not a system\n";
constexpr const char* FORMULAS_TOO_LARGE = "The formulas below %s grow too large\n";
constexpr const char* TOO_MANY_BASIC_EVENTS = "Too many basic events in minimal cutsets\n";
constexpr const char* UNKNOWN_ALGORITHM = "Unknown algorithm %s\n";
constexpr const char* INCOHERENT_FORMULA =
    "The algorithm \"diagram\" needs coherent formulas, without negation: %s\n";
constexpr const char* SAME_HANDLES = "System and MCS handles cannot be the same.\n";

enum class Algorithm { SEARCH, DIAGRAM };
constexpr OrvaWord<Algorithm> ALGORITHMS[] = {{"search", Algorithm::SEARCH},
                                              {"diagram", Algorithm::DIAGRAM}};

// Whether an event has no index in the cutset store yet.
bool IsNew(const OrvaEvent* event) { return event->GetMCSIndex() == 0; }

long CountNewEvents(OrvaSystem* system) {
  return std::ranges::count_if(system->GetVariables(), [](const OrvaVariable& variable) {
    assert(!variable.IsInputVariable() || variable.GetEvent() != nullptr);
    return variable.IsInputVariable() && IsNew(variable.GetEvent());
  });
}

// One computation of the minimal cutsets of a top event.
class CutsetComputation {
 public:
  CutsetComputation(OrvaInterpreter* interpreter, int& error, Algorithm algorithm,
                    const char* systemHandleName, const char* handleName, double missionTime,
                    const OrvaCutoff* cutoff)
      : _interpreter(interpreter),
        _error(error),
        _algorithm(algorithm),
        _systemHandleName(systemHandleName),
        _handleName(handleName),
        _missionTime(missionTime),
        _cutoff(cutoff) {}

  void Run(OrvaEvent* topEvent) {
    LumoTimer timer;
    timer.Start();
    const OrvaHandle* source = topEvent->GetHandle(_systemHandleName);
    assert(source != nullptr && source->GetType() == OrvaHandle::SYSTEM_HANDLE);
    OrvaSystem* system = source->GetSystem();
    _interpreter->GetModel()->ResetRandomDeviatesOfModel();
    _interpreter->GetModel()->ComputeProbabilitiesOfBasicEvents(_missionTime);
    if (!_ComputeModules(system) || !_ComputeEvent(topEvent, system)) return;
    if (_algorithm == Algorithm::SEARCH) {
      _interpreter->GetWalker()->ExpandMinimalCutset(topEvent, system, _handleName, _cutoff);
    }
    timer.Stop();
    char* runningTime = timer.ToStringOfTimeInSeconds();
    _UpdateWalkObserver(topEvent, system, runningTime);
    LumoRawString::Delete(runningTime);
  }

 private:
  void _Report(const char* format, const char* argument) {
    _error = 1;
    _interpreter->RaiseError(format, argument, nullptr);
  }

  // A module without a system is reported; the others are computed all the same. False when one of
  // them can't be computed.
  bool _ComputeModules(OrvaSystem* system) {
    for (OrvaVariable* variable : LumoItems<OrvaVariable>(system->GetDictionary())) {
      OrvaEvent* module = variable->GetEvent();
      if (!variable->IsInputVariable() || !module->IsModule()) continue;
      const OrvaHandle* source = module->GetHandle(_systemHandleName);
      if (source == nullptr) {
        _Report(NO_SOURCE_HANDLE, module->GetName());
      } else if (source->GetType() != OrvaHandle::SYSTEM_HANDLE) {
        _Report(SOURCE_HANDLE_IS_NO_SYSTEM, module->GetName());
      } else if (_ComputeEvent(module, source->GetSystem())) {
        _WeighVariable(variable, module->GetHandle(_handleName)->GetMCSSet());
      } else {
        return false;
      }
    }
    return true;
  }

  static void _WeighVariable(OrvaVariable* variable, const OrvaMCSSet* set) {
    assert(set != nullptr);
    double sum;
    double highest;
    set->ComputeSumOfMinimalCutsetProbabilities(sum);
    set->ComputeHighestMinimalCutsetProbability(highest);
    variable->SetProbability(sum);
    variable->SetHighestCutsetProbability(highest);
  }

  // False when the store has no room for the basic events, or the formulas don't suit the
  // algorithm.
  bool _ComputeEvent(OrvaEvent* event, OrvaSystem* system) {
    if (!_CheckRoom(CountNewEvents(system))) return false;
    _interpreter->GetSystemBuilder()->LoadProbabilities(_interpreter->GetModel(), system,
                                                        _missionTime);
    if (_algorithm == Algorithm::DIAGRAM) return _ListCutsets(event, system);
    LumoProgress progress(event->GetName(), "cutsets so far");
    progress.Watch(&_interpreter->GetWalker()->GetObserver()->minimalCutsets);
    _interpreter->GetWalker()->BuildMinimalCutsetTree(system, _cutoff, _GetSet(event));
    return true;
  }

  // Adds to a set of minimal cutsets of that name; a handle of another type gives way to a new set.
  OrvaMCSSet* _GetSet(OrvaEvent* event) {
    OrvaHandle* handle = event->GetHandle(_handleName);
    if (handle == nullptr || handle->GetType() != OrvaHandle::MCS_HANDLE) {
      OrvaMCSManager* manager = _interpreter->GetMCSManager();
      auto* set = new OrvaMCSSet(manager, manager->NewUndevelopedLeaf());
      handle = event->NewHandle(_handleName, set);
    }
    return handle->GetMCSSet();
  }

  // By diagrams of the formulas themselves, modules included. What the search leaves behind beside
  // its cutsets is left behind all the same: indices of events, and statistics without a walk. A
  // system and a handle that were there before may be older than the formulas.
  bool _ListCutsets(OrvaEvent* event, OrvaSystem* system) {
    const LumoProgress progress(event->GetName());
    OrvaDiagramGraph graph;
    if (const OrvaEvent* incoherent = graph.BuildFromFormulas(event)) {
      _Report(INCOHERENT_FORMULA, incoherent->GetName());
      return false;
    }
    OrvaMCSManager* manager = _interpreter->GetMCSManager();
    OrvaIndexInputVariables(system, manager);
    if (!_CheckRoom(std::ranges::count_if(graph.events, IsNew))) return false;
    for (OrvaEvent* basicEvent : graph.events) OrvaIndexEvent(basicEvent, manager);
    const std::unique_ptr<OrvaCutsetSolution> solution = OrvaCutsetSolver::Solve(
        graph, _cutoff->GetMaximumOrder(), _cutoff->GetMinimumProbability());
    OrvaWalkObserver* observer = _interpreter->GetWalker()->GetObserver();
    observer->Reset();
    observer->minimalCutsets = OrvaCutsetListing(*solution, manager).AddTo(_GetSet(event));
    event->GetHandle(_handleName)->UpdateBasicEventsAndParameters();
    return true;
  }

  // The index of a basic event has to fit into a node of the cutset store.
  bool _CheckRoom(long numberOfNewEvents) {
    const long highest = _interpreter->GetMCSManager()->GetIndexOfHighestEntry();
    if (highest + numberOfNewEvents <= OrvaMCSNode::MAXIMUM_INDEX) return true;
    _error = 1;
    _interpreter->RaiseError(TOO_MANY_BASIC_EVENTS);
    return false;
  }

  void _UpdateWalkObserver(const OrvaEvent* topEvent, const OrvaSystem* system,
                           const char* runningTime) {
    OrvaWalkObserver* observer = _interpreter->GetWalker()->GetObserver();
    observer->SetTopEventName(topEvent->GetName());
    observer->numberOfGates = system->GetNumberOfEquations();
    observer->numberOfBasicEvents = system->GetNumberOfAtomicVariables();
    observer->numberOfModules = system->GetNumberOfModules();
    observer->maximumOrder = _cutoff->GetMaximumOrder();
    observer->minimumProbability = _cutoff->GetMinimumProbability();
    observer->SetRunningTime(runningTime);
  }

  OrvaInterpreter* _interpreter;
  int& _error;
  Algorithm _algorithm;
  const char* _systemHandleName;
  const char* _handleName;
  double _missionTime;
  const OrvaCutoff* _cutoff;
};

}  // namespace

void OrvaInterpreter::_DownloadCommandBuild(int& error, const LumoXMLNode* command) {
  static constexpr Command COMMANDS[] = {
      {"system", &OrvaInterpreter::_DownloadCommandBuildSystem},
      {"minimal-cutsets", &OrvaInterpreter::_DownloadCommandBuildMinimalCutsets},
  };
  _DownloadCommands(error, command, {COMMANDS, "Not a build command option\n"});
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
  const Algorithm algorithm = _DownloadWordInCommand(error, command, OrvaCommandOptions::ALGORITHM,
                                                     ALGORITHMS, UNKNOWN_ALGORITHM);
  if (error != 0) return;
  _NormalizeModel(error, topEvent);
  if (error == 0) _checker->CheckModel(error, _model.get());
  if (error != 0) return;
  const auto readName = [&](const char* option) {
    const char* name;
    _DownloadStringOption(error, command, option, name);
    return OrvaTextOrEmpty(name);
  };
  const char* systemHandleName = readName(OrvaOptionCenter::SYSTEM_HANDLE);
  const OrvaHandle* source = topEvent->GetHandle(systemHandleName);
  if (source == nullptr) {
    _systemBuilder->BuildSystem(_model.get(), topEvent, systemHandleName, true);
  } else if (source->GetType() != OrvaHandle::SYSTEM_HANDLE) {
    return _Report(error, SOURCE_HANDLE_IS_NO_SYSTEM, topEvent->GetName(), command);
  }
  const char* handleName = readName(OrvaOptionCenter::HANDLE);
  if (LumoRawString::IsEqual(handleName, systemHandleName)) {
    return _Report(error, SAME_HANDLES, command);
  }
  if (_watcher != nullptr) {
    const OrvaSystem* system = topEvent->GetHandle(systemHandleName)->GetSystem();
    return _RehearseCutsets(topEvent, system, handleName);
  }
  CutsetComputation(this, error, algorithm, systemHandleName, handleName, missionTime, cutoff.get())
      .Run(topEvent);
}

// The handles of a computation, without cutsets.
void OrvaInterpreter::_RehearseCutsets(OrvaEvent* topEvent, const OrvaSystem* system,
                                       const char* handleName) {
  const auto addHandle = [&](OrvaEvent* event) {
    const OrvaHandle* handle = event->GetHandle(handleName);
    if (handle != nullptr && handle->GetType() == OrvaHandle::MCS_HANDLE) return;
    event->NewHandle(handleName,
                     new OrvaMCSSet(_mcsManager.get(), _mcsManager->NewUndevelopedLeaf()));
  };
  for (const OrvaVariable* variable : LumoItems<OrvaVariable>(system->GetDictionary())) {
    if (variable->IsInputVariable() && variable->GetEvent()->IsModule()) {
      addHandle(variable->GetEvent());
    }
  }
  addHandle(topEvent);
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
