#pragma once

#include <cstdio>
#include <memory>
#include <span>
#include <string>

#include "quantification/OrvaHandle.h"

class LumoRandomizer;
class LumoStream;
class LumoXMLDocument;
class LumoXMLNode;
class OrvaAnalyzer;
class OrvaChecker;
class OrvaCutoff;
class OrvaEvent;
class OrvaMCSManager;
class OrvaModel;
class OrvaOptionCenter;
class OrvaParser;
class OrvaPrinter;
class OrvaRewriter;
class OrvaSystem;
class OrvaSystemBuilder;
class OrvaWalker;

// Evaluates one command-line argument in an interpreter of its own, under the memory accounting:
// a command script, a model file, or "--help", "-h" or "--version", which write the banner.
// Returns 0, or 1 after an error.
int Orva_EvalScriptFile(const char* fileName);

// Owns one instance of every component of the engine and executes the commands of scripts.
//
// Errors: every step takes an `int& error`. A fault sets it to 1, reports one message and returns;
// loops over commands and sub-elements stop at the next look at it. Messages go to the error
// stream of the reader, results to the output of each command.
class OrvaInterpreter {
 public:
  OrvaInterpreter();
  ~OrvaInterpreter();
  OrvaInterpreter(const OrvaInterpreter&) = delete;
  OrvaInterpreter& operator=(const OrvaInterpreter&) = delete;

  OrvaModel* GetModel() const { return _model.get(); }
  OrvaPrinter* GetPrinter() const { return _printer.get(); }
  OrvaParser* GetParser() const { return _parser.get(); }
  OrvaChecker* GetChecker() const { return _checker.get(); }
  OrvaRewriter* GetRewriter() const { return _rewriter.get(); }
  OrvaAnalyzer* GetAnalyzer() const { return _analyzer.get(); }
  OrvaSystemBuilder* GetSystemBuilder() const { return _systemBuilder.get(); }
  OrvaMCSManager* GetMCSManager() const { return _mcsManager.get(); }
  OrvaWalker* GetWalker() const { return _walker.get(); }
  OrvaOptionCenter* GetOptionCenter() const { return _optionCenter.get(); }
  LumoRandomizer* GetRandomizer() const { return _randomizer.get(); }
  // Deletes the present randomizer and takes ownership.
  void SetRandomizer(LumoRandomizer* randomizer);
  long GetRandomizerSeed() const;
  void SetRandomizerSeed(long seed);
  LumoStream* GetErrorStream() const;

  // How many scripts may be open inside each other.
  static constexpr int MAXIMUM_SCRIPT_DEPTH = 64;
  // How many scripts one interpreter loads in all.
  static constexpr int MAXIMUM_NUMBER_OF_SCRIPTS = 10000;
  // How many quantiles and how many bins a sample may be asked for.
  static constexpr int MAXIMUM_NUMBER_OF_STATISTICS = 10000;

  // Evaluate a file by name, an open file, or a loaded document: as a script when its root is
  // "orva", else as a model.
  void DownloadCommandScript(int& error, const char* fileName);
  void DownloadCommandScript(int& error, std::FILE* file);
  void DownloadCommandScript(int& error, const LumoXMLDocument* document);

  // Report an error, with the offending element or (null) without. The form with a format puts the
  // argument in the place of "%s" and writes nothing for a null argument.
  void RaiseError(const char* format, const char* argument, const LumoXMLNode* node);
  void RaiseError(const char* text, const LumoXMLNode* node = nullptr);

 private:
  friend class OrvaInterpreterTest;

  // A row of a table of commands: an element and its handler.
  struct Command {
    const char* element;
    void (OrvaInterpreter::*download)(int& error, const LumoXMLNode* command);
  };
  // A family of elements and what is said of any other one.
  struct Commands;
  static const Commands _COMMANDS;
  static const Commands _LOAD_COMMANDS;
  static const Commands _BUILD_COMMANDS;
  static const Commands _COMPUTE_COMMANDS;
  static const Commands _PRINT_COMMANDS;
  static const Commands _SET_COMMANDS;

