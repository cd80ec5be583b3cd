// The pattern helpers of plain strings. They stand here because the layer of the strings lies
// below that of the regular expressions.

#include <cstring>
#include <string>

#include "regex/LumoRegex.h"
#include "support/containers/LumoList.h"
#include "support/text/LumoRawString.h"

namespace {

// Calls visit(start, end) on each match, from left to right. Matches do not overlap; an empty one
// right behind another match does not count.
template <class Visit>
void ForEachMatch(const LumoRegex& regex, const char* text, Visit visit) {
  const std::size_t length = std::strlen(text);
  std::size_t from = 0;
  std::size_t lastEnd = std::string::npos;
  std::size_t start;
  std::size_t end;
  while (from <= length && regex.Find(text, length, from, start, end)) {
    const bool isEmpty = start == end;
    if (!isEmpty || start != lastEnd) visit(start, end);
    lastEnd = end;
    from = isEmpty ? end + 1 : end;
  }
}

std::string Substitute(const LumoRegex& regex, const char* text, const char* replacement,
                       bool isOnlyFirst) {
  std::string result;
  std::size_t done = 0;
  bool isDone = false;
  ForEachMatch(regex, text, [&](std::size_t start, std::size_t end) {
    if (isDone) return;
    result.append(text + done, start - done).append(replacement);
    done = end;
    isDone = isOnlyFirst;
  });
  return result.append(text + done);
}

}  // namespace

// Offered to users of the class; the program itself does not call what follows.

bool LumoRawString::MatchPattern(const char* text, const char* pattern) {
  std::size_t start;
  std::size_t end;
  return text != nullptr && LumoRegex(pattern).Find(text, 0, start, end);
}

char* LumoRawString::ExtractPattern(const char* text, const char* pattern) {
  std::size_t start;
  std::size_t end;
  if (text == nullptr || !LumoRegex(pattern).Find(text, 0, start, end)) return nullptr;
  return Copy(std::string(text + start, end - start).c_str());
}

bool LumoRawString::SplitWithPattern(const char* text, const char* pattern, LumoList* parts) {
  const LumoRegex regex(pattern);
  if (text == nullptr || !regex.IsValid()) return false;
  std::size_t done = 0;
  ForEachMatch(regex, text, [&](std::size_t start, std::size_t end) {
    if (end == 0) return;
    parts->InsertItemLast(Copy(std::string(text + done, start - done).c_str()));
    done = end;
  });
  parts->InsertItemLast(Copy(text + done));
  return true;
}

char* LumoRawString::SubstitutePattern(const char* text, const char* pattern,
                                       const char* replacement) {
  const LumoRegex regex(pattern);
  if (text == nullptr || !regex.IsValid()) return nullptr;
  return Copy(Substitute(regex, text, replacement, true).c_str());
}

char* LumoRawString::SubstitutePatterns(const char* text, const char* pattern,
                                        const char* replacement) {
  const LumoRegex regex(pattern);
  if (text == nullptr || !regex.IsValid()) return nullptr;
  return Copy(Substitute(regex, text, replacement, false).c_str());
}
