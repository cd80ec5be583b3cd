// What orva-check finds, and that it finds nothing else: each row of the tables is a study with all
// its findings, by name and line.

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <span>
#include <sstream>
#include <string>
#include <unistd.h>

#include "check/OrvaScriptCheck.h"
#include "driver/OrvaInterpreter.h"
#include "reader/OrvaParser.h"
#include "support/text/LumoFileStream.h"

namespace {

// A model is below a top event T; without one, T is "A or B", and B depends on time.
struct Case {
  std::string script;
  std::string model;
  std::string findings;
};

const std::string BUILD = "<build><minimal-cutsets/></build>";
const std::string MISSION_TIME = "<mission-time/>";

std::string Float(const char* value) { return std::string("<float value=\"") + value + "\"/>"; }
const std::string LAW = "<exponential>" + Float("1e-3") + MISSION_TIME + "</exponential>";
const std::string TEST =
    "<periodic-test>" + Float("1e-3") + Float("9") + Float("9") + MISSION_TIME + "</periodic-test>";
const std::string DEVIATE = "<normal-deviate>" + Float("0.1") + Float("0.01") + "</normal-deviate>";
const std::string REFER = "<parameter name=\"P\"/>";

// A line each.
std::string Gate(const char* name, const std::string& formula) {
  return std::string("<define-gate name=\"") + name + "\">" + formula + "</define-gate>\n";
}
std::string Basic(const char* name, const std::string& expression) {
  return std::string("<define-basic-event name=\"") + name + "\">" + expression +
         "</define-basic-event>\n";
}
std::string Parameter(const std::string& expression) {
  return "<define-parameter name=\"P\">" + expression + "</define-parameter>\n";
}
std::string Event(const char* name) { return std::string("<event name=\"") + name + "\"/>"; }

const std::string OR = Gate("T", "<or>" + Event("A") + Event("B") + "</or>");
const std::string B = Basic("B", Float("0.1"));
const std::string A_AND_B = Basic("A", Float("0.1")) + B;
const std::string STUDY = OR + Basic("A", Float("0.1")) + Basic("B", LAW);
// The event A with an expression, on line 3.
std::string WithA(const std::string& expression) { return OR + Basic("A", expression) + B; }

// The snippets begin on line 2 of their files.
void Write(const char* file, const std::string& head, const std::string& text, const char* tail) {
  std::ofstream(file) << "<?xml version=\"1.0\"?>" << head << "\n" << text << tail;
}

std::string Run(int& error, const char* fileName) {
  char* messages = nullptr;
  std::size_t length = 0;
  std::FILE* const file = open_memstream(&messages, &length);
  {
    OrvaInterpreter interpreter;
    LumoFileStream stream(false, file);
    interpreter.GetParser()->SetErrorStream(&stream);
    OrvaScriptCheck(&interpreter).Check(error, fileName);
  }
  std::fclose(file);
  std::string result(messages, length);
  std::free(messages);
  return result;
}

// "name line" of each finding, in the order of their reports; "error" for a message of a run.
std::string GetFindings(const std::string& messages) {
  static const std::regex HEAD("(ERROR|WARNING|NOTE) (\\[line ([0-9]+)\\])?:");
  static const std::regex TEXT("([a-z-]+): .*");
  std::istringstream lines(messages);
  std::string line;
  std::string number;
  std::string findings;
  std::smatch match;
  while (std::getline(lines, line)) {
    if (std::regex_match(line, match, HEAD)) {
      number = match[3];
      if (match[1] == "ERROR") findings += "error, ";
    } else if (std::regex_match(line, match, TEXT)) {
      findings += match[1].str() + " " + number + ", ";
    }
  }
  return findings.substr(0, findings.empty() ? 0 : findings.size() - 2);
}

void Expect(std::span<const Case> cases) {
  for (const Case& test : cases) {
    Write("check-model.xml", "<open-psa>", test.model.empty() ? STUDY : test.model,
          "</open-psa>\n");
    Write("check-study.xml",
          "<orva><load><model input=\"check-model.xml\"/></load>"
          "<set><option name=\"top-event\" value=\"T\"/></set>",
          test.script, "</orva>\n");
    int error = 0;
    EXPECT_EQ(GetFindings(Run(error, "check-study.xml")), test.findings) << test.script << "\n"
                                                                         << test.model;
  }
}

const Case COMMANDS[] = {
    {"<build><minimal-cutsets maximum-order=\"4\"/></build>", "", ""},
    {"<build><minimal-cutsets maximun-order=\"4\"/></build>", "", "unread-option 2"},
    {"<build><minimal-cutsets algorithm=\"search\"/></build>\n"
     "<compute><probability approximation=\"mcub\" maximum-nodes=\"9\" layout=\"x\"/></compute>",
     "", ""},
    {"<build><minimal-cutsets follow-parameters=\"on\"/></build>\n"
     "<compute><sensitivity seed=\"7\">\n<option name=\"outptu\" value=\"x\"/>\n"
     "<option name=\"mode\" value=\"append\"/></sensitivity></compute>",
     "", "unread-option 2, unread-option 4"},
    // What holds commands reads nothing. A last date of its own makes the probability a curve.
    {"<build mission-time=\"1\"><minimal-cutsets/></build>", "", "unread-option 2"},
    {BUILD + "\n<compute>\n<probability first-date=\"0\" step=\"1\"/>\n"
             "<probability first-date=\"0\" last-date=\"9\" step=\"3\" output=\"c\"/></compute>",
     "", "unread-option 4, unread-option 4"},
    {"<compute><values-of-parameters mission-time=\"1\">\n"
     "<option name=\"mission-time\" value=\"1\"/></values-of-parameters></compute>",
     "", "unread-option 3"},
    {"<build><minimal-cutsets maximum-order=\"4\">\n"
     "<option name=\"maximum-order\" value=\"3\"/>\n<options/>\n<!-- --></minimal-cutsets></build>",
     "", "shadowed-option 3, unread-element 4"},
    {"<print><option name=\"step\" value=\"1\" output=\"a\"/></print>", "", "unread-option 2"},
    {BUILD +
         "\n<print><minimal-cutsets print-minimal-cutset-rank=\"yes\" mode=\"Append\"/></print>",
     "", "unsuitable-value 3, unknown-mode 3"},
    {"<set><option name=\"mode\" value=\"Append\"/>\n<option name=\"step\"/>\n"
     "<option name=\"randomizer-seed\" value=\"1\"/></set>",
     "", "unknown-mode 2, no-value 3, idle-option 4"},
    {"<build><minimal-cutsets minimum-contribution=\"0.1\"/></build>", "", "idle-option 2"},
    {"<print><options/>\n<modules/>\n<options mode=\"append\"/>\n<options output=\"a\"/>\n"
     "<options output=\"/dev/stdout\"/><options output=\"/dev/stdout\"/></print>",
     "", "same-output 3"},
    {"<build><minimal-cutsets minimum-probability=\"1e-9\"/></build>", "", "limit-at-time-zero 2"},
    {"<set><option name=\"mission-time\" value=\"9\"/></set>\n"
     "<build><minimal-cutsets minimum-probability=\"1e-9\"/></build>",
     "", ""},
    {"<build><minimal-cutsets minimum-probability=\"1e-9\"/></build>", OR + A_AND_B, ""},
    {BUILD + "\n<compute><probability last-date=\"9\" step=\"1\"\n"
             "print-safety-integrity-level=\"on\"/></compute>",
     "", "sil-numbers 3"},
    // As a run would say.
    {"<build><minimal-cutsets maximum-order=\"x\"/></build>", "", "error"},
    {BUILD + "<print><minimal-cutsets handle=\"system\"/></print>", "", "error"},
    {"<print><orders/></print>", "", "error"},
};

const Case DEFINITIONS[] = {
    {"", Gate("T", "<or>" + Event("A") + "\n" + Event("C") + "</or>") + A_AND_B,
     "undefined-event 3, unused-event 5"},
    {"<set><default-probability-distribution>" + Float("0.1") +
         "</default-probability-distribution></set>",
     OR, ""},
    {"", Gate("T", "<label>a gate</label>"), "undefined-event 2"},
    {"", OR + Basic("A", Float("0.1")) + "<define-house-event name=\"B\"/>", "undefined-event 4"},
    {"<set><option name=\"check-event-redefinition\" value=\"off\"/>"
     "<option name=\"check-parameter-redefinition\" value=\"off\"/></set>"
     "<load><model input=\"check-model.xml\"/></load>",
     WithA(REFER) + Parameter(Float("0.1")),
     "redefined-event 2, redefined-event 3, redefined-event 4, redefined-parameter 5"},
    {"", WithA(REFER), "undefined-parameter 3"},
    {"", OR + A_AND_B + Parameter(Float("0.1")), "unused-parameter 5"},
    // A gate is unused where the run names another one as its top event.
    {BUILD, OR + A_AND_B + Gate("G", "<or>" + Event("A") + Event("B") + "</or>"), "unused-event 5"},
    // Of members, neither definitions nor probabilities are missed.
    {BUILD,
     OR +
         "<define-CCF-group name=\"G\" model=\"beta-factor\"><members><basic-event name=\"A\"/>"
         "<basic-event name=\"B\"/></members><distribution>" +
         Float("0.1") + "</distribution><factor level=\"2\">\n" + DEVIATE +
         "</factor></define-CCF-group>",
     "undrawn-deviate 4"},
    {"", WithA(Float("1.5")), "probability-out-of-range 3"},
    {"", WithA("<neg>" + REFER + "</neg>") + Parameter(Float("0.1")), "probability-out-of-range 3"},
    {"", WithA("<add>" + Float("2") + "\n" + MISSION_TIME + "</add>"), ""},
    {"", WithA(DEVIATE), ""},
    {"", WithA("<mul>" + REFER + "\n" + DEVIATE + "</mul>") + Parameter(DEVIATE),
     "undrawn-deviate 4"},
    {"",
     WithA("<switch><case><bool value=\"false\"/>" + Float("0") + "</case>\n<case><gt>" +
           MISSION_TIME + Float("9") + "</gt>" + Float("0") + "</case>\n<case>" + REFER +
           Float("0") + "</case>\n<case>" + REFER + Float("0") + "</case>\n" + Float("0") +
           "</switch>") +
         Parameter("<bool value=\"true\"/>"),
     "unreachable-case 3, unreachable-case 6, unreachable-case 7"},
};

// What nothing reads of a model: told once for all elements of a name, and not of other namespaces.
const Case ELEMENTS[] = {
    {"",
     "<define-gate name=\"T\" v:from=\"x\" xmlns:v=\"x\" label=\"x\"><or>\n" + Event("A") +
         "<event name=\"B\" nmae=\"x\"/>\n<event name=\"A\" nmae=\"x\"/></or></define-gate>\n" +
         "<define-parameter name=\"P\" unit=\"x\">" + Float("0.1") + "</define-parameter>\n" +
         Basic("A", "<mul order=\"1\">" + REFER + Float("1") + "</mul>") +
         Basic("B", "<float value=\"0.1\"\nunit=\"x\"/>"),
     "unread-attribute 2, unread-attribute 3, unread-attribute 6, unread-attribute 7"},
    {"",
     Gate("T", "<atleast min=\"1\" max=\"2\">" + Event("A") + "\n<event name=\"B\">\n" +
                   Event("A") + "</event></atleast>") +
         "<define-CCF-group name=\"G\" model=\"beta-factor\"><members>" + Event("A") + Event("B") +
         "</members><distribution>\n" + Float("0.1") + "\n" + Float("0.2") +
         "</distribution><factor level=\"2\">\n" + Float("0.1") + "\n" + Float("0.2") +
         "</factor></define-CCF-group>",
     "unread-attribute 2, unread-element 4, unread-element 6, unread-element 9"},
    {"<set><default-probability-distribution><float value=\"0.1\" vlaue=\"1\"/>"
     "</default-probability-distribution></set>",
     OR, "unread-attribute 2"},
};

const Case FORMULAS[] = {
    {BUILD, Gate("T", "<and>" + Event("A") + "\n<not>" + Event("B") + "</not></and>") + A_AND_B,
     "negation 3"},
    {BUILD,
     Gate("T", "<or>" + Event("A") + "\n<and>" + Event("A") + Event("B") + "</and></or>") + A_AND_B,
     "nested-formula 3, error"},
    {BUILD,
     Gate("T", "<atleast min=\"2\">" + Event("A") + Event("B") + Event("G") + "</atleast>") +
         A_AND_B + Gate("G", "<or>" + Event("A") + "</or>"),
     "repeated-argument 2"},
    {"<build><minimal-cutsets algorithm=\"diagram\"/></build>",
     Gate("T", "<atleast min=\"2\">" + Event("A") + Event("B") + Event("A") + "</atleast>") +
         A_AND_B,
     ""},
    {BUILD, Gate("T", "<atleast min=\"3\">" + Event("A") + Event("B") + "</atleast>") + A_AND_B,
     "impossible-threshold 2, error"},
    {BUILD,
     Gate("T", "<or>" + Event("G") + "</or>") + Basic("A", Float("0.1")) +
         Gate("G", "<and><not>" + Event("A") + "</not></and>"),
     "negation 4, single-argument 2"},
    {BUILD,
     Gate("T", "<or>" + Event("G") + "</or>") + A_AND_B +
         Gate("G", "<and>" + Event("A") + Event("B") + "</and>"),
     ""},
    // The top event is constant, too.
    {BUILD,
     OR + B + "<define-house-event name=\"A\"><constant value=\"true\"/></define-house-event>",
     "house-event-value 4, error, error"},
    {BUILD + "\n" + BUILD,
     Gate("T", "<or>" + Event("A") + Event("G") + "</or>") + A_AND_B + Basic("C", Float("0.1")) +
         Gate("G", "<and>" + Event("B") + Event("C") + "</and>"),
     "handle-built-twice 3"},
    {BUILD + "\n" + BUILD, "", ""},
};

std::string Curve(const char* attributes) {
  return BUILD + "<compute><probability last-date=\"99\" step=\"9\" " + attributes + "/></compute>";
}
std::string Intensity(const char* attributes) {
  return BUILD + "<compute><failure-intensity last-date=\"99\" step=\"9\" " + attributes +
         "/></compute>";
}

const std::string NUMERIC = Intensity("failure-rate=\"numeric\"");
const std::string GLM =
    "<GLM>" + Float("0") + Float("1e-3") + Float("0.1") + MISSION_TIME + "</GLM>";

const Case CURVES[] = {
    {Curve(""), WithA(REFER) + Parameter(TEST), "tests-behind-parameter 3"},
    {Intensity(""),
     WithA("<ite><bool value=\"true\"/>\n" + REFER + Float("0") + "</ite>") + Parameter(TEST),
     "tests-behind-parameter 4"},
    {Curve("follow-parameters=\"on\""), WithA(REFER) + Parameter(TEST), ""},
    {Curve("add-singular-points=\"off\""), WithA(REFER) + Parameter(TEST), ""},
    {Curve(""), WithA(TEST), ""},
    {BUILD + "<compute><probability/></compute>", WithA(REFER) + Parameter(TEST), ""},
    {Intensity(""), WithA("<min>" + REFER + Float("1") + "</min>") + Parameter(LAW),
     "no-failure-rate 3"},
    {Intensity("failure-rate=\"numeric\""),
     WithA("<min>" + REFER + Float("1") + "</min>") + Parameter(LAW), ""},
    {Curve(""), WithA("<min>" + LAW + Float("1") + "</min>"), ""},
    {Intensity(""), WithA("<ite><bool value=\"true\"/>" + LAW + Float("0") + "</ite>"), ""},
    {Intensity(""),
     WithA("<switch><case><bool value=\"true\"/>" + LAW + "</case>" + Float("0") + "</switch>"),
     "no-failure-rate 3, unreachable-case 3"},
    {Intensity(""), WithA("<mul>" + LAW + LAW + "</mul>"), "multiplied-rates 3"},
    {Intensity(""), WithA("<mul>" + LAW + Float("0.5") + "</mul>"), ""},
    {Intensity(""), WithA("<MTT>" + Float("100") + Float("10") + MISSION_TIME + "</MTT>"),
     "derivative-as-intensity 3"},
    // At 99, 1 - exp(-0.99) and 1 - exp(-0.0099).
    {Intensity(""), WithA("<Weibull>" + Float("100") + Float("1") + MISSION_TIME + "</Weibull>"),
     "derivative-as-intensity 3"},
    {Intensity(""), WithA("<Weibull>" + Float("10000") + Float("1") + MISSION_TIME + "</Weibull>"),
     ""},
    {Intensity(""), WithA(LAW), ""},
    // The numeric rate is right for what only grows, and counts repairs against failures.
    {NUMERIC, WithA("<Weibull>" + Float("100") + Float("1") + MISSION_TIME + "</Weibull>"), ""},
    {NUMERIC, WithA(TEST), ""},
    {NUMERIC, WithA(REFER) + Parameter("<min>\n" + GLM + Float("1") + "</min>"),
     "derivative-as-intensity 6"},
    {NUMERIC,
     WithA("<periodic-test>" + Float("1e-3") + Float("0.1") + Float("9") + Float("9") +
           MISSION_TIME + "</periodic-test>"),
     "derivative-as-intensity 3"},
    {Intensity(""), WithA(GLM), ""},
};

TEST(CheckTest, Commands) { Expect(COMMANDS); }
TEST(CheckTest, Definitions) { Expect(DEFINITIONS); }
TEST(CheckTest, Elements) { Expect(ELEMENTS); }
TEST(CheckTest, Formulas) { Expect(FORMULAS); }
TEST(CheckTest, Curves) { Expect(CURVES); }

TEST(CheckTest, EveryFindingIsTriedAndInTheManual) {
  std::ifstream file(ORVA_FOLDER "/docs/checks.md");
  const std::string page(std::istreambuf_iterator<char>(file), {});
  std::string found;
  for (const std::span<const Case> cases :
       {std::span<const Case>(COMMANDS), std::span<const Case>(DEFINITIONS),
        std::span<const Case>(ELEMENTS), std::span<const Case>(FORMULAS),
        std::span<const Case>(CURVES)}) {
    for (const Case& test : cases) found += " " + test.findings;
  }
  for (int i = 0; i < static_cast<int>(OrvaFinding::NUMBER_OF_FINDINGS); ++i) {
    const std::string name = OrvaFindings::GetName(static_cast<OrvaFinding>(i));
    EXPECT_NE(found.find(" " + name + " "), std::string::npos) << name;
    EXPECT_NE(page.find("| `" + name + "` |"), std::string::npos) << name;
  }
}

// Which can be read once only.
TEST(CheckTest, ModelsFromPipes) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const std::string model = "<?xml version=\"1.0\"?><open-psa>\n" + OR + B + "</open-psa>\n";
  ASSERT_EQ(write(ends[1], model.data(), model.size()), static_cast<ssize_t>(model.size()));
  close(ends[1]);
  Write("check-study.xml", "<orva>",
        "<load><model input=\"/dev/fd/" + std::to_string(ends[0]) + "\"/></load>", "</orva>\n");
  int error = 0;
  EXPECT_EQ(GetFindings(::Run(error, "check-study.xml")), "undefined-event 2");
  close(ends[0]);
}

