#include "korassoc/engine/BlockCounter.h"

#include <algorithm>
#include <cmath>

#include "korassoc/itemsets/CountBound.h"

namespace korassoc::detail {

namespace {

// The count in the sample from which a set is expected to reach the support. A set of just that support has
// a count there of k = n * s with the deviation sqrt(k * (1 - s)); four of these below k it falls once in
// thirty thousand times, when the sample was drawn at random.
int expectedCountBound(int transactions, double minSupport) {
  constexpr double kDeviations = 4;
  const double n = std::max(transactions, 1);
  const double k = std::min(static_cast<double>(completeCountBound(n, minSupport)), n);
  return std::max(static_cast<int>(k - kDeviations * std::sqrt(k * (1 - k / n))), 1);
}

// Puts other ranks in the place of those of the sample.
class Reranked final : public ItemsetSink {
 public:
  Reranked(const RankedItems& from, const RankedItems& to, ItemsetSink& sink) : sink_(sink) {
    rankOf_.resize(from.items.size(), ItemCodes::kNone);
    for (std::uint32_t code = 0; code < from.rankOf.size(); ++code) {
      if (from.rankOf[code] != ItemCodes::kNone) rankOf_[from.rankOf[code]] = to.rankOfCode(code);
    }
  }

  bool take(const std::uint32_t* ranks, std::size_t n, int count) override {
    set_.clear();
    for (std::size_t i = 0; i < n; ++i) set_.push_back(rankOf_[ranks[i]]);
    return sink_.take(set_.data(), n, count);
  }
  bool goesOn() override { return sink_.goesOn(); }

 private:
  ItemsetSink& sink_;
  std::vector<std::uint32_t> rankOf_;  // by rank in the sample
  std::vector<std::uint32_t> set_;
};

}  // namespace

BlockCounter::BlockCounter(const Limits& limits, const CandidateTree::Cancelled& cancelled)
    : limits_(limits), tree_(limits.maxLength, limits.treeBytes, cancelled) {}

bool BlockCounter::start(const TransactionIndex& sample, const ItemCounter& items, double minSupport) {
  const int minCount = expectedCountBound(items.transactionCount(), minSupport);
  expected_ = items.rank(minCount);
  if (tree_.leastBytes(expected_.items.size()) > limits_.treeBytes) return false;
  RankedRows rows;
  sample.toRows(expected_, rows);
  return tree_.grow(rows, expected_.items.size(), minCount);
}

void BlockCounter::add(std::span<const std::uint32_t> codes) {
  expected_.rankRow(codes, row_);
  if (row_.size() >= 2) block_.addRow(row_);
  ++blockTransactions_;
  if (blockTransactions_ >= limits_.blockTransactions ||
      TransactionIndex::bytesFor(block_.cells().size(), 0) >= limits_.blockBytes)
    countBlock();
}

void BlockCounter::countBlock() {
  if (!cancelled_) {
    block_.listOccurrences(expected_.items.size());
    cancelled_ = !tree_.count(block_);
  }
  block_.clear();
  blockTransactions_ = 0;
}

bool BlockCounter::finish() {
  if (blockTransactions_ > 0) countBlock();
  return !cancelled_;
}

bool BlockCounter::handOn(const RankedItems& ranked, int minCount, ItemsetSink& sink) const {
  Reranked reranked(expected_, ranked, sink);
  return tree_.handOn(minCount, reranked);
}

PassedSets BlockCounter::passedSets(const RankedItems& ranked, int minCount) const {
  PassedSets passed;
  for (std::uint32_t code = 0; code < ranked.rankOf.size(); ++code) {
    const std::uint32_t rank = ranked.rankOf[code];
    if (rank != ItemCodes::kNone && expected_.rankOfCode(code) == ItemCodes::kNone)
      passed.take(&rank, 1, ranked.counts[rank]);
  }
  Reranked reranked(expected_, ranked, passed);
  tree_.handOnBorder(minCount, reranked);
  return passed;
}

}  // namespace korassoc::detail
