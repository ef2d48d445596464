// What hosts get wrong, each with what comes of it and what to do instead. The headers of the engine say the
// same.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "korassoc/engine/CarmaAssociationAlgorithm.h"
#include "tests/support/EngineHost.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"

namespace {

// The baskets of the repository's example data: 10,000.
const Transactions& exampleBaskets() {
  static const Transactions baskets = [] {
    Transactions read;
    std::map<std::string, int> items;
    std::ifstream file(KORASSOC_SOURCE_DIR "/examples/baskets.csv");
    for (std::string line, name; std::getline(file, line);) {
      std::istringstream fields(line);
      for (read.emplace_back(); std::getline(fields, name, ',');)
        read.back().push_back(items.try_emplace(name, static_cast<int>(items.size())).first->second);
    }
    return read;
  }();
  return baskets;
}

// 5%, and 2% from basket 3,000 on.
double falling(int transaction) { return transaction < 3000 ? 0.05 : 0.02; }

// Itemsets of one or more items, in at least this part of the transactions, that the lattice holds.
int itemsets(EngineHost& host, double support) {
  std::set<ItemSet> found;
  const auto minCount = static_cast<int>(std::lround(support * host.source.size()));
  EXPECT_TRUE(host.engine->GetLattice()->findItemSets(ItemSet(), minCount, 1, 10, found).IsOK());
  return static_cast<int>(found.size());
}

int itemsetsOfTwoPhases(int pruningFrequency, const TestSupport::Rule& support) {
  EngineHost host(exampleBaskets());
  host.settings->SetRemoveSmallFreq(pruningFrequency);
  host.support(support);
  EXPECT_TRUE(host.engine->RunPhaseI(host.source.size()).IsOK());
  EXPECT_TRUE(host.engine->RunPhaseII().IsOK());
  return itemsets(host, 0.02);
}

// The stored itemsets, the empty one included, after phase I over 1,000 baskets in calls of this size.
int setsAfterCallsOf(int transactions) {
  const auto& baskets = exampleBaskets();
  EngineHost host(Transactions(baskets.begin(), baskets.begin() + 1000), 0.02);
  host.settings->SetRemoveSmallFreq(500);
  for (int done = 0; done < 1000; done += transactions)
    EXPECT_TRUE(host.engine->RunPhaseI(transactions).IsOK());
  EXPECT_EQ(host.engine->NumberOfTransactions(), 1000);
  return host.engine->NumberOfSets();
}

// 1 comes 60 times with 2, then 40 times without.
Transactions firstTogetherThenAlone() {
  Transactions transactions = repeated({1, 2}, 60);
  transactions.insert(transactions.end(), 40, {1});
  return transactions;
}

// The confidence of 1 => 2 when phase I over those is cut after 60, and an engine restored from the state
// goes on with its source at the given transaction (from 0).
double confidenceWhenTheSourceStandsAt(int position) {
  const TemporaryFile state;
  EngineHost first(firstTogetherThenAlone(), 0.1);
  EXPECT_TRUE(first.engine->RunPhaseI(60).IsOK());
  std::fstream out = state.writer();
  EXPECT_TRUE(first.engine->SaveState(out).IsOK());
  out.close();

  VectorTransactions source(firstTogetherThenAlone());
  for (int i = 0; i < position; ++i) source.Next();
  std::fstream in = state.reader();
  CarmaAssociationAlgorithm engine(in, &source);
  engine.SetSupportSource(new TestSupport(0.1));
  EXPECT_TRUE(engine.RunPhaseI(40).IsOK());
  EXPECT_TRUE(engine.RunNullPhaseII(0.0).IsOK());
  ItemSet antecedent(1);
  std::vector<ConsequentDescriptor> consequents;
  EXPECT_TRUE(engine.GetItems(&antecedent, -1, consequents).IsOK());
  return consequents.empty() ? -1 : consequents.front().getConfidence();
}

// Counts the itemsets made of these items, each with the transactions that hold it (ascending, at least
// minCount).
int countItemsets(const std::map<int, std::vector<int>>& transactionsOfItems, int minCount) {
  int found = 0;
  for (auto item = transactionsOfItems.begin(); item != transactionsOfItems.end(); ++item) {
    ++found;
    std::map<int, std::vector<int>> extensions;
    for (auto other = std::next(item); other != transactionsOfItems.end(); ++other) {
      std::vector<int> both;
      std::set_intersection(item->second.begin(), item->second.end(), other->second.begin(),
                            other->second.end(), std::back_inserter(both));
      if (static_cast<int>(both.size()) >= minCount) extensions.emplace(other->first, std::move(both));
    }
    found += countItemsets(extensions, minCount);
  }
  return found;
}

// Itemsets in at least 2% of the example's baskets.
int itemsetsThereAre() {
  std::map<int, std::vector<int>> transactionsOfItems;
  int number = 0;
  for (const std::vector<int>& basket : exampleBaskets()) {
    for (const int item : std::set<int>(basket.begin(), basket.end()))
      transactionsOfItems[item].push_back(number);
    ++number;
  }
  constexpr int kMinCount = 200;
  std::erase_if(transactionsOfItems, [](const auto& item) { return item.second.size() < kMinCount; });
  return countItemsets(transactionsOfItems, kMinCount);
}

}  // namespace

