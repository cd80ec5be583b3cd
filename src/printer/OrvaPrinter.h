#pragma once

#include <cstdio>

#include "system/OrvaVariable.h"
#include "xml/LumoXMLPrinter.h"

class LumoCurve;
class LumoMeasure;
class LumoStream;
class LumoXMLDocument;
class LumoXMLNode;
class OrvaEquation;
class OrvaEvent;
class OrvaHandle;
class OrvaInterpreter;
class OrvaMCSSet;
class OrvaModel;
class OrvaOptionCenter;
class OrvaParameter;
class OrvaProbabilityDistribution;
class OrvaSystem;
class OrvaWalkObserver;

// Writes results as text tables: one tab between fields, one line per row, reals with six
// significant digits. The printer computes nothing: it writes what was computed last.
//
// Its switches choose the columns. The commands set them from their options before each table;
// they keep their values until they are set again.
class OrvaPrinter : public LumoXMLPrinter {
 public:
  explicit OrvaPrinter(OrvaInterpreter* interpreter);
  ~OrvaPrinter() override;

  // Takes the option center from the interpreter. To be called before options are printed.
  void UpdateOptionCenter();

  // How tables look. In rows, the default, a table may have no heading, further ones below it, and
  // a row may have as many fields as it takes; in columns each table has a heading, a fixed number
  // of fields and nothing but rows, and further tables of a command go to files of their own.
  enum Layout : int { IN_ROWS, IN_COLUMNS };
  Layout layout = IN_ROWS;
  // The file of a further table; it has a stream even when it can't be opened.
  LumoStream* OpenTable(const char* name) const;
  void CloseTable(LumoStream* stream) const;
  // To be told that an output or a further table is added to a file with other columns.
  void RefuseTable(bool isFurther) const;

  // The columns of minimal cutsets.
  bool printMinimalCutsetRank = false;
  bool printMinimalCutsetOrder = false;
  bool printMinimalCutsetProbability = false;
  bool printMinimalCutsetContribution = false;

  // The columns of importance factors.
  bool printNumberOfOccurrences = false;
  bool printProbability = false;
  bool printConditionalProbability1 = false;
  bool printConditionalProbability0 = false;
  bool printMarginalImportanceFactor = false;
  bool printCriticalImportanceFactor = false;
  bool printDiagnosisImportanceFactor = false;
  bool printRiskAchievementWorth = false;
  bool printRiskReductionWorth = false;
  bool printFusselVeselyImportanceFactor = false;

  // The columns of sampled values, the rows of the tables of quantiles and bins, and, for the
  // interpreter, whether the tables of parameters and of basic events are asked for.
  bool printMean = false;
  bool printStandardDeviation = false;
  bool printConfidenceRange = false;
  bool printErrorFactor = false;
  int numberOfQuantiles = 0;
  int numberOfBins = 0;
  bool printParameterSensitivity = false;
  bool printBasicEventSensitivity = false;

  // The columns of unavailabilities over dates.
  bool printUnavailability = false;
  bool printAverageUnavailability = false;

  // The columns of failure intensities over dates.
  bool printConditionalFailureIntensity = false;
  bool printAverageConditionalFailureIntensity = false;
  bool printUnreliability = false;
  bool printProbabilityOfFailurePerHour = false;

  // For the interpreter: whether the table of safety integrity levels is asked for, of either
  // curve.
  bool printSafetyIntegrityLevel = false;

  // "top-event", "mission-time" and "probability": a header and one row.
  void PrintTopEventProbability(const OrvaEvent* top, const OrvaHandle* handle, double missionTime,
                                LumoStream* stream);

  // The table above, then one row per basic event: its name and the columns that are switched on.
  void PrintImportanceFactorsOfBasicEvents(const OrvaEvent* top, const LumoContainer* basicEvents,
                                           const OrvaHandle* handle, double missionTime,
                                           LumoStream* stream);

