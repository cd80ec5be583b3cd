// How commands read their options and open their output.
//
// An option is looked for in three places, and the first that has it counts: an attribute of the
// command's element, an "option" child of it, the option center. The first two are what the command
// itself says, and some commands only heed these, or behave differently when they are given; the
// center holds what all commands of the script share. An attribute counts even when it is empty,
// and so does an "option" child without a value: it is a text that is null, which no kind of value
// but a text accepts. A command reads its other options after a fault, so that one run shows all
// that is wrong with them.

#include <cassert>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "driver/OrvaCommandOptions.h"
#include "driver/OrvaInterpreter.h"
#include "driver/OrvaInterpreterCommands.h"
#include "model/OrvaModel.h"
#include "search/OrvaCutoff.h"
#include "support/text/LumoFileStream.h"

using Center = OrvaOptionCenter;

namespace {

constexpr const char* REAL_EXPECTED = "A real was expected: %s\n";
constexpr const char* INTEGER_EXPECTED = "An integer was expected: %s\n";
constexpr const char* BOOLEAN_EXPECTED = "On/off value was expected: %s\n";
constexpr const char* NUMBER_TOO_LARGE = "The number is too large: %s\n";
constexpr const char* NO_EVENT = "No event %s\n";
constexpr const char* UNDEFINED_TOP_EVENT = "Undefined top event.\n";
constexpr const char* NO_HANDLE = "No handle %s\n";
constexpr const char* UNSUITABLE_HANDLE = "Unsuitable handle %s\n";
constexpr const char* UNABLE_TO_OPEN_OUTPUT = "Unable to open file '%s'\n";
constexpr const char* OTHER_COLUMNS = "File '%s' has other columns\n";
constexpr const char* UNABLE_TO_WRITE = "Unable to write file '%s'\n";

constexpr OrvaWord<bool> BOOLEANS[] = {{Center::VALUE_ON, true}, {Center::VALUE_OFF, false}};
constexpr OrvaWord<OrvaPrinter::Layout> LAYOUTS[] = {{"rows", OrvaPrinter::IN_ROWS},
                                                     {"columns", OrvaPrinter::IN_COLUMNS}};
constexpr const char* UNKNOWN_LAYOUT = "Unknown layout %s\n";
// Any other mode truncates the file.
constexpr const char* APPEND_MODE = "append";

}  // namespace

bool OrvaInterpreter::_DownloadOptionInCommand(const LumoXMLNode* command, const char* name,
                                               const char*& result) {
  assert(OrvaCommandOptions::MayRead(command, name));  // the table of commands is complete
  return OrvaCommandOptions::FindText(command, name, result);
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
    _Report(error, REAL_EXPECTED, OrvaTextOrEmpty(text), command);
  }
  return true;
}

bool OrvaInterpreter::_DownloadIntegerOption(int& error, const LumoXMLNode* command,
                                             const char* name, int& result) {
  if (_DownloadIntegerInCommand(error, command, name, result)) return true;
  result = _optionCenter->GetIntegerOption(name);
  return false;
}

bool OrvaInterpreter::_DownloadIntegerInCommand(int& error, const LumoXMLNode* command,
                                                const char* name, int& result) {
  const char* text;
  if (!_DownloadOptionInCommand(command, name, text)) return false;
  if (LumoRawString::IsInt(text)) {
    result = LumoRawString::ToInt(text);
  } else {
    _Report(error, INTEGER_EXPECTED, OrvaTextOrEmpty(text), command);
  }
  return true;
}

bool OrvaInterpreter::_DownloadBooleanOption(int& error, const LumoXMLNode* command,
                                             const char* name, bool& result) {
  if (_DownloadBooleanInCommand(error, command, name, result)) return true;
  result = _optionCenter->GetBooleanOption(name);
  return false;
}

bool OrvaInterpreter::_DownloadBooleanInCommand(int& error, const LumoXMLNode* command,
                                                const char* name, bool& result) {
  const char* text;
  if (!_DownloadOptionInCommand(command, name, text)) return false;
  if (const OrvaWord<bool>* row = OrvaFindWord(BOOLEANS, text)) {
    result = row->value;
  } else {
    _Report(error, BOOLEAN_EXPECTED, OrvaTextOrEmpty(text), command);
  }
  return true;
}

void OrvaInterpreter::_DownloadSwitches(int& error, const LumoXMLNode* command,
                                        std::span<const Switch> switches) {
  for (const Switch& row : switches) {
    _DownloadBooleanOption(error, command, row.option, _printer.get()->*row.isOn);
  }
}

bool OrvaInterpreter::_DownloadNumberOfStatistics(int& error, const LumoXMLNode* command,
                                                  const char* name, int& number) {
  _DownloadIntegerOption(error, command, name, number);
  if (number <= MAXIMUM_NUMBER_OF_STATISTICS) return true;
  _Report(error, NUMBER_TOO_LARGE, name, command);
  number = 0;
  return false;
}

