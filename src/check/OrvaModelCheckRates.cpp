// What curves and failure intensities make of expressions. A failure rate is handed on from a law
// through parameters and choices; a product multiplies the rates that it finds, and any other
// operator has none. Where no law is below, the derivative stands for the intensity: it counts
// repairs against failures, and the failures of what has failed already.

#include "check/OrvaExpressionTraits.h"
#include "check/OrvaFindings.h"
#include "check/OrvaModelCheck.h"
#include "model/OrvaModel.h"
#include "support/text/LumoRawString.h"

using Traits = OrvaExpressionTraits;

namespace {

// What an element does with failure rates.
enum class Role { HANDS_ON, CHOOSES_CASE, MULTIPLIES, HAS_RATE, HAS_NONE };
struct Kind {
  const char* element;
  Role role;
};
constexpr Kind KINDS[] = {
    {"parameter", Role::HANDS_ON},     {"ite", Role::HANDS_ON},
    {"switch", Role::CHOOSES_CASE},    {"mul", Role::MULTIPLIES},
    {"exponential", Role::HAS_RATE},   {"GLM", Role::HAS_RATE},
    {"MTT", Role::HAS_RATE},           {"dormant", Role::HAS_RATE},
    {"periodic-test", Role::HAS_RATE},
};

// Laws whose derivative is no intensity: those with repairs always, of the tests those with a
// repair rate; one without repairs where failure is likely, unless the numeric rate is asked for,
// which takes that into account.
constexpr const char* MTT = "MTT";
constexpr const char* GLM = "GLM";
constexpr const char* PERIODIC_TEST = "periodic-test";
constexpr int ARGUMENTS_WITHOUT_REPAIR = 4;
constexpr const char* WEIBULL = "Weibull";
constexpr double LIKELY = 0.1;

// A case of a switch has no failure rate, whatever it chooses.
Role GetRole(const LumoXMLNode* node) {
  for (const Kind& kind : KINDS) {
    if (!node->IsNodeOfName(kind.element)) continue;
    if (kind.role != Role::CHOOSES_CASE) return kind.role;
    const LumoXMLNode* first = OrvaFirstElement(node);
    return first->IsNodeOfName("case") ? Role::HAS_NONE : Role::HANDS_ON;
  }
  return Role::HAS_NONE;
}

bool HasRepairs(const LumoXMLNode* node) {
  if (!node->IsNodeOfName(PERIODIC_TEST)) return node->IsNodeOfName(GLM);
  int arguments = 0;
  OrvaVisitChildren(node, [&](const LumoXMLNode*) { ++arguments; });
  return arguments > ARGUMENTS_WITHOUT_REPAIR;
}

// Elements to look at, each parameter's definition once.
class Worklist {
 public:
  explicit Worklist(const OrvaModelText* text) : _text(text) {}
  void Add(const LumoXMLNode* node) { _nodes.push_back(node); }
  // What a parameter stands for, else the children.
  void AddBelow(const LumoXMLNode* node) {
    if (!OrvaIsParameter(node)) {
      return OrvaVisitChildren(node, [&](const LumoXMLNode* child) { Add(child); });
    }
    if (!_parameters.insert(OrvaGetName(node)).second) return;
    const LumoXMLNode* expression = _text->FindExpressionOfParameter(OrvaGetName(node));
    if (expression != nullptr) Add(expression);
  }
  // Null after the last.
  const LumoXMLNode* TakeNext() {
    if (_nodes.empty()) return nullptr;
    const LumoXMLNode* node = _nodes.back();
    _nodes.pop_back();
    return node;
  }

 private:
  const OrvaModelText* _text;
  std::vector<const LumoXMLNode*> _nodes;
  std::unordered_set<std::string_view> _parameters;
};

}  // namespace

template <class Visit>
void OrvaModelCheck::_VisitExpressionsBelow(const char* topEvent, Visit visit) {
  std::unordered_set<const LumoXMLNode*> seen;  // members of a group share its expressions
  for (const std::string_view event : _text.GetEventsBelow(topEvent)) {
    for (const LumoXMLNode* expression : _text.GetExpressions(event)) {
      if (seen.insert(expression).second)
        visit(std::string(event), expression, _GetTraits().Get(expression));
    }
  }
}