// Chains as long as a model may have them, and elements as deep.
TEST(CheckTest, LongChainsAndDeepExpressions) {
  constexpr int LENGTH = 20000;
  constexpr int DEPTH = 900;
  std::string model = Gate("T", "<or>" + Event("G0") + Event("A") + "</or>");
  const auto parameter = [](int i, const std::string& expression) {
    return "<define-parameter name=\"P" + std::to_string(i) + "\">" + expression +
           "</define-parameter>\n";
  };
  for (int i = 0; i < LENGTH; ++i) {
    const std::string next = std::to_string(i + 1);
    model += Gate(("G" + std::to_string(i)).c_str(),
                  "<and>" + Event(("G" + next).c_str()) + Event("B") + "</and>");
    model += parameter(i, "<parameter name=\"P" + next + "\"/>");
  }
  model += Basic(("G" + std::to_string(LENGTH)).c_str(), Float("0.1")) + Basic("B", Float("0.1"));
  std::string deep = TEST;
  for (int i = 0; i < DEPTH; ++i) deep = "<neg>" + deep + "</neg>";
  model += parameter(LENGTH, deep) + Basic("A", "<parameter name=\"P0\"/>");
  const int line = 2 + 2 * LENGTH + 1;
  const Case test = {Intensity(""), model,
                     "tests-behind-parameter " + std::to_string(line + 3) + ", no-failure-rate " +
                         std::to_string(line + 2)};
  Expect({&test, 1});
}

}  // namespace
