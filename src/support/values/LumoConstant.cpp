#include "support/values/LumoConstant.h"

#include <cassert>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoRawString.h"

namespace {

constexpr const char* CLASS_NAME = "LumoConstant";
constexpr std::size_t NUMBER_LENGTH = 64;

const char* GetText(bool value) { return value ? "true" : "false"; }

int Sign(double difference) {
  return static_cast<int>(difference > 0) - static_cast<int>(difference < 0);
}

// 32-bit wrap-around, which plain signed arithmetic does not promise.
template <class Operation>
int Wrap(int a, int b, Operation operation) {
  return static_cast<int>(operation(static_cast<std::uint32_t>(a), static_cast<std::uint32_t>(b)));
}

// The nearest integer not above x; the ends of the range for what lies beyond, 0 for NaN.
int FloorToInt(double x) {
  constexpr int LOWEST = std::numeric_limits<int>::min();
  constexpr int HIGHEST = std::numeric_limits<int>::max();
  if (std::isnan(x)) return 0;
  if (x <= LOWEST) return LOWEST;
  if (x >= HIGHEST) return HIGHEST;
  return static_cast<int>(std::floor(x));
}

}  // namespace

LumoConstant::LumoConstant() { LumoMemoryManager::TraceNew(this, CLASS_NAME); }

LumoConstant::LumoConstant(int value) : LumoConstant() { Set(value); }

LumoConstant::~LumoConstant() {
  _DeleteValue();
  LumoMemoryManager::TraceDelete(this, CLASS_NAME);
}

void LumoConstant::_DeleteValue() {
  if (_type == STRING) LumoRawString::DeleteIfAny(_value.string);
  assert(_type != POINTER || _release != nullptr);
  if (_type == POINTER) _release(_value.pointer);
}

void LumoConstant::Set() {
  _DeleteValue();
  _type = NIL;
}

void LumoConstant::Set(bool value) {
  _DeleteValue();
  _type = BOOL;
  _value.boolean = value;
}

void LumoConstant::Set(int value) {
  _DeleteValue();
  _type = INT;
  _value.integer = value;
}

void LumoConstant::Set(double value) {
  _DeleteValue();
  _type = DOUBLE;
  _value.real = value;
}

void LumoConstant::Set(const char* value) {
  char* copy = LumoRawString::CopyIfAny(value);  // before the release: it may be the own string
  _DeleteValue();
  _type = STRING;
  _value.string = copy;
}

void LumoConstant::Set(void* pointer, Release release, int code) {
  assert(release != nullptr);
  _DeleteValue();
  _type = POINTER;
  _value.pointer = pointer;
  _release = release;
  _code = code;
}

void LumoConstant::Set(const LumoConstant* other) {
  if (other == this) return;
  switch (other->_type) {
    case NIL:
      return Set();
    case BOOL:
      return Set(other->_value.boolean);
    case INT:
      return Set(other->_value.integer);
    case DOUBLE:
      return Set(other->_value.real);
    case STRING:
      return Set(static_cast<const char*>(other->_value.string));
    case POINTER:
      return Set(other->_value.pointer, other->_release, other->_code);
  }
}

bool LumoConstant::ToBool() const {
  switch (_type) {
    case BOOL:
      return _value.boolean;
    case INT:
      return _value.integer != 0;
    case DOUBLE:
      return _value.real != 0;
    case STRING:
      return LumoRawString::ToInt(_value.string) != 0;
    case POINTER:
      return _value.pointer != nullptr;
    default:
      return false;
  }
}

int LumoConstant::ToInt() const {
  switch (_type) {
    case BOOL:
      return static_cast<int>(_value.boolean);
    case INT:
      return _value.integer;
    case DOUBLE:
      return FloorToInt(_value.real);
    case STRING:
      return LumoRawString::ToInt(_value.string);
    default:
      return 0;
  }
}

double LumoConstant::ToDouble() const {
  switch (_type) {
    case BOOL:
      return _value.boolean ? 1.0 : 0.0;
    case INT:
      return _value.integer;
    case DOUBLE:
      return _value.real;
    case STRING:
      return LumoRawString::ToDouble(_value.string);
    default:
      return 0.0;
  }
}

