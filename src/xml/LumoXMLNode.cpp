#include "xml/LumoXMLNode.h"

#include <cassert>
#include <new>

#include "support/containers/LumoList.h"
#include "support/memory/LumoMemoryManager.h"
#include "xml/LumoXMLArena.h"

LumoXMLNode::LumoXMLNode(Type type) : _type(type) {
  LumoMemoryManager::TraceNew(this, "LumoXMLNode");
}

LumoXMLNode::~LumoXMLNode() {
  DeleteDescendants();
  while (LumoXMLAttribute* attribute = _firstAttribute) {
    _firstAttribute = attribute->_next;
    LumoXMLAttribute::Delete(attribute);
  }
  if (_ownsName) LumoRawString::DeleteIfAny(_name);
  LumoMemoryManager::TraceDelete(this, "LumoXMLNode");
}

LumoXMLNode* LumoXMLNode::_New(Type type, const char* name) {
  auto* node = new LumoXMLNode(type);
  node->SetName(name);
  return node;
}

LumoXMLNode* LumoXMLNode::_NewInCell(void* cell, Type type, const char* name, int line) {
  auto* node = new (cell) LumoXMLNode(type);
  node->_name = const_cast<char*>(name);
  node->_lineNumber = line;
  node->_isInArena = true;
  node->_ownsName = false;
  return node;
}

LumoXMLNode* LumoXMLNode::NewInArena(LumoXMLArena* arena, const char* name, int line) {
  return _NewInCell(arena->NewCell(sizeof(LumoXMLNode)), NODE, name, line);
}

LumoXMLNode* LumoXMLNode::NewInArena(LumoXMLArena* arena, Type type, const char* text,
                                     std::size_t length, int line) {
  void* cell = arena->NewCell(sizeof(LumoXMLNode), text, length);
  return _NewInCell(cell, type, text, line);
}

void LumoXMLNode::Delete(void* item) {
  auto* node = static_cast<LumoXMLNode*>(item);
  if (node == nullptr) return;
  if (!node->_isInArena) return delete node;
  node->~LumoXMLNode();
  LumoXMLArena::Release(node);
}

LumoXMLNode* LumoXMLNode::NewNode(const char* name) { return _New(NODE, name); }

LumoXMLNode* LumoXMLNode::NewText(const char* text) { return _New(TEXT, text); }

LumoXMLNode* LumoXMLNode::NewCDATA(const char* text) { return _New(CDATA, text); }

LumoXMLNode* LumoXMLNode::NewComment(const char* text) { return _New(COMMENT, text); }

void LumoXMLNode::SetName(const char* name) {
  char* copy = LumoRawString::CopyIfAny(name);  // before the release: it may be the own name
  if (_ownsName) LumoRawString::DeleteIfAny(_name);
  _name = copy;
  _ownsName = true;
}

LumoXMLNode* LumoXMLNode::GetChild(int n, Type type) const {
  if (n < 1) return nullptr;
  int count = 0;
  for (LumoXMLNode* child = _firstChild; child != nullptr; child = child->_nextSibling) {
    if (child->_type == type && ++count == n) return child;
  }
  return nullptr;
}

LumoXMLNode* LumoXMLNode::FindChild(const char* name) const {
  LumoXMLNode* child = _firstChild;
  while (child != nullptr && child->CompareName(name) != 0) child = child->_nextSibling;
  return child;
}

void LumoXMLNode::InsertChildLast(LumoXMLNode* child) {
  assert(child->_parent == nullptr);
  assert((_firstChild == nullptr) == (_lastChild == nullptr));
  child->_parent = this;
  child->_previousSibling = _lastChild;
  child->_nextSibling = nullptr;
  (_lastChild == nullptr ? _firstChild : _lastChild->_nextSibling) = child;
  _lastChild = child;
}

// Bottom-up and without recursion, whatever the depth of the tree: each node is deleted when it
// has become the first child of its parent and has no child left of its own.
void LumoXMLNode::DeleteDescendants() {
  LumoXMLNode* node = _firstChild;
  while (node != nullptr) {
    if (node->_firstChild != nullptr) {
      node = node->_firstChild;
      continue;
    }
    LumoXMLNode* parent = node->_parent;
    assert(parent != nullptr && parent->_firstChild == node);
    LumoXMLNode* next = node->_nextSibling;
    parent->_firstChild = next;
    if (next == nullptr) parent->_lastChild = nullptr;
    Delete(node);
    if (next == nullptr && parent != this) next = parent;
    node = next;
  }
}

void LumoXMLNode::AddAttribute(LumoXMLAttribute* attribute) {
  assert((_firstAttribute == nullptr) == (_lastAttribute == nullptr));
  assert(attribute->_next == nullptr);
  (_lastAttribute == nullptr ? _firstAttribute : _lastAttribute->_next) = attribute;
  _lastAttribute = attribute;
}

void LumoXMLNode::DeleteFirstChild() {
  LumoXMLNode* child = _firstChild;
  assert(child != nullptr && child->_previousSibling == nullptr);
  _firstChild = child->_nextSibling;
  (_firstChild == nullptr ? _lastChild : _firstChild->_previousSibling) = nullptr;
  Delete(child);
}

LumoXMLAttribute* LumoXMLNode::FindAttribute(const char* name) const {
  LumoXMLAttribute* attribute = _firstAttribute;
  while (attribute != nullptr && attribute->CompareName(name) != 0) attribute = attribute->_next;
  return attribute;
}

const char* LumoXMLNode::GetAttributeValue(const char* name) const {
  const LumoXMLAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? nullptr : attribute->GetValue();
}

