// The engine's view of baskets.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "korassoc/engine/MultiPassTransIter.h"
#include "korassoc/engine/Transaction.h"
#include "korassoc/mining/Baskets.h"
#include "korassoc/mining/Item.h"

namespace korassoc::detail {

// Hands the baskets to the engine in their order, as often as it asks, each as often as it weighs. One
// transaction serves all: it shows the basket that Next() reached last.
class BasketSource final : public MultiPassTransIter {
 public:
  explicit BasketSource(const Baskets& baskets) : baskets_(baskets) { settle(); }

  bool HasNext() override { return next_ < baskets_.size(); }
  Transaction* Next() override {
    if (next_ == baskets_.size()) return nullptr;
    basket_.items = baskets_[next_];
    if (++shown_ == baskets_.weight(next_)) {
      ++next_;
      settle();
    }
    return &basket_;
  }
  int Rewind() override { return Restart(); }
  int Restart() override {
    next_ = 0;
    settle();
    return 0;
  }

 private:
  class Basket final : public Transaction {
   public:
    virtual ~Basket() = default;
    int GetItem(int position) const override { return items[static_cast<std::size_t>(position)]; }
    int GetTransactionID() const override { return 0; }  // the engine does not ask
    int GetLength() const override { return static_cast<int>(items.size()); }
    std::span<const Item> items;
  };

  // Goes on to a basket that stands for a transaction.
  void settle() {
    shown_ = 0;
    while (next_ < baskets_.size() && baskets_.weight(next_) == 0) ++next_;
  }

  const Baskets baskets_;
  std::size_t next_ = 0;
  std::int64_t shown_ = 0;  // how often the next one was shown already
  Basket basket_;
};

}  // namespace korassoc::detail