void* LumoConstant::ToPointer() {
  switch (_type) {
    case BOOL:
      return &_value.boolean;
    case INT:
      return &_value.integer;
    case DOUBLE:
      return &_value.real;
    case STRING:
      return _value.string;
    case POINTER:
      return _value.pointer;
    default:
      return nullptr;
  }
}

long LumoConstant::ToAddress() const {
  if (_type != POINTER) return 0;
  return static_cast<long>(reinterpret_cast<std::intptr_t>(_value.pointer));
}

template <class IntegerOperation, class RealOperation>
void LumoConstant::_SetArithmetic(const LumoConstant* a, const LumoConstant* b,
                                  IntegerOperation onIntegers, RealOperation onReals) {
  if (a->IsInt() && b->IsInt()) {
    Set(onIntegers(a->_value.integer, b->_value.integer));
  } else if (a->IsNum() && b->IsNum()) {
    Set(static_cast<double>(onReals(a->ToDouble(), b->ToDouble())));
  } else {
    Set();
  }
}

void LumoConstant::Add(const LumoConstant* a, const LumoConstant* b) {
  _SetArithmetic(
      a, b, [](int x, int y) { return Wrap(x, y, std::plus<>()); }, std::plus<>());
}

void LumoConstant::Sub(const LumoConstant* a, const LumoConstant* b) {
  _SetArithmetic(
      a, b, [](int x, int y) { return Wrap(x, y, std::minus<>()); }, std::minus<>());
}

void LumoConstant::Mul(const LumoConstant* a, const LumoConstant* b) {
  _SetArithmetic(
      a, b, [](int x, int y) { return Wrap(x, y, std::multiplies<>()); }, std::multiplies<>());
}

void LumoConstant::Div(const LumoConstant* a, const LumoConstant* b) {
  if (b->IsNum() && b->ToDouble() == 0.0) return Set();
  // The one quotient beyond 32 bits is the lowest integer by -1: it wraps around to itself.
  _SetArithmetic(
      a, b, [](int x, int y) { return y == -1 ? Wrap(0, x, std::minus<>()) : x / y; },
      std::divides<>());
}

void LumoConstant::Mod(const LumoConstant* a, const LumoConstant* b) {
  if (b->IsInt() && a->IsInt() && b->_value.integer == 0) return Set();
  _SetArithmetic(
      a, b, [](int x, int y) { return y == -1 ? 0 : x % y; },
      [](double x, double y) { return std::fmod(x, y); });
}

void LumoConstant::Pow(const LumoConstant* a, const LumoConstant* b) {
  if (!a->IsNum() || !b->IsNum()) return Set();
  Set(std::pow(a->ToDouble(), b->ToDouble()));
}

void LumoConstant::Sup(const LumoConstant* a, const LumoConstant* b) {
  if (!a->IsNum() || !b->IsNum()) return Set();
  Set(a->ToDouble() > b->ToDouble() ? a : b);
}

void LumoConstant::Inf(const LumoConstant* a, const LumoConstant* b) {
  if (!a->IsNum() || !b->IsNum()) return Set();
  Set(a->ToDouble() < b->ToDouble() ? a : b);
}

void LumoConstant::Neg(const LumoConstant* a) {
  if (a->IsInt()) {
    Set(Wrap(0, a->_value.integer, std::minus<>()));
  } else {
    _SetFunction(a, [](double x) { return -x; });
  }
}

void LumoConstant::_SetFunction(const LumoConstant* a, double (*function)(double)) {
  if (!a->IsNum()) return Set();
  Set(function(a->ToDouble()));
}

void LumoConstant::_SetPositiveFunction(const LumoConstant* a, double (*function)(double)) {
  if (!a->IsNum() || a->ToDouble() <= 0.0) return Set();
  Set(function(a->ToDouble()));
}

