#pragma once

#include "support/random/LumoRandomizer.h"

// A multiplicative linear congruential generator, x' = a x mod m, computed without overflow by
// the method of L. Schrage, "A more portable Fortran random number generator", 1979, on a state
// masked by exclusive or. S. K. Park and K. W. Miller, "Random number generators: good ones are
// hard to find", 1988, recommend its multipliers.
class LumoCongruentialRandomizer : public LumoRandomizer {
 public:
  // Modulus 2^31 - 1, the mask 123459876, and the multiplier 48271 for kind 2, 69621 for kind 3
  // and 16807 for any other kind.
  explicit LumoCongruentialRandomizer(int kind);
  // `multiplier` must lie in 1 .. modulus.
  LumoCongruentialRandomizer(long modulus, long multiplier, long mask);
  ~LumoCongruentialRandomizer() override;

  // Takes the parameters, the seed 12345, and forgets the normal value that waits.
  void Initialize(long modulus, long multiplier, long mask);

  LumoRandomizer* Copy() const override;
  // The masked state, which is also the next seed. A seed equal to the mask stays what it is.
  long Draw() override;
  double UniformDraw() override;
  using LumoRandomizer::UniformDraw;

  // Offered to users of the class; the program itself does not call what follows.

  long GetModulus() const { return _modulus; }
  long GetMultiplier() const { return _multiplier; }
  long GetMask() const { return _mask; }

 private:
  long _modulus;
  long _multiplier;
  long _mask;
  long _quotient;   // modulus / multiplier
  long _remainder;  // modulus mod multiplier
};
