// The in-memory store of the itemsets of one size.

#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <utility>

#include "korassoc/base/Export.h"
#include "korassoc/dictionary/BucketArray.h"
#include "korassoc/dictionary/BucketGrowth.h"
#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/CodeIndex.h"
#include "korassoc/dictionary/EntryNumbers.h"
#include "korassoc/dictionary/EntryPool.h"
#include "korassoc/dictionary/SetCounter.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/itemsets/ItemSetView.h"

namespace korassoc::detail {
class PackedLevel;
}  // namespace korassoc::detail

// HashTable maps itemsets to descriptors. The order of its buckets and chains is part of what users see
// (saved states, displays, the order of rules), so it follows from the insertions alone, on every platform:
//
//   buckets_  [ o | - | o | ... ]          bucket of a set = its hash code, unsigned, modulo bucketCount()
//               |       |
//               c       d -> a -> null     a new entry goes to the head of its chain
//
//   When an insertion would bring count() above threshold() = 0.75 bucketCount(), the table first grows to
//   2 bucketCount() + 1 buckets: every chain in turn, from its head, is moved entry by entry to the heads of
//   the new chains.
//
// The chains give the order and nothing else: the hash code puts hundreds of sets into one chain where items
// are few, so sets are found through an index of their own.
//
// Ownership: the destructor deletes the keys and descriptors that the table holds. remove() hands an entry to
//   the caller with all that it holds; clear() lets keys and descriptors go without deleting them. Entries
//   made by emplace() live in the table's pool with their key and first descriptor: they never outlive the
//   table, and release() is the only way to delete them.
// Cost: find and put O(1), remove O(1 + length of the chain). The bucket array is made at the first
//   insertion, and takes memory for the buckets in use only where the number of buckets is out of proportion.
// Memory of a set of up to four items made by emplace(), buckets and index included: about 125 bytes.
class KORASSOC_EXPORT HashTable {
 public:
  struct Entry {
    ItemSet* key;
    SetCounter* descriptor;
    Entry* next;
    std::uint32_t number = 0;  // by which the index knows it
    bool pooled = false;       // made by emplace(): to be deleted by release() alone
  };

  // initialBuckets below 1 counts as 1.
  explicit HashTable(int initialBuckets);
  // A table whose emplace() takes its entries from this pool, which it shares with others: what one of them
  // gives back serves all. The tables keep the pool alive.
  using Pool = korassoc::detail::EntryPool<Entry>;
  HashTable(int initialBuckets, std::shared_ptr<Pool> pool);
  // Copies the chains in their order; keys and descriptors are shared, so one of the two tables has to be
  // cleared before it is destroyed.
  HashTable(const HashTable& other);
  HashTable& operator=(const HashTable&) = delete;
  ~HashTable();

  // Adds set, of which the table takes ownership as of descriptor, and answers true; when an equal set is
  // stored, changes nothing (ownership included) and answers false.
  bool put(ItemSet* set, SetCounter* descriptor);
  // put() for callers that know that no equal set is stored.
  void putNew(ItemSet* set, SetCounter* descriptor);
  // putNew() of a copy of the set with a copy of the descriptor, both in a block of the table's own.
  Entry* emplace(const ItemSetView& set, const CarmaSetDescriptor& descriptor);
  // The same, the set given to be moved with its code (ItemCode).
  Entry* emplace(ItemSet&& set, std::uint64_t code, const CarmaSetDescriptor& descriptor);
  // The same with a descriptor of the caller's, which the table takes over.
  Entry* emplace(const ItemSetView& set, std::unique_ptr<SetCounter> descriptor);
  // An entry with these values that is not stored yet: what reading a record begins with. To be given back
  // with release() if it does not come to that.
  Entry* makeEntry(ItemSet&& set, const CarmaSetDescriptor& descriptor);
  // Makes room for this set, so that a put(), putNew() or emplace() of it that comes next does not fail.
  // leaving: how many entries the caller removes in between. The table grows with that call, not with this
  // one: nothing that can be seen changes when the set does not come.
  void makeRoomFor(const ItemSet& set, int leaving);
  // As put(), but replaces key and descriptor of an equal stored set, deleting the former ones.
  void putReplace(ItemSet* set, SetCounter* descriptor);
  // The entry of the set equal to the given one, or null; valid until it is removed.
  Entry* find(const ItemSet* set) const;
  Entry* find(const ItemSetView& set) const;
  // False when no set with this code is stored.
  bool mayHold(std::uint64_t code) const { return index_.likely(code) != Index::kNone; }
  // Starts to fetch what looking for a set with this code, or adding it, needs first.
  void prefetch(std::uint64_t code) const { index_.prefetchHome(code); }
  // Unlinks the entry of an equal set and returns it, or null. The caller owns the entry, its key and its
  // descriptor; the entry alone may be given back with recycle().
  Entry* remove(const ItemSet* set);
  Entry* remove(const ItemSetView& set);
  bool contains(const ItemSet* set) const;
  // Empties the table, keeping its nodes for reuse.
  void clear();
  // Empties the table and gives it this many buckets (at least 1): what filling it in a known order begins
  // with. modCount: how often it grew to them.
  void resetBuckets(int bucketCount, int modCount = 0);

