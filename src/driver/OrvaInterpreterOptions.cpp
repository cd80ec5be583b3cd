// How commands read their options.

#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "model/OrvaModel.h"
#include "search/OrvaCutoff.h"
#include "support/text/LumoFileStream.h"
#include "support/text/LumoRawString.h"
#include "xml/LumoXMLNode.h"

namespace {

constexpr const char* REAL_EXPECTED = "A real was expected: %s\n";
constexpr const char* INTEGER_EXPECTED = "An integer was expected: %s\n";
constexpr const char* BOOLEAN_EXPECTED = "On/off value was expected: %s\n";
constexpr const char* UNKNOWN_FORMAT = "Unknown format %s\n";
constexpr const char* NO_EVENT = "No event %s\n";
constexpr const char* UNDEFINED_TOP_EVENT = "Undefined top event.\n";
constexpr const char* NO_HANDLE = "No handle %s\n";
constexpr const char* UNSUITABLE_HANDLE = "Unsuitable handle %s\n";
constexpr const char* UNABLE_TO_OPEN_OUTPUT = "Unable to open file '%s'\n";

constexpr const char* UNABLE_TO_WRITE = "Unable to write file '%s'\n";

constexpr const char* OPTION = "option";
constexpr const char* NAME = "name";
constexpr const char* VALUE = "value";
constexpr const char* ON = "on";
constexpr const char* OFF = "off";
constexpr const char* APPEND_MODE = "append";
constexpr const char* FORMATS[] = {"open-psa", "excel", "talvik"};

// An option set to nothing is named as an empty text in messages.
const char* GetShown(const char* text) { return text == nullptr ? "" : text; }

}  // namespace

bool OrvaInterpreter::_DownloadOptionInChildren(const LumoXMLNode* command, const char* name,
                                                const char*& result) {
  result = nullptr;
  for (const LumoXMLNode* child = command->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    if (child->IsNodeOfName(OPTION) &&
        LumoRawString::IsEqual(child->GetAttributeValue(NAME), name)) {
      result = child->GetAttributeValue(VALUE);
      return true;
    }
  }
  return false;
}

bool OrvaInterpreter::_DownloadOptionInCommand(const LumoXMLNode* command, const char* name,
                                               const char*& result) {
  if (const LumoXMLAttribute* attribute = command->FindAttribute(name)) {
    result = attribute->GetValue();
    return true;
  }
  return _DownloadOptionInChildren(command, name, result);
}

bool OrvaInterpreter::_DownloadStringOption(int& /*error*/, const LumoXMLNode* command,
                                            const char* name, const char*& result) {
  if (_DownloadOptionInCommand(command, name, result)) return true;
  result = _optionCenter->GetStringOption(name);
  return false;
}

bool OrvaInterpreter::_DownloadRealOption(int& error, const LumoXMLNode* command, const char* name,
                                          double& result) {
  const char* text;
  if (!_DownloadOptionInCommand(command, name, text)) {
    result = _optionCenter->GetRealOption(name);
    return false;
  }
  if (LumoRawString::IsDouble(text)) {
    result = LumoRawString::ToDouble(text);
  } else {
    _Report(error, REAL_EXPECTED, GetShown(text), command);
  }
  return true;
}

bool OrvaInterpreter::_DownloadIntegerOption(int& error, const LumoXMLNode* command,
                                             const char* name, int& result) {
  const char* text;
  if (!_DownloadOptionInCommand(command, name, text)) {
    result = _optionCenter->GetIntegerOption(name);
    return false;
  }
  if (LumoRawString::IsInt(text)) {
    result = LumoRawString::ToInt(text);
  } else {
    _Report(error, INTEGER_EXPECTED, GetShown(text), command);
  }
  return true;
}

bool OrvaInterpreter::_DownloadBooleanOption(int& error, const LumoXMLNode* command,
                                             const char* name, bool& result) {
  const char* text;
  if (!_DownloadOptionInCommand(command, name, text)) {
    result = _optionCenter->GetBooleanOption(name);
    return false;
  }
  if (LumoRawString::IsEqual(text, ON)) {
    result = true;
  } else if (LumoRawString::IsEqual(text, OFF)) {
    result = false;
  } else {
    _Report(error, BOOLEAN_EXPECTED, GetShown(text), command);
  }
  return true;
}

