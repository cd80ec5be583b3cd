// Everything that the engine knows of a kind of expression is one row of one table: its name, how
// many children it takes, and how it is evaluated, drawn, reset, and asked for its failure rate. A
// class of its own for every kind would spread the sixty of them over as many files; here a new
// kind is a new row, and the functions that it names.

#include "model/OrvaProbabilityDistribution.h"

#include <algorithm>
#include <cassert>
#include <cfloat>
#include <cmath>
#include <iterator>
#include <vector>

#include "model/OrvaNameTable.h"
#include "model/OrvaParameter.h"
#include "model/OrvaProbabilityDistributionKinds.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/random/LumoRandomizer.h"
#include "support/text/LumoRawString.h"

namespace {

template <int N>
bool Exactly(int n) {
  return n == N;
}
template <int N>
bool AtLeast(int n) {
  return n >= N;
}
bool AsPeriodicTest(int n) { return n == 4 || n == 5 || n == 11; }

}  // namespace

// The kinds of rows.
struct OrvaProbabilityDistribution::Rows {
  using Node = OrvaProbabilityDistribution;
  using Value = LumoConstant;
  using Evaluate = void (Node::*)(double);
  using FailureRate = double (Node::*)(double) const;
  using Reset = void (Node::*)();
  static constexpr Dependence NEVER = Dependence::NEVER;
  static constexpr Dependence ALWAYS = Dependence::ALWAYS;
  static constexpr Dependence CHILDREN = Dependence::CHILDREN;

  static constexpr Functor Reference(const char* name) {
    return {.name = name,
            .acceptsChildren = Exactly<0>,
            .evaluate = &Node::_EvaluateParameter,
            .time = Dependence::DEFINITION,
            .repair = Dependence::DEFINITION,
            .failureRate = &Node::_GetFailureRateOfParameter};
  }
  static constexpr Functor Leaf(const char* name, Evaluate evaluate, Dependence time = NEVER) {
    return {.name = name, .acceptsChildren = Exactly<0>, .evaluate = evaluate, .time = time};
  }
  // Operators: they depend on whatever their children depend on.
  static constexpr Functor Operator(const char* name, bool (*acceptsChildren)(int),
                                    Evaluate evaluate,
                                    FailureRate failureRate = &Node::_GetNoFailureRate) {
    return {.name = name,
            .acceptsChildren = acceptsChildren,
            .evaluate = evaluate,
            .time = CHILDREN,
            .repair = CHILDREN,
            .failureRate = failureRate};
  }
  static constexpr Functor Unary(const char* name, Operation operation) {
    Functor row = Operator(name, Exactly<1>, &Node::_EvaluateOperation);
    row.operation = operation;
    return row;
  }
  static constexpr Functor Binary(const char* name, BinaryOperation operation) {
    Functor row = Operator(name, Exactly<2>, &Node::_EvaluateBinaryOperation);
    row.binaryOperation = operation;
    return row;
  }
  static constexpr Functor Fold(const char* name, Operation operation, Value::Type startType,
                                double start) {
    Functor row = Operator(name, AtLeast<2>, &Node::_EvaluateFold);
    row.operation = operation;
    row.startType = startType;
    row.start = start;
    return row;
  }
  static constexpr Functor Model(const char* name, bool (*acceptsChildren)(int), Evaluate evaluate,
                                 Dependence time, Dependence repair,
                                 FailureRate failureRate = &Node::_GetNoFailureRate) {
    return {.name = name,
            .acceptsChildren = acceptsChildren,
            .evaluate = evaluate,
            .time = time,
            .repair = repair,
            .failureRate = failureRate};
  }
  template <int N>
  static constexpr Functor Deviate(const char* name, Reset reset, Node::Deviate deviate) {
    return {.name = name,
            .acceptsChildren = Exactly<N>,
            .draw = &Node::_DrawDeviate,
            .reset = reset,
            .deviate = deviate,
            .numberOfArguments = N};
  }
};

