// Enumerates all frequent itemsets of ranked rows, depth first.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "korassoc/engine/PopCount.h"
#include "korassoc/engine/TransactionIndex.h"

namespace korassoc::detail {

// Takes the itemsets as they are found.
class ItemsetSink {
 public:
  virtual ~ItemsetSink() = default;

  // n ranks, in no particular order, and the number of transactions that hold them all. False stops the
  // enumeration.
  virtual bool take(const std::uint32_t* ranks, std::size_t n, int count) = 0;
  // Asked now and then in between. False stops the enumeration, too.
  virtual bool goesOn() = 0;
};

// Every itemset is found once, from its least frequent item on: each item is extended by more frequent ones.
//
// The transactions that hold an item are swept once to count all extensions of it together ("occurrence
// deliver": Uno, Kiyomi & Arimura, FIMI 2004). The frequent extensions and these transactions make a smaller
// table, which is treated like the whole one, or, where it is dense enough for that to be the shorter way, as
// bit sets that are intersected (Zaki, Parthasarathy, Ogihara & Li, KDD 1997: "Eclat"). Cost: the sum over
// the itemsets found of the rows that hold them, shortened to the frequent extensions; a 64th of that where
// bits are intersected.
class ItemsetEnumerator {
 public:
  // minCount: at least 1. maxLength: most items of a set. The sink and the rows are lent.
  ItemsetEnumerator(int minCount, std::size_t maxLength, ItemsetSink& sink);
  ~ItemsetEnumerator();

  // Finds the sets of two and more items whose least frequent item has a rank in [firstRank, endRank). False
  // when the sink stopped it.
  bool enumerate(const RankedRows& rows, std::size_t firstRank, std::size_t endRank);

 private:
  struct Level;   // the table that stands for the transactions holding the path
  struct Member;  // an extension of the path with its bit set

  Level& level(std::size_t depth);
  bool extendAll(const RankedRows& rows, std::size_t firstRank, std::size_t endRank, std::size_t depth);
  bool project(const RankedRows& rows, std::uint32_t rank, Level& next, std::size_t depth);
  bool intersectAll(Level& table, std::size_t depth);
  bool intersect(const std::vector<Member>& members, std::size_t words, std::size_t depth);
  bool take(std::size_t pathLength, int count) { return sink_.take(path_.data(), pathLength, count); }

  int minCount_;
  std::size_t maxLength_;
  ItemsetSink& sink_;
  IntersectAndCount intersectAndCount_;
  std::vector<std::uint32_t> path_;             // ranks of the current set in the outermost rows
  std::vector<std::unique_ptr<Level>> levels_;  // by depth, reused
};

}  // namespace korassoc::detail