  // "Pr", name, mission time and probability, one row per event, no header; of a model, the events
  // without definition.
  void PrintProbabilitiesOfBasicEvents(const OrvaModel* model, double missionTime,
                                       LumoStream* stream);
  void PrintProbabilitiesOfBasicEvents(const LumoContainer* events, double missionTime,
                                       LumoStream* stream);
  void PrintProbabilityOfBasicEvent(const OrvaEvent* event, double missionTime, LumoStream* stream);
  // "value", name, mission time and value, one row per parameter, no header.
  void PrintValuesOfParameters(const OrvaModel* model, double missionTime, LumoStream* stream);
  void PrintValuesOfParameters(const LumoContainer* parameters, double missionTime,
                               LumoStream* stream);
  void PrintValueOfParameter(OrvaParameter* parameter, double missionTime, LumoStream* stream);

  // One row per point of a curve: the date and the columns that are switched on. Nothing for fewer
  // than two points. An average of failure intensities runs since date 0, one of unavailabilities
  // since the first date; in the failure-intensity table the fields of the first row are "0.0".
  void PrintUnavailability(const LumoCurve* curve, LumoStream* stream);
  void PrintFailureIntensity(const LumoCurve* curve, LumoStream* stream);
  // For each level 0 .. 4: its bounds, how long the curve lies between them, and the share of that
  // in the total; then the average of the curve, also of a curve of one point or none. The bounds
  // are those of probabilities of failure on demand (true) or per hour (false).
  void PrintSafetyIntegrityLevel(bool lowDemand, const LumoCurve* curve, LumoStream* stream);

  // The moments of the sampled values that are switched on: a header, and a row per measure; for
  // the top event also its quantiles and bins, when it has any. The symbols must have their
  // measures, from an analysis that sampled them.
  void PrintSensitivityOfTopEvent(const OrvaEvent* top, const OrvaHandle* handle,
                                  double missionTime, LumoStream* stream);
  void PrintSensitivitiesOfParameters(const LumoContainer* parameters, const OrvaHandle* handle,
                                      double missionTime, LumoStream* stream);
  void PrintSensitivitiesOfBasicEvents(const LumoContainer* basicEvents, const OrvaHandle* handle,
                                       double missionTime, LumoStream* stream);
  void PrintMoments(const LumoMeasure* measure, LumoStream* stream);
  void PrintQuantiles(LumoMeasure* measure, LumoStream* stream);
  // Shrinks the bin table to the number of bins.
  void PrintBins(LumoMeasure* measure, LumoStream* stream);

  // One row per minimal cutset, the most probable first, equal ones in the order of the set: the
  // columns that are switched on (rank, order, probability, share in the sum), then the names of
  // the basic events in alphabetical order. Nothing for a set without cutsets or with the empty
  // one only. The store's probabilities must be those of the mission time.
  void PrintMinimalCutsets(OrvaMCSSet* set, LumoStream* stream);
  // "order" and "#MCS", a row for each order that occurs, and the total.
  void PrintOrdersOfMinimalCutsets(const OrvaMCSSet* set, LumoStream* stream);
  // "event" and "#occurrences", a row for each event known to the store, and the total.
  void PrintNumberOfOccurrencesOfVariablesInMinimalCutsets(const OrvaMCSSet* set,
                                                           LumoStream* stream);
  // The statistics of a walk, in blocks of labels and values.
  void PrintWalkObserver(const OrvaWalkObserver* observer, LumoStream* stream);

  // The options of the option center, or the one given, as a "set" element.
  void PrintOptions(LumoStream* stream);
  void PrintOption(const char* name, const LumoConstant* value, LumoStream* stream);

  // Systems. "talvik": one equation per line, g := @(k,[literals]); with "-" before a negative
  // literal, then each module that has a system of the same name, behind a comment.
  void PrintEquationAtTalvikFormat(const OrvaEquation* equation, LumoStream* stream);
  void PrintSystemAtTalvikFormat(OrvaSystem* system, LumoStream* stream);
  // "excel": the top variable and the numbers of gates, basic events and modules; then for each
  // equation its variable, its threshold, the number of its literals, and the literals.
  void PrintEquationAtExcelFormat(const OrvaEquation* equation, LumoStream* stream);
  void PrintSystemAtExcelFormat(OrvaSystem* system, LumoStream* stream);
  // "open-psa": a new document, the caller's, with an "atleast" gate per equation and a basic
  // event per input variable.
  void UploadSystem(int& error, OrvaSystem* system, LumoXMLDocument*& document);
  void PrintSystemStatistics(const OrvaSystem* system, LumoStream* stream);

