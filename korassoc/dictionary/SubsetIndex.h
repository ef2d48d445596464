// Finds itemsets, and the subsets of itemsets, among the sets of one table.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "korassoc/dictionary/HashTable.h"
#include "korassoc/itemsets/ItemSetView.h"

namespace korassoc::detail {

// SubsetIndex holds the entries of one table, numbered 0, 1, 2, ... in an order that the maker chooses, under
// a hash code that spreads well, whatever the items are, and that a set's subsets get from the set's own in
// one step: the sum of its items' mixed codes.
//
//   slots_   [ hash, number | -- | hash, number | ... ]    open addressing, linear; at most half full
//   items_   [ set 0's items | set 1's items | ... ]       what a probe compares with
//
// The table must not change while the index is used. Memory: 24 to 40 bytes a set and 4 for each of its
// items.
class SubsetIndex {
 public:
  static constexpr int kNone = -1;

  // Numbers the entries as they stand. length: that of their sets; one of another length would never be
  // found.
  SubsetIndex(std::vector<HashTable::Entry*> entries, int length);
  // Numbers the entries of a table in table order.
  SubsetIndex(const HashTable& table, int length);

  HashTable::Entry* entry(int number) const { return entries_[static_cast<std::size_t>(number)]; }
  int size() const { return static_cast<int>(entries_.size()); }

  // The number of the entry that holds set without the item at position omitted, or kNone. code: that of set
  // (ItemCode).
  int findWithout(const ItemSet& set, std::uint64_t code, int omitted) const;
  // The number of the entry that holds the items of whole that part does not hold, or kNone. part is a subset
  // of whole; code: that of whole less that of part.
  int findDifference(const ItemSet& whole, const ItemSet& part, std::uint64_t code) const;
  // The number of the entry that holds the set, or kNone.
  int find(const int* items, int length) const;

 private:
  struct Slot {
    std::uint32_t hash;
    int number;  // kNone: empty
  };
  template <typename Equals>
  int probe(std::uint64_t hash, Equals&& equals) const;

  int length_;
  std::vector<HashTable::Entry*> entries_;  // by number
  std::vector<int> items_;                  // length_ for each number
  std::vector<Slot> slots_;                 // a power of two
};

}  // namespace korassoc::detail
