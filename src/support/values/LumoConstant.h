#pragma once

#include <cstdio>

// A dynamically typed scalar: nil, Boolean, 32-bit integer, real, string or pointer.
//
// A string is an own copy. A pointer comes with a release function, called when the value is
// replaced or the constant destroyed; for a borrowed pointer pass LumoFunction::DoNothing.
// No operation reports an error: an operation on unsuitable kinds yields nil.
class LumoConstant {
 public:
  enum Type : int { NIL = 0, BOOL = 1, INT = 2, DOUBLE = 3, STRING = 4, POINTER = 5 };
  using Release = void (*)(void*);

  LumoConstant();
  explicit LumoConstant(int value);
  ~LumoConstant();
  LumoConstant(const LumoConstant&) = delete;
  LumoConstant& operator=(const LumoConstant&) = delete;

  Type GetType() const { return _type; }
  bool IsBool() const { return _type == BOOL; }
  bool IsInt() const { return _type == INT; }
  bool IsNum() const { return _type == INT || _type == DOUBLE; }
  bool IsString() const { return _type == STRING; }
  bool IsPointer() const { return _type == POINTER; }

  // Replace the value, releasing the old one.
  void Set();
  void Set(bool value);
  void Set(int value);
  void Set(double value);
  void Set(const char* value);
  void Set(void* pointer, Release release, int code);
  // A copy by type. A pointer becomes shared: the caller sees to it that only one releases it.
  void Set(const LumoConstant* other);

  // Conversions. Nil and unsuitable kinds give false, 0, 0.0 and null.
  // A number is true when it is not 0 (NaN is true), a string when its integer is not 0.
  bool ToBool() const;
  // A real is rounded down; beyond the integers it gives the nearest one, NaN gives 0.
  int ToInt() const;
  double ToDouble() const;
  // The string of a string constant; nothing is formatted.
  const char* ToString() const { return _type == STRING ? _value.string : nullptr; }
  // The pointer or the string itself, or the place of a Boolean, integer or real.
  void* ToPointer();
  // The pointer as a number, 0 for other kinds.
  long ToAddress() const;

  // In place: the operation of the same name with this constant as first operand.
  void SetAdd(const LumoConstant* x) { Add(this, x); }
  void SetMul(const LumoConstant* x) { Mul(this, x); }
  void SetSup(const LumoConstant* x) { Sup(this, x); }
  void SetInf(const LumoConstant* x) { Inf(this, x); }
  void SetOr(const LumoConstant* x) { Or(this, x); }
  void SetAnd(const LumoConstant* x) { And(this, x); }
  void SetDiv(int x) { _Apply(&LumoConstant::Div, x); }

  // `this` becomes the result of an operation on `a` and `b`, either of which may be `this`.
  // Two integers give an integer, with 32-bit wrap-around; any other two numbers a real.
  void Add(const LumoConstant* a, const LumoConstant* b);
  void Sub(const LumoConstant* a, const LumoConstant* b);
  void Mul(const LumoConstant* a, const LumoConstant* b);
  // Two integers give the truncated quotient. A divisor equal to 0 gives nil.
  void Div(const LumoConstant* a, const LumoConstant* b);
  // Two integers give the remainder of the truncating division, nil when the divisor is 0; any
  // other two numbers fmod.
  void Mod(const LumoConstant* a, const LumoConstant* b);
  void Pow(const LumoConstant* a, const LumoConstant* b);
  // The larger (smaller) operand with its own kind; on a tie the second.
  void Sup(const LumoConstant* a, const LumoConstant* b);
  void Inf(const LumoConstant* a, const LumoConstant* b);

  // An integer stays an integer.
  void Neg(const LumoConstant* a);
  // The result is a real.
  void Abs(const LumoConstant* a);
  void Exp(const LumoConstant* a);
  void Sin(const LumoConstant* a);
  void Cos(const LumoConstant* a);
  void Tan(const LumoConstant* a);
  void Asin(const LumoConstant* a);
  void Acos(const LumoConstant* a);
  void Atan(const LumoConstant* a);
  void Sinh(const LumoConstant* a);
  void Cosh(const LumoConstant* a);
  void Tanh(const LumoConstant* a);
  // These five share one domain on purpose: an operand that is 0 or negative gives nil, for Floor
  // and Ceil too. NaN passes.
  void Floor(const LumoConstant* a);
  void Ceil(const LumoConstant* a);
  void Sqrt(const LumoConstant* a);
  void Log(const LumoConstant* a);
  void Log10(const LumoConstant* a);

  // Comparisons: the first operand's kind decides. A Boolean needs a Boolean, a number a number
  // (compared as reals), a string a string; anything else gives nil.
  void Eq(const LumoConstant* a, const LumoConstant* b);
  void Df(const LumoConstant* a, const LumoConstant* b);
  void Lt(const LumoConstant* a, const LumoConstant* b);
  void Leq(const LumoConstant* a, const LumoConstant* b);
  void Gt(const LumoConstant* a, const LumoConstant* b);
  void Geq(const LumoConstant* a, const LumoConstant* b);

