// The reader's frame: documents, places, attributes and reports. This is the one source file of
// the reader that looks upward, for the options.
//
// The format is a few tables. A table of constructs says which element may stand in which places
// and who reads it; below a definition, the table of operators (OrvaGate) and that of kinds of
// expressions (OrvaProbabilityDistribution) say which elements are formulas and which expressions.
// Whoever reads an element reads all of it, so that what follows a fault is never looked at.
//
// Nothing is resolved afterwards. A reference to an event that is not known yet adds it to the
// model with the type that the reference says, and the definition, when it comes, completes that
// same event. So definitions may stand in any order and in several files, and what a faulty file
// has added until its fault stays.
//
// Nor is anything looked at twice: of a document that nobody else has, each construct goes as soon
// as it is read, so that the model takes its place in memory instead of standing beside it.

#include "reader/OrvaParser.h"

#include <cassert>

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "reader/OrvaModelElements.h"
#include "reader/OrvaParserMessages.h"
#include "support/memory/LumoMemoryManager.h"
#include "xml/LumoXMLDocument.h"

using namespace OrvaModelElements;
using namespace OrvaParserMessages;

namespace {

// The root elements, in the order in which they are looked for. A model keeps the format that it
// was made with, except under the last of them.
struct Root {
  const char* element;
  bool setsFormat;
};
constexpr Root ROOTS[] = {
    {OPEN_PSA, false},
    {SRF_PSA, false},
    {OPSA_MEF, false},
    {RISKSPECTRUM_OPSA_MEF, true},
};

const LumoXMLNode* FindRoot(const LumoXMLDocument* document, const char* name) {
  const LumoXMLNode* root = document->GetFirstRoot();
  while (root != nullptr && !root->IsNodeOfName(name)) root = root->GetNextSibling();
  return root;
}

}  // namespace

// Where a construct may stand.
enum OrvaParser::Place : int { ROOT = 1, FAULT_TREE = 2, MODEL_DATA_SECTION = 4 };

struct OrvaParser::Construct {
  const char* element;
  int places;
  void (OrvaParser::*download)(int& error, const LumoXMLNode* node, OrvaModel* model);
};

OrvaParser::OrvaParser(OrvaInterpreter* interpreter) : _interpreter(interpreter) {
  LumoMemoryManager::TraceNew(this, "OrvaParser");
}

OrvaParser::~OrvaParser() { LumoMemoryManager::TraceDelete(this, "OrvaParser"); }

void OrvaParser::UpdateOptionCenter() {
  _optionCenter = _interpreter->GetOptionCenter();
  assert(_optionCenter != nullptr);
}

bool OrvaParser::_ChecksEventRedefinition() const {
  return _optionCenter->GetBooleanOption(OrvaOptionCenter::CHECK_EVENT_REDEFINITION);
}

bool OrvaParser::_ChecksParameterRedefinition() const {
  return _optionCenter->GetBooleanOption(OrvaOptionCenter::CHECK_PARAMETER_REDEFINITION);
}

bool OrvaParser::_ChecksCCFGroupRedefinition() const {
  return _optionCenter->GetBooleanOption(OrvaOptionCenter::CHECK_CCF_GROUP_REDEFINITION);
}

std::unique_ptr<LumoXMLDocument> OrvaParser::NewDocument(int& error, const char* fileName) {
  auto document = std::make_unique<LumoXMLDocument>();
  if (fileName == nullptr) {
    _Report(error, NO_FILE_NAME, nullptr);
  } else if (!document->Load(fileName)) {
    _Report(error, UNABLE_TO_OPEN_FILE, fileName, nullptr);
  } else {
    return document;
  }
  return nullptr;
}

void OrvaParser::DownloadModel(int& error, const char* fileName, OrvaModel* model) {
  const auto document = NewDocument(error, fileName);
  if (document != nullptr) _DownloadOwnDocument(error, document.get(), model);
}

void OrvaParser::_DownloadOwnDocument(int& error, LumoXMLDocument* document, OrvaModel* model) {
  _ownsDocument = true;
  DownloadModel(error, document, model);
  _ownsDocument = false;
}

void OrvaParser::DownloadModel(int& error, const LumoXMLDocument* document, OrvaModel* model) {
  for (const Root& row : ROOTS) {
    const LumoXMLNode* root = FindRoot(document, row.element);
    if (root == nullptr) continue;
    if (row.setsFormat) model->SetFormat(row.element);
    return _DownloadConstructs(error, root, ROOT, model);
  }
  _Report(error, NO_ROOT_ELEMENT, nullptr);
}

void OrvaParser::_DownloadConstructs(int& error, const LumoXMLNode* parent, Place place,
                                     OrvaModel* model) {
  for (const LumoXMLNode* node = parent->GetFirstChild(); node != nullptr && error == 0;) {
    if (!node->IsComment()) _DownloadConstruct(error, node, place, model);
    node = node->GetNextSibling();
    if (_ownsDocument) const_cast<LumoXMLNode*>(parent)->DeleteFirstChild();
  }
}

