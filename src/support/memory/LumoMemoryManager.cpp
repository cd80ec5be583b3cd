// What is counted are objects, not bytes: a class counts itself in its constructor and uncounts
// itself in its destructor, a raw string when it is made and when it is released. The count says at
// the end of every script whether each object made was destroyed, whatever memory its containers
// keep for later, and a destruction too many ends the run at once, before it does harm elsewhere.
//
// The allocation functions are replaced for another reason. Memory comes filled with zeros, and its
// exhaustion is an orderly end: nothing in the program throws or catches, and no caller of `new`
// looks for null.
//
// A model is millions of small objects, and the C library takes longer over a cell than the program
// over what it puts there. So small cells are pooled: cut one after the other from pages, which
// come zeroed, and given again to the next cell of the same size, which is zeroed then. In front of
// each cell stands its size in units of 16 bytes, 0 when it is not of the pool: a cell can be
// released without telling its size. That word takes the place of the C library's own, and cells
// are aligned as usual. Pages are kept, and the first are small, for most runs are.
//
// All of it must work when nothing else does: texts are formatted into arrays of fixed size, and
// files are opened for one line and closed again, so that a trace is complete up to a crash.

#include "support/memory/LumoMemoryManager.h"

#include <algorithm>
#include <cassert>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <new>

std::int64_t LumoMemoryManager::_allocationBalance = 0;
bool LumoMemoryManager::_traceAllocations = false;
bool LumoMemoryManager::_traceNullPointerDeletions = true;
#if defined(__SANITIZE_ADDRESS__) || defined(LUMO_PLAIN_CELLS)
bool LumoMemoryManager::_poolsCells = false;  // or a checker of memory would see pages only
#else
bool LumoMemoryManager::_poolsCells = true;
#endif

namespace {

constexpr std::size_t MAXIMUM_LINE_LENGTH = 256;

constexpr std::size_t UNIT = 16;
constexpr std::size_t HIGHEST_POOLED = 16;  // units
constexpr std::size_t SMALLEST_PAGE = 4096;
constexpr std::size_t LARGEST_PAGE = 65536;

using Header = std::size_t;
static_assert(2 * sizeof(Header) == UNIT && alignof(std::max_align_t) <= UNIT);

struct FreeCell {
  FreeCell* next;
};

struct Pool {
  FreeCell* free[HIGHEST_POOLED + 1];  // by units
  char* next;                          // what is left of the page: the header of the next cell
  std::size_t left;
  std::size_t pageSize;
};
constinit Pool pool = {};

void* PutHeader(char* place, Header units) {
  std::memcpy(place, &units, sizeof units);
  return place + sizeof units;
}

Header GetHeader(const void* cell) {
  Header units;
  std::memcpy(&units, static_cast<const char*>(cell) - sizeof units, sizeof units);
  return units;
}

bool TakePage() {
  const std::size_t size = pool.pageSize == 0 ? SMALLEST_PAGE : pool.pageSize;
  char* page = static_cast<char*>(std::calloc(1, size));
  if (page == nullptr) return false;
  pool.pageSize = std::min(2 * size, LARGEST_PAGE);
  pool.next = page + sizeof(Header);  // headers end where cells are aligned
  pool.left = size - UNIT;
  return true;
}

void* NewPooledCell(Header units) {
  if (FreeCell* cell = pool.free[units]) {
    pool.free[units] = cell->next;
    return std::memset(cell, 0, units * UNIT - sizeof(Header));
  }
  if (pool.left < units * UNIT && !TakePage()) return nullptr;
  char* place = pool.next;
  pool.next += units * UNIT;
  pool.left -= units * UNIT;
  return PutHeader(place, units);
}

// Outside the pool: the header is in the last word of a unit of its own.
void* NewPlainCell(std::size_t size) {
  if (size > SIZE_MAX - UNIT) return nullptr;
  char* place = static_cast<char*>(std::calloc(1, size + UNIT));
  return place == nullptr ? nullptr : PutHeader(place + UNIT - sizeof(Header), 0);
}

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
  constexpr std::size_t LARGEST = HIGHEST_POOLED * UNIT - sizeof(Header);
  void* cell = _poolsCells && size <= LARGEST
                   ? NewPooledCell((size + sizeof(Header) + UNIT - 1) / UNIT)
                   : NewPlainCell(size);
  if (cell == nullptr) {
    char line[MAXIMUM_LINE_LENGTH];
    std::snprintf(line, sizeof line, "LumoMemoryManager::MemoryOverflow AllocationBalance = %ld\n",
                  static_cast<long>(_allocationBalance));
    Dump(line);
  }
  return cell;
}

void LumoMemoryManager::DeleteCell(void* cell) {
  if (cell == nullptr) {
    if (_traceNullPointerDeletions) Dump("LumoMemoryManager::NullPointerDeletion.\n");
  } else if (const Header units = GetHeader(cell); units == 0) {
    std::free(static_cast<char*>(cell) - UNIT);
  } else {
    assert(units <= HIGHEST_POOLED);
    pool.free[units] = new (cell) FreeCell{pool.free[units]};
  }
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
