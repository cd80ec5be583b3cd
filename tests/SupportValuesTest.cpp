#include <limits>

#include "OrvaTestSupport.h"
#include "support/containers/LumoFunction.h"
#include "support/values/LumoAttributeList.h"

namespace {

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr int LARGEST = std::numeric_limits<int>::max();
constexpr int SMALLEST = std::numeric_limits<int>::min();

using UnaryOperation = void (LumoConstant::*)(const LumoConstant*);
using BinaryOperation = void (LumoConstant::*)(const LumoConstant*, const LumoConstant*);

// A value with its kind, as a text.
std::string Show(const LumoConstant& value) {
  char text[64];
  switch (value.GetType()) {
    case LumoConstant::NIL:
      return "nil";
    case LumoConstant::BOOL:
      return value.ToBool() ? "true" : "false";
    case LumoConstant::INT:
      return "int " + std::to_string(value.ToInt());
    case LumoConstant::DOUBLE:
      std::snprintf(text, sizeof text, "real %g", value.ToDouble());
      return text;
    case LumoConstant::STRING:
      return std::string("string ") + value.ToString();
    default:
      return "pointer";
  }
}

// The result of an operation that starts from an unrelated value.
template <class A, class B>
std::string Do(BinaryOperation operation, A a, B b) {
  const LumoConstant first(a);
  const LumoConstant second(b);
  LumoConstant result("old");
  (result.*operation)(&first, &second);
  return Show(result);
}

template <class A>
std::string Do(UnaryOperation operation, A a) {
  const LumoConstant operand(a);
  LumoConstant result("old");
  (result.*operation)(&operand);
  return Show(result);
}

struct Case {
  std::string result;
  const char* expected;
};

int numberOfReleases = 0;
void CountRelease(void*) { ++numberOfReleases; }

}  // namespace

TEST(LumoConstant, ConvertsByKind) {
  int target = 0;
  const LumoConstant nil, yes(true), number(-3), negative(-1.5), half(0.5), noNumber("abc"),
      text("2.75x"), small("0.9"), null(nullptr, LumoFunction::DoNothing, 7);
  LumoConstant pointer(&target, LumoFunction::DoNothing, 7);
  const struct {
    const LumoConstant* constant;
    bool asBool;
    int asInt;
    double asDouble;
  } cases[] = {{&nil, false, 0, 0.0},       {&yes, true, 1, 1.0},    {&number, true, -3, -3.0},
               {&negative, true, -2, -1.5}, {&half, true, 0, 0.5},   {&noNumber, false, 0, 0.0},
               {&text, true, 2, 2.75},      {&small, false, 0, 0.9}, {&pointer, true, 0, 0.0},
               {&null, false, 0, 0.0}};
  for (const auto& [constant, asBool, asInt, asDouble] : cases) {
    EXPECT_EQ(constant->ToBool(), asBool) << Show(*constant);
    EXPECT_EQ(constant->ToInt(), asInt) << Show(*constant);
    EXPECT_EQ(constant->ToDouble(), asDouble) << Show(*constant);
    EXPECT_EQ(constant->ToString() != nullptr, constant->IsString());
  }
  EXPECT_TRUE(LumoConstant(NOT_A_NUMBER).ToBool());
  EXPECT_EQ(pointer.ToPointer(), &target);
  EXPECT_EQ(pointer.ToPointerOfCode(7), &target);
  EXPECT_EQ(pointer.ToPointerOfCode(8), nullptr);
  pointer.Set(5);
  EXPECT_EQ(*static_cast<int*>(pointer.ToPointer()), 5);
  EXPECT_FALSE(pointer.IsPointerOfCode(7));
}

