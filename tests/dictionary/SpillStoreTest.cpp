// The spill store step by step, its file read back by a reader that knows only the documented layout.
//
// A one-item set {i} has the hash code 7 i, so its search begins at slot 7 i mod 737279. Items 737279 apart
// begin at the same slot; item 210651 begins at the last one (7 * 210651 = 2 * 737279 - 1).

#include "korassoc/dictionary/SpillStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <memory>

#include "korassoc/dictionary/SetDictionary.h"
#include "korassoc/engine/DictionarySettings.h"
#include "tests/support/Raised.h"
#include "tests/support/SpillFileReader.h"
#include "tests/support/StreamCapture.h"
#include "tests/support/TemporaryFile.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr int kSlots = 737279;

class SpillStoreTest : public ::testing::Test {
 protected:
  SpillStoreTest() : dictionary_(4, &settings_, true) { open(1); }

  void open(int level) {
    store_.reset();  // before the next one takes the same file
    store_ = std::make_unique<SpillStore>(&dictionary_, file_.name().c_str(), 4, level);
  }
  int add(std::vector<int> items, int count) {
    ItemSet set(items.data(), static_cast<int>(items.size()));
    SetCounter counter(count, 77);
    return store_->add(&set, &counter);
  }
  int add(int item, int count) { return add(std::vector<int>{item}, count); }
  // The count that find() gives, -1 for null.
  int found(int item) {
    const ItemSet set(item);
    const std::unique_ptr<SetCounter> counter(store_->find(&set));
    return counter != nullptr ? counter->count : -1;
  }
  int incremented(int item) {
    const ItemSet set(item);
    const SetCounter* counter = store_->increment(&set);
    return counter != nullptr ? counter->count : -1;
  }
  bool contains(int item) {
    const ItemSet set(item);
    return store_->contains(&set);
  }
  std::vector<DiskSlot> slots(int level = 1) const { return readSpillFile(file_.name(), level).slots; }

  DictionarySettings settings_;
  SetDictionary dictionary_;
  TemporaryFile file_;
  std::unique_ptr<SpillStore> store_;
};

TEST_F(SpillStoreTest, LaysOutTheHeaderAndEverySlotAtOnce) {
  EXPECT_TRUE(store_->isOpen());
  const DiskImage image = readSpillFile(file_.name(), 1);
  EXPECT_EQ(image.size, 8U + 737279U * 13U);
  EXPECT_EQ(image.levelPlusOne, 2);
  EXPECT_EQ(image.zero, 0);
  EXPECT_THAT(image.slots, IsEmpty());
  EXPECT_EQ(store_->slotCount(), kSlots);
  EXPECT_EQ(store_->slotSize(), 13);
  EXPECT_EQ(store_->level(), 1);
  EXPECT_EQ(store_->maxLevel(), 4);
  EXPECT_EQ(store_->size(), 0);
}

TEST_F(SpillStoreTest, SizesItsSlotsForItsLevel) {
  open(3);
  EXPECT_EQ(store_->slotSize(), 21);
  EXPECT_EQ(add({5, 7, 11}, 9), 0);
  const DiskImage image = readSpillFile(file_.name(), 3);
  EXPECT_EQ(image.size, 8U + 737279U * 21U);
  EXPECT_EQ(image.levelPlusOne, 4);
  // Hash code: 7*5 ^ 11*7 ^ 13*11 = 35 ^ 77 ^ 143 = 225.
  EXPECT_THAT(image.slots, ElementsAre(DiskSlot{225, 1, 225, {5, 7, 11}, 9}));
}

TEST_F(SpillStoreTest, WritesASetAtTheSlotOfItsHashCode) {
  EXPECT_EQ(add(3, 5), 0);
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 5}));
  EXPECT_EQ(store_->size(), 1);
  EXPECT_EQ(add(2, 2147483647), 0);
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{14, 1, 14, {2}, 2147483647}, DiskSlot{21, 1, 21, {3}, 5}));
  EXPECT_EQ(store_->size(), 2);
}

