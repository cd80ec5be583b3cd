// A binary search tree kept balanced by heights (G. M. Adelson-Velsky and E. M. Landis, "An
// algorithm for the organization of information", 1962): the heights of the two subtrees of any
// node differ by one at most. A node knows its father, so that every walk, up as well as down, is a
// loop: a cursor steps to the next node, rebalancing climbs to the root, and the whole tree is
// freed from its leaves, without a stack and without recursion.
//
// Equal items are kept in the order of their insertion: a new one goes to the right of every item
// that it equals. They stand side by side in the order of the tree, but rotations may put any one
// of them above the others: a look-up finds some of them, not the first.

#include "support/containers/LumoAVLTree.h"

#include <algorithm>
#include <cassert>

#include "support/containers/LumoRange.h"
#include "support/memory/LumoMemoryManager.h"

void LumoAVLTreeNode::_UpdateHeight() {
  _height = 1 + std::max(_GetHeight(_left), _GetHeight(_right));
}

LumoAVLTreeNode* LumoAVLTreeNode::_GetLeftmost() {
  LumoAVLTreeNode* node = this;
  while (node->_left != nullptr) node = node->_left;
  return node;
}

LumoAVLTreeNode* LumoAVLTreeNode::_GetRightmost() {
  LumoAVLTreeNode* node = this;
  while (node->_right != nullptr) node = node->_right;
  return node;
}

LumoAVLTreeNode* LumoAVLTreeNode::GetNext() const {
  if (_right != nullptr) return _right->_GetLeftmost();
  const LumoAVLTreeNode* node = this;
  while (node->_father != nullptr && node->_father->_right == node) node = node->_father;
  return node->_father;
}

LumoAVLTreeNode* LumoAVLTreeNode::GetPrevious() const {
  if (_left != nullptr) return _left->_GetRightmost();
  const LumoAVLTreeNode* node = this;
  while (node->_father != nullptr && node->_father->_left == node) node = node->_father;
  return node->_father;
}

LumoAVLTree::LumoAVLTree(Order order) : _order(order) {
  LumoMemoryManager::TraceNew(this, "LumoAVLTree");
}

LumoAVLTree::~LumoAVLTree() {
  RemoveItems();
  LumoMemoryManager::TraceDelete(this, "LumoAVLTree");
}

LumoAVLTreeNode* LumoAVLTree::GetFirstNode() const {
  return _root == nullptr ? nullptr : _root->_GetLeftmost();
}

LumoAVLTreeNode* LumoAVLTree::GetLastNode() const {
  return _root == nullptr ? nullptr : _root->_GetRightmost();
}

LumoAVLTreeNode* LumoAVLTree::GetNthNode(int n) const {
  if (n < 1 || n > _numberOfItems) return nullptr;
  LumoAVLTreeNode* node = GetFirstNode();
  for (int i = 1; i < n; ++i) node = node->GetNext();
  return node;
}

LumoAVLTreeNode* LumoAVLTree::LookForNode(const void* item) const {
  LumoAVLTreeNode* node = _root;
  while (node != nullptr) {
    const int comparison = _order(node->_item, item);
    if (comparison == 0) return node;
    node = comparison < 0 ? node->_right : node->_left;
  }
  return nullptr;
}

// Equal items stand side by side: from the first one met, to the left and to the right.
LumoAVLTreeNode* LumoAVLTree::LookForNodeOfItem(const void* item) const {
  LumoAVLTreeNode* const met = LookForNode(item);
  const auto isEqual = [&](const LumoAVLTreeNode* node) {
    return node != nullptr && _order(node->_item, item) == 0;
  };
  for (LumoAVLTreeNode* node = met; isEqual(node); node = node->GetPrevious()) {
    if (node->_item == item) return node;
  }
  for (LumoAVLTreeNode* node = met; isEqual(node); node = node->GetNext()) {
    if (node->_item == item) return node;
  }
  return nullptr;
}

void* LumoAVLTree::LookForItem(const LumoComparator* comparator, const void* key) const {
  const LumoAVLTreeNode* node = _root;
  while (node != nullptr) {
    const int comparison = comparator->Compare(node->_item, key);
    if (comparison == 0) return node->_item;
    node = comparison < 0 ? node->_right : node->_left;
  }
  return nullptr;
}

