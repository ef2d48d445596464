#include "korassoc/mining/Recommender.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include "korassoc/rules/ConsequentDescriptor.h"
#include "tests/mining/CountedSets.h"
#include "tests/support/TestLattice.h"

namespace korassoc {
namespace {

Items randomBasket(Dice& dice, const Items& universe) {
  Items basket;
  for (const Item item : universe) {
    for (int times = dice.below(3); times > 0; --times) basket.push_back(item);
  }
  if (dice.chance(20)) basket.push_back(987654);
  dice.shuffle(basket);
  return basket;
}

TEST(Recommender, SaysWhatTheEngineSaysOfAnAntecedent) {
  std::size_t compared = 0;
  for (std::uint64_t seed = 0; seed < 40; ++seed) {
    RandomSets sets(seed);
    if (sets.counts.size() < 2) continue;
    TestLattice lattice(sets.counts);
    RuleQuery query;
    query.consequent.maxLength = 1;
    const Recommender recommender(modelOf(sets.counts, sets.minCount, sets.dice).rules(query));
    for (int i = 0; i < 10; ++i) {
      const Items basket = randomBasket(sets.dice, sets.universe);
      Items given = basket;
      std::sort(given.begin(), given.end());
      given.erase(std::unique(given.begin(), given.end()), given.end());
      ItemSet antecedent = itemSet(given);
      const int most = sets.dice.oneOf<int>({0, 1, 2, 100});
      std::vector<ConsequentDescriptor> expected;
      ASSERT_TRUE(lattice.dictionary.createConsequents(&antecedent, most, expected).IsOK());
      const std::vector<Recommendation> found = recommender.recommend(basket, static_cast<std::size_t>(most));
      ASSERT_EQ(found.size(), expected.size()) << "seed " << seed;
      for (std::size_t j = 0; j < found.size(); ++j) {
        const RuleView rule = recommender.rules()[found[j].rule];
        EXPECT_EQ(found[j].item, expected[j].getItem());
        EXPECT_EQ(found[j].value, expected[j].getConfidence());
        EXPECT_EQ(rule.support(), expected[j].getSupport());
        EXPECT_EQ(rule.lift(), expected[j].getLift());
      }
      compared += found.size();
    }
  }
  EXPECT_GT(compared, 100U);
}

// Any measure, consequents of several items, the empty antecedent: every rule looked at for every basket.
TEST(Recommender, TakesTheBestRuleForEachItemOfManyBaskets) {
  for (std::uint64_t seed = 0; seed < 40; ++seed) {
    RandomSets sets(seed);
    const Measure by =
        Measure::ofRow(static_cast<std::size_t>(sets.dice.below(static_cast<int>(Measure::table().size()))));
    RuleQuery query;
    query.antecedent.minLength = 0;
    query.minConfidence = 0.3;
    const RuleTable rules = modelOf(sets.counts, sets.minCount, sets.dice).rules(query);
    const Recommender recommender(rules, by);
    std::vector<Items> lists(20);
    for (Items& basket : lists) basket = randomBasket(sets.dice, sets.universe);
    const std::size_t most = sets.dice.oneOf<std::size_t>({1, 3, 100});
    const Recommendations all = recommender.recommend(Baskets::fromLists(lists), most);
    ASSERT_EQ(all.offsets.size(), lists.size() + 1);
    for (std::size_t i = 0; i < lists.size(); ++i) {
      const auto holds = [&](Item item) {
        return std::find(lists[i].begin(), lists[i].end(), item) != lists[i].end();
      };
      std::map<Item, double> best;
      for (const RuleView rule : rules) {
        const double value = rule.value(by);
        if (!std::all_of(rule.antecedent().begin(), rule.antecedent().end(), holds) || !(value == value))
          continue;
        for (const Item item : rule.consequent()) {
          if (holds(item)) continue;
          const auto [place, isNew] = best.try_emplace(item, value);
          place->second = std::max(place->second, value);
        }
      }
      std::vector<std::pair<double, Item>> expected;  // negated, so that the highest comes first
      for (const auto& [item, value] : best) expected.emplace_back(-value, item);
      std::sort(expected.begin(), expected.end());
      expected.resize(std::min(expected.size(), most));
      const auto begin = static_cast<std::size_t>(all.offsets[i]);
      ASSERT_EQ(static_cast<std::size_t>(all.offsets[i + 1]) - begin, expected.size()) << "seed " << seed;
      for (std::size_t j = 0; j < expected.size(); ++j) {
        const Recommendation& found = all.recommendations[begin + j];
        EXPECT_EQ(found.item, expected[j].second);
        EXPECT_EQ(found.value, -expected[j].first);
        EXPECT_EQ(rules[found.rule].value(by), found.value);
      }
    }
  }
}

TEST(Recommender, WithoutRulesRecommendsNothing) {
  const Recommender recommender{RuleTable()};
  EXPECT_TRUE(recommender.recommend(Items{1, 2}, 10).empty());
  EXPECT_EQ(recommender.recommend(Baskets::fromLists({{1}, {}}), 10).offsets,
            (std::vector<std::int64_t>{0, 0, 0}));
}

}  // namespace
}  // namespace korassoc
