// A dictionary whose sets are packed beside one whose sets are not: nobody can tell them apart.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/CompleteItemsets.h"
#include "korassoc/dictionary/LatticeGraph.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/Dice.h"
#include "tests/support/FailingAllocator.h"
#include "tests/support/RecordStream.h"

namespace {

// A dictionary of small tables, with the empty set.
struct Store {
  explicit Store(const std::function<void(DictionarySettings&)>& change = nullptr) {
    settings.SetInitialBoundarySearchSize(7);
    settings.SetInitialHashtableSet23Size(3);
    if (change) change(settings);
    dictionary = std::make_unique<SetDictionary>(4, &settings, true);
    auto transactions = std::make_unique<CarmaSetDescriptor>(50, 0, 0);
    if (dictionary->addEmptySet(transactions.get())) static_cast<void>(transactions.release());
  }
  Store(const Store&) = delete;  // the dictionary refers to the settings
  Store& operator=(const Store&) = delete;
  int add(const std::vector<int>& items, int count) {
    return dictionary->add(ItemSetView(items.data(), static_cast<int>(items.size())),
                           CarmaSetDescriptor(count, count + 1, count + 2));
  }
  // All sets of up to three of the items 0 to 11, in some order.
  void fill(std::uint64_t seed) {
    std::vector<std::vector<int>> sets;
    for (int a = 0; a < 12; ++a) {
      sets.push_back({a});
      for (int b = a + 1; b < 12; ++b) {
        sets.push_back({a, b});
        for (int c = b + 1; c < 12; ++c) sets.push_back({a, b, c});
      }
    }
    Dice dice(seed);
    dice.shuffle(sets);
    for (const std::vector<int>& set : sets) ASSERT_EQ(add(set, dice.between(1, 20)), 0);
  }
  void unpack() { dictionary->levelTable(1); }

  DictionarySettings settings;
  std::unique_ptr<SetDictionary> dictionary;
};

std::string binary(const SetDictionary& dictionary) {
  RecordStream record;
  const std::uint64_t bytes = dictionary.writeObject(record.stream());
  EXPECT_EQ(bytes, record.bytes().size());
  return record.bytes();
}

std::string xml(const SetDictionary& dictionary) {
  std::ostringstream out;
  out << dictionary.writeObjectXML(out) << " lines\n";
  return out.str();
}

std::string sizes(const SetDictionary& dictionary) {
  std::string line = std::to_string(dictionary.getTotalSetCount()) + " in all, " +
                     std::to_string(dictionary.inStoreCount()) + " in store, highest " +
                     std::to_string(dictionary.getHighestLevel()) + " " +
                     std::to_string(dictionary.storedLevels());
  for (int level = -1; level <= 5; ++level)
    line += ", " + std::to_string(dictionary.getSizeAboveLevel(level));
  for (int level = 0; level <= 4; ++level) line += "; " + std::to_string(dictionary.getLevelSize(level));
  return line;
}

}  // namespace

TEST(PackedSets, SayTheSameAsTheirEntriesWould) {
  for (std::uint64_t seed = 0; seed < 10; ++seed) {
    Store packed;
    Store unpacked;
    unpacked.unpack();
    EXPECT_EQ(sizes(*packed.dictionary), sizes(*unpacked.dictionary));
    packed.fill(seed);
    unpacked.fill(seed);
    for (const double minCount : {0.0, 3.0, 9.5, 15.0, 21.0}) {
      EXPECT_EQ(packed.dictionary->removeSmallSets(minCount), unpacked.dictionary->removeSmallSets(minCount));
      EXPECT_EQ(sizes(*packed.dictionary), sizes(*unpacked.dictionary));
      EXPECT_EQ(binary(*packed.dictionary), binary(*unpacked.dictionary));
      EXPECT_EQ(xml(*packed.dictionary), xml(*unpacked.dictionary));
      ASSERT_TRUE(packed.dictionary->isPacked());
      ASSERT_FALSE(unpacked.dictionary->isPacked());
      packed.add({100, 101}, 21);
      unpacked.add({100, 101}, 21);
      packed.dictionary->removeSmall(2, 22);
      unpacked.dictionary->removeSmall(2, 22);
    }
  }
}

