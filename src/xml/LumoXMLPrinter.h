#pragma once

class LumoConstant;
class LumoStream;
class LumoXMLAttribute;
class LumoXMLDocument;
class LumoXMLNode;

// Writes XML, whole trees or piece by piece, each tag on a line of its own behind one indentation
// unit per level. Nothing is escaped: a value that holds a double quote or a "<" is written as it
// is. Text goes through the stream, which interprets backslash sequences.
class LumoXMLPrinter {
 public:
  LumoXMLPrinter();
  virtual ~LumoXMLPrinter();
  LumoXMLPrinter(const LumoXMLPrinter&) = delete;
  LumoXMLPrinter& operator=(const LumoXMLPrinter&) = delete;

  virtual void PrintTag(const char* name, LumoStream* stream);             // <name />
  virtual void PrintOpenTag(const char* name, LumoStream* stream);         // <name >, one deeper
  virtual void PrintOpenTagOpening(const char* name, LumoStream* stream);  // <name
  virtual void PrintOpenTagClosing(LumoStream* stream);                    //  >, one deeper
  virtual void PrintOpenTagEnding(LumoStream* stream);                     //  />
  virtual void PrintCloseTag(const char* name, LumoStream* stream);        // one up, then </name>
  // A blank, then name="value": "true" or "false", the stream's integers and reals, the text as
  // it is, and by its type a constant (nil and pointers as "nil").
  virtual void PrintAttribute(const char* name, bool value, LumoStream* stream);
  virtual void PrintAttribute(const char* name, int value, LumoStream* stream);
  virtual void PrintAttribute(const char* name, double value, LumoStream* stream);
  virtual void PrintAttribute(const char* name, const char* value, LumoStream* stream);
  virtual void PrintAttribute(const char* name, const LumoConstant* value, LumoStream* stream);
  virtual void PrintAttribute(const LumoXMLAttribute* attribute, LumoStream* stream);
  // The text on a line of its own, at the margin.
  virtual void PrintText(const char* text, LumoStream* stream);
  virtual void PrintText(const LumoXMLNode* node, LumoStream* stream);
  // "<![CDATA", a newline, the text and "]]>". The opening bracket that a reader requires is not
  // written: this is the defined output.
  virtual void PrintCData(const char* text, LumoStream* stream);
  virtual void PrintCData(const LumoXMLNode* node, LumoStream* stream);
  // "<!", the text and ">". A comment that was read brings its dashes along.
  virtual void PrintComment(const LumoXMLNode* node, LumoStream* stream);
  virtual void PrintComment(const char* text, LumoStream* stream);

  void PrintIndentation(LumoStream* stream);

  // A term with its subtree; a document prints nothing.
  void PrintTerm(const LumoXMLNode* node, LumoStream* stream);
  // An element with its attributes and its subtree.
  void PrintNode(const LumoXMLNode* node, LumoStream* stream);
  // The header, then every root; the stream is flushed. The depth is not reset.
  void PrintDocument(const LumoXMLDocument* document, LumoStream* stream);

  void IncrementDepth() { ++_depth; }
  void DecrementDepth() { --_depth; }

  // Offered to users of the class; the program itself does not call what follows.

  // The XML declaration and, for a type that is not null, the document type. Back to depth 0.
  void PrintDocumentHeader(const char* documentType, LumoStream* stream);
  // The unit: n blanks (n ≥ 0), or a copy of a text. Two blanks at construction.
  void SetIndentation(int n);
  void SetIndentation(const char* unit);
  const char* GetIndentation() const { return _indentation; }
  int GetDepth() const { return _depth; }
  void SetDepth(int depth) { _depth = depth; }

 private:
  void _PrintHeader(const char* documentType, LumoStream* stream);
  void _PrintAttributeOpening(const char* name, LumoStream* stream);

  int _depth = 0;
  char* _indentation;
};
