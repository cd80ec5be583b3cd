#pragma once

#include <unordered_map>

#include "model/OrvaEvent.h"

class OrvaEquation;
class OrvaHandle;
class OrvaInterpreter;
class OrvaModel;
class OrvaSystem;

// Turns the flat formulas below a top event into a Boolean system: one variable per event reached,
// one threshold equation per gate. With modules, each module becomes a system of its own and an
// input variable of the system above it.
//
// Every formula must be an event, an AND, OR or ATLEAST of literals, or the negation of an event;
// the model checker refuses anything else beforehand.
class OrvaSystemBuilder {
 public:
  explicit OrvaSystemBuilder(OrvaInterpreter* interpreter);
  ~OrvaSystemBuilder();
  OrvaSystemBuilder(const OrvaSystemBuilder&) = delete;
  OrvaSystemBuilder& operator=(const OrvaSystemBuilder&) = delete;

  // Builds the system and records it as the top event's handle of the given name, which is
  // returned and belongs to the event. With `cutsModules`, the systems of the modules are
  // recorded likewise on theirs; no further module is cut out inside a module.
  OrvaHandle* BuildSystem(OrvaModel* model, OrvaEvent* top, const char* handleName,
                          bool cutsModules);
  // Gives the input variables the probabilities of their basic events as last computed, whatever
  // the mission time, 1.0 without an event; variables of modules are left as they are.
  void LoadProbabilities(OrvaModel* model, OrvaSystem* system, double missionTime);

  // Offered to users of the class; the program itself does not call what follows.
  OrvaInterpreter* GetInterpreter() const { return _interpreter; }

 private:
  OrvaEvent* _GetDereferencedEvent(OrvaEvent* event);
  bool _IsAtomicEvent(const OrvaEvent* event, bool cutsModules) const;
  void _CollectEvents(OrvaEvent* top, LumoList* events, bool cutsModules);
  OrvaSystem* _NewSystem(OrvaModel* model, const char* handleName, bool cutsModules);
  void _BuildModules(OrvaModel* model, const LumoList& events, const char* handleName);
  OrvaEvent* _GetEventOfVariable(OrvaEvent* event) const;
  void _BuildVariables(OrvaSystem* system, const LumoList& events);
  void _BuildEquations(OrvaSystem* system, const LumoList& events, bool cutsModules);
  void _BuildEquation(OrvaEvent* event, OrvaEquation* equation);

  // The top as given, and at the end of its chain of aliases.
  struct Top {
    OrvaEvent* given = nullptr;
    OrvaEvent* dereferenced = nullptr;
  };

  OrvaInterpreter* _interpreter;
  Top _top;  // during a build
  // During a build: where the chains of aliases end that were followed, so that none is twice.
  std::unordered_map<const OrvaEvent*, OrvaEvent*> _endsOfAliases;
};