void OrvaParser::_DownloadConstruct(int& error, const LumoXMLNode* node, Place place,
                                    OrvaModel* model) {
  static constexpr int ANYWHERE = ROOT | FAULT_TREE | MODEL_DATA_SECTION;
  static constexpr Construct CONSTRUCTS[] = {
      {DEFINE_FAULT_TREE, ROOT, &OrvaParser::_DownloadFaultTree},
      {MODEL_DATA, ROOT, &OrvaParser::_DownloadModelData},
      {DEFINE_GATE, ROOT | FAULT_TREE, &OrvaParser::_DownloadGateDefinition},
      {DEFINE_BASIC_EVENT, ANYWHERE, &OrvaParser::_DownloadBasicEventDefinition},
      {DEFINE_HOUSE_EVENT, ANYWHERE, &OrvaParser::_DownloadHouseEventDefinition},
      {DEFINE_PARAMETER, ANYWHERE, &OrvaParser::_DownloadParameterDefinition},
      {DEFINE_CCF_GROUP, ANYWHERE, &OrvaParser::_DownloadCCFGroupDefinition},
  };
  for (const Construct& construct : CONSTRUCTS) {
    if ((construct.places & place) != 0 && node->IsNodeOfName(construct.element)) {
      return (this->*construct.download)(error, node, model);
    }
  }
  _Report(error, UNKNOWN_CONSTRUCT, node);
}

void OrvaParser::_DownloadFaultTree(int& error, const LumoXMLNode* node, OrvaModel* model) {
  _DownloadConstructs(error, node, FAULT_TREE, model);
}

void OrvaParser::_DownloadModelData(int& error, const LumoXMLNode* node, OrvaModel* model) {
  _DownloadConstructs(error, node, MODEL_DATA_SECTION, model);
}

void OrvaParser::DownloadDefaultProbabilityDistributionOfBasicEvents(int& error,
                                                                     const LumoXMLNode* expression,
                                                                     OrvaModel* model) {
  for (OrvaEvent* event : LumoItems<OrvaEvent>(model->GetEvents())) {
    const bool isBasic = event->GetType() == OrvaEvent::BASIC_EVENT ||
                         event->GetType() == OrvaEvent::UNSPECIFIED_EVENT;
    if (!isBasic || event->GetProbabilityDistribution() != nullptr) continue;
    OrvaProbabilityDistribution* distribution =
        _DownloadProbabilityDistribution(error, expression, model);
    if (error != 0) return;
    assert(distribution != nullptr);
    event->SetProbabilityDistribution(distribution);
    event->SetType(OrvaEvent::BASIC_EVENT);
  }
}

std::string OrvaParser::_TrimText(const char* text) {
  std::string trimmed = text;
  if (!trimmed.empty() && trimmed.back() == ' ') trimmed.pop_back();
  return trimmed;
}

const char* OrvaParser::_DownloadAttribute(int& error, const LumoXMLNode* node, const char* name) {
  const char* text = node->GetAttributeValue(name);
  if (text == nullptr) _Report(error, NO_ATTRIBUTE, name, node);
  return text;
}

void OrvaParser::_DownloadRealAttribute(int& error, const LumoXMLNode* node, const char* name,
                                        double& value) {
  const char* text = _DownloadAttribute(error, node, name);
  if (text == nullptr) return;
  const LumoXMLAttribute* attribute = node->FindAttribute(name);
  if (!attribute->IsDouble()) return _Report(error, NOT_A_REAL, text, node);
  value = attribute->GetValueAsDouble();
}

void OrvaParser::_DownloadIntegerAttribute(int& error, const LumoXMLNode* node, const char* name,
                                           int& value) {
  const char* text = _DownloadAttribute(error, node, name);
  if (text == nullptr) return;
  const LumoXMLAttribute* attribute = node->FindAttribute(name);
  if (!attribute->IsInt()) return _Report(error, NOT_AN_INTEGER, text, node);
  value = attribute->GetValueAsInt();
}

void OrvaParser::_DownloadBooleanAttribute(int& error, const LumoXMLNode* node, const char* name,
                                           bool& value) {
  const char* text = _DownloadAttribute(error, node, name);
  if (text == nullptr) return;
  const LumoXMLAttribute* attribute = node->FindAttribute(name);
  if (!attribute->IsBool()) return _Report(error, NOT_A_BOOLEAN, text, node);
  value = attribute->GetValueAsBool();
}

void OrvaParser::_Report(int& error, const char* text, const LumoXMLNode* node) {
  error = 1;
  RaiseError(text, node);
}

void OrvaParser::_Report(int& error, const char* format, const char* argument,
                         const LumoXMLNode* node) {
  assert(argument != nullptr);  // or nothing would be said of the fault
  error = 1;
  RaiseError(format, argument, node);
}

// Offered to users of the class; the program itself does not call what follows.

void OrvaParser::DownloadModel(int& error, std::FILE* file, OrvaModel* model) {
  LumoXMLDocument document;
  document.Load(file);
  _DownloadOwnDocument(error, &document, model);
}