  // Rows about variables, between a heading and an ending (null for none).
  using VariablePrinter = void (OrvaPrinter::*)(const OrvaVariable* variable, LumoStream* stream);
  void PrintDataOfVariables(OrvaSystem* system, LumoStream* stream, VariablePrinter print,
                            const char* heading, const char* ending);
  void PrintDataOfVariables(const LumoContainer* variables, LumoStream* stream,
                            VariablePrinter print, const char* heading, const char* ending);
  // The two below, of all variables, with the heading of the layout.
  void PrintValuesOfVariables(OrvaSystem* system, LumoStream* stream);
  void PrintOccurrencesOfVariables(OrvaSystem* system, LumoStream* stream);
  // The name, then: 1 unless the value is possibly false; the number of occurrences and the
  // equations, with "-" before those of negative ones.
  void PrintValueOfVariable(const OrvaVariable* variable, LumoStream* stream);
  void PrintOccurrencesOfVariable(const OrvaVariable* variable, LumoStream* stream);

  // Each event and its number of parents, as counted by the analyzer.
  void PrintNumbersOfParents(const LumoContainer* events, LumoStream* stream);
  // The gates that carry a module record, with its dates, and "module" for those that are one;
  // then the numbers of events without and with a definition and of records.
  void PrintModules(const OrvaModel* model, LumoStream* stream);

  // A new document, the caller's, with the whole model in the form in which it is read. A name or a
  // text that can't be written without breaking the document is reported: `error` is set and the
  // document null.
  void UploadModel(int& error, const OrvaModel* model, LumoXMLDocument*& document);

  // Offered to users of the class; the program itself does not call what follows.

  OrvaInterpreter* GetInterpreter() const { return _interpreter; }
  OrvaOptionCenter* GetOptionCenter() const { return _optionCenter; }
  // The tables above of one basic event only.
  void PrintImportanceFactorsOfBasicEvent(const OrvaEvent* top, const OrvaEvent* basicEvent,
                                          const OrvaHandle* handle, double missionTime,
                                          LumoStream* stream);
  // Write the document of a system to a file; one that can't be opened sets `error`.
  void UploadSystem(int& error, OrvaSystem* system, std::FILE* file);
  void UploadSystem(int& error, OrvaSystem* system, const char* path);
  // Rows about equations, between a heading and an ending (null for none).
  using EquationPrinter = void (OrvaPrinter::*)(const OrvaEquation* equation, LumoStream* stream);
  void PrintDataOfEquations(OrvaSystem* system, LumoStream* stream, EquationPrinter print,
                            const char* heading, const char* ending);
  void PrintDataOfEquations(const LumoContainer* equations, LumoStream* stream,
                            EquationPrinter print, const char* heading, const char* ending);
  // "?", "!", "0" or "1".
  void PrintValue(OrvaVariable::Value value, LumoStream* stream);
  // The name, then the two probabilities, or the rank.
  void PrintProbabilityOfVariable(const OrvaVariable* variable, LumoStream* stream);
  void PrintRankOfVariable(const OrvaVariable* variable, LumoStream* stream);
  // A new element for an expression, the caller's; null after the report of an unwritable name.
  void UploadProbabilityDistribution(int& error, const OrvaProbabilityDistribution* distribution,
                                     LumoXMLNode*& node);

 private:
  void _PrintTopEventProbability(const OrvaEvent* top, double missionTime, LumoStream* stream,
                                 const char* name);
  void _PrintOptionElement(const char* name, const LumoConstant* value, LumoStream* stream);
  void _UploadInputVariables(int& error, OrvaSystem* system, LumoXMLNode* root);
  void _UploadInputVariable(int& error, const OrvaVariable* variable, LumoXMLNode*& node);
  void _UploadRealValue(int& error, double x, LumoXMLNode*& node);
  void _ReportUnwritableText(int& error, const char* text);

  OrvaInterpreter* _interpreter;
  OrvaOptionCenter* _optionCenter = nullptr;
};
