// Memory that runs out at any moment of any operation: a status says so, nothing is thrown, and what was
// counted is either complete or as it was before.

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/engine/CarmaCore.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/EngineHost.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/StreamCapture.h"
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

TEST(Facade, AnswersWithAStatusWhereverMemoryRunsOut) {
  const StreamCapture output(std::cout);
  const StreamCapture errors(std::cerr);
  struct Step {
    const char* what;
    KorAssoc::KorStatus (*run)(CarmaAssociationAlgorithm&);
  };
  const Step steps[] = {
      {"RunPhaseI", [](CarmaAssociationAlgorithm& engine) { return engine.RunPhaseI(6); }},
      {"RunPhaseII", [](CarmaAssociationAlgorithm& engine) { return engine.RunPhaseII(); }},
      {"RunPhaseIIrandom", [](CarmaAssociationAlgorithm& engine) { return engine.RunPhaseIIrandom(); }},
      {"RunNullPhaseII", [](CarmaAssociationAlgorithm& engine) { return engine.RunNullPhaseII(0.0); }},
      {"CreateNgetRules",
       [](CarmaAssociationAlgorithm& engine) {
         std::vector<AssociationRule> rules;
         return engine.CreateNgetRules(0.3, 0.3, rules);
       }},
      {"GetRulesSpecial",
       [](CarmaAssociationAlgorithm& engine) {
         std::vector<AssociationRule> rules;
         return engine.GetRulesSpecial(0, 1, 0, 1, 0, 'C', nullptr, nullptr, 0, 9, nullptr, nullptr, 0, 9, 9,
                                       false, rules);
       }},
      {"GetItemsSpecial",
       [](CarmaAssociationAlgorithm& engine) {
         std::vector<ConsequentDescriptor> items;
         return engine.GetItemsSpecial(0, 1, 0, 1, 0, 'C', nullptr, nullptr, 0, 9, nullptr, 9, items);
       }},
      {"ExportRulesXML",
       [](CarmaAssociationAlgorithm& engine) {
         std::ostream nowhere(nullptr);
         return engine.ExportRulesXML(nowhere, 0.3, 0.3, false);
       }},
      {"ExportLatticeXML",
       [](CarmaAssociationAlgorithm& engine) {
         std::ostream nowhere(nullptr);
         return engine.ExportLatticeXML(nowhere);
       }},
  };
  for (const Step& step : steps) {
    bool done = false;
    for (int allocations = 0; !done; ++allocations) {
      ASSERT_LT(allocations, kNeverSoMany) << step.what;
      SmallEngine host;
      const std::string what = step.what;
      if (what != "RunPhaseI") {
        ASSERT_TRUE(host.engine->RunPhaseI(6).IsOK());
        if (what.find("Run") != 0) {
          ASSERT_TRUE(host.engine->RunPhaseII().IsOK());
        }
      }
      KorAssoc::KorStatus status;
      {
        const FailingAllocator limit(allocations);
        ASSERT_NO_THROW(status = step.run(*host.engine)) << what << ", " << allocations << " allocations";
      }
      done = status.IsOK();
      ASSERT_TRUE(done || status.GetCode() == 40001 || status.GetCode() == 6)
          << what << ", " << allocations << " allocations: " << shortForm(status);
    }
  }
}

TEST(Construction, LeavesAnUnusableEngineWhereverMemoryRunsOut) {
  const auto settings = settingsWithSupport(0.3);
  VectorTransactions source(kTransactions);
  int failures = 0;
  for (bool done = false; !done; ++failures) {
    ASSERT_LT(failures, kNeverSoMany);
    const FailingAllocator limit(failures + 1);  // one for the engine itself
    const auto engine = std::make_unique<CarmaAssociationAlgorithm>(settings.get(), &source);
    done = engine->GetStatus().IsOK();
    EXPECT_TRUE(done || engine->GetStatus() == error(5));
    EXPECT_EQ(engine->NumberOfSets(), done ? 1 : -1);
  }
  EXPECT_GT(failures, 1);
}
