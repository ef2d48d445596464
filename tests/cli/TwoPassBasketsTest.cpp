#include "cli/input/TwoPassBaskets.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace korassoc::cli {
namespace {

using ::testing::ElementsAre;

Baskets make(const std::vector<std::vector<int>>& rows) {
  BasketBuilder builder;
  {
    BasketBuilder::Lines lines(builder);
    for (const auto& row : rows) {
      for (const int item : row) lines.add(item);
      lines.endLine();
    }
  }
  return builder.take();
}

std::vector<std::vector<int>> readAll(MultiPassTransIter& source) {
  std::vector<std::vector<int>> rows;
  while (source.HasNext()) {
    const Transaction* basket = source.Next();
    EXPECT_EQ(basket->GetTransactionID(), static_cast<int>(rows.size()) + 1);
    std::vector<int> row;
    for (int i = 0; i < basket->GetLength(); ++i) row.push_back(basket->GetItem(i));
    rows.push_back(row);
  }
  EXPECT_EQ(source.Next(), nullptr);
  return rows;
}

// 1 is in one basket, 2 in four, 3 in three, 4 in two.
const std::vector<std::vector<int>> kRows = {{1, 2, 3}, {2, 3, 4}, {2, 3}, {2, 4}};

TEST(TwoPassBaskets, ShowsThemWholeUnlessToldOtherwise) {
  const Baskets baskets = make(kRows);
  TwoPassBaskets source(baskets);
  EXPECT_EQ(readAll(source), kRows);
  EXPECT_EQ(source.Restart(), 0);
  EXPECT_EQ(readAll(source), kRows);
}

TEST(TwoPassBaskets, ShowTheFirstPassTheMostFrequentItemsAlone) {
  const Baskets baskets = make(kRows);
  TwoPassBaskets source(baskets);
  source.shorten(2, 0, 4);
  EXPECT_THAT(readAll(source),
              ElementsAre(ElementsAre(2, 3), ElementsAre(2, 3), ElementsAre(2, 3), ElementsAre(2, 4)));
}

TEST(TwoPassBaskets, TakeTheSmallerOfEquallyFrequentItems) {
  const Baskets baskets = make({{5, 9}, {5, 9}});
  TwoPassBaskets source(baskets);
  source.shorten(1, 0, 2);
  EXPECT_THAT(readAll(source), ElementsAre(ElementsAre(5), ElementsAre(5)));
}

TEST(TwoPassBaskets, KeepRareItemsFromTheFirstPassAsTheSampleCountsThem) {
  const Baskets baskets = make(kRows);
  TwoPassBaskets source(baskets);
  source.shorten(9, 2, 4);
  EXPECT_THAT(readAll(source),
              ElementsAre(ElementsAre(2, 3), ElementsAre(2, 3, 4), ElementsAre(2, 3), ElementsAre(2, 4)));

  TwoPassBaskets sampled(baskets);
  sampled.shorten(9, 2, 2);  // which know of one basket with 4
  EXPECT_THAT(readAll(sampled),
              ElementsAre(ElementsAre(2, 3), ElementsAre(2, 3), ElementsAre(2, 3), ElementsAre(2)));
}

TEST(TwoPassBaskets, ShowTheSecondPassEverything) {
  const Baskets baskets = make(kRows);
  TwoPassBaskets source(baskets);
  source.shorten(1, 2, 4);
  static_cast<void>(readAll(source));
  EXPECT_EQ(source.Restart(), 0);
  EXPECT_EQ(readAll(source), kRows);
}

TEST(TwoPassBaskets, TellTheNumberOfTheBasketThatComesInTheFirstPassOnly) {
  const Baskets baskets = make({{1}, {2}});
  TwoPassBaskets source(baskets);
  std::vector<int> told;
  source.setListener([&told](int number) { told.push_back(number); });
  static_cast<void>(readAll(source));
  EXPECT_THAT(told, ElementsAre(1, 2, 3));
  source.Restart();
  static_cast<void>(readAll(source));
  EXPECT_THAT(told, ElementsAre(1, 2, 3));
}

}  // namespace
}  // namespace korassoc::cli
