// Makes the n-th allocation of a small study fail, for one n after another: the study then ends as
// if nothing had happened, or with a message and status 1, and never harms a table that was
// complete before. Each failure is tried twice: alone, and with all allocations after it failing
// too.
//
//   AllocationFailures FOLDER [--first N] [--stride N]
//
// FOLDER holds the folders "models" and "study". Every stride-th n is tried. Not for builds with
// sanitizers or for valgrind, which have an allocator of their own.

#include <algorithm>
#include <cerrno>
#include <map>
#include <vector>

#include "Robustness.h"
#include "driver/OrvaInterpreter.h"
#include "support/memory/LumoMemoryManager.h"

namespace fs = std::filesystem;
using namespace robustness;

namespace {

constexpr unsigned SECONDS_PER_STUDY = 20;
constexpr const char* EXHAUSTED = "Memory exhausted\n";

struct Failure {
  bool isOn = false;
  long number = 0;       // of the allocation that fails first; 0 for none
  bool goesOn = false;   // whether the allocations after it fail too
  long allocations = 0;  // so far
};
Failure failure;

bool FailsNow() {
  if (!failure.isOn) return false;
  ++failure.allocations;
  const bool fails =
      failure.number != 0 && (failure.goesOn ? failure.allocations >= failure.number
                                             : failure.allocations == failure.number);
  if (fails) errno = ENOMEM;
  return fails;
}

}  // namespace

// The C library's allocation functions give way to these, and do the work under their other names.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* cell, std::size_t size);

void* malloc(std::size_t size) { return FailsNow() ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
  return FailsNow() ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* cell, std::size_t size) {
  return FailsNow() ? nullptr : __libc_realloc(cell, size);
}
}

namespace {

using Tables = std::map<std::string, std::string>;  // by file name, which is the order of writing

// A table up to the row of the running time.
Tables TakeTables() {
  Tables tables;
  for (const fs::directory_entry& entry : fs::directory_iterator(".")) {
    if (entry.path().extension() != ".txt") continue;
    const std::string text = ReadFile(entry.path());
    if (entry.path().stem() != "lumo-dump") {
      tables[entry.path().filename()] = text.substr(0, text.find("seconds"));
    }
    fs::remove(entry.path());
  }
  return tables;
}

int RunStudy(const std::vector<std::string>& scripts, long number, bool goesOn, long* allocations) {
  return RunInChild([&] {
    alarm(SECONDS_PER_STUDY);
    failure = {true, number, goesOn, 0};
    int error = 0;
    for (const std::string& script : scripts) {
      if (error == 0) error = Orva_EvalScriptFile(script.c_str());
    }
    *allocations = failure.allocations;
    std::exit(error);
  });
}

// The tables in their order: complete ones, then perhaps one that was being written.
std::string CompareTables(const Tables& tables, const Tables& expected) {
  std::size_t i = 0;
  for (const auto& [name, text] : expected) {
    if (i == tables.size()) return "";
    const auto found = tables.find(name);
    if (found == tables.end()) return name + " is missing";
    const bool isLast = ++i == tables.size();
    if (text != found->second &&
        !(isLast && text.compare(0, found->second.size(), found->second) == 0)) {
      return name + " is harmed:\n" + found->second;
    }
  }
  return "";
}

std::string Judge(int status, const std::string& messages, const Tables& tables,
                  const Tables& expected) {
  if (!WIFEXITED(status) || WEXITSTATUS(status) > 1) return ToText(status);
  if (WEXITSTATUS(status) == 1) {
    return messages.empty() ? "status 1 without a message" : CompareTables(tables, expected);
  }
  if (!messages.empty()) return "status 0 with a message";
  return tables == expected ? "" : "status 0, but not the same tables";
}

bool EndsWithExhausted(const std::string& messages) {
  const std::string end = EXHAUSTED;
  return messages.size() >= end.size() &&
         messages.compare(messages.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::puts("usage: AllocationFailures FOLDER [--first N] [--stride N]");
    return 2;
  }
  LumoMemoryManager::SetPoolsCells(false);  // every cell is to be an allocation that can fail
  const fs::path folder = fs::absolute(argv[1]);
  const long first = GetNumber(argc, argv, "--first", 1);
  const long stride = GetNumber(argc, argv, "--stride", 1);
  EnterNewFolder("allocation-failures");
  fs::copy(folder / "models", "models");
  fs::copy(folder / "study", "study");
  std::vector<std::string> scripts;
  for (const fs::directory_entry& entry : fs::directory_iterator("study")) {
    scripts.push_back(entry.path());
  }
  std::sort(scripts.begin(), scripts.end());

  long* allocations = NewSharedCounts<long>();
  const int status = RunStudy(scripts, 0, false, allocations);
  const Tables expected = TakeTables();
  if (status != 0 || expected.empty()) {
    std::printf("the study fails by itself: %s\n%s", ToText(status).c_str(),
                ReadMessages().c_str());
    return 1;
  }
  const long total = *allocations;
  long absorbed = 0;
  long exhausted = 0;
  long reported = 0;
  long found = 0;
  for (long n = first; n <= total; n += stride) {
    for (const bool goesOn : {false, true}) {
      const int end = RunStudy(scripts, n, goesOn, allocations);
      const std::string messages = ReadMessages();
      const std::string fault = Judge(end, messages, TakeTables(), expected);
      if (!fault.empty()) {
        ++found;
        std::printf("allocation %ld%s: %s\n%s\n", n, goesOn ? " and all after it" : "",
                    fault.c_str(), messages.c_str());
      } else {
        ++(end == 0 ? absorbed : EndsWithExhausted(messages) ? exhausted : reported);
      }
    }
  }
  std::printf(
      "%ld allocations, every %ldth fails, twice: %ld absorbed, %ld \"Memory exhausted\", "
      "%ld with another message, %ld faults\n",
      total, stride, absorbed, exhausted, reported, found);
  return found == 0 ? 0 : 1;
}
