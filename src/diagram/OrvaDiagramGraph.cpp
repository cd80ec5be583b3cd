// A graph is made in one of two ways. For cutsets it comes from the formulas, all those below the
// top event, whatever the model's modules are: the rewriting of the graph finds modules of its own,
// nested to any depth. For the exact probability it comes from the systems, since those are what
// the cutsets in question were found in, and the formulas may have been rewritten since; equations
// are all thresholds over literals, so that negations come along. A system stands for its module
// under the name of its handle, and the systems are put together to one graph again.
//
// Names of events are not looked up: a formula's event carries its place in its flag while the
// graph is made, a variable of a system has its number.
#include "diagram/OrvaDiagramGraph.h"

#include <algorithm>
#include <cassert>
#include <unordered_map>
#include <utility>

#include "model/OrvaEvent.h"
#include "model/OrvaGate.h"
#include "quantification/OrvaHandle.h"
#include "support/containers/LumoRange.h"
#include "system/OrvaSystem.h"

using Node = OrvaDiagramGraph::Node;
using Literal = OrvaDiagramGraph::Literal;
using Gate = OrvaDiagramGraph::Gate;

namespace {

OrvaDiagramGraph::Operator GetOperator(OrvaGate::Type type) {
  switch (type) {
    case OrvaGate::OR:
      return OrvaDiagramGraph::OR;
    case OrvaGate::ATLEAST:
      return OrvaDiagramGraph::ATLEAST;
    default:  // an AND, or a reference, which is the and of one
      return OrvaDiagramGraph::AND;
  }
}

// The flag of an event holds its place in the graph while the graph is made: code + 1.
void SetPlace(OrvaEvent* event, Node node) {
  event->SetFlag(static_cast<int>(Literal(node).GetCode()) + 1);
}
std::uint32_t GetCodeOfPlace(const OrvaEvent* event) {
  return static_cast<std::uint32_t>(event->GetFlag() - 1);
}
Node GetPlace(const OrvaEvent* event) {
  const std::uint32_t code = GetCodeOfPlace(event) >> 1;
  return (code & 1U) != 0 ? Node::Gate(code >> 1) : Node::Event(code >> 1);
}

// False when the formula holds a negation.
bool BuildGate(const OrvaGate* definition, Gate& gate) {
  gate.type = GetOperator(definition->GetType());
  gate.min = gate.type == OrvaDiagramGraph::ATLEAST ? definition->GetMin() : 0;
  if (definition->IsEvent()) {
    gate.arguments = {GetPlace(definition->GetReferencedEvent())};
    return true;
  }
  if (definition->IsNegation()) return false;
  gate.arguments.reserve(static_cast<std::size_t>(definition->GetNumberOfChildren()));
  for (const OrvaGate* child = definition->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    if (!child->IsEvent()) return false;
    gate.arguments.emplace_back(GetPlace(child->GetReferencedEvent()));
  }
  return true;
}

}  // namespace

const OrvaEvent* OrvaDiagramGraph::BuildFromFormulas(OrvaEvent* topEvent) {
  LumoList symbols;
  topEvent->CollectDescendants(OrvaSymbol::CompareAsAnySymbol, nullptr, &symbols);
  const OrvaEvent* incoherent = nullptr;
  for (OrvaEvent* event : LumoItems<OrvaEvent>(symbols)) {
    if (const OrvaGate* definition = event->GetDefinition()) {
      if (!BuildGate(definition, gates.emplace_back())) {
        incoherent = event;
        break;
      }
      SetPlace(event, Node::Gate(gates.size() - 1));
    } else {
      events.push_back(event);
      SetPlace(event, Node::Event(events.size() - 1));
    }
  }
  if (incoherent == nullptr) top = GetPlace(topEvent);
  for (OrvaEvent* event : LumoItems<OrvaEvent>(symbols)) event->SetFlag(0);
  return incoherent;
}

namespace {

// Makes one graph of the systems of a top event and its modules: an input variable that stands for
// a module becomes the top of the module's system.
class SystemCollector {
 public:
  SystemCollector(OrvaDiagramGraph& graph, const char* handleName)
      : _graph(graph), _handleName(handleName) {}

  // The module without a system, or null. Systems are taken from a list, since modules of modules
  // can be nested; the place of a module's top is known as soon as it is met.
  const OrvaEvent* Collect(const OrvaEvent* top) {
    _graph.top = _GetPlaceOfModule(top);
    for (std::size_t i = 0; i < _modules.size(); ++i) {
      const OrvaHandle* handle = _modules[i].event->GetHandle(_handleName);
      if (handle == nullptr || handle->GetSystem() == nullptr) return _modules[i].event;
      _AddSystem(handle->GetSystem(), _modules[i].place);
    }
    return _FindRing();
  }

 private:
  struct Module {
    const OrvaEvent* event;
    Node place;
  };

  // The place is a gate over the top variable of the module's system.
  Node _GetPlaceOfModule(const OrvaEvent* event) {
    const auto [entry, isNew] = _placesOfModules.emplace(event, Node());
    if (isNew) {
      entry->second = _graph.AddGate(OrvaDiagramGraph::AND, {});
      _modules.push_back({event, entry->second});
    }
    return entry->second;
  }

  Node _GetPlaceOfEvent(OrvaEvent* event) {
    const auto [entry, isNew] = _placesOfEvents.emplace(event, Node());
    if (isNew) {
      entry->second = Node::Event(_graph.events.size());
      _graph.events.push_back(event);
    }
    return entry->second;
  }

