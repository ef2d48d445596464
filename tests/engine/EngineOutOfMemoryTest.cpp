// Memory that runs out at any moment of a phase I step or of a complete pass: what was counted is whole.
// The other operations: PassAllocationsTest, StateAllocationsTest, QueryAllocationsTest.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/EngineHost.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/VectorTransactions.h"

namespace {

using Access = CarmaAssociationAlgorithmTestAccess;

constexpr int kNeverSoMany = 5000;  // allocations of one operation in these tests

const Transactions kTransactions = {{1, 2, 3}, {1, 2, 3}, {2, 3}, {1, 2, 3, 4}, {1, 4}, {2, 3}};

// Stored sets and their counts.
std::map<std::vector<int>, int> countsOf(const SetDictionary& dictionary) {
  std::map<std::vector<int>, int> counts;
  for (int level = 0; level <= dictionary.storedLevels(); ++level) {
    dictionary.levelTable(level).forEach([&counts](const HashTable::Entry& entry) {
      const int* items = entry.key->getTheArray();
      counts[{items, items + entry.key->length()}] = entry.descriptor->count;
    });
  }
  return counts;
}

// With small tables, so that it is made quickly.
struct SmallEngine : EngineHost {
  SmallEngine() : EngineHost(kTransactions, 0.3) {
    engine.reset();
    settings->GetDictionarySettings().SetInitialBoundarySearchSize(7);
    settings->GetDictionarySettings().SetInitialHashtableSet23Size(7);
    engine = std::make_unique<CarmaAssociationAlgorithm>(settings.get(), &source);
  }
};

}  // namespace

TEST(CarmaCore, KnowsTheCandidateForWhichThereWasNoMemory) {
  DictionarySettings settings;
  int longest = -1;
  bool done = false;
  for (int allocations = 0; !done; ++allocations) {
    ASSERT_LT(allocations, kNeverSoMany);
    SetDictionary dictionary(4, &settings, true);
    dictionary.addEmptySet(new CarmaSetDescriptor(0, 0, 0));
    CarmaCore core(4, 3);
    ASSERT_TRUE(core.step(dictionary, VectorTransaction({1, 2}), 0.1, 0.1, 1.0).IsOK());
    ASSERT_EQ(core.longestCandidate(), 0);
    const VectorTransaction transaction({1, 2});
    {
      const FailingAllocator failing(allocations);
      done = core.step(dictionary, transaction, 0.1, 0.1, 1.0).IsOK();
    }
    if (!done) longest = core.longestCandidate();
  }
  EXPECT_EQ(longest, 2);  // the last failure was that of storing {1, 2}
}

// Of packed sets, and of sets that somebody has looked at.
TEST(CarmaCore, TakesNoMemoryForATransactionThatBringsNothingNew) {
  for (const bool looked : {false, true}) {
    DictionarySettings settings;
    SetDictionary dictionary(4, &settings, true);
    dictionary.addEmptySet(new CarmaSetDescriptor(0, 0, 0));
    if (looked) dictionary.levelTable(1);
    CarmaCore core(4, 3);
    const VectorTransaction transaction({5, 1, 4, 2, 3});
    for (int t = 0; t < 8; ++t) ASSERT_TRUE(core.step(dictionary, transaction, 0.1, 0.1, 1.0).IsOK());
    ASSERT_EQ(dictionary.getTotalSetCount(), 31);  // all but the five items together
    const FailingAllocator failing(0);
    for (int t = 0; t < 8; ++t) EXPECT_TRUE(core.step(dictionary, transaction, 0.1, 0.1, 1.0).IsOK());
  }
}

TEST(CarmaCore, LeavesAWholeDictionaryWhenMemoryRunsOutInAStep) {
  DictionarySettings settings;
  settings.SetMaxInStoreSets(6);
  settings.SetLeaveInMainStoreCount(3);
  bool done = false;
  for (int allocations = 0; !done; ++allocations) {
    ASSERT_LT(allocations, kNeverSoMany);
    SetDictionary dictionary(4, &settings, true);
    dictionary.addEmptySet(new CarmaSetDescriptor(0, 0, 0));
    CarmaCore core(4, 100);
    const VectorTransaction transaction({1, 2, 3, 4});
    for (int t = 0; t < 3; ++t) {
      KorAssoc::KorStatus status;
      {
        const FailingAllocator limit(allocations);
        ASSERT_NO_THROW(status = core.step(dictionary, transaction, 1e-6, 1e-6, 1.0));
      }
      done = status.IsOK();
      if (!done) {
        EXPECT_EQ(shortForm(status), "E40001");
      }
      const auto stored = countsOf(dictionary);
      ASSERT_EQ(dictionary.inStoreCount(), static_cast<int>(stored.size())) << allocations << " allocations";
      EXPECT_EQ(dictionary.heldEvicted(), 0);
      EXPECT_LE(core.longAdded(), dictionary.setsGivenUp() > 0 ? 4 : dictionary.getHighestLevel());
      const ItemSet* const head = dictionary.smallQueue().head();
      std::size_t queued = 0;
      for (const ItemSet* set = head; set != nullptr;
           set = set->getNext() == head ? nullptr : set->getNext()) {
        EXPECT_TRUE(dictionary.containsSet(set));
        ASSERT_LE(++queued, stored.size());
      }
    }
  }
}

TEST(RunPhaseIIcomplete, KeepsWhatPhaseILeftWhenMemoryRunsOut) {
  bool done = false;
  for (int allocations = 0; !done; ++allocations) {
    ASSERT_LT(allocations, kNeverSoMany);
    SmallEngine host;
    ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
    ASSERT_TRUE(host.engine->RunNullPhaseII(0.0).IsOK());
    const SetDictionary& dictionary = *Access::dictionary(*host.engine);
    const auto before = countsOf(dictionary);
    KorAssoc::KorStatus status;
    {
      const FailingAllocator limit(allocations);
      ASSERT_NO_THROW(status = host.engine->RunPhaseIIcomplete(0.3));
    }
    done = status.IsOK();
    if (!done) {
      ASSERT_EQ(shortForm(status), "E40001");
      ASSERT_EQ(countsOf(dictionary), before) << allocations << " allocations";
      ASSERT_TRUE(host.engine->IsLatticeBuilt());
      ASSERT_EQ(dictionary.inStoreCount(), static_cast<int>(before.size()));
      ASSERT_TRUE(host.engine->RunPhaseIIcomplete(0.3).IsOK());
    }
    // 2 of 6 transactions are enough.
    const std::map<std::vector<int>, int> expected = {{{}, 6},     {{1}, 4},      {{2}, 5},    {{3}, 5},
                                                      {{4}, 2},    {{1, 2}, 3},   {{1, 3}, 3}, {{1, 4}, 2},
                                                      {{2, 3}, 5}, {{1, 2, 3}, 3}};
    EXPECT_EQ(countsOf(dictionary), expected);
  }
}
