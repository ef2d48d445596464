// How many transactions an itemset has to be in, as a share of them or as a number.

#pragma once

#include <cstdint>

#include "korassoc/base/Export.h"

namespace korassoc {

// A bound on counts: a fraction of the transactions, or a count of its own. What count a fraction comes to is
// worked out here and nowhere else, once for each number of transactions:
//
//   support              transactions   leastCount   largestCount
//   fraction(0.25)             10           3             2         2.5: three reach it, two do not go beyond
//   fraction(0.07)            100           7             7         7.000000000000001 is 7 within rounding
//   fraction(0)                10           1             0         nothing is in less than one transaction
//   count(25)                  10          25            25         whatever the number of transactions
//
// A product that is an integer within rounding (100 machine epsilons, as everywhere in the engine) counts as
// that integer. Beyond 10^13 transactions doubles are coarser than a single one.
class KORASSOC_EXPORT Support {
 public:
  // A share of the transactions, from 0 to 1. Throws Error (kInput) for anything else, NaN included.
  static Support fraction(double share);
  // A number of transactions, 0 or more. Throws Error (kInput) for a negative one.
  static Support count(std::int64_t transactions);

  bool isCount() const { return isCount_; }

  // The least count that reaches this support: the smallest integer not below its share of the transactions
  // (0 or more of them), and 1 at least.
  std::int64_t leastCount(std::int64_t transactions) const;
  // The largest count that does not go beyond this support: the largest integer not above its share.
  std::int64_t largestCount(std::int64_t transactions) const;
  // The share of the transactions (1 or more) that it is. That of a count may be above 1.
  double shareOf(std::int64_t transactions) const;

  friend bool operator==(const Support&, const Support&) = default;

 private:
  Support() = default;
  double bound(std::int64_t transactions) const;

  bool isCount_ = false;
  double share_ = 0;
  std::int64_t count_ = 0;
};

}  // namespace korassoc
