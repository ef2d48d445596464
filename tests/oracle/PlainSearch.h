// The searches over the plain engine's lattice.

#pragma once

#include <set>
#include <vector>

#include "tests/oracle/PlainDictionary.h"

namespace oracle {

struct ItemsOrder {
  bool operator()(const Items& a, const Items& b) const { return comesBefore(a, b); }
};
using ItemsSet = std::set<Items, ItemsOrder>;

// Counts and lengths of what is searched, all bounds included.
struct SearchBounds {
  int minCount;
  int maxCount;
  int minLength;
  int maxLength;
};

// The stored supersets of base, itself included, within the bounds. Walks up from base, the smallest set
// first, through sets that reach the minimum count; one above the maximum count is passed through but not
// reported.
ItemsSet findItemSets2(PlainDictionary& dictionary, const Items& base, const SearchBounds& bounds);
// The same, extending by allowed items only.
ItemsSet findItemSets3(PlainDictionary& dictionary, const Items& base, const Items& allowed,
                       const SearchBounds& bounds);
// The stored sets within the bounds that hold at least one of the items.
ItemsSet findItemSetsWithin(PlainDictionary& dictionary, const Items& items, const SearchBounds& bounds);

// The support of the k-th most frequent of base and its stored supersets, taken one by one, the most frequent
// that has been reached first; a set reached twice before it is taken counts twice. -1 when there is none. k
// > 0.
double findSupport(PlainDictionary& dictionary, const Items& base, int k);

}  // namespace oracle
