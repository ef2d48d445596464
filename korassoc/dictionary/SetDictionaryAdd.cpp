// Adding sets to the dictionary, and what gives way to them when memory is full.

#include <algorithm>
#include <functional>
#include <iostream>
#include <utility>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/PackedLevel.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/dictionary/SpillStore.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/engine/Exceptions.h"

namespace {

constexpr int kStored = 0;
constexpr int kMemoryFull = 3;

// Makes room for one element more, so that adding it does not fail.
template <typename T>
void reserveOneMore(std::vector<T>& elements) {
  if (elements.size() == elements.capacity()) elements.reserve(2 * elements.size() + 8);
}

}  // namespace

bool SetDictionary::addEmptySet(SetCounter* descriptor) {
  if (isHeld()) return false;
  graph_.reset();
  auto set = std::make_unique<ItemSet>();
  const bool added = table(0).put(set.get(), descriptor);
  if (added) static_cast<void>(set.release());
  inStoreCount_ = 1;
  return added;
}

int SetDictionary::addSet(const int* values, int, const int* index, int n, SetCounter* descriptor) {
  const ItemSetView set = selection(values, index, n);
  return addSet(set.items, set.length, descriptor);
}

int SetDictionary::addSet(const int* items, int n, SetCounter* descriptor) {
  auto set = std::make_unique<ItemSet>(items, n);
  const ItemSetView view(items, n);
  return addOwned(std::move(set), descriptor, [&view] {
    std::cout << "addSet failed for the set: ";
    ItemSet(view.items, view.length).display();
  });
}

int SetDictionary::addSet(const OrderedArray& set, SetCounter* descriptor) {
  return addSet(set.data, set.count, descriptor);
}

int SetDictionary::addSet(ItemSet* set, SetCounter* descriptor) {
  std::unique_ptr<ItemSet> owned(set);
  if (isHeld()) return kHeld;
  if (inStoreCount_ >= maxInStoreSets_ && !diskSpill_ && smallQueue_.head() != nullptr) {
    HashTable* table = tableOrNull(smallQueue_.head()->length());
    if (table == nullptr || !table->contains(smallQueue_.head())) {
      std::cout << "Could not remove first from hashtable!" << std::endl;
      smallQueue_.pop()->display();
      delete descriptor;  // the answer says that it was taken over
      return kStored;
    }
  }
  const ItemSet copy(*set);
  return addOwned(std::move(owned), descriptor, [&copy] {
    std::cout << "addSet failed for the set: ";
    copy.display();
  });
}

int SetDictionary::addSet(const OrderedArray& values, const OrderedArray& index, SetCounter* descriptor) {
  auto set = std::make_unique<ItemSet>(values, index);
  const ItemSet copy(*set);
  const bool full = inStoreCount_ >= maxInStoreSets_ && !diskSpill_ && smallQueue_.empty();
  const int answer = addOwned(std::move(set), descriptor, [&] {
    std::cout << "addSet failed for the subset :";
    index.Display();
    std::cout << " of the set: ";
    values.Display();
  });
  if (full && answer == kMemoryFull) {
    std::cout << "Small queue is empty, memory limit exceeded!";
    copy.display();
  }
  return answer;
}

int SetDictionary::add(const ItemSetView& set, const CarmaSetDescriptor& descriptor) {
  if (isHeld()) return kHeld;
  if (isLevelPacked(set.length) && descriptor.TID >= 0) return addPacked(set, descriptor);
  const bool full = inStoreCount_ >= maxInStoreSets_;
  if (set.length <= maxLevel_ && !(full && diskSpill_)) {
    ItemSet key(set.items, set.length);
    if (full && !makeWay(key)) return kMemoryFull;
    graph_.reset();
    const HashTable::Entry* entry = table(set.length).emplace(std::move(key), set.code, descriptor);
    if (full || leaveInMainStoreCount_ >= 1) {
      setOpen();
      smallQueue_.push(entry->key);
      queueTopCount_ = 1;
    }
    if (!full) ++inStoreCount_;
    return kStored;
  }
  auto owned = std::make_unique<CarmaSetDescriptor>(descriptor);
  const int answer = addSet(set.items, set.length, owned.get());
  if (answer == kStored) static_cast<void>(owned.release());
  return answer;
}

// Packed sets have no queue, so that none of them can make room.
int SetDictionary::addPacked(const ItemSetView& set, const CarmaSetDescriptor& descriptor) {
  if (set.length > maxLevel_ || inStoreCount_ >= maxInStoreSets_) return kMemoryFull;
  using korassoc::detail::PackedLevel;
  graph_.reset();
  if (packedLevel(set.length) == nullptr)
    keepPacked(set.length, std::make_unique<PackedLevel>(set.length, initialBuckets(set.length)));
  packedLevel(set.length)->add(set, descriptor);
  ++inStoreCount_;
  return kStored;
}

// Adds a set of at most maxLevel() items; a longer one has no table and is refused as by a full memory.
template <typename Report>
int SetDictionary::addOwned(std::unique_ptr<ItemSet> set, SetCounter* descriptor, Report&& reportFailure) {
  if (isHeld()) return kHeld;
  if (set->length() > maxLevel_) return kMemoryFull;
  if (inStoreCount_ < maxInStoreSets_) {
    const bool queued = leaveInMainStoreCount_ >= 1;
    store(set, descriptor, queued);
    if (queued) queueTopCount_ = 1;
    ++inStoreCount_;
    return kStored;
  }
  if (!diskSpill_) return addByGivingUp(std::move(set), descriptor);
  try {
    return addBySpilling(std::move(set), descriptor);
  } catch (...) {
    korassoc::detail::discardCurrentException();
    reportFailure();
    throw new DictionaryFailure;
  }
}

