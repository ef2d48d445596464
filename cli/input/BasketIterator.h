// The engine's view of baskets in memory.

#pragma once

#include <cstddef>
#include <span>

#include "cli/input/Baskets.h"
#include "korassoc/korassoc.h"

namespace korassoc::cli {

// BasketIterator hands the baskets to the engine in their order, as often as it asks. The baskets must
// outlive it. One transaction object serves all: it shows the basket that Next() reached last.
class BasketIterator : public MultiPassTransIter {
 public:
  explicit BasketIterator(const Baskets& baskets) : baskets_(baskets) {}

  bool HasNext() override { return next_ < baskets_.size(); }
  Transaction* Next() override;
  int Rewind() override { return Restart(); }
  int Restart() override;

 private:
  class Basket final : public Transaction {
   public:
    virtual ~Basket() = default;
    void show(std::span<const int> items, int id) {
      items_ = items;
      id_ = id;
    }
    int GetItem(int position) const override { return items_[static_cast<std::size_t>(position)]; }
    int GetTransactionID() const override { return id_; }
    int GetLength() const override { return static_cast<int>(items_.size()); }

   private:
    std::span<const int> items_;
    int id_ = 0;  // counted from 1
  };

  const Baskets& baskets_;
  std::size_t next_ = 0;
  Basket basket_;
};

}  // namespace korassoc::cli
