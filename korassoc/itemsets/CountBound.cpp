#include "korassoc/itemsets/CountBound.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "korassoc/itemsets/KorPower.h"

namespace korassoc::detail {

namespace {

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

// How far from an integer, in machine epsilons, a number still counts as that integer.
constexpr double kTolerance = 100.0;

int nearest(double x) { return saturatingInt(x + 0.5); }

bool isAlmost(double x, int r) { return KorAssocMath::KorPower::AlmostEqual(x, r, kTolerance); }

}  // namespace

int saturatingInt(double x) {
  if (std::isnan(x)) {
    return 0;
  }
  if (x >= kMost) {
    return kMost;
  }
  if (x <= kLeast) {
    return kLeast;
  }
  return static_cast<int>(x);
}

int saturatingSum(int a, int b) {
  if (b > 0) {
    return a > kMost - b ? kMost : a + b;
  }
  return a < kLeast - b ? kLeast : a + b;
}

int countBound(double x) {
  const int r = nearest(x);
  return isAlmost(x, r) ? r : saturatingInt(x);
}

int countBoundFromFraction(double count, double fraction) { return countBound(count * fraction); }

int antecedentCountBound(double count, double minConfidence) {
  return minConfidence <= 0.0 ? kMost : countBound(count / minConfidence);
}

int filteredMaxCountBound(double count, double minSupport, double maxSupport) {
  const double most = count * maxSupport;
  const int r = nearest(most);
  return isAlmost(count * minSupport, r) ? r : saturatingInt(most);
}

int raisedCountBound(double x) {
  const int r = nearest(x);
  return isAlmost(x, r) ? r : saturatingSum(saturatingInt(x), 1);
}

int pruneCountBound(double minCount) { return raisedCountBound(minCount); }

int completeCountBound(double transactionCount, double support) {
  return std::max(1, raisedCountBound(transactionCount * support));
}

}  // namespace korassoc::detail
