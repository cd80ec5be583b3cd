// The commands on models: load, check, normalize, test.

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "driver/OrvaScriptWatcher.h"
#include "model/OrvaModel.h"
#include "reader/OrvaChecker.h"
#include "reader/OrvaParser.h"
#include "system/OrvaRewriter.h"
#include "system/OrvaSystemBuilder.h"
#include "xml/LumoXMLDocument.h"

namespace {

constexpr const char* NOT_A_CHECK_OPTION = "Not a check command option\n";

struct Check {
  const char* element;
  void (OrvaChecker::*check)(int& error, const OrvaModel* model);
};
constexpr Check CHECKS[] = {
    {"model", &OrvaChecker::CheckModel},
    {"events", &OrvaChecker::CheckEventDefinitions},
    {"gates", &OrvaChecker::CheckGateDefinitions},
    {"basic-events", &OrvaChecker::CheckBasicEventDefinitions},
    {"house-events", &OrvaChecker::CheckHouseEventDefinitions},
    {"parameters", &OrvaChecker::CheckParameterDefinitions},
    {"top-event", &OrvaChecker::CheckTopEventUniqueness},
    {"normal-form", &OrvaChecker::CheckNormalForm},
};

const Check* FindCheck(const LumoXMLNode* node) {
  for (const Check& row : CHECKS) {
    if (node->IsNodeOfName(row.element)) return &row;
  }
  return nullptr;
}

}  // namespace

void OrvaInterpreter::_DownloadCommandLoad(int& error, const LumoXMLNode* command) {
  static constexpr Command COMMANDS[] = {
      {"model", &OrvaInterpreter::_DownloadCommandLoadModel},
      {"script", &OrvaInterpreter::_DownloadCommandLoadScript},
  };
  _DownloadCommands(error, command, {COMMANDS, "Not a load command option\n", false});
}

void OrvaInterpreter::_DownloadCommandLoadModel(int& error, const LumoXMLNode* command) {
  const char* fileName;
  _DownloadStringOption(error, command, OrvaOptionCenter::INPUT_FILE, fileName);
  if (_watcher != nullptr) return _RehearseModel(error, fileName);
  _parser->DownloadModel(error, fileName, _model.get());
  if (error == 0) _checker->CheckCyclesOfParameters(error, _model.get());
}

// The watcher gets the document itself: a pipe can't be read twice.
void OrvaInterpreter::_RehearseModel(int& error, const char* fileName) {
  auto document = _parser->NewDocument(error, fileName);
  if (document == nullptr) return;
  _parser->DownloadModel(error, document.get(), _model.get());
  if (error == 0) _checker->CheckCyclesOfParameters(error, _model.get());
  if (error == 0) _watcher->TakeModel(std::move(document));
}

void OrvaInterpreter::_DownloadCommandLoadScript(int& error, const LumoXMLNode* command) {
  const char* fileName;
  _DownloadStringOption(error, command, OrvaOptionCenter::INPUT_FILE, fileName);
  DownloadCommandScript(error, fileName);
}

// Every check runs, also after one that has found faults; only an unknown element ends it.
void OrvaInterpreter::_DownloadCommandCheck(int& error, const LumoXMLNode* command) {
  for (const LumoXMLNode* node = command->GetFirstChild(); node != nullptr;
       node = node->GetNextSibling()) {
    if (node->IsComment()) continue;
    const Check* row = FindCheck(node);
    if (row == nullptr) return _Report(error, NOT_A_CHECK_OPTION, node);
    (_checker.get()->*row->check)(error, _model.get());
  }
}

void OrvaInterpreter::_DownloadCommandNormalize(int& error, const LumoXMLNode* command) {
  OrvaEvent* topEvent;
  _DownloadOptionTopEvent(error, command, topEvent);
  if (topEvent == nullptr) return;
  _NormalizeModel(error, topEvent);
}

// Loads probabilities into a system and leaves an empty output: an entry point for trying out
// quantification code. This is the defined behaviour.
void OrvaInterpreter::_DownloadCommandTest(int& error, const LumoXMLNode* command) {
  OrvaHandle* handle;
  _DownloadOptionSourceHandle(error, command, OrvaHandle::SYSTEM_HANDLE, handle);
  if (handle == nullptr) return;
  double missionTime = 0.0;
  _DownloadRealOption(error, command, OrvaOptionCenter::MISSION_TIME, missionTime);
  _model->ComputeProbabilitiesOfBasicEvents(missionTime);
  _systemBuilder->LoadProbabilities(_model.get(), handle->GetSystem(), missionTime);
  _WriteOutput(error, command, [](LumoStream*) {});
}
