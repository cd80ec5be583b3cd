#include "xml/LumoXMLDocument.h"

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoFileStream.h"
#include "xml/LumoXMLParser.h"
#include "xml/LumoXMLPrinter.h"

LumoXMLDocument::LumoXMLDocument() : LumoXMLNode(DOCUMENT) {
  LumoMemoryManager::TraceNew(this, "LumoXMLDocument");
}

LumoXMLDocument::~LumoXMLDocument() { LumoMemoryManager::TraceDelete(this, "LumoXMLDocument"); }

void LumoXMLDocument::Load(std::FILE* file) {
  LumoXMLParser parser;
  parser.ParseFile(this, file);
}

void LumoXMLDocument::Print(LumoStream* stream, int indentation) const {
  LumoXMLPrinter printer;
  printer.SetIndentation(indentation);
  printer.PrintDocument(this, stream);
}

void LumoXMLDocument::Print(std::FILE* file, int indentation) const {
  LumoFileStream stream(false, file);
  Print(&stream, indentation);
}
