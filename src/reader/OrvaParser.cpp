// The reader's frame: documents, places, attributes and reports. This is the one source file of
// the reader that looks upward, for the options.

#include "reader/OrvaParser.h"

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "model/OrvaProbabilityDistribution.h"
#include "support/memory/LumoMemoryManager.h"
#include "xml/LumoXMLDocument.h"

namespace {

constexpr const char* NO_FILE_NAME = "No file name\n";
constexpr const char* UNABLE_TO_OPEN_FILE = "Unable to open file %s\n";
constexpr const char* NO_ROOT_ELEMENT = "No root element \"open-psa\".\n";
constexpr const char* UNKNOWN_CONSTRUCT = "Unknown construct.\n";
constexpr const char* NO_ATTRIBUTE = "No attribute \"%s\"";
constexpr const char* NOT_A_REAL = "Not a real \"%s\"";
constexpr const char* NOT_AN_INTEGER = "Not an integer \"%s\"";
constexpr const char* NOT_A_BOOLEAN = "Not a Boolean value \"%s\"";

constexpr const char* RISKSPECTRUM_ROOT = "riskspectrum:opsa-mef";
// In the order in which they are looked for.
constexpr const char* ROOT_NAMES[] = {"open-psa", "srf-psa", "opsa-mef", RISKSPECTRUM_ROOT};

const LumoXMLNode* FindRoot(const LumoXMLDocument* document, const char* name) {
  const LumoXMLNode* root = document->GetFirstRoot();
  while (root != nullptr && !root->IsNodeOfName(name)) root = root->GetNextSibling();
  return root;
}

}  // namespace

struct OrvaParser::Construct {
  const char* element;
  int places;
  void (OrvaParser::*download)(int& error, const LumoXMLNode* node, OrvaModel* model);
};

const OrvaParser::Construct OrvaParser::_CONSTRUCTS[] = {
    {"define-fault-tree", ROOT, &OrvaParser::_DownloadFaultTree},
    {"model-data", ROOT, &OrvaParser::_DownloadModelData},
    {"define-gate", ROOT | FAULT_TREE, &OrvaParser::_DownloadGateDefinition},
    {"define-basic-event", ANYWHERE, &OrvaParser::_DownloadBasicEventDefinition},
    {"define-house-event", ANYWHERE, &OrvaParser::_DownloadHouseEventDefinition},
    {"define-parameter", ANYWHERE, &OrvaParser::_DownloadParameterDefinition},
    {"define-CCF-group", ANYWHERE, &OrvaParser::_DownloadCCFGroupDefinition},
};

OrvaParser::OrvaParser(OrvaInterpreter* interpreter) : _interpreter(interpreter) {
  LumoMemoryManager::TraceNew(this, "OrvaParser");
}

OrvaParser::~OrvaParser() { LumoMemoryManager::TraceDelete(this, "OrvaParser"); }

void OrvaParser::UpdateOptionCenter() { _optionCenter = _interpreter->GetOptionCenter(); }

bool OrvaParser::_ChecksEventRedefinition() const {
  return _optionCenter->GetBooleanOption(OrvaOptionCenter::CHECK_EVENT_REDEFINITION);
}

bool OrvaParser::_ChecksParameterRedefinition() const {
  return _optionCenter->GetBooleanOption(OrvaOptionCenter::CHECK_PARAMETER_REDEFINITION);
}

bool OrvaParser::_ChecksCCFGroupRedefinition() const {
  return _optionCenter->GetBooleanOption(OrvaOptionCenter::CHECK_CCF_GROUP_REDEFINITION);
}

void OrvaParser::DownloadModel(int& error, const char* fileName, OrvaModel* model) {
  if (fileName == nullptr) return _Report(error, NO_FILE_NAME, nullptr);
  LumoXMLDocument document;
  if (!document.Load(fileName)) return _Report(error, UNABLE_TO_OPEN_FILE, fileName, nullptr);
  DownloadModel(error, &document, model);
}

void OrvaParser::DownloadModel(int& error, std::FILE* file, OrvaModel* model) {
  LumoXMLDocument document;
  document.Load(file);
  DownloadModel(error, &document, model);
}

void OrvaParser::DownloadModel(int& error, const LumoXMLDocument* document, OrvaModel* model) {
  for (const char* name : ROOT_NAMES) {
    const LumoXMLNode* root = FindRoot(document, name);
    if (root == nullptr) continue;
    if (name == RISKSPECTRUM_ROOT) model->SetFormat(RISKSPECTRUM_ROOT);
    return _DownloadConstructs(error, root, ROOT, model);
  }
  _Report(error, NO_ROOT_ELEMENT, nullptr);
}

void OrvaParser::_DownloadConstructs(int& error, const LumoXMLNode* parent, Place place,
                                     OrvaModel* model) {
  for (const LumoXMLNode* node = parent->GetFirstChild(); node != nullptr && error == 0;
       node = node->GetNextSibling()) {
    if (!node->IsComment()) _DownloadConstruct(error, node, place, model);
  }
}

void OrvaParser::_DownloadConstruct(int& error, const LumoXMLNode* node, Place place,
                                    OrvaModel* model) {
  for (const Construct& construct : _CONSTRUCTS) {
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
  _DownloadConstructs(error, node, MODEL_DATA, model);
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
  error = 1;
  RaiseError(format, argument, node);
}