TEST(LumoConstant, OwnsItsStringAndReleasesItsPointer) {
  char text[] = "abc";
  int target = 0;
  numberOfReleases = 0;
  {
    LumoConstant constant(text);
    text[0] = 'x';
    EXPECT_STREQ(constant.ToString(), "abc");
    const LumoConstant copy(&constant);
    constant.Set(true);
    EXPECT_EQ(constant.ToString(), nullptr);
    EXPECT_STREQ(copy.ToString(), "abc");
    constant.Set(&target, CountRelease, 1);
    constant.Set(&target, CountRelease, 2);
    EXPECT_EQ(numberOfReleases, 1);
    constant.Set(1);
    constant.Set(2);
    EXPECT_EQ(numberOfReleases, 2);
    constant.Set(&target, CountRelease, 2);
  }
  EXPECT_EQ(numberOfReleases, 3);
  {
    // A copy shares the pointer, its code and its release function.
    const LumoConstant original(&target, CountRelease, 5);
    const LumoConstant copy(&original);
    EXPECT_EQ(copy.ToPointerOfCode(5), &target);
  }
  EXPECT_EQ(numberOfReleases, 5);
}

// Integers wrap around among themselves, their division truncates, and the remainder has the sign
// of the dividend. The larger or smaller operand keeps its kind; on a tie the second is taken.
TEST(LumoConstant, ArithmeticKeepsIntegersAmongThemselves) {
  using C = LumoConstant;
  const Case cases[] = {{Do(&C::Add, 7, 2), "int 9"},
                        {Do(&C::Add, 2, 0.5), "real 2.5"},
                        {Do(&C::Sub, 0.5, 2), "real -1.5"},
                        {Do(&C::Mul, 3, 0.5), "real 1.5"},
                        {Do(&C::Add, LARGEST, 1), "int -2147483648"},
                        {Do(&C::Sub, SMALLEST, 1), "int 2147483647"},
                        {Do(&C::Mul, 65536, 65536), "int 0"},
                        {Do(&C::Div, 7, 2), "int 3"},
                        {Do(&C::Div, -7, 2), "int -3"},
                        {Do(&C::Div, 7, 2.0), "real 3.5"},
                        {Do(&C::Mod, -7, 2), "int -1"},
                        {Do(&C::Mod, 7, -2), "int 1"},
                        {Do(&C::Mod, -7.5, 2), "real -1.5"},
                        {Do(&C::Div, 7, 0), "nil"},
                        {Do(&C::Div, 7, 0.0), "nil"},
                        {Do(&C::Div, 7.0, -0.0), "nil"},
                        {Do(&C::Pow, 2, 10), "real 1024"},
                        {Do(&C::Atan2, 0, -1), "real 3.14159"},
                        {Do(&C::Sup, 2, 2.0), "real 2"},
                        {Do(&C::Sup, 2.0, 2), "int 2"},
                        {Do(&C::Sup, 3, 2.5), "int 3"},
                        {Do(&C::Inf, 2, 2.0), "real 2"},
                        {Do(&C::Inf, 3, 2.5), "real 2.5"},
                        {Do(&C::Neg, 3), "int -3"},
                        {Do(&C::Neg, -0.5), "real 0.5"},
                        {Do(&C::Abs, -3), "real 3"}};
  for (const auto& [result, expected] : cases) EXPECT_EQ(result, expected);
  EXPECT_EQ(Do(&C::Div, SMALLEST, -1).substr(0, 4), "int ");  // must not trap
  for (const auto operation :
       {&C::Add, &C::Sub, &C::Mul, &C::Div, &C::Mod, &C::Pow, &C::Atan2, &C::Sup, &C::Inf}) {
    EXPECT_EQ(Do(operation, true, 1), "nil");
    EXPECT_EQ(Do(operation, 1, "1"), "nil");
  }
}

TEST(LumoConstant, FunctionsOfOneNumberGiveReals) {
  using C = LumoConstant;
  const Case cases[] = {{Do(&C::Exp, 1), "real 2.71828"},   {Do(&C::Sin, 1), "real 0.841471"},
                        {Do(&C::Cos, 1), "real 0.540302"},  {Do(&C::Tan, 1), "real 1.55741"},
                        {Do(&C::Asin, 1), "real 1.5708"},   {Do(&C::Acos, -1), "real 3.14159"},
                        {Do(&C::Atan, 1), "real 0.785398"}, {Do(&C::Sinh, 1), "real 1.1752"},
                        {Do(&C::Cosh, 1), "real 1.54308"},  {Do(&C::Tanh, 1), "real 0.761594"},
                        {Do(&C::Floor, 1.5), "real 1"},     {Do(&C::Ceil, 1.5), "real 2"},
                        {Do(&C::Sqrt, 2.25), "real 1.5"},   {Do(&C::Log, 2), "real 0.693147"},
                        {Do(&C::Log10, 1000), "real 3"},    {Do(&C::Exp, true), "nil"},
                        {Do(&C::Tanh, "1"), "nil"},         {Do(&C::Abs, false), "nil"}};
  for (const auto& [result, expected] : cases) EXPECT_EQ(result, expected);
  // These five share one domain: what is not strictly positive gives nil, but NaN passes.
  for (const auto operation : {&C::Floor, &C::Ceil, &C::Sqrt, &C::Log, &C::Log10}) {
    for (const double x : {-1.5, -0.0, 0.0}) EXPECT_EQ(Do(operation, x), "nil");
    EXPECT_EQ(Do(operation, 0), "nil");
    EXPECT_EQ(Do(operation, NOT_A_NUMBER).substr(0, 5), "real ");
  }
}

