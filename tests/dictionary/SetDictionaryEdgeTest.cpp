// The corners of SetDictionary: empty dictionaries, full memory, thresholds that are almost integers.

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <vector>

#include "korassoc/dictionary/CarmaSetDescriptor.h"
#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/DictionaryComparison.h"

namespace {

class SetDictionaryEdge : public testing::Test {
 protected:
  // Made on first use, so that a test can change the settings before.
  SetDictionary& dictionary() {
    if (dictionary_ == nullptr) {
      dictionary_ = std::make_unique<SetDictionary>(maxLevel, &settings, true);
      auto empty = std::make_unique<CarmaSetDescriptor>(0, 0, 0);
      if (dictionary_->addEmptySet(empty.get())) empty.release();
    }
    return *dictionary_;
  }

  // Stores items with this count; addSet's answer.
  int add(const oracle::Items& items, int count = 1) {
    auto descriptor = std::make_unique<CarmaSetDescriptor>(count, 1, 0);
    const int answer = dictionary().addSet(items.data(), static_cast<int>(items.size()), descriptor.get());
    if (answer == 0) descriptor.release();
    return answer;
  }
  bool contains(const oracle::Items& items) {
    const ItemSet set(items.data(), static_cast<int>(items.size()));
    return dictionary().containsSet(&set);
  }
  SetCounter* increment(const oracle::Items& items) {
    return dictionary().incrementSet(items.data(), static_cast<int>(items.size()));
  }

  int maxLevel = 5;
  DictionarySettings settings;

