// Pruning, and the bits of the items that stored sets hold.

#include <algorithm>
#include <iostream>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/engine/Exceptions.h"
#include "korassoc/itemsets/CountBound.h"

int SetDictionary::removeSmallSets(double minCount) {
  if (isHeld()) return 0;
  int removed = 0;
  const bool closed = closed_;
  try {
    for (int level = 1; level <= maxLevel_ && getLevelSize(level) >= 1; ++level)
      removed += removeSmall(level, minCount);
    closed_ = closed;  // a set is in no more transactions than its subsets are
    if (latticeBuilt_) rebuildLinks();
  } catch (...) {
    if (latticeBuilt_) breakOff();  // links may lead to sets that are gone
    throw;
  }
  return removed;
}

int SetDictionary::removeSmall(int level, double minCount) {
  if (isHeld()) return 0;
  graph_.reset();
  setOpen();
  if (!bitsetOff_ && level >= 2) resetLevelBits(level - 1);
  const int bound = korassoc::detail::pruneCountBound(minCount);
  int removed = 0;
  if (isPacked() && level > 0 && bitsetOff_) {
    korassoc::detail::PackedLevel* sets = packedLevel(level);
    removed = sets != nullptr ? sets->removeBelow(bound) : 0;
    inStoreCount_ = std::max(inStoreCount_ - removed, 0);  // a restored count may be too small
  } else if (HashTable* table = level > 0 ? tableOrNull(level) : nullptr) {
    table->sweep(
        [&](HashTable::Entry& entry) {
          if (!bitsetOff_ && !smallQueue_.empty()) smallQueue_.unlink(entry.key);
          if (entry.descriptor == nullptr || entry.descriptor->count < bound) return true;
          if (!bitsetOff_) setItemBits(entry.key);
          return false;
        },
        [&](HashTable::Entry* entry) {
          discard(entry, *table);
          if (inStoreCount_ > 0) --inStoreCount_;
          ++removed;
        });
  }
  if (level > 0 && diskSpill_ && spillStore_ != nullptr) {
    try {
      removed += spillStore_->reduce(level, minCount);
    } catch (...) {
      korassoc::detail::discardCurrentException();
      std::cout << "Failed to reduce dictionary on disk." << std::endl;
      throw new DictionaryFailure;
    }
    spillStore_.reset();
  }
  return removed;
}

void SetDictionary::markItems(const ItemSet* set) {
  if (!isHeld()) setItemBits(set);
}

void SetDictionary::clearLevelBits(int level) {
  if (!isHeld()) resetLevelBits(level);
}

void SetDictionary::markLevelBits(int level) {
  if (!isHeld()) setLevelBits(level);
}

void SetDictionary::setItemBits(const ItemSet* set) {
  for (int i = 0; i < set->length(); ++i) itemBits_->set(itemBit(set->getItemAt(i)));
}

void SetDictionary::resetLevelBits(int level) {
  levelTable(level).forEach([this](const HashTable::Entry& entry) {
    for (int i = 0; i < entry.key->length(); ++i) itemBits_->reset(itemBit(entry.key->getItemAt(i)));
  });
}

void SetDictionary::setLevelBits(int level) {
  levelTable(level).forEach([this](const HashTable::Entry& entry) { setItemBits(entry.key); });
}
