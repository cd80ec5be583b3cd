// The product of many numbers just below 1 says little about its distance from 1: the probabilities
// of rare cutsets would be lost in the rounding of their complements. Its logarithm is the sum of
// those of the factors, and is as exact as the probabilities are.
#include "quantification/OrvaApproximation.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "store/OrvaMCSSet.h"
#include "store/OrvaMCSTreeWalk.h"

namespace {

// Adds up log(1 - p(C)) with the product of the probabilities on the path to each leaf.
struct Summation : OrvaMCSTreeVisitor {
  explicit Summation(const OrvaMCSManager* store) : manager(store) {}
  void Enter(OrvaMCSNode* node) {
    outside.push_back(product);
    product *= manager->GetProbability(node->GetIndex());
  }
  void Cross(OrvaMCSNode* /*node*/) {
    product = outside.back();
    outside.pop_back();
  }
  void VisitLeaf(OrvaMCSNode* leaf) {
    if (leaf->IsMinimalCutset()) sum += std::log1p(-std::clamp(product, 0.0, 1.0));
  }
  const OrvaMCSManager* manager;
  std::vector<double> outside;
  double product = 1.0;
  double sum = 0.0;
};

}  // namespace

double OrvaUpperBound::Compute(const OrvaMCSSet& set) {
  Summation summation(set.GetManager());
  OrvaWalkMCSTree(set.GetRootNode(), summation);
  return -std::expm1(summation.sum);
}
