#include "check/OrvaFindings.h"

#include <iterator>
#include <memory>

#include "support/text/LumoStream.h"
#include "xml/LumoXMLDocument.h"
#include "xml/LumoXMLPrinter.h"

namespace {

constexpr const char* WARNING = "WARNING";
constexpr const char* NOTE = "NOTE";

struct Row {
  const char* name;
  const char* kind;
  const char* text;
};

// In the order of the findings. docs/checks.md has a row for each name.
constexpr Row FINDINGS[] = {
    {"unread-option", WARNING, "the command does not read \"%s\"; %s"},
    {"unread-element", WARNING, "nothing reads the element \"%s\" here"},
    {"unread-attribute", WARNING, "the element does not read \"%s\"; %s"},
    {"shadowed-option", WARNING, "\"%s\" is given twice, and this one is not read"},
    {"unsuitable-value", WARNING, "\"%s\" is \"on\" or \"off\", not \"%s\""},
    {"unknown-mode", WARNING, "\"%s\" is no mode: only \"append\" keeps what is in the file"},
    {"no-value", WARNING, "without a value \"%s\" becomes \"off\", 0 or nothing"},
    {"idle-option", WARNING, "\"%s\" has no effect on any result"},
    {"same-output", WARNING, "\"%s\" has a table of the command in line %s, which is lost"},
    {"limit-at-time-zero", WARNING,
     "the limit on probability applies at mission time 0, where \"%s\" may be unlikely; it depends "
     "on time"},
    {"handle-built-twice", WARNING,
     "\"%s\" has cutsets already: what the modules contribute is then there twice"},
    {"sil-numbers", NOTE, "the numbers of the levels are one below those of IEC 61508"},
    {"negation", WARNING,
     "below \"%s\": the search takes a negation literally, and diagrams refuse it"},
    {"nested-formula", WARNING, "in \"%s\" a formula is nested: write it as a gate of its own"},
    {"repeated-argument", WARNING,
     "\"%s\" is an argument of \"atleast\" twice: cutsets may be lost or wrong"},
    {"impossible-threshold", WARNING, "\"atleast\" of %s arguments is constant for this \"min\""},
    {"single-argument", WARNING,
     "\"%s\" is one basic event under another name: it is taken as certain"},
    {"house-event-value", WARNING, "cutsets are not computed while \"%s\" has a value"},
    {"undefined-event", WARNING, "\"%s\" is never defined: it is false, or has probability 0"},
    {"undefined-parameter", WARNING, "\"%s\" is never defined: it is 0"},
    {"redefined-event", WARNING, "\"%s\" is defined in line %s too; this definition counts"},
    {"redefined-parameter", WARNING, "\"%s\" is defined in line %s too; this definition counts"},
    {"unused-event", NOTE, "\"%s\" is never used"},
    {"unused-parameter", NOTE, "\"%s\" is never used"},
    {"probability-out-of-range", WARNING, "the probability of \"%s\" is %s"},
    {"undrawn-deviate", WARNING, "\"%s\" is inside \"%s\" and keeps its central value"},
    {"unreachable-case", WARNING, "no value of the \"switch\" comes from here"},
    {"tests-behind-parameter", WARNING,
     "a curve does not know the tests behind \"%s\": its averages may be far off"},
    {"no-failure-rate", WARNING,
     "\"%s\" has no failure rate: the failure intensity of \"%s\" is taken as 0"},
    {"multiplied-rates", WARNING,
     "the failure rates of the arguments are multiplied in the failure intensity of \"%s\""},
    {"derivative-as-intensity", WARNING,
     "the failure intensity of \"%s\" in \"%s\" is taken from the derivative, which is far from "
     "it"},
};
static_assert(std::size(FINDINGS) == static_cast<int>(OrvaFinding::NUMBER_OF_FINDINGS));

void Fill(std::string& text, const std::string& argument) {
  const std::size_t place = text.find("%s");
  if (place != std::string::npos) text.replace(place, 2, argument);
}

// The file that an element was read from.
std::string GetFileName(const LumoXMLNode* node) {
  while (node->GetParent() != nullptr) node = node->GetParent();
  return node->GetType() == LumoXMLNode::DOCUMENT
             ? static_cast<const LumoXMLDocument*>(node)->GetFileName()
             : std::string();
}

}  // namespace

const char* OrvaFindings::GetName(OrvaFinding finding) {
  return FINDINGS[static_cast<int>(finding)].name;
}

std::string OrvaFindings::DescribeLine(const LumoXMLNode* element, const LumoXMLNode* node) {
  const std::string line = std::to_string(element->GetLineNumber());
  const std::string fileName = GetFileName(element);
  return fileName == GetFileName(node) ? line : line + " of " + fileName;
}

void OrvaFindings::Report(OrvaFinding finding, const LumoXMLNode* node, const std::string& first,
                          const std::string& second) {
  _Report(finding, node, node, first, second);
}

void OrvaFindings::_Report(OrvaFinding finding, const LumoXMLNode* node, const LumoXMLNode* shown,
                           const std::string& first, const std::string& second) {
  const Row& row = FINDINGS[static_cast<int>(finding)];
  // From behind, since the arguments may have a "%s" themselves.
  std::string text = row.text;
  const std::size_t places = text.find("%s", text.find("%s") + 1);
  if (places != std::string::npos) text.replace(places, 2, second);
  Fill(text, first);
  if (row.kind == WARNING) _hasWarnings = true;
  if (const std::string fileName = GetFileName(node); fileName != _fileName) {
    _fileName = fileName;
    _stream->Put("In ");
    _stream->Put(fileName.c_str());
    _stream->Put(":\n\n");
  }
  _stream->Put(row.kind);
  _stream->Put(" [line ");
  _stream->Put(node->GetLineNumber());
  _stream->Put("]:\n");
  LumoXMLPrinter().PrintTerm(shown, _stream);
  _stream->Put("\n");
  _stream->Put(row.name);
  _stream->Put(": ");
  _stream->Put(text.c_str());
  _stream->Put("\n\n");
  _stream->Flush();
}

void OrvaFindings::ReportTag(OrvaFinding finding, const LumoXMLNode* node, const std::string& first,
                             const std::string& second) {
  const std::unique_ptr<LumoXMLNode> tag(LumoXMLNode::NewNode(node->GetName()));
  for (const LumoXMLAttribute* attribute = node->GetFirstAttribute(); attribute != nullptr;
       attribute = attribute->GetNext()) {
    tag->AddAttribute(attribute->GetName(), attribute->GetValue());
  }
  _Report(finding, node, tag.get(), first, second);
}

void OrvaFindings::ReportOnce(OrvaFinding finding, const LumoXMLNode* node,
                              const std::string& first, const std::string& second) {
  if (_reported.insert({finding, node}).second) Report(finding, node, first, second);
}
