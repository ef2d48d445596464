// Whole runs under a limit of sets in memory: what ends a phase, what gives way, what comes back. The empty
// set counts as one of the sets in memory.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SpillStore.h"
#include "tests/support/EngineHost.h"
#include "tests/support/SpillFileReader.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;
using ::testing::ElementsAre;

// An engine under a limit, with a support so low that nothing is pruned unless a test says otherwise.
struct LimitedHost {
  LimitedHost(const Transactions& transactions, int mostSets, int leave, bool spill, double support = 0.01)
      : source(transactions), settings(settingsWithSupport(support)) {
    DictionarySettings& memory = settings->GetDictionarySettings();
    memory.SetMaxInStoreSets(mostSets);
    memory.SetLeaveInMainStoreCount(leave);
    memory.SetDiskSpill(spill);
    memory.SetSpillFileName(file.name().c_str());
    engine = std::make_unique<CarmaAssociationAlgorithm>(settings.get(), &source);
  }
  SetDictionary& dictionary() const { return *Access::dictionary(*engine); }
  int count(const std::vector<int>& items) const {
    const ItemSet set(items.data(), static_cast<int>(items.size()));
    return dictionary().getCount(&set);
  }
  std::string runPhaseI(int transactions) { return shortForm(engine->RunPhaseI(transactions)); }

  TemporaryFile file;
  VectorTransactions source;
  std::unique_ptr<CarmaSettings> settings;
  std::unique_ptr<CarmaAssociationAlgorithm> engine;
};

TEST(MemoryLimit, ReachesSettingsAndLiveDictionaryInPhaseIAndNothingInPhaseII) {
  LimitedHost host(Transactions{{1}}, 100, 0, false);
  host.engine->SetMaxInStoreSets(50);
  EXPECT_EQ(host.settings->GetDictionarySettings().GetMaxInStoreSets(), 50);
  EXPECT_EQ(host.dictionary().maxInStoreSets(), 50);
  host.runPhaseI(1);
  ASSERT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  host.engine->SetMaxInStoreSets(70);
  EXPECT_EQ(host.settings->GetDictionarySettings().GetMaxInStoreSets(), 50);
  EXPECT_EQ(host.dictionary().maxInStoreSets(), 50);
}

TEST(MemoryLimit, EndsPhaseIWithStatus3WhenNothingMayLeave) {
  LimitedHost host(Transactions{{1}, {2}, {1, 3}, {1}}, 3, 0, false);
  EXPECT_EQ(host.runPhaseI(4), "E3");
  EXPECT_EQ(shortForm(host.engine->GetStatus()), "E3");
  EXPECT_EQ(host.source.position(), 3);
  EXPECT_EQ(host.count({1}), 2) << "what was counted before the refusal stays";
  EXPECT_EQ(host.count({3}), 0);
  EXPECT_EQ(host.engine->NumberOfTransactions(), 3);
  EXPECT_FALSE(Access::isResumable(*host.engine));

  host.engine->SetMaxInStoreSets(10);
  EXPECT_EQ(host.runPhaseI(4), "OK");
  EXPECT_EQ(host.count({1}), 3);
  EXPECT_EQ(host.engine->NumberOfTransactions(), 4);
  EXPECT_EQ(Access::transactionsSeen(*host.engine), 4);
}

TEST(MemoryLimit, LetsPhaseIGoOnWhereSetsMayLeave) {
  LimitedHost host(Transactions{{1}, {2}, {3}, {1}}, 3, 1, false);
  EXPECT_EQ(host.runPhaseI(4), "OK");  // {1} leaves for {3}, then {2} for {1}
  EXPECT_EQ(host.count({1}), 1);
  EXPECT_EQ(host.count({2}), 0);
  EXPECT_EQ(host.count({3}), 1);
  EXPECT_EQ(host.engine->NumberOfSets(), 3);
  EXPECT_EQ(host.dictionary().setsGivenUp(), 2);
}

