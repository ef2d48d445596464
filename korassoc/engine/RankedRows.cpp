#include "korassoc/engine/RankedRows.h"

#include <algorithm>
#include <numeric>

namespace korassoc::detail {

void RankedRows::clear() {
  used_ = std::min<std::size_t>(used_, 1);  // the row end before the first row
  occurrences_.clear();
  starts_.clear();
  rowCount_ = 0;
}

void RankedRows::reserve(std::size_t cells) {
  cells_.resize(std::max(cells + 1, cells_.size()));
  if (used_ == 0) cells_[used_++] = kRowEnd;
}

void RankedRows::listOccurrences(std::size_t rankCount) {
  starts_.assign(rankCount + 1, 0);
  for (const std::uint32_t rank : cells()) {
    if (rank != kRowEnd) ++starts_[rank + 1];
  }
  std::partial_sum(starts_.begin(), starts_.end(), starts_.begin());
  occurrences_.resize(starts_.back());
  std::vector<std::size_t> next(starts_.begin(), starts_.end() - 1);
  for (std::size_t position = 0; position < used_; ++position) {
    const std::uint32_t rank = cells_[position];
    if (rank != kRowEnd) occurrences_[next[rank]++] = static_cast<std::uint32_t>(position);
  }
}

}  // namespace korassoc::detail
