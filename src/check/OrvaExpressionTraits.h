#pragma once

#include <string_view>
#include <unordered_map>

class LumoXMLNode;
class OrvaModelText;

// What the expressions of a model are made of, as the evaluation sees it: their parameters
// followed, and nothing below a random deviate.
class OrvaExpressionTraits {
 public:
  enum Trait : int { DEPENDS_ON_TIME = 1, HAS_FAILURE_LAW = 2, HAS_TESTS = 4 };

  // The text must not change, nor go, while this is used.
  explicit OrvaExpressionTraits(const OrvaModelText& text);

  // The traits of an expression, as bits.
  int Get(const LumoXMLNode* expression) const;
  static bool IsDeviate(const LumoXMLNode* node);

 private:
  int _GetOfParameter(std::string_view name) const;

  std::unordered_map<std::string_view, int> _traitsOfParameters;
};
