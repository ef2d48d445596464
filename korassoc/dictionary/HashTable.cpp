#include "korassoc/dictionary/HashTable.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

bool sameSet(const ItemSet& stored, const ItemSetView& set) {
  if (stored.hashcode() != set.hash || stored.length() != set.length) return false;
  return std::equal(set.items, set.items + set.length, stored.getTheArray());
}

}  // namespace

HashTable::HashTable(int initialBuckets) { setBucketCount(initialBuckets); }

HashTable::HashTable(const HashTable& other)
    : buckets_(other.buckets_.size(), nullptr),
      bucketCount_(other.bucketCount_),
      threshold_(other.threshold_) {
  try {
    for (std::size_t i = 0; i < other.buckets_.size(); ++i) {
      Entry** tail = &buckets_[i];
      for (const Entry* entry = other.buckets_[i]; entry != nullptr; entry = entry->next) {
        *tail = new Entry{entry->key, entry->descriptor, nullptr};
        tail = &(*tail)->next;
        ++count_;
      }
    }
  } catch (...) {
    // The keys and descriptors stay the other table's.
    for (Entry*& head : buckets_) {
      while (head != nullptr) delete std::exchange(head, head->next);
    }
    throw;
  }
}

HashTable::~HashTable() {
  deleteContents();
  while (freeNodes_ != nullptr) delete std::exchange(freeNodes_, freeNodes_->next);
}

void HashTable::deleteContents() {
  for (Entry*& head : buckets_) {
    while (head != nullptr) {
      Entry* entry = std::exchange(head, head->next);
      delete entry->key;
      delete entry->descriptor;
      delete entry;
    }
  }
}

void HashTable::setBucketCount(int count) {
  bucketCount_ = std::max(count, 1);
  threshold_ = static_cast<int>(static_cast<float>(bucketCount_) * kLoadFactor);
}

bool HashTable::put(ItemSet* set, SetCounter* descriptor) {
  if (find(set) != nullptr) return false;
  putNew(set, descriptor);
  return true;
}

void HashTable::putReplace(ItemSet* set, SetCounter* descriptor) {
  Entry* entry = find(set);
  if (entry == nullptr) {
    putNew(set, descriptor);
    return;
  }
  if (entry->key != set) delete std::exchange(entry->key, set);
  if (entry->descriptor != descriptor) delete std::exchange(entry->descriptor, descriptor);
}

void HashTable::putNew(ItemSet* set, SetCounter* descriptor) {
  if (buckets_.empty()) buckets_.resize(static_cast<std::size_t>(bucketCount_), nullptr);
  if (count_ >= threshold_) rehash();
  Entry* node = newNode();
  Entry*& head = buckets_[indexOf(set->hashcode())];
  *node = Entry{set, descriptor, head};
  head = node;
  ++count_;
}

void HashTable::rehash() {
  constexpr int kMaxBuckets = (std::numeric_limits<int>::max() - 1) / 2;
  if (bucketCount_ > kMaxBuckets) return;  // the chains grow instead
  std::vector<Entry*> former(static_cast<std::size_t>(bucketCount_) * 2 + 1, nullptr);
  former.swap(buckets_);
  setBucketCount(2 * bucketCount_ + 1);
  ++modCount_;
  for (Entry* head : former) {
    while (head != nullptr) {
      Entry* entry = std::exchange(head, head->next);
      Entry*& newHead = buckets_[indexOf(entry->key->hashcode())];
      entry->next = newHead;
      newHead = entry;
    }
  }
}

HashTable::Entry** HashTable::findLink(const ItemSetView& set) {
  if (buckets_.empty()) return nullptr;
  for (Entry** link = &buckets_[indexOf(set.hash)]; *link != nullptr; link = &(*link)->next) {
    if (sameSet(*(*link)->key, set)) return link;
  }
  return nullptr;
}

HashTable::Entry* HashTable::find(const ItemSetView& set) const {
  if (buckets_.empty()) return nullptr;
  for (Entry* entry = buckets_[indexOf(set.hash)]; entry != nullptr; entry = entry->next) {
    if (sameSet(*entry->key, set)) return entry;
  }
  return nullptr;
}

HashTable::Entry* HashTable::find(const ItemSet* set) const { return find(ItemSetView(*set)); }

HashTable::Entry* HashTable::remove(const ItemSetView& set) {
  Entry** link = findLink(set);
  return link != nullptr ? unlink(link) : nullptr;
}

HashTable::Entry* HashTable::remove(const ItemSet* set) { return remove(ItemSetView(*set)); }

bool HashTable::contains(const ItemSet* set) const { return find(set) != nullptr; }

HashTable::Entry* HashTable::unlink(Entry** link) {
  Entry* entry = *link;
  *link = entry->next;
  entry->next = nullptr;
  --count_;
  return entry;
}

void HashTable::recycle(Entry* entry) {
  *entry = Entry{nullptr, nullptr, freeNodes_};
  freeNodes_ = entry;
}

HashTable::Entry* HashTable::newNode() {
  if (freeNodes_ == nullptr) return new Entry{nullptr, nullptr, nullptr};
  return std::exchange(freeNodes_, freeNodes_->next);
}

void HashTable::clear() {
  for (Entry*& head : buckets_) {
    while (head != nullptr) recycle(std::exchange(head, head->next));
  }
  count_ = 0;
}

void HashTable::resetBuckets(int bucketCount) {
  clear();
  buckets_.clear();
  buckets_.shrink_to_fit();
  modCount_ = 0;
  setBucketCount(bucketCount);
}
