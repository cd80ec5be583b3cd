// Regular expressions and the pattern helpers of plain strings.

#include <random>
#include <vector>

#include "OrvaTestSupport.h"
#include "regex/LumoRegex.h"
#include "support/containers/LumoList.h"
#include "support/containers/LumoRange.h"
#include "support/text/LumoRawString.h"

namespace {

using Extent = std::pair<int, int>;
constexpr Extent NONE = {-1, -1};

Extent Find(const LumoRegex& regex, const std::string& text, std::size_t from = 0) {
  std::size_t start, end;
  if (!regex.Find(text.c_str(), text.size(), from, start, end)) return NONE;
  return {static_cast<int>(start), static_cast<int>(end)};
}

// A new raw string as a text; "(null)" for null.
std::string Take(char* text) {
  const std::string copy = text == nullptr ? "(null)" : text;
  LumoRawString::DeleteIfAny(text);
  return copy;
}

TEST(LumoRegex, FindsTheLeftmostLongestMatch) {
  const struct {
    const char* pattern;
    const char* text;
    Extent extent;
  } rows[] = {
      {nullptr, "a", {0, 0}},
      {"", "a", {0, 0}},
      {"b", "abcb", {1, 2}},
      {"B", "abc", NONE},
      {"a{2}", "aa{2}", {1, 5}},
      {"a.c",
       "a\nc a\xE9"
       "c",
       {4, 7}},
      {"\xE9+", "a\xE9\xE9", {1, 3}},
      // Classes.
      {"[a-c]+", "xxbcad", {2, 5}},
      {"[^a-c]+", "ab\nxc", {2, 4}},
      {"[]x]+", "a]x]", {1, 4}},
      {"[^]]", "]]a", {2, 3}},
      {"[-a]+", "b-a-", {1, 4}},
      {"[a-]+", "b-a", {1, 3}},
      {"[a\\-z]+", "m-z", {1, 3}},
      {"[\\]\\d_]+", "ab1_]2", {2, 6}},
      {"[.*(^]+", "ab.*(^", {2, 6}},
      // The start and the end.
      {"^b", "ab", NONE},
      {"^ab$", "ab", {0, 2}},
      {"b$", "abb", {2, 3}},
      {"^$", "", {0, 0}},
      {"$", "ab", {2, 2}},
      {"a^b|a$b", "a^b a$b ab", NONE},
      {"(^a|b)c", "cacbc", {3, 5}},
      // Repetitions.
      {"x*", "aax", {0, 0}},
      {"x+", "aaxxa", {2, 4}},
      {"ab?c", "abbc ac", {5, 7}},
      {"ab?", "abb", {0, 2}},
      {"a*?b", "aab", {0, 3}},
      {"(a*)*(a+)?b", "caab", {1, 4}},
      {"(ab|cd)+", "xabcdab", {1, 7}},
      {"ab*", "abab", {0, 2}},
      // Alternatives: the longest, not the first.
      {"a|ab|abc", "xabcd", {1, 4}},
      {"(a|ab)(c|bcd)(d*)", "abcd", {0, 4}},
      {"ab|c|", "dab", {0, 0}},
      {"|a", "ab", {0, 1}},
      {"x()y", "xy", {0, 2}},
      {"a|bc", "abc", {0, 1}},
      {"(a|b)c", "abc", {1, 3}},
      // Escapes.
      {"\\d+", "ab12c", {2, 4}},
      {"\\D+", "12ab3", {2, 4}},
      {"\\w+", "- a_9Z-", {2, 6}},
      {"\\W+", "a - b", {1, 4}},
      {"\\s+", "a \t\n\r\f\vb", {1, 7}},
      {"\\S+", "  ab ", {2, 4}},
      {"\\n\\t\\r\\f\\v", "n\n\t\r\f\v", {1, 6}},
      {"\\^\\$\\.\\\\\\[\\]\\(\\)\\|\\*\\+\\?\\-", "x^$.\\[]()|*+?-", {1, 14}},
  };
  for (const auto& [pattern, text, extent] : rows) {
    const LumoRegex regex(pattern);
    EXPECT_EQ(regex.GetError(), nullptr) << pattern;
    EXPECT_EQ(Find(regex, text), extent) << pattern << " in " << text;
  }
  // From a place on: it is not the start of the text.
  EXPECT_EQ(Find(LumoRegex("^a"), "aab", 1), NONE);
  EXPECT_EQ(Find(LumoRegex("a*b*"), "aab", 1), (Extent{1, 3}));
  EXPECT_EQ(Find(LumoRegex("$"), "ab", 2), (Extent{2, 2}));
  EXPECT_EQ(Find(LumoRegex(""), "ab", 3), NONE);
  EXPECT_EQ(Find(LumoRegex("a.b$"), std::string("a\0b", 3)), (Extent{0, 3}));
}

TEST(LumoRegex, SaysWhyAPatternIsNotWellFormed) {
  const std::pair<const char*, std::vector<const char*>> rows[] = {
      {"There is nothing to repeat", {"*", "a|+b", "(?a)"}},
      {"A group is not closed", {"(a", "((a)", "a|("}},
      {"A group is closed that is not open", {")", "(a))", "a|b)"}},
      {"A class of characters is not closed", {"[a", "[]", "[^]", "[a-", "[a\\"}},
      {"A range of characters is reversed", {"[z-a]"}},
      {"A pattern ends with a backslash", {"a\\"}}};
  for (const auto& [error, patterns] : rows) {
    for (const char* pattern : patterns) {
      const LumoRegex regex(pattern);
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
    switch (_kind) {
      case 0:
        return reads(text[i] == 'a');
      case 1:
        return reads(text[i] == 'b');
      case 2:
        return reads(text[i] != '\n');
      case 3:
        return reads(text[i] != 'a');
      case 4:
        return i == 0 ? 1u << i : 0u;
      case 5:
        return i == text.size() ? 1u << i : 0u;
      case 8:
        return _children[0].GetEnds(text, i) | _children[1].GetEnds(text, i);
      case 9:
        return Repeat(1u << i, text);
      case 10:
        return Repeat(_children[0].GetEnds(text, i), text);
      case 11:
        return 1u << i | _children[0].GetEnds(text, i);
      default:
        return Continue(1, _children[0].GetEnds(text, i), text);
    }
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
  EXPECT_EQ(Find(LumoRegex("(a*)*b"), text + "b"), (Extent{0, 200001}));
  std::string nested(100000, '(');
  std::string starred = nested + "a";
  nested += "a" + std::string(100000, ')');
  for (int i = 0; i < 100000; ++i) starred += ")*";
  EXPECT_EQ(Find(LumoRegex(nested.c_str()), "ba"), (Extent{1, 2}));
  EXPECT_EQ(Find(LumoRegex(starred.c_str()), "aaab"), (Extent{0, 3}));
}

TEST(LumoRawString, PatternHelpers) {
  using S = LumoRawString;
  EXPECT_TRUE(S::MatchPattern("abc", "b+"));
  EXPECT_FALSE(S::MatchPattern("abc", "^b"));
  EXPECT_FALSE(S::MatchPattern(nullptr, ""));
  EXPECT_FALSE(S::MatchPattern("(", "("));
  EXPECT_EQ(Take(S::ExtractPattern("a12b345", "\\d+")), "12");
  EXPECT_EQ(Take(S::ExtractPattern("ab", "\\d+")), "(null)");
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
    EXPECT_EQ(Take(S::SubstitutePattern(text, pattern, "\\1&")), first) << pattern;
    EXPECT_EQ(Take(S::SubstitutePatterns(text, pattern, "\\1&")), all) << pattern;
    if (parts == nullptr) continue;
    LumoList list;
    EXPECT_EQ(S::SplitWithPattern(text, pattern, &list), *parts != '\0') << pattern;
    std::string found;
    for (char* part : LumoItems<char>(list)) found += "/" + Take(part);
    EXPECT_EQ(found, parts) << pattern;
  }
  LumoList list;
  S::SplitWithPattern("abc", "x*", &list);
  for (char* part : LumoItems<char>(list)) std::printf("[%s]", Take(part).c_str());
}

}  // namespace
