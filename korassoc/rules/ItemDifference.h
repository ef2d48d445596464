// The items of one set that are not in another.

#pragma once

#include <vector>

#include "korassoc/itemsets/ItemSet.h"

namespace korassoc::detail {

// What ItemSet(a, b) holds, in a buffer that is used again and again: rules are many, and most need only a
// look-up.
class ItemDifference {
 public:
  // The items of a, in order, that b does not hold.
  void assign(const ItemSet& a, const ItemSet& b) {
    items_.clear();
    const int* const end = b.getTheArray() + b.length();
    const int* held = b.getTheArray();
    for (int i = 0; i < a.length(); ++i) {
      const int item = a.getItemAt(i);
      while (held != end && *held < item) ++held;
      if (held == end || *held != item) items_.push_back(item);
    }
  }

  bool empty() const { return items_.empty(); }
  int length() const { return static_cast<int>(items_.size()); }
  const int* items() const { return items_.data(); }

 private:
  std::vector<int> items_;
};

}  // namespace korassoc::detail
