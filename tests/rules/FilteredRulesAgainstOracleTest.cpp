// Filtered rule creation and the consequent queries against the plain engine over random runs and filters.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/engine/DictionarySettings.h"
#include "korassoc/rules/AssociationRule.h"
#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/oracle/PlainFilteredRules.h"
#include "tests/oracle/PlainLattice.h"
#include "tests/support/EngineAndOracle.h"
#include "tests/support/RandomRuns.h"
#include "tests/support/RuleComparison.h"

namespace {

using oracle::Items;
using oracle::PlainFilter;

// What the interface takes for an optional set: null, or a set of the caller's.
class Argument {
 public:
  explicit Argument(const std::optional<Items>& items) {
    if (items.has_value()) set_ = ItemSet(items->data(), static_cast<int>(items->size()));
    given_ = items.has_value();
  }
  ItemSet* get() { return given_ ? &set_ : nullptr; }

 private:
  ItemSet set_;
  bool given_ = false;
};

std::string text(const PlainFilter& filter) {
  std::ostringstream out;
  const auto put = [&](const char* name, const std::optional<Items>& items) {
    if (items.has_value()) out << name << braces(*items);
  };
  out << "confidence " << filter.minConfidence << ".." << filter.maxConfidence << ", support "
      << filter.minSupport << ".." << filter.maxSupport << ", lift " << filter.minLift << ", sort "
      << filter.sortBy << ", lengths " << filter.minAntecedentLength << ".." << filter.maxAntecedentLength
      << " > " << filter.minConsequentLength << ".." << filter.maxConsequentLength << ", max "
      << filter.maxRules << (filter.minimalAntecedentsOnly ? ", minimal" : "");
  put(", antecedent required ", filter.antecedentRequired);
  put(", allowed ", filter.antecedentAllowed);
  put(", consequent required ", filter.consequentRequired);
  put(", allowed ", filter.consequentAllowed);
  return out.str();
}

// Some of the items, ascending.
Items some(Dice& dice, const Items& items, int percent) {
  Items result;
  for (const int item : items) {
    if (dice.chance(percent)) result.push_back(item);
  }
  return result;
}

PlainFilter randomFilter(Dice& dice, const Items& universe) {
  PlainFilter filter;
  filter.minConfidence = dice.oneOf<double>({0.0, 0.0, 0.1, 1.0 / 3, 0.5, 0.7, 1.0});
  filter.maxConfidence = dice.oneOf<double>({1.0, 1.0, 1.0, 0.9, 0.5, 0.0});
  filter.minSupport = dice.oneOf<double>({0.0, 0.01, 0.1, 0.25, 0.3});
  filter.maxSupport = dice.oneOf<double>({1.0, 1.0, 0.9, 0.5, 0.31});
  filter.minLift = dice.oneOf<double>({0.0, 0.0, 0.9, 1.0, 1.2});
  filter.sortBy = dice.oneOf<char>({'X', 'X', 'C', 'S', 'L', '\0'});
  if (dice.chance(25)) filter.antecedentRequired = some(dice, universe, 15);
  if (dice.chance(25)) filter.antecedentAllowed = some(dice, universe, 70);
  if (dice.chance(25)) filter.consequentRequired = some(dice, universe, 15);
  if (dice.chance(25)) filter.consequentAllowed = some(dice, universe, 70);
  filter.minAntecedentLength = dice.oneOf<int>({0, 0, 1, 1, 2, -3});
  filter.maxAntecedentLength = dice.oneOf<int>({10, 10, 2, 1, 2147483647});
  filter.minConsequentLength = dice.oneOf<int>({1, 1, 1, 2, 0});
  filter.maxConsequentLength = dice.oneOf<int>({10, 10, 1, 2, 2147483647});
  filter.maxRules = dice.oneOf<int>({-1, -1, 10, 1, 0, 2147483647});
  filter.minimalAntecedentsOnly = dice.chance(40);
  return filter;
}

std::string difference(const std::vector<ConsequentDescriptor>& items,
                       const std::vector<oracle::PlainConsequent>& expected) {
  if (items.size() != expected.size()) {
    return std::to_string(items.size()) + " items instead of " + std::to_string(expected.size());
  }
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i].getItem() != expected[i].item || items[i].getSupport() != expected[i].support ||
        items[i].getConfidence() != expected[i].confidence || items[i].getLift() != expected[i].lift) {
      return "item " + std::to_string(i) + ": " + std::to_string(items[i].getItem()) + " instead of " +
             std::to_string(expected[i].item) + ", or its figures";
    }
  }
  return "";
}

class FilteredRulesAgainstOracle : public testing::TestWithParam<int> {
 protected:
  // Does the operation on random runs whose lattice is closed and not empty.
  template <typename Operation>
  void onLattices(Operation&& operation) {
    for (std::uint64_t i = 0; i < 50; ++i) {
      const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 100 + i;
      SCOPED_TRACE("seed " + std::to_string(seed));
      const RandomRun run = seed % 2 == 0 ? everythingStored(seed) : randomRun(seed);
      if (run.repeats) continue;
      EngineAndOracle both(run);
      both.runPhaseI();
      both.runPhaseIIrandom(run.transactions);
      if (both.plain.missingSubsets > 0 || both.plain.dictionary.highestLevel() == 0) continue;
      Items universe;
      for (const Items& items : run.transactions) universe.insert(universe.end(), items.begin(), items.end());
      std::sort(universe.begin(), universe.end());
      universe.erase(std::unique(universe.begin(), universe.end()), universe.end());
      Dice dice(seed);
      operation(both, run, universe, dice);
      if (HasFatalFailure()) return;
    }
  }
};

