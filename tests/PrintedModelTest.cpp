// Whole models printed and read back.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "OrvaTestSupport.h"
#include "model/OrvaCCFGroup.h"
#include "model/OrvaGate.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"

namespace {

using Expression = OrvaProbabilityDistribution;

constexpr const char* FILE_NAME = "printed-model.txt";

std::string PrintReal(double x) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", x);
  return text;
}

std::string Element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name.substr(0, name.find(' ')) + ">";
}
std::string Named(const std::string& element, const std::string& name) {
  return "<" + element + " name=\"" + name + "\"/>";
}

// A random model: of every kind of element or, if it is coherent, of flat gates over basic events
// with plain probabilities and members of common-cause failure groups.
class RandomModel {
 public:
  RandomModel(std::mt19937& random, bool isCoherent) : _random(random), _isCoherent(isCoherent) {
    _gates = 2 + Draw(5);
    _events = 3 + Draw(4);
    _parameters = isCoherent ? 0 : Draw(5);
    for (int i = isCoherent ? Draw(3) : Draw(5); i > 0; --i) AddGroup();
    for (int i = 0; i < _gates; ++i) {
      Add(Define("gate", Name('g', i), isCoherent ? FlatFormula(i) : Formula(i, 3)));
    }
    for (int i = 0; i < _parameters; ++i) {
      Add(Define("parameter",
                 Name('p', i) + Optional("\" unit=\"per hour") +
                     Optional("\" riskspectrum:type=\"4 > 'x'"),
                 ExpressionOf(i, 3)));
    }
    for (int i = isCoherent || Draw(3) > 0 ? 0 : 1; i < _events; ++i) {
      Add(Define("basic-event", Name('b', i) + Optional("\" riskspectrum:model=\"probability"),
                 ExpressionOf(0, isCoherent ? 0 : 3)));
    }
    std::shuffle(_definitions.begin(), _definitions.end(), random);
    std::string houses;
    for (int i = 0; i < HOUSES; ++i) {
      const char* const values[] = {"<constant value=\"true\"/>", "<constant value=\"false\"/>",
                                    ""};
      houses += Define("house-event", Name('h', i), values[i]);
    }
    const char* const roots[] = {"open-psa", "srf-psa", "opsa-mef", "riskspectrum:opsa-mef"};
    std::string content;
    for (const std::string& definition : _definitions) content += definition + "\n";
    // Those with a value are gates from their definition on.
    content = _areHousesFirst ? houses + content : content + houses;
    _text = Element(roots[Draw(4)],
                    isCoherent ? content.substr(0, content.size() - houses.size()) : content);
  }
  const std::string& GetText() const { return _text; }

 private:
  static constexpr int HOUSES = 3;

  int Draw(int n) { return static_cast<int>(_random() % static_cast<unsigned>(n)); }
  std::string Optional(const std::string& text) { return Draw(2) == 0 ? text : ""; }
  static std::string Name(char kind, int i) {
    const char* const endings[] = {"", " \xC3\xA9", ".%s", "'>&lt;", "\n- -"};
    return kind + std::to_string(i) + endings[i % 5];
  }
  std::string Define(const std::string& element, const std::string& name, const std::string& what) {
    const std::string label = Element("label", "50 % of \"a\" > b\\'s -- \xC3\xA9 &amp;]]>");
    return Element(
        "define-" + element + " name=\"" + name + "\"",
        "<!-- c -->" + Optional(Element("label", "50 % of \"a\" > \xC3\xA9 &amp;]]>")) + what);
  }
  void Add(const std::string& definition) {
    const char* const places[] = {"define-fault-tree name=\"t\"", "model-data"};
    const bool isGate = definition.starts_with("<define-gate");
    _definitions.push_back(Draw(3) > 0 ? definition
                                       : Element(places[isGate ? 0 : Draw(2)], definition));
  }

