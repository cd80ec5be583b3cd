// The line is written by the handler of a timer signal. So the work itself does nothing but keep a
// few words up to date, most of which it counts anyway; it looks at no clock and pays nothing where
// there is no terminal. A handler may interrupt anything, which is why it only reads volatile
// words, formats into a buffer of its own and writes with one system call.
#include "support/time/LumoProgress.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr int EXIT_STATUS_OF_SIGNALS = 128;
constexpr const char* ERASED_LINE = "\r\033[K";

LumoProgress* volatile innermost = nullptr;
volatile std::sig_atomic_t isShown = 0;
// Where lines go: standard error, or the same terminal opened so that nobody waits for it while it
// is stopped or has gone.
int output = STDERR_FILENO;

// A line under construction; what does not fit is cut off.
class Line {
 public:
  void Add(const char* text) {
    while (*text != '\0' && _size < sizeof _text) _text[_size++] = *text++;
  }
  void Add(long number) {
    char digits[24];
    char* first = digits + sizeof digits;
    *--first = '\0';
    for (unsigned long rest = number < 0 ? 0UL : static_cast<unsigned long>(number);;) {
      *--first = static_cast<char>('0' + rest % 10);
      rest /= 10;
      if (rest == 0) break;
    }
    Add(first);
  }
  void Write() const {
    // There is nobody to tell when it can't be written.
    [[maybe_unused]] const auto written = write(output, _text, _size);
  }

 private:
  char _text[240];
  std::size_t _size = 0;
};

void SetHandler(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  struct sigaction former = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(signal, nullptr, &former);
  // Whoever started the program in the background wants it to go on.
  if (former.sa_handler != SIG_IGN) sigaction(signal, &action, nullptr);
}

}  // namespace

LumoProgress::LumoProgress(const char* name, const char* unit, long total)
    : _name(name), _unit(unit), _total(total), _outer(innermost) {
  innermost = this;
}

LumoProgress::~LumoProgress() {
  innermost = _outer;
  Erase();
}

void LumoProgress::Advance() {
  LumoProgress* stage = innermost;
  if (stage != nullptr) stage->_done = stage->_done + 1;
}

void LumoProgress::Start() {
  SetHandler(SIGINT, _Interrupt);
  SetHandler(SIGTERM, _Interrupt);
  if (isatty(STDERR_FILENO) == 0) return;
  const char* terminal = ttyname(STDERR_FILENO);
  const int opened =
      terminal == nullptr ? -1 : open(terminal, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (opened >= 0) output = opened;
  SetHandler(SIGALRM, _Show);
  const itimerval interval = {{0, 250000}, {2, 0}};
  setitimer(ITIMER_REAL, &interval, nullptr);
}

void LumoProgress::Erase() {
  if (isShown == 0) return;
  isShown = 0;
  Line line;
  line.Add(ERASED_LINE);
  line.Write();
}

void LumoProgress::_Show(int /*signal*/) {
  if (innermost == nullptr) return;
  isShown = 1;
  _Write(ERASED_LINE, "");
}

void LumoProgress::_Interrupt(int signal) {
  _Write(isShown != 0 ? "\r\033[KInterrupted: " : "Interrupted: ", "\n");
  _exit(EXIT_STATUS_OF_SIGNALS + signal);
}

// "build minimal-cutsets: 12 of 70 gates": the names from the outermost stage to the innermost one,
// and what that counts.
void LumoProgress::_Write(const char* before, const char* after) {
  constexpr int DEEPEST_SHOWN = 8;
  const LumoProgress* stages[DEEPEST_SHOWN];
  int depth = 0;
  for (const LumoProgress* stage = innermost; stage != nullptr && depth < DEEPEST_SHOWN;
       stage = stage->_outer) {
    stages[depth++] = stage;
  }
  Line line;
  line.Add(before);
  while (depth > 0) {
    const LumoProgress* stage = stages[--depth];
    line.Add(stage->_name);
    line.Add(depth > 0 ? " " : "");
    if (depth > 0 || stage->_unit == nullptr) continue;
    line.Add(": ");
    line.Add(stage->_GetDone());
    if (stage->_total > 0) {
      line.Add(" of ");
      line.Add(stage->_total);
    }
    line.Add(" ");
    line.Add(stage->_unit);
  }
  line.Add(after);
  line.Write();
}
