#pragma once

#include <cstdio>
#include <string>

#include "xml/LumoXMLArena.h"
#include "xml/LumoXMLNode.h"

class LumoStream;

// The terms of one XML file. Its children are the roots, its name is the document type.
class LumoXMLDocument : public LumoXMLNode {
 public:
  LumoXMLDocument();
  ~LumoXMLDocument() override;

  // Deletes all roots; the document type stays.
  void Reset();
  // Where the terms that are read into the document live until the next reset.
  LumoXMLArena* GetArena() { return &_arena; }
  void AddRoot(LumoXMLNode* root) { AddChild(root); }
  LumoXMLNode* GetFirstRoot() const { return GetFirstChild(); }
  // The first root, of any type, whose name field equals `name`; null when there is none.
  LumoXMLNode* FindRoot(const char* name) const { return FindChild(name); }
  // Null when the document has no type.
  const char* GetDocumentType() const { return GetName(); }
  void SetDocumentType(const char* type) { SetName(type); }

  // Reads a whole file in place of the present contents. A syntax error is written to standard
  // error and leaves the document without a root.
  void Load(std::FILE* file);
  // False when the file can't be opened or read.
  bool Load(const char* fileName);
  // The file that was read last by its name; empty without one.
  const std::string& GetFileName() const { return _fileName; }

  // Offered to users of the class; the program itself does not call what follows.

  LumoXMLNode* GetLastRoot() const { return GetLastChild(); }
  // Write the document, each level indented by that number of blanks.
  void Print(LumoStream* stream, int indentation) const;
  void Print(std::FILE* file, int indentation) const;

 private:
  LumoXMLArena _arena;
  std::string _fileName;
};
