// The corners of filtered rule creation on a lattice that is small enough to see through.

#include <gtest/gtest.h>

#include <iostream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "tests/oracle/SmallLattice.h"
#include "tests/support/Hosts.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TestLattice.h"

namespace {

using oracle::Names;

// Everything but the confidence open; the antecedent is not empty.
struct Query {
  double minConfidence = 0.5, maxConfidence = 1, minSupport = 0, maxSupport = 1, minLift = 0;
  char sortBy = 'X';
  ItemSet* antecedentRequired = nullptr;
  ItemSet* antecedentAllowed = nullptr;
  int minAntecedentLength = 1, maxAntecedentLength = 10;
  ItemSet* consequentRequired = nullptr;
  ItemSet* consequentAllowed = nullptr;
  int minConsequentLength = 1, maxConsequentLength = 10;
  int maxRules = -1;
  bool minimal = false;
};

// Ten transactions: a 6, b 5, c 4, ab 4, ac 3, bc 2, abc 2 (a = 1, b = 2, c = 3). Confidences of 0.5 and
// more:
//
//   bc>a 1   b>a 4/5   c>a 3/4   a>b 4/6   ac>b 2/3   a>c 3/6   c>b 2/4   ab>c 2/4   c>ab 2/4
//
// Sets are gone through as ab, ac, bc, abc; the antecedents of one by hash codes: a 7, b 14, ab 17, c 21, ac
// 38, bc 47.
class FilteredRulesEdge : public testing::Test {
 protected:
  KorAssoc::KorStatus ask(TestLattice& asked, const Query& q, ProgressListener* listener = nullptr) {
    return asked.dictionary.createFilteredRules(
        q.minConfidence, q.maxConfidence, q.minSupport, q.maxSupport, q.minLift, q.sortBy,
        q.antecedentRequired, q.antecedentAllowed, q.minAntecedentLength, q.maxAntecedentLength,
        q.consequentRequired, q.consequentAllowed, q.minConsequentLength, q.maxConsequentLength, q.maxRules,
        q.minimal, rules, listener);
  }
  Names names() const {
    Names result;
    for (const AssociationRule& rule : rules) {
      result.push_back(oracle::letters(itemVector(rule.getAntecedent())) + ">" +
                       oracle::letters(itemVector(rule.getConsequent())));
    }
    return result;
  }
  Names create(const Query& query) {
    rules.clear();
    EXPECT_TRUE(ask(lattice, query).IsOK());
    return names();
  }

