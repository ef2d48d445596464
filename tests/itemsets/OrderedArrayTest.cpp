#include "korassoc/itemsets/OrderedArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

OrderedArray arrayOf(const std::vector<int>& values) {
  OrderedArray array(2, 2);
  for (int value : values) array.Add(value);
  return array;
}

std::vector<int> contents(const SimpleArray& array) { return {array.data, array.data + array.count}; }

TEST(OrderedArray, KeepsWhatItIsFedAscending) {
  EXPECT_EQ(contents(arrayOf({5, 1, 3, 3})), (std::vector<int>{1, 3, 3, 5}));
}

TEST(OrderedArray, AddReturnsTheValueWhereverItEndsUp) {
  OrderedArray array = arrayOf({5, 1});
  EXPECT_EQ(array.Add(3), 3);
  EXPECT_EQ(array.Add(9), 9);
  EXPECT_EQ(array.Add(-4), -4);
  EXPECT_EQ(contents(array), (std::vector<int>{-4, 1, 3, 5, 9}));
}

TEST(OrderedArray, AddsAnElementOfItsOwnWhileGrowing) {
  OrderedArray array = arrayOf({4, 8});
  EXPECT_EQ(array.Add(array.data[0]), 4);
  EXPECT_EQ(contents(array), (std::vector<int>{4, 4, 8}));
}

TEST(OrderedArray, RemoveFindsPresentValuesOnly) {
  OrderedArray array = arrayOf({1, 3, 5});
  EXPECT_TRUE(array.Remove(3));
  EXPECT_EQ(contents(array), (std::vector<int>{1, 5}));
  EXPECT_FALSE(array.Remove(4));
  EXPECT_EQ(contents(array), (std::vector<int>{1, 5}));
}

TEST(OrderedArray, RemoveTakesAValueThatLiesInItself) {
  OrderedArray array = arrayOf({1, 3, 5});
  EXPECT_TRUE(array.Remove(array.data[0]));
  EXPECT_EQ(contents(array), (std::vector<int>{3, 5}));
}

TEST(OrderedArray, RemoveAtKeepsTheOrderAndReturnsTheElement) {
  OrderedArray array = arrayOf({1, 3, 5, 7});
  EXPECT_EQ(array.RemoveAt(1), 3);
  EXPECT_EQ(contents(array), (std::vector<int>{1, 5, 7}));
  EXPECT_EQ(array.RemoveAt(2), 7);
  EXPECT_EQ(array.RemoveAt(0), 1);
  EXPECT_EQ(contents(array), (std::vector<int>{5}));
}

TEST(OrderedArray, GrowsToFourOnTheThirdAddAndToSixOnTheFifth) {
  OrderedArray array(2, 2);
  const int expected[] = {2, 2, 4, 4, 6};
  for (int i = 0; i < 5; ++i) {
    array.Add(10 - i);
    EXPECT_EQ(array.capacity, expected[i]) << "after " << i + 1;
  }
}

TEST(OrderedArray, KeepsTheIncrementAsGiven) { EXPECT_EQ(OrderedArray(1, -3).increment, -3); }

TEST(OrderedArray, SetCapacityKeepsWhatItHolds) {
  OrderedArray array(3, 1);
  for (int value : {3, 2, 1}) array.Add(value);
  array.SetCapacity(1);
  EXPECT_EQ(array.capacity, 3);
  EXPECT_EQ(contents(array), (std::vector<int>{1, 2, 3}));
}

TEST(OrderedArray, IsASimpleArrayToItsUsers) {
  OrderedArray array(1, 1);
  SimpleArray& base = array;
  for (int value : {2, 1, 3}) base.Add(value);
  EXPECT_EQ(contents(base), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(base.RemoveAt(0), 1);
  EXPECT_EQ(contents(base), (std::vector<int>{2, 3}));
  EXPECT_TRUE(base.Remove(2));
  base.Clear();
  EXPECT_EQ(base.Compact(), 0);
}

TEST(OrderedArray, CopiesOwnTheirElements) {
  OrderedArray array = arrayOf({2, 1});
  OrderedArray copy(array);
  OrderedArray target(1, 1);
  target = array;
  array.RemoveAt(0);
  EXPECT_EQ(contents(copy), (std::vector<int>{1, 2}));
  EXPECT_EQ(contents(target), (std::vector<int>{1, 2}));
}

TEST(OrderedArray, AgreesWithASortedVectorOnRandomSteps) {
  std::mt19937 random(7);
  OrderedArray array(0, 3);
  std::vector<int> expected;
  for (int step = 0; step < 3000; ++step) {
    const int value = static_cast<int>(random() % 60) - 30;
    const auto place = std::find(expected.begin(), expected.end(), value);
    if (random() % 5 < 3) {
      array.Add(value);
      expected.insert(std::upper_bound(expected.begin(), expected.end(), value), value);
    } else if (random() % 2 == 0 || expected.empty()) {
      ASSERT_EQ(array.Remove(value), place != expected.end()) << "step " << step;
      if (place != expected.end()) expected.erase(place);
    } else {
      const auto index = random() % expected.size();
      ASSERT_EQ(array.RemoveAt(static_cast<int>(index)), expected[index]) << "step " << step;
      expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(index));
    }
    ASSERT_EQ(contents(array), expected) << "step " << step;
  }
}

}  // namespace
