// Counting itemsets over a source, without an engine: all that are frequent, or given ones.

#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "korassoc/base/Export.h"
#include "korassoc/engine/ItemsetColumns.h"
#include "korassoc/engine/MultiPassTransIter.h"

namespace korassoc {

enum class CountOutcome {
  kDone,
  kCancelled,
  kNotRestarted,         // the source cannot be read, or not once more
  kTooManyItemsets,      // more itemsets reach the support than there may be
  kTooManyTransactions,  // more than 2,147,483,647
};

// How a count is watched. Either function may be empty.
struct CountWatch {
  // Asked at every transaction and often in between; true ends the count.
  std::function<bool()> cancelled = {};
  // Told the number of transactions read so far, after each of the first reading.
  std::function<void(int transactions)> onRead = {};
};

// What a count of all itemsets is to find and may take.
struct CompleteCountLimits {
  // A fraction of the transactions. The count asked for is the smallest integer not below it, 1 at least; an
  // integer up to rounding noise counts as that integer.
  double minSupport = 0;
  int maxLength = 10;  // items of an itemset; 0 or less finds none
  int maxItemsets = std::numeric_limits<int>::max();
  std::uint64_t indexBytes = std::uint64_t{1} << 30;  // for the transactions kept: see CarmaSettings
};

// Finds every itemset of at most maxLength items in at least minSupport of the source's transactions, as
// RunPhaseIIcomplete() does, but hands them out as they are: no lattice is made. The sets are in the order of
// their lengths, those of one length in an order that depends on the transactions alone. An item that a
// transaction repeats counts once. Reads the source to its end, once or as often as the limits call for.
//
// itemsets is replaced when the outcome is kDone, else left as it is. Exceptions of the source and of the
// watch are let through, and std::bad_alloc.
KORASSOC_EXPORT CountOutcome countAllItemsets(MultiPassTransIter& source, const CompleteCountLimits& limits,
                                              const CountWatch& watch, ItemsetColumns& itemsets);

// Counts the given itemsets, whatever their counts so far, in one reading of the source: sets of any lengths,
// in any order, also some that stand there twice or occur in no transaction. An item that a transaction
// repeats counts once. The counts and the number of transactions are replaced, and maxMissed emptied, when
// the outcome is kDone; else all is left as it is. Exceptions as above.
//
// Cost: as of finding as many itemsets. Memory: about 30 bytes a set and 16 for each of its items; what a
// block of transactions takes, whatever their number.
KORASSOC_EXPORT CountOutcome countGivenItemsets(MultiPassTransIter& source, const CountWatch& watch,
                                                ItemsetColumns& itemsets);

}  // namespace korassoc
