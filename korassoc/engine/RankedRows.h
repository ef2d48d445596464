// Transactions as rows of item ranks, the form in which itemsets are counted.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korassoc::detail {

// The transactions as rows of item ranks, rank 0 being the most frequent item. Infrequent items are left out,
// and so are rows of fewer than two items: they add nothing to what is counted here.
//
//   cells   # | 0 3 7 | # | 1 3 | # | 0 1 7 | #       # is kRowEnd; ranks ascend within a row
//
// With the rows go the occurrences: for each rank, the cells that hold it. A cell is enough to find the part
// of its row with the more frequent items: it reaches back to the row end before it.
class RankedRows {
 public:
  static constexpr std::uint32_t kRowEnd = 0xFFFFFFFF;

  void clear();
  // Makes room for so many cells, row ends included.
  void reserve(std::size_t cells);
  // Appends a row of at least two ascending ranks.
  void addRow(std::span<const std::uint32_t> ranks) {
    if (cells_.size() - used_ <= ranks.size()) reserve(std::max(used_ + ranks.size() + 2, 2 * used_));
    std::uint32_t* to = cells_.data() + used_;
    for (const std::uint32_t rank : ranks) *to++ = rank;  // too few for a call to copy them
    *to = kRowEnd;
    used_ += ranks.size() + 1;
    ++rowCount_;
  }
  // Lists the occurrences of the ranks 0 to rankCount - 1. To be called once, after the last row.
  void listOccurrences(std::size_t rankCount);

  // The ranks before the given cell in its row are *(cell - 1), *(cell - 2), ... up to kRowEnd.
  const std::uint32_t* cell(std::uint32_t position) const { return cells_.data() + position; }
  // Without rows, no cells.
  std::span<const std::uint32_t> cells() const { return {cells_.data(), used_}; }
  std::size_t rowCount() const { return rowCount_; }
  // The positions of the cells that hold the rank, ascending.
  std::span<const std::uint32_t> occurrences(std::size_t rank) const {
    return {occurrences_.data() + starts_[rank], occurrences_.data() + starts_[rank + 1]};
  }

 private:
  std::vector<std::uint32_t> cells_;
  std::size_t used_ = 0;  // cells
  std::vector<std::uint32_t> occurrences_;
  std::vector<std::size_t> starts_;
  std::size_t rowCount_ = 0;
};

}  // namespace korassoc::detail
