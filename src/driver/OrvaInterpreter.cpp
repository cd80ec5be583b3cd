// The interpreter's frame: its components, scripts and the dispatch of their commands.
//
// A script is a tree of commands, and every level of it is executed by the same loop over a table
// of elements and handlers: the root's children by the table of commands, the children of most
// commands by a table of their own. The first fault ends the loops on all levels, and with them the
// script and the scripts that load it.
//
// A script is read whole before its first command runs, so a syntax error anywhere in it lets
// nothing of it happen. Scripts that load each other are bounded twice: in depth, since each level
// takes a piece of the stack, and in number, since a short chain in which each script loads the
// next one twice would otherwise run for ever.

#include "driver/OrvaInterpreter.h"

#include <cassert>
#include <cstdio>
#include <memory>

#include "driver/OrvaInterpreterCommands.h"
#include "driver/OrvaOptionCenter.h"
#include "driver/OrvaScriptWatcher.h"
#include "model/OrvaModel.h"
#include "printer/OrvaPrinter.h"
#include "reader/OrvaChecker.h"
#include "reader/OrvaParser.h"
#include "reader/OrvaParserMessages.h"
#include "search/OrvaWalker.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/random/LumoCongruentialRandomizer.h"
#include "support/time/LumoProgress.h"
#include "system/OrvaAnalyzer.h"
#include "system/OrvaRewriter.h"
#include "system/OrvaSystemBuilder.h"
#include "xml/LumoXMLDocument.h"

namespace {

constexpr const char* BANNER = "Orva: an Open-PSA Fault Tree engine\nversion " ORVA_VERSION;
constexpr const char* BANNER_ARGUMENTS[] = {"--help", "-h", "--version"};
constexpr const char* SCRIPT_ROOT = "orva";
constexpr int RANDOMIZER_KIND = 1;

constexpr const char* SCRIPTS_NEST_TOO_DEEP =
    "Scripts that load each other are nested too deep: %s\n";
constexpr const char* TOO_MANY_SCRIPTS = "Too many scripts are loaded: %s\n";

bool IsBannerArgument(const char* argument) {
  for (const char* bannerArgument : BANNER_ARGUMENTS) {
    if (LumoRawString::IsEqual(argument, bannerArgument)) return true;
  }
  return false;
}

}  // namespace

int Orva_EvalScriptFile(const char* fileName) {
  LumoMemoryManager::Start();
  LumoMemoryManager::SetTraceAllocations(false);
  int error = 0;
  {
    OrvaInterpreter interpreter;
    if (IsBannerArgument(fileName)) {
      std::puts(BANNER);
      std::fflush(stdout);
    } else {
      interpreter.DownloadCommandScript(error, fileName);
    }
  }
  LumoMemoryManager::Stop();
  return error;
}

OrvaInterpreter::OrvaInterpreter() {
  _model = std::make_unique<OrvaModel>();
  _printer = std::make_unique<OrvaPrinter>(this);
  _parser = std::make_unique<OrvaParser>(this);
  _checker = std::make_unique<OrvaChecker>(this);
  _rewriter = std::make_unique<OrvaRewriter>(this);
  _analyzer = std::make_unique<OrvaAnalyzer>(this);
  _systemBuilder = std::make_unique<OrvaSystemBuilder>(this);
  _mcsManager = std::make_unique<OrvaMCSManager>();
  _walker = std::make_unique<OrvaWalker>(_mcsManager.get());
  _randomizer = std::make_unique<LumoCongruentialRandomizer>(RANDOMIZER_KIND);
  _optionCenter = std::make_unique<OrvaOptionCenter>(this);  // it seeds the randomizer
  _printer->UpdateOptionCenter();
  _parser->UpdateOptionCenter();
  LumoMemoryManager::TraceNew(this, "OrvaInterpreter");
}

OrvaInterpreter::~OrvaInterpreter() { LumoMemoryManager::TraceDelete(this, "OrvaInterpreter"); }

void OrvaInterpreter::SetRandomizerSeed(long seed) { _randomizer->SetSeed(seed); }

LumoStream* OrvaInterpreter::GetErrorStream() const { return _parser->GetErrorStream(); }

