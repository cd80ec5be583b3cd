#pragma once

#include <vector>

#include "model/OrvaProbabilityDistribution.h"
#include "support/containers/LumoList.h"
#include "support/containers/LumoRange.h"

class LumoCurve;
class LumoCurvePoint;
class LumoRandomizer;
class OrvaApproximation;
class OrvaEvent;
class OrvaMCSSet;
class OrvaParameter;
class OrvaSystem;

// What a study may ask for beyond the curves as they are defined.
struct OrvaCurveCorrections {
  // Tests inside the parameters are singular points too.
  bool followsParameters = false;
  // The unconditional failure intensity of each basic event is the derivative of its probability.
  // This holds for laws that only grow, and between the tests of others; where the probability
  // falls the intensity is 0. Of the conditional failure intensity only.
  bool takesNumericFailureRates = false;
};

// A named result: what was built from a top event, a Boolean system or a set of minimal cutsets.
// Quantities are computed through a handle at a mission time, in the model's time unit, and stored
// on the events and parameters of the model, from which they are read; a value read is that of the
// last computation through any handle that shares those events. Nothing here reports an error.
//
// A system handle is never quantified: its top-event probability is 0.
class OrvaHandle {
 public:
  enum Type : int { SYSTEM_HANDLE = 0, MCS_HANDLE = 1 };

  // Copies the name and takes ownership of the system or of the set; the top event is not owned.
  OrvaHandle(OrvaEvent* topEvent, const char* name, OrvaSystem* system);
  OrvaHandle(OrvaEvent* topEvent, const char* name, OrvaMCSSet* set);
  ~OrvaHandle();
  OrvaHandle(const OrvaHandle&) = delete;
  OrvaHandle& operator=(const OrvaHandle&) = delete;
  static void Delete(void* handle);

  OrvaEvent* GetTopEvent() const { return _topEvent; }
  const char* GetName() const { return _name; }
  Type GetType() const { return _type; }
  // Null for a handle of the other type.
  OrvaSystem* GetSystem() const { return _system; }
  OrvaMCSSet* GetMCSSet() const { return _set; }

  // The basic events below the top event, and the parameters that their expressions use, each
  // once and after those that it uses itself. Not owned.
  const LumoList* GetBasicEvents() const { return &_basicEvents; }
  const LumoList* GetParameters() const { return &_parameters; }
  // Fills both lists again, after a change of the model.
  void UpdateBasicEventsAndParameters();

  // Comparison functions for containers.
  int CompareName(const char* name) const;
  int CompareNames(const OrvaHandle* other) const { return CompareName(other->_name); }
  static int CompareName(const void* handle, const void* name);
  static int CompareNames(const void* a, const void* b);

  // Quantities of the last computation.
  double GetTopEventProbability() const;
  double GetProbabilityOfBasicEvent(const OrvaEvent* event) const;
  double GetTopEventUnconditionalFailureIntensity() const;
  double GetMarginalImportanceFactorOfBasicEvent(const OrvaEvent* event) const;
  // w / (1 - P), per time unit; 1.0 when P is exactly 1. The unconditional failure intensity w is
  // handed over as well.
  double GetTopEventConditionalFailureIntensity() const;
  double GetTopEventConditionalFailureIntensity(double& unconditional) const;
  // In how many minimal cutsets the event is, as of the last computation of importance factors.
  int GetNumberOfOccurrencesOfBasicEvent(const OrvaEvent* event) const;

  // Importance factors of a basic event, from the probability P of the top event, the event's own
  // probability p and its marginal importance factor MIF, all as of the last computation of
  // importance factors. Nothing is brought into [0, 1].
  // P with the event true, P - p MIF + MIF, or false, P - p MIF.
  double GetConditionalProbabilityOfBasicEvent(const OrvaEvent* event, bool value) const;
  // p MIF / P; 0 when P is 0.
  double GetCriticalImportanceFactorOfBasicEvent(const OrvaEvent* event) const;
  // p P(event true) / P; 0 when P is 0.
  double GetDiagnosisImportanceFactorOfBasicEvent(const OrvaEvent* event) const;
  // The same formula as the diagnosis importance factor: this is the defined behaviour.
  double GetFusselVeselyImportanceFactorOfBasicEvent(const OrvaEvent* event) const;
  // P(event true) / P; 0 when P is 0.
  double GetRiskAchievementWorthOfBasicEvent(const OrvaEvent* event) const;
  // P / P(event false); 0 when the latter is 0.
  double GetRiskReductionWorthOfBasicEvent(const OrvaEvent* event) const;