TEST_P(FilteredRulesAgainstOracle, SameRulesInTheSameOrder) {
  std::size_t rulesCompared = 0;
  onLattices([&](EngineAndOracle& both, const RandomRun& run, const Items& universe, Dice& dice) {
    for (int query = 0; query < 12; ++query) {
      const PlainFilter filter = randomFilter(dice, universe);
      Argument antecedentRequired(filter.antecedentRequired);
      Argument antecedentAllowed(filter.antecedentAllowed);
      Argument consequentRequired(filter.consequentRequired);
      Argument consequentAllowed(filter.consequentAllowed);
      std::vector<AssociationRule> rules;
      ASSERT_TRUE(both.engine
                      ->GetRulesSpecial(
                          filter.minConfidence, filter.maxConfidence, filter.minSupport, filter.maxSupport,
                          filter.minLift, filter.sortBy, antecedentRequired.get(), antecedentAllowed.get(),
                          filter.minAntecedentLength, filter.maxAntecedentLength, consequentRequired.get(),
                          consequentAllowed.get(), filter.minConsequentLength, filter.maxConsequentLength,
                          filter.maxRules, filter.minimalAntecedentsOnly, rules)
                      .IsOK());
      const std::vector<oracle::PlainRule> expected =
          oracle::createFilteredRules(both.plain.dictionary, run.settings, filter);
      ASSERT_EQ(firstDifference(rules, expected), "") << text(filter);
      rulesCompared += rules.size();
    }
  });
  EXPECT_GT(rulesCompared, 1000U);
}

TEST_P(FilteredRulesAgainstOracle, SameItemsOfTheFilteredQuery) {
  onLattices([&](EngineAndOracle& both, const RandomRun& run, const Items& universe, Dice& dice) {
    for (int query = 0; query < 6; ++query) {
      const PlainFilter filter = randomFilter(dice, universe);
      const int maxItems = dice.oneOf<int>({-1, 0, 1, 3, 1000});
      Argument antecedentRequired(filter.antecedentRequired);
      Argument antecedentAllowed(filter.antecedentAllowed);
      Argument consequentAllowed(filter.consequentAllowed);
      std::vector<ConsequentDescriptor> items;
      ASSERT_TRUE(both.engine
                      ->GetItemsSpecial(filter.minConfidence, filter.maxConfidence, filter.minSupport,
                                        filter.maxSupport, filter.minLift, filter.sortBy,
                                        antecedentRequired.get(), antecedentAllowed.get(),
                                        filter.minAntecedentLength, filter.maxAntecedentLength,
                                        consequentAllowed.get(), maxItems, items)
                      .IsOK());
      ASSERT_EQ(difference(items, oracle::createFilteredConsequents(both.plain.dictionary, run.settings,
                                                                    filter, maxItems)),
                "")
          << text(filter) << ", max items " << maxItems;
    }
  });
}

TEST_P(FilteredRulesAgainstOracle, SameItemsOfAnAntecedent) {
  onLattices([&](EngineAndOracle& both, const RandomRun&, const Items& universe, Dice& dice) {
    for (int query = 0; query < 8; ++query) {
      std::optional<Items> antecedent;
      if (query > 0) antecedent = some(dice, universe, query * 12);
      const int maxItems = dice.oneOf<int>({-1, -1, 0, 1, 3});
      Argument argument(antecedent);
      std::vector<ConsequentDescriptor> items;
      ASSERT_TRUE(both.engine->GetItems(argument.get(), maxItems, items).IsOK());
      ASSERT_EQ(difference(items, oracle::createConsequents(both.plain.dictionary, antecedent, maxItems)), "")
          << (antecedent.has_value() ? braces(*antecedent) : "no antecedent") << ", max items " << maxItems;
    }
  });
}

// 100 * 0.29 is 28.999999999999996. The largest count is rounded to 29 only where the least count is 29 too.
TEST(FilteredRuleMaximum, IsRoundedOnlyWhereTheMinimumAgrees) {
  DictionarySettings settings;
  SetDictionary dictionary(2, &settings, true);
  dictionary.addEmptySet(new CarmaSetDescriptor(100, 0, 0));
  const int item = 1;
  ASSERT_EQ(dictionary.addSet(&item, 1, new CarmaSetDescriptor(29, 1, 0)), 0);
  dictionary.buildLattice();
  oracle::PlainSettings plainSettings;
  oracle::PlainDictionary plain(plainSettings);
  plain.addEmptySet();
  plain.find({})->count = 100;
  plain.add({1}, oracle::Counter{29, 1, 0, {}});
  oracle::buildLattice(plain);

  struct Case {
    double minSupport;
    double maxSupport;
    std::size_t rules;  // {} -> {1}, support 0.29
  };
  for (const Case& c : {Case{0.0, 0.29, 0}, Case{0.28, 0.29, 0}, Case{0.29, 0.29, 1}, Case{0.0, 0.30, 1}}) {
    std::vector<AssociationRule> rules;
    ASSERT_TRUE(dictionary
                    .createFilteredRules(0.0, 1.0, c.minSupport, c.maxSupport, 0.0, 'C', nullptr, nullptr, 0,
                                         5, nullptr, nullptr, 1, 5, -1, false, rules, nullptr)
                    .IsOK());
    EXPECT_EQ(rules.size(), c.rules) << c.minSupport << ".." << c.maxSupport;
    PlainFilter filter;
    filter.minSupport = c.minSupport;
    filter.maxSupport = c.maxSupport;
    EXPECT_EQ(oracle::createFilteredRules(plain, plainSettings, filter).size(), c.rules)
        << c.minSupport << ".." << c.maxSupport;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FilteredRulesAgainstOracle, testing::Range(0, 3));

}  // namespace
