// Plain rule creation against the plain engine over random runs, and against every split of every itemset.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "korassoc/rules/AssociationRule.h"
#include "tests/oracle/BruteForce.h"
#include "tests/support/EngineAndOracle.h"
#include "tests/support/RandomRuns.h"
#include "tests/support/RuleComparison.h"

namespace {

using oracle::brute::Fraction;

constexpr Fraction kSupports[] = {{0, 1}, {1, 50}, {1, 10}, {29, 100}, {1, 3}, {1, 2}};
constexpr Fraction kConfidences[] = {{0, 1}, {1, 10}, {1, 3}, {1, 2}, {2, 3}, {7, 10}, {9, 10}, {1, 1}};

class RulesAgainstOracle : public testing::TestWithParam<int> {};

TEST_P(RulesAgainstOracle, SameRulesInTheSameOrder) {
  int compared = 0;
  for (std::uint64_t i = 0; i < 60; ++i) {
    const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 100 + i;
    const RandomRun run = randomRun(seed);
    EngineAndOracle both(run);
    both.runPhaseI();
    switch (seed % 3) {
      case 0:
        both.runPhaseII();
        break;
      case 1:
        both.runPhaseIIrandom(run.transactions);
        break;
      default:
        both.runNullPhaseII(0.1);
        break;
    }
    if (both.plain.missingSubsets > 0) continue;  // repeated items left a lattice with gaps
    if (both.plain.dictionary.highestLevel() == 0) continue;
    Dice dice(seed);
    for (int query = 0; query < 4; ++query) {
      const double minSupport = kSupports[dice.below(6)].value();
      const double minConfidence = kConfidences[dice.below(8)].value();
      const bool pruneRedundant = query % 2 == 0;
      std::vector<AssociationRule> rules;
      const KorAssoc::KorStatus status =
          pruneRedundant
              ? both.engine->CreateNgetRules(minSupport, minConfidence, rules)
              : both.dictionary().createRules(minSupport, minConfidence, rules, nullptr, pruneRedundant);
      ASSERT_TRUE(status.IsOK());
      std::vector<oracle::PlainRule> expected = both.plain.rules(minSupport, minConfidence, pruneRedundant);
      oracle::sortByConfidence(expected);
      ASSERT_EQ(firstDifference(rules, expected), "")
          << "seed " << seed << ", support " << minSupport << ", confidence " << minConfidence;
      ASSERT_EQ(firstDifference(both.dictionary(), both.plain.dictionary), "") << "seed " << seed;
      ++compared;
    }
  }
  EXPECT_GT(compared, 100);
}

TEST_P(RulesAgainstOracle, SecondPassAfterRulesCountsAsBefore) {
  for (std::uint64_t i = 0; i < 40; ++i) {
    const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 100 + i;
    const RandomRun run = randomRun(seed);
    EngineAndOracle both(run);
    both.runPhaseI();
    both.runPhaseII();
    if (both.plain.missingSubsets > 0) continue;
    std::vector<AssociationRule> rules;
    both.engine->CreateNgetRules(0.0, 0.5, rules);  // numbers the sets in their TIDs
    both.plain.rules(0.0, 0.5);
    both.runPhaseII();
    ASSERT_EQ(firstDifference(both.dictionary(), both.plain.dictionary), "") << "seed " << seed;
  }
}

// antecedent and consequent -> support, confidence, lift
using RuleMap = std::map<std::pair<oracle::Items, oracle::Items>, std::vector<double>>;

RuleMap asMap(const std::vector<AssociationRule>& rules) {
  RuleMap map;
  for (const AssociationRule& rule : rules) {
    const bool added = map.insert({{itemsOf(rule.getAntecedent()), itemsOf(rule.getConsequent())},
                                   {rule.getSupport(), rule.getConfidence(), rule.getLift()}})
                           .second;
    EXPECT_TRUE(added) << "twice: " << text(rule);
  }
  return map;
}

void expectSame(const RuleMap& rules, const std::vector<oracle::brute::Rule>& expected) {
  EXPECT_EQ(rules.size(), expected.size());
  for (const oracle::brute::Rule& rule : expected) {
    const std::string name = braces(rule.antecedent) + " -> " + braces(rule.consequent);
    const auto found = rules.find({rule.antecedent, rule.consequent});
    ASSERT_NE(found, rules.end()) << "missing " << name;
    EXPECT_DOUBLE_EQ(found->second[0], rule.support()) << name;
    EXPECT_DOUBLE_EQ(found->second[1], rule.confidence()) << name;
    EXPECT_DOUBLE_EQ(found->second[2], rule.lift()) << name;
  }
}

TEST_P(RulesAgainstOracle, RulesAreAllSplitsOfAllItemsets) {
  for (std::uint64_t i = 0; i < 25; ++i) {
    const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 100 + i;
    SCOPED_TRACE("seed " + std::to_string(seed));
    const RandomRun run = everythingStored(seed);
    EngineAndOracle both(run);
    const int n = static_cast<int>(run.transactions.size());
    both.runPhaseI(n);
    both.runPhaseII();

    const oracle::brute::Counts counts =
        oracle::brute::countSubsets(run.transactions, run.settings.maxLengthSet);
    ASSERT_EQ(both.engine->NumberOfSets(), static_cast<int>(counts.size()));
    for (const auto& [set, count] : counts) {
      const ItemSet key(set.data(), static_cast<int>(set.size()));
      ASSERT_EQ(both.dictionary().getCount(&key), count) << braces(set);
    }

    Dice dice(seed);
    for (int query = 0; query < 4; ++query) {
      const Fraction support = kSupports[dice.below(6)];
      const Fraction confidence = kConfidences[dice.below(8)];
      SCOPED_TRACE("support " + std::to_string(support.value()) + ", confidence " +
                   std::to_string(confidence.value()));
      // The least count is cut, not raised.
      const int minCount = static_cast<int>(n * support.numerator / support.denominator);
      const std::vector<oracle::brute::Rule> all =
          oracle::brute::rules(oracle::brute::atLeast(counts, minCount), confidence);
      std::vector<AssociationRule> rules;
      ASSERT_TRUE(
          both.dictionary().createRules(support.value(), confidence.value(), rules, nullptr, false).IsOK());
      expectSame(asMap(rules), all);
      rules.clear();
      ASSERT_TRUE(both.engine->CreateNgetRules(support.value(), confidence.value(), rules).IsOK());
      expectSame(asMap(rules), oracle::brute::nonRedundant(all));
      if (HasFatalFailure()) return;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RulesAgainstOracle, testing::Range(0, 3));

}  // namespace