  void AddGroup() {
    const char* const models[] = {"beta-factor", "MGL", "alpha-factor", "phi-factor"};
    const int type = Draw(4);
    const int n = 2 + Draw(2);
    std::string members;
    for (int i = 0; i < n; ++i) {
      _members.push_back("c" + std::to_string(_members.size()));
      members += Named(Draw(2) == 0 ? "event" : "basic-event", _members.back());
    }
    std::string factors;
    for (int level = type == 0 ? n : type == 1 ? 2 : 1; level <= n; ++level) {
      const bool isMoved = type == 0 && Draw(2) == 0;  // from level 0
      factors += Element(isMoved ? "factor" : "factor level=\"" + std::to_string(level) + "\"",
                         ExpressionOf(0, _isCoherent ? 0 : 1));
    }
    if (Draw(2) == 0) factors = Element("factors", factors);
    std::string content = Element("members", members) + factors;
    if (_isCoherent || Draw(3) > 0) {
      content += Element("distribution", ExpressionOf(0, _isCoherent ? 0 : 1));
    }
    Add(Define("CCF-group", "k" + std::to_string(_members.size()) + "\" model=\"" + models[type],
               content));
  }

  // A reference to something below a gate. A reference as "event" fits everything.
  std::string Reference(int gate) {
    const int i = Draw(HOUSES);
    const bool isVague = Draw(3) == 0;
    switch (Draw(_isCoherent ? 3 : 6)) {
      case 0:
        if (gate + 1 == _gates) break;
        return Named(isVague ? "event" : "gate", Name('g', gate + 1 + Draw(_gates - gate - 1)));
      case 1:
        if (_members.empty()) break;
        return Named("basic-event", _members[_random() % _members.size()]);
      case 3:
        return Named(isVague                    ? "event"
                     : i < 2 && _areHousesFirst ? "gate"
                                                : "house-event",
                     Name('h', i));
      case 4:
        return Named(isVague ? "event" : "gate", isVague ? "unspecified" : "undefined");
      default:
        break;
    }
    return Named(isVague ? "event" : "basic-event", Name('b', Draw(_events)));
  }
  std::string FlatFormula(int gate) {
    const char* const kinds[] = {"and", "or", "atleast min=\"2\""};
    std::string children;
    for (int n = 2 + Draw(2); n > 0;) {
      const std::string child = Reference(gate);
      const std::string name = child.substr(child.find(' '));
      if (children.find(name) != std::string::npos) continue;
      children += child;
      --n;
    }
    return Element(kinds[Draw(3)], children);
  }
  std::string Formula(int gate, int depth) {
    const std::string min = " min=\"" + std::to_string(Draw(5) - 1) + "\"";
    const std::string max = " max=\"" + std::to_string(Draw(5)) + "\"";
    const std::string kinds[] = {
        "and", "or", "nand", "nor", "atleast" + min, "atmost" + max, "cardinality" + min + max,
        "not"};
    const int kind = Draw(10);
    if (depth == 0 || kind == 8) return Reference(gate);
    if (kind == 9)
      return Draw(2) == 0 ? "<constant value=\"true\"/>" : "<constant value=\"false\"/>";
    std::string children;
    for (int n = kind == 7 ? 1 : Draw(4); n > 0; --n) children += Formula(gate, depth - 1);
    return Element(kinds[kind], children);
  }

