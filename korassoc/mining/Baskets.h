// What is mined: baskets of items, in columns.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/mining/Item.h"
#include "korassoc/mining/Labels.h"

namespace korassoc {

// Baskets keeps all items in one column and where each basket begins in another, as an Arrow list column
// does:
//
//   items     [ 3 7 9 | 1 7 | 2 ]
//   offsets   [ 0       3     5   6 ]     basket i is items[offsets[i] .. offsets[i + 1])
//   weights   [ 1       4     1 ]         optional: basket i stands for so many equal transactions
//
// A basket is a set: an item that it repeats counts once, and the order of its items does not matter.
// Ascending items without repeats are the fastest to mine. An empty basket is a transaction too: supports are
// shares of all of them.
//
// Baskets is a value that is cheap to copy: copies share the columns, which never change.
// Threads: any number of readers.
class KORASSOC_EXPORT Baskets {
 public:
  // The columns, as vectors.
  struct Columns {
    std::vector<std::int64_t> offsets = {0};  // one more than there are baskets
    std::vector<Item> items;
    std::vector<std::int64_t> weights;  // none: each basket is one transaction
  };

  // No baskets.
  Baskets() = default;
  // Copies the items of each basket.
  static Baskets fromLists(const std::vector<std::vector<Item>>& baskets, Labels labels = Labels());
  // Takes the columns over.
  static Baskets fromColumns(Columns columns, Labels labels = Labels());
  // Looks on at columns that lie elsewhere, without a copy of them. They stay as they are for as long as
  // owner is held, which this and all its copies do; a null owner is the caller's promise that they outlive
  // all of these. The first offset need not be 0, nor the last one the end of the items.
  static Baskets borrow(std::span<const std::int64_t> offsets, std::span<const Item> items,
                        std::shared_ptr<const void> owner, Labels labels = Labels(),
                        std::span<const std::int64_t> weights = {});
  static Baskets borrow(std::span<const std::int32_t> offsets, std::span<const Item> items,
                        std::shared_ptr<const void> owner, Labels labels = Labels(),
                        std::span<const std::int64_t> weights = {});
  // All of these throw Error (kInput) for columns that do not fit together: no offset at all, offsets that
  // fall or leave the items, items that the labels do not have, weights below 0 or not one for each basket.
  // Cost: a look at each offset and weight, and at each item where items have labels.

  // Baskets, whatever their weights.
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  // The items of one, as they were given. Requires basket < size().
  std::span<const Item> operator[](std::size_t basket) const {
    const std::size_t begin = offset(basket);
    return {items_ + begin, offset(basket + 1) - begin};
  }
  // For how many transactions a basket stands.
  std::int64_t weight(std::size_t basket) const { return weights_.empty() ? 1 : weights_[basket]; }
  bool hasWeights() const { return !weights_.empty(); }

  // The sum of the weights: size() where there are none.
  std::int64_t transactions() const { return transactions_; }
  // Items of all baskets together, repeats included, whatever the weights.
  std::size_t occurrences() const { return size_ == 0 ? 0 : offset(size_) - offset(0); }

  const Labels& labels() const { return labels_; }

 private:
  template <typename Offset>
  static Baskets make(std::span<const Offset> offsets, std::span<const Item> items, Labels labels,
                      std::span<const std::int64_t> weights, std::shared_ptr<const void> owner);
  std::size_t offset(std::size_t basket) const {
    return static_cast<std::size_t>(wide_ != nullptr ? wide_[basket] : narrow_[basket]);
  }

  std::shared_ptr<const void> owner_;     // of what the pointers point to
  const std::int64_t* wide_ = nullptr;    // the offsets are these
  const std::int32_t* narrow_ = nullptr;  // or these
  const Item* items_ = nullptr;
  std::span<const std::int64_t> weights_;
  std::size_t size_ = 0;
  std::int64_t transactions_ = 0;
  Labels labels_;
};

}  // namespace korassoc