void OrvaInterpreter::DownloadCommandScript(int& error, const char* fileName) {
  if (fileName == nullptr) return _Report(error, OrvaParserMessages::NO_FILE_NAME, nullptr);
  if (_scriptDepth == MAXIMUM_SCRIPT_DEPTH) {
    return _Report(error, SCRIPTS_NEST_TOO_DEEP, fileName, nullptr);
  }
  if (_numberOfScripts == MAXIMUM_NUMBER_OF_SCRIPTS) {
    return _Report(error, TOO_MANY_SCRIPTS, fileName, nullptr);
  }
  assert(_scriptDepth < MAXIMUM_SCRIPT_DEPTH && _numberOfScripts < MAXIMUM_NUMBER_OF_SCRIPTS);
  ++_numberOfScripts;
  auto document = std::make_unique<LumoXMLDocument>();
  if (!document->Load(fileName)) {
    return _Report(error, OrvaParserMessages::UNABLE_TO_OPEN_FILE, fileName, nullptr);
  }
  ++_scriptDepth;
  DownloadCommandScript(error, document.get());
  --_scriptDepth;
  const bool isModel = document->FindRoot(SCRIPT_ROOT) == nullptr;
  if (_watcher != nullptr && isModel && error == 0) _watcher->TakeModel(std::move(document));
}

void OrvaInterpreter::DownloadCommandScript(int& error, const LumoXMLDocument* document) {
  if (const LumoXMLNode* root = document->FindRoot(SCRIPT_ROOT)) {
    _DownloadCommandScript(error, root);
  } else {
    _parser->DownloadModel(error, document, _model.get());
    if (error == 0) _checker->CheckCyclesOfParameters(error, _model.get());
  }
}

void OrvaInterpreter::_DownloadCommandScript(int& error, const LumoXMLNode* root) {
  static constexpr Command COMMANDS[] = {
      {"build", &OrvaInterpreter::_DownloadCommandBuild},
      {"check", &OrvaInterpreter::_DownloadCommandCheck},
      {"compute", &OrvaInterpreter::_DownloadCommandCompute},
      {"load", &OrvaInterpreter::_DownloadCommandLoad},
      {"normalize", &OrvaInterpreter::_DownloadCommandNormalize},
      {"print", &OrvaInterpreter::_DownloadCommandPrint},
      {"set", &OrvaInterpreter::_DownloadCommandSet},
      {"test", &OrvaInterpreter::_DownloadCommandTest},
  };
  _DownloadCommands(error, root, {COMMANDS, "Not a valid command"});
}

void OrvaInterpreter::_DownloadCommands(int& error, const LumoXMLNode* parent,
                                        const Commands& commands) {
  for (const LumoXMLNode* child = parent->GetFirstChild(); child != nullptr && error == 0;
       child = child->GetNextSibling()) {
    _DownloadCommand(error, child, commands);
  }
}

void OrvaInterpreter::_DownloadCommand(int& error, const LumoXMLNode* command,
                                       const Commands& commands) {
  if (command->IsComment()) return;
  for (const Command& row : commands.rows) {
    if (!command->IsNodeOfName(row.element)) continue;
    const LumoProgress progress(row.element);
    if (_watcher != nullptr) _watcher->BeginCommand(command);
    (this->*row.download)(error, command);
    if (_watcher != nullptr && error == 0) _watcher->EndCommand(command);
    return;
  }
  _Report(error, commands.unknownCommand, commands.showsElement ? command : nullptr);
}

void OrvaInterpreter::RaiseError(const char* format, const char* argument,
                                 const LumoXMLNode* node) {
  LumoProgress::Erase();
  _parser->RaiseError(format, argument, node);
  if (LumoStream* stream = GetErrorStream()) stream->Flush();
}

void OrvaInterpreter::RaiseError(const char* text, const LumoXMLNode* node) {
  LumoProgress::Erase();
  _parser->RaiseError(text, node);
  if (LumoStream* stream = GetErrorStream()) stream->Flush();
}

void OrvaInterpreter::_Report(int& error, const char* text, const LumoXMLNode* node) {
  error = 1;
  RaiseError(text, node);
}

void OrvaInterpreter::_Report(int& error, const char* format, const char* argument,
                              const LumoXMLNode* node) {
  assert(argument != nullptr);  // or nothing would be said of the fault
  error = 1;
  RaiseError(format, argument, node);
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaInterpreter::SetRandomizer(LumoRandomizer* randomizer) {
  assert(randomizer != nullptr);
  _randomizer.reset(randomizer);
}

long OrvaInterpreter::GetRandomizerSeed() const { return _randomizer->GetSeed(); }

void OrvaInterpreter::DownloadCommandScript(int& error, std::FILE* file) {
  LumoXMLDocument document;
  document.Load(file);
  DownloadCommandScript(error, &document);
}
