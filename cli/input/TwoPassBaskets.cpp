#include "cli/input/TwoPassBaskets.h"

#include <algorithm>

namespace korassoc::cli {

void TwoPassBaskets::shorten(std::size_t longest, int leastCount, std::size_t sample) {
  longest_ = longest;
  leastCount_ = leastCount;
  counts_.clear();
  for (std::size_t i = 0; i < std::min(sample, baskets_.size()); ++i) {
    for (const int item : baskets_[i]) ++counts_[item];
  }
}

bool TwoPassBaskets::HasNext() {
  if (!firstPass_) return whole_.HasNext();
  if (listener_) listener_(static_cast<int>(next_ + 1));
  return next_ < baskets_.size();
}

Transaction* TwoPassBaskets::Next() {
  if (!firstPass_) return whole_.Next();
  if (next_ >= baskets_.size()) return nullptr;
  const auto countOf = [this](int item) {
    const auto found = counts_.find(item);
    return found == counts_.end() ? 0 : found->second;
  };
  std::vector<int>& items = shortened_.items;
  items.clear();
  for (const int item : baskets_[next_]) {
    if (leastCount_ == 0 || countOf(item) >= leastCount_) items.push_back(item);
  }
  if (items.size() > longest_) {
    std::sort(items.begin(), items.end(), [&](int a, int b) {
      const int countA = countOf(a);
      const int countB = countOf(b);
      return countA != countB ? countA > countB : a < b;
    });
    items.resize(longest_);
    std::sort(items.begin(), items.end());
  }
  shortened_.id = static_cast<int>(++next_);
  return &shortened_;
}

int TwoPassBaskets::Restart() {
  firstPass_ = false;
  return whole_.Restart();
}

}  // namespace korassoc::cli
