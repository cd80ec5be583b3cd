#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "model/OrvaCCFGroup.h"
#include "model/OrvaEvent.h"
#include "reader/OrvaModelElements.h"
#include "xml/LumoXMLNode.h"
#include "xml/LumoXMLParser.h"

class LumoXMLDocument;
class OrvaGate;
class OrvaInterpreter;
class OrvaModel;
class OrvaOptionCenter;
class OrvaParameter;
class OrvaProbabilityDistribution;

// Reads models in the Open-PSA Model Exchange Format. Several files may be read into one model one
// after the other, and an event may be referenced before it is declared.
//
// The first fault is reported with the offending element, sets `error` to 1 and ends the reading;
// what was read before it stays in the model. A redefinition is a fault while its option of the
// option center is on; otherwise the new definition replaces the old one.
class OrvaParser : public LumoXMLParser {
 public:
  explicit OrvaParser(OrvaInterpreter* interpreter);
  ~OrvaParser();

  // Takes the option center from the interpreter again.
  void UpdateOptionCenter();

  // The document of a file, null after the report that it can't be read.
  std::unique_ptr<LumoXMLDocument> NewDocument(int& error, const char* fileName);
  // Read a file by name, or a loaded document, into the model.
  void DownloadModel(int& error, const char* fileName, OrvaModel* model);
  void DownloadModel(int& error, const LumoXMLDocument* document, OrvaModel* model);

  // Gives every basic or unspecified event that has no expression a tree of its own read from the
  // element; an unspecified event becomes a basic event.
  void DownloadDefaultProbabilityDistributionOfBasicEvents(int& error,
                                                           const LumoXMLNode* expression,
                                                           OrvaModel* model);

  // Offered to users of the class; the program itself does not call what follows.

  OrvaInterpreter* GetInterpreter() const { return _interpreter; }
  OrvaOptionCenter* GetOptionCenter() const { return _optionCenter; }
  // Reads an open file.
  void DownloadModel(int& error, std::FILE* file, OrvaModel* model);

 private:
  // The table of constructs and where each may stand, and what is said when an event is declared
  // again: see OrvaParser.cpp and OrvaParserDefinitions.cpp.
  enum Place : int;
  struct Construct;
  struct Conflicts;

  void _DownloadOwnDocument(int& error, LumoXMLDocument* document, OrvaModel* model);
  void _DownloadConstructs(int& error, const LumoXMLNode* parent, Place place, OrvaModel* model);
  void _DownloadConstruct(int& error, const LumoXMLNode* node, Place place, OrvaModel* model);
  void _DownloadFaultTree(int& error, const LumoXMLNode* node, OrvaModel* model);
  void _DownloadModelData(int& error, const LumoXMLNode* node, OrvaModel* model);
  void _DownloadGateDefinition(int& error, const LumoXMLNode* node, OrvaModel* model);
  void _DownloadBasicEventDefinition(int& error, const LumoXMLNode* node, OrvaModel* model);
  void _DownloadExpressionOfBasicEvent(int& error, const LumoXMLNode* node, OrvaEvent* event,
                                       const char* riskSpectrumModel);
  void _DownloadHouseEventDefinition(int& error, const LumoXMLNode* node, OrvaModel* model);
  void _DownloadParameterDefinition(int& error, const LumoXMLNode* node, OrvaModel* model);
  OrvaEvent* _DeclareEvent(int& error, const LumoXMLNode* node, OrvaEvent::Type type,
                           const Conflicts& conflicts, OrvaModel* model);
  // The text of a label, without the blank that its layout may leave at the end, becomes an
  // attribute of what it labels.
  template <class Owner>
  static void _DownloadLabel(const LumoXMLNode* node, Owner* owner) {
    if (const LumoXMLNode* text = node->GetChild(1, LumoXMLNode::TEXT)) {
      owner->SetAttribute(OrvaModelElements::LABEL, _TrimText(text->GetText()).c_str());
    }
  }
  static std::string _TrimText(const char* text);
  template <class Owner, class Predicate, class Download>
  void _DownloadStructure(int& error, const LumoXMLNode* node, Owner* owner, Predicate isDefinition,
                          Download download);
  template <class Owner, class Predicate, class Download>
  void _DownloadUniqueDefinition(int& error, const LumoXMLNode* node, Owner* owner,
                                 Predicate isDefinition, Download download);