TEST(LumoConstant, RelationsFollowTheFirstOperandAndLogicNeedsBooleans) {
  using C = LumoConstant;
  for (const bool a : {false, true}) {
    for (const bool b : {false, true}) {
      EXPECT_EQ(Do(&C::And, a, b), a && b ? "true" : "false");
      EXPECT_EQ(Do(&C::Or, a, b), a || b ? "true" : "false");
      EXPECT_EQ(Do(&C::Imply, a, b), !a || b ? "true" : "false");
    }
    EXPECT_EQ(Do(&C::Not, a), a ? "false" : "true");
    EXPECT_EQ(Do(&C::Or, a, 1), "nil");
    EXPECT_EQ(Do(&C::And, "true", a), "nil");
  }
  const Case cases[] = {{Do(&C::Eq, 1, 1.0), "true"},      {Do(&C::Eq, "1", 1), "nil"},
                        {Do(&C::Eq, true, 1), "nil"},      {Do(&C::Eq, 1, true), "nil"},
                        {Do(&C::Lt, false, true), "true"}, {Do(&C::Leq, 2, 1.5), "false"},
                        {Do(&C::Gt, "b", "a"), "true"},    {Do(&C::Geq, "a", "ab"), "false"},
                        {Do(&C::Df, "a", "a"), "false"},   {Do(&C::Df, 1, 2), "true"},
                        {Do(&C::Geq, 2, 2.0), "true"},     {Do(&C::Not, 1), "nil"}};
  for (const auto& [result, expected] : cases) EXPECT_EQ(result, expected);
  const LumoConstant nil;
  const LumoConstant pointer(nullptr, LumoFunction::DoNothing, 1);
  for (const auto relation : {&C::Eq, &C::Df, &C::Lt, &C::Leq, &C::Gt, &C::Geq}) {
    EXPECT_EQ(Do(relation, &nil, &nil), "nil");
    EXPECT_EQ(Do(relation, &pointer, &pointer), "nil");
    EXPECT_EQ(Do(relation, 1, &nil), "nil");
  }
}

TEST(LumoConstant, OperationsInPlace) {
  LumoConstant x(5);
  x.Inc(3);
  x.Dec(1);
  EXPECT_EQ(Show(x), "int 7");
  x.SetSup(7.0);
  x.Inc(1);
  x.Dec(0.5);
  EXPECT_EQ(Show(x), "real 7.5");
  x.SetAdd(&x);  // an operand may be the result
  x.SetSub(5);
  x.SetMul(0.5);
  EXPECT_EQ(Show(x), "real 5");
  x.SetInf(4);
  x.SetDiv(3);
  EXPECT_EQ(Show(x), "int 1");
  x.SetDiv(0);
  EXPECT_EQ(Show(x), "nil");
  const LumoConstant one(1);
  for (LumoConstant* other : {new LumoConstant, new LumoConstant(true), new LumoConstant("5")}) {
    const std::string before = Show(*other);  // numbers only; other kinds stay as they are
    other->Inc(1);
    other->Dec(1.0);
    other->Inc(&one);
    EXPECT_EQ(Show(*other), before);
    delete other;
  }
  LumoConstant logic(false);
  logic.SetOr(true);
  EXPECT_EQ(Show(logic), "true");
  logic.SetAnd(&one);
  EXPECT_EQ(Show(logic), "nil");
}