// Makes everything ready for storing a set that takes the place of one in the given table (null: of none), so
// that nothing can fail once that one has gone.
void SetDictionary::prepareToStore(const ItemSet& set, const HashTable* leaving) {
  HashTable& to = table(set.length());
  to.makeRoomFor(set, &to == leaving ? 1 : 0);
  reserveOneMore(refusedCopies_);
  if (holdsEvicted_) reserveOneMore(evicted_);
}

// Puts a set into the table of its level and, if so told, at the end of the queue. A set that is stored
// already is refused without a word: its copy has to live on as long as it may stand in the queue. Changes
// nothing when memory runs out.
void SetDictionary::store(std::unique_ptr<ItemSet>& set, SetCounter* descriptor, bool queued) {
  if (queued) reserveOneMore(refusedCopies_);
  graph_.reset();
  setOpen();
  ItemSet* const stored = set.get();
  if (table(set->length()).put(stored, descriptor)) {
    static_cast<void>(set.release());
  } else {
    delete descriptor;
    if (queued) refusedCopies_.push_back(std::move(set));
    set.reset();
  }
  if (queued) smallQueue_.push(stored);
}

// Gives up the first set of the queue, so that this one can be stored in its place without failing. False
// when the queue is empty.
bool SetDictionary::makeWay(const ItemSet& set) {
  const ItemSet* first = smallQueue_.head();
  if (first == nullptr) return false;
  HashTable* from = tableOrNull(first->length());
  if (from != nullptr && !from->contains(first)) from = nullptr;
  prepareToStore(set, from);
  smallQueue_.pop();
  if (from != nullptr) {
    discard(from->remove(first), *from);
    ++setsGivenUp_;
  }
  return true;
}

int SetDictionary::addByGivingUp(std::unique_ptr<ItemSet> set, SetCounter* descriptor) {
  if (!makeWay(*set)) return kMemoryFull;
  store(set, descriptor, true);
  queueTopCount_ = 1;
  return kStored;
}

int SetDictionary::addBySpilling(std::unique_ptr<ItemSet> set, SetCounter* descriptor) {
  if (spillStore_ == nullptr) createSpillStore();
  while (ItemSet* first = smallQueue_.head()) {
    HashTable& from = table(first->length());
    const HashTable::Entry* entry = from.find(first);
    // The copy of a duplicate stands for nothing in memory when the set itself has left; the next one may go.
    if (entry == nullptr || entry->descriptor == nullptr) {
      smallQueue_.pop();
      continue;
    }
    prepareToStore(*set, &from);
    smallQueue_.pop();
    int answer = 0;
    try {
      answer = spillStore_->add(first, entry->descriptor);
    } catch (...) {
      smallQueue_.putBack(first);
      throw;
    }
    if (answer < 0) return answer;
    if (answer > 0) break;
    discard(from.remove(first), from);
    ++setsSpilled_;
    store(set, descriptor, true);
    queueTopCount_ = 1;
    return kStored;
  }
  const int answer = spillStore_->add(set.get(), descriptor);
  if (answer == 0) {
    delete descriptor;
    ++setsSpilled_;
  }
  return answer;
}

// Deletes a removed entry with its set and descriptor; while a step runs they live on until it ends.
void SetDictionary::discard(HashTable::Entry* entry, HashTable& table) {
  if (!smallQueue_.empty()) smallQueue_.unlink(entry->key);
  if (holdsEvicted_) {
    evicted_.emplace_back(&table, entry);
  } else {
    table.release(entry);
  }
}

void SetDictionary::releaseEvicted() {
  for (const auto& [table, entry] : evicted_) table->release(entry);
  evicted_.clear();
  holdsEvicted_ = false;
}

void SetDictionary::releaseEvictedBut(const std::vector<const SetCounter*>& used) {
  std::erase_if(evicted_, [&used](const auto& evicted) {
    const auto& [table, entry] = evicted;
    const SetCounter* descriptor = entry->descriptor;
    if (std::binary_search(used.begin(), used.end(), descriptor, std::less<>())) return false;
    table->release(entry);
    return true;
  });
}

void SetDictionary::queuePush(ItemSet* set) {
  if (isHeld()) return;
  unpack();
  smallQueue_.push(set);
}

ItemSet* SetDictionary::queuePop() { return isHeld() ? nullptr : smallQueue_.pop(); }

void SetDictionary::queueUnlink(ItemSet* set) {
  if (!isHeld()) smallQueue_.unlink(set);
}

void SetDictionary::createSpillStore() {
  if (isHeld()) return;
  const char* name = settings_->HasSpillFileName() ? settings_->GetSpillFileName() : "";
  spillStore_.reset();  // lets go of its file, which may be the new one's
  spillStore_ = std::make_unique<SpillStore>(this, name, maxLevel_, kSpillLevel);
}

bool SetDictionary::takeBack(std::unique_ptr<ItemSet>& set, std::unique_ptr<SetCounter>& descriptor) {
  if (isHeld() || inStoreCount_ >= maxInStoreSets_) return false;
  setItemBits(set.get());
  store(set, descriptor.get(), false);
  static_cast<void>(descriptor.release());
  ++inStoreCount_;
  return true;
}
