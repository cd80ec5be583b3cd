#pragma once

#include "support/containers/LumoContainer.h"
#include "support/containers/LumoList.h"

class LumoAVLTreeNode {
 public:
  void* GetItem() const { return _item; }
  // The neighbours in the tree's order, null at its ends.
  LumoAVLTreeNode* GetNext() const;
  LumoAVLTreeNode* GetPrevious() const;
  bool HasTwoSons() const { return _left != nullptr && _right != nullptr; }

 private:
  friend class LumoAVLTree;

  LumoAVLTreeNode(void* item, LumoAVLTreeNode* father) : _item(item), _father(father) {}
  static int _GetHeight(const LumoAVLTreeNode* node) { return node == nullptr ? 0 : node->_height; }
  void _UpdateHeight();
  // The height of the right subtree minus that of the left one.
  int _GetBalance() const { return _GetHeight(_right) - _GetHeight(_left); }
  LumoAVLTreeNode* _GetLeftmost();
  LumoAVLTreeNode* _GetRightmost();

  void* _item;
  LumoAVLTreeNode* _left = nullptr;
  LumoAVLTreeNode* _right = nullptr;
  LumoAVLTreeNode* _father;
  int _height = 1;
};

// Items kept in the order of a function given at construction. Equal items are all kept, a new
// one after those it equals. Look-up, insertion and removal are logarithmic.
class LumoAVLTree : public LumoContainer {
 public:
  explicit LumoAVLTree(Order order);
  ~LumoAVLTree() override;

  using LumoContainer::DeleteItems;
  using LumoContainer::NewCursor;

  int GetNumberOfItems() const override { return _numberOfItems; }
  void* GetFirstItem() const override { return _GetItem(GetFirstNode()); }
  void* GetLastItem() const override { return _GetItem(GetLastNode()); }
  void* GetNthItem(int n) const override { return _GetItem(GetNthNode(n)); }
  // Descend by match(item of the node, key): 0 is found, negative goes right, positive left; so
  // the match must agree with the tree's order.
  void* LookForItem(Match match, const void* key) const override;
  void* LookForItem(const LumoComparator* comparator, const void* key) const override;
  void InsertItem(void* item) override;
  // Removes the first item met on the way down that compares equal, whether or not it is the
  // same pointer.
  void* RemoveItem(const void* item) override;
  void* RemoveNthItem(int n) override { return RemoveNode(GetNthNode(n)); }
  void* RemoveFirstItem() override { return RemoveNode(GetFirstNode()); }
  void* RemoveLastItem() override { return RemoveNode(GetLastNode()); }
  void DeleteItems(Release release) override;
  LumoCursor* NewCursor() override;

  LumoAVLTreeNode* GetFirstNode() const;
  LumoAVLTreeNode* GetLastNode() const;
  LumoAVLTreeNode* GetNthNode(int n) const;
  // The first node met on the way down whose item compares equal; the node of the very item.
  LumoAVLTreeNode* LookForNode(const void* item) const;
  LumoAVLTreeNode* LookForNodeOfItem(const void* item) const;
  // Removes the node's item, which is returned. A node with two sons takes the item of the node
  // before it, which goes instead. Null is ignored.
  void* RemoveNode(LumoAVLTreeNode* node);

  // Offered to users of the class; the program itself does not call what follows.

  // New containers, owned by the caller. Set operations go by the tree's order: an item is in the
  // other tree when one there compares equal to it.
  LumoList* CopyAsList() const;
  LumoAVLTree* BuildUnion(const LumoAVLTree* other) const;
  LumoAVLTree* BuildIntersection(const LumoAVLTree* other) const;
  LumoAVLTree* BuildDifference(const LumoAVLTree* other) const;

 private:
  static void* _GetItem(const LumoAVLTreeNode* node) {
    return node == nullptr ? nullptr : node->_item;
  }
  LumoAVLTreeNode*& _GetLinkTo(LumoAVLTreeNode* node);
  void _Unlink(LumoAVLTreeNode* node);
  void _RebalanceFrom(LumoAVLTreeNode* node);
  void _RotateLeft(LumoAVLTreeNode* node);
  void _RotateRight(LumoAVLTreeNode* node);
  void _InsertItemsOf(const LumoAVLTree* source, const LumoAVLTree* filter, bool isInFilter);

  Order _order;
  LumoAVLTreeNode* _root = nullptr;
  int _numberOfItems = 0;
};

class LumoAVLTreeCursor : public LumoCursor {
 public:
  explicit LumoAVLTreeCursor(LumoAVLTree* tree);
  ~LumoAVLTreeCursor() override;

  bool IsBeforeFirstItem() const override { return _isBeforeFirst; }
  bool IsAfterLastItem() const override { return _isAfterLast; }
  bool IsOnFirstItem() const override;
  bool IsOnLastItem() const override;
  void ResetOnFirstItem() override { _ResetOnNode(_tree->GetFirstNode()); }
  void ResetOnLastItem() override { _ResetOnNode(_tree->GetLastNode()); }
  void ResetInPosition(int n) override { _ResetOnNode(_tree->GetNthNode(n)); }
  void ResetOnItem(const void* item) override { _ResetOnNode(_tree->LookForNodeOfItem(item)); }
  void Increment() override;
  void Decrement() override;
  void* GetItem() const override { return _node == nullptr ? nullptr : _node->GetItem(); }
  void* RemoveItemAndIncrement() override;
  void* RemoveItemAndDecrement() override;

 private:
  void _ResetOnNode(LumoAVLTreeNode* node);

  LumoAVLTree* _tree;
  LumoAVLTreeNode* _node = nullptr;
  bool _isBeforeFirst = true;
  bool _isAfterLast = true;
};
