// The rules of a model against those of the engine's lattice of the same itemsets, and against every split of
// every set.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "korassoc/mining/Model.h"
#include "korassoc/mining/RuleOrder.h"
#include "korassoc/rules/AssociationRule.h"
#include "tests/mining/CountedSets.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TestLattice.h"

namespace korassoc {
namespace {

struct PlainRule {
  Items antecedent, consequent;
  double support, confidence, lift;  // lift: 0 where it is not defined, as the engine has it

  auto key() const { return std::tie(antecedent, consequent, support, confidence, lift); }
  friend bool operator==(const PlainRule& a, const PlainRule& b) { return a.key() == b.key(); }
  friend bool operator<(const PlainRule& a, const PlainRule& b) { return a.key() < b.key(); }
};

std::ostream& operator<<(std::ostream& out, const PlainRule& rule) {
  return out << Labels().describe(rule.antecedent) << " => " << Labels().describe(rule.consequent)
             << " support " << rule.support << " confidence " << rule.confidence << " lift " << rule.lift;
}

std::vector<PlainRule> plain(const std::vector<AssociationRule>& rules) {
  std::vector<PlainRule> result;
  for (const AssociationRule& rule : rules) {
    result.push_back({itemVector(rule.getAntecedent()), itemVector(rule.getConsequent()), rule.getSupport(),
                      rule.getConfidence(), rule.getLift()});
  }
  return result;
}

std::vector<PlainRule> plain(const RuleTable& rules) {
  std::vector<PlainRule> result;
  for (const RuleView rule : rules) {
    const double lift = rule.counts().consequent == 0 ? 0 : rule.lift();
    result.push_back(
        {listOf(rule.antecedent()), listOf(rule.consequent()), rule.support(), rule.confidence(), lift});
  }
  return result;
}

std::vector<PlainRule> sorted(std::vector<PlainRule> rules) {
  std::sort(rules.begin(), rules.end());
  return rules;
}

bool contains(const Items& items, Item item) {
  return std::find(items.begin(), items.end(), item) != items.end();
}

Items some(Dice& dice, const Items& items, int percent) {
  Items result;
  for (const Item item : items) {
    if (dice.chance(percent)) result.push_back(item);
  }
  return result;
}

// A query that the engine has arguments for, with thresholds that lie exactly on quotients of small counts.
RuleQuery randomQuery(Dice& dice, const RandomSets& sets) {
  const auto quotient = [&dice] {
    const int of = dice.between(1, 12);
    return static_cast<double>(dice.between(0, of)) / of;
  };
  const auto n = static_cast<std::int64_t>(sets.transactions.size());
  RuleQuery query;
  query.minSupport =
      Support::count(dice.chance(60) ? sets.minCount : dice.between(sets.minCount, static_cast<int>(n)));
  if (dice.chance(30))
    query.maxSupport = Support::count(std::max(query.minSupport->leastCount(n), n / dice.between(1, 6)));
  query.minConfidence = quotient();
  query.maxConfidence = dice.chance(60) ? 1 : std::max(query.minConfidence, quotient());
  if (dice.chance(30)) query.bounds.push_back({Measure::kLift, dice.oneOf<double>({0.5, 1.0, 1.25, 2.0})});
  if (dice.chance(25)) query.antecedent.required = some(dice, sets.universe, 15);
  if (dice.chance(25)) query.antecedent.allowed = some(dice, sets.universe, 60);
  if (dice.chance(25)) query.consequent.required = some(dice, sets.universe, 15);
  if (dice.chance(25)) query.consequent.allowed = some(dice, sets.universe, 60);
  query.antecedent.minLength = static_cast<std::size_t>(dice.oneOf<int>({0, 0, 1, 1, 2}));
  query.antecedent.maxLength = dice.oneOf<std::size_t>({10, 2, 1, std::numeric_limits<std::size_t>::max()});
  query.antecedent.maxLength = std::max(query.antecedent.maxLength, query.antecedent.minLength);
  query.consequent.minLength = dice.oneOf<std::size_t>({1, 1, 1, 2});
  query.consequent.maxLength =
      std::max(dice.oneOf<std::size_t>({10, 1, 2, std::numeric_limits<std::size_t>::max()}),
               query.consequent.minLength);
  const std::vector<std::optional<Measure>> orders = {Measure::kConfidence, Measure::kSupport, Measure::kLift,
                                                      std::nullopt};
  query.orderBy = dice.oneOf(orders);
  if (query.orderBy && dice.chance(30)) query.top = dice.oneOf<std::size_t>({0, 1, 5, 100000});
  // Required items are allowed as a matter of course here, and so they are told to the engine.
  for (SideFilter* side : {&query.antecedent, &query.consequent}) {
    if (!side->allowed) continue;
    side->allowed->insert(side->allowed->end(), side->required.begin(), side->required.end());
    std::sort(side->allowed->begin(), side->allowed->end());
    side->allowed->erase(std::unique(side->allowed->begin(), side->allowed->end()), side->allowed->end());
  }
  std::erase_if(query.consequent.required,
                [&query](Item item) { return contains(query.antecedent.required, item); });
  return query;
}

std::string text(const RuleQuery& query) {
  std::ostringstream out;
  out << "support " << query.minSupport->leastCount(1);
  if (query.maxSupport) out << ".." << query.maxSupport->largestCount(1);
  out << " confidence " << query.minConfidence << ".." << query.maxConfidence;
  for (const MeasureBounds& bounds : query.bounds)
    out << " " << bounds.measure.name() << " >= " << bounds.least;
  for (const SideFilter* side : {&query.antecedent, &query.consequent}) {
    out << " side required " << Labels().describe(side->required);
    if (side->allowed) out << " allowed " << Labels().describe(*side->allowed);
    out << " excluded " << Labels().describe(side->excluded) << " length " << side->minLength << ".."
        << side->maxLength;
  }
  out << " selection " << static_cast<int>(query.selection);
  if (query.orderBy) out << " by " << query.orderBy->name();
  if (query.top) out << " top " << *query.top;
  return out.str();
}

bool accepts(const SideFilter& filter, const Items& side) {
  const auto isRequiredHere = [&side](Item item) { return contains(side, item); };
  const auto isAllowed = [&filter](Item item) { return !filter.allowed || contains(*filter.allowed, item); };
  return filter.minLength <= side.size() && side.size() <= filter.maxLength &&
         std::all_of(filter.required.begin(), filter.required.end(), isRequiredHere) &&
         std::all_of(side.begin(), side.end(), isAllowed);
}

// Whether a rule is within the bounds and filters of a query.
bool accepts(const RuleQuery& query, const PlainRule& rule, double transactions) {
  const auto count = static_cast<std::int64_t>(std::lround(rule.support * transactions));
  if (query.maxSupport && count > query.maxSupport->largestCount(1)) return false;
  if (!query.bounds.empty() && !(rule.lift >= query.bounds.front().least && !std::isinf(rule.lift)))
    return false;
  return rule.confidence >= query.minConfidence && rule.confidence <= query.maxConfidence &&
         accepts(query.antecedent, rule.antecedent) && accepts(query.consequent, rule.consequent);
}

// The engine's answer to the same question.
std::vector<PlainRule> engineRules(SetDictionary& dictionary, const RuleQuery& query) {
  const auto lengthOf = [](std::size_t length) {
    return static_cast<int>(std::min<std::size_t>(length, std::numeric_limits<int>::max()));
  };
  const auto setOf = [](const Items& items) { return itemSet(items); };
  const double n = dictionary.getEmptySetCount();
  ItemSet antecedentRequired = setOf(query.antecedent.required);
  ItemSet consequentRequired = setOf(query.consequent.required);
  ItemSet antecedentAllowed = setOf(query.antecedent.allowed.value_or(Items()));
  ItemSet consequentAllowed = setOf(query.consequent.allowed.value_or(Items()));
  const double maxCount = query.maxSupport ? static_cast<double>(query.maxSupport->largestCount(1)) : n;
  const char order = !query.orderBy                        ? 'X'
                     : *query.orderBy == Measure::kLift    ? 'L'
                     : *query.orderBy == Measure::kSupport ? 'S'
                                                           : 'C';
  std::vector<AssociationRule> rules;
  EXPECT_TRUE(
      dictionary
          .createFilteredRules(query.minConfidence, query.maxConfidence,
                               static_cast<double>(query.minSupport->leastCount(1)) / n, (maxCount + 0.5) / n,
                               query.bounds.empty() ? 0.0 : query.bounds.front().least, order,
                               &antecedentRequired, query.antecedent.allowed ? &antecedentAllowed : nullptr,
                               lengthOf(query.antecedent.minLength), lengthOf(query.antecedent.maxLength),
                               &consequentRequired, query.consequent.allowed ? &consequentAllowed : nullptr,
                               lengthOf(query.consequent.minLength), lengthOf(query.consequent.maxLength),
                               query.top ? lengthOf(*query.top) : -1,
                               query.selection == RuleSelection::kMinimal, rules, nullptr)
          .IsOK());
  return plain(rules);
}

// Takes sets out and raises counts. Every set that stays has a chain of subsets down to the empty set:
// without one the engine does not meet it.
void makeOdd(RandomSets& sets, bool rising) {
  Dice& dice = sets.dice;
  std::vector<Items> bySize;
  for (auto& [items, count] : sets.counts) {
    if (rising && !items.empty() && dice.chance(20)) {
      count = std::min(count + dice.between(1, 3), sets.counts.at({}));
    }
    bySize.push_back(items);
  }
  std::sort(bySize.begin(), bySize.end(),
            [](const Items& a, const Items& b) { return compareItemsets(a, b) < 0; });
  for (const Items& items : bySize) {
    bool isReached = items.size() <= 1;
    for (std::size_t left = 0; left < items.size(); ++left) {
      Items smaller = items;
      smaller.erase(smaller.begin() + static_cast<std::ptrdiff_t>(left));
      isReached = isReached || sets.counts.contains(smaller);
    }
    if (!isReached || (items.size() > 1 && dice.chance(10))) sets.counts.erase(items);
  }
}

class RulesAgainstEngine : public testing::TestWithParam<int> {
 protected:
  // The rules of random queries, of all rules and of those with minimal antecedents, of a lattice and of a
  // model.
  std::size_t compare(const RandomSets& sets, Dice& dice, bool rising = false) {
    if (sets.counts.size() < 2) return 0;  // the engine answers nothing then
    TestLattice lattice(sets.counts);
    const Model model = modelOf(sets.counts, sets.minCount, dice);
    std::size_t compared = 0;
    for (int i = 0; i < 12; ++i) {
      RuleQuery query = randomQuery(dice, sets);
      if (rising) {
        query.minSupport = Support::count(sets.minCount);
        query.antecedent.required.clear();
        query.consequent.required.clear();
        query.antecedent.allowed.reset();
        query.consequent.allowed.reset();
      }
      query.selection = dice.chance(40) ? RuleSelection::kMinimal : RuleSelection::kAll;
      std::vector<PlainRule> expected = engineRules(lattice.dictionary, query);
      std::vector<PlainRule> rules = plain(model.rules(query));
      if (!query.orderBy) {  // either has an order of discovery of its own
        expected = sorted(expected);
        rules = sorted(rules);
      }
      EXPECT_EQ(rules, expected) << text(query);
      if (testing::Test::HasFailure()) return compared;
      compared += rules.size();
    }
    return compared;
  }
};

TEST_P(RulesAgainstEngine, AreTheSameInTheSameOrder) {
  std::size_t compared = 0;
  for (std::uint64_t i = 0; i < 40; ++i) {
    const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 1000 + i;
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSets sets(seed);
    compared += compare(sets, sets.dice);
    if (HasFailure()) return;
  }
  EXPECT_GT(compared, 2000U);
}

TEST_P(RulesAgainstEngine, AreTheSameWhereSetsAreMissingOrCountsRise) {
  std::size_t compared = 0;
  for (std::uint64_t i = 0; i < 40; ++i) {
    const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 1000 + 500 + i;
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSets sets(seed);
    const bool rising = i % 2 == 0;  // the engine finds its itemsets along chains that rising counts break
    makeOdd(sets, rising);
    const StreamCapture output(std::cout);  // the engine tells of each missing subset
    compared += compare(sets, sets.dice, rising);
    if (HasFailure()) return;
  }
  EXPECT_GT(compared, 1000U);
}

TEST_P(RulesAgainstEngine, AreTheSameWithoutTheRedundantOnes) {
  std::size_t compared = 0;
  for (std::uint64_t i = 0; i < 60; ++i) {
    const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 1000 + i;
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSets sets(seed);
    const bool odd = i % 3 == 0;
    if (odd) makeOdd(sets, true);
    if (sets.counts.size() < 2) continue;
    const StreamCapture output(std::cout);
    TestLattice lattice(sets.counts);
    const Model model = modelOf(sets.counts, sets.minCount, sets.dice);
    for (int q = 0; q < 8; ++q) {
      RuleQuery query = randomQuery(sets.dice, sets);
      query.selection = RuleSelection::kNonRedundant;
      query.orderBy = Measure::kConfidence;
      query.top.reset();
      const double n = lattice.dictionary.getEmptySetCount();
      std::vector<AssociationRule> all;
      ASSERT_TRUE(lattice.dictionary
                      .createRules(static_cast<double>(query.minSupport->leastCount(1)) / n,
                                   query.minConfidence, all, nullptr, true)
                      .IsOK());
      std::vector<PlainRule> expected = plain(all);
      std::erase_if(expected, [&](const PlainRule& rule) { return !accepts(query, rule, n); });
      for (PlainRule& rule : expected) {
        if (std::isinf(rule.lift)) rule.lift = 0;  // the consequent is not stored
      }
      ASSERT_EQ(plain(model.rules(query)), expected) << text(query);
      compared += expected.size();
    }
  }
  EXPECT_GT(compared, 300U);
}

TEST_P(RulesAgainstEngine, AreTheSameWithItemsThatAreExcluded) {
  for (std::uint64_t i = 0; i < 40; ++i) {
    const std::uint64_t seed = static_cast<std::uint64_t>(GetParam()) * 1000 + i;
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSets sets(seed);
    if (sets.counts.size() < 2) continue;
    TestLattice lattice(sets.counts);
    const Model model = modelOf(sets.counts, sets.minCount, sets.dice);
    for (int q = 0; q < 8; ++q) {
      RuleQuery query = randomQuery(sets.dice, sets);
      if (!query.orderBy) query.orderBy = Measure::kLift;
      query.selection = sets.dice.chance(50) ? RuleSelection::kMinimal : RuleSelection::kAll;
      query.antecedent.minLength = std::max<std::size_t>(query.antecedent.minLength, 1);
      query.antecedent.maxLength = std::max<std::size_t>(query.antecedent.maxLength, 1);
      RuleQuery allowing = query;
      for (const bool left : {true, false}) {
        SideFilter& side = left ? query.antecedent : query.consequent;
        side.excluded = some(sets.dice, sets.universe, 20);
        std::erase_if(side.required, [&side](Item item) { return contains(side.excluded, item); });
        SideFilter& allowed = left ? allowing.antecedent : allowing.consequent;
        allowed.required = side.required;
        allowed.allowed = side.allowed.value_or(sets.universe);
        std::erase_if(*allowed.allowed, [&side](Item item) { return contains(side.excluded, item); });
      }
      ASSERT_EQ(plain(model.rules(query)), engineRules(lattice.dictionary, allowing)) << text(query);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RulesAgainstEngine, testing::Range(0, 4));

// No engine, no search and no doubles: every split of every frequent set.
TEST(Rules, AreThoseOfEverySplitOfEverySet) {
  for (std::uint64_t seed = 7000; seed < 7020; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSets sets(seed);
    const Model model = modelOf(sets.counts, sets.minCount, sets.dice);
    for (const oracle::brute::Fraction confidence :
         {oracle::brute::Fraction{0, 1}, {1, 10}, {1, 3}, {1, 2}, {2, 3}, {3, 4}, {6, 7}, {1, 1}}) {
      RuleQuery query;
      query.minConfidence = confidence.value();
      query.antecedent.minLength = 0;
      const std::vector<oracle::brute::Rule> all = oracle::brute::rules(sets.counts, confidence);
      const auto asked = [&](const std::vector<oracle::brute::Rule>& rules) {
        std::vector<PlainRule> expected;
        for (const oracle::brute::Rule& rule : rules) {
          const RuleCounts counts = {rule.transactions, rule.countBoth, rule.countAntecedent,
                                     rule.countConsequent};
          expected.push_back({rule.antecedent, rule.consequent, Measure::kSupport.of(counts),
                              Measure::kConfidence.of(counts), Measure::kLift.of(counts)});
        }
        return sorted(expected);
      };
      ASSERT_EQ(sorted(plain(model.rules(query))), asked(all)) << query.minConfidence;
      query.selection = RuleSelection::kNonRedundant;
      ASSERT_EQ(sorted(plain(model.rules(query))), asked(oracle::brute::nonRedundant(all)))
          << query.minConfidence;
    }
  }
}

}  // namespace
}  // namespace korassoc