TEST_F(SpillStoreTest, ProbesTheNextSlotWhenOneIsTaken) {
  EXPECT_EQ(add(3, 5), 0);
  EXPECT_EQ(add(3 + kSlots, 6), 0);
  EXPECT_EQ(add(3 + 2 * kSlots, 7), 0);
  EXPECT_THAT(slots(),
              ElementsAre(DiskSlot{21, 1, 21, {3}, 5}, DiskSlot{22, 1, 7 * (3 + kSlots), {3 + kSlots}, 6},
                          DiskSlot{23, 1, 7 * (3 + 2 * kSlots), {3 + 2 * kSlots}, 7}));
  EXPECT_EQ(found(3), 5);
  EXPECT_EQ(found(3 + kSlots), 6);
  EXPECT_EQ(found(3 + 2 * kSlots), 7);
  EXPECT_EQ(found(3 + 3 * kSlots), -1);
  EXPECT_EQ(store_->lastResult(), 8 + 24 * 13);  // the empty slot that ended the search
  EXPECT_FALSE(store_->lastFound());
}

TEST_F(SpillStoreTest, WrapsFromTheLastSlotToTheFirst) {
  EXPECT_EQ(add(210651, 4), 0);
  EXPECT_EQ(add(210651 + kSlots, 5), 0);
  EXPECT_EQ(add(210651 - kSlots, 6), 0);  // hash code 7 * -526628 = -3686396: see the next test for its slot
  const std::vector<DiskSlot> all = slots();
  ASSERT_EQ(all.size(), 3U);
  EXPECT_EQ(all.front(), (DiskSlot{0, 1, 7 * (210651 + kSlots), {210651 + kSlots}, 5}));
  EXPECT_EQ(all.back(), (DiskSlot{kSlots - 1, 1, 1474557, {210651}, 4}));
  EXPECT_EQ(found(210651 + kSlots), 5);
  EXPECT_EQ(found(210651 + 2 * kSlots), -1);
  EXPECT_EQ(store_->lastResult(), 8 + 13);
}

TEST_F(SpillStoreTest, TakesNegativeHashCodesAsUnsigned) {
  EXPECT_EQ(add(-1, 8), 0);
  // Hash code -7 is 4294967289 unsigned = 5825 * 737279 + 317114.
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{317114, 1, -7, {-1}, 8}));
  EXPECT_EQ(found(-1), 8);
  EXPECT_TRUE(contains(-1));
}

TEST_F(SpillStoreTest, ComparesHashCodeAndItems) {
  open(2);
  // {11, 7} is no ascending set, but has a hash code as any: 77 ^ 77 = 0, as has {0, 0}.
  EXPECT_EQ(add({0, 0}, 3), 0);
  const int unsorted[] = {11, 7};
  const ItemSet other(unsorted, 2);
  ASSERT_EQ(other.hashcode(), 0);
  EXPECT_EQ(store_->find(&other), nullptr);
  EXPECT_FALSE(store_->contains(&other));
}

TEST_F(SpillStoreTest, GivesFoundSetsANewCounterWithoutTID) {
  add(3, 5);
  const ItemSet set(3);
  const std::unique_ptr<SetCounter> counter(store_->find(&set));
  ASSERT_NE(counter, nullptr);
  EXPECT_EQ(counter->count, 5);
  EXPECT_EQ(counter->TID, 0);
  EXPECT_EQ(counter->getMaxMissed(), 0);
}

TEST_F(SpillStoreTest, IncrementsTheCountInPlace) {
  add(3, 5);
  add(4, 1);
  const ItemSet set(3);
  SetCounter* counter = store_->increment(&set);
  ASSERT_NE(counter, nullptr);
  EXPECT_EQ(counter->count, 6);
  EXPECT_EQ(counter->TID, 0);
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 6}, DiskSlot{28, 1, 28, {4}, 1}));
  const ItemSet other(4);
  EXPECT_EQ(store_->increment(&other), counter) << "one counter serves all";
  EXPECT_EQ(counter->count, 2);
  EXPECT_EQ(incremented(5), -1);
  EXPECT_EQ(incremented(3 + kSlots), -1) << "begins where 3 begins, but is not there";
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 6}, DiskSlot{28, 1, 28, {4}, 2}));
}

