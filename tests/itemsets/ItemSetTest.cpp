// What an ItemSet is made of: constructors, accessors, hash code, links, assignment, items in and out.

#include "korassoc/itemsets/ItemSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <type_traits>
#include <utility>
#include <vector>

#include "korassoc/itemsets/ItemHash.h"
#include "korassoc/itemsets/OrderedArray.h"

namespace {

ItemSet setOf(const std::vector<int>& items) { return {items.data(), static_cast<int>(items.size())}; }

std::vector<int> itemsOf(const ItemSet& set) { return {set.getTheArray(), set.getTheArray() + set.length()}; }

int freshHash(const ItemSet& set) { return korassoc::detail::hashItems(set.getTheArray(), set.length()); }

void expectFresh(const ItemSet& set, const std::vector<int>& items) {
  EXPECT_EQ(itemsOf(set), items);
  EXPECT_EQ(set.hashcode(), freshHash(set));
  EXPECT_EQ(set.getNext(), nullptr);
  EXPECT_EQ(set.getPrev(), nullptr);
}

OrderedArray arrayOf(const std::vector<int>& values) {
  OrderedArray array(8, 8);
  for (int value : values) array.Add(value);
  return array;
}

TEST(ItemSet, DefaultsToTheEmptySetWithoutArray) {
  const ItemSet set;
  expectFresh(set, {});
  EXPECT_EQ(set.getTheArray(), nullptr);
  EXPECT_EQ(set.hashcode(), 0);
}

TEST(ItemSet, OfOneItem) { expectFresh(ItemSet(-7), {-7}); }

TEST(ItemSet, HashesFiveTo35AndOneTwoTo17AndNothingToZero) {
  EXPECT_EQ(ItemSet(5).hashcode(), 35);
  EXPECT_EQ(setOf({1, 2}).hashcode(), 17);
  EXPECT_EQ(ItemSet().hashcode(), 0);
}

TEST(ItemSet, Of48ItemsTakesPrime7AgainAtPosition47) {
  std::vector<int> items(48, 0);
  items[47] = 9;
  EXPECT_EQ(setOf(items).hashcode(), 63);
}

TEST(ItemSet, CopiesItemsAndHashCodeButNoLinks) {
  ItemSet neighbour(1);
  ItemSet set = setOf({2, 4});
  set.setNext(&neighbour);
  set.setPrev(&neighbour);
  const ItemSet copy(set);
  expectFresh(copy, {2, 4});
  EXPECT_NE(copy.getTheArray(), set.getTheArray());
}

TEST(ItemSet, CopiesAStaleHashCodeAsItIs) {
  ItemSet set = setOf({1, 2, 3});
  set.RemoveItem(2);
  const ItemSet copy(set);
  EXPECT_EQ(copy.hashcode(), 54);
  EXPECT_TRUE(copy == set);
}

TEST(ItemSet, CopyOfAnEmptySetHasNoArray) {
  ItemSet cleared = setOf({1, 2});
  cleared.clear();
  ASSERT_NE(cleared.getTheArray(), nullptr);
  const ItemSet copy(cleared);
  expectFresh(copy, {});
  EXPECT_EQ(copy.getTheArray(), nullptr);
}

TEST(ItemSet, MovesItemsAndHashCodeButNoLinks) {
  ItemSet neighbour(1);
  ItemSet set = setOf({2, 4});
  set.setNext(&neighbour);
  ItemSet moved(std::move(set));
  expectFresh(moved, {2, 4});
  EXPECT_EQ(set.length(), 0);  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(set.hashcode(), 0);
  EXPECT_EQ(set.getNext(), &neighbour);
}

TEST(ItemSet, MovesWithoutThrowingSoThatVectorsMoveIt) {
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<ItemSet>);
}

