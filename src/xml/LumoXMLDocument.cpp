#include "xml/LumoXMLDocument.h"

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoFileStream.h"
#include "xml/LumoXMLParser.h"
#include "xml/LumoXMLPrinter.h"

LumoXMLDocument::LumoXMLDocument() : LumoXMLNode(DOCUMENT) {
  LumoMemoryManager::TraceNew(this, "LumoXMLDocument");
}

LumoXMLDocument::~LumoXMLDocument() {
  Reset();  // before the memory goes in which the terms are
  LumoMemoryManager::TraceDelete(this, "LumoXMLDocument");
}

void LumoXMLDocument::Reset() {
  DeleteDescendants();
  _arena.Reset();
}

bool LumoXMLDocument::Load(const char* fileName) {
  std::FILE* file = std::fopen(fileName, "r");
  if (file == nullptr) return false;
  const int c = std::fgetc(file);  // a folder opens, but can't be read
  const bool isReadable = c != EOF || std::ferror(file) == 0;
  if (isReadable) {
    _fileName = fileName;
    std::ungetc(c, file);
    Load(file);
  }
  std::fclose(file);
  return isReadable;
}

void LumoXMLDocument::Load(std::FILE* file) {
  LumoXMLParser parser;
  parser.ParseFile(this, file);
}

// Offered to users of the class; the program itself does not call what follows.

void LumoXMLDocument::Print(LumoStream* stream, int indentation) const {
  LumoXMLPrinter printer;
  printer.SetIndentation(indentation);
  printer.PrintDocument(this, stream);
}

void LumoXMLDocument::Print(std::FILE* file, int indentation) const {
  LumoFileStream stream(false, file);
  Print(&stream, indentation);
}