// A set that was pruned under 5% has lost its counts, and so have the sets that would have grown out of it.
TEST(HostMistakes, AFallingSupportFindsNothingNewWhereSetsArePrunedOften) {
  constexpr int kDefaultFrequency = 500;
  EXPECT_LT(itemsetsOfTwoPhases(kDefaultFrequency, falling), itemsetsThereAre() / 5);
}

TEST(HostMistakes, ThePassThatIsCompleteFindsThemAllWhateverTheSupportWas) {
  EngineHost host(exampleBaskets());
  host.settings->SetRemoveSmallFreq(500);
  host.support(falling);
  EXPECT_TRUE(host.engine->RunPhaseI(host.source.size()).IsOK());
  EXPECT_TRUE(host.engine->RunPhaseIIcomplete(0.02).IsOK());
  EXPECT_EQ(itemsets(host, 0.02), itemsetsThereAre());
}

TEST(HostMistakes, TheLowestSupportFromTheStartAndNoPruningInBetweenFindNearlyAll) {
  EXPECT_GT(itemsetsOfTwoPhases(0, [](int) { return 0.02; }), itemsetsThereAre() * 0.95);
}

// Each call ends with a pruning, also off the pruning frequency.
TEST(HostMistakes, TheResultDependsOnTheSizeOfTheCalls) {
  const int once = setsAfterCallsOf(1000);
  EXPECT_EQ(setsAfterCallsOf(500), once);
  EXPECT_LT(setsAfterCallsOf(100), once);
}

// The pair is stored while the first transaction is read, and counted from the second on. With the source at
// its start the first 40 are counted again in place of the last 40, and every status is OK.
TEST(HostMistakes, ARestoredEngineGoesOnWhereItsSourceStands) {
  EXPECT_DOUBLE_EQ(confidenceWhenTheSourceStandsAt(60), 59.0 / 100);
  EXPECT_DOUBLE_EQ(confidenceWhenTheSourceStandsAt(0), 99.0 / 100);
}

TEST(HostMistakes, TheTypeOfTheStreamDecidesAboutTheFormatOfAState) {
  const TemporaryFile state;
  EngineHost host(firstTogetherThenAlone(), 0.1);
  ASSERT_TRUE(host.engine->RunPhaseI(60).IsOK());
  std::fstream out = state.writer();
  ASSERT_TRUE(host.engine->SaveState(out).IsOK());
  out.close();

  const StreamCapture lines(std::cout);
  std::fstream asBinary = state.reader();
  EXPECT_TRUE(CarmaAssociationAlgorithm(asBinary, &host.source).GetStatus().IsOK());
  std::ifstream asXml(state.name(), std::ios::binary);
  EXPECT_EQ(shortForm(CarmaAssociationAlgorithm(asXml, &host.source).GetStatus()), "E5");
}

TEST(HostMistakes, ASupportSourceThatIsRefusedStaysTheCallers) {
  int living = 0;
  EngineHost host(firstTogetherThenAlone(), 0.1);
  host.engine->SetSupportSource(new TestSupport(0.1, &living));
  ASSERT_TRUE(host.engine->RunPhaseI(100).IsOK());
  ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
  auto refused = std::make_unique<TestSupport>(0.2, &living);
  host.engine->SetSupportSource(refused.get());
  EXPECT_NE(host.settings->GetSupportSource(), refused.get());
  EXPECT_EQ(living, 2);
  refused.reset();  // no one else deletes it
  host.engine.reset();
  host.settings.reset();
  EXPECT_EQ(living, 0);
}

// 5 is taken for 500%, not for 5%.
TEST(HostMistakes, ASupportAboveOneLeavesNoItemset) {
  EngineHost host(firstTogetherThenAlone(), 5);
  ASSERT_TRUE(host.engine->RunPhaseI(100).IsOK());
  EXPECT_EQ(host.engine->NumberOfSets(), 1);  // the empty one
}
