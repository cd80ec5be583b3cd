// Sequences of commands over small models: no crash, no leak, a message for every error and only
// then, and the same tables wherever results must agree.
//
//   CommandSequences FOLDER [--seed N] [--first N] [--count N]    random ones
//   CommandSequences FOLDER --every LENGTH                        all that are so long
//
// FOLDER holds the folder "models" and the tables "commands" and "options". Sequence number i of a
// seed or length is always the same one. What fails is shrunk and written as a script. Most is
// found in a build with the sanitizers.

#include <algorithm>
#include <map>
#include <random>
#include <sys/time.h>
#include <vector>

#include "Robustness.h"
#include "driver/OrvaInterpreter.h"
#include "driver/OrvaOptionCenter.h"
#include "support/containers/LumoRange.h"
#include "support/memory/LumoMemoryManager.h"

namespace fs = std::filesystem;
using namespace robustness;

namespace {

constexpr long SECONDS_PER_SEQUENCE = 60;
constexpr int MAXIMUM_OF_FINDINGS = 5;

// ---- What sequences are drawn from --------------------------------------------------------------

using Values = std::vector<std::string>;

struct OptionValues {
  std::string name;
  Values good;
  Values odd;
};

// A command: a family and an element in it, or for the few without children the family alone.
enum Role { LOAD, SET, CHANGE, READ };
struct CommandKind {
  std::string family;
  std::string element;
  Role role;
  int weight;
  std::string options;  // between blanks
};

std::vector<OptionValues> OPTIONS;
std::vector<CommandKind> KINDS;

template <class Read>
void ForEachRow(const fs::path& table, Read read) {
  std::istringstream lines(ReadFile(table));
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    if (!line.empty() && line[0] != '#') read(words);
  }
}

void ReadTables(const fs::path& folder) {
  ForEachRow(folder / "options", [](std::istream& words) {
    OptionValues option;
    words >> option.name;
    Values* values = &option.good;
    for (std::string word; words >> word;) {
      if (word == "|") {
        values = &option.odd;
      } else {
        values->push_back(word == "\"\"" ? "" : word);
      }
    }
    OPTIONS.push_back(option);
  });
  ForEachRow(folder / "commands", [](std::istream& words) {
    CommandKind kind;
    words >> kind.family >> kind.element >> kind.weight;
    std::getline(words, kind.options);
    kind.options += " ";
    if (kind.element == "-") kind.element = "";
    const std::string& family = kind.family;
    kind.role = family == "load"                                                ? LOAD
                : family == "set"                                               ? SET
                : family == "check" || family == "compute" || family == "print" ? READ
                                                                                : CHANGE;
    KINDS.push_back(kind);
  });
}

// Whether the table has the options of the engine, those that the center doesn't know too, and no
// other.
bool HasAllOptions() {
  OrvaInterpreter interpreter;
  std::vector<std::string> found, known = {"algorithm", "approximation", "maximum-nodes"};
  for (const OptionValues& option : OPTIONS) found.push_back(option.name);
  LumoCursor* cursor = interpreter.GetOptionCenter()->NewCursorOnOptions();
  for (const LumoAttribute* option : LumoRange<LumoAttribute>(cursor)) {
    known.push_back(option->GetName());
  }
  std::sort(found.begin(), found.end());
  std::sort(known.begin(), known.end());
  return found == known;
}

const Values MODELS = {"models/modules.xml", "models/modules.xml", "models/shared.xml",
                       "models/groups.xml",  "models/groups.xml",  "models/changes.xml",
                       "models/house.xml",   "models/rings.xml"};
const Values SCRIPTS = {"models/script.xml", "models/itself.xml"};

// ---- Sequences ----------------------------------------------------------------------------------

struct Option {
  std::string name;
  const char* value;  // null for none
  bool isChild;       // an "option" element instead of an attribute
};

struct Command {
  const CommandKind* kind;
  std::vector<Option> options;
  std::string output;  // a file of its own, or empty
};

using Sequence = std::vector<Command>;

