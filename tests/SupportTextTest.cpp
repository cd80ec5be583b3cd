#include <bit>
#include <ctime>
#include <filesystem>
#include <limits>
#include <memory>
#include <new>
#include <random>

#include "OrvaTestSupport.h"
#include "support/memory/LumoMemoryManager.h"
#include "support/text/LumoString.h"
#include "support/time/LumoTimer.h"
#include "support/values/LumoConstant.h"

// The clocks of this program stand wherever a test puts them.
namespace {
std::time_t wallClock = 0;
std::clock_t processorClock = 0;
}  // namespace

extern "C" std::time_t time(std::time_t* result) noexcept {
  if (result != nullptr) *result = wallClock;
  return wallClock;
}
extern "C" std::clock_t clock() noexcept { return processorClock; }

namespace {

// A shared string as a text; one count of it is given back.
std::string Take(LumoString* text) {
  std::string copy(text->GetAscii(), text->GetLength());
  LumoString::Delete(text);
  return copy;
}

template <class... Values>
std::string Write(Values... values) {
  OrvaTextStream stream;
  stream.Get()->Put(values...);
  return stream.GetText();
}

}  // namespace

TEST(LumoRawString, ComparesWithNullFirst) {
  EXPECT_EQ(LumoRawString::Compare(nullptr, ""), -1);
  EXPECT_EQ(LumoRawString::Compare("", nullptr), 1);
  EXPECT_LT(LumoRawString::Compare("a", "ab"), 0);
  EXPECT_LT(LumoRawString::Compare("z", "\xe9"), 0);  // bytes are unsigned
  EXPECT_GT(LumoRawString::CompareNumerically("10", "9"), 0);
  EXPECT_EQ(LumoRawString::CompareNumerically("1e1", "10.0"), 0);
  EXPECT_LT(LumoRawString::CompareNumerically("10", "9x"), 0);  // as texts
}

TEST(LumoRawString, RecognisesNumbers) {
  const auto expectAll = [](bool (*is)(const char*), bool expected, const std::string& texts) {
    for (const std::string& text : OrvaSplit(texts)) EXPECT_EQ(is(text.c_str()), expected) << text;
  };
  using S = LumoRawString;
  // Integers print back as they are.
  expectAll(S::IsInt, true, "0 7 -7 2147483647 -2147483648");
  expectAll(S::IsInt, false, "- +5 05 5.0 -0 1e3 0x10 a 2147483648 -2147483649 4294967296 1e99");
  expectAll(S::IsDouble, true, "1 +1 -1 007 .5 5. -5. +.5 1e5 1E+5 1.5e-5 5.e3 .e3 . -. +.");
  expectAll(S::IsDouble, false, "+ - e5 -e5 1e 1e+ 1.2.3 .. --1 1e5.0 1,5 nan inf 0x10 1f");
  expectAll(S::IsBool, false, "True 1 on");
  for (const char* text : {"", " 5", "5 "}) EXPECT_FALSE(S::IsInt(text) || S::IsDouble(text));
  EXPECT_FALSE(S::IsDouble(nullptr));
  EXPECT_EQ(S::ToInt(" +12abc") + S::ToInt("010"), 22);
  EXPECT_EQ(S::ToDouble("-2.5e-1x") + S::ToDouble("."), -0.25);
}

TEST(LumoRawString, WritesWithinBoundsAndReplacesByAPartOfItself) {
  EXPECT_EQ(OrvaTake(LumoRawString::ToString(1234567.0)), "1.23457e+06");
  EXPECT_EQ(OrvaTake(LumoRawString::Append(nullptr, "ab")), "ab");
  EXPECT_FALSE(LumoRawString::IsPrefix("abcd", "abc"));
  EXPECT_FALSE(LumoRawString::IsSuffix("xabc", "abc"));
  EXPECT_TRUE(LumoRawString::IsSuffix("abc", "abc"));
  char* text = LumoRawString::Copy("abcdef");
  LumoRawString::Overwrite(text, 4, "XYZ");
  EXPECT_EQ(OrvaTake(text), "abcdXY");
  char* field = LumoRawString::Copy("long name");
  LumoRawString::Replace(field, field + 5);
  EXPECT_EQ(OrvaTake(field), "name");
}

