#pragma once

#include <array>

#include "model/OrvaTerm.h"
#include "support/values/LumoConstant.h"

class LumoRandomizer;
class OrvaParameter;

// A node of an expression: the definition of a parameter, or the probability of a basic event. A
// tree is evaluated at a date, in the model's time unit. Evaluation never fails: inputs are
// bounded (negative rates and times become 0) and divisors that are 0 are replaced by the machine
// epsilon.
//
// Random deviates keep a value of their own, their central value after a reset or the last draw;
// evaluation leaves it alone.
class OrvaProbabilityDistribution : public OrvaTerm {
 public:
  enum Type : int {
    UNKNOWN = -1,
    PARAMETER = 0,
    BOOL,
    INT,
    FLOAT,
    PI,
    MISSION_TIME,
    AND,
    OR,
    NOT,
    EQ,
    DF,
    LT,
    GT,
    LEQ,
    GEQ,
    NEG,
    ADD,
    SUB,
    MUL,
    DIV,
    ABS,
    ACOS,
    ASIN,
    ATAN,
    COS,
    COSH,
    EXP,
    LOG,
    LOG10,
    MOD,
    POW,
    SIN,
    SINH,
    TAN,
    TANH,
    SQRT,
    CEIL,
    FLOOR,
    MIN,
    MAX,
    MEAN,
    ITE,
    SWITCH,
    CASE,
    DIRAC,
    PERIODIC,
    EXPONENTIAL,
    GLM,
    MTT,
    DORMANT,
    WEIBULL,
    STANDBY,
    PERIODIC_TEST,
    BOUND_TIME,
    UNIFORM_DEVIATE,
    NORMAL_DEVIATE,
    LOGNORMAL_DEVIATE,
    BETA_DEVIATE,
    GAMMA_DEVIATE,
    BIN,
    HISTOGRAM,
  };

  // New nodes, owned by the caller until they join a tree. Given children (null for none) are
  // moved below the node, in order.
  static OrvaProbabilityDistribution* NewParameter(OrvaModel* model, OrvaParameter* parameter);
  static OrvaProbabilityDistribution* NewBool(OrvaModel* model, bool value);
  static OrvaProbabilityDistribution* NewInt(OrvaModel* model, int value);
  static OrvaProbabilityDistribution* NewFloat(OrvaModel* model, double value);
  static OrvaProbabilityDistribution* NewDistribution(OrvaModel* model, Type type,
                                                      const LumoContainer* children);
  template <class... Children>
  static OrvaProbabilityDistribution* NewDistribution(OrvaModel* model, Type type,
                                                      OrvaProbabilityDistribution* child,
                                                      Children... others) {
    OrvaProbabilityDistribution* node = NewDistribution(model, type, nullptr);
    for (OrvaProbabilityDistribution* each : {child, others...}) node->AddChild(each);
    return node;
  }
  static OrvaProbabilityDistribution* NewDistribution(OrvaModel* model, Type type, std::nullptr_t) {
    return NewDistribution(model, type, static_cast<const LumoContainer*>(nullptr));
  }
  // A deep copy; references are to the same parameters.
  static OrvaProbabilityDistribution* Copy(OrvaModel* model,
                                           const OrvaProbabilityDistribution* distribution);
  ~OrvaProbabilityDistribution() override;

  // The name of a kind of expression, null for an unknown type; the kind of a name, or UNKNOWN.
  static const char* GetFunctor(Type type);
  static Type GetType(const char* name);
  Type GetType() const { return static_cast<Type>(OrvaTerm::GetType()); }
  void SetType(Type type);
  // Whether a node of that type may have n children. "mod" accepts exactly one although its value
  // reads two: this pairing is the defined behaviour.
  static bool CheckNumberOfChildren(Type type, int n);

  OrvaProbabilityDistribution* GetChild(int i) const {
    return static_cast<OrvaProbabilityDistribution*>(OrvaTerm::GetChild(i));
  }
  OrvaProbabilityDistribution* GetFirstChild() const {
    return static_cast<OrvaProbabilityDistribution*>(OrvaTerm::GetFirstChild());
  }
  OrvaProbabilityDistribution* GetNextSibling() const {
    return static_cast<OrvaProbabilityDistribution*>(OrvaTerm::GetNextSibling());
  }
  OrvaProbabilityDistribution* GetLastChild() const {
    return static_cast<OrvaProbabilityDistribution*>(GetChildren().GetLastItem());
  }
  // Null unless the node is a reference.
  OrvaParameter* GetReferencedParameter() const;

  // The current value; nil before the first evaluation of a node that is no constant.
  const LumoConstant* GetValue() const { return &_value; }
  double GetValueAsDouble() const { return _value.ToDouble(); }
  bool GetValueAsBool() const { return _value.ToBool(); }
  // Child i's current value, from 1; 0 without such a child.
  double GetValueOfChildAsDouble(int i) const;

  // Evaluation at date t: the node's value, also kept in the node. The parameters used must have
  // been computed before.
  LumoConstant* ComputeValue(double t);
  // Null without such a child.
  LumoConstant* ComputeValueOfChild(int i, double t);
  // The value bounded into [low, high]; a value out of range is replaced in the node as well. A
  // missing child counts as 0.
  double ComputeValueAsDouble(double t, double low, double high);
  double ComputeValueAsProbability(double t) { return ComputeValueAsDouble(t, 0.0, 1.0); }
  double ComputeValueOfChildAsDouble(int i, double t, double low, double high);
  int ComputeValueOfChildAsInt(int i, double t, int low, int high);
  // The unconditional failure intensity at t, per time unit; the node's value ends as the
  // probability. Before date 0 the intensity is that of date 0.
  double ComputeProbabilityAndUnconditionalFailureIntensity(double t);