bool Is(const Command& command, const std::string& family, const std::string& element) {
  return command.kind->family == family && command.kind->element == element;
}
bool Has(const std::string& options, const std::string& name) {
  return options.find(" " + name + " ") != std::string::npos;
}
bool IsRead(const Command& command) { return command.kind->role == READ; }
bool IsBuild(const Command& command) { return Is(command, "build", "minimal-cutsets"); }
bool IsSensitivity(const Command& command) { return Is(command, "compute", "sensitivity"); }

std::string GetXml(const Command& command) {
  const std::string& family = command.kind->family;
  const std::string& element = command.kind->element.empty() ? family : command.kind->element;
  std::string text = "<" + element;
  std::string children;
  for (const Option& option : command.options) {
    std::string value;
    if (option.value != nullptr) {
      value =
          (option.isChild ? " value=\"" : option.name + "=\"") + (option.value + std::string("\""));
    }
    if (option.isChild) {
      children += "<option name=\"" + option.name + "\"" + value + "/>";
    } else if (option.value != nullptr) {
      text += " " + value;
    }
  }
  if (!command.output.empty()) text += " output=\"" + command.output + "\"";
  if (element == "default-probability-distribution") children = "<float value=\"0.125\"/>";
  text += ">" + children + "</" + element + ">";
  if (command.kind->element.empty()) return text;
  return "<" + family + ">" + text + "</" + family + ">";
}

std::string GetScript(const Sequence& sequence) {
  std::string text = "<?xml version=\"1.0\"?>\n<orva>\n";
  for (const Command& command : sequence) text += "  " + GetXml(command) + "\n";
  return text + "</orva>\n";
}

// The name in an option as the command finds it; empty when it has been set to nothing.
std::string Resolve(const Sequence& sequence, std::size_t i, const std::string& name) {
  const auto show = [](const char* value) { return std::string(value == nullptr ? "" : value); };
  for (const Option& option : sequence[i].options) {
    if (option.name == name) return show(option.value);
  }
  while (i-- > 0) {
    const std::vector<Option>& options = sequence[i].options;
    if (!Is(sequence[i], "set", "option") || options[0].value != name) continue;
    return options.size() > 1 ? show(options[1].value) : "";
  }
  return name == "handle" ? "MCS" : name == "system-handle" ? "system" : "none";
}

const CommandKind* FindKind(const char* family, const char* element) {
  for (const CommandKind& kind : KINDS) {
    if (Is({&kind, {}, ""}, family, element)) return &kind;
  }
  return nullptr;
}

Command SetOption(const char* name, const char* value) {
  return {FindKind("set", "option"), {{"name", name, false}, {"value", value, false}}, ""};
}

Command LoadModel(const char* input) {
  return {FindKind("load", "model"), {{"input", input, false}}, ""};
}

Sequence AllowRedefinitions() {
  return {SetOption("check-event-redefinition", "off"),
          SetOption("check-parameter-redefinition", "off"),
          SetOption("check-CCF-group-redefinition", "off")};
}

// Draws a sequence at random.
class Drawer {
 public:
  Drawer(long seed, long number) : _random(static_cast<std::uint32_t>(seed * 1000003 + number)) {}

  // A model and usually a top event, then up to four commands, at times up to eight.
  Sequence DrawSequence() {
    Sequence sequence;
    if (!_IsOneIn(20)) sequence.push_back(_Draw("load", "model"));
    while (_IsOneIn(6)) {
      const Sequence allowing = AllowRedefinitions();
      sequence.insert(sequence.end(), allowing.begin(), allowing.end() - (_IsOneIn(3) ? 1 : 0));
      sequence.push_back(_Draw("load", "model"));
    }
    if (!_IsOneIn(8)) sequence.push_back(SetOption("top-event", _IsOneIn(3) ? "T2" : "T1"));
    if (!_IsOneIn(3)) sequence.push_back(_Draw("build", "minimal-cutsets"));
    const int length = 1 + _Below(_IsOneIn(3) ? 8 : 4);
    for (int i = 0; i < length; ++i) sequence.push_back(_Draw(_DrawKind()));
    for (std::size_t i = 0; i < sequence.size(); ++i) {
      const bool writes = Has(sequence[i].kind->options, "mode");
      if (writes && !_IsOneIn(6)) sequence[i].output = std::to_string(i) + ".txt";
    }
    return sequence;
  }

