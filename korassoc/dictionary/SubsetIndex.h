// Finds itemsets, and the subsets of itemsets, among the sets of one table.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "korassoc/dictionary/HashTable.h"
#include "korassoc/itemsets/ItemSetView.h"

namespace korassoc::detail {

// SubsetIndex holds the entries of one table, numbered 0, 1, 2, ... in table order, under a hash code that
// spreads well, whatever the items are, and that a set's subsets get from the set's own in one step: the sum
// of its items' mixed codes.
//
//   slots_   [ hash, number | -- | hash, number | ... ]    open addressing, linear; at most half full
//
// The table must not change while the index is used. Memory: 24 to 40 bytes a set.
class SubsetIndex {
 public:
  static constexpr int kNone = -1;

  explicit SubsetIndex(const HashTable& table);

  HashTable::Entry* entry(int number) const { return entries_[static_cast<std::size_t>(number)]; }
  int size() const { return static_cast<int>(entries_.size()); }

  // The number of the entry that holds set without the item at position omitted, or kNone. code: that of set
  // (ItemCode).
  int findWithout(const ItemSet& set, std::uint64_t code, int omitted) const;
  // The number of the entry that holds the set, or kNone.
  int find(const int* items, int length) const;

 private:
  struct Slot {
    std::uint32_t hash;
    int number;  // kNone: empty
  };
  template <typename Equals>
  int probe(std::uint64_t hash, Equals&& equals) const;

  std::vector<HashTable::Entry*> entries_;  // by number
  std::vector<Slot> slots_;                 // a power of two
};

}  // namespace korassoc::detail
