#include "korassoc/mining/SideRoles.h"

#include <algorithm>

namespace korassoc::detail {
namespace {

bool isFree(const SideFilter& side) {
  return side.required.empty() && !side.allowed && side.excluded.empty();
}

}  // namespace

SideRoles::SideRoles(const ItemRanks& ranks, const RuleQuery& query)
    : ranks_(ranks), free_(isFree(query.antecedent) && isFree(query.consequent)), holdsAllowed_(false) {
  if (free_) return;
  const SideFilter& antecedent = query.antecedent;
  const SideFilter& consequent = query.consequent;
  std::vector<unsigned> roles(ranks.size(), kNowhere);
  const auto forEach = [&ranks, &roles](const std::vector<Item>& items, auto&& change) {
    for (const Item item : items) {
      const std::uint32_t rank = ranks.rankOf(item);
      if (rank != ItemRanks::kNone) change(roles[rank]);
    }
  };
  const auto allow = [&](const SideFilter& side, unsigned role) {
    const auto add = [role](unsigned& of) { of |= role; };
    if (side.allowed) {
      forEach(*side.allowed, add);
    } else {
      std::for_each(roles.begin(), roles.end(), add);
    }
    forEach(side.required, add);
    forEach(side.excluded, [role](unsigned& of) { of &= ~role; });
  };
  allow(antecedent, kAntecedent);
  allow(consequent, kConsequent);
  forEach(antecedent.required, [](unsigned& of) { of &= kAntecedent; });
  forEach(consequent.required, [](unsigned& of) { of &= kConsequent; });
  for (const unsigned role : roles) roles_.push_back(static_cast<Role>(role));

  required_ = antecedent.required;
  required_.insert(required_.end(), consequent.required.begin(), consequent.required.end());
  std::sort(required_.begin(), required_.end());
  required_.erase(std::unique(required_.begin(), required_.end()), required_.end());

  holdsAllowed_ = query.selection != RuleSelection::kNonRedundant && required_.empty() &&
                  antecedent.allowed && !consequent.allowed;
  if (!holdsAllowed_) return;
  listed_.resize(ranks.size(), 0);
  for (const Item item : *antecedent.allowed) {
    const std::uint32_t rank = ranks.rankOf(item);
    if (rank != ItemRanks::kNone) listed_[rank] = 1;
  }
}

bool SideRoles::fit(std::span<const Item> items) const {
  if (free_) return true;
  if (!std::includes(items.begin(), items.end(), required_.begin(), required_.end())) return false;
  bool holdsAllowed = !holdsAllowed_;
  for (const Item item : items) {
    const std::uint32_t rank = ranks_.rankOf(item);
    if (roles_[rank] == kNowhere) return false;
    holdsAllowed = holdsAllowed || listed_[rank] != 0;
  }
  return holdsAllowed;
}

bool SideRoles::fit(std::span<const Item> antecedent, std::span<const Item> items) const {
  if (free_) return true;
  auto next = antecedent.begin();
  for (const Item item : items) {
    const bool inAntecedent = next != antecedent.end() && *next == item;
    if (inAntecedent) ++next;
    if ((of(item) & (inAntecedent ? kAntecedent : kConsequent)) == 0) return false;
  }
  return true;
}

}  // namespace korassoc::detail