 private:
  int _Below(int n) { return static_cast<int>(_random() % static_cast<std::uint32_t>(n)); }
  bool _IsOneIn(int n) { return _Below(n) == 0; }
  template <class Item>
  const Item& _DrawFrom(const std::vector<Item>& items) {
    return items[_random() % items.size()];
  }

  const CommandKind& _DrawKind() {
    int sum = 0;
    for (const CommandKind& kind : KINDS) sum += kind.weight;
    int left = _Below(sum);
    std::size_t i = 0;
    while (left >= KINDS[i].weight) left -= KINDS[i++].weight;
    return KINDS[i];
  }

  const char* _DrawValue(const OptionValues& option, int oneInOdd) {
    return _DrawFrom(_IsOneIn(oneInOdd) ? option.odd : option.good).c_str();
  }

  Command _Draw(const char* family, const char* element) {
    return _Draw(*FindKind(family, element));
  }

  Command _Draw(const CommandKind& kind) {
    Command command{&kind, {}, ""};
    if (kind.role == LOAD) {
      const bool isModel = kind.element == "model";
      const char* input = _DrawFrom(isModel ? MODELS : SCRIPTS).c_str();
      if (!_IsOneIn(20)) command.options.push_back({"input", input, false});
    } else if (Is(command, "set", "option") || Is(command, "print", "option")) {
      const OptionValues& option = _DrawFrom(OPTIONS);
      const char* name = _IsOneIn(50) ? "no-option" : option.name.c_str();
      command.options.push_back({"name", name, false});
      const bool hasValue = kind.role == SET && !_IsOneIn(4);
      if (hasValue) command.options.push_back({"value", _DrawValue(option, 5), false});
    } else {
      _DrawOptions(command);
    }
    if (kind.family == "build") _builds.push_back(command);
    return command;
  }

  // Commands that read a handle mostly read one that a build before them has made.
  void _DrawOptions(Command& command) {
    const std::string& names = command.kind->options;
    const bool readsHandle =
        (IsRead(command) || Has(names, "format")) && Has(names, "top-event") && !_IsOneIn(8);
    for (const OptionValues& option : OPTIONS) {
      const bool isCopied = readsHandle && (option.name == "top-event" || option.name == "handle");
      if (!Has(names, option.name) || isCopied || !_IsOneIn(4)) continue;
      const bool isChild = _IsOneIn(5);
      const char* value = isChild && _IsOneIn(20) ? nullptr : _DrawValue(option, 30);
      command.options.push_back({option.name, value, isChild});
    }
    if (!readsHandle || _builds.empty()) return;
    const Command& build = _DrawFrom(_builds);
    const bool readsSystem = Has(names, "format");
    const char* system = "system";
    for (const Option& option : build.options) {
      if (option.name == "system-handle") system = option.value;
      const bool isHandle = option.name == "handle" && !readsSystem && Has(names, "handle");
      if (option.name == "top-event" || isHandle) command.options.push_back(option);
    }
    if (readsSystem) command.options.push_back({"handle", system, system == nullptr});
  }

  std::vector<Command> _builds;
  std::mt19937 _random;
};

// ---- Running ------------------------------------------------------------------------------------

struct Counts {
  long sequences;
  long commands;
  long successes;
  long readsLeftOut;
  long buildsLeftOut;
  std::size_t last;  // commands of the last sequence that have gone well
};
Counts* counts;

struct Run {
  std::size_t successes = 0;  // commands before the first error
  std::map<std::string, std::string> files;
};

// A table without the row that tells the running time.
std::string WithoutSeconds(const std::string& table) {
  std::string kept;
  std::istringstream lines(table);
  for (std::string line; std::getline(lines, line);) {
    if (line.compare(0, 7, "seconds") != 0) kept.append(line).append("\n");
  }
  return kept;
}

