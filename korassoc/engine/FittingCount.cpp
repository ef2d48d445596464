#include "korassoc/engine/FittingCount.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "korassoc/itemsets/CountBound.h"

namespace korassoc::detail {

namespace {

constexpr int kPlaces = 1 << 16;
// Work for each itemset that may pass, after which half as many may, and how often that is done.
constexpr std::int64_t kPatience = 4;
constexpr int kHalvings = 6;
constexpr int kFew = 100;  // itemsets, below which the work does not matter

}  // namespace

FittingCount::FittingCount(int firstCount, int largestCount, std::size_t maxLength, int maxSets,
                           std::function<bool()> mayGoOn)
    : firstCount_(firstCount),
      largestCount_(largestCount),
      width_(std::max(largestCount - firstCount, 0) / kPlaces + 1),
      told_(static_cast<std::size_t>(std::max(largestCount - firstCount, 0) / width_) + 1),
      mayPass_(maxSets),
      patience_(kPatience * std::max(maxSets, kFew)),
      patienceLeft_(patience_),
      mayGoOn_(std::move(mayGoOn)),
      enumerator_(firstCount, maxLength, *this) {}

// Beyond the last place, a count that no itemset has.
int FittingCount::leastCount() const {
  const std::int64_t least = firstCount_ + static_cast<std::int64_t>(lowest_) * width_;
  return static_cast<int>(std::min<std::int64_t>(least, std::numeric_limits<int>::max()));
}

void FittingCount::add(int count) {
  if (count < leastCount()) return;
  ++told_[static_cast<std::size_t>((count - firstCount_) / width_)];
  ++sets_;
  if (--patienceLeft_ < 0) {
    patienceLeft_ = patience_;
    mayPass_ /= 2;
    if (++halvings_ > kHalvings) lowest_ = told_.size();
  }
  if (sets_ <= mayPass_) return;
  while (sets_ > mayPass_ && lowest_ < told_.size()) sets_ -= told_[lowest_++];
  enumerator_.raiseMinCount(leastCount());
}

bool FittingCount::take(const std::uint32_t* /*ranks*/, std::size_t /*n*/, int count) {
  add(count);
  return leastCount() <= largestCount_;  // else nothing is left to look for
}

}  // namespace korassoc::detail
