#include "korassoc/rules/BestConsequents.h"

#include <algorithm>
#include <cmath>

namespace korassoc::detail {

void BestConsequents::merge() {
  merged_.clear();
  auto known = best_.begin();
  for (const ItemFigures& offer : offers_) {
    while (known != best_.end() && known->item < offer.item) merged_.push_back(*known++);
    if (known == best_.end() || known->item != offer.item) {
      merged_.push_back(offer);
    } else {
      merged_.push_back(offer.confidence > known->confidence ? offer : *known);
      ++known;
    }
  }
  merged_.insert(merged_.end(), known, best_.end());
  best_.swap(merged_);
  offers_.clear();
  if (best_.size() > wanted_) cut();
}

void BestConsequents::cut() {
  const auto before = [](const ItemFigures& a, const ItemFigures& b) {
    return a.confidence != b.confidence ? a.confidence > b.confidence : a.item < b.item;
  };
  if (wanted_ > 0) {
    const auto last = best_.begin() + static_cast<std::ptrdiff_t>(wanted_ - 1);
    std::nth_element(best_.begin(), last, best_.end(), before);
    threshold_ = last->confidence;
    setLeastCount();
  }
  best_.resize(wanted_);
  std::sort(best_.begin(), best_.end(),
            [](const ItemFigures& a, const ItemFigures& b) { return a.item < b.item; });
}

// One less than the exact figure, so that rounding lets nothing be lost; most offers need no division then.
void BestConsequents::setLeastCount() {
  constexpr double kLowest = std::numeric_limits<int>::min();
  constexpr double kHighest = std::numeric_limits<int>::max();
  if (wanted_ == kAll) return;
  leastCount_ = static_cast<int>(std::clamp(std::floor(threshold_ * subsetCount_ - 1.0), kLowest, kHighest));
}

}  // namespace korassoc::detail
