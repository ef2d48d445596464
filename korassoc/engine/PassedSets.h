// Itemsets that were not expected to be frequent, and are.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "korassoc/engine/ItemsetEnumerator.h"

namespace korassoc::detail {

// The smallest frequent sets among those that were not expected: all frequent sets that were not expected
// hold one of them. So, what these sets count is found in the transactions that hold one of them.
class PassedSets final : public ItemsetSink {
 public:
  bool take(const std::uint32_t* ranks, std::size_t n, int count) override;
  bool goesOn() override { return true; }

  std::size_t size() const { return size_; }
  // Whether one of them is within the set of these ranks, ascending and without repeats. Cost: a look at each
  // rank and at the sets whose least frequent item it is.
  bool isWithin(std::span<const std::uint32_t> ranks) const;

 private:
  std::vector<std::vector<std::vector<std::uint32_t>>> byLastRank_;  // each set ascending
  std::size_t size_ = 0;
};

}  // namespace korassoc::detail
