// Itemsets with their counts, in columns.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/mining/Item.h"
#include "korassoc/mining/RowIterator.h"

namespace korassoc {

namespace detail {
class ItemsetSorter;
}

// One itemset: a row of a table, valid as long as the table or a copy of it lives.
struct ItemsetView {
  std::span<const Item> items;  // ascending
  std::int64_t count;           // transactions that hold them all; where counts are bounds, at least so many
  std::int64_t largestCount;    // and at most so many; the same as count where counts are exact
};

// ItemsetTable keeps sets in the layout of Arrow columns, a list and one or two of 64-bit integers:
//
//   items           [ 3 | 7 | 3 7 | ... ]
//   offsets         [ 0   1   2     4 ... ]     set i is items[offsets[i] .. offsets[i + 1])
//   counts          [ 9   8   5 ... ]
//   largestCounts   [ 9   9   6 ... ]           only where counts are bounds
//
// The empty set is not among them. ItemsetTable is a value that is cheap to copy: copies share the columns,
// which never change. Threads: any number of readers. Memory: 16 bytes a set and 4 for each of its items; 8
// more where counts are bounds.
class KORASSOC_EXPORT ItemsetTable {
 public:
  struct Columns {
    std::vector<std::int64_t> offsets = {0};  // one more than there are sets
    std::vector<Item> items;                  // of each set ascending, without repeats
    std::vector<std::int64_t> counts;
    std::vector<std::int64_t> largestCounts;  // empty: counts are exact
  };

  // No sets.
  ItemsetTable();
  // Takes the columns over. Throws Error (kInput) when they do not fit together: offsets that do not begin at
  // 0, fall, or do not end with the items; an empty set; items that do not ascend; a count for each set
  // missing; counts below 0 or above the largest count. Whether a set stands twice is not looked at.
  static ItemsetTable fromColumns(Columns columns);

  std::size_t size() const { return columns_->counts.size(); }
  bool empty() const { return size() == 0; }
  // Requires row < size().
  ItemsetView operator[](std::size_t row) const {
    const std::int64_t count = columns_->counts[row];
    return {itemsOf(row), count, hasBounds() ? columns_->largestCounts[row] : count};
  }
  std::span<const Item> itemsOf(std::size_t row) const {
    const auto begin = static_cast<std::size_t>(columns_->offsets[row]);
    return {columns_->items.data() + begin, static_cast<std::size_t>(columns_->offsets[row + 1]) - begin};
  }
  detail::RowIterator<ItemsetTable, ItemsetView> begin() const { return {*this, 0}; }
  detail::RowIterator<ItemsetTable, ItemsetView> end() const { return {*this, size()}; }

  // Whether counts are bounds.
  bool hasBounds() const { return !columns_->largestCounts.empty(); }
  // Items of the longest set; 0 without sets. Cost: O(size()).
  std::size_t longest() const;

  // The columns, valid as long as this or a copy lives.
  std::span<const std::int64_t> offsets() const { return columns_->offsets; }
  std::span<const Item> items() const { return columns_->items; }
  std::span<const std::int64_t> counts() const { return columns_->counts; }
  std::span<const std::int64_t> largestCounts() const { return columns_->largestCounts; }

 private:
  friend class detail::ItemsetSorter;
  struct Trusted {};
  ItemsetTable(Trusted, Columns columns) : columns_(std::make_shared<const Columns>(std::move(columns))) {}

  std::shared_ptr<const Columns> columns_;  // never null
};

}  // namespace korassoc