TEST(ItemSet, ExtendsAnotherByAnItemInItsPlace) {
  const ItemSet set = setOf({10, 20});
  expectFresh(ItemSet(set, 5), {5, 10, 20});
  expectFresh(ItemSet(set, 15), {10, 15, 20});
  expectFresh(ItemSet(set, 25), {10, 20, 25});
  expectFresh(ItemSet(set, 20), {10, 20, 20});
  expectFresh(ItemSet(ItemSet(), 3), {3});
  expectFresh(set, {10, 20});
}

TEST(ItemSet, TakesTheElementsOfAnOrderedArray) {
  expectFresh(ItemSet(arrayOf({3, 1, 2})), {1, 2, 3});
  expectFresh(ItemSet(arrayOf({})), {});
}

TEST(ItemSet, SelectsByIndexFromAnOrderedArray) {
  expectFresh(ItemSet(arrayOf({10, 20, 30, 40}), arrayOf({0, 2, 3})), {10, 30, 40});
  expectFresh(ItemSet(arrayOf({10}), arrayOf({})), {});
}

TEST(ItemSet, SelectsByIndexFromAPlainArrayWhateverItsCount) {
  const int values[] = {10, 20, 30, 40};
  const int index[] = {1, 3};
  expectFresh(ItemSet(values, -99, index, 2), {20, 40});
  expectFresh(ItemSet(values, 4, index, 0), {});
}

TEST(ItemSet, TakesAPlainArrayAsItStands) {
  const int items[] = {3, 1, 1};
  expectFresh(ItemSet(items, 3), {3, 1, 1});
  expectFresh(ItemSet(items, 1), {3});
  expectFresh(ItemSet(items, 0), {});
  expectFresh(ItemSet(nullptr, 0), {});
}

TEST(ItemSet, RefusesANegativeLength) {
  const int items[] = {3};
  EXPECT_THROW(ItemSet(items, -1), std::bad_array_new_length);
  EXPECT_THROW(ItemSet(items, 1, items, INT_MIN), std::bad_array_new_length);
}

TEST(ItemSet, DifferenceKeepsTheOrderOfTheFirst) {
  const ItemSet set = setOf({1, 2, 3, 4, 5});
  expectFresh(ItemSet(set, setOf({2, 4})), {1, 3, 5});
  expectFresh(ItemSet(set, setOf({6, 7})), {1, 2, 3, 4, 5});
  expectFresh(ItemSet(set, set), {});
  expectFresh(ItemSet(set, ItemSet()), {1, 2, 3, 4, 5});
  expectFresh(ItemSet(ItemSet(), set), {});
  expectFresh(ItemSet(setOf({5, 1, 5, 2}), setOf({2, 9, 1})), {5, 5});  // neither need be sorted
}

TEST(ItemSet, DifferenceByOneItemKeepsASpareSlot) {
  ItemSet set(setOf({1, 2, 3}), setOf({2}));
  ASSERT_EQ(set.length(), 2);
  set.getTheArray()[2] = 77;  // a slot of the set's own: the address sanitizer says so
  expectFresh(set, {1, 3});
  const ItemSet last(ItemSet(4), ItemSet(4));
  EXPECT_NE(last.getTheArray(), nullptr);  // the only item removed: one slot, no item
  EXPECT_EQ(last.length(), 0);
}

TEST(ItemSet, DifferenceByMoreItemsIsExact) {
  const ItemSet none(setOf({1, 2}), setOf({1, 2}));
  EXPECT_EQ(none.getTheArray(), nullptr);
}

TEST(ItemSet, AssignmentLeavesTheLinksOfTheTarget) {
  ItemSet a(1);
  ItemSet b(2);
  ItemSet target = setOf({7, 8, 9});
  target.setNext(&a);
  target.setPrev(&b);
  const ItemSet source = setOf({4, 5});
  target = source;
  EXPECT_EQ(itemsOf(target), (std::vector<int>{4, 5}));
  EXPECT_EQ(target.hashcode(), source.hashcode());
  EXPECT_EQ(target.getNext(), &a);
  EXPECT_EQ(target.getPrev(), &b);
  target = setOf({1, 2, 3});
  EXPECT_EQ(itemsOf(target), (std::vector<int>{1, 2, 3}));
  EXPECT_EQ(target.getNext(), &a);
  EXPECT_EQ(target.getPrev(), &b);
}

