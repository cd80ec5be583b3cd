// The recurrence is x' = a x mod m on the unmasked state x. Written so, the product needs twice the
// bits of m; Schrage splits m = a q + r, and then
//
//   a x mod m = a (x mod q) - r (x / q), plus m when that is negative,
//
// in which no term exceeds m as long as r < q, as it is for the three known multipliers.
//
// The state that is kept, returned and seeded is x with the bits of the mask turned round. The
// state x = 0 would stay 0 for ever; with the mask the seed 0 is as good as any other, and the bad
// one is the mask itself. Unmasked, a draw would lie strictly between 0 and m; masked, it can be
// either end.

#include "support/random/LumoCongruentialRandomizer.h"

#include <cassert>

#include "support/memory/LumoMemoryManager.h"

namespace {

constexpr long MODULUS = 2147483647;
constexpr long MASK = 123459876;
constexpr long SEED = 12345;

constexpr long GetMultiplierOfKind(int kind) {
  switch (kind) {
    case 2:
      return 48271;
    case 3:
      return 69621;
    default:
      return 16807;
  }
}

}  // namespace

LumoCongruentialRandomizer::LumoCongruentialRandomizer(int kind)
    : LumoCongruentialRandomizer(MODULUS, GetMultiplierOfKind(kind), MASK) {}

LumoCongruentialRandomizer::LumoCongruentialRandomizer(long modulus, long multiplier, long mask) {
  Initialize(modulus, multiplier, mask);
  LumoMemoryManager::TraceNew(this, "LumoCongruentialRandomizer");
}

LumoCongruentialRandomizer::~LumoCongruentialRandomizer() {
  LumoMemoryManager::TraceDelete(this, "LumoCongruentialRandomizer");
}

void LumoCongruentialRandomizer::Initialize(long modulus, long multiplier, long mask) {
  assert(multiplier >= 1 && multiplier <= modulus);
  _modulus = modulus;
  _multiplier = multiplier;
  _mask = mask;
  _quotient = modulus / multiplier;
  _remainder = modulus % multiplier;
  SetSeed(SEED);
  ResetNormalDrawValue();
}

LumoRandomizer* LumoCongruentialRandomizer::Copy() const {
  return new LumoCongruentialRandomizer(_modulus, _multiplier, _mask);
}

long LumoCongruentialRandomizer::Draw() {
  const long state = GetSeed() ^ _mask;
  assert(_quotient > 0);
  long next = _multiplier * (state % _quotient) - _remainder * (state / _quotient);
  if (next < 0) next += _modulus;
  SetSeed(next ^ _mask);
  return GetSeed();
}

double LumoCongruentialRandomizer::UniformDraw() {
  return static_cast<double>(Draw()) / static_cast<double>(_modulus);
}