void* LumoAVLTree::LookForItem(Match match, const void* key) const {
  const LumoAVLTreeNode* node = _root;
  while (node != nullptr) {
    const int comparison = match(node->_item, key);
    if (comparison == 0) return node->_item;
    node = comparison < 0 ? node->_right : node->_left;
  }
  return nullptr;
}

void LumoAVLTree::InsertItem(void* item) {
  assert(item != nullptr);
  LumoAVLTreeNode* father = nullptr;
  LumoAVLTreeNode** link = &_root;
  while (*link != nullptr) {
    father = *link;
    link = _order(father->_item, item) <= 0 ? &father->_right : &father->_left;
  }
  *link = new LumoAVLTreeNode(item, father);
  ++_numberOfItems;
  _RebalanceFrom(father);
  assert(_root != nullptr && _root->_father == nullptr);
}

void* LumoAVLTree::RemoveItem(const void* item) { return RemoveNode(LookForNode(item)); }

void* LumoAVLTree::RemoveNode(LumoAVLTreeNode* node) {
  if (node == nullptr) return nullptr;
  void* item = node->_item;
  if (node->HasTwoSons()) {
    LumoAVLTreeNode* greatest = node->_left->_GetRightmost();
    assert(!greatest->HasTwoSons());
    node->_item = greatest->_item;
    node = greatest;
  }
  _Unlink(node);
  return item;
}

LumoAVLTreeNode*& LumoAVLTree::_GetLinkTo(LumoAVLTreeNode* node) {
  LumoAVLTreeNode* father = node->_father;
  if (father == nullptr) return _root;
  assert(father->_left == node || father->_right == node);
  return father->_left == node ? father->_left : father->_right;
}

// Takes a node with at most one son out of the tree and frees it.
void LumoAVLTree::_Unlink(LumoAVLTreeNode* node) {
  assert(!node->HasTwoSons() && _numberOfItems > 0);
  LumoAVLTreeNode* son = node->_left != nullptr ? node->_left : node->_right;
  LumoAVLTreeNode* father = node->_father;
  _GetLinkTo(node) = son;
  if (son != nullptr) son->_father = father;
  delete node;
  --_numberOfItems;
  _RebalanceFrom(father);
  assert((_root == nullptr) == (_numberOfItems == 0));
}

// An insertion or a removal changes no height by more than one: a difference of two is the worst
// that can be met on the way up, and one rotation, or two, end it. Where the height of a subtree is
// what it was before, nothing above it changes.
void LumoAVLTree::_RebalanceFrom(LumoAVLTreeNode* node) {
  while (node != nullptr) {
    LumoAVLTreeNode* father = node->_father;
    const int balance = node->_GetBalance();
    assert(balance >= -2 && balance <= 2);
    const int formerHeight = node->_height;
    if (balance > 1) {
      // The higher side is there, here and below, which the analyser can't conclude from the
      // balance: NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
      if (node->_right->_GetBalance() < 0) _RotateRight(node->_right);
      _RotateLeft(node);
      node = node->_father;
    } else if (balance < -1) {
      // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
      if (node->_left->_GetBalance() > 0) _RotateLeft(node->_left);
      _RotateRight(node);
      node = node->_father;
    } else {
      node->_UpdateHeight();
    }
    assert(node->_GetBalance() >= -1 && node->_GetBalance() <= 1 && node->_father == father);
    if (node->_height == formerHeight) return;
    node = father;
  }
}

// The right son takes the node's place; the node becomes its left son.
void LumoAVLTree::_RotateLeft(LumoAVLTreeNode* node) {
  LumoAVLTreeNode* son = node->_right;
  assert(son != nullptr && son->_father == node);
  _GetLinkTo(node) = son;
  son->_father = node->_father;
  node->_right = son->_left;
  if (node->_right != nullptr) node->_right->_father = node;
  son->_left = node;
  node->_father = son;
  node->_UpdateHeight();
  son->_UpdateHeight();
}

