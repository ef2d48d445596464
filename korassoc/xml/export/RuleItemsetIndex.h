// The items and itemsets that a list of rules is made of, numbered for a document.

#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/xml/export/ItemIndex.h"

namespace korassoc::detail {

// Every distinct antecedent and consequent has an id: its position from 1 in the order of itemsets (fewer
// items first, then item by item), wherever in the list it appears first.
//
// Ownership: refers to the sets within the rules, which must outlive the index unchanged.
// Memory: for the distinct itemsets alone. Cost: building is O(r + d log d) for r rules with d itemsets,
//   idOf() O(items of the set).
class RuleItemsetIndex {
 public:
  explicit RuleItemsetIndex(const std::vector<AssociationRule>& rules);

  const ItemIndex& items() const { return items_; }
  // The itemset with the id i stands at position i - 1.
  const std::vector<const ItemSet*>& itemsets() const { return itemsets_; }
  int numberOfItemsets() const { return static_cast<int>(itemsets_.size()); }
  // The id of an itemset, -1 when no rule has it on either side.
  int idOf(const ItemSet& set) const;

 private:
  struct Hash {
    std::size_t operator()(const ItemSet* set) const;
  };
  struct Equal {
    bool operator()(const ItemSet* a, const ItemSet* b) const;
  };

  std::unordered_map<const ItemSet*, int, Hash, Equal> ids_;
  std::vector<const ItemSet*> itemsets_;  // the keys of ids_, in order
  ItemIndex items_;
};

}  // namespace korassoc::detail