TEST(LumoString, SharedStringsAreCopiedBeforeAChange) {
  LumoString* first = LumoString::New("abc");
  LumoString* second = first->Copy()->Append('d');
  LumoString* third = second->Copy();
  char c = '?';
  third = third->PopChar(c);
  EXPECT_EQ(c, 'd');
  third = third->Append(third);
  EXPECT_EQ(Take(first->Copy()->Flush()), "");
  EXPECT_EQ(Take(first), "abc");
  EXPECT_EQ(Take(second), "abcd");
  EXPECT_EQ(Take(third), "abcabc");
  LumoString* text = LumoString::New(4, 4)->Append("0123456789");  // 11 bytes with the terminator
  EXPECT_EQ(text->GetSize(), 12U);
  for (int i = 0; i < 1000; ++i) text = text->Append('x');
  EXPECT_EQ(Take(text), "0123456789" + std::string(1000, 'x'));
  text = LumoString::New(42, "<%04d>")->Append(0.125, "%.2e")->Append(7, "%d");
  EXPECT_EQ(Take(text->GetSlice(14, 99)), "7");
  EXPECT_EQ(Take(text->GetSuffix(99)), "<0042>1.25e-017");
  EXPECT_EQ(text->ToInt(5), 5);  // the default: the whole text is no number
  text = text->Chop(99)->Append("12");
  EXPECT_EQ(text->ToInt(5) + text->ToDouble(0.5), 24.0);
  LumoString::Delete(text);
}

TEST(LumoFileStream, InterpretsBackslashSequencesAndWritesValues) {
  const struct {
    const char* text;
    const char* written;
  } cases[] = {{"a\\tb", "a\tb"},  {"a\\nb", "a\nb"},        {"\\\"x\\\"", "\"x\""},
               {"\\\\n", "\\n"},   {"\\\\\\n", "\\\n"},      {"C:\\dir\\x", "C:\\dir\\x"},
               {"%d %s", "%d %s"}, {"tab\t \"", "tab\t \""}, {"", ""}};
  for (const auto& [text, written] : cases) EXPECT_EQ(Write(text), written) << text;
  EXPECT_EQ(Write('\\'), "\\");  // a single character is written as it is
  EXPECT_EQ(Write(std::numeric_limits<long>::min()), "-9223372036854775808");
  for (const long power : {1L, 10L, 100L, 1000L, 10000L, 100000L, 1000000L, 10000000L}) {
    for (const long value : {power - 1, power, -power, power + power / 2}) {
      EXPECT_EQ(Write(value), std::to_string(value));
    }
  }
  EXPECT_EQ(Write(0.5F), "0.5");
  EXPECT_EQ(Write("%.3f\\n", 2.0), "2.000\n");  // the formatted text is a text
  EXPECT_EQ(Write("%f", 1e300).size(), 308U);   // 301 digits, a point, 6 digits
  const LumoConstant nil, yes(true), text("a\\tb");
  OrvaTextStream stream;
  for (const LumoConstant* value : {&nil, &yes, &text}) stream.Get()->Put(value);
  stream.Get()->SetSignificantDigitNumber(3);
  stream.Get()->Putln(1234567.0);
  EXPECT_EQ(stream.GetText(), "niltruea\tb1.23e+06\n");
}

// Reals are rounded without printf: what it writes is the measure, above all next to the middles
// between two texts and at the powers of ten.
TEST(LumoFileStream, WritesRealsAsPrintfDoes) {
  std::vector<double> values = {0.0,
                                1e-298,
                                1e298,
                                std::numeric_limits<double>::infinity(),
                                std::numeric_limits<double>::denorm_min(),
                                std::numeric_limits<double>::max()};
  for (int exponent = -320; exponent <= 308; ++exponent) {
    for (const char* digits : {"1", "9.99999", "9.999995", "1.000005", "1.2345650", "7.00001"}) {
      values.push_back(std::strtod((digits + ("e" + std::to_string(exponent))).c_str(), nullptr));
    }
  }
  std::mt19937_64 bits(1);
  while (values.size() < 20000) {
    const double value = std::bit_cast<double>(bits());
    if (std::isfinite(value)) values.push_back(value);
  }
  for (const double value : values) {
    for (const double near : {value, -value, std::nextafter(value, 0.0)}) {
      ASSERT_EQ(Write(near), OrvaPrint(near));
    }
  }
}

