#pragma once

#include <memory>

#include "model/OrvaSymbol.h"
#include "support/containers/LumoAVLTree.h"
#include "support/containers/LumoRange.h"

class LumoMeasure;
class OrvaCCFGroup;
class OrvaGate;
class OrvaHandle;
class OrvaMCSSet;
class OrvaModuleRecord;
class OrvaProbabilityDistribution;
class OrvaSystem;
class OrvaVariable;

// An event of the model: a gate, a basic event or a house event. Its definition is the formula of
// a gate, its probability distribution the expression of a basic event.
class OrvaEvent : public OrvaSymbol {
 public:
  enum Type : int { UNSPECIFIED_EVENT = 0, GATE = 1, BASIC_EVENT = 2, HOUSE_EVENT = 3 };

  OrvaEvent(OrvaModel* model, const char* name, Type type);
  // Deletes the handles, the expression, the measure, then the definition.
  ~OrvaEvent();
  static void Delete(void* event);

  Type GetType() const { return _type; }
  void SetType(Type type) { _type = type; }

  OrvaGate* GetDefinition() const;
  // Takes ownership and makes the event a GATE, whatever it was: a house event that receives its
  // value becomes one too. A null definition leaves the event undefined.
  void SetDefinition(OrvaGate* definition);

  OrvaProbabilityDistribution* GetProbabilityDistribution() const { return _distribution; }
  // Deletes the former expression and takes ownership of the new one, which may be null.
  void SetProbabilityDistribution(OrvaProbabilityDistribution* distribution);

  // The variable that stands for the event while a system is built. Not owned.
  OrvaVariable* GetVariable() const { return _variable; }
  void SetVariable(OrvaVariable* variable) { _variable = variable; }
  // The index under which the cutset engine knows the event; 0 for none yet.
  int GetMCSIndex() const { return _mcsIndex; }
  void SetMCSIndex(int index) { _mcsIndex = index; }
  // A mark for the length of one step on one gate, false at rest.
  bool IsMarked() const { return _isMarked; }
  void SetMarked(bool isMarked) { _isMarked = isMarked; }
  // What the detection of modules knows of the event; null when it never saw it. Owned.
  OrvaModuleRecord* GetModuleRecord() const { return _moduleRecord.get(); }
  OrvaModuleRecord* NewModuleRecord();
  // The group of which the event is a member, null for none. Not owned.
  OrvaCCFGroup* GetCCFGroup() const { return _ccfGroup; }
  void SetCCFGroup(OrvaCCFGroup* group) { _ccfGroup = group; }

  // Results of the last quantification.
  double GetProbability() const { return _probability; }
  void SetProbability(double probability) { _probability = probability; }
  double GetUnconditionalFailureIntensity() const { return _unconditionalFailureIntensity; }
  void SetUnconditionalFailureIntensity(double w) { _unconditionalFailureIntensity = w; }
  double GetMarginalImportanceFactor() const { return _marginalImportanceFactor; }
  void SetMarginalImportanceFactor(double factor) { _marginalImportanceFactor = factor; }

  // The probability at date t, 0 without an expression.
  void ComputeProbabilityOfBasicEvent(double t);
  // The same with the unconditional failure intensity; without an expression the probability is 1
  // and the intensity 0. That the two operations disagree on such an event is deliberate.
  void ComputeProbabilityAndUnconditionalFailureIntensityOfBasicEvent(double t);

  // Handles by name, owned. A new one replaces the handle of that name; it takes ownership of the
  // system or of the set. The name is copied.
  OrvaHandle* NewHandle(const char* name, OrvaSystem* system);
  OrvaHandle* NewHandle(const char* name, OrvaMCSSet* set);
  // Null when there is none.
  OrvaHandle* GetHandle(const char* name) const;
  void DeleteHandle(const char* name);
  void DeleteHandles();

  // The statistics of the sampled probabilities; null before the first reset.
  LumoMeasure* GetMeasure() const { return _measure.get(); }
  // Empties the measure, created on first use; numbers other than 0 make it keep quantiles and
  // bins, 0 makes it drop them.
  void ResetMeasure(int numberOfQuantiles, int numberOfBins);

  // Whether the event has a definition and was found to be a module by the last detection.
  bool IsModule() const;

  // Offered to users of the class; the program itself does not call what follows.

  // This type minus the given one. The static form is a selector: its argument points to a Type.
  int CompareType(Type type) const { return _type - type; }
  static int CompareType(const void* event, const void* type);
  // Those that the selector picks (0 for a match).
  void DeleteHandles(LumoContainer::Match selector, const void* argument);
  LumoCursor* NewCursorOnHandles() { return _GetHandles()->NewCursor(); }
  // Inserts every parameter used by the basic events below this event, and leaves each parameter
  // in the container once.
  void CollectParameters(LumoContainer* result);

 private:
  LumoAVLTree* _GetHandles();

  Type _type;
  int _mcsIndex = 0;
  bool _isMarked = false;
  OrvaProbabilityDistribution* _distribution = nullptr;
  OrvaVariable* _variable = nullptr;
  std::unique_ptr<OrvaModuleRecord> _moduleRecord;
  std::unique_ptr<LumoAVLTree> _handles;  // null until there is one
  OrvaCCFGroup* _ccfGroup = nullptr;
  double _probability = 0.0;
  double _unconditionalFailureIntensity = 0.0;
  double _marginalImportanceFactor = 0.0;
  std::unique_ptr<LumoMeasure> _measure;
};