TEST_F(SpillStoreTest, LeavesACountAtTheTopOfItsRange) {
  add(3, 2147483646);
  EXPECT_EQ(incremented(3), 2147483647);
  EXPECT_EQ(incremented(3), 2147483647);
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 2147483647}));
}

TEST_F(SpillStoreTest, KeepsARunningMeanOfTheCounts) {
  EXPECT_EQ(store_->writtenCount(), 0);
  EXPECT_EQ(store_->meanCount(), 0.0);
  add(1, 3);  // (0 * 0 + 3) / 1
  EXPECT_EQ(store_->writtenCount(), 1);
  EXPECT_EQ(store_->meanCount(), 3.0);
  add(2, 6);  // (1 * 3 + 6) / 2
  EXPECT_EQ(store_->meanCount(), 4.5);
  incremented(1);  // 4.5 + 1/2
  EXPECT_EQ(store_->meanCount(), 5.0);
  add(3, 5);  // (2 * 5 + 5) / 3
  EXPECT_EQ(store_->writtenCount(), 3);
  EXPECT_EQ(store_->meanCount(), 5.0);
  // Removing {1} with count 4: (2 * 5 - 4) / 2 = 3; {2} with 6: (1 * 3 - 6) / 1 = -3; the last one leaves 0.
  EXPECT_EQ(store_->reduce(1, 1e9), 3);
  EXPECT_EQ(store_->writtenCount(), 0);
  EXPECT_EQ(store_->meanCount(), 0.0);
}

TEST_F(SpillStoreTest, TakesRemovedCountsOutOfTheMeanWithTheNewNumberOfSets) {
  dictionary_.setMaxInStoreSets(0);
  add(1, 1);
  add(2, 1);
  add(3, 10);  // mean 4, three sets
  EXPECT_EQ(raised([this] { store_->reduce(1, 2.0); }), "DictionaryFailure");
  // {1}: (2 * 4 - 1) / 2 = 3.5; {2}: (1 * 3.5 - 1) / 1 = 2.5; {3} stays for want of memory.
  EXPECT_EQ(store_->writtenCount(), 1);
  EXPECT_EQ(store_->meanCount(), 2.5);
  EXPECT_EQ(store_->size(), 1);
}

TEST_F(SpillStoreTest, CountsASetAddedTwiceTwiceInTheMean) {
  const StreamCapture quiet(std::cout);
  add(1, 3);
  add(1, 6);
  EXPECT_EQ(store_->writtenCount(), 2);
  EXPECT_EQ(store_->meanCount(), 4.5);
  EXPECT_EQ(store_->size(), 1);
}

TEST_F(SpillStoreTest, ReportsASetThatIsOnDiskAlready) {
  add(3, 5);
  std::string text;
  {
    const StreamCapture out(std::cout);
    EXPECT_EQ(add(3, 9), 0);
    text = out.text();
  }
  EXPECT_EQ(text,
            "STRANGE ADD on diskHashCode=21, Elements:  3 End of Set \nPrevious: NULL\nNext: NULL\n"
            "STRANGE ADD addingHashCode=21, Elements:  3 End of Set \nPrevious: NULL\nNext: NULL\n");
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 5}));
  EXPECT_EQ(store_->size(), 1);
}

TEST_F(SpillStoreTest, RefusesSetsOfAnotherLengthUntouched) {
  const StreamCapture out(std::cout);
  EXPECT_EQ(add({1, 2}, 5), 2);
  EXPECT_EQ(add(std::vector<int>{}, 5), 2);
  const int items[] = {1, 2};
  const ItemSet pair(items, 2);
  EXPECT_EQ(store_->find(&pair), nullptr);
  EXPECT_EQ(store_->increment(&pair), nullptr);
  EXPECT_FALSE(store_->contains(&pair));
  EXPECT_EQ(store_->size(), 0);
  EXPECT_EQ(store_->writtenCount(), 0);
  EXPECT_THAT(slots(), IsEmpty());
  EXPECT_EQ(out.text(), "");
}

