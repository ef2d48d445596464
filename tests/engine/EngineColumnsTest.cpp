// The itemsets of an engine as columns, and engines made of columns.

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/CountItemsets.h"
#include "korassoc/engine/ItemsetColumns.h"
#include "tests/support/DictionaryComparison.h"
#include "tests/support/EngineHost.h"
#include "tests/support/RandomRuns.h"
#include "tests/support/StreamCapture.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using korassoc::CountOutcome;
using korassoc::ItemsetColumns;

// What the tables hold, walked by themselves.
ItemsetColumns walked(const SetDictionary& dictionary) {
  ItemsetColumns columns;
  for (int level = 1; level <= dictionary.storedLevels(); ++level) {
    dictionary.levelTable(level).forEach([&columns](const HashTable::Entry& entry) {
      columns.add({entry.key->getTheArray(), static_cast<std::size_t>(entry.key->length())},
                  entry.descriptor->count);
      columns.maxMissed.push_back(entry.descriptor->getMaxMissed());
    });
  }
  return columns;
}

std::string document(CarmaAssociationAlgorithm& engine) {
  std::ostringstream out;
  EXPECT_TRUE(engine.ExportLatticeXML(out).IsOK());
  return out.str();
}

Transactions randomBaskets(std::uint64_t seed) {
  Dice dice(seed);
  return randomTransactions(dice, randomUniverse(dice, 8), 60, 6, false);
}

TEST(EngineColumns, OfPhaseIAreTheTablesInTheirOrderAndUnpackNothing) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    EngineHost host(randomBaskets(seed), 0.2);
    ASSERT_TRUE(host.engine->RunPhaseI(45).IsOK());
    ItemsetColumns columns;
    ASSERT_TRUE(host.engine->GetItemsets(columns).IsOK());
    EXPECT_EQ(columns.transactions, 45);
    const SetDictionary& dictionary = *Access::dictionary(*host.engine);
    EXPECT_TRUE(dictionary.isPacked());
    ItemsetColumns expected = walked(dictionary);
    ASSERT_FALSE(dictionary.isPacked());  // by walking
    EXPECT_EQ(columns.offsets, expected.offsets);
    EXPECT_EQ(columns.items, expected.items);
    EXPECT_EQ(columns.counts, expected.counts);
    if (!columns.maxMissed.empty()) {
      EXPECT_EQ(columns.maxMissed, expected.maxMissed);
    } else {
      EXPECT_EQ(expected.maxMissed, std::vector<int>(expected.size(), 0));
    }
    ItemsetColumns again;
    ASSERT_TRUE(host.engine->GetItemsets(again).IsOK());
    EXPECT_EQ(again.items, columns.items);
  }
}

TEST(EngineColumns, OfALatticeHaveExactCounts) {
  const Transactions transactions = randomBaskets(3);
  EngineHost host(transactions, 0.2);
  ASSERT_TRUE(host.engine->RunPhaseI(60).IsOK());
  ASSERT_TRUE(host.engine->RunPhaseIIrandom().IsOK());
  ItemsetColumns columns;
  ASSERT_TRUE(host.engine->GetItemsets(columns).IsOK());
  EXPECT_TRUE(columns.maxMissed.empty());
  ASSERT_GT(columns.size(), 3U);
  const std::vector<int> counts = columns.counts;
  VectorTransactions source(transactions);
  ASSERT_EQ(korassoc::countGivenItemsets(source, {}, columns), CountOutcome::kDone);
  EXPECT_EQ(columns.counts, counts);
}

TEST(EngineColumns, AreRefusedByAnEngineThatHasNone) {
  ItemsetColumns columns;
  columns.add(std::vector<int>{7}, 1);
  EngineHost host(randomBaskets(3));
  host.engine->Cancel();
  host.engine->RunPhaseI(1);
  EXPECT_EQ(shortForm(host.engine->GetItemsets(columns)), "E1");
  EXPECT_EQ(host.engine->NumberOfSetsGivenUp(), -1);
  EXPECT_EQ(host.engine->NumberOfSetsSpilled(), -1);
  CarmaAssociationAlgorithm unusable(nullptr, &host.source);
  EXPECT_EQ(shortForm(unusable.GetItemsets(columns)), "E5");
  EXPECT_EQ(columns.items, std::vector<int>{7});
}

