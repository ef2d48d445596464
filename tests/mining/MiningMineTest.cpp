#include "korassoc/mining/Mining.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/mining/CountedSets.h"
#include "tests/mining/ExpectError.h"

namespace korassoc {
namespace {

oracle::brute::Counts countsOf(const Model& model) {
  oracle::brute::Counts counts;
  for (const ItemsetView set : model.itemsets()) counts[listOf(set.items)] = static_cast<int>(set.count);
  return counts;
}

TEST(Mine, FindsWhatEnumerationFinds) {
  for (std::uint64_t seed = 0; seed < 40; ++seed) {
    Dice dice(seed);
    const Items universe = randomUniverse(dice, dice.between(2, 10));
    const oracle::Transactions transactions =
        randomTransactions(dice, universe, dice.between(0, 80), 7, dice.chance(30));
    const int longest = dice.between(1, 6);
    const Support support = dice.chance(50) ? Support::fraction(dice.oneOf<double>({0, 0.1, 0.29, 1}))
                                            : Support::count(dice.between(0, 40));
    const Model model =
        mine(Baskets::fromLists(transactions), {.minSupport = support, .longestItemset = longest});
    const auto n = static_cast<std::int64_t>(transactions.size());
    EXPECT_EQ(model.transactions(), n);
    EXPECT_EQ(model.minCount(), support.leastCount(n));
    EXPECT_EQ(model.guarantee(), Guarantee::kExact);
    EXPECT_EQ(model.longestItemset(), static_cast<std::size_t>(longest));
    oracle::brute::Counts expected = oracle::brute::atLeast(
        oracle::brute::countSubsets(transactions, longest), static_cast<int>(support.leastCount(n)));
    expected.erase(Items());
    ASSERT_EQ(countsOf(model), expected) << "seed " << seed;
  }
}

TEST(Mine, CountsABasketAsOftenAsItWeighs) {
  const Baskets weighted = Baskets::fromColumns({{0, 2, 3, 5, 6}, {0, 1, 2, 1, 0, 1}, {3, 0, 2, 1}});
  const Baskets repeated = Baskets::fromLists({{0, 1}, {0, 1}, {0, 1}, {0, 1}, {0, 1}, {1}});
  const MiningOptions options{.minSupport = Support::fraction(0.5)};
  EXPECT_EQ(countsOf(mine(weighted, options)), countsOf(mine(repeated, options)));
  EXPECT_EQ(mine(weighted, options).transactions(), 6);
  EXPECT_EQ(countsOf(mine(weighted, options)).at({0, 1}), 5);
}

TEST(Mine, KeepsTheLabels) {
  const Labels labels({"bread", "milk"});
  const Model model = mine(Baskets::fromLists({{0, 1}, {1}}, labels), {.minSupport = Support::count(1)});
  EXPECT_EQ(model.labels().describe(model.itemsets()[2].items), "{bread, milk}");
}

TEST(Mine, OfMoreTransactionsThanThereAreFindsNothing) {
  const Model model = mine(Baskets::fromLists({{1}}), {.minSupport = Support::count(5'000'000'000)});
  EXPECT_TRUE(model.itemsets().empty());
  EXPECT_EQ(model.minCount(), 5'000'000'000);
  EXPECT_TRUE(mine(Baskets(), {.minSupport = Support::fraction(0)}).itemsets().empty());
}

TEST(Mine, EndsAtALimitOfItemsets) {
  const Baskets baskets = Baskets::fromLists({{1, 2, 3}, {1, 2, 3}, {4}});
  MiningOptions options{.minSupport = Support::count(2), .maxItemsets = 7};
  EXPECT_EQ(mine(baskets, options).itemsets().size(), 7U);
  options.maxItemsets = 6;
  EXPECT_ERROR(mine(baskets, options), Error::Kind::kLimit,
               "more than 6 itemsets are in 2 of 3 transactions");
}

TEST(Mine, EndsWhenItsTimeIsOverOrItIsStopped) {
  const Baskets baskets = Baskets::fromLists(std::vector<Items>(100000, {1, 2, 3}));
  MiningOptions options{.minSupport = Support::count(2), .timeLimit = std::chrono::nanoseconds(1)};
  EXPECT_ERROR(mine(baskets, options), Error::Kind::kLimit, "the run took longer than");
  options.timeLimit.reset();
  std::stop_source source;
  options.stop = source.get_token();
  options.onProgress = [&source](const Progress&) { source.request_stop(); };
  EXPECT_ERROR(mine(baskets, options), Error::Kind::kCancelled, "stopped");
}

TEST(Mine, SaysHowFarItHasCome) {
  std::vector<Progress> told;
  const Baskets baskets = Baskets::fromLists(std::vector<Items>(25000, {1, 2}));
  mine(baskets,
       {.minSupport = Support::count(2), .onProgress = [&told](const Progress& p) { told.push_back(p); }});
  ASSERT_GE(told.size(), 3U);
  EXPECT_EQ(told[0].transactions, 10000);
  EXPECT_EQ(told[0].shareRead, 0.4);
  EXPECT_EQ(told[0].phase, Progress::Phase::kReading);
  EXPECT_EQ(told[2].transactions, 25000);
  EXPECT_EQ(told[2].shareRead, 1);
  const auto fail = [](const Progress&) { throw std::runtime_error("no more"); };
  EXPECT_THROW(mine(baskets, {.minSupport = Support::count(2), .onProgress = fail}), std::runtime_error);
}

TEST(Mine, RefusesWhatCannotBeMined) {
  const Baskets baskets = Baskets::fromLists({{1}});
  const Support support = Support::count(1);
  EXPECT_ERROR(mine(baskets, {.minSupport = support, .longestItemset = 0}), Error::Kind::kInput,
               "1 to 1000 can be");
  EXPECT_ERROR(mine(baskets, {.minSupport = support, .longestItemset = 1001}), Error::Kind::kInput,
               "1 to 1000");
  EXPECT_ERROR(mine(baskets, {.minSupport = support, .maxItemsets = 0}), Error::Kind::kInput,
               "leaves nothing");
  EXPECT_ERROR(mine(baskets, {.minSupport = support, .timeLimit = std::chrono::seconds(0)}),
               Error::Kind::kInput, "leaves nothing");
  const Baskets many = Baskets::fromColumns({{0, 1, 2}, {1, 1}, {2147483647, 1}});
  EXPECT_ERROR(mine(many, {.minSupport = support}), Error::Kind::kLimit,
               "2147483648 transactions; 2147483647");
}

}  // namespace
}  // namespace korassoc