TEST(LumoFileStream, ReadsBytesCountsLinesAndPushesBack) {
  const std::string text("a\n\xff\0\nb", 6);
  const OrvaTextFile file(text);
  OrvaTextStream trace;
  LumoFileStream stream(true, file.Get());
  stream.SetTraceStream(trace.Get());
  for (const char c : text) EXPECT_EQ(static_cast<char>(stream.GetChar()), c);
  EXPECT_FALSE(stream.IsAtEnd());  // byte 255 is not the end
  EXPECT_EQ(stream.GetLineNumber(), 3);
  EXPECT_EQ(stream.GetChar(), -1);
  EXPECT_TRUE(stream.IsAtEnd());
  EXPECT_EQ(trace.GetText(), text);  // every character read is echoed
  stream.ResetTraceStream();
  for (int i = 0; i < 100; ++i) stream.UnGetChar(static_cast<char>('A' + i % 26));
  for (int i = 99; i >= 0; --i) EXPECT_EQ(stream.GetChar(), 'A' + i % 26);
  EXPECT_EQ(stream.GetChar(), -1);
}

TEST(LumoFileStream, ClosesItsFile) {
  char* text = nullptr;
  std::size_t size = 0;
  LumoFileStream stream(false, open_memstream(&text, &size));
  stream.Put("a\\tb");
  EXPECT_EQ(stream.GetChar(), -1);  // an output stream reads nothing
  stream.Close();
  stream.Put("lost");
  stream.Close();
  EXPECT_EQ(std::string(text, size), "a\tb");
  std::free(text);
}

TEST(LumoTimer, PrintsProcessorTimeBelowAMinuteAndWallClockTimeFromThereOn) {
  const struct {
    std::time_t seconds;
    double processorSeconds;
    const char* text;
  } cases[] = {{0, 0.0, "0.00"},       {59, 3.07, "3.07"}, {0, 12.5, "12.50"},
               {59, 123.25, "123.25"}, {60, 3.07, "60"},   {1234567, 1.0, "1.23457e+06"}};
  for (const auto& [seconds, processorSeconds, text] : cases) {
    LumoTimer timer("search");
    for (const std::time_t part : {seconds / 2, seconds - seconds / 2}) {
      timer.Start();
      wallClock += part;
      processorClock += std::lround(processorSeconds * CLOCKS_PER_SEC / 2);
      timer.Stop();
      wallClock += 50;  // does not count
      processorClock += 5000;
    }
    EXPECT_EQ(OrvaTake(timer.ToStringOfTimeInSeconds()), text);
  }
}

// Works in a folder of its own, with the accounting just started.
class LumoMemoryManagerTest : public testing::Test {
 protected:
  void SetUp() override {
    char name[] = "memory-XXXXXX";
    ASSERT_NE(mkdtemp(name), nullptr);
    _formerFolder = std::filesystem::current_path();
    _folder = _formerFolder / name;
    std::filesystem::current_path(_folder);
    setenv("TZ", "UTC0", 1);
    tzset();
    wallClock = 1000000000;  // 9 September 2001, 01:46:40 UTC
    LumoMemoryManager::Start();
  }
  void TearDown() override {
    LumoMemoryManager::Start();
    LumoMemoryManager::SetTraceNullPointerDeletions(true);
    std::filesystem::current_path(_formerFolder);
    std::filesystem::remove_all(_folder);
  }

  static std::string GetTrace() { return OrvaTestEngine::ReadFile("lumo-allocations.txt"); }
  static std::string GetDump() { return OrvaTestEngine::ReadFile("lumo-dump.txt"); }
  static std::string Dated(const std::string& message) {
    return "Lumo version 1.0 Sun Sep  9 01:46:40 2001\n" + message;
  }
  static std::string AddressOf(const void* object) {
    return std::to_string(reinterpret_cast<long>(object));
  }

 private:
  std::filesystem::path _folder;
  std::filesystem::path _formerFolder;
};