  TestLattice lattice{
      {{{}, 10}, {{1}, 6}, {{2}, 5}, {{3}, 4}, {{1, 2}, 4}, {{1, 3}, 3}, {{2, 3}, 2}, {{1, 2, 3}, 2}}};
  std::vector<AssociationRule> rules;
};

TEST_F(FilteredRulesEdge, AnotherLetterLeavesTheOrderOfEmission) {
  const Names emitted = {"a>b", "b>a", "a>c", "c>a", "c>b", "ab>c", "c>ab", "ac>b", "bc>a"};
  Query query;
  EXPECT_EQ(create(query), emitted);
  for (const char letter : {'c', 's', 'l', '\0', ' ', '\xFF'}) {
    query.sortBy = letter;
    EXPECT_EQ(create(query), emitted) << static_cast<int>(letter);
  }
}

TEST_F(FilteredRulesEdge, TheThreeLettersSortAndBreakTies) {
  Query query;
  query.sortBy = 'C';
  EXPECT_EQ(create(query), Names({"bc>a", "b>a", "c>a", "a>b", "ac>b", "a>c", "c>b", "c>ab", "ab>c"}));
  query.sortBy = 'S';  // 4, 4, 3, 3 and twos
  EXPECT_EQ(create(query), Names({"b>a", "a>b", "c>a", "a>c", "bc>a", "ac>b", "c>b", "c>ab", "ab>c"}));
  query.sortBy = 'L';
  // bc>a 5/3; a>b, b>a, ac>b 4/3; a>c, c>a, c>ab, ab>c 5/4; c>b 1. In doubles b>a and ac>b may differ by a
  // little.
  const Names byLift = create(query);
  EXPECT_EQ(byLift.front(), "bc>a");
  EXPECT_EQ(byLift.back(), "c>b");
  for (std::size_t i = 1; i < rules.size(); ++i) EXPECT_GE(rules[i - 1].getLift(), rules[i].getLift());
}

TEST_F(FilteredRulesEdge, ANegativeMaximumCutsNothingAndZeroEverything) {
  Query query;
  query.sortBy = 'C';
  struct Case {
    int maxRules;
    std::size_t left;
  };
  constexpr int kMin = std::numeric_limits<int>::min();
  for (const Case& c :
       {Case{-1, 9}, Case{kMin, 9}, Case{0, 0}, Case{1, 1}, Case{8, 8}, Case{9, 9}, Case{10, 9}}) {
    query.maxRules = c.maxRules;
    EXPECT_EQ(create(query).size(), c.left) << c.maxRules;
  }
  query.maxRules = 2;
  EXPECT_EQ(create(query), Names({"bc>a", "b>a"}));
}

TEST_F(FilteredRulesEdge, ConfidenceOneNeedsEqualCounts) {
  Query query;
  query.minConfidence = 1;
  EXPECT_EQ(create(query), Names({"bc>a"}));
}

TEST_F(FilteredRulesEdge, BoundsAreInclusive) {
  Query query;
  query.minConfidence = query.maxConfidence = 0.75;
  EXPECT_EQ(create(query), Names({"c>a"}));
  query = Query();
  query.minSupport = query.maxSupport = 0.3;
  EXPECT_EQ(create(query), Names({"a>c", "c>a"}));
  query = Query();
  query.minLift = 0.5 / 5 * 10;  // c>b
  EXPECT_EQ(create(query).size(), 9U);
  query.minLift = 1.0000001;
  EXPECT_EQ(create(query).size(), 8U);
}

TEST_F(FilteredRulesEdge, TheEmptyAntecedentNeedsAMinimumLengthOfZero) {
  Query query;
  query.maxAntecedentLength = 0;
  EXPECT_EQ(create(query), Names());
  query.minAntecedentLength = 0;
  EXPECT_EQ(create(query), Names({">a", ">b"}));
  EXPECT_EQ(rules[0].getConfidence(), 0.6);
  EXPECT_EQ(rules[0].getSupport(), 0.6);
  query.minAntecedentLength = -5;
  query.minConsequentLength = -5;
  EXPECT_EQ(create(query), Names({">a", ">b"})) << "the empty set itself gives no rule";
}

TEST_F(FilteredRulesEdge, MinimalAntecedentsThatReachMoreAreLeftOut) {
  // Of abc the minimal ones are c and ab; bc has c below it, ac too. So c>a and c>b give way to c>ab.
  Query query;
  query.minimal = true;
  EXPECT_EQ(create(query), Names({"a>b", "b>a", "a>c", "ab>c", "c>ab"}));
  // abc out of sight, c>a and c>b stand for themselves.
  query.maxConsequentLength = 1;
  query.maxAntecedentLength = 1;
  EXPECT_EQ(create(query), Names({"a>b", "b>a", "a>c", "c>a", "c>b"}));
}

TEST_F(FilteredRulesEdge, RequiredAndAllowedItemsBindTheirSide) {
  ItemSet a(1), b(2), c(3), ab = itemSet({1, 2}), bc = itemSet({2, 3});
  Query query;
  query.antecedentRequired = &c;
  EXPECT_EQ(create(query), Names({"c>a", "c>b", "c>ab", "ac>b", "bc>a"}));
  query.consequentRequired = &b;
  EXPECT_EQ(create(query), Names({"c>b", "c>ab", "ac>b"}));
  query.antecedentAllowed = &bc;
  EXPECT_EQ(create(query), Names({"c>b", "c>ab"}));
  query.consequentAllowed = &b;
  EXPECT_EQ(create(query), Names({"c>b"}));
  query = Query();
  query.consequentAllowed = &ab;
  EXPECT_EQ(create(query), Names({"a>b", "b>a", "c>a", "c>b", "c>ab", "ac>b", "bc>a"}));
  query.antecedentRequired = &a;
  query.antecedentAllowed = &bc;  // what is required is not allowed
  EXPECT_EQ(create(query), Names());
}

TEST_F(FilteredRulesEdge, AConsequentThatIsNotStoredHasLiftZero) {
  const StreamCapture complaints(std::cout);
  TestLattice gap({{{}, 10}, {{1}, 6}, {{1, 2}, 4}});  // without b
  Query query;
  ASSERT_TRUE(ask(gap, query).IsOK());
  ASSERT_EQ(names(), Names({"a>b"}));
  EXPECT_EQ(rules[0].getLift(), 0.0);
  rules.clear();
  query.minLift = -1;
  ASSERT_TRUE(ask(gap, query).IsOK());
  EXPECT_EQ(rules.size(), 1U);
  rules.clear();
  query.minLift = 1e-300;
  ASSERT_TRUE(ask(gap, query).IsOK());
  EXPECT_TRUE(rules.empty());
}

TEST_F(FilteredRulesEdge, SortsAndCutsWhatTheCallerLeftToo) {
  rules.emplace_back(itemSet({8}), itemSet({9}), 0.1, 0.9, 1.0);
  Query query;
  query.sortBy = 'C';
  query.maxRules = 2;
  ASSERT_TRUE(ask(lattice, query).IsOK());
  ASSERT_EQ(rules.size(), 2U);
  EXPECT_EQ(rules[0].getConfidence(), 1.0);
  EXPECT_EQ(itemVector(rules[1].getAntecedent()), std::vector<int>{8});
}

TEST_F(FilteredRulesEdge, WithoutItemsInStoreItWarnsAndLeavesTheResultAlone) {
  TestLattice empty(oracle::brute::Counts{{std::vector<int>(), 8}});
  rules.emplace_back(itemSet({8}), itemSet({9}), 0.1, 0.9, 1.0);
  Query query;
  query.maxRules = 0;
  EXPECT_EQ(shortForm(ask(empty, query)), "W40002");
  EXPECT_EQ(rules.size(), 1U);
}

TEST_F(FilteredRulesEdge, AStopGivesNoRule) {
  lattice.dictionary.setRestartFailed();
  rules.emplace_back(itemSet({8}), itemSet({9}), 0.1, 0.9, 1.0);
  EXPECT_EQ(shortForm(ask(lattice, Query())), "E1");
  EXPECT_TRUE(lattice.dictionary.rulesFlag());
  EXPECT_EQ(rules.size(), 1U);
}

TEST_F(FilteredRulesEdge, AStopFromTheLastReportGivesNoRuleButNoError) {
  TestListener listener([&](ProgressReport& report) {
    if (report.GetIntValue("bounds") == report.GetIntValue("setTotal")) lattice.dictionary.setRestartFailed();
  });
  EXPECT_TRUE(ask(lattice, Query(), &listener).IsOK());
  EXPECT_TRUE(rules.empty());
  EXPECT_FALSE(lattice.dictionary.rulesFlag()) << "no search has seen it";
}

TEST_F(FilteredRulesEdge, ReportsEveryIntervalAndAlwaysAtTheEnd) {
  using Reports = std::vector<std::pair<int, int>>;
  struct Case {
    int interval;
    Reports reports;
  };
  for (const Case& c : {Case{1, {{1, 4}, {2, 4}, {3, 4}, {4, 4}, {4, 4}}}, Case{2, {{1, 4}, {3, 4}, {4, 4}}},
                        Case{3, {{1, 4}, {4, 4}, {4, 4}}}, Case{100, {{1, 4}, {4, 4}}}, Case{0, {{4, 4}}},
                        Case{-2, {{1, 4}, {3, 4}, {4, 4}}}}) {
    lattice.settings.SetReportFrequency(c.interval);
    Reports reports;
    TestListener listener([&](ProgressReport& report) {
      reports.emplace_back(report.GetIntValue("bounds"), report.GetIntValue("setTotal"));
    });
    rules.clear();
    ASSERT_TRUE(ask(lattice, Query(), &listener).IsOK());
    EXPECT_EQ(reports, c.reports) << "interval " << c.interval;
    EXPECT_EQ(rules.size(), 9U);
  }
}

// Of ab, ac, bc and abc in turn: 2, 2, 1 and 4, which are the nine rules.
TEST_F(FilteredRulesEdge, TellsTheAntecedentsFoundSoFar) {
  lattice.settings.SetReportFrequency(1);
  std::vector<int> antecedents;
  TestListener listener(
      [&](ProgressReport& report) { antecedents.push_back(report.GetIntValue("antecedents")); });
  ASSERT_TRUE(ask(lattice, Query(), &listener).IsOK());
  EXPECT_EQ(antecedents, std::vector<int>({2, 4, 5, 9, 9}));
}

}  // namespace