TEST_F(SpillStoreTest, HoldsTheEmptySetAtLevelZero) {
  open(0);
  EXPECT_EQ(store_->slotSize(), 9);
  EXPECT_EQ(add(std::vector<int>{}, 12), 0);
  EXPECT_THAT(slots(0), ElementsAre(DiskSlot{0, 1, 0, {}, 12}));
  const ItemSet empty;
  EXPECT_TRUE(store_->contains(&empty));
}

TEST_F(SpillStoreTest, ContainsWhatIsOnDisk) {
  add(3, 5);
  EXPECT_TRUE(contains(3));
  EXPECT_FALSE(contains(4));
  EXPECT_FALSE(contains(3 + kSlots)) << "its presence bit is set by {3}";
}

TEST_F(SpillStoreTest, ReduceKeepsCount2AndDeletesCount1AtMinCount2) {
  add(3, 2);
  add(4, 1);
  EXPECT_EQ(store_->reduce(1, 2.0), 1);
  EXPECT_EQ(store_->size(), 0);
  EXPECT_EQ(dictionary_.getCount(3), 2);
  EXPECT_EQ(dictionary_.getCount(4), 0);
  EXPECT_EQ(dictionary_.inStoreCount(), 1);
  EXPECT_TRUE(dictionary_.isMarked(3));
  EXPECT_FALSE(dictionary_.isMarked(4));
  const ItemSet kept(3);
  EXPECT_EQ(dictionary_.getDescriptor(&kept)->TID, 0);
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 2, 21, {3}, 2}, DiskSlot{28, 2, 28, {4}, 1}));
}

TEST_F(SpillStoreTest, ReduceComparesWithTheBareDouble) {
  struct Case {
    double minCount;
    int deleted;
  };
  const Case cases[] = {{3.0, 0}, {3.0000000000000004, 1}, {3.2, 1}, {2.9999999999999996, 0}, {0.0, 0},
                        {-5.0, 0}};
  for (const Case& c : cases) {
    open(1);
    add(6, 3);
    EXPECT_EQ(store_->reduce(1, c.minCount), c.deleted) << c.minCount;
    EXPECT_EQ(store_->size(), 0) << c.minCount;
  }
}

TEST_F(SpillStoreTest, ReduceOfAnotherLevelDoesNothing) {
  add(3, 1);
  EXPECT_EQ(store_->reduce(0, 100.0), 0);
  EXPECT_EQ(store_->reduce(2, 100.0), 0);
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{21, 1, 21, {3}, 1}));
}

TEST_F(SpillStoreTest, ReduceWalksTheSlotsInFileOrder) {
  // Hash codes 7, 70, 21: the table at level 1 puts later arrivals in front of their chains, so the arrival
  // order of sets in one chain (items 2879 * 7 apart share a bucket of the 2879) can be read off the chain.
  const int step = 2879;
  add(1 + 2 * step, 5);
  add(1, 6);
  add(1 + step, 7);
  EXPECT_EQ(store_->reduce(1, 1.0), 0);
  std::vector<int> chain;
  for (const HashTable::Entry* entry = dictionary_.levelTable(1).bucket(7); entry != nullptr;
       entry = entry->next) {
    chain.push_back(entry->key->getItemAt(0));
  }
  EXPECT_THAT(chain, ElementsAre(1 + 2 * step, 1 + step, 1));
}

