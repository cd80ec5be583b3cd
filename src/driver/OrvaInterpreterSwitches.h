#pragma once

#include "driver/OrvaInterpreter.h"
#include "printer/OrvaPrinter.h"

// A switch of the printer and the option that sets it: what the source files of the commands
// share.
struct OrvaInterpreter::Switch {
  const char* option;
  bool OrvaPrinter::*isOn;
};
