#include "korassoc/dictionary/SubsetIndex.h"

#include <algorithm>
#include <bit>

#include "korassoc/itemsets/ItemCode.h"

namespace korassoc::detail {

namespace {

bool equalsWithout(const ItemSet& subset, const ItemSet& set, int omitted) {
  const int* const items = set.getTheArray();
  const int* const subsetItems = subset.getTheArray();
  return subset.length() == set.length() - 1 && std::equal(items, items + omitted, subsetItems) &&
         std::equal(items + omitted + 1, items + set.length(), subsetItems + omitted);
}

}  // namespace

SubsetIndex::SubsetIndex(const HashTable& table)
    : slots_(std::bit_ceil(2 * static_cast<std::size_t>(table.count()) + 1), Slot{0, kNone}) {
  entries_.reserve(static_cast<std::size_t>(table.count()));
  const std::size_t mask = slots_.size() - 1;
  table.forEach([&](HashTable::Entry& entry) {
    const std::uint64_t hash = setCode(entry.key->getTheArray(), entry.key->length());
    std::size_t place = hash & mask;
    while (slots_[place].number != kNone) place = (place + 1) & mask;
    slots_[place] = {static_cast<std::uint32_t>(hash >> 32), size()};
    entries_.push_back(&entry);
  });
}

template <typename Equals>
int SubsetIndex::probe(std::uint64_t hash, Equals&& equals) const {
  const std::size_t mask = slots_.size() - 1;
  const auto tag = static_cast<std::uint32_t>(hash >> 32);
  for (std::size_t place = hash & mask; slots_[place].number != kNone; place = (place + 1) & mask) {
    const Slot& slot = slots_[place];
    if (slot.hash == tag && equals(*entry(slot.number)->key)) return slot.number;
  }
  return kNone;
}

int SubsetIndex::findWithout(const ItemSet& set, std::uint64_t hash, int omitted) const {
  return probe(hash - itemCode(set.getItemAt(omitted)),
               [&](const ItemSet& stored) { return equalsWithout(stored, set, omitted); });
}

int SubsetIndex::find(const int* items, int length) const {
  return probe(setCode(items, length), [&](const ItemSet& stored) {
    return stored.length() == length && std::equal(items, items + length, stored.getTheArray());
  });
}

}  // namespace korassoc::detail
