#include "tests/oracle/PlainRules.h"

#include <gtest/gtest.h>

#include "tests/oracle/PlainQueue.h"
#include "tests/oracle/SmallLattice.h"

namespace oracle {
namespace {

TEST(PlainRules, EmitsInTheOrderOfTheTables) {
  // Bounds count /
  // 0.6: a 10 takes the empty set (10); b 8, c 6, bc 3 take nothing; ab 6 takes a (6), b (5); ac 5 takes c
  // (4); abc 3 takes ac (3), bc (2).
  PlainDictionary dictionary = smallLattice();
  const std::vector<PlainRule> rules = createRules(dictionary, PlainSettings{}, 0.2, 0.6, false);
  EXPECT_EQ(names(rules), Names({">a", "a>b", "b>a", "c>a", "ac>b", "bc>a"}));
}

TEST(PlainRules, SortsByConfidenceThenSupport) {
  PlainDictionary dictionary = smallLattice();
  std::vector<PlainRule> rules = createRules(dictionary, PlainSettings{}, 0.2, 0.6, false);
  sortByConfidence(rules);
  EXPECT_EQ(names(rules), Names({"bc>a", "b>a", "c>a", "a>b", "ac>b", ">a"}));
  const double expected[][3] = {{0.2, 1.0, 10.0 / 6},    {0.4, 0.8, 4.0 / 3},     {0.3, 0.75, 1.25},
                                {0.4, 2.0 / 3, 4.0 / 3}, {0.2, 2.0 / 3, 4.0 / 3}, {0.6, 0.6, 1.0}};
  for (std::size_t i = 0; i < rules.size(); ++i) {
    EXPECT_DOUBLE_EQ(rules[i].support, expected[i][0]) << i;
    EXPECT_DOUBLE_EQ(rules[i].confidence, expected[i][1]) << i;
    EXPECT_DOUBLE_EQ(rules[i].lift, expected[i][2]) << i;
  }
}

TEST(PlainRules, DropsWhatASmallerAntecedentOrALargerConsequentSays) {
  // Bounds count / 0.5: a 12 and b 10 take the empty set; c 8 takes nothing; ab 8 takes a, b; ac 6 takes a,
  // c; bc 4 takes c; abc 4 takes ab, c and with c also ac, bc, which are not minimal. c>a and c>b go for
  // c>ab.
  PlainDictionary dictionary = smallLattice();
  EXPECT_EQ(names(createRules(dictionary, PlainSettings{}, 0.2, 0.5, true)),
            Names({">a", ">b", "a>b", "b>a", "a>c", "ab>c", "c>ab"}));
}

TEST(PlainRules, CutsTheMinimumCount) {
  PlainDictionary dictionary = smallLattice();
  // 10 * 0.39 = 3.9: sets counted 3 take part, ac among them, bc and abc not.
  EXPECT_EQ(names(createRules(dictionary, PlainSettings{}, 0.39, 0.6, false)),
            Names({">a", "a>b", "b>a", "c>a"}));
}

TEST(PlainRules, NumbersTheFrequentSetsInTheOrderOfInsertion) {
  PlainDictionary dictionary = smallLattice();
  createRules(dictionary, PlainSettings{}, 0.2, 0.6, false);
  EXPECT_EQ(dictionary.find({})->tid, 0);
  EXPECT_EQ(dictionary.find({3})->tid, 3);
  EXPECT_EQ(dictionary.find({1, 2})->tid, 4);
  EXPECT_EQ(dictionary.find({1, 2, 3})->tid, 7);
}

TEST(PlainQueue, GivesTheLargestCountFirst) {
  PlainQueue queue;
  const Counter counters[] = {{3, 0, 0, {}}, {7, 0, 0, {}}, {5, 0, 0, {}}, {7, 0, 0, {}}, {1, 0, 0, {}}};
  for (int i = 0; i < 5; ++i) queue.push({i}, &counters[i]);
  // Pushing 3, 7, 5, 7', 1: [3] [7 3] [7 3 5] [7' 7 5 3] (7' rises past 3 and past the equal 7) [7' 7 5 3 1].
  std::string order;
  while (!queue.empty()) order += std::to_string(queue.pop().set[0]) + " ";
  EXPECT_EQ(order, "3 1 2 0 4 ");
}

TEST(PlainQueue, PrefersTheLeftOfEqualChildren) {
  PlainQueue queue;
  const Counter counters[] = {{9, 0, 0, {}}, {5, 0, 0, {}}, {5, 0, 0, {}}, {1, 0, 0, {}}};
  for (int i = 0; i < 4; ++i) queue.push({i}, &counters[i]);  // [0 1 2 3]
  EXPECT_EQ(queue.pop().set, Items({0}));
  EXPECT_EQ(queue.pop().set, Items({1}));
  EXPECT_EQ(queue.pop().set, Items({2}));
}

}  // namespace
}  // namespace oracle
