// Regular expressions and the pattern helpers of plain strings.

#include <random>

#include "OrvaTestSupport.h"
#include "regex/LumoRegex.h"
#include "support/containers/LumoList.h"
#include "support/text/LumoRawString.h"

namespace {

using Extent = std::pair<int, int>;
constexpr Extent NONE = {-1, -1};

Extent Find(const LumoRegex& regex, const std::string& text, std::size_t from = 0) {
  std::size_t start, end;
  if (!regex.Find(text.c_str(), text.size(), from, start, end)) return NONE;
  return {static_cast<int>(start), static_cast<int>(end)};
}

TEST(LumoRegex, FindsTheLeftmostLongestMatch) {
  for (const std::string& line : OrvaReadRows("patterns")) {
    const std::vector<std::string> row = OrvaSplit(line);
    const LumoRegex regex(row[0].c_str());
    EXPECT_EQ(regex.GetError(), nullptr) << row[0];
    EXPECT_EQ(Find(regex, row[1]), Extent(std::stoi(row[2]), std::stoi(row[3])))
        << row[0] << " in " << row[1];
  }
  for (const char* empty : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_EQ(Find(LumoRegex(empty), "a"), (Extent{0, 0}));
  }
  EXPECT_EQ(Find(LumoRegex("\xE9+"), "a\xE9\xE9"), (Extent{1, 3}));
  EXPECT_EQ(Find(LumoRegex("[^a-c]+"), "ab\nxc"), (Extent{2, 4}));
  EXPECT_EQ(Find(LumoRegex("\\s+"), "a \t\n\r\f\vb"), (Extent{1, 7}));
  EXPECT_EQ(Find(LumoRegex("\\S+"), "  ab "), (Extent{2, 4}));
  EXPECT_EQ(Find(LumoRegex("\\n\\t\\r\\f\\v"), "n\n\t\r\f\v"), (Extent{1, 6}));
  // From a place on: it is not the start of the text.
  EXPECT_EQ(Find(LumoRegex("^a"), "aab", 1), NONE);
  EXPECT_EQ(Find(LumoRegex("a*b*"), "aab", 1), (Extent{1, 3}));
  EXPECT_EQ(Find(LumoRegex("$"), "ab", 2), (Extent{2, 2}));
  EXPECT_EQ(Find(LumoRegex(""), "ab", 3), NONE);
  EXPECT_EQ(Find(LumoRegex("a.b$"), std::string("a\0b", 3)), (Extent{0, 3}));
}

TEST(LumoRegex, SaysWhyAPatternIsNotWellFormed) {
  const std::pair<const char*, const char*> rows[] = {
      {"There is nothing to repeat", "* a|+b (?a)"},
      {"A group is not closed", "(a ((a) a|("},
      {"A group is closed that is not open", ") (a)) a|b)"},
      {"A class of characters is not closed", "[a [] [^] [a- [a\\"},
      {"A range of characters is reversed", "[z-a]"},
      {"A pattern ends with a backslash", "a\\"}};
  for (const auto& [error, patterns] : rows) {
    for (const std::string& pattern : OrvaSplit(patterns)) {
      const LumoRegex regex(pattern.c_str());
      EXPECT_FALSE(regex.IsValid());
      EXPECT_STREQ(regex.GetError(), error) << pattern;
      EXPECT_EQ(Find(regex, "a"), NONE);
    }
  }
}

// A random pattern that can also tell where its matches from a place on end, as a set of bits: it
// tries everything.
class Pattern {
 public:
  Pattern(std::mt19937& random, int depth)
      : _kind(static_cast<int>(random() % (depth > 0 ? 12 : 6))) {
    for (int n = _kind < 6 ? 0 : _kind < 9 ? 2 : 1; n > 0; --n)
      _children.emplace_back(random, depth - 1);
  }

  std::string ToText() const {
    static const char* const LEAVES[] = {"a", "b", ".", "[^a]", "^", "$"};
    if (_kind < 6) return LEAVES[_kind];
    if (_kind < 8) return _children[0].ToText(8) + _children[1].ToText(8);
    if (_kind == 8) return _children[0].ToText() + "|" + _children[1].ToText();
    return _children[0].ToText(6) + (_kind == 9 ? "*" : _kind == 10 ? "+" : "?");
  }
  unsigned GetEnds(const std::string& text, std::size_t i) const {
    const auto reads = [&](bool isRead) { return i < text.size() && isRead ? 2u << i : 0u; };
    const unsigned here = 1u << i;
    if (_kind == 0) return reads(text[i] == 'a');
    if (_kind == 1) return reads(text[i] == 'b');
    if (_kind == 2) return reads(text[i] != '\n');
    if (_kind == 3) return reads(text[i] != 'a');
    if (_kind == 4) return i == 0 ? here : 0u;
    if (_kind == 5) return i == text.size() ? here : 0u;
    if (_kind == 9) return Repeat(here, text);
    const unsigned first = _children[0].GetEnds(text, i);
    if (_kind == 8) return first | _children[1].GetEnds(text, i);
    if (_kind == 10) return Repeat(first, text);
    return _kind == 11 ? here | first : Continue(1, first, text);
  }

