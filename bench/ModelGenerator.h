#pragma once

#include <string>

// A synthetic plant in the Open-PSA Model Exchange Format, of any size and the same for the same
// numbers: functions of three redundant trains each, every train over four components with two
// failure modes and, for most functions, over a train of a shared support function; accident
// sequences over an initiating event and two functions; the top event CORE-DAMAGE over all
// sequences. All formulas are flat and coherent. There are about 0.7 gates per basic event, and
// formulas of both modules and shared gates.
//
// The basic events have constant probabilities between 1e-5 and 1e-2; or these are failure rates,
// of exponential laws of the mission time; or the means of such rates, parameters with a lognormal
// deviate each.
enum class Law { PROBABILITY, RATE, LOGNORMAL };
std::string GenerateModel(int numberOfBasicEvents, unsigned seed, Law law = Law::PROBABILITY);
