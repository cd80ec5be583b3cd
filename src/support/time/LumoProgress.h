#pragma once

// What the program is doing and how far it is, for those who wait for it. A stage of work is an
// object; stages nest. Nothing is shown but on a terminal, and only what takes long; an interrupted
// run says in one line where it was.
class LumoProgress {
 public:
  // The name and the unit are not copied. The total is 0 where it isn't known; without a unit
  // nothing is counted.
  explicit LumoProgress(const char* name, const char* unit = nullptr, long total = 0);
  // Erases the line, if it is shown.
  ~LumoProgress();
  LumoProgress(const LumoProgress&) = delete;
  LumoProgress& operator=(const LumoProgress&) = delete;

  // The counter of somebody else, which lives as long as the stage.
  void Watch(const long* counter) { _counter = counter; }

  // One more unit of the innermost stage is done.
  static void Advance();

  // From now on the line is shown on standard error, if that is a terminal: after two seconds, and
  // then four times a second. SIGINT and SIGTERM end the process with one line on standard error
  // and status 128 plus the signal's number, unless they are ignored. What is in closed files
  // stays.
  static void Start();
  // Takes the line away, to make room for a message.
  static void Erase();

 private:
  static void _Show(int signal);
  static void _Interrupt(int signal);
  static void _Write(const char* before, const char* after);
  long _GetDone() const { return _counter == nullptr ? _done : *_counter; }

  const char* _name;
  const char* _unit;
  long _total;
  volatile long _done = 0;
  const volatile long* _counter = nullptr;
  LumoProgress* _outer;
};
