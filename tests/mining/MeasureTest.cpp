#include "korassoc/mining/Measure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <string_view>

#include "tests/mining/ExpectError.h"
#include "tests/support/Dice.h"

namespace korassoc {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(Measure, GivesTheValuesOfItsFormula) {
  struct Case {
    RuleCounts counts;
    double confidence, support, lift, leverage, conviction, zhang;
  };
  // Worked out by hand. First: tea and coffee (Brin and others): 20 of 25 tea drinkers, 90 of all 100.
  const Case cases[] = {
      {{100, 20, 25, 90}, 0.8, 0.2, 0.8 / 0.9, 0.2 - 0.225, 0.25 * 0.1 / 0.05, -0.025 / 0.175},
      {{8, 2, 4, 4}, 0.5, 0.25, 1, 0, 1, 0},
      {{10, 3, 3, 5}, 1, 0.3, 2, 0.15, kInfinity, 0.15 / 0.21},
      {{4, 0, 2, 2}, 0, 0, 0, -0.25, 0.5, -1}};
  for (const Case& c : cases) {
    EXPECT_DOUBLE_EQ(Measure::kConfidence.of(c.counts), c.confidence);
    EXPECT_DOUBLE_EQ(Measure::kSupport.of(c.counts), c.support);
    EXPECT_DOUBLE_EQ(Measure::kLift.of(c.counts), c.lift);
    EXPECT_NEAR(Measure::kLeverage.of(c.counts), c.leverage, 1e-16);
    EXPECT_DOUBLE_EQ(Measure::kConviction.of(c.counts), c.conviction);
    EXPECT_NEAR(Measure::kZhang.of(c.counts), c.zhang, 1e-15);
  }
}

TEST(Measure, IsNoNumberWhereItIsNotDefined) {
  const RuleCounts everybodyBuysBoth = {10, 10, 10, 10};
  EXPECT_TRUE(std::isnan(Measure::kConviction.of(everybodyBuysBoth)));
  EXPECT_TRUE(std::isnan(Measure::kZhang.of(everybodyBuysBoth)));
  EXPECT_EQ(Measure::kLift.of(everybodyBuysBoth), 1);
  const RuleCounts everybodyBuysTheConsequent = {10, 4, 4, 10};
  EXPECT_TRUE(std::isnan(Measure::kConviction.of(everybodyBuysTheConsequent)));
  EXPECT_EQ(Measure::kZhang.of(everybodyBuysTheConsequent), 0);
}

TEST(Measure, IsNoNumberWhereTheConsequentIsNotCounted) {
  const RuleCounts counts = {10, 3, 4, 0};
  for (std::size_t row = 0; row < Measure::table().size(); ++row) {
    const Measure measure = Measure::ofRow(row);
    EXPECT_EQ(std::isnan(measure.of(counts)), measure.info().needsConsequent) << measure.name();
  }
  EXPECT_EQ(Measure::kConfidence.of(counts), 0.75);
  EXPECT_EQ(Measure::kSupport.of(counts), 0.3);
}

TEST(Measure, StaysInItsRangeOnRandomCountsOfAnySize) {
  Dice dice(3);
  for (int step = 0; step < 20000; ++step) {
    // Four parts of the transactions: with both sides, one of them, none.
    const int magnitude = dice.below(15);
    std::int64_t parts[4];
    for (std::int64_t& part : parts) {
      part = static_cast<std::int64_t>(dice.fraction() * std::pow(10, dice.between(0, magnitude)));
    }
    const RuleCounts counts = {parts[0] + parts[1] + parts[2] + parts[3] + 2, parts[0] + 1,
                               parts[0] + parts[1] + 1, parts[0] + parts[2] + 1};
    for (std::size_t row = 0; row < Measure::table().size(); ++row) {
      const Measure measure = Measure::ofRow(row);
      const double value = measure.of(counts);
      if (std::isnan(value)) continue;  // where that may be is another test's
      ASSERT_GE(value, measure.info().least) << measure.name() << ", step " << step;
      ASSERT_LE(value, measure.info().most) << measure.name() << ", step " << step;
    }
  }
}

TEST(Measure, TellsTheSmallestDependenceFromNone) {
  // n n_xy and n_x n_y differ by one in 10^18, where doubles lie 128 apart.
  const RuleCounts counts = {1'000'000'001, 999'999'999, 1'000'000'000, 1'000'000'000};
  EXPECT_DOUBLE_EQ(Measure::kLeverage.of(counts), -1.0 / 1'000'000'001 / 1'000'000'001);
}

TEST(Measure, CountsInSixtyFourBits) {
  const RuleCounts counts = {8'000'000'000, 2'000'000'000, 4'000'000'000, 4'000'000'000};
  EXPECT_EQ(Measure::kConfidence.of(counts), 0.5);
  EXPECT_EQ(Measure::kSupport.of(counts), 0.25);
  EXPECT_EQ(Measure::kLift.of(counts), 1);
  EXPECT_EQ(Measure::kLeverage.of(counts), 0);
}

TEST(Measure, IsFoundByItsName) {
  std::set<std::string_view> names;
  for (std::size_t row = 0; row < Measure::table().size(); ++row) {
    const MeasureInfo& info = Measure::table()[row];
    EXPECT_TRUE(names.insert(info.name).second) << info.name;
    ASSERT_TRUE(Measure::find(info.name).has_value()) << info.name;
    EXPECT_EQ(*Measure::find(info.name), Measure::ofRow(row));
    EXPECT_FALSE(info.formula.empty()) << info.name;
    EXPECT_FALSE(info.source.empty()) << info.name;
    EXPECT_LT(info.least, info.most) << info.name;
  }
  EXPECT_EQ(Measure::find("Lift"), std::nullopt);
  EXPECT_ERROR(Measure::ofRow(Measure::table().size()), Error::Kind::kInput, "no measure in row");
}

TEST(Measure, HasTheRowsThatItsNamesSay) {
  struct Case {
    Measure measure;
    const char* name;
  };
  const Case cases[] = {
      {Measure::kConfidence, "confidence"}, {Measure::kSupport, "support"},       {Measure::kLift, "lift"},
      {Measure::kLeverage, "leverage"},     {Measure::kConviction, "conviction"}, {Measure::kZhang, "zhang"}};
  for (const Case& c : cases) EXPECT_EQ(c.measure.name(), c.name);
}

}  // namespace
}  // namespace korassoc
