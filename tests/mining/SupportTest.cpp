#include "korassoc/mining/Support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "korassoc/itemsets/CountBound.h"
#include "tests/mining/ExpectError.h"

namespace korassoc {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Support, GivesTheSmallestCountNotBelowAShareAndTheLargestNotAboveIt) {
  struct Case {
    double share;
    std::int64_t transactions, least, largest;
  };
  const Case cases[] = {{0.25, 10, 3, 2},     // 2.5: a quarter of ten transactions takes three of them
                        {0.3, 10, 3, 3},      // 0.3 * 10 is 3
                        {0.29, 100, 29, 29},  // 0.29 * 100 is 28.999999999999996
                        {0.07, 100, 7, 7},    // 0.07 * 100 is 7.000000000000001
                        {0.01, 9835, 99, 98},
                        {1, 5, 5, 5},
                        {0, 5, 1, 0},
                        {0.001, 5, 1, 0},
                        {0.5, 0, 1, 0},
                        {1, 2147483648, 2147483648, 2147483648},
                        {0.5, 20'000'000'001, 10'000'000'001, 10'000'000'000},
                        {1, std::numeric_limits<std::int64_t>::max(),
                         std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::max()}};
  for (const Case& c : cases) {
    const Support support = Support::fraction(c.share);
    EXPECT_EQ(support.leastCount(c.transactions), c.least) << c.share << " of " << c.transactions;
    EXPECT_EQ(support.largestCount(c.transactions), c.largest) << c.share << " of " << c.transactions;
  }
}

TEST(Support, MeetsEveryExactFraction) {
  for (std::int64_t n = 1; n <= 300; ++n) {
    for (std::int64_t k = 1; k <= n; ++k) {
      const Support support = Support::fraction(static_cast<double>(k) / static_cast<double>(n));
      EXPECT_EQ(support.leastCount(n), k) << k << " of " << n;
      EXPECT_EQ(support.largestCount(n), k) << k << " of " << n;
    }
  }
}

TEST(Support, ComesToTheCountThatTheCompletePassAsksFor) {
  for (int n = 1; n < 2000; n += 7) {
    for (int thousandths = 0; thousandths <= 1000; thousandths += 3) {
      const double share = thousandths / 1000.0;
      EXPECT_EQ(Support::fraction(share).leastCount(n), detail::completeCountBound(n, share))
          << share << " of " << n;
    }
  }
}

TEST(Support, OfACountIsThatCountWhateverTheTransactions) {
  const Support support = Support::count(25);
  EXPECT_EQ(support.leastCount(10), 25);
  EXPECT_EQ(support.largestCount(1'000'000), 25);
  EXPECT_EQ(Support::count(0).leastCount(10), 1);
  EXPECT_EQ(Support::count(0).largestCount(10), 0);
  EXPECT_TRUE(support.isCount());
  EXPECT_FALSE(Support::fraction(0.5).isCount());
}

TEST(Support, IsAShareOfTheTransactions) {
  EXPECT_EQ(Support::fraction(0.25).shareOf(10), 0.25);
  EXPECT_EQ(Support::count(25).shareOf(100), 0.25);
  EXPECT_EQ(Support::count(25).shareOf(10), 2.5);
}

TEST(Support, RefusesWhatIsNoFractionAndNoCount) {
  EXPECT_ERROR(Support::fraction(-0.001), Error::Kind::kInput, "no fraction from 0 to 1");
  EXPECT_ERROR(Support::fraction(1.001), Error::Kind::kInput, "no fraction from 0 to 1");
  EXPECT_ERROR(Support::fraction(kNaN), Error::Kind::kInput, "no fraction from 0 to 1");
  EXPECT_ERROR(Support::count(-1), Error::Kind::kInput, "below 0");
}

}  // namespace
}  // namespace korassoc
