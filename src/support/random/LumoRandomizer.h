#pragma once

// A source of pseudo-random numbers and of the deviates drawn from them.
//
// The sequence of draws is fully determined by the seed. Normal deviates come in pairs: the second
// of a pair waits for the next call, and changing the seed does not forget it.
class LumoRandomizer {
 public:
  LumoRandomizer() = default;
  virtual ~LumoRandomizer() = 0;
  LumoRandomizer(const LumoRandomizer&) = delete;
  LumoRandomizer& operator=(const LumoRandomizer&) = delete;

  // A new generator of the same parameters in its initial state, owned by the caller.
  virtual LumoRandomizer* Copy() const = 0;
  // The next raw integer of the sequence.
  virtual long Draw() = 0;
  // The next real, in [0, 1]; both ends can occur.
  virtual double UniformDraw() = 0;

  long GetSeed() const { return _seed; }
  void SetSeed(long seed) { _seed = seed; }
  // Forgets the normal value that waits, if any.
  void ResetNormalDrawValue() { _normalDrawValue = 0.0; }

  // a + (b - a) u.
  double UniformDraw(double a, double b);
  // Mean 0 and deviation 1, or `mu` and `sigma`. The polar method of G. Marsaglia and T. A. Bray,
  // "A convenient method for generating normal variables", 1964. A generator stuck on a value
  // that the method refuses yields 0.
  double NormalDraw();
  double NormalDraw(double mu, double sigma) { return mu + sigma * NormalDraw(); }
  // The law whose logarithm is normal with σ = ln(errorFactor) / score(level) and mean
  // ln(mean) - σ²/2: `mean` is the mean of the law, not its median.
  double LognormalDraw(double mean, double errorFactor, double level);
  // Its μ and σ.
  static void GetNormalLawOfLogarithm(double mean, double errorFactor, double level, double& mu,
                                      double& sigma);
  // Shape k, scale 1 or `theta`. G. Marsaglia and W. W. Tsang, "A simple method for generating
  // gamma variables", 2000. A shape that is not positive yields 0, NaN yields NaN.
  double GammaDraw(double k);
  double GammaDraw(double k, double theta) { return theta * GammaDraw(k); }
  // The ratio x / (x + y) of two gamma deviates of shapes a and b.
  double BetaDraw(double a, double b);

  // The two-sided standard normal quantile of a confidence level, from a table of usual levels:
  // the score of the first level not below the given one.
  static double StandardScore(double level);

  // Offered to users of the class; the program itself does not call what follows.

  // An integer in 0 .. n; n itself only when the uniform draw is exactly 1.
  long DrawModulo(long n);
  // Mean 1. Algorithm SA of J. H. Ahrens and U. Dieter, "Computer methods for sampling from the
  // exponential and normal distributions", 1972.
  double ExponentialDraw();

 private:
  long _seed = 0;
  double _normalDrawValue = 0.0;  // 0.0 means that none waits
};