  std::string Number() {
    const char* const edges[] = {"0.1", "1e-320", "1.7976931348623157e308", "-0.0", "4.9e-324",
                                 ".",   "-1e999", "0.30000000000000004"};
    const char* const integers[] = {"0", "7", "-1", "2147483647", "-2147483648"};
    switch (_isCoherent ? 3 : Draw(6)) {
      case 0:
        return std::string("<bool value=\"") + (Draw(2) == 0 ? "true" : "false") + "\"/>";
      case 1:
        return std::string("<int value=\"") + integers[Draw(5)] + "\"/>";
      case 2:
        return std::string("<float value=\"") + edges[Draw(8)] + "\"/>";
      default:
        return "<float value=\"" + PrintReal((1 + Draw(10000)) / 10007.0) + "\"/>";
    }
  }
  std::string Small() { return "<int value=\"" + std::to_string(1 + Draw(5)) + "\"/>"; }
  // In a parameter, references go to later ones.
  std::string ExpressionOf(int parameter, int depth) {
    // Numbers of children: "m" for at least 2; "s" and "p" for shapes of their own.
    static const std::vector<std::pair<std::string, char>> kinds = [] {
      std::istringstream names(
          "and m or m not 1 eq 2 df 2 lt 2 gt 2 leq 2 geq 2 neg 1 add m sub 2 mul m div 2 abs 1 "
          "acos 1 asin 1 atan 1 cos 1 cosh 1 exp 1 log 1 log10 1 mod 1 pow 2 sin 1 sinh 1 tan 1 "
          "tanh 1 sqrt 1 ceil 1 floor 1 min m max m mean m ite 3 switch s case 2 Dirac 2 periodic "
          "3 "
          "exponential 2 GLM 4 MTT 3 dormant 3 Weibull 3 standby s periodic-test s bound-time s "
          "uniform-deviate 2 normal-deviate 2 lognormal-deviate 3 beta-deviate 2 gamma-deviate 2 "
          "bin 2 histogram s");
      std::vector<std::pair<std::string, char>> result(1);
      while (names >> result.back().first >> result.back().second) result.emplace_back();
      result.pop_back();
      return result;
    }();
    if (_isCoherent || depth == 0 || Draw(4) == 0) {
      if (_isCoherent || Draw(2) == 0) return Number();
      if (Draw(3) == 0) return Draw(2) == 0 ? "<pi/>" : "<mission-time/>";
      const int other = parameter + 1 + Draw(3);
      return Named("parameter", other < _parameters ? Name('p', other) : "undefined");
    }
    const auto child = [&] { return ExpressionOf(parameter, depth - 1); };
    const auto& [kind, number] = kinds[_random() % kinds.size()];
    std::string children;
    if (kind == "switch") {
      for (int n = Draw(3); n > 0; --n) children += Element("case", child() + child());
      if (children.empty() || Draw(2) == 0) children += Element("neg", child());
    } else if (kind == "histogram") {
      children = child();
      for (int n = 1 + Draw(3); n > 0; --n) children += Element("bin", child() + child());
      if (Draw(4) == 0) children += child();
    } else if (kind == "standby") {  // its numbers of units stay small, and dates below
      children = Small() + Small() + Small() + child() + child() + child();
    } else if (kind == "bound-time") {
      children = child() + Small() + child() + "<mission-time/>";
    } else if (kind == "periodic-test") {
      const int sizes[][2] = {{4, 2}, {5, 3}, {11, 4}};
      const auto& [size, interval] = sizes[Draw(3)];
      for (int i = 1; i < size; ++i) children += i == interval ? Small() : child();
      children += "<mission-time/>";
    } else {
      for (int n = number == 'm' ? 2 + Draw(2) : number - '0'; n > 0; --n) children += child();
    }
    return Element(kind, children);
  }

  std::mt19937& _random;
  const bool _isCoherent;
  const bool _areHousesFirst = !_isCoherent && Draw(2) == 0;
  int _gates, _events, _parameters;
  std::vector<std::string> _members;
  std::vector<std::string> _definitions;
  std::string _text;
};

// All that a model holds, as a text.

std::string Describe(const OrvaGate* formula) {
  if (formula == nullptr) return "none";
  std::string text = std::string(OrvaGate::GetFunctor(formula->GetType())) + " " +
                     std::to_string(formula->GetMin()) + " " + std::to_string(formula->GetMax());
  if (formula->IsEvent()) text += std::string(" ") + formula->GetReferencedEvent()->GetName();
  text += "(";
  for (const OrvaGate* child = formula->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    text += Describe(child) + ",";
  }
  return text + ")";
}

std::string Describe(const Expression* expression) {
  if (expression == nullptr) return "none";
  const LumoConstant* value = expression->GetValue();
  std::string text = std::string(Expression::GetFunctor(expression->GetType())) + " " +
                     std::to_string(value->GetType()) + " " +
                     std::to_string(std::bit_cast<std::uint64_t>(value->ToDouble()));
  if (const OrvaParameter* parameter = expression->GetReferencedParameter()) {
    text += std::string(" ") + parameter->GetName();
  }
  text += "(";
  for (const Expression* child = expression->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    text += Describe(child) + ",";
  }
  return text + ")";
}

template <class Owner>
std::string DescribeAttributes(const Owner* owner) {
  std::string text = owner->GetName();
  for (const char* name : {"label", "unit", "riskspectrum:type", "riskspectrum:model"}) {
    text += std::string(" | ") + owner->GetAttributeAsString(name, "none");
  }
  return text + " | ";
}

