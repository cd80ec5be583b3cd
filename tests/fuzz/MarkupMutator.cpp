// How libFuzzer mutates XML inputs: half of the time as any bytes, else by pieces, which are
// elements or quoted values. A piece is taken out, or another one of its kind is put before it or
// in its place.

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "OrvaFuzzSupport.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned seed);

namespace {

struct Piece {
  std::size_t start;
  std::size_t size;
};

std::vector<Piece> FindValues(const std::string& text) {
  std::vector<Piece> values;
  std::size_t quote = text.find('"');
  while (quote != std::string::npos) {
    const std::size_t end = text.find('"', quote + 1);
    if (end == std::string::npos) break;
    values.push_back({quote + 1, end - quote - 1});
    quote = text.find('"', end + 1);
  }
  return values;
}

// From a tag to its end, or to the next closing tag of the same name.
std::vector<Piece> FindElements(const std::string& text) {
  std::vector<Piece> elements;
  for (std::size_t start = text.find('<'); start != std::string::npos;
       start = text.find('<', start + 1)) {
    std::size_t end = text.find('>', start);
    if (end == std::string::npos) break;
    if (text[start + 1] == '/' || text[start + 1] == '?') continue;
    if (text[end - 1] != '/') {
      const std::size_t length = text.find_first_of(" >", start) - start;
      const std::string closingTag = "</" + text.substr(start + 1, length - 1) + ">";
      end = text.find(closingTag, end);
      if (end == std::string::npos) continue;
      end += closingTag.size() - 1;
    }
    elements.push_back({start, end + 1 - start});
  }
  return elements;
}

}  // namespace

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                    unsigned seed) {
  std::minstd_rand random(seed);
  const unsigned way = static_cast<unsigned>(random() >> 8) % 8;
  std::string text(OrvaToText(data, size));
  const std::vector<Piece> pieces = way % 2 == 0 ? FindElements(text) : FindValues(text);
  if (way > 3 || pieces.empty()) return LLVMFuzzerMutate(data, size, maxSize);
  const Piece& target = pieces[random() % pieces.size()];
  const Piece& source = pieces[random() % pieces.size()];
  const bool isReplaced = way > 1 || random() % 2 == 0;
  const std::string copy = random() % 4 == 0 ? "" : text.substr(source.start, source.size);
  text.replace(target.start, isReplaced ? target.size : 0, copy);
  const std::size_t newSize = std::min(text.size(), maxSize);
  std::memcpy(data, text.data(), newSize);
  return newSize;
}
