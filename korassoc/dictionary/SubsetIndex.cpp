#include "korassoc/dictionary/SubsetIndex.h"

#include <algorithm>
#include <bit>

namespace korassoc::detail {

namespace {

// The finalizer of a 64-bit generator: every bit of the item reaches every bit of the code.
// (Steele, Lea & Flood, OOPSLA 2014: SplitMix)
std::uint64_t mixed(int item) {
  std::uint64_t code = static_cast<std::uint32_t>(item) + 0x9E3779B97F4A7C15;
  code = (code ^ (code >> 30)) * 0xBF58476D1CE4E5B9;
  code = (code ^ (code >> 27)) * 0x94D049BB133111EB;
  return code ^ (code >> 31);
}

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
    const std::uint64_t hash = hashOf(entry.key->getTheArray(), entry.key->length());
    std::size_t place = hash & mask;
    while (slots_[place].number != kNone) place = (place + 1) & mask;
    slots_[place] = {static_cast<std::uint32_t>(hash >> 32), size()};
    entries_.push_back(&entry);
  });
}

std::uint64_t SubsetIndex::hashOf(const int* items, int length) {
  std::uint64_t hash = 0;
  for (int i = 0; i < length; ++i) hash += mixed(items[i]);
  return hash;
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
  return probe(hash - mixed(set.getItemAt(omitted)),
               [&](const ItemSet& stored) { return equalsWithout(stored, set, omitted); });
}

int SubsetIndex::find(const int* items, int length) const {
  return probe(hashOf(items, length), [&](const ItemSet& stored) {
    return stored.length() == length && std::equal(items, items + length, stored.getTheArray());
  });
}

}  // namespace korassoc::detail
