#include "tests/oracle/BruteForce.h"

#include <gtest/gtest.h>

namespace oracle::brute {
namespace {

const std::vector<std::vector<int>> kTransactions = {{2, 1}, {1, 1, 2}, {1, 3}, {}};

TEST(BruteForce, CountsEverySubset) {
  const Counts expected = {{{}, 4}, {{1}, 3}, {{2}, 2}, {{3}, 1}, {{1, 2}, 2}, {{1, 3}, 1}};
  EXPECT_EQ(countSubsets(kTransactions, 5), expected);
  EXPECT_EQ(countSubsets(kTransactions, 1).size(), 4U);
  EXPECT_EQ(atLeast(expected, 2).size(), 4U);
}

TEST(BruteForce, SplitsEverySet) {
  // 1 of 4: 0.75; 1>2 0.667; 2>1 1; 3>1 1; 2: 0.5; the rest below.
  const std::vector<Rule> found = rules(countSubsets(kTransactions, 5), {2, 3});
  ASSERT_EQ(found.size(), 4U);
  EXPECT_EQ(found[0].antecedent, Set());
  EXPECT_EQ(found[0].consequent, Set({1}));
  EXPECT_DOUBLE_EQ(found[0].confidence(), 0.75);
  EXPECT_DOUBLE_EQ(found[0].lift(), 1.0);
  EXPECT_EQ(found[1].antecedent, Set({1}));
  EXPECT_EQ(found[2].antecedent, Set({2}));
  EXPECT_DOUBLE_EQ(found[2].support(), 0.5);
  EXPECT_DOUBLE_EQ(found[2].lift(), 4.0 / 3);
  EXPECT_EQ(found[3].antecedent, Set({3}));
}

TEST(BruteForce, KeepsTheRulesThatNoOtherImplies) {
  const auto rule = [](Set antecedent, Set consequent) { return Rule{antecedent, consequent, 1, 1, 1, 1}; };
  const std::vector<Rule> all = {rule({1}, {2}), rule({1}, {2, 3}), rule({1, 2}, {3}), rule({1, 3}, {2}),
                                 rule({2}, {3})};
  const std::vector<Rule> kept = nonRedundant(all);
  ASSERT_EQ(kept.size(), 2U);  // 1>2 yields to 1>23; 12>3 to 1>23; 13>2 to 1>23
  EXPECT_EQ(kept[0].consequent, Set({2, 3}));
  EXPECT_EQ(kept[1].antecedent, Set({2}));
}

}  // namespace
}  // namespace oracle::brute
