// How a real number becomes an integer bound on counts. Every such rounding of the system is one of these.
//
//   x                countBound   raisedCountBound
//   3                    3              3
//   3 + 2 ulp            3              3        an integer up to 100 machine epsilons counts as that integer
//   3.2                  3              4        the one cuts off, the other goes on to the next integer
//   0                    0              0
//   0.3                  0              1
//   1e300            2147483647     2147483647   what int cannot hold saturates
//   NaN                  0              1
//
// Negative bounds select nothing, and no caller tells one from another; they follow the same arithmetic.

#pragma once

namespace korassoc::detail {

// x cut off toward zero; what lies beyond int gives its nearest value, a NaN gives 0.
int saturatingInt(double x);

// a + b, or the value of int nearest to it.
int saturatingSum(int a, int b);

// The lenient bound: with r = (int)(x + 0.5), r when x and r are equal up to 100 machine epsilons, else x cut
// off. Of 10 transactions, a support of 0.25 asks for 2.
int countBound(double x);

// countBound() of a fraction of a count: the rule queries' bounds from supports, and the transactions that a
// null second phase adds.
int countBoundFromFraction(double count, double fraction);

// The largest count of an antecedent with which a set of the given count reaches minConfidence (a fraction):
// countBound(count / minConfidence). A minimum of 0 or less accepts every antecedent.
int antecedentCountBound(double count, double minConfidence);

// The maximum count of filtered rule creation, from fractions of count transactions. What decides between
// rounding and cutting off count * maxSupport is whether the rounded value equals count * minSupport. So it
// is always the cut-off value unless the two bounds meet; results on record depend on it.
int filteredMaxCountBound(double count, double minSupport, double maxSupport);

// The strict bound: with r as above, r when x and r are equal up to 100 machine epsilons, else x cut off,
// plus 1. What phase I asks of a set before it extends it.
int raisedCountBound(double x);

// The count below which pruning removes a set: minCount when it is an integer up to 100 machine epsilons,
// else the next integer. This is raisedCountBound().
int pruneCountBound(double minCount);

// The least count of a set in a complete count of transactionCount transactions: the smallest integer not
// below transactionCount * support, but 1 at least. An integer up to 100 machine epsilons counts as that
// integer.
int completeCountBound(double transactionCount, double support);

}  // namespace korassoc::detail