TEST(MemoryLimit, ASetThatLeavesInTheMiddleOfAStepIsUsedToItsEnd) {
  // Transaction 1 stores {1}, {2} and {3}; memory is full. Transaction 2, with all of them:
  //   {1} is counted, 2, and goes to the tail: queue {2} {3} {1}
  //   {2} is counted, 2; {1, 2} is added, {2} leaves: queue {3} {1} {1, 2}
  //   {3} is counted, 2, and goes to the tail; {1, 3} is added, {1} leaves: queue {1, 2} {3} {1, 3}
  //   {2}, which has left, with its count of 2, makes {2, 3} a candidate; {1, 2} leaves
  LimitedHost host(Transactions{{1, 2, 3}, {1, 2, 3}}, 4, 9, false);
  EXPECT_EQ(host.runPhaseI(2), "OK");
  EXPECT_EQ(host.count({1}), 0);
  EXPECT_EQ(host.count({2}), 0);
  EXPECT_EQ(host.count({3}), 2);
  EXPECT_EQ(host.count({1, 2}), 0);
  EXPECT_EQ(host.count({1, 3}), 1);
  EXPECT_EQ(host.count({2, 3}), 1);
  const int pair[] = {2, 3};
  EXPECT_EQ(host.dictionary().getDescriptor(pair, 2)->getMaxMissed(), 1);  // {2} occurred once before
  EXPECT_EQ(host.dictionary().setsGivenUp(), 3);
  EXPECT_EQ(host.dictionary().heldEvicted(), 0);
}

TEST(MemoryLimit, HoldsLongTransactionsThatDriveOutFarMoreThanMemoryHolds) {
  std::vector<int> items;
  for (int item = 1; item <= 60; ++item) items.push_back(item);
  LimitedHost host(repeated(items, 5), 100, 3, false);
  host.settings->SetMaxLengthSet(10);
  EXPECT_EQ(host.runPhaseI(5), "OK");
  EXPECT_EQ(host.engine->NumberOfSets(), 100);
  EXPECT_GT(host.dictionary().setsGivenUp(), 300);
  EXPECT_EQ(host.dictionary().heldEvicted(), 0);
  EXPECT_EQ(host.dictionary().inStoreCount(), 100);
}

TEST(MemoryLimit, HeldSetsThatAreNotOfUseCanBeLetGo) {
  LimitedHost host(Transactions{}, 3, 9, false);
  SetDictionary& dictionary = host.dictionary();
  const auto add = [&dictionary](int item) {
    auto* counter = new CarmaSetDescriptor(item, 1, 0);
    dictionary.addSet(&item, 1, counter);
    return counter;
  };
  const CarmaSetDescriptor* first = add(1);
  const CarmaSetDescriptor* second = add(2);
  dictionary.holdEvicted();
  for (const int item : {3, 4, 5}) add(item);  // {1}, {2} and {3} leave
  EXPECT_EQ(dictionary.heldEvicted(), 3);
  std::vector<const SetCounter*> used = {first, second};
  std::sort(used.begin(), used.end(), std::less<>());
  dictionary.releaseEvictedBut(used);
  EXPECT_EQ(dictionary.heldEvicted(), 2);
  EXPECT_EQ(first->count, 1);
  EXPECT_EQ(second->count, 2);
  dictionary.releaseEvicted();
  EXPECT_EQ(dictionary.heldEvicted(), 0);
}

TEST(MemoryLimit, ASpillFileThatCannotBeMadeRefusesWithStatus3) {
  LimitedHost host(Transactions{{1}, {2}, {3}}, 3, 5, true);
  host.settings->GetDictionarySettings().SetSpillFileName((host.file.name() + "/no/such/directory").c_str());
  EXPECT_EQ(host.runPhaseI(3), "E3");
  EXPECT_EQ(host.count({1}), 1);
  EXPECT_EQ(host.count({2}), 1);
  EXPECT_EQ(host.count({3}), 0);
}

