// Turning the counted sets into a lattice, and keeping its links right.

#include <algorithm>
#include <iostream>
#include <memory>
#include <utility>
#include <vector>

#include "korassoc/dictionary/CompleteItemsets.h"
#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/dictionary/SubsetIndex.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/itemsets/CountBound.h"

namespace {

constexpr int kAdjacentGrowth = 10;

void displayItems(const ItemSet& set) {
  for (int i = 0; i < set.length(); ++i) std::cout << " " << set.getItemAt(i);
  std::cout << " End of Set \n" << std::flush;
}

}  // namespace

// The former descriptor's values, without links.
void SetDictionary::replaceDescriptor(HashTable::Entry& entry) {
  const SetCounter nothing;
  const SetCounter& former = entry.descriptor != nullptr ? *entry.descriptor : nothing;
  auto links = std::make_unique<LatticeSetDescriptor>(former.count, former.getTID(), former.getMaxMissed());
  HashTable::replaceDescriptor(entry, links.release());
}

void SetDictionary::breakOff() {
  if (isHeld()) return;
  graph_.reset();
  latticeBuilt_ = false;
  brokenOff_ = true;
}

void SetDictionary::buildLattice() {
  if (isHeld()) return;
  try {
    replaceDescriptors();
    linkLevels();
  } catch (...) {
    breakOff();
    throw;
  }
  latticeBuilt_ = true;
  brokenOff_ = false;
}

// Gives the empty set, which is made if need be, and the sets of the consecutive levels lattice descriptors
// with their counts, without links.
void SetDictionary::replaceDescriptors() {
  graph_.reset();
  const int items = getLevelSize(1);
  HashTable::Entry* empty = table(0).find(&emptySet_);
  auto bottom = std::make_unique<LatticeSetDescriptor>(SetCounter::kMaxCount, 0, 0, items, items);
  if (empty != nullptr && empty->descriptor != nullptr) {
    bottom->count = empty->descriptor->count;
    if (bitsetOff_) {
      bottom->setTID(empty->descriptor->getTID());
      bottom->setMaxMissed(empty->descriptor->getMaxMissed());
    }
  }
  if (empty != nullptr) {
    HashTable::replaceDescriptor(*empty, bottom.release());
  } else {
    auto set = std::make_unique<ItemSet>();
    table(0).put(set.get(), bottom.get());
    static_cast<void>(set.release());
    static_cast<void>(bottom.release());
    inStoreCount_ = korassoc::detail::saturatingSum(inStoreCount_, 1);  // a restored count may be anything
  }
  levelTable(1).forEach([](HashTable::Entry& entry) { replaceDescriptor(entry); });
  for (int level = 2; level <= getHighestLevel(); ++level) {
    levelTable(level).forEach([](HashTable::Entry& entry) { replaceDescriptor(entry); });
  }
}

// Enters every set of the consecutive levels into the links of its subsets that are one item smaller. All of
// them have lattice descriptors without links.
void SetDictionary::linkLevels() {
  const Hold hold(*this);  // what is missing is said on a stream
  const int highest = getHighestLevel();
  for (int level = 1; level <= highest; ++level) {
    const korassoc::detail::SubsetIndex subsets(levelTable(level - 1), level - 1);
    levelTable(level).forEach(
        [&](const HashTable::Entry& entry) { linkSubsets(*entry.key, subsets, level); });
    // Appending everything and sorting it once is cheaper than keeping it sorted.
    levelTable(level - 1).forEach([](const HashTable::Entry& entry) {
      OrderedArray& adjacent = static_cast<LatticeSetDescriptor*>(entry.descriptor)->adjacent;
      std::sort(adjacent.data, adjacent.data + adjacent.count);
    });
  }
}

