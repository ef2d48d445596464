// Itemsets in their order: fewer items first, then item by item.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "korassoc/mining/ItemRanks.h"
#include "korassoc/mining/ItemsetTable.h"

namespace korassoc::detail {

// Puts itemsets into the order of compareItemsets(), one length after the other. The sets of a length are
// sorted by numbers made of the ranks of their items, as many as fit 64 bits, with a radix sort; a long set
// takes several. Cost: linear, about 50 ns a set.
class ItemsetSorter {
 public:
  // The table in order. Throws Error (kInput) when a set stands in it twice.
  static ItemsetTable sorted(const ItemsetTable& table);

  // For sets that come length by length; ranks has all their items.
  explicit ItemsetSorter(ItemRanks ranks) : ranks_(std::move(ranks)) {}

  // Makes room for so many sets of so many items in all.
  void reserve(std::size_t sets, std::size_t items);
  // Appends all sets of one length, more than that of any set so far: set i is items[i * length, (i + 1) *
  // length). largestCounts: empty where counts are exact. Throws Error (kInput) when a set is among them
  // twice.
  template <typename Count>
  void addLevel(std::size_t length, std::span<const Item> items, std::span<const Count> counts,
                std::span<const Count> largestCounts);
  // What was added.
  ItemsetTable take();

 private:
  struct Keyed {
    std::uint64_t key;
    std::uint32_t row;
  };

  void order(std::size_t length, std::span<const Item> items);
  bool isInOrder(std::size_t length, std::span<const Item> items) const;
  void sortByItems(std::size_t length, std::span<const Item> items);
  void sortByKeys(std::size_t length, std::span<const Item> items);
  void radixSort(int bits);
  void refuseRepeats(std::size_t length, std::span<const Item> items) const;

  ItemRanks ranks_;
  ItemsetTable::Columns columns_;
  std::vector<std::uint32_t> rows_;  // of one length, in order
  std::vector<Keyed> keyed_, scratch_;
};

}  // namespace korassoc::detail
