// What is counted are objects, not bytes: a class counts itself in its constructor and uncounts
// itself in its destructor, a raw string when it is made and when it is released. The count says at
// the end of every script whether each object made was destroyed, whatever memory its containers
// keep for later, and a destruction too many ends the run at once, before it does harm elsewhere.
//
// The allocation functions are replaced for another reason. Memory comes filled with zeros, and its
// exhaustion is an orderly end: nothing in the program throws or catches, and no caller of `new`
// looks for null.
//
// All of it must work when nothing else does: texts are formatted into arrays of fixed size, and
// files are opened for one line and closed again, so that a trace is complete up to a crash.

#include "support/memory/LumoMemoryManager.h"

#include <cassert>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

std::int64_t LumoMemoryManager::_allocationBalance = 0;
bool LumoMemoryManager::_traceAllocations = false;
bool LumoMemoryManager::_traceNullPointerDeletions = true;

namespace {

constexpr std::size_t MAXIMUM_LINE_LENGTH = 256;

// Objects are named in the traces by their addresses, as decimal numbers.
long AddressOf(const void* object) {
  return static_cast<long>(reinterpret_cast<std::intptr_t>(object));
}

// The one place that appends to a file; a file that can't be opened loses the message, since this
// runs where nothing can be reported any more.
void AppendToFile(const char* fileName, const char* format, std::va_list arguments) {
  if (std::FILE* file = std::fopen(fileName, "a")) {
    // Every caller has called va_start, which the analyser misses on some targets.
    std::vfprintf(file, format, arguments);  // NOLINT(clang-analyzer-valist.Uninitialized)
    std::fclose(file);
  }
}

}  // namespace

void LumoMemoryManager::Start() {
  _allocationBalance = 0;
  _traceAllocations = false;
}

void LumoMemoryManager::Stop() {
  if (_traceAllocations) Trace(TRACE_FILE, "LumoMemoryManager::Stop\n");
  if (_allocationBalance == 0) return;
  char line[MAXIMUM_LINE_LENGTH];
  std::snprintf(line, sizeof line, "LumoMemoryManager::AllocationBalance = %ld\n",
                static_cast<long>(_allocationBalance));
  std::fputs(line, stderr);
  Dump(line);
}

void* LumoMemoryManager::NewCell(std::size_t size) {
  void* cell = std::calloc(1, size == 0 ? 1 : size);
  if (cell == nullptr) {
    char line[MAXIMUM_LINE_LENGTH];
    std::snprintf(line, sizeof line, "LumoMemoryManager::MemoryOverflow AllocationBalance = %ld\n",
                  static_cast<long>(_allocationBalance));
    Dump(line);
  }
  return cell;
}

void LumoMemoryManager::DeleteCell(void* cell) {
  if (cell == nullptr && _traceNullPointerDeletions) {
    Dump("LumoMemoryManager::NullPointerDeletion.\n");
  }
  std::free(cell);
}

void LumoMemoryManager::EndOnExhaustedMemory() {
  std::fflush(nullptr);  // first what was written first, for a reader of both
  std::fputs("Memory exhausted\n", stderr);
  std::exit(1);
}

void LumoMemoryManager::Dump(const char* message) {
  const std::time_t now = std::time(nullptr);
  Trace(DUMP_FILE, "Lumo version 1.0 %s%s", std::asctime(std::localtime(&now)), message);
}

void LumoMemoryManager::Trace(const char* fileName, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  AppendToFile(fileName, format, arguments);
  va_end(arguments);
}

void LumoMemoryManager::_WriteTraceLine(const char* event, const void* object,
                                        const char* className) {
  Trace(TRACE_FILE, "LumoMemoryManager::%s %ld/%s [%ld]\n", event, AddressOf(object), className,
        static_cast<long>(_allocationBalance));
}

void LumoMemoryManager::_EndOnNegativeBalance(const void* object, const char* className) {
  assert(_allocationBalance < 0);
  char line[MAXIMUM_LINE_LENGTH];
  std::snprintf(line, sizeof line,
                "LumoMemoryManager::NegativeAllocationBalance Delete %ld/%s [%ld]\n",
                AddressOf(object), className, static_cast<long>(_allocationBalance));
  Dump(line);
  std::exit(1);
}

// Offered to users of the class; the program itself does not call what follows.

void LumoMemoryManager::Trace(const char* label, int value) {
  if (_traceAllocations) Trace(TRACE_FILE, "%s %d\n", label, value);
}

void LumoMemoryManager::Trace(const char* label, double value) {
  if (_traceAllocations) Trace(TRACE_FILE, "%s %g\n", label, value);
}

void LumoMemoryManager::TraceAllocationBalance(const char* label) {
  if (_traceAllocations) {
    Trace(TRACE_FILE, "%s [%ld]\n", label, static_cast<long>(_allocationBalance));
  }
}

void LumoMemoryManager::TraceAllocationDebugPoint(const char* label) {
  if (_traceAllocations) Trace(TRACE_FILE, "%s\n", label);
}

// The replaced global allocation functions. `new` never yields null to code that doesn't expect
// it: without memory the process ends. Only the nothrow forms hand null on.

void* operator new(std::size_t size) {
  void* cell = LumoMemoryManager::NewCell(size);
  if (cell == nullptr) LumoMemoryManager::EndOnExhaustedMemory();
  return cell;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return LumoMemoryManager::NewCell(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return LumoMemoryManager::NewCell(size);
}
void operator delete(void* cell) noexcept { LumoMemoryManager::DeleteCell(cell); }
void operator delete[](void* cell) noexcept { LumoMemoryManager::DeleteCell(cell); }
void operator delete(void* cell, std::size_t) noexcept { LumoMemoryManager::DeleteCell(cell); }
void operator delete[](void* cell, std::size_t) noexcept { LumoMemoryManager::DeleteCell(cell); }
void operator delete(void* cell, const std::nothrow_t&) noexcept {
  LumoMemoryManager::DeleteCell(cell);
}
void operator delete[](void* cell, const std::nothrow_t&) noexcept {
  LumoMemoryManager::DeleteCell(cell);
}
