#include "store/OrvaMCSNode.h"

#include "store/OrvaMCSTreeWalk.h"
#include "support/containers/LumoContainer.h"

// Offered to users of the class; the program itself does not call what follows.

int OrvaMCSNode::GetCutsetOrder() const {
  int order = 0;
  for (const OrvaMCSNode* node = this; node->_parent != nullptr; node = node->_parent) {
    order += static_cast<int>(node->IsThenSon());
  }
  return order;
}

void OrvaMCSNode::CollectMinimalCutsets(LumoContainer* result) {
  struct Collector : OrvaMCSTreeVisitor {
    explicit Collector(LumoContainer* target) : container(target) {}
    void VisitLeaf(OrvaMCSNode* leaf) {
      if (leaf->IsMinimalCutset()) container->InsertItem(leaf);
    }
    LumoContainer* container;
  };
  Collector collector(result);
  OrvaWalkMCSTree(this, collector);
}

int OrvaMCSNode::CompareWeights(const void* a, const void* b) {
  const double x = static_cast<const OrvaMCSNode*>(a)->GetWeight();
  const double y = static_cast<const OrvaMCSNode*>(b)->GetWeight();
  return static_cast<int>(x > y) - static_cast<int>(x < y);
}
