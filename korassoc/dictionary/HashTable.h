// The in-memory store of the itemsets of one size.

#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "korassoc/base/Export.h"
#include "korassoc/dictionary/SetCounter.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/itemsets/ItemSetView.h"

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
// Ownership: the destructor deletes the keys and descriptors that the table holds. remove() hands an entry to
// the
//   caller with all that it holds; clear() lets keys and descriptors go without deleting them.
// Cost: find, put, remove O(1 + length of the chain). The bucket array is made at the first insertion.
class KORASSOC_EXPORT HashTable {
 public:
  struct Entry {
    ItemSet* key;
    SetCounter* descriptor;
    Entry* next;
  };

  // initialBuckets below 1 counts as 1.
  explicit HashTable(int initialBuckets);
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
  // As put(), but replaces key and descriptor of an equal stored set, deleting the former ones.
  void putReplace(ItemSet* set, SetCounter* descriptor);
  // The entry of the set equal to the given one, or null; valid until it is removed.
  Entry* find(const ItemSet* set) const;
  Entry* find(const ItemSetView& set) const;
  // Unlinks the entry of an equal set and returns it, or null. The caller owns the entry, its key and its
  // descriptor; the entry alone may be given back with recycle().
  Entry* remove(const ItemSet* set);
  Entry* remove(const ItemSetView& set);
  bool contains(const ItemSet* set) const;
  // Empties the table, keeping its nodes for reuse.
  void clear();
  // Empties the table and gives it this many buckets (at least 1): what reading a saved table begins with.
  void resetBuckets(int bucketCount);

  // Removes the entry whose link is given: *link becomes the next of the chain. For sweeps that remove as
  // they walk; returns the entry as remove() does.
  Entry* unlink(Entry** link);
  // Takes an entry that was removed, without its key and descriptor, for reuse.
  void recycle(Entry* entry);

  int bucketCount() const { return bucketCount_; }
  // Entries held.
  int count() const { return count_; }
  // The most entries that fit before the table grows.
  int threshold() const { return threshold_; }
  // How often the table grew.
  int modCount() const { return modCount_; }
  // The chain of one bucket, 0 <= index < bucketCount(): its first entry or null.
  Entry* bucket(int index) const {
    return buckets_.empty() ? nullptr : buckets_[static_cast<std::size_t>(index)];
  }

  // Calls visit(Entry&) for every entry, bucket by bucket, each from its head. visit must not add or remove.
  template <typename Visitor>
  void forEach(Visitor&& visit) const {
    for (Entry* head : buckets_) {
      for (Entry* entry = head; entry != nullptr; entry = entry->next) visit(*entry);
    }
  }

  // Removes every entry for which drop(Entry&) answers true and hands it to discard(Entry*), in table order.
  template <typename Drop, typename Discard>
  void sweep(Drop&& drop, Discard&& discard) {
    for (Entry*& head : buckets_) {
      Entry** link = &head;
      while (*link != nullptr) {
        if (drop(**link)) {
          discard(unlink(link));
        } else {
          link = &(*link)->next;
        }
      }
    }
  }

 private:
  std::size_t indexOf(int hash) const {
    return static_cast<std::size_t>(static_cast<std::uint32_t>(hash) %
                                    static_cast<std::uint32_t>(bucketCount_));
  }
  Entry** findLink(const ItemSetView& set);
  void rehash();
  void setBucketCount(int count);
  Entry* newNode();
  void deleteContents();

  static constexpr float kLoadFactor = 0.75F;

  std::vector<Entry*> buckets_;  // chain heads; empty until the first insertion
  int bucketCount_;
  int count_ = 0;
  int threshold_ = 0;
  int modCount_ = 0;
  Entry* freeNodes_ = nullptr;  // a chain of entries without contents
};
