#include "korassoc/dictionary/SetDictionary.h"

#include <algorithm>
#include <iostream>
#include <stdexcept>
#include <utility>

#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/engine/Caught.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/engine/Exceptions.h"

SetDictionary::SetDictionary(int maxLevel, DictionarySettings* settings, bool)
    : itemBits_(std::make_unique<std::bitset<kItemBits>>()),
      maxLevel_(std::clamp(maxLevel, 0, kLongestSet)),
      maxInStoreSets_(settings->GetMaxInStoreSets()),
      diskSpill_(settings->GetDiskSpill()),
      settings_(settings),
      leaveInMainStoreCount_(settings->GetLeaveInMainStoreCount()),
      fixedSetCount_(settings->GetNumberOfFixedSets()) {
  if (fixedSetCount_ > 0 && fixedSetCount_ - 1 > maxLevel_) {
    fixedSetCount_ = maxLevel_ + 1;
    settings->SetNumberOfFixedSets(fixedSetCount_);  // so that saved settings show the number in use
  }
  if (mayBePacked()) packed_ = std::make_unique<PackedLevels>();
}

SetDictionary::SetDictionary(std::vector<std::unique_ptr<HashTable>> levelTables, int inStoreCount,
                             int maxLevel, bool bitsetOff)
    : levels_(std::move(levelTables)),
      itemBits_(std::make_unique<std::bitset<kItemBits>>()),
      maxLevel_(std::clamp(maxLevel, 0, kLongestSet)),
      inStoreCount_(inStoreCount),
      ownSettings_(std::make_unique<DictionarySettings>()),
      settings_(ownSettings_.get()),
      leaveInMainStoreCount_(settings_->GetLeaveInMainStoreCount()),
      bitsetOff_(bitsetOff),
      latticeBuilt_(true),
      fixedSetCount_(maxLevel_ + 1) {
  maxInStoreSets_ = settings_->GetMaxInStoreSets();
}

SetDictionary::~SetDictionary() { releaseEvicted(); }

SetDictionary::Hold::~Hold() {
  if (--dictionary_.holds_ == 0) dictionary_.walkedPacked_.reset();
}

int SetDictionary::initialBuckets(int level) const {
  const long long searchSize = settings_->GetInitialBoundarySearchSize();
  switch (level) {
    case 0:
      return 2;
    case 1:
    case 4:
    case 5:
      return static_cast<int>(searchSize);
    case 2:
    case 3:
      return settings_->GetInitialHashtableSet23Size();
    case 6:
    case 7:
      return static_cast<int>((searchSize - 1) / 2);
    case 8:
      return static_cast<int>((searchSize - 1) / 4);
    default:
      return settings_->GetInitialSetSize();
  }
}

HashTable& SetDictionary::table(int level) {
  if (isLevelPacked(level)) unpackAll();
  const auto index = static_cast<std::size_t>(level);
  if (index >= levels_.size()) levels_.resize(index + 1);
  if (levels_[index] == nullptr) levels_[index] = std::make_unique<HashTable>(initialBuckets(level), pool_);
  return *levels_[index];
}

const HashTable& SetDictionary::levelTable(int level) const {
  const HashTable* table = tableOrNull(level);
  return table != nullptr ? *table : noSets_;
}

// --- Sizes ---

int SetDictionary::countInMemory(int level) const {
  if (!isLevelPacked(level)) return levelTable(level).count();
  const korassoc::detail::PackedLevel* sets = packedLevel(level);
  return sets != nullptr ? sets->count() : 0;
}

int SetDictionary::getLevelSize(int level) const {
  int size = countInMemory(level);
  if (spillsLevel(level) && spillStore_->isOpen()) size += spillStore_->size();
  return size;
}

int SetDictionary::getTotalSetCount() const {
  int total = 1;
  const int highest = std::min(maxLevel_, std::max(storedLevels(), 1));
  for (int level = 1; level <= highest; ++level) total += getLevelSize(level);
  return total;
}

