// Turning the counted sets into a lattice, and keeping its links right.

#include <iostream>
#include <memory>
#include <utility>
#include <vector>

#include "korassoc/dictionary/LatticeSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/engine/DictionarySettings.h"

namespace {

void displayItems(const int* items, int n) {
  for (int i = 0; i < n; ++i) std::cout << " " << items[i];
  std::cout << " End of Set \n" << std::flush;
}

}  // namespace

// The former descriptor's values, without links.
void SetDictionary::replaceDescriptor(HashTable::Entry& entry) {
  const SetCounter nothing;
  const SetCounter& former = entry.descriptor != nullptr ? *entry.descriptor : nothing;
  auto links = std::make_unique<LatticeSetDescriptor>(former.count, former.getTID(), former.getMaxMissed());
  delete std::exchange(entry.descriptor, links.release());
}

void SetDictionary::buildLattice() {
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
  levelTable(1).forEach([&](HashTable::Entry& entry) {
    bottom->adjacent.Add(entry.key->getItemAt(0));
    replaceDescriptor(entry);
  });
  if (empty != nullptr) {
    delete std::exchange(empty->descriptor, bottom.release());
  } else {
    auto set = std::make_unique<ItemSet>();
    table(0).put(set.get(), bottom.get());
    static_cast<void>(set.release());
    static_cast<void>(bottom.release());
    ++inStoreCount_;
  }
  for (int level = 2; level <= getHighestLevel(); ++level) {
    levelTable(level).forEach([&](HashTable::Entry& entry) {
      replaceDescriptor(entry);
      linkSubsets(*entry.key, level);
    });
  }
  latticeBuilt_ = true;
}

// Enters the set into the links of each of its subsets that is one item smaller.
void SetDictionary::linkSubsets(const ItemSet& set, int level) {
  const int subsetLength = set.length() - 1;
  const HashTable& subsets = levelTable(level - 1);
  std::vector<int>& subset = selected_;
  for (int left = 0; left <= subsetLength; ++left) {
    subset.clear();
    for (int i = 0; i <= subsetLength; ++i) {
      if (i != left) subset.push_back(set.getItemAt(i));
    }
    const HashTable::Entry* entry = subsets.find(ItemSetView(subset.data(), subsetLength));
    if (entry != nullptr && entry->descriptor != nullptr) {
      static_cast<LatticeSetDescriptor*>(entry->descriptor)->adjacent.Add(set.getItemAt(left));
      continue;
    }
    if (entry == nullptr) {
      std::cout << "Error during buildLattice! Not found subset: ";
      displayItems(subset.data(), subsetLength);
      std::cout << " of the set ";
      displayItems(set.getTheArray(), set.length());
    }
    std::cout << "z=" << left << ", i=" << level << std::endl;
    std::cout << "Error building lattice level " << set.length() << std::endl;
  }
}

void SetDictionary::pruneAdjacent(const ItemSet* set) {
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