  // Computations at mission time t, on the handle's own lists or on a container of the caller's.
  // Values of parameters, in list order.
  void ComputeValuesOfParameters(double t) { ComputeValuesOfParameters(t, &_parameters); }
  void ComputeValuesOfParameters(double t, const LumoContainer* parameters);
  // Probabilities of basic events, 1.0 without an expression (an undefined event is taken as
  // certain), and their unconditional failure intensities. The handle's parameters are computed
  // first; the probabilities are loaded into the cutset store.
  void ComputeProbabilitiesOfBasicEvents(double t) {
    ComputeProbabilitiesOfBasicEvents(t, &_basicEvents);
  }
  void ComputeProbabilitiesOfBasicEvents(double t, const LumoContainer* basicEvents);
  void ComputeProbabilitiesAndUnconditionalFailureIntensitiesOfBasicEvents(double t) {
    ComputeProbabilitiesAndUnconditionalFailureIntensitiesOfBasicEvents(t, &_basicEvents);
  }
  void ComputeProbabilitiesAndUnconditionalFailureIntensitiesOfBasicEvents(
      double t, const LumoContainer* basicEvents);
  // The rare-event approximation: the sum over the minimal cutsets of the products of the
  // probabilities of their events, brought into [0, 1].
  // With another approximation, what that computes instead.
  void ComputeTopEventProbability(double t);
  // Null for the sum over the minimal cutsets. Not owned.
  void SetApproximation(OrvaApproximation* approximation) { _approximation = approximation; }
  // With the top-event probability, the marginal importance factor of each basic event: the
  // derivative of that sum with respect to the event's probability.
  void ComputeImportanceFactorsOfBasicEvents(double t);
  // The sum over the basic events of marginal importance factor × unconditional failure
  // intensity, per time unit.
  void ComputeTopEventUnconditionalFailureIntensity(double t);

  // Sets the random deviates of the handle's parameters, then of its basic events, back to their
  // central values; of those given; of the parameters alone, which must have a definition.
  void ResetRandomDeviatesOfBasicEvents();
  void ResetRandomDeviatesOfBasicEvents(const LumoContainer* basicEvents);
  void ResetRandomDeviatesOfParameters();
  void ResetRandomDeviatesOfParameters(const LumoContainer* parameters);

  // No curve grows beyond this: it is then left unfinished.
  static constexpr int MAXIMUM_NUMBER_OF_POINTS = 1000000;
  // Curves. Points are added at the first and the last date, on the grid between them, at and
  // around the tests of periodically tested basic events, and where the curve bends by more than
  // the smoothing ratio (see SmoothCurve... below). A date that is on the curve already is not
  // computed again. The curve of the conditional failure intensity always starts at 0.
  void ComputeCurveOfTopEventProbability(double firstDate, double lastDate, double step,
                                         bool addSingularPoints, bool smoothCurve,
                                         double smoothingRatio, LumoCurve* curve,
                                         const OrvaCurveCorrections& corrections = {});
  void ComputeCurveOfTopEventConditionalFailureIntensity(
      double lastDate, double step, bool addSingularPoints, bool smoothCurve, double smoothingRatio,
      LumoCurve* curve, const OrvaCurveCorrections& corrections = {});

  // Uncertainty. Draws all random deviates anew the given number of times, recomputes the
  // top-event probability at the mission time after each draw, and adds it to the measure of the
  // top event; on request, the values of the parameters and the probabilities of the basic events
  // to theirs. The measures are reset first, the top event's with room for quantiles and bins
  // (none for 0). The deviates of the last trial stay drawn.
  void PerformSensitivityAnalysisOnTopEventProbability(double missionTime, int numberOfTries,
                                                       LumoRandomizer* randomizer,
                                                       int numberOfQuantiles, int numberOfBins,
                                                       bool parameters, bool basicEvents);
  void ResetSensitivityMeasureOfTopEvent(int numberOfQuantiles, int numberOfBins);
  void ResetSensitivityMeasuresOfBasicEvents();
  void ResetSensitivityMeasuresOfBasicEvents(const LumoContainer* basicEvents);
  void ResetSensitivityMeasuresOfParameters();
  void ResetSensitivityMeasuresOfParameters(const LumoContainer* parameters);
  // Add what was computed last to the measures, which must have been reset before.
  void AddCurrentTopEventProbabilityToItsSensitivityMeasure();
  void AddCurrentProbabilitiesOfBasicEventsToTheirSensitivityMeasures();
  void AddCurrentProbabilitiesOfBasicEventsToTheirSensitivityMeasures(
      const LumoContainer* basicEvents);
  void AddCurrentValuesOfParametersToTheirSensitivityMeasures();
  void AddCurrentValuesOfParametersToTheirSensitivityMeasures(const LumoContainer* parameters);