TEST(LumoConstant, AppendsTextToAString) {
  LumoConstant text("a");
  const LumoConstant yes(true), number(-7), real(0.1), string("b"), nil;
  for (const LumoConstant* other : {&yes, &number, &real, &string}) text.Append(other);
  EXPECT_EQ(Show(text), "string atrue-70.1b");
  text.Append(&nil);
  EXPECT_EQ(Show(text), "nil");
  LumoConstant notText(1);
  notText.Append(&string);
  EXPECT_EQ(Show(notText), "nil");
}

TEST(LumoConstant, ComparesValuesOfOneKindAndCodesOfDifferentKinds) {
  int objects[2] = {};
  const LumoConstant nil, yes(true), number(3), real(2.5), text("b");
  const LumoConstant pointer(&objects[0], LumoFunction::DoNothing, 1);
  EXPECT_GT(yes.Compare(false), 0);
  EXPECT_EQ(number.Compare(100), -1);
  EXPECT_EQ(number.Compare(2.5), 1);
  EXPECT_EQ(real.Compare(&number), -1);
  EXPECT_EQ(real.Compare(NOT_A_NUMBER), 0);
  EXPECT_EQ(LumoConstant(SMALLEST).Compare(LARGEST), -1);  // no overflow in the difference
  EXPECT_GT(text.Compare("a"), 0);
  EXPECT_TRUE(text.Is("b"));
  EXPECT_TRUE(pointer.Is(static_cast<const void*>(&objects[0])));
  EXPECT_FALSE(pointer.Is(static_cast<const void*>(&objects[1])));
  // Different kinds: the difference of the codes 0 to 5.
  const LumoConstant* all[] = {&nil, &yes, &number, &real, &text, &pointer};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(all[i]->Compare(&nil), i);
    for (int j = 1; j < 6; ++j) {
      if (i == j || (i + j == 5 && (i == 2 || i == 3))) continue;  // one kind, or both numbers
      EXPECT_EQ(all[i]->Compare(all[j]), i - j) << i << ' ' << j;
    }
  }
  EXPECT_EQ(text.Compare(5.0), 4 - 3);
  EXPECT_EQ(nil.Compare("x"), -4);
  EXPECT_LT(LumoConstant::CompareNumbers(static_cast<const void*>(&real), &number), 0);
}

TEST(LumoConstant, DumpsItsText) {
  OrvaTextStream stream;
  int target = 0;
  const LumoConstant nil, no(false), number(-3), real(1234567.0), text("a\\nb %d"),
      pointer(&target, LumoFunction::DoNothing, 1);
  for (const LumoConstant* constant : {&nil, &no, &number, &real, &text, &pointer}) {
    constant->Dump(stream.Get()->GetFile());
  }
  EXPECT_EQ(stream.GetText(),
            "nilfalse-31.23457e+06a\\nb %d" + std::to_string(reinterpret_cast<long>(&target)));
}

TEST(LumoAttribute, HasANameAValueAndTwoSetsOfFlags) {
  char name[] = "beta";
  LumoAttribute attribute(name, 3);
  name[0] = 'x';
  const LumoAttribute other("gamma", "text");
  EXPECT_STREQ(attribute.GetName(), "beta");
  EXPECT_LT(attribute.Compare(&other), 0);
  EXPECT_EQ(other.GetValueAsInt() + attribute.GetValueAsInt(), 3);
  EXPECT_EQ(attribute.GetValueAsString(), nullptr);
  EXPECT_EQ(attribute.GetPrivacy(), 1);
  EXPECT_EQ(attribute.GetLocality(), 1);
  attribute.SetPrivacy(LumoAttribute::PUBLIC | LumoAttribute::PRIVATE);
  attribute.SetLocality(6);
  EXPECT_TRUE(attribute.IsPublic() && attribute.IsPrivate());
  EXPECT_TRUE(attribute.IsInherited() && attribute.IsSynthesized() && !attribute.IsLocal());
  EXPECT_TRUE(attribute.DoesLocalityMatch(3));  // one common bit is enough
  EXPECT_FALSE(attribute.DoesLocalityMatch(1));
  EXPECT_FALSE(attribute.DoesPrivacyMatch(0));
}

