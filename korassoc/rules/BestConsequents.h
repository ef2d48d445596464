// Keeps the best of what the subsets of an antecedent say of each item.

#pragma once

#include <cstddef>
#include <limits>
#include <vector>

namespace korassoc::detail {

// What one subset says of an item.
struct ItemFigures {
  int item;
  int count;  // transactions with the subset and the item
  double confidence;
};

// BestConsequents hears the subsets one after the other, each of which names its items in ascending order,
// and keeps for every item the figures of the highest confidence, of equal ones the first. Of all items it
// needs to keep only the best few, by confidence and then by the smaller item: what falls behind them can
// come back only with a higher confidence. So most offers end at one comparison.
class BestConsequents {
 public:
  // Subsets must have counts above 0 when not all items are wanted.
  static constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
  explicit BestConsequents(std::size_t wanted) : wanted_(wanted) {}

  // count: transactions with the subset.
  void beginSubset(int count) {
    subsetCount_ = count;
    setLeastCount();
  }
  // Offers of fewer transactions with the subset and the item need not be made: they change nothing.
  int leastCount() const { return leastCount_; }
  // both: transactions with the subset and the item. Items ascend from one call to the next, up to
  // endSubset().
  void offer(int item, int both) {
    const double confidence = both / subsetCount_;
    if (confidence < threshold_) return;
    offers_.push_back({item, both, confidence});
    if (wanted_ != kAll && offers_.size() > wanted_ + kSlack) merge();
  }
  void endSubset() { merge(); }

  // By item; no more than the wanted ones.
  const std::vector<ItemFigures>& items() const { return best_; }

 private:
  static constexpr std::size_t kSlack = 64;

  void merge();
  void cut();
  void setLeastCount();

  std::size_t wanted_;
  double threshold_ = -std::numeric_limits<double>::infinity();  // no item below it is among the wanted ones
  double subsetCount_ = 0.0;
  int leastCount_ = std::numeric_limits<int>::min();
  std::vector<ItemFigures> best_;    // by item
  std::vector<ItemFigures> offers_;  // by item, not yet in best_
  std::vector<ItemFigures> merged_;
};

}  // namespace korassoc::detail
