// Regular expressions: the pattern is what stands before the first NUL byte, the text what follows.

#include <string>

#include "OrvaFuzzSupport.h"
#include "regex/LumoRegex.h"
#include "support/containers/LumoList.h"
#include "support/containers/LumoRange.h"
#include "support/text/LumoRawString.h"

namespace {

constexpr int MOST_MATCHES = 8;
// The helpers search again behind each match.
constexpr std::size_t LONGEST_TEXT_OF_HELPERS = 128;

std::string Take(char* text) {
  const std::string copy = text;
  LumoRawString::Delete(text);
  return copy;
}

// Every match lies in the text, at or after the place where the search began, and is found again
// by a search that begins where it starts.
void CheckMatches(const LumoRegex& regex, std::string_view text) {
  std::size_t from = 0;
  std::size_t start, end;
  for (int i = 0; i < MOST_MATCHES && regex.Find(text.data(), text.size(), from, start, end); ++i) {
    OrvaRequire(from <= start && start <= end && end <= text.size(), "a match lies in the text");
    std::size_t startAgain, endAgain;
    const bool isFoundAgain = regex.Find(text.data(), text.size(), start, startAgain, endAgain);
    OrvaRequire(isFoundAgain && startAgain == start && endAgain == end, "a match is found again");
    from = end > from ? end : end + 1;
  }
}

// What is between the matches is what is left when they are taken out.
void CheckHelpers(const LumoRegex& regex, const char* text, const char* pattern) {
  std::size_t start, end;
  const bool isFound = regex.Find(text, 0, start, end);
  OrvaRequire(LumoRawString::MatchPattern(text, pattern) == isFound, "there is a match or not");
  LumoList parts;
  if (!LumoRawString::SplitWithPattern(text, pattern, &parts)) {
    OrvaRequire(!regex.IsValid(), "a text is split with a well-formed pattern");
    return;
  }
  std::string rest;
  for (const char* part : LumoItems<char>(parts)) rest += part;
  parts.DeleteItems([](void* part) { LumoRawString::Delete(static_cast<char*>(part)); });
  OrvaRequire(Take(LumoRawString::SubstitutePatterns(text, pattern, "")) == rest,
              "the parts are what is not matched");
  if (!isFound) return;
  const std::string match(text + start, end - start);
  OrvaRequire(Take(LumoRawString::ExtractPattern(text, pattern)) == match, "it is the first match");
  OrvaRequire(Take(LumoRawString::SubstitutePattern(text, pattern, match.c_str())) == text,
              "a match that replaces itself changes nothing");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const OrvaBalanceCheck balance;
  const std::string input(OrvaToText(data, size));
  const std::string pattern(input.c_str());
  const std::string text = input.substr(std::min(pattern.size() + 1, size));
  const LumoRegex regex(pattern.c_str());
  CheckMatches(regex, text);
  if (text.size() <= LONGEST_TEXT_OF_HELPERS) CheckHelpers(regex, text.c_str(), pattern.c_str());
  return 0;
}
