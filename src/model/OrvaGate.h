#pragma once

#include "model/OrvaTerm.h"

class OrvaEvent;

// A node of a Boolean formula. A gate is true when the number of its true children lies between
// its min and its max, both included; constants are made so that this holds for them too.
class OrvaGate : public OrvaTerm {
 public:
  enum Type : int {
    UNKNOWN = -1,
    CONSTANT = 0,
    EVENT = 1,
    AND = 2,
    OR = 3,
    NAND = 4,
    NOR = 5,
    ATLEAST = 6,
    ATMOST = 7,
    CARDINALITY = 8,
    NOT = 9,
  };

  // The thresholds of ATLEAST, ATMOST and CARDINALITY; 0 when absent.
  static constexpr const char* MIN = "__min__";
  static constexpr const char* MAX = "__max__";

  // New nodes, owned by the caller until they join a tree or define an event. Given children (null
  // for none) are moved below the node, in order.
  static OrvaGate* NewConstant(OrvaModel* model, bool value);
  // A reference to an event, and one more occurrence of it.
  static OrvaGate* NewEvent(OrvaModel* model, OrvaEvent* event);
  static OrvaGate* NewOr(OrvaModel* model, const LumoList* children);
  // An operator by its type, without children; thresholds are set afterwards.
  static OrvaGate* NewOperator(OrvaModel* model, Type type, const LumoList* children);
  // A deep copy, with new occurrences of the same events; null for a node of unknown type.
  static OrvaGate* Copy(OrvaModel* model, const OrvaGate* gate);
  ~OrvaGate() override;

  // The operator's name, null for an unknown type.
  static const char* GetFunctor(Type type);
  // The operator of that name; "gate", "basic-event" and "house-event" are events; else UNKNOWN.
  static Type GetType(const char* name);
  Type GetType() const { return static_cast<Type>(OrvaTerm::GetType()); }
  // The operator's name goes with the type.
  void SetType(Type type);

  OrvaGate* GetFirstChild() const { return static_cast<OrvaGate*>(OrvaTerm::GetFirstChild()); }
  OrvaGate* GetNextSibling() const { return static_cast<OrvaGate*>(OrvaTerm::GetNextSibling()); }
  OrvaGate* GetParent() const { return static_cast<OrvaGate*>(OrvaTerm::GetParent()); }

  OrvaEvent* GetDefinedEvent() const;
  OrvaEvent* GetReferencedEvent() const;
  // Leaves the occurrences of the former event and joins those of the new one.
  void SetReferencedEvent(OrvaEvent* event);

  // The fewest and the most true children for which the node is true.
  int GetMin() const;
  int GetMax() const;
  // False for a node that is no constant.
  bool GetConstantValue() const { return GetAttributeAsBool(VALUE, false); }

  bool IsConstant() const { return GetType() == CONSTANT; }
  bool IsEvent() const { return GetType() == EVENT; }
  // A reference to a gate.
  bool IsGate() const;
  bool IsNegation() const { return GetType() == NOT; }
  // An event or the negation of one.
  bool IsLiteral() const;
  // All children are literals.
  bool HasLiteralsOnly() const;
  // An AND, OR or ATLEAST of literals.
  bool IsNormalized() const;

  // Turns the node in place into a constant; its children are deleted. What it defines stays.
  void MuteToConstant(bool value);

  // Offered to users of the class; the program itself does not call what follows.

  // As NewOr; NewNot takes its child, which may be null.
  static OrvaGate* NewAnd(OrvaModel* model, const LumoList* children);
  static OrvaGate* NewNand(OrvaModel* model, const LumoList* children);
  static OrvaGate* NewNor(OrvaModel* model, const LumoList* children);
  static OrvaGate* NewAtLeast(OrvaModel* model, int min, const LumoList* children);
  static OrvaGate* NewAtMost(OrvaModel* model, int max, const LumoList* children);
  static OrvaGate* NewCardinality(OrvaModel* model, int min, int max, const LumoList* children);
  static OrvaGate* NewNot(OrvaModel* model, OrvaGate* child);
  OrvaGate* GetChild(int i) const { return static_cast<OrvaGate*>(OrvaTerm::GetChild(i)); }
  void SetDefinedEvent(OrvaEvent* event);
  bool IsConstantTrue() const { return IsConstant() && GetConstantValue(); }
  bool IsConstantFalse() const { return IsConstant() && !GetConstantValue(); }
  // References to events of these types.
  bool IsBasicEvent() const;
  bool IsHouseEvent() const;

 private:
  // How a bound on the number of true children is found.
  enum class Bound { ZERO, ONE, ALL, ALL_BUT_ONE, MIN_ATTRIBUTE, MAX_ATTRIBUTE, ONE_IF_FALSE };
  struct Functor {
    const char* name;
    Bound min;
    Bound max;
  };
  static const Functor _FUNCTORS[];

  OrvaGate(OrvaModel* model, Type type);
  int _GetBound(Bound bound) const;
  void _CopyChildren(OrvaModel* model, const OrvaGate* gate);
};
