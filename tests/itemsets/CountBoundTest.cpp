#include "korassoc/itemsets/CountBound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

namespace korassoc::detail {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(SaturatingInt, CutsOffTowardZeroAndStaysWithinInt) {
  struct Case {
    double x;
    int result;
  };
  const Case cases[] = {{0.0, 0},
                        {-0.0, 0},
                        {0.99, 0},
                        {-0.99, 0},
                        {3.2, 3},
                        {-3.2, -3},
                        {2147483646.9, 2147483646},
                        {2147483647.0, INT_MAX},
                        {2147483647.5, INT_MAX},
                        {2147483648.0, INT_MAX},
                        {-2147483647.9, -2147483647},
                        {-2147483648.0, INT_MIN},
                        {-2147483648.9, INT_MIN},
                        {-2147483649.0, INT_MIN},
                        {1e300, INT_MAX},
                        {-1e300, INT_MIN},
                        {kInfinity, INT_MAX},
                        {-kInfinity, INT_MIN},
                        {kNaN, 0}};
  for (const Case& c : cases) EXPECT_EQ(saturatingInt(c.x), c.result) << c.x;
}

TEST(SaturatingSum, StaysWithinInt) {
  EXPECT_EQ(saturatingSum(2, 3), 5);
  EXPECT_EQ(saturatingSum(-2, 3), 1);
  EXPECT_EQ(saturatingSum(INT_MAX, 0), INT_MAX);
  EXPECT_EQ(saturatingSum(INT_MAX - 1, 1), INT_MAX);
  EXPECT_EQ(saturatingSum(INT_MAX, 1), INT_MAX);
  EXPECT_EQ(saturatingSum(INT_MAX, INT_MAX), INT_MAX);
  EXPECT_EQ(saturatingSum(INT_MIN, -1), INT_MIN);
  EXPECT_EQ(saturatingSum(INT_MIN, INT_MIN), INT_MIN);
  EXPECT_EQ(saturatingSum(INT_MAX, INT_MIN), -1);
  EXPECT_EQ(saturatingSum(INT_MIN, INT_MAX), -1);
}

struct RoundingCase {
  double x;
  int lenient;  // countBound
  int strict;   // raisedCountBound
};

const RoundingCase kRoundings[] = {
    {0.0, 0, 0},
    {-0.0, 0, 0},
    {0.3, 0, 1},
    {0.5, 0, 1},  // 0.5 + 0.5 rounds to 1, which 0.5 is not
    {0.9, 0, 1},
    {5e-324, 0, 1},
    {1.0, 1, 1},
    {3.0, 3, 3},
    {3.0000000000000004, 3, 3},  // 1 ulp above
    {2.9999999999999996, 3, 3},  // 1 ulp below
    {3.2, 3, 4},
    {3.5, 3, 4},
    {3.7, 3, 4},
    {1.0 + 100 * kEpsilon, 1, 1},
    {1.0 + 101 * kEpsilon, 1, 2},
    {1.0 - 100 * kEpsilon, 1, 1},
    {1.0 - 101 * kEpsilon, 0, 1},
    {1e9 + 0.25, 1000000000, 1000000001},
    {-0.3, 0, 1},
    {-0.7, 0, 1},
    {-1.0, -1, 0},  // -1 + 0.5 cuts off to 0, so a negative integer is never found to be one
    {-3.0, -3, -2},
    {-3.2, -3, -2},
    {2147483646.0, 2147483646, 2147483646},
    {2147483646.4, 2147483646, INT_MAX},
    {2147483647.0, INT_MAX, INT_MAX},
    {2147483648.0, INT_MAX, INT_MAX},
    {-2147483648.0, INT_MIN, INT_MIN + 1},
    {1e300, INT_MAX, INT_MAX},
    {-1e300, INT_MIN, INT_MIN + 1},
    {kInfinity, INT_MAX, INT_MAX},
    {-kInfinity, INT_MIN, INT_MIN + 1},
    {kNaN, 0, 1},
};

TEST(CountBound, TakesIntegersUpToRoundingAndCutsOffTheRest) {
  for (const RoundingCase& c : kRoundings) EXPECT_EQ(countBound(c.x), c.lenient) << c.x;
}

TEST(RaisedCountBound, TakesIntegersUpToRoundingAndRaisesTheRest) {
  for (const RoundingCase& c : kRoundings) EXPECT_EQ(raisedCountBound(c.x), c.strict) << c.x;
}

TEST(PruneCountBound, TakesIntegersUpToRoundingAndRaisesTheRest) {
  for (const RoundingCase& c : kRoundings) EXPECT_EQ(pruneCountBound(c.x), c.strict) << c.x;
}

TEST(CountBound, OfAnIntegerAndItsNeighboursIsTheInteger) {
  for (int n : {1, 2, 3, 7, 10, 1000, 65537, 1000000007, INT_MAX - 1, INT_MAX}) {
    const double x = n;
    for (double near : {x, std::nextafter(x, 0.0), std::nextafter(x, kInfinity)}) {
      EXPECT_EQ(countBound(near), n) << n;
      EXPECT_EQ(raisedCountBound(near), n) << n;
      EXPECT_EQ(pruneCountBound(near), n) << n;
    }
  }
}

// The threshold of pruning, spelled out with its cases for 0 and for opposite signs, and without AlmostEqual.
std::int64_t spelledOutPruneBound(double minCount) {
  const auto cut = [](double x) -> std::int64_t {
    if (x != x) return 0;
    return static_cast<std::int64_t>(std::clamp(std::trunc(x), -2147483648.0, 2147483647.0));
  };
  const std::int64_t r = cut(minCount + 0.5);
  const std::int64_t raised = std::min<std::int64_t>(cut(minCount) + 1, INT_MAX);
  if (minCount == 0.0) return r;
  if (r == 0 || (r > 0) != (minCount > 0.0)) return raised;
  const double rounded = static_cast<double>(r);
  const double difference = std::fabs(std::fabs(minCount) - std::fabs(rounded));
  const double larger = std::max(std::fabs(minCount), std::fabs(rounded));
  return difference / larger <= 100 * 2.220446049250313e-16 ? r : raised;
}

TEST(PruneCountBound, AgreesWithItsCasesSpelledOutOnRandomNumbers) {
  std::mt19937_64 random(33);
  const auto check = [](double x) { ASSERT_EQ(pruneCountBound(x), spelledOutPruneBound(x)) << x; };
  for (const RoundingCase& c : kRoundings) check(c.x);
  for (int i = 0; i < 20000; ++i) {
    check(std::bit_cast<double>(random()));  // any double at all
    const double whole = static_cast<double>(static_cast<std::int32_t>(random()) >> (random() % 31));
    const int off = static_cast<int>(random() % 241) - 120;
    check(whole);
    check(whole * (1.0 + off * kEpsilon));
    check(whole + static_cast<double>(random() % 1000) / 1000.0);
  }
}

TEST(CountBoundFromFraction, IsLenient) {
  EXPECT_EQ(countBoundFromFraction(10, 0.25), 2);
  EXPECT_EQ(countBoundFromFraction(10, 0.3), 3);
  EXPECT_EQ(countBoundFromFraction(100, 0.29), 29);  // the product is 28.999999999999996
  EXPECT_EQ(countBoundFromFraction(0, 0.5), 0);
  EXPECT_EQ(countBoundFromFraction(10, 0.0), 0);
  EXPECT_EQ(countBoundFromFraction(10, 1.0), 10);
  EXPECT_EQ(countBoundFromFraction(INT_MAX, 1.0), INT_MAX);
  EXPECT_EQ(countBoundFromFraction(INT_MAX, 2.0), INT_MAX);
  EXPECT_EQ(countBoundFromFraction(INT_MAX, -2.0), INT_MIN);
  EXPECT_EQ(countBoundFromFraction(0, kInfinity), 0);
}

TEST(CountBoundFromFraction, RoundsDownAsIntegerArithmeticDoes) {
  for (int n = 0; n <= 300; ++n) {
    for (int q = 1; q <= 40; ++q) {
      for (int p = 0; p <= q; ++p) {
        ASSERT_EQ(countBoundFromFraction(n, static_cast<double>(p) / q), n * p / q)
            << n << " * " << p << " / " << q;
      }
    }
  }
}

TEST(RaisedCountBound, RoundsUpAsIntegerArithmeticDoes) {
  for (int n = 0; n <= 300; ++n) {
    for (int q = 1; q <= 40; ++q) {
      for (int p = 0; p <= q; ++p) {
        ASSERT_EQ(raisedCountBound(n * (static_cast<double>(p) / q)), (n * p + q - 1) / q)
            << n << " * " << p << " / " << q;
      }
    }
  }
}

TEST(AntecedentCountBound, IsTheLenientBoundOfTheQuotient) {
  EXPECT_EQ(antecedentCountBound(3, 0.3), 10);
  EXPECT_EQ(antecedentCountBound(7, 0.7), 10);
  EXPECT_EQ(antecedentCountBound(2, 0.8), 2);  // 2.5
  EXPECT_EQ(antecedentCountBound(5, 1.0), 5);
  EXPECT_EQ(antecedentCountBound(5, 2.0), 2);
  EXPECT_EQ(antecedentCountBound(0, 0.5), 0);
  EXPECT_EQ(antecedentCountBound(5, kNaN), 0);
}

TEST(AntecedentCountBound, AcceptsEverythingForAMinimumOfZeroOrLess) {
  for (double minConfidence : {0.0, -0.0, -0.5, -kInfinity}) {
    EXPECT_EQ(antecedentCountBound(5, minConfidence), INT_MAX) << minConfidence;
    EXPECT_EQ(antecedentCountBound(0, minConfidence), INT_MAX) << minConfidence;
  }
  EXPECT_EQ(antecedentCountBound(5, 1e-300), INT_MAX);
}

TEST(FilteredMaxCountBound, RoundsOnlyWhereTheMinimumMeetsTheRoundedMaximum) {
  // 100 * 0.29 is 28.999999999999996: the same number cut off to 28 or rounded to 29
  EXPECT_EQ(filteredMaxCountBound(100, 0.1, 0.29), 28);
  EXPECT_EQ(filteredMaxCountBound(100, 0.29, 0.29), 29);
  // the rounded maximum of 2.6 is 3, which a minimum above the maximum may meet
  EXPECT_EQ(filteredMaxCountBound(10, 0.3, 0.26), 3);
  EXPECT_EQ(filteredMaxCountBound(10, 0.2, 0.26), 2);
  EXPECT_EQ(filteredMaxCountBound(10, 0.25, 0.8), 8);
  EXPECT_EQ(filteredMaxCountBound(10, 0.0, 1.0), 10);
  EXPECT_EQ(filteredMaxCountBound(10, 0.0, 0.04), 0);
  EXPECT_EQ(filteredMaxCountBound(10, 0.0, 1e300), INT_MAX);
  EXPECT_EQ(filteredMaxCountBound(10, kNaN, 0.26), 2);
  EXPECT_EQ(filteredMaxCountBound(10, 0.1, kNaN), 0);
}

TEST(CompleteCountBound, IsTheSmallestIntegerNotBelowTheProductAndOneAtLeast) {
  EXPECT_EQ(completeCountBound(10, 0.25), 3);
  EXPECT_EQ(completeCountBound(10, 0.3), 3);
  EXPECT_EQ(completeCountBound(100, 0.29), 29);
  EXPECT_EQ(completeCountBound(3, 0.1 + 0.2), 1);
  EXPECT_EQ(completeCountBound(10, 0.1 + 0.2), 3);  // the product is 3.0000000000000004
  EXPECT_EQ(completeCountBound(10, 0.0), 1);
  EXPECT_EQ(completeCountBound(0, 0.5), 1);
  EXPECT_EQ(completeCountBound(10, -3.0), 1);
  EXPECT_EQ(completeCountBound(10, 1e300), INT_MAX);
  EXPECT_EQ(completeCountBound(10, -1e300), 1);
  EXPECT_EQ(completeCountBound(10, kNaN), 1);
}

TEST(CompleteCountBound, RoundsUpAsIntegerArithmeticDoes) {
  for (int n = 0; n <= 300; ++n) {
    for (int q = 1; q <= 40; ++q) {
      for (int p = 0; p <= q; ++p) {
        ASSERT_EQ(completeCountBound(n, static_cast<double>(p) / q), std::max(1, (n * p + q - 1) / q))
            << n << " * " << p << " / " << q;
      }
    }
  }
}

}  // namespace
}  // namespace korassoc::detail
