#include "ModelGenerator.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <vector>

namespace {

constexpr int TRAINS = 3;
constexpr int COMPONENTS = 4;
constexpr int BASIC_EVENTS_PER_FUNCTION = TRAINS * COMPONENTS * 2 + 1;
constexpr int SEQUENCES_PER_GROUP = 10;
// Every function of this many has no support function; the others lean on one of lower number.
constexpr int SUPPORT_FUNCTION_PERIOD = 3;
constexpr int SUPPORT_FAN_OUT = 4;

class Generator {
 public:
  Generator(int numberOfBasicEvents, unsigned seed, Law law)
      : _numberOfFunctions(std::max(2, numberOfBasicEvents / BASIC_EVENTS_PER_FUNCTION)),
        _random(seed),
        _law(law) {}

  std::string Generate() {
    _text = "<?xml version=\"1.0\"?>\n<open-psa>\n<define-fault-tree name=\"plant\">\n";
    AddTop();
    for (int f = 0; f < _numberOfFunctions; ++f) {
      AddSequence(f);
      AddFunction(f);
    }
    Append(_text, "</define-fault-tree>\n<model-data>\n", _data, "</model-data>\n</open-psa>\n");
    return std::move(_text);
  }

 private:
  static std::string Numbered(std::string prefix, int number) {
    return prefix.append(std::to_string(number));
  }
  static std::string Function(int f) { return Numbered("F", f); }
  static std::string Train(int f, int t) { return Numbered(Function(f).append("-T"), t); }
  static std::string Component(int f, int t, int c) {
    return Numbered(Train(f, t).append("-C"), c);
  }
  static std::string Sequence(int f) { return Numbered("SEQ", f); }
  static std::string Group(int g) { return Numbered("GROUP", g); }

  template <class... Texts>
  static void Append(std::string& target, const Texts&... texts) {
    (target.append(texts), ...);
  }

  void OpenGate(const std::string& name, const char* formula) {
    Append(_text, "<define-gate name=\"", name, "\"><", formula, ">\n");
  }
  void CloseGate(const char* formula) { Append(_text, "</", formula, "></define-gate>\n"); }
  void AddGate(const std::string& name) { Append(_text, "<gate name=\"", name, "\"/>\n"); }
  void AddBasicEvent(const std::string& name) {
    const double exponent = -5.0 + 3.0 * std::uniform_real_distribution()(_random);
    char value[32];
    std::snprintf(value, sizeof value, "%.3g", std::pow(10.0, exponent));
    Append(_text, "<basic-event name=\"", name, "\"/>\n");
    const std::string number = std::string("<float value=\"").append(value).append("\"/>");
    if (_law == Law::LOGNORMAL) {
      Append(
          _data, "<define-parameter name=\"L-", name, "\"><lognormal-deviate>", number,
          "<float value=\"3\"/><float value=\"0.95\"/></lognormal-deviate></define-parameter>\n");
    }
    Append(_data, "<define-basic-event name=\"", name, "\">");
    AddLaw(name, number);
    Append(_data, "</define-basic-event>\n");
  }
  void AddLaw(const std::string& name, const std::string& number) {
    if (_law == Law::PROBABILITY) return Append(_data, number);
    Append(_data, "<exponential>");
    if (_law == Law::RATE) {
      Append(_data, number);
    } else {
      Append(_data, "<parameter name=\"L-", name, "\"/>");
    }
    Append(_data, "<mission-time/></exponential>");
  }

  void AddTop() {
    const int groups = (_numberOfFunctions + SEQUENCES_PER_GROUP - 1) / SEQUENCES_PER_GROUP;
    OpenGate("CORE-DAMAGE", "or");
    for (int g = 0; g < groups; ++g) AddGate(Group(g));
    CloseGate("or");
    for (int g = 0; g < groups; ++g) {
      OpenGate(Group(g), "or");
      for (int f = g * SEQUENCES_PER_GROUP;
           f < std::min((g + 1) * SEQUENCES_PER_GROUP, _numberOfFunctions); ++f) {
        AddGate(Sequence(f));
      }
      CloseGate("or");
    }
  }

  void AddSequence(int f) {
    OpenGate(Sequence(f), "and");
    AddBasicEvent(Numbered("IE", f));
    AddGate(Function(f));
    AddGate(Function((f + 1) % _numberOfFunctions));
    CloseGate("and");
  }

  void AddFunction(int f) {
    const bool votes = f % 2 == 0;
    OpenGate(Function(f), votes ? "atleast min=\"2\"" : "and");
    for (int t = 0; t < TRAINS; ++t) AddGate(Train(f, t));
    CloseGate(votes ? "atleast" : "and");
    for (int t = 0; t < TRAINS; ++t) AddTrain(f, t);
  }

  void AddTrain(int f, int t) {
    OpenGate(Train(f, t), "or");
    for (int c = 0; c < COMPONENTS; ++c) AddGate(Component(f, t, c));
    if (f % SUPPORT_FUNCTION_PERIOD != 0) AddGate(Train(f / SUPPORT_FAN_OUT, t));
    CloseGate("or");
    for (int c = 0; c < COMPONENTS; ++c) {
      const std::string component = Component(f, t, c);
      OpenGate(component, "or");
      AddBasicEvent(component + "-START");
      AddBasicEvent(component + "-RUN");
      CloseGate("or");
    }
  }

  int _numberOfFunctions;
  std::mt19937 _random;
  Law _law;
  std::string _text;
  std::string _data;
};

}  // namespace

std::string GenerateModel(int numberOfBasicEvents, unsigned seed, Law law) {
  return Generator(numberOfBasicEvents, seed, law).Generate();
}
