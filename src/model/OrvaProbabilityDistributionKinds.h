#pragma once

#include <cfloat>

#include "model/OrvaProbabilityDistribution.h"

// The row of one kind of expression in the table of kinds: what the source files of
// OrvaProbabilityDistribution share.
struct OrvaProbabilityDistribution::Functor {
  using Node = OrvaProbabilityDistribution;

  const char* name = nullptr;
  bool (*acceptsChildren)(int n) = nullptr;
  void (Node::*evaluate)(double t) = &Node::_KeepValue;
  Dependence time = Dependence::NEVER;
  Dependence repair = Dependence::NEVER;
  double (Node::*failureRate)(double t) const = &Node::_GetNoFailureRate;
  void (Node::*draw)(LumoRandomizer* randomizer) = &Node::_DrawNothing;
  void (Node::*reset)() = &Node::_ResetNothing;
  // How a deviate with so many arguments is drawn.
  Deviate deviate = nullptr;
  int numberOfArguments = 0;
  // What the evaluation applies: to one child, to two, or to each in turn from a start value.
  LumoConstant::Type startType = LumoConstant::NIL;
  Operation operation = nullptr;
  BinaryOperation binaryOperation = nullptr;
  double start = 0.0;
};

// The guard of every division: a divisor that is 0 becomes the machine epsilon.
inline double OrvaNonZero(double x) { return x != 0.0 ? x : DBL_EPSILON; }
