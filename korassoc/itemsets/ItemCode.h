// Codes by which itemsets are found in memory. They show nowhere: what users see is ordered by the hash code.

#pragma once

#include <cstdint>

namespace korassoc::detail {

// Every bit of the item reaches every bit of its code.  (Steele, Lea & Flood, OOPSLA 2014: SplitMix)
constexpr std::uint64_t itemCode(int item) {
  std::uint64_t code = static_cast<std::uint32_t>(item) + 0x9E3779B97F4A7C15U;
  code = (code ^ (code >> 30U)) * 0xBF58476D1CE4E5B9U;
  code = (code ^ (code >> 27U)) * 0x94D049BB133111EBU;
  return code ^ (code >> 31U);
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
