#include "korassoc/rules/RuleOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "tests/support/Dice.h"
#include "tests/support/TestLattice.h"

namespace {

using korassoc::detail::confidenceBefore;
using korassoc::detail::consequentBefore;
using korassoc::detail::liftBefore;
using korassoc::detail::supportBefore;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Before = bool (*)(const AssociationRule&, const AssociationRule&);

struct Figures {
  double support;
  double confidence;
  double lift;
};

AssociationRule rule(Figures figures, const std::vector<int>& antecedent = {1},
                     const std::vector<int>& consequent = {2}) {
  return AssociationRule(itemSet(antecedent), itemSet(consequent), figures.support, figures.confidence,
                         figures.lift);
}

TEST(RuleOrder, ComparesTheFiguresInTheOrdersOwnSequence) {
  struct Case {
    const char* what;
    Before before;
    Figures first;
    Figures second;
  };
  const Case cases[] = {
      {"confidence decides", confidenceBefore, {0.1, 0.9, 1}, {0.8, 0.8, 2}},
      {"then support", confidenceBefore, {0.2, 0.9, 1}, {0.1, 0.9, 2}},
      {"support decides", supportBefore, {0.2, 0.1, 1}, {0.1, 0.9, 2}},
      {"then confidence", supportBefore, {0.2, 0.9, 1}, {0.2, 0.8, 2}},
      {"lift decides", liftBefore, {0.1, 0.1, 3}, {0.9, 0.9, 2}},
      {"then confidence, not support", liftBefore, {0.1, 0.9, 3}, {0.9, 0.8, 3}},
      {"a number before what is none", confidenceBefore, {0.1, -5, 1}, {0.9, kNaN, 1}},
      {"infinity is a number", liftBefore, {0.1, 0.1, kInfinity}, {0.1, 0.1, 5}},
      {"minus infinity too", liftBefore, {0.1, 0.1, -kInfinity}, {0.1, 0.1, kNaN}},
  };
  for (const Case& c : cases) {
    // The sets would say the opposite.
    const AssociationRule first = rule(c.first, {5, 6, 7});
    const AssociationRule second = rule(c.second, {1});
    EXPECT_TRUE(c.before(first, second)) << c.what;
    EXPECT_FALSE(c.before(second, first)) << c.what;
  }
}

TEST(RuleOrder, EqualFiguresLeaveItToTheSets) {
  struct Case {
    const char* what;
    std::vector<int> antecedent, consequent;            // of the first
    std::vector<int> otherAntecedent, otherConsequent;  // of the second
  };
  const Case cases[] = {
      {"a shorter antecedent", {9}, {1, 2, 3}, {1, 2}, {3}},
      {"a smaller antecedent", {1, 5}, {9}, {2, 3}, {1}},
      {"a shorter consequent", {1}, {9}, {1}, {2, 3}},
      {"a smaller consequent", {1}, {2, 9}, {1}, {3, 4}},
      {"items compare as signed numbers", {-1}, {9}, {1}, {2}},
  };
  const double figures[][3] = {{0.5, 0.5, 0.5}, {kInfinity, kInfinity, kInfinity}, {kNaN, kNaN, kNaN}};
  for (const Case& c : cases) {
    for (const auto& f : figures) {
      const AssociationRule first = rule({f[0], f[1], f[2]}, c.antecedent, c.consequent);
      const AssociationRule second = rule({f[0], f[1], f[2]}, c.otherAntecedent, c.otherConsequent);
      for (const Before before : {confidenceBefore, supportBefore, liftBefore}) {
        EXPECT_TRUE(before(first, second)) << c.what;
        EXPECT_FALSE(before(second, first)) << c.what;
        EXPECT_FALSE(before(first, first)) << c.what;
      }
    }
  }
}

// Sorting with anything less may run off the end of the vector.
TEST(RuleOrder, IsAStrictWeakOrderWhateverTheFigures) {
  const double figures[] = {0, 0.5, 0.5, 1, -1, kNaN, kInfinity, -kInfinity};
  Dice dice(1);
  std::vector<AssociationRule> rules;
  for (int i = 0; i < 60; ++i) {
    const auto figure = [&] { return figures[dice.below(8)]; };
    rules.push_back(rule({figure(), figure(), figure()}, {dice.below(2)}, {3 + dice.below(2)}));
  }
  for (const Before before : {confidenceBefore, supportBefore, liftBefore}) {
    const auto tied = [before](const AssociationRule& a, const AssociationRule& b) {
      return !before(a, b) && !before(b, a);
    };
    for (const AssociationRule& a : rules) {
      EXPECT_FALSE(before(a, a));
      for (const AssociationRule& b : rules) {
        for (const AssociationRule& c : rules) {
          ASSERT_FALSE(before(a, b) && before(b, c) && !before(a, c));
          ASSERT_FALSE(tied(a, b) && tied(b, c) && !tied(a, c));
        }
      }
    }
  }
}

TEST(SortRules, SortsByTheThreeLettersAndByNothingElse) {
  const std::vector<AssociationRule> rules = {rule({0.2, 0.8, 2}, {1}), rule({0.3, 0.7, 3}, {2}),
                                              rule({0.1, 0.9, 1}, {3}), rule({0.3, 0.9, 1}, {4})};
  struct Case {
    char sortBy;
    std::vector<int> antecedents;
  };
  const Case cases[] = {{'C', {4, 3, 1, 2}}, {'S', {4, 2, 1, 3}}, {'L', {2, 1, 3, 4}}, {'X', {1, 2, 3, 4}},
                        {'c', {1, 2, 3, 4}}, {'s', {1, 2, 3, 4}}, {0, {1, 2, 3, 4}}};
  for (const Case& c : cases) {
    std::vector<AssociationRule> sorted = rules;
    korassoc::detail::sortRules(sorted, c.sortBy);
    std::vector<int> antecedents;
    for (const AssociationRule& r : sorted) antecedents.push_back(r.getAntecedent().getItemAt(0));
    EXPECT_EQ(antecedents, c.antecedents) << "sorted by " << static_cast<int>(c.sortBy);
  }
}

TEST(ConsequentOrder, PutsHigherConfidenceThenSmallerItemFirst) {
  const ConsequentDescriptor sure(9, 0.1, 0.9, 1);
  const ConsequentDescriptor small(2, 0.1, 0.5, 1);
  const ConsequentDescriptor large(3, 0.9, 0.5, 9);
  const ConsequentDescriptor noNumber(1, 0.9, kNaN, 9);
  EXPECT_TRUE(consequentBefore(sure, small));
  EXPECT_FALSE(consequentBefore(small, sure));
  EXPECT_TRUE(consequentBefore(small, large));
  EXPECT_FALSE(consequentBefore(large, small));
  EXPECT_TRUE(consequentBefore(large, noNumber));
  EXPECT_FALSE(consequentBefore(noNumber, large));
  EXPECT_FALSE(consequentBefore(small, small));
}

TEST(CutTo, CutsToAnUnsignedNumber) {
  struct Case {
    int max;
    std::size_t left;
  };
  for (const Case& c : {Case{-1, 3}, Case{std::numeric_limits<int>::min(), 3}, Case{0, 0}, Case{2, 2},
                        Case{3, 3}, Case{4, 3}, Case{std::numeric_limits<int>::max(), 3}}) {
    std::vector<ConsequentDescriptor> results(3, ConsequentDescriptor(1, 0, 0, 0));
    korassoc::detail::cutTo(results, c.max);
    EXPECT_EQ(results.size(), c.left) << c.max;
  }
}

}  // namespace