  void _DownloadCommandScript(int& error, const LumoXMLNode* root);
  void _DownloadCommand(int& error, const LumoXMLNode* command);
  // Executes the children of an element while there is no error; and one child.
  void _DownloadCommands(int& error, const LumoXMLNode* parent, const Commands& commands);
  void _DownloadCommand(int& error, const LumoXMLNode* command, const Commands& commands);

  void _DownloadCommandLoad(int& error, const LumoXMLNode* command);
  void _DownloadCommandLoadModel(int& error, const LumoXMLNode* command);
  void _DownloadCommandLoadScript(int& error, const LumoXMLNode* command);
  void _DownloadCommandCheck(int& error, const LumoXMLNode* command);
  void _DownloadCommandNormalize(int& error, const LumoXMLNode* command);
  void _DownloadCommandTest(int& error, const LumoXMLNode* command);

  void _DownloadCommandBuild(int& error, const LumoXMLNode* command);
  void _DownloadCommandBuildSystem(int& error, const LumoXMLNode* command);
  void _DownloadCommandBuildMinimalCutsets(int& error, const LumoXMLNode* command);
  const char* _DownloadHandleName(int& error, const LumoXMLNode* command, const char* option);
  void _NormalizeModel(int& error, OrvaEvent* topEvent);
  void _PrepareModel(int& error, OrvaEvent* topEvent);
  bool _HasRoomForBasicEvents(OrvaSystem* system) const;
  void _FindOrBuildSystem(int& error, const LumoXMLNode* command, OrvaEvent* topEvent,
                          const char* systemHandleName);
  void _ComputeMinimalCutsets(int& error, OrvaEvent* topEvent, const char* systemHandleName,
                              const char* handleName, double missionTime, const OrvaCutoff* cutoff);
  void _ComputeMinimalCutsetsOfModules(int& error, OrvaSystem* system, const char* systemHandleName,
                                       const char* handleName, double missionTime,
                                       const OrvaCutoff* cutoff);
  bool _ComputeMinimalCutsetsOfEvent(int& error, OrvaEvent* event, OrvaSystem* system,
                                     const char* handleName, double missionTime,
                                     const OrvaCutoff* cutoff);
  void _UpdateWalkObserver(const OrvaEvent* topEvent, const OrvaSystem* system,
                           const OrvaCutoff* cutoff, const char* runningTime);

