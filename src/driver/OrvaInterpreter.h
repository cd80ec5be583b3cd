#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

#include "quantification/OrvaHandle.h"

template <class Value>
struct OrvaWord;
class LumoRandomizer;
class LumoStream;
class LumoXMLDocument;
class LumoXMLNode;
class OrvaAnalyzer;
class OrvaApproximation;
class OrvaChecker;
class OrvaCutoff;
class OrvaEvent;
class OrvaMCSManager;
class OrvaModel;
class OrvaOptionCenter;
class OrvaParser;
class OrvaPrinter;
class OrvaRewriter;
class OrvaScriptWatcher;
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

  // Components reach one another through these.
  OrvaModel* GetModel() const { return _model.get(); }
  OrvaSystemBuilder* GetSystemBuilder() const { return _systemBuilder.get(); }
  OrvaMCSManager* GetMCSManager() const { return _mcsManager.get(); }
  OrvaWalker* GetWalker() const { return _walker.get(); }
  OrvaOptionCenter* GetOptionCenter() const { return _optionCenter.get(); }
  LumoStream* GetErrorStream() const;
  void SetRandomizerSeed(long seed);

  // How many scripts may be open inside each other.
  static constexpr int MAXIMUM_SCRIPT_DEPTH = 64;
  // How many scripts one interpreter loads in all.
  static constexpr int MAXIMUM_NUMBER_OF_SCRIPTS = 10000;
  // How many quantiles and how many bins a sample may be asked for.
  static constexpr int MAXIMUM_NUMBER_OF_STATISTICS = 10000;

  // Evaluate a file by name, or a loaded document: as a script when its root is "orva", else as a
  // model.
  void DownloadCommandScript(int& error, const char* fileName);
  void DownloadCommandScript(int& error, const LumoXMLDocument* document);

  // With a watcher, which is not owned, scripts are rehearsed: models are read, completed and
  // normalised and options are set, so that faults are reported as in a run, but no minimal cutset
  // is computed and no file is written.
  void SetWatcher(OrvaScriptWatcher* watcher) { _watcher = watcher; }

  // Report an error, with the offending element or (null) without. The form with a format puts the
  // argument in the place of "%s" and writes nothing for a null argument.
  void RaiseError(const char* format, const char* argument, const LumoXMLNode* node);
  void RaiseError(const char* text, const LumoXMLNode* node = nullptr);

  // For the printer, while a command writes its tables: the file of a further one, which has the
  // name of the command's output with "-" and the name of the table before the extension. What
  // fails is reported, and what is written then goes nowhere.
  LumoStream* OpenTable(const char* name);
  void CloseTable(LumoStream* stream);
  // Reports that the file of the output, or of the further table, can't be continued.
  void RefuseTable(bool isFurther);

  // Offered to users of the class; the program itself does not call what follows.

  OrvaPrinter* GetPrinter() const { return _printer.get(); }
  OrvaParser* GetParser() const { return _parser.get(); }
  OrvaChecker* GetChecker() const { return _checker.get(); }
  OrvaRewriter* GetRewriter() const { return _rewriter.get(); }
  OrvaAnalyzer* GetAnalyzer() const { return _analyzer.get(); }
  LumoRandomizer* GetRandomizer() const { return _randomizer.get(); }
  // Deletes the present randomizer and takes ownership.
  void SetRandomizer(LumoRandomizer* randomizer);
  long GetRandomizerSeed() const;
  // Evaluates an open file.
  void DownloadCommandScript(int& error, std::FILE* file);

 private:
  // What the source files of the commands share; OrvaInterpreterCommands.h defines these.
  struct Command;
  struct Commands;
  struct Switch;

  void _DownloadCommandScript(int& error, const LumoXMLNode* root);
  // Executes the children of an element while there is no error; and one child.
  void _DownloadCommands(int& error, const LumoXMLNode* parent, const Commands& commands);
  void _DownloadCommand(int& error, const LumoXMLNode* command, const Commands& commands);

  void _DownloadCommandLoad(int& error, const LumoXMLNode* command);
  void _DownloadCommandLoadModel(int& error, const LumoXMLNode* command);
  void _RehearseModel(int& error, const char* fileName);
  void _DownloadCommandLoadScript(int& error, const LumoXMLNode* command);
  void _DownloadCommandCheck(int& error, const LumoXMLNode* command);
  void _DownloadCommandNormalize(int& error, const LumoXMLNode* command);
  void _DownloadCommandTest(int& error, const LumoXMLNode* command);

  void _DownloadCommandBuild(int& error, const LumoXMLNode* command);
  void _DownloadCommandBuildSystem(int& error, const LumoXMLNode* command);
  void _DownloadCommandBuildMinimalCutsets(int& error, const LumoXMLNode* command);
  void _NormalizeModel(int& error, OrvaEvent* topEvent);
  void _RehearseCutsets(OrvaEvent* topEvent, const OrvaSystem* system, const char* handleName);

  void _DownloadCommandCompute(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeValuesOfParameters(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeProbabilitiesOfBasicEvents(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeTopEventProbability(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeImportanceFactors(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeOrdersOfMinimalCutsets(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeTopEventSensitivity(int& error, const LumoXMLNode* command);
  void _DownloadCommandComputeFailureIntensity(int& error, const LumoXMLNode* command);
  std::unique_ptr<OrvaApproximation> _NewApproximation(int& error, const LumoXMLNode* command,
                                                       OrvaHandle* handle);
  std::unique_ptr<OrvaApproximation> _NewExactProbability(int& error, const LumoXMLNode* command,
                                                          OrvaHandle* handle);
  struct CurveKind;  // see OrvaInterpreterCompute.cpp
  void _WriteTopEventProbability(int& error, const LumoXMLNode* command, OrvaHandle* handle);
  void _WriteCurve(int& error, const LumoXMLNode* command, OrvaHandle* handle,
                   const CurveKind& kind, double firstDate, double lastDate);

  void _DownloadCommandPrint(int& error, const LumoXMLNode* command);
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

  // What only the command itself may say: its attribute of that name, else its first "option"
  // child of that name (a null text when that has no value). False and null when it has neither.
  bool _DownloadOptionInCommand(const LumoXMLNode* command, const char* name, const char*& result);
  // Options: what the command says, else what the option center holds; true when it came from the
  // command. A value of the wrong kind is an error and leaves the result unchanged. A text is null
  // when it is nowhere.
  bool _DownloadStringOption(int& error, const LumoXMLNode* command, const char* name,
                             const char*& result);
  bool _DownloadRealOption(int& error, const LumoXMLNode* command, const char* name,
                           double& result);
  bool _DownloadIntegerOption(int& error, const LumoXMLNode* command, const char* name,
                              int& result);
  bool _DownloadBooleanOption(int& error, const LumoXMLNode* command, const char* name,
                              bool& result);
  // Options that only the command itself may have. An integer or a Boolean that it lacks
  // leaves the result unchanged; true when it is there. A word is one of a table, or the first of
  // them where the command has none; any other word is reported with that message.
  bool _DownloadIntegerInCommand(int& error, const LumoXMLNode* command, const char* name,
                                 int& result);
  template <class Value, std::size_t N>
  Value _DownloadWordInCommand(int& error, const LumoXMLNode* command, const char* name,
                               const OrvaWord<Value> (&words)[N], const char* unknownWord);
  bool _DownloadBooleanInCommand(int& error, const LumoXMLNode* command, const char* name,
                                 bool& result);
  void _DownloadOptionSeed(int& error, const LumoXMLNode* command);
  // Sets switches of the printer from Boolean options; and a number of its rows, which is 0 and the
  // result false when it would be too large. A number below 0 gives no rows.
  void _DownloadSwitches(int& error, const LumoXMLNode* command, std::span<const Switch> switches);
  bool _DownloadNumberOfStatistics(int& error, const LumoXMLNode* command, const char* name,
                                   int& number);
  // Composite options. Their results are null after an error.
  void _DownloadOptionFormat(int& error, const LumoXMLNode* command, const char*& format);
  void _DownloadOptionTopEvent(int& error, const LumoXMLNode* command, OrvaEvent*& event);
  void _DownloadOptionSourceHandle(int& error, const LumoXMLNode* command, OrvaHandle*& handle);
  void _DownloadOptionSourceHandle(int& error, const LumoXMLNode* command, OrvaHandle::Type type,
                                   OrvaHandle*& handle);
  // The cutoff is the caller's, also after an error.
  void _DownloadOptionCutoff(int& error, const LumoXMLNode* command,
                             std::unique_ptr<OrvaCutoff>& cutoff);

  // The output of a command: `write` is given the open stream, and it is closed behind it. Nothing
  // happens after an error or when it can't be opened. The second form is for commands on a handle
  // of that type, which `write` is given too.
  template <class Write>
  void _WriteOutput(int& error, const LumoXMLNode* command, Write write);
  template <class Write>
  void _WriteOutput(int& error, const LumoXMLNode* command, OrvaHandle::Type type, Write write);
  void _OpenOutputStream(int& error, const LumoXMLNode* command, LumoStream*& stream);
  // Reports what could not be written.
  void _CloseOutputStream(int& error, LumoStream*& stream);
  void _DownloadOptionLayout(int& error, const LumoXMLNode* command);
  LumoStream* _OpenFile(int& error, const char* fileName);
  void _CloseFile(int& error, const char* fileName, LumoStream* stream);

  void _Report(int& error, const char* text, const LumoXMLNode* node);
  void _Report(int& error, const char* format, const char* argument, const LumoXMLNode* node);

  OrvaScriptWatcher* _watcher = nullptr;
  int _scriptDepth = 0;
  int _numberOfScripts = 0;
  std::string _outputFileName;  // of the open output stream
  std::string _tableFileName;   // of the open further table
  bool _appendsOutput = false;
  int _tableError = 0;  // of the further tables of the command
  // The last is destroyed first: the order of the destructions is the defined one. That of the
  // constructions is another, which the constructor gives.
  std::unique_ptr<LumoRandomizer> _randomizer;
  std::unique_ptr<OrvaOptionCenter> _optionCenter;
  std::unique_ptr<OrvaMCSManager> _mcsManager;
  std::unique_ptr<OrvaModel> _model;
  std::unique_ptr<OrvaPrinter> _printer;
  std::unique_ptr<OrvaParser> _parser;
  std::unique_ptr<OrvaChecker> _checker;
  std::unique_ptr<OrvaRewriter> _rewriter;
  std::unique_ptr<OrvaAnalyzer> _analyzer;
  std::unique_ptr<OrvaSystemBuilder> _systemBuilder;
  std::unique_ptr<OrvaWalker> _walker;
};