 private:
  std::unique_ptr<SetDictionary> dictionary_;
};

TEST_F(SetDictionaryEdge, MaxLevelZeroHoldsTheEmptySetAlone) {
  maxLevel = 0;
  EXPECT_EQ(dictionary().getTotalSetCount(), 1);
  EXPECT_EQ(dictionary().getHighestLevel(), 0);
  EXPECT_EQ(dictionary().getLevelSize(0), 1);
  EXPECT_EQ(dictionary().getSizeAboveLevel(0), 0);
  EXPECT_FALSE(contains({1}));
  EXPECT_EQ(dictionary().getDescriptor(1), nullptr);
  EXPECT_EQ(dictionary().removeSmallSets(100), 0);
  EXPECT_TRUE(contains({}));
}

TEST_F(SetDictionaryEdge, HasNoMoreThanOneThousandAndOneLevels) {
  for (const int given : {1000, 1001, 2147483647}) {
    EXPECT_EQ(SetDictionary(given, &settings, true).maxLevel(), 1000) << given;
    EXPECT_EQ(SetDictionary(std::vector<std::unique_ptr<HashTable>>(), 0, given, true).maxLevel(), 1000);
  }
  EXPECT_EQ(SetDictionary(999, &settings, true).maxLevel(), 999);
  for (const int given : {-1, -2147483647 - 1}) {
    EXPECT_EQ(SetDictionary(given, &settings, true).maxLevel(), 0) << given;
    EXPECT_EQ(SetDictionary(std::vector<std::unique_ptr<HashTable>>(), 0, given, true).maxLevel(), 0);
  }
}

TEST_F(SetDictionaryEdge, RefusesASetOfMoreThanOneThousandItems) {
  maxLevel = 2147483647;
  oracle::Items items(1001);
  std::iota(items.begin(), items.end(), 1);
  EXPECT_EQ(add(items), 3);
  EXPECT_FALSE(contains(items));
  items.pop_back();
  EXPECT_EQ(add(items), 0);
  EXPECT_TRUE(contains(items));
}

TEST_F(SetDictionaryEdge, NumberOfFixedSetsIsClampedInTheSettingsToo) {
  settings.SetNumberOfFixedSets(10);
  maxLevel = 3;
  dictionary();
  EXPECT_EQ(settings.GetNumberOfFixedSets(), 4);
}

TEST_F(SetDictionaryEdge, NumberOfFixedSetsThatFitsStays) {
  settings.SetNumberOfFixedSets(4);
  maxLevel = 3;
  dictionary();
  EXPECT_EQ(settings.GetNumberOfFixedSets(), 4);
  // Sets of four items have no scratch key any more; they are found all the same.
  EXPECT_EQ(add({1, 2, 3}), 0);
  EXPECT_TRUE(contains({1, 2, 3}));
  EXPECT_FALSE(contains({1, 2, 3, 4}));
  EXPECT_EQ(increment({1, 2, 3})->count, 2);
}

TEST_F(SetDictionaryEdge, FullMemoryRefusesEveryFurtherSetWhenNothingMayLeave) {
  settings.SetMaxInStoreSets(3);  // the empty set and two more
  settings.SetLeaveInMainStoreCount(0);
  EXPECT_EQ(add({1}), 0);
  EXPECT_EQ(add({2}), 0);
  EXPECT_EQ(add({3}), 3);
  EXPECT_EQ(add({1, 2}), 3);
  EXPECT_EQ(add({4}), 3);
  EXPECT_EQ(stateText(dictionary()), "a 1@1+0, b 1@1+0");
}

TEST_F(SetDictionaryEdge, EvictedSetIsGoneWithItsCount) {
  settings.SetMaxInStoreSets(3);
  settings.SetLeaveInMainStoreCount(5);
  add({1}, 4);
  add({2}, 4);
  EXPECT_EQ(add({1, 2}, 1), 0);  // {1} came first
  EXPECT_EQ(increment({1}), nullptr);
  EXPECT_EQ(dictionary().getCount(1), 0);
  EXPECT_EQ(add({1}, 1), 0);  // {2} leaves
  EXPECT_EQ(stateText(dictionary()), "a 1@1+0, ab 1@1+0");
  EXPECT_EQ(dictionary().inStoreCount(), 3);
}

TEST_F(SetDictionaryEdge, OnlyOneItemSetsAreFoundOnTheDisk) {
  settings.SetMaxInStoreSets(2);
  settings.SetLeaveInMainStoreCount(5);
  settings.SetDiskSpill(true);
  EXPECT_EQ(add({1}, 4), 0);
  EXPECT_EQ(add({2, 3}, 1), 0);  // {1} goes to the disk
  EXPECT_TRUE(contains({1}));
  EXPECT_EQ(increment({1})->count, 5);
  EXPECT_EQ(dictionary().getLevelSize(1), 1);
  // The disk takes one-item sets only: {2, 3} cannot leave, nor is {2, 4} taken.
  EXPECT_EQ(add({2, 4}, 1), 2);
  EXPECT_FALSE(contains({2, 4}));
}

TEST_F(SetDictionaryEdge, AlmostIntegerThresholdsKeepTheirValue) {
  struct Case {
    double minCount;
    int needed;
  };
  const Case cases[] = {{3.0000000000000004, 3},
                        {2.9999999999999996, 3},
                        {3.2, 4},
                        {3.0, 3},
                        {0.0, 0},
                        {0.3, 1},
                        {2.000001, 3},
                        {-1.0, 0}};
  for (const Case& c : cases) {
    DictionarySettings own;
    SetDictionary pruned(1, &own, true);
    for (int count = 0; count <= 5; ++count) {
      ASSERT_EQ(pruned.addSet(&count, 1, new CarmaSetDescriptor(count, 1, 0)), 0);
    }
    EXPECT_EQ(pruned.removeSmall(1, c.minCount), c.needed) << c.minCount;  // counts 0 .. needed - 1
    for (int count = 0; count <= 5; ++count) {
      EXPECT_EQ(pruned.getDescriptor(count) != nullptr, count >= c.needed)
          << c.minCount << ", count " << count;
    }
  }
}

TEST_F(SetDictionaryEdge, QueuedSetThatIsCountedOftenEnoughIsNeverEvicted) {
  settings.SetMaxInStoreSets(3);
  settings.SetLeaveInMainStoreCount(2);
  add({1}, 1);
  add({2}, 1);
  increment({1});  // 2: to the tail of the queue
  increment({1});  // 3: out of it
  EXPECT_EQ(add({3}), 0);
  EXPECT_FALSE(contains({2}));
  EXPECT_EQ(add({4}), 0);
  EXPECT_FALSE(contains({3}));
  EXPECT_EQ(add({5}), 0);
  EXPECT_EQ(stateText(dictionary()), "a 3@1+0, e 1@1+0");
}

TEST_F(SetDictionaryEdge, CountedQueuedSetGoesBehindTheOthers) {
  settings.SetMaxInStoreSets(3);
  settings.SetLeaveInMainStoreCount(5);
  add({1}, 1);
  add({2}, 1);
  increment({1});  // 2, above what any queued set has reached: to the tail
  EXPECT_EQ(add({3}), 0);
  EXPECT_EQ(stateText(dictionary()), "a 2@1+0, c 1@1+0");
}

TEST_F(SetDictionaryEdge, LooksUpEveryKindOfItem) {
  for (const int item : {0, -1, 2147483647, -2147483647 - 1, 368639, 1000000000}) {
    EXPECT_EQ(add({item}, 2), 0);
    EXPECT_TRUE(contains({item})) << item;
    EXPECT_EQ(dictionary().incrementSet(item)->count, 3) << item;
    EXPECT_EQ(dictionary().getCount(item), 3) << item;
  }
}

TEST_F(SetDictionaryEdge, SizeAboveALevelTakesAnyNumber) {
  add({1}, 1);
  add({1, 2}, 1);
  add({1, 3}, 1);
  EXPECT_EQ(dictionary().getSizeAboveLevel(-2147483647 - 1), 4);
  EXPECT_EQ(dictionary().getSizeAboveLevel(-1), 4);
  EXPECT_EQ(dictionary().getSizeAboveLevel(0), 3);
  EXPECT_EQ(dictionary().getSizeAboveLevel(1), 2);
  EXPECT_EQ(dictionary().getSizeAboveLevel(2), 0);
  EXPECT_EQ(dictionary().getSizeAboveLevel(maxLevel), 0);
  maxLevel = 2147483647;
  SetDictionary deep(maxLevel, &settings, true);
  EXPECT_EQ(deep.getSizeAboveLevel(2147483646), 0);
  EXPECT_EQ(deep.getSizeAboveLevel(2147483647), 0);
}

TEST_F(SetDictionaryEdge, EmptySetIsNeverPruned) {
  EXPECT_EQ(dictionary().removeSmall(0, 1000), 0);
  EXPECT_EQ(dictionary().removeSmall(-1, 1000), 0);
  EXPECT_EQ(dictionary().removeSmallSets(1000), 0);
  EXPECT_TRUE(contains({}));
}

TEST_F(SetDictionaryEdge, PruningStopsAtTheFirstEmptyLevel) {
  add({1}, 1);
  add({1, 2, 3}, 1);
  EXPECT_EQ(dictionary().removeSmallSets(2), 1);
  EXPECT_TRUE(contains({1, 2, 3}));
  EXPECT_EQ(dictionary().getHighestLevel(), 0);
  EXPECT_EQ(dictionary().getTotalSetCount(), 2);
}

}  // namespace
