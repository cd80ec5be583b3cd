// The XML reader: bytes are read into a document, and the document is printed.

#include "OrvaFuzzSupport.h"
#include "xml/LumoXMLDocument.h"
#include "xml/LumoXMLParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  LumoFileStream* nowhere = OrvaGetNowhere();
  const OrvaBalanceCheck balance;
  LumoXMLParser parser;
  parser.SetErrorStream(nowhere);
  LumoXMLDocument document;
  const OrvaBytesFile file(OrvaToText(data, size));
  const int error = parser.ParseFile(&document, file.Get());
  OrvaRequire(error == 0 || document.GetFirstRoot() == nullptr, "a faulty document is empty");
  document.Print(nowhere, 2);
  return 0;
}
