#include "korassoc/dictionary/HashTable.h"

#include <algorithm>
#include <utility>

namespace {

using korassoc::detail::sameItems;
using Buckets = korassoc::detail::BucketArray<HashTable::Entry>;

constexpr std::uint32_t kElsewhere = 0x80000000U;  // marks the numbers of entries that are not the pool's

std::uint64_t codeOf(const ItemSet& set) {
  return korassoc::detail::setCode(set.getTheArray(), set.length());
}

}  // namespace

HashTable::HashTable(int initialBuckets) : HashTable(initialBuckets, std::make_shared<Pool>()) {}

HashTable::HashTable(int initialBuckets, std::shared_ptr<Pool> pool)
    : growth_(initialBuckets), pool_(std::move(pool)) {}

HashTable::HashTable(const HashTable& other) : growth_(other.bucketCount()), pool_(std::make_shared<Pool>()) {
  if (other.buckets_.empty()) return;
  buckets_ = Buckets(other.buckets_.size());
  buckets_.prepareFor(static_cast<std::size_t>(other.count_));
  Entry* last = nullptr;
  try {
    other.forEach([&](const Entry& entry) {
      const std::size_t index = growth_.bucketOf(entry.key->hashcode());
      Entry*& end = buckets_.head(index) == nullptr ? buckets_.link(index) : last->next;
      index_.makeRoom();
      others_.makeRoom();
      end = last = new Entry{entry.key, entry.descriptor, nullptr};
      enroll(last, codeOf(*entry.key));
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
  buckets_.forEachHead([this](Entry*& head) {
    while (head != nullptr) release(std::exchange(head, head->next));
  });
  index_.clear();
  others_.clear();
  count_ = 0;
}

void HashTable::deleteKey(Entry& entry) {
  if (!entry.pooled || !Pool::holdsKey(entry)) delete entry.key;
}

void HashTable::replaceDescriptor(Entry& entry, SetCounter* descriptor) {
  if (entry.descriptor == descriptor) return;
  if (!entry.pooled || !Pool::holdsDescriptor(entry)) delete entry.descriptor;
  entry.descriptor = descriptor;
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
  if (entry->key != set) {
    deleteKey(*entry);
    entry->key = set;
  }
  replaceDescriptor(*entry, descriptor);
}

void HashTable::putNew(ItemSet* set, SetCounter* descriptor) {
  reserve(set->hashcode(), count_);
  others_.makeRoom();
  Entry* node = newNode();
  *node = Entry{set, descriptor, nullptr};
  hang(node, codeOf(*set));
}

HashTable::Entry* HashTable::emplace(const ItemSetView& set, const CarmaSetDescriptor& descriptor) {
  return emplace(ItemSet(set.items, set.length), set.code, descriptor);
}

HashTable::Entry* HashTable::emplace(ItemSet&& set, std::uint64_t code,
                                     const CarmaSetDescriptor& descriptor) {
  reserve(set.hashcode(), count_);
  Entry* entry = pool_->take(std::move(set), descriptor);
  hang(entry, code);
  return entry;
}

HashTable::Entry* HashTable::emplace(const ItemSetView& set, std::unique_ptr<SetCounter> descriptor) {
  ItemSet key(set.items, set.length);
  reserve(key.hashcode(), count_);
  Entry* entry = pool_->take(std::move(key), descriptor.get());
  static_cast<void>(descriptor.release());
  hang(entry, set.code);
  return entry;
}

HashTable::Entry* HashTable::makeEntry(ItemSet&& set, const CarmaSetDescriptor& descriptor) {
  return pool_->take(std::move(set), descriptor);
}

void HashTable::makeRoomFor(const ItemSet& set, int leaving) {
  const int others = count_ - leaving;
  if (others >= threshold() && find(&set) != nullptr) return;  // it will be refused
  reserve(set.hashcode(), others);
  buckets_.prepareFor(static_cast<std::size_t>(others) + 1);  // the new head may tip the scales
  others_.makeRoom();
  pool_->makeRoom();
  if (freeNodes_ == nullptr) recycle(new Entry{nullptr, nullptr, nullptr});
}

// Takes the memory that one entry beside so many others needs in its chain, so that hang() cannot fail. The
// table grows there: whoever comes to nothing after this must not have changed the order of the sets.
void HashTable::reserve(int hash, int others) {
  if (buckets_.empty()) buckets_ = Buckets(static_cast<std::size_t>(bucketCount()));
  if (growth_.isDue(others)) {
    const auto grown = static_cast<std::size_t>(growth_.grown().bucketCount());
    if (grown_.size() != grown) grown_ = Buckets(grown);
    grown_.prepareFor(static_cast<std::size_t>(std::max(count_, others + 1)));
  } else {
    buckets_.prepareFor(static_cast<std::size_t>(others) + 1);
    buckets_.link(growth_.bucketOf(hash));
  }
  index_.makeRoom();
}

HashTable::Entry* HashTable::entryAt(std::uint32_t number) const {
  return (number & kElsewhere) == 0 ? pool_->at(number) : others_.at(number & ~kElsewhere);
}

// Makes an entry known to the index, and forgotten by it.
void HashTable::enroll(Entry* entry, std::uint64_t code) {
  if (!entry->pooled) entry->number = others_.add(entry) | kElsewhere;
  index_.add(code, entry->number);
}

void HashTable::enroll(Entry* entry) { enroll(entry, codeOf(*entry->key)); }

void HashTable::strike(const Entry& entry) {
  index_.remove(codeOf(*entry.key), entry.number);
  if (!entry.pooled) others_.remove(entry.number & ~kElsewhere);
}

void HashTable::forgetAll() {
  index_.empty();
  others_.clear();
}

// Puts an entry at the head of its chain, for which there is room.
void HashTable::hang(Entry* entry, std::uint64_t code) {
  if (growth_.isDue(count_)) rehash();
  Entry*& head = buckets_.link(growth_.bucketOf(entry->key->hashcode()));
  entry->next = head;
  head = entry;
  enroll(entry, code);
  ++count_;
}

void HashTable::rehash() {
  growth_ = growth_.grown();
  Buckets former = std::exchange(buckets_, std::exchange(grown_, Buckets()));
  former.forEachHead([this](Entry* head) {
    while (head != nullptr) {
      Entry* entry = std::exchange(head, head->next);
      Entry*& newHead = buckets_.link(growth_.bucketOf(entry->key->hashcode()));
      entry->next = newHead;
      newHead = entry;
    }
  });
}

template <typename Matches>
HashTable::Entry* HashTable::findEntry(std::uint64_t code, Matches&& matches) const {
  const std::uint32_t number =
      index_.find(code, [&](std::uint32_t asked) { return matches(*entryAt(asked)); });
  return number != Index::kNone ? entryAt(number) : nullptr;
}

HashTable::Entry* HashTable::find(const ItemSetView& set) const {
  return findEntry(set.code, [&set](const Entry& entry) {
    return entry.key->length() == set.length && sameItems(entry.key->getTheArray(), set.items, set.length);
  });
}

// Sets are equal when their hash codes are, too: a set that lost items since its code was computed finds
// nothing.
HashTable::Entry* HashTable::find(const ItemSet* set) const {
  return findEntry(codeOf(*set), [set](const Entry& entry) { return *entry.key == *set; });
}

// The link of its chain that leads to a stored entry.
HashTable::Entry** HashTable::linkTo(const Entry& entry) {
  Entry** link = &buckets_.link(growth_.bucketOf(entry.key->hashcode()));
  while (*link != &entry) link = &(*link)->next;
  return link;
}

HashTable::Entry* HashTable::remove(const ItemSetView& set) {
  const Entry* entry = find(set);
  return entry != nullptr ? unlink(linkTo(*entry)) : nullptr;
}

HashTable::Entry* HashTable::remove(const ItemSet* set) {
  const Entry* entry = find(set);
  return entry != nullptr ? unlink(linkTo(*entry)) : nullptr;
}

bool HashTable::contains(const ItemSet* set) const { return find(set) != nullptr; }

HashTable::Entry* HashTable::unlink(Entry** link) {
  Entry* entry = *link;
  *link = entry->next;
  entry->next = nullptr;
  strike(*entry);
  --count_;
  return entry;
}

void HashTable::release(Entry* entry) {
  deleteKey(*entry);
  replaceDescriptor(*entry, nullptr);
  recycle(entry);
}

// Takes an entry whose key and descriptor are gone or not the table's any more.
void HashTable::recycle(Entry* entry) {
  if (entry->pooled) {
    pool_->give(entry);
    return;
  }
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
  index_.clear();
  others_.clear();
  count_ = 0;
}

void HashTable::resetBuckets(int bucketCount, int modCount) {
  clear();
  buckets_ = Buckets();
  grown_ = Buckets();
  growth_ = korassoc::detail::BucketGrowth(bucketCount, modCount);
}