TEST(MemoryLimit, APairThatTheDiskRefusesEndsPhaseIWithStatus3) {
  LimitedHost host(Transactions{{1, 2}, {1, 2}}, 3, 0, true);
  EXPECT_EQ(host.runPhaseI(2), "E3");
  EXPECT_EQ(host.count({1}), 2);
  EXPECT_EQ(host.count({2}), 2);
  EXPECT_EQ(host.count({1, 2}), 0);
}

// Six one-item sets, of which two fit into memory beside the empty one.
Transactions sixSingles() { return {{1}, {2}, {3}, {4}, {5}, {6}, {2}}; }

TEST(MemoryLimit, DiskSetsThatDoNotFitBackEndPhaseIWithAWarningAndComeBackWhenTheyFit) {
  LimitedHost host(sixSingles(), 3, 9, true);
  {
    const StreamCapture out(std::cout);
    EXPECT_EQ(host.runPhaseI(7), "W40001");
    EXPECT_EQ(out.text(), "Failed to reduce dictionary on disk.\nDictionary Failure\n");
  }
  EXPECT_TRUE(std::filesystem::exists(host.file.name()));
  EXPECT_EQ(host.engine->NumberOfSets(), 7) << "none is lost";
  EXPECT_EQ(host.count({2}), 2);

  host.engine->SetMaxInStoreSets(7);
  EXPECT_EQ(host.runPhaseI(7), "OK");
  EXPECT_FALSE(std::filesystem::exists(host.file.name()));
  EXPECT_EQ(host.engine->NumberOfSets(), 7);
  EXPECT_EQ(host.dictionary().inStoreCount(), 7);
  for (const int item : {1, 3, 4, 5, 6}) EXPECT_EQ(host.count({item}), 1) << item;
  EXPECT_EQ(host.count({2}), 2);
  ASSERT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_TRUE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(host.count({2}), 2);
}

TEST(MemoryLimit, DiskSetsThatDoNotFitBackKeepTheEngineInPhaseI) {
  LimitedHost host(sixSingles(), 3, 9, true);
  const StreamCapture quiet(std::cout);
  host.runPhaseI(7);
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "W6") << "phase I could not be closed";
  EXPECT_FALSE(host.engine->IsLatticeBuilt());
  EXPECT_EQ(host.engine->NumberOfSets(), 7);
  host.engine->SetMaxInStoreSets(100);
  EXPECT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
  EXPECT_EQ(host.engine->NumberOfSets(), 7);
}

TEST(MemoryLimit, AHigherLimitJustBeforeThePruningBringsEverythingBack) {
  LimitedHost host(sixSingles(), 3, 9, true);
  auto* support = new TestSupport([&host](int transaction) {
    host.engine->SetMaxInStoreSets(transaction == 7 ? 100 : 3);
    return 0.01;
  });
  host.engine->SetSupportSource(support);
  EXPECT_EQ(host.runPhaseI(7), "OK");
  EXPECT_EQ(host.engine->NumberOfSets(), 7);
  EXPECT_EQ(host.count({2}), 2);
  EXPECT_EQ(host.dictionary().setsSpilled(), 4);
}

TEST(MemoryLimit, AHigherSupportJustBeforeThePruningMakesRoomToo) {
  // The first four sets go to the disk; {2} is counted a second time there. At 0.25 the bound is 7 * 0.25
  // = 1.75, truncated 1: all stay, and there is no room. At 0.3 it is 2: {2} alone comes back.
  for (const double last : {0.25, 0.3}) {
    LimitedHost host(sixSingles(), 3, 9, true);
    host.engine->SetSupportSource(
        new TestSupport([last](int transaction) { return transaction == 7 ? last : 0.01; }));
    const StreamCapture quiet(std::cout);
    EXPECT_EQ(host.runPhaseI(7), last < 0.3 ? "W40001" : "OK");
    if (last < 0.3) continue;
    EXPECT_EQ(host.engine->NumberOfSets(), 2);
    EXPECT_EQ(host.count({2}), 2);
    EXPECT_EQ(Access::setsRemoved(*host.engine), 5);
  }
}

