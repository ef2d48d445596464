// How a document numbers the items and the itemsets of its rules.

#include "korassoc/xml/export/RuleItemsetIndex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

#include "tests/xml/export/SmallModel.h"

namespace korassoc::detail {
namespace {

using ::testing::ElementsAre;

std::vector<Items> itemsetsOf(const RuleItemsetIndex& index) {
  std::vector<Items> sets;
  for (const ItemSet* set : index.itemsets())
    sets.emplace_back(set->getTheArray(), set->getTheArray() + set->length());
  return sets;
}

TEST(ItemIndex, NumbersDistinctItemsInAscendingOrderFromOne) {
  const ItemIndex index({9, -4, 7, 9, 2, 7});
  EXPECT_EQ(index.count(), 4);
  const int ascending[] = {-4, 2, 7, 9};
  for (int reference = 1; reference <= 4; ++reference) {
    EXPECT_EQ(index.itemAt(reference), ascending[reference - 1]);
    EXPECT_EQ(index.referenceOf(ascending[reference - 1]), reference);
  }
}

TEST(ItemIndex, AnswersZeroForAnItemThatIsNotListed) {
  EXPECT_EQ(ItemIndex({2, 7}).referenceOf(5), 0);
  EXPECT_EQ(ItemIndex({}).referenceOf(5), 0);
}

TEST(RuleItemsetIndex, OfNoRulesIsEmpty) {
  const std::vector<AssociationRule> rules;
  const RuleItemsetIndex index(rules);
  EXPECT_EQ(index.items().count(), 0);
  EXPECT_EQ(index.numberOfItemsets(), 0);
  EXPECT_EQ(index.idOf(itemSet({})), -1);
}

TEST(RuleItemsetIndex, GivesBothSidesOfARuleAndItsReverseTheSameIds) {
  const std::vector<AssociationRule> rules = {ruleOf({1, 2}, {3}), ruleOf({3}, {1, 2})};
  const RuleItemsetIndex index(rules);
  EXPECT_THAT(itemsetsOf(index), ElementsAre(Items{3}, Items{1, 2}));
  EXPECT_EQ(index.idOf(itemSet({3})), 1);
  EXPECT_EQ(index.idOf(itemSet({1, 2})), 2);
}

TEST(RuleItemsetIndex, OrdersItemsetsByLengthAndThenByTheirItems) {
  const std::vector<AssociationRule> rules = {ruleOf({2, 9}, {4}), ruleOf({-1, 7, 8}, {2}),
                                              ruleOf({}, {2, 4}), ruleOf({4}, {2, 9})};
  const RuleItemsetIndex index(rules);
  EXPECT_THAT(itemsetsOf(index),
              ElementsAre(Items{}, Items{2}, Items{4}, Items{2, 4}, Items{2, 9}, Items{-1, 7, 8}));
  EXPECT_EQ(index.items().count(), 6);
  EXPECT_EQ(index.items().referenceOf(-1), 1);
  EXPECT_EQ(index.items().referenceOf(9), 6);
}

TEST(RuleItemsetIndex, AnswersMinusOneForAnItemsetOfNoRule) {
  const std::vector<AssociationRule> rules = {ruleOf({1, 2}, {3})};
  const RuleItemsetIndex index(rules);
  EXPECT_EQ(index.idOf(itemSet({1})), -1);
  EXPECT_EQ(index.idOf(itemSet({1, 2, 3})), -1);
}

TEST(RuleItemsetIndex, AgreesWithAnOrderedMapOnRandomRules) {
  std::mt19937 random(20260101);
  for (int round = 0; round < 20; ++round) {
    const auto draw = [&] {
      std::set<int> items;
      for (auto n = random() % 5; n > 0; --n) items.insert(static_cast<int>(random() % 4000) - 7);
      return Items(items.begin(), items.end());
    };
    std::vector<AssociationRule> rules;
    std::map<ItemSet, int> ids;
    std::set<int> items;
    for (int r = 0; r < 40 * round; ++r) {
      const Items sides[] = {draw(), draw()};
      rules.push_back(ruleOf(sides[0], sides[1]));
      for (const Items& side : sides) {
        ids[itemSet(side)] = 0;
        items.insert(side.begin(), side.end());
      }
    }
    int last = 0;
    for (auto& [set, id] : ids) id = ++last;

    const RuleItemsetIndex index(rules);
    ASSERT_EQ(index.numberOfItemsets(), last);
    for (const auto& [set, id] : ids) ASSERT_EQ(index.idOf(set), id) << "round " << round;
    ASSERT_EQ(index.items().count(), static_cast<int>(items.size()));
    int reference = 0;
    for (int item : items) ASSERT_EQ(index.items().itemAt(++reference), item) << "round " << round;
  }
}

}  // namespace
}  // namespace korassoc::detail