void LumoAVLTree::_RotateRight(LumoAVLTreeNode* node) {
  LumoAVLTreeNode* son = node->_left;
  assert(son != nullptr && son->_father == node);
  _GetLinkTo(node) = son;
  son->_father = node->_father;
  node->_left = son->_right;
  if (node->_left != nullptr) node->_left->_father = node;
  son->_right = node;
  node->_father = son;
  node->_UpdateHeight();
  son->_UpdateHeight();
}

// Bottom-up, without rebalancing: each leaf is cut off its father and freed.
void LumoAVLTree::DeleteItems(Release release) {
  LumoAVLTreeNode* node = _root;
  _root = nullptr;
  _numberOfItems = 0;
  while (node != nullptr) {
    if (node->_left != nullptr) {
      node = node->_left;
    } else if (node->_right != nullptr) {
      node = node->_right;
    } else {
      LumoAVLTreeNode* father = node->_father;
      assert(father == nullptr || father->_left == node || father->_right == node);
      if (father != nullptr) (father->_left == node ? father->_left : father->_right) = nullptr;
      release(node->_item);
      delete node;
      node = father;
    }
  }
}

LumoCursor* LumoAVLTree::NewCursor() { return new LumoAVLTreeCursor(this); }

// Offered to users of the class; the program itself does not call what follows.

LumoList* LumoAVLTree::CopyAsList() const {
  auto* list = new LumoList;
  list->InsertItems(this);
  return list;
}

void LumoAVLTree::_InsertItemsOf(const LumoAVLTree* source, const LumoAVLTree* filter,
                                 bool isInFilter) {
  for (void* item : LumoItems<void>(*source)) {
    if ((filter->LookForNode(item) != nullptr) == isInFilter) InsertItem(item);
  }
}

LumoAVLTree* LumoAVLTree::BuildUnion(const LumoAVLTree* other) const {
  auto* result = new LumoAVLTree(_order);
  result->InsertItems(this);
  result->_InsertItemsOf(other, this, false);
  return result;
}

LumoAVLTree* LumoAVLTree::BuildIntersection(const LumoAVLTree* other) const {
  auto* result = new LumoAVLTree(_order);
  result->_InsertItemsOf(this, other, true);
  return result;
}

LumoAVLTree* LumoAVLTree::BuildDifference(const LumoAVLTree* other) const {
  auto* result = new LumoAVLTree(_order);
  result->_InsertItemsOf(this, other, false);
  return result;
}

LumoAVLTreeCursor::LumoAVLTreeCursor(LumoAVLTree* tree) : _tree(tree) {
  LumoMemoryManager::TraceNew(this, "LumoAVLTreeCursor");
}

LumoAVLTreeCursor::~LumoAVLTreeCursor() {
  LumoMemoryManager::TraceDelete(this, "LumoAVLTreeCursor");
}

bool LumoAVLTreeCursor::IsOnFirstItem() const {
  return _node != nullptr && _node == _tree->GetFirstNode();
}

bool LumoAVLTreeCursor::IsOnLastItem() const {
  return _node != nullptr && _node == _tree->GetLastNode();
}

void LumoAVLTreeCursor::_ResetOnNode(LumoAVLTreeNode* node) {
  _node = node;
  _isBeforeFirst = _isAfterLast = node == nullptr;
}

void LumoAVLTreeCursor::Increment() {
  if (_node == nullptr) return;
  assert(!_isBeforeFirst && !_isAfterLast);
  _node = _node->GetNext();
  _isAfterLast = _node == nullptr;
}

void LumoAVLTreeCursor::Decrement() {
  if (_node == nullptr) return;
  assert(!_isBeforeFirst && !_isAfterLast);
  _node = _node->GetPrevious();
  _isBeforeFirst = _node == nullptr;
}

// The node after a removed one is never the one that is freed: a node with two sons frees the one
// before it.
void* LumoAVLTreeCursor::RemoveItemAndIncrement() {
  LumoAVLTreeNode* node = _node;
  Increment();
  return _tree->RemoveNode(node);
}

// A node with two sons takes over the item before it, so the cursor is where it belongs already.
void* LumoAVLTreeCursor::RemoveItemAndDecrement() {
  LumoAVLTreeNode* node = _node;
  if (node == nullptr || !node->HasTwoSons()) Decrement();
  return _tree->RemoveNode(node);
}
