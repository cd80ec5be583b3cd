#pragma once

class LumoMath {
 public:
  LumoMath() = delete;

  static constexpr double Pi() { return 3.141592653589793; }

  // n choose k, as a double; 0 when k is outside 0 .. n. The subset's size comes first.
  static double Binomial(int k, int n);

  // Offered to users of the class; the program itself does not call what follows.

  static constexpr double E() { return 2.718281828459045; }
  static constexpr double Degree() { return 0.017453292519943295; }
  // ln Γ(x) and Γ(x).
  static double Gammaln(double x);
  static double Gamma(double x);
  // The density at x of the gamma law of shape k and scale theta; 0 for x < 0.
  static double GammaDensity(double x, double k, double theta);
};