std::map<std::string, std::string> TakeOutputFiles() {
  std::map<std::string, std::string> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
    const std::string name = entry.path().filename().string();
    if (!entry.is_regular_file()) continue;
    files[name] = WithoutSeconds(ReadFile(name));
    fs::remove(entry.path());
  }
  return files;
}

// Evaluates a command as a script with the one command.
int Evaluate(OrvaInterpreter& interpreter, const Command& command) {
  const std::string text = GetScript({command});
  std::FILE* file = OpenText(text);
  int error = 0;
  interpreter.DownloadCommandScript(error, file);
  std::fclose(file);
  return error;
}

Run Execute(const Sequence& sequence) {
  Run run;
  LumoMemoryManager::Start();
  {
    OrvaInterpreter interpreter;
    for (const Command& command : sequence) {
      const int error = Evaluate(interpreter, command);
      const std::string messages = TakeMessages();
      ++counts->commands;
      if (error != 0 && error != 1) Find("error indicator " + std::to_string(error));
      if ((error != 0) != !messages.empty()) {
        Find("error indicator " + std::to_string(error) + " but messages:\n" + messages);
      }
      if (messages.find(ACCOUNTING) != std::string::npos) Find(messages);
      if (error != 0) break;
      ++run.successes;
      ++counts->successes;
    }
  }
  LumoMemoryManager::Stop();
  const std::string messages = TakeMessages();
  if (!messages.empty()) Find("behind the last command:\n" + messages);
  run.files = TakeOutputFiles();
  if (run.files.count(LumoMemoryManager::DUMP_FILE) != 0) {
    Find("written by the accounting:\n" + run.files[LumoMemoryManager::DUMP_FILE]);
  }
  return run;
}

// ---- Where results must agree -------------------------------------------------------------------

// 1. The tables of a sequence are the same in every fresh interpreter, byte by byte: nothing in a
//    table may depend on addresses, on earlier interpreters or on memory that was never written.
void CheckRepetition(const Sequence& sequence, const Run& run) {
  const Run again = Execute(sequence);
  for (const auto& [name, table] : run.files) {
    if (again.files.count(name) != 0 && again.files.at(name) == table) continue;
    Find(name + " differs when the sequence runs again:\n" + table);
  }
}

void CheckReduced(const Run& run, const Sequence& reduced, const char* leftOut) {
  const std::string& name = reduced.back().output;
  Run other = Execute(reduced);
  const std::string& table = run.files.at(name);
  if (other.successes == reduced.size() && other.files[name] == table) return;
  Find(name + " differs without " + leftOut + ":\n" + table + "---\n" + other.files[name] +
       "--- from\n" + GetScript(reduced));
}

// Whether a model was loaded behind a build. Handles keep the parameters and events of their time,
// and deviates have no value before they are first reset: what is new has the values, or none, that
// the last computation has given it.
bool IsLoadedOn(const Sequence& sequence, std::size_t end) {
  bool isChanged = false;
  for (std::size_t i = 0; i < end; ++i) {
    if (sequence[i].kind->role == LOAD && isChanged) return true;
    isChanged = isChanged || sequence[i].kind->role == CHANGE || Is(sequence[i], "load", "script");
  }
  return false;
}

// 2. What only reads leaves no trace: without the checks, prints and computations before it, a
//    command writes the same table. Two things go on from one computation to the next and are left
//    out: the random numbers, so that an earlier "sensitivity" stays in front of a later one, and
//    the last sample drawn, which stays until the next reset of deviates and is seen by what takes
//    the model as it stands. "test" is no read: it takes the model as it stands too, and "print
//    system" shows what it has loaded.
void CheckWithoutReads(const Sequence& sequence, std::size_t last, const Run& run) {
  const bool seesSample = Is(sequence[last], "compute", "values-of-parameters") ||
                          Is(sequence[last], "compute", "probabilities-of-basic-events") ||
                          Is(sequence[last], "print", "system");
  const bool reads = seesSample || Has(sequence[last].kind->options, "top-event");
  if (reads && IsLoadedOn(sequence, last)) return;
  Sequence reduced;
  for (std::size_t i = 0; i < last; ++i) {
    if (seesSample && IsSensitivity(sequence[i])) return;
    const bool isNeeded = IsSensitivity(sequence[i]) && IsSensitivity(sequence[last]);
    if (!IsRead(sequence[i]) || isNeeded) reduced.push_back(sequence[i]);
  }
  if (reduced.size() == last) return;
  ++counts->readsLeftOut;
  reduced.push_back(sequence[last]);
  CheckReduced(run, reduced, "the commands that only read");
}

