// How many itemsets the counts of pairs alone make certain.

#pragma once

#include <cstddef>
#include <vector>

#include "korassoc/engine/RankedRows.h"

namespace korassoc::detail {

// A number that the frequent itemsets of two to maxLength items whose least frequent item has a rank in
// [firstRank, endRank) reach in any case. Stops as soon as it is above enough, or when it has looked at some
// millions of cells; so it may stay far below the truth.
//
// Let n transactions hold the item e, and all but d_x of them also x. Of the n, then, all but at most the sum
// of d_x over the x of X hold e and X together (Bonferroni): where that sum leaves minCount, X + e is
// frequent. The sets counted here are those of k items X each of which has d_x <= (n - minCount) / k.
//
// counts: by rank, the transactions that hold the item. minCount: at least 1.
double certainItemsets(const RankedRows& rows, std::size_t firstRank, std::size_t endRank,
                       const std::vector<int>& counts, int minCount, std::size_t maxLength, double enough);

}  // namespace korassoc::detail
