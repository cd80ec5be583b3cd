#include "xml/LumoXMLPrinter.h"

#include <cassert>
#include <string>

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"
#include "support/text/LumoStream.h"
#include "support/values/LumoConstant.h"
#include "xml/LumoXMLDocument.h"

namespace {
constexpr const char* DEFAULT_INDENTATION = "  ";
}

LumoXMLPrinter::LumoXMLPrinter() : _indentation(LumoRawString::Copy(DEFAULT_INDENTATION)) {
  LumoMemoryManager::TraceNew(this, "LumoXMLPrinter");
}

LumoXMLPrinter::~LumoXMLPrinter() {
  LumoRawString::Delete(_indentation);
  LumoMemoryManager::TraceDelete(this, "LumoXMLPrinter");
}

void LumoXMLPrinter::PrintIndentation(LumoStream* stream) {
  for (int i = 0; i < _depth; ++i) stream->Put(_indentation);
}

void LumoXMLPrinter::_PrintHeader(const char* documentType, LumoStream* stream) {
  stream->Put("<?xml version=\"1.0\"?>\n");
  if (documentType == nullptr) return;
  stream->Put("<!DOCTYPE ");
  stream->Put(documentType);
  stream->Put(">\n");
}

void LumoXMLPrinter::PrintTag(const char* name, LumoStream* stream) {
  PrintOpenTagOpening(name, stream);
  PrintOpenTagEnding(stream);
}

void LumoXMLPrinter::PrintOpenTag(const char* name, LumoStream* stream) {
  PrintOpenTagOpening(name, stream);
  PrintOpenTagClosing(stream);
}

void LumoXMLPrinter::PrintOpenTagOpening(const char* name, LumoStream* stream) {
  PrintIndentation(stream);
  stream->Put("<");
  stream->Put(name);
}

void LumoXMLPrinter::PrintOpenTagClosing(LumoStream* stream) {
  stream->Put(" >\n");
  IncrementDepth();
}

void LumoXMLPrinter::PrintOpenTagEnding(LumoStream* stream) { stream->Put(" />\n"); }

void LumoXMLPrinter::PrintCloseTag(const char* name, LumoStream* stream) {
  DecrementDepth();
  PrintIndentation(stream);
  stream->Put("</");
  stream->Put(name);
  stream->Put(">\n");
}

void LumoXMLPrinter::_PrintAttributeOpening(const char* name, LumoStream* stream) {
  stream->Put(" ");
  stream->Put(name);
  stream->Put("=\"");
}

void LumoXMLPrinter::PrintAttribute(const char* name, bool value, LumoStream* stream) {
  PrintAttribute(name, value ? "true" : "false", stream);
}

void LumoXMLPrinter::PrintAttribute(const char* name, int value, LumoStream* stream) {
  _PrintAttributeOpening(name, stream);
  stream->Put(value);
  stream->Put("\"");
}

void LumoXMLPrinter::PrintAttribute(const char* name, double value, LumoStream* stream) {
  _PrintAttributeOpening(name, stream);
  stream->Put(value);
  stream->Put("\"");
}

void LumoXMLPrinter::PrintAttribute(const char* name, const char* value, LumoStream* stream) {
  _PrintAttributeOpening(name, stream);
  stream->Put(value);
  stream->Put("\"");
}

void LumoXMLPrinter::PrintAttribute(const char* name, const LumoConstant* value,
                                    LumoStream* stream) {
  if (value->IsPointer()) return PrintAttribute(name, "nil", stream);
  _PrintAttributeOpening(name, stream);
  stream->Put(value);
  stream->Put("\"");
}

void LumoXMLPrinter::PrintAttribute(const LumoXMLAttribute* attribute, LumoStream* stream) {
  PrintAttribute(attribute->GetName(), attribute->GetValue(), stream);
}

void LumoXMLPrinter::PrintText(const char* text, LumoStream* stream) {
  stream->Put(text);
  stream->Put("\n");
}

void LumoXMLPrinter::PrintText(const LumoXMLNode* node, LumoStream* stream) {
  PrintText(node->GetName(), stream);
}

void LumoXMLPrinter::PrintCData(const char* text, LumoStream* stream) {
  stream->Put("<![CDATA\n");
  stream->Put(text);
  stream->Put("]]>\n");
}

void LumoXMLPrinter::PrintCData(const LumoXMLNode* node, LumoStream* stream) {
  PrintCData(node->GetName(), stream);
}

void LumoXMLPrinter::PrintComment(const char* text, LumoStream* stream) {
  PrintIndentation(stream);
  stream->Put("<!");
  stream->Put(text);
  stream->Put(">\n");
}

void LumoXMLPrinter::PrintComment(const LumoXMLNode* node, LumoStream* stream) {
  PrintComment(node->GetName(), stream);
}

void LumoXMLPrinter::PrintTerm(const LumoXMLNode* node, LumoStream* stream) {
  switch (node->GetType()) {
    case LumoXMLNode::TEXT:
      return PrintText(node, stream);
    case LumoXMLNode::CDATA:
      return PrintCData(node, stream);
    case LumoXMLNode::NODE:
      return PrintNode(node, stream);
    case LumoXMLNode::COMMENT:
      return PrintComment(node, stream);
    case LumoXMLNode::DOCUMENT:
      return;
  }
}

void LumoXMLPrinter::PrintNode(const LumoXMLNode* node, LumoStream* stream) {
  PrintOpenTagOpening(node->GetName(), stream);
  for (const LumoXMLAttribute* attribute = node->GetFirstAttribute(); attribute != nullptr;
       attribute = attribute->GetNext()) {
    PrintAttribute(attribute, stream);
  }
  if (!node->HasChild()) return PrintOpenTagEnding(stream);
  PrintOpenTagClosing(stream);
  for (const LumoXMLNode* child = node->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    PrintTerm(child, stream);
  }
  PrintCloseTag(node->GetName(), stream);
}

void LumoXMLPrinter::PrintDocument(const LumoXMLDocument* document, LumoStream* stream) {
  _PrintHeader(document->GetDocumentType(), stream);
  for (const LumoXMLNode* root = document->GetFirstRoot(); root != nullptr;
       root = root->GetNextSibling()) {
    PrintTerm(root, stream);
  }
  stream->Flush();
}

// Offered to users of the class; the program itself does not call what follows.

void LumoXMLPrinter::SetIndentation(int n) {
  assert(n >= 0);
  SetIndentation(std::string(static_cast<std::size_t>(n), ' ').c_str());
}

void LumoXMLPrinter::SetIndentation(const char* unit) {
  LumoRawString::Replace(_indentation, unit);
}

void LumoXMLPrinter::PrintDocumentHeader(const char* documentType, LumoStream* stream) {
  _PrintHeader(documentType, stream);
  _depth = 0;
}