TEST(ItemSet, AssignmentOfTheSameLengthKeepsTheArray) {
  ItemSet target = setOf({7, 8});
  const int* const array = target.getTheArray();
  const ItemSet source = setOf({4, 5});
  target = source;
  EXPECT_EQ(target.getTheArray(), array);
  EXPECT_EQ(itemsOf(target), (std::vector<int>{4, 5}));
}

TEST(ItemSet, SurvivesAssignmentToItself) {
  ItemSet set = setOf({7, 8});
  ItemSet& self = set;
  set = self;
  expectFresh(set, {7, 8});
  set = std::move(self);
  expectFresh(set, {7, 8});
}

TEST(ItemSet, AssignmentOfAnEmptySetEmpties) {
  ItemSet set = setOf({7, 8});
  const ItemSet empty;
  set = empty;
  expectFresh(set, {});
}

TEST(ItemSet, AddItemInsertsAndHashesAnew) {
  ItemSet set;
  for (int item : {5, 1, 9, 3}) set.addItem(item);
  expectFresh(set, {1, 3, 5, 9});
}

TEST(ItemSet, AddItemStoresARepeatTwice) {
  ItemSet set = setOf({1, 2});
  set.addItem(2);
  expectFresh(set, {1, 2, 2});
}

TEST(ItemSet, AddItemKeepsTheLinks) {
  ItemSet neighbour(1);
  ItemSet set(4);
  set.setNext(&neighbour);
  set.addItem(2);
  EXPECT_EQ(set.getNext(), &neighbour);
}

TEST(ItemSet, RemoveItemLeavesTheHashCodeStale) {
  ItemSet set = setOf({1, 2, 3});
  const int* const array = set.getTheArray();
  EXPECT_TRUE(set.RemoveItem(2));
  EXPECT_EQ(itemsOf(set), (std::vector<int>{1, 3}));
  EXPECT_EQ(set.getTheArray(), array);
  EXPECT_EQ(set.hashcode(), 54);  // that of {1, 2, 3}; {1, 3} has 7 xor 33 = 38
  const ItemSet fresh = setOf({1, 3});
  EXPECT_EQ(fresh.hashcode(), 38);
  EXPECT_FALSE(set == fresh);
  EXPECT_FALSE(set.isSubsetOf(&fresh));
}

TEST(ItemSet, RemoveItemOfAnAbsentItemChangesNothing) {
  ItemSet set = setOf({1, 3});
  EXPECT_FALSE(set.RemoveItem(2));
  expectFresh(set, {1, 3});
  ItemSet empty;
  EXPECT_FALSE(empty.RemoveItem(2));
}

TEST(ItemSet, AddItemAfterRemoveItemHashesAnew) {
  ItemSet set = setOf({1, 2, 3});
  set.RemoveItem(3);
  set.addItem(4);
  expectFresh(set, {1, 2, 4});
}

TEST(ItemSet, ClearKeepsTheArrayAndZeroesTheHashCode) {
  ItemSet set = setOf({1, 2});
  const int* const array = set.getTheArray();
  set.clear();
  expectFresh(set, {});
  EXPECT_EQ(set.getTheArray(), array);
}

TEST(ItemSet, FindsItemsByHalving) {
  const ItemSet set = setOf({-3, 0, 4, 9, 12});
  const int items[] = {-3, 0, 4, 9, 12};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(set.getItemIndex(items[i]), i);
    EXPECT_EQ(set.getItemAt(i), items[i]);
    EXPECT_TRUE(set.hasItem(items[i]));
  }
  for (int absent : {-4, 1, 5, 13, INT_MIN, INT_MAX}) {
    EXPECT_EQ(set.getItemIndex(absent), -1) << absent;
    EXPECT_FALSE(set.hasItem(absent)) << absent;
  }
  EXPECT_EQ(ItemSet().getItemIndex(0), -1);
  EXPECT_EQ(setOf({6, 6, 6}).getItemIndex(6), 1);  // the middle one is met first
  EXPECT_EQ(setOf({6, 6}).getItemIndex(6), 0);
}

