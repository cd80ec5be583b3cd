// The model reader: bytes are read as a model, which is printed and read again, then completed,
// checked, evaluated when nothing is wrong with it, and printed once more.

#include <cstdlib>
#include <string>

#include "OrvaFuzzSupport.h"
#include "driver/OrvaInterpreter.h"
#include "model/OrvaModel.h"
#include "printer/OrvaPrinter.h"
#include "reader/OrvaChecker.h"
#include "reader/OrvaParser.h"
#include "xml/LumoXMLDocument.h"

namespace {

constexpr double MISSION_TIME = 1.0;

// Both return the error indicator.

int Read(OrvaParser* parser, std::string_view bytes, OrvaModel* model) {
  const OrvaBytesFile file(bytes);
  LumoXMLDocument document;
  int error = parser->ParseFile(&document, file.Get());
  if (error == 0) parser->DownloadModel(error, &document, model);
  return error;
}

int Print(OrvaPrinter* printer, OrvaModel* model, std::string& text) {
  int error = 0;
  LumoXMLDocument* document;
  printer->UploadModel(error, model, document);
  if (document == nullptr) return error;
  char* bytes;
  std::size_t size;
  std::FILE* file = open_memstream(&bytes, &size);
  LumoFileStream stream(false, file);
  printer->PrintDocument(document, &stream);
  std::fclose(file);
  text.assign(bytes, size);
  std::free(bytes);
  delete document;
  return error;
}

// What is printed can be read, and is then printed alike.
void CheckPrinting(OrvaParser* parser, OrvaPrinter* printer, OrvaModel* model) {
  std::string text;
  if (Print(printer, model, text) != 0) return;
  OrvaModel again;
  std::string textAgain;
  OrvaRequire(Read(parser, text, &again) == 0, "what is printed can be read");
  OrvaRequire(Print(printer, &again, textAgain) == 0, "what is printed and read can be printed");
  OrvaRequire(text == textAgain, "what is printed and read is printed alike");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static OrvaInterpreter* const INTERPRETER = [] {
    auto* interpreter = new OrvaInterpreter();
    interpreter->GetParser()->SetErrorStream(OrvaGetNowhere());
    interpreter->GetParser()->GetMessenger();
    interpreter->GetParser()->GetPrinter();
    return interpreter;
  }();
  OrvaParser* parser = INTERPRETER->GetParser();
  OrvaPrinter* printer = INTERPRETER->GetPrinter();
  OrvaChecker* checker = INTERPRETER->GetChecker();
  const OrvaBalanceCheck balance;
  OrvaModel model;
  int error = Read(parser, OrvaToText(data, size), &model);
  if (error == 0) checker->CheckCyclesOfParameters(error, &model);
  if (error != 0) return 0;
  CheckPrinting(parser, printer, &model);
  model.Complete();
  checker->CheckModel(error, &model);
  if (error == 0) model.ComputeProbabilitiesOfBasicEvents(MISSION_TIME);
  std::string text;
  Print(printer, &model, text);
  return 0;
}
