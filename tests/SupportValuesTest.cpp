#include <limits>

#include "OrvaTestSupport.h"
#include "support/containers/LumoFunction.h"
#include "support/values/LumoAttributeList.h"

namespace {

using C = LumoConstant;
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr int LARGEST = std::numeric_limits<int>::max();
constexpr int SMALLEST = std::numeric_limits<int>::min();

// A value with its kind, as a text.
std::string Show(const LumoConstant& value) {
  const char* const kinds[] = {"", "", "int ", "real ", "string ", "pointer "};
  OrvaTextStream text;
  value.Dump(text.Get()->GetFile());
  return kinds[value.GetType()] + text.GetText();
}

// The result of an operation that starts from an unrelated value.
template <class Operation, class... Values>
std::string Do(Operation operation, Values... values) {
  LumoConstant result("old");
  const auto run = [&](const auto&... operands) { (result.*operation)(&operands...); };
  run(LumoConstant(values)...);
  return Show(result);
}

int numberOfReleases = 0;
void CountRelease(void*) { ++numberOfReleases; }

}  // namespace

TEST(LumoConstant, ConvertsByKind) {
  int target = 0;
  const LumoConstant nil, yes(true), number(-3), negative(-1.5), half(0.5), noNumber("abc"),
      text("2.75x"), small("0.9"), pointer(&target, LumoFunction::DoNothing, 7),
      null(nullptr, LumoFunction::DoNothing, 7);
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
  EXPECT_EQ(pointer.ToPointerOfCode(7), &target);
  EXPECT_EQ(pointer.ToPointerOfCode(8), nullptr);
}

TEST(LumoConstant, OwnsItsStringAndReleasesItsPointer) {
  char text[] = "abc";
  int target = 0;
  numberOfReleases = 0;
  {
    LumoConstant constant(text);
    text[0] = 'x';
    const LumoConstant copy(&constant);
    constant.Set(&target, CountRelease, 1);
    constant.Set(&target, CountRelease, 2);
    EXPECT_EQ(numberOfReleases, 1);
    constant.Set(1);
    constant.Set(2);
    EXPECT_EQ(numberOfReleases, 2);
    EXPECT_STREQ(copy.ToString(), "abc");
    // A copy shares the pointer, its code and its release function.
    constant.Set(&target, CountRelease, 5);
    const LumoConstant twin(&constant);
    EXPECT_EQ(twin.ToPointerOfCode(5), &target);
  }
  EXPECT_EQ(numberOfReleases, 4);
}

// Integers wrap around among themselves, their division truncates, and the remainder has the sign
// of the dividend. The larger or smaller operand keeps its kind; on a tie the second is taken.
TEST(LumoConstant, OperationsAtTheEdges) {
  const std::pair<std::string, const char*> rows[] = {
      {Do(&C::Add, LARGEST, 1), "int -2147483648"},
      {Do(&C::Sub, SMALLEST, 1), "int 2147483647"},
      {Do(&C::Mul, 65536, 65536), "int 0"},
      {Do(&C::Div, -7, 2), "int -3"},
      {Do(&C::Div, SMALLEST, -1).substr(0, 4), "int "},  // must not trap
      {Do(&C::Mod, SMALLEST, -1), "int 0"},
      {Do(&C::Mod, -7, 2) + Do(&C::Mod, 7, -2), "int -1int 1"},
      {Do(&C::Mod, -7.5, 2), "real -1.5"},
      {Do(&C::Mod, 7, 0) + Do(&C::Div, 7, 0) + Do(&C::Div, 7.0, -0.0), "nilnilnil"},
      {Do(&C::Atan2, 0, -1), "real 3.14159"},
      {Do(&C::Sup, 2, 2.0) + Do(&C::Sup, 2.0, 2) + Do(&C::Inf, 2, 2.0), "real 2int 2real 2"},
      {Do(&C::Imply, true, false) + Do(&C::Imply, false, false), "falsetrue"},
      {Do(&C::Lt, false, true) + Do(&C::Gt, "b", "a"), "truetrue"},
      {Do(&C::Geq, "a", "ab") + Do(&C::Df, "a", "a"), "falsefalse"}};
  for (const auto& [found, expected] : rows) EXPECT_EQ(found, expected);
  // Unsuitable kinds. Floor to Log10 share one domain: what is not strictly positive gives nil, but
  // NaN passes.
  EXPECT_EQ(Do(&C::Or, true, 1) + Do(&C::Not, 1) + Do(&C::Exp, true), "nilnilnil");
  for (const auto operation : {&C::Add, &C::Sub, &C::Mul, &C::Div, &C::Mod, &C::Pow, &C::Atan2,
                               &C::Sup, &C::Inf, &C::Eq, &C::Df, &C::Lt, &C::Geq}) {
    EXPECT_EQ(Do(operation, true, 1), "nil");
    EXPECT_EQ(Do(operation, 1, "1"), "nil");
  }
  for (const auto operation : {&C::Floor, &C::Ceil, &C::Sqrt, &C::Log, &C::Log10}) {
    for (const double x : {-1.5, -0.0, 0.0}) EXPECT_EQ(Do(operation, x), "nil");
    EXPECT_EQ(Do(operation, 0), "nil");
    EXPECT_EQ(Do(operation, NOT_A_NUMBER).substr(0, 5), "real ");
  }
  // In place.
  LumoConstant x(5), text("5");
  x.Inc(3);
  x.SetSup(9.0);
  x.SetAdd(&x);  // an operand may be the result
  EXPECT_EQ(Show(x), "real 18");
  text.Inc(1);  // numbers only; other kinds stay as they are
  const LumoConstant yes(true), number(-7), real(0.1), nil;
  for (const LumoConstant* other : {&yes, &number, &real}) text.Append(other);
  EXPECT_EQ(Show(text), "string 5true-70.1");
  text.Append(&nil);
  EXPECT_EQ(Show(text), "nil");
}

