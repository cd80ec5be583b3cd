#include "check/OrvaModelCheck.h"

#include "check/OrvaExpressionTraits.h"
#include "check/OrvaFindings.h"
#include "model/OrvaModel.h"
#include "reader/OrvaModelElements.h"

using namespace OrvaModelElements;

namespace {

constexpr const char* CONSTANT = "constant";

bool HasElement(const LumoXMLNode* node, const char* name) {
  const LumoXMLNode* child = OrvaFirstElement(node);
  while (child != nullptr && !child->IsNodeOfName(name)) child = OrvaNextElement(child);
  return child != nullptr;
}

}  // namespace

OrvaModelCheck::OrvaModelCheck(const OrvaModel* model, OrvaFindings* findings)
    : _model(model), _findings(findings) {}

OrvaModelCheck::~OrvaModelCheck() = default;

void OrvaModelCheck::AddDocument(std::unique_ptr<LumoXMLDocument> document) {
  _traits.reset();
  OrvaVisitChildren(document.get(), [&](const LumoXMLNode* root) { CheckElement(root); });
  _text.Add(std::move(document));
}

void OrvaModelCheck::AddDefaultDistribution() {
  for (const LumoXMLNode* reference : _text.GetEvents().references) {
    const std::string_view name = OrvaGetName(reference);
    const OrvaEvent* event = _model->LookForEvent(name.data());
    if (event == nullptr || event->GetProbabilityDistribution() != nullptr) continue;
    if (event->GetType() == OrvaEvent::BASIC_EVENT ||
        event->GetType() == OrvaEvent::UNSPECIFIED_EVENT) {
      _eventsWithDefault.insert(name);
    }
  }
}

void OrvaModelCheck::AddTopEvent(const char* name) { _topEvents.insert(name); }

const OrvaExpressionTraits& OrvaModelCheck::_GetTraits() {
  if (_traits == nullptr) _traits = std::make_unique<OrvaExpressionTraits>(_text);
  return *_traits;
}

void OrvaModelCheck::CheckDefinitions() {
  for (const LumoXMLNode* reference : _text.GetEvents().references) {
    const std::string_view name = OrvaGetName(reference);
    if (_text.GetEvents().Find(name) == nullptr && _text.FindGroup(name) == nullptr &&
        !_eventsWithDefault.contains(name)) {
      _findings->Report(OrvaFinding::UNDEFINED_EVENT, reference, std::string(name));
    }
  }
  for (const LumoXMLNode* reference : _text.GetParameters().references) {
    const std::string_view name = OrvaGetName(reference);
    if (_text.GetParameters().Find(name) != nullptr) continue;
    _findings->Report(OrvaFinding::UNDEFINED_PARAMETER, reference, std::string(name));
  }
  _CheckUses(_text.GetEvents(), true);
  _CheckUses(_text.GetParameters(), false);
}

// Definitions that replace another, that nothing uses, or that have a name only. A gate that is no
// top event of the run may be one of another, unless the run names some.
void OrvaModelCheck::_CheckUses(const OrvaNames& names, bool areEvents) {
  for (const auto& [node, replaced] : names.definitions) {
    const std::string name(OrvaGetName(node));
    if (replaced != nullptr) {
      _findings->Report(areEvents ? OrvaFinding::REDEFINED_EVENT : OrvaFinding::REDEFINED_PARAMETER,
                        node, name, OrvaFindings::DescribeLine(replaced, node));
    }
    if (names.Find(name) != node) continue;
    const bool isGate = node->IsNodeOfName(DEFINE_GATE);
    if ((isGate && _text.FindFormula(name) == nullptr) ||
        (node->IsNodeOfName(DEFINE_HOUSE_EVENT) && !HasElement(node, CONSTANT))) {
      _findings->Report(OrvaFinding::UNDEFINED_EVENT, node, name);
    }
    if (names.firstReference.contains(name)) continue;
    if (_topEvents.contains(name) || (isGate && _topEvents.empty())) continue;
    _findings->Report(areEvents ? OrvaFinding::UNUSED_EVENT : OrvaFinding::UNUSED_PARAMETER, node,
                      name);
  }
}
