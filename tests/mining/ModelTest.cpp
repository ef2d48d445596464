#include "korassoc/mining/Model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <locale>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/mining/CountedSets.h"
#include "tests/mining/ExpectError.h"

namespace korassoc {
namespace {

// Ten transactions: 4 hold bread, butter and milk, 2 more bread and butter, 1 more bread and milk, 1 milk
// alone, 2 something else.
ItemsetTable::Columns breakfast() {
  ItemsetTable::Columns columns;
  columns.offsets = {0, 1, 3, 4, 6, 7, 10, 12};
  columns.items = {2, 0, 1, 0, 0, 2, 1, 0, 1, 2, 1, 2};
  columns.counts = {6, 6, 7, 5, 6, 4, 4};
  return columns;
}

const Labels& labels() {
  static const Labels labels({"bread", "butter", "milk", "unsold"});
  return labels;
}

Model::Parts breakfastParts() {
  return {ItemsetTable::fromColumns(breakfast()), 10, Support::fraction(0.35), labels()};
}

std::vector<std::string> linesOf(const RuleTable& rules) {
  std::vector<std::string> lines;
  for (const RuleView rule : rules) {
    std::ostringstream line;
    line << rule;
    lines.push_back(line.str());
  }
  return lines;
}

TEST(Model, SaysWhatItWasMadeOf) {
  const Model model = Model::fromItemsets(breakfastParts());
  EXPECT_EQ(model.transactions(), 10);
  EXPECT_EQ(model.minSupport(), Support::fraction(0.35));
  EXPECT_EQ(model.minCount(), 4);  // 3.5 of ten
  EXPECT_EQ(model.guarantee(), Guarantee::kExact);
  EXPECT_EQ(model.longestItemset(), 0U);
  EXPECT_EQ(model.labels(), labels());
}

TEST(Model, HasItsItemsetsInOrder) {
  const Model model = Model::fromItemsets(breakfastParts());
  const std::vector<std::pair<Items, int>> expected = {{{0}, 7},    {{1}, 6},    {{2}, 6},      {{0, 1}, 6},
                                                       {{0, 2}, 5}, {{1, 2}, 4}, {{0, 1, 2}, 4}};
  ASSERT_EQ(model.itemsets().size(), expected.size());
  for (std::size_t row = 0; row < expected.size(); ++row) {
    EXPECT_EQ(listOf(model.itemsets()[row].items), expected[row].first);
    EXPECT_EQ(model.itemsets()[row].count, expected[row].second);
  }
}

TEST(Model, KnowsTheCountOfAnItemsetInAnyOrder) {
  const Model model = Model::fromItemsets(breakfastParts());
  EXPECT_EQ(model.countOf(Items{2, 0}), 5);
  EXPECT_EQ(model.countOf(Items{2, 1, 0}), 4);
  EXPECT_EQ(model.countOf(Items{}), 10);
  EXPECT_EQ(model.countOf(Items{3}), std::nullopt);
  EXPECT_EQ(model.countOf(Items{0, 3}), std::nullopt);
}

TEST(Model, GivesRulesWithTheBestFirst) {
  const Model model = Model::fromItemsets(breakfastParts());
  EXPECT_EQ(linesOf(model.rules({.minConfidence = 0.8})),
            (std::vector<std::string>{
                "{butter} => {bread}  (6 of 6, lift 1.43)", "{butter, milk} => {bread}  (4 of 4, lift 1.43)",
                "{bread} => {butter}  (6 of 7, lift 1.43)", "{milk} => {bread}  (5 of 6, lift 1.19)",
                "{bread, milk} => {butter}  (4 of 5, lift 1.33)"}));
  EXPECT_EQ(linesOf(model.rules({.minConfidence = 0.8, .orderBy = Measure::kLift, .top = 2})),
            (std::vector<std::string>{"{butter} => {bread}  (6 of 6, lift 1.43)",
                                      "{butter, milk} => {bread}  (4 of 4, lift 1.43)"}));
  EXPECT_TRUE(model.rules({.top = 0}).empty());
}

TEST(Model, GivesRulesInTheOrderOfDiscoveryAndNoMoreThanAsked) {
  const Model model = Model::fromItemsets(breakfastParts());
  const std::vector<std::string> all = linesOf(model.rules({.orderBy = std::nullopt}));
  EXPECT_EQ(all.size(), 12U);  // 3 * 2 of the pairs, 6 of the three
  EXPECT_EQ(all, linesOf(model.rules({.orderBy = std::nullopt})));
  const std::vector<std::string> three = linesOf(model.rules({.orderBy = std::nullopt, .top = 3}));
  EXPECT_EQ(three, (std::vector<std::string>{all[0], all[1], all[2]}));
}

TEST(Model, BoundsRulesByAnyMeasure) {
  const Model model = Model::fromItemsets(breakfastParts());
  const RuleTable all = model.rules();
  for (std::size_t row = 0; row < Measure::table().size(); ++row) {
    const Measure measure = Measure::ofRow(row);
    const double least = measure.of(all.countsOf(3));
    RuleQuery query;
    query.bounds = {{measure, least, least}};
    std::size_t expected = 0;
    for (const RuleView rule : all) expected += rule.value(measure) == least ? 1 : 0;
    const RuleTable found = model.rules(query);
    EXPECT_EQ(found.size(), expected) << measure.name();
    for (const RuleView rule : found) EXPECT_EQ(rule.value(measure), least) << measure.name();
  }
}

TEST(Model, OfNothingGivesNoRules) {
  EXPECT_TRUE(Model().rules().empty());
  EXPECT_EQ(Model().countOf({}), 0);
  EXPECT_EQ(Model().itemsets().size(), 0U);
}

TEST(Model, CountsInSixtyFourBits) {
  ItemsetTable::Columns columns;
  columns.offsets = {0, 1, 2, 4};
  columns.items = {0, 1, 0, 1};
  columns.counts = {6'000'000'000, 5'000'000'000, 4'000'000'000};
  const Model model =
      Model::fromItemsets({ItemsetTable::fromColumns(columns), 10'000'000'000, Support::fraction(0.4)});
  EXPECT_EQ(model.minCount(), 4'000'000'000);
  EXPECT_EQ(linesOf(model.rules({.minConfidence = 0.8})),
            (std::vector<std::string>{"{1} => {0}  (4000000000 of 5000000000, lift 1.33)"}));
}

TEST(Model, MakesItsLatticeOnceWhicheverThreadAsksFirst) {
  RandomSets sets(3);
  const Model model = modelOf(sets.counts, sets.minCount, sets.dice);
  const std::vector<std::string> expected = linesOf(modelOf(sets.counts, sets.minCount, sets.dice).rules());
  std::vector<std::vector<std::string>> answers(4);
  std::vector<std::thread> threads;
  for (std::vector<std::string>& answer : answers) {
    threads.emplace_back([&answer, copy = model] { answer = linesOf(copy.rules()); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::vector<std::string>& answer : answers) EXPECT_EQ(answer, expected);
}

TEST(Model, StopsASearchForRules) {
  const Model model = Model::fromItemsets(breakfastParts());
  std::stop_source source;
  RuleQuery query;
  query.stop = source.get_token();
  EXPECT_EQ(model.rules(query).size(), 12U);
  source.request_stop();
  EXPECT_ERROR(model.rules(query), Error::Kind::kCancelled, "stopped");
}

TEST(Model, RefusesItemsetsThatCannotBe) {
  const auto with = [](auto&& change) {
    Model::Parts parts = breakfastParts();
    change(parts);
    return parts;
  };
  EXPECT_ERROR(Model::fromItemsets(with([](auto& parts) { parts.transactions = -1; })), Error::Kind::kInput,
               "there are -1 transactions");
  EXPECT_ERROR(Model::fromItemsets(with([](auto& parts) { parts.transactions = 6; })), Error::Kind::kInput,
               "{0} has a count of 7, and there are 6 transactions");
  EXPECT_ERROR(Model::fromItemsets(with([](auto& parts) { parts.minSupport = Support::count(5); })),
               Error::Kind::kInput, "{0, 1, 2} has a count of 4, and the support is 5");
  EXPECT_ERROR(Model::fromItemsets(with([](auto& parts) {
                 parts.labels = Labels({"bread", "butter"});
               })),
               Error::Kind::kInput, "{2} has an item without a label");
  ItemsetTable::Columns twice = breakfast();
  twice.items.front() = 1;
  EXPECT_ERROR(
      Model::fromItemsets(with([&twice](auto& parts) { parts.itemsets = ItemsetTable::fromColumns(twice); })),
      Error::Kind::kInput, "{1} is there twice");
}

TEST(Model, RefusesQuestionsThatCannotBeMeant) {
  const Model model = Model::fromItemsets(breakfastParts());
  const double nan = std::nan("");
  struct Case {
    RuleQuery query;
    const char* part;
  };
  std::vector<Case> cases;
  const auto add = [&cases](const char* part, auto&& change) {
    change(cases.emplace_back(Case{{}, part}).query);
  };
  add("no range within 0 and 1", [](RuleQuery& query) { query.minConfidence = -0.1; });
  add("no range within 0 and 1", [](RuleQuery& query) { query.maxConfidence = 1.1; });
  add("no range within 0 and 1", [nan](RuleQuery& query) { query.minConfidence = nan; });
  add("no range within 0 and 1", [](RuleQuery& query) {
    query.minConfidence = 0.5;
    query.maxConfidence = 0.4;
  });
  add("a bound of lift is no number", [nan](RuleQuery& query) { query.bounds = {{Measure::kLift, nan}}; });
  add("the consequent is to have 0 items", [](RuleQuery& query) { query.consequent.minLength = 0; });
  add("the antecedent is to have at least 3 items and at most 2", [](RuleQuery& query) {
    query.antecedent.minLength = 3;
    query.antecedent.maxLength = 2;
  });
  add("item 7 is required in the consequent and excluded", [](RuleQuery& query) {
    query.consequent.required = {7};
    query.consequent.excluded = {6, 7};
  });
  add("item 7 is required on both sides", [](RuleQuery& query) {
    query.antecedent.required = {7};
    query.consequent.required = {6, 7};
  });
  add("in 3 transactions are asked for, and the model has itemsets in 4 or more",
      [](RuleQuery& query) { query.minSupport = Support::count(3); });
  add("in at most 4 of 10 transactions are asked for, and in at least 5", [](RuleQuery& query) {
    query.minSupport = Support::count(5);
    query.maxSupport = Support::count(4);
  });
  for (const Case& c : cases) EXPECT_ERROR(model.rules(c.query), Error::Kind::kInput, c.part);
}

TEST(RuleTable, HasItsColumnsInTheOrderOfItsRows) {
  const Model model = Model::fromItemsets(breakfastParts());
  const RuleTable rules = model.rules({.minConfidence = 0.6});
  const ItemLists antecedents = rules.antecedents();
  const ItemLists consequents = rules.consequents();
  const std::vector<double> lifts = rules.values(Measure::kLift);
  ASSERT_GT(rules.size(), 5U);
  ASSERT_EQ(antecedents.offsets.size(), rules.size() + 1);
  EXPECT_EQ(rules.transactions(), 10);
  for (std::size_t row = 0; row < rules.size(); ++row) {
    const RuleView rule = rules[row];
    const auto part = [row](const ItemLists& lists) {
      return Items(lists.items.begin() + lists.offsets[row], lists.items.begin() + lists.offsets[row + 1]);
    };
    EXPECT_EQ(part(antecedents), listOf(rule.antecedent()));
    EXPECT_EQ(part(consequents), listOf(rule.consequent()));
    EXPECT_EQ(rule.counts(), (RuleCounts{10, rules.wholeCounts()[row], rules.antecedentCounts()[row],
                                         rules.consequentCounts()[row]}));
    EXPECT_EQ(rule.counts().antecedent, *model.countOf(rule.antecedent()));
    EXPECT_EQ(rule.counts().consequent, *model.countOf(rule.consequent()));
    EXPECT_EQ(rule.lift(), lifts[row]);
  }
}

TEST(RuleTable, StaysWhenItsModelGoes) {
  RuleTable rules;
  EXPECT_TRUE(rules.empty());
  EXPECT_EQ(rules.transactions(), 0);
  rules = Model::fromItemsets(breakfastParts()).rules({.top = 1});
  EXPECT_EQ(linesOf(rules), (std::vector<std::string>{"{butter} => {bread}  (6 of 6, lift 1.43)"}));
}

TEST(RuleTable, PrintsItsRulesWhateverTheStreamsFormat) {
  std::ostringstream out;
  out.precision(12);
  out << std::fixed << Model::fromItemsets(breakfastParts()).rules({.top = 1})[0];
  EXPECT_EQ(out.str(), "{butter} => {bread}  (6 of 6, lift 1.43)");
}

TEST(RuleTable, KnowsTheItemsOfAConsequentThatIsNoItemset) {
  ItemsetTable::Columns columns;
  columns.offsets = {0, 1, 3};
  columns.items = {0, 0, 1};
  columns.counts = {5, 4};
  const Model model = Model::fromItemsets({ItemsetTable::fromColumns(columns), 10, Support::count(1)});
  const RuleTable rules = model.rules();
  ASSERT_EQ(rules.size(), 1U);
  EXPECT_EQ(listOf(rules[0].antecedent()), (Items{0}));
  EXPECT_EQ(listOf(rules[0].consequent()), (Items{1}));
  EXPECT_EQ(rules[0].counts(), (RuleCounts{10, 4, 5, 0}));
  EXPECT_TRUE(std::isnan(rules[0].lift()));
  EXPECT_EQ(rules.consequents().items, (Items{1}));
  EXPECT_TRUE(model.rules({.bounds = {{Measure::kLift, 0}}}).empty());
}

TEST(RuleTable, GivesBoundsOfTheFiguresWhereCountsAreBounds) {
  ItemsetTable::Columns columns;
  columns.offsets = {0, 1, 2, 4};
  columns.items = {0, 1, 0, 1};
  columns.counts = {5, 6, 4};
  columns.largestCounts = {8, 6, 9};
  Model::Parts parts = {ItemsetTable::fromColumns(columns), 10, Support::count(1)};
  parts.guarantee = Guarantee::kBounds;
  const RuleTable rules = Model::fromItemsets(parts).rules({.antecedent = {.minLength = 0}});
  ASSERT_EQ(rules.size(), 5U);
  for (const RuleView rule : rules) {
    const RuleBounds bounds = rule.bounds();
    if (listOf(rule.antecedent()) == Items{0}) {  // at most 8, so both sides are too
      EXPECT_EQ(bounds.leastCount, 4);
      EXPECT_EQ(bounds.largestCount, 8);
      EXPECT_EQ(bounds.leastConfidence, 4.0 / 8);
      EXPECT_EQ(bounds.largestConfidence, 1);
    } else if (rule.antecedent().empty() && listOf(rule.consequent()) == Items{0}) {
      EXPECT_EQ(bounds.leastCount, 5);
      EXPECT_EQ(bounds.largestCount, 8);
      EXPECT_EQ(bounds.leastConfidence, 0.5);
      EXPECT_EQ(bounds.largestConfidence, 0.8);
    }
  }
}

}  // namespace
}  // namespace korassoc