void OrvaInterpreter::_DownloadOptionFormat(int& error, const LumoXMLNode* command,
                                            const char*& format) {
  _DownloadStringOption(error, command, OrvaOptionCenter::OUTPUT_FORMAT, format);
  for (const char* known : FORMATS) {
    if (LumoRawString::IsEqual(format, known)) return;
  }
  _Report(error, UNKNOWN_FORMAT, GetShown(format), command);
  format = nullptr;
}

// Without a name, the model's only root event.
void OrvaInterpreter::_DownloadOptionTopEvent(int& error, const LumoXMLNode* command,
                                              OrvaEvent*& event) {
  event = nullptr;
  if (error != 0) return;
  const char* name;
  _DownloadStringOption(error, command, OrvaOptionCenter::TOP_EVENT, name);
  if (name != nullptr) {
    event = _model->LookForEvent(name);
    if (event == nullptr) _Report(error, NO_EVENT, name, command);
    return;
  }
  LumoList roots;
  _model->CollectEvents(OrvaSymbol::CompareAsRootSymbol, nullptr, &roots);
  if (roots.GetNumberOfItems() != 1) return _Report(error, UNDEFINED_TOP_EVENT, nullptr);
  event = static_cast<OrvaEvent*>(roots.GetFirstItem());
}

void OrvaInterpreter::_DownloadOptionSourceHandle(int& error, const LumoXMLNode* command,
                                                  OrvaHandle*& handle) {
  handle = nullptr;
  OrvaEvent* event;
  _DownloadOptionTopEvent(error, command, event);
  if (event == nullptr) return;
  const char* name;
  _DownloadStringOption(error, command, OrvaOptionCenter::HANDLE, name);
  handle = event->GetHandle(GetShown(name));
  if (handle == nullptr) _Report(error, NO_HANDLE, GetShown(name), command);
}

void OrvaInterpreter::_DownloadOptionSourceHandle(int& error, const LumoXMLNode* command,
                                                  OrvaHandle::Type type, OrvaHandle*& handle) {
  _DownloadOptionSourceHandle(error, command, handle);
  if (handle == nullptr || handle->GetType() == type) return;
  _Report(error, UNSUITABLE_HANDLE, handle->GetName(), command);
  handle = nullptr;
}

void OrvaInterpreter::_DownloadOptionCutoff(int& error, const LumoXMLNode* command,
                                            std::unique_ptr<OrvaCutoff>& cutoff) {
  double minimumProbability = 0.0;
  double minimumContribution = 0.0;
  int maximumOrder = 0;
  _DownloadRealOption(error, command, OrvaOptionCenter::MINIMUM_PROBABILITY, minimumProbability);
  _DownloadRealOption(error, command, OrvaOptionCenter::MINIMUM_CONTRIBUTION, minimumContribution);
  _DownloadIntegerOption(error, command, OrvaOptionCenter::MAXIMUM_ORDER, maximumOrder);
  cutoff = std::make_unique<OrvaCutoff>();
  cutoff->SetMaximumOrder(maximumOrder);
  cutoff->SetMinimumProbability(minimumProbability);
  cutoff->SetMinimumContribution(minimumContribution);
}

void OrvaInterpreter::_OpenOutputStream(int& error, const LumoXMLNode* command,
                                        LumoStream*& stream) {
  stream = nullptr;
  const char* fileName;
  const char* mode;
  _DownloadStringOption(error, command, OrvaOptionCenter::OUTPUT_FILE, fileName);
  _DownloadStringOption(error, command, OrvaOptionCenter::OUTPUT_MODE, mode);
  const bool appends = LumoRawString::IsEqual(mode, APPEND_MODE);
  std::FILE* file = std::fopen(GetShown(fileName), appends ? "a" : "w");
  if (file == nullptr) return _Report(error, UNABLE_TO_OPEN_OUTPUT, GetShown(fileName), nullptr);
  stream = new LumoFileStream(false, file);
  _outputFileName = GetShown(fileName);
}

void OrvaInterpreter::_CloseOutputStream(int& error, LumoStream*& stream) {
  stream->Flush();
  if (std::ferror(stream->GetFile()) != 0) {
    _Report(error, UNABLE_TO_WRITE, _outputFileName.c_str(), nullptr);
  }
  stream->Close();
  delete stream;
  stream = nullptr;
}