TEST(LumoConstant, ComparesValuesOfOneKindAndCodesOfDifferentKinds) {
  int objects[2] = {};
  const LumoConstant nil, yes(true), number(3), real(2.5), text("b");
  const LumoConstant pointer(&objects[0], LumoFunction::DoNothing, 1);
  EXPECT_GT(yes.Compare(false), 0);
  EXPECT_EQ(number.Compare(2.5), 1);
  EXPECT_EQ(real.Compare(&number), -1);
  EXPECT_EQ(real.Compare(NOT_A_NUMBER), 0);
  EXPECT_EQ(LumoConstant(SMALLEST).Compare(LARGEST), -1);  // no overflow in the difference
  EXPECT_GT(text.Compare("a"), 0);
  EXPECT_FALSE(pointer.Is(static_cast<const void*>(&objects[1])));
  // Different kinds: the difference of the codes 0 to 5.
  const LumoConstant* all[] = {&nil, &yes, &number, &real, &text, &pointer};
  for (int i = 0; i < 6; ++i) {
    for (int j = 0; j < 6; ++j) {
      if (i + j == 5 && (i == 2 || i == 3)) continue;  // both numbers
      EXPECT_EQ(all[i]->Compare(all[j]), i - j) << i << ' ' << j;
    }
  }
  EXPECT_LT(LumoConstant::CompareNumbers(static_cast<const void*>(&real), &number), 0);
}

TEST(LumoAttributeList, SetsAndReadsByName) {
  int target = 0;
  LumoAttributeList list;
  LumoAttribute* first = list.SetValueOfAttribute("a", "text");
  list.SetValueOfAttribute("b", 2.5);
  list.SetValueOfAttribute("c", &target, LumoFunction::DoNothing, 9);
  EXPECT_EQ(list.SetValueOfAttribute("a", "other"), first);
  EXPECT_EQ(OrvaNamesOf<LumoAttribute>(list), "a b c");                  // in the order of creation
  EXPECT_EQ(list.GetValueOfAttributeAsString("b", "default"), nullptr);  // present, no string
  EXPECT_STREQ(list.GetValueOfAttributeAsString("z", "default"), "default");
  EXPECT_EQ(list.GetValueOfAttributeAsInt("b", 7), 2);
  EXPECT_EQ(list.GetValueOfAttributeAsPointerOfCode("c", 8, &list), nullptr);
  EXPECT_EQ(list.GetValueOfAttributeAsPointerOfCode("z", 9, &list), &list);
  list.SetValueOfAttribute("a", true);  // the kind changes with the value
  EXPECT_TRUE(list.IsBoolAttribute("a"));
  list.IncrementValueOfAttribute("b", 1);
  list.DecrementValueOfAttribute("b", 0.25);
  list.IncrementValueOfAttribute("z", 1);
  EXPECT_EQ(list.GetValueOfAttributeAsDouble("b", 0.0), 3.25);
  list.ResetValueOfAttribute("b");
  EXPECT_EQ(OrvaNamesOf<LumoAttribute>(list), "a c");
}

TEST(LumoAttributeList, SelectsByFlags) {
  LumoAttributeList list, other;
  list.SetValueOfAttribute("local", 1);
  list.SetValueOfAttribute("hidden", 2)->SetPrivacy(LumoAttribute::PRIVATE);
  list.SetValueOfAttribute("inherited", 3)->SetLocality(LumoAttribute::INHERITED);
  LumoList chosen;
  list.CollectAttributes(&chosen, LumoAttribute::PUBLIC, 7);
  EXPECT_EQ(OrvaNamesOf<LumoAttribute>(chosen), "local inherited");
  other.SetValueOfAttribute("hidden", "old");
  other.SetValuesOfAttributes(&list);
  EXPECT_EQ(OrvaNamesOf<LumoAttribute>(other), "hidden local inherited");
  EXPECT_EQ(other.GetValueOfAttributeAsInt("hidden", 0), 2);
  EXPECT_TRUE(other.FindAttribute("hidden")->IsPrivate());
  list.ResetValuesOfAttributes(LumoAttribute::PUBLIC, LumoAttribute::LOCAL);
  EXPECT_EQ(OrvaNamesOf<LumoAttribute>(list), "hidden inherited");
  list.ResetValuesOfAttributes(LumoAttribute::PUBLIC, 7);
  EXPECT_FALSE(list.HasPublicAttribute());
}
