#pragma once

#include <climits>

class OrvaEvent;

// The dates of the visits to an event in a depth-first walk below a top event, from which modules
// are read off in linear time. The method is that of Y. Dutuit and A. Rauzy, "A linear-time
// algorithm to find modules of fault trees", 1996.
class OrvaModuleRecord {
 public:
  OrvaModuleRecord();
  ~OrvaModuleRecord();
  OrvaModuleRecord(const OrvaModuleRecord&) = delete;
  OrvaModuleRecord& operator=(const OrvaModuleRecord&) = delete;

  // The record of an event, or a new one attached to the event.
  static OrvaModuleRecord* FindOrAttach(OrvaEvent* event);

  void Reset();
  // Whether the event has been visited, and whether the lowest and highest dates are known.
  bool IsDated() const { return _firstDate != 0; }
  bool IsUpdated() const { return _lowestDate != INT_MAX; }
  // Whether nothing below the event was visited before its first or after its second visit.
  bool IsModule() const { return _firstDate <= _lowestDate && _secondDate >= _highestDate; }

  // The first visit, the return from it, and the last visit; 0 while not dated.
  int GetFirstDate() const { return _firstDate; }
  void SetFirstDate(int date) { _firstDate = date; }
  int GetSecondDate() const { return _secondDate; }
  void SetSecondDate(int date) { _secondDate = date; }
  int GetLastDate() const { return _lastDate; }
  void SetLastDate(int date) { _lastDate = date; }
  // The earliest and the latest visits to what lies at or below the event.
  int GetLowestDate() const { return _lowestDate; }
  void SetLowestDate(int date) { _lowestDate = date; }
  int GetHighestDate() const { return _highestDate; }
  void SetHighestDate(int date) { _highestDate = date; }

  // Offered to users of the class; the program itself does not call what follows.
  static void Delete(void* record);

 private:
  int _firstDate = 0;
  int _secondDate = 0;
  int _lastDate = 0;
  int _lowestDate = INT_MAX;
  int _highestDate = 0;
};
