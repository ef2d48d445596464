#include "tests/oracle/Items.h"

#include <gtest/gtest.h>

namespace oracle {
namespace {

TEST(OracleItems, HashIsTheXorOfPrimeMultiples) {
  EXPECT_EQ(hashCode({}), 0U);
  EXPECT_EQ(hashCode({5}), 35U);
  EXPECT_EQ(hashCode({1, 2}), 17U);                // 7 xor 22
  EXPECT_EQ(hashCode({1, 2, 3}), 54U);             // 7 xor 22 xor 39
  EXPECT_EQ(hashCode({-1}), 4294967289U);          // 2^32 - 7
  EXPECT_EQ(hashCode({1000000000}), 2705032704U);  // 7e9 - 2^32
}

TEST(OracleItems, HashStartsOverWithTheFirstPrimeAfter47Positions) {
  Items zeros(47, 0);
  zeros.push_back(3);
  EXPECT_EQ(hashCode(zeros), 21U);  // position 47: 7 * 3
  zeros.assign(46, 0);
  zeros.push_back(3);
  EXPECT_EQ(hashCode(zeros), 687U);  // position 46: 229 * 3
}

TEST(OracleItems, AddsAndTakesOutOneItem) {
  EXPECT_EQ(with({}, 4), Items({4}));
  EXPECT_EQ(with({1, 5}, 3), Items({1, 3, 5}));
  EXPECT_EQ(with({1, 5}, 9), Items({1, 5, 9}));
  EXPECT_EQ(with({1, 5}, 5), Items({1, 5, 5}));
  EXPECT_EQ(without({1, 3, 5}, 0), Items({3, 5}));
  EXPECT_EQ(without({1, 3, 5}, 2), Items({1, 3}));
  EXPECT_EQ(difference({1, 2, 3}, {2}), Items({1, 3}));
  EXPECT_EQ(difference({1, 1, 2}, {1}), Items({2}));
}

TEST(OracleItems, ShorterSetsComeFirst) {
  EXPECT_TRUE(comesBefore({9}, {1, 2}));
  EXPECT_TRUE(comesBefore({1, 2}, {1, 3}));
  EXPECT_FALSE(comesBefore({1, 3}, {1, 2}));
  EXPECT_FALSE(comesBefore({1, 2}, {1, 2}));
  EXPECT_FALSE(comesBefore({}, {}));
}

TEST(OracleItems, CountsEveryChoiceOfPositions) {
  struct Case {
    Items set;
    Items transaction;
    long long occurrences;
  };
  const Case cases[] = {{{}, {}, 1},
                        {{}, {1}, 1},
                        {{1}, {}, 0},
                        {{1, 2}, {1, 2, 3}, 1},
                        {{1, 4}, {1, 2, 3}, 0},
                        {{1, 2}, {1, 1, 2}, 2},
                        {{1, 1}, {1}, 0},
                        {{1, 1}, {1, 1, 1}, 3},
                        {{1, 1, 2}, {1, 1, 1, 2, 2}, 6},
                        {{1, 1, 1}, {1, 1, 1, 1, 1}, 10}};
  for (const Case& c : cases) {
    EXPECT_EQ(occurrences(c.set, c.transaction), c.occurrences)
        << testing::PrintToString(c.set) << " in " << testing::PrintToString(c.transaction);
  }
}

}  // namespace
}  // namespace oracle
