// Finds the itemsets that can be split into the rules of a query.

#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "korassoc/mining/FlatLattice.h"
#include "korassoc/mining/RuleQuery.h"
#include "korassoc/mining/SideRoles.h"

namespace korassoc::detail {

// The itemsets within the bounds of a query that hold what it requires, by node. With required items only the
// sets above these are looked at.
//
// In a lattice that is not regular, a set is found along a chain of its subsets that reach the support, from
// the required items up, as the engine does it. Where such a chain is broken, so is the way to the sets
// above.
class WholeItemsets {
 public:
  using Node = FlatLattice::Node;

  // minCount, maxCount: transactions. All is lent.
  WholeItemsets(const FlatLattice& lattice, const RuleQuery& query, const SideRoles& roles,
                std::int64_t minCount, std::int64_t maxCount);

  // Ascending.
  std::vector<Node> find() const;

  // The most items of such an itemset.
  static std::size_t longestOf(const RuleQuery& query, const FlatLattice& lattice);

 private:
  std::vector<Node> findAll() const;
  std::vector<Node> findAboveRequired() const;
  std::vector<Node> findAlongChains() const;
  std::vector<bool> starts() const;
  bool isWithin(Node node, std::size_t length) const;

  const FlatLattice& lattice_;
  const RuleQuery& query_;
  const SideRoles& roles_;
  std::int64_t minCount_, maxCount_;
  std::size_t shortest_, longest_;  // items of an itemset
};

}  // namespace korassoc::detail
