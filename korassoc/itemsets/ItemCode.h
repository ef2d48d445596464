// Codes by which itemsets are found in memory. They show nowhere: what users see is ordered by the hash code.

#pragma once

#include <cstdint>

namespace korassoc::detail {

// Every bit of the number reaches every bit of the result.  (Steele, Lea & Flood, OOPSLA 2014: SplitMix)
constexpr std::uint64_t mixedBits(std::uint64_t number) {
  number = (number ^ (number >> 30U)) * 0xBF58476D1CE4E5B9U;
  number = (number ^ (number >> 27U)) * 0x94D049BB133111EBU;
  return number ^ (number >> 31U);
}

constexpr std::uint64_t itemCode(int item) {
  return mixedBits(static_cast<std::uint32_t>(item) + 0x9E3779B97F4A7C15U);
}

// An item and its code.
struct CodedItem {
  explicit CodedItem(int itemOf) : item(itemOf), code(itemCode(itemOf)) {}

  int item;
  std::uint64_t code;
};

// The sum of the items' codes, so that a set's code with an item more or less follows in one step.
constexpr std::uint64_t setCode(const int* items, int n) {
  std::uint64_t code = 0;
  for (int i = 0; i < n; ++i) code += itemCode(items[i]);
  return code;
}

}  // namespace korassoc::detail
