// Files cut at each byte, and with one byte replaced: no crash, no hang, a message for every error
// and only then, nothing leaked.
//
//   CutFiles [--seed N] [--stride N] [--replacements N] FOLDER...
//
// Every XML file of the folders is cut at every stride-th byte, and damaged by the given number of
// replacements of one byte by a random one. A model that is still read after a replacement is
// solved by the "study.xml" of its folder.

#include <random>
#include <vector>

#include "Robustness.h"
#include "driver/OrvaInterpreter.h"
#include "support/memory/LumoMemoryManager.h"

namespace fs = std::filesystem;
using namespace robustness;

namespace {

constexpr unsigned SECONDS_PER_TEXT = 20;
constexpr int MAXIMUM_OF_FINDINGS = 5;  // in a file
constexpr const char* STUDY = "study.xml";

struct Counts {
  long texts;
  long read;         // without error
  std::size_t last;  // damage tried
};
Counts* counts;

struct Options {
  std::uint32_t seed;
  std::size_t stride;
  std::size_t replacements;
};

std::size_t GetNumberOfCuts(const std::string& text, const Options& options) {
  return (text.size() + options.stride - 1) / options.stride;
}

// A byte that means something to the reader, or any other but a slash, so that no damaged script
// writes elsewhere.
char DrawByte(std::mt19937& random) {
  constexpr char BYTES[] = {'\0', '\xff', '"', '<', '&', '%', '\\'};
  const std::size_t i = random() % (sizeof BYTES + 1);
  if (i < sizeof BYTES) return BYTES[i];
  const char byte = static_cast<char>(random() % 256);
  return byte == '/' ? ' ' : byte;
}

// The text with damage number i: first the cuts, then the replacements.
std::string Damage(const std::string& text, const Options& options, std::size_t i) {
  if (i < GetNumberOfCuts(text, options)) return text.substr(0, i * options.stride);
  std::mt19937 random(options.seed + static_cast<std::uint32_t>(i));
  std::string damaged = text;
  damaged[random() % text.size()] = DrawByte(random);
  return damaged;
}

int EvaluateText(const std::string& text) {
  int error = 0;
  LumoMemoryManager::Start();
  {
    OrvaInterpreter interpreter;
    std::FILE* file = OpenText(text);
    interpreter.DownloadCommandScript(error, file);
    std::fclose(file);
  }
  LumoMemoryManager::Stop();
  return error;
}

// Ends the child when an evaluation has gone wrong. Returns whether it was without error.
bool Check(int error) {
  const std::string messages = TakeMessages();
  if ((error != 0) != !messages.empty()) {
    Find("error indicator " + std::to_string(error) + " but messages:\n" + messages);
  }
  if (messages.find(ACCOUNTING) != std::string::npos) Find(messages);
  if (fs::exists(LumoMemoryManager::DUMP_FILE)) Find(ReadFile(LumoMemoryManager::DUMP_FILE));
  if (error == 0) ++counts->read;
  return error == 0;
}

void RemoveTables() {
  for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
    if (entry.path().extension() == ".txt") fs::remove(entry.path());
  }
}

// Reads the text; a model that is read is solved by the study of its folder.
void Check(const std::string& name, const std::string& text) {
  alarm(SECONDS_PER_TEXT);
  ++counts->texts;
  if (!Check(EvaluateText(text)) || name == STUDY || !fs::exists(STUDY)) return;
  WriteFile(name, text);
  Check(Orva_EvalScriptFile(STUDY));
  RemoveTables();
}

// Returns the number of findings, whose damaged texts are kept.
int CheckFile(const std::string& name, const Options& options) {
  const std::string text = ReadFile(name);
  if (text.empty()) return 0;
  const std::size_t end = GetNumberOfCuts(text, options) + options.replacements;
  int findings = 0;
  for (counts->last = 0; counts->last < end && findings < MAXIMUM_OF_FINDINGS; ++counts->last) {
    const int status = RunInChild([&] {
      for (; counts->last < end; ++counts->last) Check(name, Damage(text, options, counts->last));
    });
    if (status == 0) break;
    const std::string kept = "found-" + std::to_string(counts->last) + "-" + name;
    WriteFile(kept, Damage(text, options, counts->last));
    std::printf("%s: %s\n%s\n", fs::absolute(kept).c_str(), ToText(status).c_str(),
                ReadMessages().substr(0, MAXIMUM_SHOWN).c_str());
    ++findings;
  }
  WriteFile(name, text);
  return findings;
}

// Named after the folder and the one around it.
fs::path GetCopy(const fs::path& folder) {
  return folder.parent_path().filename() / folder.filename();
}

int CheckFolder(const fs::path& folder, const Options& options) {
  const fs::path here = fs::current_path();
  fs::current_path(folder);
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
    if (entry.path().extension() == ".xml") names.push_back(entry.path().filename());
  }
  int findings = 0;
  for (const std::string& name : names) findings += CheckFile(name, options);
  fs::current_path(here);
  return findings;
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = {static_cast<std::uint32_t>(GetNumber(argc, argv, "--seed", 1)),
                           static_cast<std::size_t>(GetNumber(argc, argv, "--stride", 1)),
                           static_cast<std::size_t>(GetNumber(argc, argv, "--replacements", 1000))};
  std::vector<fs::path> folders;
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--", 2) == 0) {
      ++i;  // and its number
    } else {
      folders.push_back(fs::absolute(argv[i]));
    }
  }
  counts = NewSharedCounts<Counts>();
  EnterNewFolder("cut-files");
  // All are copied first, since scripts load models of their neighbours.
  for (const fs::path& folder : folders) {
    fs::create_directories(GetCopy(folder));
    fs::copy(folder, GetCopy(folder));
  }
  int findings = 0;
  for (const fs::path& folder : folders) findings += CheckFolder(GetCopy(folder), options);
  std::printf("%ld damaged texts, %ld read or solved without error\n", counts->texts, counts->read);
  return findings == 0 ? 0 : 1;
}