  // Whether the value depends on the date, and whether it is that of a component whose failure
  // rate can be read off the expression.
  bool IsTimeDependent() const;
  bool IsRepairDependent() const;

  // Whether several events may hold this one tree, because no evaluation of it leaves anything
  // behind by which the next one, or what is written of the expression, could differ.
  bool CanBeShared() const;

  // Draws the node's own deviate; deviates below it are reset, not drawn.
  void DrawRandomDeviates(LumoRandomizer* randomizer);
  // Sets every deviate of the tree to its central value.
  void ResetRandomDeviates();

  // DrawRandomDeviates for many trials: what is the same in all of them is computed once.
  class PreparedDraw {
   public:
    void Draw(LumoRandomizer* randomizer) const;

   private:
    friend class OrvaProbabilityDistribution;

    OrvaProbabilityDistribution* _node = nullptr;
    std::array<double, 3> _arguments = {};  // of the deviate, when they are constants
    bool _areConstants = false;
  };
  // False for an expression without deviates, which takes no draw. The expression must not change
  // while the prepared draw is in use.
  bool PrepareDraw(PreparedDraw& draw);

  // Offered to users of the class; the program itself does not call what follows.

  OrvaProbabilityDistribution* GetParent() const {
    return static_cast<OrvaProbabilityDistribution*>(OrvaTerm::GetParent());
  }
  LumoConstant* GetValue() { return &_value; }
  void SetValue(const LumoConstant* value) { _value.Set(value); }
  double GetUnconditionalFailureIntensity() const { return _unconditionalFailureIntensity; }

 private:
  using Operation = void (LumoConstant::*)(const LumoConstant*);
  using BinaryOperation = void (LumoConstant::*)(const LumoConstant*, const LumoConstant*);
  // Those of a deviate, and a value drawn with them.
  using Arguments = std::array<double, 3>;
  using Deviate = double (*)(const Arguments& arguments, LumoRandomizer* randomizer);
  // How a property of a node depends on the rest of the tree.
  enum class Dependence { NEVER, ALWAYS, CHILDREN, DEFINITION };
  struct Functor;
  struct Rows;
  static const Functor _FUNCTORS[];

  OrvaProbabilityDistribution(OrvaModel* model, Type type);
  const Functor& _GetFunctor() const;
  const OrvaProbabilityDistribution* _GetNextInPreOrder(const OrvaProbabilityDistribution* root,
                                                        bool entersChildren) const;
  bool _DoesDepend(Dependence Functor::*property) const;
  double _Bound(double low, double high);
  double _GetRate(int i, double t);
  double _GetDeviateParameter(int i);

  void _KeepValue(double /*t*/) {}
  void _EvaluateParameter(double t);
  void _EvaluatePi(double t);
  void _EvaluateMissionTime(double t);
  void _EvaluateOperation(double t);
  void _EvaluateBinaryOperation(double t);
  void _EvaluateFold(double t);
  void _EvaluateMean(double t);
  void _EvaluateIte(double t);
  void _EvaluateSwitch(double t);
  void _EvaluateDirac(double t);
  void _EvaluatePeriodic(double t);
  void _EvaluateExponential(double t);
  void _EvaluateGLM(double t);
  void _EvaluateMTT(double t);
  void _EvaluateDormant(double t);
  void _EvaluateWeibull(double t);
  void _EvaluateStandby(double t);
  void _EvaluatePeriodicTest(double t);
  double _ComputeValueOfPeriodicTest4(double t);
  double _ComputeValueOfPeriodicTest5(double t);
  double _ComputeValueOfPeriodicTest11(double t);
  void _EvaluateBoundTime(double t);

  double _ComputeFailureRate(double t);
  double _GetCurrentFailureRate(double t) const;
  bool _HasCurrentFailureRate() const;
  double _GetNoFailureRate(double /*t*/) const { return 0.0; }
  double _GetFailureRateOfParameter(double t) const;
  double _GetFailureRateOfProduct(double t) const;
  double _GetFailureRateOfIte(double t) const;
  double _GetFailureRateOfSwitch(double t) const;
  double _GetFailureRateOfFirstChild(double t) const;
  double _GetFailureRateOfGLM(double t) const;
  double _GetFailureRateOfMTT(double t) const;
  double _GetFailureRateOfPeriodicTest(double t) const;

  bool _IsConstant() const { return GetType() >= BOOL && GetType() <= PI; }
  Arguments _GetArgumentsOfDeviate();
  void _DrawNothing(LumoRandomizer* /*randomizer*/) {}
  void _DrawDeviate(LumoRandomizer* randomizer);
  void _DrawHistogram(LumoRandomizer* randomizer);
  void _ResetNothing() {}
  void _ResetUniform();
  void _ResetToFirstParameter();
  void _ResetBeta();
  void _ResetGamma();
  void _ResetHistogram();
  double _GetUpperBoundOfBin(OrvaProbabilityDistribution* bin);
  double _GetValueOfBin(OrvaProbabilityDistribution* bin);

  LumoConstant _value;
  double _unconditionalFailureIntensity = 0.0;
};