 private:
  // In parentheses from a kind on.
  std::string ToText(int kind) const {
    const bool isLower = _kind == kind || (kind == 6 && _kind > 6);
    return isLower ? "(" + ToText() + ")" : ToText();
  }
  unsigned Continue(std::size_t child, unsigned starts, const std::string& text) const {
    unsigned ends = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
      if ((starts >> i & 1) != 0) ends |= _children[child].GetEnds(text, i);
    }
    return ends;
  }
  unsigned Repeat(unsigned ends, const std::string& text) const {
    for (unsigned former = 0; former != ends;) {
      former = ends;
      ends |= Continue(0, ends, text);
    }
    return ends;
  }

  int _kind;
  std::vector<Pattern> _children;
};

TEST(LumoRegex, AgreesWithTryingEverything) {
  std::mt19937 random(5);
  int found = 0;
  for (int trial = 0; trial < 20000; ++trial) {
    const Pattern pattern(random, 4);
    std::string text;
    for (unsigned i = random() % 8; i > 0; --i) text += "ab\n"[random() % 8 * 3 / 10];
    Extent expected = NONE;
    for (std::size_t i = 0; i <= text.size() && expected == NONE; ++i) {
      const unsigned ends = pattern.GetEnds(text, i);
      if (ends != 0) expected = {i, std::bit_width(ends) - 1};
    }
    const LumoRegex regex(pattern.ToText().c_str());
    ASSERT_EQ(Find(regex, text), expected) << pattern.ToText() << " in " << text;
    found += expected.second > expected.first ? 1 : 0;
  }
  EXPECT_GT(found, 4000);
}

// These end at once, or not in this life.
TEST(LumoRegex, NeitherBacktracksNorRecurses) {
  const std::string text(200000, 'a');
  for (const char* pattern : {"(a*)*b", "((a+)+)+b", "(a|aa)+b", "(a?)*(a|a)*(a*)*b", "(aa*)*$b"}) {
    EXPECT_EQ(Find(LumoRegex(pattern), text), NONE) << pattern;
  }
  std::string starred = std::string(100000, '(') + "a";
  for (int i = 0; i < 100000; ++i) starred += ")*";
  EXPECT_EQ(Find(LumoRegex(starred.c_str()), "aaab"), (Extent{0, 3}));
}

TEST(LumoRawString, PatternHelpers) {
  using S = LumoRawString;
  EXPECT_TRUE(S::MatchPattern("abc", "b+"));
  EXPECT_FALSE(S::MatchPattern("abc", "^b"));
  EXPECT_FALSE(S::MatchPattern(nullptr, ""));
  EXPECT_FALSE(S::MatchPattern("(", "("));
  EXPECT_EQ(OrvaTake(S::ExtractPattern("a12b345", "\\d+")), "12");
  EXPECT_EQ(OrvaTake(S::ExtractPattern("ab", "\\d+")), "(null)");
  const struct {
    const char* text;
    const char* pattern;
    const char* first;  // with the first match replaced by \1&, and with all
    const char* all;
    const char* parts;  // each behind a slash; null when the pattern is bad
  } rows[] = {{"a12b3c", "\\d+", "a\\1&b3c", "a\\1&b\\1&c", "/a/b/c"},
              {"1a1", "1", "\\1&a1", "\\1&a\\1&", "//a/"},
              {"aaa", "aa", "\\1&a", "\\1&a", "//a"},
              {"a, b;c", ",\\s*|;", "a\\1&b;c", "a\\1&b\\1&c", "/a/b/c"},
              {"aab", "^a", "\\1&ab", "\\1&ab", "//ab"},
              {"abc", "x", "abc", "abc", "/abc"},
              {"", "x", "", "", "/"},
              {"ab", "x*", "\\1&ab", "\\1&a\\1&b\\1&", nullptr},
              {"a", "(", "(null)", "(null)", ""},
              {nullptr, "a", "(null)", "(null)", ""}};
  for (const auto& [text, pattern, first, all, parts] : rows) {
    EXPECT_EQ(OrvaTake(S::SubstitutePattern(text, pattern, "\\1&")), first) << pattern;
    EXPECT_EQ(OrvaTake(S::SubstitutePatterns(text, pattern, "\\1&")), all) << pattern;
    if (parts == nullptr) continue;
    LumoList list;
    EXPECT_EQ(S::SplitWithPattern(text, pattern, &list), *parts != '\0') << pattern;
    std::string found;
    for (char* part : LumoItems<char>(list)) found += "/" + OrvaTake(part);
    EXPECT_EQ(found, parts) << pattern;
  }
}

}  // namespace
