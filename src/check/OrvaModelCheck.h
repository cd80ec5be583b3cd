#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "check/OrvaModelText.h"

class OrvaExpressionTraits;
class OrvaFindings;
class OrvaModel;

// Looks at the models of a run: at all that they define, and at what a command makes of them.
class OrvaModelCheck {
 public:
  // Neither is owned.
  OrvaModelCheck(const OrvaModel* model, OrvaFindings* findings);
  ~OrvaModelCheck();
  OrvaModelCheck(const OrvaModelCheck&) = delete;
  OrvaModelCheck& operator=(const OrvaModelCheck&) = delete;

  // One more model, which has been read without a fault.
  void AddDocument(std::unique_ptr<LumoXMLDocument> document);
  // What nothing reads of an element and of those inside it.
  void CheckElement(const LumoXMLNode* node);
  // Events that lack an expression now are going to get one.
  void AddDefaultDistribution();
  // An event that a command names as its top event.
  void AddTopEvent(const char* name);

  // What minimal cutsets are computed from: formulas at and below a top event, or all, and house
  // events anywhere. Some only matters to the search, not to diagrams.
  void CheckFormulas(const char* topEvent, bool isSearch);
  void CheckAllFormulas();
  // The first event below whose probability depends on time; empty for none.
  std::string FindTimeDependentEvent(const char* topEvent);
  // What curves, and failure intensities up to the last date, make of expressions below.
  void CheckTests(const char* topEvent);
  void CheckFailureRates(const char* topEvent);
  void CheckDerivatives(const char* topEvent, OrvaModel* model, double lastDate, bool isNumeric);

  // All that is defined, when everything has been read. Sets deviates and computes probabilities.
  void CheckDefinitions();
  void CheckExpressions(OrvaModel* model);

 private:
  void _CheckAttribute(const LumoXMLNode* node, const std::string& name,
                       const std::vector<const char*>& names);
  void _CheckGate(std::string_view gate, const LumoXMLNode* formula, bool isSearch);
  void _CheckTopEvent(const char* topEvent);
  void _CheckHouseEvents();
  void _CheckThreshold(const LumoXMLNode* formula, bool isSearch);
  std::string_view _ResolveAlias(std::string_view event, bool passesNegations) const;
  void _CheckUses(const OrvaNames& names, bool areEvents);
  void _CheckDeviate(const LumoXMLNode* node);
  void _CheckSwitch(const LumoXMLNode* node);
  bool _IsConstant(const LumoXMLNode* condition, const char* value) const;
  void _CheckProbabilities(OrvaModel* model);
  const OrvaExpressionTraits& _GetTraits();
  // The expressions of the events at and below one.
  template <class Visit>
  void _VisitExpressionsBelow(const char* topEvent, Visit visit);

  const OrvaModel* _model;
  OrvaFindings* _findings;
  OrvaModelText _text;
  std::unique_ptr<OrvaExpressionTraits> _traits;
  std::unordered_set<std::string> _topEvents;
  std::unordered_set<std::string_view> _eventsWithDefault;
  // Elements, and what was told of them: an element inside, or an attribute behind an "@".
  std::set<std::pair<std::string, std::string>> _passedOver;
};