TEST(PackedSets, AreUnpackedByWhoeverAsksForASetOrBringsOne) {
  const ItemSet single(5);
  const std::vector<std::function<void(SetDictionary&)>> calls = {
      [](SetDictionary& sets) { sets.getDescriptor(5)->increment(); },
      [](SetDictionary& sets) { sets.incrementSet(5); },
      [](SetDictionary& sets) { EXPECT_EQ(sets.getCount(77), 0); },
      [&](SetDictionary& sets) { EXPECT_TRUE(sets.containsSet(&single)); },
      [](SetDictionary& sets) { sets.levelTable(3); },
      [](SetDictionary& sets) { sets.prepareExactCounting(1, false); },
      [](SetDictionary& sets) { sets.resetAllCounts(); },
      [](SetDictionary& sets) { sets.markLevelBits(2); },
      [](SetDictionary& sets) { sets.graph(); },
      [](SetDictionary& sets) { sets.buildLattice(); },
      [](SetDictionary& sets) {
        auto set = std::make_unique<ItemSet>(999);
        auto descriptor = std::make_unique<CarmaSetDescriptor>(4, 4, 4);
        ASSERT_EQ(sets.addSet(set.release(), descriptor.get()), 0);
        static_cast<void>(descriptor.release());
      },
      [](SetDictionary& sets) {
        sets.setBitsetOff(false);
        sets.removeSmallSets(5.0);
      },
  };
  for (std::size_t i = 0; i < calls.size(); ++i) {
    Store packed;
    Store unpacked;
    unpacked.unpack();
    packed.fill(i);
    unpacked.fill(i);
    ASSERT_TRUE(packed.dictionary->isPacked());
    calls[i](*packed.dictionary);
    calls[i](*unpacked.dictionary);
    EXPECT_FALSE(packed.dictionary->isPacked()) << "call " << i;
    EXPECT_EQ(sizes(*packed.dictionary), sizes(*unpacked.dictionary)) << "call " << i;
    EXPECT_EQ(xml(*packed.dictionary), xml(*unpacked.dictionary)) << "call " << i;
  }
}

TEST(PackedSets, StayPackedWhenTheEmptySetIsAskedFor) {
  Store store;
  store.fill(1);
  EXPECT_EQ(store.dictionary->getEmptySetCount(), 50);
  store.dictionary->incrementSet(&store.dictionary->emptySet());
  store.dictionary->takeTransactionCount(52);
  EXPECT_EQ(store.dictionary->getEmptySetCount(), 52);
  EXPECT_TRUE(store.dictionary->isPacked());
}

TEST(PackedSets, AreThereOnlyWhereNoSetMayHaveToLeave) {
  EXPECT_TRUE(Store().dictionary->isPacked());
  EXPECT_FALSE(Store([](DictionarySettings& s) { s.SetLeaveInMainStoreCount(1); }).dictionary->isPacked());
  EXPECT_FALSE(Store([](DictionarySettings& s) { s.SetDiskSpill(true); }).dictionary->isPacked());
}

TEST(PackedSets, AreRefusedWhenTheMemoryIsFullOrTheyAreTooLong) {
  Store store([](DictionarySettings& s) { s.SetMaxInStoreSets(3); });
  EXPECT_EQ(store.add({1}, 1), 0);
  EXPECT_EQ(store.add({1, 2, 3, 4, 5}, 1), 3);
  EXPECT_EQ(store.add({2}, 1), 0);
  EXPECT_EQ(store.add({3}, 1), 3);
  EXPECT_EQ(store.dictionary->getTotalSetCount(), 3);
  store.dictionary->setMaxInStoreSets(4);
  EXPECT_EQ(store.add({3}, 1), 0);
  EXPECT_TRUE(store.dictionary->isPacked());
}

