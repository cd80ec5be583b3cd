#include "check/OrvaScriptCheck.h"

#include "driver/OrvaCommandOptions.h"
#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"
#include "system/OrvaSystem.h"

using Center = OrvaOptionCenter;
using Options = OrvaCommandOptions;

namespace {

constexpr const char* SEARCH = "search";
constexpr const char* NUMERIC = "numeric";
// Nothing that is written to one of these is overwritten.
constexpr const char* DEVICES = "/dev/";

}  // namespace

// What is looked at when a command of that name begins or ends; null for nothing.
struct OrvaScriptCheck::Command {
  const char* parent;
  const char* element;
  void (OrvaScriptCheck::*begin)(const LumoXMLNode* command);
  void (OrvaScriptCheck::*end)(const LumoXMLNode* command);

  static const Command* Find(const LumoXMLNode* node) {
    using Check = OrvaScriptCheck;
    static constexpr Command COMMANDS[] = {
        {"set", "option", &Check::_CheckSetOption, nullptr},
        {"set", "default-probability-distribution", &Check::_CheckDefaultDistribution, nullptr},
        {"build", "minimal-cutsets", &Check::_CheckBuild, &Check::_EndBuild},
        {"compute", "probability", nullptr, &Check::_CheckCurve},
        {"compute", "failure-intensity", nullptr, &Check::_CheckFailureIntensity},
    };
    for (const Command& row : COMMANDS) {
      if (node->IsNodeOfName(row.element) && node->GetParent()->IsNodeOfName(row.parent)) {
        return &row;
      }
    }
    return nullptr;
  }
};

int Orva_CheckFile(const char* fileName) {
  LumoMemoryManager::Start();
  LumoMemoryManager::SetTraceAllocations(false);
  int error = 0;
  {
    OrvaInterpreter interpreter;
    OrvaScriptCheck check(&interpreter);
    check.Check(error, fileName);
    if (check.HasWarnings()) error = 1;
  }
  LumoMemoryManager::Stop();
  return error;
}

OrvaScriptCheck::OrvaScriptCheck(OrvaInterpreter* interpreter)
    : _interpreter(interpreter),
      _findings(interpreter->GetErrorStream()),
      _models(interpreter->GetModel(), &_findings) {
  _interpreter->SetWatcher(this);
}

OrvaScriptCheck::~OrvaScriptCheck() { _interpreter->SetWatcher(nullptr); }

void OrvaScriptCheck::Check(int& error, const char* fileName) {
  _interpreter->DownloadCommandScript(error, fileName);
  if (error != 0) return;
  if (!_isScript) _models.CheckAllFormulas();
  _models.CheckDefinitions();
  _models.CheckExpressions(_interpreter->GetModel());
}

void OrvaScriptCheck::BeginCommand(const LumoXMLNode* command) {
  _isScript = true;
  _CheckAttributesOfRoot(command);
  if (const Options* row = Options::Find(command)) {
    _CheckAttributes(command, *row);
    if (row->content == Options::OPTIONS) _CheckChildren(command, *row);
    _CheckOutput(command, *row);
    if (row->ReadsOption(Center::TOP_EVENT)) {
      _models.AddTopEvent(_GetTopEvent(command).c_str());
    }
  }
  const Command* row = Command::Find(command);
  if (row != nullptr && row->begin != nullptr) (this->*row->begin)(command);
}

void OrvaScriptCheck::EndCommand(const LumoXMLNode* command) {
  const Command* row = Command::Find(command);
  if (row != nullptr && row->end != nullptr) (this->*row->end)(command);
}

void OrvaScriptCheck::TakeModel(std::unique_ptr<LumoXMLDocument> document) {
  _models.AddDocument(std::move(document));
}

// The value is written past the randomizer, and nothing reads the other two.
void OrvaScriptCheck::_CheckSetOption(const LumoXMLNode* command) {
  static constexpr const char* IDLE[] = {Center::RANDOMIZER_SEED, Center::MINIMUM_CONTRIBUTION,
                                         Center::PRINT_MINIMAL_CUTSET_CONTRIBUTION};
  const char* name = command->GetAttributeValue(Center::NAME);
  if (name == nullptr) return;
  for (const char* idle : IDLE) {
    if (LumoRawString::IsEqual(name, idle)) {
      _findings.Report(OrvaFinding::IDLE_OPTION, command, name);
    }
  }
  const char* value;
  if (!Options::FindText(command, Center::VALUE, value)) {
    _findings.Report(OrvaFinding::NO_VALUE, command, name);
  } else if (LumoRawString::IsEqual(name, Center::OUTPUT_MODE)) {
    _CheckOption(command, name, value);  // the interpreter looks at values of other options
  }
}

void OrvaScriptCheck::_CheckDefaultDistribution(const LumoXMLNode* command) {
  OrvaVisitChildren(command, [&](const LumoXMLNode* node) { _models.CheckElement(node); });
  _models.AddDefaultDistribution();
}

