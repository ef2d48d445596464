// On which side of a rule an item may stand.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "korassoc/mining/ItemRanks.h"
#include "korassoc/mining/RuleQuery.h"

namespace korassoc::detail {

// What the filters of both sides come to for each item. An item that is required on one side may not stand on
// the other.
class SideRoles {
 public:
  enum Role : std::uint8_t {
    kNowhere = 0,
    kAntecedent = 1,  // it may stand there
    kConsequent = 2,
    kEither = 3
  };

  // For the filters of a query. Knows the items of ranks, which is lent.
  SideRoles(const ItemRanks& ranks, const RuleQuery& query);

  // Whether all items may stand on both sides, and none is required.
  bool areFree() const { return free_; }
  // Ascending, without repeats, both sides together.
  const std::vector<Item>& required() const { return required_; }
  Role of(Item item) const { return free_ ? kEither : roles_[ranks_.rankOf(item)]; }
  // Whether the items of an itemset can be on the two sides: all that are required are there, and each has a
  // side.
  bool fit(std::span<const Item> items) const;
  // Whether that holds for an antecedent and the rest of an itemset that fits.
  bool fit(std::span<const Item> antecedent, std::span<const Item> items) const;

 private:
  const ItemRanks& ranks_;
  bool free_;
  bool holdsAllowed_;  // an itemset must hold an item of the antecedent's list
  std::vector<Item> required_;
  std::vector<Role> roles_;           // by rank
  std::vector<std::uint8_t> listed_;  // by rank: in the antecedent's list
};

}  // namespace korassoc::detail
