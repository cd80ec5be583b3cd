#pragma once

#include "support/containers/LumoAVLTree.h"

class OrvaEvent;
class OrvaInterpreter;

// Counts how often the events below a top event are referenced there.
class OrvaAnalyzer {
 public:
  explicit OrvaAnalyzer(OrvaInterpreter* interpreter);
  ~OrvaAnalyzer();
  OrvaAnalyzer(const OrvaAnalyzer&) = delete;
  OrvaAnalyzer& operator=(const OrvaAnalyzer&) = delete;

  // Counts the parents of every event at or below `top` and makes a new tree of these events, the
  // one with the most parents first, equal ones in post-order. The tree is the caller's. The
  // counts stay on the events.
  void SortDescendantsByDecreasingNumbersOfParents(OrvaEvent* top, LumoAVLTree*& result);

  static int GetNumberOfParents(const OrvaEvent* event);
  static int GetNumberOfParents(const void* event);
  void IncrementNumberOfParents(OrvaEvent* event);
  void ResetNumberOfParents(OrvaEvent* event);
  // The parents of b minus those of a.
  static int CompareNumbersOfParents(const void* a, const void* b);

  // Offered to users of the class; the program itself does not call what follows.
  static void Delete(void* analyzer);
  OrvaInterpreter* GetInterpreter() const { return _interpreter; }

 private:
  static constexpr const char* NUMBER_OF_PARENTS = "__NUMBER_OF_PARENTS__";

  OrvaInterpreter* _interpreter;
};
