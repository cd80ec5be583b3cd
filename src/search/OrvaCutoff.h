#pragma once

#include <climits>

// The truncation limits of one minimal cutset computation.
//
// The search keeps cutsets whose order does not exceed the maximum order and whose probability
// reaches the minimum probability. The minimum contribution belongs to a dynamic threshold that
// rises with the probability found so far; the class offers it, the search does not consult it.
class OrvaCutoff {
 public:
  OrvaCutoff();
  ~OrvaCutoff();
  OrvaCutoff(const OrvaCutoff&) = delete;
  OrvaCutoff& operator=(const OrvaCutoff&) = delete;

  int GetMaximumOrder() const { return _maximumOrder; }
  void SetMaximumOrder(int order) { _maximumOrder = order; }
  // 0 means no limit.
  double GetMinimumProbability() const { return _minimumProbability; }
  void SetMinimumProbability(double probability);
  // A share of the sum of the probabilities found so far.
  void SetMinimumContribution(double share) { _minimumContribution = share; }

  // Offered to users of the class; the program itself does not call what follows.
  double GetMinimumContribution() const { return _minimumContribution; }
  // The dynamic threshold: starts at the minimum probability and never falls.
  void ResetCurrentSumOfProductProbabilities();
  void RecordProduct(int order, double probability);
  int GetCurrentNumberOfProducts() const { return _currentNumberOfProducts; }
  double GetCurrentSumOfProductProbabilities() const { return _currentSumOfProductProbabilities; }
  // Whether a product passes the maximum order and the current threshold.
  bool Check(int order, double probability) const {
    return order <= _maximumOrder && probability >= _currentThreshold;
  }

 private:
  int _maximumOrder = INT_MAX;
  double _minimumProbability = 0.0;
  double _minimumContribution = 1e-9;
  int _currentNumberOfProducts = 0;
  double _currentSumOfProductProbabilities = 0.0;
  double _currentThreshold = 0.0;
};
