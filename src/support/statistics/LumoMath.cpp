#include "support/statistics/LumoMath.h"

#include <algorithm>
#include <cmath>

double LumoMath::Binomial(int k, int n) {
  if (k < 0 || k > n) return 0.0;
  double result = 1.0;
  // Each partial product is itself a binomial coefficient, so every division is exact.
  for (int i = 1; i <= std::min(k, n - k); ++i) result = result * (n - i + 1) / i;
  return result;
}

// Offered to users of the class; the program itself does not call what follows.

double LumoMath::Gammaln(double x) { return std::lgamma(x); }

double LumoMath::Gamma(double x) { return std::tgamma(x); }

double LumoMath::GammaDensity(double x, double k, double theta) {
  if (x < 0.0) return 0.0;
  return std::pow(x, k - 1.0) * std::exp(-x / theta) / (Gamma(k) * std::pow(theta, k));
}
