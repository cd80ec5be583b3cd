// Modules are found in linear time by visit dates, as published by Y. Dutuit and A. Rauzy, "A
// linear-time algorithm to find modules of fault trees", IEEE Transactions on Reliability 45, 1996:
// a depth-first walk dates each visit of a node, and a gate is a module when everything below it is
// visited only between the walk's entering the gate for the first time and its leaving it.
//
// In an and or an or, several arguments that are modules themselves, or events, and stand nowhere
// else are gathered below a gate of their own, which then is a module. So a gate over a few shared
// systems and a hundred events of its own becomes one over the systems and one variable.
//
// The order of the variables is the one in which a walk down from the top of the module meets them:
// in each gate the variables first, then the gates by their number of parents, then by the number
// of leaves below them, the smallest first. Other orders that were tried make diagrams within a
// factor of two of the same size on most models.
#include "diagram/OrvaDiagramModules.h"

#include <algorithm>
#include <cassert>
#include <tuple>
#include <utility>

// The dates of the visits of one node, and of those of all nodes below it.
struct OrvaDiagramModules::Visits {
  std::uint32_t first = 0;  // 0 before the first visit
  std::uint32_t left = 0;   // when the walk left the gate after the first visit
  std::uint32_t last = 0;
  std::uint32_t firstBelow = UINT32_MAX;
  std::uint32_t lastBelow = 0;

  bool IsModule() const { return first < firstBelow && lastBelow < left; }
};

namespace {

using Node = OrvaDiagramGraph::Node;
using Literal = OrvaDiagramGraph::Literal;

}  // namespace

OrvaDiagramModules::OrvaDiagramModules(OrvaDiagramGraph& graph)
    : _graph(graph), _variablesOfEvents(graph.events.size(), NONE) {
  std::vector<std::uint32_t> order = graph.CollectGatesInPostOrder();
  _GatherIndependentArguments(order);
  order = graph.CollectGatesInPostOrder();
  _WeighGates(order);
  _modulesOfGates.assign(graph.gates.size(), NONE);
  _variablesOfGates.assign(graph.gates.size(), NONE);
  for (const std::uint32_t gate : order) {
    if (!_isModule[gate]) continue;
    _modulesOfGates[gate] = static_cast<std::uint32_t>(_modules.size());
    _OrderVariables(gate);
  }
  if (order.empty()) {
    _modules.push_back({{}, 0, 1});
    _variablesOfEvents[graph.top.GetIndex()] = _AddVariable(false, graph.top.GetIndex());
  }
}

namespace {

// Walks the graph depth first and dates the visits of gates and events.
template <class Visits>
class Dater {
 public:
  explicit Dater(const OrvaDiagramGraph& graph)
      : events(graph.events.size()), gates(graph.gates.size()), _graph(graph) {
    if (graph.top.IsGate()) _Walk();
  }

  std::vector<Visits> events;
  std::vector<Visits> gates;

 private:
  struct Frame {
    std::uint32_t gate;
    std::uint32_t next;
  };

  void _Walk() {
    _Visit(_graph.top);
    while (!_stack.empty()) {
      Frame& frame = _stack.back();
      if (frame.next < _graph.gates[frame.gate].arguments.size()) {
        _Visit(_graph.gates[frame.gate].arguments[frame.next++]);
      } else {
        gates[frame.gate].left = gates[frame.gate].last = ++_date;
        _stack.pop_back();
      }
    }
  }

  void _Visit(Literal literal) {
    const std::size_t index = literal.GetIndex();
    Visits& visits = literal.IsGate() ? gates[index] : events[index];
    visits.last = ++_date;
    if (visits.first != 0) return;
    visits.first = _date;
    if (literal.IsGate()) _stack.push_back({static_cast<std::uint32_t>(index), 0});
  }

  const OrvaDiagramGraph& _graph;
  std::vector<Frame> _stack;
  std::uint32_t _date = 0;
};

}  // namespace