TEST(PackedSets, ComeBackPackedFromTheirRecords) {
  Store store;
  store.fill(3);
  Store unpacked;
  unpacked.unpack();
  unpacked.fill(3);
  RecordStream record(binary(*store.dictionary));
  Store restored;
  restored.dictionary->readObject(record.stream());
  EXPECT_TRUE(restored.dictionary->isPacked());
  RecordStream again(binary(*unpacked.dictionary));
  Store compared;
  compared.dictionary->readObject(again.stream());
  compared.unpack();
  EXPECT_EQ(sizes(*restored.dictionary), sizes(*compared.dictionary));
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(xml(*restored.dictionary), xml(*compared.dictionary));
    for (const int item : {50, 60, 70, 80}) {
      ASSERT_EQ(restored.add({1, item}, 6), 0);
      ASSERT_EQ(compared.add({1, item}, 6), 0);
      restored.dictionary->removeSmallSets(5);
      compared.dictionary->removeSmallSets(5);
    }
    restored.unpack();
  }
}

TEST(PackedSets, StayAsTheyWereWhenThereIsNoMemoryToUnpackOrAddThem) {
  const std::vector<std::function<void(Store&)>> calls = {
      [](Store& store) { store.unpack(); },
      [](Store& store) {
        store.add({1, 2, 3, 4}, 1);
      },
      [](Store& store) {
        store.dictionary->adopt(korassoc::detail::CompleteItemsets{9, {{{1, 2}, {5, 6}}, {{1, 2}, {4}}}});
      },
  };
  for (std::size_t i = 0; i < calls.size(); ++i) {
    Store store;
    store.fill(5);
    const std::string before = xml(*store.dictionary);
    bool done = false;
    for (int allocations = 0; !done; ++allocations) {
      ASSERT_LT(allocations, 100000);
      try {
        const FailingAllocator failing(allocations);
        calls[i](store);
        done = true;
        EXPECT_GT(allocations, 0) << "call " << i;
      } catch (const std::bad_alloc&) {
      }
      if (done) continue;
      ASSERT_TRUE(store.dictionary->isPacked()) << "call " << i << ", allocation " << allocations;
      ASSERT_EQ(xml(*store.dictionary), before) << "call " << i << ", allocation " << allocations;
    }
  }
}

TEST(PackedSets, GiveWayToACompleteResult) {
  Store store;
  store.fill(6);
  store.dictionary->adopt(korassoc::detail::CompleteItemsets{9, {{{1, 2}, {5, 6}}, {{1, 2}, {4}}}});
  EXPECT_FALSE(store.dictionary->isPacked());
  EXPECT_EQ(store.dictionary->getTotalSetCount(), 4);
  EXPECT_EQ(store.dictionary->getCount(2), 6);
  EXPECT_EQ(store.dictionary->getEmptySetCount(), 9);
}

TEST(PackedSets, ShowInTheGraphThatWasThereBeforeThem) {
  Store store;
  EXPECT_EQ(store.dictionary->graph().size(), 1);
  store.add({1}, 5);
  store.add({2}, 5);
  store.add({1, 2}, 5);
  EXPECT_EQ(store.dictionary->graph().size(), 4);
}

TEST(PackedSets, DoNotIncludeWhatWasStoredAtNoTransaction) {
  Store store;
  store.add({1}, 5);
  const int item = 2;
  ASSERT_EQ(store.dictionary->add(ItemSetView(&item, 1), CarmaSetDescriptor(1, -4, 0)), 0);
  EXPECT_FALSE(store.dictionary->isPacked());
  EXPECT_EQ(store.dictionary->getDescriptor(2)->getTID(), -4);
  EXPECT_EQ(store.dictionary->getTotalSetCount(), 3);
}

TEST(SetDictionaryRecord, ReadIntoADictionaryWithAQueueLeavesNothingOfTheQueue) {
  const auto queued = [](DictionarySettings& settings) { settings.SetLeaveInMainStoreCount(2); };
  Store store(queued);
  for (int item = 1; item <= 20; ++item) store.add({item}, 1);
  RecordStream record(binary(*store.dictionary));
  store.dictionary->readObject(record.stream());
  EXPECT_TRUE(store.dictionary->smallQueue().empty());
  for (int item = 21; item <= 60; ++item) store.add({item}, 1);
  EXPECT_EQ(store.dictionary->smallQueue().count(), 40);
  for (int item = 1; item <= 60; ++item) store.dictionary->incrementSet(item);
  for (int item = 1; item <= 60; ++item) EXPECT_EQ(store.dictionary->getCount(item), 2) << item;
  int inQueue = 0;
  while (store.dictionary->queuePop() != nullptr) ++inQueue;
  EXPECT_EQ(inQueue, 40);
}