  // What curves are made of, besides their dates.
  struct CurveOptions {
    double step = 0.0;
    bool addSingularPoints = false;
    bool smoothCurve = false;
    double smoothingRatio = 0.0;
  };
  void _DownloadCommandCompute(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeValuesOfParameters(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeProbabilitiesOfBasicEvents(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeTopEventProbability(int& error, const LumoXMLNode* command);
  void _ComputeTopEventProbabilityAtMissionTime(int& error, const LumoXMLNode* command,
                                                OrvaHandle* handle);
  void _ComputeCurveOfTopEventProbability(int& error, const LumoXMLNode* command, double lastDate,
                                          OrvaHandle* handle);
  bool _CheckCurve(int& error, const LumoXMLNode* command, const LumoCurve& curve);
  bool _DownloadNumberOfStatistics(int& error, const LumoXMLNode* command, const char* option,
                                   int& number);
  void _DownloadCurveOptions(int& error, const LumoXMLNode* command, CurveOptions& options);
  void _DownloadCommandComputeImportanceFactors(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeOrdersOfMinimalCutsets(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeTopEventSensitivity(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeFailureIntensity(int& error, const LumoXMLNode* command);

  void _DownloadCommandPrint(int& error, const LumoXMLNode* command);
  template <class Print>
  void _PrintToOutput(int& error, const LumoXMLNode* command, Print print);
  template <class Print>
  void _PrintHandleToOutput(int& error, const LumoXMLNode* command, OrvaHandle::Type type,
                            Print print);
  void _DownloadCommandPrintModel(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintModules(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintNumbersOfParents(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintSystem(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintOccurrencesOfVariables(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintValuesOfVariables(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintSystemStatistics(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintMinimalCutsets(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintOrders(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintNumbersOfOccurrences(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintWalkStatistics(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintOption(int& error, const LumoXMLNode* command);
  void _DownloadCommandPrintOptions(int& error, const LumoXMLNode* command);

  void _DownloadCommandSet(int& error, const LumoXMLNode* command);
  void _DownloadCommandSetOption(int& error, const LumoXMLNode* command);
  void _DownloadCommandSetDefaultProbabilityDistributionOfBasicEvents(int& error,
                                                                      const LumoXMLNode* command);

  // Options. Each is looked for in the command's attributes, then in its "option" children, then
  // in the option center; true when it came from the command. A value of the wrong kind is an
  // error and leaves the result unchanged.
  bool _DownloadOptionInChildren(const LumoXMLNode* command, const char* name, const char*& result);
  bool _DownloadOptionInCommand(const LumoXMLNode* command, const char* name, const char*& result);
  // Null when it is nowhere.
  bool _DownloadStringOption(int& error, const LumoXMLNode* command, const char* name,
                             const char*& result);
  bool _DownloadRealOption(int& error, const LumoXMLNode* command, const char* name,
                           double& result);
  bool _DownloadIntegerOption(int& error, const LumoXMLNode* command, const char* name,
                              int& result);
  bool _DownloadBooleanOption(int& error, const LumoXMLNode* command, const char* name,
                              bool& result);
  // Sets switches of the printer from Boolean options.
  struct Switch;
  void _DownloadSwitches(int& error, const LumoXMLNode* command, std::span<const Switch> switches);
  // Composite options. Their results are null after an error.
  void _DownloadOptionFormat(int& error, const LumoXMLNode* command, const char*& format);
  void _DownloadOptionTopEvent(int& error, const LumoXMLNode* command, OrvaEvent*& event);
  void _DownloadOptionSourceHandle(int& error, const LumoXMLNode* command, OrvaHandle*& handle);
  void _DownloadOptionSourceHandle(int& error, const LumoXMLNode* command, OrvaHandle::Type type,
                                   OrvaHandle*& handle);
  // The cutoff is the caller's, also after an error.
  void _DownloadOptionCutoff(int& error, const LumoXMLNode* command,
                             std::unique_ptr<OrvaCutoff>& cutoff);
  void _OpenOutputStream(int& error, const LumoXMLNode* command, LumoStream*& stream);
  // Reports what could not be written.
  void _CloseOutputStream(int& error, LumoStream*& stream);

  void _Report(int& error, const char* text, const LumoXMLNode* node);
  void _Report(int& error, const char* format, const char* argument, const LumoXMLNode* node);

  int _scriptDepth = 0;
  int _numberOfScripts = 0;
  std::string _outputFileName;  // of the open output stream
  // In the order of their construction; the destructor has an order of its own.
  std::unique_ptr<OrvaModel> _model;
  std::unique_ptr<OrvaPrinter> _printer;
  std::unique_ptr<OrvaParser> _parser;
  std::unique_ptr<OrvaChecker> _checker;
  std::unique_ptr<OrvaRewriter> _rewriter;
  std::unique_ptr<OrvaAnalyzer> _analyzer;
  std::unique_ptr<OrvaSystemBuilder> _systemBuilder;
  std::unique_ptr<OrvaMCSManager> _mcsManager;
  std::unique_ptr<OrvaWalker> _walker;
  std::unique_ptr<LumoRandomizer> _randomizer;
  std::unique_ptr<OrvaOptionCenter> _optionCenter;
};