void SetDictionary::linkSubsets(const ItemSet& set, const korassoc::detail::SubsetIndex& subsets, int level) {
  using korassoc::detail::SubsetIndex;
  const std::uint64_t hash = korassoc::detail::setCode(set.getTheArray(), set.length());
  for (int left = 0; left < set.length(); ++left) {
    const int number = subsets.findWithout(set, hash, left);
    if (number != SubsetIndex::kNone) {
      auto* descriptor = static_cast<LatticeSetDescriptor*>(subsets.entry(number)->descriptor);
      descriptor->adjacent.SimpleArray::Add(set.getItemAt(left));
      continue;
    }
    const std::unique_ptr<ItemSet> subset(set.omit(left));
    std::cout << "Error during buildLattice! Not found subset: ";
    displayItems(*subset);
    std::cout << " of the set ";
    displayItems(set);
    std::cout << "z=" << left << ", i=" << level << std::endl;
    std::cout << "Error building lattice level " << set.length() << std::endl;
  }
}

void SetDictionary::adopt(const korassoc::detail::CompleteItemsets& itemsets) {
  if (isHeld()) return;
  // Made aside: when memory runs out, the dictionary stays as it was.
  std::vector<std::unique_ptr<HashTable>> tables(itemsets.levels.size() + 1);
  for (std::size_t level = 0; level < tables.size(); ++level) {
    tables[level] = std::make_unique<HashTable>(initialBuckets(static_cast<int>(level)), pool_);
  }
  const auto store = [&tables](const int* items, std::size_t length, int count) {
    tables[length]->emplace(ItemSetView(items, static_cast<int>(length)),
                            std::make_unique<LatticeSetDescriptor>(count, 0, 0, 0, kAdjacentGrowth));
  };
  store(nullptr, 0, itemsets.transactionCount);
  for (std::size_t level = 0; level < itemsets.levels.size(); ++level) {
    const korassoc::detail::CompleteLevel& sets = itemsets.levels[level];
    for (std::size_t i = 0; i < sets.counts.size(); ++i) store(sets.set(i).data(), level + 1, sets.counts[i]);
  }
  levels_.swap(tables);
  std::unique_ptr<PackedLevels> packed = std::move(packed_);
  std::unique_ptr<SpillStore> spilled = std::move(spillStore_);  // no part of the new sets
  try {
    linkLevels();
  } catch (...) {
    levels_.swap(tables);
    packed_ = std::move(packed);
    spillStore_ = std::move(spilled);
    throw;
  }
  while (!smallQueue_.empty()) smallQueue_.pop();  // sets of the former tables
  graph_.reset();
  inStoreCount_ = korassoc::detail::saturatingSum(
      korassoc::detail::saturatingInt(static_cast<double>(itemsets.size())), 1);
  setOpen();
  latticeBuilt_ = true;
  brokenOff_ = false;
}

void SetDictionary::pruneAdjacent(const ItemSet* set) {
  if (isHeld()) return;
  graph_.reset();
  auto* descriptor = dynamic_cast<LatticeSetDescriptor*>(getDescriptor(set));
  if (descriptor == nullptr) {
    set->display();
    std::cout << "Set Has No Counter\n";
    return;
  }
  for (int i = descriptor->adjacent.count - 1; i >= 0; --i) {
    const ItemSet extension(*set, descriptor->adjacent.data[i]);
    if (!containsSet(&extension)) descriptor->adjacent.RemoveAt(i);
  }
  descriptor->adjacent.Compact();
}

void SetDictionary::rebuildLinks() {
  const int highest = getHighestLevel();
  for (int level = 0; level <= highest; ++level) {
    levelTable(level).forEach([this](const HashTable::Entry& entry) { pruneAdjacent(entry.key); });
  }
}

int SetDictionary::resetAllCounts() {
  if (isHeld()) return 0;
  const Hold hold(*this);
  noteCounting();
  int reset = 0;
  const int highest = getHighestLevel();
  for (int level = 0; level <= highest; ++level) {
    levelTable(level).forEach([&](HashTable::Entry& entry) {
      if (entry.descriptor != nullptr) {
        entry.descriptor->setMaxMissed(0);
        entry.descriptor->count = 0;
        ++reset;
        return;
      }
      std::cout << "Error in resetAllCounts: null descriptor for set: ";
      if (entry.key != nullptr) {
        for (int i = 0; i < entry.key->length(); ++i) std::cout << " " << entry.key->getItemAt(i);
      } else {
        std::cout << "NULL\n";
      }
      std::cout << " End of Set \nin level " << level << "\n";
    });
  }
  return reset;
}
