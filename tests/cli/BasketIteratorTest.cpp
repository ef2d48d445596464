#include "cli/input/BasketIterator.h"

#include <gtest/gtest.h>

namespace korassoc::cli {
namespace {

Baskets twoBaskets() {
  BasketBuilder builder;
  {
    BasketBuilder::Lines lines(builder);
    lines.add(3);
    lines.add(8);
    lines.endLine();
    lines.add(5);
    lines.endLine();
  }
  return builder.take();
}

TEST(BasketIterator, HandsOutTheBasketsInOrderAsOftenAsAsked) {
  const Baskets baskets = twoBaskets();
  BasketIterator iterator(baskets);
  for (int pass = 0; pass < 3; ++pass) {
    ASSERT_TRUE(iterator.HasNext());
    const Transaction* basket = iterator.Next();
    ASSERT_EQ(basket->GetLength(), 2);
    EXPECT_EQ(basket->GetItem(0), 3);
    EXPECT_EQ(basket->GetItem(1), 8);
    EXPECT_EQ(basket->GetTransactionID(), 1);
    basket = iterator.Next();
    ASSERT_EQ(basket->GetLength(), 1);
    EXPECT_EQ(basket->GetItem(0), 5);
    EXPECT_EQ(basket->GetTransactionID(), 2);
    EXPECT_FALSE(iterator.HasNext());
    EXPECT_EQ(iterator.Next(), nullptr);
    EXPECT_EQ(pass % 2 == 0 ? iterator.Restart() : iterator.Rewind(), 0);
  }
}

TEST(BasketIterator, HasNothingWhereThereIsNothing) {
  const Baskets none;
  BasketIterator iterator(none);
  EXPECT_FALSE(iterator.HasNext());
  EXPECT_EQ(iterator.Next(), nullptr);
}

}  // namespace
}  // namespace korassoc::cli
