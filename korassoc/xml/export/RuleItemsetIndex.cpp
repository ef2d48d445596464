#include "korassoc/xml/export/RuleItemsetIndex.h"

#include <algorithm>
#include <cstdint>

namespace korassoc::detail {
namespace {

ItemIndex itemsOf(const std::vector<const ItemSet*>& itemsets) {
  // Singletons first and each item once: most of the sets add nothing, so the list is kept short as it grows.
  std::vector<int> items;
  std::size_t distinct = 0;
  for (const ItemSet* set : itemsets) {
    items.insert(items.end(), set->getTheArray(), set->getTheArray() + set->length());
    if (items.size() < 2 * distinct + 1024) continue;
    std::sort(items.begin(), items.end());
    items.erase(std::unique(items.begin(), items.end()), items.end());
    distinct = items.size();
  }
  return ItemIndex(std::move(items));
}

}  // namespace

// Not the sets' own hash code: it spreads the sets over the tables of the dictionary as they have always been
// spread, and meets itself too often among many short sets.
std::size_t RuleItemsetIndex::Hash::operator()(const ItemSet* set) const {
  std::uint64_t hash = 0;
  for (int i = 0; i < set->length(); ++i) {
    hash = (hash ^ static_cast<std::uint32_t>(set->getItemAt(i))) * 0x9E3779B97F4A7C15U;
    hash ^= hash >> 32;
  }
  return static_cast<std::size_t>(hash);
}

bool RuleItemsetIndex::Equal::operator()(const ItemSet* a, const ItemSet* b) const {
  return std::equal(a->getTheArray(), a->getTheArray() + a->length(), b->getTheArray(),
                    b->getTheArray() + b->length());
}

RuleItemsetIndex::RuleItemsetIndex(const std::vector<AssociationRule>& rules)
    : itemsets_([&] {
        std::vector<const ItemSet*> sets;
        for (const AssociationRule& rule : rules) {
          for (const ItemSet* set : {&rule.getAntecedent(), &rule.getConsequent()}) {
            if (ids_.emplace(set, 0).second) sets.push_back(set);
          }
        }
        std::sort(sets.begin(), sets.end(), [](const ItemSet* a, const ItemSet* b) { return *a < *b; });
        return sets;
      }()),
      items_(itemsOf(itemsets_)) {
  int id = 0;
  for (const ItemSet* set : itemsets_) ids_[set] = ++id;
}

int RuleItemsetIndex::idOf(const ItemSet& set) const {
  const auto found = ids_.find(&set);
  return found != ids_.end() ? found->second : -1;
}

}  // namespace korassoc::detail
