#include "korassoc/itemsets/SimpleArray.h"

#include <gtest/gtest.h>

#include <climits>
#include <iostream>
#include <new>
#include <vector>

#include "tests/support/StreamCapture.h"

namespace {

void addAll(SimpleArray& array, const std::vector<int>& values) {
  for (int value : values) array.Add(value);
}

std::vector<int> contents(const SimpleArray& array) { return {array.data, array.data + array.count}; }

TEST(SimpleArray, StartsEmptyWithTheRoomAskedFor) {
  const SimpleArray array(4, 3);
  EXPECT_EQ(array.count, 0);
  EXPECT_EQ(array.capacity, 4);
  EXPECT_EQ(array.increment, 3);
}

TEST(SimpleArray, AddsBehindTheLastAndReturnsTheValue) {
  SimpleArray array(1, 1);
  EXPECT_EQ(array.Add(9), 9);
  EXPECT_EQ(array.Add(2), 2);
  EXPECT_EQ(contents(array), (std::vector<int>{9, 2}));
}

TEST(SimpleArray, RemoveAtTheFrontMovesTheLastThere) {
  SimpleArray array(3, 1);
  addAll(array, {5, 6, 7});
  EXPECT_EQ(array.RemoveAt(0), 7);
  EXPECT_EQ(contents(array), (std::vector<int>{7, 6}));
}

TEST(SimpleArray, RemoveAtTheLastReturnsTheLast) {
  SimpleArray array(3, 1);
  addAll(array, {5, 6, 7});
  EXPECT_EQ(array.RemoveAt(2), 7);
  EXPECT_EQ(contents(array), (std::vector<int>{5, 6}));
}

TEST(SimpleArray, RemoveTakesTheFirstEqualElement) {
  SimpleArray array(4, 1);
  addAll(array, {5, 6, 5, 7});
  EXPECT_TRUE(array.Remove(5));
  EXPECT_EQ(contents(array), (std::vector<int>{7, 6, 5}));
}

TEST(SimpleArray, RemoveOfAnAbsentValueChangesNothing) {
  SimpleArray array(2, 1);
  EXPECT_FALSE(array.Remove(4));
  addAll(array, {5, 6});
  EXPECT_FALSE(array.Remove(4));
  EXPECT_EQ(contents(array), (std::vector<int>{5, 6}));
}

TEST(SimpleArray, GrowsByTheIncrementWhenTheRoomRunsOut) {
  SimpleArray array(2, 2);
  const int expected[] = {2, 2, 4, 4, 6};
  for (int i = 0; i < 5; ++i) {
    array.Add(i);
    EXPECT_EQ(array.capacity, expected[i]) << "after " << i + 1;
  }
  EXPECT_EQ(contents(array), (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(SimpleArray, StoresAnIncrementBelowOneAndGrowsByOne) {
  for (int increment : {0, -7, INT_MIN}) {
    SimpleArray array(0, increment);
    EXPECT_EQ(array.increment, increment);
    addAll(array, {1, 2});
    EXPECT_EQ(contents(array), (std::vector<int>{1, 2}));
    EXPECT_EQ(array.capacity, 2);
  }
}

TEST(SimpleArray, AddsAnElementOfItsOwnWhileGrowing) {
  SimpleArray array(2, 2);
  addAll(array, {8, 9});
  EXPECT_EQ(array.Add(array.data[0]), 8);
  EXPECT_EQ(contents(array), (std::vector<int>{8, 9, 8}));
}

TEST(SimpleArray, RefusesToGrowPastTheLargestCount) {
  SimpleArray array(1, 1);
  array.count = array.capacity = INT_MAX;  // as if so many elements were there: growing looks at nothing else
  EXPECT_THROW(array.Add(1), std::bad_array_new_length);
  EXPECT_EQ(array.count, INT_MAX);
  EXPECT_EQ(array.capacity, INT_MAX);
  array.count = array.capacity = 1;
}

TEST(SimpleArray, RefusesANegativeCapacity) { EXPECT_THROW(SimpleArray(-1, 1), std::bad_array_new_length); }

TEST(SimpleArray, CompactGivesBackTheSpareRoom) {
  SimpleArray array(10, 1);
  addAll(array, {4, 5, 6});
  EXPECT_EQ(array.Compact(), 3);
  EXPECT_EQ(array.capacity, 3);
  EXPECT_EQ(contents(array), (std::vector<int>{4, 5, 6}));
  const int* const before = array.data;
  EXPECT_EQ(array.Compact(), 3);
  EXPECT_EQ(array.data, before);
}

TEST(SimpleArray, CompactOfAnEmptyArrayLeavesNoRoomAndStillGrows) {
  SimpleArray array(10, 2);
  EXPECT_EQ(array.Compact(), 0);
  EXPECT_EQ(array.capacity, 0);
  array.Add(1);
  EXPECT_EQ(array.capacity, 2);
}

TEST(SimpleArray, SetCapacityNeverCutsElements) {
  SimpleArray array(3, 1);
  addAll(array, {1, 2, 3});
  const int* const before = array.data;
  array.SetCapacity(1);
  EXPECT_EQ(array.capacity, 3);
  EXPECT_EQ(array.data, before);
  EXPECT_EQ(contents(array), (std::vector<int>{1, 2, 3}));
}

TEST(SimpleArray, SetCapacityGivesTheRoomAskedFor) {
  SimpleArray array(8, 1);
  addAll(array, {1, 2, 3});
  array.SetCapacity(20);
  EXPECT_EQ(array.capacity, 20);
  array.SetCapacity(4);
  EXPECT_EQ(array.capacity, 4);
  array.SetCapacity(-1);
  EXPECT_EQ(array.capacity, 3);
  EXPECT_EQ(contents(array), (std::vector<int>{1, 2, 3}));
}

TEST(SimpleArray, ClearKeepsTheRoom) {
  SimpleArray array(3, 1);
  addAll(array, {1, 2, 3});
  const int* const before = array.data;
  array.Clear();
  EXPECT_EQ(array.count, 0);
  EXPECT_EQ(array.capacity, 3);
  EXPECT_EQ(array.data, before);
}

TEST(SimpleArray, CopiesOwnTheirElements) {
  SimpleArray array(4, 3);
  addAll(array, {1, 2});
  SimpleArray copy(array);
  array.data[0] = 99;
  EXPECT_EQ(contents(copy), (std::vector<int>{1, 2}));
  EXPECT_EQ(copy.capacity, 4);
  EXPECT_EQ(copy.increment, 3);

  SimpleArray target(1, 1);
  target.Add(7);
  target = copy;
  copy.data[0] = 98;
  EXPECT_EQ(contents(target), (std::vector<int>{1, 2}));
  EXPECT_EQ(target.capacity, 4);
  EXPECT_EQ(target.increment, 3);
}

TEST(SimpleArray, SurvivesAssignmentToItself) {
  SimpleArray array(2, 1);
  addAll(array, {1, 2});
  const SimpleArray& self = array;
  array = self;
  EXPECT_EQ(contents(array), (std::vector<int>{1, 2}));
}

TEST(SimpleArray, DisplaysEachElementAndABlankThenTheLineEnd) {
  SimpleArray array(3, 1);
  addAll(array, {5, -6, 70000});
  const StreamCapture out(std::cout);
  array.Display();
  EXPECT_EQ(out.text(), "5 -6 70000 \n");
}

TEST(SimpleArray, DisplaysNothingButTheLineEndWhenEmpty) {
  const SimpleArray array(3, 1);
  const StreamCapture out(std::cout);
  array.Display();
  EXPECT_EQ(out.text(), "\n");
}

}  // namespace
