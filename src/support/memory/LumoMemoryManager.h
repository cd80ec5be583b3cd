#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>

// Process-wide accounting of live objects, and the allocation functions behind `new` and `delete`.
//
// Every object of the library reports its construction and its destruction under its class name,
// and every owned string its allocation and its release. The balance of both is 0 when nothing is
// leaked; Stop() says so when it is not. The allocation functions themselves are not counted: the
// balance is one of objects, so that it stays meaningful whatever the containers inside them do.
class LumoMemoryManager {
 public:
  static constexpr const char* TRACE_FILE = "lumo-allocations.txt";
  static constexpr const char* DUMP_FILE = "lumo-dump.txt";

  // Starts the accounting: balance 0, tracing off.
  static void Start();

  // Ends the accounting. When tracing, closes the trace with a line of its own. A balance other
  // than 0 is reported on standard error and in the dump file; it is a leak report, not a fault.
  static void Stop();

  // Counts one more (one less) live object. When tracing, each call appends a line to the trace
  // file. A balance that falls below 0 means that something was released twice: it is written to
  // the dump file and the process ends with status 1.
  static void TraceNew(const void* object, const char* className) {
    if (_traceAllocations) _WriteTraceLine("New", object, className);
    ++_allocationBalance;
    assert(_allocationBalance > 0);
  }
  static void TraceDelete(const void* object, const char* className) {
    if (_traceAllocations) _WriteTraceLine("Delete", object, className);
    if (--_allocationBalance < 0) _EndOnNegativeBalance(object, className);
  }

  // Whether each TraceNew and TraceDelete is written to the trace file. Off at start.
  static void SetTraceAllocations(bool on) { _traceAllocations = on; }

  // Zero-filled memory of `size` bytes, or null, after a line in the dump file, when there is none.
  static void* NewCell(std::size_t size);
  // Releases a cell of NewCell. A null cell is noted in the dump file (see
  // SetTraceNullPointerDeletions).
  static void DeleteCell(void* cell);

  // Writes "Memory exhausted" to standard error and ends the process with status 1, every open
  // file flushed.
  [[noreturn]] static void EndOnExhaustedMemory();

  // Appends a dated line and then `message` to the dump file.
  static void Dump(const char* message);

  // Appends a formatted message to the named file. The conversions are those of printf.
  static void Trace(const char* fileName, const char* format, ...)
      __attribute__((format(printf, 2, 3)));

  // Offered to users of the class; the program itself does not call what follows.

  static std::int64_t GetAllocationBalance() { return _allocationBalance; }
  // Whether the release of a null pointer is written to the dump file. On at start.
  static void SetTraceNullPointerDeletions(bool on) { _traceNullPointerDeletions = on; }
  // Whether small cells come out of pages, which is so at start except under a sanitizer. Without,
  // each is an allocation of its own, for what counts or checks these.
  static void SetPoolsCells(bool on) { _poolsCells = on; }
  // When tracing, append a labelled line to the trace file: a value, the balance, or nothing more.
  static void Trace(const char* label, int value);
  static void Trace(const char* label, double value);
  static void TraceAllocationBalance(const char* label);
  static void TraceAllocationDebugPoint(const char* label);

 private:
  static void _WriteTraceLine(const char* event, const void* object, const char* className);
  [[noreturn]] static void _EndOnNegativeBalance(const void* object, const char* className);

  static std::int64_t _allocationBalance;
  static bool _traceAllocations;
  static bool _traceNullPointerDeletions;
  static bool _poolsCells;
};
