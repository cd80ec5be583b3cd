#pragma once

#include <cstdint>
#include <vector>

class OrvaEvent;
class OrvaSystem;

// What the decision diagrams work on: a graph of gates over basic events, in arrays, private to one
// computation. It is made from the formulas of a model or from Boolean systems, which stay as they
// are, and is then rewritten freely.
class OrvaDiagramGraph {
 public:
  enum Operator : std::uint8_t { AND, OR, ATLEAST };

  // A node is an event or a gate, each numbered from 0.
  class Node {
   public:
    Node() = default;
    static Node Event(std::size_t index) { return Node(static_cast<std::uint32_t>(index) << 1); }
    static Node Gate(std::size_t index) {
      return Node((static_cast<std::uint32_t>(index) << 1) | 1U);
    }
    bool IsGate() const { return (_code & 1U) != 0; }
    std::size_t GetIndex() const { return _code >> 1; }
    friend bool operator==(Node, Node) = default;

   private:
    friend class OrvaDiagramGraph;
    explicit Node(std::uint32_t code) : _code(code) {}
    std::uint32_t _code = 0;
  };

  // A node or its negation.
  class Literal {
   public:
    Literal() = default;
    // Implicit: a node is the positive literal on it.
    Literal(Node node, bool isNegated = false)  // NOLINT(google-explicit-constructor)
        : _code((node._code << 1) | static_cast<std::uint32_t>(isNegated)) {}
    Node GetNode() const { return Node(_code >> 1); }
    bool IsNegated() const { return (_code & 1U) != 0; }
    bool IsGate() const { return GetNode().IsGate(); }
    std::size_t GetIndex() const { return GetNode().GetIndex(); }
    Literal NegateIf(bool negates) const {
      Literal result = *this;
      result._code ^= static_cast<std::uint32_t>(negates);
      return result;
    }
    std::uint32_t GetCode() const { return _code; }
    friend bool operator==(Literal, Literal) = default;
    friend bool operator<(Literal a, Literal b) { return a._code < b._code; }

   private:
    std::uint32_t _code = 0;
  };

  // At least `min` of the arguments are true; AND and OR leave `min` alone. An argument of an
  // ATLEAST that stands there twice counts twice.
  struct Gate {
    Operator type = AND;
    int min = 0;
    std::vector<Literal> arguments;
  };

  // The formulas below a top event. They have to be flat: and, or and atleast over events, or a
  // reference to an event. On the first negation the graph is left incomplete and the gate that
  // holds it is returned; otherwise null.
  const OrvaEvent* BuildFromFormulas(OrvaEvent* top);
  // The systems of a top event and of its modules, each under the handle of that name. Null, or the
  // module that has no system of that name (or stands below itself).
  const OrvaEvent* BuildFromSystems(const OrvaEvent* top, const char* handleName);

  // By number. The events are the model's.
  std::vector<OrvaEvent*> events;
  std::vector<Gate> gates;
  Literal top;

  const Gate& GetGate(Literal literal) const { return gates[literal.GetIndex()]; }
  Node AddGate(Operator type, std::vector<Literal> arguments);
  // The numbers of the gates below the top, each after those below it.
  std::vector<std::uint32_t> CollectGatesInPostOrder() const;
};