  OrvaGate* _DownloadGate(int& error, const LumoXMLNode* node, OrvaModel* model);
  OrvaGate* _DownloadConstant(int& error, const LumoXMLNode* node, OrvaModel* model);
  OrvaGate* _DownloadOperator(int& error, const LumoXMLNode* node, OrvaModel* model);
  void _DownloadThreshold(int& error, const LumoXMLNode* node, const char* name,
                          const char* attribute, OrvaGate* gate);
  void _DownloadGateChildren(int& error, const LumoXMLNode* node, OrvaGate* gate, OrvaModel* model);
  OrvaEvent* _DownloadEvent(int& error, const LumoXMLNode* node, OrvaModel* model);
  OrvaEvent* _LookForOrAddEvent(int& error, const LumoXMLNode* node, OrvaEvent::Type type,
                                OrvaModel* model);

  OrvaProbabilityDistribution* _DownloadProbabilityDistribution(int& error, const LumoXMLNode* node,
                                                                OrvaModel* model);
  OrvaProbabilityDistribution* _DownloadLeaf(int& error, const LumoXMLNode* node, OrvaModel* model);
  OrvaProbabilityDistribution* _DownloadOperation(int& error, const LumoXMLNode* node,
                                                  OrvaModel* model);

  void _DownloadCCFGroupDefinition(int& error, const LumoXMLNode* node, OrvaModel* model);
  OrvaCCFGroup::Type _DownloadCCFModel(int& error, const LumoXMLNode* node);
  void _DownloadCCFGroupOptions(int& error, const LumoXMLNode* node, OrvaCCFGroup* group);
  void _DownloadCCFGroupOption(int& error, const LumoXMLNode* option, OrvaCCFGroup* group);
  void _DownloadCCFMembers(int& error, const LumoXMLNode* node, OrvaCCFGroup* group);
  void _DownloadCCFMember(int& error, const LumoXMLNode* node, OrvaCCFGroup* group);
  void _DownloadCCFDistribution(int& error, const LumoXMLNode* node, OrvaCCFGroup* group);
  void _DownloadCCFFactors(int& error, const LumoXMLNode* node, OrvaCCFGroup* group);
  void _DownloadCCFFactor(int& error, const LumoXMLNode* node, OrvaCCFGroup* group);
  void _CheckCCFGroup(int& error, const LumoXMLNode* node, OrvaCCFGroup* group);

  // The text of a required attribute, null after the report of its absence; its typed forms leave
  // the value alone after a report.
  const char* _DownloadAttribute(int& error, const LumoXMLNode* node, const char* name);
  void _DownloadRealAttribute(int& error, const LumoXMLNode* node, const char* name, double& value);
  void _DownloadIntegerAttribute(int& error, const LumoXMLNode* node, const char* name, int& value);
  void _DownloadBooleanAttribute(int& error, const LumoXMLNode* node, const char* name,
                                 bool& value);

  void _Report(int& error, const char* text, const LumoXMLNode* node);
  void _Report(int& error, const char* format, const char* argument, const LumoXMLNode* node);

  bool _ChecksEventRedefinition() const;
  bool _ChecksParameterRedefinition() const;
  bool _ChecksCCFGroupRedefinition() const;

  OrvaInterpreter* _interpreter;
  OrvaOptionCenter* _optionCenter = nullptr;
  // Whether the document is the reader's own, whose constructs go once they are read.
  bool _ownsDocument = false;
};
