#include "korassoc/engine/PassedFilter.h"

#include <algorithm>

namespace korassoc::detail {

bool PassedFilter::take(const std::uint32_t* ranks, std::size_t n, int count) {
  sorted_.assign(ranks, ranks + n);
  std::sort(sorted_.begin(), sorted_.end());
  return !passed_.isWithin(sorted_) || sink_.take(ranks, n, count);
}

}  // namespace korassoc::detail