TEST(MemoryLimit, AFileCutShortUnderARunIsAnErrorAndLosesNothingInMemory) {
  LimitedHost host(Transactions{{1}, {2}, {3}, {1}, {2}}, 3, 9, true);
  host.engine->SetSupportSource(new TestSupport([&host](int transaction) {
    if (transaction == 4) std::filesystem::resize_file(host.file.name(), 0);
    return 0.01;
  }));
  const StreamCapture out(std::cout);
  EXPECT_EQ(host.runPhaseI(5), "E40001");
  EXPECT_EQ(out.text(), "Failure to Seek  1 End of Set \nIncrement failed for the singleton set: 1\n");
  EXPECT_EQ(host.source.position(), 4);
  EXPECT_EQ(host.count({2}), 1);
  EXPECT_EQ(host.count({3}), 1);
}

TEST(MemoryLimit, NoFileIsLeftBehindByAnEngineThatIsCancelledOrDestroyed) {
  for (const bool cancels : {false, true}) {
    const StreamCapture quiet(std::cout);
    LimitedHost host(sixSingles(), 3, 9, true);
    host.runPhaseI(7);
    ASSERT_TRUE(std::filesystem::exists(host.file.name()));
    if (cancels) {
      host.engine->Cancel();
      host.source.add({1});
      EXPECT_EQ(host.runPhaseI(1), "W1");
    } else {
      host.engine.reset();
    }
    EXPECT_FALSE(std::filesystem::exists(host.file.name()));
  }
}

TEST(MemoryLimit, MoreSetsThanTheLimitEndPhaseIIWithStatus3) {
  for (const bool random : {false, true}) {
    LimitedHost host(repeated({1, 2}, 3), 100, 0, false);
    ASSERT_EQ(host.runPhaseI(3), "OK");
    ASSERT_EQ(host.engine->NumberOfSets(), 4);  // with the empty set
    const auto phaseII = [&host, random] {
      return shortForm(random ? host.engine->RunPhaseIIrandom() : host.engine->RunPhaseII());
    };
    host.engine->SetMaxInStoreSets(3);
    EXPECT_EQ(phaseII(), "E3");
    EXPECT_FALSE(host.engine->IsLatticeBuilt());
    EXPECT_EQ(host.engine->NumberOfSets(), 4);
    host.engine->SetMaxInStoreSets(4);
    EXPECT_EQ(phaseII(), "E3") << "in phase II the engine does not take a new limit";
    host.settings->GetDictionarySettings().SetMaxInStoreSets(4);
    EXPECT_EQ(phaseII(), "OK") << "no more than the limit is enough";
    EXPECT_TRUE(host.engine->IsLatticeBuilt());
    EXPECT_EQ(host.count({1, 2}), 3);
  }
}

TEST(MemoryLimit, OutOfReachChangesNothing) {
  // The same transactions with and without a limit that is never reached, spilling or not.
  Transactions transactions = repeated({1, 2, 3}, 8);
  transactions.push_back({4});
  transactions.push_back({1, 4});
  std::vector<std::vector<int>> sizes;
  for (const int mostSets : {2147483647, 1000}) {
    for (const bool spill : {false, true}) {
      LimitedHost host(transactions, mostSets, 2, spill, 0.4);
      ASSERT_EQ(host.runPhaseI(10), "OK");
      ASSERT_EQ(shortForm(host.engine->RunPhaseII()), "OK");
      sizes.push_back(
          {host.engine->NumberOfSets(), host.count({1}), host.count({2, 3}), host.count({1, 2, 3})});
    }
  }
  // Of ten transactions {1} is in nine, the other sets of 1, 2 and 3 are in eight; {4} is in two, below the
  // four.
  for (const std::vector<int>& size : sizes) EXPECT_THAT(size, ElementsAre(8, 9, 8, 8));
}

}  // namespace