void LumoConstant::Abs(const LumoConstant* a) { _SetFunction(a, std::fabs); }
void LumoConstant::Exp(const LumoConstant* a) { _SetFunction(a, std::exp); }
void LumoConstant::Sin(const LumoConstant* a) { _SetFunction(a, std::sin); }
void LumoConstant::Cos(const LumoConstant* a) { _SetFunction(a, std::cos); }
void LumoConstant::Tan(const LumoConstant* a) { _SetFunction(a, std::tan); }
void LumoConstant::Asin(const LumoConstant* a) { _SetFunction(a, std::asin); }
void LumoConstant::Acos(const LumoConstant* a) { _SetFunction(a, std::acos); }
void LumoConstant::Atan(const LumoConstant* a) { _SetFunction(a, std::atan); }
void LumoConstant::Sinh(const LumoConstant* a) { _SetFunction(a, std::sinh); }
void LumoConstant::Cosh(const LumoConstant* a) { _SetFunction(a, std::cosh); }
void LumoConstant::Tanh(const LumoConstant* a) { _SetFunction(a, std::tanh); }
void LumoConstant::Floor(const LumoConstant* a) { _SetPositiveFunction(a, std::floor); }
void LumoConstant::Ceil(const LumoConstant* a) { _SetPositiveFunction(a, std::ceil); }
void LumoConstant::Sqrt(const LumoConstant* a) { _SetPositiveFunction(a, std::sqrt); }
void LumoConstant::Log(const LumoConstant* a) { _SetPositiveFunction(a, std::log); }
void LumoConstant::Log10(const LumoConstant* a) { _SetPositiveFunction(a, std::log10); }

template <class Relation>
void LumoConstant::_SetRelation(const LumoConstant* a, const LumoConstant* b, Relation relation) {
  if (a->IsBool() && b->IsBool()) {
    Set(relation(a->ToInt(), b->ToInt()));
  } else if (a->IsNum() && b->IsNum()) {
    Set(relation(a->ToDouble(), b->ToDouble()));
  } else if (a->IsString() && b->IsString()) {
    Set(relation(LumoRawString::Compare(a->_value.string, b->_value.string), 0));
  } else {
    Set();
  }
}

void LumoConstant::Eq(const LumoConstant* a, const LumoConstant* b) {
  _SetRelation(a, b, std::equal_to<>());
}
void LumoConstant::Df(const LumoConstant* a, const LumoConstant* b) {
  _SetRelation(a, b, std::not_equal_to<>());
}
void LumoConstant::Lt(const LumoConstant* a, const LumoConstant* b) {
  _SetRelation(a, b, std::less<>());
}
void LumoConstant::Leq(const LumoConstant* a, const LumoConstant* b) {
  _SetRelation(a, b, std::less_equal<>());
}
void LumoConstant::Gt(const LumoConstant* a, const LumoConstant* b) {
  _SetRelation(a, b, std::greater<>());
}
void LumoConstant::Geq(const LumoConstant* a, const LumoConstant* b) {
  _SetRelation(a, b, std::greater_equal<>());
}

template <class Operation>
void LumoConstant::_SetLogical(const LumoConstant* a, const LumoConstant* b, Operation operation) {
  if (!a->IsBool() || !b->IsBool()) return Set();
  Set(static_cast<bool>(operation(a->_value.boolean, b->_value.boolean)));
}

void LumoConstant::And(const LumoConstant* a, const LumoConstant* b) {
  _SetLogical(a, b, std::logical_and<>());
}
void LumoConstant::Or(const LumoConstant* a, const LumoConstant* b) {
  _SetLogical(a, b, std::logical_or<>());
}
void LumoConstant::Not(const LumoConstant* a) {
  _SetLogical(a, a, [](bool x, bool) { return !x; });
}

int LumoConstant::Compare(bool value) const {
  return IsBool() ? static_cast<int>(_value.boolean) - static_cast<int>(value) : _type - BOOL;
}

int LumoConstant::Compare(int value) const {
  return IsNum() ? Sign(ToDouble() - value) : _type - INT;
}

int LumoConstant::Compare(double value) const {
  return IsNum() ? Sign(ToDouble() - value) : _type - DOUBLE;
}

int LumoConstant::Compare(const char* value) const {
  return IsString() ? LumoRawString::Compare(_value.string, value) : _type - STRING;
}

