// The corners of plain rule creation on a lattice that is small enough to see through.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/oracle/SmallLattice.h"
#include "tests/support/Hosts.h"
#include "tests/support/RuleComparison.h"

namespace {

using oracle::Items;
using oracle::Names;

// Ten transactions: a 6, b 5, c 4, ab 4, ac 3, bc 2, abc 2 unless other counts are given.
class RuleCreationEdge : public testing::Test {
 protected:
  void build(const std::vector<std::pair<Items, int>>& sets = oracle::smallLatticeSets()) {
    dictionary = std::make_unique<SetDictionary>(5, &settings, true);
    dictionary->addEmptySet(new CarmaSetDescriptor(10, 0, 0));
    for (const auto& [items, count] : sets) {
      ASSERT_EQ(dictionary->addSet(items.data(), static_cast<int>(items.size()),
                                   new CarmaSetDescriptor(count, 1, 0)),
                0);
    }
    dictionary->buildLattice();
  }

  Names create(double minSupport, double minConfidence, bool pruneRedundant) {
    rules.clear();
    EXPECT_TRUE(dictionary->createRules(minSupport, minConfidence, rules, nullptr, pruneRedundant).IsOK());
    Names result;
    for (const AssociationRule& rule : rules) {
      result.push_back(oracle::letters(itemsOf(rule.getAntecedent())) + ">" +
                       oracle::letters(itemsOf(rule.getConsequent())));
    }
    return result;
  }

