#include "korassoc/dictionary/SubsetIndex.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "korassoc/itemsets/ItemCode.h"

namespace korassoc::detail {

namespace {

// Whether other holds what is left of whole without part.
bool completes(const ItemSet& whole, const ItemSet& part, const int* other) {
  const int* partItem = part.getTheArray();
  const int* const partEnd = partItem + part.length();
  const int* const end = whole.getTheArray() + whole.length();
  for (const int* item = whole.getTheArray(); item != end; ++item) {
    if (partItem != partEnd && *partItem == *item) {
      ++partItem;
    } else if (*other++ != *item) {
      return false;
    }
  }
  return true;
}

std::vector<HashTable::Entry*> entriesOf(const HashTable& table) {
  std::vector<HashTable::Entry*> entries;
  entries.reserve(static_cast<std::size_t>(table.count()));
  table.forEach([&](HashTable::Entry& entry) { entries.push_back(&entry); });
  return entries;
}

}  // namespace

SubsetIndex::SubsetIndex(std::vector<HashTable::Entry*> entries, int length)
    : length_(length),
      entries_(std::move(entries)),
      slots_(std::bit_ceil(2 * entries_.size() + 1), Slot{0, kNone}) {
  items_.reserve(entries_.size() * static_cast<std::size_t>(length));
  const std::size_t mask = slots_.size() - 1;
  for (int number = 0; number < size(); ++number) {
    const ItemSet& set = *entry(number)->key;
    if (set.length() != length_) {
      items_.resize(items_.size() + static_cast<std::size_t>(length_));
      continue;
    }
    const int* const items = set.getTheArray();
    items_.insert(items_.end(), items, items + length_);
    const std::uint64_t hash = setCode(items, length_);
    std::size_t place = hash & mask;
    while (slots_[place].number != kNone) place = (place + 1) & mask;
    slots_[place] = {static_cast<std::uint32_t>(hash >> 32), number};
  }
}

SubsetIndex::SubsetIndex(const HashTable& table, int length) : SubsetIndex(entriesOf(table), length) {}

template <typename Equals>
int SubsetIndex::probe(std::uint64_t hash, Equals&& equals) const {
  const std::size_t mask = slots_.size() - 1;
  const auto tag = static_cast<std::uint32_t>(hash >> 32);
  const auto width = static_cast<std::size_t>(length_);
  for (std::size_t place = hash & mask; slots_[place].number != kNone; place = (place + 1) & mask) {
    const Slot& slot = slots_[place];
    if (slot.hash == tag && equals(items_.data() + static_cast<std::size_t>(slot.number) * width)) {
      return slot.number;
    }
  }
  return kNone;
}

int SubsetIndex::findWithout(const ItemSet& set, std::uint64_t code, int omitted) const {
  if (set.length() != length_ + 1) return kNone;
  const int* const items = set.getTheArray();
  return probe(code - itemCode(items[omitted]), [&](const int* stored) {
    return std::equal(items, items + omitted, stored) &&
           std::equal(items + omitted + 1, items + set.length(), stored + omitted);
  });
}

int SubsetIndex::findDifference(const ItemSet& whole, const ItemSet& part, std::uint64_t code) const {
  if (whole.length() - part.length() != length_) return kNone;
  return probe(code, [&](const int* stored) { return completes(whole, part, stored); });
}

int SubsetIndex::find(const int* items, int length) const {
  if (length != length_) return kNone;
  return probe(setCode(items, length),
               [&](const int* stored) { return std::equal(items, items + length, stored); });
}

}  // namespace korassoc::detail