TEST_F(SpillStoreTest, ReduceStopsWhenTheMemoryIsFullAndGoesOnLater) {
  dictionary_.setMaxInStoreSets(1);
  add(1, 5);
  add(2, 1);
  add(3, 7);
  EXPECT_EQ(raised([this] { store_->reduce(1, 2.0); }), "DictionaryFailure");
  EXPECT_THAT(slots(), ElementsAre(DiskSlot{7, 2, 7, {1}, 5}, DiskSlot{14, 2, 14, {2}, 1},
                                   DiskSlot{21, 1, 21, {3}, 7}));
  EXPECT_EQ(store_->size(), 1);
  EXPECT_EQ(dictionary_.inStoreCount(), 1);
  dictionary_.setMaxInStoreSets(2);
  EXPECT_EQ(store_->reduce(1, 2.0), 0);
  EXPECT_EQ(dictionary_.getCount(1), 5);
  EXPECT_EQ(dictionary_.getCount(3), 7);
  EXPECT_EQ(dictionary_.inStoreCount(), 2);
}

TEST_F(SpillStoreTest, PassesOverDeletedSlotsAndNeverUsesThemAgain) {
  dictionary_.setMaxInStoreSets(0);
  add(3, 1);
  add(3 + kSlots, 6);
  EXPECT_EQ(raised([this] { store_->reduce(1, 2.0); }), "DictionaryFailure");
  EXPECT_EQ(found(3), -1);
  EXPECT_EQ(found(3 + kSlots), 6);
  EXPECT_FALSE(contains(3));
  EXPECT_EQ(add(3, 9), 0);
  EXPECT_THAT(slots(),
              ElementsAre(DiskSlot{21, 2, 21, {3}, 1}, DiskSlot{22, 1, 7 * (3 + kSlots), {3 + kSlots}, 6},
                          DiskSlot{23, 1, 21, {3}, 9}));
  EXPECT_EQ(found(3), 9);
}

// Every slot of the file with the given state and the set {1} in it.
std::string allSlots(char state) {
  std::string bytes;
  const char slot[13] = {state, 7, 0, 0, 0, 1, 0, 0, 0, 5, 0, 0, 0};
  bytes.assign(slot, sizeof slot);
  while (bytes.size() < 13U * 737279U) bytes.append(bytes, 0, 13U * 737279U - bytes.size());
  return bytes;
}

TEST_F(SpillStoreTest, AnswersFourWhenAllSlotsAreOccupiedOrDeleted) {
  for (const char state : {char{1}, char{2}}) {
    open(1);
    ASSERT_EQ(add(3, 5), 0);
    pokeFile(file_.name(), 8, allSlots(state));
    {
      const StreamCapture out(std::cout);
      EXPECT_EQ(add(3, 5), 4);
      EXPECT_EQ(out.text(),
                "Looped \nNot Found In Primary\nBad OFFSET 4\n"
                "HashCode=21, Elements:  3 End of Set \nPrevious: NULL\nNext: NULL\n");
      EXPECT_EQ(store_->lastResult(), 4);
    }
    {
      const StreamCapture out(std::cout);
      EXPECT_EQ(found(3), -1);
      EXPECT_EQ(out.text(), "Looped \nNot Found In Primary\nFailure to Seek  3 End of Set \n");
    }
    {
      const StreamCapture out(std::cout);
      EXPECT_EQ(incremented(3), -1);
      EXPECT_EQ(out.text(), "Looped \nNot Found In Primary\nSeek Failed to find place\n");
    }
    {
      const StreamCapture out(std::cout);
      EXPECT_TRUE(contains(3)) << "an error code counts as present";
      EXPECT_EQ(out.text(), "Looped \nNot Found In Primary\n");
    }
    EXPECT_FALSE(contains(4)) << "its presence bit is clear";
    EXPECT_EQ(store_->size(), 1);
  }
}

TEST_F(SpillStoreTest, TakesTheLastEmptySlotOfAFullFile) {
  pokeFile(file_.name(), 8, allSlots(1));
  pokeFile(file_.name(), 8 + 13U * 20U, std::string(13, '\0'));
  EXPECT_EQ(add(3, 5), 0);  // from slot 21 round to slot 20
  EXPECT_EQ(store_->lastResult(), 8 + 13 * 20);
  EXPECT_EQ(found(3), 5);
}

}  // namespace