  // Boolean operands required, else nil.
  void And(const LumoConstant* a, const LumoConstant* b);
  void Or(const LumoConstant* a, const LumoConstant* b);
  void Not(const LumoConstant* a);

  // Three-way comparisons. Values of matching kind compare by value (numbers by their difference,
  // NaN giving 0); otherwise the result is this constant's type code minus that of the other kind.
  int Compare(bool value) const;
  int Compare(int value) const;
  int Compare(double value) const;
  int Compare(const char* value) const;
  int Compare(const void* value) const;
  int Compare(const LumoConstant* other) const;

  // Writes the value ("nil", "true", "%d", "%g", the text, "%ld" for a pointer) and flushes.
  void Dump(std::FILE* file) const;

  // Offered to users of the class; the program itself does not call what follows.

  explicit LumoConstant(bool value);
  explicit LumoConstant(double value);
  explicit LumoConstant(const char* value);
  // `code` tells the caller's kinds of pointers apart. `release` must not be null.
  LumoConstant(void* pointer, Release release, int code);
  // A copy, as by Set(const LumoConstant*).
  explicit LumoConstant(const LumoConstant* other);
  static void Delete(void* constant);
  bool IsNil() const { return _type == NIL; }
  bool IsDouble() const { return _type == DOUBLE; }
  bool IsPointerOfCode(int code) const { return _type == POINTER && _code == code; }
  void* ToPointerOfCode(int code) const { return IsPointerOfCode(code) ? _value.pointer : nullptr; }

  // In place on numbers, by the rules of Add and Sub; other kinds are left unchanged.
  void Inc(int x);
  void Inc(double x);
  void Inc(const LumoConstant* x);
  void Dec(int x);
  void Dec(double x);
  void Dec(const LumoConstant* x);

  // In place, as the forms above.
  void SetSub(const LumoConstant* x) { Sub(this, x); }
  void SetDiv(const LumoConstant* x) { Div(this, x); }
  void SetAdd(int x) { _Apply(&LumoConstant::Add, x); }
  void SetSub(int x) { _Apply(&LumoConstant::Sub, x); }
  void SetMul(int x) { _Apply(&LumoConstant::Mul, x); }
  void SetSup(int x) { _Apply(&LumoConstant::Sup, x); }
  void SetInf(int x) { _Apply(&LumoConstant::Inf, x); }
  void SetAdd(double x) { _Apply(&LumoConstant::Add, x); }
  void SetSub(double x) { _Apply(&LumoConstant::Sub, x); }
  void SetMul(double x) { _Apply(&LumoConstant::Mul, x); }
  void SetDiv(double x) { _Apply(&LumoConstant::Div, x); }
  void SetSup(double x) { _Apply(&LumoConstant::Sup, x); }
  void SetInf(double x) { _Apply(&LumoConstant::Inf, x); }
  void SetOr(bool x) { _Apply(&LumoConstant::Or, x); }
  void SetAnd(bool x) { _Apply(&LumoConstant::And, x); }

  void Atan2(const LumoConstant* a, const LumoConstant* b);
  void Imply(const LumoConstant* a, const LumoConstant* b);
  // Appends the other value as text to a string; nil and pointers, and appending to anything but
  // a string, make this constant nil.
  void Append(const LumoConstant* other);

  template <class Value>
  bool Is(Value value) const {
    return Compare(value) == 0;
  }
  // Compare as reals, whatever the kinds.
  int CompareNumbers(const LumoConstant* other) const;
  static int Compare(const void* a, const void* b);
  static int CompareNumbers(const void* a, const void* b);

 private:
  using BinaryOperation = void (LumoConstant::*)(const LumoConstant*, const LumoConstant*);

  template <class Value>
  void _Apply(BinaryOperation operation, Value x) {
    const LumoConstant operand(x);
    (this->*operation)(this, &operand);
  }
  void _SetFunction(const LumoConstant* a, double (*function)(double));
  void _SetPositiveFunction(const LumoConstant* a, double (*function)(double));
  template <class IntegerOperation, class RealOperation>
  void _SetArithmetic(const LumoConstant* a, const LumoConstant* b, IntegerOperation onIntegers,
                      RealOperation onReals);
  template <class Relation>
  void _SetRelation(const LumoConstant* a, const LumoConstant* b, Relation relation);
  template <class Operation>
  void _SetLogical(const LumoConstant* a, const LumoConstant* b, Operation operation);
  void _DeleteValue();

  Type _type = NIL;
  int _code = 0;
  union {
    bool boolean;
    int integer;
    double real;
    char* string;
    void* pointer;
  } _value;
  Release _release = nullptr;
};
