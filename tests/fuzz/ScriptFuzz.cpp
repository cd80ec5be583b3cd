// Whole scripts: the script is what stands before the first NUL byte; what follows is the file that
// it finds under every name but those below. Nothing is read from the disk but the examples, at
// first, and nothing is written to it.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <string>

#include "OrvaFuzzSupport.h"
#include "check/OrvaScriptCheck.h"
#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "reader/OrvaParser.h"
#include "support/containers/LumoRange.h"
#include "support/text/LumoRawString.h"
#include "xml/LumoXMLDocument.h"
#include "xml/LumoXMLParser.h"

extern "C" std::FILE* __real_fopen(const char* name, const char* mode);
extern "C" std::FILE* __wrap_fopen(const char* name, const char* mode);

namespace {

// The files of a run.
constexpr const char* SCRIPT = "study.xml";     // the script itself
constexpr const char* MISSING = "missing.xml";  // can't be opened
constexpr const char* FOLDER = "folder";        // can't be read
constexpr const char* FULL_DISK = "full";       // can't be written
constexpr const char* EXAMPLES[] = {"cooling-system", "failure-intensity", "pressure-tank",
                                    "tested-components", "uncertainty"};

std::map<std::string, std::string> ReadExamples() {
  std::map<std::string, std::string> models;
  for (const std::string example : EXAMPLES) {
    std::ifstream file(ORVA_EXAMPLES "/" + example + "/model.xml");
    OrvaRequire(file.is_open(), "the examples have models");
    models["../" + example + "/model.xml"].assign(std::istreambuf_iterator<char>(file), {});
  }
  return models;
}

bool isRunning = false;
std::map<std::string, std::string> models;
std::string script;
std::string rest;

std::FILE* OpenFile(const std::string& name, const char* mode) {
  if (name.empty() || name == MISSING) return nullptr;
  if (name == FOLDER) return __real_fopen("/", mode);
  if (*mode != 'r') return __real_fopen(name == FULL_DISK ? "/dev/full" : "/dev/null", mode);
  const auto model = models.find(name);
  std::string& bytes = name == SCRIPT ? script : model == models.end() ? rest : model->second;
  return fmemopen(bytes.data(), bytes.size(), mode);
}

// What a run would have to do. Studies may ask for searches and samples without end and for curves
// of a million points, which would only make the runs few.
class Work {
 public:
  void Add(const std::string& bytes) {
    LumoXMLParser parser;
    parser.SetErrorStream(OrvaGetNowhere());
    LumoXMLDocument document;
    const OrvaBytesFile file(bytes);
    parser.ParseFile(&document, file.Get());
    for (const LumoXMLNode* node = &document; node != nullptr; node = _GetNext(node)) _Add(node);
  }
  bool IsLittle() const {
    const double length = _lastDate - _firstDate;  // of the longest curve
    const double limit = _hasTests || _smoothingRatio < 0.01 ? 0.0 : 10000.0;
    return _references <= 24 && _order <= HIGHEST_ORDER && _tries <= 1000.0 && length <= limit &&
           length <= 1000.0 * _step;
  }
  static constexpr int HIGHEST_ORDER = 6;

 private:
  static const LumoXMLNode* _GetNext(const LumoXMLNode* node) {
    if (node->HasChild()) return node->GetFirstChild();
    while (node != nullptr && node->GetNextSibling() == nullptr) node = node->GetParent();
    return node == nullptr ? nullptr : node->GetNextSibling();
  }
  void _Add(const LumoXMLNode* node) {
    for (const char* reference : {"event", "gate", "basic-event", "house-event"}) {
      if (node->IsNodeOfName(reference)) ++_references;
    }
    if (node->IsNodeOfName("periodic-test")) _hasTests = true;
    _AddOption(node->GetAttributeValue("name"), node->GetAttributeValue("value"));
    for (const LumoXMLAttribute* attribute = node->GetFirstAttribute(); attribute != nullptr;
         attribute = attribute->GetNext()) {
      _AddOption(attribute->GetName(), attribute->GetValue());
    }
  }
  void _AddOption(const char* name, const char* value) {
    const double x = LumoRawString::ToDouble(value);
    const auto is = [&](const char* option) { return LumoRawString::IsEqual(name, option); };
    if (is(OrvaOptionCenter::MAXIMUM_ORDER)) _order = std::max(_order, x);
    if (is(OrvaOptionCenter::NUMBER_OF_TRIES)) _tries = std::max(_tries, x);
    if (is(OrvaOptionCenter::FIRST_DATE)) _firstDate = std::min(_firstDate, x);
    if (is(OrvaOptionCenter::LAST_DATE)) _lastDate = std::max(_lastDate, x);
    if (is(OrvaOptionCenter::STEP) && x > 0.0) _step = std::min(_step, x);
    if (is(OrvaOptionCenter::SMOOTHING_RATIO)) _smoothingRatio = std::min(_smoothingRatio, x);
  }

  int _references = 0;
  double _order = 0.0;
  double _tries = 0.0;
  double _firstDate = 0.0;
  double _lastDate = 0.0;
  double _step = std::numeric_limits<double>::infinity();
  double _smoothingRatio = 1.0;
  bool _hasTests = false;
};

void SetLimits(OrvaInterpreter& interpreter) {
  OrvaOptionCenter* const options = interpreter.GetOptionCenter();
  options->SetIntegerOption(OrvaOptionCenter::MAXIMUM_ORDER, Work::HIGHEST_ORDER);
  options->SetIntegerOption(OrvaOptionCenter::NUMBER_OF_TRIES, 10);
}

int Run() {
  OrvaInterpreter interpreter;
  SetLimits(interpreter);
  char* messages = nullptr;
  std::size_t length = 0;
  std::FILE* const file = open_memstream(&messages, &length);
  LumoFileStream stream(false, file);
  interpreter.GetParser()->SetErrorStream(&stream);
  int error = 0;
  interpreter.DownloadCommandScript(error, SCRIPT);
  std::fclose(file);
  std::free(messages);
  OrvaRequire((error != 0) == (length > 0), "there is a message for an error, and only then");
  return error;
}

int Rehearse() {
  OrvaInterpreter interpreter;
  SetLimits(interpreter);
  interpreter.GetParser()->SetErrorStream(OrvaGetNowhere());
  int error = 0;
  OrvaScriptCheck(&interpreter).Check(error, SCRIPT);
  return error;
}

}  // namespace

// All calls of fopen are linked to this one. The modes of the engine have one letter; libFuzzer
// writes a finding with "wb", while the script is still running.
std::FILE* __wrap_fopen(const char* name, const char* mode) {
  return isRunning && mode[1] == '\0' ? OpenFile(name, mode) : __real_fopen(name, mode);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (models.empty()) models = ReadExamples();
  const std::string_view input = OrvaToText(data, size);
  script = input.substr(0, input.find('\0'));
  rest = input.substr(std::min(script.size() + 1, size));
  const OrvaBalanceCheck balance;
  Work work;
  work.Add(script);
  work.Add(rest);
  if (!work.IsLittle()) return 0;
  isRunning = true;
  const int error = Run();
  OrvaRequire(Rehearse() <= error, "what fails in a rehearsal fails in a run");
  isRunning = false;
  return 0;
}