  // Offered to users of the class; the program itself does not call what follows.

  // Cursors are the caller's.
  LumoCursor* NewCursorOnBasicEvents() { return _basicEvents.NewCursor(); }
  LumoCursor* NewCursorOnParameters() { return _parameters.NewCursor(); }
  // This type minus the other.
  int CompareType(const Type* type) const { return _type - *type; }
  int CompareTypes(const OrvaHandle* other) const { return _type - other->_type; }
  static int CompareType(const void* handle, const void* type);
  static int CompareTypes(const void* a, const void* b);
  double GetUnconditionalFailureIntensityOfBasicEvent(const OrvaEvent* event) const;
  // Draws the deviates of the handle's parameters, then of its basic events; of those given; of
  // the parameters alone. A drawn parameter must have a definition.
  void DrawRandomDeviatesOfBasicEvents(LumoRandomizer* randomizer);
  void DrawRandomDeviatesOfBasicEvents(LumoRandomizer* randomizer,
                                       const LumoContainer* basicEvents);
  void DrawRandomDeviatesOfParameters(LumoRandomizer* randomizer);
  void DrawRandomDeviatesOfParameters(LumoRandomizer* randomizer, const LumoContainer* parameters);
  // At time 0.
  void ComputeValuesOfParameters() { ComputeValuesOfParameters(0.0); }
  // The parts of the curves. Singular points are those of the tests of basic events alone.
  void ComputeSingularPointsOfTopEventProbability(double firstDate, double lastDate,
                                                  LumoCurve* curve);
  void ComputeSingularPointsOfTopEventConditionalFailureIntensity(double lastDate,
                                                                  LumoCurve* curve);
  // Adds the midpoint of each interval longer than 0.1 time units, unless the quantity is not
  // positive there, and goes on inside both halves when the linear interpolation was off by more
  // than the ratio of the computed value.
  void SmoothCurveOfTopEventProbability(double smoothingRatio, LumoCurve* curve);
  void SmoothCurveOfTopEventConditionalFailureIntensity(double smoothingRatio, LumoCurve* curve);
  LumoCurvePoint* ComputePointOfTopEventProbability(double t, LumoCurve* curve);
  LumoCurvePoint* ComputePointOfTopEventConditionalFailureIntensity(double t, LumoCurve* curve);

 private:
  // The quantity of a curve, computed at a date.
  using Quantity = double (OrvaHandle::*)(double t);
  // The tests of a "periodic-test" expression: see OrvaHandleCurves.cpp.
  struct Tests;

  OrvaHandle(OrvaEvent* topEvent, const char* name, Type type, OrvaSystem* system, OrvaMCSSet* set);
  void _ComputeImportanceFactorsOfBasicEvents();
  double _ComputeProbabilityAt(double t);
  double _ComputeConditionalFailureIntensityAt(double t);
  double _ComputeNumericConditionalFailureIntensityAt(double t);
  void _ComputeNumericFailureIntensitiesOfBasicEvents(double t);
  void _ComputeTopEventUnconditionalFailureIntensity();
  LumoCurvePoint* _ComputePoint(Quantity quantity, double t, LumoCurve* curve);
  void _ComputeGrid(Quantity quantity, double firstDate, double lastDate, double step,
                    LumoCurve* curve);
  void _ComputeSingularPoints(Quantity quantity, double firstDate, double lastDate,
                              bool followsParameters, LumoCurve* curve);
  void _ComputeSingularPoints(Quantity quantity, OrvaProbabilityDistribution* expression,
                              double firstDate, double lastDate, LumoCurve* curve);
  void _ComputeSingularPoints(Quantity quantity, const Tests& tests, double firstDate,
                              double lastDate, LumoCurve* curve);
  void _SmoothCurve(Quantity quantity, double smoothingRatio, LumoCurve* curve);

  std::vector<OrvaProbabilityDistribution::PreparedDraw> _PrepareDraws() const;

  void _LoadProbabilitiesOfBasicEvents() { _LoadProbabilitiesOfBasicEvents(&_basicEvents); }
  void _LoadProbabilitiesOfBasicEvents(const LumoContainer* basicEvents);

  OrvaEvent* _topEvent;
  char* _name;
  Type _type;
  OrvaSystem* _system;  // owned; one of the two is null
  OrvaMCSSet* _set;     // owned
  OrvaApproximation* _approximation = nullptr;
  LumoList _parameters;
  LumoList _basicEvents;
};
