// Counts itemsets over any number of transactions in the memory of a few.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "korassoc/engine/CandidateTree.h"
#include "korassoc/engine/ItemCounter.h"
#include "korassoc/engine/PassedSets.h"
#include "korassoc/engine/TransactionIndex.h"

namespace korassoc::detail {

// The transactions beyond a sample come in blocks: as soon as a block is full, what is expected to be
// frequent is counted in it, and its transactions are forgotten. What is expected, is what is frequent in the
// sample with a support somewhat lower than the one asked for.
//
//   transactions   | sample             | block  | block  | block  | bl
//                    the tree is grown    and counted in each, the last one short
//
// Time per transaction and memory do not depend on the number of transactions, and a block is small enough to
// stay near the processor while it is counted. The sample cannot vouch for the rest, though: see
// passedSets().
class BlockCounter {
 public:
  struct Limits {
    int blockTransactions;     // with which a block is full,
    std::uint64_t blockBytes;  // or with this
    std::uint64_t treeBytes;   // what the expected sets may take
    std::size_t maxLength;     // most items of a set
  };
  // cancelled is lent.
  BlockCounter(const Limits& limits, const CandidateTree::Cancelled& cancelled);

  // Takes the kept transactions as the sample, with their items as counted so far. False when there are too
  // many sets to expect, or it was cancelled.
  bool start(const TransactionIndex& sample, const ItemCounter& items, double minSupport);
  // Adds a further transaction, its items without repeats.
  void add(std::span<const std::uint32_t> codes);
  // Counts what has come since the last full block. False when this or an earlier block was cancelled.
  bool finish();

  // Hands on the expected sets of two and more items of at least minCount transactions, in the order of
  // CandidateTree::handOn(). Their ranks are made to those of ranked: the items of at least minCount
  // transactions.
  bool handOn(const RankedItems& ranked, int minCount, ItemsetSink& sink) const;
  // The sets of at least minCount transactions that were not expected, in the ranks of ranked, such that all
  // others hold one of these. When there are none, handOn() hands on all there are.
  PassedSets passedSets(const RankedItems& ranked, int minCount) const;

 private:
  void countBlock();

  Limits limits_;
  bool cancelled_ = false;
  RankedItems expected_;
  CandidateTree tree_;
  RankedRows block_;
  int blockTransactions_ = 0;
  std::vector<std::uint32_t> row_;
};

}  // namespace korassoc::detail
