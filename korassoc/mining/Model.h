// What mining has found: the itemsets of some transactions, ready to be asked.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "korassoc/base/Export.h"
#include "korassoc/mining/Item.h"
#include "korassoc/mining/ItemsetTable.h"
#include "korassoc/mining/Labels.h"
#include "korassoc/mining/RuleQuery.h"
#include "korassoc/mining/RuleTable.h"
#include "korassoc/mining/Support.h"

namespace korassoc {

// What the itemsets of a model are to the transactions.
enum class Guarantee {
  kExact,        // all that reach the support, with their counts
  kExactCounts,  // each reaches the support and has its count, but some may be missing
  kBounds        // some may be missing, and each count lies between the two that the table holds
};

// A Model is a value that never changes and is cheap to copy. Its itemsets are in the order of
// compareItemsets(): fewer items first, then item by item, the same whatever the way in which they were
// found.
//
// The first question for rules links the itemsets, once for all copies. Threads: any number may ask at the
// same time.
class KORASSOC_EXPORT Model {
 public:
  // Itemsets with their counts, wherever they were found.
  struct Parts {
    ItemsetTable itemsets;          // in any order, each once; the empty set is none of them
    std::int64_t transactions = 0;  // as many as there may be
    Support minSupport;             // that the itemsets reach
    Labels labels = Labels();
    Guarantee guarantee = Guarantee::kExact;
    std::size_t longestItemset = 0;  // items beyond which itemsets were not looked for; 0: all were
  };

  // Of no transactions.
  Model();
  // Throws Error (kInput) when a set stands in the table twice, has a count above the number of transactions
  // or below the support, or an item without a label; Error (kLimit) for more than 2^32 - 3 itemsets. Cost:
  // linear; itemsets that are in order already are not copied.
  //
  // A subset of a set in the table should be in it, too, as all that reach a support always are. Where one is
  // missing, it is no antecedent, and as a consequent it has no count.
  static Model fromItemsets(Parts parts);

  std::int64_t transactions() const;
  // The support as it was asked for, and what count it comes to.
  Support minSupport() const;
  std::int64_t minCount() const;
  Guarantee guarantee() const;
  std::size_t longestItemset() const;
  const Labels& labels() const;
  const ItemsetTable& itemsets() const;

  // The count of an itemset (items in any order, without repeats), if the model has it; the empty set is in
  // all transactions.
  std::optional<std::int64_t> countOf(std::span<const Item> items) const;

  // The rules that the query asks for. Throws Error: kInput for a query that cannot be meant
  // (checkRuleQuery()) or that asks for rarer rules than the model has itemsets for; kCancelled. Cost:
  // O(itemsets) and what the rules take: some 100 ns each, most of it for sorting. With required items, only
  // the itemsets that hold them are looked at.
  RuleTable rules(const RuleQuery& query = RuleQuery()) const;

 private:
  struct State;
  explicit Model(std::shared_ptr<const State> state) : state_(std::move(state)) {}

  std::shared_ptr<const State> state_;  // never null
};

}  // namespace korassoc
