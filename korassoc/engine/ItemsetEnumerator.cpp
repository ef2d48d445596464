#include "korassoc/engine/ItemsetEnumerator.h"

namespace korassoc::detail {

ItemsetEnumerator::ItemsetEnumerator(int minCount, std::size_t maxLength, ItemsetSink& sink)
    : minCount_(minCount), sink_(sink), walk_(*this, maxLength) {}

bool ItemsetEnumerator::enumerate(const RankedRows& rows, std::size_t firstRank, std::size_t endRank) {
  return walk_.walk(rows, firstRank, endRank);
}

int* ItemsetEnumerator::enter(std::size_t depth, std::uint32_t column, std::size_t rows) {
  if (rows < static_cast<std::size_t>(minCount_)) return nullptr;
  if (path_.size() < depth + 2) {
    path_.resize(depth + 2);
    ranks_.resize(depth + 2);
  }
  path_[depth] = rankOf(depth, column);
  ranks_[depth + 1].clear();
  if (counts_.size() < column) counts_.resize(column, 0);
  return counts_.data();
}

std::uint32_t ItemsetEnumerator::nextKept(std::size_t depth, std::uint32_t from, std::uint32_t end) {
  for (std::uint32_t column = from; column < end; ++column) {
    const int count = counts_[column];
    counts_[column] = 0;
    if (count < minCount_ || stopped_) continue;
    path_[depth + 1] = rankOf(depth, column);
    ranks_[depth + 1].push_back(path_[depth + 1]);
    stopped_ = !sink_.take(path_.data(), depth + 2, count);
    return column;
  }
  return end;
}

bool ItemsetEnumerator::goesOn() {
  if (!sink_.goesOn()) stopped_ = true;
  return !stopped_;
}

}  // namespace korassoc::detail
