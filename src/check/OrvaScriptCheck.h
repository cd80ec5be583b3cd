#pragma once

#include <map>
#include <memory>
#include <string>

#include "check/OrvaFindings.h"
#include "check/OrvaModelCheck.h"
#include "driver/OrvaScriptWatcher.h"

class OrvaInterpreter;
struct OrvaCommandOptions;

// Looks at one file as it is rehearsed, a script or a model, under the memory accounting. Returns
// 1 after an error or a warning, else 0.
int Orva_CheckFile(const char* fileName);

// Looks at the commands of a script, and at the models that it loads. Findings go to the error
// stream of the interpreter, between its messages.
class OrvaScriptCheck : public OrvaScriptWatcher {
 public:
  // The interpreter is not owned. It rehearses until the destruction.
  explicit OrvaScriptCheck(OrvaInterpreter* interpreter);
  ~OrvaScriptCheck() override;
  OrvaScriptCheck(const OrvaScriptCheck&) = delete;
  OrvaScriptCheck& operator=(const OrvaScriptCheck&) = delete;

  // Goes through a file. The error is as in a run.
  void Check(int& error, const char* fileName);
  bool HasWarnings() const { return _findings.HasWarnings(); }

  void BeginCommand(const LumoXMLNode* command) override;
  void EndCommand(const LumoXMLNode* command) override;
  void TakeModel(std::unique_ptr<LumoXMLDocument> document) override;

 private:
  struct Command;

  void _CheckAttributes(const LumoXMLNode* command, const OrvaCommandOptions& row);
  void _CheckAttributesOfRoot(const LumoXMLNode* command);
  void _CheckChildren(const LumoXMLNode* command, const OrvaCommandOptions& row);
  void _CheckOption(const LumoXMLNode* node, const char* name, const char* value);
  void _ReportUnread(const LumoXMLNode* node, const char* name, const OrvaCommandOptions* row);
  void _CheckOutput(const LumoXMLNode* command, const OrvaCommandOptions& row);

  void _CheckSetOption(const LumoXMLNode* command);
  void _CheckDefaultDistribution(const LumoXMLNode* command);
  void _CheckBuild(const LumoXMLNode* command);
  void _CheckCurve(const LumoXMLNode* command);
  void _CheckFailureIntensity(const LumoXMLNode* command);
  void _EndBuild(const LumoXMLNode* command);

  // What a command reads: its own text, else the option center's. Texts are empty for none.
  std::string _GetText(const LumoXMLNode* command, const char* option) const;
  double _GetReal(const LumoXMLNode* command, const char* option) const;
  bool _IsOn(const LumoXMLNode* command, const char* option) const;
  std::string _GetTopEvent(const LumoXMLNode* command) const;

  OrvaInterpreter* _interpreter;
  OrvaFindings _findings;
  OrvaModelCheck _models;
  std::map<std::string, int> _lineOfOutput;
  bool _isScript = false;      // the file is no model
  bool _addsToHandle = false;  // the build that is being rehearsed
};
