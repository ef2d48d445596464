// Finds the subsets, one item smaller, of many itemsets.

#pragma once

#include <cstdint>
#include <vector>

#include "korassoc/dictionary/HashTable.h"

namespace korassoc::detail {

// SubsetIndex holds the entries of one table under a hash code that spreads well, whatever the items are, and
// that a set's subsets get from the set's own in one step: the sum of its items' mixed codes.
//
//   slots_   [ hash, entry | -- | hash, entry | ... ]    open addressing, linear; at most half full
//
// The table must not change while the index is used. Memory: 32 to 64 bytes a set.
class SubsetIndex {
 public:
  explicit SubsetIndex(const HashTable& table);

  // The hash code of a set, from which those of its subsets follow.
  static std::uint64_t hashOf(const ItemSet& set);
  // The entry of set without the item at position omitted, or null. hash: hashOf(set).
  HashTable::Entry* findWithout(const ItemSet& set, std::uint64_t hash, int omitted) const;

 private:
  struct Slot {
    std::uint64_t hash;
    HashTable::Entry* entry;  // null: empty
  };

  std::vector<Slot> slots_;  // a power of two
};

}  // namespace korassoc::detail