TEST_F(LumoMemoryManagerTest, CountsObjectsAndTracesOnRequest) {
  {
    const LumoTimer timer("name"), nameless;  // the name is one more
    EXPECT_EQ(LumoMemoryManager::GetAllocationBalance(), 3);
  }
  LumoMemoryManager::Stop();  // balanced: silent
  EXPECT_EQ(GetDump() + GetTrace(), "");
  int object = 0;
  LumoMemoryManager::TraceNew(&object, "Untraced");
  testing::internal::CaptureStderr();
  LumoMemoryManager::Stop();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "LumoMemoryManager::AllocationBalance = 1\n");
  LumoMemoryManager::Start();
  LumoMemoryManager::TraceNew(&object, "Untraced");
  LumoMemoryManager::SetTraceAllocations(true);
  LumoMemoryManager::TraceNew(&object, "Thing");  // the balance before it is 1
  LumoMemoryManager::Trace("n", 7);
  LumoMemoryManager::Trace("x", 0.5);
  LumoMemoryManager::TraceAllocationBalance("here");
  LumoMemoryManager::TraceAllocationDebugPoint("there");
  LumoMemoryManager::TraceDelete(&object, "Thing");
  LumoMemoryManager::SetTraceAllocations(false);
  LumoMemoryManager::TraceDelete(&object, "Untraced");
  const std::string name = AddressOf(&object) + "/Thing ";
  const std::string trace = "LumoMemoryManager::New " + name +
                            "[1]\nn 7\nx 0.5\nhere [2]\nthere\nLumoMemoryManager::Delete " + name;
  EXPECT_EQ(GetTrace().substr(0, trace.size()), trace);
  EXPECT_EQ(GetTrace().find("Untraced"), std::string::npos);
}

TEST_F(LumoMemoryManagerTest, EndsTheProcessOnANegativeBalance) {
  int object = 0;
  EXPECT_EXIT(LumoMemoryManager::TraceDelete(&object, "Thing"), testing::ExitedWithCode(1), "");
  const std::string start = Dated("LumoMemoryManager::NegativeAllocationBalance Delete " +
                                  AddressOf(&object) + "/Thing [");
  EXPECT_EQ(GetDump().substr(0, start.size()), start);
}

TEST_F(LumoMemoryManagerTest, AllocatesZeroFilledCellsAndNotesNullDeletions) {
  void* (*const allocations[])(std::size_t) = {&LumoMemoryManager::NewCell, &::operator new,
                                               &::operator new[] };
  for (const std::size_t size : {1, 8, 9, 24, 248, 249, 1000}) {
    for (int round = 0; round < 9; ++round) {  // a released cell comes back clean
      LumoMemoryManager::SetPoolsCells(round % 2 == 0);
      auto* cell = static_cast<unsigned char*>(allocations[round % 3](size));
      auto* other = static_cast<unsigned char*>(allocations[round % 3](size));
      LumoMemoryManager::SetPoolsCells(round % 4 == 0);  // cells know where they belong
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(cell) % alignof(std::max_align_t), 0U);
      ASSERT_EQ(std::count(cell, cell + size, 0), static_cast<long>(size));
      std::fill(cell, cell + size, static_cast<unsigned char>(0xAA));
      ASSERT_EQ(std::count(other, other + size, 0), static_cast<long>(size));
      LumoMemoryManager::DeleteCell(cell);
      LumoMemoryManager::DeleteCell(other);
    }
  }
  EXPECT_EQ(LumoMemoryManager::GetAllocationBalance(), 0);  // cells are no objects
  LumoMemoryManager::DeleteCell(nullptr);
  ::operator delete(static_cast<void*>(nullptr));
  const std::string line = Dated("LumoMemoryManager::NullPointerDeletion.\n");
  EXPECT_EQ(GetDump(), line + line);
  LumoMemoryManager::SetTraceNullPointerDeletions(false);
  LumoMemoryManager::DeleteCell(nullptr);
  LumoMemoryManager::Dump("100 %s\n");  // a message is no format
  EXPECT_EQ(GetDump(), line + line + Dated("100 %s\n"));
}

TEST_F(LumoMemoryManagerTest, HandlesExhaustedMemory) {
  const volatile std::size_t tooMuch = std::numeric_limits<std::size_t>::max() / 4;
  void* volatile cell = nullptr;  // an unused allocation might be left out
  const auto exhaust = [&] { cell = ::operator new(tooMuch); };
  // A sanitizer's allocator ends the process by itself, in its own way.
#ifndef __SANITIZE_ADDRESS__
  int object = 0;
  LumoMemoryManager::TraceNew(&object, "Thing");
  EXPECT_EQ(LumoMemoryManager::NewCell(tooMuch), nullptr);
  EXPECT_EQ(GetDump(), Dated("LumoMemoryManager::MemoryOverflow AllocationBalance = 1\n"));
  EXPECT_EQ(::operator new(tooMuch, std::nothrow), nullptr);
  EXPECT_EXIT(exhaust(), testing::ExitedWithCode(1), "^Memory exhausted\n$");
#else
  EXPECT_DEATH(exhaust(), "");
#endif
}
