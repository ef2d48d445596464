#include "korassoc/mining/ItemsetTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "korassoc/mining/ItemsetSorter.h"
#include "korassoc/mining/RuleOrder.h"
#include "tests/mining/CountedSets.h"
#include "tests/mining/ExpectError.h"

namespace korassoc {
namespace {

ItemsetTable::Columns columnsOf(const std::vector<Items>& sets) {
  ItemsetTable::Columns columns;
  for (const Items& set : sets) {
    columns.items.insert(columns.items.end(), set.begin(), set.end());
    columns.offsets.push_back(static_cast<std::int64_t>(columns.items.size()));
    columns.counts.push_back(static_cast<std::int64_t>(columns.counts.size()));
  }
  return columns;
}

TEST(ItemsetTable, ShowsItsColumnsRowByRow) {
  ItemsetTable::Columns columns = columnsOf({{3}, {-1, 7}, {7}});
  columns.largestCounts = {5, 6, 7};
  const ItemsetTable table = ItemsetTable::fromColumns(columns);
  EXPECT_EQ(table.size(), 3U);
  EXPECT_EQ(table.longest(), 2U);
  EXPECT_TRUE(table.hasBounds());
  EXPECT_EQ(listOf(table[1].items), (Items{-1, 7}));
  EXPECT_EQ(table[1].count, 1);
  EXPECT_EQ(table[1].largestCount, 6);
  std::size_t row = 0;
  for (const ItemsetView set : table) EXPECT_EQ(set.count, table.counts()[row++]);
  EXPECT_EQ(row, 3U);
  EXPECT_EQ(ItemsetTable::fromColumns(columnsOf({{3}}))[0].largestCount, 0);
  EXPECT_TRUE(ItemsetTable().empty());
  EXPECT_EQ(ItemsetTable().longest(), 0U);
}

TEST(ItemsetTable, RefusesColumnsThatDoNotFitTogether) {
  struct Case {
    ItemsetTable::Columns columns;
    const char* part;
  };
  const Case cases[] = {{{{}, {}, {}, {}}, "do not lead from 0 to 0"},
                        {{{1, 2}, {4, 5}, {1}, {}}, "do not lead from 0 to 2"},
                        {{{0, 1}, {4, 5}, {1}, {}}, "do not lead from 0 to 2"},
                        {{{0, 1, 1, 2}, {4, 5}, {1, 1, 1}, {}}, "itemset 1 has no items"},
                        {{{0, 2, 1, 2}, {4, 5}, {1, 1, 1}, {}}, "itemset 1 has no items"},
                        {{{0, 3, 2}, {4, 5}, {1, 1}, {}}, "itemset 0 ends at item 3 of 2"},
                        {{{0, 2}, {5, 4}, {1}, {}}, "the items of itemset 0 do not ascend"},
                        {{{0, 2}, {5, 5}, {1}, {}}, "the items of itemset 0 do not ascend"},
                        {{{0, 2}, {4, 5}, {}, {}}, "not one count for each of 1"},
                        {{{0, 2}, {4, 5}, {1}, {2, 3}}, "not one count for each of 1"},
                        {{{0, 2}, {4, 5}, {-1}, {}}, "the count of itemset 0 is below 0"},
                        {{{0, 2}, {4, 5}, {3}, {2}}, "largest count of itemset 0 is below its count"}};
  for (const Case& c : cases) EXPECT_ERROR(ItemsetTable::fromColumns(c.columns), Error::Kind::kInput, c.part);
}

TEST(ItemsetSorter, PutsSetsOfAnyLengthAndAnyItemsInOrder) {
  Dice dice(5);
  for (int run = 0; run < 12; ++run) {
    // Few items and long sets need several keys each; far items go through the hash map.
    const int items = dice.oneOf<int>({3, 30, 400, 100000});
    const int longest = std::min(items, dice.oneOf<int>({2, 5, 20}));
    const int factor = dice.oneOf<int>({1, 20011});
    std::set<Items> sets;
    for (int i = 0; i < 3000; ++i) {
      std::set<Item> set;
      for (int n = dice.between(1, longest); n > 0; --n) set.insert((dice.below(items) - items / 2) * factor);
      sets.emplace(set.begin(), set.end());
    }
    std::vector<Items> shuffled(sets.begin(), sets.end());
    dice.shuffle(shuffled);
    ItemsetTable::Columns columns = columnsOf(shuffled);
    const bool bounds = dice.chance(50);
    if (bounds) columns.largestCounts.assign(shuffled.size(), 100000);
    const ItemsetTable sorted = detail::ItemsetSorter::sorted(ItemsetTable::fromColumns(columns));
    ASSERT_EQ(sorted.size(), shuffled.size());
    ASSERT_EQ(sorted.hasBounds(), bounds);
    for (std::size_t row = 0; row < sorted.size(); ++row) {
      // The count says where the set was before.
      ASSERT_EQ(listOf(sorted[row].items), shuffled[static_cast<std::size_t>(sorted[row].count)]) << run;
      if (row > 0) {
        ASSERT_LT(compareItemsets(sorted[row - 1].items, sorted[row].items), 0) << run;
      }
    }
  }
}

TEST(ItemsetSorter, CopiesNothingThatIsInOrder) {
  const ItemsetTable table = ItemsetTable::fromColumns(columnsOf({{1}, {2}, {1, 2}}));
  EXPECT_EQ(detail::ItemsetSorter::sorted(table).items().data(), table.items().data());
}

TEST(ItemsetSorter, RefusesASetThatIsThereTwice) {
  std::vector<Items> sets = {{4}, {2, 9}, {2}, {2, 9}};
  EXPECT_ERROR(detail::ItemsetSorter::sorted(ItemsetTable::fromColumns(columnsOf(sets))), Error::Kind::kInput,
               "{2, 9} is there twice");
  sets.clear();
  for (Item item = 0; item < 5000; ++item) sets.push_back({item * 7 % 4999});  // 0 twice
  EXPECT_ERROR(detail::ItemsetSorter::sorted(ItemsetTable::fromColumns(columnsOf(sets))), Error::Kind::kInput,
               "{0} is there twice");
}

}  // namespace
}  // namespace korassoc
