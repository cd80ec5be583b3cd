#pragma once

#include "support/containers/LumoContainer.h"
#include "xml/LumoXMLAttribute.h"

class LumoXMLArena;

// A term of an XML document: an element, a text, a CDATA section, a comment, or the document
// itself. A node owns its attributes and its children. Positions of children count from 1. No
// operation reports an error: what is absent gives null, 0 or the caller's default.
class LumoXMLNode {
 public:
  enum Type : unsigned char { TEXT = 0, CDATA = 1, NODE = 2, COMMENT = 3, DOCUMENT = 4 };

  explicit LumoXMLNode(Type type);
  virtual ~LumoXMLNode();
  LumoXMLNode(const LumoXMLNode&) = delete;
  LumoXMLNode& operator=(const LumoXMLNode&) = delete;

  // New terms, owned by the caller until they are added to a node. The text is copied.
  static LumoXMLNode* NewNode(const char* name);
  static LumoXMLNode* NewText(const char* text);
  static LumoXMLNode* NewCDATA(const char* text);
  static LumoXMLNode* NewComment(const char* text);

  // Terms in a document's memory: an element, whose name is there already, and any other term.
  static LumoXMLNode* NewInArena(LumoXMLArena* arena, const char* name, int line);
  static LumoXMLNode* NewInArena(LumoXMLArena* arena, Type type, const char* text,
                                 std::size_t length, int line);
  static void Delete(void* node);

  Type GetType() const { return _type; }
  bool IsNode() const { return _type == NODE; }
  bool IsComment() const { return _type == COMMENT; }

  // An element's tag name, the type of a document (which may be null), the text of other terms.
  const char* GetName() const { return _name; }
  // The text of a term that is not an element; null for an element.
  const char* GetText() const { return IsNode() ? nullptr : _name; }
  void SetName(const char* name);
  // Whether the term is an element of that very name.
  bool IsNodeOfName(const char* name) const { return IsNode() && CompareName(name) == 0; }
  int CompareName(const char* name) const { return LumoRawString::Compare(_name, name); }
  // The line on which the term began in its file; 0 for a term that was not read from one.
  int GetLineNumber() const { return _lineNumber; }
  void SetLineNumber(int line) { _lineNumber = line; }

  LumoXMLNode* GetNextSibling() const { return _nextSibling; }
  LumoXMLNode* GetFirstChild() const { return _firstChild; }
  bool HasChild() const { return _firstChild != nullptr; }
  // The n-th child of a type.
  LumoXMLNode* GetChild(int n, Type type) const;
  // The first child, of any type, whose name field equals `name`: a text too, by what it says.
  LumoXMLNode* FindChild(const char* name) const;

  // The child must belong to no node yet; this one takes it over.
  void AddChild(LumoXMLNode* child) { InsertChildLast(child); }
  void InsertChildLast(LumoXMLNode* child);
  // Delete every child, or the first one, which must exist, with its subtree.
  void DeleteDescendants();
  void DeleteFirstChild();

  // Appends an attribute, which the node takes over; a name may occur twice.
  void AddAttribute(LumoXMLAttribute* attribute);
  template <class Value>
  void AddAttribute(const char* name, Value value) {
    AddAttribute(new LumoXMLAttribute(name, value));
  }
  // The first attribute of that name, or null.
  LumoXMLAttribute* FindAttribute(const char* name) const;
  // Its text, or null; its typed view whatever its text, or the default when it is absent.
  const char* GetAttributeValue(const char* name) const;
  double GetAttributeValueAsDouble(const char* name, double defaultValue) const;
  LumoXMLAttribute* GetFirstAttribute() const { return _firstAttribute; }

  // Offered to users of the class; the program itself does not call what follows.

  bool IsText() const { return _type == TEXT; }
  bool IsCDATA() const { return _type == CDATA; }
  // A new raw string, owned by the caller.
  char* CopyName() const;
  int CompareNames(const LumoXMLNode* other) const { return CompareName(other->_name); }
  static int CompareName(const void* node, const void* name);
  static int CompareNames(const void* a, const void* b);

  LumoXMLNode* GetParent() const { return _parent; }
  LumoXMLNode* GetPreviousSibling() const { return _previousSibling; }
  LumoXMLNode* GetLastChild() const { return _lastChild; }
  // The n-th child of any type, or among the elements.
  LumoXMLNode* GetChild(int n) const;
  LumoXMLNode* GetChildNode(int n) const { return GetChild(n, NODE); }
  int GetNumberOfChildren() const;
  int GetNumberOfChildren(Type type) const;
  int GetNumberOfChildNodes() const { return GetNumberOfChildren(NODE); }
  int GetNumberOfChildNodesOfName(const char* name) const;
  bool HasChild(const char* name) const { return FindChild(name) != nullptr; }
  // The children that a matching function picks (0 for a match): how many, and into a container.
  int CountChildren(LumoContainer::Match match, const void* key) const;
  int CountChildren(const LumoComparator* comparator, const void* key) const;
  void CollectChildren(LumoContainer::Match match, const void* key, LumoContainer* target) const;
  void CollectChildren(const LumoComparator* comparator, const void* key,
                       LumoContainer* target) const;
  void InsertChildFirst(LumoXMLNode* child);
  // Does nothing unless `before` is a child of this node.
  void InsertChildBefore(LumoXMLNode* child, LumoXMLNode* before);
  // Before the n-th child (n ≤ 1 means the first), or last when there is none.
  void InsertChildInPosition(LumoXMLNode* child, int n);

  bool HasAttribute() const { return _firstAttribute != nullptr; }
  // As GetAttributeValueAsDouble.
  int GetAttributeValueAsInt(const char* name, int defaultValue) const;
  bool GetAttributeValueAsBool(const char* name, bool defaultValue) const;
  // A new cursor, owned by the caller, to whom removed attributes are handed over.
  LumoCursor* NewCursorOnAttributes();

 private:
  friend class LumoXMLAttributeCursor;

  static LumoXMLNode* _New(Type type, const char* name);
  static LumoXMLNode* _NewInCell(void* cell, Type type, const char* name, int line);
  void _RemoveAttribute(LumoXMLAttribute* attribute);

  // A document is millions of these: the fields that are narrow share a word.
  char* _name = nullptr;
  int _lineNumber = 0;
  Type _type;
  bool _isInArena = false;
  bool _ownsName = true;  // or it is in the arena
  LumoXMLAttribute* _firstAttribute = nullptr;
  LumoXMLAttribute* _lastAttribute = nullptr;
  LumoXMLNode* _parent = nullptr;
  LumoXMLNode* _previousSibling = nullptr;
  LumoXMLNode* _nextSibling = nullptr;
  LumoXMLNode* _firstChild = nullptr;
  LumoXMLNode* _lastChild = nullptr;
};
