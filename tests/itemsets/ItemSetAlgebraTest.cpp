// Union, intersection, overlap and inclusion of ItemSets: the special operands by hand, the rest against
// std::set.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "korassoc/itemsets/ItemHash.h"
#include "korassoc/itemsets/ItemSet.h"
#include "korassoc/itemsets/OrderedArray.h"

namespace {

ItemSet setOf(const std::vector<int>& items) { return {items.data(), static_cast<int>(items.size())}; }

std::vector<int> itemsOf(const ItemSet& set) { return {set.getTheArray(), set.getTheArray() + set.length()}; }

std::vector<int> unionOf(const ItemSet& a, const ItemSet& b) {
  const std::unique_ptr<ItemSet> result(a.setUnion(&b));
  EXPECT_EQ(result->hashcode(), korassoc::detail::hashItems(result->getTheArray(), result->length()));
  return itemsOf(*result);
}

std::vector<int> intersectionOf(const ItemSet& a, const ItemSet* b) {
  const std::unique_ptr<ItemSet> result(a.intersect(b));
  EXPECT_EQ(result->hashcode(), korassoc::detail::hashItems(result->getTheArray(), result->length()));
  return itemsOf(*result);
}

TEST(ItemSetUnion, WritesCommonItemsOnce) {
  EXPECT_EQ(unionOf(setOf({1, 3, 5}), setOf({2, 3, 6})), (std::vector<int>{1, 2, 3, 5, 6}));
  EXPECT_EQ(unionOf(setOf({1, 2}), setOf({1, 2})), (std::vector<int>{1, 2}));
  EXPECT_EQ(unionOf(setOf({INT_MIN, 0}), setOf({INT_MAX})), (std::vector<int>{INT_MIN, 0, INT_MAX}));
}

TEST(ItemSetUnion, WithAnEmptySetIsACopyOfTheOther) {
  const ItemSet empty;
  const ItemSet set = setOf({4, 8});
  EXPECT_EQ(unionOf(empty, set), (std::vector<int>{4, 8}));
  EXPECT_EQ(unionOf(set, empty), (std::vector<int>{4, 8}));
  EXPECT_EQ(unionOf(empty, empty), std::vector<int>{});
}

TEST(ItemSetUnion, WithAnEmptySetCopiesAStaleHashCodeToo) {
  ItemSet stale = setOf({1, 2, 3});
  stale.RemoveItem(2);
  const ItemSet empty;
  EXPECT_EQ(std::unique_ptr<ItemSet>(empty.setUnion(&stale))->hashcode(), 54);
  EXPECT_EQ(std::unique_ptr<ItemSet>(stale.setUnion(&empty))->hashcode(), 54);
}

TEST(ItemSetUnion, PairsRepeatedItemsOneByOne) {
  EXPECT_EQ(unionOf(setOf({1, 1, 2}), setOf({1, 2, 2})), (std::vector<int>{1, 1, 2, 2}));
}

TEST(ItemSetUnion, WithItselfIsACopy) {
  const ItemSet set = setOf({4, 8});
  EXPECT_EQ(unionOf(set, set), (std::vector<int>{4, 8}));
}

TEST(ItemSetIntersection, WithNullIsACopy) {
  EXPECT_EQ(intersectionOf(setOf({4, 8}), nullptr), (std::vector<int>{4, 8}));
  EXPECT_EQ(intersectionOf(ItemSet(), nullptr), std::vector<int>{});
}

TEST(ItemSetIntersection, WithAnEmptySetIsEmpty) {
  const ItemSet empty;
  const ItemSet set = setOf({4, 8});
  EXPECT_EQ(intersectionOf(empty, &set), std::vector<int>{});
  EXPECT_EQ(intersectionOf(set, &empty), std::vector<int>{});
}

TEST(ItemSetIntersection, HoldsWhatBothHold) {
  const ItemSet other = setOf({2, 3, 5, 6});
  EXPECT_EQ(intersectionOf(setOf({1, 3, 5}), &other), (std::vector<int>{3, 5}));
  EXPECT_EQ(intersectionOf(setOf({7, 8}), &other), std::vector<int>{});
}

TEST(ItemSetOverlap, WithNullIsTrueEvenOfAnEmptySet) {
  EXPECT_TRUE(ItemSet(1).hasOverlap(nullptr));
  EXPECT_TRUE(ItemSet().hasOverlap(nullptr));
}

TEST(ItemSetOverlap, WithAnEmptySetIsFalse) {
  const ItemSet empty;
  const ItemSet set(3);
  EXPECT_FALSE(empty.hasOverlap(&set));
  EXPECT_FALSE(set.hasOverlap(&empty));
  EXPECT_FALSE(empty.hasOverlap(&empty));
  const OrderedArray none(0, 1);
  EXPECT_FALSE(set.hasOverlap(none));
}

TEST(ItemSetInclusion, InNullIsTrue) {
  EXPECT_TRUE(ItemSet(1).isSubsetOf(nullptr));
  EXPECT_TRUE(ItemSet().isSubsetOf(nullptr));
}

TEST(ItemSetInclusion, OfTheEmptySetIsTrueInAnySet) {
  const ItemSet empty;
  const ItemSet set = setOf({1, 2});
  EXPECT_TRUE(empty.isSubsetOf(&set));
  EXPECT_TRUE(empty.isSubsetOf(&empty));
  EXPECT_FALSE(set.isSubsetOf(&empty));
  ItemSet stale(5);  // empty, with the hash code of {5}
  stale.RemoveItem(5);
  EXPECT_TRUE(stale.isSubsetOf(&empty));
}

TEST(ItemSetInclusion, OfEqualLengthsIsEqualityWithTheHashCode) {
  const ItemSet set = setOf({1, 2});
  const ItemSet same = setOf({1, 2});
  const ItemSet other = setOf({1, 3});
  EXPECT_TRUE(set.isSubsetOf(&same));
  EXPECT_FALSE(set.isSubsetOf(&other));
  // the same hash code and length, other items
  const ItemSet a = setOf({11, 7});
  const ItemSet b = setOf({22, 14});
  ASSERT_EQ(a.hashcode(), b.hashcode());
  EXPECT_FALSE(a.isSubsetOf(&b));
}

TEST(ItemSetInclusion, OfAShorterSetIgnoresAStaleHashCode) {
  ItemSet stale = setOf({1, 2, 3});
  stale.RemoveItem(2);
  const ItemSet other = setOf({1, 2, 3});
  EXPECT_TRUE(stale.isSubsetOf(&other));
}

TEST(ItemSetInclusion, OfAShorterSetLooksAtEveryItem) {
  const ItemSet other = setOf({2, 4, 6, 8});
  for (const auto& items : std::vector<std::vector<int>>{{2}, {8}, {2, 8}, {4, 6}, {2, 4, 6}, {4, 6, 8}}) {
    EXPECT_TRUE(setOf(items).isSubsetOf(&other)) << items.front();
  }
  for (const auto& items :
       std::vector<std::vector<int>>{{1}, {3}, {9}, {2, 3}, {2, 9}, {1, 2}, {2, 4, 5}, {4, 6, 9}}) {
    EXPECT_FALSE(setOf(items).isSubsetOf(&other)) << items.front();
  }
}

TEST(ItemSetAlgebra, AgreesWithStdSetOnRandomSets) {
  std::mt19937 random(2024);
  const auto randomSet = [&random] {
    std::set<int> items;
    const int universe = 1 + static_cast<int>(random() % 24);
    for (auto n = random() % 13; n > 0; --n) {
      items.insert(static_cast<int>(random() % static_cast<unsigned>(universe)) - universe / 2);
    }
    return items;
  };
  int overlaps = 0;
  int inclusions = 0;
  for (int round = 0; round < 5000; ++round) {
    const std::set<int> a = randomSet();
    const std::set<int> b = randomSet();
    const ItemSet x = setOf({a.begin(), a.end()});
    const ItemSet y = setOf({b.begin(), b.end()});
    std::vector<int> both, common, left;
    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(both));
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(common));
    std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(left));
    const bool included = std::includes(b.begin(), b.end(), a.begin(), a.end());
    OrderedArray array(1, 4);
    for (int item : b) array.Add(item);

    ASSERT_EQ(unionOf(x, y), both) << "round " << round;
    ASSERT_EQ(intersectionOf(x, &y), common) << "round " << round;
    ASSERT_EQ(itemsOf(ItemSet(x, y)), left) << "round " << round;
    ASSERT_EQ(x.hasOverlap(&y), !common.empty()) << "round " << round;
    ASSERT_EQ(x.hasOverlap(array), !common.empty()) << "round " << round;
    ASSERT_EQ(x.isSubsetOf(&y), included) << "round " << round;
    ASSERT_EQ(x == y, a == b) << "round " << round;
    overlaps += common.empty() ? 0 : 1;
    inclusions += included ? 1 : 0;
  }
  EXPECT_GT(overlaps, 500);  // the random sets reach both answers
  EXPECT_LT(overlaps, 4500);
  EXPECT_GT(inclusions, 100);
  EXPECT_LT(inclusions, 4500);
}

TEST(ItemSetAlgebra, AgreesWithStdSetOnRandomInsertsAndRemovals) {
  std::mt19937 random(11);
  ItemSet set;
  std::set<int> expected;
  for (int step = 0; step < 3000; ++step) {
    const int item = static_cast<int>(random() % 40) - 20;
    ASSERT_EQ(set.hasItem(item), expected.count(item) == 1) << "step " << step;
    if (random() % 2 == 0) {
      if (expected.insert(item).second) set.addItem(item);
    } else {
      ASSERT_EQ(set.RemoveItem(item), expected.erase(item) == 1) << "step " << step;
    }
    ASSERT_EQ(itemsOf(set), std::vector<int>(expected.begin(), expected.end())) << "step " << step;
  }
}

}  // namespace
