// The in-place forms of ItemSet: length and array stay, items and hash code change.

#include <gtest/gtest.h>

#include <vector>

#include "korassoc/itemsets/ItemHash.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/itemsets/OrderedArray.h"

namespace {

// A set of three items, and what must not change while it is updated.
class ItemSetUpdate : public ::testing::Test {
 protected:
  ItemSetUpdate() {
    set.setNext(&neighbour);
    array = set.getTheArray();
  }

  void expectItems(const std::vector<int>& items) const {
    EXPECT_EQ(std::vector<int>(set.getTheArray(), set.getTheArray() + set.length()), items);
    EXPECT_EQ(set.hashcode(), korassoc::detail::hashItems(items.data(), static_cast<int>(items.size())));
    EXPECT_EQ(set.getTheArray(), array);
    EXPECT_EQ(set.getNext(), &neighbour);
  }

  static OrderedArray arrayOf(const std::vector<int>& values) {
    OrderedArray result(8, 8);
    for (int value : values) result.Add(value);
    return result;
  }

  static constexpr int kItems[] = {1, 2, 3};
  ItemSet neighbour{9};
  ItemSet set{kItems, 3};
  const int* array = nullptr;
};

TEST_F(ItemSetUpdate, OfAnItemReplacesTheFirst) {
  set.updateItemSet(-7);
  expectItems({-7, 2, 3});
}

TEST_F(ItemSetUpdate, OfAnItemAtAPositionReplacesThatOne) {
  set.updateItemSet(8, 2);
  expectItems({1, 2, 8});
  set.updateItemSet(8, 0);
  expectItems({8, 2, 8});
}

TEST_F(ItemSetUpdate, FromAnOrderedArrayTakesAsManyAsTheSetHolds) {
  set.updateItemSet(arrayOf({4, 5, 6, 7, 8}));
  expectItems({4, 5, 6});
}

TEST_F(ItemSetUpdate, FromAnOrderedArrayLooksAtItsDataNotItsCount) {
  OrderedArray values = arrayOf({4, 5, 6});
  values.count = 1;
  set.updateItemSet(values);
  expectItems({4, 5, 6});
}

TEST_F(ItemSetUpdate, FromAPlainArrayIgnoresTheCount) {
  const int values[] = {4, 5, 6, 7};
  set.updateItemSet(values, -1);
  expectItems({4, 5, 6});
}

TEST_F(ItemSetUpdate, FromItsOwnArrayBringsTheHashCodeUpToDate) {
  set.getTheArray()[1] = 20;
  set.updateItemSet(set.getTheArray(), 3);
  expectItems({1, 20, 3});
}

TEST_F(ItemSetUpdate, FromItsOwnArrayMovedByOneTakesTheItemsAsTheyWere) {
  ASSERT_TRUE(set.RemoveItem(3));  // the array still has three slots
  set.updateItemSet(set.getTheArray() + 1, 2);
  EXPECT_EQ(set.getItemAt(0), 2);
  EXPECT_EQ(set.getItemAt(1), 3);
}

TEST_F(ItemSetUpdate, FromOrderedArraysSelectsByIndex) {
  set.updateItemSet(arrayOf({10, 20, 30, 40, 50}), arrayOf({0, 2, 4}));
  expectItems({10, 30, 50});
}

TEST_F(ItemSetUpdate, FromOrderedArraysIgnoresTheCounts) {
  OrderedArray values = arrayOf({10, 20, 30});
  OrderedArray index = arrayOf({0, 1, 2});
  values.count = 0;
  index.count = 0;
  set.updateItemSet(values, index);
  expectItems({10, 20, 30});
}

TEST_F(ItemSetUpdate, FromPlainArraysSelectsByIndexAndIgnoresTheCounts) {
  const int values[] = {10, 20, 30, 40};
  const int index[] = {3, 0, 1, 2};
  set.updateItemSet(values, -5, index, 0);
  expectItems({40, 10, 20});
}

TEST(ItemSetUpdateOfAnEmptySet, ChangesNothing) {
  ItemSet empty;
  const int values[] = {1};
  const int index[] = {0};
  empty.updateItemSet(values, 1);
  empty.updateItemSet(nullptr, 0);
  empty.updateItemSet(values, 1, index, 1);
  EXPECT_EQ(empty.length(), 0);
  EXPECT_EQ(empty.hashcode(), 0);
}

TEST(ItemSetUpdateAfterRemoveItem, HashesTheItemsLeft) {
  const int items[] = {1, 2, 3};
  ItemSet set(items, 3);
  set.RemoveItem(2);
  set.updateItemSet(1);
  EXPECT_EQ(set.hashcode(), 38);  // {1, 3}: 7 xor 33
}

}  // namespace
