// Whole models printed and read back.

#include <bit>
#include <cstdint>
#include <random>

#include "OrvaTestSupport.h"
#include "model/OrvaCCFGroup.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistribution.h"

namespace {

using Expression = OrvaProbabilityDistribution;

std::string Element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name.substr(0, name.find(' ')) + ">";
}
std::string Named(const std::string& element, const std::string& name) {
  return "<" + element + " name=\"" + name + "\"/>";
}

// A random model with every kind of element.
class RandomModel {
 public:
  explicit RandomModel(std::mt19937& random) : _random(random) {
    _gates = 2 + Draw(5);
    _events = 3 + Draw(4);
    _parameters = Draw(5);
    for (int i = Draw(5); i > 0; --i) AddGroup();
    for (int i = 0; i < _gates; ++i) Add(Define("gate", Name('g', i), Formula(i, 3)));
    for (int i = 0; i < _parameters; ++i) {
      Add(Define("parameter",
                 Name('p', i) + Optional("\" unit=\"per hour") +
                     Optional("\" riskspectrum:type=\"4 > 'x'"),
                 ExpressionOf(i, 3)));
    }
    for (int i = Draw(3) > 0 ? 0 : 1; i < _events; ++i) {
      Add(Define("basic-event", Name('b', i) + Optional("\" riskspectrum:model=\"probability"),
                 ExpressionOf(0, 3)));
    }
    std::shuffle(_definitions.begin(), _definitions.end(), random);
    std::string houses, content;
    const char* const values[] = {"<constant value=\"true\"/>", "<constant value=\"false\"/>", ""};
    for (int i = 0; i < HOUSES; ++i) houses += Define("house-event", Name('h', i), values[i]);
    for (const std::string& definition : _definitions) content += definition + "\n";
    // Those with a value are gates from their definition on.
    const char* const roots[] = {"open-psa", "srf-psa", "opsa-mef", "riskspectrum:opsa-mef"};
    _text = Element(roots[Draw(4)], _areHousesFirst ? houses + content : content + houses);
  }
  const std::string& GetText() const { return _text; }

 private:
  static constexpr int HOUSES = 3;

  int Draw(int n) { return static_cast<int>(_random() % static_cast<unsigned>(n)); }
  template <std::size_t N>
  const char* Pick(const char* const (&texts)[N]) {
    return texts[Draw(N)];
  }
  std::string Optional(const std::string& text) { return Draw(2) == 0 ? text : ""; }
  static std::string Name(char kind, int i) {
    const char* const endings[] = {"", " \xC3\xA9", ".%s", "'>&lt;", "\n- -"};
    return kind + std::to_string(i) + endings[i % 5];
  }
  std::string Define(const std::string& element, const std::string& name, const std::string& what) {
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
    std::string members, factors;
    for (int i = 0; i < n; ++i) {
      _members.push_back("c" + std::to_string(_members.size()));
      members += Named(Pick({"event", "basic-event"}), _members.back());
    }
    for (int level = type == 0 ? n : type == 1 ? 2 : 1; level <= n; ++level) {
      const bool isMoved = type == 0 && Draw(2) == 0;  // from level 0
      factors += Element(isMoved ? "factor" : "factor level=\"" + std::to_string(level) + "\"",
                         ExpressionOf(0, 1));
    }
    if (Draw(2) == 0) factors = Element("factors", factors);
    if (Draw(3) > 0) factors += Element("distribution", ExpressionOf(0, 1));
    Add(Define("CCF-group", "k" + std::to_string(_members.size()) + "\" model=\"" + models[type],
               Element("members", members) + factors));
  }

  // A reference to something below a gate. A reference as "event" fits everything.
  std::string Reference(int gate) {
    const int i = Draw(HOUSES);
    const bool isVague = Draw(3) == 0;
    const auto name = [&](const char* kind, const std::string& what) {
      return Named(isVague ? "event" : kind, what);
    };
    switch (Draw(6)) {
      case 0:
        if (gate + 1 == _gates) break;
        return name("gate", Name('g', gate + 1 + Draw(_gates - gate - 1)));
      case 1:
        if (_members.empty()) break;
        return Named("basic-event", _members[_random() % _members.size()]);
      case 2:
        return name(i < 2 && _areHousesFirst ? "gate" : "house-event", Name('h', i));
      case 3:
        return name("gate", isVague ? "unspecified" : "undefined");
      default:
        break;
    }
    return name("basic-event", Name('b', Draw(_events)));
  }
  std::string Formula(int gate, int depth) {
    const std::string min = " min=\"" + std::to_string(Draw(5) - 1) + "\"";
    const std::string max = " max=\"" + std::to_string(Draw(5)) + "\"";
    const std::string kinds[] = {
        "and", "or", "nand", "nor", "atleast" + min, "atmost" + max, "cardinality" + min + max,
        "not"};
    const int kind = Draw(10);
    if (depth == 0 || kind == 8) return Reference(gate);
    if (kind == 9) return Pick({"<constant value=\"true\"/>", "<constant value=\"false\"/>"});
    std::string children;
    for (int n = kind == 7 ? 1 : Draw(4); n > 0; --n) children += Formula(gate, depth - 1);
    return Element(kinds[kind], children);
  }

