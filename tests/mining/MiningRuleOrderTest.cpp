#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "korassoc/mining/RuleOrder.h"
#include "korassoc/rules/RuleOrder.h"
#include "tests/support/Dice.h"

namespace korassoc {
namespace {

int signOf(int order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

// What the engine compares, two figures one after the other.
int compareAsTheEngine(const RuleOrder& order, const RuleCounts& a, const RuleCounts& b) {
  const int first = detail::compareFigures(order.first().of(a), order.first().of(b));
  return first != 0 ? first : detail::compareFigures(order.second().of(a), order.second().of(b));
}

std::vector<RuleCounts> randomCounts(Dice& dice, int many) {
  std::vector<RuleCounts> all;
  for (int i = 0; i < many; ++i) {
    const int whole = dice.below(4);
    const int antecedent = whole + dice.below(4);
    const int consequent = dice.chance(10) ? 0 : whole + dice.below(4);
    all.push_back({10, whole, antecedent, consequent});
  }
  return all;
}

TEST(RuleOrder, ComparesFiguresAsTheEngineDoes) {
  Dice dice(8);
  const std::vector<RuleCounts> rules = randomCounts(dice, 60);
  for (std::size_t row = 0; row < Measure::table().size(); ++row) {
    const RuleOrder order(Measure::ofRow(row));
    for (const RuleCounts& a : rules) {
      for (const RuleCounts& b : rules) {
        ASSERT_EQ(signOf(order.compare(a, b)), compareAsTheEngine(order, a, b)) << order.first().name();
      }
    }
  }
}

TEST(RuleOrder, GoesOnWithSupportAfterConfidenceAndWithConfidenceAfterTheRest) {
  EXPECT_EQ(RuleOrder(Measure::kConfidence).second(), Measure::kSupport);
  for (const Measure measure : {Measure::kSupport, Measure::kLift, Measure::kZhang}) {
    EXPECT_EQ(RuleOrder(measure).second(), Measure::kConfidence);
  }
  // Both have confidence 0.5; the second has the higher support.
  const RuleCounts one = {10, 1, 2, 5};
  const RuleCounts two = {10, 2, 4, 5};
  EXPECT_GT(RuleOrder(Measure::kConfidence).compare(one, two), 0);
  EXPECT_EQ(RuleOrder(Measure::kLift).compare(one, two), 0);
}

TEST(RuleOrder, PutsTheHigherFigureFirstAndTheUndefinedOneLast) {
  const RuleCounts infinite = {10, 4, 4, 5};  // conviction
  const RuleCounts two = {8, 6, 8, 4};        // 8 * 4 / (8 * 2)
  const RuleCounts zero = {10, 3, 4, 10};     // 4 * 0 / ...
  const RuleCounts undefined = {10, 4, 4, 10};
  ASSERT_EQ(Measure::kConviction.of(two), 2);
  ASSERT_EQ(Measure::kConviction.of(zero), 0);
  ASSERT_TRUE(std::isnan(Measure::kConviction.of(undefined)));
  const RuleOrder order(Measure::kConviction);
  const std::vector<RuleCounts> sorted = {infinite, two, zero, undefined};
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    EXPECT_EQ(order.compare(sorted[i], sorted[i]), 0);
    for (std::size_t j = i + 1; j < sorted.size(); ++j) EXPECT_LT(order.compare(sorted[i], sorted[j]), 0);
  }
}

TEST(RuleOrder, TreatsNegativeFiguresAsNumbers) {
  const RuleCounts worst = {4, 0, 2, 2};  // leverage -0.25
  const RuleCounts bad = {10, 1, 4, 5};   // -0.1
  const RuleCounts none = {8, 2, 4, 4};   // 0
  const RuleCounts good = {10, 3, 3, 5};  // 0.15
  const RuleOrder order(Measure::kLeverage);
  const std::vector<RuleCounts> sorted = {good, none, bad, worst};
  for (std::size_t i = 0; i + 1 < sorted.size(); ++i) EXPECT_LT(order.compare(sorted[i], sorted[i + 1]), 0);
}

TEST(CompareItemsets, PutsFewerItemsFirstAndThenGoesItemByItem) {
  const std::vector<std::vector<Item>> sorted = {{},     {-1},   {0},    {7},      {-1, 5},
                                                 {0, 3}, {0, 4}, {1, 2}, {0, 1, 2}};
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    for (std::size_t j = 0; j < sorted.size(); ++j) {
      const int expected = i < j ? -1 : i > j ? 1 : 0;
      EXPECT_EQ(signOf(compareItemsets(sorted[i], sorted[j])), expected) << i << " and " << j;
    }
  }
}

}  // namespace
}  // namespace korassoc