// In the order of the types; the last row ends the table.
constexpr OrvaProbabilityDistribution::Functor OrvaProbabilityDistribution::_FUNCTORS[] = {
    Rows::Reference("parameter"),
    Rows::Leaf("bool", &Rows::Node::_KeepValue),
    Rows::Leaf("int", &Rows::Node::_KeepValue),
    Rows::Leaf("float", &Rows::Node::_KeepValue),
    Rows::Leaf("pi", &Rows::Node::_EvaluatePi),
    Rows::Leaf("mission-time", &Rows::Node::_EvaluateMissionTime, Rows::ALWAYS),
    Rows::Fold("and", &LumoConstant::SetAnd, LumoConstant::BOOL, 1),
    Rows::Fold("or", &LumoConstant::SetOr, LumoConstant::BOOL, 0),
    Rows::Unary("not", &LumoConstant::Not),
    Rows::Binary("eq", &LumoConstant::Eq),
    Rows::Binary("df", &LumoConstant::Df),
    Rows::Binary("lt", &LumoConstant::Lt),
    Rows::Binary("gt", &LumoConstant::Gt),
    Rows::Binary("leq", &LumoConstant::Leq),
    Rows::Binary("geq", &LumoConstant::Geq),
    Rows::Unary("neg", &LumoConstant::Neg),
    Rows::Fold("add", &LumoConstant::SetAdd, LumoConstant::INT, 0),
    Rows::Binary("sub", &LumoConstant::Sub),
    [] {
      Functor row = Rows::Fold("mul", &LumoConstant::SetMul, LumoConstant::INT, 1);
      row.failureRate = &Rows::Node::_GetFailureRateOfProduct;
      return row;
    }(),
    Rows::Binary("div", &LumoConstant::Div),
    Rows::Unary("abs", &LumoConstant::Abs),
    Rows::Unary("acos", &LumoConstant::Acos),
    Rows::Unary("asin", &LumoConstant::Asin),
    Rows::Unary("atan", &LumoConstant::Atan),
    Rows::Unary("cos", &LumoConstant::Cos),
    Rows::Unary("cosh", &LumoConstant::Cosh),
    Rows::Unary("exp", &LumoConstant::Exp),
    Rows::Unary("log", &LumoConstant::Log),
    Rows::Unary("log10", &LumoConstant::Log10),
    // One child is accepted and two are read: the value is always nil. This is as defined.
    [] {
      Functor row = Rows::Binary("mod", &LumoConstant::Mod);
      row.acceptsChildren = Exactly<1>;
      return row;
    }(),
    Rows::Binary("pow", &LumoConstant::Pow),
    Rows::Unary("sin", &LumoConstant::Sin),
    Rows::Unary("sinh", &LumoConstant::Sinh),
    Rows::Unary("tan", &LumoConstant::Tan),
    Rows::Unary("tanh", &LumoConstant::Tanh),
    Rows::Unary("sqrt", &LumoConstant::Sqrt),
    Rows::Unary("ceil", &LumoConstant::Ceil),
    Rows::Unary("floor", &LumoConstant::Floor),
    Rows::Fold("min", &LumoConstant::SetInf, LumoConstant::DOUBLE, DBL_MAX),
    // The start is the smallest positive double: children that are all below it yield it.
    Rows::Fold("max", &LumoConstant::SetSup, LumoConstant::DOUBLE, DBL_MIN),
    [] {
      Functor row = Rows::Fold("mean", &LumoConstant::SetAdd, LumoConstant::DOUBLE, 0);
      row.evaluate = &Rows::Node::_EvaluateMean;
      return row;
    }(),
    Rows::Operator("ite", Exactly<3>, &Rows::Node::_EvaluateIte, &Rows::Node::_GetFailureRateOfIte),
    Rows::Operator("switch", AtLeast<1>, &Rows::Node::_EvaluateSwitch,
                   &Rows::Node::_GetFailureRateOfSwitch),
    Rows::Operator("case", Exactly<2>, &Rows::Node::_KeepValue),
    Rows::Operator("Dirac", Exactly<2>, &Rows::Node::_EvaluateDirac),
    Rows::Operator("periodic", Exactly<3>, &Rows::Node::_EvaluatePeriodic),
    Rows::Model("exponential", Exactly<2>, &Rows::Node::_EvaluateExponential, Rows::CHILDREN,
                Rows::ALWAYS, &Rows::Node::_GetFailureRateOfFirstChild),
    Rows::Model("GLM", Exactly<4>, &Rows::Node::_EvaluateGLM, Rows::CHILDREN, Rows::ALWAYS,
                &Rows::Node::_GetFailureRateOfGLM),
    Rows::Model("MTT", Exactly<3>, &Rows::Node::_EvaluateMTT, Rows::CHILDREN, Rows::CHILDREN,
                &Rows::Node::_GetFailureRateOfMTT),
    Rows::Model("dormant", Exactly<3>, &Rows::Node::_EvaluateDormant, Rows::CHILDREN, Rows::ALWAYS,
                &Rows::Node::_GetFailureRateOfFirstChild),
    Rows::Model("Weibull", Exactly<3>, &Rows::Node::_EvaluateWeibull, Rows::CHILDREN,
                Rows::CHILDREN),
    Rows::Model("standby", Exactly<6>, &Rows::Node::_EvaluateStandby, Rows::CHILDREN, Rows::ALWAYS),
    Rows::Model("periodic-test", AsPeriodicTest, &Rows::Node::_EvaluatePeriodicTest, Rows::ALWAYS,
                Rows::ALWAYS, &Rows::Node::_GetFailureRateOfPeriodicTest),
    Rows::Model("bound-time", Exactly<4>, &Rows::Node::_EvaluateBoundTime, Rows::ALWAYS,
                Rows::CHILDREN),
    Rows::Deviate<2>("uniform-deviate", &Rows::Node::_ResetUniform,
                     [](const auto& x, auto* random) { return random->UniformDraw(x[0], x[1]); }),
    Rows::Deviate<2>("normal-deviate", &Rows::Node::_ResetToFirstParameter,
                     [](const auto& x, auto* random) { return random->NormalDraw(x[0], x[1]); }),
    // The logarithm is drawn: see _GetArgumentsOfDeviate.
    Rows::Deviate<3>(
        "lognormal-deviate", &Rows::Node::_ResetToFirstParameter,
        [](const auto& x, auto* random) { return std::exp(random->NormalDraw(x[0], x[1])); }),
    Rows::Deviate<2>("beta-deviate", &Rows::Node::_ResetBeta,
                     [](const auto& x, auto* random) { return random->BetaDraw(x[0], x[1]); }),
    Rows::Deviate<2>("gamma-deviate", &Rows::Node::_ResetGamma,
                     [](const auto& x, auto* random) { return random->GammaDraw(x[0], x[1]); }),
    {.name = "bin", .acceptsChildren = Exactly<2>},
    {.name = "histogram",
     .acceptsChildren = AtLeast<2>,
     .draw = &Rows::Node::_DrawHistogram,
     .reset = &Rows::Node::_ResetHistogram},
    {},
};

