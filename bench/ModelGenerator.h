#pragma once

#include <string>

// A synthetic plant in the Open-PSA Model Exchange Format, of any size and the same for the same
// numbers: functions of three redundant trains each, every train over four components with two
// failure modes and, for most functions, over a train of a shared support function; accident
// sequences over an initiating event and two functions; the top event CORE-DAMAGE over all
// sequences. All formulas are flat and coherent. There are about 0.7 gates per basic event, and
// formulas of both modules and shared gates.
std::string GenerateModel(int numberOfBasicEvents, unsigned seed);