  std::string Number() {
    const auto number = [](const char* kind, const std::string& value) {
      return std::string("<") + kind + " value=\"" + value + "\"/>";
    };
    char real[40];
    std::snprintf(real, sizeof real, "%.17g", (1 + Draw(10000)) / 10007.0);
    switch (Draw(6)) {
      case 0:
        return number("bool", Pick({"true", "false"}));
      case 1:
        return number("int", Pick({"0", "7", "-1", "2147483647", "-2147483648"}));
      case 2:
        return number("float", Pick({"0.1", "1e-320", "1.7976931348623157e308", "-0.0", "4.9e-324",
                                     ".", "-1e999", "0.30000000000000004"}));
      default:
        return number("float", real);
    }
  }
  // In a parameter, references go to later ones.
  std::string ExpressionOf(int parameter, int depth) {
    // Numbers of children: "m" for at least 2; "s" for shapes of their own.
    static const std::vector<std::string> kinds = OrvaSplit(
        "and m or m not 1 eq 2 df 2 lt 2 gt 2 leq 2 geq 2 neg 1 add m sub 2 mul m div 2 abs 1 "
        "acos 1 asin 1 atan 1 cos 1 cosh 1 exp 1 log 1 log10 1 mod 1 pow 2 sin 1 sinh 1 tan 1 "
        "tanh 1 sqrt 1 ceil 1 floor 1 min m max m mean m ite 3 switch s case 2 Dirac 2 periodic 3 "
        "exponential 2 GLM 4 MTT 3 dormant 3 Weibull 3 standby s periodic-test s bound-time s "
        "uniform-deviate 2 normal-deviate 2 lognormal-deviate 3 beta-deviate 2 gamma-deviate 2 "
        "bin 2 histogram s");
    if (depth == 0 || Draw(4) == 0) {
      if (Draw(2) == 0) return Number();
      if (Draw(3) == 0) return Pick({"<pi/>", "<mission-time/>"});
      const int other = parameter + 1 + Draw(3);
      return Named("parameter", other < _parameters ? Name('p', other) : "undefined");
    }
    const auto children = [&](int n) {
      std::string text;
      for (; n > 0; --n) text += ExpressionOf(parameter, depth - 1);
      return text;
    };
    const auto small = [&] { return "<int value=\"" + std::to_string(1 + Draw(5)) + "\"/>"; };
    const std::size_t i = _random() % (kinds.size() / 2) * 2;
    const std::string& kind = kinds[i];
    std::string content;
    if (kind == "switch") {
      for (int n = Draw(3); n > 0; --n) content += Element("case", children(2));
      if (content.empty() || Draw(2) == 0) content += Element("neg", children(1));
    } else if (kind == "histogram") {
      content = children(1);
      for (int n = 1 + Draw(3); n > 0; --n) content += Element("bin", children(2));
      content += children(Draw(4) == 0 ? 1 : 0);
    } else if (kind == "standby") {  // its numbers of units stay small, and dates below
      content = small() + small() + small() + children(3);
    } else if (kind == "bound-time") {
      content = children(1) + small() + children(1) + "<mission-time/>";
    } else if (kind == "periodic-test") {
      const int sizes[][2] = {{4, 2}, {5, 3}, {11, 4}};
      const auto& [size, interval] = sizes[Draw(3)];
      content =
          children(interval - 1) + small() + children(size - 1 - interval) + "<mission-time/>";
    } else {
      content = children(kinds[i + 1] == "m" ? 2 + Draw(2) : std::stoi(kinds[i + 1]));
    }
    return Element(kind, content);
  }

  std::mt19937& _random;
  const bool _areHousesFirst = Draw(2) == 0;
  int _gates, _events, _parameters;
  std::vector<std::string> _members;
  std::vector<std::string> _definitions;
  std::string _text;
};

// All that a model holds, as a text.

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
    text += DescribeAttributes(event) + std::to_string(event->GetType()) +
            OrvaShortModel::Write(event->GetDefinition()) +
            Describe(event->GetProbabilityDistribution()) + "\n";
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
  void LoadFile(const std::string& text) {
    const OrvaTextFile file(text);
    int error = 0;
    (*this)->DownloadCommandScript(error, file.Get());
    ASSERT_EQ(error, 0) << GetErrors() << text;
  }
  std::string PrintModel() {
    MustRun("<print><model output=\"printed-model.txt\"/></print>");
    return ReadFile("printed-model.txt");
  }
  std::string ComputeTables() {
    std::string tables;
    for (const std::string date : {"0", "10", "77.5"}) {
      const std::string options = " output=\"tables.txt\" mission-time=\"" + date + "\"";
      MustRun("<compute><values-of-parameters" + options + "/><probabilities-of-basic-events" +
              options + " mode=\"append\"/></compute>");
      tables += ReadFile("tables.txt");
    }
    return tables;
  }
};

TEST(PrintedModels, ReadBackAsTheyWere) {
  std::mt19937 random(7);
  for (int trial = 0; trial < 500; ++trial) {
    const RandomModel model(random);
    Engine first, second;
    first.LoadFile("<?xml version=\"1.0\"?>\n" + model.GetText());
    const std::string printed = first.PrintModel();
    second.LoadFile(printed);
    ASSERT_EQ(Describe(second.GetModel()), Describe(first.GetModel())) << model.GetText();
    ASSERT_EQ(second.PrintModel(), printed);
    ASSERT_EQ(second.ComputeTables(), first.ComputeTables()) << printed;
    first.GetModel()->Complete();
    second.GetModel()->Complete();
    ASSERT_EQ(second.ComputeTables(), first.ComputeTables()) << printed;
    ASSERT_EQ(second.PrintModel(), first.PrintModel());
  }
}

}  // namespace