std::string OrvaModelCheck::FindTimeDependentEvent(const char* topEvent) {
  std::string found;
  _VisitExpressionsBelow(topEvent, [&](const std::string& event, const LumoXMLNode*, int traits) {
    if (found.empty() && (traits & Traits::DEPENDS_ON_TIME) != 0) found = event;
  });
  return found;
}

void OrvaModelCheck::CheckTests(const char* topEvent) {
  _VisitExpressionsBelow(topEvent,
                         [&](const std::string&, const LumoXMLNode* expression, int traits) {
                           if ((traits & Traits::HAS_TESTS) == 0) return;
                           OrvaVisitElements(expression, [&](const LumoXMLNode* each) {
                             if (!OrvaIsParameter(each)) return;
                             if ((_GetTraits().Get(each) & Traits::HAS_TESTS) == 0) return;
                             _findings->ReportOnce(OrvaFinding::TESTS_BEHIND_PARAMETER, each,
                                                   std::string(OrvaGetName(each)));
                           });
                         });
}

void OrvaModelCheck::CheckFailureRates(const char* topEvent) {
  constexpr int NEEDED = Traits::DEPENDS_ON_TIME | Traits::HAS_FAILURE_LAW;
  Worklist worklist(&_text);
  const auto hasLaw = [&](const LumoXMLNode* node) {
    return (_GetTraits().Get(node) & Traits::HAS_FAILURE_LAW) != 0;
  };
  const auto check = [&](const std::string& event, const LumoXMLNode* node) {
    const Role role = GetRole(node);
    if (role == Role::HAS_RATE || !hasLaw(node)) return;
    if (role == Role::HAS_NONE) {
      return _findings->ReportOnce(OrvaFinding::NO_FAILURE_RATE, node, node->GetName(), event);
    }
    int laws = 0;
    OrvaVisitChildren(node, [&](const LumoXMLNode* child) { laws += hasLaw(child) ? 1 : 0; });
    if (role == Role::MULTIPLIES && laws > 1) {
      _findings->ReportOnce(OrvaFinding::MULTIPLIED_RATES, node, event);
    }
    worklist.AddBelow(node);
  };
  _VisitExpressionsBelow(topEvent,
                         [&](const std::string& event, const LumoXMLNode* expression, int traits) {
                           if ((traits & NEEDED) != NEEDED) return;
                           worklist.Add(expression);
                           while (const LumoXMLNode* node = worklist.TakeNext()) check(event, node);
                         });
}

// The numeric rate comes from the derivative whatever the law, else only where there is none.
void OrvaModelCheck::CheckDerivatives(const char* topEvent, OrvaModel* model, double lastDate,
                                      bool isNumeric) {
  const int ruledOut = isNumeric ? 0 : Traits::HAS_FAILURE_LAW;
  Worklist worklist(&_text);
  model->ComputeProbabilitiesOfBasicEvents(lastDate);
  const auto isFar = [&](const std::string& name, const LumoXMLNode* node) {
    if ((_GetTraits().Get(node) & Traits::DEPENDS_ON_TIME) == 0) return false;
    if (node->IsNodeOfName(MTT)) return true;
    if (isNumeric) return HasRepairs(node);
    const OrvaEvent* event = model->LookForEvent(name.c_str());
    return node->IsNodeOfName(WEIBULL) && event != nullptr && event->GetProbability() > LIKELY;
  };
  _VisitExpressionsBelow(topEvent, [&](const std::string& event, const LumoXMLNode* expression,
                                       int traits) {
    if ((traits & Traits::DEPENDS_ON_TIME) == 0 || (traits & ruledOut) != 0) return;
    worklist.Add(expression);
    while (const LumoXMLNode* node = worklist.TakeNext()) {
      if (isFar(event, node)) {
        _findings->ReportOnce(OrvaFinding::DERIVATIVE_AS_INTENSITY, node, node->GetName(), event);
      }
      worklist.AddBelow(node);
    }
  });
}