OrvaProbabilityDistribution::OrvaProbabilityDistribution(OrvaModel* model, Type type)
    : OrvaTerm(model, type) {
  SetType(type);
  LumoMemoryManager::TraceNew(this, "OrvaProbabilityDistribution");
}

OrvaProbabilityDistribution::~OrvaProbabilityDistribution() {
  LumoMemoryManager::TraceDelete(this, "OrvaProbabilityDistribution");
}

OrvaProbabilityDistribution* OrvaProbabilityDistribution::NewParameter(OrvaModel* model,
                                                                       OrvaParameter* parameter) {
  auto* node = new OrvaProbabilityDistribution(model, PARAMETER);
  node->SetReferencedSymbol(parameter);
  return node;
}

OrvaProbabilityDistribution* OrvaProbabilityDistribution::NewBool(OrvaModel* model, bool value) {
  auto* node = new OrvaProbabilityDistribution(model, BOOL);
  node->_value.Set(value);
  return node;
}

OrvaProbabilityDistribution* OrvaProbabilityDistribution::NewInt(OrvaModel* model, int value) {
  auto* node = new OrvaProbabilityDistribution(model, INT);
  node->_value.Set(value);
  return node;
}

OrvaProbabilityDistribution* OrvaProbabilityDistribution::NewFloat(OrvaModel* model, double value) {
  auto* node = new OrvaProbabilityDistribution(model, FLOAT);
  node->_value.Set(value);
  return node;
}

