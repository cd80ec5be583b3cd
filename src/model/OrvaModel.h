#pragma once

#include "model/OrvaEvent.h"
#include "support/containers/LumoAVLTree.h"

class LumoRandomizer;
class OrvaCCFGroup;
class OrvaParameter;

// The loaded model: events, parameters and common-cause failure groups, each held by name and
// owned. Looking up an unknown name gives null; nothing here reports an error.
class OrvaModel {
 public:
  static constexpr const char* DEFAULT_FORMAT = "open-psa";

  OrvaModel();
  ~OrvaModel();
  OrvaModel(const OrvaModel&) = delete;
  OrvaModel& operator=(const OrvaModel&) = delete;

  // Adding creates and inserts without looking for an existing one: look first.
  OrvaEvent* AddEvent(const char* name, OrvaEvent::Type type);
  OrvaEvent* LookForEvent(const char* name) const;
  // In name order.
  const LumoAVLTree& GetEvents() const { return _events; }
  // Inserts every event that the selector picks (0 for a match).
  void CollectEvents(OrvaSymbol::Selector selector, const void* argument,
                     LumoContainer* result) const;
  void RenameEvent(OrvaEvent* event, const char* name);

  OrvaParameter* AddParameter(const char* name);
  OrvaParameter* LookForParameter(const char* name) const;
  const LumoAVLTree& GetParameters() const { return _parameters; }
  void CollectParameters(OrvaSymbol::Selector selector, const void* argument,
                         LumoContainer* result) const;

  // Takes ownership.
  void AddCCFGroup(OrvaCCFGroup* group);
  OrvaCCFGroup* LookForCCFGroup(const char* name) const;
  // Removes the group from the model without deleting it: it becomes the caller's.
  void DeleteCCFGroup(OrvaCCFGroup* group);
  const LumoAVLTree& GetCCFGroups() const { return _ccfGroups; }
  // Expands every group that is not expanded yet.
  void ExpandCCFGroups();

  // The date of the last evaluation, in the model's time unit; 0 before the first.
  double GetMissionTime() const { return _missionTime; }
  void SetMissionTime(double t) { _missionTime = t; }
  // The format that the model was read from.
  const char* GetFormat() const { return _format; }
  void SetFormat(const char* format);

  // Evaluation at date t. Values of parameters are computed in the order of the container, in
  // which a parameter comes after those that it uses. The probability of an event is its
  // expression's value, 1 without an expression; the parameters that the given events use are
  // computed first. Without a container: all parameters, all events without definition.
  void ComputeValuesOfParameters(double t);
  void ComputeValuesOfParameters(double t, const LumoContainer* parameters);
  void ComputeProbabilitiesOfBasicEvents(double t);
  void ComputeProbabilitiesOfBasicEvents(double t, const LumoContainer* events);

  // Set the random deviates of expressions back to their central values: of the whole model, of
  // the given events and of the parameters that they use, of the given parameters, which must have
  // a definition.
  void ResetRandomDeviatesOfModel();
  void ResetRandomDeviatesOfBasicEvents(const LumoContainer* events);
  void ResetRandomDeviatesOfParameters(const LumoContainer* parameters);

  // Completion. Unspecified events become basic events; what has no definition or no expression
  // gets the given constant. A house event that gets its value becomes a gate.
  void TurnUnspecifiedEventsToBasicEvents();
  void SetDefaultValueToGates(bool value);
  void SetDefaultValueToBasicEvents(double value);
  void SetDefaultValueToHouseEvents(bool value);
  void SetDefaultValueToParameters(double value);
  // All of these, with false and 0, in this order; then the deviates are reset.
  void Complete();

  // Inserts every parameter that the expressions of the events use, each once and after those
  // that it uses itself.
  static void CollectParametersOfEvents(const LumoContainer* events, LumoContainer* result);

  // Offered to users of the class; the program itself does not call what follows.

  // Cursors run in name order and belong to the caller.
  int GetNumberOfEvents() const { return _events.GetNumberOfItems(); }
  LumoCursor* NewCursorOnEvents() { return _events.NewCursor(); }
  int GetNumberOfParameters() const { return _parameters.GetNumberOfItems(); }
  LumoCursor* NewCursorOnParameters() { return _parameters.NewCursor(); }
  LumoCursor* NewCursorOnCCFGroups() { return _ccfGroups.NewCursor(); }
  // Draw the random deviates anew, under the terms of the Reset forms.
  void DrawRandomDeviatesOfModel(LumoRandomizer* randomizer);
  void DrawRandomDeviatesOfBasicEvents(LumoRandomizer* randomizer, const LumoContainer* events);
  void DrawRandomDeviatesOfParameters(LumoRandomizer* randomizer, const LumoContainer* parameters);

 private:
  void _SetDefaultDefinition(OrvaEvent::Type type, bool value);

  LumoAVLTree _events;
  LumoAVLTree _ccfGroups;
  LumoAVLTree _parameters;
  double _missionTime = 0.0;
  char* _format;
};