// The build alone that made the cutsets which a command reads, if no other build or normalisation
// can have had a part in them; else `last`. So without limits: they cut modules first, and other
// builds may see other modules. And with a handle and a system that no other build uses, also not
// for another top event, since modules keep what every build adds; nor with a model loaded later.
std::size_t FindOnlyBuild(const Sequence& sequence, std::size_t last) {
  const auto resolve = [&](std::size_t i, const char* name) { return Resolve(sequence, i, name); };
  const std::string topEvent = resolve(last, "top-event");
  std::size_t build = last;
  for (std::size_t i = 0; i < last; ++i) {
    if (!IsBuild(sequence[i]) || resolve(i, "handle") != resolve(last, "handle")) continue;
    if (build != last || topEvent.empty() || resolve(i, "top-event") != topEvent) return last;
    build = i;
  }
  if (build == last || IsLoadedOn(sequence, last)) return last;
  for (const char* limit : {"maximum-order", "minimum-probability"}) {
    if (resolve(build, limit) != "none") return last;
  }
  for (std::size_t i = 0; i < last; ++i) {
    const bool builds = sequence[i].kind->family == "build";
    if (Is(sequence[i], "load", "script")) return last;
    if (builds && i != build && resolve(i, "system-handle") == resolve(build, "system-handle")) {
      return last;
    }
  }
  return build;
}

// 3. Handles are independent: a table of cutsets is the same without the other builds and
//    normalisations, in so far as FindOnlyBuild says that they have nothing in common. Left out is
//    "numbers-of-occurrences", which lists the events of all searches.
void CheckWithoutOtherBuilds(const Sequence& sequence, std::size_t last, const Run& run) {
  if (!Has(sequence[last].kind->options, "handle")) return;
  if (Is(sequence[last], "print", "numbers-of-occurrences")) return;
  const std::size_t build = FindOnlyBuild(sequence, last);
  if (build == last) return;
  Sequence reduced;
  for (std::size_t i = 0; i < last; ++i) {
    if (IsSensitivity(sequence[i]) && IsSensitivity(sequence[last])) return;
    const Role role = sequence[i].kind->role;
    if (role == LOAD || role == SET || i == build) reduced.push_back(sequence[i]);
  }
  if (reduced.size() == last) return;
  ++counts->buildsLeftOut;
  reduced.push_back(sequence[last]);
  CheckReduced(run, reduced, "the other builds");
}

void Check(const Sequence& sequence) {
  const itimerval limit = {{0, 0}, {SECONDS_PER_SEQUENCE, 0}};  // of its own, not of the clock
  setitimer(ITIMER_PROF, &limit, nullptr);
  const Run run = Execute(sequence);
  counts->last = run.successes;
  CheckRepetition(sequence, run);
  for (std::size_t i = 0; i < run.successes; ++i) {
    if (run.files.count(sequence[i].output) == 0) continue;
    CheckWithoutReads(sequence, i, run);
    CheckWithoutOtherBuilds(sequence, i, run);
  }
}

// ---- What fails ---------------------------------------------------------------------------------

int CheckAlone(const Sequence& sequence) {
  const int status = RunInChild([&] { Check(sequence); });
  TakeOutputFiles();
  return status;
}

// Leaves out commands as long as it still ends in the same way.
Sequence Shrink(Sequence sequence, int status) {
  for (std::size_t i = sequence.size(); i-- > 0;) {
    Sequence shorter = sequence;
    shorter.erase(shorter.begin() + static_cast<std::ptrdiff_t>(i));
    if (CheckAlone(shorter) == status) {
      sequence = shorter;
      i = sequence.size();
    }
  }
  return sequence;
}

