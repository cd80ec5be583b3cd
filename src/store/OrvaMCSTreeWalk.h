#pragma once

#include <cassert>

#include "store/OrvaMCSNode.h"

// What happens on a walk over a cutset tree, nothing by default. A visitor derives from this class
// and redefines what it needs; the calls are resolved at compile time.
struct OrvaMCSTreeVisitor {
  // Before the then-son, between the sons, after the else-son of an internal node.
  void Enter(OrvaMCSNode* /*node*/) {}
  void Cross(OrvaMCSNode* /*node*/) {}
  void Leave(OrvaMCSNode* /*node*/) {}
  void VisitLeaf(OrvaMCSNode* /*leaf*/) {}
};

// Walks a tree depth first, then-sons before else-sons, by the nodes' links to their parents: an
// else-chain can be a million nodes long. When it is left, a node's sons may be freed.
template <class Visitor>
void OrvaWalkMCSTree(OrvaMCSNode* root, Visitor& visitor) {
  if (root == nullptr) return;
  OrvaMCSNode* node = root;
  for (;;) {
    while (node->IsInternal()) {
      visitor.Enter(node);
      node = node->GetThenSon();
    }
    visitor.VisitLeaf(node);
    for (;;) {
      if (node == root) return;
      OrvaMCSNode* parent = node->GetParent();
      assert(parent != nullptr);
      if (node == parent->GetThenSon()) {
        visitor.Cross(parent);
        node = parent->GetElseSon();
        break;
      }
      assert(node == parent->GetElseSon());
      visitor.Leave(parent);
      node = parent;
    }
  }
}
