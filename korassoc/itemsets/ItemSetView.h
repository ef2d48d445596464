// A look at an itemset that somebody else holds.

#pragma once

#include <cstdint>

#include "korassoc/itemsets/ItemCode.h"
#include "korassoc/itemsets/ItemSet.h"

namespace korassoc::detail {

// Whether the n items are the same. Sets are small: a loop, and nothing to call for.
inline bool sameItems(const int* a, const int* b, int n) {
  for (int i = 0; i < n; ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

}  // namespace korassoc::detail

// The ascending items of a set with their code: the one form to which every form of a set argument (array,
// index selection, single item, ItemSet) is reduced before it is looked up. Owns nothing.
struct ItemSetView {
  ItemSetView(const int* setItems, int setLength)
      : ItemSetView(setItems, setLength, korassoc::detail::setCode(setItems, setLength)) {}
  // For callers that know the code already.
  ItemSetView(const int* setItems, int setLength, std::uint64_t setCode)
      : items(setItems), length(setLength), code(setCode) {}
  explicit ItemSetView(const ItemSet& set) : ItemSetView(set.getTheArray(), set.length()) {}

  const int* items;
  int length;
  std::uint64_t code;
};
