#include "korassoc/engine/PassedSets.h"

#include <algorithm>
#include <utility>

namespace korassoc::detail {

bool PassedSets::take(const std::uint32_t* ranks, std::size_t n, int /*count*/) {
  std::vector<std::uint32_t> set(ranks, ranks + n);
  std::sort(set.begin(), set.end());
  if (byLastRank_.size() <= set.back()) byLastRank_.resize(set.back() + std::size_t{1});
  std::vector<std::vector<std::uint32_t>>& sets = byLastRank_[set.back()];
  sets.push_back(std::move(set));
  ++size_;
  return true;
}

bool PassedSets::isWithin(std::span<const std::uint32_t> ranks) const {
  for (const std::uint32_t rank : ranks) {
    if (rank >= byLastRank_.size()) return false;
    for (const std::vector<std::uint32_t>& set : byLastRank_[rank]) {
      if (std::includes(ranks.begin(), ranks.end(), set.begin(), set.end())) return true;
    }
  }
  return false;
}

}  // namespace korassoc::detail