  // An event with a formula that stands as an input variable was cut out as a module. Whether it is
  // one now does not count: another top event may have been looked at since.
  Node _GetPlaceOfInput(const OrvaVariable& variable) {
    OrvaEvent* event = variable.GetEvent();
    return event->GetDefinition() != nullptr ? _GetPlaceOfModule(event) : _GetPlaceOfEvent(event);
  }

  void _AddSystem(OrvaSystem* system, Node place) {
    std::vector<Node> nodes;  // by number of the variable
    nodes.reserve(static_cast<std::size_t>(system->GetNumberOfVariables()));
    for (const OrvaVariable& variable : system->GetVariables()) {
      nodes.push_back(variable.IsInputVariable() ? _GetPlaceOfInput(variable)
                                                 : _graph.AddGate(OrvaDiagramGraph::AND, {}));
    }
    for (const OrvaEquation& equation : system->GetEquations()) {
      const auto number = static_cast<std::size_t>(equation.GetFanout()->GetNumber());
      _graph.gates[nodes[number].GetIndex()] = _BuildGate(equation, nodes);
    }
    const auto top = static_cast<std::size_t>(system->GetTopVariable()->GetNumber());
    _graph.gates[place.GetIndex()].arguments = {nodes[top]};
  }

  Gate _BuildGate(const OrvaEquation& equation, const std::vector<Node>& nodes) {
    Gate gate;
    for (const OrvaLiteral& literal : equation.GetFanins()) {
      const auto number = static_cast<std::size_t>(literal.GetVariable()->GetNumber());
      gate.arguments.emplace_back(nodes[number], !literal.GetSign());
    }
    gate.min = equation.GetMin();
    gate.type = OrvaDiagramGraph::ATLEAST;
    if (equation.GetSize() <= 1 && gate.min < 1) _BuildReference(equation, gate);
    return gate;
  }

  // The equation of an event that is another name for a basic event, or the negation of an event,
  // has no threshold and always holds: this is the defined behaviour of systems. What counts here
  // is the event that the formula names, and whether it negates it.
  void _BuildReference(const OrvaEquation& equation, Gate& gate) {
    const OrvaGate* definition = equation.GetFanout()->GetEvent()->GetDefinition();
    if (definition == nullptr) return;
    if (definition->IsEvent()) {
      gate.arguments = {_GetPlaceOfEvent(definition->GetReferencedEvent())};
    } else if (gate.arguments.size() == 1) {
      gate.arguments.front() = gate.arguments.front().NegateIf(definition->IsNegation());
    }
    gate.min = 1;
  }

  // Systems that were built from different states of the model can name each other as modules: the
  // module at which a walk from the top comes back to a gate that it is still below.
  const OrvaEvent* _FindRing() const {
    enum State : char { NEW, OPEN, DONE };
    struct Frame {
      std::size_t gate;
      std::size_t next;
    };
    std::vector<State> states(_graph.gates.size(), NEW);
    std::vector<Frame> stack{{_graph.top.GetIndex(), 0}};
    states[_graph.top.GetIndex()] = OPEN;
    while (!stack.empty()) {
      Frame& frame = stack.back();
      const auto& arguments = _graph.gates[frame.gate].arguments;
      if (frame.next == arguments.size()) {
        states[frame.gate] = DONE;
        stack.pop_back();
        continue;
      }
      const Literal argument = arguments[frame.next++];
      if (!argument.IsGate() || states[argument.GetIndex()] == DONE) continue;
      if (states[argument.GetIndex()] == OPEN) return _modules.front().event;
      states[argument.GetIndex()] = OPEN;
      stack.push_back({argument.GetIndex(), 0});
    }
    return nullptr;
  }

  OrvaDiagramGraph& _graph;
  const char* _handleName;
  // A top event that is a basic event is in both.
  std::unordered_map<const OrvaEvent*, Node> _placesOfModules;
  std::unordered_map<const OrvaEvent*, Node> _placesOfEvents;
  std::vector<Module> _modules;
};

}  // namespace

const OrvaEvent* OrvaDiagramGraph::BuildFromSystems(const OrvaEvent* topEvent,
                                                    const char* handleName) {
  return SystemCollector(*this, handleName).Collect(topEvent);
}

Node OrvaDiagramGraph::AddGate(Operator type, std::vector<Literal> arguments) {
  gates.push_back({type, 0, std::move(arguments)});
  return Node::Gate(gates.size() - 1);
}

std::vector<std::uint32_t> OrvaDiagramGraph::CollectGatesInPostOrder() const {
  struct Frame {
    std::uint32_t gate;
    std::uint32_t next;
  };
  std::vector<std::uint32_t> result;
  std::vector<bool> isVisited(gates.size());
  std::vector<Frame> stack;
  const auto visit = [&](Literal literal) {
    if (!literal.IsGate() || isVisited[literal.GetIndex()]) return;
    isVisited[literal.GetIndex()] = true;
    stack.push_back({static_cast<std::uint32_t>(literal.GetIndex()), 0});
  };
  visit(top);
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next == gates[frame.gate].arguments.size()) {
      result.push_back(frame.gate);
      stack.pop_back();
    } else {
      visit(gates[frame.gate].arguments[frame.next++]);
    }
  }
  return result;
}