int findings = 0;

// Tries a sequence. Returns whether all its commands have gone well.
bool Try(const Sequence& sequence) {
  ++counts->sequences;
  const int status = CheckAlone(sequence);
  if (status == 0) return counts->last == sequence.size();
  const Sequence shrunk = Shrink(sequence, status);
  CheckAlone(shrunk);
  const std::string messages = ReadMessages().substr(0, MAXIMUM_SHOWN);
  fs::create_directories("found");
  const std::string script = "found/" + std::to_string(++findings) + ".xml";
  WriteFile(script, GetScript(shrunk));
  std::printf("%s\n%s%s", ToText(status).c_str(), GetScript(shrunk).c_str(), messages.c_str());
  std::printf("to repeat: cd %s && orva %s\n\n", fs::current_path().c_str(), script.c_str());
  return false;
}

// Tries what begins with a sequence and goes on with up to so many of the commands, as long as all
// goes well.
void TryEvery(const Sequence& sequence, const Sequence& commands, long length) {
  if (findings >= MAXIMUM_OF_FINDINGS || !Try(sequence) || length == 0) return;
  for (const Command& command : commands) {
    Sequence longer = sequence;
    longer.push_back(command);
    if (Has(command.kind->options, "mode")) longer.back().output = std::to_string(length) + ".txt";
    TryEvery(longer, commands, length - 1);
  }
}

// The commands that are drawn often, behind each of some models.
void TryEvery(long length) {
  Sequence settings = AllowRedefinitions();
  for (const auto& [name, value] : {std::pair("top-event", "T1"),
                                    {"last-date", "100"},
                                    {"step", "50"},
                                    {"number-of-tries", "20"}}) {
    settings.push_back(SetOption(name, value));
  }
  Sequence commands = {LoadModel("models/changes.xml"), LoadModel("models/groups.xml"),
                       SetOption("handle", "A"), SetOption("top-event", "T2")};
  for (const CommandKind& kind : KINDS) {
    const bool isListed = &kind == FindKind(kind.family.c_str(), kind.element.c_str());
    if (!isListed || kind.role == LOAD || kind.role == SET || kind.weight <= 3) continue;
    commands.push_back({&kind, {}, ""});
    if (Has(kind.options, "format")) commands.back().options.push_back({"handle", "system", false});
  }
  for (const char* model : {"models/modules.xml", "models/shared.xml", "models/house.xml"}) {
    Sequence sequence = settings;
    sequence.push_back(LoadModel(model));
    TryEvery(sequence, commands, length);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::puts("usage: CommandSequences FOLDER [--seed N] [--first N] [--count N] [--every LENGTH]");
    return 2;
  }
  const fs::path models = fs::absolute(argv[1]) / "models";
  ReadTables(argv[1]);
  if (!HasAllOptions()) {
    std::puts("the table has not just the options of the engine");
    return 1;
  }
  const long seed = GetNumber(argc, argv, "--seed", 1);
  const long first = GetNumber(argc, argv, "--first", 0);
  const long count = GetNumber(argc, argv, "--count", 2000);
  const long length = GetNumber(argc, argv, "--every", 0);
  counts = NewSharedCounts<Counts>();
  EnterNewFolder("sequences-" + std::to_string(length) + "-" + std::to_string(seed) + "-" +
                 std::to_string(first));
  fs::copy(models, "models");
  if (length > 0) TryEvery(length);
  for (long i = first; length == 0 && i < first + count && findings < MAXIMUM_OF_FINDINGS; ++i) {
    Try(Drawer(seed, i).DrawSequence());
  }
  std::printf(
      "%ld sequences; %ld commands run, %ld without error; %ld tables compared without the "
      "reads before them, %ld without other builds\n",
      counts->sequences, counts->commands, counts->successes, counts->readsLeftOut,
      counts->buildsLeftOut);
  return findings == 0 ? 0 : 1;
}
