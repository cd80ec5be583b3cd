#pragma once

// The object form of a matching function: 0 when the item matches the key.
class LumoComparator {
 public:
  virtual ~LumoComparator() = default;
  virtual int Compare(const void* item, const void* key) const = 0;
};

// A matching function as a comparator.
class LumoFunctionComparator final : public LumoComparator {
 public:
  using Match = int (*)(const void* item, const void* key);

  explicit LumoFunctionComparator(Match match) : _match(match) {}
  int Compare(const void* item, const void* key) const override { return _match(item, key); }

 private:
  Match _match;
};