  // Deletes the key and descriptor of an entry that was removed and takes the entry for reuse.
  void release(Entry* entry);
  // Takes an entry that was removed, whose key and descriptor are gone, for reuse.
  void recycle(Entry* entry);
  // Puts another descriptor, which the table owns from then on, into a stored entry and deletes the former
  // one.
  static void replaceDescriptor(Entry& entry, SetCounter* descriptor);

  int bucketCount() const { return growth_.bucketCount(); }
  // Entries held.
  int count() const { return count_; }
  // The most entries that fit before the table grows.
  int threshold() const { return growth_.threshold(); }
  // How often the table grew.
  int modCount() const { return growth_.modCount(); }
  // The chain of one bucket, 0 <= index < bucketCount(): its first entry or null.
  Entry* bucket(int index) const { return buckets_.head(static_cast<std::size_t>(index)); }

  // The bucket of a stored set.
  int bucketOf(const ItemSet& set) const { return static_cast<int>(growth_.bucketOf(set.hashcode())); }

  // Calls visit(Entry&) for every entry, bucket by bucket, each from its head. visit must not add or remove.
  template <typename Visitor>
  void forEach(Visitor&& visit) const {
    buckets_.forEachHead([&visit](Entry* head) {
      for (Entry* entry = head; entry != nullptr; entry = entry->next) visit(*entry);
    });
  }

  // Removes every entry for which drop(Entry&) answers true and hands it to discard(Entry*), in table order.
  // Neither may throw, nor ask or change the table.
  template <typename Drop, typename Discard>
  void sweep(Drop&& drop, Discard&& discard) {
    const bool rebuilds = lastSweepTookMost_;  // the index: the shorter way when fewer remain than go
    if (rebuilds) forgetAll();
    int removed = 0;
    buckets_.forEachHead([&](Entry*& head) {
      for (Entry** link = &head; *link != nullptr;) {
        Entry* entry = *link;
        if (!drop(*entry)) {
          if (rebuilds) enroll(entry);
          link = &entry->next;
          continue;
        }
        if (!rebuilds) strike(*entry);
        *link = std::exchange(entry->next, nullptr);
        discard(entry);
        ++removed;
      }
    });
    count_ -= removed;
    lastSweepTookMost_ = removed > count_;
    if (removed > 0) pool_->sortFree();
  }

  // The record in a binary state: "HT", the number of entries, then the records of key and descriptor of
  // each, in table order. Both return the bytes written or read. An entry without descriptor is written with
  // a plain counter of nothing.
  std::uint64_t writeObject(std::fstream& stream) const;
  // descriptorType tells what the entries hold: A for SetCounter, C for CarmaSetDescriptor (or SetCounter,
  // which sets from the spill store carry), L for LatticeSetDescriptor. Deletes what the table held, takes a
  // number of buckets that fits the number of entries, and puts the entries in order; a set that comes again
  // is dropped. A number of entries below 1 leaves the table empty, with its buckets, and the answer is 6.
  // Throws an IOException as a pointer, after a line on a diagnostic stream, for any other record and an
  // entry that cannot be read; the table is empty then.
  std::uint64_t readObject(std::fstream& stream, char descriptorType);

  // The record in an XML state: an object "HashtablePair" with the number of entries and an object "ISCPair"
  // for each, indented by so many tabs. Both return its lines. Reading is as above, but that it answers 0
  // where readObject() throws.
  std::uint64_t writeObjectXML(std::ostream& out, int tabs) const;
  std::uint64_t readObjectXML(std::ifstream& in, char descriptorType);

  // Reading for a table of sets of one size alone, in items: others are refused like entries that cannot be
  // read.
  // packed: where the sets go instead, in the same order, when all of them can be packed; may be null.
  using Packed = std::unique_ptr<korassoc::detail::PackedLevel>;
  std::uint64_t readLevel(std::fstream& stream, char descriptorType, int setLength, Packed* packed = nullptr);
  std::uint64_t readLevelXML(std::ifstream& in, char descriptorType, int setLength, Packed* packed = nullptr);

 private:
  using Index = korassoc::detail::CodeIndex;

  template <typename Matches>
  Entry* findEntry(std::uint64_t code, Matches&& matches) const;
  Entry** linkTo(const Entry& entry);
  // Removes the entry whose link is given: *link becomes the next of the chain.
  Entry* unlink(Entry** link);
  static void deleteKey(Entry& entry);
  void rehash();
  Entry* newNode();
  void deleteContents();
  void takeOver(Entry* first, int entries);
  void reserve(int hash, int others);
  Entry* entryAt(std::uint32_t number) const;
  void enroll(Entry* entry);
  void enroll(Entry* entry, std::uint64_t code);
  void strike(const Entry& entry);
  void forgetAll();
  void hang(Entry* entry, std::uint64_t code);

  korassoc::detail::BucketArray<Entry> buckets_;  // chain heads; empty until the first insertion
  korassoc::detail::BucketArray<Entry> grown_;    // those of the next growth, once there is room for it
  korassoc::detail::BucketGrowth growth_;
  int count_ = 0;
  bool lastSweepTookMost_ = false;
  int freeCount_ = 0;           // entries in it: enough to evict and add by turns
  Entry* freeNodes_ = nullptr;  // a chain of entries without contents
  Index index_;
  std::shared_ptr<Pool> pool_;
  korassoc::detail::EntryNumbers<Entry> others_;  // entries that are not the pool's
};
