#pragma once

#include <cassert>
#include <vector>

#include "store/OrvaMCSNode.h"
#include "system/OrvaVariable.h"

// The path along which the last cutset was stored, from the root of the tree to a leaf. The next
// one shares it down to the first variable whose cutset value has changed, and its way down starts
// there: a chain of a million else-sons is followed once and not once per cutset.
//
// Positions count from 1. Each variable on the path knows its own, and is at 0 off the path.
class OrvaMCSPath {
 public:
  void Start(OrvaMCSNode* root) {
    assert(root != nullptr);
    Clear();
    _end = root;
  }
  // Drops what lies from a position on, and returns the node where the way goes on: the one at
  // that position or, when the path is not that long, its end.
  OrvaMCSNode* GoBackTo(int position) {
    assert(position >= 1);
    while (position <= GetLength()) _Drop();
    return _end;
  }
  // The next internal node and the variable that it tests, null for one of no variable of the
  // system. A variable that is tested twice keeps its first position.
  void Push(OrvaMCSNode* node, OrvaVariable* variable) {
    assert(node->IsInternal() && (_steps.empty() || node->GetParent() == _steps.back().node));
    if (variable != nullptr && variable->GetPathPosition() != 0) variable = nullptr;
    _steps.push_back({node, variable});
    if (variable != nullptr) variable->SetPathPosition(GetLength());
  }
  // The leaf where the path ends. What is stored there grows below it: the path stays one.
  void SetEnd(OrvaMCSNode* leaf) {
    assert(!leaf->IsInternal());
    _end = leaf;
  }
  int GetLength() const { return static_cast<int>(_steps.size()); }
  void Clear() {
    GoBackTo(1);
    _end = nullptr;
  }

 private:
  struct Step {
    OrvaMCSNode* node;
    OrvaVariable* variable;
  };

  void _Drop() {
    _end = _steps.back().node;
    if (OrvaVariable* variable = _steps.back().variable) {
      assert(variable->GetPathPosition() == GetLength());
      variable->SetPathPosition(0);
    }
    _steps.pop_back();
  }

  std::vector<Step> _steps;
  OrvaMCSNode* _end = nullptr;
};
