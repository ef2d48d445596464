#include "cli/input/Baskets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korassoc::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

BasketBuilder builderOf(std::initializer_list<std::initializer_list<int>> texts) {
  BasketBuilder builder;
  {
    BasketBuilder::Lines lines(builder);
    for (const auto& text : texts) {
      for (const int item : text) lines.add(item);
      lines.endLine();
    }
  }
  return builder;
}

TEST(BasketBuilder, SortsEachBasketAndDropsRepeats) {
  BasketBuilder builder = builderOf({{3, 1, 2}, {5, 5}, {4, 7}, {2, 1, 2, 1}});
  EXPECT_EQ(builder.basketsWithRepeats(), 2U);
  const Baskets baskets = builder.take();
  ASSERT_EQ(baskets.size(), 4U);
  EXPECT_THAT(baskets[0], ElementsAre(1, 2, 3));
  EXPECT_THAT(baskets[1], ElementsAre(5));
  EXPECT_THAT(baskets[2], ElementsAre(4, 7));
  EXPECT_THAT(baskets[3], ElementsAre(1, 2));
  EXPECT_EQ(baskets.occurrences(), 8U);
  EXPECT_EQ(baskets.longest(), 3U);
}

TEST(BasketBuilder, MakesNoBasketOfALineWithoutItems) {
  BasketBuilder builder = builderOf({{}, {1}, {}, {}});
  EXPECT_EQ(builder.emptyLines(), 3U);
  EXPECT_EQ(builder.take().size(), 1U);
}

TEST(BasketBuilder, SortsAfterAnUnsortedBasketOnlyWhatNeedsIt) {
  BasketBuilder builder = builderOf({{2, 1}, {0, 3}});
  const Baskets baskets = builder.take();
  EXPECT_THAT(baskets[0], ElementsAre(1, 2));
  EXPECT_THAT(baskets[1], ElementsAre(0, 3));
}

TEST(BasketBuilder, KeepsBasketsAscendingUnderNewNumbers) {
  BasketBuilder builder = builderOf({{0, 1, 2}, {1, 2}});
  builder.renumber({9, 4, 6});
  const Baskets baskets = builder.take();
  EXPECT_THAT(baskets[0], ElementsAre(4, 6, 9));
  EXPECT_THAT(baskets[1], ElementsAre(4, 6));
}

TEST(BasketBuilder, LeavesOutAnOpenBasketWhenItIsTaken) {
  BasketBuilder builder = builderOf({{1}});
  BasketBuilder::Lines(builder).add(8);
  const Baskets baskets = builder.take();
  EXPECT_EQ(baskets.size(), 1U);
  EXPECT_EQ(baskets.occurrences(), 1U);
}

TEST(BasketBuilder, GrowsWithoutLosingItems) {
  BasketBuilder builder;
  {
    BasketBuilder::Lines lines(builder);
    for (int item = 0; item < 5000; ++item) {
      lines.add(item);
      if (item % 7 == 6) lines.endLine();
    }
    lines.endLine();
  }
  const Baskets baskets = builder.take();
  ASSERT_EQ(baskets.occurrences(), 5000U);
  for (std::size_t i = 0; i < baskets.size(); ++i) {
    for (std::size_t j = 0; j < baskets[i].size(); ++j) {
      ASSERT_EQ(baskets[i][j], static_cast<int>(7 * i + j));
    }
  }
}

TEST(BasketBuilder, TakesMoreItemsThanItWasToldToExpect) {
  BasketBuilder builder;
  builder.reserve(1);
  {
    BasketBuilder::Lines lines(builder);
    for (int item = 3000; item > 0; --item) lines.add(item);
    lines.endLine();
  }
  const Baskets baskets = builder.take();
  ASSERT_EQ(baskets[0].size(), 3000U);
  EXPECT_EQ(baskets[0].front(), 1);
  EXPECT_EQ(baskets[0].back(), 3000);
}

TEST(Baskets, ListsDistinctItemsHoweverFarApart) {
  EXPECT_THAT(Baskets().distinctItems(), IsEmpty());
  EXPECT_THAT(builderOf({{3, 1}, {1, 2}}).take().distinctItems(), ElementsAre(1, 2, 3));
  EXPECT_THAT(builderOf({{2147483647, 0}, {7, 0}}).take().distinctItems(), ElementsAre(0, 7, 2147483647));
}

}  // namespace
}  // namespace korassoc::cli
