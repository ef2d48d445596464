#include "tests/oracle/PlainTable.h"

#include <gtest/gtest.h>

namespace oracle {
namespace {

std::vector<Items> keys(const PlainTable::Chain& chain) {
  std::vector<Items> result;
  for (const PlainTable::Entry& entry : chain) result.push_back(entry.key);
  return result;
}

using Chain = std::vector<Items>;

TEST(PlainTable, GrowsWhenThreeQuartersWouldBeExceeded) {
  PlainTable table(2);
  const int expected[] = {2, 5, 5, 11, 11, 11, 11, 11, 23};  // thresholds 1, 3, 8, 17
  for (int i = 0; i < 9; ++i) {
    EXPECT_TRUE(table.put({i}, {}));
    EXPECT_EQ(table.bucketCount(), expected[i]) << "after put " << i + 1;
  }
  EXPECT_EQ(table.count(), 9);
}

TEST(PlainTable, PutsANewSetAtTheHeadOfItsChain) {
  PlainTable table(5);
  table.put({1}, {});   // 7 mod 5 = 2
  table.put({6}, {});   // 42 mod 5 = 2
  table.put({-1}, {});  // 2^32 - 7: 4294967289 mod 5 = 4
  EXPECT_EQ(keys(table.chain(2)), Chain({{6}, {1}}));
  EXPECT_EQ(keys(table.chain(4)), Chain({{-1}}));
}

TEST(PlainTable, RehashTurnsChainsAround) {
  PlainTable table(5);
  for (int item : {1, 56, 111}) table.put({item}, {});  // 7, 392, 777: 2 mod 5 and 7 mod 11
  EXPECT_EQ(keys(table.chain(2)), Chain({{111}, {56}, {1}}));
  table.put({2}, {});  // the fourth: 11 buckets; 14 mod 11 = 3
  ASSERT_EQ(table.bucketCount(), 11);
  EXPECT_EQ(keys(table.chain(7)), Chain({{1}, {56}, {111}}));
  EXPECT_EQ(keys(table.chain(3)), Chain({{2}}));
}

TEST(PlainTable, RefusesASetThatItHolds) {
  PlainTable table(2);
  EXPECT_TRUE(table.put({1, 2}, Counter{3, 4, 5, {}}));
  EXPECT_FALSE(table.put({1, 2}, Counter{9, 9, 9, {}}));
  EXPECT_EQ(table.bucketCount(), 2);  // a refused set does not make it grow
  EXPECT_EQ(table.find({1, 2})->count, 3);
  EXPECT_EQ(table.find({2, 1}), nullptr);
}

TEST(PlainTable, RemovesFromTheMiddleOfAChain) {
  PlainTable table(5);
  for (int item : {1, 6, 11}) table.put({item}, {});
  EXPECT_TRUE(table.remove({6}));
  EXPECT_FALSE(table.remove({6}));
  EXPECT_EQ(keys(table.chain(2)), Chain({{11}, {1}}));
  EXPECT_EQ(table.count(), 2);
}

TEST(PlainTable, KeepsItsBucketsWhenCleared) {
  PlainTable table(2);
  for (int item : {1, 2, 3, 4}) table.put({item}, {});
  table.clear();
  EXPECT_EQ(table.count(), 0);
  EXPECT_EQ(table.bucketCount(), 11);
  EXPECT_TRUE(table.entries().empty());
}

TEST(PlainTable, WalksBucketsThenChains) {
  PlainTable table(5);
  for (int item : {6, 1, 2}) table.put({item}, {});  // buckets 2, 2, 4
  std::vector<Items> order;
  for (const PlainTable::Entry* entry : table.entries()) order.push_back(entry->key);
  EXPECT_EQ(order, Chain({{1}, {6}, {2}}));
}

TEST(PlainTable, LeavesCountersWhereTheyAreWhenItGrows) {
  PlainTable table(1);
  table.put({1}, Counter{1, 0, 0, {}});
  const Counter* counter = table.find({1});
  for (int item = 2; item < 100; ++item) table.put({item}, {});
  EXPECT_EQ(table.find({1}), counter);
}

}  // namespace
}  // namespace oracle