int SetDictionary::getHighestLevel() const {
  int level = 0;
  while (level < maxLevel_ && getLevelSize(level + 1) >= 1) ++level;
  return level;
}

int SetDictionary::getSizeAboveLevel(int level) const {
  if (level >= maxLevel_) return 0;
  int size = 0;
  for (int above = std::max(level, -1) + 1; above <= storedLevels(); ++above) size += countInMemory(above);
  return size;
}

void SetDictionary::setRestartFailed() { restartFailed_ = true; }

// --- Look-up ---

ItemSetView SetDictionary::selection(const int* values, const int* index, int n) {
  selected_.resize(static_cast<std::size_t>(std::max(n, 0)));
  for (std::size_t i = 0; i < selected_.size(); ++i) selected_[i] = values[index[i]];
  return {selected_.data(), n};
}

SetCounter* SetDictionary::find(const ItemSetView& set) {
  if (set.length > maxLevel_) return nullptr;
  if (const HashTable* table = tableOrNull(set.length)) {
    if (const HashTable::Entry* entry = table->find(set)) return entry->descriptor;
  }
  if (!spillsLevel(set.length)) return nullptr;
  const ItemSet key(set.items, set.length);
  fromDisk_.reset(spillStore_->find(&key));
  return fromDisk_.get();
}

bool SetDictionary::containsSet(const ItemSet* set, int level) {
  if (level > maxLevel_) return false;
  const HashTable* table = tableOrNull(level);
  if (table != nullptr && table->contains(set)) return true;
  return spillsLevel(level) && spillStore_->contains(set);
}

bool SetDictionary::containsSet(const ItemSet* set) { return containsSet(set, set->length()); }

bool SetDictionary::containsSet(const OrderedArray& values, const OrderedArray& index) {
  const ItemSet set(values, index);
  return containsSet(&set, set.length());
}

bool SetDictionary::containsSet(const OrderedArray& items) {
  const ItemSet set(items);
  return containsSet(&set, set.length());
}

bool SetDictionary::incrementIfBeforeTID(const OrderedArray& values, const OrderedArray& index,
                                         int transaction) {
  if (isHeld()) return false;
  SetCounter* descriptor = find(selection(values.data, index.data, index.count));
  if (descriptor == nullptr) return false;
  noteCounting();
  if (!diskSpill_ && descriptor->getTID() > transaction) descriptor->increment();
  return true;
}

// Who asks for a descriptor may change its count.
SetCounter* SetDictionary::getDescriptor(const int* items, int n) {
  noteCounting();
  return find({items, n});
}

SetCounter* SetDictionary::getDescriptor(int item) { return getDescriptor(&item, 1); }

SetCounter* SetDictionary::getDescriptor(const OrderedArray& set) {
  return getDescriptor(set.data, set.count);
}

SetCounter* SetDictionary::getDescriptor(const ItemSet* set) {
  return set != nullptr ? getDescriptor(set->getTheArray(), set->length()) : nullptr;
}

int SetDictionary::getCount(int item) {
  const SetCounter* descriptor = find({&item, 1});
  return descriptor != nullptr ? descriptor->count : 0;
}

int SetDictionary::getCount(const ItemSet* set) {
  const SetCounter* descriptor = set != nullptr ? find(ItemSetView(*set)) : nullptr;
  return descriptor != nullptr ? descriptor->count : 0;
}

int SetDictionary::getEmptySetCount() { return getCount(&emptySet_); }

const korassoc::detail::LatticeGraph& SetDictionary::graph() const {
  requireWhole();
  if (graph_ == nullptr) {
    graph_ = std::make_shared<korassoc::detail::LatticeGraph>(*this);
  } else if (countsChanged_ && !graph_->hasCurrentCounts()) {
    if (graph_.use_count() == 1) {
      graph_->readCounts();
    } else {  // a query works with it, and is to notice
      graph_ = std::make_shared<korassoc::detail::LatticeGraph>(*this);
    }
  }
  countsChanged_ = false;
  return *graph_;
}

