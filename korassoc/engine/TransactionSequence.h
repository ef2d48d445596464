// Tells one sequence of transactions from another.

#pragma once

#include <cstdint>
#include <vector>

#include "korassoc/itemsets/ItemCode.h"

namespace korassoc::detail {

// Sums up a sequence of transactions in 128 bits. Two that differ in a transaction, or in the order of the
// transactions, compare equal once in 2^64 times; the order of items within a transaction makes no
// difference.
// Cost: a few instructions for an item.
class TransactionSequence {
 public:
  void add(const std::vector<int>& items) {
    code_ = mixedBits(code_ + setCode(items.data(), static_cast<int>(items.size())));
    ++length_;
  }

  bool operator==(const TransactionSequence&) const = default;

 private:
  std::uint64_t code_ = 0;
  std::uint64_t length_ = 0;
};

}  // namespace korassoc::detail
