// Numbers the items of a source and counts in how many transactions each occurs.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

#include "korassoc/engine/Transaction.h"

namespace korassoc::detail {

// Gives every item a code: 0, 1, 2, ... in order of arrival.
// Cost: O(1); small non-negative items through an array, the others through a hash map.
class ItemCodes {
 public:
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  std::uint32_t codeOf(int item) {
    const auto index = static_cast<std::size_t>(static_cast<unsigned int>(item));
    if (index < direct_.size() && direct_[index] != kNone) return direct_[index];
    return newCodeOf(item);
  }
  // kNone for an item that was never met.
  std::uint32_t find(int item) const;
  std::size_t size() const { return items_.size(); }
  int itemOf(std::size_t code) const { return items_[code]; }

 private:
  static constexpr int kDirectItems = 1 << 20;

  std::uint32_t newCodeOf(int item);  // or that of an item that is not direct

  std::vector<std::uint32_t> direct_;  // by item, kNone where there is none
  std::unordered_map<int, std::uint32_t> others_;
  std::vector<int> items_;  // by code
};

// The frequent items of a source, by falling count, equal counts by item.
struct RankedItems {
  std::vector<int> items;             // by rank
  std::vector<int> counts;            // by rank: transactions
  std::vector<std::uint32_t> rankOf;  // by code; ItemCodes::kNone for infrequent items

  // The rank of any code, also of one that came later.
  std::uint32_t rankOfCode(std::uint32_t code) const {
    return code < rankOf.size() ? rankOf[code] : ItemCodes::kNone;
  }
  // Puts the ranks of those of the codes that have one into row, ascending.
  void rankRow(std::span<const std::uint32_t> codes, std::vector<std::uint32_t>& row) const;
};

// Counts each item of the transactions of a pass. Repeats of an item within a transaction count once.
class ItemCounter {
 public:
  // Counts a transaction and appends the codes of its items, each once, to codes.
  void add(const Transaction& transaction, std::vector<std::uint32_t>& codes);

  // Transactions counted.
  int transactionCount() const { return transactionCount_; }
  const ItemCodes& codes() const { return codes_; }
  // The items of at least minCount transactions.
  RankedItems rank(int minCount) const;

 private:
  int transactionCount_ = 0;
  ItemCodes codes_;
  struct Seen {
    int count = 0;
    int last = 0;  // transaction with the item
  };
  std::vector<Seen> seen_;  // by code
};

}  // namespace korassoc::detail