void OrvaDiagramModules::_GatherIndependentArguments(const std::vector<std::uint32_t>& order) {
  Dater<Visits> dates(_graph);
  std::vector<std::uint32_t> occurrencesOfEvents(_graph.events.size());
  _occurrences.assign(_graph.gates.size(), 0);
  _isModule.assign(_graph.gates.size(), false);
  for (const std::uint32_t number : order) {
    Visits& visits = dates.gates[number];
    for (const Literal argument : _graph.gates[number].arguments) {
      const std::size_t index = argument.GetIndex();
      const Visits& below = argument.IsGate() ? dates.gates[index] : dates.events[index];
      ++(argument.IsGate() ? _occurrences[index] : occurrencesOfEvents[index]);
      visits.firstBelow = std::min({visits.firstBelow, below.first, below.firstBelow});
      visits.lastBelow = std::max({visits.lastBelow, below.last, below.lastBelow});
    }
    _isModule[number] = visits.IsModule();
  }
  for (const std::uint32_t number : order) {
    if (_graph.gates[number].type == OrvaDiagramGraph::ATLEAST) continue;
    const auto isShared = [&](Literal argument) {
      const std::size_t index = argument.GetIndex();
      return argument.IsGate() ? !_isModule[index] || _occurrences[index] != 1
                               : occurrencesOfEvents[index] != 1;
    };
    auto& arguments = _graph.gates[number].arguments;
    const auto middle = std::stable_partition(arguments.begin(), arguments.end(), isShared);
    if (middle == arguments.begin() || arguments.end() - middle < 2) continue;
    std::vector<Literal> independent(middle, arguments.end());
    arguments.erase(middle, arguments.end());
    const auto type = _graph.gates[number].type;
    // The list of arguments moves when a gate is added.
    const Literal gathered = _graph.AddGate(type, std::move(independent));
    _graph.gates[number].arguments.push_back(gathered);
    _isModule.push_back(true);
    _occurrences.push_back(1);
  }
}

// A weight counts shared leaves each time; it can grow exponentially, and ends at infinity.
void OrvaDiagramModules::_WeighGates(const std::vector<std::uint32_t>& order) {
  _weights.assign(_graph.gates.size(), 0.0);
  for (const std::uint32_t number : order) {
    for (const Literal argument : _graph.gates[number].arguments) {
      _weights[number] += argument.IsGate() ? _weights[argument.GetIndex()] : 1.0;
    }
  }
}

void OrvaDiagramModules::_SortArguments(std::uint32_t gate) {
  const auto key = [&](Literal argument) {
    const std::size_t index = argument.GetIndex();
    if (!argument.IsGate()) return std::make_tuple(false, 0U, 1.0);
    return std::make_tuple(!_isModule[index], _occurrences[index], _weights[index]);
  };
  auto& arguments = _graph.gates[gate].arguments;
  std::stable_sort(arguments.begin(), arguments.end(),
                   [&](Literal a, Literal b) { return key(a) < key(b); });
}

// Walks down from the top of a module as far as the modules and events below it.
void OrvaDiagramModules::_OrderVariables(std::uint32_t top) {
  struct Frame {
    std::uint32_t gate;
    std::uint32_t next;
  };
  Module module;
  module.firstVariable = static_cast<std::uint32_t>(_variables.size());
  std::vector<Frame> stack{{top, 0}};
  _SortArguments(top);
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next == _graph.gates[frame.gate].arguments.size()) {
      module.gates.push_back(frame.gate);
      stack.pop_back();
      continue;
    }
    const Literal argument = _graph.gates[frame.gate].arguments[frame.next++];
    const std::size_t index = argument.GetIndex();
    if (!argument.IsGate()) {
      std::uint32_t& variable = _variablesOfEvents[index];
      if (variable == NONE) variable = _AddVariable(false, index);
    } else if (_isModule[index]) {
      std::uint32_t& variable = _variablesOfGates[index];
      if (variable == NONE) variable = _AddVariable(true, _modulesOfGates[index]);
    } else if (_modulesOfGates[index] == NONE) {
      // A gate inside the module is marked as visited with the number of the module.
      _modulesOfGates[index] = static_cast<std::uint32_t>(_modules.size());
      _SortArguments(static_cast<std::uint32_t>(index));
      stack.push_back({static_cast<std::uint32_t>(index), 0});
    }
  }
  module.endOfVariables = static_cast<std::uint32_t>(_variables.size());
  assert(module.gates.back() == top);
  _modules.push_back(std::move(module));
}

std::uint32_t OrvaDiagramModules::_AddVariable(bool isModule, std::size_t number) {
  _variables.push_back({isModule, static_cast<std::uint32_t>(number)});
  return static_cast<std::uint32_t>(_variables.size() - 1);
}

std::vector<std::uint32_t> OrvaDiagramModules::CountUsers() const {
  std::vector<std::uint32_t> users(_graph.gates.size());
  for (const Module& module : _modules) {
    for (const std::uint32_t gate : module.gates) {
      for (const Literal argument : _graph.gates[gate].arguments) {
        if (argument.IsGate()) ++users[argument.GetIndex()];
      }
    }
  }
  return users;
}