int LumoConstant::Compare(const void* value) const {
  if (!IsPointer()) return _type - POINTER;
  const std::less<> isBefore;
  const void* pointer = _value.pointer;
  return static_cast<int>(isBefore(value, pointer)) - static_cast<int>(isBefore(pointer, value));
}

int LumoConstant::Compare(const LumoConstant* other) const {
  switch (other->_type) {
    case BOOL:
      return Compare(other->_value.boolean);
    case INT:
      return Compare(other->_value.integer);
    case DOUBLE:
      return Compare(other->_value.real);
    case STRING:
      return Compare(static_cast<const char*>(other->_value.string));
    case POINTER:
      return Compare(static_cast<const void*>(other->_value.pointer));
    default:
      assert(other->_type == NIL);
      return _type;
  }
}

void LumoConstant::Dump(std::FILE* file) const {
  switch (_type) {
    case NIL:
      std::fputs("nil", file);
      break;
    case BOOL:
      std::fputs(GetText(_value.boolean), file);
      break;
    case INT:
      std::fprintf(file, "%d", _value.integer);
      break;
    case DOUBLE:
      std::fprintf(file, "%g", _value.real);
      break;
    case STRING:
      if (_value.string != nullptr) std::fputs(_value.string, file);
      break;
    case POINTER:
      std::fprintf(file, "%ld", ToAddress());
  }
  std::fflush(file);
}

// Offered to users of the class; the program itself does not call what follows.

LumoConstant::LumoConstant(bool value) : LumoConstant() { Set(value); }

LumoConstant::LumoConstant(double value) : LumoConstant() { Set(value); }

LumoConstant::LumoConstant(const char* value) : LumoConstant() { Set(value); }

LumoConstant::LumoConstant(void* pointer, Release release, int code) : LumoConstant() {
  Set(pointer, release, code);
}

LumoConstant::LumoConstant(const LumoConstant* other) : LumoConstant() { Set(other); }

void LumoConstant::Delete(void* constant) {
  if (constant != nullptr) delete static_cast<LumoConstant*>(constant);
}

void LumoConstant::Inc(int x) {
  if (IsNum()) SetAdd(x);
}

void LumoConstant::Inc(double x) {
  if (IsNum()) SetAdd(x);
}

void LumoConstant::Inc(const LumoConstant* x) {
  if (IsNum() && x->IsNum()) SetAdd(x);
}

void LumoConstant::Dec(int x) {
  if (IsNum()) SetSub(x);
}

void LumoConstant::Dec(double x) {
  if (IsNum()) SetSub(x);
}

void LumoConstant::Dec(const LumoConstant* x) {
  if (IsNum() && x->IsNum()) SetSub(x);
}

void LumoConstant::Atan2(const LumoConstant* a, const LumoConstant* b) {
  if (!a->IsNum() || !b->IsNum()) return Set();
  Set(std::atan2(a->ToDouble(), b->ToDouble()));
}

void LumoConstant::Imply(const LumoConstant* a, const LumoConstant* b) {
  _SetLogical(a, b, std::less_equal<>());
}

void LumoConstant::Append(const LumoConstant* other) {
  if (!IsString() || other->IsNil() || other->IsPointer()) return Set();
  std::string text = _value.string == nullptr ? "" : _value.string;
  char number[NUMBER_LENGTH];
  switch (other->_type) {
    case BOOL:
      text += GetText(other->_value.boolean);
      break;
    case INT:
      std::snprintf(number, sizeof number, "%d", other->_value.integer);
      text += number;
      break;
    case DOUBLE:
      std::snprintf(number, sizeof number, "%g", other->_value.real);
      text += number;
      break;
    default:
      if (other->_value.string != nullptr) text += other->_value.string;
  }
  Set(text.c_str());
}

int LumoConstant::CompareNumbers(const LumoConstant* other) const {
  return Sign(ToDouble() - other->ToDouble());
}

int LumoConstant::Compare(const void* a, const void* b) {
  return static_cast<const LumoConstant*>(a)->Compare(static_cast<const LumoConstant*>(b));
}

int LumoConstant::CompareNumbers(const void* a, const void* b) {
  return static_cast<const LumoConstant*>(a)->CompareNumbers(static_cast<const LumoConstant*>(b));
}