void OrvaScriptCheck::_CheckBuild(const LumoXMLNode* command) {
  const std::string topEvent = _GetTopEvent(command);
  const char* algorithm = nullptr;
  const bool isSearch = !Options::FindText(command, Options::ALGORITHM, algorithm) ||
                        LumoRawString::IsEqual(algorithm, SEARCH);
  const char* contribution;
  if (Options::FindText(command, Center::MINIMUM_CONTRIBUTION, contribution)) {
    _findings.Report(OrvaFinding::IDLE_OPTION, command, Center::MINIMUM_CONTRIBUTION);
  }
  _models.CheckFormulas(topEvent.c_str(), isSearch);
  if (_GetReal(command, Center::MINIMUM_PROBABILITY) > 0.0 &&
      _GetReal(command, Center::MISSION_TIME) == 0.0) {
    const std::string event = _models.FindTimeDependentEvent(topEvent.c_str());
    if (!event.empty()) _findings.Report(OrvaFinding::LIMIT_AT_TIME_ZERO, command, event);
  }
  const OrvaEvent* event = _interpreter->GetModel()->LookForEvent(topEvent.c_str());
  const std::string handle = _GetText(command, Center::HANDLE);
  _addsToHandle = isSearch && event != nullptr && event->GetHandle(handle.c_str()) != nullptr &&
                  event->GetHandle(handle.c_str())->GetType() == OrvaHandle::MCS_HANDLE;
}

void OrvaScriptCheck::_EndBuild(const LumoXMLNode* command) {
  if (!_addsToHandle) return;
  const OrvaEvent* event = _interpreter->GetModel()->LookForEvent(_GetTopEvent(command).c_str());
  if (event == nullptr) return;
  const OrvaHandle* source = event->GetHandle(_GetText(command, Center::SYSTEM_HANDLE).c_str());
  if (source == nullptr || source->GetSystem()->GetNumberOfModules() == 0) return;
  _findings.Report(OrvaFinding::HANDLE_BUILT_TWICE, command, _GetText(command, Center::HANDLE));
}

void OrvaScriptCheck::_CheckCurve(const LumoXMLNode* command) {
  const char* text;
  if (!Options::FindText(command, Center::LAST_DATE, text) &&
      command->IsNodeOfName("probability")) {
    return;
  }
  const bool follows = Options::FindText(command, Options::FOLLOW_PARAMETERS, text) &&
                       LumoRawString::IsEqual(text, Center::VALUE_ON);
  if (_IsOn(command, Center::ADD_SINGULAR_POINTS) && !follows) {
    _models.CheckTests(_GetTopEvent(command).c_str());
  }
  if (_IsOn(command, Center::PRINT_SAFETY_INTEGRITY_LEVEL)) {
    _findings.Report(OrvaFinding::SIL_NUMBERS, command);
  }
}

void OrvaScriptCheck::_CheckFailureIntensity(const LumoXMLNode* command) {
  const std::string topEvent = _GetTopEvent(command);
  _CheckCurve(command);
  const char* text;
  const bool isNumeric = Options::FindText(command, Options::FAILURE_RATE, text) &&
                         LumoRawString::IsEqual(text, NUMERIC);
  if (!isNumeric) _models.CheckFailureRates(topEvent.c_str());
  _models.CheckDerivatives(topEvent.c_str(), _interpreter->GetModel(),
                           _GetReal(command, Center::LAST_DATE), isNumeric);
}

void OrvaScriptCheck::_CheckOutput(const LumoXMLNode* command, const Options& row) {
  if (!row.ReadsOption(Center::OUTPUT_FILE)) return;
  const std::string file = _GetText(command, Center::OUTPUT_FILE);
  const bool appends = _GetText(command, Center::OUTPUT_MODE) == "append";
  const auto [former, isNew] = _lineOfOutput.insert({file, command->GetLineNumber()});
  if (!isNew && !appends && file.rfind(DEVICES, 0) != 0) {
    _findings.Report(OrvaFinding::SAME_OUTPUT, command, file, std::to_string(former->second));
  }
  former->second = command->GetLineNumber();
}

std::string OrvaScriptCheck::_GetText(const LumoXMLNode* command, const char* option) const {
  const char* text;
  if (!Options::FindText(command, option, text)) {
    text = _interpreter->GetOptionCenter()->GetStringOption(option);
  }
  return text == nullptr ? "" : text;
}

double OrvaScriptCheck::_GetReal(const LumoXMLNode* command, const char* option) const {
  const char* text;
  if (!Options::FindText(command, option, text)) {
    return _interpreter->GetOptionCenter()->GetRealOption(option);
  }
  return LumoRawString::IsDouble(text) ? LumoRawString::ToDouble(text) : 0.0;
}

bool OrvaScriptCheck::_IsOn(const LumoXMLNode* command, const char* option) const {
  const char* text;
  if (!Options::FindText(command, option, text)) {
    return _interpreter->GetOptionCenter()->GetBooleanOption(option);
  }
  return LumoRawString::IsEqual(text, Center::VALUE_ON);
}

// Without a name, the model's only root event; empty when there is none.
std::string OrvaScriptCheck::_GetTopEvent(const LumoXMLNode* command) const {
  const char* name;
  if (!Options::FindText(command, Center::TOP_EVENT, name)) {
    name = _interpreter->GetOptionCenter()->GetStringOption(Center::TOP_EVENT);
  }
  if (name != nullptr) return name;
  LumoList roots;
  _interpreter->GetModel()->CollectEvents(OrvaSymbol::CompareAsRootSymbol, nullptr, &roots);
  if (roots.GetNumberOfItems() != 1) return {};
  return static_cast<OrvaEvent*>(roots.GetFirstItem())->GetName();
}