TEST(LumoAttributeList, SetsAndReadsByName) {
  int target = 0;
  LumoAttributeList list;
  LumoAttribute* first = list.SetValueOfAttribute("a", "text");
  list.SetValueOfAttribute("b", 2.5);
  list.SetValueOfAttribute("c", &target, LumoFunction::DoNothing, 9);
  EXPECT_EQ(list.SetValueOfAttribute("a", "other"), first);
  EXPECT_EQ(list.GetNumberOfItems(), 3);
  EXPECT_EQ(list.GetFirstItem(), first);  // the order of creation
  EXPECT_STREQ(list.GetValueOfAttributeAsString("a", "default"), "other");
  EXPECT_EQ(list.GetValueOfAttributeAsString("b", "default"), nullptr);  // present, no string
  EXPECT_STREQ(list.GetValueOfAttributeAsString("z", "default"), "default");
  EXPECT_EQ(list.GetValueOfAttributeAsInt("b", 7), 2);
  EXPECT_EQ(list.GetValueOfAttributeAsInt("z", 7), 7);
  EXPECT_EQ(list.GetValueOfAttributeAsPointerOfCode("c", 9, nullptr), &target);
  EXPECT_EQ(list.GetValueOfAttributeAsPointerOfCode("c", 8, &list), nullptr);
  EXPECT_EQ(list.GetValueOfAttributeAsPointerOfCode("z", 9, &list), &list);
  EXPECT_EQ(list.GetValueOfAttribute("z"), nullptr);
  EXPECT_FALSE(list.IsNilAttribute("z"));

  list.SetValueOfAttribute("a", true);  // the kind changes with the value
  EXPECT_TRUE(list.IsBoolAttribute("a"));
  EXPECT_EQ(list.GetValueOfAttributeAsString("a", "default"), nullptr);
  list.IncrementValueOfAttribute("b", 1);
  list.DecrementValueOfAttribute("b", 0.25);
  list.IncrementValueOfAttribute("z", 1);
  EXPECT_EQ(list.GetValueOfAttributeAsDouble("b", 0.0), 3.25);
  EXPECT_FALSE(list.HasAttribute("z"));
  list.ResetValueOfAttribute("b");
  list.ResetValueOfAttribute("z");
  EXPECT_FALSE(list.HasAttribute("b"));
  EXPECT_EQ(list.GetNumberOfItems(), 2);
}

TEST(LumoAttributeList, SelectsByFlags) {
  LumoAttributeList list;
  list.SetValueOfAttribute("local", 1);
  list.SetValueOfAttribute("hidden", 2)->SetPrivacy(LumoAttribute::PRIVATE);
  list.SetValueOfAttribute("inherited", 3)->SetLocality(LumoAttribute::INHERITED);
  EXPECT_TRUE(list.HasPublicAttribute());
  LumoList chosen;
  list.CollectAttributes(&chosen, LumoAttribute::PUBLIC, 7);
  ASSERT_EQ(chosen.GetNumberOfItems(), 2);
  EXPECT_EQ(chosen.GetFirstItem(), list.FindAttribute("local"));
  EXPECT_EQ(chosen.GetLastItem(), list.FindAttribute("inherited"));

  LumoAttributeList other;
  other.SetValueOfAttribute("hidden", "old");
  other.SetValuesOfAttributes(&list);
  EXPECT_EQ(other.GetNumberOfItems(), 3);
  EXPECT_EQ(other.GetValueOfAttributeAsInt("hidden", 0), 2);
  EXPECT_TRUE(other.FindAttribute("hidden")->IsPrivate());
  EXPECT_FALSE(other.FindAttribute("hidden")->IsPublic());
  EXPECT_TRUE(other.FindAttribute("inherited")->IsInherited());

  list.ResetValuesOfAttributes(LumoAttribute::PUBLIC, LumoAttribute::LOCAL);
  EXPECT_FALSE(list.HasAttribute("local"));
  EXPECT_TRUE(list.HasAttribute("inherited"));
  list.ResetValuesOfAttributes(LumoAttribute::PUBLIC, 7);
  EXPECT_FALSE(list.HasPublicAttribute());
  EXPECT_EQ(list.GetNumberOfItems(), 1);
}
