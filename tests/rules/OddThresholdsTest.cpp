// Thresholds that are no fractions, asked of a lattice.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/support/EngineHost.h"
#include "tests/support/TestLattice.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// 10 transactions; {1} stands in all of them.
TestLattice lattice() {
  return TestLattice({{{}, 10}, {{1}, 10}, {{2}, 5}, {{3}, 1}, {{1, 2}, 5}, {{1, 3}, 1}});
}

// "1>2": the rules, whatever their order; the antecedent may be empty.
std::set<std::string> texts(const std::vector<AssociationRule>& rules) {
  std::set<std::string> texts;
  for (const AssociationRule& rule : rules) {
    std::string text;
    for (int i = 0; i < rule.getAntecedent().length(); ++i)
      text += std::to_string(rule.getAntecedent().getItemAt(i));
    text += '>';
    for (int i = 0; i < rule.getConsequent().length(); ++i)
      text += std::to_string(rule.getConsequent().getItemAt(i));
    texts.insert(text);
  }
  return texts;
}

std::set<std::string> created(double minSupport, double minConfidence) {
  TestLattice made = lattice();
  std::vector<AssociationRule> rules;
  EXPECT_TRUE(made.dictionary.createRules(minSupport, minConfidence, rules, nullptr, false).IsOK());
  return texts(rules);
}

struct Bounds {
  double minConfidence = 0;
  double maxConfidence = 1;
  double minSupport = 0;
  double maxSupport = 1;
  double minLift = 0;
};

std::set<std::string> filtered(const Bounds& bounds) {
  TestLattice made = lattice();
  std::vector<AssociationRule> rules;
  EXPECT_TRUE(made.dictionary
                  .createFilteredRules(bounds.minConfidence, bounds.maxConfidence, bounds.minSupport,
                                       bounds.maxSupport, bounds.minLift, 'C', nullptr, nullptr, 0, 9,
                                       nullptr, nullptr, 0, 9, -1, false, rules, nullptr)
                  .IsOK());
  std::vector<ConsequentDescriptor> items;
  EXPECT_TRUE(made.dictionary
                  .createFilteredConsequents(bounds.minConfidence, bounds.maxConfidence, bounds.minSupport,
                                             bounds.maxSupport, bounds.minLift, 'C', nullptr, nullptr, 0, 9,
                                             nullptr, -1, items, nullptr)
                  .IsOK());
  EXPECT_EQ(items.empty(), rules.empty());
  return texts(rules);
}

int setsOfCopy(double minFraction) {
  TestLattice made = lattice();
  const std::unique_ptr<SemiLattice> copy(made.dictionary.filteredCopy(minFraction));
  return copy->getTotalSetCount();
}

const std::set<std::string> kAll = {">1", ">2", ">3", ">12", ">13", "1>2", "1>3", "2>1", "3>1"};
const std::set<std::string> kNone;

}  // namespace

TEST(CreateRules, TakesASupportOfZeroOrLessOrNoneForNoBound) {
  for (const double support : {0.0, -0.5, -1e300, -kInfinity, kNaN}) EXPECT_EQ(created(support, 0), kAll);
}

TEST(CreateRules, MakesACountOfASupportAboveOneLikeAnyOther) {
  EXPECT_EQ(created(1.05, 0), std::set<std::string>{">1"}) << "all 10 transactions";
  EXPECT_EQ(created(1.1, 0), kNone) << "11 transactions";
  EXPECT_EQ(created(kInfinity, 0), kNone);
}

TEST(CreateRules, TakesAConfidenceOfZeroOrLessForNoBoundAndAnythingAboveOneForNone) {
  for (const double confidence : {0.0, -0.5, -kInfinity}) EXPECT_EQ(created(0, confidence), kAll);
  for (const double confidence : {1.001, 7.0, kInfinity, kNaN}) EXPECT_EQ(created(0, confidence), kNone);
}

TEST(CreateFilteredRules, TakeLowMinimaAndHighMaximaForNoBound) {
  for (const double low : {0.0, -0.5, -1e300, -kInfinity}) {
    EXPECT_EQ(filtered({.minConfidence = low}), kAll) << low;
    EXPECT_EQ(filtered({.minSupport = low}), kAll) << low;
    EXPECT_EQ(filtered({.minLift = low}), kAll) << low;
  }
  for (const double high : {1.0, 1.05, 1e300, kInfinity}) {
    EXPECT_EQ(filtered({.maxConfidence = high}), kAll) << high;
    EXPECT_EQ(filtered({.maxSupport = high}), kAll) << high;
  }
}

TEST(CreateFilteredRules, LetNothingThroughBetweenImpossibleBounds) {
  for (const double high : {1.05, 1e300, kInfinity, kNaN}) {
    EXPECT_EQ(filtered({.minConfidence = high}), kNone) << high;
    EXPECT_EQ(filtered({.minSupport = high}), kNone) << high;
  }
  for (const double low : {0.0, -0.5, -1e300, -kInfinity, kNaN}) {
    EXPECT_EQ(filtered({.maxConfidence = low}), kNone) << low;
    EXPECT_EQ(filtered({.maxSupport = low}), kNone) << low;
  }
  EXPECT_EQ(filtered({.minLift = kNaN}), kNone);
  EXPECT_EQ(filtered({.minLift = kInfinity}), kNone);
}

TEST(FilteredCopy, TakesAFractionOfZeroOrLessOrNoneForNoBound) {
  for (const double fraction : {0.0, -0.5, -kInfinity, kNaN}) EXPECT_EQ(setsOfCopy(fraction), 6) << fraction;
  EXPECT_EQ(setsOfCopy(1.05), 2);  // {} and {1}
  EXPECT_EQ(setsOfCopy(1.1), 1);
  EXPECT_EQ(setsOfCopy(kInfinity), 1);
}

TEST(ExportRulesXML, ListsTheRulesOfOddThresholds) {
  TestLattice made = lattice();
  const auto rules = [&made](double support, double confidence) {
    std::ostringstream out;
    EXPECT_TRUE(made.dictionary.exportRulesXML(out, support, confidence, nullptr, false).IsOK());
    int count = 0;
    for (std::size_t at = 0; (at = out.str().find("<AssociationRule", at)) != std::string::npos; ++at)
      ++count;
    return count;
  };
  EXPECT_EQ(rules(kNaN, 0), rules(0, 0));
  EXPECT_GT(rules(kNaN, 0), 0);
  EXPECT_EQ(rules(0, kNaN), 0);
  EXPECT_EQ(rules(kInfinity, 0), 0);
}

TEST(RunNullPhaseII, AddsWhatAnOddFractionComesTo) {
  struct Case {
    double fraction;
    int transactions;  // of 4
  };
  for (const Case& c : {Case{kNaN, 4}, Case{-0.5, 2}, Case{-1.0, 0}, Case{-2.0, -4},
                        Case{kInfinity, 2147483647}, Case{-kInfinity, -2147483644}, Case{2.0, 12}}) {
    EngineHost host({{1, 2}, {1}, {1, 2}, {2}}, 0.1);
    ASSERT_TRUE(host.engine->RunPhaseI(4).IsOK());
    EXPECT_TRUE(host.engine->RunNullPhaseII(c.fraction).IsOK()) << c.fraction;
    EXPECT_EQ(host.engine->NumberOfTransactions(), c.transactions) << c.fraction;
  }
}