  DictionarySettings settings;
  std::unique_ptr<SetDictionary> dictionary;
  std::vector<AssociationRule> rules;
};

TEST_F(RuleCreationEdge, ConfidenceOneNeedsEqualCounts) {
  build();
  EXPECT_EQ(create(0.1, 1.0, false), Names({"bc>a"}));  // bc 2, abc 2
  build({{{1}, 6}, {{2}, 6}, {{1, 2}, 6}});
  EXPECT_EQ(create(0.1, 1.0, false), Names({"a>b", "b>a"}));
}

TEST_F(RuleCreationEdge, EmptyAntecedentIsACandidateLikeAnyOther) {
  build();
  // a 0.6 and b 0.5 of the transactions; confidence equals support, lift is 1.
  EXPECT_EQ(create(0.1, 0.6, false), Names({"bc>a", "b>a", "c>a", "a>b", "ac>b", ">a"}));
  EXPECT_EQ(rules.back().getConfidence(), 0.6);
  EXPECT_EQ(rules.back().getSupport(), 0.6);
  EXPECT_DOUBLE_EQ(rules.back().getLift(), 1.0);
  EXPECT_EQ(rules.back().getAntecedent().length(), 0);
}

TEST_F(RuleCreationEdge, EmptySetNeverYieldsARule) {
  build({{{1}, 1}});
  EXPECT_EQ(create(0.5, 0.01, false), Names());  // only the empty set is frequent
  EXPECT_EQ(create(0.5, 0.01, true), Names());
}

TEST_F(RuleCreationEdge, SmallestAntecedentAndLargestConsequentStay) {
  build();
  // a and b reach 0.5 alone. c>ab has 0.5, so c>a and c>b go; a>b 0.667, a>c 0.5, b>a 0.8, ab>c 0.5.
  EXPECT_EQ(create(0.2, 0.5, true), Names({"b>a", "a>b", ">a", ">b", "a>c", "c>ab", "ab>c"}));
  const Names all = create(0.2, 0.5, false);
  for (const char* redundant : {"c>a", "c>b", "ac>b", "bc>a"}) {
    EXPECT_NE(std::find(all.begin(), all.end(), redundant), all.end()) << redundant;
  }
}

TEST_F(RuleCreationEdge, LargerConsequentBelowTheSupportImpliesNothing) {
  build();
  // abc has 0.2: from 0.3 on c>a stands for itself.
  EXPECT_EQ(create(0.3, 0.5, true), Names({"b>a", "c>a", "a>b", ">a", ">b", "a>c"}));
}

TEST_F(RuleCreationEdge, MinimumCountIsCut) {
  build();
  // 10 * 0.39 = 3.9, cut to 3: ac takes part.
  EXPECT_EQ(create(0.39, 0.7, false), Names({"b>a", "c>a"}));
  EXPECT_EQ(create(0.40, 0.7, false), Names({"b>a"}));
  // 10 * 0.3 is 3 in doubles, 10 * (0.1 + 0.2) a little more: 3 too.
  EXPECT_EQ(create(0.1 + 0.2, 0.7, false), Names({"b>a", "c>a"}));
}

TEST_F(RuleCreationEdge, AntecedentBoundIsExactUpToRoundingNoise) {
  // 3 / 0.3 is 10 up to noise: the empty antecedent (10) belongs to a set counted 3.
  build({{{1}, 3}});
  EXPECT_EQ(create(0.1, 0.1 + 0.2, false), Names({">a"}));
  EXPECT_EQ(create(0.1, 0.3001, false), Names());
}

TEST_F(RuleCreationEdge, ConfidenceZeroTakesEveryAntecedent) {
  build();
  EXPECT_EQ(create(0.1, 0.0, false).size(), 19U);  // 3 of one item, 3 * 3 of two, 7 of three
  EXPECT_EQ(create(0.1, -1.0, false).size(), 19U);
  EXPECT_EQ(create(0.1, 0.0, true), Names({">abc"}));
}

TEST_F(RuleCreationEdge, ConfidenceAboveOneTakesNone) {
  build();
  EXPECT_EQ(create(0.1, 1.5, false), Names());
}

TEST_F(RuleCreationEdge, DictionaryWithoutItemsWarnsAndLeavesTheResultAlone) {
  build({});
  rules.emplace_back(ItemSet(1), ItemSet(2), 0.1, 0.2, 0.3);
  rules.emplace_back(ItemSet(1), ItemSet(3), 0.1, 0.9, 0.3);
  const KorAssoc::KorStatus status = dictionary->createRules(0.1, 0.1, rules, nullptr, true);
  EXPECT_EQ(shortForm(status), "W40002");
  ASSERT_EQ(rules.size(), 2U);
  EXPECT_EQ(rules[0].getConfidence(), 0.2);
}

TEST_F(RuleCreationEdge, SortsWhatTheCallerLeftInTheResultToo) {
  build();
  rules.emplace_back(ItemSet(8), ItemSet(9), 0.1, 0.7, 0.3);
  ASSERT_TRUE(dictionary->createRules(0.2, 0.8, rules, nullptr, true).IsOK());
  ASSERT_EQ(rules.size(), 3U);
  EXPECT_EQ(rules[0].getConfidence(), 1.0);  // bc>a
  EXPECT_EQ(rules[1].getConfidence(), 0.8);  // b>a
  EXPECT_EQ(rules[2].getConfidence(), 0.7);
}

TEST_F(RuleCreationEdge, StopRequestGivesNoRuleAndKeepsTheResult) {
  build();
  rules.emplace_back(ItemSet(8), ItemSet(9), 0.1, 0.7, 0.3);
  dictionary->setRestartFailed();
  EXPECT_EQ(shortForm(dictionary->createRules(0.1, 0.1, rules, nullptr, true)), "E1");
  ASSERT_EQ(rules.size(), 1U);
  EXPECT_EQ(rules[0].getConfidence(), 0.7);
  EXPECT_TRUE(dictionary->rulesFlag());
}

TEST_F(RuleCreationEdge, ReportsEveryIntervalAndAtTheEnd) {
  struct Case {
    int interval;
    std::vector<std::pair<int, int>> reports;
  };
  // Eight frequent sets, the empty one included. The last report falls away when the end is 1 modulo the
  // interval.
  const Case cases[] = {{3, {{1, 8}, {4, 8}, {7, 8}, {8, 8}}},
                        {7, {{1, 8}, {8, 8}}},
                        {8, {{1, 8}, {8, 8}}},
                        {1000, {{1, 8}, {8, 8}}},
                        {4, {{1, 8}, {5, 8}, {8, 8}}},
                        {-4, {{1, 8}, {5, 8}, {8, 8}}},
                        {0, {{8, 8}}}};
  for (const Case& c : cases) {
    settings.SetReportFrequency(c.interval);
    build();
    std::vector<std::pair<int, int>> reports;
    TestListener listener([&](ProgressReport& report) {
      reports.emplace_back(report.GetIntValue("bounds"), report.GetIntValue("setTotal"));
      EXPECT_EQ(report.GetIntValue("nTrans"), 0);
      EXPECT_EQ(report.GetDoubleValue("sigma"), 0.0);
    });
    ASSERT_TRUE(dictionary->createRules(0.1, 0.5, rules, &listener, true).IsOK());
    EXPECT_EQ(reports, c.reports) << "interval " << c.interval;
  }
}

// The empty set, a, b, c, ab, ac, bc and abc in turn: 11 rules.
TEST_F(RuleCreationEdge, TellsTheAntecedentsFoundSoFar) {
  settings.SetReportFrequency(1);
  build();
  std::vector<int> antecedents;
  TestListener listener(
      [&](ProgressReport& report) { antecedents.push_back(report.GetIntValue("antecedents")); });
  ASSERT_TRUE(dictionary->createRules(0.1, 0.5, rules, &listener, false).IsOK());
  EXPECT_EQ(antecedents, std::vector<int>({0, 1, 2, 2, 4, 6, 7, 11, 11}));
  EXPECT_EQ(rules.size(), 11U);
}

TEST_F(RuleCreationEdge, StopFromAReportEndsTheCreation) {
  settings.SetReportFrequency(3);
  build();
  int reports = 0;
  TestListener listener([&](ProgressReport&) {
    if (++reports == 2) dictionary->setRestartFailed();
  });
  EXPECT_EQ(shortForm(dictionary->createRules(0.1, 0.1, rules, &listener, true)), "E1");
  EXPECT_TRUE(rules.empty());
}

TEST_F(RuleCreationEdge, NumbersTheFrequentSetsInTheirTids) {
  build();
  create(0.3, 0.5, true);
  // By level, each in table order: empty, a, b, c, ab, ac; bc and abc are not frequent.
  const int item[] = {1, 2, 3};
  EXPECT_EQ(dictionary->getDescriptor(item[2])->getTID(), 3);
  EXPECT_EQ(dictionary->getDescriptor(item, 2)->getTID(), 4);
  EXPECT_EQ(dictionary->getDescriptor(item, 3)->getTID(), 1);
}

}  // namespace
