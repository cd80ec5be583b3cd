#pragma once

#include <memory>

class LumoXMLDocument;
class LumoXMLNode;

// Goes along while an interpreter rehearses scripts: see OrvaInterpreter::SetWatcher.
class OrvaScriptWatcher {
 public:
  virtual ~OrvaScriptWatcher() = default;
  // A command, or an element of a command that holds some, before it is executed; and after it,
  // unless it failed. What the commands inside do comes in between.
  virtual void BeginCommand(const LumoXMLNode* command) = 0;
  virtual void EndCommand(const LumoXMLNode* command) = 0;
  // A model that has been read without a fault, within a command or by itself.
  virtual void TakeModel(std::unique_ptr<LumoXMLDocument> document) = 0;
};
