#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// What the robustness programs share. Each works in a folder of its own below the current one (in
// a folder in memory, such as one in /dev/shm, they are several times as fast), and tries its
// inputs in child processes, so that a crash is a finding and not the end.
namespace robustness {

constexpr std::size_t MAXIMUM_SHOWN = 4000;  // characters of messages in a report
constexpr int FOUND = 3;                     // exit status of a child that found a fault
constexpr const char* ACCOUNTING = "LumoMemoryManager";  // what the accounting's complaints contain

inline std::string ReadFile(const std::filesystem::path& name) {
  std::ifstream file(name, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// A new file: to cut an old one down may have to wait for the disk.
inline void WriteFile(const std::filesystem::path& name, const std::string& text) {
  std::filesystem::remove(name);
  if (std::FILE* file = std::fopen(name.c_str(), "w")) {
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
  }
}

// Makes an empty folder below the current one, and goes there.
inline void EnterNewFolder(const std::string& name) {
  std::filesystem::remove_all(name);
  std::filesystem::create_directories(name);
  std::filesystem::current_path(name);
}

// The number behind an option such as "--count" on the command line.
inline long GetNumber(int argc, char** argv, const char* option, long otherwise) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], option) == 0) return std::atol(argv[i + 1]);
  }
  return otherwise;
}

// Numbers that the children count up for their parent.
template <class Counts>
Counts* NewSharedCounts() {
  return static_cast<Counts*>(
      mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
}

// Standard error of the children, a file in memory.
inline int GetMessageFile() {
  static const int file = memfd_create("messages", 0);
  return file;
}

inline std::string ReadMessages() {
  struct stat state {};
  fstat(GetMessageFile(), &state);
  std::string messages(static_cast<std::size_t>(state.st_size), '\0');
  if (pread(GetMessageFile(), messages.data(), messages.size(), 0) != state.st_size) std::abort();
  return messages;
}

inline void ClearMessages() {
  if (ftruncate(GetMessageFile(), 0) != 0) std::abort();
  lseek(GetMessageFile(), 0, SEEK_SET);
}

// Runs `body` in a child whose messages are kept. Returns how it ended, as waitpid says it.
template <class Body>
int RunInChild(Body body) {
  std::fflush(nullptr);
  ClearMessages();
  const pid_t child = fork();
  if (child == 0) {
    dup2(GetMessageFile(), STDERR_FILENO);
    body();
    std::exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

// A text as an open file. The text must outlive it.
inline std::FILE* OpenText(const std::string& text) {
  if (text.empty()) return std::fopen("/dev/null", "r");
  return fmemopen(const_cast<char*>(text.data()), text.size(), "r");
}

inline std::string ToText(int status) {
  if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
  return "exit status " + std::to_string(WEXITSTATUS(status));
}

// In a child: what has been written to standard error since the last look.
inline std::string TakeMessages() {
  std::string messages = ReadMessages();
  if (!messages.empty()) ClearMessages();
  return messages;
}

// In a child: ends it with a finding.
[[noreturn]] inline void Find(const std::string& text) {
  std::fprintf(stderr, "%s\n", text.c_str());
  _exit(FOUND);
}

}  // namespace robustness
