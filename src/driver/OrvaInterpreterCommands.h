#pragma once

#include <span>

#include "driver/OrvaInterpreter.h"

// A family of commands: what the source files of OrvaInterpreter share.
struct OrvaInterpreter::Commands {
  std::span<const Command> rows;
  // What is said of an element that is not in the family, and whether it is shown.
  const char* unknownCommand;
  bool showsElement;
};
