// The sets of one size while the first pass counts them.

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "korassoc/dictionary/BucketGrowth.h"
#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/CodeIndex.h"
#include "korassoc/dictionary/HashTable.h"
#include "korassoc/dictionary/PackedRecord.h"
#include "korassoc/itemsets/ItemSetView.h"

namespace korassoc::detail {

// PackedLevel holds what a HashTable of sets with CarmaSetDescriptors would hold, in the same order of
// buckets and chains, without their objects:
//
//   chunks_   [ count | TID | max missed | item | item ]  [ count | ... ]      one record a set, by number
//   index_    from the code of a set to its number
//
// The first pass adds sets at the end and counts them; pruning closes the gaps. No chain is kept: a new set
// goes to the head of its chain, so within a bucket the chain is the order of the numbers, from the largest
// down. Growing moves every chain in turn, entry by entry, to the heads of the new ones, which is another
// order of the sets stored until then. Nobody sees it before the order is asked for, so that growing is noted
// (growths_) and carried out then, on those that are left; pruning takes sets out of an order and changes
// nothing else about it.
//
// Cost: find, add O(1); prune O(n), in the order of memory; the order O(n log n) for every growth.
// Memory of a pair: 20 bytes and the index's 11 to 21.
class PackedLevel {
 public:
  // For sets of so many items, at least one.
  PackedLevel(int length, int initialBuckets);
  // Whether it can hold the set: one of its length with a CarmaSetDescriptor stored at a transaction.
  bool canHold(const ItemSet& set, const SetCounter& descriptor) const;

  int count() const { return static_cast<int>(count_); }

  // The set with this code for which matches(items) answers true, if it is stored.
  template <typename Matches>
  PackedRecord find(std::uint64_t code, Matches&& matches) {
    PackedRecord found;
    index_.find(code, [&](Number number) {
      const PackedRecord asked(cells(number));
      if (!matches(asked.items())) return false;
      found = asked;
      return true;
    });
    return found;
  }
  PackedRecord find(const ItemSetView& set);
  // Starts to fetch what find() looks at first.
  void prefetch(std::uint64_t code) const { index_.prefetchHome(code); }

  // Adds a set of the level's length that is not stored yet. Changes nothing when memory runs out.
  void add(const ItemSetView& set, const CarmaSetDescriptor& descriptor);

  // Removes the sets with a smaller count than bound; returns how many. Does not fail.
  int removeBelow(int bound);

  // Puts the sets into an empty table.
  void fill(HashTable& table) const;
  // Calls visit(const ItemSet&, const CarmaSetDescriptor&) for every set, in the order of the table.
  template <typename Visitor>
  void forEach(Visitor&& visit) const {
    for (const Number number : tableOrder()) visit(set(number), descriptor(number));
  }
  // The same in the order in which they were added.
  template <typename Visitor>
  void forEachAdded(Visitor&& visit) const {
    for (Number number = 0; number < count_; ++number) visit(set(number), descriptor(number));
  }

 private:
  using Number = std::uint32_t;

  // The table grew when it held so many sets.
  struct Growth {
    Number sets;
    BucketGrowth former;
  };

  // Chunks, so that a level that grows is not copied: of so many cells, or of one record that has more.
  static constexpr std::size_t kChunkCells = 8192;

  int* cells(Number number) const {
    return chunks_[number >> chunkBits_].get() + (number & ((Number{1} << chunkBits_) - 1)) * stride_;
  }
  const int* items(Number number) const { return cells(number) + PackedRecord::kCells; }
  ItemSet set(Number number) const { return ItemSet(items(number), length_); }
  CarmaSetDescriptor descriptor(Number number) const { return PackedRecord(cells(number)).descriptor(); }
  void makeRoom();
  void append(const int* items, const CarmaSetDescriptor& descriptor);
  void enroll(Number number) { index_.add(setCode(items(number), length_), number); }
  void closeGap(Number from, Number to);
  std::vector<Number> chainOrder() const;
  std::vector<Number> tableOrder() const;
  void sortByBuckets(const BucketGrowth& buckets, std::vector<Number>& order, std::size_t end) const;

  int length_;
  std::size_t stride_;  // cells of a record
  int chunkBits_;       // a chunk has two to the power of it records
  std::size_t count_ = 0;
  std::vector<std::unique_ptr<int[]>> chunks_;
  CodeIndex index_;
  BucketGrowth buckets_;
  std::vector<Growth> growths_;  // in their order
};

}  // namespace korassoc::detail