OrvaProbabilityDistribution* OrvaProbabilityDistribution::NewDistribution(
    OrvaModel* model, Type type, const LumoContainer* children) {
  auto* node = new OrvaProbabilityDistribution(model, type);
  if (children != nullptr) node->AddChildren(children);
  return node;
}

OrvaProbabilityDistribution* OrvaProbabilityDistribution::Copy(
    OrvaModel* model, const OrvaProbabilityDistribution* distribution) {
  auto* copy = new OrvaProbabilityDistribution(model, distribution->GetType());
  copy->SetReferencedSymbol(distribution->GetReferencedSymbol());
  copy->_value.Set(&distribution->_value);
  for (const auto* child = distribution->GetFirstChild(); child != nullptr;
       child = child->GetNextSibling()) {
    copy->AddChild(Copy(model, child));
  }
  return copy;
}

const OrvaProbabilityDistribution::Functor& OrvaProbabilityDistribution::_GetFunctor() const {
  assert(GetFunctor(GetType()) != nullptr);
  return _FUNCTORS[GetType()];
}

const char* OrvaProbabilityDistribution::GetFunctor(Type type) {
  static_assert(std::size(_FUNCTORS) == HISTOGRAM + 2);
  const bool isKnown = type >= 0 && type < static_cast<int>(std::size(_FUNCTORS));
  return isKnown ? _FUNCTORS[type].name : nullptr;
}

OrvaProbabilityDistribution::Type OrvaProbabilityDistribution::GetType(const char* name) {
  static const OrvaNameTable table = [] {
    OrvaNameTable names;
    names.AddRows(_FUNCTORS);
    return names;
  }();
  static_assert(UNKNOWN == OrvaNameTable::NOT_FOUND);
  return static_cast<Type>(table.Find(name));
}

void OrvaProbabilityDistribution::SetType(Type type) {
  OrvaTerm::SetType(type);
  SetAttribute(FUNCTOR, GetFunctor(type));
}

bool OrvaProbabilityDistribution::CheckNumberOfChildren(Type type, int n) {
  return GetFunctor(type) != nullptr && _FUNCTORS[type].acceptsChildren(n);
}

OrvaParameter* OrvaProbabilityDistribution::GetReferencedParameter() const {
  return GetType() == PARAMETER ? static_cast<OrvaParameter*>(GetReferencedSymbol()) : nullptr;
}

double OrvaProbabilityDistribution::GetValueOfChildAsDouble(int i) const {
  const OrvaProbabilityDistribution* child = GetChild(i);
  return child == nullptr ? 0.0 : child->GetValueAsDouble();
}

LumoConstant* OrvaProbabilityDistribution::ComputeValue(double t) {
  (this->*_GetFunctor().evaluate)(t);
  return &_value;
}

LumoConstant* OrvaProbabilityDistribution::ComputeValueOfChild(int i, double t) {
  OrvaProbabilityDistribution* child = GetChild(i);
  return child == nullptr ? nullptr : child->ComputeValue(t);
}