TEST(EngineColumns, MakeTheEngineThatACompletePassMakes) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    const Transactions transactions = randomBaskets(seed);
    EngineHost host(transactions, 0.1);
    ASSERT_TRUE(host.engine->RunPhaseI(1).IsOK());
    ASSERT_TRUE(host.engine->RunPhaseIIcomplete(0.1).IsOK());
    VectorTransactions source(transactions);
    ItemsetColumns columns;
    ASSERT_EQ(korassoc::countAllItemsets(source, {0.1}, {}, columns), CountOutcome::kDone);
    CarmaSettings settings;
    CarmaAssociationAlgorithm engine(&settings, &source, columns, 0.1);
    ASSERT_TRUE(engine.GetStatus().IsOK());
    EXPECT_TRUE(engine.IsLatticeBuilt());
    EXPECT_EQ(engine.NumberOfTransactions(), 60);
    EXPECT_EQ(engine.NumberOfSets(), host.engine->NumberOfSets());
    EXPECT_EQ(document(engine), document(*host.engine)) << "seed " << seed;
    std::vector<AssociationRule> rules, expected;
    ASSERT_TRUE(engine.CreateNgetRules(0.1, 0.5, rules).IsOK());
    ASSERT_TRUE(host.engine->CreateNgetRules(0.1, 0.5, expected).IsOK());
    EXPECT_EQ(rules.size(), expected.size());
    // A pass over the transactions counts the same again.
    ASSERT_TRUE(engine.RunPhaseIIrandom().IsOK());
    ItemsetColumns again;
    ASSERT_TRUE(engine.GetItemsets(again).IsOK());
    EXPECT_EQ(again.size(), columns.size());
  }
}

TEST(EngineColumns, MakeNoEngineOfWhatIsNoItemsets) {
  const auto with = [](auto&& change) {
    ItemsetColumns columns;
    columns.transactions = 10;
    columns.add(std::vector<int>{1}, 5);
    columns.add(std::vector<int>{2}, 4);
    columns.add(std::vector<int>{1, 2}, 3);
    change(columns);
    CarmaSettings settings;
    settings.SetMaxLengthSet(2);
    const CarmaAssociationAlgorithm engine(&settings, nullptr, columns, 0.1);
    return shortForm(engine.GetStatus());
  };
  EXPECT_EQ(with([](auto&) {}), "OK");
  EXPECT_EQ(with([](auto& columns) { columns.transactions = 4; }), "E5");
  EXPECT_EQ(with([](auto& columns) { columns.counts[0] = -1; }), "E5");
  EXPECT_EQ(with([](auto& columns) { columns.counts.pop_back(); }), "E5");
  EXPECT_EQ(with([](auto& columns) { columns.offsets.pop_back(); }), "E5");
  EXPECT_EQ(with([](auto& columns) { columns.offsets[1] = 7; }), "E5");
  EXPECT_EQ(with([](auto& columns) { columns.items[3] = 1; }), "E5");
  EXPECT_EQ(with([](auto& columns) { columns.items[1] = 1; }), "E5");  // {1} twice
  EXPECT_EQ(with([](auto& columns) { columns.add(std::vector<int>{1, 2, 3}, 1); }), "E5");
  EXPECT_EQ(with([](auto& columns) { columns.add(std::vector<int>{}, 1); }), "E5");
  ItemsetColumns none;
  const CarmaAssociationAlgorithm engine(nullptr, nullptr, none, 0.1);
  EXPECT_EQ(shortForm(engine.GetStatus()), "E5");
}

TEST(EngineColumns, ReportASubsetThatIsMissing) {
  ItemsetColumns columns;
  columns.transactions = 10;
  columns.add(std::vector<int>{1}, 5);
  columns.add(std::vector<int>{1, 2}, 3);
  CarmaSettings settings;
  const StreamCapture output(std::cout);
  const CarmaAssociationAlgorithm engine(&settings, nullptr, columns, 0.1);
  EXPECT_TRUE(engine.GetStatus().IsOK());
  EXPECT_NE(output.text().find("Not found subset"), std::string::npos);
}

}  // namespace
