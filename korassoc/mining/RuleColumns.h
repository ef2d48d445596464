// What a RuleTable is made of.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "korassoc/mining/FlatLattice.h"
#include "korassoc/mining/ItemsetTable.h"
#include "korassoc/mining/Labels.h"
#include "korassoc/mining/RuleTable.h"

namespace korassoc::detail {

// Sides are nodes of a FlatLattice: 0 for the empty set, else 1 and the row of the itemset. A consequent that
// is no itemset of the table has the number of one of others, counted on from the last node.
struct RuleColumns {
  using Node = FlatLattice::Node;

  ItemsetTable itemsets;
  std::vector<std::vector<Item>> others;
  Labels labels;
  std::int64_t transactions = 0;

  std::vector<Node> whole, antecedent, consequent;
  std::vector<std::int64_t> wholeCounts, antecedentCounts, consequentCounts;

  std::size_t size() const { return whole.size(); }
  std::span<const Item> items(Node node) const {
    if (node == 0) return {};
    const std::size_t row = node - std::size_t{1};
    return row < itemsets.size() ? itemsets.itemsOf(row) : others[row - itemsets.size()];
  }

  static RuleTable table(RuleColumns columns) {
    return RuleTable(std::make_shared<const RuleColumns>(std::move(columns)));
  }
};

}  // namespace korassoc::detail
