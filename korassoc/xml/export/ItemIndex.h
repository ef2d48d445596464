// The numbers by which the itemsets of a document refer to its items.

#pragma once

#include <vector>

#include "korassoc/itemsets/ItemSet.h"

namespace korassoc::detail {

// The distinct items of a document, ascending; the reference of an item is its position from 1.
class ItemIndex {
 public:
  // The items in any order, repeats allowed.
  explicit ItemIndex(std::vector<int> items);

  int count() const { return items_.length(); }
  // The item with the reference, 1 <= reference <= count().
  int itemAt(int reference) const { return items_.getItemAt(reference - 1); }
  // 0 for an item that the document does not list. O(log count()).
  int referenceOf(int item) const { return items_.getItemIndex(item) + 1; }

 private:
  ItemSet items_;
};

}  // namespace korassoc::detail