TEST(ItemSet, LinksAreWhatTheyAreSetTo) {
  ItemSet a(1);
  ItemSet b(2);
  a.setNext(&b);
  b.setPrev(&a);
  EXPECT_EQ(a.getNext(), &b);
  EXPECT_EQ(b.getPrev(), &a);
  a.setNext(nullptr);
  EXPECT_EQ(a.getNext(), nullptr);
}

TEST(ItemSet, TheArrayIsWritable) {
  ItemSet set = setOf({1, 2});
  set.getTheArray()[1] = 5;
  EXPECT_EQ(set.getItemAt(1), 5);
  EXPECT_EQ(set.hashcode(), 17);  // as it was
}

TEST(ItemSet, EqualityLooksAtLengthsAndItemsBehindTheHashCode) {
  EXPECT_TRUE(setOf({1, 2}) == setOf({1, 2}));
  EXPECT_TRUE(ItemSet() == ItemSet());
  EXPECT_FALSE(setOf({1, 2}) == setOf({1, 3}));
  // 7 * 0 = 0: the same hash code, another length
  EXPECT_FALSE(ItemSet(0) == ItemSet());
  // 7 * 11 xor 11 * 7 = 0 = 7 * 22 xor 11 * 14: the same hash code and length, other items
  ASSERT_EQ(setOf({11, 7}).hashcode(), setOf({22, 14}).hashcode());
  EXPECT_FALSE(setOf({11, 7}) == setOf({22, 14}));
}

TEST(ItemSet, OrdersByLengthThenItemByItem) {
  const ItemSet ordered[] = {ItemSet(),     ItemSet(INT_MIN), ItemSet(-1),      ItemSet(0),
                             ItemSet(9),    setOf({-5, 9}),   setOf({1, 2}),    setOf({1, 3}),
                             setOf({2, 3}), setOf({1, 2, 3}), setOf({1, 2, 4}), setOf({1, 3, 4})};
  for (std::size_t i = 0; i < std::size(ordered); ++i) {
    for (std::size_t j = 0; j < std::size(ordered); ++j) {
      EXPECT_EQ(ordered[i] < ordered[j], i < j) << i << " " << j;
    }
  }
}

TEST(ItemSet, OrderIgnoresAStaleHashCode) {
  ItemSet set = setOf({1, 2, 3});
  set.RemoveItem(2);
  const ItemSet fresh = setOf({1, 3});
  EXPECT_FALSE(set < fresh);
  EXPECT_FALSE(fresh < set);
}

TEST(ItemSet, IsAKeyOfSortedContainers) {
  std::mt19937 random(5);
  std::set<ItemSet> sets;
  std::set<std::pair<std::size_t, std::vector<int>>> expected;
  for (int i = 0; i < 400; ++i) {
    std::set<int> items;
    for (auto n = random() % 4; n > 0; --n) items.insert(static_cast<int>(random() % 8) - 4);
    const std::vector<int> ascending(items.begin(), items.end());
    sets.insert(setOf(ascending));
    expected.emplace(ascending.size(), ascending);
  }
  ASSERT_EQ(sets.size(), expected.size());
  auto set = sets.begin();
  for (const auto& [size, items] : expected) EXPECT_EQ(itemsOf(*set++), items);
}

TEST(ItemSet, OmitLeavesOutAPositionNotAnItem) {
  const ItemSet set = setOf({10, 20, 30});
  expectFresh(*std::unique_ptr<ItemSet>(set.omit(0)), {20, 30});
  expectFresh(*std::unique_ptr<ItemSet>(set.omit(1)), {10, 30});
  expectFresh(*std::unique_ptr<ItemSet>(set.omit(2)), {10, 20});
  expectFresh(*std::unique_ptr<ItemSet>(ItemSet(4).omit(0)), {});
  expectFresh(set, {10, 20, 30});
}

}  // namespace
