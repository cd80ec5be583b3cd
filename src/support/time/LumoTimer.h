#pragma once

#include <cstdint>
#include <ctime>

// Accumulates wall-clock seconds and processor clock ticks over any number of Start/Stop pairs.
class LumoTimer {
 public:
  // Copies the name, which may be null.
  explicit LumoTimer(const char* name = nullptr);
  ~LumoTimer();
  LumoTimer(const LumoTimer&) = delete;
  LumoTimer& operator=(const LumoTimer&) = delete;

  void Start();
  // Adds what has passed since Start to the two accumulators.
  void Stop();

  // The running time as text, a new raw string owned by the caller: below 60 wall-clock seconds
  // the processor time in seconds and hundredths ("3.07"), else the wall-clock seconds ("125").
  char* ToStringOfTimeInSeconds() const;

  // Offered to users of the class; the program itself does not call what follows.

  const char* GetName() const { return _name; }
  void SetName(const char* name);
  int CompareName(const char* name) const;
  int CompareNames(const LumoTimer* other) const { return CompareName(other->_name); }
  // Forgets what has accumulated.
  void Reset();
  double GetAccumulatedSeconds() const { return _accumulatedSeconds; }
  std::int64_t GetAccumulatedTicks() const { return _accumulatedTicks; }

 private:
  char* _name;
  double _accumulatedSeconds = 0.0;
  std::int64_t _accumulatedTicks = 0;
  std::time_t _startTime = 0;
  std::clock_t _startTicks = 0;
};
