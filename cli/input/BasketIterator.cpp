#include "cli/input/BasketIterator.h"

namespace korassoc::cli {

Transaction* BasketIterator::Next() {
  if (!HasNext()) return nullptr;
  const std::span<const int> items = baskets_[next_];
  basket_.show(items, static_cast<int>(++next_));
  return &basket_;
}

int BasketIterator::Restart() {
  next_ = 0;
  return 0;
}

}  // namespace korassoc::cli