// Without a name, the model's only root event.
void OrvaInterpreter::_DownloadOptionTopEvent(int& error, const LumoXMLNode* command,
                                              OrvaEvent*& event) {
  event = nullptr;
  if (error != 0) return;
  const char* name;
  _DownloadStringOption(error, command, Center::TOP_EVENT, name);
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
  _DownloadStringOption(error, command, Center::HANDLE, name);
  handle = event->GetHandle(OrvaTextOrEmpty(name));
  if (handle == nullptr) _Report(error, NO_HANDLE, OrvaTextOrEmpty(name), command);
}

void OrvaInterpreter::_DownloadOptionSourceHandle(int& error, const LumoXMLNode* command,
                                                  OrvaHandle::Type type, OrvaHandle*& handle) {
  _DownloadOptionSourceHandle(error, command, handle);
  assert((handle == nullptr) == (error != 0));
  if (handle == nullptr || handle->GetType() == type) return;
  _Report(error, UNSUITABLE_HANDLE, handle->GetName(), command);
  handle = nullptr;
}

void OrvaInterpreter::_DownloadOptionCutoff(int& error, const LumoXMLNode* command,
                                            std::unique_ptr<OrvaCutoff>& cutoff) {
  double minimumProbability = 0.0;
  double minimumContribution = 0.0;
  int maximumOrder = 0;
  _DownloadRealOption(error, command, Center::MINIMUM_PROBABILITY, minimumProbability);
  _DownloadRealOption(error, command, Center::MINIMUM_CONTRIBUTION, minimumContribution);
  _DownloadIntegerOption(error, command, Center::MAXIMUM_ORDER, maximumOrder);
  cutoff = std::make_unique<OrvaCutoff>();
  cutoff->SetMaximumOrder(maximumOrder);
  cutoff->SetMinimumProbability(minimumProbability);
  cutoff->SetMinimumContribution(minimumContribution);
}

void OrvaInterpreter::_OpenOutputStream(int& error, const LumoXMLNode* command,
                                        LumoStream*& stream) {
  assert(error == 0);
  stream = nullptr;
  const char* fileName;
  const char* mode;
  _DownloadStringOption(error, command, Center::OUTPUT_FILE, fileName);
  _DownloadStringOption(error, command, Center::OUTPUT_MODE, mode);
  _DownloadOptionLayout(error, command);
  if (error != 0) return;
  _appendsOutput = LumoRawString::IsEqual(mode, APPEND_MODE);
  _outputFileName = OrvaTextOrEmpty(fileName);
  _tableError = 0;
  stream = _OpenFile(error, _outputFileName.c_str());
}

void OrvaInterpreter::_CloseOutputStream(int& error, LumoStream*& stream) {
  assert(stream != nullptr && stream->GetFile() != nullptr);
  _CloseFile(error, _outputFileName.c_str(), stream);
  stream = nullptr;
  _printer->layout = OrvaPrinter::IN_ROWS;
  if (_tableError != 0) error = 1;
}

// What the command itself says: the layout is not an option of the center.
void OrvaInterpreter::_DownloadOptionLayout(int& error, const LumoXMLNode* command) {
  _printer->layout =
      _DownloadWordInCommand(error, command, OrvaCommandOptions::LAYOUT, LAYOUTS, UNKNOWN_LAYOUT);
}

// A table in columns that is added to a file looks at its heading.
LumoStream* OrvaInterpreter::_OpenFile(int& error, const char* fileName) {
  const char* append = _printer->layout == OrvaPrinter::IN_COLUMNS ? "a+" : "a";
  std::FILE* file = std::fopen(fileName, _appendsOutput ? append : "w");
  if (file != nullptr) return new LumoFileStream(false, file);
  _Report(error, UNABLE_TO_OPEN_OUTPUT, fileName, nullptr);
  return nullptr;
}

void OrvaInterpreter::_CloseFile(int& error, const char* fileName, LumoStream* stream) {
  stream->Flush();
  if (stream->GetFile() != nullptr && std::ferror(stream->GetFile()) != 0) {
    _Report(error, UNABLE_TO_WRITE, fileName, nullptr);
  }
  stream->Close();
  delete stream;
}

LumoStream* OrvaInterpreter::OpenTable(const char* name) {
  const std::filesystem::path output(_outputFileName);
  std::filesystem::path file = output;
  file.replace_filename(output.stem().string() + "-" + name + output.extension().string());
  _tableFileName = file.string();
  LumoStream* stream = _OpenFile(_tableError, _tableFileName.c_str());
  return stream != nullptr ? stream : new LumoFileStream(false, nullptr);
}

void OrvaInterpreter::CloseTable(LumoStream* stream) {
  _CloseFile(_tableError, _tableFileName.c_str(), stream);
}

void OrvaInterpreter::RefuseTable(bool isFurther) {
  const std::string& fileName = isFurther ? _tableFileName : _outputFileName;
  _Report(_tableError, OTHER_COLUMNS, fileName.c_str(), nullptr);
}
