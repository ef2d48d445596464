#include "korassoc/dictionary/HashTable.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace {

using Buckets = korassoc::detail::BucketArray<HashTable::Entry>;

bool sameSet(const ItemSet& stored, const ItemSetView& set) {
  if (stored.hashcode() != set.hash || stored.length() != set.length) return false;
  return std::equal(set.items, set.items + set.length, stored.getTheArray());
}

}  // namespace

HashTable::HashTable(int initialBuckets) { setBucketCount(initialBuckets); }

HashTable::HashTable(const HashTable& other)
    : bucketCount_(other.bucketCount_), threshold_(other.threshold_) {
  if (other.buckets_.empty()) return;
  buckets_ = Buckets(other.buckets_.size());
  buckets_.prepareFor(static_cast<std::size_t>(other.count_));
  Entry* last = nullptr;
  try {
    other.forEach([&](const Entry& entry) {
      const std::size_t index = indexOf(entry.key->hashcode());
      Entry*& end = buckets_.head(index) == nullptr ? buckets_.link(index) : last->next;
      end = last = new Entry{entry.key, entry.descriptor, nullptr};
      ++count_;
    });
  } catch (...) {
    clear();  // the keys and descriptors stay the other table's
    while (freeNodes_ != nullptr) delete std::exchange(freeNodes_, freeNodes_->next);
    throw;
  }
}

HashTable::~HashTable() {
  deleteContents();
  while (freeNodes_ != nullptr) delete std::exchange(freeNodes_, freeNodes_->next);
}

void HashTable::deleteContents() {
  buckets_.forEachHead([](Entry*& head) {
    while (head != nullptr) {
      Entry* entry = std::exchange(head, head->next);
      delete entry->key;
      delete entry->descriptor;
      delete entry;
    }
  });
  count_ = 0;
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
  makeRoom(*set);
  Entry* node = newNode();
  *node = Entry{set, descriptor, nullptr};
  hang(node);
}

// Makes the table large enough for one entry more, so that nothing can fail when it is hung into its chain.
void HashTable::makeRoom(const ItemSet& set) {
  if (buckets_.empty()) buckets_ = Buckets(static_cast<std::size_t>(bucketCount_));
  if (count_ >= threshold_) rehash();
  buckets_.prepareFor(static_cast<std::size_t>(count_) + 1);
  buckets_.link(indexOf(set.hashcode()));
}

// Puts an entry at the head of its chain.
void HashTable::hang(Entry* entry) {
  Entry*& head = buckets_.link(indexOf(entry->key->hashcode()));
  entry->next = head;
  head = entry;
  ++count_;
}

void HashTable::rehash() {
  constexpr int kMaxBuckets = (std::numeric_limits<int>::max() - 1) / 2;
  if (bucketCount_ > kMaxBuckets) return;  // the chains grow instead
  Buckets former(static_cast<std::size_t>(bucketCount_) * 2 + 1);
  former.prepareFor(static_cast<std::size_t>(count_));
  std::swap(former, buckets_);
  setBucketCount(2 * bucketCount_ + 1);
  ++modCount_;
  former.forEachHead([this](Entry* head) {
    while (head != nullptr) {
      Entry* entry = std::exchange(head, head->next);
      Entry*& newHead = buckets_.link(indexOf(entry->key->hashcode()));
      entry->next = newHead;
      newHead = entry;
    }
  });
}

HashTable::Entry** HashTable::findLink(const ItemSetView& set) {
  if (buckets_.empty()) return nullptr;
  const std::size_t index = indexOf(set.hash);
  if (buckets_.head(index) == nullptr) return nullptr;
  for (Entry** link = &buckets_.link(index); *link != nullptr; link = &(*link)->next) {
    if (sameSet(*(*link)->key, set)) return link;
  }
  return nullptr;
}

HashTable::Entry* HashTable::find(const ItemSetView& set) const {
  if (buckets_.empty()) return nullptr;
  for (Entry* entry = buckets_.head(indexOf(set.hash)); entry != nullptr; entry = entry->next) {
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
  if (freeCount_ >= count_ / 8 + 64) {
    delete entry;
    return;
  }
  *entry = Entry{nullptr, nullptr, freeNodes_};
  freeNodes_ = entry;
  ++freeCount_;
}

HashTable::Entry* HashTable::newNode() {
  if (freeNodes_ == nullptr) return new Entry{nullptr, nullptr, nullptr};
  --freeCount_;
  return std::exchange(freeNodes_, freeNodes_->next);
}

void HashTable::clear() {
  buckets_.forEachHead([this](Entry*& head) {
    while (head != nullptr) recycle(std::exchange(head, head->next));
  });
  count_ = 0;
}

void HashTable::resetBuckets(int bucketCount) {
  clear();
  buckets_ = Buckets();
  modCount_ = 0;
  setBucketCount(bucketCount);
}
