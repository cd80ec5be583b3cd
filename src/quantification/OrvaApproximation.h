#pragma once

class OrvaMCSSet;

// How the probability of a top event follows from the present ones of the basic events, where it is
// not the sum over the minimal cutsets. A handle uses the one that it is given until it is given
// another one.
class OrvaApproximation {
 public:
  OrvaApproximation() = default;
  virtual ~OrvaApproximation() = default;
  OrvaApproximation(const OrvaApproximation&) = delete;
  OrvaApproximation& operator=(const OrvaApproximation&) = delete;

  // The set holds the minimal cutsets of the top event.
  virtual double Compute(const OrvaMCSSet& set) = 0;
};

// The minimal cutset upper bound, 1 - Π (1 - p(C)) over the cutsets C: exact for cutsets that share
// no event, and never below the exact probability of a coherent top event.
class OrvaUpperBound : public OrvaApproximation {
 public:
  double Compute(const OrvaMCSSet& set) override;
};
