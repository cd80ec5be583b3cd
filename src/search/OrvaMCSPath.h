#pragma once

#include <vector>

#include "store/OrvaMCSNode.h"
#include "system/OrvaVariable.h"

// The path along which the last cutset was stored, from the root of the tree to a leaf. The next
// one shares it down to the first variable whose cutset value has changed, and its way down starts
// there: a chain of a million else-sons is followed once and not once per cutset.
//
// The walk word of an input variable is its position on the path, from 1, and 0 off the path.
class OrvaMCSPath {
 public:
  void Start(OrvaMCSNode* root) {
    Clear();
    _end = root;
  }
  // Drops what lies from a position on, and returns the node where the way goes on: the one at
  // that position or, when the path is not that long, its end.
  OrvaMCSNode* GoBackTo(int position) {
    while (position <= GetLength()) _Drop();
    return _end;
  }
  // The next internal node and the variable that it tests, null for one of no variable of the
  // system. A variable that is tested twice keeps its first position.
  void Push(OrvaMCSNode* node, OrvaVariable* variable) {
    if (variable != nullptr && variable->GetWalkWord() != 0) variable = nullptr;
    _steps.push_back({node, variable});
    if (variable != nullptr) variable->SetWalkWord(GetLength());
  }
  void SetEnd(OrvaMCSNode* leaf) { _end = leaf; }
  void Clear() {
    GoBackTo(1);
    _end = nullptr;
  }

 private:
  struct Step {
    OrvaMCSNode* node;
    OrvaVariable* variable;
  };

  int GetLength() const { return static_cast<int>(_steps.size()); }
  void _Drop() {
    _end = _steps.back().node;
    if (OrvaVariable* variable = _steps.back().variable) variable->SetWalkWord(0);
    _steps.pop_back();
  }

  std::vector<Step> _steps;
  OrvaMCSNode* _end = nullptr;
};