void SetDictionary::requireWhole() const {
  if (brokenOff_) throw std::logic_error("a pass over the lattice was broken off");
}

// --- Counting ---

SetDictionary::Counted SetDictionary::increment(const ItemSetView& set) {
  return incrementOr(set, [&set] {
    if (set.length == 1) {
      std::cout << "Increment failed for the singleton set: " << set.items[0] << std::endl;
    } else {
      std::cout << "Increment failed for the set: ";
      ItemSet(set.items, set.length).display();
    }
  });
}

template <typename Report>
SetDictionary::Counted SetDictionary::incrementOr(const ItemSetView& set, Report&& reportFailure) {
  if (const HashTable* table = tableOrNull(set.length)) {
    HashTable::Entry* entry = table->find(set);
    if (entry != nullptr && entry->descriptor != nullptr) {
      countQueued(*entry);
      return {entry->key->getTheArray(), entry->descriptor};
    }
  }
  if (!diskSpill_ || spillStore_ == nullptr) return {};
  try {
    const ItemSet key(set.items, set.length);
    return {set.items, spillStore_->increment(&key)};
  } catch (...) {
    korassoc::detail::discardCurrentException();
    reportFailure();
    throw new DictionaryFailure;
  }
}

// Adds one to a stored set's count and, when it stands in the small queue, gives it its new place there.
void SetDictionary::countQueued(HashTable::Entry& entry) {
  noteCounting();
  entry.descriptor->increment();
  if (smallQueue_.empty() || entry.key->getNext() == nullptr) return;
  const int count = entry.descriptor->count;
  if (count > leaveInMainStoreCount_) {
    smallQueue_.unlink(entry.key);
  } else if (count > queueTopCount_) {
    smallQueue_.unlink(entry.key);
    smallQueue_.push(entry.key);
    queueTopCount_ = count;
  }
}

SetCounter* SetDictionary::incrementSet(const OrderedArray& values, const OrderedArray& index) {
  if (isHeld()) return nullptr;
  return incrementOr(selection(values.data, index.data, index.count),
                     [&] {
                       std::cout << "Increment failed for the subset: ";
                       index.Display();
                       std::cout << " of the set: ";
                       values.Display();
                     })
      .descriptor;
}

SetCounter* SetDictionary::incrementSet(const ItemSet* set) {
  if (isHeld()) return nullptr;
  return incrementOr(ItemSetView(*set),
                     [set] {
                       std::cout << "Increment failed for the set: ";
                       set->display();
                     })
      .descriptor;
}

SetCounter* SetDictionary::incrementSet(const int* items, int n) {
  const ItemSet key(items, n);
  return incrementSet(&key);
}

SetCounter* SetDictionary::incrementSet(int item) {
  return isHeld() ? nullptr : increment({&item, 1}).descriptor;
}

SetCounter* SetDictionary::incrementSet(const OrderedArray& set) { return incrementSet(set.data, set.count); }

// --- Phase II ---

void SetDictionary::prepareExactCounting(int fromLevel, bool keepCounts) {
  if (isHeld()) return;
  noteCounting();
  unpack();
  itemBits_->reset();
  for (std::size_t level = static_cast<std::size_t>(std::max(fromLevel, 0)); level < levels_.size();
       ++level) {
    if (levels_[level] == nullptr) continue;
    levels_[level]->forEach([&](HashTable::Entry& entry) {
      if (entry.descriptor == nullptr) return;
      if (!keepCounts) entry.descriptor->count = 0;
      entry.descriptor->setMaxMissed(0);
      setItemBits(entry.key);
    });
  }
}

KorAssoc::KorStatus SetDictionary::takeTransactionCount(int n) {
  if (isHeld()) return KorAssoc::KorStatus(kHeld, false);
  return korassoc::detail::caughtStatus([&] {
    if (SetCounter* transactions = getDescriptor(&emptySet_)) transactions->count = n;
    return status_;
  });
}
