// Baskets for a run of two passes, the first of which sees less of them.

#pragma once

#include <cstddef>
#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cli/input/BasketIterator.h"

namespace korassoc::cli {

// TwoPassBaskets can show the first pass no more than a few items of each basket, the most frequent ones: a
// basket of n items calls for up to 2^n itemsets, so one long basket could fill any memory. From the first
// Restart() on baskets are shown whole.
class TwoPassBaskets : public MultiPassTransIter {
 public:
  // The baskets must outlive the object.
  explicit TwoPassBaskets(const Baskets& baskets) : baskets_(baskets), whole_(baskets) {}

  // Lets the first pass see at most longest items of a basket from now on, and only such as are in leastCount
  // of the first sample baskets. Counts them the first time.
  void shorten(std::size_t longest, int leastCount, std::size_t sample);
  // Further reduces how many items it sees.
  void shorten(std::size_t longest) { longest_ = longest; }
  std::size_t longestShown() const { return longest_; }

  // Called in the first pass whenever the engine asks whether there is a next basket, with that basket's
  // number, from 1.
  void setListener(std::function<void(int)> listener) { listener_ = std::move(listener); }

  bool HasNext() override;
  Transaction* Next() override;
  int Rewind() override { return Restart(); }
  int Restart() override;

 private:
  class Shortened final : public Transaction {
   public:
    virtual ~Shortened() = default;
    int GetItem(int position) const override { return items[static_cast<std::size_t>(position)]; }
    int GetTransactionID() const override { return id; }
    int GetLength() const override { return static_cast<int>(items.size()); }
    std::vector<int> items;
    int id = 0;
  };

  const Baskets& baskets_;
  BasketIterator whole_;
  bool firstPass_ = true;
  std::size_t longest_ = static_cast<std::size_t>(-1);
  int leastCount_ = 0;
  std::unordered_map<int, int> counts_;  // of the sample's baskets with an item
  std::size_t next_ = 0;                 // in the first pass
  Shortened shortened_;
  std::function<void(int)> listener_;
};

}  // namespace korassoc::cli