double LumoXMLNode::GetAttributeValueAsDouble(const char* name, double defaultValue) const {
  const LumoXMLAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? defaultValue : attribute->GetValueAsDouble();
}

// Offered to users of the class; the program itself does not call what follows.

char* LumoXMLNode::CopyName() const { return LumoRawString::CopyIfAny(_name); }

int LumoXMLNode::CompareName(const void* node, const void* name) {
  return static_cast<const LumoXMLNode*>(node)->CompareName(static_cast<const char*>(name));
}

int LumoXMLNode::CompareNames(const void* a, const void* b) {
  return static_cast<const LumoXMLNode*>(a)->CompareNames(static_cast<const LumoXMLNode*>(b));
}

LumoXMLNode* LumoXMLNode::GetChild(int n) const {
  if (n < 1) return nullptr;
  LumoXMLNode* child = _firstChild;
  for (int i = 1; child != nullptr && i < n; ++i) child = child->_nextSibling;
  return child;
}

int LumoXMLNode::GetNumberOfChildren() const {
  int count = 0;
  for (const LumoXMLNode* child = _firstChild; child != nullptr; child = child->_nextSibling) {
    ++count;
  }
  return count;
}

int LumoXMLNode::GetNumberOfChildren(Type type) const {
  int count = 0;
  for (const LumoXMLNode* child = _firstChild; child != nullptr; child = child->_nextSibling) {
    count += static_cast<int>(child->_type == type);
  }
  return count;
}

int LumoXMLNode::GetNumberOfChildNodesOfName(const char* name) const {
  int count = 0;
  for (const LumoXMLNode* child = _firstChild; child != nullptr; child = child->_nextSibling) {
    count += static_cast<int>(child->IsNodeOfName(name));
  }
  return count;
}

int LumoXMLNode::CountChildren(LumoContainer::Match match, const void* key) const {
  const LumoFunctionComparator comparator(match);
  return CountChildren(&comparator, key);
}

int LumoXMLNode::CountChildren(const LumoComparator* comparator, const void* key) const {
  LumoList matching;
  CollectChildren(comparator, key, &matching);
  return matching.GetNumberOfItems();
}

void LumoXMLNode::CollectChildren(LumoContainer::Match match, const void* key,
                                  LumoContainer* target) const {
  const LumoFunctionComparator comparator(match);
  CollectChildren(&comparator, key, target);
}

void LumoXMLNode::CollectChildren(const LumoComparator* comparator, const void* key,
                                  LumoContainer* target) const {
  for (LumoXMLNode* child = _firstChild; child != nullptr; child = child->_nextSibling) {
    if (comparator->Compare(child, key) == 0) target->InsertItem(child);
  }
}

void LumoXMLNode::InsertChildFirst(LumoXMLNode* child) {
  assert(child->_parent == nullptr);
  child->_parent = this;
  child->_previousSibling = nullptr;
  child->_nextSibling = _firstChild;
  (_firstChild == nullptr ? _lastChild : _firstChild->_previousSibling) = child;
  _firstChild = child;
}

void LumoXMLNode::InsertChildBefore(LumoXMLNode* child, LumoXMLNode* before) {
  if (before == nullptr || before->_parent != this) return;
  if (before == _firstChild) return InsertChildFirst(child);
  child->_parent = this;
  child->_previousSibling = before->_previousSibling;
  assert(child->_previousSibling != nullptr);
  child->_nextSibling = before;
  before->_previousSibling->_nextSibling = child;
  before->_previousSibling = child;
}

void LumoXMLNode::InsertChildInPosition(LumoXMLNode* child, int n) {
  LumoXMLNode* before = GetChild(n < 1 ? 1 : n);
  if (before == nullptr) {
    InsertChildLast(child);
  } else {
    InsertChildBefore(child, before);
  }
}

int LumoXMLNode::GetAttributeValueAsInt(const char* name, int defaultValue) const {
  const LumoXMLAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? defaultValue : attribute->GetValueAsInt();
}

bool LumoXMLNode::GetAttributeValueAsBool(const char* name, bool defaultValue) const {
  const LumoXMLAttribute* attribute = FindAttribute(name);
  return attribute == nullptr ? defaultValue : attribute->GetValueAsBool();
}

void LumoXMLNode::_RemoveAttribute(LumoXMLAttribute* attribute) {
  LumoXMLAttribute* previous = nullptr;
  for (auto* each = _firstAttribute; each != attribute; each = each->_next) previous = each;
  (previous == nullptr ? _firstAttribute : previous->_next) = attribute->_next;
  if (_lastAttribute == attribute) _lastAttribute = previous;
  attribute->_next = nullptr;
}

// A cursor over a list of the attributes as they are when it is made; what is removed through it
// leaves the element as well.
class LumoXMLAttributeCursor : private LumoList, public LumoListCursor {
 public:
  explicit LumoXMLAttributeCursor(LumoXMLNode* node) : LumoListCursor(this), _node(node) {
    for (auto* each = node->GetFirstAttribute(); each != nullptr; each = each->GetNext()) {
      InsertItemLast(each);
    }
  }
  void* RemoveItemAndIncrement() override {
    return _Remove(LumoListCursor::RemoveItemAndIncrement());
  }
  void* RemoveItemAndDecrement() override {
    return _Remove(LumoListCursor::RemoveItemAndDecrement());
  }

 private:
  void* _Remove(void* item) {
    if (item != nullptr) _node->_RemoveAttribute(static_cast<LumoXMLAttribute*>(item));
    return item;
  }

  LumoXMLNode* _node;
};

LumoCursor* LumoXMLNode::NewCursorOnAttributes() { return new LumoXMLAttributeCursor(this); }