std::string Describe(const OrvaModel* model) {
  std::string text = std::string(model->GetFormat()) + "\n";
  for (const OrvaEvent* event : LumoItems<OrvaEvent>(model->GetEvents())) {
    text += DescribeAttributes(event) + std::to_string(event->GetType()) + " " +
            Describe(event->GetDefinition()) + Describe(event->GetProbabilityDistribution()) + "\n";
  }
  for (const OrvaParameter* parameter : LumoItems<OrvaParameter>(model->GetParameters())) {
    text += DescribeAttributes(parameter) + Describe(parameter->GetDefinition()) + "\n";
  }
  for (const OrvaCCFGroup* group : LumoItems<OrvaCCFGroup>(model->GetCCFGroups())) {
    text += DescribeAttributes(group) + std::to_string(group->GetType());
    for (int i = 0; i < group->GetNumberOfMembers(); ++i) text += group->GetMember(i)->GetName();
    text += Describe(group->GetDistribution());
    for (int i = 0; i <= group->GetHighestLevel(); ++i) text += Describe(group->GetFactor(i));
    text += "\n";
  }
  return text;
}

class Engine : public OrvaTestEngine {
 public:
  int LoadFile(const std::string& text) {
    const OrvaTextFile file(text);
    int error = 0;
    (*this)->DownloadCommandScript(error, file.Get());
    return error;
  }
  // What commands write; they hold the names of their output files as %.
  std::string GetOutput(std::string commands) {
    const std::string output = std::string(" output=\"") + FILE_NAME + "\" mode=\"append\" ";
    for (std::size_t i; (i = commands.find('%')) != std::string::npos;)
      commands.replace(i, 1, output);
    std::remove(FILE_NAME);
    EXPECT_EQ(Run(commands), 0) << GetErrors();
    return ReadFile(FILE_NAME);
  }
  std::string PrintModel() { return GetOutput("<print><model%/></print>"); }
  std::string ComputeTables() {
    std::string commands;
    for (const char* date : {"0", "10", "77.5"}) {
      const std::string attributes = std::string("% mission-time=\"") + date + "\"/>";
      commands +=
          "<values-of-parameters" + attributes + "<probabilities-of-basic-events" + attributes;
    }
    return GetOutput("<compute>" + commands + "</compute>");
  }
  std::string ComputeCutsets() {
    return GetOutput(
        "<build><minimal-cutsets top-event=\"g0\"/></build>"
        "<print><minimal-cutsets% top-event=\"g0\"/></print>");
  }
};

TEST(PrintedModels, ReadBackAsTheyWere) {
  std::mt19937 random(7);
  std::size_t cutsets = 0;
  for (int trial = 0; trial < 500; ++trial) {
    const bool isCoherent = trial % 3 == 0;
    const RandomModel model(random, isCoherent);
    Engine first, second;
    ASSERT_EQ(first.LoadFile("<?xml version=\"1.0\"?>\n" + model.GetText()), 0)
        << first.GetErrors() << model.GetText();
    const std::string printed = first.PrintModel();
    ASSERT_EQ(second.LoadFile(printed), 0) << second.GetErrors() << printed;
    ASSERT_EQ(Describe(second.GetModel()), Describe(first.GetModel())) << model.GetText();
    ASSERT_EQ(second.PrintModel(), printed);
    ASSERT_EQ(second.ComputeTables(), first.ComputeTables()) << printed;
    first.GetModel()->Complete();
    second.GetModel()->Complete();
    ASSERT_EQ(second.ComputeTables(), first.ComputeTables()) << printed;
    ASSERT_EQ(second.PrintModel(), first.PrintModel());
    if (!isCoherent) continue;
    const std::string table = first.ComputeCutsets();
    ASSERT_EQ(second.ComputeCutsets(), table) << printed;
    cutsets += static_cast<std::size_t>(std::count(table.begin(), table.end(), '\n'));
    // In normal form, and with its groups expanded, the model still has these cutsets.
    Engine third;
    const std::string normal = first.PrintModel();
    ASSERT_EQ(third.LoadFile(normal), 0) << third.GetErrors() << normal;
    ASSERT_EQ(third.PrintModel(), normal);
    ASSERT_EQ(third.ComputeCutsets(), table) << normal;
  }
  EXPECT_GT(cutsets, 500u);
}

}  // namespace