double OrvaProbabilityDistribution::ComputeValueAsDouble(double t, double low, double high) {
  ComputeValue(t);
  return _Bound(low, high);
}

double OrvaProbabilityDistribution::_Bound(double low, double high) {
  assert(low <= high);
  const double value = _value.ToDouble();
  if (value < low) {
    _value.Set(low);
    return low;
  }
  if (value > high) {
    _value.Set(high);
    return high;
  }
  return value;
}

double OrvaProbabilityDistribution::ComputeValueOfChildAsDouble(int i, double t, double low,
                                                                double high) {
  OrvaProbabilityDistribution* child = GetChild(i);
  return child == nullptr ? std::clamp(0.0, low, high) : child->ComputeValueAsDouble(t, low, high);
}

int OrvaProbabilityDistribution::ComputeValueOfChildAsInt(int i, double t, int low, int high) {
  assert(low <= high);
  LumoConstant* value = ComputeValueOfChild(i, t);
  const int n = value == nullptr ? 0 : value->ToInt();
  const int bounded = std::clamp(n, low, high);
  if (value != nullptr && bounded != n) value->Set(bounded);
  return bounded;
}

// The node after this one in pre-order below a root; past its children when they are not entered.
const OrvaProbabilityDistribution* OrvaProbabilityDistribution::_GetNextInPreOrder(
    const OrvaProbabilityDistribution* root, bool entersChildren) const {
  if (entersChildren && GetFirstChild() != nullptr) return GetFirstChild();
  for (const auto* node = this; node != root; node = node->GetParent()) {
    if (node->GetNextSibling() != nullptr) return node->GetNextSibling();
  }
  return nullptr;
}

// Whether a node with the property is reached through the nodes that hand it on. This is asked for
// every basic event at every point of a curve: a tree is walked without memory, and only the
// parameters met, each of whose definitions is walked once, are listed.
bool OrvaProbabilityDistribution::_DoesDepend(Dependence Functor::*property) const {
  std::vector<OrvaParameter*> parameters;
  bool isFound = false;
  const auto walk = [&](const OrvaProbabilityDistribution* root) {
    bool entersChildren = false;
    for (const auto* node = root; node != nullptr && !isFound;
         node = node->_GetNextInPreOrder(root, entersChildren)) {
      const Dependence dependence = node->_GetFunctor().*property;
      isFound = dependence == Dependence::ALWAYS;
      entersChildren = dependence == Dependence::CHILDREN;
      if (dependence != Dependence::DEFINITION) continue;
      OrvaParameter* parameter = node->GetReferencedParameter();
      if (parameter == nullptr || parameter->GetFlag() != 0) continue;
      parameter->SetFlag(1);
      parameters.push_back(parameter);
    }
  };
  walk(this);
  for (std::size_t i = 0; i < parameters.size() && !isFound; ++i) {
    if (const auto* definition = parameters[i]->GetDefinition()) walk(definition);
  }
  for (OrvaParameter* parameter : parameters) parameter->SetFlag(0);
  return isFound;
}

bool OrvaProbabilityDistribution::IsTimeDependent() const { return _DoesDepend(&Functor::time); }

bool OrvaProbabilityDistribution::IsRepairDependent() const {
  return _DoesDepend(&Functor::repair);
}

// Deviates keep what was drawn, a switch without a match its former value, and a constant that is
// out of the bounds of a rate or of a time is replaced by the bound. Other bounds are not looked
// into.
bool OrvaProbabilityDistribution::CanBeShared() const {
  for (const auto* node = this; node != nullptr; node = node->_GetNextInPreOrder(this, true)) {
    const Type type = node->GetType();
    if (type == SWITCH || type == CASE || type > WEIBULL || type == GLM) return false;
    const double value = node->GetValueAsDouble();
    const bool isConstant = type == BOOL || type == INT || type == FLOAT;
    if (isConstant && !(value >= 0.0 && value <= DBL_MAX)) return false;
  }
  return true;
}
