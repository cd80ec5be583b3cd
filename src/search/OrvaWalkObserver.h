#pragma once

#include <climits>

// The statistics of one walk. The walker moves the counters; whoever ordered the walk fills in
// what was walked and for how long.
class OrvaWalkObserver {
 public:
  OrvaWalkObserver();
  ~OrvaWalkObserver();
  OrvaWalkObserver(const OrvaWalkObserver&) = delete;
  OrvaWalkObserver& operator=(const OrvaWalkObserver&) = delete;
  void Reset();

  // The model: the numbers of equations, of input variables and of modules.
  int numberOfGates = 0;
  int numberOfBasicEvents = 0;
  int numberOfModules = 0;
  // The cutoff.
  int maximumOrder = INT_MAX;
  double minimumProbability = 0.0;
  // Choices: implied values, chosen values, basic events refused by the cutoff when chosen. A walk
  // of a minute or two makes more than an int can count.
  long unit = 0;
  long branching = 0;
  long cutoff = 0;
  // Ends of branches: conflicts, implied basic events refused by the cutoff, cutsets that contain
  // a smaller one, new minimal cutsets, and minimal cutsets found again (never printed).
  long deadEnds = 0;
  long cutoffs = 0;
  long nonMinimalCutsets = 0;
  long minimalCutsets = 0;
  long knownMinimalCutsets = 0;

  // "?" when unset. Setting copies.
  const char* GetTopEventName() const;
  void SetTopEventName(const char* name);
  const char* GetRunningTime() const { return _runningTime; }
  void SetRunningTime(const char* time);

 private:
  char* _topEventName = nullptr;
  char* _runningTime = nullptr;
};
